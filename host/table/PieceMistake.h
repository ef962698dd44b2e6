#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/table/ColumnPlan.h"
#include "host/table/ColumnReader.h"

namespace tarn {

/// Tells the first mistake of a piece of a table, in which `PieceReader` met one: reads it again row by row, and throws
/// an `InputError` with its place. `text` stands on `firstLine` of `sourceName`, in a table with these columns.
[[noreturn]] void ThrowMistakeOf(std::string_view text, const std::string& sourceName, std::size_t firstLine,
                                 const std::vector<ColumnPlan>& plans, const std::vector<ColumnReader>& columns,
                                 const TableShape& shape, const std::string& header);

}  // namespace tarn
