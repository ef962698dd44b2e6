#include "related/RankCounter.h"

#include <algorithm>
#include <array>

#include "machine/Lanes.h"
#include "support/TARNRank.h"

namespace RowComparison {

namespace {

/// Of values that are compared, first less second: on which sides of 0 the differences are, and whether that says too
/// little.
struct Sides {
    WholeLanes above;
    WholeLanes below;
    WholeLanes isUncertain;
};

inline Sides Compare(const double* first, const double* second, std::size_t left) {
    const DoubleLanes difference = LoadLanes(first, left) - LoadLanes(second, left);
    const WholeLanes above = difference > 0.0;
    const WholeLanes below = difference < 0.0;
    const WholeLanes areTied = AbsoluteLanes(difference) < TARNRank::kTieTolerance;
    return {above, below, ~(areTied ^ above ^ below)};
}

template <typename Pair>
void ForPairs(const RowBlock& block, Pair pair) {
    for (std::size_t i = 0; i < block.fields; ++i) {
        for (std::size_t j = i + 1; j < block.fields; ++j) {
            const double* const first = block.columns[i] + block.begin;
            const double* const second = block.columns[j] + block.begin;
            ForLanes(block.count, [&](std::size_t row, std::size_t left) {
                pair(i, j, row, Compare(first + row, second + row, left));
            });
        }
    }
}

inline void AddTo(std::int64_t* place, WholeLanes lanes) {
    StoreLanes(LoadLanes(place) + lanes, place);
}

}  // namespace

void MarkUncertain(const RowBlock& block, std::uint8_t* isUncertain) {
    std::array<std::int64_t, kRankRoom> marks{};
    ForPairs(block, [&](std::size_t, std::size_t, std::size_t row, const Sides& sides) {
        StoreLanes(LoadLanes(&marks[row]) | sides.isUncertain, &marks[row]);
    });
    for (std::size_t row = 0; row < block.count; ++row) isUncertain[row] = marks[row] != 0;
}

void Rank(const RowBlock& block, std::int64_t* twiceRanks, std::uint8_t* isUncertain) {
    std::array<std::int64_t, kRankRoom> marks{};
    std::fill_n(twiceRanks, block.fields * kRankRoom, static_cast<std::int64_t>(block.fields) + 1);
    ForPairs(block, [&](std::size_t i, std::size_t j, std::size_t row, const Sides& sides) {
        const WholeLanes side = sides.below - sides.above;
        AddTo(twiceRanks + i * kRankRoom + row, side);
        AddTo(twiceRanks + j * kRankRoom + row, -side);
        StoreLanes(LoadLanes(&marks[row]) | sides.isUncertain, &marks[row]);
    });
    for (std::size_t row = 0; row < block.count; ++row) isUncertain[row] = marks[row] != 0;
}

std::int64_t Balance(const double* first, const double* second, const std::int64_t* weights, std::size_t count) {
    WholeLanes balance{};
    ForLanes(count, [&](std::size_t row, std::size_t left) {
        const Sides sides = Compare(first + row, second + row, left);
        const WholeLanes ofRows = LoadLanes(weights + row);
        balance += (ofRows & sides.above) - (ofRows & sides.below);
    });
    return SumOfLanes(balance);
}

BalanceAndTies CompareTied(const double* first, const double* second, const std::int64_t* weights, std::int64_t* tied,
                           std::size_t count) {
    WholeLanes balance{};
    WholeLanes step{};
    ForLanes(count, [&](std::size_t row, std::size_t left) {
        const Sides sides = Compare(first + row, second + row, left);
        const WholeLanes areTied = ~(sides.above | sides.below);
        const WholeLanes ofRows = LoadLanes(weights + row);
        const WholeLanes ofTied = LoadLanes(tied + row);
        balance += (ofRows & sides.above) - (ofRows & sides.below);
        step += ofTied & areTied;
        StoreLanes(ofTied + (ofRows & areTied), tied + row);
    });
    return {SumOfLanes(balance), SumOfLanes(step)};
}

}  // namespace RowComparison
