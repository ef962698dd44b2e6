// Kruskal-Wallis one-way analysis of variance by ranks.
//
// Question    Has a continuous field the same distribution in all groups of a field?
// Data        Records that miss neither field, in ascending order of the test field; groups without weight take no
//             part. R and n are the rank sum and the weighted size of a group, N the sum of the sizes.
// Statistic   H = (12 / (N (N + 1)) * sum of R^2 / n - 3 (N + 1)) / (1 - sum of (t^3 - t) / (N^3 - N)) over the runs of
//             t equal values; chi-square with one degree of freedom less than there are groups.
// Comparisons Pairs by the difference of their mean ranks; subsets by H of their own ranks, walked down from the
//             groups in the order of their mean ranks.
// Source      Kruskal and Wallis (1952), Journal of the American Statistical Association 47, 583-621; Dunn (1964),
//             Technometrics 6, 241-252; Campbell and Skillings (1985), Journal of the American Statistical Association
//             80, 998-1003.
// Degenerate  All values equal: H = 0. Fewer than two groups with weight: an error.

#include "independent/TARNKruskalWOneWay.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "contract/TARNPlanBuilder.h"
#include "independent/TwoGroups.h"
#include "platform/common/Truncation.h"
#include "support/CaseWeight.h"
#include "support/Int32.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

namespace {

constexpr const char* kTestName = "IKruskalWallis";
constexpr const char* kConditionKey = "DefaultAllDistinctValuesUsed_I_KruskalWallis_2";
/// Of the vocabulary; groups can't be given, so that nothing writes it.
[[maybe_unused]] constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_KruskalWallis_2";
constexpr const char* kNumberOfCategories = "numberOfCategories";

constexpr long kComparisonMissing = 222101;
constexpr long kFieldUnknown = 222103;
constexpr long kTestNotContinuous = 222109;
constexpr long kGroupNotCategorical = 222110;
constexpr long kStatisticComputed = 222111;
constexpr long kTooFewGroupsWithCases = 222112;
constexpr long kTooFewCategories = 222115;
constexpr long kTooFewGroupsToStep = 222116;
constexpr long kNotSignificantToStep = 222117;
constexpr long kTooFewGroupsToPair = 222118;
constexpr long kNotSignificantToPair = 222119;

/// Ranking, box plots, their outliers.
constexpr int kPasses = 3;
constexpr std::size_t kSmallestComparison = 3;

/// A number of the element that may have no value.
std::string TextOrEmpty(double value) {
    return QKMV::IsMissing(value) ? std::string() : DoubleToString(value);
}

}  // namespace

// ---- Plan ----

namespace {

/// Notes a failure that has a message of its own.
void FailAlone(TARNPlanBuilder& builder, long code) {
    builder.Fail(code);
    builder.EndMessage();
}

/// The field under a key of the entry, -1 if it is not found.
int FieldUnder(TARNPlanBuilder& builder, const QKVarList& varList, const char* nameKey, const char* indexKey) {
    std::string name;
    const int field = builder.Read(nameKey, name) ? varList.FindVariable(name) : -1;
    if (field >= 0) {
        builder.TestSettings().AddSetting(indexKey, field);
    } else {
        FailAlone(builder, kFieldUnknown);
    }
    return field;
}

}  // namespace

/// Each failure of the plan is told, not one of them, and a field that passes its check is asked for whatever else
/// fails.
void PlanKruskalWOneWay(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const QKVarList& varList = plan.GetVarList();
    const int test = FieldUnder(builder, varList, SettingKey::kVariableName, SettingKey::kVariableIndex);
    if (test >= 0 && varList.GetVarAt(test)->GetKind() != FieldKind::kContinuous) {
        FailAlone(builder, kTestNotContinuous);
    } else if (test >= 0) {
        plan.RequestSorted(test);
    }
    const int group = FieldUnder(builder, varList, SettingKey::kGroupVariableName, SettingKey::kGroupVariableIndex);
    const bool hasGroups = group >= 0 && FieldKind::IsCategorical(varList.GetVarAt(group)->GetKind());
    if (hasGroups) {
        plan.Request(group, Statistic::kFrequencies);
    } else if (group >= 0) {
        FailAlone(builder, kGroupNotCategorical);
    }
    builder.RequestOriginFrequencies(Origins::kOne);
    builder.ReadComparison(ComparisonRulesOf::kKruskalWOneWay, kComparisonMissing);
    if (group >= 0) {
        // A field of another kind has no categories, and so fails here, too.
        const int categoryCount = varList.GetVarAt(group)->GetCategoryCount();
        if (categoryCount < 2) {
            FailAlone(builder, kTooFewCategories);
        } else {
            builder.TestSettings().AddSetting(kNumberOfCategories, categoryCount);
        }
    }
    builder.AddToSortedWorker<TARNKruskalWOneWay>(test);
}

// ---- Passes ----

QKStatus TARNKruskalWOneWay::BeginPass() {
    if (passCounter == 0) {
        BeginRanking();
    } else if (passCounter == 1 && !status.IsError()) {
        BeginBoxes();
    } else if (passCounter == 2 && !status.IsError() && stepwiseActive) {
        PlanStepping();
    }
    return status;
}

/// A test that its plan builder failed still reads its fields, so that its condition can show them.
void TARNKruskalWOneWay::BeginRanking() {
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    if (status.IsError()) return;
    passesRemaining = kPasses;
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    int categoryCount = 0;
    settings->GetSettingValByName(kNumberOfCategories, categoryCount);
    const ComparisonRequest wanted = ComparisonRequest::OfTest(*settings, steps.Rules().wanted);

    groupCounts.assign(static_cast<std::size_t>(categoryCount), 0);
    pairwiseActive = wanted.pairwise;
    stepwiseActive = wanted.stepwise;
    if (stepwiseActive) passesRemaining += categoryCount - 2;
}

void TARNKruskalWOneWay::BeginBoxes() {
    try {
        for (const std::int32_t count : groupCounts) {
            if (stepwiseActive) groupUnivariates.emplace_back(variableIndex, weightIndex);
            groupBoxes.emplace_back(count, variableIndex, weightIndex, GroupBoxPlot::kNoCaseId);
        }
    } catch (const std::exception&) {
        AddStatusMessage(QKStatus(StatusCode::kAllocationFailed), MessageKind::kError);
    }
}

/// The groups in ascending order of their mean ranks, those of equal ones in ascending order of their medians.
void TARNKruskalWOneWay::PlanStepping() {
    sortedGroups = mainGroups;
    const auto key = [&](std::size_t group) { return std::pair(MeanRank(group), groupUnivariates[group].GetMedian()); };
    std::stable_sort(sortedGroups.begin(), sortedGroups.end(),
                     [&](std::size_t a, std::size_t b) { return key(a) < key(b); });
    positions.assign(groupCounts.size(), sortedGroups.size());
    for (std::size_t position = 0; position < sortedGroups.size(); ++position) {
        positions[sortedGroups[position]] = position;
    }
    steps.Begin(sortedGroups.size(), groupCounts.size());
    stepRanks.resize(sortedGroups.size());
}

void TARNKruskalWOneWay::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(groupVariableIndex);
    fieldIndices.push_back(variableIndex);
}

QKStatus TARNKruskalWOneWay::ProcessRecord(Record& record) {
    const double value = record[static_cast<std::size_t>(variableIndex)];
    const std::int32_t weight = CaseWeight(record, weightIndex);
    const double category = record[static_cast<std::size_t>(groupVariableIndex)];
    const auto group = static_cast<std::size_t>(TruncateToInt32(category));
    if (group >= groupCounts.size()) return status;
    if (passCounter == 0) {
        groupCounts[group] = Add32(groupCounts[group], weight);
        return mainRank.AddValue(value, weight, static_cast<double>(group));
    }
    if (passCounter == 1) {
        groupBoxes[group].AddToQuantiles(record);
        if (stepwiseActive) groupUnivariates[group].QuantileStep(value, weight, groupCounts[group]);
        return status;
    }
    if (passCounter == 2) groupBoxes[group].AddToOutliers(record);
    if (!stepwiseActive) return status;
    const std::size_t position = positions[group];
    for (const SubsetRecord& subset : steps.Candidates()) {
        if (position < subset.firstPosition || position > subset.lastPosition) continue;
        const QKStatus added = stepRanks[subset.firstPosition].AddValue(value, weight, static_cast<double>(group));
        if (added.IsError()) return added;
    }
    return status;
}

QKStatus TARNKruskalWOneWay::EndPass() {
    if (passCounter == 0) {
        EndRanking();
        --passesRemaining;
        if (!status.IsError()) ++passCounter;
        return status;
    }
    if (passCounter == 1) {
        for (GroupBoxPlot& box : groupBoxes) box.Finish();
        for (QKContUnivariateVariable& univariate : groupUnivariates) univariate.CloseQuantiles();
    } else if (stepwiseActive) {
        EndStep();
    }
    --passesRemaining;
    ++passCounter;
    return status;
}

bool TARNKruskalWOneWay::NeedsAnotherPass() {
    return !status.IsError() && (passCounter < kPasses || stepwiseActive || pairwiseActive);
}

void TARNKruskalWOneWay::EndRanking() {
    const auto withCases = std::count_if(groupCounts.begin(), groupCounts.end(), [](auto count) { return count > 0; });
    if (withCases < 2) {
        AddStatusMessage(QKStatus(kTooFewGroupsWithCases), MessageKind::kError);
        return;
    }
    for (std::size_t group = 0; group < groupCounts.size(); ++group) {
        if (groupCounts[group] != 0) mainGroups.push_back(group);
    }
    mainResult = ComputeH(mainGroups, mainRank);
    for (std::size_t group = 0; group < groupCounts.size(); ++group) {
        rankSums.push_back(mainRank.GroupRanks(static_cast<double>(group)).sumOfRanks);
    }
    tieSum = mainRank.TieCorrectionSum();
    mainRank = TARNRank();  // it holds every rank, and tests live as long as the document

    const bool isSignificant = mainResult.sig < sigLevel;
    if (!isSignificant || mainGroups.size() < kSmallestComparison) {
        const long pairCode = isSignificant ? kTooFewGroupsToPair : kNotSignificantToPair;
        const long stepCode = isSignificant ? kTooFewGroupsToStep : kNotSignificantToStep;
        if (pairwiseActive) AddStatusMessage(QKStatus(pairCode), MessageKind::kWarning);
        if (stepwiseActive) AddStatusMessage(QKStatus(stepCode), MessageKind::kWarning);
        pairwiseActive = stepwiseActive = false;
        passesRemaining = kPasses;
    }
    if (pairwiseActive) ComparePairs();
}

/// The statistic of some groups over their own ranks. Its remark goes out each time, whether there are ties or not.
TARNKruskalWOneWay::Result TARNKruskalWOneWay::ComputeH(const std::vector<std::size_t>& groups, TARNRank& rank) {
    rank.CloseTieRun();
    Result result;
    double sum = 0;
    for (std::size_t group = groupCounts.size(); group-- > 0;) {
        if (std::find(groups.begin(), groups.end(), group) == groups.end()) continue;
        const double sumOfRanks = rank.GroupRanks(static_cast<double>(group)).sumOfRanks;
        result.totalN = Add32(result.totalN, groupCounts[group]);
        sum += sumOfRanks * sumOfRanks / groupCounts[group];
    }
    const double n = result.totalN;
    const double next = Add32(result.totalN, 1);
    const double expected = Add32(Multiply32(3, result.totalN), 3);
    const double h = 12 * sum / (next * n) - expected;
    const double correction = 1 - rank.TieCorrectionSum() / (n * n * n - n);
    result.statistic = correction != 0 ? h / correction : 0.0;
    AddStatusMessage(QKStatus(kStatisticComputed), MessageKind::kHelpMessage);
    result.degreesOfFreedom = static_cast<double>(groups.size()) - 1;
    result.sig = ChiSquareSig(result.statistic, result.degreesOfFreedom);
    return result;
}

void TARNKruskalWOneWay::ComparePairs() {
    for (std::size_t i = 0; i < mainGroups.size(); ++i) {
        for (std::size_t j = i + 1; j < mainGroups.size(); ++j) {
            pairSubsets.push_back(Compare(mainGroups[i], mainGroups[j]));
        }
    }
    pairwiseActive = false;
}

/// Categories without cases count among the samples that the significance is adjusted for.
PairRecord TARNKruskalWOneWay::Compare(std::size_t a, std::size_t b) const {
    const double n = mainResult.totalN;
    const double standardError =
        std::sqrt((1.0 / groupCounts[b] + 1.0 / groupCounts[a]) * ((n + 1) * n / 12 - tieSum / (12 * (n - 1))));
    return MakeNormalPair(static_cast<std::int32_t>(a), static_cast<std::int32_t>(b), MeanRank(a) - MeanRank(b),
                          standardError, groupCounts.size());
}

void TARNKruskalWOneWay::EndStep() {
    const auto compute = [&](SubsetRecord& subset) {
        const std::vector<std::size_t> groups(sortedGroups.begin() + subset.firstPosition,
                                              sortedGroups.begin() + subset.lastPosition + 1);
        const Result result = ComputeH(groups, stepRanks[subset.firstPosition]);
        subset.statistic = result.statistic;
        subset.sig = result.sig;
        return StepwiseComparison::Outcome::kComputed;
    };
    AddMessages(steps.EndPass(sigLevel, compute));
    for (TARNRank& rank : stepRanks) rank.Reset();
    if (steps.IsDone()) stepwiseActive = false;
}

// ---- Element ----

QKXML::XMLElement* TARNKruskalWOneWay::MakeResultElement() {
    ResultElement element(kTestName, ResultType::kHypothesisTest, TestFamily::kIndependentSamples,
                          Decide(status, sigLevel, mainResult.sig));
    element.AddCondition(kConditionKey, {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, mainResult.totalN);
    statistics.Row(RowName::kTestStatistic, TextOrEmpty(mainResult.statistic));
    statistics.Row(RowName::kDegreeOfFreedom, TextOrEmpty(mainResult.degreesOfFreedom));
    statistics.Row(RowName::kAsymptoticSig2Tailed, TextOrEmpty(mainResult.sig));
    AddBoxes(element);
    if (!pairSubsets.empty()) AddPairwiseResult(element, steps.Rules(), PairedSamples(), pairSubsets);
    // The search has told of the groups that stand alone; writing them adds no word to that.
    if (steps.IsDone()) static_cast<void>(AddStepwiseResult(element, steps, Samples(sortedGroups)));
    return element.Release();
}

void TARNKruskalWOneWay::AddBoxes(ResultElement& element) const {
    StructuredTable boxes = element.AddTable(TableName::kBoxPlotInfo);
    boxes.Row(RowName::kGroupFieldIndex, groupVariableIndex);
    boxes.Row(RowName::kGroupCount, static_cast<std::int32_t>(groupCounts.size()));
    for (std::size_t group = 0; group < groupBoxes.size(); ++group) {
        if (groupCounts[group] == 0) continue;
        StructuredTable table = boxes.Table(GroupTableName(group));
        table.Row(RowName::kGroupIndex, static_cast<std::int32_t>(group));
        table.Row(RowName::kMeanOfRank, MeanRank(group));
        groupBoxes[group].AddTables(table);
    }
}

/// Groups by their categories, with their mean ranks.
ComparedSamples TARNKruskalWOneWay::Samples(const std::vector<std::size_t>& groups) const {
    std::vector<double> meanRanks;
    for (const std::size_t group : groups) meanRanks.push_back(MeanRank(group));
    return {groupVariableIndex, JoinValues(std::vector<double>(groups.begin(), groups.end())), JoinValues(meanRanks)};
}

/// The same of the groups whose pairs are compared; one of negative weight has no mean rank here.
ComparedSamples TARNKruskalWOneWay::PairedSamples() const {
    ComparedSamples samples = Samples(mainGroups);
    samples.orderValues.clear();
    for (const std::size_t group : mainGroups) {
        if (group != mainGroups.front()) samples.orderValues += ";";
        if (groupCounts[group] > 0) samples.orderValues += DoubleToString(MeanRank(group));
    }
    return samples;
}
