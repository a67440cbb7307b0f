#pragma once

#include "hostcodes.h"
#include "valueframework/valueclasses/valueselection.h"

#include <array>
#include <string_view>

namespace VelmarGui {

/// The commands of the host's value "Values/Commands"; the key of a command is its position.
constexpr std::array<const char*, 20> CommandNames{
    "No command",      "Start job",      "Stop job",      "Terminate job",         "Edit job",
    "Start scan",      "Stop scan",      "To report",     "To database",           "Start single DF",
    "Start cyclic DF", "Stop cyclic DF", "To job",        "Continue Scan",         "Pause Scan",
    "Start MScan",     "Show Locate",    "Start new job", "Add to report history", "Save before report",
};

/// @name Keys of the commands that this component issues
/// @{
constexpr int StartSingleDfCommand = 9;
constexpr int StartCyclicDfCommand = 10;
constexpr int StopCyclicDfCommand = 11;
/// @}

static_assert(std::string_view(CommandNames[StartSingleDfCommand]) == "Start single DF");
static_assert(std::string_view(CommandNames[StartCyclicDfCommand]) == "Start cyclic DF");
static_assert(std::string_view(CommandNames[StopCyclicDfCommand]) == "Stop cyclic DF");

/// Asks the host to carry out the command with @p key: selects it in @p commands, or announces it anew when it is the
/// current one already, so that the host hears the same command again. Names no originator: whoever observes the
/// commands is told, the issuer included.
inline void issueCommand(values::ValueSelection& commands, int key)
{
    if (commands.GetCurrentKey() == key)
        commands.HasChanged(ValueChanged, nullptr);
    else
        commands.Select(key, nullptr);
}

} // namespace VelmarGui
