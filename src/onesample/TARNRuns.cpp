// Runs test of the order of the values of a field.
//
// Question    Do the two classes of a field follow one another at random in file order?
// Data        Records that don't miss the field: below a cut point or not, or in a list of categories or not. A weight
//             adds to the size of a class, but a record adds one run at most.
// Statistic   The number of runs: normal approximation given the sizes n1 and n0 of the classes, with continuity
//             correction for fewer than 50 cases.
// Source      Wald and Wolfowitz (1940), Annals of Mathematical Statistics 11, 147-162.
// Degenerate  One class empty: an error.

#include "onesample/TARNRuns.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "contract/TARNPlanBuilder.h"
#include "contract/TARNVariableInfo.h"
#include "onesample/GivenCategories.h"
#include "platform/common/QKDistFun.h"
#include "platform/common/QKVarList.h"
#include "support/QKUnivariateVariable.h"
#include "support/QKVecValue.h"
#include "support/Significance.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "ABinaryTestVariableIsSpecified_O_Runs_3";
constexpr const char* kConditionOfCut = "ACutPointIsSpecified_O_Runs_2";
constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_O_Runs_3";

/// Values of "contVarClassFormation", which the test gets as "dataCutPoint".
constexpr const char* kCutAtMedian = "cutPointMedian";
constexpr const char* kCutAtMean = "cutPointMean";
constexpr const char* kCutAtValue = "cutPointValue";
/// One more of "dataCutPoint", of a categorical field; no plan builder writes it.
constexpr const char* kCutAtMode = "mode";

constexpr const char* kDataCutPoint = "dataCutPoint";
constexpr const char* kGroup2List = "group2List";
constexpr const char* kOriginalGroup1List = "originalGroup1List";
constexpr const char* kOriginalGroup2List = "originalGroup2List";
constexpr const char* kInvalidCategories = "GivenCategoryListInvalid";

constexpr long kSettingMissing = 220101_error;
constexpr long kUnknownField = 220103_error;
constexpr long kListMissing = 220109_error;
constexpr long kCutPointMissing = 220110_error;
constexpr long kNotTwoCategories = 220111_error;
constexpr long kEmptyClass = 220112_error;

constexpr double kCorrectedBelow = 50;

struct RunsDistribution {
    double mean;
    double stdDev;
};

/// The number of runs of two classes of n1 and n0 cases in random order.
RunsDistribution DistributionOfRuns(double n1, double n0) {
    const double n = n1 + n0;
    const double p = 2 * n1 * n0;
    return {p / n + 1, std::sqrt((p - n) * p / (n * n * (n - 1)))};
}

}  // namespace

// ---- Plan ----

namespace {

void PlanCutPoint(TARNPlanBuilder& builder, TARNPlan& plan, int field) {
    std::string formation;
    if (!builder.Read(OneSampleKey::kContinuousFormation, formation)) {
        builder.Fail(kSettingMissing);
        return;
    }
    builder.TestSettings().AddSetting(kDataCutPoint, formation);
    if (formation == kCutAtMedian) {
        plan.RegisterSorted(field);
        // Refused as long as no test that reads sorted records is planned; the cut is then missing.
        plan.Request(field, Statistic::kMedian);
    } else if (formation == kCutAtMean) {
        plan.Request(field, Statistic::kMean);
    } else if (formation != kCutAtValue) {
        builder.Fail(kSettingMissing);
    } else if (double cutPoint = 0; builder.Read(OneSampleKey::kCutPointValue, cutPoint)) {
        builder.TestSettings().AddSetting(OneSampleKey::kGivenCutPoint, cutPoint);
    } else {
        builder.Fail(kCutPointMissing);
    }
}

void PlanCategoryList(TARNPlanBuilder& builder, const QKVarList& varList, int field) {
    const std::vector<std::string> texts = ReadGivenCategories(builder);
    if (texts.empty()) {
        builder.Fail(kListMissing);
        return;
    }
    const std::vector<double> indices = MapGivenCategories(builder, varList, field);
    std::vector<double> known;
    std::vector<std::string> invalid;
    for (std::size_t i = 0; i < indices.size(); ++i) {
        if (indices[i] < 0) {
            invalid.push_back(texts[i]);
        } else {
            known.push_back(indices[i]);
        }
    }
    const std::vector<double> others = TARNVariableInfo(varList).CategoriesNotIn(field, known);
    QKSettings& settings = builder.TestSettings();
    AddVecSetting(settings, OneSampleKey::kGivenCategoryList, known, false);
    AddVecSetting(settings, kGroup2List, others, false);
    settings.AddSetting(kOriginalGroup1List, JoinCategoryTexts(varList, field, known));
    settings.AddSetting(kOriginalGroup2List, JoinCategoryTexts(varList, field, others));
    AddVecSetting(settings, kInvalidCategories, invalid, false);
}

void PlanCategories(TARNPlanBuilder& builder, const QKVarList& varList, int field) {
    constexpr int kTwo = 2;
    std::string formation;
    if (!builder.Read(OneSampleKey::kCategoricalFormation, formation)) {
        builder.Fail(kSettingMissing);
        return;
    }
    builder.TestSettings().AddSetting(SettingKey::kClassFormation, formation);
    if (formation == ClassFormation::kGivenCategoryList) {
        PlanCategoryList(builder, varList, field);
    } else if (formation == ClassFormation::kGetFromData && varList.GetVarAt(field)->GetCategoryCount() != kTwo) {
        builder.Fail(kNotTwoCategories);
    }
}

void PlanClasses(TARNPlanBuilder& builder, TARNPlan& plan) {
    std::string name;
    if (!builder.Read(SettingKey::kVariableName, name)) {
        builder.Fail(kSettingMissing);
        return;
    }
    const int field = plan.GetVarList().FindVariable(name);
    if (field < 0) {
        builder.Fail(kUnknownField, name);
        return;
    }
    const int measureLevel = plan.GetMeasureLevel(name);
    builder.TestSettings().AddSetting(SettingKey::kVariableIndex, field);
    builder.TestSettings().AddSetting(SettingKey::kMeasureLevel, measureLevel);
    if (FieldKind::IsCategorical(measureLevel)) {
        plan.Request(field, Statistic::kFrequencies);
        PlanCategories(builder, plan.GetVarList(), field);
    } else {
        PlanCutPoint(builder, plan, field);
    }
}

}  // namespace

void PlanRuns(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    PlanClasses(builder, plan);
    builder.AddToMainWorker<TARNRuns>();
}

// ---- Pass ----

/// A test that its plan builder failed comes through here as well and may show a second error beside the first.
QKStatus TARNRuns::BeginPass() {
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    int level = 0;
    settings->GetSettingValByName(SettingKey::kMeasureLevel, level);
    if (level == FieldKind::kContinuous) {
        measureKind = MeasureKind::kContinuous;
        PrepareContinuous();
    } else {
        PrepareCategorical();
    }
    settings->GetSettingValByName(kGroup2List, group2List);
    settings->GetSettingValByName(kInvalidCategories, invalidCategories);
    if (status.IsError()) return status;
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    lastClass = Class::kNone;
    runs = upperCount = lowerCount = 0;
    passesRemaining = 1;
    return status;
}

void TARNRuns::PrepareCategorical() {
    std::string formation;
    if (!settings->GetSettingValByName(kDataCutPoint, formation)) {
        settings->GetSettingValByName(OneSampleKey::kGivenCategoryList, group1List);
        group1 = CategorySet(group1List);
    } else if (formation == kCutAtMode && univariateResults != nullptr) {
        cutPoint = univariateResults->GetModeFrequency(variableIndex);
    }
}

void TARNRuns::PrepareContinuous() {
    std::string formation;
    if (!settings->GetSettingValByName(kDataCutPoint, formation)) return;
    const bool hasResults = univariateResults != nullptr;
    if (formation == kCutAtMedian) {
        if (hasResults) {
            cutPoint = univariateResults->GetMedian(variableIndex);
            arithmetic.Adopt(univariateResults->GetMedianDeparture(variableIndex));
        }
    } else if (formation == kCutAtMean) {
        if (hasResults) {
            cutPoint = univariateResults->GetMean(variableIndex);
            arithmetic.Adopt(univariateResults->GetMeanDeparture(variableIndex));
        }
    } else if (!settings->GetSettingValByName(OneSampleKey::kGivenCutPoint, cutPoint)) {
        AddStatusMessage(QKStatus(kCutPointMissing), MessageKind::kError);
    }
}

QKStatus TARNRuns::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    if (QKMV::IsMissing(cutPoint)) LearnClasses(values, batch.Size());
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    constexpr std::size_t kBlock = 1024;
    std::array<std::uint32_t, kBlock> areLower;
    for (std::size_t begin = 0; begin < batch.Size(); begin += kBlock) {
        const std::size_t count = std::min(kBlock, batch.Size() - begin);
        // The cut itself and a category in neither list belong to the upper class.
        if (measureKind == MeasureKind::kCategorical) {
            group1.Mark(batch.WholeNumbers(variableIndex) + begin, count, areLower.data());
        } else {
            for (std::size_t i = 0; i < count; ++i) {
                areLower[i] = static_cast<std::uint32_t>(values[begin + i] < cutPoint);
            }
        }
        AddClasses(areLower.data(), weights + begin, count);
    }
    return status;
}

namespace {

template <typename Counter>
struct ClassWeights {
    Counter total = 0;
    Counter lower = 0;

    ClassWeights(const std::uint32_t* areLower, const std::int32_t* weights, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            total += static_cast<Counter>(weights[i]);
            lower += static_cast<Counter>(weights[i]) & -static_cast<Counter>(areLower[i]);
        }
    }
};

}  // namespace

/// Without a branch: at random, where a run ends can't be foreseen. As defined a record of weight 0 makes a run like
/// any other; documents depend on it.
void TARNRuns::AddClasses(const std::uint32_t* areLower, const std::int32_t* weights, std::size_t count) {
    const bool isWide = weightVariableIndex >= 0 && !arithmetic.StaysNarrow(std::numeric_limits<std::int64_t>::max());
    if (isWide) {
        const ClassWeights<std::int64_t> sums(areLower, weights, count);
        lowerCount += sums.lower;
        upperCount += sums.total - sums.lower;
    } else {
        const ClassWeights<std::uint32_t> sums(areLower, weights, count);
        lowerCount += static_cast<std::int32_t>(sums.lower);
        upperCount += static_cast<std::int32_t>(sums.total - sums.lower);
    }
    auto begun = static_cast<std::uint32_t>(static_cast<std::uint32_t>(lastClass) != areLower[0]);
    for (std::size_t i = 1; i < count; ++i) begun += areLower[i] ^ areLower[i - 1];
    runs += begun;
    lastClass = static_cast<Class>(areLower[count - 1]);
}

/// Without a cut the first value makes the first class, unless there is a list, and the first other value the second
/// one. A continuous field without a cut comes here, too: its values then show as classes, but they all count as not
/// below the cut.
void TARNRuns::LearnClasses(const double* values, std::size_t count) {
    if (group1List.empty()) {
        group1List.push_back(values[0]);
        if (measureKind == MeasureKind::kCategorical) group1 = CategorySet(group1List);
    }
    if (!group2List.empty()) return;
    const auto isOther = [&](double value) { return value != group1List[0]; };
    const double* const other = std::find_if(values, values + count, isOther);
    if (other != values + count) group2List.push_back(*other);
}

/// The runs less their mean, 2 n1 n0 / n + 1.
double TARNRuns::RunsAboveMean() const {
    return arithmetic.Carefully([this] { return static_cast<double>(observedRuns) - expectedRuns; },
                                [this] {
                                    const Whole n = Whole(upperCount) + lowerCount;
                                    const Whole p = Whole(upperCount) * lowerCount * 2;
                                    return ((Whole(observedRuns) - 1) * n - p).Value() / n.Value();
                                });
}

QKStatus TARNRuns::EndPass() {
    lowerCount = arithmetic.Count(lowerCount);
    upperCount = arithmetic.Count(upperCount);
    if (upperCount < 1 || lowerCount < 1) {
        AddStatusMessage(QKStatus(kEmptyClass), MessageKind::kError);
        return status;
    }
    observedRuns = arithmetic.Count(runs);
    const auto n0 = static_cast<double>(upperCount);
    const auto n1 = static_cast<double>(lowerCount);
    const double n = n0 + n1;
    totalN = arithmetic.Truncated(n);
    const RunsDistribution expected = DistributionOfRuns(n1, n0);
    expectedRuns = expected.mean;
    expectedStdDev = standardError = expected.stdDev;

    double difference = RunsAboveMean();
    if (n < kCorrectedBelow) difference = CorrectForContinuity(difference);
    // Two cases have standard error 0, but no difference either.
    standardTestStatistic = difference == 0 ? 0.0 : difference / standardError;
    const double twoTails = 2 * QKMath::QKDistFun::CdfStdNorm(-std::fabs(standardTestStatistic));
    asymptoticSig = twoTails < 1.0 ? twoTails : 1.0;
    passesRemaining = 0;
    return status;
}

// ---- Element ----

void TARNRuns::AddCondition(ResultElement& element) const {
    if (!QKMV::IsMissing(cutPoint)) {
        element.AddCondition(kConditionOfCut, {IntToString(variableIndex), DoubleToString(cutPoint)});
        return;
    }
    // By what the list holds now: the first record fills it, so that classes from the data show the key of given
    // ones once a record has come. Documents depend on it.
    const char* key = group1List.empty() ? kConditionOfData : kConditionOfLists;
    std::vector<double> first = group1List;
    first.insert(first.end(), invalidCategories.size(), kMissingCategory);
    element.AddCondition(key, {IntToString(variableIndex), JoinValues(first), JoinValues(group2List)});
}

QKXML::XMLElement* TARNRuns::MakeResultElement() {
    ResultElement element(Tests::kRuns, Decide(status, sigLevel, asymptoticSig));
    AddCondition(element);
    element.AddUnknownCategories(std::vector<double>(invalidCategories.size(), kMissingCategory), invalidCategories);
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable parameters = element.AddTable(TableName::kRunsParameters);
    parameters.Row(RowName::kMean, expectedRuns);
    parameters.Row(RowName::kStdDev, expectedStdDev);
    parameters.Row(RowName::kObservedRunNumber, observedRuns);
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalN);
    statistics.Row(RowName::kTestStatistic, observedRuns);
    statistics.Row(RowName::kStandardError, standardError);
    statistics.Row(RowName::kStandardTestStatistic, standardTestStatistic);
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);
    return element.Release();
}
