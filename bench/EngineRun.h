#pragma once

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <memory>
#include <sstream>

#include "bench/BenchData.h"
#include "catalogue/TARNFactory.h"
#include "platform/common/QKSettings.h"

/// Whole runs of the engine, as all benchmarks time them.
namespace bench {

/// The timed loop: a planner is made, runs over the rows, and writes its document.
inline void TimeRuns(benchmark::State& state, QKSettings settings, Rows& rows, QKVarList fields) {
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
