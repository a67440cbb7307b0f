#include "drivers/recordingwriter.h"

#include "drivers/csv.h"
#include "drivers/geodesy.h"
#include "drivers/recordingformat.h"
#include "ztbase/brix/files.h"

#include <QSet>
#include <QStringList>

#include <cmath>

namespace workbench {

namespace {

using namespace recordingformat;

/// A ten-millionth of a degree is a centimetre.
QString positionText(double degrees)
{
    return QString::number(degrees, 'f', 7);
}

QString azimuthText(double degrees)
{
    constexpr double steps = 1e4; // per degree
    // Rounded first: what is nearly 360 becomes 0.
    return QString::number(geodesy::normalizedAzimuth(std::round(degrees * steps) / steps), 'f', 4);
}

QByteArray lineText(const QStringList& fields)
{
    return fields.join(QLatin1Char(',')).toUtf8() + '\n';
}

QByteArray headerText()
{
    QStringList names;
    for (const char* name : columnNames)
        names += QLatin1String(name);
    return lineText(names);
}

QByteArray bearingText(int shot, const DfResult& result, const StationResult& station)
{
    const std::optional<TrueEmitter>& truth = result.truth;
    return lineText({
        QString::number(shot),
        result.date.toString(QLatin1String(dateFormat)),
        truth ? csv::quoted(truth->name) : QString(),
        csv::quoted(station.stationName),
        positionText(station.position->latitude),
        positionText(station.position->longitude),
        azimuthText(*station.azimuth),
        truth ? positionText(truth->position.latitude) : QString(),
        truth ? positionText(truth->position.longitude) : QString(),
    });
}

/// Why a result cannot be written; empty when it can.
QString objection(const DfResult& result)
{
    QSet<QString> names;
    for (const StationResult& station : result.stations) {
        if (!station.azimuth)
            continue;
        if (!result.date.isValid())
            return QStringLiteral("the result has no date");
        if (result.truth && result.truth->name.isEmpty())
            return QStringLiteral("the transmitter has no name");
        if (station.stationName.isEmpty())
            return QStringLiteral("station %1 has no name").arg(station.stationId);
        if (!station.position)
            return QStringLiteral("station %1 has no position").arg(station.stationName);
        if (names.contains(station.stationName))
            return QStringLiteral("station %1 has two bearings").arg(station.stationName);
        names.insert(station.stationName);
    }
    return {};
}

} // namespace

RecordingWriter::RecordingWriter(const QString& file)
    : m_file(file)
{
    if (!m_file.open(QIODevice::WriteOnly))
        fail(m_file.errorString());
    else
        write(headerText());
}

bool RecordingWriter::append(const DfResult& result)
{
    if (!m_file.isOpen())
        return false;
    const QString reason = objection(result);
    if (!reason.isEmpty())
        return fail(reason);
    QByteArray text;
    for (const StationResult& station : result.stations) {
        if (station.azimuth)
            text += bearingText(m_shots + 1, result, station);
    }
    if (!write(text))
        return false;
    ++m_shots;
    return true;
}

bool RecordingWriter::commit()
{
    if (!m_file.isOpen())
        return false;
    if (!m_file.commit())
        return fail(m_file.errorString());
    m_error.clear();
    return true;
}

bool RecordingWriter::fail(const QString& reason)
{
    m_error = m_file.fileName() + QLatin1String(": cannot be written: ") + reason;
    return false;
}

bool RecordingWriter::write(const QByteArray& text)
{
    if (Brix::WriteWhole(m_file, text)) {
        m_error.clear();
        return true;
    }
    fail(m_file.errorString());
    // Given up: nobody knows which part of a line has been written.
    m_file.cancelWriting();
    m_file.commit();
    return false;
}

} // namespace workbench
