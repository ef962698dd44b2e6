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

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include "contract/TARNPlanBuilder.h"
#include "independent/TextbookForm.h"
#include "platform/common/QKDistFun.h"
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

/// The adjusted significance is the test's.
PairRecord RecordOf(const JonckheereSubset& pair, std::int32_t sample1, std::int32_t sample2) {
    PairRecord record;
    record.sample1 = sample1;
    record.sample2 = sample2;
    record.testStatistic = pair.j;
    record.standardError = pair.standardError;
    record.standardTestStatistic = pair.z;
    record.sig = pair.sigDirected;
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

int TARNJonckTer::BriefPasses() const {
    constexpr int kSizesAndWalk = 2;
    return kSizesAndWalk;
}

/// The places of a stepwise subset are given by positions among the groups with cases, though its records look their
/// place up by category. Where a category is empty the two differ; documents depend on it. The walk then goes over all
/// categories, and each pair is walked by itself, since any two of them may have to stand for a pair of single cases.
/// By the textbook a subset has the records of its groups.
void TARNJonckTer::BeginOverall() {
    BeginBoxes();
    if (status.IsError()) return;
    const bool hasGap = wanted.stepwise && static_cast<std::size_t>(activeGroups.back()) + 1 != activeGroups.size();
    walksTwice = hasGap && arithmetic.WantsTextbook();
    walksAllCategories = hasGap && !walksTwice;
    // Up to the second number the sums of ranks are not rounded where all pairs share their ties.
    const double most = arithmetic.Carefully([] { return std::numeric_limits<std::int32_t>::max(); },
                                             [] { return TARNRank::kMostExactWeight; });
    const bool sizesAreCounts = !HasNegativeWeight() && static_cast<double>(SumOfWeights()) <= most;
    const bool areShared = tieScan.AreShared() && sizesAreCounts && !walksAllCategories;
    walk.Begin(walksAllCategories ? static_cast<std::size_t>(categoryCount) : activeGroups.size(),
               areShared ? PairRankSums::Ties::kShared : PairRankSums::Ties::kOfEachPair, arithmetic, work);
    if (walksTwice) {
        walkAsDefined.Begin(static_cast<std::size_t>(categoryCount), PairRankSums::Ties::kOfEachPair, arithmetic, work);
    }
    std::vector<double> sizes;
    for (const std::int32_t group : activeGroups) sizes.push_back(static_cast<double>(SizeOf(group)));
    overall.SetGroups(std::move(sizes));
}

std::size_t TARNJonckTer::PlaceInWalk(std::size_t placeOfGroup) const {
    return walksAllCategories ? static_cast<std::size_t>(activeGroups[placeOfGroup]) : placeOfGroup;
}

void TARNJonckTer::BeginSteps() {
    // Categories without cases count among the samples that a subset's significance is adjusted for, by the textbook
    // the groups alone.
    steps.Begin(activeGroups.size(),
                arithmetic.WantsTextbook() ? activeGroups.size() : static_cast<std::size_t>(categoryCount));
}

void TARNJonckTer::Take(const GroupedRecords& records) {
    if (phase != Phase::kOverall) return;
    if (overallPass == kSizesPass) {
        wholeRank.AddAscending(records.values, weightIndex < 0 ? nullptr : records.weights, records.groups,
                               records.size);
        tieScan.Add(records.values, records.groups, records.size);
    } else if (overallPass == kQuantilesPass) {
        const std::int32_t* const places = walksAllCategories ? records.categories : records.groups;
        // Among many groups that are walked pair by pair, a batch takes longer than a cancel may.
        constexpr std::size_t kBetweenQuestions = 4096;
        for (std::size_t begin = 0; begin < records.size && !IsStopped(); begin += kBetweenQuestions) {
            const std::size_t size = std::min(kBetweenQuestions, records.size - begin);
            walk.Add(records.values + begin, records.weights + begin, places + begin, size);
            if (!walksTwice) continue;
            walkAsDefined.Add(records.values + begin, records.weights + begin, records.categories + begin, size);
        }
    }
}

void TARNJonckTer::EndOverallPass() {
    if (overallPass == kSizesPass) {
        wholeRank.CloseTieRun();
        for (std::int32_t group = 0; group < categoryCount; ++group) {
            rankSums.push_back(wholeRank.GroupRanks(group).sumOfRanks);
        }
        wholeRank.Reset();  // tests live as long as the document
        return;
    }
    if (overallPass == kQuantilesPass) {
        walk.Close();
        walkAsDefined.Close();
        std::vector<std::size_t> places;
        for (std::size_t place = 0; place < activeGroups.size(); ++place) places.push_back(PlaceInWalk(place));
        overallSignificant = Judge(overall, walk.Of(places));
    }
    if (overallPass == (isBrief ? kQuantilesPass : kOutliersPass)) Settle(overallSignificant);
}

void TARNJonckTer::EndPairs() {
    for (std::size_t i = 0; i < activeGroups.size(); ++i) {
        for (std::size_t j = i + 1; j < activeGroups.size() && !IsStopped(); ++j) {
            JonckheereSubset pair;
            pair.SetGroups(
                {static_cast<double>(SizeOf(activeGroups[i])), static_cast<double>(SizeOf(activeGroups[j]))});
            Judge(pair, walk.OfPair(PlaceInWalk(i), PlaceInWalk(j)));
            PairRecord& record = pairs.emplace_back(RecordOf(pair, activeGroups[i], activeGroups[j]));
            if (pair.degenerate) continue;
            const auto adjusted = [&](std::int32_t samples) {
                return AdjustByPairCount(pair.sigDirected, samples, arithmetic);
            };
            record.adjSig =
                FormOf(adjusted(categoryCount), adjusted(static_cast<std::int32_t>(activeGroups.size())), arithmetic);
        }
    }
}

StepwiseComparison::Outcome TARNJonckTer::ComputeRange(SubsetRecord& range, JonckheereWalk& by) {
    using Outcome = StepwiseComparison::Outcome;
    if (IsStopped()) return Outcome::kFailed;
    std::vector<double> sizes;
    for (std::uint32_t position = range.firstPosition; position <= range.lastPosition; ++position) {
        sizes.push_back(static_cast<double>(SizeOf(activeGroups[position])));
    }
    JonckheereSubset subset;
    subset.SetGroups(std::move(sizes));
    Judge(subset, by.OfRange(range.firstPosition, range.lastPosition));
    range.statistic = subset.j;
    range.standardError = subset.standardError;
    range.standardTestStatistic = subset.z;
    range.sig = subset.sigDirected;
    return subset.degenerate ? Outcome::kUntestable : Outcome::kComputed;
}

void TARNJonckTer::EndStep() {
    SeveralGroups::EndStep();
    const bool mayDiffer = walksTwice || static_cast<std::size_t>(categoryCount) != activeGroups.size();
    if (steps.IsDone() && mayDiffer && arithmetic.WantsTextbook()) NoteSubsets();
}

/// Whether the search as it is defined finds anything else than the one by the textbook.
void TARNJonckTer::NoteSubsets() {
    StepwiseComparison search(steps.Rules(), arithmetic);
    search.Begin(activeGroups.size(), static_cast<std::size_t>(categoryCount));
    while (!search.IsDone() && !IsStopped()) {
        static_cast<void>(search.EndPass(
            sigLevel, [this](SubsetRecord& range) { return ComputeRange(range, walksTwice ? walkAsDefined : walk); }));
    }
    const auto areSame = [](const SubsetRecord& a, const SubsetRecord& b) {
        const auto shown = [](const SubsetRecord& subset) {
            return std::array{subset.statistic, subset.standardError, subset.standardTestStatistic, subset.sig,
                              subset.adjSig};
        };
        return a.firstPosition == b.firstPosition && a.lastPosition == b.lastPosition && shown(a) == shown(b);
    };
    const auto& found = steps.FinalSubsets();
    const auto& defined = search.FinalSubsets();
    static_cast<void>(
        arithmetic.TakesTextbook(!std::equal(found.begin(), found.end(), defined.begin(), defined.end(), areSame)));
}

void TARNJonckTer::Release() {
    walk = {};
    walkAsDefined = {};
}

/// Whether the groups of the subset differ at the level; a subset that can't be tested counts as one whose groups do.
bool TARNJonckTer::Judge(JonckheereSubset& subset, const JonckheereCounts& counts) {
    subset.degenerate = subset.GroupCount() == 2 && subset.HasEmptyGroup();
    if (subset.degenerate) {
        const MessageKind kind = phase == Phase::kOverall ? MessageKind::kError : MessageKind::kWarning;
        AddStatusMessage(QKStatus(kEmptyGroup), kind);
        return true;
    }
    subset.Compute(counts, arithmetic);
    if (phase == Phase::kOverall) {
        subset.sigTwoTail = TwoTailedNormal(subset.z, arithmetic);
        return sigLevel > subset.sigTwoTail;
    }
    // The usual order takes the smaller tail and any other one the larger tail, whatever the sign: the direction that
    // the overall test found does not come into it. Documents depend on it.
    const double lower = QKMath::QKDistFun::CdfStdNorm(subset.z);
    const bool takesUpper = (orderOfHypotheses == kSmallestToLargest) == (subset.z >= 0);
    subset.sigDirected = takesUpper ? UpperTailOfNormal(subset.z, arithmetic) : lower;
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

    if (HasPairsToShow() && !pairs.empty()) {
        AddPairwiseResult(element, steps.Rules(), Samples(), pairs);
    }
    AddSteps(element, Samples());
    return element.Release();
}

/// The groups with cases and their mean ranks.
ComparedSamples TARNJonckTer::Samples() const {
    std::vector<double> meanRanks;
    for (const std::int32_t group : activeGroups) {
        meanRanks.push_back(rankSums[static_cast<std::size_t>(group)] / static_cast<double>(SizeOf(group)));
    }
    return {groupVariableIndex, JoinValues(activeGroups), JoinValues(meanRanks)};
}
