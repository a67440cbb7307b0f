#pragma once

#include "drivers/dfsettings.h"

#include "valueframework/valuebase.h"

#include <array>
#include <cstddef>

namespace workbench {

/// One choice of a list; its key is its position.
struct ListItem
{
    const char* text;
    double number;
};

/// All choices of a list.
struct ItemList
{
    const ListItem* items = nullptr;
    int count = 0;
};

template <std::size_t Count>
constexpr ItemList listOf(const ListItem (&items)[Count])
{
    return {items, static_cast<int>(Count)};
}

/// DF modes; the numbers mean nothing.
constexpr ListItem modeItems[] = {{"Normal", 0.0}, {"Cont", 0.0}, {"Gate", 0.0}};

/// Bandwidths in Hz.
constexpr ListItem bandwidthItems[] = {
    {"120 Hz", 120.0},       {"300 Hz", 300.0},       {"600 Hz", 600.0},     {"1.2 kHz", 1200.0},
    {"3.0 kHz", 3000.0},     {"5.0 kHz", 5000.0},     {"7.5 kHz", 7500.0},   {"12.0 kHz", 12000.0},
    {"15.0 kHz", 15000.0},   {"30.0 kHz", 30000.0},   {"60.0 kHz", 60000.0}, {"100.0 kHz", 100000.0},
    {"150.0 kHz", 150000.0}, {"200.0 kHz", 200000.0},
};

/// Averaging times in ms.
constexpr ListItem averagingItems[] = {
    {"Off", 0.0}, {"200m", 200.0}, {"500m", 500.0}, {"1s", 1000.0}, {"2s", 2000.0}, {"5s", 5000.0}, {"10s", 10000.0},
};

constexpr ListItem workflowItems[] = {{"On request", 0.0}, {"Continuous", 0.0}, {"On trigger", 0.0}};
constexpr ListItem locateTypeItems[] = {{"No locate", 0.0}, {"Online", 0.0}, {"History", 0.0}};
constexpr ListItem activityItems[] = {{"No DF/Locate", 0.0}, {"DF", 0.0}, {"DF and locate", 0.0}};
constexpr ListItem activityTriggerItems[] = {{"Manual", 0.0}, {"Signal", 0.0}, {"Schedule", 0.0}};

/// One setting below the handler's folder as a driver presents it at first.
struct ConfigEntry
{
    const char* path;
    values::TValueType type;
    /// @name Of numbers
    /// @{
    double min;
    double max;
    double step;
    /// @}
    double initial; ///< the number, the truth value or the key of the current item
    values::TValueState state;
    ItemList list; ///< of selections
};

constexpr ConfigEntry selectionEntry(const char* path, ItemList list, int initialKey)
{
    return {path, values::TypeSelection, 0.0, 0.0, 0.0, static_cast<double>(initialKey), values::StateOrdinary, list};
}

constexpr int bandwidthKey12kHz = 7;
constexpr int locateTypeOnline = 1;
constexpr int locateTypeHistory = 2;
constexpr int activityDfAndLocate = 2;

constexpr double largestSpan = 2147483647.0;

/// An operator's first click shall measure and locate. The thresholds are not in use until somebody sets them.
constexpr std::array<ConfigEntry, 12> configTable{{
    {"Config/DFFrequencyOffset",
     values::TypeDouble,
     -largestFrequencyOffset,
     largestFrequencyOffset,
     1.0,
     0.0,
     values::StateOrdinary,
     {}},
    {"Config/DFSpan", values::TypeDouble, 0.0, largestSpan, 1.0, 0.0, values::StateOrdinary, {}},
    selectionEntry("Config/DFLocateWorkflow", listOf(workflowItems), 0),
    selectionEntry("Config/DFLocateType", listOf(locateTypeItems), locateTypeOnline),
    selectionEntry("Config/DFLocateActivity", listOf(activityItems), activityDfAndLocate),
    selectionEntry("Config/DFLocateActivityTrigger", listOf(activityTriggerItems), 0),
    {"Config/OverwriteThreshold", values::TypeBool, 0.0, 0.0, 0.0, 0.0, values::StateOrdinary, {}},
    selectionEntry("Config/Mode", listOf(modeItems), 0),
    {"Config/Quality",
     values::TypeInt,
     lowestQualityThreshold,
     highestQualityThreshold,
     1.0,
     1.0,
     values::StateUnused,
     {}},
    {"Config/Threshold",
     values::TypeInt,
     lowestLevelThreshold,
     highestLevelThreshold,
     1.0,
     0.0,
     values::StateUnused,
     {}},
    selectionEntry("Config/Bandwidth", listOf(bandwidthItems), bandwidthKey12kHz),
    selectionEntry("Config/AverageTime", listOf(averagingItems), 0),
}};

/// The commands that all components and drivers share.
constexpr ListItem commandItems[] = {
    {"No command", 0.0},
    {"Start job", 0.0},
    {"Stop job", 0.0},
    {"Terminate job", 0.0},
    {"Edit job", 0.0},
    {"Start scan", 0.0},
    {"Stop scan", 0.0},
    {"To report", 0.0},
    {"To database", 0.0},
    {"Start single DF", 0.0},
    {"Start cyclic DF", 0.0},
    {"Stop cyclic DF", 0.0},
    {"To job", 0.0},
    {"Continue Scan", 0.0},
    {"Pause Scan", 0.0},
    {"Start MScan", 0.0},
    {"Show Locate", 0.0},
    {"Start new job", 0.0},
    {"Add to report history", 0.0},
    {"Save before report", 0.0},
};

constexpr int commandNone = 0;
constexpr int commandStartSingleDf = 9;
constexpr int commandStartCyclicDf = 10;
constexpr int commandStopCyclicDf = 11;

} // namespace workbench
