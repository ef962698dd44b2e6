#include "planning/TARNTestWorker.h"

#include <algorithm>
#include <exception>

#include "planning/TARNReporter.h"
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
        : markers_(worker.missingMarkers),
          sorted_(worker.sortField == kNotSorted ? nullptr : worker.sortedData->IteratorOf(worker.sortField)),
          records_(sorted_ ? *sorted_ : *worker.iterator),
          incomplete_(sorted_ ? worker.sortedData->Store().IncompleteInStore() : *worker.incompleteRecords) {
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

TARNTestWorker::TARNTestWorker(const QKVarList& varList, bool analysisTreatment, MultiPassRecordIter& records,
                               const QKTarn::RecordFlags& incomplete)
    : iterator(&records),
      incompleteRecords(&incomplete),
      missingMarkers(QKTarn::MarkersOfPasses(varList)),
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

QKStatus TARNTestWorker::RunTests(const CancelState& cancel) {
    QKStatus result;
    totalPasses = 0;
    remaining = 0;
    try {
        for (const auto& test : tests) test->SetUnivariateResults(univariateResults.get());
        result = RunPasses(cancel);
    } catch (const std::exception&) {
        result = QKStatus(StatusCode::kOutOfMemory);
    }
    remaining = 0;
    ReportProgress();
    return result;
}

QKStatus TARNTestWorker::RunPasses(const CancelState& cancel) {
    QKStatus result;
    std::vector<TARNTest*> active;
    for (const auto& test : tests) active.push_back(test.get());
    do {
        if (cancel.Poll()) break;
        if (!active.empty()) result = RunPass(active, cancel);
        if (StopsTheRun(result) || cancel.Poll()) break;
        // Asked of every test: one that left an earlier pass may come back.
        active.clear();
        for (const auto& test : tests) {
            if (test->NeedsAnotherPass()) active.push_back(test.get());
        }
    } while (!active.empty());
    return result;
}

QKStatus TARNTestWorker::RunPass(const std::vector<TARNTest*>& active, const CancelState& cancel) {
    View view(*this);
    std::vector<ActiveTest> pass;
    QKStatus status = Begin(active, pass);
    if (StopsTheRun(status)) return status;
    ReportProgress();

    status = Process(pass, view, cancel);
    if (StopsTheRun(status)) return status;
    remaining = 0;
    if (!cancel.Poll()) {
        status = End(pass);
        if (StopsTheRun(status)) return status;
    }
    ReportProgress();
    return QKStatus();
}

QKStatus TARNTestWorker::Begin(const std::vector<TARNTest*>& active, std::vector<ActiveTest>& pass) {
    remaining = 0;
    for (TARNTest* test : active) {
        const QKStatus begun = test->BeginPass();
        if (StopsTheRun(begun)) return begun;
        ActiveTest entry{test, {}, !begun.IsError()};
        test->GetUsedVariables(entry.usedFields);
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

QKStatus TARNTestWorker::Process(std::vector<ActiveTest>& pass, View& view, const CancelState& cancel) {
    while (view.HasMore()) {
        if (cancel.Poll()) break;
        Record& record = view.Next();
        const bool incomplete = view.IsIncomplete();
        if (incomplete && !analysisMissing) continue;
        for (ActiveTest& active : pass) {
            if (!active.started || (incomplete && !Sees(active, record))) continue;
            const QKStatus processed = active.test->ProcessRecord(record);
            if (StopsTheRun(processed)) return processed;
            if (processed.IsError()) active.started = false;
        }
    }
    return QKStatus();
}

/// A test that names no field gets complete records only.
bool TARNTestWorker::Sees(const ActiveTest& active, const Record& record) const {
    return !active.usedFields.empty() &&
           std::none_of(active.usedFields.begin(), active.usedFields.end(),
                        [&](int field) { return QKTarn::IsMissingIn(record, field, missingMarkers); });
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
void TARNTestWorker::ReportProgress() {
    const bool known = totalPasses > 0 && remaining >= 0 && remaining <= totalPasses;
    const double fraction = known ? static_cast<double>(totalPasses - remaining) / totalPasses : 1.0;
    const double percent = (fraction * progressShare + progressBase) * 100;
    if (remaining >= lastReported) return;
    if (listener != nullptr) {
        TARNReporter report;
        report.SetCurrentStepNum(static_cast<int>(percent));
        listener->OnProgress(report);
    }
    lastReported = remaining;
}

QKStatus TARNTestWorker::CollectResults() {
    try {
        for (const auto& test : tests) {
            results.push_back(std::shared_ptr<QKXML::XMLElement>(test->MakeResultElement()));
        }
    } catch (const std::exception&) {
        return QKStatus(StatusCode::kOutOfMemory);
    }
    return QKStatus();
}
