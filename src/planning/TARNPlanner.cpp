#include "planning/TARNPlanner.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <numeric>
#include <utility>
#include <vector>

#include "planning/CancelState.h"
#include "planning/TARNWarning.h"
#include "planning/TARNWorkerSequence.h"
#include "support/QKUnivariateVariable.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

namespace {

// Of the host's progress scale the first part is left for reading and describing, the last for the document.
constexpr double kProgressBase = 0.25;
constexpr double kProgressShare = 0.65;

constexpr const char* kMissingTreatment = "missingTreatment";
constexpr const char* kAnalysisTreatment = "analysis";
constexpr const char* kCaseIdName = "caseIDVariableName";

/// How many threads may work at a time; 0, as many as the machine has, unless the settings say so.
unsigned ThreadBudget(const QKSettings& settings) {
    int threads = 0;
    settings.GetSettingValByName(SettingKey::kThreads, threads);
    return static_cast<unsigned>(std::max(threads, 0));
}

}  // namespace

TARNPlanner::TARNPlanner(QKSettings& executionSettings, QKVarList& fields, TestFinder finder)
    : findTest(finder), settings(&executionSettings), varList(&fields), variableInfo(fields) {}

TARNPlanner::~TARNPlanner() = default;

void TARNPlanner::SetProgressListener(ProgressListener* listener) {
    if (listener != nullptr) progressListener = listener;
}

void TARNPlanner::SetQueryCancel(QKQueryCancel* query) {
    if (query != nullptr) queryCancel = query;
}

std::string TARNPlanner::GetDescription() {
    return "tarn: nonparametric tests of one, related and independent samples";
}

// ---- The run ----

QKStatus TARNPlanner::Run(RecordIterator& data) {
    Release();
    // Tests go over the data more than once; a stream that can't be read again counts as none.
    dataIterator = dynamic_cast<MultiPassRecordIter*>(&data);
    try {
        TARNWarning::Instance().Clear();
        ReadCommonSettings();
        const CancelState cancel(queryCancel, cancelled);
        const WorkShare work(ThreadBudget(*settings), [&] { return cancel.Poll(); });
        LeaveOutWeightless(work);
        ReadRecords(work);
        MakeStores();
        PlanTests();
        RunWorkers(work);
    } catch (const std::exception&) {
        status = QKStatus(StatusCode::kAllocationFailed);
    }
    complete = !status.IsError();
    sourceView.reset();
    sortedData.reset();
    reader.reset();
    weightyRecords.reset();
    return status;
}

void TARNPlanner::Release() {
    univariates.reset();
    mainWorker.reset();
    sortedWorkers.clear();
    workerOfField.clear();
    status = QKStatus();
    complete = false;
}

void TARNPlanner::ReadCommonSettings() {
    settingNames = settings->GetSettingNames();
    std::string missingTreatment;
    if (settings->GetSettingValByName(kMissingTreatment, missingTreatment)) {
        analysisMissing = missingTreatment == kAnalysisTreatment;
    }
    settings->GetSettingValByName(SettingKey::kBrief, isBrief);
    settings->GetSettingValByName(SettingKey::kExtendedArithmetic, isExtended);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    settings->GetSettingValByName(SettingKey::kConfidenceLevel, confidenceLevel);
    std::string caseId;
    if (settings->GetSettingValByName(kCaseIdName, caseId)) caseIdIndex = varList->FindVariable(caseId);
}

/// Extended, a record of weight 0 isn't there for anything that follows.
void TARNPlanner::LeaveOutWeightless(const WorkShare& work) {
    const int weight = varList->GetFreqWeightIndex();
    if (!isExtended || weight == QKVarList::kNoWeight || dataIterator == nullptr) return;
    weightyRecords = std::make_unique<QKTarn::WeightyRecords>(*dataIterator, weight, work);
    dataIterator = weightyRecords.get();
    if (work.IsStopped()) status = QKStatus(StatusCode::kCancelled);
}

void TARNPlanner::ReadRecords(const WorkShare& work) {
    if (status.IsError()) return;
    allFields.resize(static_cast<std::size_t>(varList->Size()));
    std::iota(allFields.begin(), allFields.end(), 0);
    reader = std::make_unique<QKTarn::InitialDataReader>(dataIterator, !analysisMissing, &allFields, varList);
    status = reader->ReadAll(work);
}

void TARNPlanner::MakeStores() {
    if (status.IsError()) return;
    memoIterator = reader->Begin();
    sortedData = std::make_unique<TARNSortedDataSet>(memoIterator);
    univariates = std::make_unique<UnivariateCollector>(memoIterator, *varList);
    univariates->Extend(isExtended);
    univariates->OfferSortedData(sortedData.get());
    weightIndex = varList->GetFreqWeightIndex();
    if (weightIndex != QKVarList::kNoWeight) {
        hasWeight = true;
        univariates->SetWeight(weightIndex);
    }
    // The main worker reads the source, not the store: what the reader's filter sees as missing differs a little.
    missingMarkers = QKTarn::MarkersOfPasses(*varList);
    mainWorker =
        std::make_unique<TARNTestWorker>(missingMarkers, analysisMissing, *dataIterator, reader->IncompleteInSource());
    if (const QKTarn::ColumnStore* const columns = reader->SourceColumns()) {
        sourceView = std::make_unique<QKTarn::ColumnView>(*columns, reader->IncompleteInSource());
        mainWorker->SetColumns(*sourceView);
    }
}

void TARNPlanner::PlanTests() {
    if (status.IsError()) return;
    int requested = 0;
    for (std::size_t i = 0; i < settingNames.size(); ++i) {
        const IQKSettingValue& value = settings->GetSettingAt(i).GetValue();
        if (value.GetKind() != static_cast<int>(SettingKind::kNestedList)) continue;
        ++requested;
        const TARNTestRow* row = findTest(settingNames[i]);
        if (row == nullptr) continue;
        row->plan(static_cast<const QKSettingListValue&>(value).GetListValue(), *this);
    }
    if (requested == 0) status = QKStatus(StatusCode::kNoTestRequested);
}

void TARNPlanner::RunWorkers(const WorkShare& work) {
    if (status.IsError()) return;
    status = sortedData->MakeViews();
    if (!status.IsError()) status = DescribeAndSort(work);
    if (status.IsError()) return;

    TARNWorkerSequence sequence(progressListener, kProgressBase, kProgressShare);
    // Each worker makes the text of its elements, so that the work is shared and no tree of them is left.
    const auto write = [this](std::shared_ptr<QKXML::XMLElement> element) {
        const std::shared_ptr<const QKXML::XMLNode> result =
            resultEditor ? resultEditor(std::move(element)) : std::move(element);
        std::string text;
        text.reserve(result->TextSize());
        result->AppendTo(text);
        return QKXML::XMLWritten::Take(std::move(text));
    };
    const auto add = [&](TARNTestWorker& worker) {
        worker.SetFinish(write);
        worker.SetUnivariateResults(std::make_unique<UnivariateResults>(*univariates));
        sequence.Add(worker);
    };
    if (mainWorker->TestCount() > 0) add(*mainWorker);
    for (const auto& worker : sortedWorkers) add(*worker);
    status = sequence.Run(work);
}

/// Where there are threads to spare, views are sorted beside the describing; else each is sorted by its worker, so that
/// no more of them are there at a time than workers run. Quantiles are read from them all before.
QKStatus TARNPlanner::DescribeAndSort(const WorkShare& work) {
    QKStatus sortFailure;
    std::vector<std::function<void()>> sorting;
    if (univariates->WantsQuantiles()) {
        const QKStatus sorted = sortedData->Sort(work);
        if (sorted.IsError()) return sorted;
    } else if (work.Threads() > 1 && sortedData->ViewCount() < work.Threads()) {
        sorting.emplace_back([&] { sortFailure = sortedData->Sort(work); });
    }
    // A field whose descriptives fail shows as never computed; that is no reason to stop the tests.
    static_cast<void>(univariates->Compute(work, sorting));
    return sortFailure;
}

// ---- The plan ----

int TARNPlanner::GetMeasureLevel(const std::string& fieldName) {
    const IQKVariable* variable = varList->GetVariable(fieldName);
    const int kind = variable ? variable->GetKind() : 0;
    if (kind == FieldKind::kContinuous || FieldKind::IsCategorical(kind)) return kind;
    status = QKStatus(StatusCode::kUnknownFieldKind);
    return 0;
}

void TARNPlanner::RequestSorted(int field) {
    sortedData->Register(field);
    if (isBrief) return;
    for (const int statistic :
         {Statistic::kHistogram, Statistic::kMin, Statistic::kMax, Statistic::kMean, Statistic::kMeanAndStdDev}) {
        univariates->Request(field, statistic);
    }
}

void TARNPlanner::AddSortedTest(std::unique_ptr<TARNTest> test, int field, const QKStatus& planStatus) {
    SortedWorkerFor(field, planStatus).AddTest(std::move(test));
}

TARNTestWorker& TARNPlanner::SortedWorkerFor(int field, const QKStatus& planStatus) {
    if (const auto known = workerOfField.find(field); known != workerOfField.end()) return *known->second;
    sortedWorkers.push_back(
        std::make_unique<TARNTestWorker>(missingMarkers, analysisMissing, memoIterator, reader->IncompleteInStore()));
    TARNTestWorker& worker = *sortedWorkers.back();
    if (!planStatus.IsError()) {
        sortedData->Register(field);
        sortedData->ExpectReader(field);
        worker.SetSorted(field, *sortedData);
    }
    workerOfField.emplace(worker.SortField(), &worker);
    univariates->SetSortedData(sortedData.get());
    return worker;
}

// ---- The document ----

QKStatus TARNPlanner::WriteResults(std::ostream& out, const QKOutputParameters& output) {
    if (!IsComplete()) return QKStatus(StatusCode::kRunNotComplete);
    try {
        MakeWriter().Write(out, output, WorkShare(ThreadBudget(*settings)));
    } catch (const std::exception&) {
        return QKStatus(StatusCode::kAllocationFailed);
    }
    return QKStatus();
}

QKStatus TARNPlanner::MakeDocument(const QKOutputParameters& output, std::unique_ptr<QKXML::XMLElement>& document) {
    if (!IsComplete()) return QKStatus(StatusCode::kRunNotComplete);
    try {
        const CancelState cancel(queryCancel, cancelled);
        const WorkShare work(ThreadBudget(*settings), [&] { return cancel.Poll(); });
        document = MakeWriter().MakeDocument(output, work);
    } catch (const std::exception&) {
        return QKStatus(StatusCode::kAllocationFailed);
    }
    return document == nullptr ? QKStatus(StatusCode::kCancelled) : QKStatus();
}

TARNResultWriter TARNPlanner::MakeWriter() const {
    TARNResultWriter::Elements elements;
    const auto add = [&](const TARNTestWorker& worker) {
        elements.insert(elements.end(), worker.Results().begin(), worker.Results().end());
    };
    add(*mainWorker);
    for (const auto& worker : sortedWorkers) add(*worker);
    TARNRunParameters parameters{0, analysisMissing, sigLevel, confidenceLevel, weightIndex, caseIdIndex};
    settings->GetSettingValByName(SettingKey::kModelId, parameters.modelId);
    return {*varList, variableInfo, UnivariateResults(*univariates), std::move(elements), parameters};
}
