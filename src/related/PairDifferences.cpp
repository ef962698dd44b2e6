#include "related/PairDifferences.h"

#include <algorithm>
#include <numeric>
#include <string>

#include "machine/Lanes.h"
#include "support/QKVecValue.h"
#include "vocabulary/SettingKeys.h"

namespace {

constexpr std::size_t kPairSize = 2;

/// A good first field stays registered where the second one fails.
void RequestSortedFields(const std::vector<std::string>& names, const std::vector<int>& indices, long notContinuous,
                         TARNPlanBuilder& builder, TARNPlan& plan) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (plan.GetMeasureLevel(names[i]) != FieldKind::kContinuous) {
            builder.Fail(notContinuous, IntToString(indices[i]));
            return;
        }
        plan.RequestSorted(indices[i]);
    }
}

}  // namespace

void PlanContinuousPair(TARNPlanBuilder& builder, TARNPlan& plan, const PairCodes& codes) {
    std::vector<std::string> names;
    if (builder.Read(SettingKey::kVariableName, names)) {
        const std::vector<int> indices = builder.ResolveFields(names, codes.unknownField);
        AddVecSetting(builder.TestSettings(), SettingKey::kVariableIndex, indices, false);
        if (builder.IsOK() && names.size() != kPairSize) builder.Fail(codes.notTwoFields);
        if (builder.IsOK()) RequestSortedFields(names, indices, codes.notContinuous, builder, plan);
    } else {
        builder.Fail(codes.namesMissing);
    }
    builder.RequestOriginFrequencies(Origins::kSeveral);
}

bool ReadPair(const QKSettings& settings, int& firstVariableIndex, int& secondVariableIndex) {
    std::vector<int> pair;
    settings.GetSettingValByName(SettingKey::kVariableIndex, pair);
    if (pair.size() != kPairSize) return false;
    firstVariableIndex = pair[0];
    secondVariableIndex = pair[1];
    return true;
}

const double* PairDifferences::Of(ColumnBatch& batch) {
    return Subtract(batch.Values(firstVariableIndex), batch.Values(secondVariableIndex), batch.Size());
}

/// What is no number gets no sign: it stands on the side of the positive ones, and behind all of them.
const double* PairDifferences::Subtract(const double* first, const double* second, std::size_t count) {
    constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
    if (scratch.size() < count + kLanes) scratch.resize(count + kLanes);
    double* const differences = scratch.data();
    ForLanes(count, [=](std::size_t i, std::size_t left) {
        const DoubleLanes difference = LoadLanes(second + i, left) - LoadLanes(first + i, left);
        StoreLanes(SelectLanes(difference == difference, difference, DoubleLanes{} + kNoNumber), differences + i);
    });
    return scratch.data();
}

/// Without a branch: which side a difference falls on can't be foreseen.
void PairDifferences::Count(const double* differences, const std::int32_t* weights, std::size_t count) {
    WholeLanes positive{};
    WholeLanes negative{};
    WholeLanes notZero{};
    const auto add = [&](std::size_t i, std::size_t left, WholeLanes ofRecords) {
        const DoubleLanes lanes = LoadLanes(differences + i, left);
        positive += ofRecords & (lanes > 0.0);
        negative += ofRecords & (lanes < 0.0);
        notZero += ofRecords & (lanes != 0.0);
    };
    auto total = static_cast<std::int64_t>(count);
    if (weights == nullptr) {
        // Behind the last difference there is a 0, which counts nowhere.
        ForLanes(count, [&](std::size_t i, std::size_t left) { add(i, left, WholeLanes{} + 1); });
    } else {
        ForLanes(count, [&](std::size_t i, std::size_t left) {
            add(i, left, WholeLanes{weights[i], left < kLanes ? 0 : weights[i + 1]});
        });
        total = std::accumulate(weights, weights + count, std::int64_t{0});
    }
    positiveWeight += SumOfLanes(positive);
    negativeWeight += SumOfLanes(negative);
    notZeroWeight += SumOfLanes(notZero);
    totalWeight += total;
}

/// In several chains, of which the processor goes on with each while it waits for the others. What is no number extends
/// nothing.
void PairDifferences::ExtendRange(const double* differences, std::size_t count) {
    constexpr std::size_t kChains = 4;
    DoubleLanes highest[kChains];
    DoubleLanes lowest[kChains];
    std::fill_n(highest, kChains, DoubleLanes{} + maxDifference);
    std::fill_n(lowest, kChains, DoubleLanes{} + minDifference);
    const auto extend = [&](std::size_t chain, DoubleLanes lanes) {
        highest[chain] = SelectLanes(lanes > highest[chain], lanes, highest[chain]);
        lowest[chain] = SelectLanes(lanes < lowest[chain], lanes, lowest[chain]);
    };
    std::size_t i = 0;
    for (; i + kChains * kLanes <= count; i += kChains * kLanes) {
        for (std::size_t chain = 0; chain < kChains; ++chain) {
            extend(chain, LoadLanes(differences + i + chain * kLanes, kLanes));
        }
    }
    for (; i < count; ++i) extend(0, DoubleLanes{} + differences[i]);
    for (std::size_t chain = 0; chain < kChains; ++chain) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            maxDifference = std::max(maxDifference, highest[chain][lane]);
            minDifference = std::min(minDifference, lowest[chain][lane]);
        }
    }
}

void PairDifferences::AddToHistogram(ColumnBatch& batch) {
    histogram.AddColumn(Of(batch), WeightsOf(batch), batch.Size());
}

void PairDifferences::AddDistribution(ResultElement& element, std::int64_t negativeCount, std::int64_t tieCount,
                                      std::int64_t positiveCount, bool isBrief) const {
    StructuredTable distribution = element.AddTable(TableName::kContinuousDistribution);
    distribution.Row(RowName::kNegativeDifferences, negativeCount);
    distribution.Row(RowName::kTies, tieCount);
    distribution.Row(RowName::kPositiveDifferences, positiveCount);
    if (isBrief) return;
    std::string counts;
    std::string values;
    distribution.Add(MakeIntervalTable(histogram.Bins(), counts, values));
}
