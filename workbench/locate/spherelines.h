#pragma once

#include "locate/geoposition.h"
#include "locate/normalequations.h"

#include <limits>
#include <vector>

namespace workbench::locate {

/// In the axes of the Earth: z towards the north pole, x towards longitude 0 on the equator.
struct Vector
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// How two lines of bearing meet.
enum class Crossing
{
    InFront,  ///< once, in front of both stations
    Behind,   ///< behind a station or at it
    Parallel, ///< not in front, and at an angle that is no greater than the bearings are uncertain
};

/// Lines of bearing as great circles of the unit sphere, where crossings, residuals and derivatives need no series.
/// Good for finding where to start on the ellipsoid.
///
/// The ellipsoid is mapped onto the sphere by the conformal latitude (J. P. Snyder, "Map Projections: A Working
/// Manual", 1987, equation 3-1): it keeps all angles, so that the bearings of a small network are right as they are.
class SphereLines
{
public:
    using Position = Vector;                    ///< of length 1
    static constexpr double longestStep = 0.3;  ///< radians
    static constexpr double resolution = 1e-11; ///< radians, less than 0.1 mm

    void reserve(std::size_t lines) { m_lines.reserve(lines); }
    /// @p azimuth in degrees, @p sigma in radians.
    void add(const GeoPosition& station, double azimuth, double sigma);
    [[nodiscard]] std::size_t size() const { return m_lines.size(); }

    /// False when all stations are at one place (to a centimetre).
    [[nodiscard]] bool haveDifferentStations() const;
    /// True when a position is more than a quarter round the Earth away from every station.
    [[nodiscard]] bool isFarFromAll(const Vector& position) const;
    /// The crossing of two of the lines, the nearer of the two that great circles have. @p position is set when it is
    /// in front.
    [[nodiscard]] Crossing crossing(std::size_t first, std::size_t second, Vector& position) const;
    /// Where it exceeds @p most, the walk over the lines ends there, with a value above @p most.
    [[nodiscard]] double chiSquare(const Vector& position, double most = std::numeric_limits<double>::infinity()) const;
    [[nodiscard]] const Vector& station(std::size_t line) const { return m_lines[line].station; }
    /// What chi-square comes down to along the bearing of the line towards its own station: that of the bearings from
    /// elsewhere. Ends early like chiSquare().
    [[nodiscard]] double chiSquareAtStation(std::size_t line, double most) const;

    /// What one step of Gauss and Newton from @p position solves.
    [[nodiscard]] NormalEquations equations(const Vector& position) const;
    [[nodiscard]] static Vector moved(const Vector& position, const Step& step);
    /// The step that leads from one position to another one nearby.
    [[nodiscard]] static Step stepBetween(const Vector& from, const Vector& to);
    [[nodiscard]] static GeoPosition onEllipsoid(const Vector& position);

private:
    /// A perpendicular frame: up, along the bearing, and to the right of it.
    struct Line
    {
        Vector station;
        Vector ahead;
        Vector right;
        double sigma = 0.0;

        /// Measured minus computed, in standard deviations.
        [[nodiscard]] double residual(const Vector& position) const;
    };

    std::vector<Line> m_lines;
};

} // namespace workbench::locate
