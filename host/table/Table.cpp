#include "host/table/Table.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "planning/records/LargeBlock.h"

namespace tarn {

namespace {

constexpr std::size_t kBlockCells = (std::size_t{16} << 20) / sizeof(double);

}  // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
    const std::size_t width = std::max<std::size_t>(columns_.size(), 1);
    const std::size_t rowsPerBlock = std::bit_floor(std::max<std::size_t>(kBlockCells / width, 1));
    blockShift_ = static_cast<unsigned>(std::countr_zero(rowsPerBlock));
    blockMask_ = rowsPerBlock - 1;
    for (const Column& column : columns_) indexByName_.emplace(column.name, static_cast<int>(indexByName_.size()));
}

int Table::FindColumn(std::string_view name) const {
    const auto found = indexByName_.find(std::string(name));
    return found == indexByName_.end() ? kNoColumn : found->second;
}

double* Table::AppendRow() {
    if ((rowCount_ & blockMask_) == 0) {
        blocks_.push_back(MakeLargeBlock((blockMask_ + 1) * columns_.size()));
    }
    return Row(rowCount_++);
}

}  // namespace tarn
