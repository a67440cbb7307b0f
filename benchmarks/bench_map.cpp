// The macros that register benchmarks make globals. clazy:excludeall=non-pod-global-static

// A frame of the map with 1000 stations and their lines of bearing while it is moved and zoomed, against drawing the
// same polylines bare.

#include "benchmarkmain.h"

#include "drivers/geodesy.h"
#include "map/mapcanvas.h"
#include "map/mapitems.h"
#include "map/mapmodel.h"
#include "map/mapscene.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPainter>

#include <cmath>
#include <vector>

using namespace workbench;

namespace {

constexpr int stationCount = 1000;
constexpr QSize canvasSize(1000, 800);

/// Stations around an emitter, up to 300 km away from it.
DfResult networkResult()
{
    const GeoPosition emitter{48.1, 11.6};
    DfResult result;
    result.frequency = 433.92e6;
    for (int id = 1; id <= stationCount; ++id) {
        StationResult station;
        station.stationId = id;
        station.stationName = QStringLiteral("Station %1").arg(id);
        const double direction = id * 2.399963; // the golden angle: evenly spread
        const double distance = 3.0 * std::sqrt(id / double(stationCount));
        station.position = GeoPosition{emitter.latitude + distance * std::cos(direction),
                                       emitter.longitude + 1.5 * distance * std::sin(direction)};
        station.azimuth = std::fmod(geodesy::line(*station.position, emitter).azimuth + 360.0 + id % 7 * 0.3, 360.0);
        station.sigma = 1.0;
        station.quality = 40 + id % 60;
        result.stations.push_back(station);
    }
    return result;
}

struct Map
{
    MapModel model;
    MapScene scene{model};
    MapCanvas canvas{scene};

    Map()
    {
        model.addResult(networkResult());
        canvas.resize(canvasSize);
        canvas.QWidget::show();
        canvas.fit();
        QCoreApplication::processEvents();
    }
};

void press(QWidget& widget, Qt::Key key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&widget, &event);
}

/// Paints after every key, of which the second takes back what the first did.
void frames(benchmark::State& state, Qt::Key there, Qt::Key back)
{
    Map map;
    std::size_t turn = 0;
    for (auto _ : state) {
        press(map.canvas, turn++ % 2 == 0 ? there : back);
        map.canvas.viewport()->repaint();
    }
}

void pan(benchmark::State& state)
{
    frames(state, Qt::Key_Left, Qt::Key_Right);
}

void zoom(benchmark::State& state)
{
    frames(state, Qt::Key_Plus, Qt::Key_Minus);
}

/// The lines of the map on a ground, and nothing else.
class BareLines : public QWidget
{
public:
    explicit BareLines(const Map& map)
    {
        const QTransform toView = map.canvas.viewportTransform();
        const QList<QGraphicsItem*> items = map.scene.items();
        for (const QGraphicsItem* const item : items) {
            if (const auto* const bearing = qgraphicsitem_cast<const BearingItem*>(item))
                m_lines.push_back({toView.map(bearing->line()), bearing->pen()});
        }
        setAttribute(Qt::WA_OpaquePaintEvent);
        resize(canvasSize);
        show();
        QCoreApplication::processEvents();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.fillRect(rect(), Qt::white);
        for (const Line& line : m_lines) {
            painter.setPen(line.pen);
            painter.drawPolyline(line.points);
        }
    }

private:
    struct Line
    {
        QPolygonF points;
        QPen pen;
    };
    std::vector<Line> m_lines;
};

void bareLines(benchmark::State& state)
{
    const Map map;
    BareLines lines(map);
    for (auto _ : state)
        lines.repaint();
}

BENCHMARK(pan);
BENCHMARK(zoom);
BENCHMARK(bareLines);

} // namespace

DFL_BENCHMARK_MAIN(QApplication)
