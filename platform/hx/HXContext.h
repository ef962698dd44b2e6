#pragma once

#include <stddef.h>

#include "platform/hx/HXContainer.h"
#include "platform/hx/HXIterator.h"

/// Which data model `HXContext::GetDataModel` is asked for.
enum HXDataModelStage {
    /// At configuration: the fields that a request may name, as the host has them.
    HX_MODEL_OF_SOURCE = 0,
    /// At execution: the fields of the input iterator, prepared and encoded as the execution requirements say, with
    /// the counts of the records.
    HX_MODEL_OF_EXECUTION = 1
};

/// Types of messages.
enum HXMessageType { HX_MESSAGE_WARNING = 2, HX_MESSAGE_ERROR = 3 };

/// What `HXContext::DeclareOutputs` is given: the component stores a statistics document in an output container and
/// makes no output records.
#define HX_OUTPUT_STATISTICS_DOCUMENT 21

/// How `HXContext::OpenOutputContainer` opens: to be written anew, in the place of one of that name.
#define HX_CONTAINER_WRITE_NEW 1

/// A place of the table that this component has no use for. The host may leave it null.
typedef void (*HXReserved)(void);

/// What one component asks of its host: made and owned by the host, borrowed by the component from
/// `hx_create_component` until `hx_destroy_component`.
///
/// The first member is a handle, and a table of functions follows, each of which takes the handle first. The library
/// knows a function by its position, counted from the handle as 0. A function returns HX_OK or anything else for a
/// failure, whose reason it may put into `*errorCode`. All calls come on the thread of the `hx_component_*` call that
/// they serve.
typedef struct HXContext {
    /// The host's own; given back to it as the first argument of each function.
    void* handle;

    /// 1: the settings document, a text by the rule that stands at `HXHost`. Asked for at configuration.
    unsigned (*GetSettings)(void* handle, char* buffer, size_t size, size_t* needed, int* errorCode);

    /// 2: the data model of an input, a text by the rule that stands at `HXHost`. `stage` is an `HXDataModelStage`.
    unsigned (*GetDataModel)(void* handle, int inputIndex, int stage, char* buffer, size_t size, size_t* needed,
                             int* errorCode);

    /// 3: takes a message. `type` is an `HXMessageType`, `code` the whole message, for which the host has the text.
    /// `parameters` are `parameterCount` texts, owned by the component and valid during the call. A result other than
    /// HX_OK becomes, of an error, the result of the operation that failed; of a warning, it says that the host wants
    /// no further one, and stops nothing else. May be null: messages then stay with `hx_component_getMessages`.
    unsigned (*TakeMessage)(void* handle, int type, int code, const char* const* parameters, size_t parameterCount,
                            int* errorCode);

    HXReserved reserved4;
    HXReserved reserved5;

    /// 6: the number that the result document bears as its model id. A failed call counts as 0.
    unsigned (*GetModelId)(void* handle, int* id, int* errorCode);

    HXReserved reserved7;
    HXReserved reserved8;
    HXReserved reserved9;
    HXReserved reserved10;
    HXReserved reserved11;

    /// 12: `*iterator` becomes the records of an input, owned by the host.
    unsigned (*GetInputIterator)(void* handle, int inputIndex, HXIterator** iterator, int* errorCode);

    /// 13: called at the end of a configuration that succeeded. `kinds` are `count` numbers that say what the
    /// component puts out (HX_OUTPUT_STATISTICS_DOCUMENT), owned by the component and valid during the call. What the
    /// function returns becomes the result of the configuration.
    unsigned (*DeclareOutputs)(void* handle, const int* kinds, int count, int* errorCode);

    HXReserved reserved14;
    HXReserved reserved15;
    HXReserved reserved16;
    HXReserved reserved17;

    /// 18: creates the output container `name`. `mode` is HX_CONTAINER_WRITE_NEW. `*container` becomes the container,
    /// owned by the host. Called once in an execution, when the document is complete.
    unsigned (*OpenOutputContainer)(void* handle, const char* name, int mode, HXContainer** container, int* errorCode);
} HXContext;

#ifdef __cplusplus
#define HX_STATIC_ASSERT static_assert
#else
#define HX_STATIC_ASSERT _Static_assert
#endif
#define HX_ASSERT_POSITION(member, position) \
    HX_STATIC_ASSERT(offsetof(HXContext, member) == (position) * sizeof(void*), "a function left its position")

HX_ASSERT_POSITION(handle, 0);
HX_ASSERT_POSITION(GetSettings, 1);
HX_ASSERT_POSITION(GetModelId, 6);
HX_ASSERT_POSITION(GetInputIterator, 12);
HX_ASSERT_POSITION(DeclareOutputs, 13);
HX_ASSERT_POSITION(OpenOutputContainer, 18);
