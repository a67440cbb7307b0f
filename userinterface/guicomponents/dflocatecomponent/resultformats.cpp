#include "resultformats.h"

#include "valueframework/valueclasses/valueselection.h"
#include "ztbase/brix/numbers.h"

#include <QTextStream>

#include <cmath>
#include <iterator>
#include <limits>

namespace VelmarGui {

namespace {

struct FrequencyUnit
{
    quint64 factor; ///< Hz; also the least frequency with this unit
    const char* name;
};

constexpr FrequencyUnit frequencyUnits[] = {{1000000000, "GHz"}, {1000000, "MHz"}, {1000, "kHz"}, {1, "Hz"}};

const FrequencyUnit& unitOf(quint64 hz)
{
    for (const FrequencyUnit& unit : frequencyUnits) {
        if (hz >= unit.factor)
            return unit;
    }
    return frequencyUnits[std::size(frequencyUnits) - 1];
}

/// Only numbers in the range of the type can be converted; "not (above 0)" takes what is not a number as well.
quint64 wholeHz(double hz)
{
    constexpr double tooLarge = 18446744073709551616.0; // 2^64
    if (!(hz > 0.0))
        return 0;
    return hz < tooLarge ? static_cast<quint64>(hz) : std::numeric_limits<quint64>::max();
}

/// With three decimals, from 0 up to 60: the text of QString::number(minutes, 'f', 3), which takes several times
/// longer.
QString minutesText(double minutes)
{
    const double thousandths = minutes * 1000.0;
    const double below = std::floor(thousandths);
    const double rest = thousandths - below;
    // So near to the middle the rounding of the product would decide.
    constexpr double tooNear = 1e-6;
    if (std::abs(rest - 0.5) < tooNear)
        return QString::number(minutes, 'f', 3);
    const int rounded = static_cast<int>(below) + (rest > 0.5 ? 1 : 0);
    const auto digit = [rounded](int divisor) { return QLatin1Char(static_cast<char>('0' + rounded / divisor % 10)); };
    QString text;
    text.reserve(6);
    if (rounded >= 10000)
        text += digit(10000);
    text += digit(1000);
    text += QLatin1Char('.');
    text += digit(100);
    text += digit(10);
    text += digit(1);
    return text;
}

/// Above -180 up to 180.
double reduced(double degrees)
{
    const double turned = std::fmod(degrees, 360.0);
    if (turned > 180.0)
        return turned - 360.0;
    return turned <= -180.0 ? turned + 360.0 : turned;
}

} // namespace

QString frequencyText(double hz, double fixedDivisor)
{
    constexpr int significantDigits = 15; // as many as every double holds
    const quint64 whole = wholeHz(hz);
    const FrequencyUnit& unit = unitOf(whole);
    const double divisor = fixedDivisor != 0.0 ? fixedDivisor : static_cast<double>(unit.factor);
    QString text;
    QTextStream stream(&text);
    stream.setRealNumberPrecision(significantDigits);
    stream << static_cast<double>(whole) / divisor << ' ' << unit.name;
    stream.flush();
    return text;
}

QString coordinateText(double degrees)
{
    if (!std::isfinite(degrees) || degrees > 360.0)
        return nothingToShow;
    // Split before anything is rounded: 8.5 are 8 whole degrees, while the number alone would be written as 9.
    double whole = 0.0;
    const double fraction = std::modf(reduced(degrees), &whole);
    return QString::number(static_cast<int>(whole)) + QStringLiteral("°") + minutesText(std::abs(fraction) * 60.0) +
           QLatin1Char('\'');
}

QString coordinateText(const QString& text)
{
    bool isNumber = false;
    const double degrees = Brix::toDoubleEx(text, &isNumber);
    return isNumber ? coordinateText(degrees) : text;
}

QString textWithUnit(const values::SelectionItem* item, const QString& unit)
{
    return item != nullptr ? item->GetName() + unit : QString(nothingToShow);
}

} // namespace VelmarGui
