#pragma once

#include "map/mapcolors.h"
#include "map/mapmodel.h"
#include "map/planeshapes.h"

#include <QGraphicsItem>
#include <QGraphicsPathItem>
#include <QPixmap>

namespace workbench {

/// What stands above what.
enum MapLayer
{
    BackgroundLayer,
    EarlierLayer,
    EllipseLayer,
    BearingLayer,
    StationLayer,
    FixLayer
};

/// A sign of fixed size on the screen with a text beside it. Painted once for the screen and then copied: its letters
/// cost more than many lines.
class MapSign : public QGraphicsItem
{
public:
    enum class Shape
    {
        Station, ///< a triangle
        Fix,     ///< a circle with a cross
    };

    MapSign(Shape shape, MapLayer layer);

    void setText(const QString& text);
    [[nodiscard]] QString text() const { return m_text; }
    /// After the application's font has become another one.
    void measureText();
    void setColors(const QColor& sign, const QColor& text, const QColor& ground);
    void setMarked(bool marked);
    [[nodiscard]] bool isMarked() const { return m_isMarked; }

    [[nodiscard]] QRectF boundingRect() const override { return m_bounds; }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    void paintSign(QPainter* painter) const;
    void forgetPicture();

    Shape m_shape;
    QString m_text;
    QRectF m_bounds;
    QPixmap m_picture; // null: to be painted
    QColor m_color;
    QColor m_textColor;
    QColor m_ground;
    bool m_isMarked = false;
};

class StationItem final : public MapSign
{
public:
    enum
    {
        Type = QGraphicsItem::UserType + 1
    };

    explicit StationItem(int stationId)
        : MapSign(Shape::Station, StationLayer)
        , m_stationId(stationId)
    {
    }
    [[nodiscard]] int type() const override { return Type; }
    [[nodiscard]] int stationId() const { return m_stationId; }

private:
    int m_stationId;
};

class FixItem final : public MapSign
{
public:
    enum
    {
        Type = QGraphicsItem::UserType + 2
    };

    FixItem()
        : MapSign(Shape::Fix, FixLayer)
    {
    }
    [[nodiscard]] int type() const override { return Type; }
};

/// Where the fix lies with the stated probability.
class EllipseItem final : public QGraphicsPathItem
{
public:
    enum
    {
        Type = QGraphicsItem::UserType + 3
    };

    EllipseItem();
    [[nodiscard]] int type() const override { return Type; }
};

/// A line of bearing.
class BearingItem final : public QGraphicsPathItem
{
public:
    enum
    {
        Type = QGraphicsItem::UserType + 4
    };

    /// Of the result with the number @p result; @p time by the model's clock.
    BearingItem(int stationId, int result, qint64 time);
    [[nodiscard]] int type() const override { return Type; }
    [[nodiscard]] int stationId() const { return m_stationId; }
    [[nodiscard]] int result() const { return m_result; }
    [[nodiscard]] qint64 time() const { return m_time; }

    /// Whether it is of the latest result.
    void setLatest(bool isLatest);
    [[nodiscard]] bool isLatest() const { return m_isLatest; }
    /// Smooth edges cost several times as much. All lines are smooth at first.
    void setSmooth(bool isSmooth);
    [[nodiscard]] bool isSmooth() const { return m_isSmooth; }

    void setLine(const QPolygonF& line);
    [[nodiscard]] const QPolygonF& line() const { return m_line; }
    /// m on the map from @p point to the nearest point of the line.
    [[nodiscard]] double distanceTo(const QPointF& point) const;

    /// Full when it is part of the fix, dashed when its quality is too low, else dotted.
    void setLook(MapUse use, const QColor& color, bool marked);
    [[nodiscard]] bool isMarked() const { return m_isMarked; }

    [[nodiscard]] QRectF boundingRect() const override { return m_bounds; }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    int m_stationId;
    int m_result;
    qint64 m_time;
    bool m_isLatest = true;
    bool m_isSmooth = true;
    bool m_isMarked = false;
    QPolygonF m_line;
    QRectF m_bounds;
};

/// What lies behind everything else: coasts, borders, places. Of its names only those are painted that have room.
class BackgroundItem final : public QGraphicsItem
{
public:
    enum
    {
        Type = QGraphicsItem::UserType + 5
    };

    BackgroundItem();
    [[nodiscard]] int type() const override { return Type; }

    void setShapes(std::vector<PlaneShape> shapes);
    [[nodiscard]] const std::vector<PlaneShape>& shapes() const { return m_shapes; }
    void setColors(const MapColors& colors);

    [[nodiscard]] QRectF boundingRect() const override { return m_bounds; }
    void paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget) override;

private:
    void paintNames(QPainter* painter, const std::vector<const PlaneShape*>& shapes) const;

    std::vector<PlaneShape> m_shapes;
    QRectF m_bounds;
    QColor m_land;
    QColor m_coast;
    QColor m_place;
};

} // namespace workbench
