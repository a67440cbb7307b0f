#include "drivers/statustext.h"

#include <QStringList>

namespace workbench {

namespace {

constexpr QLatin1Char tokenSeparator('#');

/// Readers split the text at every "#" and take each token with "DFID" in it for a new station.
QString harmlessName(QString name)
{
    name.replace(tokenSeparator, QLatin1Char(' '));
    name.replace(QLatin1String("DFID"), QLatin1String("DF ID"));
    return name;
}

int statusWord(const StationInfo& station)
{
    constexpr int available = 1;
    constexpr int scan = 16;
    constexpr int wideband = 32;
    return (station.available ? available : 0) + (station.scan ? scan : 0) + (station.wideband ? wideband : 0);
}

QString degrees(double value)
{
    return QString::number(value, 'f', 6);
}

QString hertz(double value)
{
    return QString::number(value, 'f', 0);
}

} // namespace

QString statusText(const std::vector<StationInfo>& stations)
{
    QStringList tokens;
    for (const StationInfo& station : stations) {
        tokens += QLatin1String("DFID") + QString::number(station.id);
        tokens += QLatin1String("N_") + harmlessName(station.name);
        if (station.position) {
            tokens += QLatin1String("LO") + degrees(station.position->longitude);
            tokens += QLatin1String("LA") + degrees(station.position->latitude);
        }
        tokens += QLatin1String("ST") + QString::number(statusWord(station));
        if (station.range) {
            tokens += QLatin1String("FB") + hertz(station.range->low);
            tokens += QLatin1String("FE") + hertz(station.range->high);
        }
    }
    return tokens.join(tokenSeparator);
}

} // namespace workbench
