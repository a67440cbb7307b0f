#pragma once

#include "history/resultfile.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <atomic>
#include <vector>

namespace historybench {

using workbench::DfResult;
using workbench::ResultQuery;

inline const std::atomic<bool> notCancelled{false};

/// What the results of all tests have in common unless a test changes it.
inline DfResult resultAt(const QDateTime& time, double frequency = 433.92e6, int stations = 2)
{
    DfResult result;
    result.date = time.toUTC().date();
    result.time = time.toUTC().time();
    result.frequency = frequency;
    for (int i = 0; i < stations; ++i) {
        workbench::StationResult station;
        station.stationId = i + 1;
        station.stationName = QStringLiteral("Station %1").arg(i + 1);
        station.position = workbench::GeoPosition{50.0 + i * 0.001, 6.0};
        station.azimuth = i % 360;
        station.quality = 80.0;
        station.level = 40.0;
        result.stations.push_back(station);
    }
    return result;
}

inline QDateTime noon()
{
    return {QDate(2024, 5, 17), QTime(12, 0), Qt::UTC};
}

/// The @p index th result of a series, one a second, told apart by its frequency: index Hz.
inline DfResult resultOfSeries(int index, int stations = 2)
{
    return resultAt(noon().addSecs(index), index, stations);
}

inline std::vector<double> frequencies(const std::vector<DfResult>& results)
{
    std::vector<double> all;
    for (const DfResult& result : results)
        all.push_back(result.frequency.value_or(0.0));
    return all;
}

inline std::vector<double> ascending(int first, int last)
{
    std::vector<double> all;
    for (int i = first; i <= last; ++i)
        all.push_back(i);
    return all;
}

inline ResultQuery everything()
{
    ResultQuery query;
    query.limit = 1000000;
    return query;
}

inline std::vector<DfResult> allOf(const QString& path)
{
    return workbench::ResultFile(path, {}).find(everything(), notCancelled).results;
}

inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A second way into a file: what another program would do with it.
class OtherConnection
{
public:
    explicit OtherConnection(const QString& path)
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        database.setDatabaseName(path);
        if (!database.open())
            qFatal("%s cannot be opened", qPrintable(path));
    }
    ~OtherConnection() { QSqlDatabase::removeDatabase(m_name); }
    OtherConnection(const OtherConnection&) = delete;
    OtherConnection& operator=(const OtherConnection&) = delete;

    /// The first value of the first row, if there is one.
    QVariant run(const QString& statement) const { return run(m_name, statement); }

    static QVariant run(const QString& connection, const QString& statement)
    {
        QSqlQuery query(QSqlDatabase::database(connection, false));
        if (!query.exec(statement))
            qFatal("%s: %s", qPrintable(statement), qPrintable(query.lastError().text()));
        return query.next() ? query.value(0) : QVariant();
    }

private:
    QString m_name = QStringLiteral("other connection");
};

} // namespace historybench
