#include "support/testmain.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>

namespace testsupport {

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int slowness = 3;
#else
constexpr int slowness = 1;
#endif

} // namespace

void prepareProcess(int secondsUntilWatchdog)
{
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
    std::thread([secondsUntilWatchdog] {
        std::this_thread::sleep_for(std::chrono::seconds(slowness * secondsUntilWatchdog));
        std::fputs("The watchdog ended a test program that hangs.\n", stderr);
        std::abort();
    }).detach();
}

} // namespace testsupport
