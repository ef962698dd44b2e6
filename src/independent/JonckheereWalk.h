#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "independent/PairRankSums.h"
#include "independent/TieRuns.h"

/// What the statistic of some groups needs to know of their records.
struct JonckheereCounts {
    double j = 0;
    WideNumber twiceJ = 0;  ///< twice the same; see `PairRankSums::TwiceSumOfRanks`
    // Over the runs of t equal values: sum of t (t - 1), and of t^2 (t - 1), which a double rounds from 262,147 on.
    long double pairsTied = 0;
    long double triplesTied = 0;
    /// Sum of t^3 - t over the tied runs of the first two groups, for fewer than three cases.
    double tieCorrectionSum = 0;
};

/// One walk over the records in ascending order, from which come the counts of any of the groups: of some, of a pair,
/// of a range of consecutive ones. J is the sum of the counts of the pairs, and the ties of some groups in a run of
/// equal values are those of each of them in it.
class JonckheereWalk {
 public:
    /// `work`: as of `TieRuns`; `arithmetic`: as of `PairRankSums`.
    void Begin(std::size_t groupCount, PairRankSums::Ties ties, const Arithmetic& arithmetic,
               const WorkShare* work = nullptr);
    /// Takes ascending records; those of a group below 0, or beyond the last one, take no part.
    void Add(const double* values, const std::int32_t* weights, const std::int32_t* groups, std::size_t count);
    void Close();

    /// Of some groups, in ascending order.
    JonckheereCounts Of(const std::vector<std::size_t>& groups) const;
    JonckheereCounts OfPair(std::size_t first, std::size_t second);
    /// Quick where the counts of all pairs add up without rounding; else for one `last` after the other, with the
    /// square of the number of groups for each range.
    JonckheereCounts OfRange(std::size_t first, std::size_t last);

 private:
    double CountOf(std::size_t first, std::size_t second) const;
    WideNumber TwiceCountOf(std::size_t first, std::size_t second) const;
    JonckheereCounts RanksOf(const std::vector<std::size_t>& groups) const;
    JonckheereCounts RanksOfRange(std::size_t first, std::size_t last);
    bool CountsAddUpExactly() const;
    void AddUpRanges();

    PairRankSums ranks_;
    TieRuns ties_;
    double tieValue_ = 0;
    bool tieSumsAreExact_ = false;

    // Of pairs, made when they are asked for first, and of ranges.
    std::vector<long double> pairsTiedOfPairs_;
    std::vector<long double> triplesTiedOfPairs_;
    // Of ranges, at `first` * groups + `last`: made when one is asked for first, empty where sums are rounded.
    bool rangesAreAddedUp_ = false;
    std::vector<double> countsOfRanges_;
    std::vector<WideNumber> twiceCountsOfRanges_;
    RangeTieSums<long double> pairsTiedOfRanges_;
    RangeTieSums<long double> triplesTiedOfRanges_;
};
