#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

/// Ascending records of several groups, for tests that hold one walk over all of them to walks over some.
namespace several {

struct GroupedColumns {
    std::vector<double> values;
    std::vector<std::int32_t> weights;
    std::vector<std::int32_t> groups;

    std::size_t Size() const { return values.size(); }
    /// The records of the groups that `isMember` says.
    template <typename IsMember>
    GroupedColumns Of(IsMember isMember) const {
        GroupedColumns some;
        for (std::size_t i = 0; i < Size(); ++i) {
            if (!isMember(groups[i])) continue;
            some.values.push_back(values[i]);
            some.weights.push_back(weights[i]);
            some.groups.push_back(groups[i]);
        }
        return some;
    }
};

/// Values on a grid, so that many are tied, and between them steps of 3e-15, three of which are still a tie.
enum class Ties { kEqual, kNearlyEqual, kInChains };

inline GroupedColumns RandomRecords(std::size_t count, std::int32_t groupCount, int gridPoints, Ties ties,
                                    const std::vector<std::int32_t>& weights, unsigned seed) {
    std::mt19937 random(seed);
    const unsigned steps = ties == Ties::kEqual ? 1 : ties == Ties::kNearlyEqual ? 4 : 12;
    GroupedColumns records;
    for (std::size_t i = 0; i < count; ++i) {
        const double point = static_cast<double>(random() % static_cast<unsigned>(gridPoints));
        records.values.push_back(point * 0.25 + static_cast<double>(random() % steps) * 3e-15);
        records.weights.push_back(weights[random() % weights.size()]);
        records.groups.push_back(static_cast<std::int32_t>(random() % static_cast<unsigned>(groupCount)));
    }
    std::sort(records.values.begin(), records.values.end());
    return records;
}

}  // namespace several
