#pragma once

#include <cmath>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "platform/common/QKStatus.h"

/// What `TARNRank` keeps of the ranks of one group.
struct GroupRankStats {
    double sumOfRanks = 0.0;  ///< each value adds its rank times its weight
    double minRank = -1.0;    ///< -1: no rank has been seen
    double maxRank = 0.0;
    std::vector<std::pair<double, double>> ranks;  ///< (rank, weight) of each value, in the order of closing
};

/// Turns values that arrive in ascending order into mid-ranks with ties (Kruskal and Wallis, 1952, Journal of the
/// American Statistical Association 47, 583-621), with sums for each group, which its caller names by a number.
/// A copy has all that the original has.
///
/// Use: `AddValue` for each value in ascending order, `CloseTieRun` once, then the results. Nothing checks the order:
/// a lower value only starts a new run.
class TARNRank {
 public:
    virtual ~TARNRank() = default;

    /// Whether a value is tied with the one that opened a run: they differ by less than 1e-14, whatever the scale of
    /// the data. Ties don't chain.
    static bool AreTied(double value, double opener) {
        constexpr double kTieTolerance = 1e-14;
        return std::fabs(value - opener) < kTieTolerance;
    }

    /// Takes the next value. Its weight, truncated to 32 bits, moves the ranks; as it is it weighs the rank in the
    /// sum. A value is tied with the one that opened the run if they differ by less than 1e-14. Never an error.
    QKStatus AddValue(double value, double weight, double group);
    /// Closes the last run. A second call counts it a second time.
    void CloseTieRun();

    /// The ranks of a group; a group that had no value has them as they begin, and is there from then on.
    GroupRankStats& GroupRanks(double group) { return groupRanks[group]; }
    /// Sum of t cubed minus t over the sizes t of the tied runs.
    double TieCorrectionSum() const;
    /// Back to the beginning, for another stream of values.
    void Reset();

 private:
    QKStatus status;
    std::map<double, GroupRankStats> groupRanks;
    std::map<double, std::int32_t> ties;  // the tied values with the sizes of their runs, 2 or more
    std::int32_t tieWeight = 0;           // of the run being built
    std::int32_t casesBelow = 0;          // weight of all closed runs
    double currentValue = 0;              // that opened the run being built
    std::vector<double> pendingGroups;
    std::vector<double> pendingWeights;
    bool isFirstValue = true;
};
