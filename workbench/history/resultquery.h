#pragma once

#include "drivers/dfresult.h"

#include <QDateTime>
#include <QMetaType>

#include <optional>
#include <vector>

namespace workbench {

/// Frequencies that count as the same, Hz.
struct FrequencyMatch
{
    double frequency = 0.0;
    double tolerance = 0.0; ///< to either side, both ends belong to it
};

/// Which stored results are asked for.
struct ResultQuery
{
    QDateTime from; ///< belongs to the span, in any time zone; invalid: from the oldest on
    QDateTime to;   ///< belongs to the span, in any time zone; invalid: up to the newest
    /// Without it the frequency makes no difference; with it a result without frequency is none of them.
    std::optional<FrequencyMatch> frequency;
    int limit = 10000; ///< how many results the answer may have
};

/// What a query finds.
struct ResultAnswer
{
    /// Ordered by their time; results of the same time in the order in which they were stored.
    std::vector<DfResult> results;
    /// False when there were more than the limit: then these are the newest of them.
    bool isComplete = true;
};

} // namespace workbench

Q_DECLARE_METATYPE(workbench::ResultAnswer)
