#include "drivers/jsonlines.h"
#include "drivers/scenario.h"
#include "support/testmain.h"
#include "textfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace workbench;

namespace {

const QByteArray station = R"({"id": 1, "name": "A", "latitude": 50, "longitude": 10})";
const QByteArray emitter = R"({"name": "E", "frequencyHz": 1e8, "eirpDbm": 10, "latitude": 50, "longitude": 11})";
const QByteArray device =
    R"({"name": "D", "bandwidths": [{"text": "b", "hz": 100}], "averagingTimes": [{"text": "a", "ms": 5}], "modes": ["norm"]})";

/// A scenario of one line per list, so that errors are in known lines: stations 2, emitters 3.
QByteArray scenarioText(const QByteArray& stations, const QByteArray& emitters, const QByteArray& more = {})
{
    return R"({"name": "S", "start": "2026-05-14T09:30:00Z", "frequencyHz": 1e8,)"
           "\n\"stations\": [" +
           stations + "],\n\"emitters\": [" + emitters + "]" + more + "}\n";
}

} // namespace

class ScenarioTest : public QObject
{
    Q_OBJECT
private slots:
    void everyFieldIsRead();
    void whatIsNotGivenHasItsDefault();
    void wattsBecomeDbm();
    void aByteOrderMarkMakesNoDifference();
    void oneErrorIsToldWithFileLineAndField_data();
    void oneErrorIsToldWithFileLineAndField();
    void allErrorsAreToldInTheOrderOfTheFile();
    void oneBadNumberIsToldOnce();
    void aMissingFileIsToldWithItsReason();
    void aFileThatIsTooLargeIsToldWithItsSizeAndTheLimit();
    void aFileOfTheLargestSizeIsRead();
    void badJsonIsToldWithItsLine();
    void fieldsGivenTwiceAreErrors();
    void longContentsAreShortenedInErrors();

    void linesOfAllMembersAndElementsAreFound();
    void lineBreaksInsideTextsCount();
    void emittersTransmitInTheirSpansOnly();
    void operatingHoursMayPassMidnight();

private:
    QStringList errorsOf(const QByteArray& text)
    {
        const QString file = m_files.write(QStringLiteral("s.json"), text);
        const Loaded<Scenario> loaded = loadScenario(file);
        QStringList errors = loaded.errors;
        if (loaded.value.has_value() == !errors.isEmpty())
            errors += QStringLiteral("a scenario and errors exclude each other");
        for (QString& error : errors)
            error.replace(file, QStringLiteral("s.json"));
        return errors;
    }

    testsupport::TextFiles m_files;
};

void ScenarioTest::everyFieldIsRead()
{
    const Loaded<Scenario> loaded = loadScenario(QStringLiteral(TEST_DATA_DIR "/complete.json"));
    QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
    const Scenario& scenario = *loaded.value;
    QCOMPARE(scenario.name, QStringLiteral("Complete"));
    QCOMPARE(scenario.start, QDateTime(QDate(2026, 3, 29), QTime(2, 30, 15), Qt::UTC));
    QCOMPARE(scenario.frequency, 145500000.0);

    QCOMPARE(scenario.stations.size(), std::size_t(2));
    const ScenarioStation& first = scenario.stations[0];
    QCOMPARE(first.info.id, 7);
    QCOMPARE(first.info.name, QString::fromUtf8("Höhe"));
    QCOMPARE(first.info.position->latitude, 50.5);
    QCOMPARE(first.info.position->longitude, -10.25);
    QCOMPARE(first.info.range->low, 20e6);
    QCOMPARE(first.info.range->high, 3e9);
    QVERIFY(first.info.scan);
    QVERIFY(first.info.wideband);
    QVERIFY(first.info.available);
    QCOMPARE(first.bearingAccuracy, 1.5);
    QCOMPARE(first.noiseFigure, 20.0);
    QCOMPARE(first.operatingHours->from, QTime(22, 0));
    QCOMPARE(first.operatingHours->to, QTime(6, 30));
    QCOMPARE(first.outages.size(), std::size_t(2));
    QCOMPARE(first.outages[1].from, 100.0);
    QCOMPARE(first.outages[1].to, 200.5);
    QCOMPARE(first.timeoutPercent, 5.0);

    QCOMPARE(scenario.hriStations.size(), std::size_t(1));
    QCOMPARE(scenario.hriStations[0].id, 7);
    QVERIFY(!scenario.hriStations[0].available);
    QVERIFY(scenario.hriStations[0].wideband);

    QCOMPARE(scenario.emitters.size(), std::size_t(2));
    QCOMPARE(scenario.emitters[0].name, QStringLiteral("Fixed"));
    QCOMPARE(scenario.emitters[0].frequency, 145500000.0);
    QCOMPARE(scenario.emitters[0].eirp, 33.0);
    QCOMPARE(scenario.emitters[0].track.size(), std::size_t(1));
    QCOMPARE(scenario.emitters[0].track[0].position.longitude, 11.5);
    QCOMPARE(scenario.emitters[0].onAir.size(), std::size_t(1));
    QCOMPARE(scenario.emitters[1].track.size(), std::size_t(2));
    QCOMPARE(scenario.emitters[1].track[1].time, 60.0);
    QCOMPARE(scenario.emitters[1].track[1].position.latitude, 51.0);

    QCOMPARE(scenario.devices.size(), std::size_t(2));
    const DfDevice& device = scenario.devices[1];
    QCOMPARE(device.name, QStringLiteral("Second"));
    QCOMPARE(device.bandwidths.size(), std::size_t(2));
    QCOMPARE(device.bandwidths[1].text, QStringLiteral("2.5 kHz"));
    QCOMPARE(device.bandwidths[1].number, 2500.0);
    QCOMPARE(device.averagingTimes.size(), std::size_t(1));
    QCOMPARE(device.averagingTimes[0].text, QStringLiteral("none"));
    QCOMPARE(device.averagingTimes[0].number, 0.0);
    QCOMPARE(device.modes.size(), std::size_t(2));
    QCOMPARE(device.modes[0].text, QStringLiteral("GATED"));
    QCOMPARE(device.modes[0].mode, DfMode::Gated);
    QCOMPARE(device.modes[1].mode, DfMode::Normal);
}

void ScenarioTest::whatIsNotGivenHasItsDefault()
{
    const Loaded<Scenario> loaded =
        loadScenario(m_files.write(QStringLiteral("s.json"), scenarioText(station, emitter)));
    QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
    const ScenarioStation& only = loaded.value->stations.at(0);
    QVERIFY(!only.info.range);
    QVERIFY(!only.info.scan);
    QVERIFY(!only.info.wideband);
    QVERIFY(only.info.available);
    QCOMPARE(only.bearingAccuracy, 1.0);
    QCOMPARE(only.noiseFigure, 10.0);
    QVERIFY(!only.operatingHours);
    QVERIFY(only.outages.empty());
    QCOMPARE(only.timeoutPercent, 0.0);
    QVERIFY(loaded.value->hriStations.empty());
    QCOMPARE(loaded.value->devices.size(), std::size_t(1));
    QCOMPARE(loaded.value->devices[0].name, QStringLiteral("Standard"));
    QCOMPARE(loaded.value->devices[0].bandwidths.size(), std::size_t(14));
    QVERIFY(loaded.value->emitters.at(0).onAir.empty());
}

void ScenarioTest::wattsBecomeDbm()
{
    QByteArray text = emitter;
    text.replace("\"eirpDbm\": 10", "\"eirpWatt\": 100");
    const Loaded<Scenario> loaded = loadScenario(m_files.write(QStringLiteral("s.json"), scenarioText(station, text)));
    QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
    QCOMPARE(loaded.value->emitters.at(0).eirp, 50.0);
}

void ScenarioTest::aByteOrderMarkMakesNoDifference()
{
    QCOMPARE(errorsOf("\xEF\xBB\xBF" + scenarioText(station, emitter)), QStringList());
}

void ScenarioTest::oneErrorIsToldWithFileLineAndField_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("error");

    const auto root = [](const char* name, const QByteArray& from, const QByteArray& to, const char* error) {
        QTest::newRow(name) << scenarioText(station, emitter).replace(from, to) << QString::fromUtf8(error);
    };
    root("list as root", scenarioText(station, emitter), "[1]", "s.json:1: scenario: expected an object, found [1]");
    root("name missing", R"("name": "S", )", "", "s.json:1: name: expected a text that is not empty, found nothing");
    root("name blank", R"("name": "S")", R"("name": " ")",
         "s.json:1: name: expected a text that is not empty, found \" \"");
    root("half a character", R"("name": "S")", R"("name": "S\ud800")",
         "s.json:1: name: expected a text of whole characters, found \"S\\ud800\"");
    root("start local", "09:30:00Z", "09:30:00",
         "s.json:1: start: expected a UTC time as \"yyyy-MM-ddThh:mm:ssZ\", found \"2026-05-14T09:30:00\"");
    root("start impossible", "05-14T", "02-30T",
         "s.json:1: start: expected a UTC time as \"yyyy-MM-ddThh:mm:ssZ\", found \"2026-02-30T09:30:00Z\"");
    root("frequency zero", R"(Z", "frequencyHz": 1e8,)", R"(Z", "frequencyHz": 0,)",
         "s.json:1: frequencyHz: expected a frequency in Hz from 1 to 1e12, found 0");
    root("frequency text", R"(Z", "frequencyHz": 1e8,)", R"(Z", "frequencyHz": "1",)",
         "s.json:1: frequencyHz: expected a frequency in Hz from 1 to 1e12, found \"1\"");
    root("no stations", station, "", "s.json:2: stations: expected a list that is not empty, found []");
    root("stations no list", "[" + station + "]", "{}",
         "s.json:2: stations: expected a list that is not empty, found {}");
    root("emitters no list", "[" + emitter + "]", "null", "s.json:3: emitters: expected a list, found null");
    root("unknown field", R"("name": "S")", R"("name": "S", "nmae": 1)", "s.json:1: nmae: no such field");
    root("station no object", station, "5", "s.json:2: stations[0]: expected an object, found 5");
    root("emitter no object", emitter, "[]", "s.json:3: emitters[0]: expected an object, found []");

    const auto inStation = [](const char* name, const QByteArray& from, const QByteArray& to, const char* error) {
        QTest::newRow(name) << scenarioText(QByteArray(station).replace(from, to), emitter) << QString::fromUtf8(error);
    };
    inStation("id missing", R"("id": 1, )", "",
              "s.json:2: stations[0].id: expected a whole number from 1 to 2147483647, found nothing");
    inStation("id zero", R"("id": 1)", R"("id": 0)",
              "s.json:2: stations[0].id: expected a whole number from 1 to 2147483647, found 0");
    inStation("id not whole", R"("id": 1)", R"("id": 1.5)",
              "s.json:2: stations[0].id: expected a whole number from 1 to 2147483647, found 1.5");
    inStation("latitude", R"("latitude": 50)", R"("latitude": 90.5)",
              "s.json:2: stations[0].latitude: expected a number from -90 to 90, found 90.5");
    inStation("longitude", R"("longitude": 10)", R"("longitude": -181)",
              "s.json:2: stations[0].longitude: expected a number from -180 to 180, found -181");
    inStation("unknown field", R"("id": 1)", R"("id": 1, "available": true)",
              "s.json:2: stations[0].available: no such field");

    const auto moreInStation = [](const char* name, const QByteArray& more, const char* error) {
        QByteArray text = station;
        text.insert(text.size() - 1, ", " + more);
        QTest::newRow(name) << scenarioText(text, emitter) << QString::fromUtf8(error);
    };
    moreInStation("range no object", R"("rangeHz": 5)", "s.json:2: stations[0].rangeHz: expected an object, found 5");
    moreInStation("range reversed", R"("rangeHz": {"low": 10, "high": 9})",
                  "s.json:2: stations[0].rangeHz.high: expected a frequency that is not below \"low\", found 9");
    moreInStation("range half", R"("rangeHz": {"low": 10})",
                  "s.json:2: stations[0].rangeHz.high: expected a frequency in Hz from 1 to 1e12, found nothing");
    moreInStation("range unknown field", R"("rangeHz": {"low": 10, "high": 11, "step": 1})",
                  "s.json:2: stations[0].rangeHz.step: no such field");
    moreInStation("scan", R"("scan": 1)", "s.json:2: stations[0].scan: expected true or false, found 1");
    moreInStation("wideband", R"("wideband": "no")",
                  "s.json:2: stations[0].wideband: expected true or false, found \"no\"");
    moreInStation("accuracy", R"("bearingAccuracyDeg": -1)",
                  "s.json:2: stations[0].bearingAccuracyDeg: expected a number of degrees from 0 to 90, found -1");
    moreInStation("noise figure", R"("noiseFigureDb": 101)",
                  "s.json:2: stations[0].noiseFigureDb: expected a number of dB from 0 to 100, found 101");
    moreInStation("timeouts", R"("timeoutPercent": 100.5)",
                  "s.json:2: stations[0].timeoutPercent: expected a percentage from 0 to 100, found 100.5");
    moreInStation("hours", R"("operatingHours": {"from": "25:00", "to": "06:00"})",
                  "s.json:2: stations[0].operatingHours.from: expected a time of day (UTC) as \"hh:mm\", found "
                  "\"25:00\"");
    moreInStation("hours equal", R"("operatingHours": {"from": "06:00", "to": "06:00"})",
                  "s.json:2: stations[0].operatingHours.to: expected another time of day than \"from\", found "
                  "\"06:00\"");
    moreInStation("outages no list", R"("outages": 3)", "s.json:2: stations[0].outages: expected a list, found 3");
    moreInStation("outage negative", R"("outages": [{"fromS": -1, "toS": 2}])",
                  "s.json:2: stations[0].outages[0].fromS: expected a number of seconds from 0 to 1e9, found -1");
    moreInStation("outage empty", R"("outages": [{"fromS": 2, "toS": 2}])",
                  "s.json:2: stations[0].outages[0].toS: expected a number of seconds above \"fromS\", found 2");

    const auto inDevice = [](const char* name, const QByteArray& from, const QByteArray& to, const char* error) {
        const QByteArray text = QByteArray(device).replace(from, to);
        QTest::newRow(name) << scenarioText(station, emitter, ",\n\"devices\": [" + text + "]")
                            << QString::fromUtf8(error);
    };
    inDevice("no device", device, "", "s.json:4: devices: expected a list that is not empty, found []");
    inDevice("device no object", device, "5", "s.json:4: devices[0]: expected an object, found 5");
    inDevice("device's name", R"("name": "D", )", "",
             "s.json:4: devices[0].name: expected a text that is not empty, found nothing");
    inDevice("no bandwidths", R"({"text": "b", "hz": 100})", "",
             "s.json:4: devices[0].bandwidths: expected a list that is not empty, found []");
    inDevice("bandwidth too small", R"("hz": 100)", R"("hz": 0)",
             "s.json:4: devices[0].bandwidths[0].hz: expected a bandwidth in Hz from 1 to 1e9, found 0");
    inDevice("bandwidth without text", R"("text": "b", )", "",
             "s.json:4: devices[0].bandwidths[0].text: expected a text that is not empty, found nothing");
    inDevice("bandwidth twice", R"({"text": "b", "hz": 100})", R"({"text": "b", "hz": 100}, {"text": "b", "hz": 200})",
             "s.json:4: devices[0].bandwidths[1].text: expected a text that is not in the list above, found \"b\"");
    inDevice("averaging too long", R"("ms": 5)", R"("ms": 3600001)",
             "s.json:4: devices[0].averagingTimes[0].ms: expected an averaging time in ms from 0 to 3.6e6, found "
             "3600001");
    inDevice("averaging unknown field", R"("ms": 5)", R"("ms": 5, "s": 1)",
             "s.json:4: devices[0].averagingTimes[0].s: no such field");
    inDevice("mode unknown", R"("norm")", R"("norm", "wobble")",
             "s.json:4: devices[0].modes[1]: expected a mode that begins with \"nor\", \"con\" or \"gat\" as no "
             "other mode of the device does, found \"wobble\"");
    inDevice("mode twice", R"("norm")", R"("norm", "NORMAL")",
             "s.json:4: devices[0].modes[1]: expected a mode that begins with \"nor\", \"con\" or \"gat\" as no "
             "other mode of the device does, found \"NORMAL\"");
    inDevice("mode no text", R"("norm")", R"("norm", 3)",
             "s.json:4: devices[0].modes[1]: expected a mode that begins with \"nor\", \"con\" or \"gat\" as no "
             "other mode of the device does, found 3");
    inDevice("no normal mode", R"("norm")", R"("gate")",
             "s.json:4: devices[0].modes: expected a mode that begins with \"nor\" among them, found [\"gate\"]");
    QTest::newRow("device twice") << scenarioText(station, emitter, ",\n\"devices\": [" + device + ",\n" + device + "]")
                                  << QStringLiteral("s.json:5: devices[1].name: expected a text that is not in the "
                                                    "list above, found \"D\"");

    QTest::newRow("id twice") << scenarioText(station + ",\n" + QByteArray(station).replace("\"A\"", "\"B\""), emitter)
                              << QStringLiteral("s.json:3: stations[1].id: expected an identifier that no station "
                                                "above has, found 1");
    QTest::newRow("name twice") << scenarioText(station + ",\n" + QByteArray(station).replace(": 1,", ": 2,"), emitter)
                                << QStringLiteral("s.json:3: stations[1].name: expected a name that no station above "
                                                  "has, found \"A\"");
    QTest::newRow("remote id twice")
        << scenarioText(station, emitter,
                        ",\n\"hriStations\": [" + station + ",\n" + QByteArray(station).replace("\"A\"", "\"B\"") + "]")
        << QStringLiteral("s.json:5: hriStations[1].id: expected an identifier that no station above has, found 1");

    const auto inEmitter = [](const char* name, const QByteArray& from, const QByteArray& to, const char* error) {
        QTest::newRow(name) << scenarioText(station, QByteArray(emitter).replace(from, to)) << QString::fromUtf8(error);
    };
    inEmitter("emitter's name", R"("name": "E")", R"("name": 5)",
              "s.json:3: emitters[0].name: expected a text that is not empty, found 5");
    inEmitter("emitter's frequency", "1e8", "1e13",
              "s.json:3: emitters[0].frequencyHz: expected a frequency in Hz from 1 to 1e12, found 10000000000000");
    inEmitter("no power", R"("eirpDbm": 10, )", "",
              "s.json:3: emitters[0].eirpDbm: expected either \"eirpDbm\" or \"eirpWatt\"");
    inEmitter("two powers", R"("eirpDbm": 10)", R"("eirpDbm": 10, "eirpWatt": 1)",
              "s.json:3: emitters[0].eirpDbm: expected either \"eirpDbm\" or \"eirpWatt\"");
    inEmitter("power in dBm", R"("eirpDbm": 10)", R"("eirpDbm": 201)",
              "s.json:3: emitters[0].eirpDbm: expected a power in dBm from -200 to 200, found 201");
    inEmitter("power in W", R"("eirpDbm": 10)", R"("eirpWatt": 0)",
              "s.json:3: emitters[0].eirpWatt: expected a power in W from 1e-23 to 1e17, found 0");
    inEmitter("position missing", R"(, "latitude": 50)", "",
              "s.json:3: emitters[0].latitude: expected a number from -90 to 90, found nothing");
    inEmitter("track and position", R"("longitude": 11)", R"("track": [{"timeS": 0, "latitude": 1, "longitude": 1}])",
              "s.json:3: emitters[0].latitude: expected either \"track\" or \"latitude\" and \"longitude\"");
    inEmitter("track empty", R"("latitude": 50, "longitude": 11)", R"("track": [])",
              "s.json:3: emitters[0].track: expected a list that is not empty, found []");
    inEmitter("track backwards", R"("latitude": 50, "longitude": 11)",
              "\"track\": [{\"timeS\": 5, \"latitude\": 1, \"longitude\": 1},\n"
              "{\"timeS\": 5, \"latitude\": 1, \"longitude\": 1}]",
              "s.json:4: emitters[0].track[1].timeS: expected a later time than that of the point before, found 5");
    inEmitter("track point", R"("latitude": 50, "longitude": 11)",
              R"("track": [{"timeS": 5, "latitude": 1, "longitude": 200}])",
              "s.json:3: emitters[0].track[0].longitude: expected a number from -180 to 180, found 200");
    inEmitter("on air", R"("name": "E")", R"("name": "E", "onAir": [{"fromS": 3, "toS": 1}])",
              "s.json:3: emitters[0].onAir[0].toS: expected a number of seconds above \"fromS\", found 1");
    inEmitter("on air no list", R"("name": "E")", R"("name": "E", "onAir": true)",
              "s.json:3: emitters[0].onAir: expected a list, found true");
}

void ScenarioTest::oneErrorIsToldWithFileLineAndField()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, error);
    QCOMPARE(errorsOf(text).join(QLatin1Char('\n')), error);
}

void ScenarioTest::allErrorsAreToldInTheOrderOfTheFile()
{
    const QString file = QStringLiteral(TEST_DATA_DIR "/manyerrors.json");
    const Loaded<Scenario> loaded = loadScenario(file);
    QVERIFY(!loaded);
    QVERIFY(!loaded.value);
    const QStringList expected{
        QStringLiteral(":3: start: expected a UTC time as \"yyyy-MM-ddThh:mm:ssZ\", found \"yesterday\""),
        QStringLiteral(":7: stations[0].name: expected a text that is not empty, found \"\""),
        QStringLiteral(":8: stations[0].latitude: expected a number from -90 to 90, found 950"),
        QStringLiteral(":10: stations[0].bearing: no such field"),
        QStringLiteral(":14: stations[1].id: expected an identifier that no station above has, found 1"),
        QStringLiteral(":21: emitters[0].longitude: expected a number from -180 to 180, found nothing"),
        QStringLiteral(":25: emitters[0].eirpDbm: expected a power in dBm from -200 to 200, found \"strong\""),
    };
    QStringList actual = loaded.errors;
    for (QString& error : actual)
        error.remove(0, file.size());
    QCOMPARE(actual.join(QLatin1Char('\n')), expected.join(QLatin1Char('\n')));
    QVERIFY(loaded.errors.at(0).startsWith(file));
}

void ScenarioTest::oneBadNumberIsToldOnce()
{
    const QByteArray bad = QByteArray(station).replace(": 1,", ": 0,");
    QCOMPARE(errorsOf(scenarioText(bad + ",\n" + QByteArray(station).replace("\"A\"", "\"B\""), emitter)).size(), 1);
    const QByteArray track = QByteArray(emitter).replace(R"("latitude": 50, "longitude": 11)",
                                                         R"("track": [{"timeS": -5, "latitude": 1, "longitude": 1},
                                                 {"timeS": 5, "latitude": 1, "longitude": 1}])");
    QCOMPARE(errorsOf(scenarioText(station, track)).size(), 1);
}

void ScenarioTest::aMissingFileIsToldWithItsReason()
{
    const QString file = m_files.path(QStringLiteral("none.json"));
    const Loaded<Scenario> loaded = loadScenario(file);
    QVERIFY(!loaded);
    QCOMPARE(loaded.errors, QStringList{file + QStringLiteral(": cannot be read: No such file or directory")});
}

void ScenarioTest::aFileThatIsTooLargeIsToldWithItsSizeAndTheLimit()
{
    const QString file = m_files.write(QStringLiteral("large.json"), scenarioText(station, emitter));
    QVERIFY(QFile::resize(file, 4194305));
    const Loaded<Scenario> loaded = loadScenario(file);
    QVERIFY(!loaded);
    QCOMPARE(loaded.errors,
             QStringList{file + QStringLiteral(": cannot be read: it is too large: 4194305 bytes, at most 4194304 "
                                               "are allowed")});
}

void ScenarioTest::aFileOfTheLargestSizeIsRead()
{
    const QByteArray text = scenarioText(station, emitter);
    const QString file = m_files.write(QStringLiteral("large.json"), text + QByteArray(4194304 - text.size(), ' '));
    const Loaded<Scenario> loaded = loadScenario(file);
    QVERIFY2(loaded, qPrintable(loaded.errors.join(QLatin1Char('\n'))));
}

void ScenarioTest::badJsonIsToldWithItsLine()
{
    const QStringList errors = errorsOf("{\n\"name\": \"S\",\n\"start\" \"x\"\n}");
    QCOMPARE(errors.size(), 1);
    QVERIFY2(errors.at(0).startsWith(QStringLiteral("s.json:3: JSON: ")), qPrintable(errors.at(0)));
    QCOMPARE(errorsOf("").size(), 1);
    QVERIFY(errorsOf("").at(0).startsWith(QStringLiteral("s.json:1: JSON: ")));
}

void ScenarioTest::fieldsGivenTwiceAreErrors()
{
    QByteArray text = scenarioText(station, emitter, ",\n\"name\": \"T\"");
    QCOMPARE(errorsOf(text), QStringList{QStringLiteral("s.json:4: name: given more than once")});
}

void ScenarioTest::longContentsAreShortenedInErrors()
{
    const QByteArray longText(500, 'x');
    const QStringList errors = errorsOf(scenarioText(QByteArray(station).replace("50", '"' + longText + '"'), emitter));
    QCOMPARE(errors.size(), 1);
    QVERIFY(errors.at(0).endsWith(QString::fromUtf8("xxx…")));
    QVERIFY(errors.at(0).size() < 200);
}

void ScenarioTest::linesOfAllMembersAndElementsAreFound()
{
    const QByteArray json = "\n{ \"a\" :\n [ 1, \"x,]\\\"{\",\n { \"b\\u0041\": { \"c\": null } } ],\n \"d\": true }";
    QVERIFY(!QJsonDocument::fromJson(json).isNull());
    const JsonLines lines(json);
    QCOMPARE(lines.lineOf(QString()), 2);
    QCOMPARE(lines.lineOf(QStringLiteral("a")), 2);
    QCOMPARE(lines.lineOf(QStringLiteral("a[0]")), 3);
    QCOMPARE(lines.lineOf(QStringLiteral("a[1]")), 3);
    QCOMPARE(lines.lineOf(QStringLiteral("a[2]")), 4);
    QCOMPARE(lines.lineOf(QStringLiteral("a[2].bA.c")), 4);
    QCOMPARE(lines.lineOf(QStringLiteral("d")), 5);
    QCOMPARE(lines.lineOf(QStringLiteral("a[2].unknown")), 4);
    QCOMPARE(lines.lineOf(QStringLiteral("unknown")), 2);
    QVERIFY(lines.duplicates().empty());
}

void ScenarioTest::lineBreaksInsideTextsCount()
{
    // Not JSON to the letter, but read all the same.
    const QByteArray json = "{\n\"a\": \"x\n\ny\",\n\"b\": 1}";
    QVERIFY(!QJsonDocument::fromJson(json).isNull());
    QCOMPARE(JsonLines(json).lineOf(QStringLiteral("b")), 5);
}

void ScenarioTest::emittersTransmitInTheirSpansOnly()
{
    ScenarioEmitter emitter;
    QVERIFY(emitter.transmitsAt(5.0));
    emitter.onAir = {{10.0, 20.0}, {30.0, 40.0}};
    QVERIFY(!emitter.transmitsAt(9.9));
    QVERIFY(emitter.transmitsAt(10.0));
    QVERIFY(!emitter.transmitsAt(20.0));
    QVERIFY(emitter.transmitsAt(35.0));
}

void ScenarioTest::operatingHoursMayPassMidnight()
{
    const OperatingHours day{QTime(6, 0), QTime(22, 0)};
    QVERIFY(day.contains(QTime(6, 0)));
    QVERIFY(!day.contains(QTime(22, 0)));
    QVERIFY(!day.contains(QTime(1, 0)));
    const OperatingHours night{QTime(22, 0), QTime(6, 0)};
    QVERIFY(night.contains(QTime(23, 0)));
    QVERIFY(night.contains(QTime(1, 0)));
    QVERIFY(!night.contains(QTime(6, 0)));
    QVERIFY(!night.contains(QTime(12, 0)));
}

DFL_TEST_MAIN_WITH(ScenarioTest, QCoreApplication)
#include "tst_scenario.moc"
