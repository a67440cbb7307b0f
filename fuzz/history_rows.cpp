// Rows of a store that another program has written, with any types and values: what is found is whole and what SQLite
// has, or it is told that the file is damaged.

#include "drivers/onlinefix.h"
#include "fuzz/fuzzing.h"
#include "history/resultfile.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <cmath>
#include <fuzzer/FuzzedDataProvider.h>

using namespace workbench;

namespace {

const std::atomic<bool> notCancelled{false};

QVariant anyValue(FuzzedDataProvider& input)
{
    switch (input.ConsumeIntegralInRange(0, 7)) {
    case 0:
        return {};
    case 1:
        return input.ConsumeIntegral<qint64>();
    case 2:
        return input.ConsumeFloatingPoint<double>();
    case 3:
        return fuzzing::text(QByteArray::fromStdString(input.ConsumeRandomLengthString(12)));
    case 4:
        return QByteArray::fromStdString(input.ConsumeRandomLengthString(12));
    case 5:
        return HUGE_VAL;
    case 6:
        return QString::number(input.ConsumeIntegralInRange(-400, 400));
    default:
        return input.ConsumeIntegralInRange(0, 359);
    }
}

class OtherProgram
{
public:
    explicit OtherProgram(const QString& file)
        : m_database(QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name))
    {
        m_database.setDatabaseName(file);
        FUZZ_REQUIRE(m_database.open());
    }
    ~OtherProgram()
    {
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_name);
    }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    /// Takes the types and conditions of a table's columns away, so that it holds whatever is written to it.
    void loosen(const QString& table)
    {
        QStringList columns;
        for (const QVariantList& column :
             rows(QStringLiteral("SELECT name FROM pragma_table_info('%1')").arg(table), 1))
            columns += column.first().toString();
        run(QStringLiteral("DROP TABLE %1").arg(table));
        run(QStringLiteral("CREATE TABLE %1 (%2)").arg(table, columns.join(QLatin1Char(','))));
    }

    /// Refused is what the table does not take.
    bool insert(const char* table, const QVariantList& values)
    {
        QSqlQuery query(m_database);
        QStringList marks;
        for (int i = 0; i < values.size(); ++i)
            marks += QStringLiteral("?");
        query.prepare(
            QStringLiteral("INSERT INTO %1 VALUES (%2)").arg(QLatin1String(table), marks.join(QLatin1Char(','))));
        for (const QVariant& value : values)
            query.addBindValue(value);
        return query.exec();
    }

    /// The rows as SQLite has them, by the order of a store's answers.
    std::vector<QVariantList> rows(const QString& statement, int columns, const QVariant& argument = {})
    {
        QSqlQuery query(m_database);
        query.prepare(statement);
        if (argument.isValid())
            query.addBindValue(argument);
        FUZZ_REQUIRE(query.exec());
        std::vector<QVariantList> rows;
        while (query.next()) {
            QVariantList& row = rows.emplace_back();
            for (int i = 0; i < columns; ++i)
                row += query.value(i);
        }
        return rows;
    }

private:
    void run(const QString& statement)
    {
        QSqlQuery query(m_database);
        if (!query.exec(statement))
            qFatal("%s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
    }

    QString m_name = QStringLiteral("other");
    QSqlDatabase m_database;
};

bool isNumber(const QVariant& value)
{
    return value.type() == QVariant::LongLong || value.type() == QVariant::Double;
}

void requireNumber(const std::optional<double>& number, const QVariant& stored)
{
    FUZZ_REQUIRE(number.has_value() == !stored.isNull());
    FUZZ_REQUIRE(!number || (isNumber(stored) && *number == stored.toDouble() && std::isfinite(*number)));
}

void requirePosition(const std::optional<GeoPosition>& position, const QVariant& latitude, const QVariant& longitude)
{
    requireNumber(position ? std::optional(position->latitude) : std::nullopt, latitude);
    requireNumber(position ? std::optional(position->longitude) : std::nullopt, longitude);
}

void requireWhole(const DfResult& result, const QVariantList& row, const std::vector<QVariantList>& stations)
{
    FUZZ_REQUIRE(ResultFile::objection(result).isEmpty());
    FUZZ_REQUIRE(row[1].type() == QVariant::LongLong);
    FUZZ_REQUIRE(QDateTime(result.date, result.time, Qt::UTC).toMSecsSinceEpoch() == row[1].toLongLong());
    requireNumber(result.frequency, row[2]);
    FUZZ_REQUIRE(result.truth.has_value() == !row[3].isNull());
    FUZZ_REQUIRE(!result.truth || (row[3].type() == QVariant::String && result.truth->name == row[3].toString()));
    requirePosition(result.truth ? std::optional(result.truth->position) : std::nullopt, row[4], row[5]);
    FUZZ_REQUIRE(result.stations.size() == stations.size());
    for (std::size_t i = 0; i < stations.size(); ++i) {
        const StationResult& station = result.stations[i];
        const QVariantList& stored = stations[i];
        FUZZ_REQUIRE(stored[0].type() == QVariant::LongLong && station.stationId == stored[0].toLongLong());
        FUZZ_REQUIRE(stored[1].type() == QVariant::String && station.stationName == stored[1].toString());
        requirePosition(station.position, stored[2], stored[3]);
        requireNumber(station.azimuth, stored[4]);
        requireNumber(station.sigma, stored[5]);
        requireNumber(station.quality, stored[6]);
        requireNumber(station.level, stored[7]);
        FUZZ_REQUIRE(stored[8].type() == QVariant::LongLong &&
                     static_cast<int>(station.error) == stored[8].toLongLong());
    }
}

void requireAnswer(const ResultAnswer& answer, OtherProgram& other)
{
    const std::vector<QVariantList> rows =
        other.rows(QStringLiteral("SELECT id, time, frequency, truth_name, truth_latitude, truth_longitude FROM result"
                                  " ORDER BY time, id"),
                   6);
    FUZZ_REQUIRE(answer.isComplete && answer.results.size() == rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        requireWhole(
            answer.results[i], rows[i],
            other.rows(QStringLiteral("SELECT station, name, latitude, longitude, azimuth, sigma, quality, level,"
                                      " error FROM station_result WHERE result = ? ORDER BY place"),
                       9, rows[i][0]));
        // Whatever the numbers are, a fix or the reason for none comes of them.
        static_cast<void>(onlineFix(answer.results[i], 0));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("store"));
    static_cast<void>(ResultFile(file, {})); // makes the tables
    OtherProgram other(file);
    if (input.ConsumeBool()) {
        other.loosen(QStringLiteral("result"));
        other.loosen(QStringLiteral("station_result"));
    }
    while (input.remaining_bytes() > 0) {
        const qint64 id = input.ConsumeIntegralInRange(1, 4);
        if (input.ConsumeBool()) {
            other.insert("result", {id, QDateTime::currentMSecsSinceEpoch(), anyValue(input), anyValue(input),
                                    anyValue(input), anyValue(input), anyValue(input)});
        } else {
            other.insert("station_result",
                         {id, anyValue(input), anyValue(input), anyValue(input), anyValue(input), anyValue(input),
                          anyValue(input), anyValue(input), anyValue(input), anyValue(input), anyValue(input)});
        }
    }

    try {
        const ResultFile store(file, {});
        requireAnswer(store.find({}, notCancelled), other);
    } catch (const ResultFileError& error) {
        FUZZ_REQUIRE(error.sentence().startsWith(file + QLatin1String(": cannot be ")));
        FUZZ_REQUIRE(error.kind() == ResultFileError::Kind::Other);
        FUZZ_REQUIRE(error.sentence().contains(QLatin1String("it is damaged")));
    }
    return 0;
}
