#include "map/graticule.h"

#include "map/mapformats.h"

#include <QtMath>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace workbench {

namespace {

constexpr double metresPerDegree = 111195.0; // on a sphere of the Earth's mean radius
constexpr double leastSpacing = 90.0;        // pixels
constexpr double mostLines = 40.0;           // of a kind: at a pole meridians would be too many
constexpr std::array<double, 15> steps{0.001, 0.002, 0.005, 0.01, 0.02, 0.05, 0.1, 0.2,
                                       0.5,   1.0,   2.0,   5.0,  10.0, 20.0, 30.0};

struct Range
{
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    void include(double value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    [[nodiscard]] double size() const { return high - low; }
    /// Somewhat wider, so that lines end outside of what was sampled.
    [[nodiscard]] Range widened(double most) const
    {
        const double margin = 0.05 * size();
        return {std::max(low - margin, -most), std::min(high + margin, most)};
    }
};

/// Latitudes, and longitudes relative to the centre of the map.
struct Extent
{
    Range latitudes;
    Range longitudes;
};

Extent extentOf(const MapProjection& projection, const QRectF& area)
{
    Extent extent;
    const double centreLongitude = projection.centre().longitude;
    constexpr int samples = 12;
    bool showsEdge = false;
    for (int row = 0; row <= samples; ++row) {
        for (int column = 0; column <= samples; ++column) {
            const QPointF point(area.left() + area.width() * column / samples,
                                area.top() + area.height() * row / samples);
            const auto position = projection.toEarth(point);
            showsEdge = showsEdge || !position;
            if (!position)
                continue;
            extent.latitudes.include(position->latitude);
            extent.longitudes.include(std::remainder(position->longitude - centreLongitude, 360.0));
        }
    }
    if (extent.latitudes.size() < 0.0)
        return extent; // beyond the edge of the map
    extent = {extent.latitudes.widened(90.0), extent.longitudes.widened(180.0)};
    for (const double pole : {-90.0, 90.0}) {
        if (showsEdge || area.contains(projection.toMap({pole, centreLongitude}))) {
            extent.latitudes.include(pole);
            extent.longitudes = {-180.0, 180.0};
        }
    }
    return extent;
}

double stepFor(double leastDegrees, double range)
{
    const auto step =
        std::find_if(steps.begin(), steps.end(), [&](double s) { return s >= leastDegrees && range / s <= mostLines; });
    return step == steps.end() ? steps.back() : *step;
}

template <typename PositionAt>
QPolygonF sampled(const MapProjection& projection, const Range& range, const PositionAt& positionAt)
{
    const int pieces = std::clamp(static_cast<int>(std::ceil(range.size() / 5.0)), 12, 72);
    QPolygonF points;
    points.reserve(pieces + 1);
    for (int i = 0; i <= pieces; ++i)
        points += projection.toMap(positionAt(range.low + range.size() * i / pieces));
    return points;
}

} // namespace

std::vector<GraticuleLine> graticule(const MapProjection& projection, const QRectF& area, double metresPerPixel)
{
    const Extent extent = extentOf(projection, area);
    const Range& latitudes = extent.latitudes;
    if (latitudes.size() < 0.0)
        return {};
    const double centreLongitude = projection.centre().longitude;
    const Range longitudes{extent.longitudes.low + centreLongitude, extent.longitudes.high + centreLongitude};

    const double leastDegrees = leastSpacing * metresPerPixel / metresPerDegree;
    const double latitudeStep = stepFor(leastDegrees, latitudes.size());
    const double middle = qDegreesToRadians((latitudes.low + latitudes.high) / 2.0);
    const double longitudeStep = stepFor(leastDegrees / std::max(std::cos(middle), 1e-3), longitudes.size());

    std::vector<GraticuleLine> lines;
    for (double n = std::ceil(latitudes.low / latitudeStep); n * latitudeStep <= latitudes.high; ++n) {
        const double latitude = n * latitudeStep;
        if (std::abs(latitude) > 90.0 - latitudeStep / 2.0)
            continue; // the poles are points
        lines.push_back(
            {latitudeText(latitude, latitudeStep), false, sampled(projection, longitudes, [=](double longitude) {
                 return GeoPosition{latitude, longitude};
             })});
    }
    const double last = longitudes.size() < 360.0 ? longitudes.high : longitudes.high - longitudeStep / 2.0;
    for (double n = std::ceil(longitudes.low / longitudeStep); n * longitudeStep <= last; ++n) {
        const double longitude = n * longitudeStep;
        lines.push_back(
            {longitudeText(longitude, longitudeStep), true, sampled(projection, latitudes, [=](double latitude) {
                 return GeoPosition{latitude, longitude};
             })});
    }
    return lines;
}

ScaleBar scaleBar(double metresPerPixel, double longestPixels)
{
    const double longest = metresPerPixel * longestPixels;
    const double power = std::pow(10.0, std::floor(std::log10(longest)));
    const double factor = longest >= 5.0 * power ? 5.0 : longest >= 2.0 * power ? 2.0 : 1.0;
    const double length = factor * power;
    return {length, length < 1000.0 ? QString::number(length) + QStringLiteral(" m")
                                    : QString::number(length / 1000.0) + QStringLiteral(" km")};
}

} // namespace workbench
