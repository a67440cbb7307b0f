#pragma once

#include <cstddef>

namespace testsupport {

/// How often this thread has asked for memory since the program began, by whatever way. For programs that link
/// "allocationcounter".
[[nodiscard]] std::size_t allocationCount();

/// How often this thread asks for memory while @p action runs.
template <typename Action>
[[nodiscard]] std::size_t allocationsIn(Action action)
{
    const std::size_t before = allocationCount();
    action();
    return allocationCount() - before;
}

} // namespace testsupport
