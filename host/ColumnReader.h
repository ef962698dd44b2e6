#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/CellValue.h"
#include "host/CodeTable.h"
#include "host/ColumnPlan.h"
#include "host/MissingTexts.h"
#include "host/Table.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

/// Turns the cells of one column into doubles: a number, or for a categorical column a code by first occurrence, which
/// `Finish` maps to the index of a category. A missing cell is `kMissingNumber` either way.
class ColumnReader {
 public:
    /// Both arguments are borrowed.
    ColumnReader(const ColumnPlan& plan, const MissingTexts& missingTexts);

    /// The value of a cell; nothing if it is none of the column's type.
    std::optional<double> Read(std::string_view cell);

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
    double ReadText(std::string_view cell);
    std::optional<double> ReadUnusual(std::string_view cell);

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

inline std::optional<double> ColumnReader::Read(std::string_view cell) {
    const std::string_view trimmed = TrimBlanks(cell);
    if (missingTexts_.Contains(trimmed)) return kMissingNumber;
    if (isText_) return ReadText(cell);
    const std::optional<double> number = IsDecimal() ? ParseDecimal(trimmed) : ParseCell(type_, trimmed);
    if (!number) return ReadUnusual(trimmed);
    hasValues_ = true;
    if (IsUserMissing(*number)) return kMissingNumber;
    return isCategorical_ ? numberCodes_.CodeOf(*number) : *number;
}

}  // namespace tarn
