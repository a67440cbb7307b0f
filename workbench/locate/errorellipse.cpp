#include "locate/errorellipse.h"

#include <algorithm>
#include <cmath>

namespace workbench {

ErrorEllipse standardEllipse(const Covariance& covariance)
{
    constexpr double degree = 0.017453292519943295;
    const double mean = 0.5 * (covariance.north + covariance.east);
    const double difference = 0.5 * (covariance.north - covariance.east);
    const double spread = std::hypot(difference, covariance.eastNorth);

    ErrorEllipse ellipse;
    ellipse.semiMajor = std::sqrt(mean + spread);
    // Rounding can make the smaller of two very different variances a little negative.
    ellipse.semiMinor = std::sqrt(std::max(0.0, mean - spread));
    const double azimuth = 0.5 * std::atan2(covariance.eastNorth, difference) / degree;
    // A tiny negative number plus 180 rounds to 180 itself.
    ellipse.azimuth = azimuth < 0.0 ? std::fmod(azimuth + 180.0, 180.0) : azimuth;
    return ellipse;
}

ErrorEllipse confidenceEllipse(const Covariance& covariance, double probability)
{
    ErrorEllipse ellipse = standardEllipse(covariance);
    const double factor = std::sqrt(-2.0 * std::log1p(-probability));
    ellipse.semiMajor *= factor;
    ellipse.semiMinor *= factor;
    return ellipse;
}

} // namespace workbench
