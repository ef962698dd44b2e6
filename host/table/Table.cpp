#include "host/table/Table.h"

#include <algorithm>
#include <bit>
#include <optional>
#include <utility>

#include "host/NumberText.h"
#include "host/table/CellValue.h"
#include "machine/LargeBlock.h"

namespace tarn {

namespace {

constexpr std::size_t kBlockCells = (std::size_t{16} << 20) / sizeof(double);

}  // namespace

std::string ShownCategory(const Column& column, const Category& category) {
    if (!category.label.empty()) return category.label;
    return column.IsText() ? category.text : ExactText(category.number);
}

const Category* FindCategory(const Column& column, std::string_view word) {
    const std::optional<double> number = column.IsText() ? std::nullopt : ParseCell(column.type, TrimBlanks(word));
    const auto find = [&](auto isMeant) -> const Category* {
        const auto found = std::ranges::find_if(column.categories, isMeant);
        return found == column.categories.end() ? nullptr : &*found;
    };
    const Category* const byValue = find([&](const Category& category) {
        return column.IsText() ? category.text == word : number.has_value() && category.number == *number;
    });
    return byValue != nullptr ? byValue : find([&](const Category& category) { return category.label == word; });
}

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
