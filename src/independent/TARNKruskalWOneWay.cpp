// Kruskal-Wallis one-way analysis of variance by ranks.
//
// Question    Does a continuous field have the same distribution in all groups of a field?
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
#include <functional>
#include <numeric>
#include <utility>

#include "contract/TARNPlanBuilder.h"
#include "independent/TextbookForm.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "DefaultAllDistinctValuesUsed_I_KruskalWallis_2";
/// Of the vocabulary; groups can't be given, so that nothing writes it.
[[maybe_unused]] constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_KruskalWallis_2";
constexpr const char* kNumberOfCategories = "numberOfCategories";

constexpr long kComparisonMissing = 222101_error;
constexpr long kFieldUnknown = 222103_error;
constexpr long kTestNotContinuous = 222109_error;
constexpr long kGroupNotCategorical = 222110_error;
constexpr long kStatisticComputed = 222111_help;
constexpr long kTooFewGroupsWithCases = 222112_error;
constexpr long kTooFewCategories = 222115_error;

constexpr SeveralGroupsRules kRules{.tooFewGroups = {.pairwise = 222118_warning, .stepwise = 222116_warning},
                                    .notSignificant = {.pairwise = 222119_warning, .stepwise = 222117_warning},
                                    .passesOfPairs = 0,
                                    .passesOfStep = 1,
                                    .firstStep = FirstStep::kWithTheOutliers,
                                    .foretold = Foretold::kToTheEnd,
                                    .failedPlan = FailedPlan::kShowsFields,
                                    .groups = GroupsAre::kOfAnySizeBut0,
                                    .boxes = BoxesAre::kByCategory};

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

/// Every failure of the plan is reported, not just one, and a field that passes its check is asked for whatever else
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

TARNKruskalWOneWay::TARNKruskalWOneWay(std::unique_ptr<QKSettings> testSettings)
    : SeveralGroups(std::move(testSettings), kRules, ComparisonRulesOf::kKruskalWOneWay) {}

/// The plan builder has counted them.
void TARNKruskalWOneWay::CountCategories() {
    settings->GetSettingValByName(kNumberOfCategories, categoryCount);
}

int TARNKruskalWOneWay::BriefPasses() const {
    constexpr int kRanks = 1;
    constexpr int kRanksMediansAndFirstStep = 3;
    return wanted.stepwise ? kRanksMediansAndFirstStep : kRanks;
}

void TARNKruskalWOneWay::BeginOverall() {
    try {
        BeginBoxes();
    } catch (const std::exception&) {
        AddStatusMessage(QKStatus(StatusCode::kAllocationFailed), MessageKind::kError);
    }
}

/// The groups in ascending order of their mean ranks, those of equal ones in ascending order of their medians.
void TARNKruskalWOneWay::BeginSteps() {
    const std::vector<std::int32_t> places = PlacesOf(activeGroups);
    const auto key = [&](std::int32_t group) {
        const std::int32_t place = places[static_cast<std::size_t>(group)];
        return std::pair(MeanRank(group), MedianOf(static_cast<std::size_t>(place)));
    };
    sortedGroups = activeGroups;
    std::stable_sort(sortedGroups.begin(), sortedGroups.end(),
                     [&](std::int32_t a, std::int32_t b) { return key(a) < key(b); });
    positionOf = PlacesOf(sortedGroups);
    // Categories without cases count among the samples that a subset's significance is adjusted for, by the textbook
    // the groups alone. No decision rests on it.
    steps.Begin(sortedGroups.size(),
                arithmetic.WantsTextbook() ? sortedGroups.size() : static_cast<std::size_t>(categoryCount));
    const std::int64_t largest = *std::max_element(groupSizes.begin(), groupSizes.end());
    if (tieScan.AreShared() && !HasNegativeWeight() && RangeRanks::AreExact(SumOfWeights(), largest)) {
        stepRanks = StepRanks::kAwaitWalk;
        rangeRanks.Begin(sortedGroups.size(), work);
    } else {
        stepRanks = StepRanks::kOfEachStep;
        subsetRanks.resize(sortedGroups.size(), TARNRank(arithmetic));
    }
}

void TARNKruskalWOneWay::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(groupVariableIndex);
    fieldIndices.push_back(variableIndex);
}

void TARNKruskalWOneWay::Take(const GroupedRecords& records) {
    if (phase == Phase::kOverall && overallPass == kSizesPass) {
        wholeRank.AddAscending(records.values, weightIndex < 0 ? nullptr : records.weights, records.groups,
                               records.size);
        if (wanted.stepwise) tieScan.Add(records.values, records.groups, records.size);
    } else {
        TakeStep(records);
    }
}

void TARNKruskalWOneWay::TakeStep(const GroupedRecords& records) {
    if (stepRanks != StepRanks::kAwaitWalk && stepRanks != StepRanks::kOfEachStep) return;
    positions.assign(records.groups, records.groups + records.size);
    for (std::size_t i = 0; i < records.size; ++i) {
        if (positions[i] != GroupSplit::kNoGroup) positions[i] = PositionOf(records.categories[i]);
    }
    if (stepRanks == StepRanks::kAwaitWalk) {
        rangeRanks.Add(records.values, records.weights, positions.data(), records.size);
        return;
    }
    std::vector<std::int32_t> inside(records.size);
    for (const SubsetRecord& subset : steps.Candidates()) {
        if (IsStopped()) return;
        for (std::size_t i = 0; i < records.size; ++i) {
            const auto position = static_cast<std::uint32_t>(positions[i]);
            const bool isInside = position >= subset.firstPosition && position <= subset.lastPosition;
            inside[i] = isInside ? positions[i] : GroupSplit::kNoGroup;
        }
        subsetRanks[subset.firstPosition].AddAscending(records.values, weightIndex < 0 ? nullptr : records.weights,
                                                       inside.data(), records.size);
    }
}

void TARNKruskalWOneWay::EndOverallPass() {
    if (overallPass != kSizesPass) return;
    const auto withCases = std::count_if(activeGroups.begin(), activeGroups.end(),
                                         [this](std::int32_t group) { return SizeOf(group) > 0; });
    if (withCases < 2) {
        AddStatusMessage(QKStatus(kTooFewGroupsWithCases), MessageKind::kError);
        return;
    }
    wholeRank.CloseTieRun();
    for (std::int32_t group = 0; group < categoryCount; ++group) {
        groupRanks.push_back(wholeRank.GroupRanks(group));
    }
    tieSum = wholeRank.TieCorrectionSum();
    const auto sumOfRanks = [this](std::int32_t group) { return RanksOf(group).sumOfRanks; };
    const auto sumAbove = [this](std::int32_t group, WideNumber twice) { return RanksOf(group).Above(twice); };
    const auto spreadOf = [this](std::int64_t total) { return spread = wholeRank.SpreadOf(total); };
    overall = ComputeH(activeGroups, {sumOfRanks, sumAbove, tieSum, spreadOf});
    spreadOf(overall.totalN);
    wholeRank.Reset();  // tests live as long as the document
    Settle(overall.sig < sigLevel);
    if (wanted.pairwise) ComparePairs();
}

/// The statistic of some groups over their own ranks. Its remark goes out each time, whether there are ties or not.
TARNKruskalWOneWay::Result TARNKruskalWOneWay::ComputeH(const std::vector<std::int32_t>& groups,
                                                        const Ranking& ranking) {
    std::vector<std::int32_t> fromTheLast = groups;
    std::sort(fromTheLast.begin(), fromTheLast.end(), std::greater<>());
    Result result;
    for (const std::int32_t group : fromTheLast) result.totalN += SizeOf(group);
    result.totalN = arithmetic.Count(result.totalN);
    const auto n = static_cast<double>(result.totalN);
    const double next = arithmetic.Signed32(Whole(result.totalN) + 1);
    const double expected = arithmetic.Signed32(Whole(3) * result.totalN + 3);
    const auto asDefined = [&] {
        double sum = 0;
        for (const std::int32_t group : fromTheLast) {
            const double ranks = ranking.sumOfRanks(group);
            sum += ranks * ranks / SizeAsNumber(group);
        }
        const double h = 12 * sum / (next * n) - expected;
        const double correction = 1 - ranking.tieSum / (n * n * n - n);
        return correction != 0 ? h / correction : 0.0;
    };
    // The same around the middle rank, so that nothing large is subtracted.
    const auto centred = [&] {
        const long double within = ranking.spread(result.totalN);
        if (within == 0) return 0.0L;
        long double sum = 0;
        for (const std::int32_t group : fromTheLast) {
            const long double above =
                ranking.sumAbove(group, WideNumber{SizeOf(group)} * (WideNumber{result.totalN} + 1));
            sum += above * above / static_cast<long double>(SizeOf(group));
        }
        return 12 * static_cast<long double>(result.totalN - 1) * sum / within;
    };
    // The ranks add up to those of all cases only where no weight is below 0.
    result.statistic = HasNegativeWeight() ? asDefined() : arithmetic.Carefully(asDefined, centred);
    AddStatusMessage(QKStatus(kStatisticComputed), MessageKind::kHelpMessage);
    result.degreesOfFreedom = static_cast<double>(groups.size()) - 1;
    result.sig = ChiSquareSig(result.statistic, result.degreesOfFreedom, arithmetic);
    return result;
}

void TARNKruskalWOneWay::ComparePairs() {
    for (std::size_t i = 0; i < activeGroups.size(); ++i) {
        for (std::size_t j = i + 1; j < activeGroups.size(); ++j) {
            pairs.push_back(Compare(activeGroups[i], activeGroups[j]));
        }
    }
    pairwiseDone = true;
}

/// The mean rank of a group less that of all cases.
long double TARNKruskalWOneWay::MeanRankAboveMiddle(std::int32_t group) const {
    return RanksOf(group).Above(WideNumber{SizeOf(group)} * (WideNumber{overall.totalN} + 1)) /
           static_cast<long double>(SizeOf(group));
}

/// Categories without cases count among the samples that the significance is adjusted for, by the textbook the groups
/// alone.
PairRecord TARNKruskalWOneWay::Compare(std::int32_t a, std::int32_t b) const {
    const auto n = static_cast<double>(overall.totalN);
    const double share = 1.0 / SizeAsNumber(b) + 1.0 / SizeAsNumber(a);
    const double standardError = arithmetic.Carefully(
        [&] { return std::sqrt(share * ((n + 1) * n / 12 - tieSum / (12 * (n - 1)))); },
        [&] { return std::sqrt(share * (spread / (12 * static_cast<long double>(overall.totalN - 1)))); });
    const double difference = arithmetic.Carefully([&] { return MeanRank(a) - MeanRank(b); },
                                                   [&] { return MeanRankAboveMiddle(a) - MeanRankAboveMiddle(b); });
    PairRecord pair =
        MakeNormalPair(a, b, difference, standardError, static_cast<std::size_t>(categoryCount), arithmetic);
    pair.adjSig = FormOf(pair.adjSig, AdjustForPairs(pair.sig, activeGroups.size()), arithmetic);
    return pair;
}

TARNKruskalWOneWay::Ranking TARNKruskalWOneWay::RankingOf(const SubsetRecord& range) {
    const std::uint32_t first = range.firstPosition;
    const std::uint32_t last = range.lastPosition;
    if (stepRanks == StepRanks::kOfEachStep) {
        TARNRank& rank = subsetRanks[first];
        rank.CloseTieRun();
        const auto ranksOf = [this, &rank](std::int32_t group) -> const GroupRankStats& {
            return rank.GroupRanks(PositionOf(group));
        };
        return {[=](std::int32_t group) { return ranksOf(group).sumOfRanks; },
                [=](std::int32_t group, WideNumber twice) { return ranksOf(group).Above(twice); },
                rank.TieCorrectionSum(), [&rank](std::int64_t total) { return rank.SpreadOf(total); }};
    }
    const auto sumOfRanks = [=, this](std::int32_t group) {
        return rangeRanks.SumOfRanks(static_cast<std::size_t>(PositionOf(group)), first, last);
    };
    const auto sumAbove = [=](std::int32_t group, WideNumber twice) {
        return sumOfRanks(group) - static_cast<long double>(twice) / 2;  // both are exact here
    };
    return {sumOfRanks, sumAbove, rangeRanks.TieCorrectionSum(first, last),
            [=, this](std::int64_t total) { return rangeRanks.SpreadOf(first, last, total); }};
}

StepwiseComparison::Outcome TARNKruskalWOneWay::ComputeStep(SubsetRecord& range) {
    if (IsStopped()) return StepwiseComparison::Outcome::kFailed;
    const std::vector<std::int32_t> groups(sortedGroups.begin() + range.firstPosition,
                                           sortedGroups.begin() + range.lastPosition + 1);
    const Result result = ComputeH(groups, RankingOf(range));
    range.statistic = result.statistic;
    range.sig = result.sig;
    return StepwiseComparison::Outcome::kComputed;
}

void TARNKruskalWOneWay::EndStep() {
    if (stepRanks == StepRanks::kAwaitWalk) {
        rangeRanks.Close();
        stepRanks = StepRanks::kOfOneWalk;
    }
    SeveralGroups::EndStep();
    for (TARNRank& rank : subsetRanks) rank.Reset();
    if (steps.IsDone()) NoteSubsets();
}

/// Whether the samples without cases matter to any subset that is shown.
void TARNKruskalWOneWay::NoteSubsets() const {
    const auto adjusted = [this](const SubsetRecord& subset, std::size_t samples) {
        return AdjustForSubset(subset.sig, subset.Size(), samples, arithmetic);
    };
    for (const SubsetRecord& subset : steps.FinalSubsets()) {
        static_cast<void>(FormOf(adjusted(subset, static_cast<std::size_t>(categoryCount)),
                                 adjusted(subset, sortedGroups.size()), arithmetic));
    }
}

void TARNKruskalWOneWay::Release() {
    rangeRanks = {};
    subsetRanks = {};
    positions = {};
}

// ---- Element ----

QKXML::XMLElement* TARNKruskalWOneWay::MakeResultElement() {
    ResultElement element(Tests::kKruskalWallis, Decide(status, sigLevel, overall.sig));
    element.AddCondition(kConditionKey, {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, overall.totalN);
    statistics.Row(RowName::kTestStatistic, TextOrEmpty(overall.statistic));
    statistics.Row(RowName::kDegreeOfFreedom, TextOrEmpty(overall.degreesOfFreedom));
    statistics.Row(RowName::kAsymptoticSig2Tailed, TextOrEmpty(overall.sig));
    AddBoxes(element, {}, [this](StructuredTable& group, std::size_t place) {
        group.Row(RowName::kMeanOfRank, MeanRank(activeGroups[place]));
    });
    if (HasPairsToShow()) AddPairwiseResult(element, steps.Rules(), PairedSamples(), pairs);
    AddSteps(element, Samples(sortedGroups));
    return element.Release();
}

/// Groups by their categories, with their mean ranks.
ComparedSamples TARNKruskalWOneWay::Samples(const std::vector<std::int32_t>& groups) const {
    std::vector<double> meanRanks;
    for (const std::int32_t group : groups) meanRanks.push_back(MeanRank(group));
    return {groupVariableIndex, JoinValues(groups), JoinValues(meanRanks)};
}

/// The same of the groups whose pairs are compared; one of negative weight has no mean rank here.
ComparedSamples TARNKruskalWOneWay::PairedSamples() const {
    ComparedSamples samples = Samples(activeGroups);
    samples.orderValues.clear();
    for (const std::int32_t group : activeGroups) {
        if (group != activeGroups.front()) samples.orderValues += ";";
        if (SizeOf(group) > 0) samples.orderValues += DoubleToString(MeanRank(group));
    }
    return samples;
}
