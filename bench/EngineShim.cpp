// The engine as a Python script calls it through ctypes: fields that stand in memory as columns, a plan, the document
// as bytes. With it the kernels, so that one process has both. Used by bench/in_process.py alone.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "bench/Kernels.h"
#include "catalogue/TARNFactory.h"
#include "host/ByteSource.h"
#include "host/plan/PlanSettings.h"
#include "platform/Export.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"

namespace {

/// Columns that somebody else owns: as such, and as records for whoever wants those.
class Columns : public MultiPassRecordIter, public ColumnSource {
 public:
    Columns(std::vector<const double*> columns, std::size_t records)
        : columns_(std::move(columns)), records_(records), current_(columns_.size()) {}

    bool HasMore() override { return next_ < records_; }
    Record* Next() override {
        for (std::size_t field = 0; field < columns_.size(); ++field) current_[field] = columns_[field][next_];
        ++next_;
        return &current_;
    }
    int GetState() override { return 0; }
    int Rewind() override {
        next_ = 0;
        return 0;
    }

    std::size_t RecordCount() const override { return records_; }
    std::size_t FieldCount() const override { return columns_.size(); }
    const double* Column(std::size_t field) const override { return columns_[field]; }

 private:
    std::vector<const double*> columns_;
    std::size_t records_;
    std::size_t next_ = 0;
    Record current_;
};

/// The n categories 1 .. n; a value is their index.
std::vector<QKCatVar::NumericCategory> CategoriesUpTo(int count) {
    std::vector<QKCatVar::NumericCategory> categories;
    for (int category = 1; category <= count; ++category) categories.push_back({static_cast<double>(category), ""});
    return categories;
}

struct Job {
    QKSettings settings;
    QKVarList fields;
    Columns columns;
    std::string document;
};

}  // namespace

extern "C" {

/// What a run needs. A field with no categories is continuous. The columns are borrowed until `tarn_bench_free`. Null
/// if the plan can't be read.
TARN_EXPORT void* tarn_bench_make(const char* plan, const char* const* names, const double* const* columns,
                                  const std::int32_t* categories, std::size_t fields, std::size_t records) try {
    tarn::ByteSource source = tarn::ByteSource::FromMemory("plan", plan);
    auto job = std::make_unique<Job>(
        Job{tarn::ReadPlan(source).settings, {}, Columns({columns, columns + fields}, records), ""});
    for (std::size_t i = 0; i < fields; ++i) {
        if (categories[i] == 0) {
            job->fields.AddNewVar(std::make_shared<QKContVar>(names[i], ""));
        } else {
            job->fields.AddNewVar(std::make_shared<QKCatVar>(names[i], "", false, CategoriesUpTo(categories[i])));
        }
    }
    job->fields.SetCounts({static_cast<double>(records), records, 0, 0, 0});
    return job.release();
} catch (const std::exception&) {
    return nullptr;
}

/// One run: an algorithm is made, runs over the columns and writes its document. The status code, 0 for success.
TARN_EXPORT int tarn_bench_run(void* handle) try {
    Job& job = *static_cast<Job*>(handle);
    job.columns.Rewind();
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(job.settings, job.fields));
    if (algorithm == nullptr) return static_cast<int>(factory.GetStatus().GetErrorCode());
    QKStatus status = algorithm->Run(job.columns);
    if (status.IsError()) return static_cast<int>(status.GetErrorCode());
    std::ostringstream document;
    status = algorithm->WriteResults(document, {"tarn", "", ""});
    if (status.IsError()) return static_cast<int>(status.GetErrorCode());
    job.document = std::move(document).str();
    return 0;
} catch (const std::exception&) {
    return -1;
}

/// The document of the last run, borrowed until the next one.
TARN_EXPORT const char* tarn_bench_document(void* handle, std::size_t* size) {
    const std::string& document = static_cast<Job*>(handle)->document;
    *size = document.size();
    return document.data();
}

TARN_EXPORT void tarn_bench_free(void* handle) {
    delete static_cast<Job*>(handle);
}

/// The kernels, with a sorter of 0 for the standard library's and 1 for VQSort.
TARN_EXPORT int tarn_bench_has_vqsort() {
    return bench::HasVectorisedSort() ? 1 : 0;
}
TARN_EXPORT void* tarn_bench_kernels_make(int sorter) {
    return new bench::Kernels(sorter == 1 ? bench::Sorter::kVectorised : bench::Sorter::kStandard);
}
TARN_EXPORT void tarn_bench_kernels_free(void* kernels) {
    delete static_cast<bench::Kernels*>(kernels);
}
TARN_EXPORT double tarn_bench_mann_whitney(void* kernels, const double* values, const double* groups,
                                           std::size_t records) {
    return static_cast<bench::Kernels*>(kernels)->MannWhitney(values, groups, records).statistic;
}
TARN_EXPORT double tarn_bench_kruskal_wallis(void* kernels, const double* values, const double* groups,
                                             std::size_t records, unsigned groupCount) {
    return static_cast<bench::Kernels*>(kernels)->KruskalWallis(values, groups, records, groupCount);
}
TARN_EXPORT double tarn_bench_kolmogorov_smirnov(void* kernels, const double* values, const double* groups,
                                                 std::size_t records) {
    return static_cast<bench::Kernels*>(kernels)->KolmogorovSmirnov(values, groups, records);
}
TARN_EXPORT double tarn_bench_wilcoxon(void* kernels, const double* first, const double* second, std::size_t records) {
    return static_cast<bench::Kernels*>(kernels)->Wilcoxon(first, second, records);
}
TARN_EXPORT double tarn_bench_sign(const double* first, const double* second, std::size_t records) {
    return bench::Kernels::Sign(first, second, records);
}
TARN_EXPORT double tarn_bench_friedman(const double* const* fields, std::size_t fieldCount, std::size_t records) {
    return bench::Kernels::Friedman(fields, fieldCount, records);
}
/// U of every field by one group field, into `statistics`.
TARN_EXPORT void tarn_bench_screening(void* kernels, const double* const* fields, std::size_t fieldCount,
                                      const double* groups, std::size_t records, double* statistics) {
    for (std::size_t i = 0; i < fieldCount; ++i) {
        statistics[i] = static_cast<bench::Kernels*>(kernels)->MannWhitney(fields[i], groups, records).statistic;
    }
}

}  // extern "C"
