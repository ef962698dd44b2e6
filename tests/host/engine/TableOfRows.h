#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "host/table/Table.h"

namespace tarn {

/// A table of these columns with these rows.
inline Table TableOfRows(std::vector<Column> columns, const std::vector<std::vector<double>>& rows) {
    Table table(std::move(columns));
    table.Resize(rows.size());
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
        for (std::size_t row = 0; row < rows.size(); ++row) table.Cells(i)[row] = rows[row][i];
    }
    return table;
}

}  // namespace tarn
