#pragma once

#include <QString>

#include <optional>

namespace VelmarGui {

/// The local time of day of a driver's result time, a UTC text "yyyy-MM-dd hh:mm:ss".
///
/// None for a text that stands for "no result yet": an empty one and any of the year 1970, where the clocks of devices
/// that do not know the time begin. A text that cannot be read gives an empty time.
[[nodiscard]] std::optional<QString> localTimeOfDay(const QString& resultTime);

} // namespace VelmarGui
