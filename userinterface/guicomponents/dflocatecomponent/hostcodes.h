#pragma once

#include "valueframework/valuebase.h"
#include "ztbase/errorhandler.h"
#include "ztbase/iobserver.h"

#include <QString>

namespace VelmarGui {

/// @name Change codes
/// By number, because only the numbers are common to all hosts.
/// @{
constexpr auto StateChanged = static_cast<TChangeCode>(2);    ///< the state changed; the value may be going away
constexpr auto ValueChanged = static_cast<TChangeCode>(3);    ///< the content changed, or was announced anew
constexpr auto ItemsChanged = static_cast<TChangeCode>(7);    ///< the item list of a selection changed
constexpr auto SetFromOutside = static_cast<TChangeCode>(19); ///< somebody else set the content
/// @}

/// @name Value states
/// @{
constexpr auto OrdinaryState = static_cast<values::TValueState>(0);
constexpr auto RemovedState = static_cast<values::TValueState>(1); ///< the value is going away
constexpr auto NotInUseState = static_cast<values::TValueState>(2);
/// @}

/// Bit of the host's trace mask that switches on the traces of components.
constexpr int ComponentTraceBit = 0x20;

/// Writes a trace of the component when the host wants them. @p sourceFile is the path of the unit, without suffix.
/// Lets no exception out: a trace never disturbs the work that it reports.
inline void traceIfEnabled(const QString& text, const QString& sourceFile, unsigned short line) noexcept
{
    try {
        if ((ErrorHandler::Instance()->GetTraceMask() & ComponentTraceBit) != 0)
            _Q_Trace(text, sourceFile, line);
    } catch (...) {
        // There is no better place to report it.
    }
}

} // namespace VelmarGui
