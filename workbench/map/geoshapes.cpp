#include "map/geoshapes.h"

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/GeodesicLine.hpp>
#include <QtMath>

#include <algorithm>
#include <cmath>

namespace workbench::geoshapes {

namespace {

using GeographicLib::Geodesic;

/// @p longitude moved by full turns to within half a turn of @p reference.
double nearest(double longitude, double reference)
{
    return reference + std::remainder(longitude - reference, 360.0);
}

/// The latitude at which the geodesic from @p from to @p to crosses the date line, which lies between them.
double latitudeAtDateLine(const GeoPosition& from, const GeoPosition& to)
{
    const auto line = Geodesic::WGS84().InverseLine(from.latitude, from.longitude, to.latitude, to.longitude);
    const double side = from.longitude < 0.0 ? -1.0 : 1.0;
    double before = 0.0;
    double behind = line.Distance();
    GeoPosition position;
    constexpr int halvings = 50; // from the Earth's circumference to far below a millimetre
    for (int i = 0; i < halvings; ++i) {
        const double middle = (before + behind) / 2.0;
        line.Position(middle, position.latitude, position.longitude);
        (position.longitude * side > 0.0 ? before : behind) = middle;
    }
    return position.latitude;
}

/// The part of a ring on one side of a meridian, both given by unwrapped longitudes (I. E. Sutherland, G. W. Hodgman,
/// "Reentrant polygon clipping", Communications of the ACM 17, 1974).
Line clipped(const Line& ring, double meridian, bool keepsEast)
{
    const auto isInside = [&](const GeoPosition& p) {
        return keepsEast ? p.longitude >= meridian : p.longitude <= meridian;
    };
    Line result;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const GeoPosition& here = ring[i];
        const GeoPosition& next = ring[(i + 1) % ring.size()];
        if (isInside(here))
            result.push_back(here);
        if (isInside(here) != isInside(next)) {
            const double part = (meridian - here.longitude) / (next.longitude - here.longitude);
            result.push_back({here.latitude + part * (next.latitude - here.latitude), meridian});
        }
    }
    return result;
}

bool hasArea(const Line& ring)
{
    double twiceArea = 0.0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const GeoPosition& here = ring[i];
        const GeoPosition& next = ring[(i + 1) % ring.size()];
        twiceArea += here.longitude * next.latitude - next.longitude * here.latitude;
    }
    return std::abs(twiceArea) > 1e-12;
}

} // namespace

bool isOnEarth(const GeoPosition& position)
{
    return std::isfinite(position.longitude) && std::abs(position.latitude) <= 90.0;
}

GeoPosition centreOf(const std::vector<GeoPosition>& positions)
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    for (const GeoPosition& position : positions) {
        const double latitude = qDegreesToRadians(position.latitude);
        const double longitude = qDegreesToRadians(position.longitude);
        x += std::cos(latitude) * std::cos(longitude);
        y += std::cos(latitude) * std::sin(longitude);
        z += std::sin(latitude);
    }
    const double horizontal = std::hypot(x, y);
    const double rounding = 1e-9 * static_cast<double>(positions.size());
    if (std::hypot(horizontal, z) < rounding)
        return positions.front();
    return {qRadiansToDegrees(std::atan2(z, horizontal)), qRadiansToDegrees(std::atan2(y, x))};
}

Line bearingLine(const GeoPosition& station, double azimuth, double length)
{
    constexpr double longestPiece = 50e3;
    const int pieces = std::clamp(static_cast<int>(std::ceil(length / longestPiece)), 1, 128);
    const auto geodesic = Geodesic::WGS84().Line(station.latitude, station.longitude, azimuth);
    Line line;
    line.reserve(static_cast<std::size_t>(pieces) + 1);
    for (int i = 0; i <= pieces; ++i) {
        GeoPosition position;
        geodesic.Position(length * i / pieces, position.latitude, position.longitude);
        line.push_back(position);
    }
    return line;
}

Line ellipseOutline(const GeoPosition& centre, const ErrorEllipse& ellipse)
{
    if (!std::isfinite(ellipse.semiMajor) || !std::isfinite(ellipse.semiMinor))
        return {};
    constexpr int corners = 72;
    Line ring;
    ring.reserve(corners + 1);
    for (int i = 0; i < corners; ++i) {
        const double angle = -2.0 * M_PI * i / corners;
        const double along = ellipse.semiMajor * std::cos(angle);
        const double across = ellipse.semiMinor * std::sin(angle);
        const double azimuth = ellipse.azimuth + qRadiansToDegrees(std::atan2(across, along));
        GeoPosition corner;
        Geodesic::WGS84().Direct(centre.latitude, centre.longitude, azimuth, std::hypot(along, across), corner.latitude,
                                 corner.longitude);
        ring.push_back(corner);
    }
    ring.push_back(ring.front());
    return ring;
}

std::vector<Line> splitAtDateLine(const Line& line)
{
    std::vector<Line> parts;
    for (const GeoPosition& position : line) {
        const GeoPosition next{position.latitude, std::remainder(position.longitude, 360.0)};
        if (parts.empty()) {
            parts.emplace_back();
        } else if (const GeoPosition last = parts.back().back(); std::abs(next.longitude - last.longitude) > 180.0) {
            const double latitude = latitudeAtDateLine(last, next);
            const double side = std::copysign(180.0, last.longitude);
            parts.back().push_back({latitude, side});
            parts.push_back({{latitude, -side}});
        }
        parts.back().push_back(next);
    }
    return parts;
}

std::vector<Line> splitRingAtDateLine(const Line& ring)
{
    if (ring.empty())
        return {};
    Line unwrapped;
    for (const GeoPosition& position : ring) {
        const double reference = unwrapped.empty() ? 0.0 : unwrapped.back().longitude;
        unwrapped.push_back({position.latitude, nearest(position.longitude, reference)});
    }
    const bool surroundsPole = std::abs(unwrapped.back().longitude - unwrapped.front().longitude) > 180.0;
    if (surroundsPole) {
        const double pole = std::copysign(90.0, ring.front().latitude);
        unwrapped.push_back({pole, unwrapped.back().longitude});
        unwrapped.push_back({pole, unwrapped.front().longitude});
    } else {
        unwrapped.pop_back(); // the first again
    }

    std::vector<Line> parts;
    for (const double turn : {-360.0, 0.0, 360.0}) {
        Line part = clipped(clipped(unwrapped, turn - 180.0, true), turn + 180.0, false);
        if (!hasArea(part))
            continue;
        for (GeoPosition& position : part)
            position.longitude -= turn;
        part.push_back(part.front());
        parts.push_back(std::move(part));
    }
    return parts;
}

} // namespace workbench::geoshapes
