// The texts of results: times, numbers, frequencies and coordinates, held against the C library and plain arithmetic.

#include "fuzz/fuzzing.h"
#include "resultformats.h"
#include "resulttime.h"
#include "valueframework/valueclasses/formats.h"
#include "ztbase/brix/datetime.h"
#include "ztbase/brix/numbers.h"

#include <QStringList>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

bool isAsciiOf(const QString& text, const char* characters)
{
    for (const QChar character : text) {
        if (character.unicode() == 0 || character.unicode() > 127 ||
            std::strchr(characters, character.toLatin1()) == nullptr)
            return false;
    }
    return true;
}

/// @name Numbers
/// @{

/// For texts in which nothing but digits, signs and points can occur the C library has to agree.
void requireNumber(const QString& text)
{
    bool isNumber = false;
    const double number = Brix::toDoubleEx(text, &isNumber);
    FUZZ_REQUIRE(std::isfinite(number));
    FUZZ_REQUIRE(isNumber || number == 0.0);
    FUZZ_REQUIRE(Brix::toDoubleEx(text) == number);
    FUZZ_REQUIRE(Brix::toDoubleEx(QLatin1Char(' ') + text + QLatin1Char('\t')) == number);
    if (!text.isEmpty() && isAsciiOf(text, "0123456789+-.")) {
        const QByteArray digits = text.toLatin1();
        char* end = nullptr;
        const double expected = std::strtod(digits.constData(), &end);
        const bool isWhole = *end == '\0' && std::isfinite(expected);
        FUZZ_REQUIRE(isNumber == isWhole);
        FUZZ_REQUIRE(!isNumber || number == expected);
    }
    double value = 0.0;
    FUZZ_REQUIRE(values::FormatFloat<double>::FromText(text, value) == isNumber);
    FUZZ_REQUIRE(value == number);
    if (isNumber) {
        double again = 1.0;
        FUZZ_REQUIRE(values::FormatFloat<double>::FromText(values::FormatFloat<double>::ToText(number), again));
        FUZZ_REQUIRE(again == number);
    }
    int whole = 0;
    if (values::FormatInt<int>::FromText(text, whole)) {
        int again = 0;
        FUZZ_REQUIRE(values::FormatInt<int>::FromText(values::FormatInt<int>::ToText(whole), again));
        FUZZ_REQUIRE(again == whole);
        FUZZ_REQUIRE(isNumber && number == whole);
    }
}
/// @}

/// @name Times
/// @{

/// Days from 1970-01-01 in the Gregorian calendar.
long long dayNumber(long long year, int month, int day)
{
    year -= month <= 2 ? 1 : 0;
    const long long era = (year >= 0 ? year : year - 399) / 400;
    const long long yearOfEra = year - era * 400;
    const long long dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const long long dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

int daysIn(int year, int month)
{
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && isLeap ? 29 : days[month - 1];
}

/// Reads what stands in @p digits as a number; false for anything but ASCII digits.
bool readDigits(const QString& text, int at, int count, int& number)
{
    number = 0;
    for (int i = at; i < at + count; ++i) {
        const ushort code = text.at(i).unicode();
        if (code < '0' || code > '9')
            return false;
        number = number * 10 + (code - '0');
    }
    return true;
}

/// The UTC text of an instant without fraction and zone, "yyyy-MM-ddThh:mm:ss"; empty for any other text.
QString plainUtcText(const QString& text)
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    const bool hasForm =
        text.size() == 19 && readDigits(text, 0, 4, year) && text.at(4) == QLatin1Char('-') &&
        readDigits(text, 5, 2, month) && text.at(7) == QLatin1Char('-') && readDigits(text, 8, 2, day) &&
        (text.at(10) == QLatin1Char('T') || text.at(10) == QLatin1Char(' ')) && readDigits(text, 11, 2, hour) &&
        text.at(13) == QLatin1Char(':') && readDigits(text, 14, 2, minute) && text.at(16) == QLatin1Char(':') &&
        readDigits(text, 17, 2, second);
    // There is no year 0.
    if (!hasForm || year < 1 || month < 1 || month > 12 || day < 1 || day > daysIn(year, month) || hour > 23 ||
        minute > 59 || second > 59)
        return {};
    return QString(text).replace(10, 1, QLatin1Char(' '));
}

QString localTextOf(const QString& utc)
{
    const QStringList parts = QString(utc)
                                  .replace(QLatin1Char(' '), QLatin1Char('-'))
                                  .replace(QLatin1Char(':'), QLatin1Char('-'))
                                  .split(QLatin1Char('-'));
    const std::time_t seconds = static_cast<std::time_t>(
        ((dayNumber(parts[0].toInt(), parts[1].toInt(), parts[2].toInt()) * 24 + parts[3].toInt()) * 60 +
         parts[4].toInt()) *
            60 +
        parts[5].toInt());
    std::tm local{};
    localtime_r(&seconds, &local);
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", local.tm_year + 1900, local.tm_mon + 1,
                  local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return QString::fromLatin1(text);
}

void requireTime(const QString& text)
{
    const Brix::DateTime time = Brix::DateTime::fromString(text);
    const QString utc = time.toString(Brix::Utc_TimeZone);
    const QString local = time.toString(Brix::Local_TimeZone);
    FUZZ_REQUIRE(time.isValid() == !utc.isEmpty());
    FUZZ_REQUIRE(time.isValid() == !local.isEmpty());
    FUZZ_REQUIRE(text.size() != 19 || utc == plainUtcText(text));
    // Before 1970 and far ahead the rules of daylight saving differ between Qt and the C library.
    if (text.size() == 19 && utc >= QLatin1String("1970-01-02") && utc < QLatin1String("2037"))
        FUZZ_REQUIRE(local == localTextOf(utc));

    const std::optional<QString> shown = VelmarGui::localTimeOfDay(text);
    FUZZ_REQUIRE(shown.has_value() == !(text.isEmpty() || text.startsWith(QLatin1String("1970"))));
    if (shown && !utc.isEmpty() && text.size() == 19)
        FUZZ_REQUIRE(local.endsWith(*shown));
}
/// @}

/// @name Frequencies and coordinates
/// @{

void requireFrequency(double hz)
{
    const double whole = !(hz > 0.0) ? 0.0 : hz < 18446744073709551616.0 ? std::trunc(hz) : 18446744073709551616.0;
    const char* unit = "Hz";
    double divisor = 1.0;
    if (whole >= 1e9) {
        unit = "GHz";
        divisor = 1e9;
    } else if (whole >= 1e6) {
        unit = "MHz";
        divisor = 1e6;
    } else if (whole >= 1e3) {
        unit = "kHz";
        divisor = 1e3;
    }
    char text[64];
    std::snprintf(text, sizeof text, "%.15g %s", whole / divisor, unit);
    FUZZ_REQUIRE(VelmarGui::frequencyText(hz) == QLatin1String(text));
}

void requireCoordinate(double degrees)
{
    const QString text = VelmarGui::coordinateText(degrees);
    if (!std::isfinite(degrees) || degrees > 360.0) {
        FUZZ_REQUIRE(text == QLatin1String("---"));
        return;
    }
    const int sign = text.indexOf(QChar(0xB0));
    FUZZ_REQUIRE(sign > 0 && text.endsWith(QLatin1Char('\'')));
    const double whole = text.left(sign).toDouble();
    const double minutes = text.mid(sign + 1, text.size() - sign - 2).toDouble();
    FUZZ_REQUIRE(whole > -180.5 && whole <= 180.0);
    FUZZ_REQUIRE(minutes >= 0.0 && minutes <= 60.0);
    double expected = std::remainder(degrees, 360.0);
    if (expected <= -180.0)
        expected = 180.0;
    // Between -1 and 0 the text has no sign.
    const double shown = whole + std::copysign(minutes / 60.0, expected);
    FUZZ_REQUIRE(std::abs(std::remainder(shown - expected, 360.0)) <= 0.0005 / 60.0 + 1e-9);
}

void requireCoordinateText(const QString& text)
{
    bool isNumber = false;
    const double degrees = Brix::toDoubleEx(text, &isNumber);
    FUZZ_REQUIRE(VelmarGui::coordinateText(text) == (isNumber ? VelmarGui::coordinateText(degrees) : text));
}
/// @}

} // namespace

// The first eight bytes as a number, and all of it as text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text = fuzzing::text(fuzzing::bytes(data, size));
    requireNumber(text);
    requireTime(text);
    requireCoordinateText(text);
    requireFrequency(Brix::toDoubleEx(text));
    requireCoordinate(Brix::toDoubleEx(text));
    double number = 0.0;
    if (size >= sizeof number) {
        std::memcpy(&number, data, sizeof number);
        requireFrequency(number);
        requireCoordinate(number);
    }
    return 0;
}
