#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/table/CellValue.h"
#include "host/table/CodeTable.h"
#include "host/table/ColumnPlan.h"
#include "host/table/LocalNumber.h"
#include "host/table/MissingTexts.h"
#include "host/table/Table.h"
#include "host/table/TableShape.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

/// What was found in some cells of a column: the codes of their values by first occurrence.
struct CellCodes {
    NumberCodes numbers;
    TextViewCodes texts;
    MissingCounts missing;
    bool hasNumbers = false;  ///< whether any was read as a cell of a column that holds no texts, and is not missing

    void Clear() {
        numbers.Clear();
        texts.Clear();
        missing.Clear();
        hasNumbers = false;
    }
};

/// Puts what stands for each code into its place, and `missing` for a missing cell.
void MapCodes(std::span<double> cells, const std::vector<double>& byCode, double missing);

/// Turns the cells of one column into doubles: a number, or for a categorical column a code, which `Finish` maps to the
/// index of a category. A missing cell is `kMissingNumber` either way.
///
/// Cells are read in parts, each with codes of its own, which several threads may do at a time; `Join` gives the codes
/// of a part their place among those of the column.
class ColumnReader {
 public:
    /// All arguments are borrowed.
    ColumnReader(const ColumnPlan& plan, const MissingTexts& missingTexts, const TableShape& shape);

    /// Reads a cell into `value`; false if it is none of the column's type.
    [[nodiscard]] bool Read(std::string_view cell, CellCodes& codes, double& value) const;

    /// Whether a cell that is a decimal number is its number, whatever else is to be done with that.
    bool TakesDecimals() const { return takesDecimals_ && !isText_; }
    /// Whether that number is also its value.
    bool TakesPlainNumbers() const { return TakesDecimals() && !isCategorical_ && userMissingNumbers_.empty(); }
    /// Whether any other number can stand for that value, as nobody reads it.
    bool TakesAnyNumbers() const { return TakesPlainNumbers() && !plan_.isRead; }
    /// Reads a cell that was found to be this number.
    void ReadNumber(double number, CellCodes& codes, double& value) const;

    /// Reads a cell of a string column, which can be any text.
    template <typename Texts>
    double ReadText(std::string_view cell, Texts& codes, MissingCounts& missing) const {
        const std::string_view trimmed = TrimBlanks(cell);
        const std::size_t place = missingTexts_.FindAmongWords(trimmed);
        if (place != MissingTexts::kNone) {
            missing.Count(place);
            return kMissingNumber;
        }
        const std::string_view text = trimsBlanks_ ? trimmed : cell;
        return hasUserMissing_ && IsUserMissing(text) ? kMissingNumber : codes.CodeOf(text);
    }
    /// The same for a cell that was read before as one of a column of numbers.
    double ReadTextAgain(std::string_view cell) { return ReadText(cell, textCodes_, missing_); }

    bool IsText() const { return isText_; }
    /// Whether a cell that `Read` can't read makes it a column of texts.
    bool MayBecomeText() const { return !isText_ && plan_.MayBecomeText(); }
    /// Reads cells as texts from now on. What was read before as a number is void.
    void BecomeText();
    /// Whether something was joined that `BecomeText` made void.
    bool HasVoidValues() const { return isText_ && hasNumbers_; }
    /// What a cell should have been, for a message.
    std::string_view ExpectedText() const;

    /// Takes the codes of the next cells. Returns the column's own code for each of theirs.
    std::vector<double> Join(const CellCodes& codes);
    /// How many different values it has numbered so far.
    std::size_t DistinctCount() const { return numberCodes_.Values().size() + textCodes_.Values().size(); }
    /// About what one of them takes, with its place in the table of codes.
    static constexpr std::size_t kBytesOfDistinct = 2 * sizeof(std::string);

    /// Sets the type, the level and the categories of the column. Returns the index of the category for each code;
    /// nothing for a continuous column.
    std::vector<double> Finish(const std::string& descriptorName, Column& column) const;

 private:
    bool IsUserMissing(double number) const;
    bool IsUserMissing(std::string_view text) const;
    bool ReadUnusual(std::string_view cell, CellCodes& codes, double& value) const;
    void CheckToldOrder(const Column& column) const;
    bool Occurs(const Category& category) const;

    const ColumnPlan& plan_;
    const MissingTexts& missingTexts_;
    const TableShape& shape_;
    FieldType type_;
    bool isDecimal_;
    bool takesDecimals_;
    bool trimsBlanks_;
    bool hasUserMissing_;
    bool isText_;
    bool isCategorical_;
    bool hasNumbers_ = false;  // that were read as those of a column without texts
    std::vector<double> userMissingNumbers_;
    NumberCodes numberCodes_;
    TextCodes textCodes_;
    MissingCounts missing_;
};

inline bool ColumnReader::IsUserMissing(double number) const {
    for (const double missing : userMissingNumbers_) {
        if (number == missing) return true;
    }
    return false;
}

inline void ColumnReader::ReadNumber(double number, CellCodes& codes, double& value) const {
    codes.hasNumbers = true;
    if (IsUserMissing(number)) {
        value = kMissingNumber;
    } else {
        // Adding 0 makes -0 the 0 that it equals, so that no category is shown as "-0".
        value = isCategorical_ ? codes.numbers.CodeOf(number + 0.0) : number;
    }
}

[[gnu::always_inline]] inline bool ColumnReader::Read(std::string_view cell, CellCodes& codes, double& value) const {
    if (isText_) {
        value = ReadText(cell, codes.texts, codes.missing);
        return true;
    }
    const std::string_view trimmed = TrimBlanks(cell);
    if (const std::size_t place = missingTexts_.Find(trimmed); place != MissingTexts::kNone) {
        codes.missing.Count(place);
        // Where words come later, it was one of them.
        codes.hasNumbers = codes.hasNumbers || missingTexts_.MayBeWord(place);
        value = kMissingNumber;
        return true;
    }
    if (plan_.isUnnamed) return false;
    const std::optional<double> number = isDecimal_ ? ParseNumber(trimmed, shape_.numbers) : ParseCell(type_, trimmed);
    if (!number) return ReadUnusual(trimmed, codes, value);
    ReadNumber(*number, codes, value);
    return true;
}

}  // namespace tarn
