// Sign test on the differences of a pair of continuous fields.
//
// Question    Is a difference, second minus first, as often positive as negative?
// Data        Records that miss neither field of the pair; zero differences (ties) take no part in the test.
// Statistic   The number of positive differences: binomial with p = 1/2 among the n that are not zero. Exact for n
//             below 26, beside that a normal approximation with continuity correction.
// Source      Arbuthnott (1710), Philosophical Transactions 27, 186-190; Dixon and Mood (1946), Journal of the
//             American Statistical Association 41, 557-566.
// Degenerate  No case at all: an error. No difference but zeros: significance 1.

#include "related/TARNSign.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
#include "support/QKVecValue.h"
#include "support/ResultElements.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "R_Sign_2";

constexpr long kUnknownField = 220903_error;
constexpr long kNamesMissing = 220912_error;
constexpr long kFieldNotContinuous = 220915_error;
constexpr long kExactInPlaceOfAsymptotic = 220916_help;
constexpr long kMoreThanTwoFields = 220917_error;
constexpr long kNotAPair = 220918_error;

constexpr std::size_t kPairSize = 2;

/// Two-tailed binomial significance of `positive` successes among `n` with probability 1/2: twice the smaller tail.
double ExactSignificance(double positive, double n, const Arithmetic& arithmetic) {
    int ignored = 0;  // the arguments lie in the domain, or are the wrapped counts of absurd weights
    const double lower = QKMath::QKDistFun::CdfBin(positive, n, 0.5, ignored);
    const double upper =
        arithmetic.UpperTail([&] { return QKMath::QKDistFun::CdfBin(positive - 1.0, n, 0.5, ignored); },
                             [&] { return QKMath::QKDistFun::SfBin(positive - 1.0, n, 0.5, ignored); });
    return std::min(2 * (upper > lower ? lower : upper), 1.0);
}

}  // namespace

// ---- Plan ----

namespace {

/// The indices of the names that could be resolved. The walk ends at the first unknown name, but goes on after a field
/// of the wrong kind, so that each of them is named.
std::vector<int> ResolvePair(const std::vector<std::string>& names, const QKVarList& varList,
                             TARNPlanBuilder& builder) {
    std::vector<int> indices;
    for (const std::string& name : names) {
        const int field = varList.FindVariable(name);
        if (field < 0) {
            builder.Fail(kUnknownField, name);
            break;
        }
        indices.push_back(field);
        if (varList.GetVarAt(field)->GetKind() != FieldKind::kContinuous) {
            builder.Fail(kFieldNotContinuous, IntToString(field));
        }
    }
    if (builder.IsOK() && names.size() > kPairSize) builder.Fail(kMoreThanTwoFields);
    if (builder.IsOK() && names.size() < kPairSize) builder.Fail(kNotAPair);
    return indices;
}

}  // namespace

void PlanSign(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    std::vector<std::string> names;
    if (builder.Read(SettingKey::kVariableName, names)) {
        AddVecSetting(builder.TestSettings(), SettingKey::kVariableIndex,
                      ResolvePair(names, plan.GetVarList(), builder), false);
    } else {
        builder.Fail(kNamesMissing);
    }
    builder.RequestOriginFrequencies(Origins::kSeveral);
    if (builder.IsOK()) {
        // The positions in the pair are handed over here, not the field indices: the descriptives of the first two
        // fields of the list come into the document whatever the pair. Documents depend on it.
        for (int position = 0; position < static_cast<int>(kPairSize); ++position) plan.RequestSorted(position);
    }
    builder.AddToMainWorker<TARNSign>();
}

// ---- Passes ----

QKStatus TARNSign::BeginPass() {
    if (passCounter == 0) {
        BeginCounting();
    } else if (passCounter == 1 && !status.IsError()) {
        passesRemaining = 1;
        differences.BeginHistogram();
    }
    return status;
}

void TARNSign::BeginCounting() {
    passesRemaining = isBrief ? 1 : 2;
    ReadSettings();
    if (status.IsError()) return;
    if (firstVariableIndex < 0 || secondVariableIndex < 0 || firstVariableIndex == secondVariableIndex) {
        AddStatusMessage(QKStatus(kNotAPair), MessageKind::kError);
        return;
    }
    differences = PairDifferences(firstVariableIndex, secondVariableIndex, weightVariableIndex, arithmetic);
}

/// A test that its plan builder failed comes through here as well and may show a second error beside the first.
void TARNSign::ReadSettings() {
    if (!ReadPair(*settings, firstVariableIndex, secondVariableIndex)) {
        AddStatusMessage(QKStatus(kNotAPair), MessageKind::kError);
    }
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
}

void TARNSign::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(firstVariableIndex);
    fieldIndices.push_back(secondVariableIndex);
}

QKStatus TARNSign::ProcessColumns(ColumnBatch& batch) {
    if (passCounter == 1) {
        differences.AddToHistogram(batch);
        return status;
    }
    differences.ForParts(batch, [this](const double* values, const std::int32_t* weights, std::size_t count) {
        differences.Count(values, weights, count);
        if (!isBrief) differences.ExtendRange(values, count);
    });
    return status;
}

QKStatus TARNSign::EndPass() {
    if (status.IsError()) return status;
    if (passCounter == 0) {
        EndCounting();
    } else {
        passesRemaining = 0;
        differences.EndHistogram();
        ++passCounter;
    }
    return status;
}

void TARNSign::EndCounting() {
    totalN = differences.Total();
    positiveCount = differences.Positive();
    negativeCount = differences.Negative();
    if (totalN == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return;
    }
    passesRemaining = isBrief ? 0 : 1;
    const std::int64_t n = arithmetic.Count(positiveCount + negativeCount);
    if (n == 0) {
        asymptoticSig = 1.0;
    } else {
        if (n < kExactBelow) {
            AddStatusMessage(QKStatus(kExactInPlaceOfAsymptotic), MessageKind::kHelpMessage);
            hasExact = true;
            exactSig = ExactSignificance(static_cast<double>(positiveCount), static_cast<double>(n), arithmetic);
        }
        standardError = std::sqrt(static_cast<double>(n)) * 0.5;
        const double corrected =
            CorrectForContinuity(static_cast<double>(positiveCount) - static_cast<double>(n) * 0.5);
        standardTestStatistic = corrected == 0 ? 0.0 : corrected / standardError;
        asymptoticSig = TwoTailedNormal(standardTestStatistic, arithmetic);
    }
    ++passCounter;
}

// ---- Element ----

QKXML::XMLElement* TARNSign::MakeResultElement() {
    const Decision decision = Decide(status, sigLevel, hasExact ? exactSig : asymptoticSig);
    ResultElement element(Tests::kSign, decision);
    element.AddCondition(kConditionKey, {FieldOrMissing(firstVariableIndex), FieldOrMissing(secondVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    differences.AddDistribution(element, negativeCount, arithmetic.Count(totalN - negativeCount - positiveCount),
                                positiveCount, isBrief);
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalN);
    statistics.Row(RowName::kTestStatistic, positiveCount);
    statistics.Row(RowName::kStandardError, standardError);
    statistics.Row(RowName::kStandardTestStatistic, standardTestStatistic);
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);
    if (hasExact) statistics.Row(RowName::kExactSig2Tailed, exactSig);
    return element.Release();
}
