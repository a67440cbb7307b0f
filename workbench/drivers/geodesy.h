#pragma once

#include "drivers/dfresult.h"
#include "drivers/scenario.h"

namespace workbench::geodesy {

/// The geodesic from one position to another on the WGS84 ellipsoid.
struct Line
{
    double distance = 0.0; ///< m
    double azimuth = 0.0;  ///< at its beginning, degrees clockwise from true north, 0 <= azimuth < 360
};

/// C. F. F. Karney, "Algorithms for geodesics", J. Geodesy 87, 2013. Between equal positions the azimuth means nothing.
[[nodiscard]] Line line(const GeoPosition& from, const GeoPosition& to);

/// The same direction in degrees as 0 <= azimuth < 360.
[[nodiscard]] double normalizedAzimuth(double azimuth);

/// Where on its track something is at @p time (s): on the geodesic between two points, at constant speed, and at the
/// first or last point before and after. @p track is not empty.
[[nodiscard]] GeoPosition positionOnTrack(const std::vector<TrackPoint>& track, double time);

} // namespace workbench::geodesy
