#include "numbers.h"

#include "ztbase/exceptions.h"

#include <QLocale>
#include <QStringView>

#include <algorithm>
#include <cmath>
#include <optional>

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

constexpr int exactDigits = 15; // every number of so many digits has a double of its own
constexpr double firstInexact = 1e15;
constexpr double powersOfTen[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};

/// The text of a number from 1 up with few decimals, which most are that are not whole.
std::optional<QString> textWithFewDecimals(double number)
{
    constexpr int fewDecimals = 3;
    if (std::abs(number) < 1.0)
        return std::nullopt;
    for (int decimals = 1; decimals <= fewDecimals; ++decimals) {
        const double scale = powersOfTen[decimals];
        const double digits = std::round(number * scale);
        if (std::abs(digits) >= firstInexact)
            return std::nullopt;
        if (digits / scale == number) {
            QString text = QString::number(static_cast<qint64>(digits));
            text.insert(text.size() - decimals, QLatin1Char('.'));
            return text;
        }
    }
    return std::nullopt;
}

/// Digits without a plus, as they are written here. Digits and power of ten are exact, so only the quotient is rounded.
std::optional<double> fewDigits(const QString& text)
{
    const bool isNegative = text.startsWith(QLatin1Char('-'));
    const QStringView unsignedText = QStringView(text).mid(isNegative ? 1 : 0);
    constexpr int point = 1;
    if (unsignedText.isEmpty() || unsignedText.size() > exactDigits + point)
        return std::nullopt;
    qint64 digits = 0;
    int decimals = 0;
    bool hasPoint = false;
    int count = 0;
    for (const QChar character : unsignedText) {
        const ushort code = character.unicode();
        if (code == '.' && !hasPoint && count > 0) {
            hasPoint = true;
        } else if (code >= '0' && code <= '9') {
            digits = 10 * digits + (code - '0');
            ++count;
            decimals += hasPoint ? 1 : 0;
        } else {
            return std::nullopt;
        }
    }
    if (count > exactDigits || (hasPoint && decimals == 0))
        return std::nullopt;
    const double number = static_cast<double>(digits) / powersOfTen[decimals];
    return isNegative ? -number : number;
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
    // Looking for the fewest digits of any number takes several times as long.
    if (std::abs(number) < firstInexact && number == std::trunc(number))
        return QString::number(static_cast<qint64>(number));
    if (const auto text = textWithFewDecimals(number))
        return *text;
    return QString::number(number, 'f', QLocale::FloatingPointShortest);
}

bool fromText(const QString& text, int& number)
{
    return readFixed(text, number, [](const QString& digits, bool* ok) { return digits.toInt(ok); });
}

bool fromText(const QString& text, double& number)
{
    if (const auto read = fewDigits(text)) {
        number = *read;
        return true;
    }
    return readFixed(text, number, [](const QString& digits, bool* ok) { return digits.toDouble(ok); });
}

} // namespace JobXml
