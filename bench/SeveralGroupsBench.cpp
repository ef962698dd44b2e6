// The tests of several groups: whole runs of the engine at 1,000,000 records, with their comparisons, and the sums of
// the Jonckheere-Terpstra statistic alone, which go over 190 pairs of 20 groups.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "bench/BenchData.h"
#include "bench/EngineRun.h"
#include "independent/JonckheereSubset.h"

namespace {

constexpr std::size_t kRecords = 1'000'000;
constexpr int kSteps = 7;  // of a tied field, as on a questionnaire

enum class Shape { kContinuous, kTied };

/// A test field that rises a little with the group, and the group, a category index.
bench::Rows GroupedRows(int groups, Shape shape) {
    std::mt19937_64 random(20263);
    std::normal_distribution<double> normal(0.0, 1.0);
    std::uniform_int_distribution<int> steps(1, kSteps);
    std::vector<double> values;
    values.reserve(2 * kRecords);
    for (std::size_t i = 0; i < kRecords; ++i) {
        const auto group = static_cast<double>(random() % static_cast<unsigned>(groups));
        values.push_back(shape == Shape::kContinuous ? normal(random) + group / 100 : steps(random));
        values.push_back(group);
    }
    return bench::Rows(2, std::move(values));
}

QKVarList GroupedFields(int groups) {
    QKVarList list = bench::ContinuousFields(1);
    std::vector<QKCatVar::NumericCategory> table;
    for (int group = 0; group < groups; ++group) table.push_back({static_cast<double>(group), ""});
    list.AddNewVar(std::make_shared<QKCatVar>("g", "", false, std::move(table)));
    return list;
}

void WholeRunOfGroups(benchmark::State& state, const char* test, int groups, Shape shape, const char* comparison) {
    bench::Rows rows = GroupedRows(groups, shape);
    QKSettings entry;
    entry.AddSetting("variableName", "x0");
    entry.AddSetting("groupVariableName", "g");
    entry.AddSetting("typeOfMultipleComparison", comparison);
    bench::TimeRunsOf(state, test, entry, rows, GroupedFields(groups));
}

constexpr const char* kKruskal = "IKruskalWallis";
constexpr const char* kJonckheere = "IJonckheereTerpstra";
constexpr const char* kMedian = "IMedian";

#define TARN_GROUPS_BENCHMARK(name, ...) \
    BENCHMARK_CAPTURE(WholeRunOfGroups, name, __VA_ARGS__)->Apply(bench::WallAndCpu)

TARN_GROUPS_BENCHMARK(KruskalWallis5, kKruskal, 5, Shape::kContinuous, "none");
TARN_GROUPS_BENCHMARK(KruskalWallis5Tied, kKruskal, 5, Shape::kTied, "none");
TARN_GROUPS_BENCHMARK(KruskalWallis5Pairs, kKruskal, 5, Shape::kContinuous, "pairWise");
TARN_GROUPS_BENCHMARK(KruskalWallis5Steps, kKruskal, 5, Shape::kContinuous, "stepWise");
TARN_GROUPS_BENCHMARK(JonckheereTerpstra5, kJonckheere, 5, Shape::kContinuous, "none");
TARN_GROUPS_BENCHMARK(JonckheereTerpstra20, kJonckheere, 20, Shape::kContinuous, "none");
TARN_GROUPS_BENCHMARK(JonckheereTerpstra20Tied, kJonckheere, 20, Shape::kTied, "none");
TARN_GROUPS_BENCHMARK(JonckheereTerpstra20Pairs, kJonckheere, 20, Shape::kContinuous, "pairWise");
TARN_GROUPS_BENCHMARK(JonckheereTerpstra20Steps, kJonckheere, 20, Shape::kContinuous, "stepWise");
TARN_GROUPS_BENCHMARK(Median5, kMedian, 5, Shape::kContinuous, "none");
TARN_GROUPS_BENCHMARK(Median5Pairs, kMedian, 5, Shape::kContinuous, "pairWise");
TARN_GROUPS_BENCHMARK(Median5Steps, kMedian, 5, Shape::kContinuous, "stepWise");

// Many groups: what takes time for each pair or each subset shows here.
TARN_GROUPS_BENCHMARK(KruskalWallis200Steps, kKruskal, 200, Shape::kContinuous, "stepWise");
TARN_GROUPS_BENCHMARK(JonckheereTerpstra200Pairs, kJonckheere, 200, Shape::kContinuous, "pairWise");
TARN_GROUPS_BENCHMARK(JonckheereTerpstra200Steps, kJonckheere, 200, Shape::kContinuous, "stepWise");
TARN_GROUPS_BENCHMARK(Median200Pairs, kMedian, 200, Shape::kContinuous, "pairWise");
TARN_GROUPS_BENCHMARK(Median200Steps, kMedian, 200, Shape::kContinuous, "stepWise");

/// J of all groups, from records that are in order.
void JonckheereStatistic(benchmark::State& state) {
    const auto groups = static_cast<std::size_t>(state.range(0));
    std::mt19937_64 random(20263);
    std::vector<std::int32_t> places(kRecords);
    std::vector<double> values(kRecords);
    const std::vector<std::int32_t> weights(kRecords, 1);
    std::vector<double> sizes(groups, 0.0);
    std::vector<std::size_t> all(groups);
    std::iota(all.begin(), all.end(), std::size_t{0});
    for (std::size_t i = 0; i < kRecords; ++i) {
        const std::size_t place = random() % groups;
        places[i] = static_cast<std::int32_t>(place);
        values[i] = 0.5 * static_cast<double>(i);
        ++sizes[place];
    }
    for (auto _ : state) {
        JonckheereWalk walk;
        walk.Begin(groups, PairRankSums::Ties::kShared, Arithmetic::AsDefined());
        walk.Add(values.data(), weights.data(), places.data(), kRecords);
        walk.Close();
        JonckheereSubset subset;
        subset.SetGroups(sizes);
        subset.Compute(walk.Of(all), Arithmetic::AsDefined());
        benchmark::DoNotOptimize(subset.z);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kRecords));
}
BENCHMARK(JonckheereStatistic)->Arg(2)->Arg(5)->Arg(20)->Apply(bench::WallAndCpu);

}  // namespace
