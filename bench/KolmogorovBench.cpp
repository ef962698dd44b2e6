// The Kolmogorov-Smirnov tests of one and of two samples, the runs test of two groups and the Wilcoxon test of one
// field: whole runs of the engine at 1,000,000 records. And the Poisson distribution function over the values of a
// walk, which is a sum that goes on, beside one that begins anew with each value.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/BenchData.h"
#include "bench/EngineRun.h"
#include "onesample/TheoreticalDistribution.h"

namespace {

constexpr std::size_t kRecords = 1'000'000;

template <typename Distribution>
void WholeRunOfOneSample(benchmark::State& state, const char* test, Distribution values) {
    bench::Rows rows(1, bench::RandomValues(kRecords, values));
    QKSettings entry;
    entry.AddSetting("variableName", "x0");
    entry.AddSetting("isUseSample", true);
    entry.AddSetting("userSpecifyTestValue", true);
    entry.AddSetting("testValue", 0.1);
    bench::TimeRunsOf(state, test, entry, rows, bench::ContinuousFields(1));
}
const std::normal_distribution<double> kNormalValues(0.1, 1.0);
BENCHMARK_CAPTURE(WholeRunOfOneSample, WilcoxonOneSample, "OWilcoxonSignedRanks", kNormalValues)
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfOneSample, Normal, "OKolmogorovSmirnovNormal", kNormalValues)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfOneSample, Uniform, "OKolmogorovSmirnovUniform", kNormalValues)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfOneSample, Exponential, "OKolmogorovSmirnovExponential",
                  std::exponential_distribution<double>(0.5))
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfOneSample, Poisson, "OKolmogorovSmirnovPoisson", std::poisson_distribution<int>(4.0))
    ->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfOneSample, PoissonOfLargeCounts, "OKolmogorovSmirnovPoisson",
                  std::poisson_distribution<int>(90'000.0))
    ->Apply(bench::WallAndCpu);

/// A continuous field, and behind it the group, a category index.
bench::Rows RowsOfTwoGroups(bool isTied) {
    std::mt19937_64 random(20262);
    std::normal_distribution<double> normal(0.1, 1.0);
    std::uniform_int_distribution<int> steps(1, 7);
    std::vector<double> values;
    values.reserve(2 * kRecords);
    for (std::size_t i = 0; i < kRecords; ++i) {
        values.push_back(isTied ? steps(random) : normal(random));
        values.push_back(static_cast<double>(random() % 2));
    }
    return bench::Rows(2, std::move(values));
}

void WholeRunOfTwoSamples(benchmark::State& state, const char* test, bool isTied) {
    bench::Rows rows = RowsOfTwoGroups(isTied);
    QKVarList fields = bench::ContinuousFields(1);
    fields.AddNewVar(
        std::make_shared<QKCatVar>("g", "", false, std::vector<QKCatVar::NumericCategory>{{1, ""}, {2, ""}}));
    QKSettings entry;
    entry.AddSetting("variableName", "x0");
    entry.AddSetting("groupVariableName", "g");
    bench::TimeRunsOf(state, test, entry, rows, fields);
}
BENCHMARK_CAPTURE(WholeRunOfTwoSamples, KolmogorovSmirnov, "IKolmogorovSmirnov", false)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoSamples, KolmogorovSmirnovTied, "IKolmogorovSmirnov", true)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoSamples, WaldWolfowitz, "IWaldWolfowitzRuns", false)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(WholeRunOfTwoSamples, WaldWolfowitzTied, "IWaldWolfowitzRuns", true)->Apply(bench::WallAndCpu);

/// Every whole number up to `range`, whose half is the mean.
void PoissonSum(benchmark::State& state, bool isBegunAnew) {
    const auto largest = static_cast<double>(state.range(0));
    for (auto _ : state) {
        PoissonCdf poisson(largest / 2);
        for (double x = 0; x <= largest; ++x) {
            if (isBegunAnew) poisson = PoissonCdf(largest / 2);
            benchmark::DoNotOptimize(poisson.At(x));
        }
    }
}
BENCHMARK_CAPTURE(PoissonSum, GoesOn, false)->Arg(1000)->Arg(4000)->Apply(bench::WallAndCpu);
BENCHMARK_CAPTURE(PoissonSum, BegunAnew, true)->Arg(1000)->Arg(4000)->Apply(bench::WallAndCpu);

}  // namespace
