#include "locate/spherelines.h"

#include "locate/significance.h"

#include <GeographicLib/Ellipsoid.hpp>
#include <GeographicLib/Math.hpp>

#include <algorithm>
#include <cmath>

namespace workbench::locate {

namespace {

using GeographicLib::Ellipsoid;
using GeographicLib::Math;

Vector operator+(const Vector& a, const Vector& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
Vector operator-(const Vector& a, const Vector& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vector operator*(const Vector& v, double factor)
{
    return {v.x * factor, v.y * factor, v.z * factor};
}
double dot(const Vector& a, const Vector& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
double length(const Vector& v)
{
    return std::sqrt(dot(v, v));
}

Vector cross(const Vector& a, const Vector& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Two perpendicular axes of the plane that touches the sphere, the same ones for the same position.
struct Axes
{
    Vector first;
    Vector second;

    explicit Axes(const Vector& position)
    {
        // Any vector does that is not along the position.
        const Vector aside = std::abs(position.z) < 0.8 ? Vector{0.0, 0.0, 1.0} : Vector{1.0, 0.0, 0.0};
        const Vector perpendicular = cross(aside, position);
        first = perpendicular * (1.0 / length(perpendicular));
        second = cross(position, first);
    }
};

constexpr double centimetre = 1.6e-9; // radians
constexpr double centimetreSquared = centimetre * centimetre;

} // namespace

void SphereLines::add(const GeoPosition& station, double azimuth, double sigma)
{
    double sinLatitude = 0.0;
    double cosLatitude = 0.0;
    double sinLongitude = 0.0;
    double cosLongitude = 0.0;
    double sinAzimuth = 0.0;
    double cosAzimuth = 0.0;
    Math::sincosd(Ellipsoid::WGS84().ConformalLatitude(station.latitude), sinLatitude, cosLatitude);
    Math::sincosd(station.longitude, sinLongitude, cosLongitude);
    Math::sincosd(azimuth, sinAzimuth, cosAzimuth);

    const Vector east{-sinLongitude, cosLongitude, 0.0};
    const Vector north{-sinLatitude * cosLongitude, -sinLatitude * sinLongitude, cosLatitude};
    Line line;
    line.station = {cosLatitude * cosLongitude, cosLatitude * sinLongitude, sinLatitude};
    line.ahead = east * sinAzimuth + north * cosAzimuth;
    line.right = east * cosAzimuth - north * sinAzimuth;
    line.sigma = sigma;
    m_lines.push_back(line);
}

bool SphereLines::haveDifferentStations() const
{
    return std::any_of(m_lines.begin(), m_lines.end(), [this](const Line& line) {
        return length(line.station - m_lines.front().station) > centimetre;
    });
}

bool SphereLines::isFarFromAll(const Vector& position) const
{
    return std::all_of(m_lines.begin(), m_lines.end(),
                       [&position](const Line& line) { return dot(line.station, position) < 0.0; });
}

Crossing SphereLines::crossing(std::size_t first, std::size_t second, Vector& position) const
{
    const Line& a = m_lines[first];
    const Line& b = m_lines[second];
    constexpr double roundingError = 1e-14;

    const Vector normal = cross(a.right, b.right);
    const double sinAngle = length(normal);
    if (sinAngle > roundingError) {
        const Vector ahead = normal * (dot(normal, a.ahead) < 0.0 ? -1.0 / sinAngle : 1.0 / sinAngle);
        // In front of a station means ahead by more than nothing, and not round the Earth to the other crossing.
        const bool isInFront = dot(ahead, a.ahead) > centimetre && dot(ahead, b.ahead) > centimetre &&
                               dot(ahead, a.station + b.station) > -centimetre;
        if (isInFront) {
            position = ahead;
            return Crossing::InFront;
        }
    }
    const bool isParallel = sinAngle < leastSignificance * std::hypot(a.sigma, b.sigma);
    return isParallel ? Crossing::Parallel : Crossing::Behind;
}

double SphereLines::Line::residual(const Vector& position) const
{
    // The position lies to the right of the bearing by this angle.
    return -std::atan2(dot(position, right), dot(position, ahead)) / sigma;
}

double SphereLines::chiSquare(const Vector& position, double most) const
{
    double sum = 0.0;
    for (const Line& line : m_lines) {
        const double residual = line.residual(position);
        sum += residual * residual;
        if (sum > most)
            break;
    }
    return sum;
}

double SphereLines::chiSquareAtStation(std::size_t line, double most) const
{
    const Vector& position = m_lines[line].station;
    double sum = 0.0;
    for (const Line& other : m_lines) {
        if (length(other.station - position) > centimetre) {
            const double residual = other.residual(position);
            sum += residual * residual;
            if (sum > most)
                break;
        }
    }
    return sum;
}

NormalEquations SphereLines::equations(const Vector& position) const
{
    const Axes axes(position);
    NormalEquations result;
    for (const Line& line : m_lines) {
        const double ahead = dot(position, line.ahead);
        const double right = dot(position, line.right);
        const double squaredSine = std::max(ahead * ahead + right * right, centimetreSquared);
        const Vector gradient = (line.right * ahead - line.ahead * right) * (1.0 / (squaredSine * line.sigma));
        result.add(line.residual(position), dot(gradient, axes.first), dot(gradient, axes.second));
    }
    return result;
}

Vector SphereLines::moved(const Vector& position, const Step& step)
{
    const double angle = step.length();
    if (angle == 0.0)
        return position;
    const Axes axes(position);
    const Vector direction = (axes.first * step.first + axes.second * step.second) * (1.0 / angle);
    const Vector there = position * std::cos(angle) + direction * std::sin(angle);
    return there * (1.0 / length(there));
}

Step SphereLines::stepBetween(const Vector& from, const Vector& to)
{
    const Axes axes(from);
    return {dot(to, axes.first), dot(to, axes.second)};
}

GeoPosition SphereLines::onEllipsoid(const Vector& position)
{
    const double conformal = Math::atan2d(position.z, std::hypot(position.x, position.y));
    return {Ellipsoid::WGS84().InverseConformalLatitude(conformal), Math::atan2d(position.y, position.x)};
}

} // namespace workbench::locate
