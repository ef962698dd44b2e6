#include "component/FieldReferences.h"

#include <algorithm>
#include <span>
#include <string>
#include <vector>

#include "vocabulary/ResultVocabulary.h"

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

constexpr Place kMosesPlaces[] = {kBoxPlots};
constexpr Place kGroupsPlaces[] = {kBoxPlots, kPairwiseField, kStepwiseField};
constexpr Place kPairPlaces[] = {kComparedRows, kComparedColumns};
constexpr Place kRelatedPlaces[] = {kSamples, kPairwiseSamples, kStepwiseSamples};
constexpr Place kCochranPlaces[] = {kSamples, kPairwiseSamples, kStepwiseSamples, kClassesOfSamples};

constexpr const char* kFirstParameter[] = {"%0"};
constexpr const char* kTwoParameters[] = {"%0", "%1"};

struct Algorithm {
    const char* name;
    std::span<const char* const> conditionRows;
    std::span<const Place> places;
};

// The proportion intervals are not here: documents show their indices as the execution counts the fields.
const Algorithm kAlgorithms[] = {
    {"OKolmogorovSmirnov", kFirstParameter, {}},
    {"OWilcoxonSignedRanks", kFirstParameter, {}},
    {"OBinomial", kFirstParameter, {}},
    {"OChiSquare", kFirstParameter, {}},
    {"ORuns", kFirstParameter, {}},
    {"IMannWhitneyU", kTwoParameters, {}},
    {"IKolmogorovSmirnov", kTwoParameters, {}},
    {"IWaldWolfowitzRuns", kTwoParameters, {}},
    {"IMoses", kTwoParameters, kMosesPlaces},
    {"IHodgesLehmannEstimateGroups", kTwoParameters, {}},
    {"IKruskalWallis", kTwoParameters, kGroupsPlaces},
    {"IJonckheereTerpstra", kTwoParameters, kGroupsPlaces},
    {"IMedian", kTwoParameters, kGroupsPlaces},
    {"RSign", kTwoParameters, kPairPlaces},
    {"RWilcoxonSignedRanks", kTwoParameters, kPairPlaces},
    {"RHodgesLehmannEstimatePairs", kTwoParameters, kPairPlaces},
    {"RMcNemar", kTwoParameters, kPairPlaces},
    {"RMarginalHomogeneity", kTwoParameters, kPairPlaces},
    {"RFriedmansTwoWayByRanks", kFirstParameter, kRelatedPlaces},
    {"RKendallsCoefficient", kFirstParameter, kRelatedPlaces},
    {"RCochransQ", kFirstParameter, kCochranPlaces},
};

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

void RenumberCondition(XMLElement condition, std::span<const char* const> rows, const PublicFields& fields) {
    std::string copies;
    for (const char* row : rows) {
        const std::string more = RenumberRow(condition, row, fields);
        if (!more.empty()) copies += (copies.empty() ? "" : ";") + more;
    }
    if (copies.empty()) return;
    XMLElement ordinal = condition.addChild(Element::kAttribute);
    ordinal.addAttribute(ElementAttribute::kName, kOrdinalTreatedAsCont);
    ordinal.addAttribute(ElementAttribute::kValue, copies);
}

}  // namespace

void RenumberReferences(XMLElement algorithm, const PublicFields& fields) {
    const std::string name = algorithm.getAttribute(ElementAttribute::kName);
    const auto* known = std::find_if(std::begin(kAlgorithms), std::end(kAlgorithms),
                                     [&](const Algorithm& candidate) { return name == candidate.name; });
    if (known == std::end(kAlgorithms)) return;
    for (const XMLElement& condition : ChildrenNamed(algorithm, Element::kStructuredTable, TableName::kCondition)) {
        RenumberCondition(condition, known->conditionRows, fields);
    }
    for (const Place& place : known->places) RenumberPlace(algorithm, place, fields);
}
