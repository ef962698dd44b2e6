#pragma once

#include <string>
#include <vector>

#include "host/table/Table.h"
#include "host/table/TableLoader.h"
#include "host/table/WeightCounts.h"

namespace tarn {

/// How many records have weights that were changed or don't count, and what the weights add up to before and after; ""
/// where every weight counts as it stands, or where there are none.
std::string WeightNote(const Table& table, WeightRule rule);

/// That case identifiers occur more than once while the records are tested as independent ones; "" where they don't.
/// `fields` are those that are tested so.
std::string RepeatedCasesNote(const Table& table, const std::string& caseIdField,
                              const std::vector<std::string>& fields);

/// A note for each given order with categories that never occur.
std::vector<std::string> UnusedCategoryNotes(const Table& table, const std::vector<FieldOrder>& orders);

/// What may be wrong with the categories of a field: some that differ only in case or blanks, some that its description
/// doesn't list, words among numbers.
std::vector<std::string> CategoryNotes(const Column& column);

/// The words of a column that is read as words because of them, most of its values being numbers; empty for any other.
std::vector<std::string> WordsAmongNumbers(const Column& column);

/// Which texts mark missing cells of those fields and how often; "" where it is none but the most usual ones, an empty
/// cell and "NA".
std::string MissingTextsNote(const Table& table, const std::vector<std::string>& fields);

/// `"NA" 12, empty 5`, the most frequent one first.
std::string ShownMissingTexts(std::vector<MissingText> texts);

/// That values of a field occur more than once, where a test's exact significance holds for different values only; ""
/// where none does.
std::string TiesNote(const Table& table, const std::string& field, const std::string& test);

}  // namespace tarn
