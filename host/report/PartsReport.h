#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/report/MessageCatalogue.h"
#include "host/report/ResultReading.h"
#include "host/report/TextReport.h"

namespace tarn {

/// What was found among the records of one category of the field that splits them.
struct ResultPart {
    std::string field;
    std::string category;
    std::vector<std::string> notes;       ///< on this part, as sentences
    std::optional<ResultReading> result;  ///< nothing for a part that couldn't be tested
    std::string mistake;                  ///< why it couldn't

    std::string Name() const { return field + " = " + category; }
};

/// The record of the first part that was tested, which says of the program what those of the others do; null for none.
const RunRecord* RecordOfAny(const std::vector<ResultPart>& parts);

/// A table of all tests of all parts, with their significances adjusted for their number by Holm's method; then the
/// blocks of each part under its name. `notes` are sentences on all parts.
std::string PartsText(const std::vector<ResultPart>& parts, const MessageCatalogue& texts, const TextStyle& style,
                      const std::vector<std::string>& notes);

/// The format "tarn-parts-1": the same summary, and each part with its category, its notes and its result in the format
/// of `JsonReport`.
std::string PartsJson(const std::vector<ResultPart>& parts, const MessageCatalogue& texts,
                      const std::vector<std::string>& notes);

/// The rows of `CsvReport` for all parts in one table, with the field that splits and the category in front of each,
/// and a row "mistake" for a part that couldn't be tested.
std::string PartsCsv(const std::vector<ResultPart>& parts, const MessageCatalogue& texts);

}  // namespace tarn
