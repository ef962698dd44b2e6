#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "machine/Lanes.h"

/// Some rows of k values, by columns.
struct RowBlock {
    const double* const* columns = nullptr;  ///< k of them
    std::size_t fields = 0;
    std::size_t begin = 0;  ///< the rows of the columns, from here
    std::size_t count = 0;  ///< `kBlockRows` at most
};

/// Compares the values of rows with one another, many rows at a time and without a branch. That is how ranks come
/// about: twice the mid-rank of a value is k + 1 plus the values below it less those above it.
///
/// Ties within 1e-14 belong to the value that opens a run and don't chain, and equal infinities are no tie, so that
/// ranks don't follow from single comparisons in every row. Such rows are marked, and are to be ranked by `RowRanks`.
namespace RowComparison {

inline constexpr std::size_t kBlockRows = 256;
/// Places for a number of each row, and for lanes behind the last one.
inline constexpr std::size_t kRankRoom = kBlockRows + kLanes;

/// Whether a row has two values that are nearly equal, or equal without a difference.
void MarkUncertain(const RowBlock& block, std::uint8_t* isUncertain);
/// The same, with twice the ranks of all values: `twiceRanks` has `kRankRoom` places for each field.
void Rank(const RowBlock& block, std::int64_t* twiceRanks, std::uint8_t* isUncertain);
/// The weight of the rows whose first value is above the second one, less those where it is below. `weights`: of the
/// rows of the block, with `kRankRoom` places.
std::int64_t Balance(const double* first, const double* second, const std::int64_t* weights, std::size_t count);
/// The same with the weight of the rows whose two values are tied, each times 1 plus the values asked for before that
/// were tied with the first one: `tied` says the weight of a row that many times, and so for the next value. Of rows
/// with a weight none is marked.
struct BalanceAndTies {
    std::int64_t balance;
    std::int64_t tieStep;
};
BalanceAndTies CompareTied(const double* first, const double* second, const std::int64_t* weights, std::int64_t* tied,
                           std::size_t count);

}  // namespace RowComparison

/// How much weight each rank of each field has over many rows: twice a mid-rank of k values is a whole number from 2 to
/// 2 k, so there are few.
class RankCounter {
 public:
    explicit RankCounter(std::size_t fields)
        : fieldCount(fields), weightOf(fields * Width()), hasCome(weightOf.size()) {}

    /// Takes a row. One of weight 0 adds nothing but that its ranks came.
    void Add(std::size_t field, std::size_t twiceRank, std::int64_t weight) {
        weightOf[field * Width() + twiceRank] += weight;
        hasCome[field * Width() + twiceRank] = 1;
    }
    bool HasCome(std::size_t field, std::size_t twiceRank) const { return hasCome[field * Width() + twiceRank] != 0; }
    std::int64_t WeightOf(std::size_t field, std::size_t twiceRank) const {
        return weightOf[field * Width() + twiceRank];
    }
    std::size_t Width() const { return 2 * fieldCount + 1; }

 private:
    std::size_t fieldCount;
    std::vector<std::int64_t> weightOf;
    std::vector<std::uint8_t> hasCome;
};
