#include "history/resultfile.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QUuid>
#include <QVariant>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench {

namespace {

constexpr int applicationId = 0x44464C52; // "DFLR": tells a store from other SQLite files
constexpr int schemaVersion = 1;

constexpr const char* schema[] = {
    // Identifiers ascend without gaps in the order of storing: only the lowest are ever removed.
    "CREATE TABLE result (id INTEGER PRIMARY KEY, stored INTEGER NOT NULL, time INTEGER NOT NULL, frequency REAL,"
    " truth_name TEXT, truth_latitude REAL, truth_longitude REAL)",
    "CREATE INDEX result_time ON result (time)",
    "CREATE TABLE station_result (result INTEGER NOT NULL REFERENCES result (id) ON DELETE CASCADE,"
    " place INTEGER NOT NULL, station INTEGER NOT NULL, name TEXT NOT NULL, latitude REAL, longitude REAL,"
    " azimuth REAL, sigma REAL, quality REAL, level REAL, error INTEGER NOT NULL, PRIMARY KEY (result, place))"
    " WITHOUT ROWID",
};

/// SQLite's primary result codes; extended ones carry them in their lowest byte.
enum SqliteCode
{
    Busy = 5,
    LockedTable = 6,
    ReadOnly = 8,
    Corrupt = 11,
    Full = 13,
    NotADatabase = 26,
};

int sqliteCode(const QSqlError& error)
{
    return error.nativeErrorCode().toInt() & 0xff;
}

/// Only the reason: who knows what was being done makes it a sentence.
struct Failure
{
    QString reason;
    ResultFileError::Kind kind = ResultFileError::Kind::Other;
};

Failure failureOf(const QSqlError& error)
{
    switch (sqliteCode(error)) {
    case Busy:
    case LockedTable:
        return {QStringLiteral("another program has locked it"), ResultFileError::Kind::Locked};
    case ReadOnly:
        return {QStringLiteral("it is read-only")};
    case Corrupt:
        return {QStringLiteral("it is damaged: ") + error.databaseText()};
    case Full:
        return {QStringLiteral("the disk is full")};
    case NotADatabase:
        return {QStringLiteral("it is damaged or no database")};
    default:
        return {error.databaseText().isEmpty() ? error.driverText() : error.databaseText()};
    }
}

/// Does what @p operation does; what fails there is told as "file: did: reason".
template <typename Operation>
auto told(const QString& file, const char* did, Operation operation)
{
    try {
        return operation();
    } catch (const Failure& failure) {
        throw ResultFileError(file + QLatin1String(": ") + QLatin1String(did) + QLatin1String(": ") + failure.reason,
                              failure.kind);
    }
}

QSqlDatabase database(const QString& connection)
{
    return QSqlDatabase::database(connection, false);
}

void require(bool succeeded, const QSqlQuery& query)
{
    if (!succeeded)
        throw Failure(failureOf(query.lastError()));
}

/// A query that goes through its rows once.
QSqlQuery prepared(const QSqlDatabase& on, const QString& text)
{
    QSqlQuery query(on);
    query.setForwardOnly(true);
    require(query.prepare(text), query);
    return query;
}

/// Binds, in this order, and executes.
void execute(QSqlQuery& query, const QVariantList& values)
{
    for (int i = 0; i < values.size(); ++i)
        query.bindValue(i, values[i]);
    require(query.exec(), query);
}

void execute(const QSqlDatabase& on, const char* text, const QVariantList& values = {})
{
    QSqlQuery query = prepared(on, QLatin1String(text));
    execute(query, values);
}

/// False behind the last row. Tells a failure from the end, which QSqlQuery::next() alone does not.
bool next(QSqlQuery& query)
{
    if (query.next())
        return true;
    if (query.lastError().isValid())
        throw Failure(failureOf(query.lastError()));
    return false;
}

/// The one value that @p text asks for.
QVariant single(const QSqlDatabase& on, const char* text)
{
    QSqlQuery query = prepared(on, QLatin1String(text));
    execute(query, {});
    return next(query) ? query.value(0) : QVariant();
}

/// Takes everything back unless it is committed.
class Transaction
{
public:
    Transaction(const QSqlDatabase& on, const char* begin)
        : m_database(on)
    {
        execute(m_database, begin);
    }
    ~Transaction()
    {
        // Fails when SQLite has taken everything back already, as it does when the disk is full.
        if (m_isOpen)
            QSqlQuery(m_database).exec(QStringLiteral("ROLLBACK"));
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit()
    {
        execute(m_database, "COMMIT");
        m_isOpen = false;
    }

private:
    QSqlDatabase m_database;
    bool m_isOpen = true;
};

// Taken at once: a transaction that begins by reading could not wait for another writer later on.
constexpr const char* beginWriting = "BEGIN IMMEDIATE";
constexpr const char* beginReading = "BEGIN";

/// SQLite takes some relative names, the empty one too, as those of databases in memory, and Qt some as resources.
QString absolutePath(const QString& file)
{
    return file.startsWith(QLatin1Char('/')) ? file : QDir::currentPath() + QLatin1Char('/') + file;
}

/// Why @p path cannot be a store, as far as a look from outside tells; empty when it can.
QString obstacle(const QString& path)
{
    const QFileInfo file(path);
    const QFileInfo folder(file.path());
    if (!folder.isDir())
        return QStringLiteral("there is no folder ") + folder.filePath();
    if (file.isDir())
        return QStringLiteral("it is a folder");
    if (file.exists() && !file.isWritable())
        return QStringLiteral("it is read-only");
    // SQLite keeps its log beside the file.
    if (!folder.isWritable())
        return QStringLiteral("the folder %1 is read-only").arg(folder.filePath());
    return {};
}

bool isFinite(const std::optional<double>& number)
{
    return !number || std::isfinite(*number);
}

bool isFinite(const GeoPosition& position)
{
    return std::isfinite(position.latitude) && std::isfinite(position.longitude);
}

bool isFinite(const StationResult& station)
{
    return (!station.position || isFinite(*station.position)) && isFinite(station.azimuth) && isFinite(station.sigma) &&
           isFinite(station.quality) && isFinite(station.level);
}

QVariant stored(const std::optional<double>& number)
{
    return number ? QVariant(*number) : QVariant();
}

/// A null text would be stored as no text.
QVariant stored(const QString& text)
{
    return text.isNull() ? QString(QLatin1String("")) : text;
}

/// @name What a column of a row holds
/// SQLite keeps values of any type in any column, and another program may have put them there. What could not have been
/// stored here is damage: read as 0 or as absent it would become a wrong result in silence.
/// @{

[[noreturn]] void throwDamaged(const QSqlQuery& row, int column, const char* expected)
{
    throw Failure{
        QStringLiteral("it is damaged: %1 is no %2").arg(row.record().fieldName(column), QLatin1String(expected))};
}

qint64 integer(const QSqlQuery& row, int column)
{
    const QVariant value = row.value(column);
    if (value.isNull() || value.type() != QVariant::LongLong)
        throwDamaged(row, column, "whole number");
    return value.toLongLong();
}

int smallInteger(const QSqlQuery& row, int column)
{
    const qint64 value = integer(row, column);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        throwDamaged(row, column, "number of 32 bits");
    return static_cast<int>(value);
}

std::optional<double> number(const QSqlQuery& row, int column)
{
    const QVariant value = row.value(column);
    // Qt has empty bytes for null as well.
    if (value.isNull() && value.type() != QVariant::ByteArray)
        return std::nullopt;
    const bool isNumber = value.type() == QVariant::Double || value.type() == QVariant::LongLong;
    if (!isNumber || !std::isfinite(value.toDouble()))
        throwDamaged(row, column, "finite number");
    return value.toDouble();
}

QString text(const QSqlQuery& row, int column)
{
    const QVariant value = row.value(column);
    if (value.isNull() || value.type() != QVariant::String)
        throwDamaged(row, column, "text");
    return value.toString();
}

/// Of the latitude in @p column and the longitude behind it.
std::optional<GeoPosition> position(const QSqlQuery& row, int column)
{
    const std::optional<double> latitude = number(row, column);
    const std::optional<double> longitude = number(row, column + 1);
    if (latitude.has_value() != longitude.has_value())
        throwDamaged(row, latitude ? column + 1 : column, "finite number");
    return latitude ? std::optional(GeoPosition{*latitude, *longitude}) : std::nullopt;
}
/// @}

/// Newest first, so that a limit leaves out the oldest.
QSqlQuery prepareResults(const QSqlDatabase& on, const ResultQuery& query)
{
    QString text =
        QStringLiteral("SELECT id, time, frequency, truth_name, truth_latitude, truth_longitude FROM result");
    QStringList conditions;
    QVariantList values;
    if (query.from.isValid()) {
        conditions += QStringLiteral("time >= ?");
        values += query.from.toMSecsSinceEpoch();
    }
    if (query.to.isValid()) {
        conditions += QStringLiteral("time <= ?");
        values += query.to.toMSecsSinceEpoch();
    }
    if (query.frequency) {
        conditions += QStringLiteral("frequency BETWEEN ? AND ?");
        values += query.frequency->frequency - query.frequency->tolerance;
        values += query.frequency->frequency + query.frequency->tolerance;
    }
    if (!conditions.isEmpty())
        text += QLatin1String(" WHERE ") + conditions.join(QLatin1String(" AND "));
    QSqlQuery results = prepared(on, text + QLatin1String(" ORDER BY time DESC, id DESC"));
    execute(results, values);
    return results;
}

DfResult readResult(const QSqlQuery& row)
{
    DfResult result;
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(integer(row, 1), Qt::UTC);
    result.date = time.date();
    result.time = time.time();
    result.frequency = number(row, 2);
    const std::optional<GeoPosition> transmitter = position(row, 4);
    if (transmitter)
        result.truth = TrueEmitter{text(row, 3), *transmitter};
    else if (!row.isNull(3))
        throwDamaged(row, 4, "finite number");
    return result;
}

StationResult readStation(const QSqlQuery& row)
{
    StationResult station;
    station.stationId = smallInteger(row, 0);
    station.stationName = text(row, 1);
    station.position = position(row, 2);
    station.azimuth = number(row, 4);
    station.sigma = number(row, 5);
    station.quality = number(row, 6);
    station.level = number(row, 7);
    station.error = static_cast<DfError>(smallInteger(row, 8));
    return station;
}

} // namespace

ResultFileError::ResultFileError(QString sentence, Kind kind)
    : m_sentence(std::move(sentence))
    , m_text(m_sentence.toUtf8())
    , m_kind(kind)
{
}

ResultFile::Connection::Connection()
    : name(QUuid::createUuid().toString())
{
    QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
}

ResultFile::Connection::~Connection()
{
    QSqlDatabase::removeDatabase(name);
}

ResultFile::ResultFile(const QString& file, const HistoryLimits& limits)
    : m_file(file)
    , m_limits(limits)
{
    told(m_file, "cannot be opened", [&] { open(absolutePath(file)); });
}

QString ResultFile::objection(const DfResult& result)
{
    if (!result.date.isValid())
        return QStringLiteral("the result has no date");
    if (!result.time.isValid())
        return QStringLiteral("the result has no time of day");
    if (!isFinite(result.frequency))
        return QStringLiteral("the frequency is not a finite number");
    if (result.truth && !isFinite(result.truth->position))
        return QStringLiteral("the position of the transmitter is not finite");
    for (const StationResult& station : result.stations) {
        if (!isFinite(station))
            return QStringLiteral("station %1 has a number that is not finite").arg(station.stationId);
    }
    return {};
}

void ResultFile::append(const DfResult& result)
{
    told(m_file, "cannot be written", [&] {
        Transaction transaction(database(m_connection.name), beginWriting);
        insert(result);
        removeOldest();
        transaction.commit();
    });
}

ResultAnswer ResultFile::find(const ResultQuery& query, const std::atomic<bool>& isCancelled) const
{
    return told(m_file, "cannot be read", [&] {
        const QSqlDatabase on = database(m_connection.name);
        // Both tables as they are at one moment: another program may be removing results.
        const Transaction transaction(on, beginReading);
        ResultAnswer answer;
        QSqlQuery results = prepareResults(on, query);
        QSqlQuery stations =
            prepared(on, QStringLiteral("SELECT station, name, latitude, longitude, azimuth, sigma, quality, level,"
                                        " error FROM station_result WHERE result = ? ORDER BY place"));
        while (!isCancelled && next(results)) {
            if (static_cast<int>(answer.results.size()) >= query.limit) {
                answer.isComplete = false;
                break;
            }
            DfResult& result = answer.results.emplace_back(readResult(results));
            execute(stations, {results.value(0)});
            while (next(stations))
                result.stations.push_back(readStation(stations));
        }
        std::reverse(answer.results.begin(), answer.results.end());
        return answer;
    });
}

void ResultFile::open(const QString& path)
{
    const QString reason = obstacle(path);
    if (!reason.isEmpty())
        throw Failure{reason};
    QSqlDatabase on = database(m_connection.name);
    on.setDatabaseName(path);
    on.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=1000"));
    if (!on.open())
        throw Failure(failureOf(on.lastError()));
    // Before any transaction that writes: others go on writing meanwhile, and even one that changes nothing would mend
    // the header of a file that is damaged.
    if (!isEmpty())
        requireStore();
    checkContent();
    execute(on, "PRAGMA foreign_keys = ON");
    {
        Transaction transaction(on, beginWriting);
        if (isEmpty()) // still: two programs may come at the same time
            createSchema();
        removeOldest();
        transaction.commit();
    }
    // Behind all that may refuse the file, because the kind of its log is a part of the file.
    if (single(on, "PRAGMA journal_mode = WAL").toString() != QLatin1String("wal"))
        throw Failure{QStringLiteral("its disk does not allow several programs to share it")};
    // Consistent whatever happens; only a loss of power can take the latest results away.
    execute(on, "PRAGMA synchronous = NORMAL");
}

/// A database without anything in it, as an empty file is one.
bool ResultFile::isEmpty() const
{
    const QSqlDatabase on = database(m_connection.name);
    return single(on, "PRAGMA application_id").toInt() == 0 && single(on, "PRAGMA user_version").toInt() == 0 &&
           single(on, "SELECT count(*) FROM sqlite_master").toInt() == 0;
}

void ResultFile::requireStore() const
{
    const QSqlDatabase on = database(m_connection.name);
    if (single(on, "PRAGMA application_id").toInt() != applicationId)
        throw Failure{QStringLiteral("it is a database of another program")};
    const int version = single(on, "PRAGMA user_version").toInt();
    if (version != schemaVersion) {
        throw Failure{QStringLiteral("its schema is version %1, this program knows version %2 only")
                          .arg(version)
                          .arg(schemaVersion)};
    }
}

/// Before anything is written to it: what is damaged must not get worse.
void ResultFile::checkContent() const
{
    const QString finding = single(database(m_connection.name), "PRAGMA quick_check(1)").toString();
    if (finding != QLatin1String("ok"))
        throw Failure{QStringLiteral("it is damaged: ") + finding.simplified()};
}

void ResultFile::createSchema()
{
    const QSqlDatabase on = database(m_connection.name);
    for (const char* statement : schema)
        execute(on, statement);
    execute(on, qPrintable(QStringLiteral("PRAGMA application_id = %1").arg(applicationId)));
    execute(on, qPrintable(QStringLiteral("PRAGMA user_version = %1").arg(schemaVersion)));
}

/// One by one, because how much room a result takes is known only when it has gone.
void ResultFile::removeOldest()
{
    const QSqlDatabase on = database(m_connection.name);
    const qint64 tooOld = QDateTime::currentDateTimeUtc().addDays(-m_limits.maxAgeDays).toMSecsSinceEpoch();
    const qint64 pageSize = single(on, "PRAGMA page_size").toLongLong();
    const auto usedBytes = [&] {
        return pageSize *
               (single(on, "PRAGMA page_count").toLongLong() - single(on, "PRAGMA freelist_count").toLongLong());
    };
    const qint64 newest = single(on, "SELECT max(id) FROM result").toLongLong();
    QSqlQuery oldest = prepared(on, QStringLiteral("SELECT id, stored FROM result ORDER BY id LIMIT 1"));
    QSqlQuery removal = prepared(on, QStringLiteral("DELETE FROM result WHERE id = ?"));
    for (;;) {
        execute(oldest, {});
        if (!next(oldest))
            return;
        const qint64 id = integer(oldest, 0);
        const bool isTooOld = integer(oldest, 1) < tooOld;
        oldest.finish();
        const bool isTooMuch = newest - id >= m_limits.maxResults || isTooOld || usedBytes() > m_limits.maxBytes;
        if (id == newest || !isTooMuch)
            return;
        execute(removal, {id});
    }
}

void ResultFile::insert(const DfResult& result)
{
    const QSqlDatabase on = database(m_connection.name);
    QSqlQuery insertion =
        prepared(on, QStringLiteral("INSERT INTO result (stored, time, frequency, truth_name, truth_latitude,"
                                    " truth_longitude) VALUES (?, ?, ?, ?, ?, ?)"));
    const std::optional<TrueEmitter>& truth = result.truth;
    execute(insertion,
            {QDateTime::currentMSecsSinceEpoch(), QDateTime(result.date, result.time, Qt::UTC).toMSecsSinceEpoch(),
             stored(result.frequency), truth ? stored(truth->name) : QVariant(),
             truth ? truth->position.latitude : QVariant(), truth ? truth->position.longitude : QVariant()});
    const QVariant id = insertion.lastInsertId();
    QSqlQuery stations =
        prepared(on, QStringLiteral("INSERT INTO station_result VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (std::size_t place = 0; place < result.stations.size(); ++place) {
        const StationResult& station = result.stations[place];
        const std::optional<GeoPosition>& at = station.position;
        execute(stations, {id, static_cast<int>(place), station.stationId, stored(station.stationName),
                           at ? at->latitude : QVariant(), at ? at->longitude : QVariant(), stored(station.azimuth),
                           stored(station.sigma), stored(station.quality), stored(station.level),
                           static_cast<int>(station.error)});
    }
}

} // namespace workbench
