#include "host/RowBatch.h"

#include <future>
#include <limits>

#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

/// Below this a thread costs more than it saves.
constexpr std::size_t kSharedFromCells = 8192;

void ReadRows(const RowBatch& batch, const std::vector<std::size_t>& columns, std::size_t first, std::size_t last) {
    for (std::size_t row = first; row < last; ++row) {
        const std::span<const std::string_view> cells = batch.Cells(row);
        double* const target = batch.Target(row);
        for (const std::size_t column : columns) {
            if (!ParseDecimal(cells[column], target[column])) {
                target[column] = std::numeric_limits<double>::quiet_NaN();
            }
        }
    }
}

}  // namespace

void ReadPlainNumbers(const RowBatch& batch, const std::vector<bool>& isPlain) {
    std::vector<std::size_t> columns;
    for (std::size_t column = 0; column < isPlain.size(); ++column) {
        if (isPlain[column]) columns.push_back(column);
    }
    const std::size_t rowCount = batch.RowCount();
    if (rowCount * columns.size() < kSharedFromCells) {
        ReadRows(batch, columns, 0, rowCount);
        return;
    }
    const std::size_t half = rowCount / 2;
    const std::future<void> second = std::async(std::launch::async, [&] { ReadRows(batch, columns, half, rowCount); });
    ReadRows(batch, columns, 0, half);
    second.wait();
}

}  // namespace tarn
