// Median test of several groups.
//
// Question    Do all groups of a field have the same median?
// Data        Records that miss neither field, in ascending order of the test field; groups without weight take no
//             part.
// Statistic   Pearson's chi-square of the table of cases above the common median and not above it, by groups; with two
//             groups Fisher's exact test for at most 30 cases, and beyond that the chi-square corrected for continuity.
// Comparisons Pairs and homogeneous subsets by Pearson's chi-square around the median of each.
// Source      Mood (1950), Introduction to the Theory of Statistics, 394-399; Brown and Mood (1951), Proceedings of the
//             Second Berkeley Symposium, 159-166.
// Degenerate  No case above the median, or none at or below it: an error.

#include "independent/TARNKSMedian.h"

#include <utility>

#include "contract/TARNPlanBuilder.h"
#include "support/CaseWeight.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_I_Median_2";
constexpr const char* kConditionOfGivenMedian = "CategoryListsAreSpecified_I_Median_2";

constexpr const char* kUserSpecifyMedian = "userSpecifyMedian";
constexpr const char* kMedian = "median";
constexpr const char* kGroupParameter = "group";

constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 222315_error,
                                         .groupNameMissing = 222316_error,
                                         .unknownField = 222303_error,
                                         .testNotContinuous = 222318_error,
                                         .groupNotCategorical = 222317_error,
                                         // Documents show this code without a parameter, unlike its neighbours.
                                         .tellsTestField = false};
constexpr SeveralGroupsRules kRules{.noUnivariateResults = 222306_error,
                                    .tooFewCategories = 222320_error,
                                    .tooFewGroups = {.pairwise = 222337_warning, .stepwise = 222335_warning},
                                    .notSignificant = {.pairwise = 222338_warning, .stepwise = 222336_warning},
                                    // Foretold with a given median, too, though half of them are not made then.
                                    .passesOfPairs = 2,
                                    .passesOfStep = 2};

constexpr long kMedianMissing = 222322_error;
constexpr long kExpectedBelowOne = 222326_warning;
constexpr long kManyExpectedBelowFive = 222327_warning;

// Why a subset can't be tested: overall, of a pair, in a step.
constexpr long kNoneAbove[] = {222325_error, 222329_warning, 222332_warning};
constexpr long kAllAbove[] = {222324_error, 222328_warning, 222331_warning};
constexpr long kTooFewGroupsWithCases[] = {222319_error, 222333_warning, 222334_warning};

PairRecord RecordOf(const MedianSubset& pair) {
    PairRecord record;
    record.sample1 = pair.members[0];
    record.sample2 = pair.members[1];
    record.testStatistic = pair.chiSquare;
    record.sig = pair.sig;
    record.adjSig = pair.adjustedSig;
    record.untestable = pair.degenerate;
    return record;
}

}  // namespace

void PlanKSMedian(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const GroupedFields fields = PlanSeveralGroups(builder, plan, kFieldCodes, ComparisonRulesOf::kKSMedian);
    bool isGiven = false;
    double median = 0;
    builder.Read(kUserSpecifyMedian, isGiven);
    const bool hasMedian = builder.Read(kMedian, median);
    if (builder.IsOK() && isGiven && !hasMedian) builder.Fail(kMedianMissing);
    builder.TestSettings().AddSetting(kUserSpecifyMedian, isGiven);
    builder.TestSettings().AddSetting(kMedian, median);
    if (builder.IsOK()) {
        plan.Request(fields.group, Statistic::kFrequencies);
        plan.Request(fields.test, Statistic::kMedian);
        plan.RequestSorted(fields.test);
    }
    builder.AddToSortedWorker<TARNKSMedian>(fields.test);
}

// ---- Passes ----

TARNKSMedian::TARNKSMedian(std::unique_ptr<QKSettings> testSettings)
    : SeveralGroups(std::move(testSettings), kRules, ComparisonRulesOf::kKSMedian) {}

void TARNKSMedian::ReadOwnSettings() {
    settings->GetSettingValByName(kUserSpecifyMedian, userSpecifyMedian);
    if (userSpecifyMedian) settings->GetSettingValByName(kMedian, givenMedian);
    preparesComparisons = !userSpecifyMedian;
}

void TARNKSMedian::BeginOverall() {
    BeginBoxes();
    if (status.IsError()) return;
    overall = MakeSubset(activeGroups);
    if (activeGroups.size() < 2) AddStatusMessage(QKStatus(kTooFewGroupsWithCases[0]), MessageKind::kError);
}

MedianSubset TARNKSMedian::MakeSubset(const std::vector<std::int32_t>& categories) const {
    MedianSubset subset(variableIndex, weightIndex);
    std::vector<double> sizes;
    for (const std::int32_t category : categories) sizes.push_back(groupSizes.Of(category));
    subset.SetGroups(categories, std::move(sizes), categoryCount);
    subset.members = categories;
    if (userSpecifyMedian) subset.SetMedian(givenMedian);
    return subset;
}

void TARNKSMedian::BeginPairs() {
    for (std::size_t i = 0; i < activeGroups.size(); ++i) {
        for (std::size_t j = i + 1; j < activeGroups.size(); ++j) {
            pairSubsets.push_back(MakeSubset({activeGroups[i], activeGroups[j]}));
        }
    }
}

void TARNKSMedian::BeginSteps() {
    std::vector<double> medians;
    for (const GroupBoxPlot& box : groupBoxes) medians.push_back(box.Median());
    for (const OrderedSample& sample : OrderSamples(medians)) {
        sortedGroups.push_back(activeGroups[static_cast<std::size_t>(sample.sample)]);
    }
    steps.Begin(sortedGroups.size(), activeGroups.size());
    stepSubsets.assign(steps.Candidates().size(), MedianSubset(variableIndex, weightIndex));
    BeginNextStep();
}

/// In each step every candidate gets a median of its own again.
void TARNKSMedian::BeginNextStep() {
    for (const SubsetRecord& range : steps.Candidates()) {
        stepSubsets[range.firstPosition] =
            MakeSubset({sortedGroups.begin() + range.firstPosition, sortedGroups.begin() + range.lastPosition + 1});
    }
}

QKStatus TARNKSMedian::ProcessRecord(Record& record) {
    const double value = record[static_cast<std::size_t>(variableIndex)];
    const std::int32_t weight = CaseWeight(record, weightIndex);
    const std::int32_t category = CategoryOf(record);
    if (category < 0) return status;
    if (phase == Phase::kOverall) {
        CountOverall(record, value, weight, category);
    } else if (phase == Phase::kPairs) {
        for (MedianSubset& pair : pairSubsets) AddToSubset(pair, value, weight, category);
    } else {
        for (const SubsetRecord& range : steps.Candidates()) {
            AddToSubset(stepSubsets[range.firstPosition], value, weight, category);
        }
    }
    return status;
}

void TARNKSMedian::CountOverall(const Record& record, double value, std::int32_t weight, std::int32_t category) {
    if (overallPass == kSizesPass) {
        groupSizes.Add(category, weight);
        return;
    }
    const std::int32_t place = overall.PlaceOf(category);
    if (place == MedianSubset::kNotInside) return;
    AddToBox(record, place);
    if (overallPass == kOutliersPass) {
        overall.Count(value, weight, place);
    } else if (!userSpecifyMedian) {
        overall.AddToMedian(value, weight);
    }
}

void TARNKSMedian::AddToSubset(MedianSubset& subset, double value, std::int32_t weight, std::int32_t category) const {
    const std::int32_t place = subset.PlaceOf(category);
    if (place == MedianSubset::kNotInside) return;
    if (isPreparing) {
        subset.AddToMedian(value, weight);
    } else {
        subset.Count(value, weight, place);
    }
}

void TARNKSMedian::EndOverallPass() {
    if (overallPass == kQuantilesPass) {
        if (!userSpecifyMedian) overall.FinishMedian();
    } else if (overallPass == kOutliersPass) {
        Judge(overall, Mode::kOverall, {});
        if (!overall.degenerate && overall.GroupCount() == 2) ofTwoGroups = overall.CompareTwoGroups();
        // A table that can't be tested counts as significant, so that two groups get the message that they are too few
        // as well.
        Settle(overall.degenerate || sigLevel > DecidingSig());
    }
}

void TARNKSMedian::EndPreparation() {
    for (MedianSubset& subset : phase == Phase::kPairs ? pairSubsets : stepSubsets) subset.FinishMedian();
}

void TARNKSMedian::EndPairs() {
    const auto groupCount = static_cast<std::int32_t>(activeGroups.size());
    for (MedianSubset& pair : pairSubsets) {
        Judge(pair, Mode::kPair, pair.members);
        if (!pair.degenerate) pair.adjustedSig = AdjustByPairCount(pair.sig, groupCount);
    }
}

StepwiseComparison::Outcome TARNKSMedian::ComputeStep(SubsetRecord& range) {
    using Outcome = StepwiseComparison::Outcome;
    MedianSubset& subset = stepSubsets[range.firstPosition];
    Judge(subset, Mode::kStep,
          {static_cast<std::int32_t>(range.firstPosition), static_cast<std::int32_t>(range.lastPosition)});
    range.statistic = subset.chiSquare;
    range.sig = subset.sig;
    return subset.degenerate ? Outcome::kUntestable : Outcome::kComputed;
}

/// Computes what comes out of a subset, or says why nothing can. `named`: what a warning names the subset by.
void TARNKSMedian::Judge(MedianSubset& subset, Mode mode, const std::vector<std::int32_t>& named) {
    const bool hasAbove = subset.RowTotal(MedianSubset::kAbove) != 0;
    const bool hasNotAbove = subset.RowTotal(MedianSubset::kNotAbove) != 0;
    if (!hasAbove || !hasNotAbove) {
        MakeDegenerate(subset, mode, hasAbove ? kAllAbove : kNoneAbove, named);
    } else if (subset.GroupsWithCases() < 2) {
        MakeDegenerate(subset, mode, kTooFewGroupsWithCases, named);
    } else {
        const MedianSubset::ExpectedCells cells = subset.ComputeChiSquare();
        if (cells.anyBelowOne) AddStatusMessage(QKStatus(kExpectedBelowOne), MessageKind::kWarning);
        if (cells.manyBelowFive) AddStatusMessage(QKStatus(kManyExpectedBelowFive), MessageKind::kWarning);
    }
}

void TARNKSMedian::MakeDegenerate(MedianSubset& subset, Mode mode, const long (&codes)[3],
                                  const std::vector<std::int32_t>& named) {
    subset.degenerate = true;
    const QKStatus reason(codes[static_cast<std::size_t>(mode)]);
    if (mode == Mode::kOverall) {
        AddStatusMessage(reason, MessageKind::kError);
    } else {
        AddMessage({reason, MessageKind::kWarning, {}, {{kGroupParameter, JoinValues(named)}}});
    }
}

double TARNKSMedian::DecidingSig() const {
    if (overall.GroupCount() == 0) return 1;  // no pass has been made
    return ofTwoGroups ? ofTwoGroups->sig : overall.sig;
}

// ---- Element ----

QKXML::XMLElement* TARNKSMedian::MakeResultElement() {
    ResultElement element(Tests::kMedian, Decide(status, sigLevel, DecidingSig()));
    element.AddCondition(userSpecifyMedian ? kConditionOfGivenMedian : kConditionOfData,
                         {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    AddStatistics(element);
    const auto addGrandMedian = [&](StructuredTable& boxes) { boxes.Row(RowName::kGrandMedian, overall.Median()); };
    const auto addCounts = [&](StructuredTable& group, std::size_t place) {
        group.Row(RowName::kGreaterThanMedian, overall.Counts(MedianSubset::kAbove)[place]);
        group.Row(RowName::kNotGreaterThanMedian, overall.Counts(MedianSubset::kNotAbove)[place]);
    };
    AddBoxes(element, addGrandMedian, addCounts);
    if (HasPairsToShow() && !pairSubsets.empty()) {
        std::vector<PairRecord> pairs;
        for (const MedianSubset& pair : pairSubsets) pairs.push_back(RecordOf(pair));
        AddPairwiseResult(element, steps.Rules(), Samples(activeGroups), pairs);
    }
    AddSteps(element, Samples(sortedGroups));
    return element.Release();
}

void TARNKSMedian::AddStatistics(ResultElement& element) const {
    const auto df = static_cast<std::int32_t>(overall.GroupCount()) - 1;
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, overall.TotalN());
    statistics.Row(RowName::kMedian, overall.Median());
    statistics.Row(RowName::kTestStatistic, overall.chiSquare);
    statistics.Row(RowName::kDegreeOfFreedom, df);
    statistics.Row(RowName::kAsymptoticSig2Tailed, overall.sig);
    if (ofTwoGroups && ofTwoGroups->isExact) statistics.Row(RowName::kFisherExactSig, ofTwoGroups->sig);
    if (!ofTwoGroups || ofTwoGroups->isExact) return;
    StructuredTable corrected = statistics.Table(TableName::kYatesContinuityCorrection);
    corrected.Row(RowName::kChiSquare, ofTwoGroups->chiSquare);
    corrected.Row(RowName::kDegreeOfFreedom, df);
    corrected.Row(RowName::kAsymptoticSig2Tailed, ofTwoGroups->sig);
}

/// Groups by their categories, with their medians.
ComparedSamples TARNKSMedian::Samples(const std::vector<std::int32_t>& groups) const {
    std::vector<double> medians;
    for (const std::int32_t group : groups) {
        medians.push_back(groupBoxes[static_cast<std::size_t>(overall.PlaceOf(group))].Median());
    }
    return {groupVariableIndex, JoinValues(groups), JoinValues(medians)};
}
