#include "map/geoshapes.h"
#include "map/mapprojection.h"

#include "drivers/geodesy.h"
#include "support/testmain.h"

#include <cmath>
#include <limits>

using namespace workbench;
using geoshapes::Line;

namespace {

double distance(const GeoPosition& a, const GeoPosition& b)
{
    return geodesy::line(a, b).distance;
}

double planeArea(const Line& ring)
{
    double twice = 0.0;
    for (std::size_t i = 1; i < ring.size(); ++i)
        twice += ring[i - 1].longitude * ring[i].latitude - ring[i].longitude * ring[i - 1].latitude;
    return twice / 2.0;
}

bool isClosed(const Line& ring)
{
    return ring.front().latitude == ring.back().latitude && ring.front().longitude == ring.back().longitude;
}

} // namespace

class TestGeoShapes : public QObject
{
    Q_OBJECT
private slots:
    void aPositionIsOnEarthWithFiniteNumbersAndALatitudeUpToThePoles()
    {
        const double nan = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(geoshapes::isOnEarth({90.0, 0.0}));
        QVERIFY(geoshapes::isOnEarth({-90.0, 540.0}));
        QVERIFY(!geoshapes::isOnEarth({90.1, 0.0}));
        QVERIFY(!geoshapes::isOnEarth({nan, 0.0}));
        QVERIFY(!geoshapes::isOnEarth({0.0, nan}));
        QVERIFY(!geoshapes::isOnEarth({0.0, std::numeric_limits<double>::infinity()}));
    }

    void theCentreLiesBetweenPositionsOnBothSidesOfTheDateLine()
    {
        const GeoPosition centre = geoshapes::centreOf({{-18.0, 179.0}, {-18.0, -177.0}});
        QVERIFY(std::abs(centre.longitude + 179.0) < 1e-9);
        QVERIFY(std::abs(centre.latitude + 18.0) < 0.1);
    }

    void theCentreOfStationsAroundAPoleIsThePole()
    {
        QVERIFY(std::abs(geoshapes::centreOf({{89.0, 0.0}, {89.0, 120.0}, {89.0, -120.0}}).latitude - 90.0) < 1e-6);
    }

    void antipodesHaveTheFirstOfThemAsCentre()
    {
        QCOMPARE(geoshapes::centreOf({{10.0, 20.0}, {-10.0, -160.0}}).longitude, 20.0);
    }

    void aBearingLineIsAGeodesicOfTheGivenLength()
    {
        const GeoPosition station{50.0, 6.0};
        const Line line = geoshapes::bearingLine(station, 77.3, 220e3);
        QCOMPARE(line.size(), std::size_t(6)); // five pieces of 44 km
        QVERIFY(distance(line.front(), station) < 1e-6);
        QVERIFY(std::abs(distance(station, line.back()) - 220e3) < 1e-3);
        for (std::size_t i = 1; i < line.size(); ++i)
            QVERIFY(std::abs(geodesy::line(station, line[i]).azimuth - 77.3) < 1e-9);
    }

    void aLineFromAPoleLeavesAlongAMeridian()
    {
        const Line line = geoshapes::bearingLine({90.0, 30.0}, 180.0, 100e3);
        QVERIFY(std::abs(line.back().longitude - 30.0) < 1e-9);
        QVERIFY(line.back().latitude < 89.2);
    }

    void theCornersOfAnEllipseLieOnItsAxes()
    {
        const GeoPosition centre{50.0, 6.0};
        const Line ring = geoshapes::ellipseOutline(centre, {2000.0, 500.0, 60.0});
        QVERIFY(isClosed(ring));
        QCOMPARE(ring.size(), std::size_t(73));
        QVERIFY(std::abs(distance(centre, ring[0]) - 2000.0) < 1e-3);
        QVERIFY(std::abs(geodesy::line(centre, ring[0]).azimuth - 60.0) < 1e-6);
        QVERIFY(std::abs(distance(centre, ring[18]) - 500.0) < 1e-3);
        QVERIFY(std::abs(geodesy::line(centre, ring[18]).azimuth - 330.0) < 1e-6); // counterclockwise
        QVERIFY(planeArea(ring) > 0.0);
    }

    void anEllipseWithoutEndHasNoOutline()
    {
        const double infinity = std::numeric_limits<double>::infinity();
        QVERIFY(geoshapes::ellipseOutline({50.0, 6.0}, {infinity, 1.0, 0.0}).empty());
        QVERIFY(geoshapes::splitRingAtDateLine({}).empty());
    }

    void aLineAcrossTheDateLineIsCutWhereTheGeodesicCrossesIt()
    {
        const GeoPosition station{60.0, 179.5};
        const auto parts = geoshapes::splitAtDateLine(geoshapes::bearingLine(station, 80.0, 200e3));
        QCOMPARE(parts.size(), std::size_t(2));
        QCOMPARE(parts[0].back().longitude, 180.0);
        QCOMPARE(parts[1].front().longitude, -180.0);
        QCOMPARE(parts[0].back().latitude, parts[1].front().latitude);
        QVERIFY(std::abs(geodesy::line(station, parts[0].back()).azimuth - 80.0) < 1e-6);
    }

    void aLineThatDoesNotCrossTheDateLineStaysWhole()
    {
        QCOMPARE(geoshapes::splitAtDateLine(geoshapes::bearingLine({60.0, 170.0}, 270.0, 200e3)).size(),
                 std::size_t(1));
        QVERIFY(geoshapes::splitAtDateLine({}).empty());
    }

    void longitudesOfASplitLineAreReduced()
    {
        const auto parts = geoshapes::splitAtDateLine({{10.0, 365.0}, {11.0, 366.0}});
        QCOMPARE(parts.size(), std::size_t(1));
        QCOMPARE(parts[0][0].longitude, 5.0);
    }

    void anAreaOnTheDateLineBecomesTwoThatKeepItsSizeAndSense()
    {
        const ErrorEllipse circle{50e3, 50e3, 0.0};
        const Line onDateLine = geoshapes::ellipseOutline({-18.0, 179.9}, circle);
        const auto parts = geoshapes::splitRingAtDateLine(onDateLine);
        QCOMPARE(parts.size(), std::size_t(2));
        double area = 0.0;
        for (const Line& part : parts) {
            QVERIFY(isClosed(part));
            QVERIFY(planeArea(part) > 0.0);
            area += planeArea(part);
            for (const GeoPosition& position : part)
                QVERIFY(std::abs(position.longitude) >= 179.0 && std::abs(position.longitude) <= 180.0);
        }
        const double elsewhere = planeArea(geoshapes::ellipseOutline({-18.0, 0.0}, circle));
        QVERIFY(std::abs(area - elsewhere) < 1e-6 * elsewhere);
    }

    void anAreaElsewhereStaysOne()
    {
        const auto parts = geoshapes::splitRingAtDateLine(geoshapes::ellipseOutline({50.0, 6.0}, {2e3, 1e3, 30.0}));
        QCOMPARE(parts.size(), std::size_t(1));
        QCOMPARE(parts[0].size(), std::size_t(73));
    }

    void anAreaAroundAPoleReachesThePolesEdgeOfTheMap_data()
    {
        QTest::addColumn<double>("pole");
        QTest::newRow("north") << 90.0;
        QTest::newRow("south") << -90.0;
    }

    void anAreaAroundAPoleReachesThePolesEdgeOfTheMap()
    {
        QFETCH(double, pole);
        const auto parts =
            geoshapes::splitRingAtDateLine(geoshapes::ellipseOutline({pole * 0.998, 40.0}, {100e3, 100e3, 0.0}));
        double area = 0.0;
        for (const Line& part : parts) {
            QVERIFY(isClosed(part));
            QVERIFY(planeArea(part) > 0.0);
            area += planeArea(part);
        }
        // A cap of 0.9 degrees whose centre is 0.18 degrees off the pole, all the way round.
        QVERIFY2(area > 360.0 * 0.8 && area < 360.0 * 1.0, qPrintable(QString::number(area)));
    }

    void theProjectionKeepsDistanceAndAzimuthFromItsCentre_data()
    {
        QTest::addColumn<double>("latitude");
        QTest::addColumn<double>("longitude");
        QTest::newRow("midlands") << 50.0 << 6.0;
        QTest::newRow("date line") << -18.0 << 179.9;
        QTest::newRow("north pole") << 90.0 << 0.0;
        QTest::newRow("equator") << 0.0 << 0.0;
    }

    void theProjectionKeepsDistanceAndAzimuthFromItsCentre()
    {
        QFETCH(double, latitude);
        QFETCH(double, longitude);
        const MapProjection projection({latitude, longitude});
        const Line line = geoshapes::bearingLine({latitude, longitude}, 125.0, 300e3);
        const QPointF end = projection.toMap(line.back());
        QVERIFY(std::abs(std::hypot(end.x(), end.y()) - 300e3) < 1e-3);
        QVERIFY(std::abs(qRadiansToDegrees(std::atan2(end.x(), -end.y())) - 125.0) < 1e-6);
        const auto back = projection.toEarth(end);
        QVERIFY(back.has_value());
        QVERIFY(distance(*back, line.back()) < 1e-3);
    }

    void nothingIsBeyondTheEdgeOfTheMap()
    {
        const MapProjection projection({50.0, 6.0});
        QVERIFY(projection.toEarth({0.0, 19e6}).has_value());
        QVERIFY(!projection.toEarth({0.0, 20.1e6}).has_value());
        QVERIFY(!projection.toEarth({std::numeric_limits<double>::quiet_NaN(), 0.0}).has_value());
    }
};

DFL_TEST_MAIN_WITH(TestGeoShapes, QCoreApplication)
#include "tst_geoshapes.moc"
