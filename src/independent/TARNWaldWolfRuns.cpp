// Wald-Wolfowitz runs test of two independent groups.
//
// Question    Do two groups come from the same distribution?
// Data        Records that miss neither field, in ascending order of the test field; those of neither group take no
//             part. n1 and n2 are the weighted sizes, N = n1 + n2.
// Statistic   The number of runs of one group in that order; ties across the groups leave it open between a fewest and
//             a most number, which are told both. Normal approximation of the lower tail: mean 2 n1 n2 / N + 1,
//             variance 2 n1 n2 (2 n1 n2 - N) / (N^2 (N - 1)), with a half added below 50 cases. Exact up to 30 cases.
//             The approximation for the most runs decides, also where an exact significance stands beside it.
// Source      Wald and Wolfowitz (1940), Annals of Mathematical Statistics 11, 147-162.
// Degenerate  An empty group: an error. One record in each group: no variance, an error.

#include "independent/TARNWaldWolfRuns.h"

#include <string>

#include "planning/StatusCodes.h"
#include "planning/contract/SettingKeys.h"
#include "planning/contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
#include "support/CaseWeight.h"
#include "support/Int32.h"

namespace {

constexpr const char* kTestName = "IWaldWolfowitzRuns";
constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2";
constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_WaldWolfowitzRuns_2";
constexpr const char* kTwoCategoryLists = "twoCategoryLists";

constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 221411,
                                         .groupNameMissing = 221412,
                                         .unknownField = 221403,
                                         .testNotContinuous = 221404,
                                         .groupNotCategorical = 221404};
constexpr long kListsRequested = 221401;
constexpr long kNoFrequencies = 221406;
constexpr long kNotTwoCategories = 221409;
constexpr long kGroupEmpty = 221410;
constexpr long kTiesAcrossGroups = 221413;

constexpr std::int32_t kMostCasesOfExactTest = 30;

bool WantsTwoLists(const std::string& classFormation) {
    return classFormation == kTwoCategoryLists;
}

}  // namespace

void PlanWaldWolfRuns(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const GroupedFields fields = PlanGroupedFields(builder, plan, kFieldCodes, AfterFailedTestField::kStillFindGroup);
    builder.RequestOriginFrequencies();
    std::string formation;
    builder.Read(SettingKey::kClassFormation, formation);
    if (builder.IsOK() && WantsTwoLists(formation)) builder.Fail(kListsRequested);
    RequestGroupedFields(builder, plan, fields);
    builder.AddToSortedWorker<TARNWaldWolfRuns>(fields.test);
}

// ---- Passes ----

QKStatus TARNWaldWolfRuns::BeginPass() {
    if (passCounter == 0) {
        passesRemaining = 2;
        ReadSettings();
        if (!status.IsError()) FormGroups();
        if (status.IsError()) passesRemaining = 0;
    } else if (!status.IsError()) {
        for (GroupHistogram& variable : groupVariables) variable.Begin();
    }
    return status;
}

/// A test that its plan builder failed reads its settings too, so that its condition can show the fields.
void TARNWaldWolfRuns::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    std::string formation;
    settings->GetSettingValByName(SettingKey::kClassFormation, formation);
    twoCategoryLists = WantsTwoLists(formation);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
}

void TARNWaldWolfRuns::FormGroups() {
    if (!twoCategoryLists) {
        const QKStatus taken =
            groups.TakeCategoriesOfData(univariateResults, groupVariableIndex, kNoFrequencies, kNotTwoCategories);
        if (taken.IsError()) AddStatusMessage(taken, MessageKind::kError);
        return;
    }
    std::vector<double> first;
    std::vector<double> second;
    settings->GetSettingValByName(SettingKey::kGroup1List, first);
    settings->GetSettingValByName(SettingKey::kGroup2List, second);
    if (first.empty() || second.empty()) AddStatusMessage(QKStatus(kGroupEmpty), MessageKind::kError);
    groups = TwoGroups(std::move(first), std::move(second));
}

void TARNWaldWolfRuns::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices = {variableIndex, groupVariableIndex};
}

QKStatus TARNWaldWolfRuns::ProcessRecord(Record& record) {
    const std::size_t group = groups.GroupOf(record[static_cast<std::size_t>(groupVariableIndex)]);
    if (group == TwoGroups::kNeither) return status;
    const double value = record[static_cast<std::size_t>(variableIndex)];
    const std::int32_t weight = CaseWeight(record, weightIndex);
    if (passCounter == 1) {
        groupVariables[group].Add(value, weight);
        return status;
    }
    groupVariables[group].ExtendRange(value);
    counter.Add(value, weight, group);
    return status;
}

QKStatus TARNWaldWolfRuns::EndPass() {
    if (status.IsError()) return status;
    if (passCounter == 0) {
        EndCounting();
    } else {
        for (GroupHistogram& variable : groupVariables) variable.End();
    }
    if (status.IsError()) {
        passesRemaining = 0;
    } else {
        --passesRemaining;
        ++passCounter;
    }
    return status;
}

std::int32_t TARNWaldWolfRuns::TotalN() const {
    return Add32(counter.GroupCount(TwoGroups::kFirst), counter.GroupCount(TwoGroups::kSecond));
}

bool TARNWaldWolfRuns::HasExactSignificance() const {
    return TotalN() <= kMostCasesOfExactTest;
}

void TARNWaldWolfRuns::EndCounting() {
    counter.Finish();
    const auto fail = [&](long code) { AddStatusMessage(QKStatus(code), MessageKind::kError); };
    // A group without a record counts as -1 here, so that one such group beside a single case adds up to 0, too.
    if (TotalN() == 0) return fail(StatusCode::kNoRecords);
    if (counter.GroupCount(TwoGroups::kFirst) < 1 || counter.GroupCount(TwoGroups::kSecond) < 1) {
        return fail(kGroupEmpty);
    }
    fewest = Evaluate(counter.FewestRuns());
    most = Evaluate(counter.MostRuns());
    for (const RunResult* result : {&fewest, &most}) {
        for (const double value : {result->statistics.standardError, result->statistics.z, result->exactSig}) {
            if (QKMV::IsMissing(value)) return fail(StatusCode::kSignificanceFailed);
        }
    }
    if (counter.TieBlocks() < 1) return;
    AddMessage({QKStatus(kTiesAcrossGroups),
                MessageKind::kWarning,
                {IntToString(counter.TieBlocks()), IntToString(counter.TieCases())},
                {}});
}

TARNWaldWolfRuns::RunResult TARNWaldWolfRuns::Evaluate(std::int32_t runs) const {
    const std::int32_t n1 = counter.GroupCount(TwoGroups::kFirst);
    const std::int32_t n2 = counter.GroupCount(TwoGroups::kSecond);
    RunResult result;
    result.runs = runs;
    result.statistics = NormalRunStatistics(n1, n2, runs);
    result.sig = QKMath::QKDistFun::CdfStdNorm(result.statistics.z);
    if (HasExactSignificance()) result.exactSig = ExactRunSignificance(n1, n2, runs);
    return result;
}

// ---- Element ----

QKXML::XMLElement* TARNWaldWolfRuns::MakeResultElement() {
    ResultElement element(kTestName, ResultType::kHypothesisTest, TestFamily::kIndependentSamples,
                          Decide(status, sigLevel, most.sig));
    element.AddCondition(twoCategoryLists ? kConditionOfLists : kConditionOfData,
                         {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        StructuredTable table = element.AddTable(GroupTableName(group));
        table.Row(RowName::kGroupIndex, static_cast<std::int32_t>(group));
        table.Row(RowName::kN, counter.GroupCount(group));
        groupVariables[group].AddIntervals(table);
    }
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, TotalN());
    AddResult(statistics.Table(TableName::kMinimumPossible), fewest);
    AddResult(statistics.Table(TableName::kMaximumPossible), most);
    return element.Release();
}

void TARNWaldWolfRuns::AddResult(StructuredTable statistics, const RunResult& result) const {
    statistics.Row(RowName::kTestStatistic, result.runs);
    statistics.Row(RowName::kStandardError, result.statistics.standardError);
    statistics.Row(RowName::kStandardTestStatistic, result.statistics.z);
    statistics.Row(RowName::kAsymptoticSig2Tailed, result.sig);
    if (HasExactSignificance()) statistics.Row(RowName::kExactSig2Tailed, result.exactSig);
}
