#include "drivers/geodesy.h"
#include "drivers/propagation.h"
#include "drivers/simulatednetwork.h"
#include "support/testmain.h"

#include <QSignalSpy>

#include <cmath>

using namespace workbench;

namespace {

constexpr double tuned = 100e6;

/// One perfect station, and an emitter due east on the equator, 100 MHz, 1 W.
Scenario simpleScenario()
{
    Scenario scenario;
    scenario.name = QStringLiteral("Simple");
    scenario.start = QDateTime(QDate(2026, 5, 14), QTime(23, 59, 0), Qt::UTC);
    scenario.frequency = tuned;
    ScenarioStation station;
    station.info.id = 4;
    station.info.name = QStringLiteral("S");
    station.info.position = GeoPosition{0.0, 0.0};
    station.info.range = FrequencyRange{20e6, 3e9};
    station.bearingAccuracy = 0.0;
    scenario.stations.push_back(station);
    ScenarioEmitter emitter;
    emitter.name = QStringLiteral("E");
    emitter.frequency = tuned;
    emitter.eirp = 30.0;
    emitter.track = {{0.0, {0.0, 0.1}}};
    scenario.emitters.push_back(emitter);
    return scenario;
}

DfRequest request(double bandwidth = 12000.0)
{
    DfRequest request;
    request.frequency = tuned;
    request.bandwidth = bandwidth;
    request.mode = DfMode::Normal;
    return request;
}

/// The EIRP with which the station of the simple scenario receives @p level.
double eirpForLevel(double level)
{
    const double distance = geodesy::line({0.0, 0.0}, {0.0, 0.1}).distance;
    return level - 107.0 + propagation::freeSpaceLoss(tuned, distance);
}

class Measurements
{
public:
    explicit Measurements(Scenario scenario, quint64 seed = 1)
        : network(std::move(scenario), seed, Pacing::Immediate)
    {
        QObject::connect(&network, &DfSource::measured, &network,
                         [this](const DfResult& result) { m_result = result; });
    }

    DfResult next(const DfRequest& wanted = request())
    {
        m_result.reset();
        network.measure(wanted);
        while (!m_result)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return *m_result;
    }
    StationResult station(const DfRequest& wanted = request()) { return next(wanted).stations.at(0); }

    SimulatedNetwork network;

private:
    std::optional<DfResult> m_result;
};

bool isNear(double actual, double expected, double tolerance)
{
    if (std::abs(actual - expected) <= tolerance)
        return true;
    qWarning("%.9f is not within %g of %.9f", actual, tolerance, expected);
    return false;
}

/// Mean square of the bearing error in many measurements.
double variance(Measurements& measurements, const DfRequest& wanted, int count = 4000)
{
    double squares = 0.0;
    for (int i = 0; i < count; ++i) {
        const double error = *measurements.station(wanted).azimuth - 90.0;
        squares += error * error;
    }
    return squares / count;
}

} // namespace

class SimulatedNetworkTest : public QObject
{
    Q_OBJECT
private slots:
    void init() { qRegisterMetaType<DfResult>("workbench::DfResult"); }

    void aStrongSignalHasTheTrueBearingAndTheComputedLevel();
    void aResultTellsWhatWasMeasuredAndWhere();
    void answersComeLaterAndOnce();
    void aFurtherMeasurementDropsTheOneUnderWay();
    void withoutARangeTheRangeIsUndefined();
    void outsideItsRangeAStationDoesNotMeasure();
    void outsideItsHoursAStationDoesNotMeasure();
    void duringAnOutageAStationDoesNotAnswer();
    void timeoutsComeAtTheirRate();
    void anEmitterWithinHalfTheBandwidthIsHeard();
    void anEmitterOffTheAirIsNotHeard();
    void aSignalNearTheNoiseIsNoSignal();
    void theNoiseGrowsWithTheBandwidth();
    void belowTheLevelThresholdThereIsNoSignal();
    void gateMeasuresOnlyAboveTheThreshold();
    void theStrongestEmitterWinsAtEachStation();
    void theTruthIsTheEmitterThatMostStationsHear();
    void theBearingSpreadsAsTheFormulaSays();
    void averagingNarrowsTheSpread();
    void contAveragesOverMeasurements();
    void aBearingStatesItsSpread();
    void contNarrowsTheStatedSpread();
    void contStartsAfreshWithOtherSettings();
    void contAveragesAcrossNorth();
    void qualityIsAWholeNumberThatFallsWithTheLevel();
    void theSameSeedGivesTheSameResults();
    void anotherSeedGivesOtherResults();
    void oneStationsFateDoesNotChangeTheOthersNoise();
    void theClockAdvancesByEachMeasurement();
    void theRealClockRuns();
    void aMovingEmitterIsFollowed();
    void theNetworkTellsItsNameStationsAndFrequency();
    void theTimeOfAMeasurementIsSettlingAndAveraging();
};

void SimulatedNetworkTest::aStrongSignalHasTheTrueBearingAndTheComputedLevel()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = 120.0; // no noise to speak of
    Measurements measurements(scenario);
    const StationResult station = measurements.station();
    QCOMPARE(station.error, DfError::None);
    QVERIFY(isNear(*station.azimuth, 90.0, 0.01));
    QCOMPARE(*station.quality, 100.0);
    // 11.1319 km: 32.45 + 40 + 20.9314 = 93.3814 dB
    QVERIFY(isNear(*station.level, 120.0 - 93.3814 + 107.0, 0.001));
}

void SimulatedNetworkTest::aResultTellsWhatWasMeasuredAndWhere()
{
    Measurements measurements(simpleScenario());
    const DfResult result = measurements.next();
    QCOMPARE(result.frequency, std::optional<double>(tuned));
    QCOMPARE(result.stations.size(), std::size_t(1));
    QCOMPARE(result.stations[0].stationId, 4);
    QCOMPARE(result.stations[0].stationName, QStringLiteral("S"));
    QCOMPARE(result.stations[0].position->longitude, 0.0);
    QCOMPARE(result.truth->name, QStringLiteral("E"));
    QCOMPARE(result.truth->position.longitude, 0.1);
    DfRequest unknown = request();
    unknown.frequency = 0.0;
    QVERIFY(!measurements.next(unknown).frequency);
}

void SimulatedNetworkTest::answersComeLaterAndOnce()
{
    SimulatedNetwork network(simpleScenario(), 1, Pacing::Immediate);
    QSignalSpy measured(&network, &DfSource::measured);
    network.measure(request());
    QCOMPARE(measured.count(), 0);
    QTRY_COMPARE(measured.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(measured.count(), 1);
    network.measure(request());
    network.cancel();
    QCoreApplication::processEvents();
    QCOMPARE(measured.count(), 1);
}

void SimulatedNetworkTest::aFurtherMeasurementDropsTheOneUnderWay()
{
    SimulatedNetwork network(simpleScenario(), 1, Pacing::Immediate);
    QSignalSpy measured(&network, &DfSource::measured);
    network.measure(request());
    DfRequest other = request();
    other.frequency = 200e6;
    network.measure(other);
    QTRY_COMPARE(measured.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(measured.count(), 1);
    QCOMPARE(*measured[0][0].value<DfResult>().frequency, 200e6);
}

void SimulatedNetworkTest::withoutARangeTheRangeIsUndefined()
{
    Scenario scenario = simpleScenario();
    scenario.stations[0].info.range.reset();
    const StationResult station = Measurements(scenario).station();
    QCOMPARE(station.error, DfError::ScanRangeUndefined);
    QVERIFY(!station.azimuth);
    QVERIFY(!station.quality);
    QVERIFY(!station.level);
}

void SimulatedNetworkTest::outsideItsRangeAStationDoesNotMeasure()
{
    Scenario scenario = simpleScenario();
    scenario.stations[0].info.range = FrequencyRange{tuned, 2 * tuned};
    Measurements measurements(scenario);
    QCOMPARE(measurements.station().error, DfError::None);
    DfRequest below = request();
    below.frequency = tuned - 1.0;
    QCOMPARE(measurements.station(below).error, DfError::NotInScanRange);
    DfRequest above = request();
    above.frequency = 2 * tuned + 1.0;
    QCOMPARE(measurements.station(above).error, DfError::NotInScanRange);
}

void SimulatedNetworkTest::outsideItsHoursAStationDoesNotMeasure()
{
    Scenario scenario = simpleScenario();
    scenario.stations[0].operatingHours = OperatingHours{QTime(0, 0), QTime(6, 0)};
    Measurements measurements(scenario);
    DfRequest longest = request();
    longest.averaging = 10000.0;
    QCOMPARE(measurements.station(longest).error, DfError::NotInTimeRange);
    for (int i = 0; i < 4; ++i)
        measurements.station(longest);
    QCOMPARE(measurements.network.now().time(), QTime(23, 59, 51, 250));
    QCOMPARE(measurements.station(longest).error, DfError::None); // past midnight
}

void SimulatedNetworkTest::duringAnOutageAStationDoesNotAnswer()
{
    Scenario scenario = simpleScenario();
    scenario.stations[0].outages = {{0.5, 1.0}};
    Measurements measurements(scenario);
    QVERIFY(measurements.network.stations().at(0).available);
    QCOMPARE(measurements.station().error, DfError::None);
    QCOMPARE(measurements.station().error, DfError::Timeout); // at 0.5 s
    QVERIFY(!measurements.network.stations().at(0).available);
    QCOMPARE(measurements.station().error, DfError::Timeout);
    QCOMPARE(measurements.station().error, DfError::None); // at 1 s
    QVERIFY(measurements.network.stations().at(0).available);
}

void SimulatedNetworkTest::timeoutsComeAtTheirRate()
{
    Scenario scenario = simpleScenario();
    scenario.stations[0].timeoutPercent = 25.0;
    Measurements measurements(scenario);
    int timeouts = 0;
    for (int i = 0; i < 2000; ++i)
        timeouts += measurements.station().error == DfError::Timeout ? 1 : 0;
    QVERIFY2(timeouts > 420 && timeouts < 580, qPrintable(QString::number(timeouts)));
    scenario.stations[0].timeoutPercent = 100.0;
    QCOMPARE(Measurements(scenario).station().error, DfError::Timeout);
}

void SimulatedNetworkTest::anEmitterWithinHalfTheBandwidthIsHeard()
{
    Measurements measurements(simpleScenario());
    for (const double offset : {-6000.0, 6000.0}) {
        DfRequest edge = request();
        edge.frequency = tuned + offset;
        QCOMPARE(measurements.station(edge).error, DfError::None);
        edge.frequency = tuned + 1.001 * offset;
        QCOMPARE(measurements.station(edge).error, DfError::NoSignal);
    }
}

void SimulatedNetworkTest::anEmitterOffTheAirIsNotHeard()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].onAir = {{0.5, 0.75}};
    Measurements measurements(scenario);
    const DfResult silent = measurements.next();
    QCOMPARE(silent.stations[0].error, DfError::NoSignal);
    QVERIFY(!silent.truth);
    QCOMPARE(measurements.station().error, DfError::None);
    QCOMPARE(measurements.station().error, DfError::NoSignal);
    scenario.emitters.clear();
    QCOMPARE(Measurements(scenario).station().error, DfError::NoSignal);
}

void SimulatedNetworkTest::aSignalNearTheNoiseIsNoSignal()
{
    Scenario scenario = simpleScenario();
    const double least = propagation::noiseLevel(12000.0, scenario.stations[0].noiseFigure) + 6.0;
    scenario.emitters[0].eirp = eirpForLevel(least + 0.01);
    QCOMPARE(Measurements(scenario).station().error, DfError::None);
    scenario.emitters[0].eirp = eirpForLevel(least - 0.01);
    const StationResult station = Measurements(scenario).station();
    QCOMPARE(station.error, DfError::NoSignal);
    QVERIFY(!station.azimuth);
    QVERIFY(!station.level);
    QVERIFY(!station.quality);
}

void SimulatedNetworkTest::theNoiseGrowsWithTheBandwidth()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 10.0);
    Measurements measurements(scenario);
    const double narrow = *measurements.station(request(120.0)).quality;
    const double wide = *measurements.station(request(12000.0)).quality;
    QVERIFY(narrow > wide);
    QCOMPARE(measurements.station(request(200000.0)).error, DfError::NoSignal);
}

void SimulatedNetworkTest::belowTheLevelThresholdThereIsNoSignal()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = eirpForLevel(20.001);
    Measurements measurements(scenario);
    DfRequest limited = request();
    limited.levelThreshold = 20;
    QCOMPARE(measurements.station(limited).error, DfError::None);
    limited.levelThreshold = 21;
    QCOMPARE(measurements.station(limited).error, DfError::NoSignal);
}

void SimulatedNetworkTest::gateMeasuresOnlyAboveTheThreshold()
{
    Scenario scenario = simpleScenario();
    DfRequest gated = request();
    gated.mode = DfMode::Gated;
    scenario.emitters[0].eirp = eirpForLevel(-0.5);
    QCOMPARE(Measurements(scenario).station().error, DfError::None);
    QCOMPARE(Measurements(scenario).station(gated).error, DfError::NoSignal);
    scenario.emitters[0].eirp = eirpForLevel(0.5);
    QCOMPARE(Measurements(scenario).station(gated).error, DfError::None);
    gated.levelThreshold = 10;
    QCOMPARE(Measurements(scenario).station(gated).error, DfError::NoSignal);
    scenario.emitters[0].eirp = eirpForLevel(10.5);
    QCOMPARE(Measurements(scenario).station(gated).error, DfError::None);
}

/// Two stations far apart, each beside an emitter of its own, both on the tuned frequency.
static Scenario twoEmitters()
{
    Scenario scenario = simpleScenario();
    scenario.stations.push_back(scenario.stations[0]);
    scenario.stations[1].info.id = 5;
    scenario.stations[1].info.name = QStringLiteral("T");
    scenario.stations[1].info.position = GeoPosition{0.0, 1.0};
    scenario.emitters[0].eirp = 120.0;
    scenario.emitters.push_back(scenario.emitters[0]);
    scenario.emitters[1].name = QStringLiteral("F");
    scenario.emitters[1].track = {{0.0, {0.1, 1.0}}};
    return scenario;
}

void SimulatedNetworkTest::theStrongestEmitterWinsAtEachStation()
{
    const DfResult result = Measurements(twoEmitters()).next();
    QVERIFY(isNear(*result.stations[0].azimuth, 90.0, 0.1));
    QVERIFY(isNear(std::remainder(*result.stations[1].azimuth, 360.0), 0.0, 0.1));
}

void SimulatedNetworkTest::theTruthIsTheEmitterThatMostStationsHear()
{
    Scenario scenario = twoEmitters();
    QCOMPARE(Measurements(scenario).next().truth->name, QStringLiteral("E")); // a tie
    scenario.stations.push_back(scenario.stations[1]);
    QCOMPARE(Measurements(scenario).next().truth->name, QStringLiteral("F"));
}

void SimulatedNetworkTest::theBearingSpreadsAsTheFormulaSays()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 20.0);
    Measurements noisy(scenario);
    QVERIFY(isNear(variance(noisy, request()), 4.0, 0.3)); // 20 degrees / 10
    scenario.stations[0].bearingAccuracy = 1.5;
    Measurements inaccurate(scenario);
    QVERIFY(isNear(variance(inaccurate, request()), 4.0 + 2.25, 0.45));
    scenario.emitters[0].eirp = 150.0;
    Measurements strong(scenario);
    QVERIFY(isNear(variance(strong, request()), 2.25, 0.2));
}

void SimulatedNetworkTest::averagingNarrowsTheSpread()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 20.0);
    Measurements measurements(scenario);
    DfRequest averaged = request();
    averaged.averaging = 300.0;
    QVERIFY(isNear(variance(measurements, averaged), 1.0, 0.08));
}

void SimulatedNetworkTest::contAveragesOverMeasurements()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 20.0);
    DfRequest cont = request();
    cont.mode = DfMode::Continuous;
    Measurements normal(scenario);
    Measurements running(scenario);
    const double first = *normal.station().azimuth;
    const double second = *normal.station().azimuth;
    QVERIFY(isNear(*running.station(cont).azimuth, first, 1e-9));
    QVERIFY(isNear(*running.station(cont).azimuth, 0.75 * first + 0.25 * second, 0.01));
    // In the long run the variance falls to w / (2 - w) of a single measurement's, w being a quarter.
    QVERIFY(isNear(variance(running, cont), 4.0 / 7.0, 0.12));
}

void SimulatedNetworkTest::aBearingStatesItsSpread()
{
    Scenario scenario = simpleScenario();
    scenario.stations[0].bearingAccuracy = 1.5;
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 20.0);
    Measurements measurements(scenario);
    QVERIFY(isNear(*measurements.station().sigma, 2.5, 1e-6)); // 1.5 of the station, 2 of the noise
    DfRequest averaged = request();
    averaged.averaging = 300.0;
    QVERIFY(isNear(*measurements.station(averaged).sigma, std::sqrt(1.5 * 1.5 + 1.0), 1e-6));
    scenario.emitters.clear();
    QVERIFY(!Measurements(scenario).station().sigma);
}

void SimulatedNetworkTest::contNarrowsTheStatedSpread()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 20.0);
    DfRequest cont = request();
    cont.mode = DfMode::Continuous;
    Measurements running(scenario);
    QVERIFY(isNear(*running.station(cont).sigma, 2.0, 1e-6));
    QVERIFY(isNear(*running.station(cont).sigma, 2.0 * std::sqrt(0.75 * 0.75 + 0.25 * 0.25), 1e-6));
    double sigma = 0.0;
    for (int i = 0; i < 100; ++i)
        sigma = *running.station(cont).sigma;
    QVERIFY(isNear(sigma, std::sqrt(4.0 / 7.0), 1e-6));
    // Afresh with other settings.
    QVERIFY(isNear(*running.station().sigma, 2.0, 1e-6));
    cont.bandwidth = 7500.0;
    QVERIFY(*running.station(cont).sigma > 1.5);
}

void SimulatedNetworkTest::contStartsAfreshWithOtherSettings()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 20.0);
    DfRequest cont = request();
    cont.mode = DfMode::Continuous;
    DfRequest narrower = cont;
    narrower.bandwidth = 7500.0;
    DfRequest narrowerNormal = narrower;
    narrowerNormal.mode = DfMode::Normal;
    Measurements normal(scenario);
    Measurements running(scenario);
    normal.station();
    running.station(cont);
    QVERIFY(isNear(*running.station(narrower).azimuth, *normal.station(narrowerNormal).azimuth, 1e-9));
    normal.station();
    running.station(); // another mode between
    QVERIFY(isNear(*running.station(narrower).azimuth, *normal.station(narrowerNormal).azimuth, 1e-9));
}

void SimulatedNetworkTest::contAveragesAcrossNorth()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].track = {{0.0, {0.1, 0.0}}};
    scenario.emitters[0].eirp = eirpForLevel(propagation::noiseLevel(12000.0, 10.0) + 20.0);
    Measurements measurements(scenario);
    DfRequest cont = request();
    cont.mode = DfMode::Continuous;
    for (int i = 0; i < 200; ++i) {
        const double azimuth = *measurements.station(cont).azimuth;
        QVERIFY(azimuth >= 0.0 && azimuth < 360.0);
        QVERIFY(std::abs(std::remainder(azimuth, 360.0)) < 12.0);
    }
}

void SimulatedNetworkTest::qualityIsAWholeNumberThatFallsWithTheLevel()
{
    double last = 101.0;
    for (double level = 40.0; level > -8.0; level -= 4.0) {
        Scenario scenario = simpleScenario();
        scenario.emitters[0].eirp = eirpForLevel(level);
        const double quality = *Measurements(scenario).station().quality;
        QCOMPARE(quality, std::round(quality));
        QVERIFY(quality <= last);
        QVERIFY(quality >= 1.0);
        last = quality;
    }
    QVERIFY(last < 70.0);
}

void SimulatedNetworkTest::theSameSeedGivesTheSameResults()
{
    Measurements first(twoEmitters(), 42);
    Measurements second(twoEmitters(), 42);
    for (int i = 0; i < 50; ++i) {
        const DfResult a = first.next();
        const DfResult b = second.next();
        QCOMPARE(a.time, b.time);
        for (std::size_t station = 0; station < a.stations.size(); ++station) {
            QVERIFY(*a.stations[station].azimuth == *b.stations[station].azimuth);
            QVERIFY(*a.stations[station].level == *b.stations[station].level);
        }
    }
}

void SimulatedNetworkTest::anotherSeedGivesOtherResults()
{
    QVERIFY(*Measurements(simpleScenario(), 1).station().azimuth !=
            *Measurements(simpleScenario(), 2).station().azimuth);
}

void SimulatedNetworkTest::oneStationsFateDoesNotChangeTheOthersNoise()
{
    Scenario handicapped = twoEmitters();
    handicapped.stations[0].info.range.reset();
    Measurements whole(twoEmitters());
    Measurements half(handicapped);
    for (int i = 0; i < 10; ++i)
        QVERIFY(*whole.next().stations[1].azimuth == *half.next().stations[1].azimuth);
}

void SimulatedNetworkTest::theClockAdvancesByEachMeasurement()
{
    Measurements measurements(simpleScenario());
    QCOMPARE(measurements.network.now(), QDateTime(QDate(2026, 5, 14), QTime(23, 59, 0), Qt::UTC));
    DfRequest averaged = request();
    averaged.averaging = 2000.0;
    DfResult result = measurements.next(averaged);
    QCOMPARE(result.date, QDate(2026, 5, 14));
    QCOMPARE(result.time, QTime(23, 59, 2, 250));
    averaged.averaging = 60000.0;
    result = measurements.next(averaged);
    QCOMPARE(result.date, QDate(2026, 5, 15));
    QCOMPARE(result.time, QTime(0, 0, 2, 500));
}

void SimulatedNetworkTest::theRealClockRuns()
{
    SimulatedNetwork network(simpleScenario(), 1, Pacing::RealTime);
    const QDateTime before = network.now();
    QVERIFY(before >= simpleScenario().start);
    QTRY_VERIFY(network.now() > before);
    QSignalSpy measured(&network, &DfSource::measured);
    network.measure(request());
    QTRY_COMPARE(measured.count(), 1);
    // What is measured, is measured when its time is over.
    const auto result = measured[0][0].value<DfResult>();
    QVERIFY(simpleScenario().start.msecsTo(QDateTime(result.date, result.time, Qt::UTC)) >= 250);
}

void SimulatedNetworkTest::aMovingEmitterIsFollowed()
{
    Scenario scenario = simpleScenario();
    scenario.emitters[0].eirp = 120.0;
    scenario.emitters[0].track = {{0.25, {0.0, 0.1}}, {10.5, {0.1, 0.0}}};
    Measurements measurements(scenario);
    QVERIFY(isNear(*measurements.station().azimuth, 90.0, 0.1));
    DfRequest longest = request();
    longest.averaging = 10000.0;
    const DfResult result = measurements.next(longest);
    QVERIFY(isNear(std::remainder(*result.stations[0].azimuth, 360.0), 0.0, 0.1));
    QVERIFY(isNear(result.truth->position.latitude, 0.1, 1e-9));
}

void SimulatedNetworkTest::theNetworkTellsItsNameStationsAndFrequency()
{
    Scenario scenario = simpleScenario();
    scenario.hriStations.emplace_back();
    const SimulatedNetwork network(scenario, 1, Pacing::Immediate);
    QCOMPARE(network.name(), QStringLiteral("Simulation Simple"));
    QCOMPARE(network.stations().size(), std::size_t(1));
    QCOMPARE(network.stations()[0].range->high, 3e9);
    QCOMPARE(network.hriStations().size(), std::size_t(1));
    QCOMPARE(network.initialFrequency(), std::optional<double>(tuned));
    QVERIFY(!network.measurementsLeft());
}

void SimulatedNetworkTest::theTimeOfAMeasurementIsSettlingAndAveraging()
{
    QCOMPARE(PacedSource::measurementDuration(request()), 250);
    DfRequest averaged = request();
    averaged.averaging = 500.0;
    QCOMPARE(PacedSource::measurementDuration(averaged), 750);
}

DFL_TEST_MAIN_WITH(SimulatedNetworkTest, QCoreApplication)
#include "tst_simulatednetwork.moc"
