// Status texts, read by the component and by a second reader that does what the format says as plainly as can be; and
// what was read, written by the driver and read once more.

#include "drivers/statustext.h"
#include "fuzz/fuzzing.h"
#include "locatestatus.h"

#include <QMap>

#include <cmath>

using namespace VelmarGui;

namespace {

/// The second reader.
class Reference
{
public:
    struct Station
    {
        QString name;
        int status = 0;
        double low = 0.0;
        double high = 0.0;
    };

    void read(const QString& text)
    {
        anyAvailable = false;
        if (text.isEmpty())
            stations.clear();
        int id = 0;
        QString token;
        for (int i = 0; i <= text.size(); ++i) {
            if (i < text.size() && text.at(i) != QLatin1Char('#')) {
                token += text.at(i);
            } else if (!text.isEmpty()) {
                readToken(token, id);
                token.clear();
            }
        }
    }

    QMap<int, Station> stations;
    bool anyAvailable = false;

private:
    void readToken(const QString& token, int& id)
    {
        if (token.indexOf(QLatin1String("DFID")) >= 0) {
            id = token.mid(4).toInt();
            stations[id];
            return;
        }
        if (!stations.contains(id))
            return;
        Station& station = stations[id];
        const QString content = token.mid(2);
        if (token.startsWith(QLatin1String("N_")))
            station.name = content;
        if (token.startsWith(QLatin1String("ST"))) {
            station.status = content.toInt();
            anyAvailable = anyAvailable || station.status % 2 != 0;
        }
        if (token.startsWith(QLatin1String("FB")))
            station.low = number(content);
        if (token.startsWith(QLatin1String("FE")))
            station.high = number(content);
    }

    static double number(const QString& text)
    {
        const double number = text.toDouble();
        return std::isinf(number) || std::isnan(number) ? 0.0 : number;
    }
};

void requireSame(const LocateServiceStatus& service, const Reference& reference)
{
    FUZZ_REQUIRE(service.anyAvailable == reference.anyAvailable);
    FUZZ_REQUIRE(service.stations.size() == static_cast<std::size_t>(reference.stations.size()));
    for (const auto& [id, station] : service.stations) {
        FUZZ_REQUIRE(reference.stations.contains(id));
        const Reference::Station expected = reference.stations.value(id);
        FUZZ_REQUIRE(station.id == id);
        FUZZ_REQUIRE(station.name == expected.name);
        FUZZ_REQUIRE(station.status == expected.status);
        FUZZ_REQUIRE(station.rangeLow == expected.low);
        FUZZ_REQUIRE(station.rangeHigh == expected.high);
    }
}

/// Each station has its row, unless a name is mistaken for part of the report.
void requireRows(const LocateServiceStatus& service, double frequency)
{
    const QString report = buildReport(service, service, frequency);
    for (const auto& [id, station] : service.stations) {
        if (station.name.contains(QLatin1Char('<')) || station.name.contains(QLatin1Char('%')))
            return;
    }
    FUZZ_REQUIRE(report.count(QLatin1String("<TR><TD> ")) == 2 * static_cast<int>(service.stations.size()));
}

std::vector<workbench::StationInfo> asDriverKnows(const LocateServiceStatus& service)
{
    std::vector<workbench::StationInfo> infos;
    for (const auto& [id, station] : service.stations) {
        workbench::StationInfo info;
        info.id = id;
        info.name = station.name;
        info.available = (station.status & LocateStationStatus::Available) != 0;
        info.scan = (station.status & LocateStationStatus::ScanCapable) != 0;
        info.wideband = (station.status & LocateStationStatus::WidebandCapable) != 0;
        info.position = workbench::GeoPosition{station.rangeLow, station.rangeHigh};
        info.range = workbench::FrequencyRange{station.rangeLow, station.rangeHigh};
        infos.push_back(info);
    }
    return infos;
}

bool isWholeHertzOf(double read, double written)
{
    return std::abs(read - written) <= 0.5 || read == written;
}

void requireRoundTrip(const LocateServiceStatus& service)
{
    constexpr int told =
        LocateStationStatus::Available | LocateStationStatus::ScanCapable | LocateStationStatus::WidebandCapable;
    LocateServiceStatus again;
    applyStatusText(again, workbench::statusText(asDriverKnows(service)));
    FUZZ_REQUIRE(again.stations.size() == service.stations.size());
    for (const auto& [id, station] : service.stations) {
        FUZZ_REQUIRE(again.stations.count(id) == 1);
        const LocateStationStatus& read = again.stations[id];
        FUZZ_REQUIRE(read.name == station.name);
        FUZZ_REQUIRE(read.status == (station.status & told));
        FUZZ_REQUIRE(isWholeHertzOf(read.rangeLow, station.rangeLow));
        FUZZ_REQUIRE(isWholeHertzOf(read.rangeHigh, station.rangeHigh));
    }
}

} // namespace

// Each line is one text of the driver; they come one after the other.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    LocateServiceStatus service;
    Reference reference;
    const QList<QByteArray> lines = fuzzing::bytes(data, size).split('\n');
    for (const QByteArray& line : lines) {
        const QString text = fuzzing::text(line);
        applyStatusText(service, text);
        reference.read(text);
        FUZZ_REQUIRE(service.connected == !text.isEmpty());
        requireSame(service, reference);
    }
    requireRows(service, 100e6);
    requireRoundTrip(service);
    return 0;
}
