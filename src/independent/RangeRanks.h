#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "independent/PairRankSums.h"
#include "independent/TieRuns.h"
#include "support/WideNumber.h"

/// The ranks of every range of consecutive groups, each range ranked by itself, from one walk over the records in
/// ascending order. A rank counts what lies below, group by group, so that the rank sums of all pairs of groups are all
/// there is to know.
///
/// For records whose ties are shared (see `TieScan`), no weight of which is below 0, and sizes that `AreExact`: every
/// rank sum is then a number without rounding, however it is put together.
class RangeRanks {
 public:
    /// `total`: the sum of all weights; `largest`: that of the largest group.
    static bool AreExact(std::int64_t total, std::int64_t largest) {
        // A rank sum is at most their product, and a multiple of 1/2.
        constexpr double kMostRanks = 0x1p51;
        return total <= std::numeric_limits<std::int32_t>::max() &&
               static_cast<double>(total) * static_cast<double>(largest) <= kMostRanks;
    }

    /// `work`: as of `TieRuns`.
    void Begin(std::size_t groupCount, const WorkShare* work = nullptr);
    /// Takes ascending records; those of a group below 0 take no part.
    void Add(const double* values, const std::int32_t* weights, const std::int32_t* groups, std::size_t count);
    void Close();

    /// The rank sum of a group among the groups `first` to `last`, itself one of them.
    double SumOfRanks(std::size_t group, std::size_t first, std::size_t last) const {
        return Own(group) + Below(group, last + 1) - Below(group, first);
    }
    /// Sum of t cubed minus t over the runs of t tied cases in the groups `first` to `last`. Quick for one `last` after
    /// the other.
    double TieCorrectionSum(std::size_t first, std::size_t last);
    /// N cubed minus N less that sum, N being the total of these groups, without rounding.
    long double SpreadOf(std::size_t first, std::size_t last, std::int64_t total);

 private:
    /// The rank sum of a group by itself.
    double Own(std::size_t group) const;
    /// By how much the groups in front of `end`, all but the group itself, raise its rank sum.
    double& Below(std::size_t group, std::size_t end) { return below_[group * (pairs_.GroupCount() + 1) + end]; }
    double Below(std::size_t group, std::size_t end) const { return below_[group * (pairs_.GroupCount() + 1) + end]; }

    PairRankSums pairs_;
    TieRuns ties_;
    double opener_ = 0;  // of the tied run in hand
    std::vector<double> below_;
    bool tieSumsAreExact_ = false;
    RangeTieSums<double> tieSums_;
    RangeTieSums<WideNumber> wideTieSums_;
};
