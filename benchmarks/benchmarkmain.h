#pragma once

#include <benchmark/benchmark.h>

/// Main function of a benchmark program. @p Application is QCoreApplication or QApplication, which exists while the
/// benchmarks run.
#define DFL_BENCHMARK_MAIN(Application)                                                                                \
    int main(int argc, char** argv)                                                                                    \
    {                                                                                                                  \
        Application application(argc, argv);                                                                           \
        benchmark::Initialize(&argc, argv);                                                                            \
        if (benchmark::ReportUnrecognizedArguments(argc, argv))                                                        \
            return 1;                                                                                                  \
        benchmark::RunSpecifiedBenchmarks();                                                                           \
        benchmark::Shutdown();                                                                                         \
        return 0;                                                                                                      \
    }
