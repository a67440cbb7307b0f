#include "bearings.h"
#include "drivers/noisegenerator.h"
#include "locate/ellipsoidlines.h"
#include "locate/gaussnewton.h"
#include "support/testmain.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace testsupport;
using workbench::BearingCheck;
using workbench::BearingUse;
using workbench::Covariance;
using workbench::ErrorEllipse;
using workbench::explanation;
using workbench::positionFix;
using workbench::standardEllipse;

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();

/// Four stations round an emitter, with bearings that are off by a degree or two.
const std::vector<Bearing> reference{{{50.00, 6.00}, 77.3, 1.5, false},
                                     {{50.30, 7.00}, 227.0, 1.5, false},
                                     {{49.70, 7.20}, 319.1, 1.5, false},
                                     {{50.50, 6.30}, 152.6, 1.5, false}};

double chiSquareAt(const std::vector<Bearing>& bearings, const GeoPosition& position)
{
    double sum = 0.0;
    for (const Bearing& bearing : bearings) {
        const double azimuth = workbench::geodesy::line(bearing.station, position).azimuth;
        const double residual = std::remainder(bearing.azimuth - azimuth, 360.0) / bearing.sigma;
        sum += residual * residual;
    }
    return sum;
}

/// All three numbers of a covariance agree to one part in a million of the greatest.
bool isSame(const Covariance& a, const Covariance& b)
{
    const double tolerance = 1e-6 * std::max(a.east, a.north);
    return std::abs(a.east - b.east) < tolerance && std::abs(a.north - b.north) < tolerance &&
           std::abs(a.eastNorth - b.eastNorth) < tolerance;
}

} // namespace

Q_DECLARE_METATYPE(Bearing)
Q_DECLARE_METATYPE(std::vector<Bearing>)
Q_DECLARE_METATYPE(NoFix)
Q_DECLARE_METATYPE(std::vector<GeoPosition>)
Q_DECLARE_METATYPE(GeoPosition)

class TestPositionFix : public QObject
{
    Q_OBJECT
private slots:
    void aFixHasThePositionEllipseAndChiSquareOfTheReference_data()
    {
        QTest::addColumn<std::vector<Bearing>>("bearings");
        QTest::addColumn<GeoPosition>("position");
        QTest::addColumn<double>("semiMajor");
        QTest::addColumn<double>("semiMinor");
        QTest::addColumn<double>("azimuth"); // negative: not known
        QTest::addColumn<double>("chiSquare");

        QTest::newRow("four stations") << reference << GeoPosition{50.0906117, 6.6478048} << 967.75 << 748.37 << 59.522
                                       << 1.54748;
        std::vector<Bearing> exact = reference;
        const double azimuths[] = {76.313379, 228.457613, 318.600312, 150.596396};
        for (std::size_t i = 0; i < exact.size(); ++i) {
            exact[i].azimuth = azimuths[i];
            exact[i].sigma = 1.0;
        }
        QTest::newRow("four stations, exact") << exact << GeoPosition{50.1, 6.65} << 646.54 << 490.14 << -1.0 << 0.0;
        QTest::newRow("south, across the date line")
            << std::vector<Bearing>{{{-17.5, 177.0}, 107.161344, 2.0, false},
                                    {{-16.0, -178.0}, 209.745784, 2.0, false},
                                    {{-21.0, -175.5}, 302.740650, 2.0, false}}
            << GeoPosition{-18.5, -179.5} << 11684.0 << 10271.0 << 75.382 << 0.0;
    }

    void aFixHasThePositionEllipseAndChiSquareOfTheReference()
    {
        QFETCH(std::vector<Bearing>, bearings);
        QFETCH(GeoPosition, position);
        QFETCH(double, semiMajor);
        QFETCH(double, semiMinor);
        QFETCH(double, azimuth);
        QFETCH(double, chiSquare);

        const Fix fix = fixOf(bearings);
        COMPARE_NEAR(distance(fix.position, position), 0.0, 1.0);
        COMPARE_NEAR(fix.position.longitude, position.longitude, 1e-5); // not by 360 off
        const ErrorEllipse ellipse = standardEllipse(fix.covariance);
        COMPARE_NEAR(ellipse.semiMajor, semiMajor, 1e-3 * semiMajor);
        COMPARE_NEAR(ellipse.semiMinor, semiMinor, 1e-3 * semiMinor);
        if (azimuth >= 0.0)
            COMPARE_NEAR(ellipse.azimuth, azimuth, 0.01);
        COMPARE_NEAR(fix.chiSquare, chiSquare, 1e-5);
        QCOMPARE(fix.degreesOfFreedom, static_cast<int>(bearings.size()) - 2);
    }

    void aPublishedExampleInThePlaneHasItsPublishedFix()
    {
        // R. V. Lenth, "On Finding the Source of a Signal", Technometrics 23, 1981: seven bearings, published with the
        // maximum likelihood position (7.23, 1.98), rounded to 0.01. The plane is laid on the equator, one unit a
        // kilometre, where over 10 km the ellipsoid bends bearings by less than 0.001 degrees.
        //
        // Its errors have the von Mises distribution: the position with the greatest sum of cos(residual), where ours
        // has the least sum of residual². They part with the fourth power of the residuals, here up to 5 degrees: the
        // maximum of the former is at (7.22847, 1.98084), that of ours at (7.22856, 1.98090), and both round to the
        // published numbers. So half a unit of the last published place is the right tolerance.
        constexpr double metresPerDegreeNorth = 110574.2758; // at the equator, a (1 - e²) π / 180
        constexpr double metresPerDegreeEast = 111319.4908;  // a π / 180
        constexpr double unit = 1000.0;
        const double published[7][3] = {{9.0, 3.2, 234.0},  {9.4, 5.5, 215.0}, {9.95, 9.05, 196.0}, {8.7, 8.7, 193.0},
                                        {8.07, 9.7, 188.0}, {4.4, 8.9, 160.0}, {1.85, 5.25, 118.0}};
        std::vector<Bearing> bearings;
        for (const auto& row : published) {
            const GeoPosition station{row[1] * unit / metresPerDegreeNorth, row[0] * unit / metresPerDegreeEast};
            bearings.push_back({station, row[2], 3.0, false});
        }
        const Fix fix = fixOf(bearings);
        COMPARE_NEAR(fix.position.longitude * metresPerDegreeEast / unit, 7.23, 0.005);
        COMPARE_NEAR(fix.position.latitude * metresPerDegreeNorth / unit, 1.98, 0.005);
    }

    void residualsAndDistancesAreThoseOfTheGeodesicsToTheFix()
    {
        const Fix fix = fixOf(reference);
        QCOMPARE(fix.bearings.size(), reference.size());
        double chiSquare = 0.0;
        for (std::size_t i = 0; i < reference.size(); ++i) {
            const auto line = workbench::geodesy::line(reference[i].station, fix.position);
            QVERIFY(fix.bearings[i].use == BearingUse::Used);
            COMPARE_NEAR(fix.bearings[i].residual.value(), reference[i].azimuth - line.azimuth, 1e-9);
            COMPARE_NEAR(fix.bearings[i].distance.value(), line.distance, 1e-6);
            chiSquare += std::pow(*fix.bearings[i].residual / reference[i].sigma, 2);
        }
        COMPARE_NEAR(fix.chiSquare, chiSquare, 1e-9);
    }

    void twoBearingsMeetWithoutResiduals()
    {
        const GeoPosition emitter{50.2, 6.8};
        const Fix fix = fixOf(exactBearings({{50.0, 6.0}, {49.7, 7.2}}, emitter, 1.0));
        QVERIFY(distance(fix.position, emitter) < 0.01);
        COMPARE_NEAR(fix.chiSquare, 0.0, 1e-9);
        QCOMPARE(fix.degreesOfFreedom, 0);
    }

    void theMoreAccurateBearingsPullTheFixTheirWay()
    {
        std::vector<Bearing> bearings = reference;
        bearings[0].sigma = 0.1;
        const Fix fix = fixOf(bearings);
        QVERIFY(std::abs(*fix.bearings[0].residual) < 0.1 * std::abs(*fixOf(reference).bearings[0].residual));
    }

    // What must not matter, or matter in a known way.

    void theUnitOfAccuracyScalesTheEllipseOnly()
    {
        std::vector<Bearing> bearings = reference;
        for (Bearing& bearing : bearings)
            bearing.sigma *= 2.0;
        const Fix before = fixOf(reference);
        const Fix after = fixOf(bearings);
        QVERIFY(distance(before.position, after.position) < 0.05);
        COMPARE_NEAR(after.chiSquare, before.chiSquare / 4.0, 1e-6);
        COMPARE_NEAR(standardEllipse(after.covariance).semiMajor, 2.0 * standardEllipse(before.covariance).semiMajor,
                     0.01);
    }

    void everyBearingTwiceWithHalfTheWeightIsTheSame()
    {
        std::vector<Bearing> bearings = reference;
        bearings.insert(bearings.end(), reference.begin(), reference.end());
        for (Bearing& bearing : bearings)
            bearing.sigma *= std::sqrt(2.0);
        const Fix before = fixOf(reference);
        const Fix after = fixOf(bearings);
        QVERIFY(distance(before.position, after.position) < 0.05);
        QVERIFY(isSame(before.covariance, after.covariance));
    }

    void theOrderOfBearingsDoesNotMatter()
    {
        std::vector<Bearing> bearings = reference;
        std::rotate(bearings.begin(), bearings.begin() + 1, bearings.end());
        std::swap(bearings[0], bearings[1]);
        QVERIFY(distance(fixOf(reference).position, fixOf(bearings).position) < 0.05);
    }

    void theFixTurnsWithTheEarth_data()
    {
        QTest::addColumn<double>("degrees");
        QTest::newRow("a little") << 1.0;
        QTest::newRow("the date line between the stations") << 173.4;
        QTest::newRow("the date line at the emitter") << 180.0 - 6.6478048;
        QTest::newRow("backwards") << -100.0;
        QTest::newRow("once round") << 360.0;
    }

    void theFixTurnsWithTheEarth()
    {
        QFETCH(double, degrees);
        std::vector<Bearing> bearings = reference;
        for (Bearing& bearing : bearings)
            bearing.station.longitude += degrees;
        const Fix before = fixOf(reference);
        const Fix after = fixOf(bearings);
        QVERIFY(after.position.longitude >= -180.0);
        QVERIFY(after.position.longitude <= 180.0);
        QVERIFY(distance({before.position.latitude, before.position.longitude + degrees}, after.position) < 0.05);
        QVERIFY(isSame(before.covariance, after.covariance));
        COMPARE_NEAR(after.chiSquare, before.chiSquare, 1e-6);
    }

    void theFixIsMirroredAtTheEquator()
    {
        std::vector<Bearing> bearings = reference;
        for (Bearing& bearing : bearings) {
            bearing.station.latitude = -bearing.station.latitude;
            bearing.azimuth = 180.0 - bearing.azimuth;
        }
        const Fix before = fixOf(reference);
        const Fix after = fixOf(bearings);
        QVERIFY(distance({-before.position.latitude, before.position.longitude}, after.position) < 0.05);
        COMPARE_NEAR(standardEllipse(after.covariance).azimuth, 180.0 - standardEllipse(before.covariance).azimuth,
                     1e-4);
        for (std::size_t i = 0; i < bearings.size(); ++i)
            COMPARE_NEAR(*after.bearings[i].residual, -*before.bearings[i].residual, 1e-5);
    }

    void theFixIsMirroredAtAMeridian()
    {
        std::vector<Bearing> bearings = reference;
        for (Bearing& bearing : bearings) {
            bearing.station.longitude = -bearing.station.longitude;
            bearing.azimuth = -bearing.azimuth;
        }
        const Fix before = fixOf(reference);
        const Fix after = fixOf(bearings);
        QVERIFY(distance({before.position.latitude, -before.position.longitude}, after.position) < 0.05);
        COMPARE_NEAR(standardEllipse(after.covariance).azimuth, 180.0 - standardEllipse(before.covariance).azimuth,
                     1e-4);
    }

    void bearingsWithoutErrorFindTheEmitter()
    {
        workbench::NoiseGenerator random(3);
        for (int i = 0; i < 500; ++i) {
            // From 10 m to 1000 km, anywhere, the poles too.
            const double extent = 10.0 * std::pow(10.0, 5.0 * random.uniform());
            const GeoPosition emitter{180.0 * random.uniform() - 90.0, 360.0 * random.uniform() - 180.0};
            std::vector<GeoPosition> stations;
            for (int k = 0; k < 3; ++k) {
                const double direction = (120.0 * k + 60.0 * random.uniform()) * M_PI / 180.0;
                const double range = extent * (0.5 + random.uniform());
                stations.push_back(workbench::locate::EllipsoidLines::moved(
                    emitter, {range * std::sin(direction), range * std::cos(direction)}));
            }
            const Fix fix = fixOf(exactBearings(stations, emitter, 0.5));
            QVERIFY2(
                distance(fix.position, emitter) < 1e-6 * extent + 1e-3,
                qPrintable(QStringLiteral("%1 %2, %3 m").arg(emitter.latitude).arg(emitter.longitude).arg(extent)));
            QVERIFY(fix.chiSquare < 1e-6);
        }
    }

    void noOtherPositionFitsBetterThanTheFix()
    {
        workbench::NoiseGenerator random(7);
        int fixes = 0;
        for (int i = 0; i < 300; ++i) {
            const auto somewhere = [&random] {
                return GeoPosition{48.0 + 3.0 * random.uniform(), 6.0 + 4.0 * random.uniform()};
            };
            std::vector<GeoPosition> stations;
            for (int k = 0; k < 2 + i % 5; ++k)
                stations.push_back(somewhere());
            const double sigma = i % 2 == 0 ? 2.0 : 20.0;
            std::vector<Bearing> bearings = exactBearings(stations, somewhere(), sigma);
            for (Bearing& bearing : bearings)
                bearing.azimuth += sigma * random.normal();
            const FixResult result = positionFix(bearings);
            const auto* fix = std::get_if<Fix>(&result);
            if (!fix)
                continue;
            ++fixes;
            for (int k = 0; k < 300; ++k)
                QVERIFY(chiSquareAt(bearings, somewhere()) > fix->chiSquare - 1e-6);
        }
        QVERIFY(fixes > 200);
    }

    void ofSeveralBestPositionsTheOneThatFitsBestWins()
    {
        // Two pairs of stations that hear two emitters.
        const GeoPosition west{50.5, 7.0};
        const GeoPosition east{50.5, 9.0};
        const std::vector<GeoPosition> western{{50.2, 6.6}, {50.8, 6.6}};
        const std::vector<GeoPosition> eastern{{50.2, 9.4}, {50.8, 9.4}};
        const auto heard = [&](double westernSigma, double easternSigma) {
            std::vector<Bearing> bearings = exactBearings(western, west, westernSigma);
            const std::vector<Bearing> others = exactBearings(eastern, east, easternSigma);
            bearings.insert(bearings.end(), others.begin(), others.end());
            return bearings;
        };

        // Both emitters have a best position of their own beside them.
        const std::vector<Bearing> bearings = heard(5.0, 6.0);
        workbench::locate::EllipsoidLines lines;
        for (const Bearing& bearing : bearings)
            lines.add(bearing.station, bearing.azimuth, qDegreesToRadians(bearing.sigma));
        const auto besideWest = workbench::locate::descend(lines, west);
        const auto besideEast = workbench::locate::descend(lines, east);
        QVERIFY(besideWest.end == workbench::locate::DescentEnd::Converged);
        QVERIFY(besideEast.end == workbench::locate::DescentEnd::Converged);
        QVERIFY(distance(besideWest.position, besideEast.position) > 50e3);

        QVERIFY(distance(fixOf(bearings).position, besideWest.position) < 1.0);
        QVERIFY(fixOf(bearings).position.longitude < 8.0);
        QVERIFY(fixOf(heard(6.0, 5.0)).position.longitude > 8.0);
    }

    // Which bearings take part.

    void anExcludedBearingIsSeenButHasNoPart()
    {
        std::vector<Bearing> bearings = reference;
        bearings.push_back({{50.2, 6.2}, 300.0, 0.1, true});
        const Fix without = fixOf(reference);
        const Fix with = fixOf(bearings);
        QCOMPARE(with.position.latitude, without.position.latitude);
        QCOMPARE(with.position.longitude, without.position.longitude);
        QCOMPARE(with.chiSquare, without.chiSquare);
        QCOMPARE(with.degreesOfFreedom, 2);
        QVERIFY(with.bearings[4].use == BearingUse::Excluded);
        const double azimuth = workbench::geodesy::line({50.2, 6.2}, with.position).azimuth;
        COMPARE_NEAR(with.bearings[4].residual.value(), std::remainder(300.0 - azimuth, 360.0), 1e-9);
        QVERIFY(with.bearings[4].distance.has_value());
    }

    void anUnusableBearingIsToldAndHasNoPart_data()
    {
        QTest::addColumn<Bearing>("bearing");
        const GeoPosition station{50.2, 6.2};
        QTest::newRow("azimuth NaN") << Bearing{station, notANumber, 1.0, false};
        QTest::newRow("azimuth infinite") << Bearing{station, infinite, 1.0, false};
        QTest::newRow("latitude NaN") << Bearing{{notANumber, 6.2}, 10.0, 1.0, false};
        QTest::newRow("latitude beyond the pole") << Bearing{{90.1, 6.2}, 10.0, 1.0, false};
        QTest::newRow("latitude beyond the south pole") << Bearing{{-90.1, 6.2}, 10.0, 1.0, false};
        QTest::newRow("longitude NaN") << Bearing{{50.2, notANumber}, 10.0, 1.0, false};
        QTest::newRow("longitude infinite") << Bearing{{50.2, -infinite}, 10.0, 1.0, false};
        QTest::newRow("sigma NaN") << Bearing{station, 10.0, notANumber, false};
        QTest::newRow("sigma 0") << Bearing{station, 10.0, 0.0, false};
        QTest::newRow("sigma negative") << Bearing{station, 10.0, -1.0, false};
        QTest::newRow("sigma below rounding") << Bearing{station, 10.0, 9e-7, false};
        QTest::newRow("sigma beyond all directions") << Bearing{station, 10.0, 180.1, false};
        QTest::newRow("unusable and excluded") << Bearing{station, notANumber, 1.0, true};
    }

    void anUnusableBearingIsToldAndHasNoPart()
    {
        QFETCH(Bearing, bearing);
        std::vector<Bearing> bearings = reference;
        bearings.insert(bearings.begin() + 1, bearing);
        const Fix without = fixOf(reference);
        const Fix with = fixOf(bearings);
        QCOMPARE(with.position.latitude, without.position.latitude);
        QCOMPARE(with.position.longitude, without.position.longitude);
        QCOMPARE(with.degreesOfFreedom, 2);
        QVERIFY(with.bearings[1].use == BearingUse::Unusable);
        QVERIFY(!with.bearings[1].residual);
        QVERIFY(!with.bearings[1].distance);
        QVERIFY(with.bearings[2].use == BearingUse::Used);
    }

    void bearingsAtTheEndsOfTheirRangesAreUsed()
    {
        const GeoPosition emitter{89.0, 30.0};
        std::vector<Bearing> bearings = exactBearings({{90.0, 0.0}, {88.5, 40.0}, {88.7, 10.0}}, emitter, 1.0);
        bearings[1].sigma = 180.0;
        bearings[2].sigma = 1e-6;
        const Fix fix = fixOf(bearings);
        QVERIFY(distance(fix.position, emitter) < 0.1);
        for (const BearingCheck& check : fix.bearings)
            QVERIFY(check.use == BearingUse::Used);
    }

    void azimuthAndLongitudeAreTakenModulo360()
    {
        std::vector<Bearing> bearings = reference;
        bearings[0].azimuth -= 360.0;
        bearings[1].azimuth += 720.0;
        bearings[2].station.longitude += 360.0;
        bearings[3].station.longitude -= 720.0;
        const Fix fix = fixOf(bearings);
        QVERIFY(distance(fix.position, fixOf(reference).position) < 0.01);
        COMPARE_NEAR(*fix.bearings[1].residual, *fixOf(reference).bearings[1].residual, 1e-6);
    }

    // Unusual places.

    void aFixIsFoundWhereverStationsAndEmitterAre_data()
    {
        QTest::addColumn<std::vector<GeoPosition>>("stations");
        QTest::addColumn<GeoPosition>("emitter");
        QTest::newRow("emitter at the north pole")
            << std::vector<GeoPosition>{{89.0, 0.0}, {89.2, 100.0}, {88.8, 220.0}} << GeoPosition{90.0, 0.0};
        QTest::newRow("emitter at the south pole")
            << std::vector<GeoPosition>{{-89.0, 0.0}, {-89.2, 100.0}, {-88.8, 220.0}} << GeoPosition{-90.0, 0.0};
        QTest::newRow("lines across the pole")
            << std::vector<GeoPosition>{{89.0, 0.0}, {89.2, 100.0}} << GeoPosition{89.5, 230.0};
        QTest::newRow("a station at the pole")
            << std::vector<GeoPosition>{{90.0, 0.0}, {89.0, 80.0}} << GeoPosition{89.3, 20.0};
        QTest::newRow("a station at the pole, another meridian")
            << std::vector<GeoPosition>{{-90.0, 70.0}, {-89.0, 80.0}} << GeoPosition{-89.3, 20.0};
        QTest::newRow("stations on both sides of the date line")
            << std::vector<GeoPosition>{{10.0, 179.5}, {11.0, -179.5}} << GeoPosition{10.2, -179.9};
        QTest::newRow("emitter on the date line")
            << std::vector<GeoPosition>{{10.0, 179.5}, {11.0, -179.5}} << GeoPosition{10.2, 180.0};
        QTest::newRow("across the equator")
            << std::vector<GeoPosition>{{1.0, 0.0}, {1.0, 2.0}} << GeoPosition{-1.0, 1.5};
        QTest::newRow("one line along the equator")
            << std::vector<GeoPosition>{{0.0, 0.0}, {2.0, 2.0}} << GeoPosition{0.0, 1.5};
        QTest::newRow("one line along a meridian")
            << std::vector<GeoPosition>{{10.0, 5.0}, {11.0, 7.0}} << GeoPosition{12.0, 5.0};
        QTest::newRow("another continent")
            << std::vector<GeoPosition>{{52.0, 13.0}, {40.0, -74.0}, {30.0, 31.0}} << GeoPosition{-23.5, -46.6};
        QTest::newRow("ten metres") << std::vector<GeoPosition>{{50.0, 6.0}, {50.0001, 6.0}}
                                    << GeoPosition{50.00005, 6.0001};
    }

    void aFixIsFoundWhereverStationsAndEmitterAre()
    {
        QFETCH(std::vector<GeoPosition>, stations);
        QFETCH(GeoPosition, emitter);
        const Fix fix = fixOf(exactBearings(stations, emitter, 0.5));
        QVERIFY(distance(fix.position, emitter) < 0.1);
        QVERIFY(std::isfinite(standardEllipse(fix.covariance).semiMajor));
        QVERIFY(standardEllipse(fix.covariance).semiMinor > 0.0);
    }

    void aThousandStationsGiveOneFix()
    {
        workbench::NoiseGenerator random(5);
        std::vector<GeoPosition> stations;
        for (int i = 0; i < 1000; ++i)
            stations.push_back({45.0 + 10.0 * random.uniform(), 5.0 + 12.0 * random.uniform()});
        const GeoPosition emitter{50.0, 11.0};
        std::vector<Bearing> bearings = exactBearings(stations, emitter, 2.0);
        for (Bearing& bearing : bearings)
            bearing.azimuth += 2.0 * random.normal();
        const Fix fix = fixOf(bearings);
        QCOMPARE(fix.degreesOfFreedom, 998);
        QVERIFY(distance(fix.position, emitter) < 3.0 * standardEllipse(fix.covariance).semiMajor);
        QVERIFY(standardEllipse(fix.covariance).semiMajor < 2000.0);
        COMPARE_NEAR(fix.chiSquare, 998.0, 5.0 * std::sqrt(2.0 * 998.0));
    }

    void anEmitterBesideAStationCanHaveItsFixThere()
    {
        // Three far stations see it 300 m behind a fourth one, well within their accuracy.
        const GeoPosition station{50.0, 6.0};
        std::vector<Bearing> bearings = exactBearings({{50.2, 6.3}, {49.9, 6.4}, {49.8, 6.1}}, {50.0, 5.996}, 3.0);
        const Fix others = fixOf(bearings);
        bearings.push_back({station, 80.0, 3.0, false});
        const Fix fix = fixOf(bearings);
        QVERIFY(distance(fix.position, station) < 0.01);
        QVERIFY(fix.bearings[3].use == BearingUse::AtFix);
        QVERIFY(!fix.bearings[3].residual);
        COMPARE_NEAR(fix.bearings[3].distance.value(), 0.0, 0.01);
        // Its accuracy is that of the others.
        QCOMPARE(fix.degreesOfFreedom, 1);
        COMPARE_NEAR(fix.chiSquare, chiSquareAt({bearings.begin(), bearings.begin() + 3}, station), 1e-6);
        COMPARE_NEAR(standardEllipse(fix.covariance).semiMajor / standardEllipse(others.covariance).semiMajor, 1.0,
                     0.05);
    }

    void anEmitterFarBehindAStationHasNoFixThere()
    {
        std::vector<Bearing> bearings = exactBearings({{50.2, 6.3}, {49.9, 6.4}, {49.8, 6.1}}, {50.0, 5.9}, 3.0);
        bearings.push_back({{50.0, 6.0}, 80.0, 3.0, false});
        QVERIFY(refusal(bearings) == NoFix::BehindStation);
    }

    // Why there is no fix.

    void bearingsWithoutAPositionHaveAReason_data()
    {
        QTest::addColumn<std::vector<Bearing>>("bearings");
        QTest::addColumn<NoFix>("reason");
        const auto row = [](const char* name, NoFix reason, const std::vector<Bearing>& bearings) {
            QTest::newRow(name) << bearings << reason;
        };

        row("no bearing", NoFix::TooFewBearings, {});
        row("one bearing", NoFix::TooFewBearings, {{{50.0, 6.0}, 77.0, 1.0, false}});
        row("one usable bearing", NoFix::TooFewBearings,
            {{{50.0, 6.0}, 77.0, 1.0, false}, {{50.3, 7.0}, notANumber, 1.0, false}});
        row("one bearing that is not excluded", NoFix::TooFewBearings,
            {{{50.0, 6.0}, 77.0, 1.0, false}, {{50.3, 7.0}, 227.0, 1.0, true}});
        row("all excluded", NoFix::TooFewBearings, {{{50.0, 6.0}, 77.0, 1.0, true}, {{50.3, 7.0}, 227.0, 1.0, true}});
        row("one position", NoFix::TooFewBearings, {{{50.0, 6.0}, 77.0, 1.0, false}, {{50.0, 6.0}, 120.0, 1.0, false}});
        row("one position, longitudes 360 apart", NoFix::TooFewBearings,
            {{{50.0, 180.0}, 77.0, 1.0, false}, {{50.0, -180.0}, 120.0, 1.0, false}});
        row("one pole, two longitudes", NoFix::TooFewBearings,
            {{{90.0, 0.0}, 77.0, 1.0, false}, {{90.0, 90.0}, 77.0, 1.0, false}});

        row("same bearing", NoFix::ParallelLines, {{{50.0, 6.0}, 0.0, 1.0, false}, {{50.0, 6.1}, 0.0, 1.0, false}});
        row("same bearing, three stations", NoFix::ParallelLines,
            {{{50.0, 6.0}, 20.0, 1.0, false}, {{50.0, 6.1}, 20.0, 1.0, false}, {{50.1, 6.1}, 20.0, 1.0, false}});
        row("due north from the equator", NoFix::ParallelLines,
            {{{0.0, 6.0}, 0.0, 1.0, false}, {{0.0, 7.0}, 0.0, 1.0, false}});
        row("meeting a little ahead of parallel", NoFix::ParallelLines,
            {{{50.0, 6.0}, 0.5, 1.0, false}, {{50.0, 6.1}, 359.5, 1.0, false}});
        row("parting a little", NoFix::ParallelLines,
            {{{50.0, 6.0}, 359.5, 1.0, false}, {{50.0, 6.1}, 0.5, 1.0, false}});
        row("opposite bearings, towards each other", NoFix::ParallelLines,
            {{{0.0, 6.0}, 90.0, 1.0, false}, {{0.0, 7.0}, 270.0, 1.0, false}});
        row("opposite bearings, a little off", NoFix::ParallelLines,
            {{{0.0, 6.0}, 89.8, 1.0, false}, {{0.0, 7.0}, 270.1, 1.0, false}});
        row("opposite bearings, away from each other", NoFix::ParallelLines,
            {{{0.0, 6.0}, 270.0, 1.0, false}, {{0.0, 7.0}, 90.0, 1.0, false}});
        row("one behind the other", NoFix::ParallelLines,
            {{{0.0, 6.0}, 90.0, 1.0, false}, {{0.0, 7.0}, 90.0, 1.0, false}});

        row("behind one station", NoFix::BehindStation,
            {{{50.0, 6.0}, 45.0, 1.0, false}, {{50.0, 7.0}, 135.0, 1.0, false}});
        row("behind both stations", NoFix::BehindStation,
            {{{50.0, 6.0}, 225.0, 1.0, false}, {{50.0, 7.0}, 135.0, 1.0, false}});
        row("at a station", NoFix::BehindStation, {{{0.0, 6.0}, 90.0, 1.0, false}, {{0.0, 7.0}, 20.0, 1.0, false}});
        row("three that part", NoFix::BehindStation,
            {{{50.0, 6.0}, 240.0, 1.0, false}, {{50.0, 7.0}, 120.0, 1.0, false}, {{50.5, 6.5}, 0.0, 1.0, false}});
        row("the third looks away", NoFix::BehindStation,
            {{{50.0, 6.0}, 45.0, 1.0, false}, {{50.0, 7.0}, 315.0, 1.0, false}, {{50.0, 6.5}, 180.0, 1.0, false}});
        row("a poor third looks away", NoFix::BehindStation,
            {{{50.0, 6.0}, 45.0, 1.0, false}, {{50.0, 7.0}, 315.0, 1.0, false}, {{50.2, 6.0}, 270.0, 60.0, false}});
        row("best only round the Earth", NoFix::BehindStation,
            {{{49.5, 7.6}, 140.0, 5.0, false}, {{49.4, 6.7}, 260.0, 5.0, false}, {{49.7, 6.9}, 130.0, 5.0, false}});
        row("best only round the Earth, but any angle is uncertain", NoFix::ParallelLines,
            {{{49.5, 7.6}, 140.0, 40.0, false}, {{49.4, 6.7}, 260.0, 40.0, false}, {{49.7, 6.9}, 130.0, 40.0, false}});

        row("bearings that contradict each other", NoFix::NoConvergence,
            {{{50.0, 7.3}, 40.0, 20.0, false}, {{50.5, 7.7}, 190.0, 20.0, false}, {{49.3, 6.1}, 190.0, 20.0, false}});
    }

    void bearingsWithoutAPositionHaveAReason()
    {
        QFETCH(std::vector<Bearing>, bearings);
        QFETCH(NoFix, reason);
        const auto actual = refusal(bearings);
        QVERIFY2(actual.has_value(), "there is a fix");
        QCOMPARE(explanation(*actual), explanation(reason));
    }

    void linesCountAsParallelWhenTheirDistanceIsNotTwiceItsDeviation()
    {
        // Two stations 10 km apart see an emitter at 100 km, at an angle of 5.7 degrees. The distance is off by
        // 24.7 percent at one degree, which makes it 50 percent near 2.02 degrees.
        const std::vector<GeoPosition> stations{{0.0, -0.045}, {0.0, 0.045}};
        const GeoPosition emitter{0.9, 0.0};
        const Fix fix = fixOf(exactBearings(stations, emitter, 1.0));
        const double share = standardEllipse(fix.covariance).semiMajor / *fix.bearings[0].distance;
        COMPARE_NEAR(share, 0.247, 0.002);
        QVERIFY(!refusal(exactBearings(stations, emitter, 0.499 / share)));
        QVERIFY(refusal(exactBearings(stations, emitter, 0.501 / share)) == NoFix::ParallelLines);
    }

    void aFixBeyondTheGreatestDistanceIsRefused()
    {
        const Fix fix = fixOf(reference);
        double farthest = 0.0;
        for (const BearingCheck& check : fix.bearings)
            farthest = std::max(farthest, *check.distance);
        QVERIFY(refusal(reference, {farthest - 1.0}) == NoFix::OutsideMaxRange);
        QVERIFY(!refusal(reference, {farthest + 1.0}));
        QVERIFY(!refusal(reference));
    }

    void theGreatestDistanceDoesNotConcernExcludedBearings()
    {
        std::vector<Bearing> bearings = reference;
        bearings.push_back({{30.0, 6.0}, 2.0, 1.0, true});
        QVERIFY(!refusal(bearings, {100e3}));
        bearings.back().excluded = false;
        QVERIFY(refusal(bearings, {100e3}) == NoFix::OutsideMaxRange);
    }

    void everyReasonHasASentence()
    {
        QCOMPARE(explanation(NoFix::TooFewBearings),
                 QStringLiteral("No fix: it takes usable bearings from at least two different positions."));
        QCOMPARE(explanation(NoFix::ParallelLines),
                 QStringLiteral("No fix: within their accuracy the lines of bearing are parallel or lie on one line."));
        QCOMPARE(explanation(NoFix::BehindStation),
                 QStringLiteral("No fix: the lines of bearing do not meet in front of all stations."));
        QCOMPARE(explanation(NoFix::NoConvergence),
                 QStringLiteral("No fix: the search found no position that fits the bearings best."));
        QCOMPARE(explanation(NoFix::OutsideMaxRange),
                 QStringLiteral("No fix: the position found is further from a station than allowed."));
    }
};

DFL_TEST_MAIN_WITH(TestPositionFix, QCoreApplication)
#include "tst_positionfix.moc"
