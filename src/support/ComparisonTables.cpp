#include "support/ComparisonTables.h"

#include <initializer_list>
#include <utility>

namespace {

std::string JoinTexts(std::initializer_list<std::string> texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (&text == texts.begin() ? "" : ";") + text;
    return joined;
}

void AddSamples(StructuredTable& table, const char* name, Labels labels, const ComparedSamples& samples) {
    const bool areRowNames = labels == Labels::kOnRows;
    auto info = MakeSimpleTable(name, areRowNames ? Literal::kIndexOrderAndValue : "",
                                areRowNames ? "" : Literal::kIndexOrderAndValue);
    info->AddChild(MakeRowElement(samples.indices));
    info->AddChild(MakeRowElement(samples.orderValues));
    table.Add(std::move(info));
}

/// The five values of a pair or of a subset.
template <typename Result>
std::string ValuesOf(const Result& result, double statistic, bool isMissing, bool hasErrors) {
    const auto text = [&](double value) { return isMissing ? Literal::kMissingParameter : DoubleToString(value); };
    const auto errorText = [&](double value) { return hasErrors ? text(value) : ""; };
    return JoinTexts({text(statistic), errorText(result.standardError), errorText(result.standardTestStatistic),
                      text(result.sig), text(result.adjSig)});
}

StructuredTable AddComparison(ResultElement& element, const char* name, const ComparedSamples& samples) {
    StructuredTable table = element.AddTable(name);
    if (samples.groupField) table.Row(RowName::kFieldIndex, *samples.groupField);
    return table;
}

}  // namespace

ComparedSamples FieldsInOrder(const std::vector<int>& fields, const std::vector<OrderedSample>& samples) {
    std::vector<std::int32_t> indices;
    std::vector<double> orderValues;
    for (const OrderedSample& sample : samples) {
        indices.push_back(fields[static_cast<std::size_t>(sample.sample)]);
        orderValues.push_back(sample.orderValue);
    }
    return {std::nullopt, JoinValues(indices), JoinValues(orderValues)};
}

void AddPairwiseResult(ResultElement& element, const ComparisonRules& rules, const ComparedSamples& samples,
                       const std::vector<PairRecord>& pairs) {
    StructuredTable table = AddComparison(element, TableName::kPairwiseResult, samples);
    AddSamples(table, TableName::kPairwiseInfo, rules.pairwiseLabels, samples);
    auto content = MakeSimpleTable(TableName::kContent, "", Literal::kPairColumns);
    for (const PairRecord& pair : pairs) {
        const bool hasErrors = rules.errors != Errors::kNone;
        content->AddChild(MakeRowElement(JoinTexts({IntToString(pair.sample1), IntToString(pair.sample2),
                                                    ValuesOf(pair, pair.testStatistic, pair.untestable, hasErrors)})));
    }
    table.Add(std::move(content));
}

std::vector<TestMessage> AddStepwiseResult(ResultElement& element, const StepwiseComparison& search,
                                           const ComparedSamples& samples) {
    const ComparisonRules& rules = search.Rules();
    std::vector<TestMessage> warnings;
    StructuredTable table = AddComparison(element, TableName::kStepwiseResult, samples);
    AddSamples(table, TableName::kStepwiseInfo, rules.stepwiseLabels, samples);
    auto content = MakeSimpleTable(TableName::kContent, "", Literal::kSubsetColumns);
    for (const std::size_t index : search.DisplayOrder()) {
        const SubsetRecord& subset = search.FinalSubsets()[index];
        const bool isAlone = subset.HasOneSample();
        if (isAlone && rules.leftOver == LeftOver::kIsTidied) warnings.push_back(LoneSampleWarning(subset));
        const bool hasErrors = rules.errors == Errors::kOfBoth;
        content->AddChild(
            MakeRowElement(JoinTexts({SizeToString(subset.firstPosition), SizeToString(subset.lastPosition),
                                      ValuesOf(subset, subset.statistic, isAlone || subset.untestable, hasErrors)}) +
                           (isAlone ? rules.endOfLoneRow : "")));
    }
    table.Add(std::move(content));
    return warnings;
}
