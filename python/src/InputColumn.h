#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/table/ColumnReader.h"
#include "host/table/FieldDescriptor.h"
#include "host/table/FieldType.h"
#include "python/src/ArrowInterface.h"
#include "python/src/ColumnFormat.h"

namespace tarn {

/// What is known of a column before its values are seen.
struct InputColumn {
    std::string name;
    ColumnFormat format;                ///< of its values, or of the entries of its dictionary
    std::optional<ColumnFormat> codes;  ///< of the codes that stand for entries of a dictionary
    FieldType type = FieldType::kNumber;
    bool isListed = false;   ///< whether the entries are its categories, in their order
    bool isOrdered = false;  ///< whether that order means something
    /// Whether codes below 0 stand for missing values, as in libraries that have no bits for them.
    bool hasMissingCodes = false;
};

/// Some rows of a column in the layout of the Arrow C interface.
struct ColumnPiece {
    const ArrowArray* array = nullptr;
    std::int64_t first = 0;  ///< of them, counted from where the buffers begin
    std::int64_t count = 0;
    std::int64_t before = 0;  ///< rows of the table before them, for messages
};

/// Turns the rows of a piece into the cells of a table, with codes of the piece where the reader's column is
/// categorical. Nulls and NaN are missing. Throws an `InputError` for what no table can hold, and for a code
/// without an entry.
void ReadPiece(const InputColumn& column, const ColumnPiece& piece, const ColumnReader& reader, CellCodes& codes,
               std::span<double> cells);

/// Adds the entries of the dictionary of a piece that `entries` doesn't hold yet.
void AddEntries(const InputColumn& column, const ArrowArray& dictionary, std::vector<DescribedValue>& entries);

}  // namespace tarn
