#pragma once

#include <optional>

namespace workbench {

/// How a device takes bearings.
enum class DfMode
{
    Normal,     ///< every measurement afresh
    Continuous, ///< averaged over successive measurements
    Gated,      ///< only while the level is above the threshold
};

/// @name What a quality threshold (percent), a level threshold (dBµV) and a frequency offset (Hz, either way) may be
/// @{
constexpr int lowestQualityThreshold = 1;
constexpr int highestQualityThreshold = 100;
constexpr int lowestLevelThreshold = -40;
constexpr int highestLevelThreshold = 200;
constexpr double largestFrequencyOffset = 2147483647.0;
/// @}

/// The settings with which a device takes bearings.
struct DfSettings
{
    double bandwidth = 0.0; ///< Hz
    double averaging = 0.0; ///< ms
    DfMode mode = DfMode::Normal;
    /// Percent; bearings below it are told as they are, for whoever shows or uses them to leave them out. Absent: not
    /// in use.
    std::optional<int> qualityThreshold;
    std::optional<int> levelThreshold; ///< dBµV; stations that receive less report no signal. Absent: not in use
    double frequencyOffset = 0.0;      ///< Hz, from the tuned frequency to where bearings are taken

    friend bool operator==(const DfSettings& a, const DfSettings& b)
    {
        return a.bandwidth == b.bandwidth && a.averaging == b.averaging && a.mode == b.mode &&
               a.qualityThreshold == b.qualityThreshold && a.levelThreshold == b.levelThreshold &&
               a.frequencyOffset == b.frequencyOffset;
    }
    friend bool operator!=(const DfSettings& a, const DfSettings& b) { return !(a == b); }
};

/// One measurement that is asked for.
struct DfRequest : DfSettings
{
    double frequency = 0.0; ///< Hz, with the offset; 0: unknown
};

} // namespace workbench
