#pragma once

#include "map/geojson.h"

#include <QObject>
#include <QTimer>

#include <memory>

namespace workbench {

class FileWork;
class MapScene;

/// The background of the map, from a GeoJSON file. Files are read and put on the plane of the map on another thread;
/// only one at a time. Until a file is read to its end, and when it is bad, the present background stays.
class MapBackground : public QObject
{
    Q_OBJECT
public:
    /// @p scene lives longer.
    explicit MapBackground(MapScene& scene, QObject* parent = nullptr);
    ~MapBackground() override;

    [[nodiscard]] bool isReading() const { return m_reading != nullptr; }
    /// Whether nothing is read and nothing is put on another plane.
    [[nodiscard]] bool isSettled() const { return !m_reading && !m_projecting; }
    [[nodiscard]] bool isShown() const { return m_shapes != nullptr; }

public slots:
    /// Shows what is in @p file in place of the present background. A file that is still being read is given up.
    void open(const QString& file);
    /// Gives up the file that is being read.
    void cancel();
    /// Takes the background away.
    void remove();

signals:
    /// Begun with a file, or ended.
    void readingChanged(bool isReading);
    /// Of the file that is read, in percent.
    void progressed(int percent);
    /// The file that was opened is shown, or why it is not: a sentence for people. Not for a file that was given up.
    void finished(bool isShown, const QString& text);
    void shownChanged(bool isShown); ///< there is a background now, or none any more
    void settled();                  ///< isSettled() has become true

private:
    struct Task;
    struct Outcome;

    void take(const QString& file, const std::shared_ptr<Task>& task, const Outcome& outcome);

    void putOnPlane();
    void endReading();
    void tellWhenSettled();

    MapScene& m_scene;
    FileWork* m_files;
    QTimer m_progressTimer;
    std::shared_ptr<Task> m_reading;                       // of a file; null: none
    std::shared_ptr<Task> m_projecting;                    // of the present background
    std::shared_ptr<const std::vector<GeoShape>> m_shapes; // of the present background; null: there is none
};

} // namespace workbench
