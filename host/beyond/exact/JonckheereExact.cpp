#include "host/beyond/exact/JonckheereExact.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <numeric>
#include <vector>

#include "host/beyond/StopQuestion.h"
#include "host/beyond/exact/RankSumExact.h"

namespace tarn {

namespace {

using Integers = std::vector<std::int64_t>;
using Numbers = std::vector<double>;

constexpr double kMostCases = 20000;
/// Of ways to share out the cases, in a product over the groups that a whole number can hold.
constexpr double kMostShares = 1e12;

/// The blocks without empty groups and empty blocks.
TieBlocks WithoutEmpty(const TieBlocks& blocks) {
    std::vector<std::size_t> groups;
    for (std::size_t g = 0; g < blocks.groupCount; ++g) {
        bool hasCases = false;
        for (std::size_t b = 0; b < blocks.BlockCount(); ++b) hasCases = hasCases || blocks.CountOf(b, g) > 0;
        if (hasCases) groups.push_back(g);
    }
    TieBlocks kept;
    kept.groupCount = groups.size();
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) {
        bool hasCases = false;
        for (const std::size_t g : groups) hasCases = hasCases || blocks.CountOf(b, g) > 0;
        if (!hasCases) continue;
        for (const std::size_t g : groups) kept.counts.push_back(blocks.CountOf(b, g));
    }
    return kept;
}

Integers SizesOf(const TieBlocks& blocks) {
    Integers sizes(blocks.groupCount, 0);
    for (std::size_t i = 0; i < blocks.counts.size(); ++i) sizes[i % blocks.groupCount] += blocks.counts[i];
    return sizes;
}

double CasesOf(const TieBlocks& blocks) {
    double cases = 0;
    for (const std::int64_t count : blocks.counts) cases += static_cast<double>(count);
    return cases;
}

std::int64_t TiedIn(const TieBlocks& blocks, std::size_t block) {
    std::int64_t tied = 0;
    for (std::size_t g = 0; g < blocks.groupCount; ++g) tied += blocks.CountOf(block, g);
    return tied;
}

bool HasTies(const TieBlocks& blocks) {
    return CasesOf(blocks) > static_cast<double>(blocks.BlockCount());
}

std::int64_t DoubledStatistic(const TieBlocks& blocks) {
    Integers below(blocks.groupCount, 0);
    std::int64_t doubled = 0;
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) {
        std::int64_t belowEarlier = 0;
        std::int64_t tiedEarlier = 0;
        for (std::size_t g = 0; g < blocks.groupCount; ++g) {
            const std::int64_t count = blocks.CountOf(b, g);
            doubled += count * (2 * belowEarlier + tiedEarlier);
            belowEarlier += below[g];
            tiedEarlier += count;
            below[g] += count;
        }
    }
    return doubled;
}

/// Weights of whole numbers from `first` on.
struct Row {
    std::int64_t first = 0;
    Numbers weights;
};

void AddScaled(const Numbers& source, double factor, double* target) {
    double* __restrict const to = target;
    const double* __restrict const from = source.data();
    const std::size_t count = source.size();
    for (std::size_t k = 0; k < count; ++k) to[k] += factor * from[k];
}

void AddMoved(Row& target, const Row& source, std::int64_t shift, double factor) {
    const std::int64_t first = source.first + shift;
    const std::int64_t end = first + static_cast<std::int64_t>(source.weights.size());
    if (target.weights.empty()) target.first = first;
    if (first < target.first) {
        target.weights.insert(target.weights.begin(), static_cast<std::size_t>(target.first - first), 0.0);
        target.first = first;
    }
    const auto length = static_cast<std::size_t>(end - target.first);
    if (length > target.weights.size()) target.weights.resize(length, 0.0);
    AddScaled(source.weights, factor, target.weights.data() + (first - target.first));
}

/// Tails of the doubled statistic, whose expectation is half of `doubledExpectation`.
ExactTails TailsOf(const Row& row, std::int64_t observed, std::int64_t doubledExpectation) {
    const std::int64_t distance = std::abs(2 * observed - doubledExpectation);
    ExactTails tails{0, 0, 0};
    double all = 0;
    for (std::size_t k = 0; k < row.weights.size(); ++k) {
        const std::int64_t doubled = row.first + static_cast<std::int64_t>(k);
        const double weight = row.weights[k];
        all += weight;
        if (doubled <= observed) tails.less += weight;
        if (doubled >= observed) tails.greater += weight;
        if (std::abs(2 * doubled - doubledExpectation) >= distance) tails.twoSided += weight;
    }
    for (double* const tail : {&tails.less, &tails.greater, &tails.twoSided}) *tail = std::min(1.0, *tail / all);
    return tails;
}

/// The doubled statistic's expectation, twice: the number of pairs of cases of different groups, twice.
std::int64_t DoubledExpectation(const Integers& sizes) {
    std::int64_t cases = 0;
    std::int64_t squares = 0;
    for (const std::int64_t size : sizes) {
        cases += size;
        squares += size * size;
    }
    return cases * cases - squares;
}

/// Probabilities of U of two groups without ties, by which group the largest case is in (Mann and Whitney, 1947, Annals
/// of Mathematical Statistics 18, 50-60).
Numbers UntiedU(std::int64_t first, std::int64_t second) {
    const auto columns = static_cast<std::size_t>(second) + 1;
    std::vector<Numbers> byFirst(columns, Numbers{1.0});  // for each size of the second group, and none in the first
    for (std::int64_t i = 1; i <= first; ++i) {
        for (std::int64_t j = 1; j <= second; ++j) {
            AskNowAndThen();
            // The largest case is in the first group, or in the second and above the i of the first.
            const double ofFirst = static_cast<double>(i) / static_cast<double>(i + j);
            const auto column = static_cast<std::size_t>(j);
            Numbers sum(static_cast<std::size_t>(i * j) + 1, 0.0);
            AddScaled(byFirst[column], ofFirst, sum.data());
            AddScaled(byFirst[column - 1], 1 - ofFirst, sum.data() + i);
            byFirst[column] = std::move(sum);
        }
    }
    return byFirst.back();
}

Row UntiedDistribution(const Integers& sizes) {
    Numbers all{1.0};
    std::int64_t earlier = sizes[0];
    for (std::size_t g = 1; g < sizes.size(); ++g) {
        const Numbers u = UntiedU(std::max(earlier, sizes[g]), std::min(earlier, sizes[g]));
        Numbers sum(all.size() + u.size() - 1, 0.0);
        for (std::size_t k = 0; k < u.size(); ++k) {
            AskNowAndThen();
            AddScaled(all, u[k], sum.data() + k);
        }
        all = std::move(sum);
        earlier += sizes[g];
    }
    return {0, std::move(all)};
}

double UntiedCost(const Integers& sizes) {
    double cost = 0;
    double width = 1;
    auto earlier = static_cast<double>(sizes[0]);
    for (std::size_t g = 1; g < sizes.size(); ++g) {
        const auto size = static_cast<double>(sizes[g]);
        const double pairs = earlier * size;
        cost += pairs * (pairs + 1) + width * (pairs + 1);
        width += pairs;
        earlier += size;
    }
    return cost;
}

/// The cases of the groups so far as one number, and the distribution of the doubled statistic for each of them.
using States = std::map<std::int64_t, Row>;

/// Goes through the blocks. Where a block of b cases gives x[g] cases to group g, the doubled statistic grows by
///     2 * (sum over g of x[g] * cases of earlier groups so far) + b * (b-1) / 2 - sum over g of x[g] * (x[g]-1) / 2
/// the last two of which are the ties between groups. Groups get their cases one after the other, the last one first,
/// so that the earlier ones still have what they had before the block.
class SharingOut {
 public:
    explicit SharingOut(const Integers& sizes) : sizes_(sizes), places_(sizes.size(), 1) {
        for (std::size_t g = 1; g < sizes.size(); ++g) places_[g] = places_[g - 1] * (sizes[g - 1] + 1);
        states_[0] = {0, {1.0}};
    }

    void AddBlock(std::int64_t tied) {
        for (std::size_t g = sizes_.size(); g-- > 0;) AddGroup(g, tied);
        for (auto& [key, row] : states_) row.first += tied * (tied - 1) / 2;
        drawn_ += tied;
    }

    const Row& Distribution() const { return states_.begin()->second; }

 private:
    std::int64_t CountIn(std::int64_t key, std::size_t group) const {
        return key / places_[group] % (sizes_[group] + 1);
    }

    void AddGroup(std::size_t group, std::int64_t tied) {
        States next;
        for (const auto& [key, row] : states_) {
            AskNowAndThen();
            std::int64_t earlier = 0;
            std::int64_t all = 0;
            for (std::size_t g = 0; g < sizes_.size(); ++g) {
                if (g == group) earlier = all;
                all += CountIn(key, g);
            }
            const std::int64_t open = tied - (all - drawn_);
            const std::int64_t most = std::min(open, sizes_[group] - CountIn(key, group));
            // The first group comes last and takes the rest.
            for (std::int64_t taken = group == 0 ? open : 0; taken <= most; ++taken) {
                AddMoved(next[key + taken * places_[group]], row, 2 * taken * earlier - taken * (taken - 1) / 2,
                         Chance(group, open, taken));
            }
        }
        states_ = std::move(next);
    }

    /// That `taken` of `open` cases go to a group and not to an earlier one, where each case goes to groups by their
    /// sizes.
    double Chance(std::size_t group, std::int64_t open, std::int64_t taken) const {
        if (group == 0) return 1;
        const auto end = sizes_.begin() + static_cast<std::ptrdiff_t>(group) + 1;
        const std::int64_t upToGroup = std::accumulate(sizes_.begin(), end, std::int64_t{0});
        const long double mine = static_cast<long double>(sizes_[group]) / static_cast<long double>(upToGroup);
        long double chance = 1;
        for (std::int64_t i = 1; i <= taken; ++i) {
            chance *= mine * static_cast<long double>(open - taken + i) / static_cast<long double>(i);
        }
        return static_cast<double>(chance * std::pow(1 - mine, static_cast<long double>(open - taken)));
    }

    Integers sizes_;
    Integers places_;  ///< what one case of a group adds to the number of a state
    States states_;
    std::int64_t drawn_ = 0;
};

/// For each number of cases, in how many ways the groups can have got them.
Numbers WaysToShare(const Integers& sizes) {
    Numbers ways{1.0};
    for (const std::int64_t size : sizes) {
        Numbers more(ways.size() + static_cast<std::size_t>(size), 0.0);
        double window = 0;
        for (std::size_t k = 0; k < more.size(); ++k) {
            if (k < ways.size()) window += ways[k];
            if (k > static_cast<std::size_t>(size)) window -= ways[k - static_cast<std::size_t>(size) - 1];
            more[k] = window;
        }
        ways = std::move(more);
    }
    return ways;
}

double TiedCost(const TieBlocks& blocks, const Integers& sizes) {
    // Finding a row and its chance, in additions.
    constexpr double kForEachRow = 100;
    // As measured: most rows are narrower than the widest, and most groups can't take all cases of a block.
    constexpr double kShareOfAll = 0.4;
    double shares = 1;
    for (const std::int64_t size : sizes) shares *= static_cast<double>(size) + 1;
    if (shares > kMostShares) return std::numeric_limits<double>::infinity();
    const Numbers ways = WaysToShare(sizes);
    const auto groups = static_cast<double>(sizes.size());
    const double pairs = static_cast<double>(DoubledExpectation(sizes)) / 2;
    double cost = 0;
    std::size_t drawn = 0;
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) {
        const auto tied = static_cast<double>(TiedIn(blocks, b));
        const double before = ways[drawn];
        drawn += static_cast<std::size_t>(tied);
        const auto cases = static_cast<double>(drawn);
        const double width = 2 * std::min(pairs, cases * cases * (1 - 1 / groups) / 2);
        cost += kShareOfAll * groups * before * (tied + 1) * (tied + 2) / 2 * (width / 2 + kForEachRow);
    }
    return cost;
}

/// Two groups in the order of Jonckheere's statistic, which counts pairs in which the second group's case is larger.
ExactTails TwoGroups(const TieBlocks& blocks) {
    ExactTails tails = RankSumExact(blocks);
    std::swap(tails.less, tails.greater);
    return tails;
}

}  // namespace

ExactTails JonckheereExact(const TieBlocks& given) {
    const TieBlocks blocks = WithoutEmpty(given);
    if (blocks.groupCount < 2) return {};
    if (blocks.groupCount == 2) return TwoGroups(blocks);
    const Integers sizes = SizesOf(blocks);
    const std::int64_t observed = DoubledStatistic(blocks);
    const std::int64_t expectation = DoubledExpectation(sizes);
    // Without ties the statistic itself is a whole number.
    if (!HasTies(blocks)) {
        const Row row = UntiedDistribution(sizes);
        return TailsOf(row, observed / 2, expectation / 2);
    }
    SharingOut sharing(sizes);
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) sharing.AddBlock(TiedIn(blocks, b));
    return TailsOf(sharing.Distribution(), observed, expectation);
}

double JonckheereExactCost(const TieBlocks& given) {
    if (CasesOf(given) > kMostCases) return std::numeric_limits<double>::infinity();
    const TieBlocks blocks = WithoutEmpty(given);
    if (blocks.groupCount < 2) return 1;
    if (blocks.groupCount == 2) return RankSumExactCost(blocks);
    const Integers sizes = SizesOf(blocks);
    return HasTies(blocks) ? TiedCost(blocks, sizes) : UntiedCost(sizes);
}

}  // namespace tarn
