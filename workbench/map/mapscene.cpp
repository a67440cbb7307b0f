#include "map/mapscene.h"

#include "map/geoshapes.h"
#include "map/mapformats.h"
#include "map/mapitems.h"
#include "map/mapmodel.h"

#include <QBrush>
#include <QEvent>
#include <QGuiApplication>
#include <QHash>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

constexpr double farthestCentre = 50e3; // m, from the centre of the projection
constexpr double shortestLine = 20e3;   // m
constexpr double longestLine = 5000e3;  // m
constexpr double leastDataSize = 10e3;  // m; a lone station is shown with its surroundings
constexpr double latestLeast = 0.45;    // opacity of a bearing that is old, but the latest
constexpr double earlierMost = 0.6;     // opacity of a bearing that has just been replaced
/// Earlier bearings are thin and pale, and nobody sees the edges of hundreds of them.
constexpr std::size_t mostSmoothLines = 200;

template <typename Item>
void deleteAll(std::vector<Item*>& items)
{
    for (Item* const item : items)
        delete item;
    items.clear();
}

} // namespace

MapScene::MapScene(MapModel& model, QObject* parent)
    : QGraphicsScene(parent)
    , m_model(model)
    , m_projection({0.0, 0.0})
    , m_colors(MapColors::fitting(QGuiApplication::palette()))
    , m_background(new BackgroundItem)
    , m_fix(new FixItem)
    , m_ellipse(new EllipseItem)
{
    // Few items that change together: an index would be built more often than asked.
    setItemIndexMethod(NoIndex);
    constexpr double edge = MapProjection::radius * 1.1;
    setSceneRect(-edge, -edge, 2.0 * edge, 2.0 * edge);
    addItem(m_background);
    addItem(m_ellipse);
    addItem(m_fix);

    constexpr int agingInterval = 500; // ms; small steps of a minute
    m_ageTimer.setInterval(agingInterval);
    connect(&m_ageTimer, &QTimer::timeout, this, &MapScene::refreshAges);
    // No item shall outlive its station.
    connect(&m_model, &MapModel::modelAboutToBeReset, this, [this] {
        deleteAll(m_bearings);
        deleteAll(m_stations);
    });
    connect(&m_model, &MapModel::stationsChanged, this, &MapScene::placeStations);
    connect(&m_model, &MapModel::bearingsChanged, this, &MapScene::placeBearings);
    connect(&m_model, &MapModel::earlierForgotten, this, &MapScene::removeForgotten);
    connect(&m_model, &MapModel::useChanged, this, [this] {
        placeFix();
        refreshLooks();
        emit contentChanged();
    });
    placeStations();
    placeBearings();
}

void MapScene::setColors(const MapColors& colors)
{
    m_colors = colors;
    refreshLooks();
    update();
}

bool MapScene::event(QEvent* event)
{
    if (event->type() == QEvent::ApplicationFontChange) {
        for (StationItem* const item : m_stations)
            item->measureText();
        m_fix->measureText();
    }
    return QGraphicsScene::event(event);
}

void MapScene::setBackground(std::vector<PlaneShape> shapes)
{
    m_background->setShapes(std::move(shapes));
}

void MapScene::placeStations()
{
    centreProjection();
    deleteAll(m_stations);
    for (const MapStation& station : m_model.stations()) {
        if (!station.position)
            continue;
        auto* const item = new StationItem(station.id);
        item->setText(stationText(station.name));
        item->setPos(m_projection.toMap(*station.position));
        addItem(item);
        m_stations.push_back(item);
    }
    refreshLooks();
}

void MapScene::centreProjection()
{
    std::vector<GeoPosition> positions;
    for (const MapStation& station : m_model.stations()) {
        if (station.position)
            positions.push_back(*station.position);
    }
    if (positions.empty())
        return;
    const GeoPosition centre = geoshapes::centreOf(positions);
    const QPointF off = m_projection.toMap(centre);
    if (std::hypot(off.x(), off.y()) <= farthestCentre)
        return;
    m_projection = MapProjection(centre);
    m_background->setShapes({});
    deleteAll(m_bearings); // lines of another plane
    placeBearings();
    emit projectionChanged();
}

QPolygonF MapScene::onMap(const std::vector<GeoPosition>& line) const
{
    QPolygonF points;
    points.reserve(static_cast<int>(line.size()));
    for (const GeoPosition& position : line)
        points += m_projection.toMap(position);
    return points;
}

double MapScene::lineLength() const
{
    double reach = 0.0;
    for (const MapStation& station : m_model.stations()) {
        if (!station.position)
            continue;
        const QPointF place = m_projection.toMap(*station.position);
        reach = std::max({reach, 2.0 * std::hypot(place.x(), place.y()), station.distance.value_or(0.0)});
    }
    constexpr double surplus = 1.3;
    return std::clamp(surplus * reach, shortestLine, longestLine);
}

/// A line that is there stays as it is, also when its result is no longer the latest one.
void MapScene::placeBearings()
{
    QHash<std::pair<int, int>, BearingItem*> former; // by station and result
    for (BearingItem* const item : m_bearings)
        former.insert({item->stationId(), item->result()}, item);
    m_bearings.clear();
    const double length = lineLength();
    const auto place = [&](const EarlierBearing& bearing, bool isLatest) {
        BearingItem* item = former.take({bearing.stationId, bearing.result});
        if (item == nullptr) {
            item = new BearingItem(bearing.stationId, bearing.result, bearing.time);
            item->setLine(onMap(geoshapes::bearingLine(bearing.position, bearing.azimuth, length)));
            addItem(item);
        }
        item->setLatest(isLatest);
        m_bearings.push_back(item);
    };
    const std::vector<EarlierBearing>& earlier = m_model.earlierBearings();
    for (const EarlierBearing& bearing : earlier)
        place(bearing, false);
    const bool isSmooth = earlier.size() <= mostSmoothLines;
    for (BearingItem* const item : m_bearings)
        item->setSmooth(isSmooth);
    for (const MapStation& station : m_model.stations()) {
        if (station.hasLine())
            place({station.id, *station.position, *station.azimuth, m_model.resultNumber(), m_model.resultTime()},
                  true);
    }
    qDeleteAll(former);
    placeFix();
    m_ageTimer.start();
    refreshLooks();
    emit contentChanged();
}

void MapScene::placeFix()
{
    const Fix* const fix = m_model.fix();
    m_fix->setVisible(fix != nullptr);
    m_ellipse->setVisible(fix != nullptr);
    if (fix == nullptr)
        return;
    const ErrorEllipse ellipse = *m_model.ellipse();
    m_fix->setPos(m_projection.toMap(fix->position));
    m_fix->setText(tr("%1 (%2)").arg(sizeText(ellipse), percentText(m_model.probability())));
    QPainterPath outline;
    outline.addPolygon(onMap(geoshapes::ellipseOutline(fix->position, ellipse)));
    m_ellipse->setPath(outline);
}

void MapScene::refreshLooks()
{
    for (StationItem* const item : m_stations) {
        item->setColors(m_colors.station, m_colors.text, m_colors.ground);
        item->setMarked(m_marked == item->stationId());
    }
    for (BearingItem* const item : m_bearings) {
        const MapStation& station = *m_model.station(item->stationId());
        const bool isUsed =
            station.use == MapUse::Used || station.use == MapUse::AtFix || station.use == MapUse::Compared;
        if (!item->isLatest()) {
            item->setLook(MapUse::Used, m_colors.unused, false);
        } else {
            item->setLook(station.use,
                          isUsed ? m_colors.ofQuality(station.quality, m_model.qualityThreshold()) : m_colors.unused,
                          m_marked == item->stationId());
        }
    }
    m_background->setColors(m_colors);
    m_fix->setColors(m_colors.fix, m_colors.text, m_colors.ground);
    QPen rim(m_colors.fix, 1.5);
    rim.setCosmetic(true);
    m_ellipse->setPen(rim);
    QColor area = m_colors.fix;
    area.setAlphaF(0.15);
    m_ellipse->setBrush(area);
    refreshAges();
}

void MapScene::refreshAges()
{
    m_model.forgetFaded();
    bool anyFresh = false;
    for (BearingItem* const item : m_bearings) {
        const double freshness = m_model.freshness(item->time());
        anyFresh = anyFresh || freshness > 0.0;
        item->setOpacity(item->isLatest() ? latestLeast + (1.0 - latestLeast) * freshness : earlierMost * freshness);
    }
    if (!anyFresh)
        m_ageTimer.stop();
}

void MapScene::removeForgotten()
{
    const auto isForgotten = [this](const BearingItem* item) {
        return !item->isLatest() && m_model.freshness(item->time()) <= 0.0;
    };
    const auto firstForgotten = std::stable_partition(m_bearings.begin(), m_bearings.end(),
                                                      [&](BearingItem* item) { return !isForgotten(item); });
    std::for_each(firstForgotten, m_bearings.end(), [](BearingItem* item) { delete item; });
    m_bearings.erase(firstForgotten, m_bearings.end());
}

void MapScene::setMarked(std::optional<int> stationId)
{
    if (m_marked == stationId)
        return;
    m_marked = stationId;
    refreshLooks();
}

QRectF MapScene::dataRect() const
{
    QPolygonF points;
    for (const StationItem* const item : m_stations)
        points += item->pos();
    if (m_fix->isVisible())
        points << m_fix->pos() << QPolygonF(m_ellipse->path().boundingRect());
    if (points.isEmpty()) {
        constexpr double nothing = 2000e3;
        return {-nothing, -nothing, 2.0 * nothing, 2.0 * nothing};
    }
    const QRectF tight = points.boundingRect();
    const double least = std::max(0.0, leastDataSize - std::max(tight.width(), tight.height()));
    const double margin = 0.12 * std::max(tight.width(), tight.height()) + least / 2.0;
    return tight.adjusted(-margin, -margin, margin, margin);
}

std::optional<int> MapScene::stationAt(const QPointF& point, double reach) const
{
    std::optional<int> found;
    double least = reach;
    const auto consider = [&](int stationId, double distance) {
        if (distance < least) {
            least = distance;
            found = stationId;
        }
    };
    for (const StationItem* const item : m_stations)
        consider(item->stationId(), std::hypot(item->x() - point.x(), item->y() - point.y()));
    if (found)
        return found;
    for (const BearingItem* const item : m_bearings) {
        if (item->isLatest())
            consider(item->stationId(), item->distanceTo(point));
    }
    return found;
}

} // namespace workbench
