#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "host/table/Table.h"
#include "host/table/TableLoader.h"
#include "python/src/InputSource.h"
#include "python/src/WantedColumns.h"

namespace tarn {

/// The data of a call: sources whose columns make one table.
using InputData = std::vector<std::unique_ptr<InputSource>>;

/// Makes a table of the columns that are wanted, in the order of the data; the values of others are passed over,
/// whatever they are. Categories stand in the order in which the data lists them, else in ascending order. Levels and
/// orders of columns that are there and not wanted say nothing. `mayBorrow`: large columns of plain numbers stay where
/// they are as long as there is the table, and nobody may write to them meanwhile.
///
/// Reads the sources to their end. `betweenPieces` is called on this thread between two pieces, and may throw. Throws
/// an `InputError` for a name that no column has, for data that makes no table, and before a piece would make more of
/// it than it may take; cells that stay where they are take nothing.
Table ReadTable(InputData& data, const WantedColumns& wanted, const LoadOptions& options, bool mayBorrow,
                const std::function<void()>& betweenPieces);

}  // namespace tarn
