#pragma once

#include "app/screenshot.h"
#include "drivers/recordingwriter.h"
#include "filework/savefile.h"
#include "guicomponentbase/parametersetstore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>

#include <vector>

namespace testsupport {

/// Something that writes a file as a whole.
struct Writer
{
    const char* name;
    const char* fileName;
    /// Writes content that differs with @p version, so much that it does not fit into any buffer when @p isLong. The
    /// sentence for people when that fails; empty when it was written.
    QString (*write)(const QString& file, int version, bool isLong);
};

inline QString writeParameterSet(const QString& file, int version, bool isLong)
{
    const QFileInfo place(file);
    const QString text = QString(isLong ? 200000 : 20, QLatin1Char('0' + static_cast<char>(version)));
    return VelmarGui::ParameterSetStore(place.path())
        .Save(place.completeBaseName(), QStringLiteral("<Set>%1</Set>").arg(text));
}

inline QString writeExport(const QString& file, int version, bool isLong)
{
    const QByteArray content(isLong ? 200000 : 20, static_cast<char>('0' + version));
    return workbench::saveFile(file, content).value_or(QString());
}

inline QString writeScreenshot(const QString& file, int version, bool isLong)
{
    QLabel window(QStringLiteral("Version %1").arg(version));
    window.resize(isLong ? QSize(1000, 1000) : QSize(80, 20));
    return workbench::saveScreenshot(window.grab().toImage(), file).value_or(QString());
}

inline QString writeRecording(const QString& file, int version, bool isLong)
{
    workbench::DfResult result;
    result.date = QDate(2026, 5, 14);
    for (int i = 0; i < (isLong ? 3000 : 2); ++i) {
        workbench::StationResult station;
        station.stationId = i + 1;
        station.stationName = QStringLiteral("Station %1").arg(i);
        station.position = workbench::GeoPosition{50.0, 6.0};
        station.azimuth = version;
        result.stations.push_back(station);
    }
    workbench::RecordingWriter writer(file);
    const bool isWritten = writer.append(result) && writer.commit();
    return isWritten ? QString() : writer.errorString();
}

inline const std::vector<Writer>& writers()
{
    static const std::vector<Writer> all{
        {"parameter set", "set.xml", writeParameterSet},
        {"export of the map", "map.csv", writeExport},
        {"screenshot", "window.png", writeScreenshot},
        {"recording", "bearings.csv", writeRecording},
    };
    return all;
}

inline QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// What is in a folder, hidden files too.
inline QStringList filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

} // namespace testsupport
