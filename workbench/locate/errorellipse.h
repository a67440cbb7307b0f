#pragma once

namespace workbench {

/// Covariance of a position in m², in the plane that touches the ellipsoid there.
struct Covariance
{
    double east = 0.0;      ///< variance towards east
    double north = 0.0;     ///< variance towards true north
    double eastNorth = 0.0; ///< covariance of both
};

/// Where a position lies with some probability.
struct ErrorEllipse
{
    double semiMajor = 0.0; ///< m
    double semiMinor = 0.0; ///< m
    double azimuth = 0.0;   ///< of the major axis, degrees clockwise from true north, 0 <= azimuth < 180
};

/// The ellipse whose semi axes are the standard deviations along the principal axes. It holds the true position with a
/// probability of 1 - exp(-1/2), 39.3 percent.
[[nodiscard]] ErrorEllipse standardEllipse(const Covariance& covariance);

/// The ellipse that holds the true position with @p probability: the standard ellipse times sqrt(-2 ln(1 -
/// probability)). The square of a normally distributed error in two dimensions, in standard deviations, has the
/// distribution 1 - exp(-x / 2) (chi-square with two degrees of freedom).
///
/// @p probability is from 0 to 1, both included: at 0 the axes are 0, at 1 infinite. Otherwise they are not a number.
[[nodiscard]] ErrorEllipse confidenceEllipse(const Covariance& covariance, double probability);

} // namespace workbench
