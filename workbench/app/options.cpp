#include "app/options.h"

#include "locate/positionfix.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench {

namespace {

QString tr(const char* text)
{
    return QCoreApplication::translate("workbench::Options", text);
}

const QString headlessName = QStringLiteral("headless");
const QString shotsName = QStringLiteral("shots");
const QString cyclicName = QStringLiteral("cyclic");
const QString scenarioName = QStringLiteral("scenario");
const QString recordingName = QStringLiteral("recording");
const QString componentName = QStringLiteral("component");
const QString allowUnsafeFolderName = QStringLiteral("allow-unsafe-folder");
const QString offlineName = QStringLiteral("offline");
const QString seedName = QStringLiteral("seed");
const QString traceName = QStringLiteral("trace");
const QString screenshotName = QStringLiteral("screenshot");
const QString jsonName = QStringLiteral("json");
const QString recordName = QStringLiteral("record");
const QString setName = QStringLiteral("set");
const QString backgroundName = QStringLiteral("background");
const QString parameterSetsName = QStringLiteral("parameter-sets");
const QString historyName = QStringLiteral("history");
const QString historyFromName = QStringLiteral("history-from");
const QString historyToName = QStringLiteral("history-to");
const QString historyFrequencyName = QStringLiteral("history-frequency");
const QString historyToleranceName = QStringLiteral("history-tolerance");
const QString frequencyName = QStringLiteral("frequency");
const QString levelName = QStringLiteral("level");
const QString qualityName = QStringLiteral("quality");
const QString sigmaName = QStringLiteral("sigma");
const QString timeName = QStringLiteral("time");
const QString helpName = QStringLiteral("help");
const QString versionName = QStringLiteral("version");

void addOptions(QCommandLineParser& parser)
{
    const auto add = [&parser](const QString& name, const char* description, const char* valueName = nullptr) {
        parser.addOption({name, tr(description), valueName ? QString::fromLatin1(valueName) : QString()});
    };
    add(headlessName, "Work without a window: press the component's start button and print what it shows.");
    add(shotsName, "Make N single measurements (default without a window: 1).", "N");
    add(cyclicName, "Measure cyclically for SECONDS.", "SECONDS");
    add(scenarioName,
        "Simulate the network and the emitters of FILE (default: the scenario that comes with the program).", "FILE");
    add(recordingName, "Play the bearings recorded in FILE.", "FILE");
    add(componentName, "Load the component library LIB (default: the one that comes with the program).", "LIB");
    add(allowUnsafeFolderName, "Load the component library even when it, its folder or a folder above is writable by "
                               "everybody, so that anybody could have put other code there.");
    add(offlineName, "Work without a driver; the component creates its settings itself.");
    add(seedName, "Seed of the simulation (default: 1). The same seed gives the same results.", "N");
    add(traceName, "Switch the components' traces on and print them to the standard error stream.");
    add(screenshotName,
        "Save a picture of the main window to FILE when it is set up and the measurements are made, then end.",
        "FILE.png");
    add(jsonName, "With --headless: print the results as one JSON document.");
    add(recordName, "Record the results in FILE.", "FILE");
    parser.addOption(
        {setName,
         tr("Make a setting before anything is measured, as an operator would; may be given several times. "
            "NAME is one of %1. VALUE is a number (Hz, ms, dBµV, percent) or the text of a choice.")
             .arg(settingNames().join(QStringLiteral(", "))),
         QStringLiteral("NAME=VALUE")});
    add(backgroundName, "Show the coasts, borders and places of FILE (GeoJSON) behind the map.", "FILE");
    add(parameterSetsName, "Keep parameter sets in the folder DIR (default: the folder for the program's data).",
        "DIR");
    add(historyName,
        "Store the results in FILE, and compute positions from it with locate type \"History\" (default with a window: "
        "a file in the folder for the program's data; without: none).",
        "FILE");
    add(historyFromName, "Compute positions from results stored for this UTC time or later.", "TIME");
    add(historyToName, "Compute positions from results stored for this UTC time or earlier.", "TIME");
    add(historyFrequencyName,
        "Compute positions from results stored for this frequency in Hz (default: that of the latest result).", "HZ");
    add(historyToleranceName, "How far in Hz stored results may be off the frequency (default: 1000).", "HZ");
    add(frequencyName, "Frequency in Hz to assume for a recording.", "HZ");
    add(levelName, "Level in dBµV to assume where the recording has none.", "DBUV");
    add(qualityName, "Quality in percent to assume where the recording has none.", "PERCENT");
    add(sigmaName, "Standard deviation in degrees to assume for the bearings of a recording (default: 3).", "DEGREES");
    add(timeName, "Time of day (UTC) to assume for a recording.", "HH:MM:SS");
    add(helpName, "Print this text.");
    add(versionName, "Print the version.");
}

/// Takes option values out of a parsed command line and collects what is wrong with them.
class Reader
{
public:
    explicit Reader(const QCommandLineParser& parser)
        : m_parser(parser)
    {
    }

    [[nodiscard]] bool isSet(const QString& name) const { return m_parser.isSet(name); }

    QString file(const QString& name) { return path(name, tr("the name of a file")); }
    QString folder(const QString& name) { return path(name, tr("the name of a folder")); }

    std::vector<SettingAssignment> settings(const QString& name)
    {
        std::vector<SettingAssignment> settings;
        const QStringList texts = m_parser.values(name);
        for (const QString& text : texts) {
            const int end = text.indexOf(QLatin1Char('='));
            if (end >= 0 && settingNames().contains(text.left(end)))
                settings.push_back({text.left(end), text.mid(end + 1)});
            else
                refuse(name, text,
                       tr("NAME=VALUE with one of the names %1").arg(settingNames().join(QStringLiteral(", "))));
        }
        return settings;
    }

    /// @p convert: text to std::optional of the wanted type, empty for a bad text.
    template <typename Convert>
    auto value(const QString& name, const QString& expected, Convert convert) -> decltype(convert(QString()))
    {
        if (!isSet(name))
            return {};
        auto result = convert(m_parser.value(name));
        if (!result)
            refuse(name, expected);
        return result;
    }

    QString pngFile(const QString& name)
    {
        QString value = file(name);
        if (!value.isEmpty() && !value.endsWith(QLatin1String(".png"), Qt::CaseInsensitive))
            refuse(name, tr("the name of a file that ends in .png"));
        return value;
    }

    void excludes(const QString& name, const QStringList& others)
    {
        for (const QString& other : others) {
            if (isSet(name) && isSet(other))
                errors += tr("The options --%1 and --%2 exclude each other.").arg(name, other);
        }
    }

    /// What one of them writes must not replace what the other does.
    void differ(const QString& name, const QString& other)
    {
        if (isSet(name) && isSet(other) && place(m_parser.value(name)) == place(m_parser.value(other)))
            errors += tr("The options --%1 and --%2 name the same file.").arg(name, other);
    }

    void needs(const QString& name, const QString& needed)
    {
        if (isSet(name) && !isSet(needed))
            errors += tr("The option --%1 needs the option --%2.").arg(name, needed);
    }

    QStringList errors;

private:
    static QString place(const QString& file)
    {
        const QFileInfo info(file);
        return info.exists() ? info.canonicalFilePath() : QDir::cleanPath(info.absoluteFilePath());
    }

    QString path(const QString& name, const QString& expected)
    {
        if (!isSet(name))
            return {};
        QString value = m_parser.value(name);
        if (value.isEmpty())
            refuse(name, expected);
        return value;
    }

    void refuse(const QString& name, const QString& expected) { refuse(name, m_parser.value(name), expected); }

    void refuse(const QString& name, const QString& given, const QString& expected)
    {
        errors += tr("Option --%1: \"%2\" was given, but %3 was expected.").arg(name, given, expected);
    }

    const QCommandLineParser& m_parser;
};

std::optional<double> toNumber(const QString& text)
{
    bool ok = false;
    const double number = text.toDouble(&ok);
    return ok && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<double> toNumberAbove0(const QString& text)
{
    const auto number = toNumber(text);
    return number && *number > 0.0 ? number : std::nullopt;
}

std::optional<double> toSecondsOfOneDay(const QString& text)
{
    constexpr double secondsPerDay = 86400.0;
    const auto seconds = toNumberAbove0(text);
    return seconds && *seconds <= secondsPerDay ? seconds : std::nullopt;
}

std::optional<double> toPercent(const QString& text)
{
    const auto number = toNumber(text);
    return number && *number >= 0.0 && *number <= 100.0 ? number : std::nullopt;
}

std::optional<double> toSigma(const QString& text)
{
    const auto number = toNumber(text);
    return number && *number >= leastSigma && *number <= greatestSigma ? number : std::nullopt;
}

std::optional<double> toNumberFrom0(const QString& text)
{
    const auto number = toNumber(text);
    return number && *number >= 0.0 ? number : std::nullopt;
}

std::optional<int> toCount(const QString& text)
{
    bool ok = false;
    const int count = text.toInt(&ok);
    return ok && count >= 1 ? std::optional(count) : std::nullopt;
}

std::optional<quint64> toSeed(const QString& text)
{
    bool ok = false;
    const quint64 seed = text.toULongLong(&ok);
    // The conversion takes "-1" for the largest number.
    return ok && !text.contains(QLatin1Char('-')) ? std::optional(seed) : std::nullopt;
}

std::optional<QTime> toTimeOfDay(const QString& text)
{
    const QTime time = QTime::fromString(text, QStringLiteral("HH:mm:ss"));
    return time.isValid() ? std::optional(time) : std::nullopt;
}

std::optional<QDateTime> toTime(const QString& text)
{
    // Apart: taken for a local time, one within an hour that the clocks skip would be moved.
    const QStringList parts = text.split(QLatin1Char('T'));
    const QDate date = QDate::fromString(parts.first(), QStringLiteral("yyyy-MM-dd"));
    const std::optional<QTime> time = toTimeOfDay(parts.last());
    if (parts.size() != 2 || !date.isValid() || !time)
        return std::nullopt;
    return QDateTime(date, *time, Qt::UTC);
}

HistoryChoice readHistoryChoice(Reader& reader)
{
    const QString expectedTime = tr("a UTC time as YYYY-MM-DDTHH:MM:SS");
    HistoryChoice choice;
    choice.from = reader.value(historyFromName, expectedTime, toTime).value_or(QDateTime());
    choice.to = reader.value(historyToName, expectedTime, toTime).value_or(QDateTime());
    if (choice.from.isValid() && choice.to.isValid() && choice.to < choice.from)
        reader.errors += tr("The time of --%1 is before that of --%2.").arg(historyToName, historyFromName);
    choice.frequency = reader.value(historyFrequencyName, tr("a frequency in Hz above 0"), toNumberAbove0);
    choice.tolerance = reader.value(historyToleranceName, tr("a number of Hz of at least 0"), toNumberFrom0)
                           .value_or(choice.tolerance);
    return choice;
}

Options readOptions(Reader& reader)
{
    Options options;
    options.headless = reader.isSet(headlessName);
    options.allowUnsafeFolder = reader.isSet(allowUnsafeFolderName);
    options.offline = reader.isSet(offlineName);
    options.trace = reader.isSet(traceName);
    options.json = reader.isSet(jsonName);
    options.shots = reader.value(shotsName, tr("a whole number of at least 1"), toCount);
    options.cyclicSeconds =
        reader.value(cyclicName, tr("a number of seconds above 0 and up to 86400"), toSecondsOfOneDay);
    options.seed =
        reader.value(seedName, tr("a whole number from 0 to 18446744073709551615"), toSeed).value_or(options.seed);
    options.scenarioFile = reader.file(scenarioName);
    options.recordingFile = reader.file(recordingName);
    options.componentFile = reader.file(componentName);
    options.screenshotFile = reader.pngFile(screenshotName);
    options.recordFile = reader.file(recordName);
    options.backgroundFile = reader.file(backgroundName);
    options.parameterSetFolder = reader.folder(parameterSetsName);
    options.historyFile = reader.file(historyName);
    options.historyChoice = readHistoryChoice(reader);
    options.settings = reader.settings(setName);
    options.recordedDefaults.frequency = reader.value(frequencyName, tr("a frequency in Hz above 0"), toNumberAbove0);
    options.recordedDefaults.level = reader.value(levelName, tr("a level in dBµV"), toNumber);
    options.recordedDefaults.quality = reader.value(qualityName, tr("a number of percent from 0 to 100"), toPercent);
    options.recordedDefaults.sigma = reader.value(sigmaName, tr("a number of degrees from 0.000001 to 180"), toSigma);
    options.recordedDefaults.time = reader.value(timeName, tr("a time of day as HH:MM:SS"), toTimeOfDay);
    return options;
}

void checkConflicts(Reader& reader)
{
    reader.excludes(scenarioName, {recordingName});
    reader.excludes(seedName, {recordingName});
    reader.excludes(shotsName, {cyclicName});
    reader.excludes(offlineName, {shotsName, cyclicName, scenarioName, recordingName, seedName, recordName, historyName,
                                  backgroundName});
    for (const QString& name : {frequencyName, levelName, qualityName, sigmaName, timeName})
        reader.needs(name, recordingName);
    for (const QString& name : {historyFromName, historyToName, historyFrequencyName, historyToleranceName})
        reader.needs(name, historyName);
    reader.needs(jsonName, headlessName);
    reader.differ(recordName, historyName);
    reader.differ(screenshotName, historyName);
    reader.differ(screenshotName, recordName);
}

QString helpText(const QCommandLineParser& parser)
{
    // The parser asks the application object for the program's name.
    int argumentCount = 1;
    char program[] = "dflocate-workbench";
    char* arguments[] = {program, nullptr};
    std::optional<QCoreApplication> application;
    if (QCoreApplication::instance() == nullptr)
        application.emplace(argumentCount, arguments);
    return parser.helpText();
}

} // namespace

CommandLine readCommandLine(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        tr("Loads a DF/Locate component, gives it a network of direction finders and shows what it does.\n"
           "Exit codes: 0 done, 1 the component could not be loaded or used, 2 bad options or files."));
    addOptions(parser);

    CommandLine commandLine;
    if (!parser.parse(arguments)) {
        commandLine.errors += parser.errorText();
        return commandLine;
    }
    if (parser.isSet(helpName)) {
        commandLine.informationText = helpText(parser);
        return commandLine;
    }
    if (parser.isSet(versionName)) {
        commandLine.informationText = QStringLiteral("dflocate-workbench " DFLOCATE_VERSION "\n");
        return commandLine;
    }

    Reader reader(parser);
    const QStringList others = parser.positionalArguments();
    for (const QString& other : others)
        reader.errors += tr("The argument \"%1\" belongs to no option.").arg(other);
    commandLine.options = readOptions(reader);
    checkConflicts(reader);
    commandLine.errors = reader.errors;
    return commandLine;
}

} // namespace workbench
