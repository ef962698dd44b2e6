// The functions that a host binds by name. Each checks its component, hands the call on and answers with a number;
// nothing is thrown across this line.

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <new>
#include <string>

#include "component/LivingComponents.h"
#include "component/ModuleInformation.h"
#include "component/TARNComponentBuilder.h"
#include "component/TARNComponentFactory.h"
#include "machine/KeptForGood.h"
#include "platform/hx/hx.h"
#include "platform/peer/HostCall.h"
#include "platform/peer/HxCppHelper.h"
#include "vocabulary/MissingValues.h"
#include "vocabulary/StatusCodes.h"

namespace {

// The headers for a host in C stand by themselves, so what they say again is checked here.
static_assert(HX_MISSING_VALUE == MissingValue::kNumber);
static_assert(std::ranges::all_of(std::array{HX_ERROR_NO_COMPONENT, HX_ERROR_SETTINGS, HX_ERROR_DATA_MODEL,
                                             HX_ERROR_FIELDS, HX_ERROR_NO_REQUIREMENTS, HX_ERROR_NO_RECORD,
                                             HX_ERROR_RECORDS, HX_ERROR_OUT_OF_MEMORY},
                                  [](HXError error) { return StatusCode::IsKnown(error, MessageKind::kError); }));

/// The host of the process, null until `hx_initialise`. A component takes from it what it needs when it is made, and
/// never comes back here; atomic, since a host with several threads may be making components while it is set again.
std::atomic<HXHost*> host = nullptr;

/// Never destroyed: a host may have a thread in the library when the process ends.
LivingComponents& Components() {
    static auto* const components = new LivingComponents;
    return *components;
}

constexpr int kOnlyInput = 0;
constexpr int kOutputs[] = {HX_OUTPUT_STATISTICS_DOCUMENT};
constexpr int kOutputCount = 1;

/// Does one operation of a component for a host that may have given no place for the error code. What the operation
/// throws, which is little but exhausted memory, becomes a number here. `noComponent` answers a handle that is none of
/// a living component, or of one that is at work: whose host calls from a second thread, or from one of its functions.
template <typename Operation>
unsigned OnComponent(void* handle, int* errorCode, Operation operation, unsigned noComponent = HX_BAD_HANDLE) noexcept {
    int ignored = 0;
    if (errorCode == nullptr) errorCode = &ignored;
    try {
        const LivingComponents::Use use(Components(), handle);
        return use.Component() == nullptr ? noComponent : operation(*use.Component(), errorCode);
    } catch (...) {
        *errorCode = HX_ERROR_OUT_OF_MEMORY;
        return HX_FAILED;
    }
}

/// Makes a component that is known by its handle; null where memory is exhausted.
TARNComponentBuilder* MakeKnownComponent(HXContext* context) noexcept try {
    TARNComponentFactory factory;
    HXHost* hostOfComponent = host;
    std::unique_ptr<TARNComponentBuilder> builder(factory.MakeBuilder(context, hostOfComponent));
    if (builder != nullptr) Components().Add(builder.get());
    return builder.release();
} catch (...) {
    return nullptr;
}

}  // namespace

// ---- The library ----

unsigned hx_initialise(HXHost* newHost) {
    if (newHost == nullptr) return HX_BAD_HANDLE;
    host = newHost;
    return HX_OK;
}

unsigned hx_cleanup(void) {
    return HX_OK;
}

unsigned hx_getModuleInformation(char* buffer, size_t bufferSize, size_t* neededSize, int*) try {
    const std::string text = MakeModuleInformation(host);
    if (text.empty()) return HX_NO_HOST_HELPER;
    return HxCppHelperV1::putText(text, buffer, bufferSize, neededSize);
} catch (...) {
    return HX_NO_HOST_HELPER;
}

// ---- A component's life ----

unsigned hx_create_component(HXContext* context, void*, void** component, int* errorCode) {
    const KeptForGood kept;
    TARNComponentBuilder* const builder = component == nullptr ? nullptr : MakeKnownComponent(context);
    if (builder == nullptr) {
        if (errorCode != nullptr) *errorCode = HX_ERROR_NO_COMPONENT;
        return HX_FAILED;
    }
    *component = builder;
    return HX_OK;
}

unsigned hx_destroy_component(void* component) try {
    if (!Components().Remove(component)) return HX_BAD_HANDLE;
    // The memory alone: the destructor is not run, and what the end of an execution did not release stays. Hosts are
    // built against this, and it changes only together with them.
    ::operator delete(component);
    return HX_OK;
} catch (...) {
    return HX_BAD_HANDLE;
}

unsigned hx_component_configure(void* component, int* errorCode) {
    return OnComponent(component, errorCode, [](TARNComponentBuilder& builder, int* error) {
        const KeptForGood kept;
        const unsigned result = builder.Configure(error);
        if (result != HX_OK) return result;
        return CallHost(builder.GetHXContextHandle(), &HXContext::DeclareOutputs, +kOutputs, kOutputCount, error);
    });
}

// ---- What a host asks ----

unsigned hx_component_getDataModel(void* component, int index, char* buffer, size_t size, size_t* needed,
                                   int* errorCode) {
    return OnComponent(component, errorCode, [=](TARNComponentBuilder& builder, int* error) {
        return builder.GetDataModel(index, buffer, size, needed, error);
    });
}

unsigned hx_component_getExecutionRequirements(void* component, char* buffer, size_t size, size_t* needed,
                                               int* errorCode) {
    return OnComponent(component, errorCode, [=](TARNComponentBuilder& builder, int* error) {
        return builder.GetExecutionRequirements(buffer, size, needed, error);
    });
}

unsigned hx_component_getIteratorRequirements(void* component, long long* inputCount, long long** passes,
                                              long long* passCount, int* errorCode) {
    return OnComponent(component, errorCode, [=](TARNComponentBuilder& builder, int* error) {
        return builder.GetIteratorRequirements(inputCount, passes, passCount, error);
    });
}

unsigned hx_component_getMessages(void* component, char* buffer, size_t size, size_t* needed, int* errorCode) {
    const auto operation = [=](TARNComponentBuilder& builder, int* error) {
        return builder.GetErrorDetail(buffer, size, needed, error);
    };
    return OnComponent(component, errorCode, operation, HX_NO_COMPONENT);
}

// ---- An execution ----

unsigned hx_component_beginExecution(void* component, HXProgress* progress, int* errorCode) {
    return OnComponent(component, errorCode, [=](TARNComponentBuilder& builder, int* error) -> unsigned {
        HXIterator* iterator = nullptr;
        if (builder.GetInputIterator(kOnlyInput, &iterator, error) != HX_OK) return HX_BAD_HANDLE;
        return builder.BeginExecution(iterator, progress, error);
    });
}

unsigned hx_component_endExecution(void* component, int* errorCode) {
    return OnComponent(component, errorCode,
                       [](TARNComponentBuilder& builder, int* error) { return builder.EndExecution(error); });
}

/// Reaches a component that is at work, which is what a cancel is for.
unsigned hx_component_cancelExecution(void* component, int* errorCode) try {
    int ignored = 0;
    int* const error = errorCode == nullptr ? &ignored : errorCode;
    const bool isReached =
        Components().Reach(component, [=](TARNComponentBuilder& builder) { builder.CancelExecution(error); });
    return isReached ? HX_OK : HX_BAD_HANDLE;
} catch (...) {
    return HX_BAD_HANDLE;
}

unsigned hx_component_nextRecord(void* component, int* errorCode) {
    return OnComponent(component, errorCode,
                       [](TARNComponentBuilder& builder, int* error) { return builder.NextRecord(error); });
}

unsigned hx_component_getRecordValue(void* component, size_t index, void** value, size_t* size, int* errorCode) {
    return OnComponent(component, errorCode, [=](TARNComponentBuilder& builder, int* error) {
        return builder.GetRecordValue(index, value, size, error);
    });
}
