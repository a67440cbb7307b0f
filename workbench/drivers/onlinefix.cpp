#include "drivers/onlinefix.h"

#include <algorithm>
#include <limits>

namespace workbench {

namespace {

Bearing bearingOf(const StationResult& station, int qualityThreshold)
{
    Bearing bearing;
    bearing.station = station.position.value_or(GeoPosition{});
    bearing.azimuth = station.position && station.azimuth ? *station.azimuth : std::numeric_limits<double>::quiet_NaN();
    // A simulated bearing may be without any noise.
    bearing.sigma = std::max(station.sigma.value_or(assumedSigma), leastSigma);
    bearing.excluded = wholePercent(station.quality.value_or(0.0)) < qualityThreshold;
    return bearing;
}

} // namespace

std::vector<Bearing> bearingsForFix(const DfResult& result, int qualityThreshold)
{
    std::vector<Bearing> bearings;
    bearings.reserve(result.stations.size());
    for (const StationResult& station : result.stations)
        bearings.push_back(bearingOf(station, qualityThreshold));
    return bearings;
}

LocateResult onlineFix(const DfResult& result, int qualityThreshold)
{
    FixResult fix = positionFix(bearingsForFix(result, qualityThreshold));
    if (const auto* const reason = std::get_if<NoFix>(&fix))
        return explanation(*reason);
    return std::get<Fix>(std::move(fix));
}

} // namespace workbench
