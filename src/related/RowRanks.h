#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

/// Mid-ranks of the values of one row among themselves, as `TARNRank` gives them for weights of 1, ties included, but
/// without an allocation once a row of that length has been ranked: there is a row for each record.
class RowRanks {
 public:
    /// Takes the values of the next row and sorts them. Equal ones keep their order.
    void Sort(const std::vector<double>& row);

    /// Ranks the values at the positions first .. last among themselves. Returns the sum of t cubed minus t over the
    /// sizes t of their tied runs.
    double Rank(std::size_t first, std::size_t last);

    /// The rank of the value at a position of those that were ranked last.
    double At(std::size_t position) const { return ranks[position]; }
    std::int64_t TwiceAt(std::size_t position) const { return static_cast<std::int64_t>(2 * ranks[position]); }

 private:
    struct Entry {
        double value;
        std::size_t position;
    };
    double RankRuns(const std::vector<Entry>& ascending);

    std::vector<Entry> sorted;
    std::vector<Entry> part;
    std::vector<double> ranks;
};

/// How often each rank came, weights counted. Ranks are whole or half.
class RankFrequencies {
 public:
    void Add(double rank, double weight);

    /// (rank, weight) in ascending order of the ranks. A rank that came with weight 0 alone is among them.
    const std::vector<std::pair<double, double>>& Entries() const { return entries; }

 private:
    std::vector<std::pair<double, double>> entries;
};
