#pragma once

#include "drivers/onlinefix.h"

namespace workbench {

/// A fix from the bearings of many results, or why there is none.
struct HistoryFix
{
    /// The bearings of a Fix are those of the different station positions, each made of all that were taken there.
    LocateResult located;
    int results = 0;        ///< that were looked at
    int bearings = 0;       ///< of them that can be used and are not below the quality threshold
    bool isComplete = true; ///< false: there are more such results; these are the newest
};

/// The fix from the bearings of all of @p results, of which none is below @p qualityThreshold (percent), as in
/// bearingsForFix(). It is the fix of positionFix(), with its chi-square and degrees of freedom: bearings that one
/// station took in one place are only combined before, so that the effort grows with the places and not with the
/// bearings. May be called from any thread.
[[nodiscard]] HistoryFix historyFix(const std::vector<DfResult>& results, int qualityThreshold);

} // namespace workbench
