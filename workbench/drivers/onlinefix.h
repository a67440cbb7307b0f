#pragma once

#include "drivers/dfresult.h"
#include "locate/positionfix.h"

#include <QString>

#include <variant>
#include <vector>

namespace workbench {

/// Degrees; the standard deviation of a bearing of which nobody states it.
constexpr double assumedSigma = 3.0;

/// The position of the emitter, or a sentence for people that tells why there is none.
using LocateResult = std::variant<Fix, QString>;

/// The bearings of @p result as they enter a fix: one for each station, in the same order, so that what a Fix tells of
/// its bearings it tells of these stations. A station without a bearing or a position is unusable. A bearing of a
/// quality below @p qualityThreshold (percent) is excluded: what operators do not get to see shall not move the fix. As
/// where it is shown, a missing quality counts as 0.
[[nodiscard]] std::vector<Bearing> bearingsForFix(const DfResult& result, int qualityThreshold);

/// The fix from the bearings of @p result alone.
[[nodiscard]] LocateResult onlineFix(const DfResult& result, int qualityThreshold);

} // namespace workbench
