#pragma once

#include "map/mapmodel.h"

#include <QWidget>

#include <functional>
#include <optional>

class QLabel;
class QTableView;

namespace workbench {

class FileWork;
class MapBackground;
class MapCanvas;
class MapScene;

/// The map with the table of its stations, the fix in words, and the means to take all that elsewhere. A station picked
/// on the map or in the table is marked in both, with its bearing. Needs no network. Fed through model().
class MapView : public QWidget
{
    Q_OBJECT
public:
    explicit MapView(QWidget* parent = nullptr);
    /// With a clock of the caller's.
    MapView(MapModel::Clock clock, QWidget* parent);

    [[nodiscard]] MapModel* model() const { return m_model; }
    [[nodiscard]] MapScene* scene() const { return m_scene; }
    [[nodiscard]] MapCanvas* canvas() const { return m_canvas; }
    [[nodiscard]] MapBackground* background() const { return m_background; }
    [[nodiscard]] QTableView* table() const { return m_table; }

public slots:
    /// Asks for a GeoJSON file and shows it as background; message() tells what came of it.
    void chooseBackground();
    /// Writes what is shown now to a file of the kind that its name ends in: ".png" and ".svg" the map as it is seen,
    /// ".csv" the results, ".geojson" and ".kml" stations, bearings and fix. message() tells when the file is written,
    /// or why there is none; nobody waits for it, and it is written even when the view goes meanwhile.
    void exportTo(const QString& file);
    /// Marks a station and its bearing in map and table; nothing: none.
    void pick(std::optional<int> stationId);
    /// Includes the bearing of a station again, or excludes it.
    void toggle(int stationId);
    /// The coordinates of the fix to the clipboard; without a fix nothing.
    void copyFix();

signals:
    /// Something has been done, or not; a sentence for people.
    void message(const QString& text);

private:
    void buildTable();
    [[nodiscard]] QWidget* controls();
    [[nodiscard]] QWidget* readingBar();
    void connectParts();
    void showFix();
    void markSelected();
    void copyCoordinates(const GeoPosition& position);
    void showPointedAt(const std::optional<GeoPosition>& position);
    void popUpMenu(const QPoint& place);
    void exportAs();
    /// Makes the content of a file with this ending from what is shown now, on any thread; null for another ending.
    [[nodiscard]] std::function<QByteArray()> contentOf(const QString& suffix) const;
    [[nodiscard]] QByteArray svgPicture() const;

    MapModel* m_model;
    MapScene* m_scene;
    MapCanvas* m_canvas;
    MapBackground* m_background;
    FileWork* m_files;
    QTableView* m_table;
    QLabel* m_fixText;
    QLabel* m_pointedAt;
    QWidget* m_copyFix = nullptr;
};

} // namespace workbench
