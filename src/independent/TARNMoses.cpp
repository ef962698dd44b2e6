// Moses test of extreme reactions of two independent groups.
//
// Question    Do extreme values of a continuous field, at both ends, occur more often in an experimental group than in
//             a control group?
// Data        Records that miss neither field, in ascending order of the test field; those of neither group take no
//             part. m and n are the weighted sizes of the control group, which is the first one, and of the other.
// Statistic   The span of the control group, from its lowest to its highest rank; and the same without h cases at each
//             end, 5 % of m unless h is given. Significance: the chance of at most such a span.
// Source      Moses (1952), Psychometrika 17, 239-247.
// Degenerate  An empty group: an error. A control group of fewer than 2 h + 2 cases: significance 0.

#include "independent/TARNMoses.h"

#include <algorithm>
#include <cmath>

#include "contract/TARNPlanBuilder.h"
#include "independent/MosesSignificance.h"
#include "support/ResultElements.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_I_Moses_2";
constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_Moses_2";

constexpr const char* kUserSpecifyNumberOfOutliers = "userSpecifyNumberOfOutliers";
constexpr const char* kNumberOfOutliers = "NumberOfOutliers";
constexpr const char* kCaseIdVariableIndex = "caseIDVariableIndex";

constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 221112_error,
                                         .groupNameMissing = 221113_error,
                                         .unknownField = 221103_error,
                                         .testNotContinuous = 221115_error,
                                         .groupNotCategorical = 221114_error};
constexpr TwoGroupsCodes kGroupsCodes{.noUnivariateResults = 221106_error,
                                      .notTwoCategories = 221109_error,
                                      .inBothLists = 221110_error,
                                      .groupEmpty = 221111_error};
constexpr long kParameterMissing = 221101_error;
constexpr long kOutliersBelowOne = 221116_error;
constexpr long kOutliersReduced = 221117_warning;

constexpr double kShareTrimmed = 0.05;

/// From one mid-rank to another, to the nearest whole number, a half upward.
std::int64_t Span(double lowestRank, double highestRank, const Arithmetic& arithmetic) {
    return arithmetic.Truncated(highestRank - lowestRank + 1 + 0.5);
}

/// The rank that is left where cases of weight `trimmed` are taken away at the front of the ranks, the last of which
/// is never reached: that of the entry in which they end, or of the next one where they use it up. Where they don't
/// end, the rank in the middle.
template <typename Iterator>
double RankAfterTrimming(Iterator entry, Iterator last, double trimmed, double middle) {
    for (; entry != last; ++entry) {
        trimmed -= entry->second;
        if (trimmed < 0) return entry->first;
        if (trimmed == 0) return std::next(entry)->first;
    }
    return middle;
}

std::int64_t TrimmedSpan(const std::vector<std::pair<double, double>>& ranks, std::int64_t outliers,
                         const Arithmetic& arithmetic) {
    const auto trimmed = static_cast<double>(outliers);
    const double middle = ranks[ranks.size() / 2].first;
    const double lowest = RankAfterTrimming(ranks.begin(), std::prev(ranks.end()), trimmed, middle);
    const double highest = RankAfterTrimming(ranks.rbegin(), std::prev(ranks.rend()), trimmed, middle);
    return Span(lowest, highest, arithmetic);
}

}  // namespace

// ---- Plan ----

namespace {

void PlanOutliers(TARNPlanBuilder& builder) {
    if (!builder.IsOK()) return;
    bool areGiven = false;
    builder.Read(kUserSpecifyNumberOfOutliers, areGiven);
    builder.TestSettings().AddSetting(kUserSpecifyNumberOfOutliers, areGiven);
    if (!areGiven) return;
    if (int number = 0; builder.Read(kNumberOfOutliers, number)) {
        builder.TestSettings().AddSetting(kNumberOfOutliers, number);
    } else {
        builder.Fail(kParameterMissing);
    }
}

}  // namespace

void PlanMoses(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const GroupedFields fields = PlanGroupedFields(builder, plan, kFieldCodes, AfterFailedTestField::kStop);
    builder.RequestOriginFrequencies(Origins::kOne);
    builder.TestSettings().AddSetting(kCaseIdVariableIndex, plan.GetCaseIdIndex());
    PlanOutliers(builder);
    PlanTwoGroups(builder, plan, fields.group, kParameterMissing);
    RequestGroupedFields(builder, plan, fields);
    builder.AddToSortedWorker<TARNMoses>(fields.test);
}

// ---- Passes ----

QKStatus TARNMoses::BeginPass() {
    if (passCounter == 0) {
        BeginRanking();
        return status;
    }
    if (status.IsError()) return status;
    passesRemaining = Passes() - passCounter;
    if (passCounter == 1) {
        for (const std::int64_t count : groupCounts) groupBoxes.emplace_back(count);
    }
    return status;
}

void TARNMoses::BeginRanking() {
    passesRemaining = Passes();
    ReadSettings();
    if (!status.IsError()) ValidateGroups();
    if (status.IsError()) return;
    groups.Prepare(split);
    groups.Prepare(caseIds);
    totalN = 0;
    groupCounts = {};
    rank.Reset();
    rank.KeepRanksOf(static_cast<std::int32_t>(TwoGroups::kFirst));
}

/// A test that its plan builder failed reads its settings too, so that its condition can show the fields.
void TARNMoses::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    settings->GetSettingValByName(kCaseIdVariableIndex, caseIdIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    groups.Read(*settings);
    settings->GetSettingValByName(kUserSpecifyNumberOfOutliers, userSpecifyNumberOfOutliers);
    int given = static_cast<int>(numberOfOutliers);
    if (userSpecifyNumberOfOutliers) settings->GetSettingValByName(kNumberOfOutliers, given);
    numberOfOutliers = given;
}

void TARNMoses::ValidateGroups() {
    if (userSpecifyNumberOfOutliers && numberOfOutliers < 1) {
        AddStatusMessage(QKStatus(kOutliersBelowOne), MessageKind::kError);
        return;
    }
    const QKStatus valid = groups.Validate(univariateResults, groupVariableIndex, kGroupsCodes);
    if (valid.IsError()) AddStatusMessage(valid, MessageKind::kError);
}

void TARNMoses::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(variableIndex);
    fieldIndices.push_back(groupVariableIndex);
}

QKStatus TARNMoses::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    const std::int32_t* const weights = weightIndex < 0 ? nullptr : batch.Weights(weightIndex);
    split.Take(batch, groupVariableIndex);
    if (passCounter == 0) {
        rank.AddAscending(values, weights, split.Groups(), split.Size());
        for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
            groupCounts[group] += split.WeightOf(static_cast<std::int32_t>(group), weights);
        }
        return status;
    }
    split.Part(values, weights);
    const bool hasCaseIds = passCounter == 2 && caseIdIndex >= 0;
    if (hasCaseIds) {
        caseIds.Take(batch, groupVariableIndex);
        caseIds.Part(batch.Values(caseIdIndex), nullptr);
    }
    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        const std::span<const double> parted = split.Values(group);
        if (passCounter == 1) {
            groupBoxes[group].AddAscendingToQuantiles(parted.data(), split.Weights(group), parted.size());
        } else {
            const double* const ids = hasCaseIds ? caseIds.Values(group).data() : nullptr;
            groupBoxes[group].AddAscendingToOutliers(parted.data(), ids, parted.size());
        }
    }
    return status;
}

QKStatus TARNMoses::EndPass() {
    split.Release();
    caseIds.Release();
    if (status.IsError()) return status;
    passesRemaining = Passes() - 1 - passCounter;
    if (passCounter == 0) {
        EndRanking();
        if (status.IsError()) return status;
    } else if (passCounter == 1) {
        for (GroupBoxPlot& box : groupBoxes) box.Finish();
    }
    ++passCounter;
    return status;
}

/// As defined a control case without weight has a rank, too, which can end a span; documents depend on it.
void TARNMoses::EndRanking() {
    for (std::int64_t& count : groupCounts) count = arithmetic.Count(count);
    const auto [m, n] = groupCounts;
    totalN = arithmetic.Count(m + n);
    if (totalN == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return;
    }
    if (m == 0 || n == 0) {
        AddStatusMessage(QKStatus(kGroupsCodes.groupEmpty), MessageKind::kError);
        return;
    }
    rank.CloseTieRun();
    const GroupRankStats& control = rank.GroupRanks(static_cast<std::int32_t>(TwoGroups::kFirst));
    ChooseNumberOfOutliers();
    observedSpan = Span(control.minRank, control.maxRank, arithmetic);
    trimmedSpan = TrimmedSpan(control.ranks, numberOfOutliers, arithmetic);
    observedSig = MosesSignificance(observedSpan, m, n, 0, arithmetic);
    trimmedSig = MosesSignificance(trimmedSpan, m, n, numberOfOutliers, arithmetic);
    rank.Reset();  // it holds every rank, and tests live as long as the document
}

void TARNMoses::ChooseNumberOfOutliers() {
    const std::int64_t m = groupCounts[TwoGroups::kFirst];
    if (!userSpecifyNumberOfOutliers) {
        const std::int64_t share = arithmetic.Truncated(static_cast<double>(m) * kShareTrimmed);
        numberOfOutliers = std::max<std::int64_t>(share, 1);
    } else if (2 * numberOfOutliers > m - 2) {
        AddMessage(
            {QKStatus(kOutliersReduced), MessageKind::kWarning, {IntToString(numberOfOutliers), IntToString(m)}, {}});
        numberOfOutliers = (m - 2) / 2;
    }
}

// ---- Element ----

QKXML::XMLElement* TARNMoses::MakeResultElement() {
    // The trimmed span decides alone.
    ResultElement element(Tests::kMoses, Decide(status, sigLevel, trimmedSig));
    element.AddCondition(groups.AreListed() ? kConditionOfLists : kConditionOfData,
                         {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalN);
    StructuredTable observed = statistics.Table(TableName::kObservedControlGroup);
    observed.Row(RowName::kTestStatistic, observedSpan);
    observed.Row(RowName::kExactSig1Tailed, observedSig);
    StructuredTable trimmed = statistics.Table(TableName::kTrimmedControlGroup);
    trimmed.Row(RowName::kTestStatistic, trimmedSpan);
    trimmed.Row(RowName::kExactSig1Tailed, trimmedSig);
    statistics.Row(RowName::kOutliersTrimmed, numberOfOutliers);

    StructuredTable boxPlots = element.AddTable(TableName::kBoxPlotInfo);
    boxPlots.Row(RowName::kGroupFieldIndex, groupVariableIndex);
    boxPlots.Row(RowName::kGroupCount, static_cast<std::int32_t>(groupCounts.size()));
    for (std::size_t group = 0; group < groupCounts.size(); ++group) {
        StructuredTable table = element.AddTable(GroupTableName(group));
        table.Row(RowName::kGroupIndex, JoinValues(groups.List(group)));
        table.Row(RowName::kN, groupCounts[group]);
        if (!isBrief) groupBoxes[group].AddTables(table);
    }
    return element.Release();
}
