#include "host/beyond/exact/SmirnovExact.h"
#include "host/beyond/StopQuestion.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace tarn {

namespace {

struct Sizes {
    std::int64_t first = 0;
    std::int64_t second = 0;
};

Sizes SizesOf(const TieBlocks& blocks) {
    Sizes sizes;
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) {
        sizes.first += blocks.CountOf(b, 0);
        sizes.second += blocks.CountOf(b, 1);
    }
    return sizes;
}

/// Differences of the distribution functions, times first * second.
struct Differences {
    std::int64_t above = 0;
    std::int64_t below = 0;
};

Differences DifferencesOf(const TieBlocks& blocks, const Sizes& sizes) {
    Differences largest;
    Sizes sofar;
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) {
        sofar.first += blocks.CountOf(b, 0);
        sofar.second += blocks.CountOf(b, 1);
        const std::int64_t difference = sofar.first * sizes.second - sofar.second * sizes.first;
        largest.above = std::max(largest.above, difference);
        largest.below = std::max(largest.below, -difference);
    }
    return largest;
}

/// A difference at which a path is counted and left.
struct Bounds {
    std::int64_t above = std::numeric_limits<std::int64_t>::max();
    std::int64_t below = std::numeric_limits<std::int64_t>::max();
};

/// Draws the cases one after the other and keeps, for each number of them that the first group may have got, the chance
/// of all paths there that haven't reached a bound.
class Paths {
 public:
    Paths(const Sizes& sizes, const Bounds& bounds)
        : sizes_(sizes), bounds_(bounds), chances_(static_cast<std::size_t>(sizes.first) + 2, 0.0) {
        chances_[0] = 1;
    }

    void Draw() {
        const std::int64_t left = sizes_.first + sizes_.second - drawn_;
        const double perCase = 1 / static_cast<double>(left);
        const std::int64_t newLargest = std::min(largest_ + 1, sizes_.first);
        // The largest number first: each reads the one below, which is still that of the draw before.
        for (std::int64_t first = newLargest; first >= smallest_; --first) {
            const auto place = static_cast<std::size_t>(first);
            const auto secondLeft = static_cast<double>(std::max<std::int64_t>(0, sizes_.second - drawn_ + first));
            const double fromBelow =
                first > smallest_ ? chances_[place - 1] * static_cast<double>(sizes_.first - first + 1) : 0;
            chances_[place] = perCase * (chances_[place] * secondLeft + fromBelow);
        }
        ++drawn_;
        largest_ = newLargest;
        smallest_ = std::max(smallest_, drawn_ - sizes_.second);
    }

    /// Takes out the paths that are at a bound now.
    void EndBlock() {
        for (; smallest_ <= largest_ && -Difference(smallest_) >= bounds_.below; ++smallest_) Take(smallest_);
        for (; smallest_ <= largest_ && Difference(largest_) >= bounds_.above; --largest_) Take(largest_);
    }

    bool AreAllTaken() const { return smallest_ > largest_; }
    double Taken() const { return std::min(1.0, taken_); }

 private:
    std::int64_t Difference(std::int64_t first) const {
        return first * sizes_.second - (drawn_ - first) * sizes_.first;
    }

    void Take(std::int64_t first) {
        taken_ += chances_[static_cast<std::size_t>(first)];
        chances_[static_cast<std::size_t>(first)] = 0;
    }

    Sizes sizes_;
    Bounds bounds_;
    std::vector<double> chances_;
    std::int64_t drawn_ = 0;
    std::int64_t smallest_ = 0;
    std::int64_t largest_ = 0;
    double taken_ = 0;
};

/// `ends` has the number of cases of each block.
double ChanceToReach(const std::vector<std::int64_t>& ends, const Sizes& sizes, const Bounds& bounds) {
    Paths paths(sizes, bounds);
    for (std::size_t b = 0; b < ends.size() && !paths.AreAllTaken(); ++b) {
        for (std::int64_t i = 0; i < ends[b]; ++i) {
            AskNowAndThen();
            paths.Draw();
        }
        paths.EndBlock();
    }
    return paths.Taken();
}

SmirnovTails TailsOf(const TieBlocks& blocks, const std::vector<std::int64_t>& ends) {
    const Sizes sizes = SizesOf(blocks);
    SmirnovTails tails;
    if (sizes.first == 0 || sizes.second == 0) return tails;
    const Differences observed = DifferencesOf(blocks, sizes);
    const std::int64_t larger = std::max(observed.above, observed.below);
    const double unit = static_cast<double>(sizes.first) * static_cast<double>(sizes.second);
    tails.differenceAbove = static_cast<double>(observed.above) / unit;
    tails.differenceBelow = static_cast<double>(observed.below) / unit;
    tails.difference = static_cast<double>(larger) / unit;
    // A difference of 0 is reached by every path.
    if (larger > 0) tails.twoSided = ChanceToReach(ends, sizes, {larger, larger});
    if (observed.above > 0) tails.greater = ChanceToReach(ends, sizes, {.above = observed.above});
    if (observed.below > 0) tails.less = ChanceToReach(ends, sizes, {.below = observed.below});
    return tails;
}

}  // namespace

SmirnovTails SmirnovExact(const TieBlocks& blocks) {
    std::vector<std::int64_t> ends;
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) ends.push_back(blocks.CountOf(b, 0) + blocks.CountOf(b, 1));
    return TailsOf(blocks, ends);
}

SmirnovTails SmirnovExactIgnoringTies(const TieBlocks& blocks) {
    const Sizes sizes = SizesOf(blocks);
    return TailsOf(blocks, std::vector<std::int64_t>(static_cast<std::size_t>(sizes.first + sizes.second), 1));
}

double SmirnovExactCost(const TieBlocks& blocks) {
    constexpr double kAdditionsForEachPlace = 6;
    const Sizes sizes = SizesOf(blocks);
    return kAdditionsForEachPlace * (static_cast<double>(sizes.first) + 1) * (static_cast<double>(sizes.second) + 1);
}

}  // namespace tarn
