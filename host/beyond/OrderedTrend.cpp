#include "host/beyond/OrderedTrend.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <limits>
#include <queue>
#include <utility>

#include "host/beyond/IntervalScales.h"
#include "host/beyond/PairScore.h"

namespace tarn {

namespace {

/// Sums over the first so many of a row of numbers (Fenwick, 1994, Software: Practice and Experience 24, 327-336).
class RunningSums {
 public:
    explicit RunningSums(std::size_t size) : sums_(size + 1, 0.0) {}
    void Add(std::size_t place, double amount) {
        for (std::size_t i = place + 1; i < sums_.size(); i += LowestBit(i)) sums_[i] += amount;
    }
    double OfFirst(std::size_t count) const {
        double sum = 0;
        for (std::size_t i = count; i > 0; i -= LowestBit(i)) sum += sums_[i];
        return sum;
    }

 private:
    static std::size_t LowestBit(std::size_t i) { return i & (~i + 1); }
    std::vector<double> sums_;
};

/// What the cases of a group add to the sum of signs of all pairs.
struct Additions {
    long double sum = 0;
    long double squares = 0;
};

/// Goes through the cases of all groups in ascending order.
class TrendWalk {
 public:
    explicit TrendWalk(const std::vector<const AscendingSample*>& groups)
        : groups_(groups), places_(groups.size()), signs_(groups.size()), additions_(groups.size()) {
        for (std::size_t g = 0; g < groups.size(); ++g) {
            signs_.Add(g, -groups[g]->size);
            next_.emplace(groups[g]->values[0], g);
        }
        while (!next_.empty()) TakeBlock();
    }
    const std::vector<Additions>& Result() const { return additions_; }

 private:
    /// All cases of the smallest value that is left. A group's number in `signs_` is how many of its cases are smaller
    /// less how many are larger.
    void TakeBlock() {
        const double value = next_.top().first;
        block_.clear();
        while (!next_.empty() && next_.top().first == value) {
            const std::size_t g = next_.top().second;
            next_.pop();
            block_.emplace_back(g, TakeCases(g, value));
        }
        for (const auto& [g, count] : block_) signs_.Add(g, count);
        const double all = signs_.OfFirst(groups_.size());
        for (const auto& [g, count] : block_) {
            const long double addition = signs_.OfFirst(g) - (all - signs_.OfFirst(g + 1));
            additions_[g].sum += count * addition;
            additions_[g].squares += count * addition * addition;
        }
        for (const auto& [g, count] : block_) signs_.Add(g, count);
    }

    double TakeCases(std::size_t g, double value) {
        const AscendingSample& group = *groups_[g];
        std::size_t& place = places_[g];
        double count = 0;
        for (; place < group.values.size() && group.values[place] == value; ++place) count += group.WeightAt(place);
        if (place < group.values.size()) next_.emplace(group.values[place], g);
        return count;
    }

    using Next = std::pair<double, std::size_t>;
    const std::vector<const AscendingSample*>& groups_;
    std::vector<std::size_t> places_;
    RunningSums signs_;
    std::vector<Additions> additions_;
    std::priority_queue<Next, std::vector<Next>, std::greater<>> next_;
    std::vector<std::pair<std::size_t, double>> block_;
};

ComparedPairs PairsOf(const std::vector<const AscendingSample*>& groups) {
    ComparedPairs pairs;
    for (const AscendingSample* group : groups) {
        pairs.count += pairs.cases * group->size;
        pairs.cases += group->size;
    }
    for (const AscendingSample* group : groups) {
        const double others = pairs.cases - group->size;
        pairs.shared += group->size * others / (2 * pairs.count) * others;
    }
    pairs.shared -= 1;
    return pairs;
}

}  // namespace

Estimate OrderedTrend(const std::vector<AscendingSample>& groups, double level) {
    std::vector<const AscendingSample*> filled;
    for (const AscendingSample& group : groups) {
        if (group.size > 0) filled.push_back(&group);
    }
    if (filled.size() < 2) return {};
    const TrendWalk walk(filled);
    const ComparedPairs pairs = PairsOf(filled);
    long double twiceSum = 0;  // each pair adds to both of its cases
    long double variance = 0;
    for (std::size_t g = 0; g < filled.size(); ++g) {
        const auto& [sum, squares] = walk.Result()[g];
        const long double n = filled[g]->size;
        twiceSum += sum;
        variance += n > 1 ? std::max(0.0L, squares - sum / n * sum) * n / (n - 1)
                          : std::numeric_limits<long double>::quiet_NaN();
    }
    const long double count = pairs.count;
    const auto share = static_cast<double>((twiceSum / (2 * count) + 1) / 2);
    const auto varianceOfShare = static_cast<double>(variance / (4 * count) / count);
    return AsCoefficient(LimitsOfPairShare(share, varianceOfShare, pairs, NormalBound(level)));
}

}  // namespace tarn
