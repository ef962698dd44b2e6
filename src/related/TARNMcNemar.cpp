// McNemar test on a pair of categorical fields.
//
// Question    Do as many cases change from success to failure as the other way?
// Data        Records that miss neither field of the pair. Success is a list of categories or, without one, the first
//             field's category in the first record.
// Statistic   (|a - b| - 1)^2 / (a + b), a and b the numbers of changes: chi-square with one degree of freedom. Beside
//             it the binomial significance of the smaller one for a + b below 26; it never decides.
// Source      McNemar (1947), Psychometrika 12, 153-157; continuity correction: Edwards (1948), Psychometrika 13,
//             185-187.
// Degenerate  a = b, no change and no case at all included: statistic 0, significance 1.

#include "related/TARNMcNemar.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "contract/TARNPlanBuilder.h"
#include "contract/TARNVariableInfo.h"
#include "platform/common/QKDistFun.h"
#include "related/BlockWeights.h"
#include "support/QKUnivariateVariable.h"
#include "support/QKVecValue.h"
#include "support/ResultElements.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "AllDistinctValuesUsed_R_McNemar_2";
constexpr const char* kConditionOfList = "CategoryListsAreSpecified_R_McNemar_2";

constexpr const char* kCategoriesList = "categoriesList";
constexpr const char* kSuccessListOriginal = "UserSpecifiedSuccessfulListOriginal";
constexpr const char* kSuccessListFirst = "UserSpecifiedSuccListVar0";
constexpr const char* kSuccessListSecond = "UserSpecifiedSuccListVar1";
constexpr const char* kFailListFirst = "UserSpecifiedFailListVar0";
constexpr const char* kFailListSecond = "UserSpecifiedFailListVar1";

constexpr long kNamesMissing = 221603_error;
constexpr long kBinomialFailed = 221605_error;
constexpr long kNoUnivariateResults = 221606_error;
constexpr long kCategoriesUnusable = 221609_error;
constexpr long kThirdCategory = 221610_error;
constexpr long kNoSuccessCategory = 221611_error;
constexpr long kExactBesideAsymptotic = 221612_help;
constexpr long kNotOfOneCategoricalKind = 221613_error;
constexpr long kNotAPair = 221614_error;

constexpr std::int32_t kDegreesOfFreedom = 1;

/// The statistic from the numbers of changes. Equal ones give 0, where the correction would give 1 / n.
double ChangeStatistic(double a, double b, double sum) {
    if (a == b) return 0.0;
    const double excess = std::fabs(a - b) - 1;
    return excess * excess / sum;
}

/// Twice the lower binomial tail of the smaller number of changes. `err` is that of the binomial function.
double ExactSignificance(double a, double b, double sum, int& err) {
    return std::min(2 * QKMath::QKDistFun::CdfBin(std::min(a, b), sum, 0.5, err), 1.0);
}

/// The weights of some records: of all, and of those in which a field succeeds.
struct SuccessWeights {
    std::int64_t total = 0;
    std::int64_t ofFirst = 0;
    std::int64_t ofSecond = 0;
    std::int64_t ofBoth = 0;
};

/// Without a branch: what is not in both classes at once follows from the sums.
template <typename Sum>
void AddBlock(const std::int32_t* weights, const std::uint32_t* firstSucceeds, const std::uint32_t* secondSucceeds,
              std::size_t count, SuccessWeights& sums) {
    Sum total = 0;
    Sum ofFirst = 0;
    Sum ofSecond = 0;
    Sum ofBoth = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const Sum weight = weights[i];
        total += weight;
        ofFirst += weight & -static_cast<Sum>(firstSucceeds[i]);
        ofSecond += weight & -static_cast<Sum>(secondSucceeds[i]);
        ofBoth += weight & -static_cast<Sum>(firstSucceeds[i] & secondSucceeds[i]);
    }
    sums.total += total;
    sums.ofFirst += ofFirst;
    sums.ofSecond += ofSecond;
    sums.ofBoth += ofBoth;
}

}  // namespace

// ---- Plan ----

namespace {

/// Writes the success categories as the settings gave them, and as what they are to each field of the pair.
template <typename Value>
void WriteSuccessList(const char* listKey, const std::vector<Value>& list, int first, int second,
                      const QKVarList& varList, QKSettings& settings) {
    const TARNVariableInfo info(varList);
    const std::vector<double> ofFirst = info.MapCategories(first, list);
    const std::vector<double> ofSecond = info.MapCategories(second, list);
    AddVecSetting(settings, listKey, list, false);
    AddVecSetting(settings, kSuccessListFirst, ofFirst, false);
    AddVecSetting(settings, kSuccessListSecond, ofSecond, false);
    AddVecSetting(settings, kFailListFirst, info.CategoriesNotIn(first, ofFirst), false);
    AddVecSetting(settings, kFailListSecond, info.CategoriesNotIn(second, ofSecond), false);
}

void PlanSuccessList(TARNPlanBuilder& builder, const QKVarList& varList, int first, int second) {
    std::vector<std::string> texts;
    builder.Read(kCategoriesList, texts);
    if (texts.empty()) {
        builder.Fail(kNoSuccessCategory);
        return;
    }
    QKSettings& settings = builder.TestSettings();
    AddVecSetting(settings, kSuccessListOriginal, texts, false);
    if (varList.GetVarAt(first)->GetKind() == FieldKind::kNumericCategories) {
        std::vector<double> values;
        builder.Read(kCategoriesList, values);
        WriteSuccessList(SettingKey::kSuccessCategoryListNum, values, first, second, varList, settings);
    } else {
        WriteSuccessList(SettingKey::kSuccessCategoryListStr, texts, first, second, varList, settings);
    }
    settings.AddSetting(SettingKey::kUserSpecifyGroupList, true);
}

void PlanPair(TARNPlanBuilder& builder, TARNPlan& plan, const std::vector<std::string>& names) {
    const QKVarList& varList = plan.GetVarList();
    const int first = varList.FindVariable(names[0]);
    const int second = varList.FindVariable(names[1]);
    // Written for a failed pair as well, so that its condition can show what was found.
    builder.TestSettings().AddSetting(SettingKey::kVariablePairFirstIndex, first);
    builder.TestSettings().AddSetting(SettingKey::kVariablePairSecondIndex, second);

    const IQKVariable* variable = varList.GetVarAt(first);
    if (variable == nullptr || !FieldKind::IsCategorical(variable->GetKind()) ||
        !TARNVariableInfo(varList).HaveSameKind(first, second)) {
        builder.Fail(kNotOfOneCategoricalKind);
        return;
    }
    plan.Request(first, Statistic::kFrequencies);
    plan.Request(second, Statistic::kFrequencies);
    std::string formation;
    if (builder.Read(SettingKey::kClassFormation, formation) && formation == ClassFormation::kGivenCategoryList) {
        PlanSuccessList(builder, varList, first, second);
    }
}

}  // namespace

void PlanMcNemar(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    std::vector<std::string> names;
    if (!builder.Read(SettingKey::kVariableName, names)) {
        builder.Fail(kNamesMissing);
    } else if (names.size() != 2) {
        builder.Fail(kNotAPair);
    } else {
        PlanPair(builder, plan, names);
    }
    builder.AddToMainWorker<TARNMcNemar>(CategoryMatcher(plan.GetVarList()));
}

// ---- Pass ----

QKStatus TARNMcNemar::BeginPass() {
    ReadSettings();
    if (!status.IsError()) PrepareCategories();
    if (!status.IsError()) passesRemaining = 1;
    return status;
}

void TARNMcNemar::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    settings->GetSettingValByName(SettingKey::kVariablePairFirstIndex, firstVariableIndex);
    settings->GetSettingValByName(SettingKey::kVariablePairSecondIndex, secondVariableIndex);
    settings->GetSettingValByName(SettingKey::kUserSpecifyGroupList, userSpecifyGroupList);
    if (!userSpecifyGroupList) return;
    settings->GetSettingValByName(SettingKey::kSuccessCategoryListNum, successListNum);
    settings->GetSettingValByName(SettingKey::kSuccessCategoryListStr, successListStr);
    settings->GetSettingValByName(kSuccessListOriginal, successListOriginal);
    settings->GetSettingValByName(kSuccessListFirst, successVar0);
    settings->GetSettingValByName(kSuccessListSecond, successVar1);
    settings->GetSettingValByName(kFailListFirst, failVar0);
    hasFailVar1 = settings->GetSettingValByName(kFailListSecond, failVar1);
}

void TARNMcNemar::PrepareCategories() {
    if (univariateResults == nullptr) {
        AddStatusMessage(QKStatus(kNoUnivariateResults), MessageKind::kError);
    } else if (userSpecifyGroupList) {
        success.SetList({firstVariableIndex, secondVariableIndex}, successListNum, successListStr);
        if (!success.HasSuccess()) AddStatusMessage(QKStatus(kNoSuccessCategory), MessageKind::kError);
    } else {
        CheckCategoriesOfData();
    }
}

void TARNMcNemar::CheckCategoriesOfData() {
    const auto classes = success.Categories().CheckTwoClasses(
        {firstVariableIndex, secondVariableIndex}, {univariateResults->GetCategoryCount(firstVariableIndex),
                                                    univariateResults->GetCategoryCount(secondVariableIndex)});
    if (classes == CategoryMatcher::Classes::kUnusable) {
        AddStatusMessage(QKStatus(kCategoriesUnusable), MessageKind::kError);
    } else if (classes == CategoryMatcher::Classes::kThirdSingleCategory) {  // two fields have no third one
        AddStatusMessage(QKStatus(kThirdCategory), MessageKind::kError);
    }
}

void TARNMcNemar::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(firstVariableIndex);
    fieldIndices.push_back(secondVariableIndex);
}

QKStatus TARNMcNemar::ProcessColumns(ColumnBatch& batch) {
    if (status.IsError()) return status;
    const std::int32_t* const first = batch.WholeNumbers(firstVariableIndex);
    const std::int32_t* const second = batch.WholeNumbers(secondVariableIndex);
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    if (!success.AreKnown()) success.SetFromFirst({firstVariableIndex, secondVariableIndex}, first[0]);

    std::array<std::uint32_t, BlockWeights::kRows> firstSucceeds;
    std::array<std::uint32_t, BlockWeights::kRows> secondSucceeds;
    SuccessWeights sums;
    for (std::size_t begin = 0; begin < batch.Size(); begin += BlockWeights::kRows) {
        const std::size_t count = std::min(BlockWeights::kRows, batch.Size() - begin);
        success.Of(0).Mark(first + begin, count, firstSucceeds.data());
        success.Of(1).Mark(second + begin, count, secondSucceeds.data());
        if (weightVariableIndex < 0 || BlockWeights::AreNarrow(weights + begin, count, 1)) {
            AddBlock<std::int32_t>(weights + begin, firstSucceeds.data(), secondSucceeds.data(), count, sums);
        } else {
            AddBlock<std::int64_t>(weights + begin, firstSucceeds.data(), secondSucceeds.data(), count, sums);
        }
    }
    bothSuccessCount += sums.ofBoth;
    successFailCount += sums.ofFirst - sums.ofBoth;
    failSuccessCount += sums.ofSecond - sums.ofBoth;
    bothFailCount += sums.total - sums.ofFirst - sums.ofSecond + sums.ofBoth;
    return status;
}

std::int64_t TARNMcNemar::Discordant() const {
    return arithmetic.Count(failSuccessCount + successFailCount);
}

QKStatus TARNMcNemar::EndPass() {
    for (std::int64_t* const count : {&failSuccessCount, &successFailCount, &bothSuccessCount, &bothFailCount}) {
        *count = arithmetic.Count(*count);
    }
    const auto toSuccess = static_cast<double>(failSuccessCount);
    const auto toFailure = static_cast<double>(successFailCount);
    const auto changes = static_cast<double>(Discordant());
    testStatistic = ChangeStatistic(toSuccess, toFailure, changes);
    asymptoticSig = std::min(ChiSquareSig(testStatistic, kDegreesOfFreedom, arithmetic), 1.0);
    if (Discordant() < kExactBelow) {
        AddStatusMessage(QKStatus(kExactBesideAsymptotic), MessageKind::kHelpMessage);
        int err = 0;
        const bool hasChange = failSuccessCount != 0 || successFailCount != 0;
        exactSig = hasChange ? ExactSignificance(toSuccess, toFailure, changes, err) : 1.0;
        if (err != 0) AddStatusMessage(QKStatus(kBinomialFailed), MessageKind::kError);
    }
    passesRemaining = 0;
    return status;
}

// ---- Element ----

QKXML::XMLElement* TARNMcNemar::MakeResultElement() {
    // The asymptotic significance decides, also where a smaller or larger exact one stands beside it.
    ResultElement element(Tests::kMcNemar, Decide(status, sigLevel, asymptoticSig));
    element.AddCondition(userSpecifyGroupList ? kConditionOfList : kConditionOfData,
                         {FieldOrMissing(firstVariableIndex), FieldOrMissing(secondVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, arithmetic.Count(Discordant() + bothSuccessCount + bothFailCount));
    statistics.Row(RowName::kTestStatistic, testStatistic);
    statistics.Row(RowName::kDegreeOfFreedom, kDegreesOfFreedom);
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);
    if (Discordant() < kExactBelow) statistics.Row(RowName::kExactSig2Tailed, exactSig);

    StructuredTable comparison = element.AddTable(TableName::kCategoryFieldsComparison);
    comparison.Row(RowName::kRowNames, firstVariableIndex);
    comparison.Row(RowName::kRowSuccessList, JoinValues(successVar0));
    comparison.AddUnknownCategories(TableName::kUnknownRowCategories, successVar0, successListOriginal);
    comparison.Row(RowName::kRowFailList, JoinValues(failVar0));
    comparison.Row(RowName::kColumnNames, secondVariableIndex);
    comparison.Row(RowName::kColumnSuccessList, JoinValues(successVar1));
    comparison.AddUnknownCategories(TableName::kUnknownColumnCategories, successVar1, successListOriginal);
    // The second field's failures are those that stand under the first field's key; documents depend on it.
    const bool areOwn = hasFailVar1 && arithmetic.TakesTextbook(failVar1 != failVar0);
    comparison.Row(RowName::kColumnFailList, JoinValues(areOwn ? failVar1 : failVar0));
    auto content = MakeSimpleTable(TableName::kContent, "", "");
    content->AddChild(MakeRowElement(JoinValues(std::vector{bothSuccessCount, successFailCount})));
    content->AddChild(MakeRowElement(JoinValues(std::vector{failSuccessCount, bothFailCount})));
    comparison.Add(std::move(content));
    return element.Release();
}
