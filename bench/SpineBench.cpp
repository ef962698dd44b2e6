// The spine: reading records into the store, one sort order, one sign test with both of its passes, and what fields
// that no test uses cost a pass. 1,000,000 records throughout.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/BenchData.h"
#include "bench/EngineRun.h"
#include "planning/TARNTestWorker.h"
#include "records/InitialDataReader.h"
#include "records/SortOrder.h"
#include "related/TARNSign.h"
#include "support/QKVecValue.h"

namespace {

constexpr std::size_t kRecords = 1'000'000;

std::size_t AllocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::vector<int> AllOf(const QKVarList& fields) {
    std::vector<int> indices;
    for (int i = 0; i < fields.Size(); ++i) indices.push_back(i);
    return indices;
}

std::unique_ptr<TARNSign> SignOfFirstTwo() {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", std::vector<int>{0, 1}, false);
    return std::make_unique<TARNSign>(std::move(settings));
}

void ReadIntoStore(benchmark::State& state) {
    const auto fields = static_cast<std::size_t>(state.range(0));
    bench::NormalRows rows(kRecords, fields);
    const QKVarList varList = bench::ContinuousFields(fields);
    const std::vector<int> all = AllOf(varList);
    double ratio = 0;
    for (auto _ : state) {
        const std::size_t before = AllocatedBytes();
        QKTarn::InitialDataReader reader(&rows, false, &all, &varList);
        benchmark::DoNotOptimize(reader.ReadAll());
        ratio = static_cast<double>(AllocatedBytes() - before) / static_cast<double>(rows.ValueBytes());
    }
    state.counters["store_bytes_per_value_byte"] = ratio;
}
BENCHMARK(ReadIntoStore)->Arg(6)->Arg(60)->Apply(bench::WallAndCpu);

void OneSortOrder(benchmark::State& state) {
    std::mt19937_64 random(20261);
    std::normal_distribution<double> normal;
    std::vector<double> values(kRecords);
    for (double& value : values) value = normal(random);
    const WorkShare share(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(QKTarn::SortColumn(values, share).order.data());
}
BENCHMARK(OneSortOrder)->Arg(1)->Arg(2)->Apply(bench::WallAndCpu);

/// Both passes of a sign test on two fields, by columns, with the given number of fields beside them.
void SignTestPasses(benchmark::State& state) {
    const auto fields = static_cast<std::size_t>(state.range(0));
    bench::NormalRows rows(kRecords, fields);
    const QKVarList varList = bench::ContinuousFields(fields);
    const std::vector<int> all = AllOf(varList);
    const QKTarn::MissingMarkers markers = QKTarn::MarkersOfPasses(varList);
    QKTarn::InitialDataReader reader(&rows, false, &all, &varList);
    if (reader.ReadAll().IsError()) return state.SkipWithError("the records can't be read");
    QKTarn::ColumnView view(reader.Columns(), reader.IncompleteInStore());
    const WorkShare alone;
    for (auto _ : state) {
        TARNTestWorker worker(markers, true, rows, reader.IncompleteInSource());
        worker.SetColumns(view);
        worker.AddTest(SignOfFirstTwo());
        benchmark::DoNotOptimize(worker.RunTests(alone));
    }
}
BENCHMARK(SignTestPasses)->Arg(6)->Arg(60)->Apply(bench::WallAndCpu);

void WholeRunOfOneSignTest(benchmark::State& state) {
    bench::NormalRows rows(kRecords, 6);
    QKSettings entry;
    AddVecSetting(entry, "variableName", std::vector<std::string>{"x0", "x1"}, false);
    QKSettings settings;
    settings.AddSetting("RSign", entry);
    bench::TimeRuns(state, settings, rows, bench::ContinuousFields(6));
}
BENCHMARK(WholeRunOfOneSignTest)->Apply(bench::WallAndCpu);

}  // namespace
