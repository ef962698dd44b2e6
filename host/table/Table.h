#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/table/FieldType.h"
#include "machine/GrowingBlock.h"
#include "vocabulary/MissingValues.h"

namespace tarn {

/// The value of a missing cell of a continuous column.
inline constexpr double kMissingNumber = MissingValue::kNumber;
/// The value of a missing cell of a categorical column.
inline constexpr double kMissingCategory = MissingValue::kCategory;

/// One category of a categorical column: `text` is its value in a string column, `number` in any other.
struct Category {
    double number = 0;
    std::string text;
    std::string label;  ///< what a reader is shown in place of the value; may be empty

    friend bool operator==(const Category&, const Category&) = default;
};

/// A text that marks cells as missing, and how many of them.
struct MissingText {
    std::string text;
    std::size_t count = 0;

    friend bool operator==(const MissingText&, const MissingText&) = default;
};

/// One column of a table. A string column is always categorical.
struct Column {
    std::string name;
    std::string title;  ///< what a reader is shown in place of the name; may be empty
    FieldType type = FieldType::kNumber;
    FieldLevel level = FieldLevel::kContinuous;
    std::vector<Category> categories;  ///< in their order; empty for a continuous column
    std::size_t listedCount = 0;       ///< so many of them, the first ones, were listed; the others occur beside them
    bool isInferred = false;           ///< whether its cells alone say what the type is
    std::vector<MissingText> missingTexts;  ///< those that occur

    bool IsText() const { return type == FieldType::kString; }
    bool IsCategorical() const { return level != FieldLevel::kContinuous; }
    /// Whether somebody said in which order the categories stand. Otherwise texts stand in that of the alphabet, which
    /// means nothing.
    bool IsOrderTold() const {
        return level == FieldLevel::kOrdinal && !categories.empty() && listedCount == categories.size();
    }
};

/// What a reader is shown for a category of a column: its label, or its value.
std::string ShownCategory(const Column& column, const Category& category);

/// The category that a user means by a word: the one of that value, or else of that label; null for none.
const Category* FindCategory(const Column& column, std::string_view word);

/// A table in memory, one double per cell: the number of a continuous column (`kMissingNumber` if missing), the index
/// into `Column::categories` of a categorical one (`kMissingCategory` if missing).
///
/// The cells of a column stand side by side, and there is no other copy of them: whoever needs a column borrows it from
/// here, down to the tests of the engine. They may be somebody else's, lent until somebody writes to them.
class Table {
 public:
    static constexpr int kNoColumn = -1;

    Table() = default;
    /// An empty table; the names of the columns are unique.
    explicit Table(std::vector<Column> columns);

    const std::vector<Column>& Columns() const { return columns_; }
    /// For whoever fills the table; the name stays as it is.
    Column& ColumnAt(std::size_t column) { return columns_[column]; }
    std::size_t ColumnCount() const { return columns_.size(); }
    /// The position of the column with that name, `kNoColumn` for none.
    int FindColumn(std::string_view name) const;

    /// The position of the column that holds the frequency weights, `kNoColumn` for none. It is continuous.
    int WeightIndex() const { return weightIndex_; }
    void SetWeightIndex(int column) { weightIndex_ = column; }

    std::size_t RowCount() const { return rowCount_; }
    /// The cells of a column in the order of the rows. Valid as long as the table, and until
    /// `Reserve`, `Resize` and `Trim`. Asked for to be written to, those that are lent are copied.
    std::span<double> Cells(std::size_t column) {
        if (lent_[column].values != nullptr) Own(column);
        return {cells_[column].Values(), rowCount_};
    }
    std::span<const double> Cells(std::size_t column) const {
        const double* const lent = lent_[column].values;
        return {lent != nullptr ? lent : cells_[column].Values(), rowCount_};
    }
    /// Puts memory of somebody else in place of the cells of a continuous column, as many as there are rows. `hold`
    /// keeps them where they are, and as they are.
    void Lend(std::size_t column, const double* cells, std::shared_ptr<const void> hold);
    /// Whether the cells of a column are somebody else's.
    bool AreLent(std::size_t column) const { return lent_[column].values != nullptr; }
    /// Whether the cells of a column from that row on are 0 until they are set, and take no memory.
    bool AreZeroFrom(std::size_t column, std::size_t row) const {
        return lent_[column].values == nullptr && cells_[column].IsZeroFrom(row);
    }
    /// Makes room for as many rows as are expected.
    void Reserve(std::size_t rowCount);
    /// Takes rows away from the end or adds some there, whose cells the caller sets.
    void Resize(std::size_t rowCount);
    /// Takes away the last columns.
    void KeepColumns(std::size_t count);

    /// What a reader of results should know of how the table was read, as sentences.
    const std::vector<std::string>& Notes() const { return notes_; }
    void AddNote(std::string note) { notes_.push_back(std::move(note)); }

    /// Gives back memory that was held for further rows.
    void Trim();

 private:
    /// Cells of somebody else.
    struct LentCells {
        const double* values = nullptr;  // null where the cells are the table's own
        std::shared_ptr<const void> hold;
    };

    void Own(std::size_t column);

    std::vector<Column> columns_;
    std::unordered_map<std::string, int> indexByName_;
    int weightIndex_ = kNoColumn;
    std::vector<GrowingBlock> cells_;  // a block for each column
    std::vector<LentCells> lent_;      // for each column
    std::size_t rowCount_ = 0;
    std::vector<std::string> notes_;
};

}  // namespace tarn
