#include "component/FieldReferences.h"

#include <span>
#include <string>
#include <vector>

#include "vocabulary/ResultKeys.h"
#include "vocabulary/TestFacts.h"

using HxCppHelperV1::XMLElement;
using HxCppHelperV1::XMLElementIterator;

namespace {

// ---- Where the references are ----

constexpr const char* kOrdinalTreatedAsCont = "OrdinalTreatedAsCont";

enum class PlaceKind {
    kRow,             ///< a row of a table
    kRowOfEach,       ///< a row of every table whose name holds the text
    kRowNames,        ///< the row names of a simple table in a table
    kRecordPositions  ///< the first of the two rows of a simple table; the second holds order values
};

struct Place {
    PlaceKind kind;
    const char* table;
    const char* name;  ///< of the row or the simple table
};

constexpr Place kBoxPlots{PlaceKind::kRow, TableName::kBoxPlotInfo, RowName::kGroupFieldIndex};
constexpr Place kPairwiseField{PlaceKind::kRow, TableName::kPairwiseResult, RowName::kFieldIndex};
constexpr Place kStepwiseField{PlaceKind::kRow, TableName::kStepwiseResult, RowName::kFieldIndex};
constexpr Place kComparedRows{PlaceKind::kRow, TableName::kCategoryFieldsComparison, RowName::kRowNames};
constexpr Place kComparedColumns{PlaceKind::kRow, TableName::kCategoryFieldsComparison, RowName::kColumnNames};
constexpr Place kSamples{PlaceKind::kRowOfEach, TableName::kVariableInformation, RowName::kGroupIndex};
constexpr Place kPairwiseSamples{PlaceKind::kRecordPositions, TableName::kPairwiseResult, TableName::kPairwiseInfo};
constexpr Place kStepwiseSamples{PlaceKind::kRecordPositions, TableName::kStepwiseResult, TableName::kStepwiseInfo};
constexpr Place kClassesOfSamples{PlaceKind::kRowNames, TableName::kTwoClassComparison, TableName::kContent};

constexpr Place kGroupsPlaces[] = {kBoxPlots};
constexpr Place kComparedGroupsPlaces[] = {kBoxPlots, kPairwiseField, kStepwiseField};
constexpr Place kPairPlaces[] = {kComparedRows, kComparedColumns};
constexpr Place kRelatedPlaces[] = {kSamples, kPairwiseSamples, kStepwiseSamples};
constexpr Place kRelatedClassesPlaces[] = {kSamples, kPairwiseSamples, kStepwiseSamples, kClassesOfSamples};

std::span<const Place> PlacesOf(const TestFacts& test) {
    if (test.family == TestFamily::kIndependent) {
        if (test.comparesSamples) return kComparedGroupsPlaces;
        return test.hasBoxPlots ? std::span<const Place>(kGroupsPlaces) : std::span<const Place>();
    }
    if (test.family != TestFamily::kRelated) return {};
    if (test.fieldCount == FieldCount::kPair) return kPairPlaces;
    return test.takes == FieldsTaken::kNumbers ? std::span<const Place>(kRelatedPlaces) : kRelatedClassesPlaces;
}

std::vector<int> FieldParametersOf(const TestFacts& test) {
    std::vector<int> positions{test.condition.fields};
    for (const int position : {test.condition.secondField, test.condition.groupField}) {
        if (position != ConditionParameters::kNone) positions.push_back(position);
    }
    return positions;
}

// ---- Replacing ----

/// The children of an element with that element name and a "name" that `matches`.
template <typename Matches>
std::vector<XMLElement> ChildrenNamed(const XMLElement& parent, const char* element, Matches matches) {
    std::vector<XMLElement> found;
    for (XMLElementIterator children(parent, element); children.hasNext();) {
        const XMLElement child = children.next();
        if (matches(child.getAttribute(ElementAttribute::kName))) found.push_back(child);
    }
    return found;
}

std::vector<XMLElement> ChildrenNamed(const XMLElement& parent, const char* element, const char* name) {
    return ChildrenNamed(parent, element, [&](const std::string& childName) { return childName == name; });
}

/// Renumbers the rows of that name and returns the copies among their old indices, renumbered.
std::string RenumberRow(const XMLElement& table, const char* name, const PublicFields& fields) {
    std::string copies;
    for (XMLElement row : ChildrenNamed(table, Element::kAttribute, name)) {
        const std::string list = row.getAttribute(ElementAttribute::kValue);
        copies = fields.RenumberCopies(list);
        row.removeAttribute(ElementAttribute::kValue);
        row.addAttribute(ElementAttribute::kValue, fields.Renumber(list));
    }
    return copies;
}

/// Makes the texts of an element's children of that name anew, the first `renumbered` of them with other indices.
void RebuildTexts(XMLElement table, const char* name, std::size_t renumbered, const PublicFields& fields) {
    std::vector<std::string> texts;
    for (XMLElementIterator rows(table, name); rows.hasNext();) texts.push_back(rows.next().getText());
    table.removeChildren(name);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        table.addChild(name).addText(i < renumbered ? fields.Renumber(texts[i]) : texts[i]);
    }
}

void RenumberRowNames(const XMLElement& simpleTable, const PublicFields& fields) {
    XMLElement names = simpleTable.findChild(Element::kRowNames);
    names.setText(fields.Renumber(names.getText()));
}

void RenumberPlace(const XMLElement& algorithm, const Place& place, const PublicFields& fields) {
    const auto matches = [&](const std::string& name) {
        return place.kind == PlaceKind::kRowOfEach ? name.find(place.table) != std::string::npos : name == place.table;
    };
    for (const XMLElement& table : ChildrenNamed(algorithm, Element::kStructuredTable, matches)) {
        if (place.kind == PlaceKind::kRow || place.kind == PlaceKind::kRowOfEach) {
            RenumberRow(table, place.name, fields);
            continue;
        }
        for (const XMLElement& simple : ChildrenNamed(table, Element::kSimpleTable, place.name)) {
            if (place.kind == PlaceKind::kRowNames) {
                RenumberRowNames(simple, fields);
            } else {
                RebuildTexts(simple, Element::kRow, 1, fields);
            }
        }
    }
}

void RenumberCondition(XMLElement condition, const TestFacts& test, const PublicFields& fields) {
    std::string copies;
    for (const int position : FieldParametersOf(test)) {
        const std::string row = "%" + std::to_string(position);
        const std::string more = RenumberRow(condition, row.c_str(), fields);
        if (!more.empty()) copies += (copies.empty() ? "" : ";") + more;
    }
    if (copies.empty()) return;
    XMLElement ordinal = condition.addChild(Element::kAttribute);
    ordinal.addAttribute(ElementAttribute::kName, kOrdinalTreatedAsCont);
    ordinal.addAttribute(ElementAttribute::kValue, copies);
}

}  // namespace

void RenumberReferences(XMLElement algorithm, const PublicFields& fields) {
    const TestFacts* const test = Tests::OfResult(algorithm.getAttribute(ElementAttribute::kName));
    // For the proportion intervals documents show the indices as the execution counts the fields.
    if (test == nullptr || test == &Tests::kProportionIntervals) return;
    for (const XMLElement& condition : ChildrenNamed(algorithm, Element::kStructuredTable, TableName::kCondition)) {
        RenumberCondition(condition, *test, fields);
    }
    for (const Place& place : PlacesOf(*test)) RenumberPlace(algorithm, place, fields);
}
