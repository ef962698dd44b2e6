#include "component/TARNComponentBuilder.h"

#include <new>
#include <utility>

#include "component/DocumentRewriter.h"
#include "component/FieldReferences.h"
#include "platform/hx/HXDocuments.h"
#include "platform/hx/HXStatus.h"
#include "platform/peer/HostCall.h"
#include "platform/peer/HxCppConstants.h"
#include "platform/peer/QKPeerIterator.h"
#include "platform/peer/QKSettingsFactory.h"
#include "selection/TARNSettingsExpansion.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

using HxCppHelperV1::ContainerHelper;
using HxCppHelperV1::DataHelper;
using HxCppHelperV1::XMLDocument;

namespace {

constexpr int kInputCount = 1;

}  // namespace

TARNComponentBuilder::TARNComponentBuilder(HXContext* context, HXHost* host)
    : QKPeer(context, host),
      modelSettings(std::make_unique<QKSettings>()),
      progressListener(std::make_unique<TARNProgressListener>(*this)) {}

TARNComponentBuilder::~TARNComponentBuilder() {
    inputAdapter.reset();
    algorithm.reset();
    modelSettings.reset();
    executionSettings.reset();
    progressListener.reset();
}

void TARNComponentBuilder::ReleaseConfiguration() noexcept {
    modelSettings.reset();
    inputAdapter.reset();
    progressListener.reset();
    requiredFields = RequiredFields();
    ExecutionRequirements::RenamedFields().swap(renamedFields);
    QKPeer::ReleaseConfiguration();
}

// ---- Configuration ----

unsigned TARNComponentBuilder::MakeSettings(XMLDocument& model, int* errorCode) {
    modelSettings = std::make_unique<QKSettings>();
    return QKSettingsFactory::MakeModelSettings(model, *modelSettings, errorCode);
}

unsigned TARNComponentBuilder::Configure(int* errorCode) {
    if (GetHostHelper() == nullptr) return HX_NO_HELPER;
    ClearMessages();
    if (ScanParameters(errorCode) != HX_OK || ParseDataModel(errorCode, false, kInputCount) != HX_OK) {
        return ReportError(*errorCode, errorCode, HX_CONFIGURATION_FAILED);
    }
    MakeInputAdapter(false);
    const unsigned built = BuildVarlist(errorCode);
    return built != HX_OK ? built : MakeExecutionRequirements(errorCode);
}

void TARNComponentBuilder::MakeInputAdapter(bool forExecution) {
    constexpr bool kWithoutLabels = false;
    constexpr bool kWithoutOrder = false;
    constexpr bool kWithoutDates = false;
    constexpr bool kWithWeight = true;
    inputAdapter = std::make_unique<InputAdapter>(GetDataHelper(), *GetDataModelParser(), kWithoutLabels, kWithoutOrder,
                                                  kWithoutDates, kWithWeight, forExecution);
}

unsigned TARNComponentBuilder::BuildVarlist(int* errorCode) {
    if (inputAdapter->BuildVarlist(errorCode)) return HX_OK;
    *errorCode = HX_ERROR_FIELDS;
    return ReportError(HX_ERROR_FIELDS, errorCode, HX_FAILED);
}

unsigned TARNComponentBuilder::MakeExecutionRequirements(int* errorCode) {
    const QKVarList& varList = inputAdapter->GetVarList();
    const QKStatus listed = requiredFields.List(*modelSettings, varList);
    if (listed.IsError()) return ReportRequest(listed, errorCode);

    const XMLDocument document = GetHostHelper()->createNew(HxCppHelperV1::XMLElements::Execution);
    const ExecutionRequirements requirements(*modelSettings, varList, requiredFields);
    const QKStatus written = requirements.Write(document.getRoot(), renamedFields);
    if (written.IsError()) return ReportRequest(written, errorCode);
    SetExeRequirements(document);
    return HX_OK;
}

unsigned TARNComponentBuilder::ReportRequest(const QKStatus& status, int* errorCode) {
    return ReportError(status.GetErrorCode(), errorCode, HX_CONFIGURATION_FAILED);
}

// ---- Execution ----

unsigned TARNComponentBuilder::BeginExecution(HXIterator* iterator, HXProgress* progress, int* errorCode) {
    ClearMessages();
    const int version = GetHostHelper() != nullptr ? GetHostHelper()->interfaceVersion() : HX_FIRST_INTERFACE_VERSION;
    SetDataHelper(std::make_unique<DataHelper>(iterator, kInputCount, version));
    SetProgress(progress);
    const unsigned result = Execute(errorCode);
    SetProgress(nullptr);
    return result;
}

unsigned TARNComponentBuilder::Execute(int* errorCode) {
    if (GetHostHelper() == nullptr) return HX_NO_HELPER;
    if (ParseDataModel(errorCode, true, kInputCount) != HX_OK) return ReportError(*errorCode, errorCode, HX_FAILED);
    MakeInputAdapter(true);
    TARNFactory factory;
    const unsigned built = BuildAlgorithm(factory, errorCode);
    if (built != HX_OK) return built;
    algorithm->SetQueryCancel(GetQueryCancel());
    algorithm->SetProgressListener(progressListener.get());
    publicFields = std::make_unique<PublicFields>(inputAdapter->GetVarList(), renamedFields);
    algorithm->SetResultEditor([this](auto element) { return RenumberReferences(std::move(element), *publicFields); });
    const unsigned run = RunAlgorithm(errorCode);
    return run != HX_OK ? run : WriteDocument(errorCode);
}

unsigned TARNComponentBuilder::BuildAlgorithm(TARNFactory& factory, int* errorCode) {
    const unsigned built = BuildVarlist(errorCode);
    if (built != HX_OK) return built;
    const unsigned expanded = ExpandSettings(errorCode);
    if (expanded != HX_OK) return expanded;

    algorithm.reset();
    int modelId = 0;
    int ignored = 0;  // a host without model ids is no failure
    if (CallHost(GetHXContextHandle(), &HXContext::GetModelId, &modelId, &ignored) != HX_OK) modelId = 0;
    executionSettings->AddNewSetting(SettingKey::kModelId, modelId, "");

    // What this factory makes is always the planner.
    algorithm.reset(
        static_cast<TARNPlanner*>(factory.CreateQKAlgorithm(*executionSettings, inputAdapter->GetVarList())));
    const unsigned reported = ReportStatus(factory.GetStatus(), errorCode);
    if (reported != HX_OK) return reported;
    return algorithm == nullptr || factory.GetStatus().IsError() ? HX_FAILED : HX_OK;
}

unsigned TARNComponentBuilder::ExpandSettings(int* errorCode) {
    executionSettings = std::make_unique<QKSettings>();
    TARNSettingsExpansion expansion(modelSettings.get(), &inputAdapter->GetVarList(), executionSettings.get(),
                                    &renamedFields);
    const QKStatus status = expansion.Expand();
    // A host that takes no further warning has heard enough; whether the run goes on is up to the status alone.
    for (std::size_t i = 0; i < expansion.warningCodes.size(); ++i) {
        const long code = expansion.warningCodes[i].GetErrorCode();
        if (CollectMsgs(kWarning, code, expansion.warningArguments[i], errorCode) != HX_OK) break;
    }
    return status.IsError() ? ReportError(status.GetErrorCode(), errorCode, HX_FAILED) : unsigned{HX_OK};
}

unsigned TARNComponentBuilder::RunAlgorithm(int* errorCode) {
    const std::unique_ptr<QKPeerStream> stream = QKPeerStream::Create(*GetDataHelper(), *inputAdapter);
    QKPeerStream& records = *stream;
    const QKStatus status = algorithm->Run(records);
    // This says more than the code of a run without records, so it comes first.
    if (!records.HasDelivered()) {
        *errorCode = HX_ERROR_NO_RECORD;
        return ReportError(HX_ERROR_NO_RECORD, errorCode, HX_FAILED);
    }
    // A stream that broke off looks to the algorithm like one that ended.
    if (records.HasFailed()) {
        *errorCode = records.GetErrorCode();
        return ReportError(*errorCode, errorCode, HX_FAILED);
    }
    const unsigned reported = ReportStatus(status, errorCode);
    if (reported != HX_OK) return reported;
    return status.IsError() ? HX_FAILED : HX_OK;
}

unsigned TARNComponentBuilder::EndExecution(int* errorCode) {
    SetDataHelper(nullptr);
    inputAdapter.reset();
    algorithm.reset();
    publicFields.reset();
    executionSettings.reset();
    ResetCancel();
    *errorCode = 0;
    return HX_OK;
}

// ---- The document ----

unsigned TARNComponentBuilder::WriteDocument(int* errorCode) {
    std::string text;
    QKStatus made;
    try {
        made = MakeDocument(text);
    } catch (const std::bad_alloc&) {
        // What the second stage held is given back by now, so that there is room to report the failure.
        *errorCode = HX_ERROR_OUT_OF_MEMORY;
        return ReportError(HX_ERROR_OUT_OF_MEMORY, errorCode, HX_FAILED);
    }
    if (made.IsError()) return ReportError(made.GetErrorCode(), errorCode, HX_FAILED);
    return StoreDocument(text, errorCode);
}

QKStatus TARNComponentBuilder::MakeDocument(std::string& text) {
    QKOutputParameters parameters;
    GetHostInformation(parameters);
    std::unique_ptr<QKXML::XMLElement> first;
    const QKStatus made = algorithm->MakeDocument(parameters, first);
    if (made.IsError()) return made;
    const auto second = DocumentRewriter(inputAdapter->GetVarList(), *publicFields).Rewrite(*first);
    text = QKXML::TextOfTree(*second, [this] { return GetQueryCancel()->IsCancelled(); });
    return text.empty() ? QKStatus(StatusCode::kCancelled) : QKStatus();
}

unsigned TARNComponentBuilder::StoreDocument(const std::string& text, int* errorCode) {
    HXContainer* container = nullptr;
    const unsigned opened = CallHost(GetHXContextHandle(), &HXContext::OpenOutputContainer, HX_RESULT_CONTAINER,
                                     HX_CONTAINER_WRITE_NEW, &container, errorCode);
    if (opened != HX_OK) return opened;
    const std::unique_ptr<ContainerHelper> helper = ContainerHelper::create(container);
    if (helper == nullptr) return HX_NO_HELPER;
    unsigned stored = helper->constructMetadata(HX_RESULT_MIME_TYPE, HX_RESULT_FILE_NAME, errorCode);
    if (stored == HX_OK) stored = helper->putString(text, errorCode);
    // A container is closed whatever came before, so that the host can give it back.
    const unsigned closed = CallHost(container, &HXContainer::Close, errorCode);
    return stored != HX_OK ? stored : closed;
}

// ---- Reports ----

unsigned TARNComponentBuilder::ReportError(long code, int* errorCode, unsigned otherwise) {
    const unsigned answer = CollectMsgs(kError, code, errorCode);
    return answer != HX_OK ? answer : otherwise;
}

/// The host's answer, 0 for a good status. An error to which the host answers 0 is the caller's to return.
unsigned TARNComponentBuilder::ReportStatus(const QKStatus& status, int* errorCode) {
    if (status.IsError()) return CollectMsgs(kError, status.GetErrorCode(), errorCode);
    if (!status.IsWarning() || algorithm == nullptr) return HX_OK;
    for (const QKStatus& warning : algorithm->GetWarnings()) {
        const unsigned answer = CollectMsgs(kWarning, warning.GetErrorCode(), errorCode);
        if (answer != HX_OK) return answer;
    }
    return HX_OK;
}
