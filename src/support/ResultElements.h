#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/QKStatus.h"
#include "platform/common/QKXML.h"
#include "support/Arithmetic.h"
#include "support/Histogram.h"
#include "support/TestMessage.h"
#include "support/TextMakers.h"
#include "vocabulary/ResultKeys.h"
#include "vocabulary/TestFacts.h"

/// Makers of result elements. A test's element is "Algorithm" with rows ("Attribute"), structured tables and simple
/// tables in it, and nothing else; what a test writes with these makers reads like the element that comes out.

enum class Decision { kUnknown, kReject, kRetain };

/// The decision rule: unknown under an error; else reject if the level lies strictly above the deciding significance.
/// A significance equal to the level retains, and so does one that is not a number.
Decision Decide(const QKStatus& status, double sigLevel, double decidingSig);

/// A "Row" of a simple table.
std::unique_ptr<QKXML::XMLElement> MakeRowElement(std::string_view text);

/// A "SimpleTable" with its row names and column names; the rows are still to be added.
std::unique_ptr<QKXML::XMLElement> MakeSimpleTable(std::string_view name, std::string_view rowNames,
                                                   std::string_view columnNames);

/// The "Interval" table of a histogram: a column for each interval whose count is above 0. The two texts stay with
/// the caller, who may have put a first column into them; they come back as they stand in the table.
std::unique_ptr<QKXML::XMLElement> MakeIntervalTable(const std::vector<HistogramBin>& intervals, std::string& countText,
                                                     std::string& valueText);

/// The "Interval" table over two texts that are ready.
std::unique_ptr<QKXML::XMLElement> MakeIntervalTable(std::string_view countText, std::string_view valueText);

/// The "WarningMessages" table.
std::unique_ptr<QKXML::XMLElement> MakeWarningElement(const std::vector<TestMessage>& messages);

/// Says of an element in what it is another one than as defined, if in anything.
void NoteDeparture(const Departure& departure, QKXML::XMLElement& element);

/// A field as a condition's parameter where the test marks a missing one: its index, "__MISSING__" if negative.
std::string FieldOrMissing(int fieldIndex);

/// A number, or "__MISSING__" for the missing one.
std::string NumberOrMissing(double value);

/// A structured table that is being filled. Borrows the element, which belongs to its parent.
class StructuredTable {
 public:
    explicit StructuredTable(QKXML::XMLElement& element) : element_(&element) {}
    /// Adds a structured table of that name to `parent`.
    StructuredTable(QKXML::XMLElement& parent, std::string_view name);

    void Row(std::string_view name, std::string_view value);
    void Row(std::string_view name, const char* value) { Row(name, std::string_view(value)); }
    void Row(std::string_view name, std::int32_t value) { Row(name, IntToString(value)); }
    void Row(std::string_view name, std::int64_t value) { Row(name, IntToString(value)); }
    void Row(std::string_view name, double value) { Row(name, DoubleToString(value)); }
    void Row(std::string_view name, bool value) = delete;  // a truth value goes through BoolToString

    /// A condition's parameters: rows named "%0", "%1", ...
    void AddParameters(std::initializer_list<std::string> parameters);

    StructuredTable Table(std::string_view name) { return StructuredTable(*element_, name); }
    /// The table of the categories that settings gave and the field doesn't know, those of index -1: a row per text,
    /// named by its position among them. No table if there is none.
    void AddUnknownCategories(std::string_view name, const std::vector<double>& categoryIndices,
                              const std::vector<std::string>& givenTexts);
    void Add(std::unique_ptr<QKXML::XMLElement> child) { element_->AddChild(std::move(child)); }

 private:
    QKXML::XMLElement* element_;
};

/// The "Algorithm" element of a test.
class ResultElement {
 public:
    /// `decision` is written for a hypothesis test only.
    ResultElement(const TestFacts& test, Decision decision)
        : ResultElement(test.resultName, test.type, test.family, decision) {}
    ResultElement(std::string_view testName, ResultType type, TestFamily family, Decision decision);

    /// The table "Condition": the key, then the parameters as "%0", "%1", ...
    StructuredTable AddCondition(std::string_view conditionKey, std::initializer_list<std::string> parameters);

    /// The table "ValsNotInTheCategoreis", as `StructuredTable::AddUnknownCategories` makes it.
    void AddUnknownCategories(const std::vector<double>& categoryIndices, const std::vector<std::string>& givenTexts) {
        StructuredTable(*element_).AddUnknownCategories(TableName::kUnknownCategories, categoryIndices, givenTexts);
    }

    /// The table "WarningMessages", if there is any message. True if the element ends here, since the status is an
    /// error: the tables of a test in error are never looked at without a message that says why.
    [[nodiscard]] bool EndsWithMessages(const std::vector<TestMessage>& messages, const QKStatus& status);

    StructuredTable AddTable(std::string_view name) { return StructuredTable(*element_, name); }

    /// Gives the element up to the caller, who owns it.
    QKXML::XMLElement* Release() { return element_.release(); }

 private:
    std::unique_ptr<QKXML::XMLElement> element_;
};
