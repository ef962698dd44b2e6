#include "tests/component/tiny_host.h"

#include <dlfcn.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* ---- Binding ---- */

static int bind(void* library, const char* name, void* function) {
    void* symbol = dlsym(library, name);
    memcpy(function, &symbol, sizeof symbol);
    return symbol != NULL;
}

const char* tiny_load(const char* path, TinyLibrary* library) {
    const struct {
        const char* name;
        void* function;
    } functions[] = {
        {"hx_initialise", &library->initialise},
        {"hx_cleanup", &library->cleanup},
        {HX_MODULE_INFORMATION_SYMBOL, &library->getModuleInformation},
        {"hx_create_component", &library->create},
        {"hx_destroy_component", &library->destroy},
        {"hx_component_configure", &library->configure},
        {"hx_component_getDataModel", &library->getDataModel},
        {"hx_component_getExecutionRequirements", &library->getExecutionRequirements},
        {"hx_component_beginExecution", &library->beginExecution},
        {"hx_component_endExecution", &library->endExecution},
        {"hx_component_cancelExecution", &library->cancelExecution},
        {"hx_component_nextRecord", &library->nextRecord},
        {"hx_component_getRecordValue", &library->getRecordValue},
        {"hx_component_getMessages", &library->getMessages},
        {"hx_component_getIteratorRequirements", &library->getIteratorRequirements},
    };
    void* opened = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (opened == NULL) return dlerror();
    for (size_t i = 0; i < sizeof functions / sizeof functions[0]; ++i) {
        if (!bind(opened, functions[i].name, functions[i].function)) return functions[i].name;
    }
    return NULL;
}

/* ---- Texts ---- */

static void append(char* text, size_t size, const char* format, ...) {
    const size_t used = strlen(text);
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text + used, size - used, format, arguments);
    va_end(arguments);
}

static void note(TinyHost* host, const char* call) {
    append(host->calls, sizeof host->calls, "%s ", call);
}

static unsigned give(const char* text, char* buffer, size_t size, size_t* needed) {
    *needed = strlen(text) + 1;
    if (*needed > size) return HX_BUFFER_TOO_SMALL;
    memcpy(buffer, text, *needed);
    return HX_OK;
}

static unsigned answer(const TinyHost* host, enum TinyFailure call, int* errorCode) {
    if (host->failure != call) return HX_OK;
    *errorCode = TINY_FAILURE_CODE;
    return TINY_FAILURE_RESULT;
}

/* ---- The host and the context ---- */

static unsigned get_information(void* handle, int item, char* buffer, size_t size, size_t* needed, int* errorCode) {
    const TinyHost* host = handle;
    const char* texts[] = {host->applicationName, host->applicationVersion, host->copyright};
    (void)errorCode;
    return give(texts[item], buffer, size, needed);
}

static unsigned get_settings(void* handle, char* buffer, size_t size, size_t* needed, int* errorCode) {
    TinyHost* host = handle;
    if (host->failure == TINY_GET_SETTINGS) return answer(host, TINY_GET_SETTINGS, errorCode);
    return give(host->settings, buffer, size, needed);
}

static unsigned get_data_model(void* handle, int inputIndex, int stage, char* buffer, size_t size, size_t* needed,
                               int* errorCode) {
    TinyHost* host = handle;
    if (host->failure == TINY_GET_MODEL || inputIndex != 0) return answer(host, TINY_GET_MODEL, errorCode);
    return give(stage == HX_MODEL_OF_SOURCE ? host->sourceModel : host->executionModel, buffer, size, needed);
}

static unsigned take_message(void* handle, int type, int code, const char* const* parameters, size_t parameterCount,
                             int* errorCode) {
    TinyHost* host = handle;
    (void)errorCode;
    append(host->messages, sizeof host->messages, "%d %d", type, code);
    for (size_t i = 0; i < parameterCount; ++i) append(host->messages, sizeof host->messages, " [%s]", parameters[i]);
    append(host->messages, sizeof host->messages, "\n");
    return host->messageAnswer;
}

static unsigned get_model_id(void* handle, int* id, int* errorCode) {
    TinyHost* host = handle;
    note(host, "GetModelId");
    *id = host->modelId; /* when it fails too: it does not count then */
    return answer(host, TINY_GET_MODEL_ID, errorCode);
}

static unsigned get_input_iterator(void* handle, int inputIndex, HXIterator** iterator, int* errorCode) {
    TinyHost* host = handle;
    note(host, "GetInputIterator");
    *iterator = inputIndex == 0 ? &host->iterator : NULL;
    return answer(host, TINY_GET_ITERATOR, errorCode);
}

static unsigned declare_outputs(void* handle, const int* kinds, int count, int* errorCode) {
    TinyHost* host = handle;
    note(host, "DeclareOutputs");
    host->declaredKind = kinds[0];
    host->declaredCount = count;
    return answer(host, TINY_DECLARE_OUTPUTS, errorCode);
}

static unsigned open_output_container(void* handle, const char* name, int mode, HXContainer** container,
                                      int* errorCode) {
    TinyHost* host = handle;
    note(host, "OpenOutputContainer");
    snprintf(host->containerName, sizeof host->containerName, "%s", name);
    host->containerMode = mode;
    if (host->failure != TINY_NULL_CONTAINER) *container = &host->container;
    return answer(host, TINY_OPEN_CONTAINER, errorCode);
}

/* ---- Records, progress, container ---- */

static unsigned rewind_records(void* handle, int* errorCode) {
    TinyHost* host = handle;
    host->nextRecord = 0;
    ++host->passes;
    return answer(host, TINY_REWIND, errorCode);
}

static unsigned next_block(void* handle, const double** values, size_t* recordCount, size_t* fieldCount,
                           int* errorCode) {
    TinyHost* host = handle;
    const size_t total = host->passes > 1 ? host->recordsOfLaterPasses : host->recordCount;
    const size_t left = total - host->nextRecord;
    *values = host->values + host->nextRecord * host->fieldCount;
    *recordCount = left < host->blockSize ? left : host->blockSize;
    *fieldCount = host->fieldCount;
    if (host->nextRecord > 0 && host->failure == TINY_SECOND_BLOCK) return answer(host, TINY_SECOND_BLOCK, errorCode);
    host->nextRecord += *recordCount;
    return answer(host, TINY_NEXT_BLOCK, errorCode);
}

static unsigned report(void* handle, double step, double total, int secondsLeft, int* errorCode) {
    TinyHost* host = handle;
    ++host->progressCount;
    host->lastStep = step;
    host->lastTotal = total;
    host->lastSecondsLeft = secondsLeft;
    if (host->onProgress != NULL) host->onProgress(host->user);
    *errorCode = TINY_FAILURE_CODE;
    return TINY_FAILURE_RESULT; /* can't fail the run */
}

static unsigned set_metadata(void* handle, const char* mimeType, const char* fileName, int* errorCode) {
    TinyHost* host = handle;
    note(host, "SetMetadata");
    snprintf(host->mimeType, sizeof host->mimeType, "%s", mimeType);
    snprintf(host->fileName, sizeof host->fileName, "%s", fileName);
    return answer(host, TINY_SET_METADATA, errorCode);
}

static unsigned put_string(void* handle, const char* text, size_t length, int* errorCode) {
    TinyHost* host = handle;
    note(host, "PutString");
    if (host->failure == TINY_PUT_STRING) return answer(host, TINY_PUT_STRING, errorCode);
    free(host->content);
    host->content = malloc(length + 1);
    if (host->content == NULL) return HX_FAILED;
    memcpy(host->content, text, length);
    host->content[length] = '\0';
    return HX_OK;
}

static unsigned close_container(void* handle, int* errorCode) {
    TinyHost* host = handle;
    note(host, "Close");
    ++host->closedCount;
    return answer(host, TINY_CLOSE, errorCode);
}

/* ---- A host's life ---- */

void tiny_host_init(TinyHost* host) {
    memset(host, 0, sizeof *host);
    host->applicationName = host->applicationVersion = host->copyright = "";
    host->settings = host->sourceModel = host->executionModel = "";
    host->blockSize = 3;

    host->host.handle = host->context.handle = host->iterator.handle = host;
    host->progress.handle = host->container.handle = host;
    host->host.interfaceVersion = HX_INTERFACE_VERSION;
    host->host.GetInformation = get_information;
    host->context.GetSettings = get_settings;
    host->context.GetDataModel = get_data_model;
    host->context.TakeMessage = take_message;
    host->context.GetModelId = get_model_id;
    host->context.GetInputIterator = get_input_iterator;
    host->context.DeclareOutputs = declare_outputs;
    host->context.OpenOutputContainer = open_output_container;
    host->iterator.Rewind = rewind_records;
    host->iterator.NextBlock = next_block;
    host->progress.Report = report;
    host->container.SetMetadata = set_metadata;
    host->container.PutString = put_string;
    host->container.Close = close_container;
}

void tiny_host_free(TinyHost* host) {
    free(host->content);
    host->content = NULL;
}

int tiny_host_run(const TinyLibrary* library, TinyHost* host) {
    void* component = NULL;
    void* value = host;
    size_t size = 1;
    char* buffer;
    int error = 0;
    int step = 0;
    long long inputs = 0, *passes = NULL, passCount = 0;

    if (++step, library->initialise(&host->host) != HX_OK) return step;
    if (++step, library->getModuleInformation(NULL, 0, &size, &error) != HX_BUFFER_TOO_SMALL) return step;
    if (++step, library->create(&host->context, NULL, &component, &error) != HX_OK) return step;
    if (++step, library->configure(component, &error) != HX_OK) return step;
    if (++step, library->getDataModel(component, 0, NULL, 0, &size, &error) != HX_BUFFER_TOO_SMALL) return step;
    if (++step, library->getExecutionRequirements(component, NULL, 0, &size, &error) != HX_BUFFER_TOO_SMALL) {
        return step;
    }
    buffer = malloc(size);
    if (++step, library->getExecutionRequirements(component, buffer, size, &size, &error) != HX_OK) return step;
    free(buffer);
    if (++step, library->getIteratorRequirements(component, &inputs, &passes, &passCount, &error) != HX_OK) {
        return step;
    }
    if (++step, inputs != 1 || passCount != 1 || passes[0] != -1) return step;
    if (++step, library->beginExecution(component, &host->progress, &error) != HX_OK) return step;
    if (++step, library->nextRecord(component, &error) != HX_NO_MORE_RECORDS) return step;
    if (++step, library->getRecordValue(component, 0, &value, &size, &error) != HX_NO_MORE_RECORDS) return step;
    if (++step, value != NULL || size != 0) return step;
    if (++step, library->endExecution(component, &error) != HX_OK || error != 0) return step;
    if (++step, library->getMessages(component, NULL, 0, &size, &error) != HX_BUFFER_TOO_SMALL) return step;
    if (++step, library->destroy(component) != HX_OK) return step;
    if (++step, library->cleanup() != HX_OK) return step;
    return 0;
}
