#pragma once

#include "map/mapcolors.h"
#include "map/mapprojection.h"

#include <QGraphicsScene>
#include <QPointer>
#include <QTimer>

#include <optional>
#include <vector>

namespace workbench {

class BackgroundItem;
class BearingItem;
class EllipseItem;
class FixItem;
class MapModel;
class StationItem;
struct PlaneShape;

/// The items of the map, in metres on the plane of its projection.
///
/// The projection is centred on the stations and stays until their centre is more than 50 km away from its own; what is
/// shown of the map has no part in it.
class MapScene : public QGraphicsScene
{
    Q_OBJECT
public:
    /// @p model lives longer.
    explicit MapScene(MapModel& model, QObject* parent = nullptr);

    [[nodiscard]] const MapProjection& projection() const { return m_projection; }
    void setColors(const MapColors& colors);
    [[nodiscard]] const MapColors& colors() const { return m_colors; }

    /// Stations, fix and ellipse, with a margin; a region of the size of a continent when there is nothing.
    [[nodiscard]] QRectF dataRect() const;
    /// The station whose sign is within @p reach metres of @p point, else that of the nearest line of the latest result
    /// within it.
    [[nodiscard]] std::optional<int> stationAt(const QPointF& point, double reach) const;

    /// m; how long lines of bearing are: long enough to be seen well beyond the network and the fix.
    [[nodiscard]] double lineLength() const;

    /// What lies behind everything else, on the plane of projection(). It goes when that becomes another one.
    void setBackground(std::vector<PlaneShape> shapes);

    /// Marks a station with its bearings; nothing: none.
    void setMarked(std::optional<int> stationId);
    [[nodiscard]] std::optional<int> marked() const { return m_marked; }

public slots:
    /// Fades the lines by their age and removes those that have faded. Called by a timer while any line still
    /// fades.
    void refreshAges();

signals:
    /// All positions on the plane are others now.
    void projectionChanged();
    void contentChanged();

protected:
    bool event(QEvent* event) override;

private:
    void placeStations();
    void centreProjection();
    void placeBearings();
    void placeFix();
    void refreshLooks();
    void removeForgotten();
    [[nodiscard]] QPolygonF onMap(const std::vector<GeoPosition>& line) const;

    MapModel& m_model;
    MapProjection m_projection;
    MapColors m_colors;
    std::optional<int> m_marked;
    std::vector<StationItem*> m_stations;
    std::vector<BearingItem*> m_bearings;
    BackgroundItem* m_background = nullptr;
    FixItem* m_fix = nullptr; // both are there always, and visible when there is a fix
    EllipseItem* m_ellipse = nullptr;
    QTimer m_ageTimer;
};

} // namespace workbench
