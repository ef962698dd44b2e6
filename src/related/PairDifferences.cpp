#include "related/PairDifferences.h"

#include <cmath>
#include <string>

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

QKStatus RankAbsoluteDifferences(std::vector<WeightedDifference>& differences, TARNRank& rank) {
    SortByAbsoluteValue(differences);
    for (const auto& [difference, weight] : differences) {
        const double key = difference < 0 ? RankKey::kNegative : RankKey::kNotNegative;
        const QKStatus added = rank.AddValue(std::fabs(difference), weight, key);
        if (added.IsError()) return added;
    }
    rank.CloseTieRun();
    return QKStatus();
}

void PairDifferences::ExtendRange(double difference) {
    if (difference > maxDifference) maxDifference = difference;
    if (difference < minDifference) minDifference = difference;
}

void PairDifferences::AddDistribution(ResultElement& element, std::int32_t negativeCount, std::int32_t tieCount,
                                      std::int32_t positiveCount) const {
    StructuredTable distribution = element.AddTable(TableName::kContinuousDistribution);
    distribution.Row(RowName::kNegativeDifferences, negativeCount);
    distribution.Row(RowName::kTies, tieCount);
    distribution.Row(RowName::kPositiveDifferences, positiveCount);
    std::string counts;
    std::string values;
    distribution.Add(MakeIntervalTable(differences.GetBins(), counts, values));
}
