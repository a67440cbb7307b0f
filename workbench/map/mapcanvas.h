#pragma once

#include "drivers/dfresult.h"
#include "map/graticule.h"

#include <QGraphicsView>
#include <QPixmap>

#include <optional>
#include <vector>

namespace workbench {

class MapScene;

/// The map itself: the scene with graticule and scale bar, to be zoomed and moved by mouse and keys. Until the operator
/// zooms or moves it, it keeps the data in sight by itself; fit() goes back to that.
///
/// Wheel, + and - zoom; dragging and the arrow keys move; 0 and F fit; a click picks; a double click and the space bar
/// include or exclude a bearing.
class MapCanvas : public QGraphicsView
{
    Q_OBJECT
public:
    /// @p scene lives longer.
    explicit MapCanvas(MapScene& scene, QWidget* parent = nullptr);

    [[nodiscard]] double metresPerPixel() const;
    /// Whether the map keeps the data in sight by itself.
    [[nodiscard]] bool isFollowing() const { return m_isFollowing; }
    /// Nothing beyond the edge of the map. @p point in the viewport.
    [[nodiscard]] std::optional<GeoPosition> positionAt(const QPoint& point) const;
    [[nodiscard]] std::optional<int> stationAt(const QPoint& point) const;

    /// From half a metre a pixel to the whole Earth.
    static constexpr double finestScale = 0.5;
    static constexpr double coarsestScale = 80000.0;

public slots:
    void fit();
    void zoomIn();
    void zoomOut();

signals:
    /// A station or bearing was clicked; nothing: the ground.
    void picked(std::optional<int> stationId);
    /// The bearing of a station shall be included or excluded.
    void toggleRequested(int stationId);
    /// The mouse is over another position; nothing: over none.
    void pointedAt(std::optional<workbench::GeoPosition> position);

protected:
    void drawBackground(QPainter* painter, const QRectF& rect) override;
    void drawForeground(QPainter* painter, const QRectF& rect) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void show(const QRectF& area);
    void follow();
    void zoom(double factor, const QPoint& fixedPoint);
    void move(const QPoint& pixels);
    void refreshGraticule();
    void drawLegend(QPainter* painter) const;
    void drawScaleBar(QPainter* painter) const;
    void drawGraticuleLabels(QPainter* painter) const;

    MapScene& m_scene;
    bool m_isFollowing = true;
    bool m_isDragging = false;
    QPoint m_pressedAt;
    QPoint m_draggedFrom;
    std::vector<GraticuleLine> m_graticule;
    QRectF m_graticuleArea;        // on the plane, somewhat more than was visible when it was computed
    double m_graticuleScale = 0.0; // metres per pixel
    QPixmap m_legend;              // labels and scale bar as they were painted last; null: to be painted
    QTransform m_legendTransform;  // that of the viewport with which they were
};

} // namespace workbench
