#include "support/testmain.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <cmath>

namespace {

struct Outcome
{
    int exitCode = -1;
    QString output;
    QString errors;

    [[nodiscard]] QJsonArray json() const { return QJsonDocument::fromJson(output.toUtf8()).array(); }
};

QProcessEnvironment environment()
{
    QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
    result.insert("QT_QPA_PLATFORM", "offscreen");
    result.insert("TZ", "UTC");
    // Without such a folder the platform adds a line of its own to the error stream.
    static const QTemporaryDir runtimeFolder;
    result.insert("XDG_RUNTIME_DIR", runtimeFolder.path());
    // Nothing of the user's own data is read or changed.
    static const QTemporaryDir dataFolder;
    result.insert("XDG_DATA_HOME", dataFolder.path());
    return result;
}

Outcome run(const QStringList& arguments, const QProcessEnvironment& processEnvironment = environment())
{
    QProcess process;
    process.setProcessEnvironment(processEnvironment);
    process.start(QStringLiteral(PROGRAM), arguments);
    constexpr int limit = 60'000; // ms, until a program counts as hanging
    if (!process.waitForFinished(limit) || process.exitStatus() != QProcess::NormalExit)
        return {-1, {}, QStringLiteral("The program did not end by itself: ") + process.readAllStandardError()};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QStringList fixture(const char* name)
{
    return {"--component", QStringLiteral(FIXTURE_FOLDER "/%1.so").arg(QLatin1String(name))};
}

/// Two shots of two stations; the second station misses the second shot.
QByteArray recordingText()
{
    return "shot,date,transmitter,station,latitude_deg,longitude_deg,azimuth_deg,true_latitude_deg,true_longitude_deg\n"
           "1,2012-06-18,Arthur,Bridge,36.8103140,-121.7849880,78.5866,36.8120350,-121.7714390\n"
           "1,2012-06-18,Arthur,Point,36.8043100,-121.7375180,285.0518,36.8120350,-121.7714390\n"
           "2,2012-06-18,Arthur,Bridge,36.8103140,-121.7849880,80.2500,36.8120350,-121.7714390\n";
}

} // namespace

class TestProgram : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();

    void helpAndVersionGoToTheStandardOutput();
    void badOptionsEndWithTwoBeforeAnythingRuns();

    void oneShotIsTheDefault();
    void shotsAreCountedInTheTable();
    void jsonIsOneDocumentAndNothingElse();
    void theSameSeedGivesTheSameOutput();
    void anotherSeedGivesAnotherOutput();
    void cyclicMeasuringLastsAsLongAsWanted();
    void cyclicMeasuringIsDeterministic();
    void offlineLoadsTheComponentAndEnds();
    void withoutADisplayTheSameJobIsDoneHeadless();
    void withoutADisplayOfflineMakesNoShot();

    void aSettingArrivesInAllPlaces();
    void everyResultIsMeasuredWithTheSettings();
    void aFrequencyIsTuned();
    void aRefusedSettingEndsWithTwoBeforeAnythingIsMeasured();
    void settingsAreMadeOfflineToo();
    void singleShotsInTheContinuousWorkflowAreRefused();
    void aRefusedSettingIsSaidInAWindowToo();

    void aRecordingIsPlayed();
    void whatARecordingDoesNotHoldIsTakenFromTheOptions();
    void moreShotsThanRecordedAreRefusedAtOnce();
    void aCyclicRecordingEndsWithItsLastShot();
    void everyShotHasItsFixOrTheReason();
    void theAccuracyOfRecordedBearingsIsTakenFromTheOptions();
    void anOperatorCanDoWithoutAFix();
    void theSurveyIsShownBearingByBearing();
    void resultsAreRecorded();
    void aRecordFileThatCannotBeWrittenIsRefusedAtOnce();
    void aRecordingIsNotRecordedOver();
    void withoutAResultTheEarlierRecordingStays();
    void badScenariosAndRecordingsEndWithTwo();

    void storedResultsOfOneRunMakeThePositionOfTheNext();
    void onlyStoredResultsOfTheChosenSpanMakeAPosition();
    void theTableTellsOfStoredResults();
    void withoutAHistoryThereIsNoPositionFromOne();
    void aRecordingIsLocatedFromItsStoredBearings();
    void resultsThatCannotBeStoredAreToldOnceAndEndWithTwo();
    void aHistoryThatCannotBeOpenedIsToldAndTheWorkIsDone();
    void theHistoryIsRecordedOnlyWhereItIsAskedForWithoutAWindow();
    void aWindowStoresWithoutBeingAsked();

    void aWrongComponentEndsWithOneAndTheReason_data();
    void aWrongComponentEndsWithOneAndTheReason();
    void aWrongComponentEndsWithOneInAWindowToo();
    void aComponentThatEverybodyCanExchangeEndsWithOneUnlessItIsWanted();
    void aMissingStartButtonIsAReason();
    void aDisabledStartButtonIsAReason();
    void aBoxThatWaitsIsReportedAndClosed();
    void anExceptionInAnEventHandlerEndsTheWorkWithItsReason_data();
    void anExceptionInAnEventHandlerEndsTheWorkWithItsReason();
    void tracesGoToTheStandardErrorStream();

    void aScreenshotIsSavedHeadlessAndInAWindow();
    void aScreenshotIsTakenAfterTheShots();
    void aScreenshotShowsTheBackgroundOfTheMap();
    void aBadBackgroundIsToldAndEndsWithTwo();
    void aScreenshotThatCannotBeWrittenEndsWithTwo();

private:
    QTemporaryDir m_folder;
    QString m_recording;
};

void TestProgram::initTestCase()
{
    m_recording = m_folder.filePath("bearings.csv");
    QFile file(m_recording);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(recordingText());
}

void TestProgram::helpAndVersionGoToTheStandardOutput()
{
    Outcome outcome = run({"--help"});
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY(outcome.output.startsWith("Usage: dflocate-workbench [options]"));
    QCOMPARE(outcome.errors, QString());
    outcome = run({"--version"});
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY(outcome.output.startsWith("dflocate-workbench "));
}

void TestProgram::badOptionsEndWithTwoBeforeAnythingRuns()
{
    const Outcome outcome = run({"--headless", "--shots", "none"});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors, QStringLiteral("Option --shots: \"none\" was given, but a whole number of at least 1 was "
                                            "expected.\nThe option --help lists all options.\n"));
}

void TestProgram::oneShotIsTheDefault()
{
    const Outcome outcome = run({"--headless"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.output.count("Result "), 2); // its heading and its time
    QVERIFY(outcome.output.startsWith("Result 1\n"));
}

void TestProgram::shotsAreCountedInTheTable()
{
    const Outcome outcome = run({"--headless", "--shots", "3"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    for (const char* const heading : {"Result 1\n", "Result 2\n", "Result 3\n"})
        QVERIFY2(outcome.output.contains(QLatin1String(heading)), heading);
    QVERIFY(!outcome.output.contains("Result 4\n"));
}

void TestProgram::jsonIsOneDocumentAndNothingElse()
{
    const Outcome outcome = run({"--headless", "--json", "--shots", "2"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonArray shots = outcome.json();
    QCOMPARE(shots.size(), 2);
    QCOMPARE(shots[1].toObject()["shot"].toInt(), 2);
    const QJsonArray stations = shots[0].toObject()["stations"].toArray();
    QCOMPARE(stations.size(), 5);
    int bearings = 0;
    for (const QJsonValue& station : stations)
        bearings += station.toObject()["azimuth"].isDouble() ? 1 : 0;
    QVERIFY2(bearings >= 3, qPrintable(outcome.output));
    const QJsonObject widgets = shots[0].toObject()["widgets"].toObject();
    QCOMPARE(widgets["directionFinder"].toString(), stations[0].toObject()["name"].toString());
    QCOMPARE(widgets["averageBearing"].toString(),
             QString::number(stations[0].toObject()["azimuth"].toDouble(), 'f', 1) + QChar(0xb0));
    QCOMPARE(widgets["locationFindingTime"].toString(), shots[0].toObject()["resultTime"].toString().right(8));
}

void TestProgram::theSameSeedGivesTheSameOutput()
{
    const QStringList arguments{"--headless", "--json", "--shots", "3", "--seed", "7"};
    const Outcome first = run(arguments);
    QCOMPARE(first.exitCode, 0);
    QCOMPARE(run(arguments).output, first.output);
}

void TestProgram::anotherSeedGivesAnotherOutput()
{
    QVERIFY(run({"--headless", "--seed", "7"}).output != run({"--headless", "--seed", "8"}).output);
}

void TestProgram::cyclicMeasuringLastsAsLongAsWanted()
{
    const Outcome outcome = run({"--headless", "--json", "--cyclic", "5"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonArray shots = outcome.json();
    QVERIFY(shots.size() >= 2);
    const auto time = [&shots](int index) {
        return QDateTime::fromString(shots[index].toObject()["resultTime"].toString(), "yyyy-MM-dd HH:mm:ss");
    };
    QVERIFY(time(0).isValid());
    const qint64 seconds = time(0).secsTo(time(shots.size() - 1));
    QVERIFY2(seconds >= 4 && seconds <= 6, qPrintable(QString::number(seconds)));
}

void TestProgram::cyclicMeasuringIsDeterministic()
{
    const QStringList arguments{"--headless", "--json", "--cyclic", "3"};
    QCOMPARE(run(arguments).output, run(arguments).output);
}

void TestProgram::offlineLoadsTheComponentAndEnds()
{
    const Outcome outcome = run({"--headless", "--offline"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
    QCOMPARE(run({"--headless", "--offline", "--json"}).output, QStringLiteral("[\n]\n"));
}

void TestProgram::withoutADisplayTheSameJobIsDoneHeadless()
{
    QProcessEnvironment bare = environment();
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        bare.remove(QLatin1String(name));
    const Outcome outcome = run({}, bare);
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QVERIFY(outcome.errors.startsWith(
        "There is no display (neither DISPLAY nor WAYLAND_DISPLAY is set): working without a window.\n"));
    QCOMPARE(outcome.output, run({"--headless"}).output);
}

void TestProgram::withoutADisplayOfflineMakesNoShot()
{
    QProcessEnvironment bare = environment();
    for (const char* const name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        bare.remove(QLatin1String(name));
    const Outcome outcome = run({"--offline"}, bare);
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.output, QString());
}

void TestProgram::aSettingArrivesInAllPlaces()
{
    const Outcome outcome = run({"--headless", "--set", "Bandwidth=30000", "--shots", "1", "--json"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonObject settings = outcome.json().at(0).toObject()["settings"].toObject();
    QCOMPARE(settings["toolBar"].toObject()["bandwidth"].toString(), QStringLiteral("30.0 kHz"));
    QCOMPARE(settings["device"].toObject()["bandwidth"].toDouble(), 30000.0);
    QVERIFY(settings["toDriver"].toString().contains("<Bandwidth>30000</Bandwidth>"));
    QCOMPARE(settings["inDriver"].toString(), settings["toDriver"].toString());
    QCOMPARE(settings["measured"].toObject()["bandwidth"].toDouble(), 30000.0);
}

void TestProgram::everyResultIsMeasuredWithTheSettings()
{
    const Outcome outcome = run({"--headless", "--set", "Averaging=1s", "--set", "Mode=Cont", "--set", "Quality=30",
                                 "--set", "Threshold=-5", "--set", "FrequencyOffset=100", "--cyclic", "3", "--json"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonArray shots = outcome.json();
    QVERIFY(shots.size() >= 2);
    for (const QJsonValue& shot : shots) {
        const QJsonObject measured = shot.toObject()["settings"].toObject()["measured"].toObject();
        QCOMPARE(measured, QJsonObject({{"frequency", 155500100.0},
                                        {"frequencyOffset", 100.0},
                                        {"bandwidth", 12000.0},
                                        {"averaging", 1000.0},
                                        {"mode", "continuous"},
                                        {"qualityThreshold", 30},
                                        {"levelThreshold", -5}}));
        QCOMPARE(shot.toObject()["qualityThreshold"].toInt(), 30);
    }
}

void TestProgram::aFrequencyIsTuned()
{
    const Outcome outcome = run({"--headless", "--set", "Frequency=462550000", "--json"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.json().at(0).toObject()["frequency"].toDouble(), 462550000.0);
}

void TestProgram::aRefusedSettingEndsWithTwoBeforeAnythingIsMeasured()
{
    const Outcome outcome =
        run({"--headless", "--set", "Mode=Loud", "--set", "Bandwidth=300", "--set", "Quality=0", "--json"});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.output, QStringLiteral("[\n]\n"));
    QCOMPARE(outcome.errors,
             QStringLiteral("Option --set Mode: \"Loud\" was given, but one of \"Normal\", \"Cont\", "
                            "\"Gate\" was expected.\n"
                            "Option --set Quality: \"0\" was given, but a whole number from 1 to 100 was "
                            "expected.\n"));
}

void TestProgram::settingsAreMadeOfflineToo()
{
    QCOMPARE(run({"--headless", "--offline", "--set", "Bandwidth=300"}).exitCode, 0);
    const Outcome outcome = run({"--headless", "--offline", "--set", "Frequency=1e8"});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.errors, QStringLiteral("Option --set Frequency: there is no such setting here.\n"));
}

void TestProgram::singleShotsInTheContinuousWorkflowAreRefused()
{
    const Outcome outcome = run({"--headless", "--set", "Workflow=Continuous", "--shots", "2"});
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors, QStringLiteral("In the workflow \"Continuous\" no single measurements can be made.\n"));
    QCOMPARE(run({"--headless", "--set", "Workflow=Continuous", "--cyclic", "1"}).exitCode, 0);
}

void TestProgram::aRefusedSettingIsSaidInAWindowToo()
{
    const QString picture = m_folder.filePath("refused.png");
    const Outcome outcome = run({"--set", "Mode=Loud", "--shots", "1", "--screenshot", picture});
    QCOMPARE(outcome.exitCode, 2);
    QVERIFY2(outcome.errors.contains("Option --set Mode: "), qPrintable(outcome.errors));
    QVERIFY(QFile::exists(picture));
}

void TestProgram::aRecordingIsPlayed()
{
    const Outcome outcome = run({"--headless", "--json", "--recording", m_recording, "--shots", "2"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonArray shots = outcome.json();
    const QJsonArray first = shots[0].toObject()["stations"].toArray();
    QCOMPARE(first.size(), 2);
    QCOMPARE(first[0].toObject()["name"].toString(), QStringLiteral("Bridge"));
    QCOMPARE(first[0].toObject()["azimuth"].toDouble(), 78.5866);
    QCOMPARE(first[1].toObject()["azimuth"].toDouble(), 285.0518);
    QVERIFY(first[0].toObject()["quality"].isNull());
    QVERIFY(first[0].toObject()["level"].isNull());
    QVERIFY(shots[0].toObject()["frequency"].isNull());
    QVERIFY(shots[0].toObject()["resultTime"].isNull());
    const QJsonArray second = shots[1].toObject()["stations"].toArray();
    QCOMPARE(second[0].toObject()["azimuth"].toDouble(), 80.25);
}

void TestProgram::whatARecordingDoesNotHoldIsTakenFromTheOptions()
{
    const Outcome outcome = run({"--headless", "--json", "--recording", m_recording, "--frequency", "150000000",
                                 "--level", "20.5", "--quality", "80", "--time", "07:08:09"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonObject shot = outcome.json()[0].toObject();
    QCOMPARE(shot["frequency"].toDouble(), 150e6);
    QCOMPARE(shot["resultTime"].toString(), QStringLiteral("2012-06-18 07:08:09"));
    const QJsonObject station = shot["stations"].toArray()[0].toObject();
    QCOMPARE(station["level"].toDouble(), 20.5);
    QCOMPARE(station["quality"].toDouble(), 80.0);
    QCOMPARE(shot["widgets"].toObject()["averageQuality"].toString(), QStringLiteral("80%"));
}

void TestProgram::moreShotsThanRecordedAreRefusedAtOnce()
{
    const Outcome outcome = run({"--headless", "--recording", m_recording, "--shots", "3"});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors, m_recording + ": 3 shots are wanted (--shots), but the recording has 2.\n");
}

void TestProgram::aCyclicRecordingEndsWithItsLastShot()
{
    const Outcome outcome = run({"--headless", "--json", "--recording", m_recording, "--cyclic", "3600"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.json().size(), 2);
}

/// The recorded survey is no part of the repository: where there is none, the test says so.
void TestProgram::everyShotHasItsFixOrTheReason()
{
    const Outcome outcome = run({"--headless", "--json", "--recording", m_recording, "--shots", "2"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.errors, QString()); // no warning that there is no locating
    const QJsonObject first = outcome.json()[0].toObject();
    const QJsonObject fix = first["fix"].toObject();
    QVERIFY(std::abs(fix["latitude"].toDouble() - 36.812) < 0.003);
    QVERIFY(std::abs(fix["longitude"].toDouble() + 121.771) < 0.003);
    QVERIFY(fix["ellipse"].toObject()["semiMajor"].toDouble() > 100.0);
    QCOMPARE(fix["degreesOfFreedom"].toInt(-1), 0);
    QVERIFY(first["noFix"].isNull());
    const QJsonObject second = outcome.json()[1].toObject();
    QVERIFY(second["fix"].isNull());
    QCOMPARE(second["noFix"].toString(),
             QStringLiteral("No fix: it takes usable bearings from at least two different positions."));
}

void TestProgram::theAccuracyOfRecordedBearingsIsTakenFromTheOptions()
{
    const auto semiMajor = [this](const QStringList& options) {
        const Outcome outcome = run(QStringList{"--headless", "--json", "--recording", m_recording} + options);
        return outcome.json()[0].toObject()["fix"].toObject()["ellipse"].toObject()["semiMajor"].toDouble();
    };
    const double assumed = semiMajor({});
    QVERIFY(assumed > 0.0);
    QCOMPARE(semiMajor({"--sigma", "3"}), assumed);
    QCOMPARE(semiMajor({"--sigma", "1.5"}), assumed / 2.0);
}

void TestProgram::anOperatorCanDoWithoutAFix()
{
    const Outcome outcome =
        run({"--headless", "--json", "--recording", m_recording, "--set", "Type=No locate", "--shots", "1"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonObject shot = outcome.json()[0].toObject();
    QVERIFY(shot["fix"].isNull());
    QCOMPARE(shot["noFix"].toString(),
             QStringLiteral("No fix: the locate type is neither \"Online\" nor \"History\"."));
}

void TestProgram::theSurveyIsShownBearingByBearing()
{
    const QString folder = qEnvironmentVariable("DFLOCATE_SURVEY_DIR");
    if (folder.isEmpty()) {
        qInfo("DFLOCATE_SURVEY_DIR is not set: the 78 shots of the recorded survey are left out.");
        return;
    }
    QFile survey(folder + "/bearings-survey-2012.csv");
    QVERIFY2(survey.open(QIODevice::ReadOnly), qPrintable(survey.fileName() + ": " + survey.errorString()));
    QStringList recorded;
    survey.readLine();
    while (!survey.atEnd()) {
        const QStringList fields = QString::fromUtf8(survey.readLine()).split(',');
        recorded << fields.at(0) + ' ' + fields.at(3) + ' ' + fields.at(6);
    }
    QCOMPARE(recorded.size(), 312);

    const Outcome outcome = run({"--headless", "--json", "--recording", survey.fileName(), "--shots", "78"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QStringList shown;
    const QJsonArray shots = outcome.json();
    for (const QJsonValue& shot : shots) {
        const QJsonObject ellipse = shot.toObject()["fix"].toObject()["ellipse"].toObject();
        QVERIFY(ellipse["semiMinor"].toDouble() > 0.0);
        QVERIFY(ellipse["semiMajor"].toDouble() < 1000.0);
        const QJsonArray stations = shot.toObject()["stations"].toArray();
        for (const QJsonValue& station : stations) {
            shown << QString::number(shot.toObject()["shot"].toInt()) + ' ' + station.toObject()["name"].toString() +
                         ' ' + QString::number(station.toObject()["azimuth"].toDouble(), 'f', 4);
        }
    }
    QCOMPARE(shots.size(), 78);
    QCOMPARE(shown, recorded);
}

void TestProgram::resultsAreRecorded()
{
    const QString file = m_folder.filePath("new.csv");
    const Outcome recorded = run({"--headless", "--json", "--shots", "2", "--record", file});
    QVERIFY2(recorded.exitCode == 0, qPrintable(recorded.errors));
    const Outcome played = run({"--headless", "--json", "--recording", file, "--shots", "2"});
    QVERIFY2(played.exitCode == 0, qPrintable(played.errors));
    const auto azimuth = [](const Outcome& outcome) {
        const QJsonArray stations = outcome.json()[1].toObject()["stations"].toArray();
        return QString::number(stations[0].toObject()["azimuth"].toDouble(), 'f', 4); // as the file has it
    };
    QCOMPARE(azimuth(played), azimuth(recorded));
}

void TestProgram::aRecordFileThatCannotBeWrittenIsRefusedAtOnce()
{
    const QString file = m_folder.filePath("missing/new.csv");
    const Outcome outcome = run({"--headless", "--record", file});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.output, QString());
    QVERIFY2(outcome.errors.startsWith(file + ": the recording cannot be written: "), qPrintable(outcome.errors));
}

void TestProgram::aRecordingIsNotRecordedOver()
{
    const Outcome outcome = run({"--headless", "--recording", m_recording, "--record", m_recording});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.errors, m_recording + ": the recording that is played cannot be recorded over.\n");
}

void TestProgram::withoutAResultTheEarlierRecordingStays()
{
    const QString name = m_folder.filePath("earlier.csv");
    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write("earlier");
    file.close();
    QCOMPARE(run(QStringList{"--headless", "--record", name} + fixture("disabledbutton")).exitCode, 1);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("earlier"));
}

void TestProgram::badScenariosAndRecordingsEndWithTwo()
{
    const QString bad = m_folder.filePath("bad.txt");
    QFile file(bad);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{ nonsense\n");
    file.close();
    for (const char* const option : {"--scenario", "--recording"}) {
        for (const QString& name : {bad, m_folder.filePath("missing.txt")}) {
            const Outcome outcome = run({"--headless", QLatin1String(option), name});
            QCOMPARE(outcome.exitCode, 2);
            QCOMPARE(outcome.output, QString());
            QVERIFY2(outcome.errors.contains(name), qPrintable(outcome.errors));
        }
    }
}

/// Two runs of the same simulation measure the same: what the second finds stored it has stored again.
void TestProgram::storedResultsOfOneRunMakeThePositionOfTheNext()
{
    const QStringList stored{"--headless", "--json", "--history", m_folder.filePath("runs.sqlite")};
    const Outcome first = run(stored + QStringList{"--shots", "5"});
    QVERIFY2(first.exitCode == 0, qPrintable(first.errors));
    QCOMPARE(first.errors, QString());
    QVERIFY(first.json()[0].toObject()["history"].isNull());

    const Outcome second = run(stored + QStringList{"--shots", "2", "--set", "Type=History"});
    QVERIFY2(second.exitCode == 0, qPrintable(second.errors));
    QCOMPARE(second.errors, QString()); // the toolbar knows that the type can be served
    for (int i = 0; i < 2; ++i) {
        const QJsonObject shot = second.json()[i].toObject();
        const QJsonObject history = shot["history"].toObject();
        QCOMPARE(history["results"].toInt(), 6 + i);
        QVERIFY(history["bearings"].toInt() > 3 * (6 + i));
        QVERIFY(history["complete"].toBool());
        QVERIFY(shot["noFix"].isNull());
        const QJsonObject fix = shot["fix"].toObject();
        QCOMPARE(fix["degreesOfFreedom"].toInt(), history["bearings"].toInt() - 2);
        QVERIFY(std::abs(fix["latitude"].toDouble() - 50.09) < 0.02);
        QVERIFY(std::abs(fix["longitude"].toDouble() - 11.87) < 0.02);
    }
    // More bearings, a smaller ellipse.
    const auto semiMajor = [](const Outcome& outcome) {
        return outcome.json()[0].toObject()["fix"].toObject()["ellipse"].toObject()["semiMajor"].toDouble();
    };
    QVERIFY(semiMajor(second) < 0.7 * semiMajor(first));
}

void TestProgram::onlyStoredResultsOfTheChosenSpanMakeAPosition()
{
    // Four a second, the first a quarter of a second after half past nine.
    const QStringList stored{"--headless", "--json", "--history", m_folder.filePath("span.sqlite")};
    const Outcome first = run(stored + QStringList{"--shots", "30"});
    QVERIFY2(first.exitCode == 0, qPrintable(first.errors));
    const auto results = [&stored](const QStringList& choice) {
        // Of another frequency: what is measured now is none of the results that are located.
        const Outcome outcome =
            run(stored + QStringList{"--set", "Type=History", "--set", "Frequency=462550000"} + choice);
        return outcome.exitCode != 0 ? -1 : outcome.json()[0].toObject()["history"].toObject()["results"].toInt();
    };
    const QStringList from{"--history-from", "2026-05-14T09:30:05"};
    const QStringList to{"--history-to", "2026-05-14T09:30:06"};
    QCOMPARE(results(from + to + QStringList{"--history-frequency", "155500000"}), 5);
    QCOMPARE(results({"--history-frequency", "155501001"}), 0);
    QCOMPARE(results({"--history-frequency", "155501001", "--history-tolerance", "1001"}), 30);
}

void TestProgram::theTableTellsOfStoredResults()
{
    const Outcome outcome =
        run({"--headless", "--history", m_folder.filePath("table.sqlite"), "--shots", "2", "--set", "Type=History"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QVERIFY2(outcome.output.contains("  Stored results        1, usable bearings: "), qPrintable(outcome.output));
    QVERIFY2(outcome.output.contains("  Stored results        2, usable bearings: "), qPrintable(outcome.output));
}

void TestProgram::withoutAHistoryThereIsNoPositionFromOne()
{
    const Outcome outcome = run({"--headless", "--json", "--set", "Type=History"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QJsonObject shot = outcome.json()[0].toObject();
    QVERIFY(shot["fix"].isNull());
    QCOMPARE(shot["noFix"].toString(), QStringLiteral("No fix: there are no stored results."));
}

/// The second shot has one bearing only: with that of the first it makes a position.
void TestProgram::aRecordingIsLocatedFromItsStoredBearings()
{
    const Outcome outcome =
        run({"--headless", "--json", "--recording", m_recording, "--shots", "2", "--time", "10:11:12", "--frequency",
             "151e6", "--history", m_folder.filePath("played.sqlite"), "--set", "Type=History"});
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    QCOMPARE(outcome.errors, QString());
    const QJsonObject shot = outcome.json()[1].toObject();
    QCOMPARE(shot["history"].toObject()["bearings"].toInt(), 3);
    QVERIFY(std::abs(shot["fix"].toObject()["latitude"].toDouble() - 36.812) < 0.01);
}

void TestProgram::resultsThatCannotBeStoredAreToldOnceAndEndWithTwo()
{
    const QString file = m_folder.filePath("timeless.sqlite");
    const Outcome outcome =
        run({"--headless", "--json", "--recording", m_recording, "--shots", "2", "--history", file});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.json().size(), 2); // the work is done all the same
    QCOMPARE(outcome.errors, file + ": cannot be written: the result has no time of day\n");
}

void TestProgram::aHistoryThatCannotBeOpenedIsToldAndTheWorkIsDone()
{
    const QString file = m_folder.filePath("gone/history.sqlite");
    const Outcome outcome = run({"--headless", "--json", "--history", file, "--set", "Type=History", "--shots", "2"});
    QCOMPARE(outcome.exitCode, 2);
    const QString reason = file + ": cannot be opened: there is no folder " + m_folder.filePath("gone");
    QVERIFY2(outcome.errors.startsWith(reason), qPrintable(outcome.errors));
    QCOMPARE(outcome.json().size(), 2);
    QCOMPARE(outcome.json()[1].toObject()["noFix"].toString(), "No fix: " + reason);
    QVERIFY(!QFile::exists(m_folder.filePath("gone")));
}

void TestProgram::theHistoryIsRecordedOnlyWhereItIsAskedForWithoutAWindow()
{
    QProcessEnvironment own = environment();
    const QTemporaryDir dataFolder;
    own.insert("XDG_DATA_HOME", dataFolder.path());
    QCOMPARE(run({"--headless"}, own).exitCode, 0);
    QVERIFY(QDir(dataFolder.path()).isEmpty());
}

void TestProgram::aWindowStoresWithoutBeingAsked()
{
    QProcessEnvironment own = environment();
    const QTemporaryDir dataFolder;
    own.insert("XDG_DATA_HOME", dataFolder.path());
    const QStringList window{"--screenshot", m_folder.filePath("stored.png"), "--shots", "1"};
    const Outcome outcome = run(window, own);
    QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
    const QString file = dataFolder.filePath("dflocate-workbench/results.sqlite");
    QVERIFY(QFile::exists(file));

    const Outcome later = run({"--headless", "--json", "--history", file, "--set", "Type=History"}, own);
    QCOMPARE(later.json()[0].toObject()["history"].toObject()["results"].toInt(), 2);
}

void TestProgram::aWrongComponentEndsWithOneAndTheReason_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    QTest::newRow("missing") << "missing"
                             << "there is no such component library.";
    QTest::newRow("no exports") << "noexports"
                                << "the library is no component: it does not export ZTCreate.";
    QTest::newRow("no ZTDestroy") << "nodestroy"
                                  << "the library is no component: it does not export ZTDestroy.";
    QTest::newRow("null") << "createsnull"
                          << "the component could not be created: ZTCreate returned nothing.";
    QTest::newRow("throws") << "createthrows"
                            << "the component could not be created: ZTCreate let an exception (out of order) out.";
    QTest::newRow("throws int")
        << "createthrowsint"
        << "the component could not be created: ZTCreate let an exception of an unknown kind out.";
    QTest::newRow("wrong class") << "wrongclass"
                                 << "ZTCreate returned an object that is no GUI component.";
    QTest::newRow("widgets throw")
        << "widgetsthrow"
        << "the component could not set its widgets up: it let an exception (no paint left) out.";
    QTest::newRow("no toolbar") << "notoolbar"
                                << "the component has no toolbar.";
    QTest::newRow("services throw")
        << "servicesthrow"
        << "the component could not take the services over: it let an exception (no service) out.";
    QTest::newRow("announcement throws")
        << "announcementthrows"
        << "the component could not bind to the values: it let an exception of an unknown kind out.";
}

void TestProgram::aWrongComponentEndsWithOneAndTheReason()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    const QStringList component = fixture(qPrintable(name));
    const Outcome outcome = run(QStringList("--headless") + component);
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.errors, component[1] + ": " + reason + "\n");
}

void TestProgram::aWrongComponentEndsWithOneInAWindowToo()
{
    const QString picture = m_folder.filePath("failure.png");
    const Outcome outcome = run(QStringList{"--screenshot", picture} + fixture("noexports"));
    QCOMPARE(outcome.exitCode, 1);
    QVERIFY(!QImage(picture).isNull());
}

void TestProgram::aComponentThatEverybodyCanExchangeEndsWithOneUnlessItIsWanted()
{
    const QTemporaryDir folder;
    const QString component = folder.filePath("lib.so");
    QVERIFY(QFile::copy(QStringLiteral(COMPONENT), component));
    QFile::setPermissions(folder.path(), QFile::permissions(folder.path()) | QFile::WriteOther | QFile::ExeOther);
    const QStringList arguments{"--headless", "--component", component};
    const Outcome refused = run(arguments);
    QCOMPARE(refused.exitCode, 1);
    QCOMPARE(refused.errors,
             component + ": the component library is not loaded, because everybody can write to " + folder.path() +
                 " and could have put other code there (--allow-unsafe-folder loads it all the same).\n");
    QCOMPARE(refused.output, QString());
    const Outcome wanted = run(arguments + QStringList("--allow-unsafe-folder"));
    QCOMPARE(wanted.exitCode, 0);
    QCOMPARE(wanted.errors, QString());
}

void TestProgram::aMissingStartButtonIsAReason()
{
    const Outcome outcome = run(QStringList("--headless") + fixture("callrecorder"));
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.errors, QStringLiteral("The component's toolbar has no start button named DFStarter.\n"));
}

void TestProgram::aDisabledStartButtonIsAReason()
{
    const Outcome outcome = run(QStringList{"--headless", "--json"} + fixture("disabledbutton"));
    QCOMPARE(outcome.exitCode, 1);
    QCOMPARE(outcome.errors, QStringLiteral("The start button of the component is disabled.\n"));
    QCOMPARE(outcome.output, QStringLiteral("[\n]\n"));
}

void TestProgram::aBoxThatWaitsIsReportedAndClosed()
{
    const Outcome outcome = run(QStringList("--headless") + fixture("idlebutton"));
    QCOMPARE(outcome.exitCode, 1);
    const QStringList lines = outcome.errors.split('\n', Qt::SkipEmptyParts);
    QVERIFY2(lines.contains("Warning: There is nothing to start"), qPrintable(outcome.errors));
    QCOMPARE(
        lines.last(),
        QStringLiteral("The start button of the component was pressed, but the driver got no command to measure."));
}

void TestProgram::anExceptionInAnEventHandlerEndsTheWorkWithItsReason_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("exception");
    QTest::newRow("timer") << "timerthrows"
                           << "an exception (lost in a timer)";
    QTest::newRow("value") << "enabledthrows"
                           << "an exception of an unknown kind";
}

void TestProgram::anExceptionInAnEventHandlerEndsTheWorkWithItsReason()
{
    QFETCH(QString, name);
    QFETCH(QString, exception);
    const QString picture = m_folder.filePath("exception.png");
    for (const QStringList& mode : {QStringList("--headless"), QStringList{"--screenshot", picture}}) {
        const Outcome outcome = run(mode + fixture(qPrintable(name)));
        QCOMPARE(outcome.exitCode, 1);
        const QString reason = QStringLiteral("The component let %1 out of an event handler.").arg(exception);
        QVERIFY2(outcome.errors.split('\n').contains(reason), qPrintable(outcome.errors));
    }
    QVERIFY(!QImage(picture).isNull());
}

void TestProgram::tracesGoToTheStandardErrorStream()
{
    const QString trace =
        "userinterface/guicomponents/dflocatecomponent/dflocatetoolbar:142: Missing DF Value Enabled\n";
    QVERIFY(run({"--headless", "--offline", "--trace"}).errors.contains(trace));
    QVERIFY(!run({"--headless", "--offline"}).errors.contains("Missing DF Value"));
}

void TestProgram::aScreenshotIsSavedHeadlessAndInAWindow()
{
    const QString picture = m_folder.filePath("window.png");
    for (const QStringList& mode : {QStringList(), QStringList("--headless")}) {
        QFile::remove(picture);
        const Outcome outcome = run(mode + QStringList{"--screenshot", picture});
        QVERIFY2(outcome.exitCode == 0, qPrintable(outcome.errors));
        const QImage image(picture);
        QVERIFY(image.width() > 300 && image.height() > 200);
    }
}

void TestProgram::aScreenshotIsTakenAfterTheShots()
{
    const QString before = m_folder.filePath("before.png");
    const QString after = m_folder.filePath("after.png");
    QCOMPARE(run({"--screenshot", before}).exitCode, 0);
    QCOMPARE(run({"--screenshot", after, "--shots", "1"}).exitCode, 0);
    QVERIFY(!QImage(after).isNull());
    QVERIFY(QImage(before) != QImage(after));
}

void TestProgram::aScreenshotShowsTheBackgroundOfTheMap()
{
    const QString coast = m_folder.filePath("coast.geojson");
    QFile file(coast);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{\"type\": \"LineString\", \"coordinates\": [[-10, 40], [20, 60]]}");
    file.close();
    const QString without = m_folder.filePath("without.png");
    const QString with = m_folder.filePath("with.png");
    QCOMPARE(run({"--screenshot", without}).exitCode, 0);
    const Outcome outcome = run({"--screenshot", with, "--background", coast});
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY(!QImage(with).isNull());
    QVERIFY(QImage(with) != QImage(without));
}

void TestProgram::aBadBackgroundIsToldAndEndsWithTwo()
{
    const QString missing = m_folder.filePath("missing.geojson");
    const Outcome outcome = run({"--headless", "--background", missing});
    QCOMPARE(outcome.exitCode, 2);
    QCOMPARE(outcome.errors, missing + ": the background cannot be shown: No such file or directory.\n");
    QVERIFY(outcome.output.startsWith("Result 1\n")); // the work is done all the same
}

void TestProgram::aScreenshotThatCannotBeWrittenEndsWithTwo()
{
    const QString picture = m_folder.filePath("missing/window.png");
    const Outcome outcome = run({"--headless", "--screenshot", picture});
    QCOMPARE(outcome.exitCode, 2);
    QVERIFY2(outcome.errors.contains(picture + ": the picture cannot be written: "), qPrintable(outcome.errors));
}

DFL_TEST_MAIN_WITH(TestProgram, QGuiApplication)
#include "tst_program.moc"
