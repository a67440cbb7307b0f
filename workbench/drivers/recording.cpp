#include "drivers/recording.h"

#include "drivers/csv.h"
#include "drivers/fileerrors.h"
#include "drivers/inputfile.h"
#include "drivers/recordingformat.h"

#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <array>
#include <cmath>

namespace workbench {

namespace {

using namespace recordingformat;

/// Numbers from low to high, both included, and how people call them.
struct Range
{
    double low;
    double high;
    const char* text;
};

constexpr Range latitudes{-90.0, 90.0, "degrees from -90 to 90"};
constexpr Range longitudes{-180.0, 180.0, "degrees from -180 to 180"};
constexpr Range azimuths{0.0, 360.0, "degrees from 0 to 360"};

QString shown(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("nothing") : QLatin1Char('"') + text + QLatin1Char('"');
}

/// What one line says. What could not be read is an invalid date, 0 or NaN; none of them differs from anything.
struct Bearing
{
    int shot = 0;
    QDate date;
    QString transmitter;
    QString station;
    GeoPosition position;
    double azimuth = 0.0;
    GeoPosition truth;
};

class RecordingReader
{
public:
    explicit RecordingReader(const QString& file)
        : m_errors(file)
    {
        m_recording.fileName = QFileInfo(file).fileName();
    }

    Loaded<Recording> read(const QByteArray& text)
    {
        const csv::Table table = csv::parse(text);
        for (const csv::Flaw& flaw : table.flaws)
            m_errors.add(flaw.line, QStringLiteral("text"), flaw.what);
        if (readHeader(table)) {
            for (std::size_t i = 1; i < table.records.size(); ++i)
                readLine(table.records[i]);
        }
        if (!m_errors.isEmpty())
            return {std::nullopt, m_errors.texts()};
        return {std::move(m_recording), {}};
    }

private:
    /// False when the lines below cannot be understood.
    bool readHeader(const csv::Table& table)
    {
        if (table.records.empty()) {
            m_errors.add(1, QStringLiteral("header"),
                         QStringLiteral("expected the names of the columns, found nothing"));
            return false;
        }
        const csv::Record& header = table.records.front();
        bool isGood = true;
        for (const QString& name : header.fields) {
            const bool isKnown = std::any_of(columnNames.begin(), columnNames.end(),
                                             [&name](const char* known) { return name == QLatin1String(known); });
            if (!isKnown) {
                m_errors.add(header.line, shown(name), QStringLiteral("no such column"));
                isGood = false;
            }
        }
        for (std::size_t column = 0; column < columnNames.size(); ++column) {
            const QString name = QLatin1String(columnNames[column]);
            m_place[column] = header.fields.indexOf(name);
            const auto count = header.fields.count(name);
            if (count != 1) {
                m_errors.add(header.line, name,
                             count == 0 ? QStringLiteral("column is missing")
                                        : QStringLiteral("column is given more than once"));
                isGood = false;
            }
        }
        if (isGood && table.records.size() == 1) {
            m_errors.add(header.line, QStringLiteral("shot"),
                         QStringLiteral("expected a bearing below the names of the columns, found nothing"));
        }
        return isGood;
    }

    void readLine(const csv::Record& record)
    {
        m_record = &record;
        if (record.fields.size() != static_cast<int>(columnNames.size())) {
            m_errors.add(
                record.line, QStringLiteral("line"),
                QStringLiteral("expected %1 fields, found %2").arg(columnNames.size()).arg(record.fields.size()));
            return;
        }
        const Bearing bearing = readBearing();
        if (bearing.shot == 0)
            return;
        if (bearing.shot < m_first.shot) {
            unexpected(Shot,
                       QStringLiteral("a number that is not below %1, the one of the line before").arg(m_first.shot));
            return;
        }
        if (bearing.shot > m_first.shot)
            beginShot(bearing);
        else
            checkSameShot(bearing);
        addToShot(bearing);
    }

    Bearing readBearing()
    {
        Bearing bearing;
        bearing.shot = field(Shot).toInt();
        if (bearing.shot < 1) {
            bearing.shot = 0;
            unexpected(Shot, QStringLiteral("a positive whole number"));
        }
        bearing.date = QDate::fromString(field(Date), QLatin1String(dateFormat));
        if (!bearing.date.isValid() || bearing.date.toString(QLatin1String(dateFormat)) != field(Date))
            unexpected(Date, QStringLiteral("a date as yyyy-MM-dd"));
        bearing.station = field(Station);
        if (bearing.station.isEmpty())
            unexpected(Station, QStringLiteral("a name"));
        bearing.position = {number(Latitude, latitudes), number(Longitude, longitudes)};
        bearing.azimuth = number(Azimuth, azimuths);
        if (bearing.azimuth == azimuths.high)
            bearing.azimuth = 0.0;
        if (!field(Transmitter).isEmpty() || !field(TrueLatitude).isEmpty() || !field(TrueLongitude).isEmpty()) {
            bearing.transmitter = field(Transmitter);
            if (bearing.transmitter.isEmpty())
                unexpected(Transmitter, QStringLiteral("a name, because a true position is given"));
            bearing.truth = {number(TrueLatitude, latitudes), number(TrueLongitude, longitudes)};
        }
        return bearing;
    }

    void beginShot(const Bearing& bearing)
    {
        m_first = bearing;
        DfResult& shot = m_recording.shots.emplace_back();
        shot.date = bearing.date;
        if (!bearing.transmitter.isEmpty())
            shot.truth = TrueEmitter{bearing.transmitter, bearing.truth};
    }

    /// There is one transmitter and one date to a shot.
    void checkSameShot(const Bearing& bearing)
    {
        const auto differ = [](double a, double b) { return a < b || a > b; };
        if (bearing.date != m_first.date && bearing.date.isValid() && m_first.date.isValid())
            unexpectedInShot(Date);
        if (bearing.transmitter != m_first.transmitter)
            unexpectedInShot(Transmitter);
        if (differ(bearing.truth.latitude, m_first.truth.latitude))
            unexpectedInShot(TrueLatitude);
        if (differ(bearing.truth.longitude, m_first.truth.longitude))
            unexpectedInShot(TrueLongitude);
        const std::vector<StationResult>& stations = m_recording.shots.back().stations;
        const bool isThere = std::any_of(stations.begin(), stations.end(), [&bearing](const StationResult& station) {
            return station.stationName == bearing.station;
        });
        if (isThere && !bearing.station.isEmpty())
            unexpected(Station, QStringLiteral("a station that shot %1 does not have yet").arg(bearing.shot));
    }

    void addToShot(const Bearing& bearing)
    {
        int& id = m_stationIds[bearing.station];
        if (id == 0) {
            StationInfo station;
            station.id = id = static_cast<int>(m_recording.stations.size()) + 1;
            station.name = bearing.station;
            station.position = bearing.position;
            m_recording.stations.push_back(station);
        }
        StationResult& result = m_recording.shots.back().stations.emplace_back();
        result.stationId = id;
        result.stationName = bearing.station;
        result.position = bearing.position;
        result.azimuth = bearing.azimuth;
    }

    [[nodiscard]] const QString& field(Column column) const { return m_record->fields.at(m_place[column]); }

    double number(Column column, const Range& range)
    {
        bool isNumber = false;
        const double number = field(column).toDouble(&isNumber);
        if (isNumber && number >= range.low && number <= range.high)
            return number;
        unexpected(column, QLatin1String(range.text));
        return std::nan("");
    }

    void unexpected(Column column, const QString& expected)
    {
        m_errors.addUnexpected(m_record->line, QLatin1String(columnNames[column]), expected, shown(field(column)));
    }

    void unexpectedInShot(Column column)
    {
        unexpected(column, QStringLiteral("the same as in the first line of shot %1").arg(m_first.shot));
    }

    FileErrors m_errors;
    Recording m_recording;
    std::array<int, columnNames.size()> m_place{}; // of each column in a line
    QHash<QString, int> m_stationIds;
    const csv::Record* m_record = nullptr;
    Bearing m_first; // the first line of the current shot
};

} // namespace

Loaded<Recording> loadRecording(const QString& fileName)
{
    const Loaded<QByteArray> bytes = readInput(fileName, largestRecording);
    if (!bytes)
        return {std::nullopt, bytes.errors};
    return RecordingReader(fileName).read(*bytes.value);
}

RecordedNetwork::RecordedNetwork(Recording recording, RecordedDefaults defaults, Pacing pacing)
    : PacedSource(pacing)
    , m_recording(std::move(recording))
    , m_defaults(defaults)
{
}

QString RecordedNetwork::name() const
{
    return QLatin1String("Recording ") + m_recording.fileName;
}

std::vector<StationInfo> RecordedNetwork::stations() const
{
    return m_recording.stations;
}

std::vector<StationInfo> RecordedNetwork::hriStations() const
{
    return {};
}

std::optional<double> RecordedNetwork::initialFrequency() const
{
    return m_defaults.frequency;
}

std::optional<int> RecordedNetwork::measurementsLeft() const
{
    return static_cast<int>(m_recording.shots.size() - m_next);
}

void RecordedNetwork::answer(const DfRequest& /*request*/)
{
    if (m_next == m_recording.shots.size()) {
        emit failed(QStringLiteral("The recording %1 has no further shot.").arg(m_recording.fileName));
        return;
    }
    DfResult shot = m_recording.shots[m_next++];
    fillIn(shot);
    emit measured(shot);
}

void RecordedNetwork::fillIn(DfResult& shot) const
{
    shot.frequency = m_defaults.frequency;
    shot.time = m_defaults.time.value_or(QTime());
    for (StationResult& station : shot.stations) {
        station.level = m_defaults.level;
        station.quality = m_defaults.quality;
        station.sigma = m_defaults.sigma;
    }
}

} // namespace workbench
