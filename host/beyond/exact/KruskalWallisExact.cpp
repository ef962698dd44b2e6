#include "host/beyond/exact/KruskalWallisExact.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <utility>
#include <vector>

#include "host/beyond/StopQuestion.h"
#include "host/beyond/exact/GroupScatter.h"
#include "host/beyond/exact/GroupScores.h"
#include "host/beyond/exact/StateMap.h"

namespace tarn {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
constexpr std::size_t kMostGroups = 64;
constexpr std::int64_t kMostCases = 1000;

/// What the distribution rests on, in the smallest numbers that tell the same.
struct Design {
    std::vector<std::int64_t> sizes;     ///< of the groups, ascending
    std::vector<std::int64_t> observed;  ///< centred sums of scores of these groups
    std::vector<std::uint64_t> steps;    ///< of the cases in ascending order: score = lowest + unit * step
    std::vector<std::int64_t> blockSizes;
    std::int64_t lowest = 0;
    std::int64_t unit = 1;
    std::int64_t largestScore = 0;

    std::size_t Groups() const { return sizes.size(); }
    std::size_t Cases() const { return steps.size(); }
};

/// Nothing without two groups, or with more cases or groups than could ever be gone through.
std::optional<Design> DesignOf(const TieBlocks& blocks) {
    std::int64_t cases = 0;
    for (const std::int64_t count : blocks.counts) {
        if (count > kMostCases - cases) return std::nullopt;
        cases += count;
    }
    const GroupScores scores = RankScores(blocks);
    const std::size_t groups = scores.groupSizes.size();
    if (groups < 2 || groups > kMostGroups) return std::nullopt;
    Design design;
    std::vector<std::size_t> order(groups);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return scores.groupSizes[i]; });
    for (const std::size_t group : order) {
        design.sizes.push_back(scores.groupSizes[group]);
        design.observed.push_back(scores.sums[group]);
    }
    design.lowest = scores.scores.front();
    design.unit = 0;
    for (const std::int64_t score : scores.scores) design.unit = std::gcd(design.unit, score - design.lowest);
    design.unit = std::max<std::int64_t>(1, design.unit);
    for (std::size_t i = 0; i < scores.scores.size(); ++i) {
        const auto step = static_cast<std::uint64_t>((scores.scores[i] - design.lowest) / design.unit);
        design.steps.insert(design.steps.end(), static_cast<std::size_t>(scores.blockSizes[i]), step);
    }
    design.blockSizes = scores.blockSizes;
    design.largestScore = scores.LargestScore();
    return design;
}

/// How a state is written down: for each group the sum of its cases' steps, times 2^`countBits`, and their number. The
/// last group, a largest one, follows from the others and the cases so far.
struct StateWidth {
    std::size_t lanes;
    int countBits;
    int laneBits;
};

int BitWidth(std::uint64_t number) {
    return static_cast<int>(std::bit_width(number));
}

StateWidth WidthOf(const Design& design) {
    const std::size_t lanes = design.Groups() - 1;
    const std::int64_t largest = design.sizes[lanes - 1];
    const std::uint64_t most = std::accumulate(design.steps.end() - largest, design.steps.end(), std::uint64_t{0});
    const int countBits = BitWidth(static_cast<std::uint64_t>(design.sizes.back()));
    return {lanes, countBits, countBits + BitWidth(most)};
}

/// Gives the cases to the groups one by one.
template <typename Key>
class CaseByCase {
 public:
    CaseByCase(const Design& design, const StateWidth& width)
        : design_(design),
          packing_{width.lanes, width.laneBits},
          countBits_(width.countBits),
          scatter_(design.sizes, design.observed, design.largestScore) {}

    /// Nothing where memory doesn't suffice.
    std::optional<double> UpperTail() {
        states_.Add(0, 1);
        for (std::size_t given = 0; given + 1 < design_.Cases(); ++given) {
            next_.Clear();
            const bool hasRoom = states_.ForEach([&](Key key, double probability) {
                AskNowAndThen();
                return GiveNext(key, probability, given);
            });
            if (!hasRoom) return std::nullopt;
            std::swap(states_, next_);
            soFar_ += Lane(design_.steps[given]);
        }
        double tail = 0;
        states_.ForEach([&](Key key, double probability) {
            if (IsAsLarge(key)) tail += probability;
            return true;
        });
        return std::min(1.0, tail);
    }

 private:
    using Lanes = std::array<std::uint64_t, kMostGroups>;

    /// A case with this step.
    std::uint64_t Lane(std::uint64_t step) const { return (step << countBits_) + 1; }
    std::int64_t CountIn(std::uint64_t lane) const {
        return static_cast<std::int64_t>(lane & ((std::uint64_t{1} << countBits_) - 1));
    }

    void Unpack(Key key, Lanes& lanes) const {
        packing_.Unpack(key, lanes.data());
        std::uint64_t last = soFar_;
        for (std::size_t i = 0; i < packing_.lanes; ++i) last -= lanes[i];
        lanes[packing_.lanes] = last;
    }

    /// Gives the next case to each group that has room for it, in proportion to the room. Groups of one size stand in
    /// ascending order of their lanes; of those with equal lanes the last one stands for all.
    bool GiveNext(Key key, double probability, std::size_t given) {
        Lanes lanes;
        Unpack(key, lanes);
        const double share = probability / static_cast<double>(design_.Cases() - given);
        const std::uint64_t added = Lane(design_.steps[given]);
        double equals = 0;
        for (std::size_t i = 0; i < design_.Groups(); ++i) {
            ++equals;
            const bool isSizeAgain = i + 1 < design_.Groups() && design_.sizes[i + 1] == design_.sizes[i];
            if (isSizeAgain && lanes[i + 1] == lanes[i]) continue;
            const std::int64_t room = design_.sizes[i] - CountIn(lanes[i]);
            const double weight = std::exchange(equals, 0) * static_cast<double>(room);
            if (room > 0 && !next_.Add(WithAdded(lanes, i, added), share * weight)) return false;
        }
        return true;
    }

    Key WithAdded(const Lanes& before, std::size_t group, std::uint64_t added) const {
        Lanes lanes;
        std::copy_n(before.begin(), design_.Groups(), lanes.begin());
        const std::uint64_t lane = lanes[group] + added;
        std::size_t place = group;
        while (place + 1 < design_.Groups() && design_.sizes[place + 1] == design_.sizes[group] &&
               lanes[place + 1] < lane) {
            lanes[place] = lanes[place + 1];
            ++place;
        }
        lanes[place] = lane;
        return packing_.Pack(lanes.data());
    }

    /// Whether the groups scatter as much as the observed ones; the last case goes where there is room for it.
    bool IsAsLarge(Key key) const {
        Lanes lanes;
        Unpack(key, lanes);
        std::array<std::int64_t, kMostGroups> distances;
        for (std::size_t i = 0; i < design_.Groups(); ++i) {
            if (CountIn(lanes[i]) < design_.sizes[i]) lanes[i] += Lane(design_.steps.back());
            const auto sum = static_cast<std::int64_t>(lanes[i] >> countBits_);
            distances[i] = design_.unit * sum + design_.lowest * design_.sizes[i];
        }
        return scatter_.CompareWithObserved(distances.data()) >= 0;
    }

    const Design& design_;
    LanePacking<Key> packing_;
    int countBits_;
    GroupScatter scatter_;
    StateMap<Key> states_;
    StateMap<Key> next_;
    std::uint64_t soFar_ = 0;  // the lanes of all groups together
};

/// About how many states there are, from how many sums a number of cases can have.
class StateCount {
 public:
    explicit StateCount(const Design& design)
        : design_(design), choices_(Most() + 1), before_(Most() + 1), sums_(Most() + 1), totals_(design.Cases() + 1) {
        choices_[0] = before_[0] = 1;
        std::partial_sum(design.steps.begin(), design.steps.end(), totals_.begin() + 1, std::plus<>());
    }

    /// The states after each number of cases, added up; infinite where they are too many to be counted.
    double Sum() {
        double sum = 0;
        for (const std::int64_t size : design_.blockSizes) {
            before_ = choices_;
            for (std::int64_t i = 1; i <= size; ++i) {
                ++given_;
                CountSums(static_cast<std::size_t>(i));
                sum += CountFrom(0, given_, 1, 0);
                if (visited_ > kMostVisited || sum > kMostStates) return kNever;
            }
        }
        return sum;
    }

 private:
    static constexpr std::size_t kMostVisited = 1'000'000;
    static constexpr double kMostStates = 1e15;
    /// Of the sums that the groups can have one by one, about this part for each of them but two goes together.
    static constexpr double kTogether = 0.8;

    std::size_t Most() const { return static_cast<std::size_t>(design_.sizes.back()); }

    /// How many sums of steps a group can have with each number of cases: no more than ways to choose among the blocks,
    /// nor than whole numbers from the smallest sum to the largest one. `ofBlock`: cases of the block so far.
    void CountSums(std::size_t ofBlock) {
        const std::size_t most = std::min(Most(), given_);
        for (std::size_t count = 0; count <= Most(); ++count) {
            if (count >= ofBlock) choices_[count] += before_[count - ofBlock];
            if (count > most) continue;
            const std::uint64_t range = totals_[given_] - totals_[given_ - count] - totals_[count];
            sums_[count] = std::min(choices_[count], static_cast<double>(range) + 1);
        }
    }

    /// Goes through the numbers of cases that the groups from `group` can have, groups of one size in ascending order.
    /// `states`: those of the groups before; `equals`: how many of these have as many cases as the last one.
    double CountFrom(std::size_t group, std::size_t left, double states, std::size_t equals) {
        if (++visited_ > kMostVisited) return 0;
        const auto size = static_cast<std::size_t>(design_.sizes[group]);
        const bool isSizeAgain = group > 0 && design_.sizes[group - 1] == design_.sizes[group];
        const std::size_t least = isSizeAgain ? last_ : 0;
        const std::size_t saved = last_;
        double sum = 0;
        if (group + 1 == design_.Groups()) {
            if (left > size || left < least) return 0;
            const std::size_t same = isSizeAgain && left == least ? equals + 1 : 1;
            return std::max(1.0, states / static_cast<double>(same));
        }
        for (std::size_t count = least; count <= std::min(size, left); ++count) {
            const std::size_t same = isSizeAgain && count == least ? equals + 1 : 1;
            const double ways = sums_[count] * (group == 0 ? 1 : kTogether);
            last_ = count;
            sum += CountFrom(group + 1, left - count, states * std::max(1.0, ways) / static_cast<double>(same), same);
        }
        last_ = saved;
        return sum;
    }

    const Design& design_;
    std::vector<double> choices_;
    std::vector<double> before_;
    std::vector<double> sums_;
    std::vector<std::uint64_t> totals_;
    std::size_t given_ = 0;
    std::size_t last_ = 0;
    std::size_t visited_ = 0;
};

}  // namespace

std::optional<double> KruskalWallisExact(const TieBlocks& blocks) {
    const std::optional<Design> design = DesignOf(blocks);
    if (!design) return std::nullopt;
    const StateWidth width = WidthOf(*design);
    if (LanePacking<std::uint64_t>::Fits(width.lanes, width.laneBits)) {
        return CaseByCase<std::uint64_t>(*design, width).UpperTail();
    }
    if (LanePacking<WideKey>::Fits(width.lanes, width.laneBits)) return CaseByCase<WideKey>(*design, width).UpperTail();
    return std::nullopt;
}

double KruskalWallisExactSteps(const TieBlocks& blocks) {
    const std::optional<Design> design = DesignOf(blocks);
    if (!design) return kNever;
    const StateWidth width = WidthOf(*design);
    if (!LanePacking<WideKey>::Fits(width.lanes, width.laneBits)) return kNever;
    constexpr double kStepsOfTransition = 2.5;  // as measured
    return StateCount(*design).Sum() * static_cast<double>(design->Groups()) * kStepsOfTransition;
}

}  // namespace tarn
