#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <cstdlib>
#include <memory>
#include <sstream>

#include "bench/BenchData.h"
#include "catalogue/TARNFactory.h"
#include "platform/common/QKSettings.h"

/// Whole runs of the engine, as all benchmarks time them.
namespace bench {

/// Wall time beside the CPU time of all threads together; without this it would be that of the calling one.
inline void WallAndCpu(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
}

/// The timed loop: a planner is made, runs over the rows, and writes its document. TARN_BENCH_THREADS in the
/// environment is the budget of threads.
inline void TimeRuns(benchmark::State& state, QKSettings settings, Rows& rows, QKVarList fields) {
    if (const char* threads = std::getenv("TARN_BENCH_THREADS")) settings.AddSetting("threads", threads);
    for (auto _ : state) {
        TARNFactory factory;
        const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(settings, fields));
        benchmark::DoNotOptimize(algorithm->Run(rows));
        std::ostringstream document;
        benchmark::DoNotOptimize(algorithm->WriteResults(document, {}));
    }
}

/// The same of one test.
inline void TimeRunsOf(benchmark::State& state, const char* test, const QKSettings& entry, Rows& rows,
                       const QKVarList& fields) {
    QKSettings settings;
    settings.AddSetting(test, entry);
    TimeRuns(state, settings, rows, fields);
}

/// The most memory that the process ever had.
inline long PeakKilobytes() {
    struct rusage usage {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace bench
