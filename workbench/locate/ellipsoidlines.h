#pragma once

#include "locate/geoposition.h"
#include "locate/normalequations.h"

#include <vector>

namespace workbench::locate {

/// What a station would measure of a position: the geodesic to it on the WGS84 ellipsoid, from C. F. F. Karney,
/// "Algorithms for geodesics", J. Geodesy 87, 2013.
struct Sight
{
    double distance = 0.0;      ///< m
    double residual = 0.0;      ///< measured minus geodesic azimuth, degrees, from -180 to 180
    double azimuthAtEnd = 0.0;  ///< degrees
    double reducedLength = 0.0; ///< m: how far apart geodesics end that begin one radian apart
};

[[nodiscard]] Sight sightOf(const GeoPosition& station, double azimuth, const GeoPosition& target);

/// Adds a used bearing to equations in metres towards east and north at the target. The derivatives of its azimuth are
/// exact: with the azimuth at the end and the reduced length m12, d azi1 / d east = cos(azi2) / m12 and
/// d azi1 / d north = -sin(azi2) / m12 (C. F. F. Karney, the same, section 3). @p sigma in radians.
void addTo(NormalEquations& equations, const Sight& sight, double sigma);

/// Lines of bearing as geodesics of the WGS84 ellipsoid. Axes of steps: east and north, in m.
class EllipsoidLines
{
public:
    using Position = GeoPosition;
    static constexpr double longestStep = 2e6; ///< m
    static constexpr double resolution = 1e-4; ///< m

    void reserve(std::size_t lines) { m_lines.reserve(lines); }
    /// @p azimuth in degrees, @p sigma in radians.
    void add(const GeoPosition& station, double azimuth, double sigma) { m_lines.push_back({station, azimuth, sigma}); }

    /// One inverse geodesic a line.
    [[nodiscard]] NormalEquations equations(const GeoPosition& position) const;
    [[nodiscard]] static GeoPosition moved(const GeoPosition& position, const Step& step);

private:
    struct Line
    {
        GeoPosition station;
        double azimuth = 0.0;
        double sigma = 0.0;
    };

    std::vector<Line> m_lines;
};

} // namespace workbench::locate
