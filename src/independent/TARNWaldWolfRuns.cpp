// Wald-Wolfowitz runs test of two independent groups.
//
// Question    Does a continuous field have the same distribution in two groups?
// Data        Records that miss neither field, in ascending order of the test field; those of neither group take no
//             part.
// Statistic   The number R of runs of group membership; too few of them speak against the hypothesis. With
//             t = 2 n1 n2 and N = n1 + n2 its mean is t / N + 1 and its variance (t - N) t / (N^2 (N - 1)); normal
//             approximation, with a continuity correction below N = 50, and up to N = 30 the exact share of the
//             arrangements with at most R runs. All are given for the smallest and for the largest number that equal
//             values of both groups allow; the asymptotic significance of the largest one decides.
// Source      Wald and Wolfowitz (1940), Annals of Mathematical Statistics 11, 147-162.
// Degenerate  An empty group: an error. One record in each group has no variance: an error.

#include "independent/TARNWaldWolfRuns.h"

#include <string>

#include "contract/TARNPlanBuilder.h"
#include "independent/RunsSignificance.h"
#include "platform/common/QKDistFun.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2";
constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_WaldWolfowitzRuns_2";
constexpr const char* kTwoCategoryLists = "twoCategoryLists";

constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 221411_error,
                                         .groupNameMissing = 221412_error,
                                         .unknownField = 221403_error,
                                         .testNotContinuous = 221404_error,
                                         .groupNotCategorical = 221404_error};
constexpr long kListsRefused = 221401_error;
constexpr long kNoFrequencies = 221406_error;
constexpr long kNotTwoCategories = 221409_error;
constexpr long kGroupEmpty = 221410_error;
constexpr long kTiesAcrossGroups = 221413_warning;

/// An exact significance is computed for at most so many cases.
constexpr std::int32_t kMostExact = 30;

bool AsksForLists(const QKSettings& settings) {
    std::string formation;
    settings.GetSettingValByName(SettingKey::kClassFormation, formation);
    return formation == kTwoCategoryLists;
}

}  // namespace

void PlanWaldWolfRuns(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const GroupedFields fields = PlanGroupedFields(builder, plan, kFieldCodes, AfterFailedTestField::kStillFindGroup);
    if (builder.IsOK() && AsksForLists(entry)) builder.Fail(kListsRefused);
    builder.RequestOriginFrequencies(Origins::kOne);
    RequestGroupedFields(builder, plan, fields);
    builder.AddToSortedWorker<TARNWaldWolfRuns>(fields.test);
}

// ---- Passes ----

QKStatus TARNWaldWolfRuns::BeginPass() {
    if (passCounter == 0) {
        BeginCounting();
    } else if (!status.IsError()) {
        for (GroupHistogram& variable : groupVariables) variable.Begin();
    }
    return status;
}

/// A test that its plan builder failed reads its fields too, so that its condition can show them.
void TARNWaldWolfRuns::BeginCounting() {
    passesRemaining = isBrief ? 1 : 2;
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    twoCategoryLists = AsksForLists(*settings);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    if (status.IsError()) return;
    const QKStatus read = ReadGroups();
    if (read.IsError()) AddStatusMessage(read, MessageKind::kError);
    groups.Prepare(split);
    runs = RunCounter(arithmetic);
}

QKStatus TARNWaldWolfRuns::ReadGroups() {
    if (!twoCategoryLists) {
        return groups.TakeCategoriesOfData(univariateResults, groupVariableIndex, kNoFrequencies, kNotTwoCategories);
    }
    std::vector<double> first;
    std::vector<double> second;
    settings->GetSettingValByName(SettingKey::kGroup1List, first);
    settings->GetSettingValByName(SettingKey::kGroup2List, second);
    if (first.empty() || second.empty()) return QKStatus(kGroupEmpty);
    groups = TwoGroups(std::move(first), std::move(second));
    return QKStatus();
}

QKStatus TARNWaldWolfRuns::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    const std::int32_t* const weights = batch.Weights(weightIndex);
    split.TakeExactly(batch, groupVariableIndex);
    if (passCounter == 1) {
        FillHistograms(split, values, weightIndex < 0 ? nullptr : weights, groupVariables);
        return status;
    }
    runs.Add(values, split.Groups(), weights, split.Size());
    if (!isBrief) ExtendRanges(split, values, groupVariables);
    return status;
}

QKStatus TARNWaldWolfRuns::EndPass() {
    split.Release();
    if (passCounter == 0) {
        EndCounting();
    } else {
        for (GroupHistogram& variable : groupVariables) variable.End();
    }
    if (status.IsError()) return status;
    ++passCounter;
    --passesRemaining;
    return status;
}

void TARNWaldWolfRuns::EndCounting() {
    runs.Close();
    const auto [n1, n2] = runs.Counts();
    const auto fail = [this](long code) { AddStatusMessage(QKStatus(code), MessageKind::kError); };
    // A group without a record counts as -1 here, so that a single case in all is no weight, while no record at all is
    // an empty group.
    if (TotalN() == 0) {
        fail(StatusCode::kNoRecords);
    } else if (n1 < 1 || n2 < 1) {
        fail(kGroupEmpty);
    } else if (!Compute(minimum, runs.MinRuns()) || !Compute(maximum, runs.MaxRuns())) {
        fail(StatusCode::kSignificanceFailed);
    } else if (runs.TieBlocks() >= 1) {
        AddMessage({QKStatus(kTiesAcrossGroups),
                    MessageKind::kWarning,
                    {IntToString(runs.TieBlocks()), IntToString(runs.TieCases())},
                    {}});
    }
}

/// False if anything has no value.
bool TARNWaldWolfRuns::Compute(RunsResult& result, std::int64_t number) const {
    const auto [n1, n2] = runs.Counts();
    const std::optional<RunsStatistic> statistic = RunsNormalStatistic(number, n1, n2, arithmetic);
    if (!statistic) return false;
    result.runs = number;
    result.standardError = statistic->standardError;
    result.z = statistic->z;
    result.sig = QKMath::QKDistFun::CdfStdNorm(statistic->z);  // of too few runs, though its row is called two-tailed
    if (!HasExact()) return true;
    const std::optional<double> exact = RunsExactSignificance(number, n1, n2);
    if (exact) result.exact = *exact;
    return exact.has_value();
}

bool TARNWaldWolfRuns::HasExact() const {
    const auto [n1, n2] = runs.Counts();
    return static_cast<double>(n1) + static_cast<double>(n2) <= kMostExact;
}

std::int64_t TARNWaldWolfRuns::TotalN() const {
    const auto [n1, n2] = runs.Counts();
    return arithmetic.Count(n1 + n2);
}

// ---- Element ----

QKXML::XMLElement* TARNWaldWolfRuns::MakeResultElement() {
    // The largest number of runs decides, and by its asymptotic significance where there is an exact one as well.
    ResultElement element(Tests::kWaldWolfowitz, Decide(status, sigLevel, maximum.sig));
    element.AddCondition(twoCategoryLists ? kConditionOfLists : kConditionOfData,
                         {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        StructuredTable table = element.AddTable(GroupTableName(group));
        table.Row(RowName::kGroupIndex, SizeToString(group));
        table.Row(RowName::kN, runs.Counts()[group]);
        if (!isBrief) groupVariables[group].AddIntervals(table);
    }
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, TotalN());
    AddResult(statistics, TableName::kMinimumPossible, minimum);
    AddResult(statistics, TableName::kMaximumPossible, maximum);
    return element.Release();
}

void TARNWaldWolfRuns::AddResult(StructuredTable& statistics, const char* name, const RunsResult& result) const {
    StructuredTable table = statistics.Table(name);
    table.Row(RowName::kTestStatistic, result.runs);
    table.Row(RowName::kStandardError, result.standardError);
    table.Row(RowName::kStandardTestStatistic, result.z);
    table.Row(RowName::kAsymptoticSig2Tailed, result.sig);
    if (HasExact()) table.Row(RowName::kExactSig2Tailed, result.exact);
}
