#include "map/planeshapes.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

struct Corner
{
    GeoPosition position; // its longitude may be more than a turn away from what is usual
    QPointF point;
};

double distance(const QPointF& a, const QPointF& b)
{
    return std::hypot(a.x() - b.x(), a.y() - b.y());
}

/// From one longitude to the next: the shorter way, but a full turn stays one.
double turn(double from, double to)
{
    const double plain = to - from;
    return std::abs(plain) < 360.0 ? std::remainder(plain, 360.0) : plain;
}

std::vector<GeoPosition> unwrapped(const std::vector<GeoPosition>& part)
{
    std::vector<GeoPosition> result{part.front()};
    result.reserve(part.size() + 2);
    for (std::size_t i = 1; i < part.size(); ++i)
        result.push_back({part[i].latitude, result.back().longitude + turn(part[i - 1].longitude, part[i].longitude)});
    return result;
}

bool isOnDateLine(const GeoPosition& position)
{
    return 180.0 - std::abs(std::remainder(position.longitude, 360.0)) < 1e-9;
}

/// Not an edge of the thing itself, but of the plate of longitudes and latitudes.
bool isSeam(const GeoPosition& a, const GeoPosition& b)
{
    const bool isPole = std::abs(a.latitude) == 90.0 && a.latitude == b.latitude;
    const bool isDateLine = std::abs(a.longitude - b.longitude) < 1e-9 && isOnDateLine(a) && isOnDateLine(b);
    return isPole || isDateLine;
}

/// Whether a meridian north of @p place is crossed an odd number of times by the closed @p ring.
bool isCrossedOddly(const std::vector<GeoPosition>& ring, const GeoPosition& place)
{
    bool isOdd = false;
    for (std::size_t i = 1; i < ring.size(); ++i) {
        const GeoPosition& a = ring[i - 1];
        const GeoPosition& b = ring[i];
        const auto [west, east] = std::minmax(a.longitude, b.longitude);
        const double first = place.longitude + 360.0 * std::ceil((west - place.longitude) / 360.0);
        // A whole turn is far more than rounding can be off. NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter)
        for (double longitude = first; longitude < east; longitude += 360.0) {
            const double share = (longitude - a.longitude) / (b.longitude - a.longitude);
            isOdd ^= a.latitude + share * (b.latitude - a.latitude) > place.latitude;
        }
    }
    return isOdd;
}

/// Leaves points out that are too near to the one before; the ends stay. The number of those left out.
int thin(std::vector<QPolygonF>& lines, double leastDistance)
{
    int leftOut = 0;
    for (QPolygonF& line : lines) {
        QPolygonF thinner{QVector<QPointF>{line.first()}};
        for (int i = 1; i < line.size(); ++i) {
            if (i == line.size() - 1 || distance(line[i], thinner.last()) >= leastDistance)
                thinner += line[i];
        }
        leftOut += line.size() - thinner.size();
        line = thinner;
    }
    return leftOut;
}

PlaneShape::Drawing drawing(const std::vector<QPolygonF>& lines, const std::vector<QPolygonF>& rings, bool isInsideOut)
{
    PlaneShape::Drawing result;
    result.lines = lines;
    for (const QPolygonF& ring : rings) {
        result.area.addPolygon(ring);
        result.area.closeSubpath();
    }
    if (isInsideOut)
        result.area.addEllipse(QPointF(), MapProjection::radius, MapProjection::radius);
    return result;
}

class Drawer
{
public:
    Drawer(const MapProjection& projection, const GeoJsonProgress& goesOn)
        : m_projection(projection)
        , m_goesOn(goesOn)
        , m_testPlace(*projection.toEarth(testPoint))
    {
    }

    [[nodiscard]] std::optional<std::vector<PlaneShape>> draw(const std::vector<GeoShape>& shapes)
    {
        for (const GeoShape& shape : shapes) {
            for (const auto& part : shape.parts)
                m_mostCorners += 3 * part.size();
        }
        std::vector<PlaneShape> drawn;
        drawn.reserve(shapes.size());
        for (const GeoShape& shape : shapes) {
            m_share = static_cast<double>(drawn.size()) / static_cast<double>(shapes.size());
            drawn.push_back(drawnOf(shape));
            if (m_isCancelled)
                return std::nullopt;
        }
        return drawn;
    }

private:
    PlaneShape drawnOf(const GeoShape& shape)
    {
        PlaneShape drawn;
        drawn.kind = shape.kind;
        drawn.name = shape.name;
        if (shape.kind == GeoShape::Kind::Points) {
            for (const auto& part : shape.parts)
                drawn.points += corner(part.front()).point;
            drawn.bounds = drawn.points.boundingRect();
            drawn.namePlace = drawn.points.first();
            return drawn;
        }
        m_lines.clear();
        m_rings.clear();
        bool isInsideOnEarth = false;
        for (const auto& part : shape.parts) {
            std::vector<GeoPosition> positions = unwrapped(part);
            if (shape.kind == GeoShape::Kind::Lines) {
                addLine(positions);
            } else {
                const std::size_t size = positions.size();
                closeAroundPole(positions);
                addRing(positions, size);
                isInsideOnEarth ^= isCrossedOddly(positions, m_testPlace);
            }
        }
        addDrawings(drawn, isInsideOnEarth);
        return drawn;
    }

    static void closeAroundPole(std::vector<GeoPosition>& ring)
    {
        constexpr double halfTurn = 180.0;
        if (std::abs(ring.back().longitude - ring.front().longitude) < halfTurn)
            return;
        const GeoPosition first = ring.front();
        const double pole = std::copysign(90.0, first.latitude);
        ring.push_back({pole, ring.back().longitude});
        ring.push_back({pole, first.longitude});
        ring.push_back(first);
    }

    void addLine(const std::vector<GeoPosition>& positions)
    {
        Corner from = corner(positions.front());
        QPolygonF line{QVector<QPointF>{from.point}};
        for (std::size_t i = 1; i < positions.size(); ++i) {
            const Corner to = corner(positions[i]);
            extend(line, from, to);
            from = to;
        }
        m_lines.push_back(line);
    }

    /// Only the edges between the first @p size positions are those of the thing itself.
    void addRing(const std::vector<GeoPosition>& positions, std::size_t size)
    {
        Corner from = corner(positions.front());
        QPolygonF ring{QVector<QPointF>{from.point}};
        QPolygonF outline = ring;
        for (std::size_t i = 1; i < positions.size(); ++i) {
            const Corner to = corner(positions[i]);
            const int before = ring.size();
            extend(ring, from, to);
            if (i >= size || isSeam(from.position, to.position)) {
                if (outline.size() > 1)
                    m_lines.push_back(outline);
                outline = QPolygonF{QVector<QPointF>{to.point}};
            } else {
                outline += ring.mid(before);
            }
            from = to;
        }
        if (outline.size() > 1)
            m_lines.push_back(outline);
        m_rings.push_back(ring);
    }

    Corner corner(const GeoPosition& position)
    {
        constexpr int stride = 4096;
        if (++m_corners % stride == 0 && m_goesOn && !m_isCancelled)
            m_isCancelled = !m_goesOn(m_share);
        return {position, m_projection.toMap(position)};
    }

    /// Appends what lies between two corners, and the second one.
    void extend(QPolygonF& line, const Corner& from, const Corner& to)
    {
        // Half-way points of longer pieces could lie on the straight line by chance.
        constexpr double longestPiece = 5.0; // degrees
        const double latitudes = to.position.latitude - from.position.latitude;
        const double longitudes = to.position.longitude - from.position.longitude;
        const double size = std::max({std::abs(latitudes), std::abs(longitudes), 1.0});
        const int pieces = m_corners < m_mostCorners ? static_cast<int>(std::ceil(size / longestPiece)) : 1;
        Corner before = from;
        for (int i = 1; i <= pieces; ++i) {
            const double share = static_cast<double>(i) / pieces;
            const Corner next = i == pieces ? to
                                            : corner({from.position.latitude + share * latitudes,
                                                      from.position.longitude + share * longitudes});
            refine(line, before, next, deepest);
            before = next;
        }
    }

    void refine(QPolygonF& line, const Corner& from, const Corner& to, int depth)
    {
        constexpr double shortestPiece = 5e3; // m; straight enough, but for the surroundings of the antipode
        const bool isShort = distance(from.point, to.point) < shortestPiece;
        if (!isShort && depth > 0 && m_corners < m_mostCorners && !m_isCancelled) {
            const Corner middle = corner({(from.position.latitude + to.position.latitude) / 2.0,
                                          (from.position.longitude + to.position.longitude) / 2.0});
            // Exact in the middle of the map, and coarser towards its edge, where all is stretched.
            const double tolerance = std::max(20.0, 1e-4 * std::hypot(middle.point.x(), middle.point.y()));
            if (distance(middle.point, (from.point + to.point) / 2.0) > tolerance) {
                refine(line, from, middle, depth - 1);
                refine(line, middle, to, depth - 1);
                return;
            }
        }
        line += to.point;
    }

    void addDrawings(PlaneShape& drawn, bool isInsideOnEarth) const
    {
        bool isInsideOnPlane = false;
        for (const QPolygonF& ring : m_rings) {
            isInsideOnPlane ^= ring.containsPoint(testPoint, Qt::OddEvenFill);
            drawn.bounds |= ring.boundingRect();
        }
        for (const QPolygonF& line : m_lines)
            drawn.bounds |= line.boundingRect();
        // A ring around the antipode of the centre lies on the plane inside out: the edge of the map is part of it.
        const bool isInsideOut = isInsideOnPlane != isInsideOnEarth;
        constexpr double radius = MapProjection::radius;
        if (isInsideOut)
            drawn.bounds = {-radius, -radius, 2.0 * radius, 2.0 * radius};

        std::vector<QPolygonF> lines = m_lines;
        std::vector<QPolygonF> rings = m_rings;
        for (std::size_t i = 0; i < drawn.drawings.size(); ++i) {
            const bool isThinner =
                i > 0 && thin(lines, PlaneShape::details[i]) + thin(rings, PlaneShape::details[i]) > 0;
            drawn.drawings[i] = i == 0 || isThinner ? drawing(lines, rings, isInsideOut) : drawn.drawings[i - 1];
        }
        drawn.namePlace = namePlace(drawn);
    }

    /// In the middle of the longest line, or of the largest ring.
    [[nodiscard]] QPointF namePlace(const PlaneShape& drawn) const
    {
        if (drawn.kind == GeoShape::Kind::Lines) {
            const auto longest = std::max_element(m_lines.begin(), m_lines.end(),
                                                  [](const auto& a, const auto& b) { return a.size() < b.size(); });
            return longest->at(longest->size() / 2);
        }
        const auto size = [](const QPolygonF& ring) {
            const QRectF bounds = ring.boundingRect();
            return bounds.width() * bounds.height();
        };
        const auto largest = std::max_element(m_rings.begin(), m_rings.end(),
                                              [&](const auto& a, const auto& b) { return size(a) < size(b); });
        return largest->boundingRect().center();
    }

    static constexpr int deepest = 16; // halvings of a piece; 5 degrees become 8 m
    // Near the centre, but on none of the whole degrees that edges like to lie on.
    static constexpr QPointF testPoint{317.0, 211.0};

    const MapProjection& m_projection;
    const GeoJsonProgress& m_goesOn;
    GeoPosition m_testPlace;
    double m_share = 0.0;
    std::size_t m_corners = 0;
    std::size_t m_mostCorners = 200000; // and some for each position; then edges stay as straight as they are
    bool m_isCancelled = false;
    std::vector<QPolygonF> m_lines; // of the shape that is drawn
    std::vector<QPolygonF> m_rings;
};

} // namespace

const PlaneShape::Drawing& PlaneShape::drawingAt(double metresPerPixel) const
{
    std::size_t coarsest = 0;
    while (coarsest + 1 < details.size() && details[coarsest + 1] <= metresPerPixel)
        ++coarsest;
    return drawings[coarsest];
}

std::optional<std::vector<PlaneShape>> onPlane(const std::vector<GeoShape>& shapes, const MapProjection& projection,
                                               const GeoJsonProgress& goesOn)
{
    return Drawer(projection, goesOn).draw(shapes);
}

} // namespace workbench
