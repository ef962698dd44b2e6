#pragma once

#include <atomic>
#include <memory>
#include <utility>
#include <vector>

#include "planning/CancelState.h"
#include "planning/TARNReporter.h"
#include "planning/TARNTestWorker.h"
#include "tests/harness/TestRun.h"
#include "tests/planning/ScriptedTest.h"

inline void StepListener::OnProgress(ProgressReport& report) {
    steps.push_back(dynamic_cast<TARNReporter&>(report).GetCurrentStepNum());
}

/// A worker over a small table, put together as a run does it: the records are read into the store first, then the
/// worker reads the stream again or, after `SortBy`, a sorted view of the store.
class WorkerRig {
 public:
    static constexpr double kBase = 0.25;
    static constexpr double kShare = 0.5;

    WorkerRig(harness::Fields tableFields, std::vector<std::vector<double>> rows, bool analysisMissing = true)
        : fields(std::move(tableFields)),
          stream(std::move(rows)),
          reader(&stream, !analysisMissing, &allFields, &fields.List()),
          analysis(analysisMissing) {
        for (int field = 0; field < fields.List().Size(); ++field) allFields.push_back(field);
        readStatus = reader.ReadAll();
        markers = QKTarn::MarkersOfPasses(fields.List());
        worker = std::make_unique<TARNTestWorker>(markers, analysis, stream, reader.IncompleteInSource());
        worker->SetProgress(&listener, kBase, kShare);
    }

    void SortBy(int field) {
        memo = reader.Begin();
        sorted = std::make_unique<TARNSortedDataSet>(memo);
        sorted->Register(field);
        sorted->ExpectReader(field);
        readStatus = sorted->Build();
        worker = std::make_unique<TARNTestWorker>(markers, analysis, memo, reader.IncompleteInStore());
        worker->SetProgress(&listener, kBase, kShare);
        worker->SetSorted(field, *sorted);
    }

    void Add(Script script) { worker->AddTest(std::make_unique<ScriptedTest>(std::move(script), log)); }

    QKStatus Run(QKQueryCancel* query = nullptr) {
        const CancelState cancel(query, cancelled);
        return worker->RunTests(WorkShare(1, [&] { return cancel.Poll(); }));
    }

    harness::Fields fields;
    harness::RowStream stream;
    std::vector<int> allFields;
    QKTarn::InitialDataReader reader;
    QKTarn::MissingMarkers markers;
    QKTarn::TarnMemoIterator memo;
    std::unique_ptr<TARNSortedDataSet> sorted;
    bool analysis;
    QKStatus readStatus;
    CallLog log;
    StepListener listener;
    std::atomic<bool> cancelled = false;
    std::unique_ptr<TARNTestWorker> worker;
};
