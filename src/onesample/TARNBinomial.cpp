// Binomial test of the share of the first of two classes of a field.
//
// Question    Is the share of the first class the test probability p?
// Data        Records that don't miss the field. The classes lie on both sides of a cut point, or in and outside a list
//             of categories, or are the field's two categories, the first record's one first.
// Statistic   The number of records in the first class: binomial with p among all n. A normal approximation with
//             continuity correction decides; beside it for n below 26 the smaller tail of the binomial distribution.
//             Two-tailed, that is doubled, for p = 1/2 and one-tailed for any other p.
// Source      Bernoulli (1713), Ars Conjectandi; Yates (1934), Supplement to the Journal of the Royal Statistical
//             Society 1, 217-235.
// Degenerate  No case at all: an error. One class empty: nothing special.

#include "onesample/TARNBinomial.h"

#include <algorithm>
#include <cmath>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
#include "platform/common/QKMV.h"
#include "platform/common/QKPower.h"
#include "support/ResultElements.h"
#include "support/Significance.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr BinaryConditionKeys kConditionKeys{
    .fromData = "ABinaryTestVariableIsSpecified_O_Binomial_5",
    .givenList = "CategoryListsAreSpecified_O_Binomial_5",
    .cutPoint = "ACutPointIsSpecified_O_Binomial_4",
};

constexpr BinaryCodes kCodes{
    .nameMissing = 221314_error,
    .unknownField = 221303_error,
    .listMissing = 221312_error,
    .cutPointMissing = 221313_error,
    .noMeasureLevel = 221304_error,
    .continuousWithoutCut = 221315_error,
    .categoricalWithCut = 221316_error,
    .noFrequencies = 221306_error,
    .tooManyCategories = 221309_error,
    .noCategory = 221310_error,
};
constexpr long kProbabilityAboveObservedShare = 221311_help;
constexpr long kImproperProbability = 221317_error;

constexpr const char* kClassRows = "Observed;Hypothesized";

/// Whether the test is two-tailed. A probability ever so little beside 1/2 is another one.
bool IsOneHalf(double probability) {
    return std::fabs(probability - 0.5) < QKMath::QKPower::gMachineEpsilon;
}

/// The significance of one tail, or of both.
double OfTails(double tail, bool both) {
    return both ? std::min(2 * tail, 1.0) : tail;
}

/// The smaller tail of the binomial distribution from `count` on, `count` included; the missing value on a failure.
double SmallerTail(double count, double n, double probability, const Arithmetic& arithmetic) {
    int err = 0;
    const double lower = QKMath::QKDistFun::CdfBin(count, n, probability, err);
    if (err != 0) return QKMV::Missing();
    const double upper = arithmetic.UpperTail([&] { return QKMath::QKDistFun::CdfBin(count - 1, n, probability, err); },
                                              [&] { return QKMath::QKDistFun::SfBin(count - 1, n, probability, err); });
    if (err != 0) return QKMV::Missing();
    return std::min(lower, upper);
}

}  // namespace

// ---- Plan ----

void PlanBinomial(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    BinaryClassesPlan classes(builder, plan, kCodes);
    classes.ResolveField();
    classes.ReadFormation();
    double testProbability = 0;
    if (builder.IsOK() && builder.Read(OneSampleKey::kTestProbability, testProbability)) {
        builder.TestSettings().AddSetting(OneSampleKey::kTestProbability, testProbability);
    }
    classes.FinishClasses();
    builder.AddToMainWorker<TARNBinomial>();
}

// ---- Pass ----

QKStatus TARNBinomial::BeginPass() {
    passesRemaining = 1;
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    classes.ReadFormation(*settings);
    settings->GetSettingValByName(OneSampleKey::kTestProbability, testProbability);
    if (!(testProbability > 0 && testProbability < 1)) {
        AddStatusMessage(QKStatus(kImproperProbability), MessageKind::kError);
    }
    classes.ReadMeasureLevel(*settings);
    if (status.IsError()) return status;
    const QKStatus begun = classes.Begin(*settings, univariateResults, kCodes, arithmetic);
    if (begun.IsError()) AddStatusMessage(begun, MessageKind::kError);
    return status;
}

void TARNBinomial::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices = {classes.GetVariableIndex()};
}

QKStatus TARNBinomial::ProcessColumns(ColumnBatch& batch) {
    classes.Add(batch);
    return status;
}

QKStatus TARNBinomial::EndPass() {
    firstCount = arithmetic.Count(classes.GetFirstCount());
    secondCount = arithmetic.Count(classes.GetSecondCount());
    totalN = arithmetic.Count(classes.GetFirstCount() + classes.GetSecondCount());
    if (totalN == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return status;
    }
    twoTailed = IsOneHalf(testProbability);
    ComputeAsymptotic();
    if (totalN < kExactBelow) ComputeExact();
    if (!status.IsError()) {
        ComputePercentages();
        passesRemaining = 0;
    }
    return status;
}

void TARNBinomial::ComputeAsymptotic() {
    const double mean = static_cast<double>(totalN) * testProbability;
    standardError = std::sqrt((1 - testProbability) * mean);
    standardTestStatistic = CorrectForContinuity(static_cast<double>(firstCount) - mean) / standardError;
    asymptoticSig = OfTails(UpperTailOfNormal(std::fabs(standardTestStatistic), arithmetic), twoTailed);
}

void TARNBinomial::ComputeExact() {
    const double tail =
        SmallerTail(static_cast<double>(firstCount), static_cast<double>(totalN), testProbability, arithmetic);
    if (QKMV::IsMissing(tail)) {
        AddStatusMessage(QKStatus(StatusCode::kSignificanceFailed), MessageKind::kError);
    } else {
        exactSig = OfTails(tail, twoTailed);
    }
}

void TARNBinomial::ComputePercentages() {
    const auto n = static_cast<double>(totalN);
    percentages = {static_cast<double>(firstCount) / n * 100, static_cast<double>(secondCount) / n * 100,
                   testProbability * 100, (1 - testProbability) * 100};
    if (!twoTailed && percentages[2] > percentages[0]) {
        AddMessage({QKStatus(kProbabilityAboveObservedShare),
                    MessageKind::kHelpMessage,
                    {DoubleToString(testProbability)},
                    {}});
    }
}

// ---- Element ----

void TARNBinomial::AddCondition(ResultElement& element) const {
    const std::string probability = DoubleToString(testProbability);
    const std::string complement = DoubleToString(1 - testProbability);
    const char* key = classes.ConditionKey(kConditionKeys);
    if (classes.HasCutPoint()) {
        element.AddCondition(key, {classes.FieldParameter(), classes.FirstClassParameter(), probability, complement});
    } else {
        element.AddCondition(key, {classes.FieldParameter(), classes.FirstClassParameter(),
                                   classes.SecondClassParameter(), probability, complement});
    }
    classes.AddUnknownCategories(element);
}

QKXML::XMLElement* TARNBinomial::MakeResultElement() {
    // The asymptotic significance decides, also where an exact one is shown. Other tests of ours differ; documents
    // depend on both.
    ResultElement element(Tests::kBinomial, Decide(status, sigLevel, asymptoticSig));
    AddCondition(element);
    if (element.EndsWithMessages(messages, status)) return element.Release();

    auto content = MakeSimpleTable(TableName::kContent, kClassRows, Literal::kTwoColumns);
    content->AddChild(MakeRowElement(JoinValues(std::vector{percentages[0], percentages[1]})));
    content->AddChild(MakeRowElement(JoinValues(std::vector{percentages[2], percentages[3]})));
    element.AddTable(TableName::kTwoClassComparison).Add(std::move(content));

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalN);
    statistics.Row(RowName::kTestStatistic, firstCount);
    statistics.Row(RowName::kStandardError, standardError);
    statistics.Row(RowName::kStandardTestStatistic, standardTestStatistic);
    statistics.Row(twoTailed ? RowName::kAsymptoticSig2Tailed : RowName::kAsymptoticSig1Tailed, asymptoticSig);
    if (totalN < kExactBelow) {
        statistics.Row(twoTailed ? RowName::kExactSig2Tailed : RowName::kExactSig1Tailed, exactSig);
    }
    return element.Release();
}
