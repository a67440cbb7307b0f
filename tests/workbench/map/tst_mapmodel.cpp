#include "map/mapmodel.h"

#include "drivers/geodesy.h"
#include "mapbench.h"
#include "support/testmain.h"

#include <QAbstractItemModelTester>

#include <cmath>
#include <limits>

using namespace workbench;
using mapbench::fourStations;
using mapbench::result;

namespace {

struct Bench
{
    qint64 now = 1000;
    MapModel model{[this] { return now; }, nullptr};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};

    QString cell(int row, int column) { return model.index(row, column).data().toString(); }
};

StationInfo info(int id, const QString& name, std::optional<GeoPosition> position)
{
    StationInfo station;
    station.id = id;
    station.name = name;
    station.position = position;
    return station;
}

} // namespace

class TestMapModel : public QObject
{
    Q_OBJECT
private slots:
    void withoutResultThereIsNoFix()
    {
        Bench bench;
        QCOMPARE(bench.model.fix(), nullptr);
        QVERIFY(!bench.model.ellipse().has_value());
        QCOMPARE(bench.model.fixText(), QStringLiteral("No result yet."));
        bench.model.setQualityThreshold(20); // with no station at all
        QCOMPARE(bench.model.rowCount(), 0);
    }

    void theFixOfFourBearingsIsTheReferenceFix()
    {
        Bench bench;
        QVERIFY(bench.model.setAssumedSigma(1.5));
        bench.model.addResult(result(fourStations()));
        const Fix* const fix = bench.model.fix();
        QVERIFY(fix != nullptr);
        QVERIFY(geodesy::line(fix->position, {50.0906117, 6.6478048}).distance < 1.0);
        const double factor = std::sqrt(-2.0 * std::log(0.05));
        QVERIFY(std::abs(bench.model.ellipse()->semiMajor / (967.75 * factor) - 1.0) < 1e-3);
        QCOMPARE(bench.model.fixText(), QStringLiteral("Fix 50.09061° N  6.64780° E\n"
                                                       "95 % ellipse 2369 m × 1832 m, major axis at 59.5°\n"
                                                       "4 bearings used, χ² 1.55 (degrees of freedom: 2)"));
    }

    void twoBearingsHaveNoChiSquareToTell()
    {
        Bench bench;
        auto shots = fourStations();
        shots.resize(2);
        bench.model.addResult(result(shots));
        QVERIFY(bench.model.fixText().endsWith(QStringLiteral("\n2 bearings used")));
    }

    void probabilityAndSigmaChangeTheEllipseOnly()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        const double before = bench.model.ellipse()->semiMajor;
        const GeoPosition position = bench.model.fix()->position;
        QSignalSpy uses(&bench.model, &MapModel::useChanged);
        QVERIFY(bench.model.setAssumedSigma(2.0 * assumedSigma));
        QVERIFY(std::abs(bench.model.ellipse()->semiMajor / before - 2.0) < 1e-6);
        QVERIFY(bench.model.setProbability(0.5));
        QVERIFY(bench.model.ellipse()->semiMajor < before);
        QVERIFY(geodesy::line(position, bench.model.fix()->position).distance < 1e-3);
        QCOMPARE(uses.count(), 2);
        QVERIFY(bench.model.setProbability(0.5));
        QCOMPARE(uses.count(), 2);
    }

    void aStatedSigmaStandsBeforeTheAssumedOne()
    {
        Bench bench;
        DfResult stated = result(fourStations());
        for (StationResult& station : stated.stations)
            station.sigma = 1.5;
        bench.model.addResult(stated);
        const double factor = std::sqrt(-2.0 * std::log(0.05));
        QVERIFY(std::abs(bench.model.ellipse()->semiMajor / (967.75 * factor) - 1.0) < 1e-3);
        QVERIFY(bench.model.setAssumedSigma(10.0));
        QVERIFY(std::abs(bench.model.ellipse()->semiMajor / (967.75 * factor) - 1.0) < 1e-3);
    }

    void bearingsWithoutAnyNoiseAreUsed()
    {
        Bench bench;
        DfResult exact = result(mapbench::acrossTheDateLine());
        for (StationResult& station : exact.stations)
            station.sigma = 0.0;
        exact.stations[2].sigma = std::numeric_limits<double>::quiet_NaN();
        bench.model.addResult(exact);
        for (const MapStation& station : bench.model.stations())
            QCOMPARE(station.use, MapUse::Used);
    }

    void theFixIsThatOfTheDriver()
    {
        Bench bench;
        const DfResult measured = result(fourStations());
        bench.model.setQualityThreshold(50);
        bench.model.addResult(measured);
        const LocateResult driver = onlineFix(measured, 50);
        QCOMPARE(bench.model.fix()->position.latitude, std::get<Fix>(driver).position.latitude);
        QCOMPARE(bench.model.fix()->covariance.east, std::get<Fix>(driver).covariance.east);
    }

    void senselessSigmasAndProbabilitiesAreRefused()
    {
        Bench bench;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        for (const double sigma : {0.0, -1.0, 181.0, nan})
            QVERIFY(!bench.model.setAssumedSigma(sigma));
        for (const double probability : {0.0, 1.0, -0.5, nan})
            QVERIFY(!bench.model.setProbability(probability));
        QCOMPARE(bench.model.assumedSigma(), assumedSigma);
        QCOMPARE(bench.model.probability(), 0.95);
    }

    void anExcludedBearingLeavesTheFixAtOnceAndComesBack()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        const GeoPosition all = bench.model.fix()->position;
        QVERIFY(bench.model.setExcluded(3, true));
        QCOMPARE(bench.model.station(3)->use, MapUse::Excluded);
        QVERIFY(bench.model.station(3)->residual.has_value());
        QVERIFY(geodesy::line(all, bench.model.fix()->position).distance > 10.0);
        QVERIFY(bench.model.setExcluded(3, false));
        QCOMPARE(bench.model.station(3)->use, MapUse::Used);
        QVERIFY(geodesy::line(all, bench.model.fix()->position).distance < 1e-3);
    }

    void anUnknownStationCannotBeExcluded()
    {
        Bench bench;
        QVERIFY(!bench.model.setExcluded(7, true));
    }

    void anExclusionStaysFromResultToResult()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        bench.model.setExcluded(2, true);
        bench.model.addResult(result(fourStations()));
        QCOMPARE(bench.model.station(2)->use, MapUse::Excluded);
    }

    void excludingAllButOneLeavesAReason()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        for (const int id : {1, 2, 3})
            bench.model.setExcluded(id, true);
        QCOMPARE(bench.model.fix(), nullptr);
        QCOMPARE(bench.model.fixText(), explanation(NoFix::TooFewBearings));
        QCOMPARE(bench.model.station(1)->use, MapUse::Excluded);
        QCOMPARE(bench.model.station(4)->use, MapUse::Used);
        QVERIFY(!bench.model.station(4)->residual.has_value());
    }

    void qualitiesBelowTheThresholdAreNoPartOfTheFix()
    {
        Bench bench;
        auto shots = fourStations(); // 90, 60, 75, 30 percent
        shots[1].quality = 59.5;     // 60 for people
        shots[2].quality = 59.4;
        bench.model.addResult(result(shots));
        bench.model.setQualityThreshold(60);
        QCOMPARE(bench.model.station(1)->use, MapUse::Used);
        QCOMPARE(bench.model.station(2)->use, MapUse::Used);
        QCOMPARE(bench.model.station(3)->use, MapUse::BelowThreshold);
        QCOMPARE(bench.model.station(4)->use, MapUse::BelowThreshold);
        QCOMPARE(bench.model.fix()->degreesOfFreedom, 0);
        bench.model.setQualityThreshold(std::nullopt);
        QCOMPARE(bench.model.fix()->degreesOfFreedom, 2);
    }

    void aMissingQualityCountsAsNone()
    {
        Bench bench;
        DfResult without = result(fourStations());
        without.stations[0].quality.reset();
        bench.model.addResult(without);
        QCOMPARE(bench.model.station(1)->use, MapUse::Used);
        bench.model.setQualityThreshold(1);
        QCOMPARE(bench.model.station(1)->use, MapUse::BelowThreshold);
    }

    void theOperatorsReasonStandsBeforeTheThreshold()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        bench.model.setQualityThreshold(50);
        bench.model.setExcluded(4, true);
        QCOMPARE(bench.model.station(4)->use, MapUse::Excluded);
    }

    void noneAndOneStationGiveNoFix()
    {
        Bench bench;
        bench.model.addResult(DfResult());
        QCOMPARE(bench.model.fixText(), explanation(NoFix::TooFewBearings));
        bench.model.addResult(result({{1, 50.0, 6.0, 77.0, 90.0}}));
        QCOMPARE(bench.model.fixText(), explanation(NoFix::TooFewBearings));
    }

    void stationsAtOnePlaceGiveNoFix()
    {
        Bench bench;
        bench.model.addResult(result({{1, 50.0, 6.0, 77.0, 90.0}, {2, 50.0, 6.0, 170.0, 90.0}}));
        QCOMPARE(bench.model.fixText(), explanation(NoFix::TooFewBearings));
    }

    void parallelLinesGiveNoFix()
    {
        Bench bench;
        bench.model.addResult(result({{1, 0.0, 6.0, 0.0, 90.0}, {2, 0.0, 6.5, 0.0, 90.0}}));
        QCOMPARE(bench.model.fixText(), explanation(NoFix::ParallelLines));
    }

    void oppositeBearingsGiveNoFix()
    {
        // Each looks at the other: anywhere between them would do.
        Bench bench;
        bench.model.addResult(result({{1, 0.0, 6.0, 90.0, 90.0}, {2, 0.0, 8.0, 270.0, 90.0}}));
        QVERIFY(bench.model.fix() == nullptr);
        QVERIFY2(bench.model.fixText().startsWith(QStringLiteral("No fix: ")), qPrintable(bench.model.fixText()));
        // Away from each other: they meet at the other end of the Earth only.
        bench.model.addResult(result({{1, 50.0, 6.0, 270.0, 90.0}, {2, 50.0, 8.0, 90.0, 90.0}}));
        QVERIFY(bench.model.fix() == nullptr);
    }

    void numbersThatAreNoneAreTakenAsMissing()
    {
        Bench bench;
        const double nan = std::numeric_limits<double>::quiet_NaN();
        DfResult bad = result(fourStations());
        bad.stations[0].azimuth = nan;
        bad.stations[1].position = GeoPosition{nan, 7.0};
        bad.stations[2].quality = nan;
        bad.stations[3].position = GeoPosition{91.0, 7.0};
        bench.model.addResult(bad);
        QCOMPARE(bench.model.station(1)->use, MapUse::NoBearing);
        QVERIFY(!bench.model.station(2)->position.has_value());
        QCOMPARE(bench.model.station(2)->use, MapUse::Unusable);
        QVERIFY(!bench.model.station(3)->quality.has_value());
        QVERIFY(!bench.model.station(4)->hasLine());
        QCOMPARE(bench.cell(0, MapModel::BearingColumn), QStringLiteral("---"));
        QCOMPARE(bench.cell(1, MapModel::UseColumn), QStringLiteral("no position"));
        QCOMPARE(bench.cell(2, MapModel::QualityColumn), QStringLiteral("---"));
    }

    void aStationAtThePoleHasItsPartInTheFix()
    {
        Bench bench;
        // Along the meridians of 0 and of 90 E, from the pole and from the equator's side.
        bench.model.addResult(result({{1, 90.0, 0.0, 180.0, 90.0}, {2, 85.0, 30.0, 270.0, 90.0}}));
        QVERIFY(bench.model.fix() != nullptr);
        QVERIFY(std::abs(bench.model.fix()->position.longitude) < 1e-6);
    }

    void aFixBeyondTheDateLineIsFound()
    {
        Bench bench;
        bench.model.addResult(result(mapbench::acrossTheDateLine()));
        QVERIFY(bench.model.fix() != nullptr);
        QVERIFY(geodesy::line(bench.model.fix()->position, {-18.5, -179.5}).distance < 1.0);
        QVERIFY(bench.model.fixText().contains(QStringLiteral("18.50000° S  179.50000° W")));
    }

    void aResultAddsStationsThatWereUnknown()
    {
        Bench bench;
        bench.model.setStations({info(1, QStringLiteral("Alder"), GeoPosition{50.0, 6.0})});
        QSignalSpy inserted(&bench.model, &QAbstractItemModel::rowsInserted);
        bench.model.addResult(result(fourStations()));
        QCOMPARE(bench.model.rowCount(), 4);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(bench.model.rowOf(3), std::optional<int>(2));
        bench.model.addResult(result(fourStations()));
        QCOMPARE(inserted.count(), 1);
    }

    void whatAResultDoesNotTellStaysAsItWas()
    {
        Bench bench;
        bench.model.setStations({info(1, QStringLiteral("Alder"), GeoPosition{50.0, 6.0}), info(2, {}, std::nullopt)});
        DfResult bare;
        bare.stations.resize(1);
        bare.stations[0].stationId = 1;
        bare.stations[0].azimuth = 12.0;
        bench.model.addResult(bare);
        QCOMPARE(bench.cell(0, MapModel::StationColumn), QStringLiteral("Alder"));
        QCOMPARE(bench.model.station(1)->position->latitude, 50.0);
        QCOMPARE(bench.cell(1, MapModel::StationColumn), QStringLiteral("Station 2"));
        QCOMPARE(bench.model.station(2)->use, MapUse::NoBearing);
    }

    void onlyStationsThatMoveAreToldAsMoved()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        QSignalSpy moved(&bench.model, &MapModel::stationsChanged);
        bench.model.addResult(result(fourStations()));
        QCOMPARE(moved.count(), 0);
        auto shots = fourStations();
        shots[0].latitude += 0.01;
        bench.model.addResult(result(shots));
        QCOMPARE(moved.count(), 1);
    }

    void theBearingsOfTheLastResultBecomeEarlierOnes()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        QVERIFY(bench.model.earlierBearings().empty());
        bench.now += 5000;
        auto shots = fourStations();
        shots.resize(1);
        shots[0].azimuth = 80.0;
        bench.model.addResult(result(shots));
        QCOMPARE(bench.model.earlierBearings().size(), std::size_t(4));
        QCOMPARE(bench.model.earlierBearings()[0].azimuth, 77.3);
        QCOMPARE(bench.model.earlierBearings()[0].time, qint64(1000));
        QCOMPARE(bench.model.station(2)->use, MapUse::NoBearing);
        QVERIFY(!bench.model.station(2)->quality.has_value());
    }

    void severalResultsAtOnceAreAsOneAfterTheOther()
    {
        std::vector<DfResult> results;
        for (const double azimuth : {80.0, 79.0, 78.0}) {
            auto shots = fourStations();
            shots[0].azimuth = azimuth;
            results.push_back(result(shots));
        }
        auto fifth = fourStations();
        fifth.push_back({5, 50.6, 6.4, 160.0, 50.0});
        results.insert(results.begin() + 1, result(fifth));

        Bench each;
        for (const DfResult& one : results)
            each.model.addResult(one);
        Bench together;
        QSignalSpy moved(&together.model, &MapModel::stationsChanged);
        QSignalSpy changed(&together.model, &MapModel::bearingsChanged);
        together.model.addResults(results, std::nullopt);
        QCOMPARE(moved.count(), 1);
        QCOMPARE(changed.count(), 1);

        QCOMPARE(together.model.fixText(), each.model.fixText());
        QCOMPARE(together.model.rowCount(), 5);
        QCOMPARE(together.model.station(5)->use, MapUse::NoBearing);
        QCOMPARE(together.model.station(1)->azimuth, std::optional(78.0));
        const auto earlier = [](const MapModel& model) {
            QStringList lines;
            for (const EarlierBearing& bearing : model.earlierBearings())
                lines += QStringLiteral("%1 %2 %3").arg(bearing.result).arg(bearing.stationId).arg(bearing.azimuth);
            return lines;
        };
        QCOMPARE(earlier(together.model), earlier(each.model));
        QCOMPARE(together.model.earlierBearings().size(), std::size_t(4 + 5 + 4));
        QCOMPARE(together.model.resultNumber(), 4);
    }

    void bearingsFadeEvenlyAndAreLetGo()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        bench.now += MapModel::lifetime / 4;
        QCOMPARE(bench.model.freshness(1000), 0.75);
        bench.model.addResult(result(fourStations()));
        QSignalSpy forgotten(&bench.model, &MapModel::earlierForgotten);
        bench.now += MapModel::lifetime * 3 / 4 - 1;
        bench.model.forgetFaded();
        QCOMPARE(bench.model.earlierBearings().size(), std::size_t(4));
        QCOMPARE(forgotten.count(), 0);
        bench.now += 1;
        bench.model.forgetFaded();
        QVERIFY(bench.model.earlierBearings().empty());
        QCOMPARE(forgotten.count(), 1);
        QVERIFY(bench.model.fix() != nullptr); // the latest stay
        bench.model.forgetFaded();
        QCOMPARE(forgotten.count(), 1);
    }

    void earlierBearingsAreBounded()
    {
        Bench bench;
        for (int i = 0; i < 140; ++i)
            bench.model.addResult(result(fourStations()));
        QCOMPARE(bench.model.earlierBearings().size(), MapModel::mostEarlierBearings);
    }

    void otherStationsBeginAnew()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        bench.model.addResult(result(fourStations()));
        bench.model.setStations({info(9, QStringLiteral("Nine"), std::nullopt)});
        QCOMPARE(bench.model.rowCount(), 1);
        QVERIFY(bench.model.earlierBearings().empty());
        QVERIFY(!bench.model.rowOf(1).has_value());
        QCOMPARE(bench.model.station(1), nullptr);
        QCOMPARE(bench.model.fixText(), QStringLiteral("No result yet."));
    }

    void theTableTellsWhatTheMapShows()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        QCOMPARE(bench.cell(0, MapModel::StationColumn), QStringLiteral("S1"));
        QCOMPARE(bench.cell(0, MapModel::BearingColumn), QStringLiteral("77.3°"));
        QCOMPARE(bench.cell(0, MapModel::QualityColumn), QStringLiteral("90 %"));
        QCOMPARE(bench.cell(0, MapModel::ResidualColumn),
                 QString::number(*bench.model.station(1)->residual, 'f', 1) + QStringLiteral("°"));
        QCOMPARE(bench.cell(0, MapModel::UseColumn), QStringLiteral("used"));
        QStringList titles;
        for (int column = 0; column < bench.model.columnCount(); ++column)
            titles += bench.model.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        QCOMPARE(titles.join(QLatin1Char('|')), QStringLiteral("Station|Bearing|Quality|Off fix|Use"));
    }

    void aBearingThroughTheFixIsOffByZeroWithoutASign()
    {
        Bench bench;
        // The fix of two bearings lies on both: what is left is rounding, in either direction.
        bench.model.addResult(result({{1, 50.0, 6.0, 77.3, 90.0}, {2, 50.3, 7.0, 227.0, 60.0}}));
        QVERIFY(bench.model.fix() != nullptr);
        for (int row = 0; row < 2; ++row)
            QCOMPARE(bench.cell(row, MapModel::ResidualColumn), QStringLiteral("0.0°"));
    }

    void eachUseHasAWord()
    {
        QCOMPARE(useText(MapUse::NoBearing), QStringLiteral("no bearing"));
        QCOMPARE(useText(MapUse::Used), QStringLiteral("used"));
        QCOMPARE(useText(MapUse::BelowThreshold), QStringLiteral("low quality"));
        QCOMPARE(useText(MapUse::Excluded), QStringLiteral("excluded"));
        QCOMPARE(useText(MapUse::Unusable), QStringLiteral("unusable"));
        QCOMPARE(useText(MapUse::AtFix), QStringLiteral("at the fix"));
    }

    void theCheckBoxOfTheTableIncludesAndExcludes()
    {
        Bench bench;
        bench.model.addResult(result(fourStations()));
        const QModelIndex first = bench.model.index(0, MapModel::StationColumn);
        QCOMPARE(first.data(Qt::CheckStateRole).toInt(), int(Qt::Checked));
        QVERIFY(bench.model.setData(first, Qt::Unchecked, Qt::CheckStateRole));
        QVERIFY(bench.model.station(1)->excluded);
        QCOMPARE(first.data(Qt::CheckStateRole).toInt(), int(Qt::Unchecked));
        QVERIFY(!bench.model.setData(first, QStringLiteral("x"), Qt::EditRole));
        const QModelIndex other = bench.model.index(0, MapModel::UseColumn);
        QVERIFY(!bench.model.setData(other, Qt::Unchecked, Qt::CheckStateRole));
        QVERIFY(!(other.flags() & Qt::ItemIsUserCheckable));
    }
};

DFL_TEST_MAIN_WITH(TestMapModel, QCoreApplication)
#include "tst_mapmodel.moc"
