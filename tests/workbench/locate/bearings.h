#pragma once

#include "drivers/geodesy.h"
#include "locate/positionfix.h"

#include <QtTest>

namespace testsupport {

using workbench::Bearing;
using workbench::Fix;
using workbench::FixLimits;
using workbench::FixResult;
using workbench::GeoPosition;
using workbench::NoFix;

/// The bearings of one emitter without any error.
inline std::vector<Bearing> exactBearings(const std::vector<GeoPosition>& stations, const GeoPosition& emitter,
                                          double sigma)
{
    std::vector<Bearing> bearings;
    for (const GeoPosition& station : stations)
        bearings.push_back({station, workbench::geodesy::line(station, emitter).azimuth, sigma, false});
    return bearings;
}

/// In metres along the geodesic.
inline double distance(const GeoPosition& a, const GeoPosition& b)
{
    return workbench::geodesy::line(a, b).distance;
}

/// The fix of bearings that must have one. Ends the program when they have none: a test has nothing to go on with.
inline Fix fixOf(const std::vector<Bearing>& bearings)
{
    const FixResult result = workbench::positionFix(bearings);
    if (const auto* reason = std::get_if<NoFix>(&result))
        qFatal("There is no fix: %s", qPrintable(workbench::explanation(*reason)));
    return std::get<Fix>(result);
}

/// The reason why there is no fix; none when there is one.
inline std::optional<NoFix> refusal(const std::vector<Bearing>& bearings, const FixLimits& limits = {})
{
    const FixResult result = workbench::positionFix(bearings, limits);
    const auto* reason = std::get_if<NoFix>(&result);
    return reason ? std::optional<NoFix>(*reason) : std::nullopt;
}

} // namespace testsupport

/// Compares two numbers that may differ by no more than @p tolerance, and shows both when they do.
#define COMPARE_NEAR(actual, expected, tolerance)                                                                      \
    QVERIFY2(std::abs((actual) - (expected)) <= (tolerance), qPrintable(QStringLiteral("%1 is not within %2 of %3")    \
                                                                            .arg(actual, 0, 'g', 12)                   \
                                                                            .arg(tolerance)                            \
                                                                            .arg(expected, 0, 'g', 12)))
