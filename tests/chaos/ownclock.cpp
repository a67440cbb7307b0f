#include "ownclock.h"

#include <atomic>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::int64_t nanosecondsPerMillisecond = 1'000'000;
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

// Far in the future of the real clock: what waits for a time of this one, in the kernel, waits until it is woken.
std::atomic<std::int64_t> now{1'000'000'000 * nanosecondsPerSecond};

} // namespace

/// Takes the place of the C library's for the whole process, Qt's timers included.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    if (clock != CLOCK_MONOTONIC)
        return static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    const std::int64_t nanoseconds = now;
    time->tv_sec = nanoseconds / nanosecondsPerSecond;
    time->tv_nsec = nanoseconds % nanosecondsPerSecond;
    return 0;
}

namespace chaos {

void OwnClock::advance(int milliseconds)
{
    now += milliseconds * nanosecondsPerMillisecond;
}

double OwnClock::realSeconds()
{
    timespec time{};
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / nanosecondsPerSecond;
}

} // namespace chaos
