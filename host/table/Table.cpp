#include "host/table/Table.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "host/NumberText.h"
#include "host/table/CellValue.h"

namespace tarn {

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
    for (const Column& column : columns_)
        indexByName_.emplace(column.name, static_cast<int>(&column - columns_.data()));
    cells_.resize(columns_.size());
    lent_.resize(columns_.size());
}

int Table::FindColumn(std::string_view name) const {
    const auto found = indexByName_.find(std::string(name));
    return found == indexByName_.end() ? kNoColumn : found->second;
}

void Table::KeepColumns(std::size_t count) {
    for (std::size_t i = count; i < columns_.size(); ++i) {
        const auto named = indexByName_.find(columns_[i].name);
        if (named != indexByName_.end() && named->second == static_cast<int>(i)) indexByName_.erase(named);
    }
    columns_.resize(count);
    cells_.resize(count);
    lent_.resize(count);
}

void Table::Lend(std::size_t column, const double* cells, std::shared_ptr<const void> hold) {
    cells_[column] = GrowingBlock();
    lent_[column] = {cells, std::move(hold)};
}

void Table::Own(std::size_t column) {
    const LentCells lent = std::exchange(lent_[column], {});
    cells_[column].Reserve(rowCount_);
    std::copy_n(lent.values, rowCount_, cells_[column].Values());
}

void Table::Reserve(std::size_t rowCount) {
    for (GrowingBlock& cells : cells_) cells.Reserve(rowCount);
}

void Table::Resize(std::size_t rowCount) {
    for (std::size_t i = 0; i < lent_.size(); ++i) {
        if (lent_[i].values != nullptr && rowCount > rowCount_) Own(i);
    }
    for (GrowingBlock& cells : cells_) cells.Grow(rowCount);
    rowCount_ = rowCount;
}

void Table::Trim() {
    for (GrowingBlock& cells : cells_) cells.Trim(rowCount_);
}

}  // namespace tarn
