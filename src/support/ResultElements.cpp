#include "support/ResultElements.h"

#include <algorithm>
#include <utility>

#include "platform/common/QKMV.h"

using QKXML::XMLElement;
using QKXML::XMLString;

namespace {

constexpr double kUnknownCategory = -1.0;

const char* TextOf(ResultType type) {
    return type == ResultType::kHypothesisTest ? "hypothesis_test" : "confidence_interval";
}

const char* TextOf(Decision decision) {
    switch (decision) {
        case Decision::kUnknown:
            return "unknown";
        case Decision::kReject:
            return "reject";
        case Decision::kRetain:
            return "retain";
    }
    return "";
}

const char* TextOf(MessageKind kind) {
    switch (kind) {
        case MessageKind::kError:
            return "error";
        case MessageKind::kWarning:
            return "warning";
        case MessageKind::kHelpMessage:
            return "helpMessage";
    }
    return "error";
}

std::string ParameterName(std::size_t position) {
    return "%" + SizeToString(position);
}

std::unique_ptr<XMLElement> MakeTextElement(std::string_view name, std::string_view text) {
    auto element = XMLElement::Create(name);
    element->AddChild(XMLString::Create(text));
    return element;
}

}  // namespace

Decision Decide(const QKStatus& status, double sigLevel, double decidingSig) {
    if (status.IsError()) return Decision::kUnknown;
    return sigLevel > decidingSig ? Decision::kReject : Decision::kRetain;
}

std::unique_ptr<XMLElement> MakeRowElement(std::string_view text) {
    return MakeTextElement(Element::kRow, text);
}

std::unique_ptr<XMLElement> MakeSimpleTable(std::string_view name, std::string_view rowNames,
                                            std::string_view columnNames) {
    auto table = XMLElement::Create(Element::kSimpleTable);
    table->AddAttribute(ElementAttribute::kName, name);
    table->AddChild(MakeTextElement(Element::kRowNames, rowNames));
    table->AddChild(MakeTextElement(Element::kColumnNames, columnNames));
    return table;
}

std::unique_ptr<XMLElement> MakeIntervalTable(const std::vector<HistogramBin>& intervals, std::string& countText,
                                              std::string& valueText) {
    for (const HistogramBin& interval : intervals) {
        if (interval.count <= 0) continue;
        countText += ';';
        AppendInt(countText, interval.count);
        valueText += ';';
        AppendDouble(valueText, interval.mean);
    }
    for (std::string* text : {&countText, &valueText}) {
        if (text->starts_with(';')) text->erase(0, 1);
    }
    return MakeIntervalTable(countText, valueText);
}

std::unique_ptr<XMLElement> MakeIntervalTable(std::string_view countText, std::string_view valueText) {
    auto table = MakeSimpleTable(TableName::kInterval, Literal::kCountAndValue, "");
    table->AddChild(MakeRowElement(countText));
    table->AddChild(MakeRowElement(valueText));
    return table;
}

void NoteDeparture(const Departure& departure, XMLElement& element) {
    std::string ways;
    if (departure.isWider) ways = ArithmeticWay::kExtended;
    if (departure.isTextbook) ways += (ways.empty() ? "" : " ") + std::string(ArithmeticWay::kTextbook);
    if (!ways.empty()) element.AddAttribute(ElementAttribute::kArithmetic, ways);
}

std::unique_ptr<XMLElement> MakeWarningElement(const std::vector<TestMessage>& messages) {
    auto element = XMLElement::Create(Element::kStructuredTable);
    element->AddAttribute(ElementAttribute::kName, TableName::kWarningMessages);
    StructuredTable warnings(*element);
    for (const TestMessage& message : messages) {
        StructuredTable table = warnings.Table(TableName::kMessage);
        table.Row(RowName::kCode, static_cast<std::int32_t>(message.status.GetErrorCode()));
        table.Row(RowName::kType, TextOf(message.kind));
        table.Row(RowName::kParamNum, SizeToString(message.params.size()));
        for (std::size_t i = 0; i < message.params.size(); ++i) table.Row(ParameterName(i), message.params[i]);
        for (const auto& [name, value] : message.namedParams) table.Row(name, value);
    }
    return element;
}

std::string FieldOrMissing(int fieldIndex) {
    return fieldIndex < 0 ? Literal::kMissingParameter : IntToString(fieldIndex);
}

std::string NumberOrMissing(double value) {
    return QKMV::IsMissing(value) ? Literal::kMissingParameter : DoubleToString(value);
}

StructuredTable::StructuredTable(XMLElement& parent, std::string_view name)
    : element_(&parent.AddChildElement(XMLElement::Create(Element::kStructuredTable))) {
    element_->AddAttribute(ElementAttribute::kName, name);
}

void StructuredTable::Row(std::string_view name, std::string_view value) {
    XMLElement& row = element_->AddChildElement(XMLElement::Create(Element::kAttribute));
    row.AddAttribute(ElementAttribute::kName, name);
    row.AddAttribute(ElementAttribute::kValue, value);
}

void StructuredTable::AddParameters(std::initializer_list<std::string> parameters) {
    std::size_t position = 0;
    for (const std::string& parameter : parameters) Row(ParameterName(position++), parameter);
}

void StructuredTable::AddUnknownCategories(std::string_view name, const std::vector<double>& categoryIndices,
                                           const std::vector<std::string>& givenTexts) {
    std::vector<std::string> unknown;
    for (std::size_t i = 0; i < std::min(categoryIndices.size(), givenTexts.size()); ++i) {
        if (categoryIndices[i] == kUnknownCategory) unknown.push_back(givenTexts[i]);
    }
    if (unknown.empty()) return;
    StructuredTable table = Table(name);
    for (std::size_t i = 0; i < unknown.size(); ++i) table.Row(SizeToString(i), unknown[i]);
}

ResultElement::ResultElement(std::string_view testName, ResultType type, TestFamily family, Decision decision)
    : element_(XMLElement::Create(Element::kAlgorithm)) {
    element_->AddAttribute(ElementAttribute::kName, testName);
    element_->AddAttribute(ElementAttribute::kType, TextOf(type));
    element_->AddAttribute(ElementAttribute::kClassification, FamilyNameOf(family));
    if (type == ResultType::kHypothesisTest) element_->AddAttribute(ElementAttribute::kDecision, TextOf(decision));
}

StructuredTable ResultElement::AddCondition(std::string_view conditionKey,
                                            std::initializer_list<std::string> parameters) {
    StructuredTable condition = AddTable(TableName::kCondition);
    condition.Row(RowName::kConditionKey, conditionKey);
    condition.AddParameters(parameters);
    return condition;
}

bool ResultElement::EndsWithMessages(const std::vector<TestMessage>& messages, const QKStatus& status) {
    if (messages.empty()) return false;
    element_->AddChild(MakeWarningElement(messages));
    return status.IsError();
}
