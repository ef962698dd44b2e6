#include "related/RowRanks.h"

#include <algorithm>
#include <cmath>

#include "support/TARNRank.h"

namespace {

/// Up to this length of a row, insertion beats the general sort.
constexpr std::size_t kInsertionUpTo = 32;

}  // namespace

void RowRanks::Sort(const std::vector<double>& row) {
    sorted.resize(row.size());
    ranks.resize(row.size());
    if (row.size() > kInsertionUpTo) {
        for (std::size_t i = 0; i < row.size(); ++i) sorted[i] = {row[i], i};
        // The position makes the order complete; std::stable_sort would allocate.
        std::sort(sorted.begin(), sorted.end(), [](const Entry& a, const Entry& b) {
            if (a.value < b.value || b.value < a.value) return a.value < b.value;
            const bool isNumber = !std::isnan(a.value);
            const bool isOtherNumber = !std::isnan(b.value);
            return isNumber == isOtherNumber ? a.position < b.position : isNumber;
        });
        return;
    }
    for (std::size_t i = 0; i < row.size(); ++i) {
        std::size_t place = i;
        for (; place > 0 && row[i] < sorted[place - 1].value; --place) sorted[place] = sorted[place - 1];
        sorted[place] = {row[i], i};
    }
}

double RowRanks::Rank(std::size_t first, std::size_t last) {
    if (first == 0 && last + 1 == sorted.size()) return RankRuns(sorted);
    part.clear();
    for (const Entry& entry : sorted) {
        if (entry.position >= first && entry.position <= last) part.push_back(entry);
    }
    return RankRuns(part);
}

double RowRanks::RankRuns(const std::vector<Entry>& ascending) {
    double tieSum = 0;
    for (std::size_t below = 0; below < ascending.size();) {
        std::size_t end = below + 1;
        while (end < ascending.size() && TARNRank::AreTied(ascending[end].value, ascending[below].value)) ++end;
        const auto size = static_cast<double>(end - below);
        const double midRank = (size + 1) * 0.5 + static_cast<double>(below);
        for (std::size_t i = below; i < end; ++i) ranks[ascending[i].position] = midRank;
        tieSum += size * size * size - size;
        below = end;
    }
    return tieSum;
}

void RankFrequencies::Add(double rank, double weight) {
    const auto place = std::lower_bound(entries.begin(), entries.end(), rank,
                                        [](const auto& entry, double value) { return entry.first < value; });
    if (place != entries.end() && place->first == rank) {
        place->second += weight;
    } else {
        entries.insert(place, {rank, weight});
    }
}
