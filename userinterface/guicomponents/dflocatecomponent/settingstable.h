#pragma once

#include "hostcodes.h"

#include "valueframework/valueclasses/valueobservermacros.h"

#include <array>
#include <optional>
#include <variant>

namespace VelmarGui {

/// The settings values below the handler's folder, as the settings panel holds them; each null while not bound.
struct ConfigValues
{
    values::ValuePtr<values::DoubleValue> frequencyOffset; ///< Hz
    values::ValuePtr<values::DoubleValue> span;            ///< Hz
    values::ValuePtr<values::ValueSelection> workflow;
    values::ValuePtr<values::ValueSelection> locateType;
    values::ValuePtr<values::ValueSelection> activity;
    values::ValuePtr<values::ValueSelection> activityTrigger;
    values::ValuePtr<values::BoolValue> overwriteThreshold;
    values::ValuePtr<values::ValueSelection> mode;
    values::ValuePtr<values::IntValue> quality;           ///< percent
    values::ValuePtr<values::IntValue> threshold;         ///< level, dBµV
    values::ValuePtr<values::ValueSelection> bandwidth;   ///< the numbers of the items are Hz
    values::ValuePtr<values::ValueSelection> averageTime; ///< the numbers of the items are ms
};

/// Declaration of one settings value.
struct ConfigEntry
{
    using BoolMember = values::ValuePtr<values::BoolValue> ConfigValues::*;
    using IntMember = values::ValuePtr<values::IntValue> ConfigValues::*;
    using DoubleMember = values::ValuePtr<values::DoubleValue> ConfigValues::*;
    using SelectionMember = values::ValuePtr<values::ValueSelection> ConfigValues::*;

    struct Range
    {
        double min = 0.0;
        double max = 0.0;
        double step = 0.0;
    };

    const char* path;                                                          ///< below the handler's folder
    std::variant<BoolMember, IntMember, DoubleMember, SelectionMember> member; ///< tells the kind, too
    Range range;                                                               ///< of a number
    void (*addItems)(values::ValueSelection&);                                 ///< of a selection
    int initial;                                                               ///< content, or index of the item
    std::optional<values::TValueState> initialState;                           ///< nothing: the state stays as it is
    /// The panel's slot that hears of changes; null for a value that the panel reaches through its interface value.
    const char* slot;
    /// Name of the interface value in the component's folder; null when there is none.
    const char* interfaceName;
};

namespace config {

void addWorkflows(values::ValueSelection& selection);
void addLocateTypes(values::ValueSelection& selection);
void addActivities(values::ValueSelection& selection);
void addActivityTriggers(values::ValueSelection& selection);
void addModes(values::ValueSelection& selection);
void addBandwidths(values::ValueSelection& selection);
void addAverageTimes(values::ValueSelection& selection);

constexpr double largestFrequency = 2147483647.0; // Hz
constexpr ConfigEntry::Range noRange{};
constexpr auto noItems = nullptr;
constexpr const char* valueChangedSlot = "1ValueChanged(values::ValueBase*)";

} // namespace config

/// All settings values in the order of their creation. Creation, binding and tests walk this table; nothing else spells
/// a path.
constexpr std::array<ConfigEntry, 12> ConfigTable{{
    {"Config/DFFrequencyOffset",
     &ConfigValues::frequencyOffset,
     {-config::largestFrequency, config::largestFrequency, 1.0},
     config::noItems,
     0,
     OrdinaryState,
     "1OffsetValueChanged(values::ValueBase*)",
     nullptr},
    {"Config/DFSpan",
     &ConfigValues::span,
     {0.0, config::largestFrequency, 1.0},
     config::noItems,
     0,
     OrdinaryState,
     "1SpanValueChanged(values::ValueBase*)",
     nullptr},
    {"Config/DFLocateWorkflow", &ConfigValues::workflow, config::noRange, config::addWorkflows, 0, OrdinaryState,
     nullptr, "DFLocateWorkflow"},
    {"Config/DFLocateType", &ConfigValues::locateType, config::noRange, config::addLocateTypes, 0, OrdinaryState,
     nullptr, "DFLocateType"},
    {"Config/DFLocateActivity", &ConfigValues::activity, config::noRange, config::addActivities, 0, OrdinaryState,
     nullptr, "DFLocateActivity"},
    {"Config/DFLocateActivityTrigger", &ConfigValues::activityTrigger, config::noRange, config::addActivityTriggers, 0,
     OrdinaryState, nullptr, "DFLocateActivityTrigger"},
    {"Config/OverwriteThreshold", &ConfigValues::overwriteThreshold, config::noRange, config::noItems, 0, std::nullopt,
     config::valueChangedSlot, nullptr},
    {"Config/Mode", &ConfigValues::mode, config::noRange, config::addModes, 0, OrdinaryState, config::valueChangedSlot,
     nullptr},
    // The thresholds start out of use: they enter the settings only after somebody has set them.
    {"Config/Quality",
     &ConfigValues::quality,
     {1.0, 100.0, 1.0},
     config::noItems,
     1,
     NotInUseState,
     config::valueChangedSlot,
     nullptr},
    {"Config/Threshold",
     &ConfigValues::threshold,
     {-40.0, 200.0, 1.0},
     config::noItems,
     0,
     NotInUseState,
     config::valueChangedSlot,
     nullptr},
    {"Config/Bandwidth", &ConfigValues::bandwidth, config::noRange, config::addBandwidths, 7, OrdinaryState,
     config::valueChangedSlot, nullptr},
    {"Config/AverageTime", &ConfigValues::averageTime, config::noRange, config::addAverageTimes, 0, OrdinaryState,
     config::valueChangedSlot, nullptr},
}};

/// Creates the value of @p entry below @p handlerRoot, or takes the one that is there, and gives it its limits, items,
/// initial content and state, in this order. Items that were there are taken out.
void createConfigValue(const ConfigEntry& entry, const QString& handlerRoot);

/// Binds the member of @p entry to the value below @p handlerRoot. The result is the value, null when it is missing.
values::ValueBase* bindConfigValue(const ConfigEntry& entry, ConfigValues& values, const QString& handlerRoot);

/// Adds one item for each averaging time in @p list ("Off,200m,500m,1s"), in its order, with the position as key and
/// the time in ms as number. "m" means milliseconds; "s" and no unit at all mean seconds.
void addAveragingItems(values::ValueSelection& selection, const QString& list);

} // namespace VelmarGui
