// The one-sample tests of classes: whole runs of the engine at 1,000,000 records of one field.

#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

#include "bench/BenchData.h"
#include "bench/EngineRun.h"
#include "onesample/ProportionIntervals.h"
#include "support/QKVecValue.h"

namespace {

constexpr std::size_t kRecords = 1'000'000;
constexpr int kCategories = 5;
constexpr int kManyCategories = 1000;

QKSettings EntryWith(const std::string& key, const std::string& value) {
    QKSettings entry;
    entry.AddSetting("variableName", "x0");
    entry.AddSetting(key, value);
    return entry;
}

QKSettings CutEntry(const std::string& valueKey, const std::string& formation) {
    QKSettings entry = EntryWith("contVarClassFormation", formation);
    entry.AddSetting(valueKey, 0.1);
    return entry;
}

/// Every second category is given.
QKSettings ListEntry(int categories) {
    QKSettings entry = EntryWith("catVarClassFormation", "givenCategoryList");
    std::vector<double> list;
    for (int category = 0; category < categories; category += 2) list.push_back(category);
    AddVecSetting(entry, "givenCategoryList", list, false);
    return entry;
}

QKSettings WithAllIntervals(QKSettings entry) {
    for (const char* method : {"isDoClopperPearson", "isDoJeffreys", "isDoProfileLikelihood"}) {
        entry.AddSetting(method, true);
    }
    return entry;
}

void WholeRunOfContinuousField(benchmark::State& state, const char* test, const QKSettings& entry) {
    bench::NormalRows rows(kRecords, 1);
    bench::TimeRunsOf(state, test, entry, rows, bench::ContinuousFields(1));
}
BENCHMARK_CAPTURE(WholeRunOfContinuousField, Binomial, "OBinomial", CutEntry("givenCutPoint", "givenCutPoint"))
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfContinuousField, Intervals, "OEstimateConfidenceInterval",
                  WithAllIntervals(CutEntry("givenCutPoint", "givenCutPoint")))
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfContinuousField, Runs, "ORuns", CutEntry("cutPointValue", "cutPointValue"))
    ->Apply(bench::WallAndCpu);

void WholeRunOfCategoricalField(benchmark::State& state, const char* test, const QKSettings& entry, int categories) {
    bench::CategoryRows rows(kRecords, 1, categories);
    bench::TimeRunsOf(state, test, entry, rows, bench::CategoryFields(1, categories));
}
BENCHMARK_CAPTURE(WholeRunOfCategoricalField, BinomialOfData, "OBinomial",
                  EntryWith("catVarClassFormation", "getFromData"), 2)
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfCategoricalField, BinomialOfLongList, "OBinomial", ListEntry(kManyCategories),
                  kManyCategories)
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfCategoricalField, ChiSquare, "OChiSquare", EntryWith("classFormation", "getFromData"),
                  kCategories)
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfCategoricalField, RunsOfLongList, "ORuns", ListEntry(kManyCategories), kManyCategories)
    ->Apply(bench::WallAndCpu);

/// The three intervals from counts that are there.
void IntervalsOfCounts(benchmark::State& state) {
    const ProportionCounts counts{state.range(0) / 3, state.range(0) - state.range(0) / 3};
    for (auto _ : state) {
        benchmark::DoNotOptimize(ClopperPearsonInterval(counts, 0.95, Arithmetic::AsDefined()));
        benchmark::DoNotOptimize(JeffreysInterval(counts, 0.95, Arithmetic::AsDefined()));
        benchmark::DoNotOptimize(ProfileLikelihoodInterval(counts, 0.95, Arithmetic::AsDefined()));
    }
}
BENCHMARK(IntervalsOfCounts)->Arg(30)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

}  // namespace
