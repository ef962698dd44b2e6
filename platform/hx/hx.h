#pragma once

#include <stddef.h>

#include "platform/hx/HXContainer.h"
#include "platform/hx/HXContext.h"
#include "platform/hx/HXHost.h"
#include "platform/hx/HXIterator.h"
#include "platform/hx/HXProgress.h"
#include "platform/hx/HXStatus.h"

/// The functions that the library exports, for a host in C or C++ that binds them by name.
///
/// Order of calls: `hx_initialise` once; for each component `hx_create_component`, `hx_component_configure`, what the
/// host asks (data model, execution and iterator requirements), then as often as wished `hx_component_beginExecution`
/// and `hx_component_endExecution`, and `hx_destroy_component`; `hx_cleanup` last. A component is used by one thread
/// at a time, `hx_component_cancelExecution` apart.
///
/// Results are values of `HXStatus`, and a text is given by the rule that stands at `HXHost`. A component that is null,
/// is none, was destroyed or has another call at work in it gives HX_BAD_HANDLE everywhere but in
/// `hx_component_getMessages`, and nothing is done. `errorCode` is written where something failed; it may
/// be null.

#define HX_EXPORT __attribute__((visibility("default")))

/// The name under which `hx_getModuleInformation` is found in the library: it alone has C++ linkage.
#define HX_MODULE_INFORMATION_SYMBOL "_Z23hx_getModuleInformationPcmPmPi"

#ifdef __cplusplus
/// A text that describes the library: name, provider, version and copyright. HX_NO_HOST_HELPER without a usable host.
HX_EXPORT unsigned hx_getModuleInformation(char* buffer, size_t bufferSize, size_t* neededSize, int* errorCode);

extern "C" {
#else
/// The type of `hx_getModuleInformation` for a host in C, which binds HX_MODULE_INFORMATION_SYMBOL: a text that
/// describes the library. HX_NO_HOST_HELPER without a usable host.
typedef unsigned (*HXGetModuleInformation)(char* buffer, size_t bufferSize, size_t* neededSize, int* errorCode);
#endif

/// Keeps the host for the process. Borrowed for good, or until the next call. A component keeps the host for which it
/// was made.
HX_EXPORT unsigned hx_initialise(HXHost* host);
/// The last call; there is nothing to give back.
HX_EXPORT unsigned hx_cleanup(void);

/// Makes a component. `context` is borrowed until the component is destroyed; `unused` is not looked at.
/// `*component` becomes the component, which the host destroys; on a failure it stays as it is. A null `component` is
/// one.
HX_EXPORT unsigned hx_create_component(HXContext* context, void* unused, void** component, int* errorCode);
/// Gives back the component's memory. An execution has to be ended before: what it holds is not given back here.
HX_EXPORT unsigned hx_destroy_component(void* component);

/// Reads settings and data model from the context and works out what the component needs of the data.
HX_EXPORT unsigned hx_component_configure(void* component, int* errorCode);
/// The data model of the component's output, which has no fields. `index` is 0.
HX_EXPORT unsigned hx_component_getDataModel(void* component, int index, char* buffer, size_t size, size_t* needed,
                                             int* errorCode);
/// How the host has to prepare the data; a document that is there once the component is configured.
HX_EXPORT unsigned hx_component_getExecutionRequirements(void* component, char* buffer, size_t size, size_t* needed,
                                                         int* errorCode);
/// `*inputCount` becomes the number of input iterators; `*passes` an array of `*passCount` numbers, one for each
/// input, owned by the library and valid as long as it is loaded: how often the records are read, -1 for as often as
/// the tests ask.
HX_EXPORT unsigned hx_component_getIteratorRequirements(void* component, long long* inputCount, long long** passes,
                                                        long long* passCount, int* errorCode);

/// Runs the whole execution: reads the records, computes, and stores the result document in a container of the
/// context. `progress` is borrowed for the time of the call and may be null.
HX_EXPORT unsigned hx_component_beginExecution(void* component, HXProgress* progress, int* errorCode);
/// Releases what the execution holds, its document apart, which is the host's. A cancel is forgotten.
HX_EXPORT unsigned hx_component_endExecution(void* component, int* errorCode);
/// Asks a running execution to stop; may come from another thread, but not from a signal handler. It holds until
/// `hx_component_endExecution`.
HX_EXPORT unsigned hx_component_cancelExecution(void* component, int* errorCode);

/// There are no output records: HX_NO_MORE_RECORDS.
HX_EXPORT unsigned hx_component_nextRecord(void* component, int* errorCode);
/// There are no output records: `*value` becomes null, `*size` 0, and the result is HX_NO_MORE_RECORDS.
HX_EXPORT unsigned hx_component_getRecordValue(void* component, size_t index, void** value, size_t* size,
                                               int* errorCode);
/// The messages since the last configuration or execution began, as a document. HX_NO_COMPONENT for a component that is
/// none.
HX_EXPORT unsigned hx_component_getMessages(void* component, char* buffer, size_t size, size_t* needed, int* errorCode);

#ifdef __cplusplus
}
#endif
