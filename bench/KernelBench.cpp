// The kernels of Kernels.h: what the machine takes for each statistic alone, at 1,000,000 records and one thread,
// sorted by the standard library and by Highway's VQSort. `scripts/bench kernels` puts the engine beside them.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "bench/BenchData.h"
#include "bench/Kernels.h"

namespace {

using bench::Kernels;
using bench::Sorter;

constexpr std::size_t kRecords = 1'000'000;
constexpr std::size_t kBins = 400;
constexpr Sorter kStandard = Sorter::kStandard;
constexpr Sorter kVectorised = Sorter::kVectorised;

enum class Shape { kContinuous, kSeven };

std::vector<double> Values(Shape shape, std::size_t records = kRecords) {
    return shape == Shape::kContinuous ? bench::RandomValues(records, std::normal_distribution<double>(0.1, 1.0))
                                       : bench::RandomValues(records, std::uniform_int_distribution<int>(1, 7));
}

/// Indices of groups, from other random numbers than the values.
std::vector<double> Groups(int count, std::size_t records = kRecords) {
    std::mt19937_64 random(20264);
    std::vector<double> groups(records);
    for (double& group : groups) group = static_cast<double>(random() % static_cast<unsigned>(count));
    return groups;
}

/// Whether the sorter is there; says so if it isn't.
bool IsThere(benchmark::State& state, Sorter sorter) {
    if (sorter == kStandard || bench::HasVectorisedSort()) return true;
    state.SkipWithError("built without Highway's VQSort");
    return false;
}

#define TARN_KERNEL(function, name, ...) BENCHMARK_CAPTURE(function, name, __VA_ARGS__)->Unit(benchmark::kMillisecond)

void KernelSort(benchmark::State& state, Sorter sorter, Shape shape) {
    if (!IsThere(state, sorter)) return;
    const std::vector<double> values = Values(shape);
    std::vector<double> sorted;
    for (auto _ : state) {
        sorted = values;  // the copy is timed with the rest
        bench::Sort(sorted, sorter);
        benchmark::DoNotOptimize(sorted.data());
    }
}
TARN_KERNEL(KernelSort, std, kStandard, Shape::kContinuous);
TARN_KERNEL(KernelSort, vq, kVectorised, Shape::kContinuous);
TARN_KERNEL(KernelSort, std_seven, kStandard, Shape::kSeven);
TARN_KERNEL(KernelSort, vq_seven, kVectorised, Shape::kSeven);

void KernelMannWhitney(benchmark::State& state, Sorter sorter, Shape shape) {
    if (!IsThere(state, sorter)) return;
    const std::vector<double> values = Values(shape);
    const std::vector<double> groups = Groups(2);
    Kernels kernels(sorter);
    for (auto _ : state) benchmark::DoNotOptimize(kernels.MannWhitney(values.data(), groups.data(), kRecords));
}
TARN_KERNEL(KernelMannWhitney, std, kStandard, Shape::kContinuous);
TARN_KERNEL(KernelMannWhitney, vq, kVectorised, Shape::kContinuous);
TARN_KERNEL(KernelMannWhitney, std_seven, kStandard, Shape::kSeven);
TARN_KERNEL(KernelMannWhitney, vq_seven, kVectorised, Shape::kSeven);

void KernelKruskalWallis(benchmark::State& state, Sorter sorter, Shape shape) {
    if (!IsThere(state, sorter)) return;
    constexpr int kGroups = 5;
    const std::vector<double> values = Values(shape);
    const std::vector<double> groups = Groups(kGroups);
    Kernels kernels(sorter);
    for (auto _ : state) {
        benchmark::DoNotOptimize(kernels.KruskalWallis(values.data(), groups.data(), kRecords, kGroups));
    }
}
TARN_KERNEL(KernelKruskalWallis, std, kStandard, Shape::kContinuous);
TARN_KERNEL(KernelKruskalWallis, vq, kVectorised, Shape::kContinuous);
TARN_KERNEL(KernelKruskalWallis, vq_seven, kVectorised, Shape::kSeven);

void KernelKolmogorovSmirnov(benchmark::State& state, Sorter sorter, Shape shape) {
    if (!IsThere(state, sorter)) return;
    const std::vector<double> values = Values(shape);
    const std::vector<double> groups = Groups(2);
    Kernels kernels(sorter);
    for (auto _ : state) benchmark::DoNotOptimize(kernels.KolmogorovSmirnov(values.data(), groups.data(), kRecords));
}
TARN_KERNEL(KernelKolmogorovSmirnov, std, kStandard, Shape::kContinuous);
TARN_KERNEL(KernelKolmogorovSmirnov, vq, kVectorised, Shape::kContinuous);
TARN_KERNEL(KernelKolmogorovSmirnov, vq_seven, kVectorised, Shape::kSeven);

/// Fields that differ, side by side.
class Fields {
 public:
    explicit Fields(std::size_t count) : values_(Values(Shape::kContinuous, count * kRecords)) {
        for (std::size_t i = 0; i < count; ++i) columns_.push_back(values_.data() + i * kRecords);
    }
    const double* const* Columns() const { return columns_.data(); }
    const double* operator[](std::size_t field) const { return columns_[field]; }

 private:
    std::vector<double> values_;
    std::vector<const double*> columns_;
};

void KernelWilcoxon(benchmark::State& state, Sorter sorter) {
    if (!IsThere(state, sorter)) return;
    const Fields fields(2);
    Kernels kernels(sorter);
    for (auto _ : state) benchmark::DoNotOptimize(kernels.Wilcoxon(fields[0], fields[1], kRecords));
}
TARN_KERNEL(KernelWilcoxon, std, kStandard);
TARN_KERNEL(KernelWilcoxon, vq, kVectorised);

void KernelSign(benchmark::State& state) {
    const Fields fields(2);
    for (auto _ : state) benchmark::DoNotOptimize(Kernels::Sign(fields[0], fields[1], kRecords));
}
BENCHMARK(KernelSign)->Unit(benchmark::kMillisecond);

void KernelFriedman(benchmark::State& state) {
    constexpr std::size_t kFields = 5;
    const Fields fields(kFields);
    for (auto _ : state) benchmark::DoNotOptimize(Kernels::Friedman(fields.Columns(), kFields, kRecords));
}
BENCHMARK(KernelFriedman)->Unit(benchmark::kMillisecond);

/// 2,000 fields of 2,000 records by one group field.
void KernelScreening(benchmark::State& state, Sorter sorter) {
    if (!IsThere(state, sorter)) return;
    constexpr std::size_t kSize = 2000;
    const std::vector<double> values = Values(Shape::kContinuous, kSize * kSize);
    const std::vector<double> groups = Groups(2, kSize);
    Kernels kernels(sorter);
    for (auto _ : state) {
        double sum = 0;
        for (std::size_t i = 0; i < kSize; ++i) {
            sum += kernels.MannWhitney(values.data() + i * kSize, groups.data(), kSize).z;
        }
        benchmark::DoNotOptimize(sum);
    }
}
TARN_KERNEL(KernelScreening, std, kStandard);
TARN_KERNEL(KernelScreening, vq, kVectorised);

void KernelMoments(benchmark::State& state) {
    const std::vector<double> values = Values(Shape::kContinuous);
    for (auto _ : state) benchmark::DoNotOptimize(bench::MomentsOf(values.data(), kRecords));
}
BENCHMARK(KernelMoments)->Unit(benchmark::kMillisecond);

void KernelHistogram(benchmark::State& state) {
    const std::vector<double> values = Values(Shape::kContinuous);
    const bench::Moments moments = bench::MomentsOf(values.data(), kRecords);
    for (auto _ : state) {
        bench::Bins bins{std::vector<std::uint32_t>(kBins), std::vector<double>(kBins)};
        bench::FillBins(values.data(), kRecords, moments.min, moments.max, bins);
        benchmark::DoNotOptimize(bins.sums.data());
    }
}
BENCHMARK(KernelHistogram)->Unit(benchmark::kMillisecond);

}  // namespace
