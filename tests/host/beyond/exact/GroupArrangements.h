#pragma once

// What tests of significances over arrangements share: statistics by their definition, and all arrangements of a few
// cases. Nothing here rests on what is tested.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/beyond/TieBlocks.h"
#include "host/beyond/exact/ScoreRows.h"

namespace tarn::arrangement_test {

/// A value and a group for each case.
struct Cases {
    std::vector<int> values;
    std::vector<int> groups;
    int groupCount = 0;

    int SizeOf(int group) const { return static_cast<int>(std::count(groups.begin(), groups.end(), group)); }
};

/// The cases of the lists, one list for each group, in ascending order of their values.
inline Cases CasesOf(const std::vector<std::vector<int>>& lists) {
    std::vector<std::pair<int, int>> pairs;
    for (std::size_t group = 0; group < lists.size(); ++group) {
        for (const int value : lists[group]) pairs.emplace_back(value, static_cast<int>(group));
    }
    std::sort(pairs.begin(), pairs.end());
    Cases cases;
    cases.groupCount = static_cast<int>(lists.size());
    for (const auto& pair : pairs) {
        cases.values.push_back(pair.first);
        cases.groups.push_back(pair.second);
    }
    return cases;
}

/// The values have to ascend.
inline TieBlocks BlocksOf(const Cases& cases) {
    TieBlocks blocks;
    blocks.groupCount = static_cast<std::size_t>(cases.groupCount);
    for (std::size_t i = 0; i < cases.values.size(); ++i) {
        if (i == 0 || cases.values[i] != cases.values[i - 1])
            blocks.counts.resize(blocks.counts.size() + blocks.groupCount);
        ++blocks.counts[blocks.counts.size() - blocks.groupCount + static_cast<std::size_t>(cases.groups[i])];
    }
    return blocks;
}

/// Twice the mean of the places that a value's cases take.
inline int DoubledRank(const std::vector<int>& values, int value) {
    int rank = 1;
    for (const int other : values) rank += 2 * static_cast<int>(other < value) + static_cast<int>(other == value);
    return rank;
}

inline std::vector<double> RankSums(const Cases& cases) {
    std::vector<double> sums(static_cast<std::size_t>(cases.groupCount));
    for (std::size_t i = 0; i < cases.values.size(); ++i) {
        sums[static_cast<std::size_t>(cases.groups[i])] += DoubledRank(cases.values, cases.values[i]) / 2.0;
    }
    return sums;
}

inline double RankSumOfFirst(const Cases& cases) {
    return RankSums(cases)[0];
}

/// H without the correction for ties, which is the same for all arrangements.
inline double KruskalWallisH(const Cases& cases) {
    const auto n = static_cast<double>(cases.values.size());
    const std::vector<double> sums = RankSums(cases);
    double squares = 0;
    for (int group = 0; group < cases.groupCount; ++group) {
        const double sum = sums[static_cast<std::size_t>(group)];
        if (cases.SizeOf(group) > 0) squares += sum * sum / cases.SizeOf(group);
    }
    return 12 / (n * (n + 1)) * squares - 3 * (n + 1);
}

/// Pearson's chi-square of the counts above and not above `median`, from its expected counts.
inline double MedianChiSquare(const Cases& cases, int median) {
    const auto n = static_cast<double>(cases.values.size());
    const auto above =
        static_cast<double>(std::count_if(cases.values.begin(), cases.values.end(), [&](int v) { return v > median; }));
    double chiSquare = 0;
    for (int group = 0; group < cases.groupCount; ++group) {
        double own = 0;
        for (std::size_t i = 0; i < cases.values.size(); ++i) {
            own += cases.groups[i] == group && cases.values[i] > median ? 1 : 0;
        }
        const double expected = cases.SizeOf(group) * above / n;
        const double rest = cases.SizeOf(group) - expected;
        chiSquare += (own - expected) * (own - expected) * (1 / expected + 1 / rest);
    }
    return chiSquare;
}

/// Pairs that rise from an earlier group to a later one, and half of the tied pairs.
inline double JonckheereJ(const Cases& cases) {
    double pairs = 0;
    for (std::size_t i = 0; i < cases.values.size(); ++i) {
        for (std::size_t j = 0; j < cases.values.size(); ++j) {
            if (cases.groups[i] >= cases.groups[j]) continue;
            pairs += cases.values[i] < cases.values[j] ? 1 : cases.values[i] == cases.values[j] ? 0.5 : 0;
        }
    }
    return pairs;
}

/// The largest difference of the first group's distribution function to that of the second, above it.
inline double LargestAbove(const Cases& cases, int first, int second) {
    double largest = 0;
    for (const int value : cases.values) {
        double difference = 0;
        for (std::size_t i = 0; i < cases.values.size(); ++i) {
            if (cases.values[i] > value) continue;
            difference += (cases.groups[i] == first ? 1.0 / cases.SizeOf(first) : 0);
            difference -= (cases.groups[i] == second ? 1.0 / cases.SizeOf(second) : 0);
        }
        largest = std::max(largest, difference);
    }
    return largest;
}

inline double Runs(const Cases& cases) {
    double runs = 1;
    for (std::size_t i = 1; i < cases.groups.size(); ++i) runs += cases.groups[i] != cases.groups[i - 1] ? 1 : 0;
    return runs;
}

constexpr double kEqual = 1e-9;  // what rounding may make of equal statistics

/// Significances from the statistics of all arrangements.
struct Shares {
    double less = 0;
    double greater = 0;
    double twoSided = 0;  ///< as far from the mean, or further
};

inline Shares SharesOf(const std::vector<double>& statistics, double observed) {
    const auto count = static_cast<double>(statistics.size());
    double mean = 0;
    for (const double statistic : statistics) mean += statistic / count;
    Shares shares;
    for (const double statistic : statistics) {
        shares.less += statistic <= observed + kEqual ? 1 / count : 0;
        shares.greater += statistic >= observed - kEqual ? 1 / count : 0;
        shares.twoSided += std::fabs(statistic - mean) >= std::fabs(observed - mean) - kEqual ? 1 / count : 0;
    }
    return shares;
}

using CasesStatistic = std::function<double(const Cases&)>;

/// Over all ways to give the groups to the values.
inline Shares EnumeratedShares(const Cases& cases, const CasesStatistic& statistic) {
    std::vector<double> statistics;
    Cases arranged = cases;
    std::sort(arranged.groups.begin(), arranged.groups.end());
    do {
        statistics.push_back(statistic(arranged));
    } while (std::next_permutation(arranged.groups.begin(), arranged.groups.end()));
    return SharesOf(statistics, statistic(cases));
}

inline double SumOfSquaredColumnSums(const ScoreRows& rows) {
    double squares = 0;
    for (std::size_t column = 0; column < rows.columns; ++column) {
        double sum = 0;
        for (std::size_t row = 0; row < rows.RowCount(); ++row) sum += static_cast<double>(rows.At(row, column));
        squares += sum * sum;
    }
    return squares;
}

/// Over all ways to arrange the scores within each row, those of equal scores counted as often as they come about.
inline Shares EnumeratedRowShares(const ScoreRows& rows) {
    std::vector<std::vector<std::size_t>> orders;
    std::vector<std::size_t> order(rows.columns);
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    do {
        orders.push_back(order);
    } while (std::next_permutation(order.begin(), order.end()));
    std::vector<double> statistics;
    ScoreRows arranged = rows;
    const std::function<void(std::size_t)> arrange = [&](std::size_t row) {
        if (row == rows.RowCount()) {
            statistics.push_back(SumOfSquaredColumnSums(arranged));
            return;
        }
        for (const auto& one : orders) {
            for (std::size_t column = 0; column < rows.columns; ++column) {
                arranged.scores[row * rows.columns + column] = rows.At(row, one[column]);
            }
            arrange(row + 1);
        }
    };
    arrange(0);
    return SharesOf(statistics, SumOfSquaredColumnSums(rows));
}

/// The doubled ranks within the rows of a table of values.
inline ScoreRows RankRows(const std::vector<std::vector<int>>& table) {
    ScoreRows rows;
    for (const std::vector<int>& values : table) {
        rows.columns = values.size();
        for (const int value : values) rows.scores.push_back(DoubledRank(values, value));
    }
    return rows;
}

}  // namespace tarn::arrangement_test
