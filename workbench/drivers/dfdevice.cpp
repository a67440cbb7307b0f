#include "drivers/dfdevice.h"

#include "drivers/configtable.h"

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

std::vector<DeviceStep> stepsOf(const ItemList& list)
{
    std::vector<DeviceStep> steps;
    steps.reserve(static_cast<std::size_t>(list.count));
    for (int i = 0; i < list.count; ++i)
        steps.push_back({QString::fromLatin1(list.items[i].text), list.items[i].number});
    return steps;
}

double nearestNumber(const std::vector<DeviceStep>& steps, double number)
{
    return steps.at(static_cast<std::size_t>(nearestStep(steps, number))).number;
}

std::optional<int> clamped(const std::optional<int>& threshold, int lowest, int highest)
{
    return threshold ? std::optional(std::clamp(*threshold, lowest, highest)) : std::nullopt;
}

} // namespace

DfSettings DfDevice::corrected(const DfSettings& wanted) const
{
    const bool hasMode =
        std::any_of(modes.begin(), modes.end(), [&wanted](const DeviceMode& mode) { return mode.mode == wanted.mode; });
    DfSettings settings;
    settings.bandwidth = nearestNumber(bandwidths, wanted.bandwidth);
    settings.averaging = nearestNumber(averagingTimes, wanted.averaging);
    settings.mode = hasMode ? wanted.mode : DfMode::Normal;
    settings.qualityThreshold = clamped(wanted.qualityThreshold, lowestQualityThreshold, highestQualityThreshold);
    settings.levelThreshold = clamped(wanted.levelThreshold, lowestLevelThreshold, highestLevelThreshold);
    settings.frequencyOffset = std::clamp(wanted.frequencyOffset, -largestFrequencyOffset, largestFrequencyOffset);
    return settings;
}

DfDevice standardDevice()
{
    return {QStringLiteral("Standard"),
            stepsOf(listOf(bandwidthItems)),
            stepsOf(listOf(averagingItems)),
            {{QStringLiteral("NORMAL"), DfMode::Normal},
             {QStringLiteral("CONTINUOUS"), DfMode::Continuous},
             {QStringLiteral("GATED"), DfMode::Gated}}};
}

std::optional<DfMode> modeFromText(const QString& text)
{
    constexpr int significantLetters = 3;
    const QString start = text.left(significantLetters).toUpper();
    if (start == QLatin1String("NOR"))
        return DfMode::Normal;
    if (start == QLatin1String("CON"))
        return DfMode::Continuous;
    if (start == QLatin1String("GAT"))
        return DfMode::Gated;
    return std::nullopt;
}

int nearestStep(const std::vector<DeviceStep>& steps, double number)
{
    if (steps.empty())
        return 0;
    const auto [least, greatest] = std::minmax_element(
        steps.begin(), steps.end(), [](const DeviceStep& a, const DeviceStep& b) { return a.number < b.number; });
    // Into the range first: seen from very far away all steps are equally near.
    const double inRange = std::clamp(number, least->number, greatest->number);
    const auto nearest =
        std::min_element(steps.begin(), steps.end(), [inRange](const DeviceStep& a, const DeviceStep& b) {
            return std::abs(a.number - inRange) < std::abs(b.number - inRange);
        });
    return static_cast<int>(nearest - steps.begin());
}

} // namespace workbench
