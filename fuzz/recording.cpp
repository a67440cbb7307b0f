// Recordings: what is read, written and read again is the same, and writing it once more gives the same bytes.

#include "drivers/recording.h"
#include "drivers/csv.h"
#include "drivers/recordingwriter.h"
#include "fuzz/fuzzing.h"
#include "fuzz/placederrors.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <cmath>

using namespace workbench;

namespace {

/// Half of the last digit that is written.
constexpr double positionStep = 0.51e-7;
constexpr double azimuthStep = 0.51e-4;

void requireSame(const GeoPosition& a, const GeoPosition& b)
{
    FUZZ_REQUIRE(std::abs(a.latitude - b.latitude) <= positionStep);
    FUZZ_REQUIRE(std::abs(a.longitude - b.longitude) <= positionStep);
}

void requireSame(const DfResult& a, const DfResult& b)
{
    FUZZ_REQUIRE(a.date == b.date && a.date.isValid());
    FUZZ_REQUIRE(a.truth.has_value() == b.truth.has_value());
    if (a.truth) {
        FUZZ_REQUIRE(a.truth->name == b.truth->name);
        requireSame(a.truth->position, b.truth->position);
    }
    FUZZ_REQUIRE(a.stations.size() == b.stations.size() && !a.stations.empty());
    for (std::size_t i = 0; i < a.stations.size(); ++i) {
        FUZZ_REQUIRE(a.stations[i].stationId == b.stations[i].stationId);
        FUZZ_REQUIRE(a.stations[i].stationName == b.stations[i].stationName);
        FUZZ_REQUIRE(std::abs(std::remainder(*a.stations[i].azimuth - *b.stations[i].azimuth, 360.0)) <= azimuthStep);
        FUZZ_REQUIRE(*a.stations[i].azimuth >= 0.0 && *a.stations[i].azimuth < 360.0);
        requireSame(*a.stations[i].position, *b.stations[i].position);
    }
}

void write(const QString& file, const Recording& recording)
{
    RecordingWriter writer(file);
    for (const DfResult& shot : recording.shots)
        FUZZ_REQUIRE(writer.append(shot));
    FUZZ_REQUIRE(writer.commit());
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    FUZZ_REQUIRE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

void requireRoundTrip(const Recording& recording)
{
    static const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("recording.csv"));
    write(file, recording);
    const QByteArray written = contentOf(file);
    const Loaded<Recording> again = loadRecording(file);
    FUZZ_REQUIRE(again);
    FUZZ_REQUIRE(again.value->shots.size() == recording.shots.size());
    for (std::size_t i = 0; i < recording.shots.size(); ++i)
        requireSame(recording.shots[i], again.value->shots[i]);
    write(file, *again.value);
    FUZZ_REQUIRE(contentOf(file) == written);
}

/// A flawless text, whatever its columns, is the same table when all its fields are written anew.
void requireTableRoundTrip(const QByteArray& text)
{
    const csv::Table table = csv::parse(text);
    if (!table.flaws.empty())
        return;
    QByteArray written = "first\n"; // so that no byte order mark of a field stands at the beginning
    for (const csv::Record& record : table.records) {
        QStringList fields;
        for (const QString& field : record.fields)
            fields += csv::quoted(field);
        written += fields.join(QLatin1Char(',')).toUtf8() + '\n';
    }
    const csv::Table again = csv::parse(written);
    FUZZ_REQUIRE(again.flaws.empty());
    std::vector<QStringList> expected{{QStringLiteral("first")}};
    for (const csv::Record& record : table.records) {
        // A line with nothing on it is no record.
        if (record.fields != QStringList{QString()})
            expected.push_back(record.fields);
    }
    FUZZ_REQUIRE(again.records.size() == expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        FUZZ_REQUIRE(again.records[i].fields == expected[i]);
}

/// Every error names a line that the text has.
void requireErrors(const QStringList& errors, const QString& file, const QByteArray& text)
{
    static const QRegularExpression place(QStringLiteral("\\A:(\\d+): "));
    for (const QString& error : fuzzing::placed(errors)) {
        FUZZ_REQUIRE(error.startsWith(file));
        const QRegularExpressionMatch match = place.match(error.mid(file.size()));
        FUZZ_REQUIRE(match.hasMatch());
        const int line = match.captured(1).toInt();
        FUZZ_REQUIRE(line >= 1 && line <= text.count('\n') + 1);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray text = fuzzing::bytes(data, size);
    const fuzzing::MemoryFile file(text);
    const Loaded<Recording> loaded = loadRecording(file.path());
    FUZZ_REQUIRE(loaded.value.has_value() == loaded.errors.isEmpty());
    requireErrors(loaded.errors, file.path(), text);
    requireTableRoundTrip(text);
    if (loaded)
        requireRoundTrip(*loaded.value);
    return 0;
}
