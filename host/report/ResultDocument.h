#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/TextList.h"

namespace tarn {

/// A result document as read from its XML: everything that it holds, under the names that it has there, and numbers
/// as their texts, so that none loses a digit. What it means is for `TestReading`.

/// One category of a field: `value` as in the data, `label` what a reader is shown in place of it, may be empty.
struct ResultCategory {
    std::string value;
    std::string label;

    const std::string& Shown() const { return label.empty() ? value : label; }
};

struct ResultField {
    std::string name;
    std::string label;     ///< may be empty
    std::string level;     ///< "continuous", "categorical" (nominal) or "ordinal"
    std::string dataType;  ///< "double", "string", or a kind of date
    std::vector<ResultCategory> categories;

    /// What a reader is shown for the category at an index as the document writes it; null for none.
    const std::string* CategoryAt(std::string_view index) const;
};

/// What a test has to say about itself.
struct ResultMessage {
    long code = 0;
    std::string kind;                     ///< "error", "warning" or "helpMessage"
    std::vector<std::string> parameters;  ///< by their position
    std::vector<std::pair<std::string, std::string>> named;
};

/// A table: rows of a name and a value and further tables; or, if it is simple, lines of values with names for the
/// lines and for the columns. The lines of a histogram hold hundreds of values, most of which nobody asks for: a line
/// is the text of the document, of which `SplitList` and `ForEachInList` give the values.
struct ResultTable {
    std::string name;
    bool isSimple = false;
    std::vector<std::pair<std::string, std::string>> rows;
    std::vector<ResultTable> tables;
    std::vector<std::string> lineNames;
    std::vector<std::string> columnNames;
    std::vector<std::string> lines;

    /// The value of a row; null for none.
    const std::string* Find(std::string_view rowName) const;
    /// The value of a row, "" for none.
    std::string Value(std::string_view rowName) const;
    /// A table within this one; null for none.
    const ResultTable* Table(std::string_view tableName) const;
};

/// One test of the document.
struct TestResult {
    std::string name;            ///< as in the request: "RSign"
    std::string type;            ///< "hypothesis_test" or "confidence_interval"
    std::string classification;  ///< "One_Sample", "Related_Samples" or "Independent_Samples"
    std::string decision;        ///< "reject", "retain", "unknown"; "" where nothing is decided
    /// In what it came out otherwise than as defined, joined by blanks: "extended" where a number was wider, "textbook"
    /// where a statistic has the textbook's form; "" for a test that came out as defined.
    std::string arithmetic;
    std::string conditionKey;
    std::vector<std::string> parameters;        ///< of the condition, by their position
    std::vector<std::string> ordinalAsNumbers;  ///< the indices of ordinal fields that it took as numbers
    std::vector<ResultMessage> messages;
    ResultTable content;  ///< all its tables but the condition and the messages

    bool HasError() const;
};

/// How a run computed: as the engine is defined, with counts and products of fixed widths, or extended, with numbers as
/// wide as they need to be. A document alone says so only where that makes a difference.
enum class ArithmeticMode { kUnknown, kAsDefined, kExtended };

/// The name of a mode in the outputs: "as-defined", "extended"; "" for one that isn't known.
std::string_view NameOf(ArithmeticMode mode);

/// The fields of the data model that the tests speak of, and the tests.
struct ResultDocument {
    ArithmeticMode arithmetic = ArithmeticMode::kUnknown;
    std::string application;
    std::string applicationVersion;  ///< may be empty
    std::string sigLevel;
    std::string confidenceLevel;
    std::string missingTreatment;                             ///< "analysis" or "listwise"
    std::vector<std::pair<std::string, std::string>> counts;  ///< of records and of their weights
    std::vector<ResultField> fields;
    std::vector<TestResult> tests;
    std::vector<ResultTable> descriptives;  ///< one table per field with statistics; its row "varIndex" is the field

    /// The field at an index as the document writes it; null for none.
    const ResultField* FieldAt(std::string_view index) const;
};

/// Categories by what a reader is shown for them, joined by commas. `indices` as the document writes a list of them;
/// one that `field`, which may be null, doesn't have stays as it is.
std::string CategoryNames(const std::string& indices, const ResultField* field);

/// Reads a document, whose text is used up by it. Throws an `InputError` for a text that is no result document; `name`
/// stands for it in the message.
ResultDocument ReadResult(std::string document, const std::string& name = "the result document");

/// Calls `visit` with each part of a list that is joined by semicolons; with none for the empty text.
template <typename Visit>
void ForEachInList(std::string_view joined, Visit visit) {
    while (!joined.empty()) {
        const std::size_t end = joined.find(';');
        visit(joined.substr(0, end));
        if (end == std::string_view::npos) return;
        joined.remove_prefix(end + 1);
        if (joined.empty()) visit(joined);
    }
}

/// The parts of such a list.
std::vector<std::string> SplitList(std::string_view joined);

/// A number of the document in a width for reading: six digits, or all those before the point up to 1e15; another text
/// as it stands.
std::string ShortNumber(const std::string& text);

/// The number of a text, if all of it is one that a document can hold, "nan" and "inf" among them.
bool ReadNumber(std::string_view text, double& number);

/// The text that stands in the place of a value that a test has none of.
inline constexpr std::string_view kMissingText = "__MISSING__";

}  // namespace tarn
