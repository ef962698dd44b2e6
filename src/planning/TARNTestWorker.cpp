#include "planning/TARNTestWorker.h"

#include <algorithm>
#include <exception>
#include <map>
#include <utility>

#include "planning/TARNReporter.h"
#include "support/ResultElements.h"
#include "vocabulary/StatusCodes.h"

namespace {

bool StopsTheRun(const QKStatus& status) {
    return status.GetErrorCode() == StatusCode::kOutOfMemory;
}

}  // namespace

/// The records of one pass: a stream in its own order, or the store in the order of a field. Says of each record
/// whether it misses anything, as found when it was read, so that no pass looks at all fields again.
class TARNTestWorker::View {
 public:
    explicit View(const TARNTestWorker& worker)
        : markers_(*worker.missingMarkers),
          sorted_(worker.sortField == kNotSorted ? nullptr : worker.sortedData->IteratorOf(worker.sortField)),
          records_(sorted_ ? *sorted_ : *worker.iterator),
          incomplete_(*worker.incompleteRecords) {
        records_.Rewind();
    }

    bool HasMore() { return records_.HasMore(); }

    Record& Next() {
        Record& record = *records_.Next();
        const std::size_t ordinal = sorted_ ? static_cast<std::size_t>(sorted_->Ordinal()) : next_++;
        isIncomplete_ = ordinal < incomplete_.size() ? incomplete_[ordinal] : MissesAnything(record);
        return record;
    }

    /// Of the record that was handed out last.
    bool IsIncomplete() const { return isIncomplete_; }

 private:
    /// For a stream that grew since it was read.
    bool MissesAnything(const Record& record) const {
        for (int field = 0; field < static_cast<int>(record.Size()); ++field) {
            if (QKTarn::IsMissingIn(record, field, markers_)) return true;
        }
        return false;
    }

    const QKTarn::MissingMarkers& markers_;
    TARNSortedIterator* sorted_;
    MultiPassRecordIter& records_;
    const QKTarn::RecordFlags& incomplete_;
    std::size_t next_ = 0;
    bool isIncomplete_ = false;
};

/// Some records of a view as a test may see them: all of them, or those that miss nothing that the test uses.
class TARNTestWorker::Batch : public ColumnBatch {
 public:
    explicit Batch(const TARNTestWorker& worker) : worker_(worker), view_(*worker.columns) {}

    /// Takes the records of the places `begin` to `end` that the test may see; false if there is none.
    bool Take(std::size_t begin, std::size_t end, const std::vector<int>& usedFields) {
        begin_ = begin;
        values_.clear();
        wholeNumbers_.clear();
        isWhole_ = !MayMiss(usedFields);
        if (isWhole_) {
            SetSize(end - begin);
            return end > begin;
        }
        places_.clear();
        isSeen_.assign(end - begin, true);
        if (worker_.analysisMissing && !usedFields.empty()) {
            HideMissing(usedFields);
        } else {
            for (std::size_t i = 0; i < isSeen_.size(); ++i) isSeen_[i] = !view_.IsIncomplete(begin + i);
        }
        for (std::size_t i = 0; i < isSeen_.size(); ++i) {
            if (isSeen_[i]) places_.push_back(static_cast<std::uint32_t>(i));
        }
        SetSize(places_.size());
        return !places_.empty();
    }

    const double* Values(int field) override {
        const double* const values = view_.Values(field) + begin_;
        return isWhole_ ? values : Pick(values, values_[field]);
    }
    const std::int32_t* WholeNumbers(int field) override {
        const std::int32_t* const numbers = view_.WholeNumbers(field) + begin_;
        return isWhole_ ? numbers : Pick(numbers, wholeNumbers_[field]);
    }

 private:
    bool MayMiss(const std::vector<int>& usedFields) const {
        const QKTarn::ColumnStore& store = view_.Store();
        if (!worker_.analysisMissing || usedFields.empty()) return store.HasMissing();
        return std::any_of(usedFields.begin(), usedFields.end(), [&](int field) { return store.HasMissing(field); });
    }

    void HideMissing(const std::vector<int>& usedFields) {
        for (const int field : usedFields) {
            if (!view_.Store().HasMissing(field)) continue;
            const double* const values = view_.Values(field) + begin_;
            const double marker = (*worker_.missingMarkers)[static_cast<std::size_t>(field)];
            for (std::size_t i = 0; i < isSeen_.size(); ++i) isSeen_[i] &= static_cast<char>(values[i] != marker);
        }
    }

    /// The values of the records that are seen, made when they are asked for first.
    template <typename Value>
    const Value* Pick(const Value* values, std::vector<Value>& picked) const {
        if (picked.empty()) {
            picked.resize(places_.size());
            for (std::size_t i = 0; i < places_.size(); ++i) picked[i] = values[places_[i]];
        }
        return picked.data();
    }

    const TARNTestWorker& worker_;
    QKTarn::ColumnView& view_;
    std::size_t begin_ = 0;
    bool isWhole_ = true;
    std::vector<char> isSeen_;
    std::vector<std::uint32_t> places_;
    std::map<int, std::vector<double>> values_;
    std::map<int, std::vector<std::int32_t>> wholeNumbers_;
};

TARNTestWorker::TARNTestWorker(const QKTarn::MissingMarkers& markers, bool analysisTreatment,
                               MultiPassRecordIter& records, const QKTarn::RecordFlags& incomplete)
    : iterator(&records),
      incompleteRecords(&incomplete),
      missingMarkers(&markers),
      analysisMissing(analysisTreatment) {}

void TARNTestWorker::SetProgress(ProgressListener* progressListener, double base, double share) {
    listener = progressListener;
    progressBase = base;
    progressShare = share;
}

void TARNTestWorker::SetSorted(int field, const TARNSortedDataSet& views) {
    sortField = field;
    sortedData = &views;
}

QKStatus TARNTestWorker::RunTests(const WorkShare& work) {
    QKStatus result;
    totalPasses = 0;
    remaining = 0;
    try {
        if (sortField != kNotSorted) {
            columns = sortedData->ViewBy(sortField);
            columns->Sort(work);
        }
        for (const auto& test : tests) {
            test->SetUnivariateResults(univariateResults.get());
            test->SetWork(&work);
        }
        result = RunPasses(work);
    } catch (const std::exception&) {
        result = QKStatus(StatusCode::kOutOfMemory);
    }
    if (sortField != kNotSorted) columns->Release();
    remaining = 0;
    NoteProgress();
    return result;
}

QKStatus TARNTestWorker::RunPasses(const WorkShare& work) {
    QKStatus result;
    std::vector<TARNTest*> active;
    for (const auto& test : tests) active.push_back(test.get());
    do {
        if (work.IsStopped()) break;
        if (!active.empty()) result = RunPass(active, work);
        if (StopsTheRun(result) || work.IsStopped()) break;
        // Asked of every test: one that left an earlier pass may come back.
        active.clear();
        for (const auto& test : tests) {
            if (test->NeedsAnotherPass()) active.push_back(test.get());
        }
    } while (!active.empty());
    return result;
}

QKStatus TARNTestWorker::RunPass(const std::vector<TARNTest*>& active, const WorkShare& work) {
    std::vector<ActiveTest> pass;
    QKStatus status = Begin(active, pass);
    if (StopsTheRun(status)) return status;
    NoteProgress();

    status = ProcessColumns(pass, work);
    if (StopsTheRun(status)) return status;
    status = ProcessRecords(pass, work);
    if (StopsTheRun(status)) return status;
    remaining = 0;
    if (!work.IsStopped()) {
        status = End(pass);
        if (StopsTheRun(status)) return status;
    }
    NoteProgress();
    return QKStatus();
}

QKStatus TARNTestWorker::Begin(const std::vector<TARNTest*>& active, std::vector<ActiveTest>& pass) {
    remaining = 0;
    for (TARNTest* test : active) {
        const QKStatus begun = test->BeginPass();
        if (StopsTheRun(begun)) return begun;
        ActiveTest entry{test, nullptr, {}, !begun.IsError()};
        test->GetUsedVariables(entry.usedFields);
        if (entry.started) entry.byColumns = TakesColumns(*test, entry.usedFields);
        pass.push_back(std::move(entry));
        remaining = std::max(remaining, test->GetPassKind());
    }
    if (firstPass) {
        totalPasses = remaining;
        lastReported = remaining + 1;
        firstPass = false;
    }
    return QKStatus();
}

/// Where a value is no number, comparisons depend on the order in which they are made, so the records come one by one.
/// That is known of the columns and so the same in all passes of a test, which may keep something from one to the next.
ColumnTest* TARNTestWorker::TakesColumns(TARNTest& test, const std::vector<int>& usedFields) const {
    if (columns == nullptr) return nullptr;
    const bool areNumbers =
        std::none_of(usedFields.begin(), usedFields.end(), [&](int field) { return columns->Store().HasNaN(field); });
    return areNumbers ? dynamic_cast<ColumnTest*>(&test) : nullptr;
}

QKStatus TARNTestWorker::ProcessColumns(std::vector<ActiveTest>& pass, const WorkShare& work) {
    if (std::none_of(pass.begin(), pass.end(), [](const ActiveTest& active) { return active.byColumns != nullptr; })) {
        return QKStatus();
    }
    Batch batch(*this);
    const std::size_t count = columns->Count();
    for (std::size_t begin = 0; begin < count && !work.IsStopped(); begin += ColumnBatch::kMostRecords) {
        const std::size_t end = std::min(count, begin + ColumnBatch::kMostRecords);
        for (ActiveTest& active : pass) {
            if (!active.started || active.byColumns == nullptr || !batch.Take(begin, end, active.usedFields)) continue;
            const QKStatus processed = active.byColumns->ProcessColumns(batch);
            if (StopsTheRun(processed)) return processed;
            if (processed.IsError()) active.started = false;
        }
    }
    return QKStatus();
}

QKStatus TARNTestWorker::ProcessRecords(std::vector<ActiveTest>& pass, const WorkShare& work) {
    std::vector<ActiveTest*> byRecords;
    for (ActiveTest& active : pass) {
        if (active.byColumns == nullptr) byRecords.push_back(&active);
    }
    if (byRecords.empty()) return QKStatus();
    View view(*this);
    while (view.HasMore()) {
        if (work.IsStopped()) break;
        Record& record = view.Next();
        const bool incomplete = view.IsIncomplete();
        if (incomplete && !analysisMissing) continue;
        for (ActiveTest* active : byRecords) {
            if (!active->started || (incomplete && !Sees(*active, record))) continue;
            const QKStatus processed = active->test->ProcessRecord(record);
            if (StopsTheRun(processed)) return processed;
            if (processed.IsError()) active->started = false;
        }
    }
    return QKStatus();
}

/// A test that names no field gets complete records only.
bool TARNTestWorker::Sees(const ActiveTest& active, const Record& record) const {
    return !active.usedFields.empty() &&
           std::none_of(active.usedFields.begin(), active.usedFields.end(),
                        [&](int field) { return QKTarn::IsMissingIn(record, field, *missingMarkers); });
}

QKStatus TARNTestWorker::End(std::vector<ActiveTest>& pass) {
    for (ActiveTest& active : pass) {
        if (!active.started) continue;
        const QKStatus ended = active.test->EndPass();
        if (StopsTheRun(ended)) return ended;
        remaining = std::max(remaining, active.test->GetPassKind());
    }
    return QKStatus();
}

/// Progress only moves when the number of passes left has gone down.
void TARNTestWorker::NoteProgress() {
    const bool known = totalPasses > 0 && remaining >= 0 && remaining <= totalPasses;
    const double fraction = known ? static_cast<double>(totalPasses - remaining) / totalPasses : 1.0;
    const double percent = (fraction * progressShare + progressBase) * 100;
    if (remaining >= lastReported) return;
    notedPercents.push_back(static_cast<int>(percent));
    lastReported = remaining;
    if (!holdsProgress) ReportProgress();
}

void TARNTestWorker::ReportProgress() {
    for (const int percent : std::exchange(notedPercents, {})) {
        if (listener == nullptr) continue;
        TARNReporter report;
        report.SetCurrentStepNum(percent);
        listener->OnProgress(report);
    }
}

QKStatus TARNTestWorker::CollectResults() {
    try {
        for (std::unique_ptr<TARNTest>& test : std::exchange(tests, {})) {
            std::shared_ptr<QKXML::XMLElement> element(test->MakeResultElement());
            NoteDeparture(test->GetArithmetic().GetDeparture(), *element);
            test.reset();  // it may hold much, and the next one gets the memory
            if (finish) {
                results.push_back(finish(std::move(element)));
            } else {
                results.push_back(std::move(element));
            }
        }
    } catch (const std::exception&) {
        return QKStatus(StatusCode::kOutOfMemory);
    }
    return QKStatus();
}
