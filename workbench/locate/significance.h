#pragma once

namespace workbench::locate {

/// A crossing angle, or a distance, that is not this many times as great as its standard deviation cannot be told from
/// none: lines that cross at such an angle may as well be parallel. In a normal distribution 95 percent lie within.
constexpr double leastSignificance = 2.0;

} // namespace workbench::locate
