#include "related/RankedRows.h"

#include <cmath>
#include <string>

#include "support/CaseWeight.h"
#include "support/ComparisonTables.h"
#include "support/Int32.h"
#include "support/QKUnivariateVariable.h"
#include "support/QKVecValue.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

// ---- Formulas ----

namespace {

constexpr std::int32_t kFewestFields = 2;
constexpr std::int32_t kFewestToCompare = 3;

/// k (k + 1) n and (k - 1) (k + 1) k n, 32 bits wide by definition; docs/limits.md says what a user sees.
double RankProduct(std::int32_t k, std::int32_t n) {
    return Multiply32(Multiply32(k, Add32(k, 1)), n);
}
double TieProduct(std::int32_t k, std::int32_t n) {
    return Multiply32(Multiply32(Multiply32(Subtract32(k, 1), Add32(k, 1)), k), n);
}

double SumOfSquares(const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) sum += value * value;
    return sum;
}

/// The statistic of a subset. No tie correction reaches it, which is intended: documents depend on it. The test with
/// which a subset is compared is Friedman's in both tests; no W is computed for a subset.
double SubsetChiSquare(const SubsetRecord& subset, std::int32_t n) {
    const auto m = static_cast<std::int32_t>(subset.Size());
    return (12 * SumOfSquares(subset.sums) / RankProduct(m, n) - 3.0 * n * (m + 1.0)) /
           (1 - subset.tieTerm / TieProduct(m, n));
}

}  // namespace

double FriedmanChiSquare(const std::vector<double>& rankSums, std::int32_t n, double tieSum) {
    const auto k = static_cast<std::int32_t>(rankSums.size());
    const double a = 12 / RankProduct(k, n);
    const double b = 1 - tieSum / TieProduct(k, n);
    if (b == 0) return 0;  // all rows constant
    return (a * SumOfSquares(rankSums) - 3.0 * n * (k + 1.0)) / b;
}

// ---- Plan ----

namespace {

void PlanFields(TARNPlanBuilder& builder, const QKVarList& varList, const RankedRowsTest& test) {
    std::vector<std::string> names;
    if (!builder.Read(SettingKey::kVariableName, names)) {
        builder.Fail(test.namesMissing);
        return;
    }
    const std::vector<int> indices = builder.ResolveFields(names, test.unknownField);
    AddVecSetting(builder.TestSettings(), SettingKey::kVariableIndex, indices, false);
    if (builder.IsOK() && names.size() < kFewestFields) builder.Fail(test.tooFewFields);
    for (std::size_t i = 0; builder.IsOK() && i < indices.size(); ++i) {
        if (varList.GetVarAt(indices[i])->GetKind() != FieldKind::kContinuous) {
            builder.Fail(test.notContinuous, IntToString(indices[i]));
        }
    }
}

void RequestDescriptives(const TARNPlanBuilder& builder, TARNPlan& plan) {
    std::vector<std::string> names;
    builder.Read(SettingKey::kVariableName, names);
    for (const std::string& name : names) {
        for (const int statistic :
             {Statistic::kHistogram, Statistic::kMin, Statistic::kMax, Statistic::kMean, Statistic::kMeanAndStdDev}) {
            plan.Request(plan.GetVarList().FindVariable(name), statistic);
        }
    }
}

}  // namespace

void PlanRankedRows(TARNPlanBuilder& builder, TARNPlan& plan, const RankedRowsTest& test) {
    PlanFields(builder, plan.GetVarList(), test);
    builder.ReadComparison(test.rules, test.comparisonMissing);
    if (builder.IsOK()) RequestDescriptives(builder, plan);
    builder.RequestOriginFrequencies(Origins::kSeveral);
}

// ---- Passes ----

QKStatus RankedRows::BeginPass() {
    if (state == State::kOverall) {
        ReadSettings();  // of a test that its plan builder failed, too, so that its condition can show the fields
        if (status.IsError()) return status;
        n = 0;
        tieSum = 0;
        chiSquare = 0;
        k = static_cast<std::int32_t>(variableIndices.size());
        row.assign(variableIndices.size(), 0.0);
        rankSums.assign(variableIndices.size(), 0.0);
        meanRanks.assign(variableIndices.size(), 0.0);
        rankFrequencies.assign(variableIndices.size(), RankFrequencies());
        if (k < kFewestFields) AddStatusMessage(QKStatus(kind.tooFewFields), MessageKind::kError);
        passesRemaining = comparison.stepwise ? k : 1;
    } else if (state == State::kBeforeSteps) {
        orderedSamples = OrderSamples(meanRanks);
        steps.Begin(orderedSamples.size(), orderedSamples.size());
        state = State::kSteps;
    }
    return status;
}

void RankedRows::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndices);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    comparison = ComparisonRequest::OfTest(*settings, kind.rules.wanted);
}

void RankedRows::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.insert(fieldIndices.end(), variableIndices.begin(), variableIndices.end());
}

QKStatus RankedRows::ProcessRow(const Record& record) {
    const std::int32_t weight = CaseWeight(record, weightVariableIndex);
    const auto valueOf = [&](std::size_t sample) { return record[static_cast<std::size_t>(variableIndices[sample])]; };
    if (state == State::kOverall) {
        for (std::size_t i = 0; i < row.size(); ++i) row[i] = valueOf(i);
        rowRanks.Sort(row);
        AddToOverall(weight);
    } else if (state == State::kSteps) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = valueOf(static_cast<std::size_t>(orderedSamples[i].sample));
        }
        rowRanks.Sort(row);
        AddToCandidates(weight);
    }
    return QKStatus();
}

/// A weight of 0 adds nothing but the entries of its ranks.
void RankedRows::AddToOverall(std::int32_t weight) {
    n = Add32(n, weight);
    if (row.empty()) return;
    tieSum += rowRanks.Rank(0, row.size() - 1) * weight;
    for (std::size_t i = 0; i < row.size(); ++i) {
        rankSums[i] += weight * rowRanks.At(i);
        rankFrequencies[i].Add(rowRanks.At(i), weight);
    }
}

void RankedRows::AddToCandidates(std::int32_t weight) {
    for (SubsetRecord& subset : steps.Candidates()) {
        rowRanks.Rank(subset.firstPosition, subset.lastPosition);
        for (std::size_t i = 0; i < subset.sums.size(); ++i) {
            subset.sums[i] += weight * rowRanks.At(subset.firstPosition + i);
        }
    }
}

QKStatus RankedRows::EndPass() {
    if (state == State::kOverall) {
        EndOverall();
    } else if (state == State::kSteps) {
        EndStep();
    }
    return status;
}

void RankedRows::EndOverall() {
    if (n == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return;
    }
    for (std::size_t i = 0; i < rankSums.size(); ++i) meanRanks[i] = rankSums[i] / n;
    chiSquare = FriedmanChiSquare(rankSums, n, tieSum);
    sig = ChiSquareSig(chiSquare, k - 1.0);
    if (comparison.pairwise || comparison.stepwise) Compare();
}

void RankedRows::Compare() {
    const bool isSignificant = sigLevel > sig;
    if (!isSignificant || k < kFewestToCompare) {
        AddMessages(comparison.Refuse(isSignificant ? kind.tooFewToCompare : kind.notSignificant));
        passesRemaining = 0;
    } else if (comparison.pairwise) {
        ComparePairs();
    } else {
        --passesRemaining;
        state = State::kBeforeSteps;
    }
}

void RankedRows::ComparePairs() {
    const double standardError = std::sqrt(static_cast<double>(k) * (k + 1.0) / (6.0 * n));
    pairwiseResults = CompareNormalPairs(rankSums.size(), standardError,
                                         [&](std::size_t i, std::size_t j) { return (rankSums[i] - rankSums[j]) / n; });
    pairwiseDone = true;
}

void RankedRows::EndStep() {
    AddMessages(steps.EndPass(sigLevel, [&](SubsetRecord& subset) {
        subset.statistic = SubsetChiSquare(subset, n);
        subset.sig = ChiSquareSig(subset.statistic, static_cast<double>(subset.Size()) - 1);
        return StepwiseComparison::Outcome::kComputed;
    }));
    --passesRemaining;
    if (!steps.IsDone()) return;
    passesRemaining = 0;
    state = State::kFinished;
}

// ---- Element ----

QKXML::XMLElement* RankedRows::MakeResultElement() {
    ResultElement element(kind.facts, Decide(status, sigLevel, sig));
    element.AddCondition(kind.conditionKey, {JoinValues(variableIndices)});
    if (status.IsError() && element.EndsWithMessages(messages, status)) return element.Release();

    AddFields(element);
    if (pairwiseDone) {
        AddPairwiseResult(element, kind.rules, {{}, JoinValues(variableIndices), JoinValues(meanRanks)},
                          pairwiseResults);
    }
    if (steps.IsDone()) {
        AddMessages(AddStepwiseResult(element, steps, FieldsInOrder(variableIndices, orderedSamples)));
    }
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, n);
    AddStatistic(statistics);
    statistics.Row(RowName::kDegreeOfFreedom, Subtract32(k, 1));
    statistics.Row(RowName::kAsymptoticSig2Tailed, sig);
    // Behind everything, unlike in other tests.
    (void)element.EndsWithMessages(messages, status);
    return element.Release();
}

void RankedRows::AddFields(ResultElement& element) const {
    for (std::size_t position = 0; position < rankFrequencies.size(); ++position) {
        StructuredTable field = element.AddTable(TableName::kVariableInformation + SizeToString(position));
        field.Row(RowName::kGroupIndex, variableIndices[position]);
        field.Row(RowName::kMeanOfRank, meanRanks[position]);
        std::vector<double> weights;
        std::vector<double> ranks;
        for (const auto& [rank, weight] : rankFrequencies[position].Entries()) {
            ranks.push_back(rank);
            weights.push_back(weight);
        }
        field.Add(MakeIntervalTable(JoinValues(weights), JoinValues(ranks)));
    }
}
