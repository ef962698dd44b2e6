#pragma once

#include <string>
#include <vector>

namespace tarn {

/// The form in which the engine reads a field.
enum class FieldEncoding { kNone, kNominal, kOrdinal };

/// One field of the execution, in the engine's order.
struct RequiredField {
    std::string name;  ///< of the table's field
    FieldEncoding encoding = FieldEncoding::kNone;
    std::string rename;  ///< the name in the execution; empty: as in the table
};

/// What the engine asks of the data, from its requirements document.
struct Requirements {
    std::vector<std::string> excludeUserMissing;  ///< fields whose user-missing values are missing
    std::string weightField;                      ///< empty: none
    bool roundWeights = false;
    std::vector<std::string> listwiseDelete;  ///< a record that misses one of these is dropped
    std::vector<RequiredField> fields;        ///< none of them twice
};

/// Reads the document. Throws a `std::runtime_error` for one that asks for something that this host can't do.
Requirements ReadRequirements(const std::string& document);

}  // namespace tarn
