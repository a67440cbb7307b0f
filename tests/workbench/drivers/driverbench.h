#pragma once

#include "drivers/dfdriver.h"
#include "drivers/dfsource.h"
#include "support/freshtree.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <QSignalSpy>
#include <QtTest>

namespace workbench {

using values::BoolValue;
using values::DoubleValue;
using values::IntValue;
using values::StringValue;
using values::ValueSelection;

inline const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");
inline const QString parameterRoot = QStringLiteral("/GUI/DFLocateComponent/Parameters/");
inline const QString globalRoot = QStringLiteral("/GLOBAL/");

/// Answers when the test says so.
class FakeSource : public DfSource
{
public:
    [[nodiscard]] QString name() const override { return QStringLiteral("Fake"); }
    [[nodiscard]] std::vector<StationInfo> stations() const override { return m_stations; }
    [[nodiscard]] std::vector<StationInfo> hriStations() const override { return m_hriStations; }
    [[nodiscard]] std::vector<DfDevice> devices() const override { return m_devices; }
    [[nodiscard]] std::optional<double> initialFrequency() const override { return m_frequency; }
    [[nodiscard]] std::optional<int> measurementsLeft() const override { return std::nullopt; }
    void measure(const DfRequest& request) override { requests.push_back(request); }
    void cancel() override { ++cancelled; }

    static StationInfo station(int id, const QString& name)
    {
        StationInfo info;
        info.id = id;
        info.name = name;
        return info;
    }

    std::vector<DfRequest> requests;
    int cancelled = 0;
    std::vector<StationInfo> m_stations{station(3, QStringLiteral("North")), station(8, QStringLiteral("South"))};
    std::vector<StationInfo> m_hriStations{station(20, QStringLiteral("Far"))};
    std::vector<DfDevice> m_devices{standardDevice()};
    std::optional<double> m_frequency = 123456789.0;
};

inline StationResult stationResult(int id, const QString& name, double azimuth, double quality, double level)
{
    StationResult station;
    station.stationId = id;
    station.stationName = name;
    station.position = GeoPosition{50.1234567, -10.5};
    station.azimuth = azimuth;
    station.quality = quality;
    station.level = level;
    return station;
}

inline DfResult someResult(int second = 0)
{
    DfResult result;
    result.frequency = 3.0e9;
    result.date = QDate(2026, 5, 14);
    result.time = QTime(10, 11, second, 999);
    result.stations = {stationResult(3, QStringLiteral("North"), 278.44, 87.0, 33.26),
                       stationResult(8, QStringLiteral("South"), 12.0, 40.0, -5.0)};
    return result;
}

template <typename T>
T* find(const QString& path)
{
    auto* value = dynamic_cast<T*>(values::Tree::Instance()->FindValue(path));
    if (value == nullptr)
        qFatal("There is no such value: %s", qPrintable(path));
    return value;
}

template <typename T>
T* handlerValue(const char* path)
{
    return find<T>(handlerRoot + QLatin1String(path));
}

template <typename T>
T* resultValue(const char* name)
{
    return find<T>(handlerRoot + QLatin1String("Values/Result/") + QLatin1String(name));
}

/// A driver with a source that the test answers for.
struct Bench
{
    Bench()
        : Bench(std::make_unique<FakeSource>())
    {
    }
    explicit Bench(std::unique_ptr<FakeSource> fake)
        : source(fake.get())
        , driver(std::make_unique<DfDriver>(std::move(fake), handlerRoot, parameterRoot))
    {
    }

    /// As components issue commands.
    void command(int key) const
    {
        auto* commands = handlerValue<ValueSelection>("Values/Commands");
        if (commands->GetCurrentKey() == key)
            commands->HasChanged(ChangeContent, nullptr);
        else
            commands->Select(key);
    }

    void answer(const DfResult& result = someResult()) const { emit source->measured(result); }

    /// One single measurement from the command to the values.
    void measure(const DfResult& result = someResult())
    {
        QSignalSpy published(driver.get(), &DfDriver::resultPublished);
        command(9);
        answer(result);
        QTRY_COMPARE(published.count(), 1);
    }

    testsupport::FreshTree tree;
    FakeSource* source;
    std::unique_ptr<DfDriver> driver;
};

} // namespace workbench
