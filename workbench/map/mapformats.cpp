#include "map/mapformats.h"

#include "ztbase/brix/texts.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

QString hemisphereText(double degrees, int decimals, QChar positive, QChar negative)
{
    const QString number = fixedText(degrees, decimals);
    const bool isNegative = number.startsWith(QLatin1Char('-'));
    return number.mid(isNegative ? 1 : 0) + QStringLiteral("° ") + (isNegative ? negative : positive);
}

int decimalsOf(double step)
{
    // The tiny surplus: the logarithm of a thousandth may be a little less than -3.
    return std::max(0, static_cast<int>(std::ceil(-std::log10(step * 1.0001))));
}

QString lineText(double degrees, double step, QChar positive, QChar negative)
{
    if (std::abs(degrees) < step / 2.0)
        return QString(QLatin1Char('0')) + QChar(0x00b0);
    return hemisphereText(degrees, decimalsOf(step), positive, negative);
}

} // namespace

QString stationText(const QString& name)
{
    constexpr int longest = 60;
    return Brix::OneLine(name, longest);
}

QString fixedText(double number, int decimals)
{
    const QString text = QString::number(number, 'f', decimals);
    const bool isZero = std::all_of(text.begin(), text.end(), [](QChar c) {
        return c == QLatin1Char('0') || c == QLatin1Char('.') || c == QLatin1Char('-');
    });
    return isZero && text.startsWith(QLatin1Char('-')) ? text.mid(1) : text;
}

QString azimuthText(double azimuth)
{
    const QString text = fixedText(azimuth, 1);
    return (text == QLatin1String("360.0") ? QStringLiteral("0.0") : text) + QChar(0x00b0);
}

QString positionText(const GeoPosition& position)
{
    const double longitude = std::remainder(position.longitude, 360.0);
    return hemisphereText(position.latitude, 5, QLatin1Char('N'), QLatin1Char('S')) + QStringLiteral("  ") +
           hemisphereText(longitude, 5, QLatin1Char('E'), QLatin1Char('W'));
}

QString coordinatesText(const GeoPosition& position)
{
    const double longitude = std::remainder(position.longitude, 360.0);
    return fixedText(position.latitude, 7) + QStringLiteral(", ") + fixedText(longitude, 7);
}

QString latitudeText(double latitude, double step)
{
    return lineText(latitude, step, QLatin1Char('N'), QLatin1Char('S'));
}

QString longitudeText(double longitude, double step)
{
    const double reduced = std::remainder(longitude, 360.0);
    if (180.0 - std::abs(reduced) < step / 2.0)
        return QStringLiteral("180") + QChar(0x00b0);
    return lineText(reduced, step, QLatin1Char('E'), QLatin1Char('W'));
}

QString sizeText(const ErrorEllipse& ellipse)
{
    const auto metres = [](double length) {
        return QString::number(std::round(length), 'f', 0) + QStringLiteral(" m");
    };
    return metres(ellipse.semiMajor) + QLatin1Char(' ') + QChar(0x00d7) + QLatin1Char(' ') + metres(ellipse.semiMinor);
}

QString percentText(double probability)
{
    return QString::number(probability * 100.0, 'g', 4) + QStringLiteral(" %");
}

} // namespace workbench
