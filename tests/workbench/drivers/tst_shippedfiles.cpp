#include "drivers/geodesy.h"
#include "drivers/recording.h"
#include "drivers/recordingwriter.h"
#include "drivers/simulatednetwork.h"
#include "support/testmain.h"
#include "textfile.h"

#include <cmath>

using namespace workbench;

namespace {

const QString scenarioFile = QStringLiteral(SHIPPED_DIR "/scenarios/five-stations.json");
const QString recordingFile = QStringLiteral(SHIPPED_DIR "/recordings/five-stations.csv");

Scenario shippedScenario()
{
    Loaded<Scenario> loaded = loadScenario(scenarioFile);
    if (!loaded)
        qFatal("%s", qPrintable(loaded.errors.join(QLatin1Char('\n'))));
    return std::move(*loaded.value);
}

/// Results with the settings that the driver has at first.
std::vector<DfResult> measure(SimulatedNetwork& network, double frequency, int count)
{
    std::vector<DfResult> results;
    const auto connection = QObject::connect(&network, &DfSource::measured, &network,
                                             [&results](const DfResult& result) { results.push_back(result); });
    DfRequest request;
    request.frequency = frequency;
    request.bandwidth = 12000.0;
    request.mode = DfMode::Normal;
    for (int i = 1; i <= count; ++i) {
        network.measure(request);
        while (results.size() < static_cast<std::size_t>(i))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    QObject::disconnect(connection);
    return results;
}

} // namespace

class ShippedFilesTest : public QObject
{
    Q_OBJECT
private slots:
    void theScenarioHasFiveStationsAndThreeEmittersOfWhichOneMoves();
    void allStationsReceiveTheFirstEmitterAndOneOfThemWeakly();
    void everyEmitterIsHeard();
    void theRecordingIsWhatTheSimulatorWrites();
};

void ShippedFilesTest::theScenarioHasFiveStationsAndThreeEmittersOfWhichOneMoves()
{
    const Scenario scenario = shippedScenario();
    QCOMPARE(scenario.stations.size(), std::size_t(5));
    QCOMPARE(scenario.hriStations.size(), std::size_t(3));
    QCOMPARE(scenario.emitters.size(), std::size_t(3));
    int moving = 0;
    for (const ScenarioEmitter& emitter : scenario.emitters)
        moving += emitter.track.size() > 1 ? 1 : 0;
    QCOMPARE(moving, 1);
}

void ShippedFilesTest::allStationsReceiveTheFirstEmitterAndOneOfThemWeakly()
{
    SimulatedNetwork network(shippedScenario(), 1, Pacing::Immediate);
    const std::vector<DfResult> results = measure(network, *network.initialFrequency(), 200);
    int weak = 0;
    for (std::size_t station = 0; station < 5; ++station) {
        double squares = 0.0;
        for (const DfResult& result : results) {
            const StationResult& measurement = result.stations[station];
            QCOMPARE(measurement.error, DfError::None);
            QVERIFY(*measurement.level > 10.0 && *measurement.level < 60.0);
            QVERIFY(*measurement.quality >= 40.0 && *measurement.quality <= 99.0);
            const double bearing = geodesy::line(*measurement.position, result.truth->position).azimuth;
            squares += std::pow(std::remainder(*measurement.azimuth - bearing, 360.0), 2);
        }
        const double deviation = std::sqrt(squares / static_cast<double>(results.size()));
        qInfo("%s: level %.1f dBµV, quality %.0f %%, deviation %.2f degrees",
              qPrintable(results[0].stations[station].stationName), *results[0].stations[station].level,
              *results[0].stations[station].quality, deviation);
        QVERIFY(deviation > 0.5 && deviation < 10.0);
        weak += deviation > 3.0 ? 1 : 0;
    }
    QCOMPARE(weak, 1);
}

void ShippedFilesTest::everyEmitterIsHeard()
{
    for (const ScenarioEmitter& emitter : shippedScenario().emitters) {
        SimulatedNetwork network(shippedScenario(), 1, Pacing::Immediate);
        const DfResult result = measure(network, emitter.frequency, 1).at(0);
        QCOMPARE(result.truth->name, emitter.name);
        int bearings = 0;
        for (const StationResult& station : result.stations)
            bearings += station.azimuth ? 1 : 0;
        QVERIFY(bearings >= 4);
    }
}

void ShippedFilesTest::theRecordingIsWhatTheSimulatorWrites()
{
    const Loaded<Recording> shipped = loadRecording(recordingFile);
    QVERIFY2(shipped, qPrintable(shipped.errors.join(QLatin1Char('\n'))));
    QCOMPARE(shipped.value->shots.size(), std::size_t(12));

    const testsupport::TextFiles files;
    const QString file = files.path(QStringLiteral("made.csv"));
    RecordingWriter writer(file);
    SimulatedNetwork network(shippedScenario(), 1, Pacing::Immediate);
    for (const DfResult& result : measure(network, *network.initialFrequency(), 12))
        QVERIFY2(writer.append(result), qPrintable(writer.errorString()));
    QVERIFY2(writer.commit(), qPrintable(writer.errorString()));
    QCOMPARE(testsupport::TextFiles::content(file), testsupport::TextFiles::content(recordingFile));
}

DFL_TEST_MAIN_WITH(ShippedFilesTest, QCoreApplication)
#include "tst_shippedfiles.moc"
