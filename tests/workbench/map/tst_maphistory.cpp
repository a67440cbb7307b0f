#include "map/mapmodel.h"

#include "mapbench.h"
#include "support/testmain.h"

#include <QtTest>

using namespace workbench;
using mapbench::fourStations;
using mapbench::result;

namespace {

/// At 50.1 N, 6.65 E with a one-sigma ellipse of 300 m by 200 m, its major axis due north-east.
HistoryFix someFix()
{
    Fix fix;
    fix.position = {50.1, 6.65};
    fix.covariance = {65000.0, 65000.0, 25000.0};
    fix.chiSquare = 40.25;
    fix.degreesOfFreedom = 46;
    return {fix, 12, 48, true};
}

const Fix& fixOf(const MapModel& model)
{
    if (model.fix() == nullptr)
        qFatal("%s", qPrintable(model.fixText()));
    return *model.fix();
}

} // namespace

class TestMapHistory : public QObject
{
    Q_OBJECT
private slots:
    void aFixFromStoredResultsIsShownAsItWasComputed()
    {
        MapModel model;
        model.addResult(result(fourStations()), someFix());
        QCOMPARE(fixOf(model).position.latitude, 50.1);
        QCOMPARE(fixOf(model).position.longitude, 6.65);
        QVERIFY(std::abs(model.ellipse()->azimuth - 45.0) < 1e-6);
        QCOMPARE(model.fixText(), QStringLiteral("Fix 50.10000° N  6.65000° E\n"
                                                 "95 % ellipse 734 m × 490 m, major axis at 45.0°\n"
                                                 "Stored results: 12, usable bearings: 48, χ² 40.25 (degrees of "
                                                 "freedom: 46)"));
    }

    void thatThereAreMoreResultsIsSaid()
    {
        MapModel model;
        HistoryFix newest = someFix();
        newest.isComplete = false;
        model.addResult(result(fourStations()), newest);
        QVERIFY2(model.fixText().contains(QStringLiteral("usable bearings: 48 (the newest of more), χ²")),
                 qPrintable(model.fixText()));
    }

    void withoutAFixTheReasonIsShown()
    {
        MapModel model;
        model.addResult(result(fourStations()), HistoryFix{QStringLiteral("No fix: fog."), 0, 0, true});
        QCOMPARE(model.fix(), nullptr);
        QVERIFY(!model.ellipse());
        QCOMPARE(model.fixText(), QStringLiteral("No fix: fog."));
        for (const MapStation& station : model.stations()) {
            QVERIFY(station.use == MapUse::Compared);
            QVERIFY(!station.residual && !station.distance);
        }
    }

    void theLatestBearingsAreComparedWithIt()
    {
        MapModel model;
        model.addResult(result({{1, 50.1, 6.0, 92.0, 90.0}, {2, 51.0, 6.65, 179.0, 90.0}}), someFix());
        const std::vector<MapStation>& stations = model.stations();
        QVERIFY(stations[0].use == MapUse::Compared);
        QCOMPARE(useText(stations[0].use), QStringLiteral("compared"));
        // Eastwards along a parallel of the north a geodesic begins a quarter of a degree to the left.
        QVERIFY(std::abs(*stations[0].residual - 2.249) < 0.01);
        QVERIFY(std::abs(*stations[1].residual + 1.0) < 1e-6);
        QVERIFY(std::abs(*stations[1].distance - 100'120.0) < 100.0);
    }

    void aBearingJustAcrossNorthIsOffByLittle()
    {
        MapModel model;
        model.addResult(result({{1, 49.0, 6.65, 359.5, 90.0}}), someFix());
        QVERIFY(std::abs(*model.stations()[0].residual + 0.5) < 1e-6);
    }

    void leavingABearingOutDoesNotMoveIt()
    {
        MapModel model;
        model.setQualityThreshold(40);
        model.addResult(result(fourStations()), someFix());
        QVERIFY(model.setExcluded(1, true));
        QVERIFY(model.stations()[0].use == MapUse::Excluded);
        QVERIFY(model.stations()[3].use == MapUse::BelowThreshold);
        QCOMPARE(fixOf(model).position.latitude, 50.1);
        QVERIFY(model.setExcluded(1, false));
        QVERIFY(model.stations()[0].use == MapUse::Compared);
    }

    void theNextResultHasItsOwnFix()
    {
        MapModel model;
        model.addResult(result(fourStations()), someFix());
        model.addResult(result(fourStations()));
        QVERIFY(fixOf(model).position.latitude < 50.095);
        QVERIFY(model.stations()[0].use == MapUse::Used);
    }

    void newStationsComeWithoutAFix()
    {
        MapModel model;
        model.addResult(result(fourStations()), someFix());
        model.setStations({});
        QCOMPARE(model.fix(), nullptr);
        QCOMPARE(model.fixText(), QStringLiteral("No result yet."));
    }
};

DFL_TEST_MAIN(TestMapHistory)
#include "tst_maphistory.moc"
