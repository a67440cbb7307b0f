#include "support/testmain.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <thread>

namespace testsupport {

void prepareProcess(int secondsUntilWatchdog)
{
    qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    tzset();
    std::thread([secondsUntilWatchdog] {
        std::this_thread::sleep_for(std::chrono::seconds(secondsUntilWatchdog));
        std::fputs("The watchdog ended a test program that hangs.\n", stderr);
        std::abort();
    }).detach();
}

} // namespace testsupport
