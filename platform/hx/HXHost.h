#pragma once

#include <stddef.h>

/// The version of the structures that this folder declares, and the first one, which the library still takes. Version 2
/// added `HXIterator::Columns`.
#define HX_INTERFACE_VERSION 2
#define HX_FIRST_INTERFACE_VERSION 1

/// What `HXHost::GetInformation` is asked for.
enum HXInformation { HX_APPLICATION_NAME = 0, HX_APPLICATION_VERSION = 1, HX_APPLICATION_COPYRIGHT = 2 };

/// The host of a process: made and owned by the host, borrowed by the library from `hx_initialise` on, and valid until
/// the library is unloaded or is given another one. A component copies it when it is made: from then on it needs the
/// handle and the functions alone, which are valid until the component is destroyed.
///
/// Every text that crosses the boundary in either direction is UTF-8 and goes into a buffer of whoever asks for it:
/// `*needed` becomes the length of the text with its terminating zero, in every case; if that is at most `size`, the
/// text with its zero is put into `buffer` and the result is HX_OK, else the buffer stays as it is and the result is
/// HX_BUFFER_TOO_SMALL. With a `size` of 0 the buffer may be null.
typedef struct HXHost {
    /// The host's own; given back to it as the first argument of each function.
    void* handle;
    /// HX_INTERFACE_VERSION of the headers that the host was built with. The library takes a host of an older version,
    /// down to HX_FIRST_INTERFACE_VERSION, and treats one of any other version as no host.
    int interfaceVersion;
    /// What the host says of itself for the header of a document. `item` is an `HXInformation`. An empty text or a
    /// failed call: the host says nothing. May be null: then it never says anything.
    unsigned (*GetInformation)(void* handle, int item, char* buffer, size_t size, size_t* needed, int* errorCode);
} HXHost;
