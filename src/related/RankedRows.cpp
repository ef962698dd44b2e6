#include "related/RankedRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <string>

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

/// Up to this length of a row, and from this number of rows on, comparing all values of a row with one another beats
/// sorting them.
constexpr std::size_t kMostCounted = 16;
constexpr std::size_t kFewestCounted = 32;

/// k (k + 1) n and (k - 1) (k + 1) k n, 32 bits wide as defined; docs/limits.md says what a user sees.
double RankProduct(std::size_t k, std::int64_t n, const Arithmetic& arithmetic) {
    return arithmetic.Signed32(Whole(k) * (Whole(k) + 1) * n);
}
Whole TieProduct(std::size_t k, std::int64_t n) {
    return (Whole(k) - 1) * (Whole(k) + 1) * k * n;
}

/// One less the share of ties. Without any the width of the product shows only where nothing is left of it.
double TieFactor(std::size_t k, std::int64_t n, double tieSum, const Arithmetic& arithmetic) {
    const Whole product = TieProduct(k, n);
    if (tieSum == 0 && static_cast<std::uint32_t>(product.Bits()) != 0) return 1;
    const double divisor = arithmetic.Signed32(product);
    return arithmetic.Carefully([=] { return 1 - tieSum / divisor; },
                                [=] { return (product.Value() - tieSum) / product.Value(); });
}

double SumOfSquares(const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) sum += value * value;
    return sum;
}

/// What the statistic subtracts.
double Subtrahend(std::size_t k, std::int64_t n) {
    return 3.0 * static_cast<double>(n) * (static_cast<double>(k) + 1);
}

/// Of sums of ranks the squared distances from what is expected of each, four times as large and so whole.
long double SquaredDistances(const std::vector<std::int64_t>& twiceRankSums, std::int64_t n) {
    const std::int64_t twiceExpected = n * (static_cast<std::int64_t>(twiceRankSums.size()) + 1);
    long double sum = 0;
    for (const std::int64_t twice : twiceRankSums) {
        const auto distance = static_cast<long double>(twice - twiceExpected);
        sum += distance * distance;
    }
    return sum;
}

/// The statistic of a subset without a correction for ties. The test with which a subset is compared is Friedman's in
/// both tests; no W is computed for a subset.
double SubsetChiSquare(const RankSums& ranks, std::int64_t n, const Arithmetic& arithmetic) {
    const std::size_t m = ranks.sums.size();
    const double product = RankProduct(m, n, arithmetic);
    const double statistic =
        arithmetic.Carefully([&] { return 12 * SumOfSquares(ranks.sums) / product - Subtrahend(m, n); },
                             [&] { return 3 * SquaredDistances(ranks.twice, n) / product; });
    return statistic / TieFactor(m, n, 0, arithmetic);
}

}  // namespace

double FriedmanChiSquare(const RankSums& ranks, std::int64_t n, double tieSum, const Arithmetic& arithmetic) {
    const std::size_t k = ranks.sums.size();
    const double product = RankProduct(k, n, arithmetic);
    const double b = TieFactor(k, n, tieSum, arithmetic);
    if (b == 0) return 0;  // all rows constant
    const double statistic =
        arithmetic.Carefully([&] { return 12 / product * SumOfSquares(ranks.sums) - Subtrahend(k, n); },
                             [&] { return 3 * SquaredDistances(ranks.twice, n) / product; });
    return statistic / b;
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
    if (builder.IsOK() && !plan.IsBrief()) RequestDescriptives(builder, plan);
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
        rankSums = {std::vector<double>(row.size()), std::vector<std::int64_t>(row.size())};
        meanRanks.assign(variableIndices.size(), 0.0);
        rankFrequencies.assign(variableIndices.size(), RankFrequencies());
        if (k < kFewestFields) AddStatusMessage(QKStatus(kind.tooFewFields), MessageKind::kError);
        passesRemaining = comparison.stepwise ? k : 1;
    } else if (state == State::kBeforeSteps) {
        orderedSamples = OrderSamples(meanRanks);
        steps.Begin(orderedSamples.size(), orderedSamples.size());
        countsTies = tieSum != 0 && arithmetic.WantsTextbook();
        if (isExact) balances.assign(row.size() * row.size(), 0);
        if (isExact && countsTies) tieSteps.assign(row.size() * row.size(), 0);
        state = State::kSteps;
    }
    if (state == State::kSteps) twiceSubsetSums.assign(row.size() * row.size(), 0);
    rowsSeen = 0;
    uncertainSeen = 0;
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

void RankedRows::TakeColumns(ColumnBatch& batch) {
    columns.resize(variableIndices.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t sample = state == State::kOverall ? i : static_cast<std::size_t>(orderedSamples[i].sample);
        columns[i] = batch.Values(variableIndices[sample]);
    }
}

void RankedRows::AddRows(ColumnBatch& batch) {
    if (state != State::kOverall && state != State::kSteps) return;
    TakeColumns(batch);
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    if (state == State::kOverall) {
        AddToOverall(weights, batch.Size());
    } else {
        AddToSteps(weights, batch.Size());
    }
}

/// Whether all sums are still exact. Ranks are multiples of 1/2, and the largest sum, that of the cubes of ties, is
/// below k^3 times the weight.
bool RankedRows::NoteWeights(const std::int32_t* weights, std::size_t count) {
    constexpr double kMostExact = 2251799813685248.0;  // 2^51
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += std::abs(static_cast<std::int64_t>(weights[i]));
    absoluteWeight += static_cast<double>(sum);
    isExact = isExact && absoluteWeight * k * k * k < kMostExact;
    return isExact;
}

void RankedRows::AddToOverall(const std::int32_t* weights, std::size_t count) {
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += weights[i];
    n += sum;
    if (NoteWeights(weights, count) && columns.size() <= kMostCounted && count >= kFewestCounted) {
        CountRanks(weights, count);
        return;
    }
    for (std::size_t place = 0; place < count && !IsStopped(); ++place) AddRowToOverall(place, weights[place]);
}

void RankedRows::CountRanks(const std::int32_t* weights, std::size_t count) {
    RankCounter counter(columns.size());
    std::vector<std::int64_t> twiceRanks(columns.size() * RowComparison::kRankRoom);
    std::array<std::uint8_t, RowComparison::kBlockRows> isUncertain;
    std::int64_t countedWeight = 0;
    for (std::size_t begin = 0; begin < count; begin += RowComparison::kBlockRows) {
        const std::size_t rows = std::min(RowComparison::kBlockRows, count - begin);
        RowComparison::Rank({columns.data(), columns.size(), begin, rows}, twiceRanks.data(), isUncertain.data());
        for (std::size_t i = 0; i < rows; ++i) {
            const std::int32_t weight = weights[begin + i];
            if (isUncertain[i] != 0) {
                AddRowToOverall(begin + i, weight);
                continue;
            }
            countedWeight += weight;
            for (std::size_t field = 0; field < columns.size(); ++field) {
                const std::int64_t twiceRank = twiceRanks[field * RowComparison::kRankRoom + i];
                counter.Add(field, static_cast<std::size_t>(twiceRank), weight);
            }
        }
    }
    TakeCounts(counter, countedWeight);
}

/// The squares of a row's ranks add up to k (k + 1) (2 k + 1) / 6 less a twelfth of the sum of t^3 - t.
void RankedRows::TakeCounts(const RankCounter& counter, std::int64_t weight) {
    const auto fields = static_cast<std::int64_t>(columns.size());
    std::int64_t squares = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::int64_t sum = 0;
        for (std::size_t twiceRank = 2; twiceRank < counter.Width(); ++twiceRank) {
            if (!counter.HasCome(i, twiceRank)) continue;
            const std::int64_t weightOfRank = counter.WeightOf(i, twiceRank);
            const auto whole = static_cast<std::int64_t>(twiceRank);
            sum += whole * weightOfRank;
            squares += whole * whole * weightOfRank;
            if (!isBrief) {
                rankFrequencies[i].Add(static_cast<double>(twiceRank) * 0.5, static_cast<double>(weightOfRank));
            }
        }
        rankSums.sums[i] += static_cast<double>(sum) * 0.5;
        rankSums.twice[i] += sum;
    }
    tieSum += static_cast<double>(2 * fields * (fields + 1) * (2 * fields + 1) * weight - 3 * squares);
}

/// A weight of 0 adds nothing but the entries of its ranks.
void RankedRows::AddRowToOverall(std::size_t place, std::int32_t weight) {
    if (row.empty()) return;
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = columns[i][place];
    rowRanks.Sort(row);
    tieSum += rowRanks.Rank(0, row.size() - 1) * weight;
    for (std::size_t i = 0; i < row.size(); ++i) {
        rankSums.sums[i] += weight * rowRanks.At(i);
        rankSums.twice[i] += weight * rowRanks.TwiceAt(i);
        if (!isBrief) rankFrequencies[i].Add(rowRanks.At(i), weight);
    }
}

/// In the first step all rows are compared; the later ones need those alone whose ranks depend on the subset. Where
/// sums are not exact, each step takes all rows in turn.
void RankedRows::AddToSteps(const std::int32_t* weights, std::size_t count) {
    if (!isExact) {
        for (std::size_t place = 0; place < count && !IsStopped(); ++place) AddRowToCandidates(place, weights[place]);
        return;
    }
    if (isFirstStep) {
        for (std::size_t begin = 0; begin < count && !IsStopped(); begin += RowComparison::kBlockRows) {
            CompareInBlock(begin, weights, std::min(RowComparison::kBlockRows, count - begin));
        }
    }
    for (; uncertainSeen < uncertainRows.size() && !IsStopped(); ++uncertainSeen) {
        const std::size_t place = uncertainRows[uncertainSeen] - rowsSeen;
        if (place >= count) break;
        AddRowToCandidates(place, weights[place]);
    }
    rowsSeen += count;
}

void RankedRows::CompareInBlock(std::size_t begin, const std::int32_t* weights, std::size_t count) {
    std::array<std::uint8_t, RowComparison::kBlockRows> isUncertain;
    std::array<std::int64_t, RowComparison::kRankRoom> certainWeights{};
    RowComparison::MarkUncertain({columns.data(), columns.size(), begin, count}, isUncertain.data());
    for (std::size_t i = 0; i < count; ++i) {
        certainWeights[i] = isUncertain[i] != 0 ? 0 : weights[begin + i];
        comparedWeight += certainWeights[i];
        if (isUncertain[i] != 0) uncertainRows.push_back(rowsSeen + begin + i);
    }
    std::array<std::int64_t, RowComparison::kRankRoom> tiedWeights{};
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (countsTies) tiedWeights = certainWeights;
        for (std::size_t j = i + 1; j < columns.size(); ++j) {
            const double* const first = columns[i] + begin;
            const double* const second = columns[j] + begin;
            std::int64_t balance = 0;
            if (countsTies) {
                const auto [above, tieStep] =
                    RowComparison::CompareTied(first, second, certainWeights.data(), tiedWeights.data(), count);
                balance = above;
                tieSteps[i * columns.size() + j] += tieStep;
            } else {
                balance = RowComparison::Balance(first, second, certainWeights.data(), count);
            }
            balances[i * columns.size() + j] += balance;
            balances[j * columns.size() + i] -= balance;
        }
    }
}

void RankedRows::AddRowToCandidates(std::size_t place, std::int32_t weight) {
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = columns[i][place];
    rowRanks.Sort(row);
    for (SubsetRecord& subset : steps.Candidates()) {
        const double ties = rowRanks.Rank(subset.firstPosition, subset.lastPosition);
        if (countsTies) subset.tieTerm += ties * weight;
        for (std::size_t i = 0; i < subset.sums.size(); ++i) {
            subset.sums[i] += weight * rowRanks.At(subset.firstPosition + i);
            TwiceSumsOf(subset)[i] += weight * rowRanks.TwiceAt(subset.firstPosition + i);
        }
    }
}

/// From the steps of ties at two positions the sums of t^3 - t over the positions from one to another. A tie of t
/// values has t - d pairs of values that stand d apart in it, and t^3 - t is six times the sum of these distances.
void RankedRows::SumTieSteps() {
    const std::size_t fields = row.size();
    for (std::size_t first = fields; first-- > 0;) {
        std::int64_t* const ofFirst = tieSteps.data() + first * fields;
        std::partial_sum(ofFirst, ofFirst + fields, ofFirst);
        for (std::size_t last = first + 1; last < fields; ++last)
            ofFirst[last] += tieSteps[(first + 1) * fields + last];
    }
}

/// Twice the rank of a value in a subset of m is m + 1 plus the values of the subset below it less those above it.
void RankedRows::AddBalances() {
    if (isFirstStep) {
        if (countsTies) SumTieSteps();
        for (std::size_t i = 0; i < row.size(); ++i) {  // from here on sums over the positions up to each one
            std::int64_t* const ofPosition = balances.data() + i * row.size();
            std::partial_sum(ofPosition, ofPosition + row.size(), ofPosition);
        }
        isFirstStep = false;
    }
    for (SubsetRecord& subset : steps.Candidates()) {
        if (countsTies) {
            subset.tieTerm +=
                6 * static_cast<double>(tieSteps[subset.firstPosition * row.size() + subset.lastPosition]);
        }
        for (std::size_t i = 0; i < subset.sums.size(); ++i) {
            const std::int64_t* const ofPosition = balances.data() + (subset.firstPosition + i) * row.size();
            const std::int64_t before = subset.firstPosition == 0 ? 0 : ofPosition[subset.firstPosition - 1];
            const std::int64_t twice = (static_cast<std::int64_t>(subset.Size()) + 1) * comparedWeight +
                                       ofPosition[subset.lastPosition] - before;
            subset.sums[i] += static_cast<double>(twice) * 0.5;
            TwiceSumsOf(subset)[i] += twice;
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
    n = arithmetic.Count(n);
    if (n == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return;
    }
    for (std::size_t i = 0; i < meanRanks.size(); ++i) meanRanks[i] = rankSums.sums[i] / static_cast<double>(n);
    chiSquare = FriedmanChiSquare(rankSums, n, tieSum, arithmetic);
    sig = ChiSquareSig(chiSquare, k - 1.0, arithmetic);
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
    const auto cases = static_cast<double>(n);
    const double standardError = std::sqrt(static_cast<double>(k) * (k + 1.0) / (6.0 * cases));
    pairwiseResults = CompareNormalPairs(
        rankSums.sums.size(), standardError,
        [&](std::size_t i, std::size_t j) {
            const double difference =
                arithmetic.Carefully([&] { return rankSums.sums[i] - rankSums.sums[j]; },
                                     [&] { return static_cast<double>(rankSums.twice[i] - rankSums.twice[j]) * 0.5; });
            return difference / cases;
        },
        arithmetic);
    pairwiseDone = true;
}

void RankedRows::EndStep() {
    if (isExact) AddBalances();
    AddMessages(steps.EndPass(sigLevel, [&](SubsetRecord& subset) {
        subset.statistic = SubsetStatistic(subset);
        subset.sig = ChiSquareSig(subset.statistic, static_cast<double>(subset.Size()) - 1, arithmetic);
        return StepwiseComparison::Outcome::kComputed;
    }));
    --passesRemaining;
    if (!steps.IsDone()) return;
    passesRemaining = 0;
    state = State::kFinished;
}

/// No tie correction reaches a subset; documents depend on it.
double RankedRows::SubsetStatistic(const SubsetRecord& subset) {
    const std::int64_t* const twice = TwiceSumsOf(subset);
    const double uncorrected = SubsetChiSquare({subset.sums, std::vector(twice, twice + subset.Size())}, n, arithmetic);
    const long double product = TieProduct(subset.Size(), n).Value();
    const auto untied = static_cast<double>((product - subset.tieTerm) / product);
    const double corrected = untied == 0 ? 0 : uncorrected / untied;
    const double degreesOfFreedom = static_cast<double>(subset.Size()) - 1;
    const bool differs =
        countsTies && steps.LeaveOtherTraces(subset, uncorrected, corrected, sigLevel, [=, this](double statistic) {
            return ChiSquareSig(statistic, degreesOfFreedom, arithmetic);
        });
    return arithmetic.TakesTextbook(differs) ? corrected : uncorrected;
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
        if (isBrief) continue;
        std::vector<double> weights;
        std::vector<double> ranks;
        for (const auto& [rank, weight] : rankFrequencies[position].Entries()) {
            ranks.push_back(rank);
            weights.push_back(weight);
        }
        field.Add(MakeIntervalTable(JoinValues(weights), JoinValues(ranks)));
    }
}
