#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "python/src/ArrowInterface.h"
#include "python/src/InputColumn.h"

namespace tarn {

// What foreign data says of itself is held against itself before it is read: a mistake of its producer becomes an
// `InputError` with the column, and the row where there is one, in place of a read of somebody else's memory. How long
// buffers are the interface doesn't tell, nor where a list of pointers ends, so that this much has to be believed.

/// Throws where a stream lacks one of its functions.
void CheckStream(const ArrowArrayStream& stream);

/// Throws where a schema, or what hangs on it, is not there. `what` is its place: "the schema".
void CheckSchema(const ArrowSchema& schema, const std::string& what);

/// Throws where an array that comes out of a stream has no sensible length.
void CheckExtent(const ArrowArray& array);
/// Throws where an array of whole rows doesn't have that many columns, or misses a row as a whole. `rowsBefore`: those
/// of the arrays before it.
void CheckRows(const ArrowArray& array, std::size_t columnCount, std::int64_t rowsBefore);

/// The rows of a column that are wanted of an array.
struct WantedRows {
    std::int64_t skipped = 0;  ///< at the beginning of the array
    std::int64_t count = 0;
    std::int64_t before = 0;  ///< in the table, for messages
};

/// These rows, of which all can be read: throws where the array doesn't fit the column or its own numbers contradict
/// one another. Codes of a dictionary are checked when they are read.
ColumnPiece CheckedPiece(const InputColumn& column, const ArrowArray& array, const WantedRows& rows);

}  // namespace tarn
