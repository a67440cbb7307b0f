#include "map/planeshapes.h"

#include "drivers/geodesy.h"
#include "support/testmain.h"

#include <cmath>

using namespace workbench;
using Positions = std::vector<GeoPosition>;

namespace {

PlaneShape drawn(const GeoShape& shape, const GeoPosition& centre)
{
    const auto shapes = onPlane({shape}, MapProjection(centre));
    return shapes && shapes->size() == 1 ? shapes->front() : PlaneShape{};
}

GeoShape line(Positions positions)
{
    return {GeoShape::Kind::Lines, QStringLiteral("line"), {std::move(positions)}};
}

GeoShape area(std::vector<Positions> rings)
{
    return {GeoShape::Kind::Area, QStringLiteral("area"), std::move(rings)};
}

/// A ring as a file gives it: (longitude, latitude).
Positions ring(std::initializer_list<std::pair<double, double>> corners)
{
    Positions positions;
    for (const auto& [longitude, latitude] : corners)
        positions.push_back({latitude, longitude});
    return positions;
}

bool holds(const PlaneShape& shape, const GeoPosition& centre, const GeoPosition& place)
{
    return shape.drawings[0].area.contains(MapProjection(centre).toMap(place));
}

double lengthOf(const std::vector<QPolygonF>& lines)
{
    double length = 0.0;
    for (const QPolygonF& each : lines) {
        for (int i = 1; i < each.size(); ++i)
            length += QLineF(each[i - 1], each[i]).length();
    }
    return length;
}

const GeoPosition bonn{50.7, 7.1};

} // namespace

class TestPlaneShapes : public QObject
{
    Q_OBJECT
private slots:
    void pointsLieWhereTheyAre()
    {
        const PlaneShape shape =
            drawn({GeoShape::Kind::Points, QStringLiteral("towns"), {{{50.0, 7.0}}, {{51.0, 8.0}}}}, bonn);
        QCOMPARE(shape.name, QStringLiteral("towns"));
        QCOMPARE(shape.points.size(), 2);
        QVERIFY(QLineF(shape.points[1], MapProjection(bonn).toMap({51.0, 8.0})).length() < 1e-6);
        QCOMPARE(shape.namePlace, shape.points[0]);
    }

    void aLineIsStraightInLongitudeAndLatitude()
    {
        // Along a parallel, which is no geodesic: its middle is 13 km off the straight line.
        const PlaneShape shape = drawn(line({{60.0, 0.0}, {60.0, 20.0}}), {55.0, 10.0});
        QCOMPARE(shape.drawings[0].lines.size(), std::size_t(1));
        const QPolygonF& points = shape.drawings[0].lines[0];
        const MapProjection projection({55.0, 10.0});
        QVERIFY(points.size() > 5);
        for (int i = 0; i < points.size(); ++i)
            QVERIFY(std::abs(projection.toEarth(points[i])->latitude - 60.0) < 1e-6);
        for (int i = 1; i < points.size(); ++i) {
            const auto middle = projection.toEarth((points[i - 1] + points[i]) / 2.0);
            QVERIFY(std::abs(middle->latitude - 60.0) * 111e3 < 200.0);
        }
    }

    void aLineGoesTheShorterWayAcrossTheDateLine()
    {
        const GeoPosition fiji{-17.0, 179.0};
        const MapProjection projection(fiji);
        const QPointF from = projection.toMap({-17.0, 178.0});
        const QPointF to = projection.toMap({-17.0, -178.0});
        for (const double longitude : {-178.0, 182.0}) {
            const PlaneShape shape = drawn(line({{-17.0, 178.0}, {-17.0, longitude}}), fiji);
            QVERIFY(lengthOf(shape.drawings[0].lines) < 1.01 * QLineF(from, to).length());
        }
    }

    void aFullTurnGoesRoundTheEarth()
    {
        const PlaneShape shape = drawn(line({{80.0, -180.0}, {80.0, 180.0}}), {90.0, 0.0});
        const double radius = geodesy::line({90.0, 0.0}, {80.0, 0.0}).distance;
        QVERIFY(std::abs(lengthOf(shape.drawings[0].lines) / (2.0 * M_PI * radius) - 1.0) < 1e-3);
        QVERIFY(shape.bounds.contains(QPointF(0.0, 0.0)));
    }

    void anAreaIsFilledButForItsHoles()
    {
        const PlaneShape shape = drawn(area({ring({{6, 50}, {8, 50}, {8, 52}, {6, 52}, {6, 50}}),
                                             ring({{6.5, 50.5}, {7.5, 50.5}, {7.5, 51.5}, {6.5, 51.5}, {6.5, 50.5}})}),
                                       bonn);
        QVERIFY(holds(shape, bonn, {50.2, 6.2}));
        QVERIFY(!holds(shape, bonn, {51.0, 7.0}));
        QVERIFY(!holds(shape, bonn, {49.0, 7.0}));
        QCOMPARE(shape.drawings[0].lines.size(), std::size_t(2));
        QVERIFY(shape.bounds.contains(shape.namePlace));
    }

    void anAreaOfTwoPartsIsOneShape()
    {
        const PlaneShape shape = drawn(
            area({ring({{6, 50}, {7, 50}, {7, 51}, {6, 50}}), ring({{10, 50}, {11, 50}, {11, 51}, {10, 50}})}), bonn);
        QVERIFY(holds(shape, bonn, {50.3, 6.7}));
        QVERIFY(holds(shape, bonn, {50.3, 10.7}));
        QVERIFY(!holds(shape, bonn, {50.3, 8.5}));
    }

    void anAreaCutAtTheDateLineHasNoOutlineThere()
    {
        const GeoPosition fiji{-17.0, 179.0};
        const PlaneShape shape = drawn(area({ring({{179, -18}, {180, -18}, {180, -16}, {179, -16}, {179, -18}}),
                                             ring({{-180, -18}, {-179, -18}, {-179, -16}, {-180, -16}, {-180, -18}})}),
                                       fiji);
        QVERIFY(holds(shape, fiji, {-17.0, 179.5}));
        QVERIFY(holds(shape, fiji, {-17.0, -179.5}));
        // Twice two degrees of longitude at the upper and lower edge, and the two outer edges.
        const double expected = 4.0 * geodesy::line({-17.0, 179.0}, {-17.0, 180.0}).distance +
                                2.0 * geodesy::line({-18.0, 179.0}, {-16.0, 179.0}).distance;
        QVERIFY(std::abs(lengthOf(shape.drawings[0].lines) / expected - 1.0) < 0.01);
    }

    void anAreaAcrossTheDateLineIsFilledAcrossIt()
    {
        const GeoPosition fiji{-17.0, 179.0};
        const PlaneShape shape =
            drawn(area({ring({{179, -18}, {-179, -18}, {-179, -16}, {179, -16}, {179, -18}})}), fiji);
        QVERIFY(holds(shape, fiji, {-17.0, 179.5}));
        QVERIFY(holds(shape, fiji, {-17.0, -179.5}));
        QVERIFY(!holds(shape, fiji, {-17.0, 178.5}));
        QVERIFY(!holds(shape, fiji, {-17.0, 0.0}));
    }

    void aPoleIsFilledHoweverItsAreaIsWritten_data()
    {
        QTest::addColumn<bool>("isCut");
        QTest::addColumn<double>("latitude"); // of the centre of the map
        for (const bool isCut : {true, false}) {
            for (const double latitude : {-85.0, -40.0, 10.0, 50.0})
                QTest::addRow("%s, from %g", isCut ? "cut" : "around", latitude) << isCut << latitude;
        }
    }

    void aPoleIsFilledHoweverItsAreaIsWritten()
    {
        QFETCH(bool, isCut);
        QFETCH(double, latitude);
        const Positions cut =
            ring({{-180, -90}, {-180, -70}, {-90, -70}, {0, -70}, {90, -70}, {180, -70}, {180, -90}, {-180, -90}});
        const Positions around = ring({{0, -70}, {90, -70}, {180, -70}, {-90, -70}, {0, -70}});
        const GeoPosition centre{latitude, 7.1};
        const PlaneShape shape = drawn(area({isCut ? cut : around}), centre);
        for (const double longitude : {-170.0, -91.0, 3.0, 100.0, 179.0}) {
            QVERIFY(holds(shape, centre, {-80.0, longitude}));
            QVERIFY(holds(shape, centre, {-71.0, longitude}));
            QVERIFY(!holds(shape, centre, {-69.0, longitude}));
            QVERIFY(!holds(shape, centre, {60.0, longitude}));
        }
        // Its coast, and neither date line nor pole.
        for (const QPolygonF& each : shape.drawings[0].lines) {
            for (const QPointF& point : each)
                QVERIFY(std::abs(MapProjection(centre).toEarth(point)->latitude + 70.0) < 1e-6);
        }
    }

    void anAreaAroundTheAntipodeOfTheCentreLiesAtTheEdgeOfTheMap()
    {
        const GeoPosition centre{40.0, -4.0}; // its antipode is near New Zealand
        const PlaneShape shape =
            drawn(area({ring({{166, -47}, {-174, -47}, {-174, -33}, {166, -33}, {166, -47}})}), centre);
        QVERIFY(holds(shape, centre, {-40.5, 175.0}));
        QVERIFY(holds(shape, centre, {-35.0, 170.0}));
        QVERIFY(!holds(shape, centre, {-30.0, 175.0}));
        QVERIFY(!holds(shape, centre, centre));
        QVERIFY(!holds(shape, centre, {40.0, 100.0}));
    }

    void theWholeEarthButForAHoleIsFilled()
    {
        const PlaneShape shape = drawn(area({ring({{-180, -90}, {180, -90}, {180, 90}, {-180, 90}, {-180, -90}}),
                                             ring({{0, 40}, {20, 40}, {20, 60}, {0, 60}, {0, 40}})}),
                                       bonn);
        QVERIFY(!holds(shape, bonn, {50.0, 10.0}));
        QVERIFY(holds(shape, bonn, {30.0, 10.0}));
        QVERIFY(holds(shape, bonn, {-60.0, -120.0}));
        QCOMPARE(shape.drawings[0].lines.size(), std::size_t(1)); // that of the hole
    }

    void coarserDrawingsHaveFewerPointsAndTheSameEnds()
    {
        Positions positions;
        for (int i = 0; i <= 2000; ++i)
            positions.push_back({50.0 + 0.001 * i, 7.0 + 0.001 * (i % 2)}); // every 130 m
        const PlaneShape shape = drawn(line(positions), bonn);
        int before = 2001;
        for (const PlaneShape::Drawing& drawing : shape.drawings) {
            const QPolygonF& points = drawing.lines[0];
            QVERIFY(points.size() <= before);
            QCOMPARE(points.first(), shape.drawings[0].lines[0].first());
            QCOMPARE(points.last(), shape.drawings[0].lines[0].last());
            before = points.size();
        }
        QCOMPARE(shape.drawings[0].lines[0].size(), 2001);
        QVERIFY(before < 20);
        QCOMPARE(&shape.drawingAt(0.5), &shape.drawings[0]);
        QCOMPARE(&shape.drawingAt(250.0), &shape.drawings[1]);
        QCOMPARE(&shape.drawingAt(24999.0), &shape.drawings[2]);
        QCOMPARE(&shape.drawingAt(80000.0), &shape.drawings[3]);
    }

    void everyPointIsFiniteAndOnTheMapWhateverTheFileHolds()
    {
        const std::vector<double> longitudes{-360, -180, -179.999999, 0, 7.1, 90, 180, 187.1, 360};
        const std::vector<double> latitudes{-90, -50.7, 0, 50.7, 90};
        Positions positions;
        for (const double longitude : longitudes) {
            for (const double latitude : latitudes)
                positions.push_back({latitude, longitude});
        }
        positions.push_back(positions.front());
        for (const GeoPosition& centre :
             {bonn, GeoPosition{0.0, 0.0}, GeoPosition{90.0, 0.0}, GeoPosition{-50.7, -172.9}}) {
            for (const auto& shape : {line(positions), area({positions})}) {
                const PlaneShape result = drawn(shape, centre);
                for (const QPolygonF& each : result.drawings[0].lines) {
                    for (const QPointF& point : each)
                        QVERIFY(std::hypot(point.x(), point.y()) < 1.0001 * MapProjection::radius);
                }
                QVERIFY(std::isfinite(result.namePlace.x()) && std::isfinite(result.namePlace.y()));
            }
        }
    }

    void hostileEdgesAreBounded()
    {
        // Two full turns of the Earth, over and over.
        Positions positions;
        for (int i = 0; i < 3000; ++i)
            positions.push_back({i % 2 == 0 ? 10.0 : 20.0, i % 2 == 0 ? -360.0 : 360.0});
        const PlaneShape shape = drawn(line(positions), bonn);
        const int points = shape.drawings[0].lines[0].size();
        QVERIFY(points > 50000);
        QVERIFY(points < 250000);
    }

    void itTellsItsProgressAndCanBeCancelled()
    {
        const std::vector<GeoShape> shapes(20, line(Positions(2000, bonn)));
        std::vector<double> shares;
        const auto whole = onPlane(shapes, MapProjection(bonn), [&](double share) {
            shares.push_back(share);
            return true;
        });
        QVERIFY(whole.has_value());
        QVERIFY(shares.size() >= 5);
        QVERIFY(std::is_sorted(shares.begin(), shares.end()));
        QVERIFY(shares.back() > 0.5 && shares.back() <= 1.0);
        QVERIFY(!onPlane(shapes, MapProjection(bonn), [](double) { return false; }));
    }
};

DFL_TEST_MAIN_WITH(TestPlaneShapes, QCoreApplication)
#include "tst_planeshapes.moc"
