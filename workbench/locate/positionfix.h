#pragma once

#include "locate/errorellipse.h"
#include "locate/geoposition.h"

#include <QString>

#include <optional>
#include <variant>
#include <vector>

namespace workbench {

/// @name What the standard deviation of a bearing may be, in degrees. Less is below the rounding of a geodesic.
/// @{
constexpr double leastSigma = 1e-6;
constexpr double greatestSigma = 180.0;
/// @}

/// One bearing as it enters a fix.
///
/// It is usable when all numbers are finite, the latitude lies within +-90 degrees, and sigma between leastSigma and
/// greatestSigma. Longitude and azimuth are taken modulo 360. At a pole
/// the azimuth counts from the meridian of the longitude that is given, as it does just beside the pole.
struct Bearing
{
    GeoPosition station;
    double azimuth = 0.0;  ///< degrees clockwise from true north
    double sigma = 1.0;    ///< standard deviation in degrees
    bool excluded = false; ///< left out by the operator
};

/// Whether the numbers of @p bearing are a bearing.
[[nodiscard]] bool isUsable(const Bearing& bearing);

/// What may be asked of a fix.
struct FixLimits
{
    /// m; a fix further than this from a station whose bearing is used is refused.
    std::optional<double> maxDistance;
};

enum class BearingUse
{
    Used,
    Excluded, ///< by its flag
    Unusable, ///< its numbers are no bearing
    AtFix,    ///< its station is where the fix is: it says nothing about the position and has no part in its error
};

/// A bearing seen from the fix.
struct BearingCheck
{
    BearingUse use = BearingUse::Unusable;
    /// Measured azimuth minus that of the geodesic from the station to the fix, degrees, from -180 to 180. An excluded
    /// bearing has one too; an unusable one has none, nor has one from the fix itself.
    std::optional<double> residual;
    std::optional<double> distance; ///< from the station to the fix along the geodesic, m
};

/// A position with what is known of its error.
struct Fix
{
    GeoPosition position; ///< longitude from -180 to 180
    Covariance covariance;
    double chiSquare = 0.0;             ///< sum over the used bearings of (residual / sigma)²
    int degreesOfFreedom = 0;           ///< used bearings minus 2; with 0 chi-square says nothing
    std::vector<BearingCheck> bearings; ///< one for each bearing that was given, in that order
};

/// Why there is no fix.
enum class NoFix
{
    TooFewBearings,  ///< no two usable bearings from different positions
    ParallelLines,   ///< parallel, or all on one line, as far as the bearings' accuracy can tell
    BehindStation,   ///< the lines meet only behind a station, by more than their accuracy explains
    NoConvergence,   ///< no position fits better than all others around it
    OutsideMaxRange, ///< further away than FixLimits::maxDistance
};

/// A sentence for people.
[[nodiscard]] QString explanation(NoFix reason);

using FixResult = std::variant<Fix, NoFix>;

/// The most likely position of the emitter on the WGS84 ellipsoid, for bearings with independent, normally distributed
/// errors: the position with the least chi-square. Where several positions are better than all others around them, the
/// one with the least chi-square wins. An emitter beside a station can have its most likely position at the station
/// itself: the other bearings meet a little behind it, but within their accuracy.
///
/// An emitter more than a quarter round the Earth away from all stations is not looked for: where diverging lines meet
/// again. The lines count as parallel when the greatest standard deviation of the position is more than half its
/// distance from the farthest station: then the distance is not two standard deviations away from infinity.
/// docs/position-fix.md describes the method and its sources. Depends on its arguments only and may be called from any
/// thread.
[[nodiscard]] FixResult positionFix(const std::vector<Bearing>& bearings, const FixLimits& limits = {});

} // namespace workbench
