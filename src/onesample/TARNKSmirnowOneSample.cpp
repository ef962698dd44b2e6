// Kolmogorov-Smirnov test of one continuous field.
//
// Question    Does the field follow a normal, uniform, Poisson or exponential distribution?
// Data        Records that don't miss the field, in ascending order; values outside the distribution's range take no
//             part. The first pass estimates the parameters that are not given, the second one walks the values.
// Statistic   D, the largest distance of the sample's distribution function from the theoretical one, on both sides of
//             each step. Significance of z = sqrt(n) D by Kolmogorov's limit. That presumes given parameters; for a
//             normal distribution with all of them from the sample it is Lilliefors' instead, with D shown.
// Source      Kolmogorov (1933), Giornale dell'Istituto Italiano degli Attuari 4, 83-91; Smirnov (1948), Annals of
//             Mathematical Statistics 19, 279-281; Lilliefors (1967), Journal of the American Statistical Association
//             62, 399-402.
// Degenerate  No value in range, no spread, a mean that is not above 0: an error.

#include "onesample/TARNKSmirnowOneSample.h"

#include <array>
#include <cmath>

#include "contract/TARNPlanBuilder.h"
#include "onesample/LillieforsSignificance.h"
#include "platform/common/QKPower.h"
#include "support/CaseWeight.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr long kNameMissing = 220303_error;
constexpr long kFieldNotContinuous = 220304_error;
constexpr long kExponentFailed = 220305_error;
/// Of a single value, whose record is passed over: no message bears it, as the element reports all of them at once.
[[maybe_unused]] constexpr long kValueOutsideRange = 220308_warning;
constexpr long kNormalApproximation = 220309_help;
constexpr long kNoValueInUniformRange = 220310_error;
constexpr long kUniformOutliers = 220311_warning;
constexpr long kNotPoisson = 220312_error;
constexpr long kNotExponential = 220313_error;
constexpr long kExponentialOutliers = 220314_warning;
constexpr long kNoSpread = 220315_error;
constexpr long kNoRange = 220316_error;

/// From this mean on a Poisson distribution is taken for a normal one.
constexpr double kLargeMean = 100000;

struct DistributionRow {
    DistributionKind kind;
    const char* name;
    const char* conditionKey;
    /// The code for a sample of which no value is left.
    long noValues;
};

constexpr std::array kDistributions{
    DistributionRow{DistributionKind::kUniform, DistributionName::kUniform, "UniformDistribution_O_KolmogorovSmirnov_3",
                    kNoValueInUniformRange},
    DistributionRow{DistributionKind::kPoisson, DistributionName::kPoisson, "PoissonDistribution_O_KolmogorovSmirnov_2",
                    StatusCode::kNoRecords},
    DistributionRow{DistributionKind::kNormal, DistributionName::kNormal, "NormalDistribution_O_KolmogorovSmirnov_3",
                    StatusCode::kNoRecords},
    DistributionRow{DistributionKind::kExponential, DistributionName::kExponential,
                    "ExponentialDistribution_O_KolmogorovSmirnov_2", kNotExponential},
};

const DistributionRow& RowOf(DistributionKind kind) {
    return kDistributions[static_cast<std::size_t>(kind)];
}

bool IsAlmostEqual(double a, double b) {
    return QKMath::QKPower::AlmostEqual(a, b, QKMath::QKPower::gMachineEpsilon);
}

// ---- Plan ----

void CopyParameters(TARNPlanBuilder& builder) {
    QKSettings& settings = builder.TestSettings();
    bool isUseSample = false;
    if (builder.Read(OneSampleKey::kIsUseSample, isUseSample)) {
        settings.AddSetting(OneSampleKey::kIsUseSample, isUseSample);
    }
    if (isUseSample) {
        settings.AddSetting(OneSampleKey::kMean, QKMV::Missing());
        settings.AddSetting(OneSampleKey::kStdDev, QKMV::Missing());
        return;
    }
    for (const char* key : {OneSampleKey::kMax, OneSampleKey::kMin, OneSampleKey::kStdDev, OneSampleKey::kMean}) {
        if (double value = 0; builder.Read(key, value)) settings.AddSetting(key, value);
    }
}

/// The field's index, -1 if it is not found. That of a field of the wrong kind is written all the same.
int ResolveField(TARNPlanBuilder& builder, TARNPlan& plan) {
    std::string name;
    if (!builder.Read(SettingKey::kVariableName, name)) {
        builder.Fail(kNameMissing);
        return -1;
    }
    const int field = plan.GetVarList().FindVariable(name);
    if (field >= 0) builder.TestSettings().AddSetting(SettingKey::kVariableIndex, field);
    if (field < 0 || plan.GetMeasureLevel(name) != FieldKind::kContinuous) builder.Fail(kFieldNotContinuous, name);
    return field;
}

void PlanDistribution(const QKSettings& entry, TARNPlan& plan, const char* distribution) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    builder.TestSettings().AddSetting(OneSampleKey::kDistributionFunction, distribution);
    CopyParameters(builder);
    const int field = ResolveField(builder, plan);
    builder.RequestOriginFrequencies(Origins::kOne);
    if (builder.IsOK()) {
        builder.TestSettings().AddSetting(SettingKey::kMeasureLevel, FieldKind::kContinuous);
        plan.RequestSorted(field);  // with the range, the mean and the standard deviation for the document
    }
    builder.AddToSortedWorker<TARNKSmirnowOneSample>(field);
}

}  // namespace

void PlanKSmirnowNormal(const QKSettings& entry, TARNPlan& plan) {
    PlanDistribution(entry, plan, DistributionName::kNormal);
}
void PlanKSmirnowUniform(const QKSettings& entry, TARNPlan& plan) {
    PlanDistribution(entry, plan, DistributionName::kUniform);
}
void PlanKSmirnowPoisson(const QKSettings& entry, TARNPlan& plan) {
    PlanDistribution(entry, plan, DistributionName::kPoisson);
}
void PlanKSmirnowExponential(const QKSettings& entry, TARNPlan& plan) {
    PlanDistribution(entry, plan, DistributionName::kExponential);
}

// ---- Parameters ----

/// The second pass checks the parameters of a test in error too, whose code can so follow the first one.
QKStatus TARNKSmirnowOneSample::BeginPass() {
    if (IsFirstPass()) {
        ReadSettings();
        const QKStatus chosen =
            estimates.Choose(distribution, variableIndex, weightVariableIndex, status.IsError(), arithmetic);
        if (chosen.IsError()) AddStatusMessage(chosen, MessageKind::kError);
        if (!status.IsError()) passesRemaining = 2;
    } else {
        estimates.TakeInto(distribution);
        CheckParameters();
        passesRemaining = 1;
        walk = DifferenceWalk(distribution, totalN, arithmetic);
    }
    return status;
}

void TARNKSmirnowOneSample::ReadSettings() {
    std::string name;
    settings->GetSettingValByName(OneSampleKey::kDistributionFunction, name);
    for (const DistributionRow& row : kDistributions) {
        if (name == row.name) distribution.kind = row.kind;
    }
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    settings->GetSettingValByName(OneSampleKey::kIsUseSample, isUseSample);
    settings->GetSettingValByName(OneSampleKey::kMin, distribution.minimum);
    settings->GetSettingValByName(OneSampleKey::kMax, distribution.maximum);
    settings->GetSettingValByName(OneSampleKey::kMean, distribution.mean);
    settings->GetSettingValByName(OneSampleKey::kStdDev, distribution.stdDev);
}

void TARNKSmirnowOneSample::CheckParameters() {
    const auto fail = [this](long code) { AddStatusMessage(QKStatus(code), MessageKind::kError); };
    switch (distribution.kind) {
        case DistributionKind::kUniform:
            if (IsAlmostEqual(distribution.minimum, distribution.maximum)) fail(kNoRange);
            break;
        case DistributionKind::kNormal:
            if (distribution.stdDev <= 0) fail(kNoSpread);
            break;
        case DistributionKind::kExponential:
            if (distribution.mean <= 0) fail(kNotExponential);
            break;
        case DistributionKind::kPoisson:
            if (distribution.mean <= 0) fail(kNotPoisson);
            if (!status.IsError() && distribution.mean >= kLargeMean) {
                distribution.ApproximateByNormal();
                AddStatusMessage(QKStatus(kNormalApproximation), MessageKind::kHelpMessage);
            }
            break;
    }
}

// ---- Passes ----

QKStatus TARNKSmirnowOneSample::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    if (FitsAll()) return AddValues(values, weights, batch.Size());
    fittingValues.clear();
    fittingWeights.clear();
    double previous = QKMV::Missing();
    ValueFit fit = ValueFit::kGood;
    for (std::size_t i = 0; i < batch.Size(); ++i) {
        if (!(values[i] == previous)) fit = distribution.FitOf(values[i], estimates.HasRange());
        previous = values[i];
        if (fit == ValueFit::kGood) {
            fittingValues.push_back(values[i]);
            fittingWeights.push_back(weights[i]);
        } else if (IsFirstPass()) {
            Refuse(fit, values[i], weights[i]);
            if (fit == ValueFit::kNoCount) break;
        }
    }
    return AddValues(fittingValues.data(), fittingWeights.data(), fittingValues.size());
}

bool TARNKSmirnowOneSample::FitsAll() const {
    return distribution.kind == DistributionKind::kNormal ||
           (distribution.kind == DistributionKind::kUniform && estimates.HasRange());
}

QKStatus TARNKSmirnowOneSample::AddValues(const double* values, const std::int32_t* weights, std::size_t count) {
    if (!IsFirstPass()) {
        walk.Add(values, weights, count);
        return status;
    }
    weightSum += SumOfWeights(weights, count);
    estimates.Add({values, count}, weightVariableIndex < 0 ? nullptr : weights);
    return status;
}

/// A value outside the range is passed over and reported with the element; one that is no count stops the test.
void TARNKSmirnowOneSample::Refuse(ValueFit fit, double value, std::int32_t weight) {
    hasOutliers = true;
    outlierWeight += weight;
    if (fit != ValueFit::kNoCount) return;
    AddMessage({QKStatus(kNotPoisson), MessageKind::kError, {DoubleToString(value), IntToString(weight)}, {}});
}

QKStatus TARNKSmirnowOneSample::EndPass() {
    if (IsFirstPass()) {
        EndFirstPass();
    } else {
        walk.Close();
        ComputeSignificance();
        passesRemaining = 0;
    }
    return status;
}

void TARNKSmirnowOneSample::EndFirstPass() {
    const QKStatus ended = estimates.EndPass();
    if (ended.IsError()) AddStatusMessage(ended, MessageKind::kError);
    totalN = arithmetic.Count(weightSum);
    if (totalN > 0) return;
    AddStatusMessage(QKStatus(RowOf(distribution.kind).noValues), MessageKind::kError);
}

void TARNKSmirnowOneSample::ComputeSignificance() {
    const double difference = walk.Extremes().absolute;
    if (IsLilliefors()) {
        const LillieforsSignificance significance = LillieforsSignificanceOf(totalN, difference, arithmetic);
        asymptoticSig = significance.value;
        sigAtFloor = significance.isFloor;
        return;
    }
    zStatistic = std::sqrt(static_cast<double>(totalN)) * difference;
    const std::optional<double> significance = KolmogorovSignificance(zStatistic, arithmetic);
    if (significance) {
        asymptoticSig = *significance;
    } else {
        AddStatusMessage(QKStatus(kExponentFailed), MessageKind::kError);
    }
}

// ---- Element ----

/// A sample too small for a significance has the missing value there, which lies below every level: it rejects. In the
/// textbook's way nothing is rejected without a significance.
Decision TARNKSmirnowOneSample::Decided() {
    const Decision decision = Decide(status, sigLevel, asymptoticSig);
    const bool rejectsWithoutSignificance = decision == Decision::kReject && QKMV::IsMissing(asymptoticSig);
    return rejectsWithoutSignificance && arithmetic.TakesTextbook() ? Decision::kRetain : decision;
}

QKXML::XMLElement* TARNKSmirnowOneSample::MakeResultElement() {
    ResultElement element(Tests::kKolmogorovSmirnov, Decided());
    AddCondition(element);
    WarnOfRefusedValues();
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, arithmetic.Count(weightSum + outlierWeight));
    walk.Extremes().AddTable(statistics);
    statistics.Row(RowName::kTestStatistic, IsLilliefors() ? walk.Extremes().absolute : zStatistic);
    statistics.Row(RowName::kAsymptoticSig2Tailed, (sigAtFloor ? ">" : "") + NumberOrMissing(asymptoticSig));
    return element.Release();
}

void TARNKSmirnowOneSample::AddCondition(ResultElement& element) const {
    StructuredTable condition = element.AddCondition(RowOf(distribution.kind).conditionKey, {});
    const std::string field = IntToString(variableIndex);
    switch (distribution.kind) {
        case DistributionKind::kUniform:
            condition.AddParameters(
                {field, NumberOrMissing(distribution.minimum), NumberOrMissing(distribution.maximum)});
            break;
        case DistributionKind::kNormal:
            condition.Row(OneSampleKey::kIsUseSample, BoolToString(isUseSample));
            condition.AddParameters({field, DoubleToString(distribution.mean), DoubleToString(distribution.stdDev)});
            break;
        case DistributionKind::kPoisson:
        case DistributionKind::kExponential:
            condition.AddParameters({field, DoubleToString(distribution.mean)});
            break;
    }
}

void TARNKSmirnowOneSample::WarnOfRefusedValues() {
    const bool isUniform = distribution.kind == DistributionKind::kUniform;
    const bool isExponential = distribution.kind == DistributionKind::kExponential;
    if (!hasOutliers || totalN <= 0 || (!isUniform && !isExponential)) return;
    AddMessage({QKStatus(isUniform ? kUniformOutliers : kExponentialOutliers),
                MessageKind::kWarning,
                {IntToString(arithmetic.Count(outlierWeight))},
                {}});
}
