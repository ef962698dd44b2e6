#pragma once

#include <stddef.h>

/// One file of output: made and owned by the host, borrowed by the component from `HXContext::OpenOutputContainer`
/// until it calls `Close`, which it does exactly once. A failed call has a result other than HX_OK.
typedef struct HXContainer {
    /// The host's own; given back to it as the first argument of each function.
    void* handle;
    /// What the file is. Both texts are owned by the component and valid during the call.
    unsigned (*SetMetadata)(void* handle, const char* mimeType, const char* fileName, int* errorCode);
    /// The content: `length` bytes of UTF-8, owned by the component and valid during the call. It comes in one call.
    unsigned (*PutString)(void* handle, const char* text, size_t length, int* errorCode);
    /// The end. A container that is closed without content, because a call before failed, is to be dropped.
    unsigned (*Close)(void* handle, int* errorCode);
} HXContainer;
