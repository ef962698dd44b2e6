#include "planning/TARNPlanner.h"

#include <exception>
#include <numeric>
#include <utility>

#include "planning/TARNResultWriter.h"
#include "planning/TARNWarning.h"
#include "planning/TARNWorkerSequence.h"
#include "support/QKUnivariateVariable.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

namespace {

constexpr int kBlockSize = 2048;

// Of the host's progress scale the first part is left for reading and describing, the last for the document.
constexpr double kProgressBase = 0.25;
constexpr double kProgressShare = 0.65;

constexpr const char* kMissingTreatment = "missingTreatment";
constexpr const char* kAnalysisTreatment = "analysis";
constexpr const char* kCaseIdName = "caseIDVariableName";

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
        ReadRecords();
        MakeStores();
        PlanTests();
        RunWorkers();
    } catch (const std::exception&) {
        status = QKStatus(StatusCode::kAllocationFailed);
    }
    complete = !status.IsError();
    reader.reset();
    sortedData.reset();
    return status;
}

void TARNPlanner::Release() {
    univariates.reset();
    mainWorker.reset();
    sortedWorkers.clear();
    status = QKStatus();
    complete = false;
}

void TARNPlanner::ReadCommonSettings() {
    settingNames = settings->GetSettingNames();
    std::string missingTreatment;
    if (settings->GetSettingValByName(kMissingTreatment, missingTreatment)) {
        analysisMissing = missingTreatment == kAnalysisTreatment;
    }
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    settings->GetSettingValByName(SettingKey::kConfidenceLevel, confidenceLevel);
    std::string caseId;
    if (settings->GetSettingValByName(kCaseIdName, caseId)) caseIdIndex = varList->FindVariable(caseId);
}

void TARNPlanner::ReadRecords() {
    allFields.resize(static_cast<std::size_t>(varList->Size()));
    std::iota(allFields.begin(), allFields.end(), 0);
    reader =
        std::make_unique<QKTarn::InitialDataReader>(kBlockSize, dataIterator, !analysisMissing, &allFields, varList);
    status = reader->ReadAll();
}

void TARNPlanner::MakeStores() {
    if (status.IsError()) return;
    memoIterator = reader->Begin();
    sortedData = std::make_unique<TARNSortedDataSet>(memoIterator);
    univariates = std::make_unique<UnivariateCollector>(memoIterator, *varList);
    int threads = 0;
    if (settings->GetSettingValByName(SettingKey::kThreads, threads)) univariates->SetThreads(threads);
    weightIndex = varList->GetFreqWeightIndex();
    if (weightIndex != QKVarList::kNoWeight) {
        hasWeight = true;
        univariates->SetWeight(weightIndex);
    }
    // The main worker reads the source, not the store: what the reader's filter sees as missing differs a little.
    mainWorker =
        std::make_unique<TARNTestWorker>(*varList, analysisMissing, *dataIterator, reader->IncompleteInSource());
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

void TARNPlanner::RunWorkers() {
    if (status.IsError()) return;
    if (sortedData->HasRegistered()) {
        status = sortedData->Build();
        if (status.IsError()) return;
    }
    // A field whose descriptives fail shows as never computed; that is no reason to stop the tests.
    static_cast<void>(univariates->Compute());

    TARNWorkerSequence sequence(progressListener, kProgressBase, kProgressShare);
    const auto add = [&](TARNTestWorker& worker) {
        worker.SetUnivariateResults(std::make_unique<UnivariateResults>(*univariates));
        sequence.Add(worker);
    };
    if (mainWorker->TestCount() > 0) add(*mainWorker);
    for (const auto& worker : sortedWorkers) add(*worker);
    status = sequence.Run(CancelState(queryCancel, cancelled));
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
    for (const int statistic :
         {Statistic::kHistogram, Statistic::kMin, Statistic::kMax, Statistic::kMean, Statistic::kMeanAndStdDev}) {
        univariates->Request(field, statistic);
    }
}

void TARNPlanner::AddSortedTest(std::unique_ptr<TARNTest> test, int field, const QKStatus& planStatus) {
    SortedWorkerFor(field, planStatus).AddTest(std::move(test));
}

TARNTestWorker& TARNPlanner::SortedWorkerFor(int field, const QKStatus& planStatus) {
    for (const auto& worker : sortedWorkers) {
        if (worker->SortField() == field) return *worker;
    }
    sortedWorkers.push_back(
        std::make_unique<TARNTestWorker>(*varList, analysisMissing, memoIterator, reader->IncompleteInStore()));
    TARNTestWorker& worker = *sortedWorkers.back();
    if (!planStatus.IsError()) {
        sortedData->Register(field);
        sortedData->ExpectReader(field);
        worker.SetSorted(field, *sortedData);
    }
    univariates->SetSortedData(sortedData.get());
    return worker;
}

// ---- The document ----

QKStatus TARNPlanner::WriteResults(std::ostream& out, const QKOutputParameters& output) {
    if (!IsComplete()) return QKStatus(StatusCode::kRunNotComplete);
    try {
        TARNResultWriter::Elements elements = mainWorker->Results();
        for (const auto& worker : sortedWorkers) {
            elements.insert(elements.end(), worker->Results().begin(), worker->Results().end());
        }
        TARNRunParameters parameters{0, analysisMissing, sigLevel, confidenceLevel, weightIndex, caseIdIndex};
        settings->GetSettingValByName(SettingKey::kModelId, parameters.modelId);
        TARNResultWriter(*varList, variableInfo, UnivariateResults(*univariates), std::move(elements), parameters)
            .Write(out, output);
    } catch (const std::exception&) {
        return QKStatus(StatusCode::kAllocationFailed);
    }
    return QKStatus();
}
