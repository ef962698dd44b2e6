#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/table/Table.h"
#include "host/words/FieldNames.h"
#include "host/words/WordScanner.h"

namespace tarn {

/// Which records are to be taken: `age > 40 & arm != "low"`.
///
///     either       both ("|" both)...                     also "||", "or"
///     both         not ("&" not)...                       also "&&", "and"
///     not          "!" not, "(" either ")", comparison    also "not"
///     comparison   operand "=" operand, also "==" "!=" "<" "<=" ">" ">="
///                  field ["not"] "in" "(" value, .. ")", field "is" ["not"] "missing"
///     operand      a field, a number, a text in quotes, true, false
///
/// A comparison is true, false or missing; it is missing where its field is. "&" is false where one side is, "|" true
/// where one side is, and both are missing where a side is and the other one doesn't settle it.
class Condition {
 public:
    /// Throws an `InputError` that says at which column something else stands.
    explicit Condition(const std::string& text);
    Condition(Condition&&) noexcept;
    Condition& operator=(Condition&&) noexcept;
    ~Condition();

    /// The names of its fields as they were typed, each as often as it stands there.
    std::vector<std::string> Names() const;
    /// The places of the records for which the whole is true. Throws an `InputError` for names that are no fields, for
    /// categories that a field doesn't have, and for a value that can't be compared with its field.
    std::vector<std::size_t> RecordsOf(const Table& table, FieldNames& names) const;

    /// A part of it as it was read.
    struct Node;

 private:
    class Parser;
    class Evaluation;

    std::unique_ptr<Node> root_;
    std::unique_ptr<WordScanner> words_;  // for the text and the places in it
};

}  // namespace tarn
