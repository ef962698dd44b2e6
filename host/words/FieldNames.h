#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/table/Table.h"

namespace tarn {

/// Whether a name matches a pattern, in which "*" stands for any letters and "?" for one.
bool MatchesPattern(std::string_view name, std::string_view pattern);

/// Whether a typed name may be a pattern of names.
bool IsPattern(std::string_view typed);

/// Names as a user types them, looked up among the fields of a table: exactly, or else without regard to case where
/// that leaves one field only. Borrows the table.
class FieldNames {
 public:
    explicit FieldNames(const Table& table) : table_(table) {}

    /// The field that is meant, "" for none. One that is spelt otherwise is noted.
    std::string Find(const std::string& typed);
    /// "the table has no field ..", with the name that may be meant or all that there are.
    std::string Mistake(const std::string& typed) const;

    /// The fields that a list means, with patterns and "all" as the fields that match, in the order of the table and
    /// without those that `isTaken` for something else. A name that no field has stays as it is. Throws an
    /// `InputError` that begins with `what` for a pattern that no field matches.
    std::vector<std::string> Expand(const std::vector<std::string>& typed, const std::string& what,
                                    const std::function<bool(const std::string&)>& isTaken);

    /// Which names were taken for which fields, as sentences.
    const std::vector<std::string>& Notes() const { return notes_; }

 private:
    const Table& table_;
    std::vector<std::string> notes_;
};

}  // namespace tarn
