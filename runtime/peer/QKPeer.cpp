#include "platform/peer/QKPeer.h"

#include <optional>

#include "machine/KeptForGood.h"
#include "platform/hx/HXDocuments.h"
#include "platform/peer/HostCall.h"
#include "runtime/hx/FetchText.h"

using HxCppHelperV1::HostHelper;
using HxCppHelperV1::putText;
using HxCppHelperV1::XMLDocument;
using HxCppHelperV1::XMLElement;

namespace {

constexpr int kOnlyInput = 0;
constexpr int kOnlyOutput = 0;

/// A reason that the host gave itself says more than the library's own.
unsigned FailWith(int reason, int* errorCode) {
    if (*errorCode == 0) *errorCode = reason;
    return HX_FAILED;
}

}  // namespace

QKPeer::QKPeer(HXContext* context, HXHost* host) : context_(context), hostHelper_(HostHelper::create(host)) {}

QKPeer::~QKPeer() = default;

// ---- What a host asks of any component ----

unsigned QKPeer::GetDataModel(int index, char* buffer, std::size_t size, std::size_t* needed, int* errorCode) {
    if (index != kOnlyOutput) {
        *errorCode = HX_ERROR_DATA_MODEL;
        return HX_FAILED;
    }
    return putText(XMLElement::doc2string(XMLDocument::WithRoot(HX_DATA_MODEL_ROOT)), buffer, size, needed);
}

unsigned QKPeer::GetExecutionRequirements(char* buffer, std::size_t size, std::size_t* needed, int* errorCode) {
    if (requirements_.empty()) {
        *errorCode = HX_ERROR_NO_REQUIREMENTS;
        return HX_FAILED;
    }
    return putText(requirements_, buffer, size, needed);
}

unsigned QKPeer::GetInputIterator(int inputIndex, HXIterator** iterator, int* errorCode) {
    return CallHost(context_, &HXContext::GetInputIterator, inputIndex, iterator, errorCode);
}

unsigned QKPeer::CancelExecution(int*) {
    queryCancel_.cancelled.store(true, std::memory_order_relaxed);
    return HX_OK;
}

unsigned QKPeer::NextRecord(int*) {
    return HX_NO_MORE_RECORDS;
}

unsigned QKPeer::GetRecordValue(std::size_t, void** value, std::size_t* size, int*) {
    if (value != nullptr) *value = nullptr;
    if (size != nullptr) *size = 0;
    return HX_NO_MORE_RECORDS;
}

unsigned QKPeer::GetErrorDetail(char* buffer, std::size_t size, std::size_t* needed, int*) {
    const XMLDocument document = XMLDocument::WithRoot(HX_MESSAGES_ROOT);
    for (const Message& message : messages_) {
        XMLElement element = document.getRoot().addChild(HX_MESSAGE);
        element.addAttribute(HX_MESSAGE_TYPE, message.type == kWarning ? HX_TYPE_WARNING : HX_TYPE_ERROR);
        element.addAttribute(HX_MESSAGE_CODE, std::to_string(message.code));
        for (const std::string& parameter : message.parameters) {
            element.addChild(HX_MESSAGE_PARAMETER).addAttribute(HX_MESSAGE_PARAMETER_VALUE, parameter);
        }
    }
    return putText(XMLElement::doc2string(document), buffer, size, needed);
}

unsigned QKPeer::GetIteratorRequirements(long long* inputCount, long long** passes, long long* passCount, int*) {
    static long long asManyAsTheTestsAsk = -1;
    if (inputCount != nullptr) *inputCount = 1;
    if (passes != nullptr) *passes = &asManyAsTheTestsAsk;
    if (passCount != nullptr) *passCount = 1;
    return HX_OK;
}

// ---- What this base takes no part in ----

unsigned QKPeer::BeginExecution(const std::vector<HXIterator*>&, HXProgress*, int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::GetPSMControlInformation(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::PSMMerge(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::GetWorkerTask(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::GetWorkerDataModel(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::GetWorkerIterator(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::ReadWorkerInputContainer(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::FollowOnTaskStartExe(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::FollowOnTaskEndExe(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::GetInputFieldsFixed(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::GetRecordSynchronizedProcessing(int*) {
    return HX_NOT_SUPPORTED;
}
unsigned QKPeer::GetWorkerTaskNumber(int*) {
    return HX_NOT_SUPPORTED;
}

// ---- What a component asks of its host ----

unsigned QKPeer::Report_Progress(double step, double total, int* errorCode, int secondsLeft) const {
    return CallHost(progress_, &HXProgress::Report, step, total, secondsLeft, errorCode);
}

unsigned QKPeer::ScanParameters(int* errorCode) {
    *errorCode = 0;
    const auto ask = [&](char* buffer, std::size_t size, std::size_t* needed) {
        return CallHost(context_, &HXContext::GetSettings, buffer, size, needed, errorCode);
    };
    XMLDocument document = DocumentOf(FetchText(ask));
    if (!document.getRoot().isValid()) return FailWith(HX_ERROR_SETTINGS, errorCode);
    return MakeSettings(document, errorCode);
}

unsigned QKPeer::ParseDataModel(int* errorCode, bool forExecution, int) {
    const KeptForGood kept;
    *errorCode = 0;
    const int stage = forExecution ? HX_MODEL_OF_EXECUTION : HX_MODEL_OF_SOURCE;
    const auto ask = [&](char* buffer, std::size_t size, std::size_t* needed) {
        return CallHost(context_, &HXContext::GetDataModel, kOnlyInput, stage, buffer, size, needed, errorCode);
    };
    dataModelParser_ = std::make_unique<DataModelParser>(DocumentOf(FetchText(ask)));
    if (!dataModelParser_->IsDataModel()) return FailWith(HX_ERROR_DATA_MODEL, errorCode);
    return HX_OK;
}

XMLDocument QKPeer::DocumentOf(const std::optional<std::string>& text) const {
    return text && hostHelper_ ? hostHelper_->createFromContents(*text) : XMLDocument();
}

void QKPeer::SetExeRequirements(const XMLDocument& document) {
    requirements_ = XMLElement::doc2string(document);
}

unsigned QKPeer::CollectMsgs(int type, long code, int* errorCode) {
    return CollectMsgs(type, code, {}, errorCode);
}

unsigned QKPeer::CollectMsgs(int type, long code, const std::vector<std::string>& parameters, int* errorCode) {
    {
        const KeptForGood kept;
        messages_.push_back({type, code, parameters});
    }
    if (context_ == nullptr || context_->TakeMessage == nullptr) return HX_OK;
    std::vector<const char*> texts;
    texts.reserve(parameters.size());
    for (const std::string& parameter : parameters) texts.push_back(parameter.c_str());
    return CallHost(context_, &HXContext::TakeMessage, type, static_cast<int>(code),
                    static_cast<const char* const*>(texts.data()), texts.size(), errorCode);
}

bool QKPeer::GetHostInformation(QKOutputParameters& parameters) const {
    parameters = QKOutputParameters();
    if (!hostHelper_) return false;
    parameters.applicationName = hostHelper_->getInformation(HX_APPLICATION_NAME);
    parameters.applicationVersion = hostHelper_->getInformation(HX_APPLICATION_VERSION);
    parameters.copyright = hostHelper_->getInformation(HX_APPLICATION_COPYRIGHT);
    return true;
}
