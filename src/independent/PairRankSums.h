#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "independent/PairRankSum.h"
#include "support/Int32.h"

/// The rank sums of all pairs of groups, each pair ranked among itself, from one walk over the records in ascending
/// order: to the bit what a `PairRankSum` of each pair gives.
///
/// Where all pairs have their ties at the same places, a record of a group needs one step for each group in front of
/// it, in plain arrays. Else each pair is walked by itself.
class PairRankSums {
 public:
    enum class Ties {
        kShared,     ///< the runs of a pair are the parts of the runs of all records; no weight is below 0
        kOfEachPair  ///< whatever they are
    };

    /// Borrows `arithmetic`, which pairs that are walked by themselves ask.
    void Begin(std::size_t groupCount, Ties ties, const Arithmetic& arithmetic);
    void Add(double value, std::int32_t weight, std::size_t group);
    /// The same of a record that is tied with none, neither before it nor behind it.
    void AddAlone(double value, std::int32_t weight, std::size_t group);
    void Close();

    std::size_t GroupCount() const { return sizes_.size(); }
    double SizeOf(std::size_t group) const { return sizes_[group]; }
    /// That of the second group, `first` being below `second`.
    double SumOfRanks(std::size_t first, std::size_t second) const;
    /// Twice the same. Without rounding where each pair is walked by itself, and as long as a sum stays below 2^53.
    WideNumber TwiceSumOfRanks(std::size_t first, std::size_t second) const;
    /// Of a pair of two cases in all; of ties of each pair, of any pair.
    double TieCorrectionSum(std::size_t first, std::size_t second) const;

 private:
    /// Rows are of whole blocks, with a rest that nobody reads: steps of one length are quicker than just the steps
    /// that are needed.
    static constexpr std::size_t kBlock = 8;
    static std::size_t RowLength(std::size_t second) { return (second / kBlock + 1) * kBlock; }
    static std::size_t PairPlace(std::size_t first, std::size_t second) { return second * (second - 1) / 2 + first; }
    void AddToPairs(double value, std::int32_t weight, std::size_t group);
    void EndRun();
    void TakeRunOfOne(std::size_t second, std::int64_t weight);

    Ties ties_ = Ties::kShared;
    std::vector<double> sizes_;
    std::vector<PairRankSum> pairs_;  // of ties of each pair, by `PairPlace`

    std::vector<double> sums_;  // row by row: each group with those in front of it
    std::vector<std::size_t> rowBegins_;
    std::vector<std::int32_t> casesBelow_;                      // per group, in closed runs
    double opener_ = std::numeric_limits<double>::quiet_NaN();  // of the run in hand
    std::vector<std::int64_t> runWeight_;
    std::vector<std::int32_t> runWeight32_;
    std::vector<std::uint32_t> present_;
};
