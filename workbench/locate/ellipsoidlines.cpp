#include "locate/ellipsoidlines.h"

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/Math.hpp>

#include <algorithm>

namespace workbench::locate {

using GeographicLib::Geodesic;
using GeographicLib::Math;

Sight sightOf(const GeoPosition& station, double azimuth, const GeoPosition& target)
{
    Sight sight;
    double azimuthAtStation = 0.0;
    Geodesic::WGS84().Inverse(station.latitude, station.longitude, target.latitude, target.longitude, sight.distance,
                              azimuthAtStation, sight.azimuthAtEnd, sight.reducedLength);
    sight.residual = Math::AngDiff(azimuthAtStation, azimuth);
    return sight;
}

void addTo(NormalEquations& equations, const Sight& sight, double sigma)
{
    // At a station itself, and opposite to it, the azimuth has no derivative.
    constexpr double leastReducedLength = 1e-2;

    double sinEnd = 0.0;
    double cosEnd = 0.0;
    Math::sincosd(sight.azimuthAtEnd, sinEnd, cosEnd);
    const double scale = 1.0 / (std::max(sight.reducedLength, leastReducedLength) * sigma);
    equations.add(sight.residual * Math::degree() / sigma, cosEnd * scale, -sinEnd * scale);
}

NormalEquations EllipsoidLines::equations(const GeoPosition& position) const
{
    NormalEquations result;
    for (const Line& line : m_lines)
        addTo(result, sightOf(line.station, line.azimuth, position), line.sigma);
    return result;
}

GeoPosition EllipsoidLines::moved(const GeoPosition& position, const Step& step)
{
    GeoPosition there;
    Geodesic::WGS84().Direct(position.latitude, position.longitude, Math::atan2d(step.first, step.second),
                             step.length(), there.latitude, there.longitude);
    return there;
}

} // namespace workbench::locate
