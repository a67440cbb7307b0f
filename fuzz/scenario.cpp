// Scenarios: what is loaded keeps the limits of the format, means the same however its JSON is laid out, and can be
// simulated and recorded.

#include "drivers/scenario.h"
#include "drivers/recording.h"
#include "drivers/recordingwriter.h"
#include "drivers/simulatednetwork.h"
#include "fuzz/fuzzing.h"
#include "fuzz/jsonleaks.h"
#include "fuzz/placederrors.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QSet>
#include <QTemporaryDir>

using namespace workbench;

namespace {

bool isWithin(double number, double low, double high)
{
    return number >= low && number <= high;
}

void requirePosition(const GeoPosition& position)
{
    FUZZ_REQUIRE(isWithin(position.latitude, -90.0, 90.0));
    FUZZ_REQUIRE(isWithin(position.longitude, -180.0, 180.0));
}

void requireStation(const StationInfo& info, QSet<int>& ids, QSet<QString>& names)
{
    FUZZ_REQUIRE(info.id >= 1 && !ids.contains(info.id));
    FUZZ_REQUIRE(!info.name.trimmed().isEmpty() && !names.contains(info.name));
    FUZZ_REQUIRE(QString::fromUtf8(info.name.toUtf8()) == info.name);
    ids.insert(info.id);
    names.insert(info.name);
    requirePosition(*info.position);
    if (info.range)
        FUZZ_REQUIRE(isWithin(info.range->low, 1.0, info.range->high) && info.range->high <= 1e12);
}

void requireSpans(const std::vector<TimeSpan>& spans)
{
    for (const TimeSpan& span : spans)
        FUZZ_REQUIRE(span.from >= 0.0 && span.from < span.to && span.to <= 1e9);
}

void requireLimits(const Scenario& scenario)
{
    FUZZ_REQUIRE(!scenario.name.trimmed().isEmpty());
    FUZZ_REQUIRE(scenario.start.isValid() && scenario.start.timeSpec() == Qt::UTC);
    FUZZ_REQUIRE(isWithin(scenario.frequency, 1.0, 1e12));
    FUZZ_REQUIRE(!scenario.stations.empty());
    QSet<int> ids;
    QSet<QString> names;
    for (const ScenarioStation& station : scenario.stations) {
        requireStation(station.info, ids, names);
        requireSpans(station.outages);
        FUZZ_REQUIRE(isWithin(station.bearingAccuracy, 0.0, 90.0));
        FUZZ_REQUIRE(isWithin(station.noiseFigure, 0.0, 100.0));
        FUZZ_REQUIRE(isWithin(station.timeoutPercent, 0.0, 100.0));
    }
    ids.clear();
    names.clear();
    for (const StationInfo& station : scenario.hriStations)
        requireStation(station, ids, names);
    for (const ScenarioEmitter& emitter : scenario.emitters) {
        FUZZ_REQUIRE(!emitter.name.trimmed().isEmpty() && !emitter.track.empty());
        FUZZ_REQUIRE(isWithin(emitter.frequency, 1.0, 1e12));
        FUZZ_REQUIRE(isWithin(emitter.eirp, -200.1, 200.1));
        requireSpans(emitter.onAir);
        double last = -1.0;
        for (const TrackPoint& point : emitter.track) {
            requirePosition(point.position);
            FUZZ_REQUIRE(point.time > last);
            last = point.time;
        }
    }
    FUZZ_REQUIRE(!scenario.devices.empty());
    for (const DfDevice& device : scenario.devices) {
        FUZZ_REQUIRE(!device.name.trimmed().isEmpty());
        FUZZ_REQUIRE(!device.bandwidths.empty() && !device.averagingTimes.empty() && !device.modes.empty());
        FUZZ_REQUIRE(std::any_of(device.modes.begin(), device.modes.end(),
                                 [](const DeviceMode& mode) { return mode.mode == DfMode::Normal; }));
    }
}

Loaded<Scenario> load(const QByteArray& json, const QString& as)
{
    const fuzzing::MemoryFile file(json);
    Loaded<Scenario> loaded = loadScenario(file.path());
    FUZZ_REQUIRE(loaded.value.has_value() == loaded.errors.isEmpty());
    for (QString& error : loaded.errors) {
        FUZZ_REQUIRE(error.startsWith(file.path() + QLatin1Char(':')));
        error.replace(0, file.path().size(), as);
    }
    return loaded;
}

/// Every error names a line that the text has.
void requireLines(const QStringList& errors, const QByteArray& json)
{
    for (const QString& error : fuzzing::placed(errors)) {
        bool isNumber = false;
        const int line = error.section(QLatin1Char(':'), 1, 1).toInt(&isNumber);
        FUZZ_REQUIRE(isNumber && isWithin(line, 1, json.count('\n') + 1));
    }
}

QStringList withoutLines(const QStringList& errors)
{
    QStringList texts;
    for (const QString& error : errors)
        texts += error.section(QLatin1Char(':'), 2);
    texts.sort();
    return texts;
}

/// The same JSON in one line and in many: the same scenario, or the same errors.
void requireSameInOtherLayout(const QByteArray& json, const Loaded<Scenario>& loaded)
{
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (document.isNull())
        return;
    const Loaded<Scenario> compact = load(document.toJson(QJsonDocument::Compact), QStringLiteral("in"));
    const Loaded<Scenario> indented = load(document.toJson(QJsonDocument::Indented), QStringLiteral("in"));
    FUZZ_REQUIRE(withoutLines(compact.errors) == withoutLines(indented.errors));
    if (!loaded)
        return; // perhaps only for a member that is there twice
    FUZZ_REQUIRE(compact && indented);
    FUZZ_REQUIRE(compact.value->name == loaded.value->name);
    FUZZ_REQUIRE(compact.value->start == loaded.value->start);
    FUZZ_REQUIRE(compact.value->frequency == loaded.value->frequency);
    FUZZ_REQUIRE(compact.value->stations.size() == loaded.value->stations.size());
    for (std::size_t i = 0; i < loaded.value->stations.size(); ++i) {
        const StationInfo& a = compact.value->stations[i].info;
        const StationInfo& b = loaded.value->stations[i].info;
        FUZZ_REQUIRE(a.id == b.id && a.name == b.name && a.position->latitude == b.position->latitude);
    }
    FUZZ_REQUIRE(compact.value->emitters.size() == loaded.value->emitters.size());
    FUZZ_REQUIRE(compact.value->devices.size() == loaded.value->devices.size());
}

/// What the network measures is what a recording of it plays.
void requireRecordable(const Scenario& scenario)
{
    SimulatedNetwork network(scenario, 1, Pacing::Immediate);
    std::vector<DfResult> results;
    QObject::connect(&network, &DfSource::measured, &network,
                     [&results](const DfResult& result) { results.push_back(result); });
    DfRequest request;
    request.frequency = scenario.frequency;
    request.bandwidth = scenario.devices.front().bandwidths.front().number;
    request.averaging = scenario.devices.front().averagingTimes.front().number;
    for (const DfMode mode : {DfMode::Normal, DfMode::Continuous}) {
        request.mode = mode;
        network.measure(request);
        while (results.size() < (mode == DfMode::Normal ? 1U : 2U))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    static const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("recording.csv"));
    RecordingWriter writer(file);
    std::size_t bearings = 0;
    std::size_t shots = 0;
    for (const DfResult& result : results) {
        FUZZ_REQUIRE(result.stations.size() == scenario.stations.size());
        FUZZ_REQUIRE(writer.append(result));
        std::size_t inShot = 0;
        for (const StationResult& station : result.stations) {
            FUZZ_REQUIRE(station.azimuth.has_value() == (station.error == DfError::None));
            FUZZ_REQUIRE(!station.azimuth || (*station.azimuth >= 0.0 && *station.azimuth < 360.0));
            inShot += station.azimuth ? 1 : 0;
        }
        bearings += inShot;
        shots += inShot > 0 ? 1 : 0;
    }
    FUZZ_REQUIRE(writer.commit());
    const Loaded<Recording> recording = loadRecording(file);
    FUZZ_REQUIRE(recording.value.has_value() == (bearings > 0));
    FUZZ_REQUIRE(!recording || recording.value->shots.size() == shots);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray json = fuzzing::bytes(data, size);
    const fuzzing::JsonLeaks leaks(json);
    const Loaded<Scenario> loaded = load(json, QStringLiteral("in"));
    requireLines(loaded.errors, json);
    requireSameInOtherLayout(json, loaded);
    if (loaded) {
        requireLimits(*loaded.value);
        requireRecordable(*loaded.value);
    }
    return 0;
}
