#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/table/CellValue.h"
#include "host/table/CodeTable.h"
#include "host/table/ColumnPlan.h"
#include "host/table/MissingTexts.h"
#include "host/table/Table.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

/// Turns the cells of one column into doubles: a number, or for a categorical column a code by first occurrence, which
/// `Finish` maps to the index of a category. A missing cell is `kMissingNumber` either way.
class ColumnReader {
 public:
    /// Both arguments are borrowed.
    ColumnReader(const ColumnPlan& plan, const MissingTexts& missingTexts);

    /// Reads a cell into `value`; false if it is none of the column's type.
    [[nodiscard]] bool Read(std::string_view cell, double& value);

    /// Whether a cell that is a decimal number has that number as its value, whatever the other cells.
    bool TakesPlainNumbers() const { return !isText_ && IsDecimal() && !isCategorical_ && userMissingNumbers_.empty(); }
    /// Notes that a cell was read as such a number by somebody else.
    void NotePlainNumber() { hasValues_ = true; }

    /// Reads a cell of a string column, which can be any text.
    double ReadText(std::string_view cell);

    /// Reads cells as texts from now on. What was read before as a number is void.
    void BecomeText();
    /// Whether `Read` returned something that `BecomeText` made void.
    bool HasVoidValues() const { return isText_ && hasValues_; }
    /// What a cell should have been, for a message.
    std::string_view ExpectedText() const { return tarn::ExpectedText(type_); }

    /// Sets the type, the level and the categories of the column. Returns the index of the category for each code;
    /// nothing for a continuous column.
    std::vector<double> Finish(const std::string& descriptorName, Column& column) const;

 private:
    bool IsDecimal() const { return type_ == FieldType::kNumber || type_ == FieldType::kInteger; }
    bool IsUserMissing(double number) const;
    bool IsUserMissing(std::string_view text) const;
    bool ReadTyped(std::string_view cell, double& value) const;
    bool ReadUnusual(std::string_view cell, double& value);
    void CheckToldOrder(const Column& column) const;
    bool Occurs(const Category& category) const;

    const ColumnPlan& plan_;
    const MissingTexts& missingTexts_;
    FieldType type_;
    bool isText_;
    bool isCategorical_;
    bool hasValues_ = false;  // that were read as those of a column of numbers
    std::vector<double> userMissingNumbers_;
    NumberCodes numberCodes_;
    TextCodes textCodes_;
};

inline bool ColumnReader::IsUserMissing(double number) const {
    for (const double missing : userMissingNumbers_) {
        if (number == missing) return true;
    }
    return false;
}

inline bool ColumnReader::Read(std::string_view cell, double& value) {
    if (isText_) {
        value = ReadText(cell);
        return true;
    }
    const std::string_view trimmed = TrimBlanks(cell);
    if (missingTexts_.Contains(trimmed)) {
        value = kMissingNumber;
        return true;
    }
    const bool isNumber = IsDecimal() ? ParseDecimal(trimmed, value) : ReadTyped(trimmed, value);
    if (!isNumber) return ReadUnusual(trimmed, value);
    hasValues_ = true;
    if (IsUserMissing(value)) {
        value = kMissingNumber;
    } else if (isCategorical_) {
        // Adding 0 makes -0 the 0 that it equals, so that no category is shown as "-0".
        value = numberCodes_.CodeOf(value + 0.0);
    }
    return true;
}

}  // namespace tarn
