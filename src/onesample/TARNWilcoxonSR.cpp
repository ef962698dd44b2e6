// Wilcoxon signed rank test of one continuous field.
//
// Question    Is the field symmetric about a hypothesized median?
// Data        Records that don't miss the field. d is the value less the hypothesized median; zero differences take no
//             part in the ranks. Sums are of weights with their fractions, while the ranks are those of truncated ones;
//             the textbook's way takes truncated ones in both, as all other tests do.
// Statistic   Sum of the mid-ranks of |d| over the positive d. Normal approximation without continuity correction:
//             mean n (n + 1) / 4, variance (2 n + 1) n (n + 1) / 24 - sum of (t^3 - t) / 48 over the runs of t equal
//             |d|, n the weight of the differences that are not zero. There is no exact significance.
// Source      Wilcoxon (1945), Biometrics Bulletin 1, 80-83; tie correction: Lehmann (1975), Nonparametrics.
// Degenerate  No weight at all: an error. All values equal to the hypothesized median: 0/0, shown as "nan", retained.
//
// It looks like the test of a pair (related/TARNWilcoxonPairs) and differs in its weights, whose fractions count, and
// in n (n + 1), a product of doubles that doesn't wrap.

#include "onesample/TARNWilcoxonSR.h"

#include <cmath>
#include <limits>
#include <string>

#include "contract/TARNPlanBuilder.h"
#include "support/Significance.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "O_WilcoxonSignedRanks_2";

constexpr long kTestValueMissing = 220801_error;
constexpr long kUnknownField = 220803_error;
constexpr long kNameMissing = 220812_error;
constexpr long kFieldNotContinuous = 220815_error;

double RankProduct(double n) {
    return (n + 1) * n;
}

double TiedVariance(double n, double tieCorrectionSum) {
    return (2 * n + 1) * RankProduct(n) / 24 - tieCorrectionSum / 48;
}

// ---- Plan ----

/// The field's index, -1 if it is not found. That of a field of the wrong kind is written all the same.
int ResolveField(TARNPlanBuilder& builder, const QKVarList& varList) {
    std::string name;
    if (!builder.Read(SettingKey::kVariableName, name)) {
        builder.Fail(kNameMissing);
        return -1;
    }
    const int field = varList.FindVariable(name);
    if (field < 0) {
        builder.Fail(kUnknownField, name);
        return -1;
    }
    builder.TestSettings().AddSetting(SettingKey::kVariableIndex, field);
    if (varList.GetVarAt(field)->GetKind() != FieldKind::kContinuous) {
        builder.Fail(kFieldNotContinuous, IntToString(field));
    }
    return field;
}

void CopyTestValue(TARNPlanBuilder& builder) {
    bool isGiven = false;
    builder.Read(OneSampleKey::kUserSpecifyTestValue, isGiven);
    builder.TestSettings().AddSetting(OneSampleKey::kUserSpecifyTestValue, isGiven);
    if (double value = 0; builder.Read(OneSampleKey::kTestValue, value)) {
        builder.TestSettings().AddSetting(OneSampleKey::kTestValue, value);
    } else if (isGiven && builder.IsOK()) {
        builder.Fail(kTestValueMissing);
    }
}

}  // namespace

void PlanWilcoxonSR(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const int field = ResolveField(builder, plan.GetVarList());
    CopyTestValue(builder);
    builder.RequestOriginFrequencies(Origins::kOne);
    if (builder.IsOK()) {
        // As defined refused as long as no sorted test is planned: the median of the field is then the missing value.
        // Documents depend on it.
        plan.Request(field, Statistic::kMedian);
        plan.RequestSorted(field);
    }
    builder.AddToMainWorker<TARNWilcoxonSR>();
}

// ---- Pass ----

QKStatus TARNWilcoxonSR::BeginPass() {
    passesRemaining = 1;
    ReadSettings();
    if (status.IsError()) return status;
    if (!isBrief) histogram.SetUp(minValue, maxValue, Histogram::kDefaultBins);
    differences.Clear();
    totalWeight = 0;
    tieCount = 0;
    nonTiedWeight = 0;
    asymptoticSig = 0;
    return status;
}

/// A test that its plan builder failed reads its settings too, so that its condition can show them, and may get a
/// second error.
void TARNWilcoxonSR::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(OneSampleKey::kUserSpecifyTestValue, userSpecifyTestValue);
    if (univariateResults == nullptr) {
        AddStatusMessage(QKStatus(kTestValueMissing), MessageKind::kError);
    } else {
        observedMedian = univariateResults->GetMedian(variableIndex);
        arithmetic.Adopt(univariateResults->GetMedianDeparture(variableIndex));
        minValue = univariateResults->GetMin(variableIndex);
        maxValue = univariateResults->GetMax(variableIndex);
    }
    if (!userSpecifyTestValue) {
        testValue = observedMedian;  // a field against its own median is what the default means
    } else if (!settings->GetSettingValByName(OneSampleKey::kTestValue, testValue)) {
        AddStatusMessage(QKStatus(kTestValueMissing), MessageKind::kError);
    }
    testValueReady = true;
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
}

QKStatus TARNWilcoxonSR::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    const std::int32_t* const truncatedWeights = batch.Weights(weightVariableIndex);
    const double* weights = weightVariableIndex < 0 ? nullptr : batch.Values(weightVariableIndex);
    if (!isBrief) histogram.AddColumn(values, weights == nullptr ? nullptr : truncatedWeights, batch.Size());
    scratch.resize(batch.Size());
    for (std::size_t i = 0; i < scratch.size(); ++i) {
        const double difference = values[i] - testValue;
        // What is no number stands on the side of the negative ones, and behind all of them.
        scratch[i] = std::isnan(difference) ? -std::numeric_limits<double>::quiet_NaN() : difference;
    }
    if (weights != nullptr && arithmetic.TakesTextbook(HasFractions(weights, truncatedWeights))) {
        wholeWeights.assign(truncatedWeights, truncatedWeights + batch.Size());
        weights = wholeWeights.data();
    }
    AddWeights(weights, truncatedWeights);
    differences.Add(scratch.data(), weights, scratch.size(), false);
    return status;
}

/// Whether any weight is another one when it is truncated.
bool TARNWilcoxonSR::HasFractions(const double* weights, const std::int32_t* truncatedWeights) const {
    for (std::size_t i = 0; i < scratch.size(); ++i) {
        if (weights[i] != truncatedWeights[i]) return true;
    }
    return false;
}

/// One after another: fractions are rounded.
void TARNWilcoxonSR::AddWeights(const double* weights, const std::int32_t* truncatedWeights) {
    std::int64_t ties = 0;
    for (std::size_t i = 0; i < scratch.size(); ++i) {
        const double weight = weights == nullptr ? 1.0 : weights[i];
        ties += scratch[i] == 0 ? truncatedWeights[i] : 0;
        nonTiedWeight += scratch[i] != 0 ? weight : 0.0;
        totalWeight += weight;
    }
    tieCount += ties;
}

QKStatus TARNWilcoxonSR::EndPass() {
    passesRemaining = 0;
    if (status.IsError()) return status;
    if (totalWeight == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return status;
    }
    tieCount = arithmetic.Count(tieCount);
    if (!isBrief) histogram.Close();
    const SignedRanks ranks = RankSignedDifferences(differences, work, arithmetic);
    differences.Clear();  // it holds every record, and tests live as long as the document
    positiveRankSum = ranks.sumOfPositive;
    standardError = std::sqrt(TiedVariance(nonTiedWeight, ranks.tieCorrectionSum));
    standardTestStatistic = (positiveRankSum - RankProduct(nonTiedWeight) * 0.25) / standardError;
    asymptoticSig = TwoTailedNormal(standardTestStatistic, arithmetic);
    return status;
}

// ---- Element ----

QKXML::XMLElement* TARNWilcoxonSR::MakeResultElement() {
    ResultElement element(Tests::kWilcoxonOneSample, Decide(status, sigLevel, asymptoticSig));
    element.AddCondition(kConditionKey, {IntToString(variableIndex),
                                         testValueReady ? DoubleToString(testValue) : Literal::kMissingParameter});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    AddDistribution(element);
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalWeight);
    statistics.Row(RowName::kTestStatistic, positiveRankSum);
    statistics.Row(RowName::kStandardError, standardError);
    statistics.Row(RowName::kStandardTestStatistic, standardTestStatistic);
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);
    return element.Release();
}

void TARNWilcoxonSR::AddDistribution(ResultElement& element) const {
    StructuredTable distribution = element.AddTable(TableName::kContinuousDistribution);
    distribution.Row(RowName::kHypotheticalMedian, testValue);
    distribution.Row(RowName::kObservedMedian, observedMedian);
    if (isBrief) return;
    std::string counts;
    std::string columnValues;
    if (tieCount > 0) {
        // A first column for the values that equal the hypothesized median. It is the reverse of all others, a count of
        // 0 and the number of ties in the place of a value; presenting programs know it by that.
        counts = ";0";
        columnValues = ";" + IntToString(tieCount);
    }
    distribution.Add(MakeIntervalTable(histogram.Bins(), counts, columnValues));
}
