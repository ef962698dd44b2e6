// Jonckheere-Terpstra test for ordered alternatives.
//
// Question    Do the values of a continuous field rise, or fall, with the order of the groups?
// Data        Records that miss neither field, in ascending order of the test field; groups without weight take no
//             part.
// Statistic   J = the Mann-Whitney count of all pairs of groups, in their order: how often a value of the earlier
//             group lies below one of the later group, ties by half. Normal approximation with the variance under ties.
// Comparisons Pairs and homogeneous subsets by the same statistic, one-sided: the tail that the order of the hypotheses
//             names, whatever the overall test found.
// Source      Terpstra (1952), Indagationes Mathematicae 14, 327-333; Jonckheere (1954), Biometrika 41, 133-145;
//             Kendall and Gibbons (1990), Rank Correlation Methods.
// Degenerate  All values equal, or one group alone: z = 0, significance 1.

#include "independent/TARNJonckTer.h"

#include <utility>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
#include "support/CaseWeight.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "DefaultAllDistinctValuesUsed_I_JonckheereTerpstra_2";
/// Of the vocabulary, its blank included; groups can't be given, so that nothing writes it.
[[maybe_unused]] constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_JonckheereTerpstra_2 ";

constexpr const char* kOrderOfHypotheses = "orderOfHypotheses";
constexpr const char* kSmallestToLargest = "orderSmallestToLargest";

constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 222215_error,
                                         .groupNameMissing = 222216_error,
                                         .unknownField = 222203_error,
                                         .testNotContinuous = 222218_error,
                                         .groupNotCategorical = 222217_error};
constexpr SeveralGroupsRules kRules{.noUnivariateResults = 222206_error,
                                    .tooFewCategories = 222220_error,
                                    .tooFewGroups = {.pairwise = 222223_warning, .stepwise = 222221_warning},
                                    .notSignificant = {.pairwise = 222224_warning, .stepwise = 222222_warning},
                                    .passesOfPairs = 1,
                                    .passesOfStep = 1};
constexpr long kEmptyGroup = 222210_error;  // of a step a warning

PairRecord RecordOf(const JonckheereSubset& pair) {
    PairRecord record;
    record.sample1 = pair.members[0];
    record.sample2 = pair.members[1];
    record.testStatistic = pair.j;
    record.standardError = pair.standardError;
    record.standardTestStatistic = pair.z;
    record.sig = pair.sigDirected;
    record.adjSig = pair.adjustedSig;
    record.untestable = pair.degenerate;
    return record;
}

}  // namespace

void PlanJonckTer(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const GroupedFields fields = PlanSeveralGroups(builder, plan, kFieldCodes, ComparisonRulesOf::kJonckTer);
    std::string order = kSmallestToLargest;
    builder.Read(kOrderOfHypotheses, order);
    builder.TestSettings().AddSetting(kOrderOfHypotheses, order);
    if (builder.IsOK()) {
        plan.Request(fields.group, Statistic::kFrequencies);
        plan.RequestSorted(fields.test);
    }
    builder.AddToSortedWorker<TARNJonckTer>(fields.test);
}

// ---- Passes ----

TARNJonckTer::TARNJonckTer(std::unique_ptr<QKSettings> testSettings)
    : SeveralGroups(std::move(testSettings), kRules, ComparisonRulesOf::kJonckTer) {}

void TARNJonckTer::ReadOwnSettings() {
    orderOfHypotheses = kSmallestToLargest;
    settings->GetSettingValByName(kOrderOfHypotheses, orderOfHypotheses);
}

void TARNJonckTer::BeginOverall() {
    BeginBoxes();
    overall.positionOf.assign(static_cast<std::size_t>(categoryCount), JonckheereSubset::kNotInside);
    std::vector<double> sizes;
    for (const std::int32_t group : activeGroups) {
        overall.positionOf[static_cast<std::size_t>(group)] = static_cast<std::int32_t>(sizes.size());
        sizes.push_back(SizeOf(group));
    }
    if (!status.IsError()) overall.SetGroups(std::move(sizes));
}

void TARNJonckTer::BeginPairs() {
    for (std::size_t i = 0; i < activeGroups.size(); ++i) {
        for (std::size_t j = i + 1; j < activeGroups.size(); ++j) {
            JonckheereSubset& pair = pairSubsets.emplace_back();
            pair.members = {activeGroups[i], activeGroups[j]};
            pair.positionOf.assign(static_cast<std::size_t>(categoryCount), JonckheereSubset::kNotInside);
            pair.positionOf[static_cast<std::size_t>(activeGroups[i])] = 0;
            pair.positionOf[static_cast<std::size_t>(activeGroups[j])] = 1;
            pair.SetGroups({SizeOf(activeGroups[i]), SizeOf(activeGroups[j])});
        }
    }
}

/// The places of a subset are given by positions among the groups with cases, though its records look their place up by
/// category. Where a category is empty the two differ; documents depend on it.
void TARNJonckTer::BeginSteps() {
    steps.Begin(activeGroups.size(), static_cast<std::size_t>(categoryCount));
    for (const SubsetRecord& range : steps.Candidates()) {
        JonckheereSubset& subset = stepSubsets.emplace_back();
        subset.positionOf.assign(static_cast<std::size_t>(categoryCount), JonckheereSubset::kNotInside);
        std::vector<double> sizes;
        for (std::uint32_t position = range.firstPosition; position <= range.lastPosition; ++position) {
            subset.positionOf[position] = static_cast<std::int32_t>(sizes.size());
            sizes.push_back(SizeOf(activeGroups[position]));
        }
        subset.SetGroups(std::move(sizes));
    }
}

void TARNJonckTer::BeginNextStep() {
    for (const SubsetRecord& range : steps.Candidates()) {
        JonckheereSubset& subset = stepSubsets[range.firstPosition];
        subset.positionOf[range.lastPosition + 1] = JonckheereSubset::kNotInside;
        std::vector<double> sizes = subset.sizes;
        sizes.pop_back();
        subset.SetGroups(std::move(sizes));
    }
}

QKStatus TARNJonckTer::ProcessRecord(Record& record) {
    const double value = record[static_cast<std::size_t>(variableIndex)];
    const std::int32_t weight = CaseWeight(record, weightIndex);
    const std::int32_t group = CategoryOf(record);
    if (group < 0) return status;
    if (phase == Phase::kOverall && overallPass == kSizesPass) {
        groupSizes.Add(group, weight);
        return wholeRank.AddValue(value, weight, group);
    }
    const auto addTo = [&](JonckheereSubset& subset) {
        const std::int32_t place = subset.positionOf[static_cast<std::size_t>(group)];
        if (place >= 0) subset.Add(value, weight, static_cast<std::size_t>(place));
        return place;
    };
    if (phase == Phase::kOverall) {
        const std::int32_t place =
            overallPass == kQuantilesPass ? addTo(overall) : overall.positionOf[static_cast<std::size_t>(group)];
        if (place >= 0) AddToBox(record, place);
    } else if (phase == Phase::kPairs) {
        for (JonckheereSubset& pair : pairSubsets) addTo(pair);
    } else {
        for (const SubsetRecord& range : steps.Candidates()) addTo(stepSubsets[range.firstPosition]);
    }
    return status;
}

void TARNJonckTer::EndOverallPass() {
    if (overallPass == kSizesPass) {
        wholeRank.CloseTieRun();
        for (std::int32_t group = 0; group < categoryCount; ++group) {
            rankSums.push_back(wholeRank.GroupRanks(group).sumOfRanks);
        }
        wholeRank = TARNRank();  // it holds every rank, and tests live as long as the document
    } else if (overallPass == kQuantilesPass) {
        overallSignificant = Judge(overall);
    } else {
        Settle(overallSignificant);
    }
}

void TARNJonckTer::EndPairs() {
    for (JonckheereSubset& pair : pairSubsets) {
        Judge(pair);
        if (!pair.degenerate) pair.adjustedSig = AdjustByPairCount(pair.sigDirected, categoryCount);
    }
}

StepwiseComparison::Outcome TARNJonckTer::ComputeStep(SubsetRecord& range) {
    using Outcome = StepwiseComparison::Outcome;
    JonckheereSubset& subset = stepSubsets[range.firstPosition];
    Judge(subset);
    range.statistic = subset.j;
    range.standardError = subset.standardError;
    range.standardTestStatistic = subset.z;
    range.sig = subset.sigDirected;
    return subset.degenerate ? Outcome::kUntestable : Outcome::kComputed;
}

/// Whether the groups of the subset differ at the level; a subset that can't be tested counts as one whose groups do.
bool TARNJonckTer::Judge(JonckheereSubset& subset) {
    subset.degenerate = subset.GroupCount() == 2 && subset.HasEmptyGroup();
    if (subset.degenerate) {
        const MessageKind kind = phase == Phase::kOverall ? MessageKind::kError : MessageKind::kWarning;
        AddStatusMessage(QKStatus(kEmptyGroup), kind);
        return true;
    }
    subset.Compute();
    if (phase == Phase::kOverall) {
        subset.sigTwoTail = TwoTailedNormal(subset.z);
        return sigLevel > subset.sigTwoTail;
    }
    // The usual order takes the smaller tail and any other one the larger tail, whatever the sign: the direction that
    // the overall test found does not come into it. Documents depend on it.
    const double lower = QKMath::QKDistFun::CdfStdNorm(subset.z);
    const bool takesUpper = (orderOfHypotheses == kSmallestToLargest) == (subset.z >= 0);
    subset.sigDirected = takesUpper ? 1 - lower : lower;
    return sigLevel > subset.sigDirected;
}

// ---- Element ----

QKXML::XMLElement* TARNJonckTer::MakeResultElement() {
    ResultElement element(Tests::kJonckheereTerpstra, Decide(status, sigLevel, overall.sigTwoTail));
    element.AddCondition(kConditionKey, {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, overall.TotalN());
    statistics.Row(RowName::kTestStatistic, overall.j);
    statistics.Row(RowName::kStandardError, overall.standardError);
    statistics.Row(RowName::kStandardTestStatistic, overall.z);
    statistics.Row(RowName::kAsymptoticSig2Tailed, overall.sigTwoTail);
    AddBoxes(element, {}, {});

    if (HasPairsToShow() && !pairSubsets.empty()) {
        std::vector<PairRecord> pairs;
        for (const JonckheereSubset& pair : pairSubsets) pairs.push_back(RecordOf(pair));
        AddPairwiseResult(element, steps.Rules(), Samples(), pairs);
    }
    AddSteps(element, Samples());
    return element.Release();
}

/// The groups with cases and their mean ranks.
ComparedSamples TARNJonckTer::Samples() const {
    std::vector<double> meanRanks;
    for (const std::int32_t group : activeGroups) {
        meanRanks.push_back(rankSums[static_cast<std::size_t>(group)] / SizeOf(group));
    }
    return {groupVariableIndex, JoinValues(activeGroups), JoinValues(meanRanks)};
}
