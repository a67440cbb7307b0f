#include "drivers/geodesy.h"
#include "drivers/historyfix.h"
#include "support/testmain.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <random>

using namespace workbench;

namespace {

StationResult station(double latitude, double longitude, double azimuth, double sigma = 1.5)
{
    StationResult result;
    result.position = GeoPosition{latitude, longitude};
    result.azimuth = azimuth;
    result.quality = 80.0;
    result.sigma = sigma;
    return result;
}

DfResult resultOf(std::vector<StationResult> stations)
{
    DfResult result;
    result.stations = std::move(stations);
    return result;
}

/// Four bearings with known errors: their fix is a published one.
std::vector<StationResult> fourBearings()
{
    return {station(50.0, 6.0, 77.3), station(50.3, 7.0, 227.0), station(49.7, 7.2, 319.1), station(50.5, 6.3, 152.6)};
}

const Fix& fixOf(const HistoryFix& history)
{
    const auto* const fix = std::get_if<Fix>(&history.located);
    if (fix == nullptr)
        qFatal("%s", qPrintable(std::get<QString>(history.located)));
    return *fix;
}

QString reasonOf(const HistoryFix& history)
{
    const auto* const reason = std::get_if<QString>(&history.located);
    return reason != nullptr ? *reason : QStringLiteral("a fix");
}

bool isNear(double actual, double expected, double tolerance)
{
    if (std::abs(actual - expected) <= tolerance)
        return true;
    qWarning("%.12g is not within %g of %.12g", actual, tolerance, expected);
    return false;
}

/// The same but for what numbers of this size lose.
bool isSameFix(const Fix& actual, const Fix& expected)
{
    constexpr double metre = 1e-5; // degrees
    const ErrorEllipse a = standardEllipse(actual.covariance);
    const ErrorEllipse e = standardEllipse(expected.covariance);
    return isNear(actual.position.latitude, expected.position.latitude, metre) &&
           isNear(actual.position.longitude, expected.position.longitude, metre) &&
           isNear(a.semiMajor, e.semiMajor, 1e-4 * e.semiMajor) &&
           isNear(a.semiMinor, e.semiMinor, 1e-4 * e.semiMinor) &&
           isNear(actual.chiSquare, expected.chiSquare, 1e-4 * (1.0 + expected.chiSquare)) &&
           actual.degreesOfFreedom == expected.degreesOfFreedom;
}

/// The fix of all bearings one by one.
Fix plainFix(const std::vector<DfResult>& results)
{
    std::vector<Bearing> bearings;
    for (const DfResult& result : results) {
        for (const Bearing& bearing : bearingsForFix(result, 0))
            bearings.push_back(bearing);
    }
    const FixResult fix = positionFix(bearings);
    if (const auto* const reason = std::get_if<NoFix>(&fix))
        qFatal("%s", qPrintable(explanation(*reason)));
    return std::get<Fix>(fix);
}

/// @p count results of the stations of @p pattern, each bearing off by a normally distributed error.
std::vector<DfResult> scattered(const DfResult& pattern, int count)
{
    std::mt19937_64 random(7);
    std::normal_distribution<double> error;
    std::vector<DfResult> results;
    for (int i = 0; i < count; ++i) {
        DfResult result = pattern;
        for (StationResult& each : result.stations) {
            // Not all equally accurate, or their mean needed no weights.
            each.sigma = *each.sigma * (1.0 + i % 3);
            each.azimuth = std::fmod(*each.azimuth + *each.sigma * error(random) + 360.0, 360.0);
        }
        results.push_back(result);
    }
    return results;
}

} // namespace

class HistoryFixTest : public QObject
{
    Q_OBJECT
private slots:
    void withoutResultsThereIsAReason();
    void bearingsOfDifferentResultsMeet();
    void oneResultHasTheFixOfItsBearings();
    void manyResultsHaveTheFixOfAllTheirBearings_data();
    void manyResultsHaveTheFixOfAllTheirBearings();
    void aStationThatMovesIsTakenWhereItWas();
    void bearingsAroundNorthHaveAMeanInTheNorth();
    void oppositeBearingsOfOnePlaceDisturbNothing();
    void whatIsBelowTheThresholdIsLeftOut();
    void whatIsNoBearingIsLeftOut();
    void withoutAFixThereIsTheSentenceAndTheCount();
    void theScatterBesideTheFixDoesNotCount();
    void tenThousandResultsAreOneBearingForEachPlace();
};

void HistoryFixTest::withoutResultsThereIsAReason()
{
    const HistoryFix history = historyFix({}, 0);
    QCOMPARE(reasonOf(history),
             QStringLiteral("No fix: there are no stored results of the chosen time span and frequency."));
    QCOMPARE(history.results, 0);
    QCOMPARE(history.bearings, 0);
    QVERIFY(history.isComplete);
}

void HistoryFixTest::bearingsOfDifferentResultsMeet()
{
    std::vector<DfResult> results;
    for (const StationResult& each : fourBearings())
        results.push_back(resultOf({each}));
    const HistoryFix history = historyFix(results, 0);
    QCOMPARE(history.results, 4);
    QCOMPARE(history.bearings, 4);
    QVERIFY(isNear(fixOf(history).position.latitude, 50.0906117, 1e-5));
    QVERIFY(isNear(fixOf(history).position.longitude, 6.6478048, 1e-5));
    QVERIFY(isNear(fixOf(history).chiSquare, 1.54748, 1e-3));
    QCOMPARE(fixOf(history).degreesOfFreedom, 2);
}

void HistoryFixTest::oneResultHasTheFixOfItsBearings()
{
    const DfResult result = resultOf(fourBearings());
    const HistoryFix history = historyFix({result}, 0);
    const LocateResult online = onlineFix(result, 0);
    QVERIFY(isSameFix(fixOf(history), std::get<Fix>(online)));
    QCOMPARE(fixOf(history).bearings.size(), std::size_t(4));
}

void HistoryFixTest::manyResultsHaveTheFixOfAllTheirBearings_data()
{
    QTest::addColumn<double>("turn");
    QTest::addColumn<int>("count");
    QTest::newRow("two") << 0.0 << 2;
    QTest::newRow("forty") << 0.0 << 40;
    QTest::newRow("at the date line") << 173.3 << 25;
}

void HistoryFixTest::manyResultsHaveTheFixOfAllTheirBearings()
{
    QFETCH(double, turn);
    QFETCH(int, count);
    DfResult pattern = resultOf(fourBearings());
    for (StationResult& each : pattern.stations)
        each.position->longitude = std::remainder(each.position->longitude + turn, 360.0);
    const std::vector<DfResult> results = scattered(pattern, count);
    const HistoryFix history = historyFix(results, 0);
    QCOMPARE(history.results, count);
    QCOMPARE(history.bearings, 4 * count);
    QVERIFY(isSameFix(fixOf(history), plainFix(results)));
    QCOMPARE(fixOf(history).degreesOfFreedom, 4 * count - 2);
    QCOMPARE(fixOf(history).bearings.size(), std::size_t(4));
}

void HistoryFixTest::aStationThatMovesIsTakenWhereItWas()
{
    std::vector<DfResult> results;
    for (StationResult each : fourBearings()) {
        each.stationId = 1;
        results.push_back(resultOf({each}));
    }
    QCOMPARE(fixOf(historyFix(results, 0)).bearings.size(), std::size_t(4));
}

void HistoryFixTest::bearingsAroundNorthHaveAMeanInTheNorth()
{
    // Straight north and north-west of two stations on the equator, each seen a degree to both sides.
    const std::vector<DfResult> results{resultOf({station(0.0, 0.0, 359.0), station(0.0, 1.0, 314.0)}),
                                        resultOf({station(0.0, 0.0, 1.0), station(0.0, 1.0, 316.0)})};
    const Fix& plain = plainFix(results);
    const HistoryFix history = historyFix(results, 0);
    QVERIFY(isSameFix(fixOf(history), plain));
    QVERIFY(isNear(fixOf(history).position.longitude, 0.0, 0.01));
    QVERIFY(fixOf(history).position.latitude > 0.9);
}

void HistoryFixTest::oppositeBearingsOfOnePlaceDisturbNothing()
{
    std::vector<DfResult> results(3, resultOf(fourBearings()));
    DfResult reflected = resultOf({station(50.0, 6.0, 257.3)});
    results.push_back(reflected);
    const HistoryFix history = historyFix(results, 0);
    QCOMPARE(history.bearings, 13);
    // Three say one thing and one the opposite: their mean is still a bearing, and chi-square says that they disagree.
    QVERIFY(fixOf(history).chiSquare > 1000.0);
}

void HistoryFixTest::whatIsBelowTheThresholdIsLeftOut()
{
    std::vector<StationResult> bearings = fourBearings();
    StationResult wrong = station(50.0, 6.0, 10.0);
    wrong.quality = 39.4;
    std::vector<DfResult> results{resultOf(bearings), resultOf({wrong})};
    const HistoryFix without = historyFix(results, 40);
    QCOMPARE(without.results, 2);
    QCOMPARE(without.bearings, 4);
    QVERIFY(isSameFix(fixOf(without), plainFix({resultOf(bearings)})));
    QCOMPARE(historyFix(results, 39).bearings, 5);
}

void HistoryFixTest::whatIsNoBearingIsLeftOut()
{
    constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
    const std::vector<StationResult> good = fourBearings();
    StationResult noPosition = good[0];
    noPosition.position.reset();
    StationResult noAzimuth = good[0];
    noAzimuth.azimuth.reset();
    const std::vector<DfResult> results{
        resultOf(good),
        resultOf({noPosition, noAzimuth, station(50.0, 6.0, notANumber), station(notANumber, 6.0, 77.3),
                  station(91.0, 6.0, 77.3), station(50.0, 6.0, 77.3, 200.0), station(50.0, 6.0, 77.3, notANumber)})};
    const HistoryFix history = historyFix(results, 0);
    QCOMPARE(history.bearings, 4);
    QVERIFY(isSameFix(fixOf(history), plainFix({resultOf(good)})));
}

void HistoryFixTest::withoutAFixThereIsTheSentenceAndTheCount()
{
    const HistoryFix history = historyFix(std::vector<DfResult>(5, resultOf({station(50.0, 6.0, 77.3)})), 0);
    QCOMPARE(reasonOf(history), explanation(NoFix::TooFewBearings));
    QCOMPARE(history.results, 5);
    QCOMPARE(history.bearings, 5);
}

/// Three stations see the emitter 300 m behind a fourth one, which is where the fix is: what that one hears says
/// nothing about the position, however much it disagrees.
void HistoryFixTest::theScatterBesideTheFixDoesNotCount()
{
    const GeoPosition emitter{50.0, 5.996};
    const auto towards = [&emitter](double latitude, double longitude) {
        return station(latitude, longitude, geodesy::line({latitude, longitude}, emitter).azimuth, 3.0);
    };
    std::vector<DfResult> results;
    for (const double azimuth : {79.0, 80.0, 81.0}) {
        results.push_back(resultOf({towards(50.2, 6.3), towards(49.9, 6.4), towards(49.8, 6.1)}));
        results.back().stations.push_back(station(50.0, 6.0, azimuth, 3.0));
    }
    const HistoryFix history = historyFix(results, 0);
    QCOMPARE(fixOf(history).bearings[3].use, BearingUse::AtFix);
    QCOMPARE(history.bearings, 12);
    QCOMPARE(fixOf(history).degreesOfFreedom, 7);
    QVERIFY(isSameFix(fixOf(history), plainFix(results)));
}

void HistoryFixTest::tenThousandResultsAreOneBearingForEachPlace()
{
    const HistoryFix history = historyFix(scattered(resultOf(fourBearings()), 10000), 0);
    QCOMPARE(history.bearings, 40000);
    QCOMPARE(fixOf(history).bearings.size(), std::size_t(4));
    QVERIFY(isNear(fixOf(history).position.latitude, 50.0906, 1e-3));
}

DFL_TEST_MAIN_WITH(HistoryFixTest, QCoreApplication)
#include "tst_historyfix.moc"
