#pragma once

#include <cmath>
#include <cstdint>

#include "support/Int32.h"
#include "support/TARNRank.h"

/// The rank sum of the second of two groups among both, by mid-ranks: what `TARNRank` gives for it, in constant memory
/// and without a list of the ranks, for tests that look at many pairs of groups at once.
///
/// Use as of `TARNRank`: `Add` in ascending order of the values, `Close` once.
class PairRankSum {
 public:
    enum class Side { kFirst, kSecond };

    void Add(double value, std::int32_t weight, Side side) {
        if (isFirstValue || !TARNRank::AreTied(value, runValue)) {
            Close();
            casesBelow = Add32(casesBelow, runWeight);
            runWeight = 0;
            runWeightOfSecond = 0;
            runValue = value;
            isFirstValue = false;
        }
        runWeight = Add32(runWeight, weight);
        if (side == Side::kSecond) runWeightOfSecond += weight;
        sizes[side == Side::kSecond ? 1 : 0] += weight;
    }

    /// Closes the last run.
    void Close() {
        if (runWeight >= 2) {
            const double t = runWeight;
            tieCorrectionSum += t * t * t - t;
        }
        sumOfRanks += (Add32(runWeight, 1) * 0.5 + casesBelow) * runWeightOfSecond;
    }

    double SumOfRanks() const { return sumOfRanks; }
    double SizeOfFirst() const { return sizes[0]; }
    double SizeOfSecond() const { return sizes[1]; }
    /// Sum of t cubed minus t over the sizes t of the tied runs of both groups.
    double TieCorrectionSum() const { return tieCorrectionSum; }

 private:
    double sumOfRanks = 0;
    double tieCorrectionSum = 0;
    double sizes[2] = {0, 0};
    double runValue = 0;
    std::int32_t runWeight = 0;
    double runWeightOfSecond = 0;
    std::int32_t casesBelow = 0;
    bool isFirstValue = true;
};
