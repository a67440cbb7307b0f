#pragma once

#include "drivers/dfsettings.h"

#include <QString>

#include <vector>

namespace workbench {

/// One step of a device's bandwidths (Hz) or averaging times (ms), with the device's own text for it.
struct DeviceStep
{
    QString text;
    double number = 0.0;
};

/// One mode of a device, with the device's own name for it.
struct DeviceMode
{
    QString text;
    DfMode mode = DfMode::Normal;
};

/// What kind of direction finder a network has, by what it can do. No list is empty, and one of the modes is
/// DfMode::Normal.
struct DfDevice
{
    QString name;
    std::vector<DeviceStep> bandwidths;
    std::vector<DeviceStep> averagingTimes;
    std::vector<DeviceMode> modes;

    /// @p wanted as the device can do it: the nearest bandwidth and averaging time (of two equally near ones the
    /// first), DfMode::Normal for a mode that it does not have, thresholds and offset moved to the nearer end of their
    /// ranges.
    [[nodiscard]] DfSettings corrected(const DfSettings& wanted) const;
};

/// The device of networks that say nothing about theirs. Its bandwidths and averaging times are those that the settings
/// offer at first.
[[nodiscard]] DfDevice standardDevice();

/// Settings and devices have names of their own for the same modes; all agree in the first three letters, upper or
/// lower case. Nothing for an unknown one.
[[nodiscard]] std::optional<DfMode> modeFromText(const QString& text);

/// Position of the step whose number is nearest, of two equally near ones the first; 0 for an empty list.
[[nodiscard]] int nearestStep(const std::vector<DeviceStep>& steps, double number);

} // namespace workbench
