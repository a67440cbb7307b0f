#include "map/mapmodel.h"

#include "drivers/geodesy.h"
#include "map/geoshapes.h"
#include "map/mapformats.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

MapModel::Clock monotonicClock()
{
    QElapsedTimer timer;
    timer.start();
    return [timer] { return timer.elapsed(); };
}

QString nameOf(int id, const QString& name)
{
    return name.isEmpty() ? MapModel::tr("Station %1").arg(id) : name;
}

std::optional<GeoPosition> onEarth(const std::optional<GeoPosition>& position)
{
    return position && geoshapes::isOnEarth(*position) ? position : std::nullopt;
}

std::optional<double> finite(const std::optional<double>& number)
{
    return number && std::isfinite(*number) ? number : std::nullopt;
}

bool isSame(const std::optional<GeoPosition>& a, const std::optional<GeoPosition>& b)
{
    if (!a || !b)
        return !a && !b;
    return a->latitude == b->latitude && a->longitude == b->longitude;
}

MapUse useOf(BearingUse use)
{
    switch (use) {
    case BearingUse::Used:
        return MapUse::Used;
    case BearingUse::Excluded:
        return MapUse::Excluded;
    case BearingUse::AtFix:
        return MapUse::AtFix;
    case BearingUse::Unusable:
        break;
    }
    return MapUse::Unusable;
}

} // namespace

QString useText(MapUse use)
{
    switch (use) {
    case MapUse::NoBearing:
        return MapModel::tr("no bearing");
    case MapUse::Used:
        return MapModel::tr("used");
    case MapUse::BelowThreshold:
        return MapModel::tr("low quality");
    case MapUse::Excluded:
        return MapModel::tr("excluded");
    case MapUse::Unusable:
        return MapModel::tr("unusable");
    case MapUse::AtFix:
        return MapModel::tr("at the fix");
    case MapUse::Compared:
        return MapModel::tr("compared");
    }
    return {};
}

MapModel::MapModel(QObject* parent)
    : MapModel(monotonicClock(), parent)
{
}

MapModel::MapModel(Clock clock, QObject* parent)
    : QAbstractTableModel(parent)
    , m_clock(std::move(clock))
{
}

void MapModel::setStations(const std::vector<StationInfo>& stations)
{
    beginResetModel();
    m_stations.clear();
    m_rows.clear();
    m_earlier.clear();
    m_result.reset();
    m_fix.reset();
    m_history.reset();
    for (const StationInfo& info : stations) {
        MapStation station;
        station.id = info.id;
        station.name = nameOf(info.id, info.name);
        station.position = onEarth(info.position);
        m_rows.insert(info.id, static_cast<int>(m_stations.size()));
        m_stations.push_back(station);
    }
    endResetModel();
    emit stationsChanged();
    emit bearingsChanged();
}

void MapModel::addResult(const DfResult& result, const std::optional<HistoryFix>& history)
{
    addResults({result}, history);
}

void MapModel::addResults(const std::vector<DfResult>& results, const std::optional<HistoryFix>& history)
{
    bool haveMoved = false;
    for (const DfResult& result : results) {
        keepAsEarlier();
        haveMoved = takeOver(result) || haveMoved;
    }
    m_history = history;
    forgetFaded();
    computeFix();
    if (haveMoved)
        emit stationsChanged();
    emit bearingsChanged();
}

/// True when stations have come or moved.
bool MapModel::takeOver(const DfResult& result)
{
    for (MapStation& station : m_stations) {
        station.azimuth.reset();
        station.sigma.reset();
        station.quality.reset();
        station.level.reset();
        station.error = DfError::None;
    }

    std::vector<MapStation> added;
    QHash<int, std::size_t> addedPlaces;
    for (const StationResult& each : result.stations) {
        if (m_rows.contains(each.stationId) || addedPlaces.contains(each.stationId))
            continue;
        addedPlaces.insert(each.stationId, added.size());
        MapStation station;
        station.id = each.stationId;
        station.name = nameOf(each.stationId, each.stationName);
        added.push_back(station);
    }
    insert(std::move(added));

    bool haveMoved = !addedPlaces.isEmpty();
    for (const StationResult& each : result.stations)
        haveMoved = merge(each) || haveMoved;
    m_result = result;
    m_result->stations.clear();
    m_resultTime = m_clock();
    ++m_resultNumber;
    return haveMoved;
}

void MapModel::insert(std::vector<MapStation> stations)
{
    if (stations.empty())
        return;
    const int first = static_cast<int>(m_stations.size());
    beginInsertRows({}, first, first + static_cast<int>(stations.size()) - 1);
    for (MapStation& station : stations) {
        m_rows.insert(station.id, static_cast<int>(m_stations.size()));
        m_stations.push_back(std::move(station));
    }
    endInsertRows();
}

/// True when the station is elsewhere now, or has another name.
bool MapModel::merge(const StationResult& result)
{
    MapStation& station = m_stations[static_cast<std::size_t>(m_rows.value(result.stationId))];
    station.azimuth = finite(result.azimuth);
    station.sigma = finite(result.sigma);
    station.quality = finite(result.quality);
    station.level = finite(result.level);
    station.error = result.error;
    bool hasChanged = false;
    if (!result.stationName.isEmpty() && result.stationName != station.name) {
        station.name = result.stationName;
        hasChanged = true;
    }
    if (result.position && !isSame(onEarth(result.position), station.position)) {
        station.position = onEarth(result.position);
        hasChanged = true;
    }
    return hasChanged;
}

void MapModel::keepAsEarlier()
{
    for (const MapStation& station : m_stations) {
        if (station.hasLine())
            m_earlier.push_back({station.id, *station.position, *station.azimuth, m_resultNumber, m_resultTime});
    }
    if (m_earlier.size() > mostEarlierBearings) {
        const auto surplus = static_cast<std::ptrdiff_t>(m_earlier.size() - mostEarlierBearings);
        m_earlier.erase(m_earlier.begin(), m_earlier.begin() + surplus);
    }
}

void MapModel::forgetFaded()
{
    const auto firstKept = std::find_if(m_earlier.begin(), m_earlier.end(), [this](const EarlierBearing& bearing) {
        return freshness(bearing.time) > 0.0;
    });
    if (firstKept == m_earlier.begin())
        return;
    m_earlier.erase(m_earlier.begin(), firstKept);
    emit earlierForgotten();
}

double MapModel::freshness(qint64 time) const
{
    const double age = static_cast<double>(m_clock() - time);
    return std::clamp(1.0 - age / static_cast<double>(lifetime), 0.0, 1.0);
}

void MapModel::setQualityThreshold(std::optional<int> threshold)
{
    if (threshold == m_qualityThreshold)
        return;
    m_qualityThreshold = threshold;
    announceUse();
}

bool MapModel::setAssumedSigma(double sigma)
{
    if (!(sigma >= leastSigma && sigma <= greatestSigma))
        return false;
    if (sigma != m_assumedSigma) {
        m_assumedSigma = sigma;
        announceUse();
    }
    return true;
}

bool MapModel::setProbability(double probability)
{
    if (!(probability > 0.0 && probability < 1.0))
        return false;
    if (probability != m_probability) {
        m_probability = probability;
        announceUse();
    }
    return true;
}

bool MapModel::setExcluded(int stationId, bool excluded)
{
    const auto row = rowOf(stationId);
    if (!row)
        return false;
    MapStation& station = m_stations[static_cast<std::size_t>(*row)];
    if (station.excluded != excluded) {
        station.excluded = excluded;
        announceUse();
    }
    return true;
}

void MapModel::announceUse()
{
    if (m_result)
        computeFix();
    else if (!m_stations.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
    emit useChanged();
}

double MapModel::sigmaOf(const MapStation& station) const
{
    // A simulated bearing may be without any noise.
    return std::clamp(station.sigma.value_or(m_assumedSigma), leastSigma, greatestSigma);
}

bool MapModel::isBelowThreshold(const MapStation& station) const
{
    return m_qualityThreshold && wholePercent(station.quality.value_or(0.0)) < *m_qualityThreshold;
}

void MapModel::computeFix()
{
    for (MapStation& station : m_stations) {
        station.residual.reset();
        station.distance.reset();
        station.use = station.azimuth ? MapUse::Unusable : MapUse::NoBearing;
    }
    if (m_history)
        compareWithHistory();
    else
        locateByBearings();
    if (!m_stations.empty())
        emit dataChanged(index(0, 0), index(rowCount() - 1, ColumnCount - 1));
}

void MapModel::locateByBearings()
{
    std::vector<Bearing> bearings;
    std::vector<MapStation*> owners;
    for (MapStation& station : m_stations) {
        if (!station.hasLine())
            continue;
        bearings.push_back(
            {*station.position, *station.azimuth, sigmaOf(station), station.excluded || isBelowThreshold(station)});
        owners.push_back(&station);
    }

    m_fix = positionFix(bearings);
    for (std::size_t i = 0; i < bearings.size(); ++i) {
        MapStation& station = *owners[i];
        station.use = MapUse::Used;
        if (const Fix* const found = fix()) {
            const BearingCheck& check = found->bearings[i];
            station.use = useOf(check.use);
            station.residual = check.residual;
            station.distance = check.distance;
        }
        leaveOut(station);
    }
}

void MapModel::compareWithHistory()
{
    constexpr double fullCircle = 360.0; // degrees
    const Fix* const found = fix();
    for (MapStation& station : m_stations) {
        if (!station.hasLine())
            continue;
        station.use = MapUse::Compared;
        if (found != nullptr) {
            const geodesy::Line line = geodesy::line(*station.position, found->position);
            station.residual = std::remainder(*station.azimuth - line.azimuth, fullCircle);
            station.distance = line.distance;
        }
        leaveOut(station);
    }
}

/// Two reasons to leave it out: the operator knows of his own.
void MapModel::leaveOut(MapStation& station) const
{
    if (station.excluded)
        station.use = MapUse::Excluded;
    else if (isBelowThreshold(station))
        station.use = MapUse::BelowThreshold;
}

const MapStation* MapModel::station(int id) const
{
    const auto row = rowOf(id);
    return row ? &m_stations[static_cast<std::size_t>(*row)] : nullptr;
}

std::optional<int> MapModel::rowOf(int stationId) const
{
    const auto row = m_rows.constFind(stationId);
    return row == m_rows.constEnd() ? std::nullopt : std::optional<int>(*row);
}

const Fix* MapModel::fix() const
{
    if (m_history)
        return std::get_if<Fix>(&m_history->located);
    return m_fix ? std::get_if<Fix>(&*m_fix) : nullptr;
}

std::optional<ErrorEllipse> MapModel::ellipse() const
{
    const Fix* const found = fix();
    return found == nullptr ? std::nullopt : std::optional(confidenceEllipse(found->covariance, m_probability));
}

QString MapModel::fixText() const
{
    if (!m_fix && !m_history)
        return tr("No result yet.");
    const Fix* const found = fix();
    if (found == nullptr)
        return m_history ? std::get<QString>(m_history->located) : explanation(std::get<NoFix>(*m_fix));
    const ErrorEllipse area = *ellipse();
    QString text = tr("Fix %1").arg(positionText(found->position));
    text += QLatin1Char('\n') + tr("%1 ellipse %2, major axis at %3°")
                                    .arg(percentText(m_probability), sizeText(area))
                                    .arg(area.azimuth, 0, 'f', 1);
    text += QLatin1Char('\n') + originText(*found);
    if (found->degreesOfFreedom > 0)
        text += tr(", χ² %1 (degrees of freedom: %2)").arg(found->chiSquare, 0, 'f', 2).arg(found->degreesOfFreedom);
    return text;
}

QString MapModel::originText(const Fix& fix) const
{
    if (m_history) {
        const QString text =
            tr("Stored results: %1, usable bearings: %2").arg(m_history->results).arg(m_history->bearings);
        return m_history->isComplete ? text : text + tr(" (the newest of more)");
    }
    const auto used = std::count_if(fix.bearings.begin(), fix.bearings.end(),
                                    [](const BearingCheck& check) { return check.use == BearingUse::Used; });
    return tr("%1 bearings used").arg(used);
}

MapSnapshot MapModel::snapshot() const
{
    const Fix* const found = fix();
    return {m_stations, m_result,      found == nullptr ? std::nullopt : std::optional(*found),
            ellipse(),  m_probability, fixText()};
}

int MapModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_stations.size());
}

int MapModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString MapModel::valueText(const MapStation& station, int column) const
{
    const auto number = [](const std::optional<double>& value, int decimals, const QString& unit) {
        return value ? fixedText(*value, decimals) + unit : QStringLiteral("---");
    };
    switch (column) {
    case StationColumn:
        return stationText(station.name);
    case BearingColumn:
        return station.azimuth ? azimuthText(*station.azimuth) : QStringLiteral("---");
    case QualityColumn:
        return number(station.quality, 0, QStringLiteral(" %"));
    case ResidualColumn:
        return number(station.residual, 1, QStringLiteral("°"));
    case UseColumn:
        return station.position ? useText(station.use) : tr("no position");
    default:
        return {};
    }
}

QVariant MapModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const MapStation& station = m_stations[static_cast<std::size_t>(index.row())];
    const bool isNumber = index.column() != StationColumn && index.column() != UseColumn;
    switch (role) {
    case Qt::DisplayRole:
        return valueText(station, index.column());
    case Qt::ToolTipRole:
        return station.position ? positionText(*station.position) : tr("The position is unknown.");
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter | (isNumber ? Qt::AlignRight : Qt::AlignLeft));
    case Qt::CheckStateRole:
        if (index.column() == StationColumn)
            return station.excluded ? Qt::Unchecked : Qt::Checked;
        return {};
    default:
        return {};
    }
}

bool MapModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != StationColumn || role != Qt::CheckStateRole)
        return false;
    return setExcluded(m_stations[static_cast<std::size_t>(index.row())].id, value.toInt() == Qt::Unchecked);
}

Qt::ItemFlags MapModel::flags(const QModelIndex& index) const
{
    const Qt::ItemFlags common = QAbstractTableModel::flags(index);
    return index.column() == StationColumn ? common | Qt::ItemIsUserCheckable : common;
}

QVariant MapModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    const QStringList titles{tr("Station"), tr("Bearing"), tr("Quality"), tr("Off fix"), tr("Use")};
    const QStringList explanations{tr("Checked: its bearing may be part of the fix"),
                                   tr("Degrees clockwise from true north"), tr("Percent"),
                                   tr("Bearing minus direction of the fix"), tr("What the fix makes of the bearing")};
    switch (role) {
    case Qt::DisplayRole:
        return titles.value(section);
    case Qt::ToolTipRole:
        return explanations.value(section);
    default:
        return {};
    }
}

} // namespace workbench
