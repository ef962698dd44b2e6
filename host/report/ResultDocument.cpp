#include "host/report/ResultDocument.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <pugixml.hpp>
#include <set>

#include "host/InputError.h"
#include "runtime/common/DecimalNumber.h"
#include "runtime/common/XmlNodes.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr std::string_view kRow = "Attribute";
constexpr std::string_view kTable = "StructuredTable";
constexpr std::string_view kSimpleTable = "SimpleTable";

/// The element at an index written as text; null if there is none.
template <typename Element>
const Element* ElementAt(const std::vector<Element>& elements, std::string_view index) {
    double number = 0;
    if (!ParseDecimal(index, number) || number < 0 || number >= static_cast<double>(elements.size())) return nullptr;
    return &elements[static_cast<std::size_t>(number)];
}

ResultTable ReadTable(const pugi::xml_node& node) {
    ResultTable table;
    table.name = node.attribute("name").value();
    table.isSimple = node.name() == kSimpleTable;
    if (table.isSimple) {
        table.lineNames = SplitList(node.child("RowNames").text().get());
        table.columnNames = SplitList(node.child("ColumnNames").text().get());
        for (const pugi::xml_node& line : node.children("Row")) table.lines.emplace_back(line.text().get());
        return table;
    }
    for (const pugi::xml_node& child : node.children()) {
        if (child.name() == kRow) {
            table.rows.emplace_back(child.attribute("name").value(), child.attribute("value").value());
        } else {
            table.tables.push_back(ReadTable(child));
        }
    }
    return table;
}

bool IsPosition(std::string_view rowName) {
    return rowName.size() >= 2 && rowName.front() == '%' &&
           rowName.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

ResultMessage ReadMessage(const pugi::xml_node& node) {
    ResultMessage message;
    for (const auto& [name, value] : ReadTable(node).rows) {
        if (name == "code") {
            message.code = std::atol(value.c_str());
        } else if (name == "type") {
            message.kind = value;
        } else if (IsPosition(name)) {
            message.parameters.push_back(value);
        } else if (name != "paramNum") {
            message.named.emplace_back(name, value);
        }
    }
    return message;
}

void ReadCondition(const pugi::xml_node& node, TestResult& test) {
    for (const auto& [name, value] : ReadTable(node).rows) {
        if (name == "ConditionKey") {
            test.conditionKey = value;
        } else if (name == "OrdinalTreatedAsCont") {
            test.ordinalAsNumbers = SplitList(value);
        } else if (IsPosition(name)) {
            test.parameters.push_back(value);
        } else {
            test.content.rows.emplace_back(name, value);
        }
    }
}

TestResult ReadTest(const pugi::xml_node& node) {
    TestResult test;
    test.name = node.attribute("name").value();
    test.type = node.attribute("type").value();
    test.classification = node.attribute("classification").value();
    test.decision = node.attribute("decision").value();
    test.arithmetic = node.attribute("arithmetic").value();
    test.content.name = test.name;
    for (const pugi::xml_node& child : node.children()) {
        const std::string_view name = child.attribute("name").value();
        if (name == "Condition") {
            ReadCondition(child, test);
        } else if (name == "WarningMessages") {
            for (const pugi::xml_node& message : child.children(kTable.data())) {
                test.messages.push_back(ReadMessage(message));
            }
        } else {
            test.content.tables.push_back(ReadTable(child));
        }
    }
    return test;
}

ResultField ReadField(const pugi::xml_node& node) {
    ResultField field{node.attribute("name").value(),
                      node.attribute("displayName").value(),
                      node.attribute("optype").value(),
                      node.attribute("dataType").value(),
                      {}};
    for (const pugi::xml_node& value : node.children("Value")) {
        field.categories.push_back({value.attribute("value").value(), value.attribute("displayValue").value()});
    }
    return field;
}

void ReadFieldInfos(const pugi::xml_node& infos, ResultDocument& result) {
    for (const pugi::xml_node& info : infos.children("FieldInfo")) {
        for (const pugi::xml_node& child : info.children(kTable.data())) {
            ResultTable table = ReadTable(child);
            table.rows.emplace(table.rows.begin(), "varIndex", info.attribute("varIndex").value());
            result.descriptives.push_back(std::move(table));
        }
    }
}

/// The intervals of a proportion name their field by its place among the fields as the engine had them, where each
/// ordinal field that a test took as numbers is followed by its copy. All other tests name the fields of the document.
void MendIntervalFields(ResultDocument& result) {
    std::set<std::string> copied;
    for (const TestResult& test : result.tests)
        copied.insert(test.ordinalAsNumbers.begin(), test.ordinalAsNumbers.end());
    if (copied.empty()) return;
    std::vector<std::string> indexAsExecuted;
    for (std::size_t field = 0; field < result.fields.size(); ++field) {
        const std::string index = std::to_string(field);
        indexAsExecuted.insert(indexAsExecuted.end(), copied.contains(index) ? 2 : 1, index);
    }
    for (TestResult& test : result.tests) {
        if (test.name != Tests::kProportionIntervals.resultName || test.parameters.empty()) continue;
        const std::string* const index = ElementAt(indexAsExecuted, test.parameters.front());
        if (index != nullptr) test.parameters.front() = *index;
    }
}

/// Finds the first element that nests deeper than elements may: tables in tables are read by recursion.
class DepthCheck : public pugi::xml_tree_walker {
 public:
    static constexpr int kDeepestNesting = 64;

    bool for_each(pugi::xml_node& node) override {
        if (depth() < kDeepestNesting) return true;
        tooDeep = node;
        return false;
    }

    pugi::xml_node tooDeep;
};

void RefuseDeepNesting(pugi::xml_document& xml, const std::string& name) {
    DepthCheck check;
    if (xml.traverse(check)) return;
    throw InputError(name + ": elements nest deeper than " + std::to_string(DepthCheck::kDeepestNesting) + " at byte " +
                     std::to_string(check.tooDeep.offset_debug()) + "; expected a result document");
}

}  // namespace

const std::string* ResultTable::Find(std::string_view rowName) const {
    const auto found = std::ranges::find(rows, rowName, [](const auto& row) { return std::string_view(row.first); });
    return found == rows.end() ? nullptr : &found->second;
}

std::string ResultTable::Value(std::string_view rowName) const {
    const std::string* const value = Find(rowName);
    return value == nullptr ? std::string() : *value;
}

const ResultTable* ResultTable::Table(std::string_view tableName) const {
    const auto found =
        std::ranges::find(tables, tableName, [](const auto& table) { return std::string_view(table.name); });
    return found == tables.end() ? nullptr : &*found;
}

bool TestResult::HasError() const {
    return std::ranges::any_of(messages, [](const ResultMessage& message) { return message.kind == "error"; });
}

const std::string* ResultField::CategoryAt(std::string_view index) const {
    const ResultCategory* const category = ElementAt(categories, index);
    return category == nullptr ? nullptr : &category->Shown();
}

const ResultField* ResultDocument::FieldAt(std::string_view index) const {
    return ElementAt(fields, index);
}

std::string_view NameOf(ArithmeticMode mode) {
    switch (mode) {
        case ArithmeticMode::kAsDefined:
            return "as-defined";
        case ArithmeticMode::kExtended:
            return "extended";
        case ArithmeticMode::kUnknown:
            break;
    }
    return "";
}

ResultDocument ReadResult(std::string document, const std::string& name) {
    pugi::xml_document xml;
    const pugi::xml_parse_result parsed = xml.load_buffer_inplace(document.data(), document.size());
    if (!XmlNodes::IsWellFormed(parsed)) {
        throw InputError(name + ": not well-formed XML at byte " + std::to_string(parsed.offset) + " (" +
                         parsed.description() + "); expected a result document");
    }
    RefuseDeepNesting(xml, name);
    const pugi::xml_node output = xml.child("Tabulon").child("Extension").child("TARNOutput");
    const pugi::xml_node tests = output.child("NonParametricTests");
    if (!tests) {
        throw InputError(name + ": no \"TARNOutput\" with \"NonParametricTests\" in it; expected a result document");
    }
    ResultDocument result;
    const pugi::xml_node application = output.child("Header").child("Application");
    result.application = application.attribute("name").value();
    result.applicationVersion = application.attribute("version").value();
    result.sigLevel = tests.attribute("sigLevel").value();
    result.confidenceLevel = tests.attribute("confidenceLevel").value();
    result.missingTreatment = tests.attribute("missingTreatment").value();
    const pugi::xml_node counts =
        xml.child("Tabulon").child("DescriptiveModel").child("DescriptiveSummary").child("Counts");
    for (const pugi::xml_attribute& count : counts.attributes()) {
        result.counts.emplace_back(count.name(), count.value());
    }
    for (const pugi::xml_node& field : output.child("DataDictionary").children("DataField")) {
        result.fields.push_back(ReadField(field));
    }
    for (const pugi::xml_node& test : tests.children("Algorithm")) result.tests.push_back(ReadTest(test));
    const auto isOther = [](const TestResult& test) { return !test.arithmetic.empty(); };
    if (std::ranges::any_of(result.tests, isOther)) result.arithmetic = ArithmeticMode::kExtended;
    ReadFieldInfos(output.child("FieldInfos"), result);
    MendIntervalFields(result);
    return result;
}

std::vector<std::string> SplitList(std::string_view joined) {
    std::vector<std::string> parts;
    ForEachInList(joined, [&](std::string_view part) { parts.emplace_back(part); });
    return parts;
}

std::string CategoryNames(const std::string& indices, const ResultField* field) {
    std::string name;
    for (const std::string& index : SplitList(indices)) {
        const std::string* const shown = field == nullptr ? nullptr : field->CategoryAt(index);
        name += (name.empty() ? "" : ", ") + (shown ? *shown : index);
    }
    return name;
}

std::string ShortNumber(const std::string& text) {
    double number = 0;
    if (!ReadNumber(text, number)) return text;
    constexpr double kShownWhole = 1e6;
    constexpr double kLargestShownWhole = 1e15;
    const bool isLarge = std::fabs(number) >= kShownWhole && std::fabs(number) < kLargestShownWhole;
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, isLarge ? "%.0f" : "%.6g", number);
    return buffer;
}

bool ReadNumber(std::string_view text, double& number) {
    if (text == "nan") {
        number = std::numeric_limits<double>::quiet_NaN();
    } else if (text == "inf" || text == "-inf") {
        number = text == "inf" ? HUGE_VAL : -HUGE_VAL;
    } else {
        return ParseDecimal(text, number);
    }
    return true;
}

}  // namespace tarn
