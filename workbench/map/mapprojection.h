#pragma once

#include "drivers/dfresult.h"

#include <QPointF>

#include <optional>

namespace workbench {

/// The plane of the map: azimuthal equidistant about a centre (J. P. Snyder, "Map Projections: A Working Manual", 1987,
/// chapter 25), on the WGS84 ellipsoid. Distance and azimuth from the centre are true, at every latitude and across the
/// date line; at a distance d from it lengths across are stretched by about d² / 6 R², 0.4 percent at 1000 km.
///
/// Plane coordinates are metres, x towards east and y towards south as on a screen.
class MapProjection
{
public:
    explicit MapProjection(const GeoPosition& centre);

    [[nodiscard]] const GeoPosition& centre() const { return m_centre; }
    /// @p position is on Earth.
    [[nodiscard]] QPointF toMap(const GeoPosition& position) const;
    /// Nothing beyond the edge of the map, which is the antipode of the centre.
    [[nodiscard]] std::optional<GeoPosition> toEarth(const QPointF& point) const;

    /// m, from the centre to the edge of the map.
    static constexpr double radius = 20003931.0;

private:
    GeoPosition m_centre;
};

} // namespace workbench
