#include "resultformats.h"

#include "support/testmain.h"

#include <QRandomGenerator>

#include "valueframework/valueclasses/valueselection.h"
#include <cmath>

#include <limits>

using VelmarGui::coordinateText;
using VelmarGui::frequencyText;
using VelmarGui::textWithUnit;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

} // namespace

class TestResultFormats : public QObject
{
    Q_OBJECT

private slots:
    void aFrequencyHasTheUnitOfItsSize_data();
    void aFrequencyHasTheUnitOfItsSize();
    void aFixedDivisorLeavesTheUnitToTheSize_data();
    void aFixedDivisorLeavesTheUnitToTheSize();
    void aCoordinateIsWrittenInDegreesAndMinutes_data();
    void aCoordinateIsWrittenInDegreesAndMinutes();
    void aCoordinateTextIsANumberOrStandsAsItIs_data();
    void aCoordinateTextIsANumberOrStandsAsItIs();
    void numbersDoNotFollowTheLocale();
    void aUnitFollowsTheTextDirectly();
    void minutesAreRoundedAsNumbersAre();
};

void TestResultFormats::aFrequencyHasTheUnitOfItsSize_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<QString>("text");

    QTest::newRow("shortest form") << 433920000.0 << "433.92 MHz";
    QTest::newRow("nothing") << 0.0 << "0 Hz";
    QTest::newRow("one") << 1.0 << "1 Hz";
    QTest::newRow("below kHz") << 999.0 << "999 Hz";
    QTest::newRow("cut off, not rounded up to kHz") << 999.999 << "999 Hz";
    QTest::newRow("one kHz") << 1000.0 << "1 kHz";
    QTest::newRow("fraction of a Hz") << 1000.9 << "1 kHz";
    QTest::newRow("less than a Hz") << 0.9 << "0 Hz";
    QTest::newRow("below MHz") << 999999.0 << "999.999 kHz";
    QTest::newRow("one MHz") << 1e6 << "1 MHz";
    QTest::newRow("every digit of a MHz") << 123456789.0 << "123.456789 MHz";
    QTest::newRow("below GHz") << 999999999.0 << "999.999999 MHz";
    QTest::newRow("one GHz") << 1e9 << "1 GHz";
    QTest::newRow("every digit of a GHz") << 2400000001.0 << "2.400000001 GHz";
    QTest::newRow("fifteen digits") << 123456789012345.0 << "123456.789012345 GHz";
    QTest::newRow("the sixteenth is rounded away") << 1234567890123456.0 << "1234567.89012346 GHz";
    QTest::newRow("close to 2^64") << 18446744073709549568.0 << "18446744073.7095 GHz";
    QTest::newRow("2^64") << 18446744073709551616.0 << "18446744073.7096 GHz";
    QTest::newRow("beyond 64 bits") << 1e300 << "18446744073.7096 GHz";
    QTest::newRow("infinite") << infinity << "18446744073.7096 GHz";
    QTest::newRow("negative") << -1.0 << "0 Hz";
    QTest::newRow("very negative") << -infinity << "0 Hz";
    QTest::newRow("not a number") << notANumber << "0 Hz";
}

void TestResultFormats::aFrequencyHasTheUnitOfItsSize()
{
    QFETCH(double, hz);
    QFETCH(QString, text);
    QCOMPARE(frequencyText(hz), text);
}

void TestResultFormats::aFixedDivisorLeavesTheUnitToTheSize_data()
{
    QTest::addColumn<double>("hz");
    QTest::addColumn<double>("divisor");
    QTest::addColumn<QString>("text");

    QTest::newRow("the unit's own") << 433920000.0 << 1e6 << "433.92 MHz";
    QTest::newRow("smaller") << 433920000.0 << 1e3 << "433920 MHz";
    QTest::newRow("larger") << 433920000.0 << 1e9 << "0.43392 MHz";
    QTest::newRow("one") << 2400000000.0 << 1.0 << "2400000000 GHz";
    QTest::newRow("the fraction is cut off first") << 10.9 << 4.0 << "2.5 Hz";
    QTest::newRow("sixteen digits take an exponent") << 1234567890123456.0 << 1.0 << "1.23456789012346e+15 GHz";
    QTest::newRow("none") << 433920000.0 << 0.0 << "433.92 MHz";
}

void TestResultFormats::aFixedDivisorLeavesTheUnitToTheSize()
{
    QFETCH(double, hz);
    QFETCH(double, divisor);
    QFETCH(QString, text);
    QCOMPARE(frequencyText(hz, divisor), text);
}

void TestResultFormats::aCoordinateIsWrittenInDegreesAndMinutes_data()
{
    QTest::addColumn<double>("degrees");
    QTest::addColumn<QString>("text");

    QTest::newRow("half a degree") << 8.5 << "8°30.000'";
    QTest::newRow("negative") << -12.25 << "-12°15.000'";
    QTest::newRow("zero") << 0.0 << "0°0.000'";
    QTest::newRow("negative zero") << -0.0 << "0°0.000'";
    QTest::newRow("whole degrees are cut off, not rounded") << 48.999 << "48°59.940'";
    QTest::newRow("three decimals") << 48.1372 << "48°8.232'";
    QTest::newRow("between 0 and 1") << 0.25 << "0°15.000'";
    QTest::newRow("between -1 and 0 the sign is lost") << -0.25 << "0°15.000'";
    QTest::newRow("minutes rounded by themselves") << 8.9999999 << "8°60.000'";
    QTest::newRow("180") << 180.0 << "180°0.000'";
    QTest::newRow("above 180") << 180.5 << "-179°30.000'";
    QTest::newRow("190") << 190.0 << "-170°0.000'";
    QTest::newRow("-180") << -180.0 << "180°0.000'";
    QTest::newRow("below -180") << -180.5 << "179°30.000'";
    QTest::newRow("above -180") << -179.5 << "-179°30.000'";
    QTest::newRow("360") << 360.0 << "0°0.000'";
    QTest::newRow("above 360") << 360.001 << "---";
    QTest::newRow("370") << 370.0 << "---";
    QTest::newRow("-360") << -360.0 << "0°0.000'";
    QTest::newRow("-370 is reduced") << -370.0 << "-10°0.000'";
    QTest::newRow("-900 is reduced") << -900.0 << "180°0.000'";
    QTest::newRow("infinite") << infinity << "---";
    QTest::newRow("negative and infinite") << -infinity << "---";
    QTest::newRow("not a number") << notANumber << "---";
}

void TestResultFormats::aCoordinateIsWrittenInDegreesAndMinutes()
{
    QFETCH(double, degrees);
    QFETCH(QString, text);
    QCOMPARE(coordinateText(degrees), text);
}

void TestResultFormats::aCoordinateTextIsANumberOrStandsAsItIs_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("text");

    QTest::newRow("number") << "11.5"
                            << "11°30.000'";
    QTest::newRow("decimal comma") << "11,5"
                                   << "11°30.000'";
    QTest::newRow("blanks around") << " 11.5 "
                                   << "11°30.000'";
    QTest::newRow("too large") << "370"
                               << "---";
    QTest::newRow("written already") << "8°30.000'"
                                     << "8°30.000'";
    QTest::newRow("words") << "not known"
                           << "not known";
    QTest::newRow("number and words") << "11.5 E"
                                      << "11.5 E";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("blank") << " "
                           << " ";
    QTest::newRow("infinite") << "inf"
                              << "inf";
    QTest::newRow("not a number") << "nan"
                                  << "nan";
    QTest::newRow("place marker") << "%1"
                                  << "%1";
}

void TestResultFormats::aCoordinateTextIsANumberOrStandsAsItIs()
{
    QFETCH(QString, given);
    QFETCH(QString, text);
    QCOMPARE(coordinateText(given), text);
}

void TestResultFormats::numbersDoNotFollowTheLocale()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QString frequency = frequencyText(2400000001.0);
    const QString coordinate = coordinateText(-12.25);
    const QString german = QLocale().toString(1234.5);
    QLocale::setDefault(before);
    QCOMPARE(german, QStringLiteral("1.234,5"));
    QCOMPARE(frequency, QStringLiteral("2.400000001 GHz"));
    QCOMPARE(coordinate, QStringLiteral("-12°15.000'"));
}

void TestResultFormats::aUnitFollowsTheTextDirectly()
{
    const values::SelectionItem item(QStringLiteral("12.5"), 0.0, 1);
    QCOMPARE(textWithUnit(&item, QStringLiteral("°")), QStringLiteral("12.5°"));
    const values::SelectionItem empty(QString(), 0.0, 1);
    QCOMPARE(textWithUnit(&empty, QStringLiteral("%")), QStringLiteral("%"));
    QCOMPARE(textWithUnit(nullptr, QStringLiteral("%")), QStringLiteral("---"));
}

void TestResultFormats::minutesAreRoundedAsNumbersAre()
{
    const auto written = [](double degrees) {
        double whole = 0.0;
        const double minutes = std::abs(std::modf(degrees, &whole)) * 60.0;
        return QStringLiteral("%1°%2'").arg(whole, 0, 'f', 0).arg(minutes, 0, 'f', 3);
    };
    QRandomGenerator random(5);
    for (int i = 0; i < 20000; ++i) {
        const double degrees = random.generateDouble() * 358.0 - 179.0;
        QCOMPARE(coordinateText(degrees), written(degrees));
        // In the middle between two thousandths, and beside it.
        const double middle = random.bounded(60000) + 0.5;
        for (const double thousandths :
             {middle, std::nextafter(middle, 0.0), std::nextafter(middle, 1e6), middle - 0.5}) {
            const double between = random.bounded(-179, 180) + thousandths / 60000.0;
            QCOMPARE(coordinateText(between), written(between));
        }
    }
}

DFL_TEST_MAIN_WITH(TestResultFormats, QCoreApplication)
#include "tst_resultformats.moc"
