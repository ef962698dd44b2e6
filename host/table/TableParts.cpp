#include "host/table/TableParts.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace tarn {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

bool IsMissing(double category) {
    return std::isnan(category) || category == kMissingCategory;
}

/// The index of the category in a cell that isn't missing.
std::size_t PlaceOf(double category) {
    return static_cast<std::size_t>(category);
}

std::vector<bool> Occurring(std::span<const double> cells, std::size_t categories) {
    std::vector<bool> occurs(categories, false);
    for (const double cell : cells) {
        if (!IsMissing(cell)) occurs[PlaceOf(cell)] = true;
    }
    return occurs;
}

/// Leaves out the categories that occurred before and don't any more.
void DropEmptied(Column& column, std::span<double> cells, const std::vector<bool>& before) {
    const std::vector<bool> occurs = Occurring(cells, column.categories.size());
    std::vector<std::size_t> placeOf(column.categories.size(), kNone);
    std::vector<Category> kept;
    std::size_t listed = 0;
    for (std::size_t i = 0; i < column.categories.size(); ++i) {
        if (before[i] && !occurs[i]) continue;
        placeOf[i] = kept.size();
        kept.push_back(std::move(column.categories[i]));
        if (i < column.listedCount) ++listed;
    }
    column.categories = std::move(kept);
    column.listedCount = listed;
    for (double& cell : cells) {
        if (!IsMissing(cell)) cell = static_cast<double>(placeOf[PlaceOf(cell)]);
    }
}

}  // namespace

Table RecordsOf(const Table& table, std::span<const std::size_t> records) {
    Table part(table.Columns());
    part.SetWeightIndex(table.WeightIndex());
    part.Reserve(records.size());
    part.Resize(records.size());
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
        const std::span<const double> from = table.Cells(i);
        const std::span<double> to = part.Cells(i);
        for (std::size_t row = 0; row < records.size(); ++row) to[row] = from[records[row]];
        Column& column = part.ColumnAt(i);
        if (column.IsCategorical()) DropEmptied(column, to, Occurring(from, column.categories.size()));
    }
    return part;
}

void MakeNominal(Table& table, std::size_t column) {
    const std::span<double> cells = table.Cells(column);
    std::vector<double> numbers;
    for (const double cell : cells) {
        if (!std::isnan(cell) && cell != kMissingNumber) numbers.push_back(cell);
    }
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    for (double& cell : cells) {
        if (std::isnan(cell) || cell == kMissingNumber) {
            cell = kMissingCategory;
        } else {
            cell = static_cast<double>(std::ranges::lower_bound(numbers, cell) - numbers.begin());
        }
    }
    Column& changed = table.ColumnAt(column);
    changed.level = FieldLevel::kNominal;
    changed.categories.clear();
    for (const double number : numbers) changed.categories.push_back({number, {}, {}});
    changed.listedCount = 0;
}

void PutFirst(Table& table, std::size_t column, std::size_t category) {
    std::vector<Category>& categories = table.ColumnAt(column).categories;
    const auto begin = categories.begin();
    std::rotate(begin, begin + static_cast<std::ptrdiff_t>(category),
                begin + static_cast<std::ptrdiff_t>(category) + 1);
    const double moved = static_cast<double>(category);
    for (double& cell : table.Cells(column)) {
        if (IsMissing(cell)) continue;
        if (cell == moved) {
            cell = 0;
        } else if (cell < moved) {
            ++cell;
        }
    }
}

}  // namespace tarn
