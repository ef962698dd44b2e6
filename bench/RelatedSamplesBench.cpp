// The tests of several related fields: whole runs of the engine at 1,000,000 records of 5 fields, and the ranking of
// rows alone.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/BenchData.h"
#include "bench/EngineRun.h"
#include "related/RowRanks.h"
#include "support/QKVecValue.h"

namespace {

constexpr std::size_t kRecords = 1'000'000;
constexpr std::size_t kFields = 5;
constexpr int kCategories = 2;

void RunTest(benchmark::State& state, const char* test, const char* comparison, bench::Rows& rows,
             const QKVarList& fields) {
    std::vector<std::string> names;
    for (int i = 0; i < fields.Size(); ++i) names.push_back("x" + std::to_string(i));
    QKSettings entry;
    AddVecSetting(entry, "variableName", names, false);
    entry.AddSetting("typeOfMultipleComparison", comparison);
    QKSettings settings;
    settings.AddSetting("sigLevel", 1.1);  // always significant, so that the comparison runs
    settings.AddSetting(test, entry);
    bench::TimeRuns(state, settings, rows, fields);
}

void WholeRunOfRankedRows(benchmark::State& state, const char* test, const char* comparison) {
    bench::NormalRows rows(kRecords, kFields);
    RunTest(state, test, comparison, rows, bench::ContinuousFields(kFields));
}
BENCHMARK_CAPTURE(WholeRunOfRankedRows, Friedman, "RFriedmansTwoWayByRanks", "none")->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfRankedRows, FriedmanPairs, "RFriedmansTwoWayByRanks", "pairWise")->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfRankedRows, FriedmanSteps, "RFriedmansTwoWayByRanks", "stepWise")->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfRankedRows, KendallsW, "RKendallsCoefficient", "none")->Apply(bench::WallAndCpu);

void WholeRunOfDichotomies(benchmark::State& state, const char* test, const char* comparison) {
    bench::CategoryRows rows(kRecords, kFields, kCategories);
    RunTest(state, test, comparison, rows, bench::CategoryFields(kFields, kCategories));
}
BENCHMARK_CAPTURE(WholeRunOfDichotomies, CochransQ, "RCochransQ", "none")->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfDichotomies, CochransQSteps, "RCochransQ", "stepWise")->Apply(bench::WallAndCpu);

/// Rows of normal values, and of values 0 to 4, which have ties.
void RankingOfRows(benchmark::State& state, bool hasTies) {
    const auto fields = static_cast<std::size_t>(state.range(0));
    constexpr std::size_t kRows = 1000;
    const std::vector<double> values =
        hasTies ? bench::RandomValues(kRows * fields, std::uniform_int_distribution<int>(0, 4))
                : bench::RandomValues(kRows * fields, std::normal_distribution<double>());
    RowRanks ranks;
    std::vector<double> row(fields);
    for (auto _ : state) {
        for (std::size_t i = 0; i < kRows; ++i) {
            row.assign(values.begin() + static_cast<std::ptrdiff_t>(i * fields),
                       values.begin() + static_cast<std::ptrdiff_t>((i + 1) * fields));
            ranks.Sort(row);
            benchmark::DoNotOptimize(ranks.Rank(0, fields - 1));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRows));
}
BENCHMARK_CAPTURE(RankingOfRows, Distinct, false)->Arg(3)->Arg(5)->Arg(12)->Arg(40)->Arg(200);
BENCHMARK_CAPTURE(RankingOfRows, Tied, true)->Arg(3)->Arg(5)->Arg(12)->Arg(40)->Arg(200);

}  // namespace
