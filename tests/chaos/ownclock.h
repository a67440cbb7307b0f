#pragma once

#include <cstdint>

namespace chaos {

/// The process's monotonic clock, which stands still until it is advanced: timers fire at the same operation in every
/// run, and nobody waits for them. Everything that asks the system for its monotonic time gets this one.
class OwnClock
{
public:
    static void advance(int milliseconds);
    /// Seconds on the real clock, for measuring how long a run takes.
    [[nodiscard]] static double realSeconds();
};

} // namespace chaos
