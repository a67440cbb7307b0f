#include "drivers/geodesy.h"

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/GeodesicLine.hpp>

#include <algorithm>
#include <cmath>

namespace workbench::geodesy {

using GeographicLib::Geodesic;

Line line(const GeoPosition& from, const GeoPosition& to)
{
    Line result;
    double azimuth = 0.0;
    double azimuthAtEnd = 0.0;
    Geodesic::WGS84().Inverse(from.latitude, from.longitude, to.latitude, to.longitude, result.distance, azimuth,
                              azimuthAtEnd);
    result.azimuth = normalizedAzimuth(azimuth);
    return result;
}

double normalizedAzimuth(double azimuth)
{
    const double reduced = std::fmod(azimuth, 360.0);
    const double positive = reduced < 0.0 ? reduced + 360.0 : reduced;
    // A tiny negative number plus 360 rounds to 360 itself; the sum also turns -0 into 0.
    return positive < 360.0 ? positive + 0.0 : 0.0;
}

GeoPosition positionOnTrack(const std::vector<TrackPoint>& track, double time)
{
    const auto next = std::upper_bound(track.begin(), track.end(), time,
                                       [](double t, const TrackPoint& point) { return t < point.time; });
    if (next == track.begin())
        return track.front().position;
    if (next == track.end())
        return track.back().position;
    const TrackPoint& last = *(next - 1);
    const auto leg = Geodesic::WGS84().InverseLine(last.position.latitude, last.position.longitude,
                                                   next->position.latitude, next->position.longitude);
    GeoPosition position;
    leg.Position(leg.Distance() * (time - last.time) / (next->time - last.time), position.latitude, position.longitude);
    return position;
}

} // namespace workbench::geodesy
