#pragma once

#include <cmath>
#include <utility>
#include <vector>

namespace soak {

/// A straight line through measured points, by least squares.
struct Line
{
    double slope = 0.0;
    double slopeError = 0.0; ///< standard error of the slope
};

/// @p points are (x, y), at least three of them and not all with the same x.
[[nodiscard]] inline Line fitLine(const std::vector<std::pair<double, double>>& points)
{
    const auto count = static_cast<double>(points.size());
    double meanX = 0.0;
    double meanY = 0.0;
    for (const auto& [x, y] : points) {
        meanX += x / count;
        meanY += y / count;
    }
    double xx = 0.0;
    double xy = 0.0;
    for (const auto& [x, y] : points) {
        xx += (x - meanX) * (x - meanX);
        xy += (x - meanX) * (y - meanY);
    }
    Line line;
    line.slope = xy / xx;
    double squares = 0.0;
    for (const auto& [x, y] : points) {
        const double off = y - meanY - line.slope * (x - meanX);
        squares += off * off;
    }
    line.slopeError = std::sqrt(squares / (count - 2.0) / xx);
    return line;
}

} // namespace soak
