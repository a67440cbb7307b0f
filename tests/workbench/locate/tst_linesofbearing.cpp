#include "bearings.h"
#include "drivers/noisegenerator.h"
#include "locate/ellipsoidlines.h"
#include "locate/gaussnewton.h"
#include "locate/spherelines.h"
#include "support/testmain.h"

#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <new>

using namespace workbench::locate;
using testsupport::distance;
using workbench::GeoPosition;

namespace {

int allocations = 0;
constexpr double degree = 0.017453292519943295;

/// Three stations that see an emitter between them.
const std::vector<GeoPosition> stations{{50.0, 6.0}, {50.3, 7.0}, {49.7, 7.2}};
constexpr GeoPosition emitter{50.1, 6.65};

template <typename Lines>
Lines linesTo(const GeoPosition& target, double sigmaDegrees)
{
    Lines lines;
    for (const GeoPosition& station : stations)
        lines.add(station, workbench::geodesy::line(station, target).azimuth, sigmaDegrees * degree);
    return lines;
}

/// How far the position lies to the right of the bearing of one station, in degrees.
double azimuthTo(const GeoPosition& station, const GeoPosition& position)
{
    return -sightOf(station, 0.0, position).residual;
}

Crossing crossingOf(const GeoPosition& first, double firstAzimuth, const GeoPosition& second, double secondAzimuth,
                    GeoPosition* position = nullptr)
{
    SphereLines lines;
    lines.add(first, firstAzimuth, degree);
    lines.add(second, secondAzimuth, degree);
    Vector place;
    const Crossing crossing = lines.crossing(0, 1, place);
    if (position && crossing == Crossing::InFront)
        *position = SphereLines::onEllipsoid(place);
    return crossing;
}

} // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (void* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

class TestLinesOfBearing : public QObject
{
    Q_OBJECT
private slots:
    void derivativesOnTheEllipsoidAreThoseOfTheGeodesic_data()
    {
        QTest::addColumn<double>("stationLatitude");
        QTest::addColumn<double>("stationLongitude");
        QTest::addColumn<double>("latitude");
        QTest::addColumn<double>("longitude");
        QTest::newRow("north") << 50.0 << 6.0 << 50.1 << 6.65;
        QTest::newRow("south, across the date line") << -17.5 << 177.0 << -18.5 << -179.5;
        QTest::newRow("along the equator") << 0.0 << 10.0 << 0.0 << 11.0;
        QTest::newRow("due north") << 40.0 << 10.0 << 45.0 << 10.0;
        QTest::newRow("2 km") << 36.81 << -121.78 << 36.825 << -121.79;
        QTest::newRow("a continent away") << 52.0 << 13.0 << -33.0 << 18.0;
        QTest::newRow("nearly opposite") << 30.0 << 0.0 << -29.0 << 170.0;
        QTest::newRow("beside the pole") << 80.0 << 20.0 << 89.9 << 100.0;
    }

    void derivativesOnTheEllipsoidAreThoseOfTheGeodesic()
    {
        QFETCH(double, stationLatitude);
        QFETCH(double, stationLongitude);
        QFETCH(double, latitude);
        QFETCH(double, longitude);
        const GeoPosition station{stationLatitude, stationLongitude};
        const GeoPosition position{latitude, longitude};

        // A residual of one standard deviation of one radian: what a unit step gains is then the derivative itself.
        Sight sight = sightOf(station, 0.0, position);
        sight.residual = 1.0 / degree;
        NormalEquations equations;
        addTo(equations, sight, 1.0);

        const double step = 10.0;
        for (const Step& direction : {Step{1.0, 0.0}, Step{0.0, 1.0}, Step{0.6, -0.8}}) {
            const double further = azimuthTo(station, EllipsoidLines::moved(position, direction.scaled(step)));
            const double nearer = azimuthTo(station, EllipsoidLines::moved(position, direction.scaled(-step)));
            const double numerical = std::remainder(further - nearer, 360.0) * degree / (2.0 * step);
            COMPARE_NEAR(equations.gain(direction), numerical, 1e-5 / sight.reducedLength);
        }
    }

    void chiSquareThatEndsEarlyIsAboveItsLimit()
    {
        workbench::NoiseGenerator random(13);
        SphereLines lines;
        for (int i = 0; i < 20; ++i) {
            const double azimuth = 360.0 * random.uniform();
            lines.add({180.0 * random.uniform() - 90.0, 360.0 * random.uniform()}, azimuth, 0.1);
        }
        using ChiSquare = std::function<double(std::size_t, double)>;
        const auto atStation = [&lines](std::size_t station, double most) {
            return lines.chiSquareAtStation(station, most);
        };
        const auto atPosition = [&lines](std::size_t station, double most) {
            return lines.chiSquare(lines.station(station), most);
        };
        for (std::size_t station = 0; station < lines.size(); ++station) {
            for (const ChiSquare& chiSquare : {ChiSquare(atStation), ChiSquare(atPosition)}) {
                const double whole = chiSquare(station, std::numeric_limits<double>::infinity());
                QCOMPARE(chiSquare(station, whole), whole);
                const double part = chiSquare(station, whole / 2.0);
                QVERIFY(part > whole / 2.0);
                QVERIFY(part <= whole);
                QVERIFY(chiSquare(station, 0.0) < whole / 2.0);
            }
        }
    }

    void derivativesOnTheSphereAreThoseOfTheGreatCircle()
    {
        workbench::NoiseGenerator random(11);
        for (int i = 0; i < 200; ++i) {
            SphereLines lines;
            const double azimuth = 360.0 * random.uniform();
            lines.add({180.0 * random.uniform() - 90.0, 360.0 * random.uniform()}, azimuth, 1.0);
            SphereLines place;
            place.add({180.0 * random.uniform() - 90.0, 360.0 * random.uniform()}, 0.0, 1.0);
            const Vector position = place.station(0);

            const NormalEquations equations = lines.equations(position);
            const double sine = std::sqrt(1.0 - std::pow(std::cos(distanceOnSphere(lines.station(0), position)), 2));
            for (const Step& direction : {Step{1.0, 0.0}, Step{0.0, 1.0}, Step{0.6, -0.8}}) {
                // Half of chi-square falls by residual times derivative.
                const double step = 1e-5 * sine;
                const double further = lines.chiSquare(SphereLines::moved(position, direction.scaled(step)));
                const double nearer = lines.chiSquare(SphereLines::moved(position, direction.scaled(-step)));
                const double numerical = -(further - nearer) / (4.0 * step);
                // Where the residual jumps from 180 to -180 degrees there is no derivative.
                if (std::sqrt(equations.chiSquare()) < 3.14)
                    COMPARE_NEAR(equations.gain(direction), numerical, 1e-5 / sine);
            }
        }
    }

    void chiSquareOfBearingsWithoutErrorIsZeroAtTheEmitter()
    {
        const auto lines = linesTo<EllipsoidLines>(emitter, 1.0);
        QVERIFY(lines.equations(emitter).chiSquare() < 1e-15);
        QVERIFY(lines.equations({50.2, 6.65}).chiSquare() > 1.0);
    }

    void theSphereIsAsGoodAsTheEllipsoidForASmallNetwork()
    {
        // Angles are kept by the projection, so that a network of 5 km is off by less than a metre.
        const GeoPosition origin{50.0, 6.0};
        SphereLines lines;
        for (const GeoPosition& station : {GeoPosition{49.98, 5.97}, {49.99, 6.03}, {50.02, 6.01}})
            lines.add(station, workbench::geodesy::line(station, origin).azimuth, degree);
        Vector start;
        QVERIFY(lines.crossing(0, 1, start) == Crossing::InFront);
        const auto descent = descend(lines, start);
        QVERIFY(descent.end == DescentEnd::Converged);
        QVERIFY(distance(SphereLines::onEllipsoid(descent.position), origin) < 1.0);
    }

    void aPositionReturnsFromTheSphereToTheEllipsoid_data()
    {
        QTest::addColumn<double>("latitude");
        QTest::addColumn<double>("longitude");
        QTest::newRow("north") << 50.1 << 6.65;
        QTest::newRow("south-west") << -33.4 << -70.6;
        QTest::newRow("north pole") << 90.0 << 0.0;
        QTest::newRow("south pole") << -90.0 << 0.0;
        QTest::newRow("date line") << 0.0 << 180.0;
    }

    void aPositionReturnsFromTheSphereToTheEllipsoid()
    {
        QFETCH(double, latitude);
        QFETCH(double, longitude);
        SphereLines lines;
        lines.add({latitude, longitude}, 0.0, 1.0);
        QVERIFY(distance(SphereLines::onEllipsoid(lines.station(0)), {latitude, longitude}) < 1e-6);
    }

    void aStepAndTheStepBackLeadToTheSamePosition()
    {
        const GeoPosition moved = EllipsoidLines::moved(emitter, {300.0, -400.0});
        COMPARE_NEAR(distance(emitter, moved), 500.0, 1e-6);
        COMPARE_NEAR(workbench::geodesy::line(emitter, moved).azimuth, 180.0 - 36.8698976, 1e-6);

        SphereLines lines;
        lines.add(emitter, 0.0, 1.0);
        const Step step{3e-4, -4e-4};
        const Step back = SphereLines::stepBetween(lines.station(0), SphereLines::moved(lines.station(0), step));
        COMPARE_NEAR(back.first, step.first, 1e-9);
        COMPARE_NEAR(back.second, step.second, 1e-9);
    }

    void linesCrossInFrontOfBothStations()
    {
        GeoPosition position;
        QVERIFY(crossingOf({0.0, 0.0}, 45.0, {0.0, 2.0}, 315.0, &position) == Crossing::InFront);
        QVERIFY(distance(position, {1.0, 1.0}) < 1000.0);
    }

    void linesThatCrossBehindAStationHaveNoCrossing()
    {
        QVERIFY(crossingOf({0.0, 0.0}, 45.0, {0.0, 2.0}, 135.0) == Crossing::Behind);  // behind the second
        QVERIFY(crossingOf({0.0, 0.0}, 225.0, {0.0, 2.0}, 315.0) == Crossing::Behind); // behind the first
        QVERIFY(crossingOf({0.0, 0.0}, 225.0, {0.0, 2.0}, 135.0) == Crossing::Behind); // behind both
        QVERIFY(crossingOf({0.0, 0.0}, 0.0, {0.0, 2.0}, 270.0) == Crossing::Behind);   // at the first
    }

    void linesThatDoNotMeetAreParallelWithinTwoStandardDeviations()
    {
        // Each bearing has one degree, their angle 1.41: lines that part by 2.5 degrees may be parallel.
        QVERIFY(crossingOf({50.0, 6.0}, 359.0, {50.0, 6.1}, 1.5) == Crossing::Parallel);
        QVERIFY(crossingOf({50.0, 6.0}, 358.0, {50.0, 6.1}, 1.5) == Crossing::Behind);
    }

    void linesOnOneGreatCircleAreParallel()
    {
        QVERIFY(crossingOf({0.0, 0.0}, 90.0, {0.0, 2.0}, 270.0) == Crossing::Parallel); // towards each other
        QVERIFY(crossingOf({0.0, 0.0}, 270.0, {0.0, 2.0}, 90.0) == Crossing::Parallel); // away from each other
        QVERIFY(crossingOf({0.0, 0.0}, 90.0, {0.0, 2.0}, 90.0) == Crossing::Parallel);  // one behind the other
    }

    void aDescentOfLinesThatLeaveADirectionOpenSaysSo()
    {
        EllipsoidLines lines;
        lines.add({0.0, 0.0}, 90.0, degree);
        lines.add({0.0, 2.0}, 270.0, degree);
        QVERIFY(descend(lines, GeoPosition{0.0, 1.0}).end == DescentEnd::Indeterminate);
        QVERIFY(!lines.equations({0.0, 1.0}).covariance());
    }

    void aDescentConvergesFromFarAway()
    {
        const auto lines = linesTo<EllipsoidLines>(emitter, 1.0);
        const auto descent = descend(lines, GeoPosition{50.15, 6.2});
        QVERIFY(descent.end == DescentEnd::Converged);
        QVERIFY(distance(descent.position, emitter) < 0.01);
    }

    void aDescentAllocatesNothing()
    {
        const auto ellipsoid = linesTo<EllipsoidLines>(emitter, 1.0);
        const auto sphere = linesTo<SphereLines>(emitter, 1.0);
        Vector start;
        QVERIFY(sphere.crossing(0, 1, start) == Crossing::InFront);
        const int before = allocations;
        const auto onSphere = descend(sphere, start);
        const auto onEllipsoid = descend(ellipsoid, GeoPosition{50.15, 6.2});
        const int after = allocations;
        QVERIFY(before > 0); // they are counted
        QCOMPARE(after, before);
        QVERIFY(onSphere.end == DescentEnd::Converged);
        QVERIFY(onEllipsoid.end == DescentEnd::Converged);
    }

private:
    static double distanceOnSphere(const Vector& a, const Vector& b)
    {
        return std::acos(a.x * b.x + a.y * b.y + a.z * b.z);
    }
};

DFL_TEST_MAIN_WITH(TestLinesOfBearing, QCoreApplication)
#include "tst_linesofbearing.moc"
