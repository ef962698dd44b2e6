#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/common/QKStatus.h"
#include "platform/common/Truncation.h"
#include "support/Arithmetic.h"
#include "support/TieCorrection.h"
#include "support/WideNumber.h"

/// What `TARNRank` keeps of the ranks of one group.
struct GroupRankStats {
    double sumOfRanks = 0.0;  ///< each value adds its rank times its weight

    // The same without rounding, for a run that wants all digits: twice what the whole parts of the weights add, and
    // what their fractions do.
    WideNumber twiceSumOfRanks = 0;
    long double sumOfFractions = 0;

    /// The sum less the half of `twiceExpected`, with all its digits however large both are.
    long double Above(WideNumber twiceExpected) const {
        return static_cast<long double>(twiceSumOfRanks - twiceExpected) / 2 + sumOfFractions;
    }
    /// How far it lies below; equal ones are 0, without a sign.
    long double Below(WideNumber twiceExpected) const { return 0 - Above(twiceExpected); }
    void AddExactly(double midRank, std::int64_t twiceMidRank, double weight) {
        const std::int32_t whole = TruncateToInt32(weight);
        twiceSumOfRanks += WideNumber{twiceMidRank} * whole;
        if (weight != whole) sumOfFractions += static_cast<long double>(weight - whole) * midRank;
    }

    // Of the group whose ranks are kept.
    double minRank = -1.0;  ///< -1: no rank has been seen
    double maxRank = 0.0;
    std::vector<std::pair<double, double>> ranks;  ///< (rank, weight) of each value, in the order of closing

    void Extend(double rank) {
        if (rank > maxRank) maxRank = rank;
        if (minRank > rank || minRank < 0.0) minRank = rank;
    }
};

/// Turns values that arrive in ascending order into mid-ranks with ties (Kruskal and Wallis, 1952, Journal of the
/// American Statistical Association 47, 583-621), with sums for each group, which its caller numbers from 0.
/// A copy has all that the original has.
///
/// Use: `AddValue` or `AddAscending` in ascending order of the values, `CloseTieRun` once, then the results. Nothing
/// checks the order: a lower value only starts a new run.
class TARNRank {
 public:
    /// Borrows `by`.
    explicit TARNRank(const Arithmetic& by) : arithmetic(&by) {}
    virtual ~TARNRank() = default;

    /// Whether a value is tied with the one that opened a run: they differ by less than 1e-14, whatever the scale of
    /// the data. Ties don't chain.
    static constexpr double kTieTolerance = 1e-14;
    static bool AreTied(double value, double opener) { return std::fabs(value - opener) < kTieTolerance; }

    /// As long as the weights don't exceed this sum, no counter wraps around, and twice a sum of ranks stays below
    /// 2^53, so that it is exact in every order of its additions.
    static constexpr double kMostExactWeight = 9.4e7;

    /// Takes the next value. Its weight, truncated to 32 bits, moves the ranks; as it is it weighs the rank in the
    /// sum. A value is tied with the one that opened the run if they differ by less than 1e-14. Never an error.
    QKStatus AddValue(double value, double weight, std::int32_t group);
    /// Takes many values in ascending order, each with its group; one of a negative group is left out. `weights`: null:
    /// each is 1.
    void AddAscending(const double* values, const std::int32_t* weights, const std::int32_t* groups, std::size_t count);
    /// Closes the last run. A second call counts it a second time in the sums of ranks.
    void CloseTieRun();

    /// Keeps the list of the ranks of a group; to be asked for before its first value.
    void KeepRanksOf(std::int32_t group) { keptGroup = group; }
    /// The ranks of a group; a group that had no value has them as they begin, and is there from then on.
    GroupRankStats& GroupRanks(std::int32_t group);
    /// Sum of t cubed minus t over the sizes t of the tied runs.
    double TieCorrectionSum() const { return tieCorrection.Sum(); }
    /// N cubed minus N less that sum, N being a total of that many cases, without rounding (see `TieCorrection`).
    long double SpreadOf(std::int64_t total) const { return tieCorrection.SpreadOf(total); }
    /// Back to the beginning, for another stream of values.
    void Reset();

 private:
    static constexpr std::int32_t kNone = -1;
    static constexpr std::size_t kBlock = 1024;
    /// Each group has two sums of its own in a block, so that one addition needn't wait for the one before it.
    static constexpr std::size_t kSumsOfGroup = 2;

    /// Some ascending values, each of them of a group.
    struct Block {
        const double* values;
        const std::int32_t* weights;
        const std::int32_t* groups;
        std::size_t size;

        Block From(std::size_t begin) const { return {values + begin, weights + begin, groups + begin, size - begin}; }
    };

    void BeginRun(double opener);
    void AddToRun(double weight, std::int32_t group);
    void AddToRun(const Block& block, std::size_t count);
    void AddBlock(const Block& block);
    void AddOneByOne(const Block& block);
    std::size_t AddClosedRuns(const Block& block);
    void AddExactSums();
    GroupRankStats& StatsOf(std::int32_t group);

    const Arithmetic* arithmetic;
    QKStatus status;
    std::vector<GroupRankStats> groupRanks;
    TieCorrection tieCorrection;
    std::int64_t tieWeight = 0;   // of the run being built
    std::int64_t casesBelow = 0;  // weight of all closed runs
    double currentValue = 0;      // that opened the run being built
    std::vector<std::int32_t> pendingGroups;
    std::vector<double> pendingWeights;
    bool isFirstValue = true;
    double weightSeen = 0;                // whatever the signs; infinite as soon as a weight had a fraction
    std::vector<std::int64_t> exactSums;  // twice the sums of ranks that have to be added yet
    std::int32_t keptGroup = kNone;
};
