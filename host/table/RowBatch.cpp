#include "host/table/RowBatch.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

/// Below this a thread costs more than it saves.
constexpr std::size_t kSharedFromCells = 8192;
/// How many rows a thread takes at a time: small, so that both end together.
constexpr std::size_t kChunkRows = 256;

}  // namespace

NumberReading::NumberReading(const RowBatch& batch, std::vector<std::size_t> columns, SecondThread& thread)
    : batch_(batch), columns_(std::move(columns)) {
    if (batch_.RowCount() * columns_.size() < kSharedFromCells) return;
    second_ = thread.Start([this] { ReadChunks(); });
}

NumberReading::~NumberReading() {
    if (second_.valid()) second_.wait();
}

bool NumberReading::Finish() {
    ReadChunks();
    if (second_.valid()) second_.get();
    return areAllNumbers_;
}

void NumberReading::ReadChunks() {
    bool areNumbers = true;
    for (;;) {
        const std::size_t first = nextRow_.fetch_add(kChunkRows);
        if (first >= batch_.RowCount()) break;
        const std::size_t last = std::min(first + kChunkRows, batch_.RowCount());
        for (std::size_t row = first; row < last; ++row) {
            const std::span<const std::string_view> cells = batch_.Cells(row);
            double* const target = batch_.Target(row);
            for (const std::size_t column : columns_) {
                if (ParseDecimal(cells[column], target[column])) continue;
                target[column] = std::numeric_limits<double>::quiet_NaN();
                areNumbers = false;
            }
        }
    }
    if (!areNumbers) areAllNumbers_ = false;
}

}  // namespace tarn
