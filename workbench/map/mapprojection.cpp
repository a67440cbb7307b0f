#include "map/mapprojection.h"

#include <GeographicLib/AzimuthalEquidistant.hpp>

#include <cmath>

namespace workbench {

MapProjection::MapProjection(const GeoPosition& centre)
    : m_centre(centre)
{
}

QPointF MapProjection::toMap(const GeoPosition& position) const
{
    double east = 0.0;
    double north = 0.0;
    GeographicLib::AzimuthalEquidistant().Forward(m_centre.latitude, m_centre.longitude, position.latitude,
                                                  position.longitude, east, north);
    return {east, -north};
}

std::optional<GeoPosition> MapProjection::toEarth(const QPointF& point) const
{
    if (!(std::hypot(point.x(), point.y()) <= radius))
        return std::nullopt;
    GeoPosition position;
    GeographicLib::AzimuthalEquidistant().Reverse(m_centre.latitude, m_centre.longitude, point.x(), -point.y(),
                                                  position.latitude, position.longitude);
    return position;
}

} // namespace workbench
