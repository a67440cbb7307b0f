#pragma once

#include "drivers/dfresult.h"
#include "locate/errorellipse.h"

#include <vector>

/// Lines and areas on the WGS84 ellipsoid. Longitudes of results lie from -180 to 180.
namespace workbench::geoshapes {

using Line = std::vector<GeoPosition>;

/// True for two finite numbers with a latitude within +-90 degrees; every longitude is one.
[[nodiscard]] bool isOnEarth(const GeoPosition& position);

/// Where the mean of the directions from the Earth's centre points; the first position when they cancel out. All
/// positions are on Earth, and there is at least one.
[[nodiscard]] GeoPosition centreOf(const std::vector<GeoPosition>& positions);

/// The geodesic that leaves @p station with @p azimuth (degrees), @p length metres long, in pieces of at most 50 km and
/// at most 128 of them. It begins at the station. At a pole the azimuth counts from the meridian of the station's
/// longitude.
[[nodiscard]] Line bearingLine(const GeoPosition& station, double azimuth, double length);

/// The outline of an error ellipse as a closed ring, counterclockwise: its radii are geodesics from @p centre. Empty
/// when an axis is no finite number.
[[nodiscard]] Line ellipseOutline(const GeoPosition& centre, const ErrorEllipse& ellipse);

/// Cuts a line where it crosses the date line; the parts end and begin on it, at 180 and -180 degrees.
[[nodiscard]] std::vector<Line> splitAtDateLine(const Line& line);

/// Cuts the area inside a closed ring at the date line into closed rings of the same sense. A ring around a pole
/// becomes one that runs along the pole's edge of a map of longitudes and latitudes.
[[nodiscard]] std::vector<Line> splitRingAtDateLine(const Line& ring);

} // namespace workbench::geoshapes
