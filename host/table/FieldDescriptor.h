#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/ByteSource.h"
#include "host/table/FieldType.h"

namespace tarn {

/// As a descriptor names them: "integer", "ordinal".
std::string_view NameOf(FieldType type);
std::string_view NameOf(FieldLevel level);

/// A value as a descriptor names it. Its meaning depends on the type of the column, which may not be known yet.
struct DescribedValue {
    std::string text;              ///< the text as written, or the digits of a number
    std::optional<double> number;  ///< only for what is written as a number
    std::string label;             ///< may be empty

    friend bool operator==(const DescribedValue&, const DescribedValue&) = default;
};

/// What a descriptor says of one field. What it leaves open is inferred from the data.
struct FieldDescriptor {
    std::string name;
    std::string title;
    std::optional<FieldType> type;
    std::optional<FieldLevel> level;
    std::optional<std::vector<DescribedValue>> categories;  ///< in their order
    bool categoriesOrdered = false;
    std::vector<DescribedValue> missingValues;  ///< the user-missing values
};

/// What a descriptor says of a table.
struct TableDescriptor {
    std::string sourceName;  ///< what messages call the descriptor
    std::vector<FieldDescriptor> fields;
    std::vector<std::string> missingTexts = {"", "NA"};  ///< the texts of a system-missing cell, without outer blanks
    bool namesMissingTexts = false;                      ///< whether the descriptor says them
    std::optional<std::string> weightField;
};

/// Reads a table descriptor: JSON in the shape of a Table Schema, with the keys `level` of a field and `weightField`
/// of the table added. Keys of a Table Schema that have no meaning here are passed over.
/// Throws an `InputError` that names the line and column of malformed JSON, or else the key and what it should be.
TableDescriptor ReadTableDescriptor(ByteSource& source);

}  // namespace tarn
