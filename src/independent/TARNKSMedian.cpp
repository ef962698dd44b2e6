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

#include <algorithm>
#include <utility>

#include "contract/TARNPlanBuilder.h"
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

/// The adjusted significance is the test's.
PairRecord RecordOf(const MedianSubset& pair, std::int32_t sample1, std::int32_t sample2) {
    PairRecord record;
    record.sample1 = sample1;
    record.sample2 = sample2;
    record.testStatistic = pair.chiSquare;
    record.sig = pair.sig;
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
        if (!plan.IsBrief()) plan.Request(fields.test, Statistic::kMedian);  // for the readers of the field alone
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
    records.Begin(activeGroups.size());
    if (activeGroups.size() < 2) AddStatusMessage(QKStatus(kTooFewGroupsWithCases[0]), MessageKind::kError);
}

MedianSubset TARNKSMedian::MakeSubset(const std::vector<std::int32_t>& categories) const {
    MedianSubset subset(arithmetic);
    std::vector<double> sizes;
    for (const std::int32_t category : categories) sizes.push_back(static_cast<double>(SizeOf(category)));
    subset.SetGroups(categories, std::move(sizes), categoryCount);
    if (userSpecifyMedian) subset.SetMedian(givenMedian);
    return subset;
}

void TARNKSMedian::BeginSteps() {
    std::vector<double> medians;
    for (std::size_t place = 0; place < activeGroups.size(); ++place) medians.push_back(MedianOf(place));
    for (const OrderedSample& sample : OrderSamples(medians)) {
        sortedGroups.push_back(activeGroups[static_cast<std::size_t>(sample.sample)]);
    }
    steps.Begin(sortedGroups.size(), activeGroups.size());
}

void TARNKSMedian::Take(const GroupedRecords& batch) {
    if (phase == Phase::kOverall) {
        if (overallPass != kSizesPass) TakeOverall(batch);
        return;
    }
    if (records.IsClosed()) return;
    for (std::size_t i = 0; i < batch.size; ++i) {
        if (batch.groups[i] == GroupSplit::kNoGroup) continue;
        records.Add(batch.values[i], batch.weights[i], static_cast<std::size_t>(batch.groups[i]));
    }
}

void TARNKSMedian::TakeOverall(const GroupedRecords& batch) {
    if (overallPass == kOutliersPass) {
        overall.Count(batch.values, batch.weights, batch.groups, batch.size);
    } else if (!userSpecifyMedian) {
        // Between records without a group lie stretches of others, nearly always one alone.
        const auto isGroup = [](std::int32_t group) { return group != GroupSplit::kNoGroup; };
        const std::int32_t* const end = batch.groups + batch.size;
        for (const std::int32_t* from = std::find_if(batch.groups, end, isGroup); from != end;) {
            const std::int32_t* const to = std::find_if_not(from, end, isGroup);
            const std::ptrdiff_t first = from - batch.groups;
            overall.AddToMedian(batch.values + first, weightIndex < 0 ? nullptr : batch.weights + first,
                                static_cast<std::size_t>(to - from));
            from = std::find_if(to, end, isGroup);
        }
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

MedianSubset TARNKSMedian::CountedSubset(const std::vector<std::int32_t>& categories) {
    records.Close();
    MedianSubset subset = MakeSubset(categories);
    std::vector<std::size_t> places;
    for (const std::int32_t category : categories) {
        places.push_back(static_cast<std::size_t>(overall.PlaceOf(category)));
    }
    if (!userSpecifyMedian) records.FindMedian(subset, places);
    records.Count(subset, places);
    return subset;
}

void TARNKSMedian::EndPairs() {
    const auto groupCount = static_cast<std::int32_t>(activeGroups.size());
    for (std::size_t i = 0; i < activeGroups.size(); ++i) {
        for (std::size_t j = i + 1; j < activeGroups.size() && !IsStopped(); ++j) {
            const std::vector<std::int32_t> members{activeGroups[i], activeGroups[j]};
            MedianSubset pair = CountedSubset(members);
            Judge(pair, Mode::kPair, members);
            PairRecord& record = pairs.emplace_back(RecordOf(pair, members[0], members[1]));
            if (!pair.degenerate) record.adjSig = AdjustByPairCount(pair.sig, groupCount, arithmetic);
        }
    }
}

StepwiseComparison::Outcome TARNKSMedian::ComputeStep(SubsetRecord& range) {
    using Outcome = StepwiseComparison::Outcome;
    if (IsStopped()) return Outcome::kFailed;
    MedianSubset subset =
        CountedSubset({sortedGroups.begin() + range.firstPosition, sortedGroups.begin() + range.lastPosition + 1});
    Judge(subset, Mode::kStep,
          {static_cast<std::int32_t>(range.firstPosition), static_cast<std::int32_t>(range.lastPosition)});
    range.statistic = subset.chiSquare;
    range.sig = subset.sig;
    return subset.degenerate ? Outcome::kUntestable : Outcome::kComputed;
}

void TARNKSMedian::Release() {
    records = {};
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
    if (HasPairsToShow() && !pairs.empty()) {
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
        medians.push_back(MedianOf(static_cast<std::size_t>(overall.PlaceOf(group))));
    }
    return {groupVariableIndex, JoinValues(groups), JoinValues(medians)};
}
