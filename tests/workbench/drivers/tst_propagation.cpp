#include "drivers/geodesy.h"
#include "drivers/noisegenerator.h"
#include "drivers/propagation.h"
#include "support/testmain.h"

#include <cmath>

using namespace workbench;

namespace {

bool isNear(double actual, double expected, double tolerance)
{
    if (std::abs(actual - expected) <= tolerance)
        return true;
    qWarning("%.9f is not within %g of %.9f", actual, tolerance, expected);
    return false;
}

} // namespace

class PropagationTest : public QObject
{
    Q_OBJECT
private slots:
    void lossInFreeSpaceGrowsWithFrequencyAndDistance();
    void lossIsNeverAGain();
    void aPowerInDbmIsALevelAcross50Ohm();
    void oneWattIs30Dbm();
    void noiseFollowsBandwidthAndNoiseFigure();
    void bearingSpreadsByAccuracyAndNoise();
    void averagingHelpsAgainstNoiseButNotAgainstTheInstrument();
    void qualityFallsWithTheSpread();

    void bearingsAndDistancesOnTheEllipsoid_data();
    void bearingsAndDistancesOnTheEllipsoid();
    void azimuthsStayBelow360();
    void somethingOnATrackMovesAlongTheGeodesic();
    void aTrackStandsStillBeforeAndAfter();

    void uniformNumbersAreTheUpperBitsOfThePublishedGenerator();
    void normalNumbersHaveTheMomentsOfTheirDistribution();
};

void PropagationTest::lossInFreeSpaceGrowsWithFrequencyAndDistance()
{
    QVERIFY(isNear(propagation::freeSpaceLoss(100e6, 10e3), 92.45, 1e-9));
    QVERIFY(isNear(propagation::freeSpaceLoss(1e9, 10e3), 112.45, 1e-9));
    QVERIFY(isNear(propagation::freeSpaceLoss(100e6, 100e3), 112.45, 1e-9));
}

void PropagationTest::lossIsNeverAGain()
{
    QCOMPARE(propagation::freeSpaceLoss(1e6, 1.0), 0.0);
    QCOMPARE(propagation::freeSpaceLoss(1e6, 0.0), 0.0);
}

void PropagationTest::aPowerInDbmIsALevelAcross50Ohm()
{
    QCOMPARE(propagation::levelFromPower(-107.0), 0.0);
    QCOMPARE(propagation::levelFromPower(0.0), 107.0);
}

void PropagationTest::oneWattIs30Dbm()
{
    QCOMPARE(propagation::dBmFromWatt(1.0), 30.0);
    QVERIFY(isNear(propagation::dBmFromWatt(0.001), 0.0, 1e-12));
}

void PropagationTest::noiseFollowsBandwidthAndNoiseFigure()
{
    // k * 290 K * 12 kHz = 4.8046e-17 W = -133.183 dBm
    QVERIFY(isNear(propagation::noiseLevel(12000.0, 0.0), -133.183 + 107.0, 0.001));
    QVERIFY(isNear(propagation::noiseLevel(12000.0, 10.0) - propagation::noiseLevel(12000.0, 0.0), 10.0, 1e-9));
    QVERIFY(isNear(propagation::noiseLevel(120000.0, 0.0) - propagation::noiseLevel(12000.0, 0.0), 10.0, 1e-9));
    QCOMPARE(propagation::noiseLevel(0.0, 0.0), propagation::noiseLevel(1.0, 0.0));
}

void PropagationTest::bearingSpreadsByAccuracyAndNoise()
{
    QVERIFY(isNear(propagation::bearingSpread(0.0, 0.0, 0.0), 20.0, 1e-9));
    QVERIFY(isNear(propagation::bearingSpread(1.0, 20.0, 0.0), std::sqrt(5.0), 1e-9));
    QVERIFY(isNear(propagation::bearingSpread(1.0, 200.0, 0.0), 1.0, 1e-9));
}

void PropagationTest::averagingHelpsAgainstNoiseButNotAgainstTheInstrument()
{
    QVERIFY(isNear(propagation::bearingSpread(0.0, 20.0, 300.0), 1.0, 1e-9)); // four looks
    QVERIFY(isNear(propagation::bearingSpread(1.0, 20.0, 300.0), std::sqrt(2.0), 1e-9));
}

void PropagationTest::qualityFallsWithTheSpread()
{
    QCOMPARE(propagation::qualityFromSpread(0.0), 100);
    QCOMPARE(propagation::qualityFromSpread(1.0), 92);
    QCOMPARE(propagation::qualityFromSpread(5.0), 66);
    QCOMPARE(propagation::qualityFromSpread(10.0), 43);
    QCOMPARE(propagation::qualityFromSpread(90.0), 1);
    for (double spread = 0.0; spread < 90.0; spread += 0.1)
        QVERIFY(propagation::qualityFromSpread(spread + 0.1) <= propagation::qualityFromSpread(spread));
}

void PropagationTest::bearingsAndDistancesOnTheEllipsoid_data()
{
    QTest::addColumn<double>("fromLatitude");
    QTest::addColumn<double>("fromLongitude");
    QTest::addColumn<double>("toLatitude");
    QTest::addColumn<double>("toLongitude");
    QTest::addColumn<double>("distance");
    QTest::addColumn<double>("azimuth");
    // The equator is a circle of 6378137 m.
    QTest::newRow("a degree along the equator") << 0.0 << 0.0 << 0.0 << 1.0 << 111319.491 << 90.0;
    QTest::newRow("back along the equator") << 0.0 << 1.0 << 0.0 << 0.0 << 111319.491 << 270.0;
    QTest::newRow("a degree north") << 0.0 << 0.0 << 1.0 << 0.0 << 110574.389 << 0.0;
    QTest::newRow("a degree south") << 1.0 << 0.0 << 0.0 << 0.0 << 110574.389 << 180.0;
    // The surveyed line between Flinders Peak and Buninyong: 54972.271 m at 306 degrees 52' 05.37".
    QTest::newRow("a surveyed line") << -37.951033417 << 144.424867889 << -37.652821139 << 143.926495528 << 54972.271
                                     << 306.868158;
}

void PropagationTest::bearingsAndDistancesOnTheEllipsoid()
{
    QFETCH(double, fromLatitude);
    QFETCH(double, fromLongitude);
    QFETCH(double, toLatitude);
    QFETCH(double, toLongitude);
    const geodesy::Line line = geodesy::line({fromLatitude, fromLongitude}, {toLatitude, toLongitude});
    QFETCH(double, distance);
    QFETCH(double, azimuth);
    QVERIFY(isNear(line.distance, distance, 0.001));
    QVERIFY(isNear(line.azimuth, azimuth, 2e-6));
}

void PropagationTest::azimuthsStayBelow360()
{
    QCOMPARE(geodesy::normalizedAzimuth(360.0), 0.0);
    QCOMPARE(geodesy::normalizedAzimuth(-90.0), 270.0);
    QCOMPARE(geodesy::normalizedAzimuth(725.0), 5.0);
    QCOMPARE(geodesy::normalizedAzimuth(-1e-20), 0.0);
    QVERIFY(!std::signbit(geodesy::normalizedAzimuth(-0.0)));
    QVERIFY(!std::signbit(geodesy::normalizedAzimuth(-360.0)));
}

void PropagationTest::somethingOnATrackMovesAlongTheGeodesic()
{
    const std::vector<TrackPoint> track{{10.0, {50.0, 10.0}}, {30.0, {50.0, 14.0}}, {40.0, {51.0, 14.0}}};
    const GeoPosition halfway = geodesy::positionOnTrack(track, 20.0);
    QVERIFY(isNear(halfway.longitude, 12.0, 1e-9));
    QVERIFY(halfway.latitude > 50.01); // the shortest way bends to the pole
    const double whole = geodesy::line(track[0].position, track[1].position).distance;
    QVERIFY(isNear(geodesy::line(track[0].position, geodesy::positionOnTrack(track, 15.0)).distance, whole / 4, 1e-3));
    const GeoPosition onSecondLeg = geodesy::positionOnTrack(track, 35.0);
    QVERIFY(isNear(onSecondLeg.longitude, 14.0, 1e-9));
    QVERIFY(isNear(onSecondLeg.latitude, 50.5, 1e-3));
}

void PropagationTest::aTrackStandsStillBeforeAndAfter()
{
    const std::vector<TrackPoint> track{{10.0, {50.0, 10.0}}, {30.0, {50.0, 14.0}}};
    QCOMPARE(geodesy::positionOnTrack(track, 0.0).longitude, 10.0);
    QCOMPARE(geodesy::positionOnTrack(track, 10.0).longitude, 10.0);
    QCOMPARE(geodesy::positionOnTrack(track, 30.0).longitude, 14.0);
    QCOMPARE(geodesy::positionOnTrack(track, 1e6).longitude, 14.0);
}

void PropagationTest::uniformNumbersAreTheUpperBitsOfThePublishedGenerator()
{
    // The C++ standard states the 10000th number of a generator with the seed 5489.
    NoiseGenerator noise(5489);
    double last = 0.0;
    for (int i = 0; i < 10000; ++i)
        last = noise.uniform();
    QCOMPARE(last, static_cast<double>(9981545732273789042ULL >> 11) / 9007199254740992.0);
}

void PropagationTest::normalNumbersHaveTheMomentsOfTheirDistribution()
{
    NoiseGenerator noise(7);
    constexpr int count = 100000;
    double sum = 0.0;
    double squares = 0.0;
    int withinOne = 0;
    for (int i = 0; i < count; ++i) {
        const double number = noise.normal();
        QVERIFY(std::isfinite(number));
        sum += number;
        squares += number * number;
        withinOne += std::abs(number) < 1.0 ? 1 : 0;
    }
    QVERIFY(isNear(sum / count, 0.0, 0.02));
    QVERIFY(isNear(squares / count, 1.0, 0.03));
    QVERIFY(isNear(static_cast<double>(withinOne) / count, 0.6827, 0.01));
}

DFL_TEST_MAIN_WITH(PropagationTest, QCoreApplication)
#include "tst_propagation.moc"
