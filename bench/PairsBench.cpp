// The tests of a pair of fields: whole runs of the engine at 1,000,000 records, and the Hodges-Lehmann estimate alone,
// whose list of averages would have 5,000,050,000 entries for 100,000 records.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/BenchData.h"
#include "bench/EngineRun.h"
#include "related/TARNHodgesLehmannPairs.h"
#include "support/QKVecValue.h"
#include "support/WeightedOrder.h"

namespace {

constexpr std::size_t kRecords = 1'000'000;
constexpr std::size_t kFields = 2;
constexpr int kCategories = 5;

void RunPair(benchmark::State& state, const char* test, bench::Rows& rows, const QKVarList& fields) {
    QKSettings entry;
    AddVecSetting(entry, "variableName", std::vector<std::string>{"x0", "x1"}, false);
    bench::TimeRunsOf(state, test, entry, rows, fields);
}

void WholeRunOfContinuousPair(benchmark::State& state, const char* test) {
    bench::NormalRows rows(kRecords, kFields);
    RunPair(state, test, rows, bench::ContinuousFields(kFields));
}
BENCHMARK_CAPTURE(WholeRunOfContinuousPair, Sign, "RSign")->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfContinuousPair, Wilcoxon, "RWilcoxonSignedRanks")->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfContinuousPair, HodgesLehmann, "RHodgesLehmannEstimatePairs")->Apply(bench::WallAndCpu);

void WholeRunOfCategoricalPair(benchmark::State& state, const char* test, int categories) {
    bench::CategoryRows rows(kRecords, kFields, categories);
    RunPair(state, test, rows, bench::CategoryFields(kFields, categories));
}
BENCHMARK_CAPTURE(WholeRunOfCategoricalPair, McNemar, "RMcNemar", 2)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfCategoricalPair, MarginalHomogeneity, "RMarginalHomogeneity", kCategories)
    ->Apply(bench::WallAndCpu);

/// The one pass of the test over records that are there. `peak_growth_mb` is what the process grew by; it means
/// something only if no larger benchmark ran before this one.
void HodgesLehmannPass(benchmark::State& state) {
    bench::NormalRows rows(static_cast<std::size_t>(state.range(0)), kFields);
    const long before = bench::PeakKilobytes();
    for (auto _ : state) {
        auto settings = std::make_unique<QKSettings>();
        AddVecSetting(*settings, "variableIndex", std::vector<int>{0, 1}, false);
        TARNHodgesLehmannPairs test(std::move(settings));
        benchmark::DoNotOptimize(test.BeginPass());
        rows.Rewind();
        while (rows.HasMore()) benchmark::DoNotOptimize(test.ProcessRecord(*rows.Next()));
        benchmark::DoNotOptimize(test.EndPass());
    }
    state.counters["peak_growth_mb"] = static_cast<double>(bench::PeakKilobytes() - before) / 1024;
}
BENCHMARK(HodgesLehmannPass)->Arg(1000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Apply(bench::WallAndCpu);

}  // namespace
