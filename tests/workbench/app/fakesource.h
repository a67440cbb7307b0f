#pragma once

#include "drivers/dfsource.h"

#include <QTimer>

/// A network that answers each measurement at once with a fixed bearing per station, or fails with a fixed reason.
class FakeSource final : public workbench::DfSource
{
public:
    explicit FakeSource(QString failure = {})
        : m_failure(std::move(failure))
    {
    }

    [[nodiscard]] QString name() const override { return QStringLiteral("Fake network"); }
    [[nodiscard]] std::vector<workbench::StationInfo> stations() const override
    {
        workbench::StationInfo east;
        east.id = 1;
        east.name = QStringLiteral("East");
        workbench::StationInfo west;
        west.id = 2;
        west.name = QStringLiteral("West");
        return {east, west};
    }
    [[nodiscard]] std::vector<workbench::StationInfo> hriStations() const override { return {}; }
    [[nodiscard]] std::optional<double> initialFrequency() const override { return 98'500'000.0; }
    [[nodiscard]] std::optional<int> measurementsLeft() const override { return std::nullopt; }

    void measure(const workbench::DfRequest& /*request*/) override
    {
        QTimer::singleShot(0, this, [this] { m_failure.isEmpty() ? emit measured(result()) : emit failed(m_failure); });
    }
    void cancel() override {}

    [[nodiscard]] static workbench::DfResult result()
    {
        workbench::DfResult result;
        result.frequency = 98'500'000.0;
        result.date = QDate(2024, 5, 6);
        result.time = QTime(7, 8, 9);
        workbench::StationResult east;
        east.stationId = 1;
        east.stationName = QStringLiteral("East");
        east.azimuth = 278.4;
        east.quality = 87.0;
        east.level = 34.1;
        workbench::StationResult west;
        west.stationId = 2;
        west.stationName = QStringLiteral("West");
        west.error = workbench::DfError::NoSignal;
        result.stations = {east, west};
        return result;
    }

private:
    QString m_failure;
};
