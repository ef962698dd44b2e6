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

    // Of a group whose ranks are kept.
    double minRank = -1.0;  ///< -1: no rank has been seen
    double maxRank = 0.0;
    std::vector<std::pair<double, double>> ranks;  ///< (rank, weight) of each value, in the order of closing
};

/// Turns values that arrive in ascending order into mid-ranks with ties (Kruskal and Wallis, 1952, Journal of the
/// American Statistical Association 47, 583-621), with sums for each group, which its caller numbers from 0.
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
    QKStatus AddValue(double value, double weight, std::int32_t group);
    /// Takes many values in ascending order, each with its group, from 0 up; one of a negative group is left out.
    /// `weights`: null: each is 1.
    void AddAscending(const double* values, const std::int32_t* weights, const std::int32_t* groups, std::size_t count);
    /// Closes the last run. A second call counts it a second time.
    void CloseTieRun();

    /// Keeps the list of the ranks of a group; to be asked for before its first value.
    void KeepRanksOf(std::int32_t group) { keptGroup = group; }
    /// The ranks of a group; a group that had no value has them as they begin, and is there from then on.
    GroupRankStats& GroupRanks(std::int32_t group) { return groupRanks[group]; }
    /// Sum of t cubed minus t over the sizes t of the tied runs.
    double TieCorrectionSum() const;
    /// Back to the beginning, for another stream of values.
    void Reset();

 private:
    static constexpr std::int32_t kNone = -1;

    QKStatus status;
    std::map<std::int32_t, GroupRankStats> groupRanks;
    std::map<double, std::int32_t> ties;  // the tied values with the sizes of their runs, 2 or more
    std::int32_t tieWeight = 0;           // of the run being built
    std::int32_t casesBelow = 0;          // weight of all closed runs
    double currentValue = 0;              // that opened the run being built
    std::vector<std::int32_t> pendingGroups;
    std::vector<double> pendingWeights;
    bool isFirstValue = true;
    std::int32_t keptGroup = kNone;
};
