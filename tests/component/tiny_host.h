#pragma once

#include <stddef.h>

#include "platform/hx/hx.h"

#ifdef __cplusplus
extern "C" {
#endif

/// A host in plain C, as small as one can be: it gives texts and records that a test sets, and remembers what the
/// component told it.

/// The functions of the library, bound by name.
typedef struct TinyLibrary {
    unsigned (*initialise)(HXHost* host);
    unsigned (*cleanup)(void);
    unsigned (*getModuleInformation)(char* buffer, size_t bufferSize, size_t* neededSize, int* errorCode);
    unsigned (*create)(HXContext* context, void* unused, void** component, int* errorCode);
    unsigned (*destroy)(void* component);
    unsigned (*configure)(void* component, int* errorCode);
    unsigned (*getDataModel)(void* component, int index, char* buffer, size_t size, size_t* needed, int* errorCode);
    unsigned (*getExecutionRequirements)(void* component, char* buffer, size_t size, size_t* needed, int* errorCode);
    unsigned (*beginExecution)(void* component, HXProgress* progress, int* errorCode);
    unsigned (*endExecution)(void* component, int* errorCode);
    unsigned (*cancelExecution)(void* component, int* errorCode);
    unsigned (*nextRecord)(void* component, int* errorCode);
    unsigned (*getRecordValue)(void* component, size_t index, void** value, size_t* size, int* errorCode);
    unsigned (*getMessages)(void* component, char* buffer, size_t size, size_t* needed, int* errorCode);
    unsigned (*getIteratorRequirements)(void* component, long long* inputCount, long long** passes,
                                        long long* passCount, int* errorCode);
} TinyLibrary;

/// The first name that could not be bound; null when the library was loaded.
const char* tiny_load(const char* path, TinyLibrary* library);

/// Which call of the component the host answers with a failure.
enum TinyFailure {
    TINY_NONE,
    TINY_GET_SETTINGS,
    TINY_GET_MODEL,
    TINY_GET_MODEL_ID,
    TINY_GET_ITERATOR,
    TINY_DECLARE_OUTPUTS,
    TINY_OPEN_CONTAINER,
    TINY_NULL_CONTAINER,
    TINY_SET_METADATA,
    TINY_PUT_STRING,
    TINY_CLOSE,
    TINY_REWIND,
    TINY_NEXT_BLOCK,
    TINY_SECOND_BLOCK
};

/// What a failing call answers, and the error code that it gives.
#define TINY_FAILURE_RESULT 77
#define TINY_FAILURE_CODE 7777

typedef struct TinyHost {
    HXHost host;
    HXContext context;
    HXIterator iterator;
    HXProgress progress;
    HXContainer container;

    /* Given by the test; texts and values are borrowed. */
    const char* applicationName;
    const char* applicationVersion;
    const char* copyright;
    const char* settings;
    const char* sourceModel;
    const char* executionModel;
    const double* values;
    size_t recordCount;
    size_t fieldCount;
    size_t blockSize;
    size_t recordsOfLaterPasses; /* recordCount, unless the test says otherwise */
    int modelId;
    enum TinyFailure failure;
    unsigned messageAnswer;
    void (*onProgress)(void* user);
    void* user;

    /* Seen by the host. */
    char messages[4096]; /* one line each: type, code, parameters in brackets */
    char calls[4096];    /* one word each */
    int declaredKind;
    int declaredCount;
    int progressCount;
    double lastStep;
    double lastTotal;
    int lastSecondsLeft;
    char containerName[64];
    int containerMode;
    char mimeType[64];
    char fileName[64];
    char* content; /* owned by the host */
    int closedCount;
    size_t nextRecord;
    int passes;
} TinyHost;

/// Makes a host that gives empty texts and no records.
void tiny_host_init(TinyHost* host);
void tiny_host_free(TinyHost* host);

/// Goes through the whole order of calls, with one execution. 0, or the number of the call that answered otherwise
/// than it should, from 1.
int tiny_host_run(const TinyLibrary* library, TinyHost* host);

#ifdef __cplusplus
}
#endif
