#include "app/options.h"

#include "support/testmain.h"

using workbench::CommandLine;
using workbench::HistoryChoice;
using workbench::Options;

namespace {

CommandLine read(const QStringList& arguments)
{
    return workbench::readCommandLine(QStringList(QStringLiteral("program")) + arguments);
}

} // namespace

class TestOptions : public QObject
{
    Q_OBJECT
private slots:
    void withoutArgumentsEverythingHasItsDefault();
    void everySwitchIsRead();
    void everyNumberIsRead();
    void everyFileIsRead();
    void settingsForARecordingAreRead();
    void theChoiceOfStoredResultsIsRead();
    void aTimeThatTheLocalClockSkipsIsAUtcTime();
    void aTimeSpanThatEndsBeforeItBeginsIsRefused();
    void settingsAreReadInTheirOrder();
    void badSettingsAreNamedEach();
    void limitsOfNumbersAreAccepted();
    void aBadValueIsNamedWithOptionTextAndExpectation_data();
    void aBadValueIsNamedWithOptionTextAndExpectation();
    void optionsThatExcludeEachOtherAreRefused_data();
    void optionsThatExcludeEachOtherAreRefused();
    void optionsThatWriteDifferentThingsNeedDifferentFiles();
    void anOptionWithoutTheOneItNeedsIsRefused_data();
    void anOptionWithoutTheOneItNeedsIsRefused();
    void everythingThatIsWrongIsReported();
    void unknownOptionsAndLooseArgumentsAreRefused();
    void anOptionWithoutItsValueIsRefused();
    void helpNamesEveryOption();
    void versionIsOneLine();
};

void TestOptions::withoutArgumentsEverythingHasItsDefault()
{
    const CommandLine line = read({});
    QCOMPARE(line.errors, QStringList());
    QCOMPARE(line.informationText, QString());
    const Options& options = line.options;
    QVERIFY(!options.headless && !options.offline && !options.trace && !options.json && !options.allowUnsafeFolder);
    QVERIFY(!options.shots && !options.cyclicSeconds);
    QVERIFY(options.settings.empty());
    QCOMPARE(options.seed, quint64(1));
    QCOMPARE(options.scenarioFile + options.recordingFile + options.componentFile + options.screenshotFile +
                 options.recordFile + options.parameterSetFolder + options.historyFile + options.backgroundFile,
             QString());
    QVERIFY(options.historyChoice == HistoryChoice());
    QVERIFY(!options.recordedDefaults.frequency && !options.recordedDefaults.level &&
            !options.recordedDefaults.quality && !options.recordedDefaults.sigma && !options.recordedDefaults.time);
}

void TestOptions::everySwitchIsRead()
{
    const CommandLine line = read({"--headless", "--offline", "--trace", "--json", "--allow-unsafe-folder"});
    QCOMPARE(line.errors, QStringList());
    QVERIFY(line.options.headless);
    QVERIFY(line.options.offline);
    QVERIFY(line.options.allowUnsafeFolder);
    QVERIFY(line.options.trace);
    QVERIFY(line.options.json);
}

void TestOptions::everyNumberIsRead()
{
    CommandLine line = read({"--shots", "12", "--seed", "99"});
    QCOMPARE(line.errors, QStringList());
    QCOMPARE(line.options.shots.value(), 12);
    QCOMPARE(line.options.seed, quint64(99));
    line = read({"--cyclic", "2.5"});
    QCOMPARE(line.errors, QStringList());
    QCOMPARE(line.options.cyclicSeconds.value(), 2.5);
}

void TestOptions::everyFileIsRead()
{
    CommandLine line =
        read({"--scenario", "a b.json", "--component", "lib.so", "--screenshot", "s.PNG", "--record", "r.csv",
              "--parameter-sets", "my sets", "--history", "h.sqlite", "--background", "b.geojson"});
    QCOMPARE(line.errors, QStringList());
    QCOMPARE(line.options.scenarioFile, QStringLiteral("a b.json"));
    QCOMPARE(line.options.componentFile, QStringLiteral("lib.so"));
    QCOMPARE(line.options.screenshotFile, QStringLiteral("s.PNG"));
    QCOMPARE(line.options.recordFile, QStringLiteral("r.csv"));
    QCOMPARE(line.options.parameterSetFolder, QStringLiteral("my sets"));
    QCOMPARE(line.options.historyFile, QStringLiteral("h.sqlite"));
    QCOMPARE(line.options.backgroundFile, QStringLiteral("b.geojson"));
    line = read({"--recording", "b.csv"});
    QCOMPARE(line.options.recordingFile, QStringLiteral("b.csv"));
}

void TestOptions::settingsForARecordingAreRead()
{
    const CommandLine line = read({"--recording", "b.csv", "--frequency", "1.5e8", "--level", "-3.5", "--quality", "80",
                                   "--sigma", "2.5", "--time", "07:08:09"});
    QCOMPARE(line.errors, QStringList());
    QCOMPARE(line.options.recordedDefaults.frequency.value(), 1.5e8);
    QCOMPARE(line.options.recordedDefaults.level.value(), -3.5);
    QCOMPARE(line.options.recordedDefaults.quality.value(), 80.0);
    QCOMPARE(line.options.recordedDefaults.sigma.value(), 2.5);
    QCOMPARE(line.options.recordedDefaults.time.value(), QTime(7, 8, 9));
}

void TestOptions::theChoiceOfStoredResultsIsRead()
{
    const CommandLine line =
        read({"--history", "h", "--history-from", "2026-05-14T08:00:00", "--history-to", "2026-05-14T08:00:00",
              "--history-frequency", "1.555e8", "--history-tolerance", "0"});
    QCOMPARE(line.errors, QStringList());
    const HistoryChoice& choice = line.options.historyChoice;
    QCOMPARE(choice.from, QDateTime(QDate(2026, 5, 14), QTime(8, 0), Qt::UTC));
    QCOMPARE(choice.to, choice.from);
    QCOMPARE(choice.from.timeSpec(), Qt::UTC);
    QCOMPARE(choice.frequency.value(), 155.5e6);
    QCOMPARE(choice.tolerance, 0.0);
    QCOMPARE(read({"--history", "h"}).options.historyChoice.tolerance, 1000.0);
}

void TestOptions::aTimeThatTheLocalClockSkipsIsAUtcTime()
{
    const CommandLine line = read({"--history", "h", "--history-from", "2026-03-29T02:30:00"});
    QCOMPARE(line.options.historyChoice.from, QDateTime(QDate(2026, 3, 29), QTime(2, 30), Qt::UTC));
}

void TestOptions::aTimeSpanThatEndsBeforeItBeginsIsRefused()
{
    const CommandLine line =
        read({"--history", "h", "--history-from", "2026-05-14T08:00:01", "--history-to", "2026-05-14T08:00:00"});
    QCOMPARE(line.errors, QStringList("The time of --history-to is before that of --history-from."));
}

void TestOptions::settingsAreReadInTheirOrder()
{
    const CommandLine line =
        read({"--set", "Mode=Gate", "--set", "Bandwidth=30.0 kHz", "--set=Mode=", "--set=Type=a=b"});
    QCOMPARE(line.errors, QStringList());
    QStringList settings;
    for (const workbench::SettingAssignment& setting : line.options.settings)
        settings += setting.name + " to " + setting.value;
    QCOMPARE(settings, QStringList({"Mode to Gate", "Bandwidth to 30.0 kHz", "Mode to ", "Type to a=b"}));
}

void TestOptions::badSettingsAreNamedEach()
{
    const QString expected = QStringLiteral("NAME=VALUE with one of the names Frequency, Bandwidth, Averaging, Mode, "
                                            "Quality, Threshold, FrequencyOffset, Span, Workflow, Type, Activity, "
                                            "Trigger");
    const auto error = [&expected](const char* text) {
        return QStringLiteral("Option --set: \"%1\" was given, but %2 was expected.")
            .arg(QLatin1String(text), expected);
    };
    QCOMPARE(read({"--set", "Colour=red", "--set", "Mode=Gate", "--set", "Bandwidth", "--set=", "--set", "mode=Gate"})
                 .errors,
             QStringList({error("Colour=red"), error("Bandwidth"), error(""), error("mode=Gate")}));
}

void TestOptions::limitsOfNumbersAreAccepted()
{
    QCOMPARE(read({"--shots", "1"}).options.shots.value(), 1);
    QCOMPARE(read({"--cyclic", "86400"}).options.cyclicSeconds.value(), 86400.0);
    QCOMPARE(read({"--seed", "0"}).options.seed, quint64(0));
    QCOMPARE(read({"--seed", "18446744073709551615"}).options.seed, std::numeric_limits<quint64>::max());
    QCOMPARE(read({"--recording", "b", "--quality", "0"}).options.recordedDefaults.quality.value(), 0.0);
    QCOMPARE(read({"--recording", "b", "--quality", "100"}).options.recordedDefaults.quality.value(), 100.0);
    QCOMPARE(read({"--recording", "b", "--sigma", "0.000001"}).options.recordedDefaults.sigma.value(), 0.000001);
    QCOMPARE(read({"--recording", "b", "--sigma", "180"}).options.recordedDefaults.sigma.value(), 180.0);
    QCOMPARE(read({"--recording", "b", "--time", "23:59:59"}).options.recordedDefaults.time.value(), QTime(23, 59, 59));
}

void TestOptions::aBadValueIsNamedWithOptionTextAndExpectation_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto rows = [](const char* option, const QStringList& texts, const char* expected) {
        for (const QString& text : texts) {
            QTest::newRow(qPrintable(QStringLiteral("--%1 '%2'").arg(option, text)))
                << QString(option) << text << QString::fromUtf8(expected);
        }
    };
    rows("shots", {"0", "-1", "1.5", "many", "", "2147483648"}, "a whole number of at least 1");
    rows("cyclic", {"0", "-2", "inf", "nan", "soon", "", "1,5", "86400.5"},
         "a number of seconds above 0 and up to 86400");
    rows("seed", {"-1", "1.5", "x", "", "18446744073709551616"}, "a whole number from 0 to 18446744073709551615");
    rows("frequency", {"0", "-1", "inf", "high", "", "100 MHz"}, "a frequency in Hz above 0");
    rows("level", {"nan", "loud", "", "-inf"}, "a level in dBµV");
    rows("quality", {"-0.1", "100.1", "good", "", "80%"}, "a number of percent from 0 to 100");
    rows("sigma", {"0", "0.0000009", "180.1", "-3", "nan", "", "3°"}, "a number of degrees from 0.000001 to 180");
    rows("time", {"24:00:00", "7:08:09", "07:08", "noon", "", "07:08:09Z"}, "a time of day as HH:MM:SS");
    for (const char* const option : {"history-from", "history-to"}) {
        rows(option,
             {"", "noon", "2026-05-14", "08:00:00", "2026-05-14 08:00:00", "2026-05-14T08:00", "2026-02-30T08:00:00",
              "2026-05-14T24:00:00", "2026-05-14T08:00:00Z", "2026-05-14T08:00:00T08:00:00"},
             "a UTC time as YYYY-MM-DDTHH:MM:SS");
    }
    rows("history-frequency", {"0", "-1", "inf", "high", ""}, "a frequency in Hz above 0");
    rows("history-tolerance", {"-0.1", "inf", "nan", "wide", ""}, "a number of Hz of at least 0");
    rows("history", {""}, "the name of a file");
    rows("scenario", {""}, "the name of a file");
    rows("recording", {""}, "the name of a file");
    rows("component", {""}, "the name of a file");
    rows("record", {""}, "the name of a file");
    rows("parameter-sets", {""}, "the name of a folder");
    rows("screenshot", {""}, "the name of a file");
    rows("screenshot", {"picture.jpg", "png"}, "the name of a file that ends in .png");
}

void TestOptions::aBadValueIsNamedWithOptionTextAndExpectation()
{
    QFETCH(QString, option);
    QFETCH(QString, text);
    QFETCH(QString, expected);
    QStringList arguments{QStringLiteral("--%1=%2").arg(option, text)};
    if (QStringList{"frequency", "level", "quality", "sigma", "time"}.contains(option))
        arguments << "--recording"
                  << "b.csv";
    if (option.startsWith(QLatin1String("history-")))
        arguments << "--history=h";
    QCOMPARE(
        read(arguments).errors,
        QStringList(QStringLiteral("Option --%1: \"%2\" was given, but %3 was expected.").arg(option, text, expected)));
}

void TestOptions::optionsThatExcludeEachOtherAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    const auto row = [](const char* name, const QStringList& arguments, const char* first, const char* second) {
        QTest::newRow(name) << arguments << QString(first) << QString(second);
    };
    row("scenario and recording", {"--scenario=a", "--recording=b"}, "scenario", "recording");
    row("seed and recording", {"--seed=3", "--recording=b"}, "seed", "recording");
    row("shots and cyclic", {"--shots=3", "--cyclic=2"}, "shots", "cyclic");
    row("offline and shots", {"--offline", "--shots=3"}, "offline", "shots");
    row("offline and cyclic", {"--offline", "--cyclic=3"}, "offline", "cyclic");
    row("offline and scenario", {"--offline", "--scenario=a"}, "offline", "scenario");
    row("offline and recording", {"--offline", "--recording=b"}, "offline", "recording");
    row("offline and seed", {"--offline", "--seed=1"}, "offline", "seed");
    row("offline and record", {"--offline", "--record=a"}, "offline", "record");
    row("offline and history", {"--offline", "--history=a"}, "offline", "history");
    row("offline and background", {"--offline", "--background=a"}, "offline", "background");
}

void TestOptions::optionsThatExcludeEachOtherAreRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, first);
    QFETCH(QString, second);
    QCOMPARE(read(arguments).errors,
             QStringList(QStringLiteral("The options --%1 and --%2 exclude each other.").arg(first, second)));
}

void TestOptions::optionsThatWriteDifferentThingsNeedDifferentFiles()
{
    QCOMPARE(read({"--record", "kept.sqlite", "--history", QDir::currentPath() + "/kept.sqlite"}).errors,
             QStringList("The options --record and --history name the same file."));
    QCOMPARE(read({"--screenshot", "a.png", "--history", "./a.png"}).errors,
             QStringList("The options --screenshot and --history name the same file."));
    QCOMPARE(read({"--screenshot", "a.png", "--record", "a.png"}).errors,
             QStringList("The options --screenshot and --record name the same file."));
    QCOMPARE(read({"--screenshot", "a.png", "--record", "a.csv", "--history", "a.sqlite"}).errors, QStringList());
}

void TestOptions::anOptionWithoutTheOneItNeedsIsRefused_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("needed");
    QTest::newRow("frequency") << "--frequency=1"
                               << "frequency"
                               << "recording";
    QTest::newRow("level") << "--level=1"
                           << "level"
                           << "recording";
    QTest::newRow("quality") << "--quality=1"
                             << "quality"
                             << "recording";
    QTest::newRow("sigma") << "--sigma=1"
                           << "sigma"
                           << "recording";
    QTest::newRow("time") << "--time=01:01:01"
                          << "time"
                          << "recording";
    for (const char* const argument : {"--history-from=2026-05-14T08:00:00", "--history-to=2026-05-14T08:00:00",
                                       "--history-frequency=1", "--history-tolerance=1"}) {
        const QString option = QString(argument).section('=', 0, 0).mid(2);
        QTest::newRow(qPrintable(option)) << argument << option << "history";
    }
    QTest::newRow("json") << "--json"
                          << "json"
                          << "headless";
}

void TestOptions::anOptionWithoutTheOneItNeedsIsRefused()
{
    QFETCH(QString, argument);
    QFETCH(QString, option);
    QFETCH(QString, needed);
    QCOMPARE(read({argument}).errors,
             QStringList(QStringLiteral("The option --%1 needs the option --%2.").arg(option, needed)));
}

void TestOptions::everythingThatIsWrongIsReported()
{
    QCOMPARE(read({"--shots=0", "--cyclic=0", "--json"}).errors.size(), 4);
}

void TestOptions::unknownOptionsAndLooseArgumentsAreRefused()
{
    QCOMPARE(read({"--colour"}).errors, QStringList("Unknown option 'colour'."));
    QCOMPARE(read({"survey.csv"}).errors, QStringList("The argument \"survey.csv\" belongs to no option."));
}

void TestOptions::anOptionWithoutItsValueIsRefused()
{
    QCOMPARE(read({"--shots"}).errors, QStringList("Missing value after '--shots'."));
}

void TestOptions::helpNamesEveryOption()
{
    const CommandLine line = read({"--help"});
    QCOMPARE(line.errors, QStringList());
    QVERIFY(line.informationText.startsWith("Usage: "));
    for (const char* const option : {"--headless",
                                     "--shots <N>",
                                     "--cyclic <SECONDS>",
                                     "--scenario <FILE>",
                                     "--recording <FILE>",
                                     "--component <LIB>",
                                     "--offline",
                                     "--seed <N>",
                                     "--trace",
                                     "--screenshot <FILE.png>",
                                     "--json",
                                     "--record <FILE>",
                                     "--background <FILE>",
                                     "--frequency <HZ>",
                                     "--level <DBUV>",
                                     "--quality <PERCENT>",
                                     "--sigma <DEGREES>",
                                     "--time <HH:MM:SS>",
                                     "--help",
                                     "--version"})
        QVERIFY2(line.informationText.contains(QLatin1String(option)), option);
}

void TestOptions::versionIsOneLine()
{
    const QString text = read({"--version"}).informationText;
    QVERIFY2(QRegularExpression("^dflocate-workbench \\d+\\.\\d+\\.\\d+\n$").match(text).hasMatch(), qPrintable(text));
}

DFL_TEST_MAIN_WITH(TestOptions, QCoreApplication)
#include "tst_options.moc"
