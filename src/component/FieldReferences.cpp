#include "component/FieldReferences.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "vocabulary/ResultKeys.h"
#include "vocabulary/TestFacts.h"

using QKXML::XMLElement;
using QKXML::XMLNode;
using QKXML::XMLString;

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

std::string_view NameOf(const XMLElement& element) {
    const std::string* const name = element.FindAttribute(ElementAttribute::kName);
    return name == nullptr ? std::string_view() : *name;
}

/// A copy of an element with its attributes, in which each child is what `edit` makes of it. That gives null for a
/// child that stays, which both elements then share.
template <typename Edit>
std::unique_ptr<XMLElement> CopyWith(const XMLElement& source, Edit edit) {
    auto copy = XMLElement::Create(source.GetName());
    for (const auto& [name, value] : source.GetAttributes()) copy->AddAttribute(name, value);
    for (const auto& child : source.GetChildren()) {
        const XMLElement* const element = child->AsElement();
        std::shared_ptr<const XMLNode> edited = element == nullptr ? nullptr : edit(*element);
        if (edited == nullptr) edited = child;
        copy->AddChild(std::move(edited));
    }
    return copy;
}

std::string TextOf(const XMLElement& element) {
    std::string text;
    for (const auto& child : element.GetChildren()) {
        if (const XMLString* const part = child->AsText()) text += part->GetText();
    }
    return text;
}

std::unique_ptr<XMLElement> WithRenumberedText(const XMLElement& element, const PublicFields& fields) {
    auto renumbered = XMLElement::Create(element.GetName());
    renumbered->AddChild(XMLString::Take(fields.Renumber(TextOf(element))));
    return renumbered;
}

bool IsRow(const XMLElement& element, std::string_view name) {
    return element.GetName() == Element::kAttribute && NameOf(element) == name;
}

std::unique_ptr<XMLElement> MakeRow(std::string_view name, std::string_view value) {
    auto row = XMLElement::Create(Element::kAttribute);
    row->AddAttribute(ElementAttribute::kName, name);
    row->AddAttribute(ElementAttribute::kValue, value);
    return row;
}

std::string ListIn(const XMLElement& row) {
    const std::string* const value = row.FindAttribute(ElementAttribute::kValue);
    return value == nullptr ? std::string() : *value;
}

/// A simple table with its row names or the first of its rows renumbered.
std::unique_ptr<XMLElement> RenumberSimpleTable(const XMLElement& table, PlaceKind kind, const PublicFields& fields) {
    const char* const wanted = kind == PlaceKind::kRowNames ? Element::kRowNames : Element::kRow;
    bool isFound = false;
    return CopyWith(table, [&](const XMLElement& child) -> std::unique_ptr<XMLElement> {
        if (isFound || child.GetName() != wanted) return nullptr;
        isFound = true;
        return WithRenumberedText(child, fields);
    });
}

bool IsIn(std::string_view table, const Place& place) {
    return place.kind == PlaceKind::kRowOfEach ? table.find(place.table) != std::string_view::npos
                                               : table == place.table;
}

/// Null where none of the places is in the table.
std::unique_ptr<XMLElement> RenumberTable(const XMLElement& table, std::span<const Place> places,
                                          const PublicFields& fields) {
    const std::string_view name = NameOf(table);
    if (std::ranges::none_of(places, [&](const Place& place) { return IsIn(name, place); })) return nullptr;
    return CopyWith(table, [&](const XMLElement& child) -> std::unique_ptr<XMLElement> {
        for (const Place& place : places) {
            if (!IsIn(name, place)) continue;
            if (place.kind == PlaceKind::kRow || place.kind == PlaceKind::kRowOfEach) {
                if (IsRow(child, place.name)) return MakeRow(place.name, fields.Renumber(ListIn(child)));
            } else if (child.GetName() == Element::kSimpleTable && NameOf(child) == place.name) {
                return RenumberSimpleTable(child, place.kind, fields);
            }
        }
        return nullptr;
    });
}

std::unique_ptr<XMLElement> RenumberCondition(const XMLElement& condition, const TestFacts& test,
                                              const PublicFields& fields) {
    std::vector<std::string> rows;
    for (const int position : FieldParametersOf(test)) rows.push_back("%" + std::to_string(position));
    std::vector<std::string> copies(rows.size());
    auto renumbered = CopyWith(condition, [&](const XMLElement& child) -> std::unique_ptr<XMLElement> {
        for (std::size_t i = 0; i < rows.size(); ++i) {
            if (!IsRow(child, rows[i])) continue;
            const std::string list = ListIn(child);
            copies[i] = fields.RenumberCopies(list);
            return MakeRow(rows[i], fields.Renumber(list));
        }
        return nullptr;
    });
    std::string all;
    for (const std::string& some : copies) {
        if (!some.empty()) all += (all.empty() ? "" : ";") + some;
    }
    if (!all.empty()) renumbered->AddChild(MakeRow(kOrdinalTreatedAsCont, all));
    return renumbered;
}

}  // namespace

std::shared_ptr<const XMLElement> RenumberReferences(std::shared_ptr<const XMLElement> algorithm,
                                                     const PublicFields& fields) {
    const TestFacts* const test = Tests::OfResult(NameOf(*algorithm));
    // For the proportion intervals documents show the indices as the execution counts the fields.
    if (test == nullptr || test == &Tests::kProportionIntervals) return algorithm;
    const std::span<const Place> places = PlacesOf(*test);
    return CopyWith(*algorithm, [&](const XMLElement& child) -> std::unique_ptr<XMLElement> {
        if (child.GetName() != Element::kStructuredTable) return nullptr;
        if (NameOf(child) == TableName::kCondition) return RenumberCondition(child, *test, fields);
        return RenumberTable(child, places, fields);
    });
}
