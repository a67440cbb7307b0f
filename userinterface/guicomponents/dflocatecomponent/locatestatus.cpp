#include "locatestatus.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace VelmarGui {

namespace {

/// The texts of the report belong to the translation context of the status display.
struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(VelmarGui::LocateStatusHandler)
};

const QLatin1String stationToken("DFID");

/// The station that the tokens are about; null when there is none of that identifier.
LocateStationStatus* findStation(LocateServiceStatus& service, int id)
{
    const auto found = service.stations.find(id);
    return found != service.stations.end() ? &found->second : nullptr;
}

LocateStationStatus& openStation(LocateServiceStatus& service, int id)
{
    LocateStationStatus& station = service.stations[id];
    station.id = id;
    return station;
}

/// In Hz; 0 for what is no number, or none that a frequency can be.
double readFrequency(const QString& text)
{
    const double frequency = text.toDouble();
    return std::isfinite(frequency) ? frequency : 0;
}

void applyStationToken(LocateServiceStatus& service, LocateStationStatus& station, const QString& token)
{
    const QString kind = token.left(2);
    const QString content = token.mid(2);
    if (kind == QLatin1String("N_")) {
        station.name = content;
    } else if (kind == QLatin1String("ST")) {
        station.status = content.toInt();
        if ((station.status & LocateStationStatus::Available) != 0)
            service.anyAvailable = true;
    } else if (kind == QLatin1String("FB")) {
        station.rangeLow = readFrequency(content);
    } else if (kind == QLatin1String("FE")) {
        station.rangeHigh = readFrequency(content);
    }
    // The position, "LO" and "LA", is shown nowhere.
}

QString connectionText(bool connected)
{
    return connected ? Texts::tr("is connected") : Texts::tr("is not connected");
}

QString stationlessPart(const QString& service, bool connected)
{
    return QStringLiteral("<B>%1 </B>").arg(service) + connectionText(connected);
}

QString tickIf(bool condition)
{
    return condition ? QStringLiteral("<IMG src=\":/icons/OK\" width = 16 height = 16 >") : QStringLiteral(" ");
}

QString rangeCell(const LocateStationStatus& station, double frequency)
{
    constexpr int searching = LocateStationStatus::ScanCapable | LocateStationStatus::WidebandCapable;
    if (station.rangeLow == 0 || station.rangeHigh == 0 || (station.status & searching) == 0)
        return QStringLiteral(" ");
    const QString range =
        station.Covers(frequency) ? QStringLiteral("%1 MHz - %2 MHz") : QStringLiteral("<i>%1 MHz - %2 MHz</i>");
    constexpr double hertzPerMegahertz = 1000000;
    return range.arg(station.rangeLow / hertzPerMegahertz, 0, 'f', 3)
        .arg(station.rangeHigh / hertzPerMegahertz, 0, 'f', 3);
}

// The templates of the two tables and their rows are filled by chained arg() on purpose: what a report shows must not
// depend on which host built it, down to a station name that holds a place marker. The odd attributes are part of that.

QString dfTable(const LocateServiceStatus& df)
{
    QString html =
        QStringLiteral("<TABLE border = \"1\" frame = \"hsides\" rules = \"groups\"summary = \"Locate DF status "
                       "display\"of MS Windows.\"><CAPTION><B>%1</B></CAPTION><COLGROUP align = \"center\">"
                       "<THEAD valign = \"top\"><TR><TH>%2<TH>%3<TBODY>")
            .arg(Texts::tr("Locate (Online) is connected"))
            .arg(Texts::tr("DF Station"))
            .arg(Texts::tr("Available"));
    for (const auto& [id, station] : df.stations) {
        html += QStringLiteral("<TR><TD> %1<TD> %2")
                    .arg(station.name)
                    .arg(tickIf((station.status & LocateStationStatus::Available) != 0));
    }
    return html + QStringLiteral("</TABLE>");
}

QString hriTable(const LocateServiceStatus& hri, double frequency)
{
    QString html =
        QStringLiteral("<TABLE border = \"1\" frame = \"hsides\" rules = \"groups\"summary = \"Locate HRI status "
                       "display\"of MS Windows.\"><CAPTION><B>%1</B></CAPTION><COLGROUP align = \"center\">"
                       "<COLGROUP align = \"center\"><COLGROUP align = \"center\"><COLGROUP align = \"center\">"
                       "<THEAD valign = \"top\"><TR><TH>%2<TH>%3<TH>%4<TH>%5<TH>%6<TBODY>")
            .arg(Texts::tr("Locate (HRI) is connected"))
            .arg(Texts::tr("DF Station"))
            .arg(Texts::tr("Available"))
            .arg(Texts::tr("Scan"))
            .arg(Texts::tr("Wideband"))
            .arg(Texts::tr("Range"));
    for (const auto& [id, station] : hri.stations) {
        html += QStringLiteral("<TR><TD> %1<TD> %2<TD> %3<TD> %4<TD> %5")
                    .arg(station.name)
                    .arg(tickIf((station.status & LocateStationStatus::Available) != 0))
                    .arg(tickIf((station.status & LocateStationStatus::ScanCapable) != 0))
                    .arg(tickIf((station.status & LocateStationStatus::WidebandCapable) != 0))
                    .arg(rangeCell(station, frequency));
    }
    return html + QStringLiteral("</TABLE>");
}

} // namespace

bool LocateServiceStatus::Covers(double frequency) const
{
    return std::any_of(stations.begin(), stations.end(),
                       [frequency](const auto& entry) { return entry.second.Covers(frequency); });
}

void applyStatusText(LocateServiceStatus& service, const QString& text)
{
    service.anyAvailable = false;
    service.connected = !text.isEmpty();
    if (!service.connected) {
        service.stations.clear();
        return;
    }
    int id = 0;
    const QStringList tokens = text.split(QLatin1Char('#'));
    for (const QString& token : tokens) {
        if (token.contains(stationToken)) {
            // Wherever the mark stands in the token, the number is what follows the first four characters.
            id = token.mid(stationToken.size()).toInt();
            openStation(service, id);
        } else if (LocateStationStatus* const station = findStation(service, id)) {
            applyStationToken(service, *station, token);
        }
    }
}

QString buildReport(const LocateServiceStatus& df, const LocateServiceStatus& hri, double frequency)
{
    const QString dfPart =
        df.stations.empty() ? stationlessPart(Texts::tr("Locate (Online)"), df.connected) : dfTable(df);
    const QString hriPart =
        hri.stations.empty() ? stationlessPart(Texts::tr("Locate (HRI)"), hri.connected) : hriTable(hri, frequency);
    return dfPart + QStringLiteral("<BR><BR>") + hriPart;
}

} // namespace VelmarGui
