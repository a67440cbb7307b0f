#include "map/mapcanvas.h"

#include "map/mapscene.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPaintEngine>
#include <QPainterPath>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

constexpr double zoomStep = 1.5;
constexpr double pickReach = 8.0; // pixels

/// Where a polyline on the screen first crosses the line on which @p coordinate has @p value.
template <typename Coordinate>
std::optional<QPointF> crossing(const QPolygonF& line, double value, const Coordinate& coordinate)
{
    for (int i = 1; i < line.size(); ++i) {
        const double before = coordinate(line[i - 1]) - value;
        const double behind = coordinate(line[i]) - value;
        if (before * behind < 0.0)
            return line[i - 1] + (line[i] - line[i - 1]) * (before / (before - behind));
    }
    return std::nullopt;
}

void drawRimmed(QPainter* painter, const QPointF& place, const QString& text, const QColor& color, const QColor& rim)
{
    QPainterPath letters;
    letters.addText(place, painter->font(), text);
    painter->strokePath(letters, QPen(rim, 3.0, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->fillPath(letters, color);
}

} // namespace

MapCanvas::MapCanvas(MapScene& scene, QWidget* parent)
    : QGraphicsView(&scene, parent)
    , m_scene(scene)
{
    setObjectName(QStringLiteral("MapCanvas"));
    setAccessibleName(tr("Map"));
    setRenderHint(QPainter::Antialiasing);
    setTransformationAnchor(NoAnchor);
    setResizeAnchor(AnchorViewCenter);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setViewportUpdateMode(FullViewportUpdate); // scale bar and labels stay where they are
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setMinimumSize(20 * fontMetrics().averageCharWidth(), 8 * fontMetrics().height());
    connect(&m_scene, &MapScene::contentChanged, this, &MapCanvas::follow);
    connect(&m_scene, &MapScene::projectionChanged, this, [this] {
        m_graticuleArea = QRectF(); // of another plane
        fit();
    });
    m_scene.setColors(MapColors::fitting(palette()));
    fit();
}

double MapCanvas::metresPerPixel() const
{
    return 1.0 / transform().m11();
}

std::optional<GeoPosition> MapCanvas::positionAt(const QPoint& point) const
{
    return m_scene.projection().toEarth(mapToScene(point));
}

std::optional<int> MapCanvas::stationAt(const QPoint& point) const
{
    return m_scene.stationAt(mapToScene(point), pickReach * metresPerPixel());
}

void MapCanvas::show(const QRectF& area)
{
    const double scale =
        std::max(area.width() / std::max(1, viewport()->width()), area.height() / std::max(1, viewport()->height()));
    const double zoomFactor = 1.0 / std::clamp(scale, finestScale, coarsestScale);
    setTransform(QTransform::fromScale(zoomFactor, zoomFactor));
    centerOn(area.center());
}

void MapCanvas::fit()
{
    m_isFollowing = true;
    show(m_scene.dataRect());
}

/// Moves only when it has to: a map that jumps at every result cannot be read.
void MapCanvas::follow()
{
    if (!m_isFollowing)
        return;
    const QRectF needed = m_scene.dataRect();
    const QRectF visible = mapToScene(viewport()->rect()).boundingRect();
    constexpr double muchTooWide = 3.0;
    const bool isSmall =
        visible.width() > muchTooWide * needed.width() && visible.height() > muchTooWide * needed.height();
    // About half of the margin may be used up first.
    constexpr double share = 0.05;
    const double slack = share * std::max(needed.width(), needed.height());
    if (isSmall || !visible.contains(needed.adjusted(slack, slack, -slack, -slack)))
        show(needed);
}

void MapCanvas::zoom(double factor, const QPoint& fixedPoint)
{
    m_isFollowing = false;
    const QPointF place = mapToScene(fixedPoint);
    const double scale = std::clamp(metresPerPixel() / factor, finestScale, coarsestScale);
    setTransform(QTransform::fromScale(1.0 / scale, 1.0 / scale));
    move(fixedPoint - mapFromScene(place));
}

void MapCanvas::zoomIn()
{
    zoom(zoomStep, viewport()->rect().center());
}

void MapCanvas::zoomOut()
{
    zoom(1.0 / zoomStep, viewport()->rect().center());
}

/// The content of the map by so many pixels.
void MapCanvas::move(const QPoint& pixels)
{
    m_isFollowing = false;
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() - pixels.x());
    verticalScrollBar()->setValue(verticalScrollBar()->value() - pixels.y());
}

void MapCanvas::wheelEvent(QWheelEvent* event)
{
    constexpr double unitsPerDoubling = 240.0; // two notches of a wheel
    zoom(std::exp2(event->angleDelta().y() / unitsPerDoubling), event->position().toPoint());
    event->accept();
}

void MapCanvas::keyPressEvent(QKeyEvent* event)
{
    const int stepX = viewport()->width() / 8;
    const int stepY = viewport()->height() / 8;
    switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal: // the same key without Shift on many keyboards
        zoomIn();
        break;
    case Qt::Key_Minus:
        zoomOut();
        break;
    case Qt::Key_0:
    case Qt::Key_F:
        fit();
        break;
    case Qt::Key_Left:
        move({stepX, 0});
        break;
    case Qt::Key_Right:
        move({-stepX, 0});
        break;
    case Qt::Key_Up:
        move({0, stepY});
        break;
    case Qt::Key_Down:
        move({0, -stepY});
        break;
    case Qt::Key_Space:
        if (m_scene.marked())
            emit toggleRequested(*m_scene.marked());
        break;
    default:
        QGraphicsView::keyPressEvent(event);
    }
}

void MapCanvas::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAt = event->pos();
    m_draggedFrom = event->pos();
    m_isDragging = false;
}

void MapCanvas::mouseMoveEvent(QMouseEvent* event)
{
    emit pointedAt(positionAt(event->pos()));
    if (!(event->buttons() & Qt::LeftButton)) {
        viewport()->setCursor(stationAt(event->pos()) ? Qt::PointingHandCursor : Qt::CrossCursor);
        return;
    }
    if (!m_isDragging && (event->pos() - m_pressedAt).manhattanLength() < QApplication::startDragDistance())
        return;
    m_isDragging = true;
    viewport()->setCursor(Qt::ClosedHandCursor);
    move(event->pos() - m_draggedFrom);
    m_draggedFrom = event->pos();
}

void MapCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && !m_isDragging)
        emit picked(stationAt(event->pos()));
    m_isDragging = false;
}

void MapCanvas::mouseDoubleClickEvent(QMouseEvent* event)
{
    const auto station = stationAt(event->pos());
    if (event->button() == Qt::LeftButton && station)
        emit toggleRequested(*station);
}

bool MapCanvas::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::Leave)
        emit pointedAt(std::nullopt);
    return QGraphicsView::viewportEvent(event);
}

void MapCanvas::resizeEvent(QResizeEvent* event)
{
    QGraphicsView::resizeEvent(event);
    if (m_isFollowing)
        fit();
}

void MapCanvas::changeEvent(QEvent* event)
{
    QGraphicsView::changeEvent(event);
    m_legend = QPixmap(); // of another font, palette or language
    if (event->type() == QEvent::PaletteChange)
        m_scene.setColors(MapColors::fitting(palette()));
}

void MapCanvas::refreshGraticule()
{
    const QRectF visible = mapToScene(viewport()->rect()).boundingRect();
    if (m_graticuleScale == metresPerPixel() && m_graticuleArea.contains(visible))
        return;
    // More than is visible, so that the map can be moved without computing it again at each step.
    const double marginX = visible.width() / 4.0;
    const double marginY = visible.height() / 4.0;
    m_graticuleArea = visible.adjusted(-marginX, -marginY, marginX, marginY);
    m_graticuleScale = metresPerPixel();
    m_graticule = graticule(m_scene.projection(), m_graticuleArea, m_graticuleScale);
    m_legend = QPixmap();
}

void MapCanvas::drawBackground(QPainter* painter, const QRectF& rect)
{
    refreshGraticule();
    painter->fillRect(rect, m_scene.colors().ground);
    QPen pen(m_scene.colors().graticule, 1.0);
    pen.setCosmetic(true);
    painter->setPen(pen);
    for (const GraticuleLine& line : m_graticule)
        painter->drawPolyline(line.points);
}

/// Painted once and then copied until the map is moved or zoomed: letters cost more than many lines.
void MapCanvas::drawForeground(QPainter* painter, const QRectF& /*rect*/)
{
    painter->save();
    painter->resetTransform();
    if (painter->paintEngine()->type() != QPaintEngine::Raster) {
        drawLegend(painter); // a drawing that others will scale
    } else {
        const double pixels = painter->device()->devicePixelRatioF();
        const QSize size = (QSizeF(viewport()->size()) * pixels).toSize();
        const bool isCurrent = m_legend.size() == size && m_legend.devicePixelRatioF() == pixels;
        if (!isCurrent || m_legendTransform != viewportTransform()) {
            m_legend = QPixmap(size);
            m_legend.setDevicePixelRatio(pixels);
            m_legend.fill(Qt::transparent);
            m_legendTransform = viewportTransform();
            QPainter legend(&m_legend);
            legend.setRenderHints(painter->renderHints());
            drawLegend(&legend);
        }
        painter->drawPixmap(0, 0, m_legend);
    }
    painter->restore();
}

void MapCanvas::drawLegend(QPainter* painter) const
{
    painter->setFont(font());
    drawGraticuleLabels(painter);
    drawScaleBar(painter);
}

/// Meridians are named at the upper edge, parallels at the left one.
void MapCanvas::drawGraticuleLabels(QPainter* painter) const
{
    const MapColors& colors = m_scene.colors();
    const double ascent = painter->fontMetrics().ascent();
    constexpr double gap = 4.0;
    const QTransform toView = viewportTransform();
    for (const GraticuleLine& line : m_graticule) {
        const QPolygonF points = toView.map(line.points);
        const auto place = line.isMeridian ? crossing(points, 0.0, [](const QPointF& p) { return p.y(); })
                                           : crossing(points, 0.0, [](const QPointF& p) { return p.x(); });
        if (!place)
            continue;
        const QPointF text = line.isMeridian ? QPointF(place->x() + gap, ascent + gap) : QPointF(gap, place->y() - gap);
        drawRimmed(painter, text, line.label, colors.unused, colors.ground);
    }
}

void MapCanvas::drawScaleBar(QPainter* painter) const
{
    const MapColors& colors = m_scene.colors();
    const ScaleBar bar = scaleBar(metresPerPixel(), std::min(200.0, viewport()->width() / 3.0));
    const double pixels = bar.length / metresPerPixel();
    constexpr double margin = 12.0;
    constexpr double tick = 6.0;
    const QPointF left(margin, viewport()->height() - margin);
    const QPointF right = left + QPointF(pixels, 0.0);
    const QPolygonF line({left - QPointF(0.0, tick), left, right, right - QPointF(0.0, tick)});
    painter->setPen(QPen(colors.ground, 5.0));
    painter->drawPolyline(line);
    painter->setPen(QPen(colors.text, 2.0));
    painter->drawPolyline(line);
    const double width = painter->fontMetrics().horizontalAdvance(bar.text);
    drawRimmed(painter, left + QPointF((pixels - width) / 2.0, -tick), bar.text, colors.text, colors.ground);
}

} // namespace workbench
