#pragma once

#ifdef DFLOCATE_FAULTS
#include <atomic>
#endif

/// Fault points: places at the beginning of the host's operations where a test lets the operation fail, to see what a
/// component makes of it.
///
/// Every operation may raise anything. One that can also say by its result that it did nothing (null, false) asks
/// failsByResult(), any other one calls mayRaise(). Operations by which holders let go of things (destructors, the
/// removal of observers) have no fault point: nobody could answer their failure.
///
/// Without DFLOCATE_FAULTS a fault point is nothing at all.
namespace faults {

#ifdef DFLOCATE_FAULTS

/// In which ways an operation can fail.
enum class Ways
{
    Raise,        ///< by an exception only
    RaiseOrResult ///< by an exception or by its result
};

/// Decides what becomes of a call of @p operation ("Class::Operation") from the code at the address @p caller: returns
/// false and the operation goes on, returns true (only for Ways::RaiseOrResult) and it fails by its result, or raises
/// what the operation is to raise.
using Hook = bool (*)(const char* operation, Ways ways, const void* caller);

/// Null, as at first: no operation fails.
__attribute__((visibility("default"))) extern std::atomic<Hook> hook;

// Both are part of the operation, so that the address is that of the operation's caller.

[[gnu::always_inline]] inline void mayRaise(const char* operation)
{
    if (const Hook decide = hook.load(std::memory_order_relaxed))
        decide(operation, Ways::Raise, __builtin_return_address(0));
}

[[nodiscard, gnu::always_inline]] inline bool failsByResult(const char* operation)
{
    const Hook decide = hook.load(std::memory_order_relaxed);
    return decide != nullptr && decide(operation, Ways::RaiseOrResult, __builtin_return_address(0));
}

#else

constexpr void mayRaise(const char* /*operation*/) {}

[[nodiscard]] constexpr bool failsByResult(const char* /*operation*/)
{
    return false;
}

#endif

} // namespace faults
