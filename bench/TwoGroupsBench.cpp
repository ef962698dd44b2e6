// The tests of two groups: whole runs of the engine at 1,000,000 records, continuous and heavily tied; the screening of
// many fields by one group field; and the Hodges-Lehmann estimate alone, whose list of differences would have
// 10,000,000,000 entries for twice 100,000 records.

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/BenchData.h"
#include "bench/EngineRun.h"
#include "independent/MosesSignificance.h"
#include "independent/TARNHodgesLehmannTwoIndep.h"

namespace {

constexpr std::size_t kRecords = 1'000'000;
constexpr int kSteps = 7;  // of a tied field, as on a questionnaire

enum class Shape { kContinuous, kTied };

/// Test fields and behind them the group, a category index.
bench::Rows GroupedRows(std::size_t records, std::size_t testFields, Shape shape) {
    std::mt19937_64 random(20262);
    std::normal_distribution<double> normal(0.1, 1.0);
    std::uniform_int_distribution<int> steps(1, kSteps);
    std::vector<double> values;
    values.reserve(records * (testFields + 1));
    for (std::size_t i = 0; i < records; ++i) {
        for (std::size_t field = 0; field < testFields; ++field) {
            values.push_back(shape == Shape::kContinuous ? normal(random) : steps(random));
        }
        values.push_back(static_cast<double>(random() % 2));
    }
    return bench::Rows(testFields + 1, std::move(values));
}

QKVarList GroupedFields(std::size_t testFields) {
    QKVarList list = bench::ContinuousFields(testFields);
    list.AddNewVar(
        std::make_shared<QKCatVar>("g", "", false, std::vector<QKCatVar::NumericCategory>{{1, ""}, {2, ""}}));
    return list;
}

void Run(benchmark::State& state, const char* test, std::size_t records, std::size_t testFields, Shape shape) {
    bench::Rows rows = GroupedRows(records, testFields, shape);
    QKSettings settings;
    for (std::size_t field = 0; field < testFields; ++field) {
        QKSettings entry;
        entry.AddSetting("variableName", "x" + std::to_string(field));
        entry.AddSetting("groupVariableName", "g");
        settings.AddSetting(test, entry);
    }
    bench::TimeRuns(state, settings, rows, GroupedFields(testFields));
}

void WholeRunOfTwoGroups(benchmark::State& state, const char* test, Shape shape) {
    Run(state, test, kRecords, 1, shape);
}
BENCHMARK_CAPTURE(WholeRunOfTwoGroups, MannWhitney, "IMannWhitneyU", Shape::kContinuous)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoGroups, MannWhitneyTied, "IMannWhitneyU", Shape::kTied)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoGroups, HodgesLehmann, "IHodgesLehmannEstimateGroups", Shape::kContinuous)
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoGroups, HodgesLehmannTied, "IHodgesLehmannEstimateGroups", Shape::kTied)
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoGroups, Moses, "IMoses", Shape::kContinuous)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoGroups, MosesTied, "IMoses", Shape::kTied)->Apply(bench::WallAndCpu);

/// Every field of a wide table against one group field, in one run.
void ScreeningByMannWhitney(benchmark::State& state) {
    const auto size = static_cast<std::size_t>(state.range(0));
    Run(state, "IMannWhitneyU", size, size, Shape::kContinuous);
}
BENCHMARK(ScreeningByMannWhitney)->Arg(500)->Arg(2000)->Apply(bench::WallAndCpu);

/// The frequencies of a field of two groups.
class TwoCategories : public UnivariateResults {
 public:
    TwoCategories() : UnivariateResults(collector) {}
    bool GetFrequencies(int, std::map<int, std::int32_t>& frequencies) const override {
        frequencies = {{0, 1}, {1, 1}};
        return true;
    }

 private:
    QKVarList fields;
    UnivariateCollector collector{QKTarn::TarnMemoIterator(), fields};
};

/// The one pass of the test over records that are there, `range` in each group. `peak_mb` is that of the process, its
/// table included; it means something only if no larger benchmark ran before this one.
void HodgesLehmannTwoGroupsPass(benchmark::State& state) {
    bench::Rows rows = GroupedRows(2 * static_cast<std::size_t>(state.range(0)), 1, Shape::kContinuous);
    TwoCategories descriptives;
    for (auto _ : state) {
        auto settings = std::make_unique<QKSettings>();
        settings->AddSetting("variableIndex", 0);
        settings->AddSetting("groupVariableIndex", 1);
        TARNHodgesLehmannTwoIndep test(std::move(settings));
        test.SetUnivariateResults(&descriptives);
        benchmark::DoNotOptimize(test.BeginPass());
        rows.Rewind();
        while (rows.HasMore()) benchmark::DoNotOptimize(test.ProcessRecord(*rows.Next()));
        benchmark::DoNotOptimize(test.EndPass());
    }
    state.counters["peak_mb"] = static_cast<double>(bench::PeakKilobytes()) / 1024;
}
BENCHMARK(HodgesLehmannTwoGroupsPass)->Arg(1000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Apply(bench::WallAndCpu);

/// Sums of thousands of millions of terms.
void MosesChance(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(MosesSignificance(1'000'000'000, 3, 2'000'000'000, 0, Arithmetic::AsDefined()));
        benchmark::DoNotOptimize(
            MosesSignificance(1'800'030'000, 1'000'000'000, 1'000'000'000, 50'000'000, Arithmetic::AsDefined()));
        benchmark::DoNotOptimize(
            MosesSignificance(1'799'000'000, 1'000'000'000, 1'000'000'000, 50'000'000, Arithmetic::AsDefined()));
    }
}
BENCHMARK(MosesChance)->Apply(bench::WallAndCpu);

}  // namespace
