#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/report/ResultReading.h"
#include "host/report/TestPage.h"

namespace tarn {

/// What a terminal can show.
struct TextStyle {
    bool hasUnicode = false;
    bool hasColour = false;
    std::size_t width = 80;  ///< characters in a line; a table of long names may be wider
};

/// A block for each test as an analyst would paste it into a report: its question, what it found, how sure that is,
/// and what it remarks. From five tests on a table of all of them stands in front, with significances adjusted for
/// their number. `notes` are sentences on the whole run. How it was made stands last.
std::string TextReport(const ResultReading& result, const MessageCatalogue& texts, const TextStyle& style,
                       const std::vector<std::string>& notes = {});

/// The same without the record.
std::string TextOfTests(const ResultReading& result, const MessageCatalogue& texts, const TextStyle& style,
                        const std::vector<std::string>& notes = {});

/// The lines of a record under its heading; "" for none.
std::string RecordText(const std::vector<PageFact>& facts);

/// One line for each test in one table, adjusted significances from five tests on, then what the tests remark.
std::string ShortReport(const ResultReading& result, const MessageCatalogue& texts);

/// A test in one line of a table.
struct SummaryCells {
    std::string title;  ///< with its number
    std::string fields;
    std::string n;
    std::string statistic;
    std::string p;
    bool isBound = false;  ///< whether the significance is a bound
    std::string kind;
    std::string decision;
};
SummaryCells SummaryOf(const TestReading& reading, std::size_t number);

/// A significance as analysts write it: ".023", "< .001", "> .200" for a bound, "undefined" for what is no number,
/// "not computed" for "".
std::string PText(const std::string& value, bool isBound = false);

}  // namespace tarn
