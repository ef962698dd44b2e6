#include "support/TARNRank.h"

#include "platform/common/Truncation.h"
#include "support/Int32.h"

QKStatus TARNRank::AddValue(double value, double weight, std::int32_t group) {
    const std::int32_t wholeWeight = TruncateToInt32(weight);
    if (isFirstValue) {
        isFirstValue = false;
        currentValue = value;
        casesBelow = 0;
        tieWeight = wholeWeight;
    } else if (AreTied(value, currentValue)) {
        tieWeight = Add32(tieWeight, wholeWeight);
    } else {
        CloseTieRun();
        currentValue = value;
        casesBelow = Add32(casesBelow, tieWeight);
        tieWeight = wholeWeight;
        pendingGroups.clear();
        pendingWeights.clear();
    }
    pendingGroups.push_back(group);
    pendingWeights.push_back(weight);
    return status;
}

void TARNRank::AddAscending(const double* values, const std::int32_t* weights, const std::int32_t* groups,
                            std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (groups[i] >= 0) static_cast<void>(AddValue(values[i], weights == nullptr ? 1 : weights[i], groups[i]));
    }
}

void TARNRank::CloseTieRun() {
    const double midRank = Add32(tieWeight, 1) * 0.5 + casesBelow;
    for (std::size_t i = 0; i < pendingGroups.size(); ++i) {
        GroupRankStats& stats = groupRanks[pendingGroups[i]];
        stats.sumOfRanks += midRank * pendingWeights[i];
        if (pendingGroups[i] != keptGroup) continue;
        if (midRank > stats.maxRank) stats.maxRank = midRank;
        if (stats.minRank > midRank || stats.minRank < 0.0) stats.minRank = midRank;
        stats.ranks.emplace_back(midRank, pendingWeights[i]);
    }
    if (tieWeight >= 2) ties[currentValue] = tieWeight;
}

double TARNRank::TieCorrectionSum() const {
    double sum = 0.0;
    for (const auto& [value, size] : ties) {
        const double t = size;
        sum += t * t * t - t;
    }
    return sum;
}

void TARNRank::Reset() {
    groupRanks.clear();
    ties.clear();
    tieWeight = 0;
    casesBelow = 0;
    currentValue = 0;
    pendingGroups.clear();
    pendingWeights.clear();
    isFirstValue = true;
    keptGroup = kNone;
}
