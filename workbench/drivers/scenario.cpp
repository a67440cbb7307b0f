#include "drivers/scenario.h"

#include "drivers/fileerrors.h"
#include "drivers/inputfile.h"
#include "drivers/jsonlines.h"
#include "drivers/propagation.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench {

bool ScenarioEmitter::transmitsAt(double seconds) const
{
    return onAir.empty() ||
           std::any_of(onAir.begin(), onAir.end(), [seconds](const TimeSpan& span) { return span.contains(seconds); });
}

namespace {

/// Numbers from low to high, both included, and how people call them.
struct Range
{
    double low;
    double high;
    const char* text;
};

constexpr double largestId = std::numeric_limits<int>::max();
constexpr Range latitudes{-90.0, 90.0, "a number from -90 to 90"};
constexpr Range longitudes{-180.0, 180.0, "a number from -180 to 180"};
constexpr Range frequencies{1.0, 1e12, "a frequency in Hz from 1 to 1e12"};
constexpr Range identifiers{1.0, largestId, "a whole number from 1 to 2147483647"};
constexpr Range accuracies{0.0, 90.0, "a number of degrees from 0 to 90"};
constexpr Range noiseFigures{0.0, 100.0, "a number of dB from 0 to 100"};
constexpr Range percentages{0.0, 100.0, "a percentage from 0 to 100"};
constexpr Range powersDbm{-200.0, 200.0, "a power in dBm from -200 to 200"};
constexpr Range powersWatt{1e-23, 1e17, "a power in W from 1e-23 to 1e17"};
constexpr Range bandwidths{1.0, 1e9, "a bandwidth in Hz from 1 to 1e9"};
constexpr Range averagingTimes{0.0, 3.6e6, "an averaging time in ms from 0 to 3.6e6"};
constexpr Range times{0.0, 1e9, "a number of seconds from 0 to 1e9"};

QString shown(const QJsonValue& value)
{
    if (value.isUndefined())
        return QStringLiteral("nothing");
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    const QString text = QString::fromUtf8(list.mid(1, list.size() - 2));
    constexpr int longest = 60;
    return text.size() <= longest ? text : text.left(longest) + QStringLiteral("…");
}

/// What all parts of one reading share.
struct Reading
{
    JsonLines lines;
    FileErrors errors;

    void unexpected(const QString& path, const QString& expected, const QJsonValue& found)
    {
        errors.addUnexpected(lines.lineOf(path), path.isEmpty() ? QStringLiteral("scenario") : path, expected,
                             shown(found));
    }
};

/// Reads the members of one object. Each error is reported to the Reading. A bad number reads as NaN, which fails no
/// comparison with others, so that one error is reported once.
class ObjectReader
{
public:
    ObjectReader(Reading& reading, const QJsonValue& value, QString path)
        : m_reading(reading)
        , m_path(std::move(path))
        , m_object(value.toObject())
        , m_isObject(value.isObject())
    {
        if (!m_isObject)
            m_reading.unexpected(m_path, QStringLiteral("an object"), value);
    }

    /// Members that nobody asked for are errors: a misspelt name would otherwise be a default in disguise.
    ~ObjectReader()
    {
        const QStringList names = m_object.keys();
        for (const QString& name : names) {
            if (!m_known.contains(name))
                report(name, QStringLiteral("no such field"));
        }
    }

    ObjectReader(const ObjectReader&) = delete;
    ObjectReader& operator=(const ObjectReader&) = delete;

    [[nodiscard]] Reading& reading() const { return m_reading; }
    [[nodiscard]] QString path(const char* name) const { return JsonLines::member(m_path, QLatin1String(name)); }
    [[nodiscard]] bool has(const char* name) const { return m_object.contains(QLatin1String(name)); }

    void unexpected(const char* name, const QString& expected)
    {
        // Of something that is no object only that is worth telling.
        if (m_isObject)
            m_reading.unexpected(path(name), expected, m_object.value(QLatin1String(name)));
    }

    void report(const QString& name, const QString& what)
    {
        if (!m_isObject)
            return;
        const QString field = JsonLines::member(m_path, name);
        m_reading.errors.add(m_reading.lines.lineOf(field), field, what);
    }

    double number(const char* name, const Range& range)
    {
        const QJsonValue value = take(name);
        const double number = value.toDouble(std::nan(""));
        if (number >= range.low && number <= range.high)
            return number;
        unexpected(name, QString::fromLatin1(range.text));
        return std::nan("");
    }

    double number(const char* name, const Range& range, double fallback)
    {
        return has(name) ? number(name, range) : fallback;
    }

    /// 0 for a bad one.
    int identifier(const char* name)
    {
        const double id = number(name, identifiers);
        if (std::isnan(id))
            return 0;
        if (id != std::floor(id))
            unexpected(name, QString::fromLatin1(identifiers.text));
        return static_cast<int>(id);
    }

    QString text(const char* name)
    {
        QString text = take(name).toString();
        if (text.trimmed().isEmpty())
            unexpected(name, QStringLiteral("a text that is not empty"));
        else if (!text.isValidUtf16())
            unexpected(name, QStringLiteral("a text of whole characters")); // no file could hold it
        return text;
    }

    bool truth(const char* name, bool fallback)
    {
        const QJsonValue value = take(name);
        if (!value.isUndefined() && !value.isBool())
            unexpected(name, QStringLiteral("true or false"));
        return value.toBool(fallback);
    }

    QTime timeOfDay(const char* name)
    {
        QTime time = QTime::fromString(take(name).toString(), QStringLiteral("hh:mm"));
        if (!time.isValid())
            unexpected(name, QStringLiteral("a time of day (UTC) as \"hh:mm\""));
        return time;
    }

    QDateTime instant(const char* name)
    {
        const QString text = take(name).toString();
        QDateTime time = QDateTime::fromString(text, Qt::ISODate);
        if (!time.isValid() || time.timeSpec() != Qt::UTC || time.toString(Qt::ISODate) != text)
            unexpected(name, QStringLiteral("a UTC time as \"yyyy-MM-ddThh:mm:ssZ\""));
        return time;
    }

    QJsonValue object(const char* name) { return take(name); }

    enum Presence
    {
        Optional,
        NotEmpty
    };
    /// Calls @p readElement(value, path) for every element of a list.
    template <typename Read>
    void list(const char* name, Presence presence, Read readElement)
    {
        const QJsonValue value = take(name);
        const QJsonArray elements = value.toArray();
        if (presence == NotEmpty ? elements.isEmpty() : !value.isUndefined() && !value.isArray())
            unexpected(name,
                       presence == NotEmpty ? QStringLiteral("a list that is not empty") : QStringLiteral("a list"));
        for (int i = 0; i < elements.size(); ++i)
            readElement(elements.at(i), JsonLines::element(path(name), i));
    }

private:
    QJsonValue take(const char* name)
    {
        m_known.insert(QLatin1String(name));
        return m_object.value(QLatin1String(name));
    }

    Reading& m_reading;
    QString m_path;
    QJsonObject m_object;
    bool m_isObject;
    QSet<QString> m_known;
};

GeoPosition readPosition(ObjectReader& object)
{
    GeoPosition position;
    position.latitude = object.number("latitude", latitudes);
    position.longitude = object.number("longitude", longitudes);
    return position;
}

std::optional<FrequencyRange> readFrequencyRange(ObjectReader& parent)
{
    if (!parent.has("rangeHz"))
        return std::nullopt;
    ObjectReader object(parent.reading(), parent.object("rangeHz"), parent.path("rangeHz"));
    FrequencyRange range;
    range.low = object.number("low", frequencies);
    range.high = object.number("high", frequencies);
    if (range.high < range.low)
        object.unexpected("high", QStringLiteral("a frequency that is not below \"low\""));
    return range;
}

std::vector<TimeSpan> readTimeSpans(ObjectReader& parent, const char* name)
{
    std::vector<TimeSpan> spans;
    parent.list(name, ObjectReader::Optional, [&](const QJsonValue& value, const QString& path) {
        ObjectReader object(parent.reading(), value, path);
        TimeSpan span;
        span.from = object.number("fromS", times);
        span.to = object.number("toS", times);
        if (span.to <= span.from)
            object.unexpected("toS", QStringLiteral("a number of seconds above \"fromS\""));
        spans.push_back(span);
    });
    return spans;
}

std::optional<OperatingHours> readOperatingHours(ObjectReader& parent)
{
    if (!parent.has("operatingHours"))
        return std::nullopt;
    ObjectReader object(parent.reading(), parent.object("operatingHours"), parent.path("operatingHours"));
    OperatingHours hours{object.timeOfDay("from"), object.timeOfDay("to")};
    if (hours.from.isValid() && hours.from == hours.to)
        object.unexpected("to", QStringLiteral("another time of day than \"from\""));
    return hours;
}

/// What DF stations and remote stations have in common.
StationInfo readStationInfo(ObjectReader& object)
{
    StationInfo info;
    info.id = object.identifier("id");
    info.name = object.text("name");
    info.position = readPosition(object);
    info.range = readFrequencyRange(object);
    info.scan = object.truth("scan", false);
    info.wideband = object.truth("wideband", false);
    return info;
}

/// Identifiers and names tell stations apart, in the status texts and in recordings.
class UniqueStations
{
public:
    void check(ObjectReader& object, const StationInfo& info)
    {
        if (info.id != 0 && m_ids.contains(info.id))
            object.unexpected("id", QStringLiteral("an identifier that no station above has"));
        if (!info.name.isEmpty() && m_names.contains(info.name))
            object.unexpected("name", QStringLiteral("a name that no station above has"));
        m_ids.insert(info.id);
        m_names.insert(info.name);
    }

private:
    QSet<int> m_ids;
    QSet<QString> m_names;
};

ScenarioStation readStation(ObjectReader& object)
{
    ScenarioStation station;
    station.info = readStationInfo(object);
    station.bearingAccuracy = object.number("bearingAccuracyDeg", accuracies, station.bearingAccuracy);
    station.noiseFigure = object.number("noiseFigureDb", noiseFigures, station.noiseFigure);
    station.operatingHours = readOperatingHours(object);
    station.outages = readTimeSpans(object, "outages");
    station.timeoutPercent = object.number("timeoutPercent", percentages, 0.0);
    return station;
}

StationInfo readHriStation(ObjectReader& object)
{
    StationInfo info = readStationInfo(object);
    info.available = object.truth("available", true);
    return info;
}

double readEirp(ObjectReader& object)
{
    if (object.has("eirpDbm") == object.has("eirpWatt")) {
        object.report(QStringLiteral("eirpDbm"), QStringLiteral("expected either \"eirpDbm\" or \"eirpWatt\""));
        object.number("eirpDbm", powersDbm, 0.0);
        object.number("eirpWatt", powersWatt, 1.0);
        return 0.0;
    }
    return object.has("eirpDbm") ? object.number("eirpDbm", powersDbm)
                                 : propagation::dBmFromWatt(object.number("eirpWatt", powersWatt));
}

std::vector<TrackPoint> readTrack(ObjectReader& emitter)
{
    if (!emitter.has("track"))
        return {{0.0, readPosition(emitter)}};
    std::vector<TrackPoint> track;
    emitter.list("track", ObjectReader::NotEmpty, [&](const QJsonValue& value, const QString& path) {
        ObjectReader object(emitter.reading(), value, path);
        const TrackPoint point{object.number("timeS", times), readPosition(object)};
        if (!track.empty() && point.time <= track.back().time)
            object.unexpected("timeS", QStringLiteral("a later time than that of the point before"));
        track.push_back(point);
    });
    for (const char* name : {"latitude", "longitude"}) {
        if (emitter.has(name)) {
            emitter.report(QLatin1String(name), QStringLiteral("expected either \"track\" or \"latitude\" and "
                                                               "\"longitude\""));
            emitter.object(name);
        }
    }
    return track;
}

ScenarioEmitter readEmitter(ObjectReader& object)
{
    ScenarioEmitter emitter;
    emitter.name = object.text("name");
    emitter.frequency = object.number("frequencyHz", frequencies);
    emitter.eirp = readEirp(object);
    emitter.track = readTrack(object);
    emitter.onAir = readTimeSpans(object, "onAir");
    return emitter;
}

/// Texts tell the steps and modes of a device apart, wherever they are selected.
class UniqueTexts
{
public:
    void check(ObjectReader& object, const char* name, const QString& text)
    {
        if (!text.isEmpty() && m_texts.contains(text))
            object.unexpected(name, QStringLiteral("a text that is not in the list above"));
        m_texts.insert(text);
    }

private:
    QSet<QString> m_texts;
};

std::vector<DeviceStep> readSteps(ObjectReader& device, const char* list, const char* numberName, const Range& range)
{
    std::vector<DeviceStep> steps;
    UniqueTexts uniqueTexts;
    device.list(list, ObjectReader::NotEmpty, [&](const QJsonValue& value, const QString& path) {
        ObjectReader object(device.reading(), value, path);
        const QString text = object.text("text");
        uniqueTexts.check(object, "text", text);
        steps.push_back({text, object.number(numberName, range)});
    });
    return steps;
}

std::vector<DeviceMode> readModes(ObjectReader& device)
{
    std::vector<DeviceMode> modes;
    QSet<int> known;
    device.list("modes", ObjectReader::NotEmpty, [&](const QJsonValue& value, const QString& path) {
        const QString text = value.toString();
        const std::optional<DfMode> mode = modeFromText(text);
        if (!mode || known.contains(static_cast<int>(*mode))) {
            device.reading().unexpected(path,
                                        QStringLiteral("a mode that begins with \"nor\", \"con\" or \"gat\" as no "
                                                       "other mode of the device does"),
                                        value);
            return;
        }
        known.insert(static_cast<int>(*mode));
        modes.push_back({text, *mode});
    });
    if (!modes.empty() && !known.contains(static_cast<int>(DfMode::Normal)))
        device.unexpected("modes", QStringLiteral("a mode that begins with \"nor\" among them"));
    return modes;
}

DfDevice readDevice(ObjectReader& object)
{
    DfDevice device;
    device.name = object.text("name");
    device.bandwidths = readSteps(object, "bandwidths", "hz", bandwidths);
    device.averagingTimes = readSteps(object, "averagingTimes", "ms", averagingTimes);
    device.modes = readModes(object);
    return device;
}

void readDevices(ObjectReader& scenario, std::vector<DfDevice>& devices)
{
    if (!scenario.has("devices"))
        return;
    devices.clear();
    UniqueTexts uniqueNames;
    scenario.list("devices", ObjectReader::NotEmpty, [&](const QJsonValue& value, const QString& path) {
        ObjectReader object(scenario.reading(), value, path);
        devices.push_back(readDevice(object));
        uniqueNames.check(object, "name", devices.back().name);
    });
}

Scenario readScenario(Reading& reading, const QJsonValue& root)
{
    ObjectReader object(reading, root, QString());
    Scenario scenario;
    scenario.name = object.text("name");
    scenario.start = object.instant("start");
    scenario.frequency = object.number("frequencyHz", frequencies);
    UniqueStations uniqueStations;
    object.list("stations", ObjectReader::NotEmpty, [&](const QJsonValue& value, const QString& path) {
        ObjectReader station(reading, value, path);
        scenario.stations.push_back(readStation(station));
        uniqueStations.check(station, scenario.stations.back().info);
    });
    UniqueStations uniqueHriStations;
    object.list("hriStations", ObjectReader::Optional, [&](const QJsonValue& value, const QString& path) {
        ObjectReader station(reading, value, path);
        scenario.hriStations.push_back(readHriStation(station));
        uniqueHriStations.check(station, scenario.hriStations.back());
    });
    object.list("emitters", ObjectReader::Optional, [&](const QJsonValue& value, const QString& path) {
        ObjectReader emitter(reading, value, path);
        scenario.emitters.push_back(readEmitter(emitter));
    });
    readDevices(object, scenario.devices);
    return scenario;
}

} // namespace

Loaded<Scenario> loadScenario(const QString& fileName)
{
    Loaded<QByteArray> bytes = readInput(fileName, largestScenario);
    if (!bytes)
        return {std::nullopt, bytes.errors};
    QByteArray json = *std::move(bytes.value);
    if (json.startsWith("\xEF\xBB\xBF"))
        json.remove(0, 3);
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (document.isNull()) {
        FileErrors errors(fileName);
        errors.add(JsonLines::lineAt(json, parseError.offset), QStringLiteral("JSON"), parseError.errorString());
        return {std::nullopt, errors.texts()};
    }

    Reading reading{JsonLines(json), FileErrors(fileName)};
    for (const JsonLines::Duplicate& duplicate : reading.lines.duplicates())
        reading.errors.add(duplicate.line, duplicate.path, QStringLiteral("given more than once"));
    const QJsonValue root = document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array());
    Scenario scenario = readScenario(reading, root);
    if (!reading.errors.isEmpty())
        return {std::nullopt, reading.errors.texts()};
    return {std::move(scenario), {}};
}

} // namespace workbench
