#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "contract/ColumnPass.h"
#include "contract/TARNTest.h"
#include "machine/WorkShare.h"
#include "platform/common/Progress.h"
#include "platform/common/QKVarList.h"
#include "records/ColumnView.h"
#include "records/InitialDataReader.h"
#include "records/MissingMarkers.h"
#include "records/TARNSortedDataSet.h"

/// Drives a group of tests through as many passes over one view of the data as any of them wants, decides which test
/// may see which record, and notes its progress. A test that takes columns gets them; any other one gets record by
/// record. The only place that calls tests, and the one guard that turns an allocation failure inside a test into
/// 220012.
///
/// Workers share nothing that is written to, so that several of them may run at once, each on one thread.
class TARNTestWorker {
 public:
    static constexpr int kNotSorted = -1;

    /// Reads `records` unless it is given a sorted view. `incomplete`: for each record of that stream, in order,
    /// whether it misses anything. `markers`: what marks a missing value in each field. All are borrowed for the time
    /// of the passes. `analysisMissing` false: a record that misses anything is lost to every test.
    TARNTestWorker(const QKTarn::MissingMarkers& markers, bool analysisMissing, MultiPassRecordIter& records,
                   const QKTarn::RecordFlags& incomplete);
    ~TARNTestWorker() = default;  // not virtual: `SetProgress` is the one virtual operation, and nothing derives
    TARNTestWorker(const TARNTestWorker&) = delete;
    TARNTestWorker& operator=(const TARNTestWorker&) = delete;

    /// `base` and `share`: fractions of the whole scale at which this worker starts, and that it fills. The listener
    /// is borrowed and may be null.
    virtual void SetProgress(ProgressListener* progressListener, double base, double share);

    /// The records of the stream as columns; without them every test gets records. Borrowed.
    void SetColumns(QKTarn::ColumnView& view) { columns = &view; }
    /// Reads the records in the order of that field from now on. The views are borrowed; the one by that field is
    /// sorted when the passes begin, unless it is sorted already, and given up when they are over.
    void SetSorted(int field, const TARNSortedDataSet& views);
    void SetUnivariateResults(std::unique_ptr<UnivariateResults> view) { univariateResults = std::move(view); }
    void AddTest(std::unique_ptr<TARNTest> test) { tests.push_back(std::move(test)); }

    int SortField() const { return sortField; }
    int TestCount() const { return static_cast<int>(tests.size()); }

    /// Pass after pass until no test asks for another. 220012 if a test ran out of memory, else OK: other errors
    /// stay in their tests. A cancel ends it within one record, or within one batch of columns.
    QKStatus RunTests(const WorkShare& work);
    /// From now on progress is kept until `ReportProgress`: the listener is told on the thread of the run alone.
    void HoldProgress() { holdsProgress = true; }
    /// Tells the listener of the progress that was noted, in order.
    void ReportProgress();

    using Result = std::shared_ptr<const QKXML::XMLNode>;
    /// What becomes of an element before it is kept, on the thread of the worker.
    using Finish = std::function<Result(std::shared_ptr<QKXML::XMLElement>)>;
    /// Without one, elements are kept as they are.
    void SetFinish(Finish function) { finish = std::move(function); }

    /// Keeps each test's element, in test order, and gives the tests up. 220012 if no memory was left for them.
    QKStatus CollectResults();
    const std::vector<Result>& Results() const { return results; }

 private:
    /// A test in the current pass.
    struct ActiveTest {
        TARNTest* test;
        ColumnTest* byColumns;  // the same test where it gets columns, else null
        std::vector<int> usedFields;
        bool started;
    };
    class View;
    class Batch;

    QKStatus RunPasses(const WorkShare& work);
    QKStatus RunPass(const std::vector<TARNTest*>& active, const WorkShare& work);
    QKStatus Begin(const std::vector<TARNTest*>& active, std::vector<ActiveTest>& pass);
    ColumnTest* TakesColumns(TARNTest& test, const std::vector<int>& usedFields) const;
    QKStatus ProcessColumns(std::vector<ActiveTest>& pass, const WorkShare& work);
    QKStatus ProcessRecords(std::vector<ActiveTest>& pass, const WorkShare& work);
    QKStatus End(std::vector<ActiveTest>& pass);
    bool Sees(const ActiveTest& active, const Record& record) const;
    void NoteProgress();

    std::vector<std::unique_ptr<TARNTest>> tests;
    MultiPassRecordIter* iterator;
    const QKTarn::RecordFlags* incompleteRecords;
    Finish finish;
    std::vector<Result> results;
    std::unique_ptr<UnivariateResults> univariateResults;
    int sortField = kNotSorted;
    const TARNSortedDataSet* sortedData = nullptr;
    QKTarn::ColumnView* columns = nullptr;
    const QKTarn::MissingMarkers* missingMarkers;
    bool analysisMissing;

    ProgressListener* listener = nullptr;
    double progressBase = 0;
    double progressShare = 0;
    bool firstPass = true;
    int totalPasses = 0;
    int remaining = 0;
    int lastReported = 0;
    bool holdsProgress = false;
    std::vector<int> notedPercents;  // that the listener has not been told of
};
