#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/table/Table.h"

namespace tarn {

/// A table in long form: a record for each subject under each condition. The names are those of fields that it has.
struct RepeatedMeasures {
    std::string value;
    std::string condition;  ///< categorical
    std::string subject;
};

/// The same with a record for each subject and a field for each category of the condition, called "condition=category".
struct WideTable {
    Table table;
    std::vector<std::string> fields;
    std::vector<std::string> notes;  ///< how many subjects are complete, and which ones are not, as sentences
    std::size_t placeless = 0;       ///< records without a subject or a condition, which are left out
};

/// Subjects stand in the order of their first records. A field of weights comes along and has to be the same in all
/// records of a subject. Throws an `InputError` for a subject with two records under one condition, and where there are
/// fewer than two conditions or too many to be any.
WideTable WidenBySubject(const Table& table, const RepeatedMeasures& measures);

}  // namespace tarn
