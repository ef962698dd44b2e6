#pragma once

#include <cmath>
#include <cstdint>

#include "support/Arithmetic.h"
#include "support/TARNRank.h"
#include "support/WideNumber.h"

/// The rank sum of the second of two groups among both, by mid-ranks: what `TARNRank` gives for it, in constant memory
/// and without a list of the ranks, for tests that look at many pairs of groups at once.
///
/// Use as of `TARNRank`: `Add` in ascending order of the values, `Close` once.
class PairRankSum {
 public:
    enum class Side { kFirst, kSecond };

    /// Borrows `by`.
    explicit PairRankSum(const Arithmetic& by) : arithmetic(&by) {}

    void Add(double value, std::int32_t weight, Side side) {
        if (isFirstValue || !TARNRank::AreTied(value, runValue)) {
            Close();
            casesBelow = arithmetic->Count(casesBelow + runWeight);
            runWeight = 0;
            runWeightOfSecond = 0;
            runValue = value;
            isFirstValue = false;
        }
        runWeight += weight;
        if (side == Side::kSecond) runWeightOfSecond += weight;
        sizes[side == Side::kSecond ? 1 : 0] += weight;
    }

    /// Closes the last run.
    void Close() {
        runWeight = arithmetic->Count(runWeight);
        if (runWeight >= 2) {
            const auto t = static_cast<double>(runWeight);
            tieCorrectionSum += t * t * t - t;
        }
        const std::int64_t twiceWithin = arithmetic->Count(runWeight + 1);
        const double midRank = static_cast<double>(twiceWithin) * 0.5 + static_cast<double>(casesBelow);
        sumOfRanks = arithmetic->Carefully([&] { return sumOfRanks + midRank * runWeightOfSecond; },
                                           [&] {
                                               twiceSumOfRanks += WideNumber{twiceWithin + 2 * casesBelow} *
                                                                  static_cast<std::int64_t>(runWeightOfSecond);
                                               return static_cast<long double>(twiceSumOfRanks) / 2;
                                           });
    }

    double SumOfRanks() const { return sumOfRanks; }
    /// Twice the same, without rounding, of a run that wants all digits.
    WideNumber TwiceSumOfRanks() const { return twiceSumOfRanks; }
    double SizeOfFirst() const { return sizes[0]; }
    double SizeOfSecond() const { return sizes[1]; }
    /// Sum of t cubed minus t over the sizes t of the tied runs of both groups.
    double TieCorrectionSum() const { return tieCorrectionSum; }

 private:
    const Arithmetic* arithmetic;
    double sumOfRanks = 0;
    WideNumber twiceSumOfRanks = 0;
    double tieCorrectionSum = 0;
    double sizes[2] = {0, 0};
    double runValue = 0;
    std::int64_t runWeight = 0;
    double runWeightOfSecond = 0;
    std::int64_t casesBelow = 0;
    bool isFirstValue = true;
};
