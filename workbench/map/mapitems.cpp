#include "map/mapitems.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QPaintEngine>
#include <QPainter>
#include <QPen>
#include <QStyleOptionGraphicsItem>
#include <QVarLengthArray>

#include <algorithm>
#include <cmath>
#include <limits>

namespace workbench {

namespace {

constexpr double signRadius = 6.0; // pixels, like all sizes of signs
constexpr double markRadius = 11.0;
constexpr double textDistance = 14.0;

QFont signFont()
{
    return QApplication::font();
}

double distanceToSegment(const QPointF& point, const QPointF& from, const QPointF& to)
{
    const QPointF along = to - from;
    const double squaredLength = QPointF::dotProduct(along, along);
    const double share =
        squaredLength > 0.0 ? std::clamp(QPointF::dotProduct(point - from, along) / squaredLength, 0.0, 1.0) : 0.0;
    const QPointF off = point - (from + along * share);
    return std::hypot(off.x(), off.y());
}

} // namespace

MapSign::MapSign(Shape shape, MapLayer layer)
    : m_shape(shape)
{
    setFlag(ItemIgnoresTransformations);
    setZValue(layer);
    measureText();
}

void MapSign::setText(const QString& text)
{
    if (text == m_text)
        return;
    m_text = text;
    measureText();
}

void MapSign::measureText()
{
    prepareGeometryChange();
    const QFontMetricsF font(signFont());
    const double halfHeight = std::ceil(std::max(markRadius + 2.0, font.height()));
    const double width = std::ceil(2.0 * markRadius + textDistance + font.horizontalAdvance(m_text));
    m_bounds = {-markRadius - 2.0, -halfHeight, width, 2.0 * halfHeight};
    forgetPicture();
}

void MapSign::setColors(const QColor& sign, const QColor& text, const QColor& ground)
{
    if (sign == m_color && text == m_textColor && ground == m_ground)
        return;
    m_color = sign;
    m_textColor = text;
    m_ground = ground;
    forgetPicture();
}

void MapSign::setMarked(bool marked)
{
    if (marked == m_isMarked)
        return;
    m_isMarked = marked;
    forgetPicture();
}

void MapSign::forgetPicture()
{
    m_picture = QPixmap();
    update();
}

void MapSign::paint(QPainter* painter, const QStyleOptionGraphicsItem* /*option*/, QWidget* /*widget*/)
{
    if (painter->paintEngine()->type() != QPaintEngine::Raster) {
        paintSign(painter); // a drawing that others will scale
        return;
    }
    const double pixels = painter->device()->devicePixelRatioF();
    if (m_picture.isNull() || m_picture.devicePixelRatioF() != pixels) {
        m_picture = QPixmap((m_bounds.size() * pixels).toSize());
        m_picture.setDevicePixelRatio(pixels);
        m_picture.fill(Qt::transparent);
        QPainter picture(&m_picture);
        picture.translate(-m_bounds.topLeft());
        paintSign(&picture);
    }
    painter->drawPixmap(m_bounds.topLeft(), m_picture);
}

void MapSign::paintSign(QPainter* painter) const
{
    painter->setRenderHint(QPainter::Antialiasing);
    if (m_isMarked) {
        painter->setPen(QPen(m_color, 2.0));
        painter->setBrush(Qt::NoBrush);
        painter->drawEllipse(QPointF(), markRadius, markRadius);
    }
    if (m_shape == Shape::Station) {
        painter->setPen(QPen(m_ground, 1.0));
        painter->setBrush(m_color);
        painter->drawPolygon(QPolygonF({{0.0, -signRadius}, {signRadius, signRadius}, {-signRadius, signRadius}}));
    } else {
        painter->setPen(QPen(m_color, 2.0));
        painter->setBrush(Qt::NoBrush);
        painter->drawEllipse(QPointF(), signRadius, signRadius);
        painter->drawLine(QPointF(-signRadius, 0.0), QPointF(signRadius, 0.0));
        painter->drawLine(QPointF(0.0, -signRadius), QPointF(0.0, signRadius));
    }
    // A rim in the colour of the ground keeps the text readable on lines.
    QPainterPath letters;
    letters.addText(textDistance, -signRadius / 2.0, signFont(), m_text);
    painter->strokePath(letters, QPen(m_ground, 3.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->fillPath(letters, m_textColor);
}

EllipseItem::EllipseItem()
{
    setZValue(EllipseLayer);
}

BearingItem::BearingItem(int stationId, int result, qint64 time)
    : m_stationId(stationId)
    , m_result(result)
    , m_time(time)
{
    setZValue(BearingLayer);
}

void BearingItem::setLatest(bool isLatest)
{
    m_isLatest = isLatest;
    setZValue(isLatest ? BearingLayer : EarlierLayer);
}

void BearingItem::setSmooth(bool isSmooth)
{
    m_isSmooth = isSmooth;
    update();
}

void BearingItem::setLine(const QPolygonF& line)
{
    m_line = line;
    m_bounds = line.boundingRect();
    QPainterPath path;
    path.addPolygon(line);
    setPath(path);
}

double BearingItem::distanceTo(const QPointF& point) const
{
    double least = std::numeric_limits<double>::infinity();
    for (int i = 1; i < m_line.size(); ++i)
        least = std::min(least, distanceToSegment(point, m_line[i - 1], m_line[i]));
    return least;
}

void BearingItem::setLook(MapUse use, const QColor& color, bool marked)
{
    m_isMarked = marked;
    const double width = marked ? 3.5 : m_isLatest ? 1.8 : 1.0;
    const bool isSolid = use == MapUse::Used || use == MapUse::Compared;
    const Qt::PenStyle style = isSolid ? Qt::SolidLine : use == MapUse::BelowThreshold ? Qt::DashLine : Qt::DotLine;
    // Pieces of a full line meet without lying on one another.
    QPen pen(color, width, style, style == Qt::SolidLine ? Qt::FlatCap : Qt::SquareCap);
    pen.setCosmetic(true);
    setPen(pen);
}

/// Piece by piece where that looks the same: an outline of the whole line costs several times as much.
void BearingItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* widget)
{
    if (pen().style() != Qt::SolidLine || painter->paintEngine()->type() != QPaintEngine::Raster) {
        QGraphicsPathItem::paint(painter, option, widget);
        return;
    }
    QVarLengthArray<QLineF, 16> pieces;
    for (int i = 1; i < m_line.size(); ++i)
        pieces.append({m_line[i - 1], m_line[i]});
    painter->setRenderHint(QPainter::Antialiasing, m_isSmooth);
    painter->setPen(pen());
    painter->drawLines(pieces.constData(), pieces.size());
}

BackgroundItem::BackgroundItem()
{
    setZValue(BackgroundLayer);
    setFlag(ItemUsesExtendedStyleOption); // tells what of it is to be painted
}

void BackgroundItem::setShapes(std::vector<PlaneShape> shapes)
{
    prepareGeometryChange();
    m_shapes = std::move(shapes);
    m_bounds = QRectF();
    for (const PlaneShape& shape : m_shapes) {
        constexpr double surroundings = 1.0; // a lone point has an extent too
        m_bounds |= shape.bounds.adjusted(-surroundings, -surroundings, surroundings, surroundings);
    }
    update();
}

void BackgroundItem::setColors(const MapColors& colors)
{
    m_land = colors.land;
    m_coast = colors.coast;
    m_place = colors.place;
    update();
}

void BackgroundItem::paint(QPainter* painter, const QStyleOptionGraphicsItem* option, QWidget* /*widget*/)
{
    const QRectF& exposed = option->exposedRect;
    const double metresPerPixel = 1.0 / painter->worldTransform().m11();
    const auto isExposed = [&](const QRectF& bounds) { // also when it has no width or height
        return bounds.left() <= exposed.right() && bounds.right() >= exposed.left() &&
               bounds.top() <= exposed.bottom() && bounds.bottom() >= exposed.top();
    };
    QPen line(m_coast, 1.0);
    line.setCosmetic(true);
    QPen point(m_coast, 5.0, Qt::SolidLine, Qt::RoundCap);
    point.setCosmetic(true);

    std::vector<const PlaneShape*> named;
    for (const PlaneShape& shape : m_shapes) {
        if (!isExposed(shape.bounds))
            continue;
        if (!shape.name.isEmpty())
            named.push_back(&shape);
        if (shape.kind == GeoShape::Kind::Points) {
            painter->setPen(point);
            painter->drawPoints(shape.points);
            continue;
        }
        if (std::max(shape.bounds.width(), shape.bounds.height()) < metresPerPixel)
            continue; // less than a pixel
        const PlaneShape::Drawing& drawing = shape.drawingAt(metresPerPixel);
        painter->fillPath(drawing.area, m_land);
        painter->setPen(line);
        for (const QPolygonF& each : drawing.lines)
            painter->drawPolyline(each);
    }
    paintNames(painter, named);
}

void BackgroundItem::paintNames(QPainter* painter, const std::vector<const PlaneShape*>& shapes) const
{
    constexpr std::size_t most = 200;
    constexpr double margin = 6.0; // pixels
    const QTransform toScreen = painter->worldTransform();
    const QRectF screen(painter->viewport());
    painter->save();
    painter->resetTransform();
    painter->setFont(signFont());
    painter->setPen(m_place);
    const QFontMetricsF font(signFont());
    std::vector<QRectF> taken;
    for (const PlaneShape* const shape : shapes) {
        const QPointF place = toScreen.map(shape->namePlace);
        const auto isTaken = [&](const QRectF& room) {
            return std::any_of(taken.begin(), taken.end(), [&](const QRectF& each) { return each.intersects(room); });
        };
        if (!screen.contains(place) || isTaken({place, QSizeF(1.0, 1.0)}))
            continue;
        const double width = font.horizontalAdvance(shape->name);
        const bool isPoint = shape->kind == GeoShape::Kind::Points;
        if (!isPoint && toScreen.mapRect(shape->bounds).width() < width)
            continue;
        const QPointF middle = isPoint ? place + QPointF(width / 2.0 + margin, 0.0) : place;
        const QRectF room(middle.x() - width / 2.0, middle.y() - font.height() / 2.0, width, font.height());
        if (isTaken(room))
            continue;
        painter->drawText(room, Qt::AlignCenter | Qt::TextDontClip | Qt::TextSingleLine, shape->name);
        taken.push_back(room.adjusted(-margin, -margin, margin, margin));
        if (taken.size() == most)
            break;
    }
    painter->restore();
}

} // namespace workbench
