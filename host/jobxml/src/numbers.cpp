#include "numbers.h"

#include "ztbase/exceptions.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace JobXml {

namespace {

// Qt reads exponents, "inf", "nan" and surrounding blanks as well.
bool isFixedNotation(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        const ushort code = character.unicode();
        return (code >= '0' && code <= '9') || code == '.' || code == '+' || code == '-';
    });
}

template <typename Number, typename Conversion>
bool readFixed(const QString& text, Number& number, Conversion convert)
{
    bool ok = false;
    const Number read = convert(text, &ok);
    if (!ok || !isFixedNotation(text))
        return false;
    number = read;
    return true;
}

} // namespace

double finite(double number, const char* place)
{
    if (!std::isfinite(number))
        throw ReportException(QString::fromLatin1(place), QStringLiteral("not a finite number"));
    return number;
}

QString toText(int number)
{
    return QString::number(number);
}

QString toText(double number)
{
    // Most are whole, and those are written in a fraction of the time, as long as all their digits count.
    constexpr double firstInexact = 9007199254740992.0;
    if (std::abs(number) < firstInexact && number == std::trunc(number))
        return QString::number(static_cast<qint64>(number));
    return QString::number(number, 'f', QLocale::FloatingPointShortest);
}

bool fromText(const QString& text, int& number)
{
    return readFixed(text, number, [](const QString& digits, bool* ok) { return digits.toInt(ok); });
}

bool fromText(const QString& text, double& number)
{
    return readFixed(text, number, [](const QString& digits, bool* ok) { return digits.toDouble(ok); });
}

} // namespace JobXml
