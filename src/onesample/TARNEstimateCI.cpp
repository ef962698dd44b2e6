// Confidence intervals for the share of the first of two classes of a field.
//
// Question    Between which bounds does the probability of the first class lie?
// Data        Records that don't miss the field, in the two classes of the binomial test.
// Statistic   The share x / n with up to three intervals: Clopper-Pearson, Jeffreys, profile likelihood.
// Source      As each function of onesample/ProportionIntervals.h says.
// Degenerate  No case at all: an error. An empty class: the limit on its side is exactly 0 or 1. No method asked for:
//             nothing is shown, the share neither.

#include "onesample/TARNEstimateCI.h"

#include <optional>

#include "contract/TARNPlanBuilder.h"
#include "support/ResultElements.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kClopperPearson = "ClopperPearson";
constexpr const char* kJeffreys = "Jeffreys";
constexpr const char* kProfileLikelihood = "ProfileLikelihood";
constexpr const char* kMethodRow = "computeECIMethod";

/// They bear the binomial test's name, by which hosts know them.
constexpr BinaryConditionKeys kConditionKeys{
    .fromData = "ABinaryTestVariableIsSpecified_O_Binomial_2",
    .givenList = "CategoryListsAreSpecified_O_Binomial_2",
    .cutPoint = "ACutPointIsSpecified_O_Binomial_2",
};

constexpr BinaryCodes kCodes{
    .nameMissing = 221513_error,
    .unknownField = 221503_error,
    .listMissing = 221511_error,
    .cutPointMissing = 221512_error,
    .noMeasureLevel = 221504_error,
    .continuousWithoutCut = 221514_error,
    .categoricalWithCut = 221515_error,
    .noFrequencies = 221506_error,
    .tooManyCategories = 221509_error,
    .noCategory = 221510_error,
};

}  // namespace

// ---- Plan ----

void PlanEstimateCI(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kBothLevels);
    BinaryClassesPlan classes(builder, plan, kCodes);
    classes.ResolveField();
    classes.ReadFormation();
    for (const char* method :
         {OneSampleKey::kIsDoClopperPearson, OneSampleKey::kIsDoJeffreys, OneSampleKey::kIsDoProfileLikelihood}) {
        bool isOn = false;
        if (builder.Read(method, isOn)) builder.TestSettings().AddSetting(method, isOn);
    }
    classes.FinishClasses();
    builder.AddToMainWorker<TARNEstimateCI>();
}

// ---- Pass ----

QKStatus TARNEstimateCI::BeginPass() {
    passesRemaining = 1;
    settings->GetSettingValByName(SettingKey::kConfidenceLevel, confidenceLevel);
    settings->GetSettingValByName(OneSampleKey::kIsDoClopperPearson, isDoClopperPearson);
    settings->GetSettingValByName(OneSampleKey::kIsDoJeffreys, isDoJeffreys);
    settings->GetSettingValByName(OneSampleKey::kIsDoProfileLikelihood, isDoProfileLikelihood);
    classes.ReadFormation(*settings);
    classes.ReadMeasureLevel(*settings);
    if (status.IsError()) return status;
    const QKStatus begun = classes.Begin(*settings, univariateResults, kCodes, arithmetic);
    if (begun.IsError()) AddStatusMessage(begun, MessageKind::kError);
    return status;
}

void TARNEstimateCI::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices = {classes.GetVariableIndex()};
}

QKStatus TARNEstimateCI::ProcessColumns(ColumnBatch& batch) {
    classes.Add(batch);
    return status;
}

QKStatus TARNEstimateCI::EndPass() {
    if (status.IsError()) return status;
    counts = {classes.GetFirstCount(), classes.GetSecondCount()};
    if (counts.first + counts.second == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return status;
    }
    if (isDoClopperPearson) clopperPearson = ClopperPearsonInterval(counts, confidenceLevel, arithmetic);
    if (isDoJeffreys) jeffreys = JeffreysInterval(counts, confidenceLevel, arithmetic);
    if (isDoProfileLikelihood) {
        const std::optional<ProportionInterval> limits = ProfileLikelihoodInterval(counts, confidenceLevel, arithmetic);
        if (limits) {
            profileLikelihood = *limits;
        } else {
            AddStatusMessage(QKStatus(StatusCode::kSignificanceFailed), MessageKind::kError);
        }
    }
    if (!status.IsError()) passesRemaining = 0;
    return status;
}

// ---- Element ----

void TARNEstimateCI::AddMethod(ResultElement& element, const char* name, const ProportionInterval& limits) const {
    StructuredTable table = element.AddTable(name);
    table.Row(kMethodRow, name);
    table.Row(RowName::kEstimate, counts.Share());
    StructuredTable asymptotic = table.Table(TableName::kAsymptotic);
    asymptotic.Row(RowName::kLower, limits.lower);
    asymptotic.Row(RowName::kUpper, limits.upper);
}

QKXML::XMLElement* TARNEstimateCI::MakeResultElement() {
    ResultElement element(Tests::kProportionIntervals, Decision::kUnknown);
    element.AddCondition(classes.ConditionKey(kConditionKeys),
                         {classes.FieldParameter(), classes.FirstClassParameter()});
    classes.AddUnknownCategories(element);
    if (element.EndsWithMessages(messages, status)) return element.Release();

    if (isDoClopperPearson) AddMethod(element, kClopperPearson, clopperPearson);
    if (isDoJeffreys) AddMethod(element, kJeffreys, jeffreys);
    if (isDoProfileLikelihood) AddMethod(element, kProfileLikelihood, profileLikelihood);
    return element.Release();
}
