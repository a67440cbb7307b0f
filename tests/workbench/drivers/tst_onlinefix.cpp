#include "drivers/onlinefix.h"
#include "support/testmain.h"

#include <QtTest>

#include <cmath>

using namespace workbench;

namespace {

StationResult station(double latitude, double longitude, double azimuth)
{
    StationResult result;
    result.position = GeoPosition{latitude, longitude};
    result.azimuth = azimuth;
    result.quality = 80.0;
    result.sigma = 1.5;
    return result;
}

/// Four bearings with known errors.
DfResult fourBearings()
{
    DfResult result;
    result.stations = {station(50.0, 6.0, 77.3), station(50.3, 7.0, 227.0), station(49.7, 7.2, 319.1),
                       station(50.5, 6.3, 152.6)};
    return result;
}

QString reasonOf(const DfResult& result, int qualityThreshold = 0)
{
    const LocateResult located = onlineFix(result, qualityThreshold);
    const auto* const reason = std::get_if<QString>(&located);
    return reason != nullptr ? *reason : QString();
}

bool isNear(double actual, double expected, double tolerance)
{
    if (std::abs(actual - expected) <= tolerance)
        return true;
    qWarning("%.9f is not within %g of %.9f", actual, tolerance, expected);
    return false;
}

} // namespace

class OnlineFixTest : public QObject
{
    Q_OBJECT
private slots:
    void aBearingCarriesWhatItsStationMeasured();
    void aBearingOfUnknownAccuracyCountsAsThreeDegrees();
    void aBearingWithoutNoiseCounts();
    void everyStationHasABearingInItsPlace();
    void whatIsBelowTheThresholdIsLeftOut_data();
    void whatIsBelowTheThresholdIsLeftOut();
    void aMissingQualityCountsAsZero();
    void theFixIsThatOfTheBearings();
    void aMoreAccurateBearingHasMoreWeight();
    void aPoorBearingDoesNotMoveTheFix();
    void withoutAFixThereIsASentence();
};

void OnlineFixTest::aBearingCarriesWhatItsStationMeasured()
{
    DfResult result;
    result.stations = {station(-12.5, 170.25, 359.75)};
    const std::vector<Bearing> bearings = bearingsForFix(result, 0);
    QCOMPARE(bearings.size(), std::size_t(1));
    QCOMPARE(bearings[0].station.latitude, -12.5);
    QCOMPARE(bearings[0].station.longitude, 170.25);
    QCOMPARE(bearings[0].azimuth, 359.75);
    QCOMPARE(bearings[0].sigma, 1.5);
    QVERIFY(!bearings[0].excluded);
}

void OnlineFixTest::aBearingOfUnknownAccuracyCountsAsThreeDegrees()
{
    DfResult result = fourBearings();
    result.stations[0].sigma.reset();
    QCOMPARE(bearingsForFix(result, 0).at(0).sigma, 3.0);
}

void OnlineFixTest::aBearingWithoutNoiseCounts()
{
    DfResult result;
    result.stations = {station(0.0, 0.0, 90.0), station(-1.0, 1.0, 0.0)};
    for (StationResult& exact : result.stations)
        exact.sigma = 0.0;
    const LocateResult located = onlineFix(result, 0);
    const auto* const fix = std::get_if<Fix>(&located);
    QVERIFY(fix != nullptr);
    QVERIFY(isNear(fix->position.latitude, 0.0, 1e-9));
    QVERIFY(isNear(fix->position.longitude, 1.0, 1e-9));
}

void OnlineFixTest::everyStationHasABearingInItsPlace()
{
    DfResult result = fourBearings();
    result.stations[1].azimuth.reset();
    result.stations[2].position.reset();
    const LocateResult located = onlineFix(result, 0);
    const auto* const fix = std::get_if<Fix>(&located);
    QVERIFY(fix != nullptr);
    std::vector<BearingUse> uses;
    for (const BearingCheck& check : fix->bearings)
        uses.push_back(check.use);
    QVERIFY((uses ==
             std::vector<BearingUse>{BearingUse::Used, BearingUse::Unusable, BearingUse::Unusable, BearingUse::Used}));
    QCOMPARE(fix->degreesOfFreedom, 0);
}

void OnlineFixTest::whatIsBelowTheThresholdIsLeftOut_data()
{
    QTest::addColumn<double>("quality");
    QTest::addColumn<bool>("isExcluded");
    QTest::newRow("above") << 51.0 << false;
    QTest::newRow("equal") << 50.0 << false;
    QTest::newRow("shown as equal") << 49.5 << false;
    QTest::newRow("shown as less") << 49.4 << true;
    QTest::newRow("below") << 49.0 << true;
}

void OnlineFixTest::whatIsBelowTheThresholdIsLeftOut()
{
    QFETCH(double, quality);
    DfResult result = fourBearings();
    result.stations[2].quality = quality;
    const std::vector<Bearing> bearings = bearingsForFix(result, 50);
    QTEST(bearings[2].excluded, "isExcluded");
    QVERIFY(!bearings[0].excluded && !bearings[1].excluded && !bearings[3].excluded);
}

void OnlineFixTest::aMissingQualityCountsAsZero()
{
    DfResult result = fourBearings();
    result.stations[2].quality.reset();
    QVERIFY(!bearingsForFix(result, 0)[2].excluded);
    QVERIFY(bearingsForFix(result, 1)[2].excluded);
}

void OnlineFixTest::theFixIsThatOfTheBearings()
{
    const LocateResult located = onlineFix(fourBearings(), 0);
    const auto* const fix = std::get_if<Fix>(&located);
    QVERIFY(fix != nullptr);
    QVERIFY(isNear(fix->position.latitude, 50.0906117, 1e-5));
    QVERIFY(isNear(fix->position.longitude, 6.6478048, 1e-5));
    const ErrorEllipse ellipse = standardEllipse(fix->covariance);
    QVERIFY(isNear(ellipse.semiMajor, 967.75, 0.97));
    QVERIFY(isNear(ellipse.semiMinor, 748.37, 0.75));
    QVERIFY(isNear(ellipse.azimuth, 59.522, 0.06));
    QVERIFY(isNear(fix->chiSquare, 1.54748, 1e-4));
    QCOMPARE(fix->degreesOfFreedom, 2);
}

void OnlineFixTest::aMoreAccurateBearingHasMoreWeight()
{
    const auto residual = [](const DfResult& result) {
        return std::abs(*std::get<Fix>(onlineFix(result, 0)).bearings.at(2).residual);
    };
    DfResult result = fourBearings();
    const double among = residual(result);
    result.stations[2].sigma = 0.05;
    QVERIFY(residual(result) < 0.01 * among);
}

void OnlineFixTest::aPoorBearingDoesNotMoveTheFix()
{
    DfResult result = fourBearings();
    result.stations[3].quality = 20.0;
    DfResult without = result;
    without.stations.pop_back();
    const LocateResult located = onlineFix(result, 30);
    const LocateResult expected = onlineFix(without, 30);
    const auto* const fix = std::get_if<Fix>(&located);
    const auto* const fixWithout = std::get_if<Fix>(&expected);
    QVERIFY(fix != nullptr && fixWithout != nullptr);
    QCOMPARE(fix->position.latitude, fixWithout->position.latitude);
    QCOMPARE(fix->position.longitude, fixWithout->position.longitude);
    QCOMPARE(fix->bearings.at(3).use, BearingUse::Excluded);
}

void OnlineFixTest::withoutAFixThereIsASentence()
{
    QCOMPARE(reasonOf({}), explanation(NoFix::TooFewBearings));
    QCOMPARE(reasonOf(fourBearings(), 81), explanation(NoFix::TooFewBearings));
    DfResult parallel;
    parallel.stations = {station(0.0, 0.0, 0.0), station(0.0, 1.0, 0.0)};
    QCOMPARE(reasonOf(parallel), explanation(NoFix::ParallelLines));
    DfResult behind;
    behind.stations = {station(0.0, 0.0, 315.0), station(0.0, 1.0, 45.0)};
    QCOMPARE(reasonOf(behind), explanation(NoFix::BehindStation));
}

DFL_TEST_MAIN_WITH(OnlineFixTest, QCoreApplication)
#include "tst_onlinefix.moc"
