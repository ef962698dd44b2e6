#pragma once

#include <float.h>
#include <stddef.h>

/// The value of a continuous field that is missing.
#define HX_MISSING_VALUE (-DBL_MAX)
/// The value of a categorical field that is missing.
#define HX_MISSING_CATEGORY (-1.0)

/// The records of one input: made and owned by the host, borrowed by the component from
/// `HXContext::GetInputIterator` until `hx_component_endExecution`.
///
/// A record is one double per field, in the order of the fields in the data model of the execution. The value of a
/// categorical field is the position of the category in that data model. The component may read all records more than
/// once, and each time the same records have to come in the same order.
typedef struct HXIterator {
    /// The host's own; given back to it as the first argument of each function.
    void* handle;
    /// Goes back to the first record. HX_OK, or anything else for a failure.
    unsigned (*Rewind)(void* handle, int* errorCode);
    /// The next records. `*values` becomes a block of `*recordCount` records of `*fieldCount` values each, one record
    /// after the other; it is owned by the host, is only read by the component, and stays valid until the next call
    /// of this iterator. A `*recordCount` of 0 ends the stream. The host chooses how many records a block holds:
    /// some thousand make the calls cheap, and the whole table is as good. HX_OK, or anything else for a failure.
    unsigned (*NextBlock)(void* handle, const double** values, size_t* recordCount, size_t* fieldCount, int* errorCode);
    /// All records at once, for a host that has the values of each field side by side: the component then reads them
    /// where they are, without a copy, and calls neither of the functions above. `*columns` becomes `*fieldCount`
    /// pointers, each to the `*recordCount` values of a field; all of it is owned by the host, is only read by the
    /// component, and stays valid and as it is until `hx_component_endExecution`. HX_OK, or anything else for a
    /// failure.
    ///
    /// Since version 2 of the interface; the structure of a host of version 1 ends in front of it and is not read
    /// further. May be null: then the records come from `NextBlock`, which is all that a host needs.
    unsigned (*Columns)(void* handle, const double* const** columns, size_t* recordCount, size_t* fieldCount,
                        int* errorCode);
} HXIterator;
