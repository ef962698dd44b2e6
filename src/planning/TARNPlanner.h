#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "contract/TARNPlan.h"
#include "contract/TARNTestRow.h"
#include "contract/TARNVariableInfo.h"
#include "machine/WorkShare.h"
#include "planning/TARNResultWriter.h"
#include "planning/TARNTestWorker.h"
#include "platform/common/IQKAlgorithm.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKVarList.h"
#include "records/ColumnView.h"
#include "records/InitialDataReader.h"
#include "records/TARNSortedDataSet.h"
#include "records/WeightyRecords.h"
#include "support/UnivariateCollector.h"
#include "vocabulary/DefaultLevels.h"

/// Makes of a test's element the one that stands in the document.
using ResultEditor = std::function<std::shared_ptr<const QKXML::XMLNode>(std::shared_ptr<const QKXML::XMLElement>)>;

/// The engine's algorithm: turns the execution settings into tests, divides them among workers, runs the passes,
/// keeps the result elements and writes the result document. `Run` is the main sequence of the engine and reads
/// from top to bottom. It knows nothing of a host.
///
/// After a complete run no record exists any more; the tests' elements and the descriptives live on until the next
/// run or the destruction, for `WriteResults`.
class TARNPlanner : public IQKAlgorithm, private TARNPlan {
 public:
    /// Borrows both until it is destroyed.
    TARNPlanner(QKSettings& executionSettings, QKVarList& fields, TestFinder finder);
    ~TARNPlanner() override;

    QKStatus Run(RecordIterator& data) override;
    bool IsComplete() override { return complete; }
    /// Always OK.
    QKStatus QueryStatus() override { return QKStatus(); }
    QKStatus WriteResults(std::ostream& out, const QKOutputParameters& output) override;
    /// The document of `WriteResults` as a tree, which shares the tests' elements with the planner. A cancel ends it
    /// with code 1.
    QKStatus MakeDocument(const QKOutputParameters& output, std::unique_ptr<QKXML::XMLElement>& document);
    /// Each test's element goes into the document as this makes it; without one, as it is. For a caller that knows the
    /// fields by other numbers. Set before the run, in which it is called on several threads at once.
    void SetResultEditor(ResultEditor editor) { resultEditor = std::move(editor); }
    QKStatus GetStatus() override { return status; }
    void SetProgressListener(ProgressListener* listener) override;
    void SetQueryCancel(QKQueryCancel* query) override;
    void Cancel() override { cancelled = true; }
    std::string GetDescription() override;
    /// Always empty: warnings of a test stay in its element.
    std::vector<QKStatus>& GetWarnings() override { return warnings; }
    void Reserved() override {}

 private:
    // The run, step by step; each works only while the status is no error.
    void Release();
    void ReadCommonSettings();
    void LeaveOutWeightless(const WorkShare& work);
    void ReadRecords(const WorkShare& work);
    void MakeStores();
    void PlanTests();
    void RunWorkers(const WorkShare& work);
    QKStatus DescribeAndSort(const WorkShare& work);

    // What plan builders see.
    double GetSigLevel() const override { return sigLevel; }
    double GetConfidenceLevel() const override { return confidenceLevel; }
    int GetWeightIndex() const override { return hasWeight ? weightIndex : kNoWeight; }
    int GetCaseIdIndex() const override { return caseIdIndex; }
    const QKVarList& GetVarList() const override { return *varList; }
    bool IsBrief() const override { return isBrief; }
    bool IsExtended() const override { return isExtended; }
    int GetMeasureLevel(const std::string& fieldName) override;
    bool Request(int field, int statistic) override { return univariates->Request(field, statistic); }
    void RegisterSorted(int field) override { sortedData->Register(field); }
    void RequestSorted(int field) override;
    void AddToMainWorker(std::unique_ptr<TARNTest> test) override { mainWorker->AddTest(std::move(test)); }
    void AddSortedTest(std::unique_ptr<TARNTest> test, int field, const QKStatus& planStatus) override;

    TARNTestWorker& SortedWorkerFor(int field, const QKStatus& planStatus);
    TARNResultWriter MakeWriter() const;

    TestFinder findTest;
    QKSettings* settings;
    ProgressListener* progressListener = nullptr;
    std::vector<std::string> settingNames;  // of the top level, in its order
    QKVarList* varList;
    std::unique_ptr<UnivariateCollector> univariates;
    MultiPassRecordIter* dataIterator = nullptr;
    std::unique_ptr<QKTarn::WeightyRecords> weightyRecords;  // lives during `Run` only; null as defined
    QKTarn::TarnMemoIterator memoIterator;
    std::unique_ptr<TARNSortedDataSet> sortedData;  // lives during `Run` only
    bool complete = false;
    QKQueryCancel* queryCancel = nullptr;
    std::atomic<bool> cancelled = false;
    std::vector<QKStatus> warnings;
    QKStatus status;
    QKTarn::MissingMarkers missingMarkers;
    std::unique_ptr<QKTarn::ColumnView> sourceView;  // lives during `Run` only; null where records were dropped
    std::unique_ptr<TARNTestWorker> mainWorker;
    std::vector<std::unique_ptr<TARNTestWorker>> sortedWorkers;
    std::unordered_map<int, TARNTestWorker*> workerOfField;  // the first of each field
    std::vector<int> allFields;
    std::unique_ptr<QKTarn::InitialDataReader> reader;  // lives during `Run` only
    int caseIdIndex = kNoCaseId;
    int weightIndex = -1;
    bool hasWeight = false;
    bool analysisMissing = true;
    bool isBrief = false;
    bool isExtended = false;
    double sigLevel = kDefaultSigLevel;
    double confidenceLevel = kDefaultConfidenceLevel;
    TARNVariableInfo variableInfo;
    ResultEditor resultEditor;
};
