#pragma once

#include <memory>
#include <vector>

#include "contract/TARNTest.h"
#include "planning/CancelState.h"
#include "platform/common/Progress.h"
#include "platform/common/QKVarList.h"
#include "records/InitialDataReader.h"
#include "records/MissingMarkers.h"
#include "records/TARNSortedDataSet.h"

/// Drives a group of tests through as many passes over one view of the data as any of them wants, decides record by
/// record which test may see which record, and reports progress. The only place that calls tests, and the one guard
/// that turns an allocation failure inside a test into 220012.
class TARNTestWorker {
 public:
    static constexpr int kNotSorted = -1;

    /// Reads `records` unless it is given a sorted view. `incomplete`: for each record of that stream, in order,
    /// whether it misses anything. All are borrowed for the time of the passes. `analysisMissing` false: a record
    /// that misses anything is lost to every test.
    TARNTestWorker(const QKVarList& varList, bool analysisMissing, MultiPassRecordIter& records,
                   const QKTarn::RecordFlags& incomplete);
    ~TARNTestWorker() = default;  // not virtual: `SetProgress` is the one virtual operation, and nothing derives
    TARNTestWorker(const TARNTestWorker&) = delete;
    TARNTestWorker& operator=(const TARNTestWorker&) = delete;

    /// `base` and `share`: fractions of the whole scale at which this worker starts, and that it fills. The listener
    /// is borrowed and may be null.
    virtual void SetProgress(ProgressListener* progressListener, double base, double share);

    /// Reads the records in the order of that field from now on. The views are borrowed.
    void SetSorted(int field, const TARNSortedDataSet& views);
    void SetUnivariateResults(std::unique_ptr<UnivariateResults> view) { univariateResults = std::move(view); }
    void AddTest(std::unique_ptr<TARNTest> test) { tests.push_back(std::move(test)); }

    int SortField() const { return sortField; }
    int TestCount() const { return static_cast<int>(tests.size()); }

    /// Pass after pass until no test asks for another. 220012 if a test ran out of memory, else OK: other errors
    /// stay in their tests. A cancel ends it within one record.
    QKStatus RunTests(const CancelState& cancel);

    /// Keeps each test's element, in test order. 220012 if no memory was left for them.
    QKStatus CollectResults();
    const std::vector<std::shared_ptr<QKXML::XMLElement>>& Results() const { return results; }

 private:
    /// A test in the current pass.
    struct ActiveTest {
        TARNTest* test;
        std::vector<int> usedFields;
        bool started;
    };
    class View;

    QKStatus RunPasses(const CancelState& cancel);
    QKStatus RunPass(const std::vector<TARNTest*>& active, const CancelState& cancel);
    QKStatus Begin(const std::vector<TARNTest*>& active, std::vector<ActiveTest>& pass);
    QKStatus Process(std::vector<ActiveTest>& pass, View& view, const CancelState& cancel);
    QKStatus End(std::vector<ActiveTest>& pass);
    bool Sees(const ActiveTest& active, const Record& record) const;
    void ReportProgress();

    std::vector<std::unique_ptr<TARNTest>> tests;
    MultiPassRecordIter* iterator;
    const QKTarn::RecordFlags* incompleteRecords;
    std::vector<std::shared_ptr<QKXML::XMLElement>> results;
    std::unique_ptr<UnivariateResults> univariateResults;
    int sortField = kNotSorted;
    const TARNSortedDataSet* sortedData = nullptr;
    QKTarn::MissingMarkers missingMarkers;
    bool analysisMissing;

    ProgressListener* listener = nullptr;
    double progressBase = 0;
    double progressShare = 0;
    bool firstPass = true;
    int totalPasses = 0;
    int remaining = 0;
    int lastReported = 0;
};
