#include "host/beyond/exact/RankSumExact.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "host/beyond/StopQuestion.h"
#include "host/beyond/exact/UntiedRankSum.h"
#include "host/beyond/exact/WideInteger.h"

namespace tarn {

namespace {

using Integers = std::vector<std::int64_t>;

/// Beyond these many cases even a table of a few rows is out of reach.
constexpr std::int64_t kMostCases = std::int64_t{1} << 18;
/// Of blocks: among more of them only the split nearest to the middle is looked at.
constexpr std::size_t kMostSplitsTried = 64;

/// The doubled mid-ranks of all cases, in ascending order, and what is asked of them.
struct Cases {
    Integers scores;
    Integers splits;             ///< where a block ends: numbers of cases below
    std::int64_t chosen = 0;     ///< cases in the smaller group
    std::int64_t chosenSum = 0;  ///< of their scores
    bool isFirstChosen = true;   ///< whether the first group is the smaller one
};

WideInteger SizeOf(const TieBlocks& blocks, std::size_t group) {
    WideInteger size = 0;
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) size += blocks.CountOf(b, group);
    return size;
}

bool HasEmptyGroup(const TieBlocks& blocks) {
    return SizeOf(blocks, 0) == 0 || SizeOf(blocks, 1) == 0;
}

Cases CasesOf(const TieBlocks& blocks) {
    Cases cases;
    const WideInteger first = SizeOf(blocks, 0);
    const WideInteger second = SizeOf(blocks, 1);
    cases.isFirstChosen = first <= second;
    cases.chosen = static_cast<std::int64_t>(std::min(first, second));
    const std::size_t group = cases.isFirstChosen ? 0 : 1;
    for (std::size_t b = 0; b < blocks.BlockCount(); ++b) {
        const auto below = static_cast<std::int64_t>(cases.scores.size());
        const std::int64_t tied = blocks.CountOf(b, 0) + blocks.CountOf(b, 1);
        if (tied == 0) continue;
        const std::int64_t score = 2 * below + tied + 1;
        cases.scores.insert(cases.scores.end(), static_cast<std::size_t>(tied), score);
        cases.chosenSum += score * blocks.CountOf(b, group);
        cases.splits.push_back(below + tied);
    }
    return cases;
}

/// Scores of consecutive cases, less the smallest of them and in units of what divides all of them.
struct Reduced {
    std::int64_t base = 0;
    std::int64_t unit = 1;
    Integers scores;
    std::int64_t fewest = 0;  ///< of these cases that may be chosen
    std::int64_t most = 0;

    std::size_t Count() const { return scores.size(); }
};

Reduced Reduce(std::span<const std::int64_t> scores, std::int64_t others, std::int64_t chosen) {
    Reduced reduced;
    reduced.fewest = std::max<std::int64_t>(0, chosen - others);
    reduced.most = std::min(chosen, static_cast<std::int64_t>(scores.size()));
    if (scores.empty()) return reduced;
    reduced.base = scores.front();
    std::int64_t divisor = 0;
    for (const std::int64_t score : scores) divisor = std::gcd(divisor, score - reduced.base);
    reduced.unit = std::max<std::int64_t>(1, divisor);
    reduced.scores.reserve(scores.size());
    for (const std::int64_t score : scores) reduced.scores.push_back((score - reduced.base) / reduced.unit);
    return reduced;
}

struct Halves {
    Reduced lower;
    Reduced upper;
};

Halves SplitAt(const Cases& cases, std::int64_t split) {
    const std::span all(cases.scores);
    const auto below = static_cast<std::size_t>(split);
    const auto above = static_cast<std::int64_t>(all.size() - below);
    return {Reduce(all.first(below), above, cases.chosen), Reduce(all.subspan(below), split, cases.chosen)};
}

/// How many sums the table of `Rows` has room for after the first `count` cases.
double TableSize(const Reduced& half, std::size_t count) {
    const std::int64_t toCome = static_cast<std::int64_t>(half.Count() - count);
    const std::int64_t most = std::min(half.most, static_cast<std::int64_t>(count));
    double size = 0;
    std::int64_t width = 1;
    for (std::int64_t chosen = 0; chosen <= most; ++chosen) {
        if (chosen > 0) {
            const auto place = static_cast<std::size_t>(chosen);
            width += half.scores[count - place] - half.scores[place - 1];
        }
        if (chosen >= half.fewest - toCome) size += static_cast<double>(width);
    }
    return size;
}

/// The sum of the sizes over all counts of cases by Boole's rule, and the sums at the end.
double TableCost(const Reduced& half) {
    constexpr std::array<double, 4> kWeights{32. / 90, 12. / 90, 32. / 90, 7. / 90};
    constexpr double kSumsAtTheEnd = 8;
    const std::size_t cases = half.Count();
    double mean = 0;
    for (std::size_t quarter = 1; quarter <= kWeights.size(); ++quarter) {
        mean += kWeights[quarter - 1] * TableSize(half, cases * quarter / kWeights.size());
    }
    return static_cast<double>(cases) * mean + kSumsAtTheEnd * TableSize(half, cases);
}

bool AreMirrored(const Halves& halves) {
    const Integers& lower = halves.lower.scores;
    const Integers& upper = halves.upper.scores;
    if (lower.size() != upper.size() || lower.empty()) return false;
    for (std::size_t i = 0; i < lower.size(); ++i) {
        if (upper[i] != lower.back() - lower[lower.size() - 1 - i]) return false;
    }
    return halves.lower.fewest == halves.upper.fewest && halves.lower.most == halves.upper.most;
}

double HalvesCost(const Halves& halves) {
    return TableCost(halves.lower) + (AreMirrored(halves) ? 0 : TableCost(halves.upper));
}

struct Plan {
    Halves halves;
    double cost = std::numeric_limits<double>::infinity();
};

Integers SplitsToTry(const Cases& cases) {
    if (cases.splits.size() <= kMostSplitsTried) return cases.splits;
    const auto middle = static_cast<std::int64_t>(cases.scores.size() / 2);
    return {*std::ranges::lower_bound(cases.splits, middle)};
}

Plan CheapestPlan(const Cases& cases) {
    Plan best;
    for (const std::int64_t split : SplitsToTry(cases)) {
        Halves halves = SplitAt(cases, split);
        const double cost = HalvesCost(halves);
        if (cost < best.cost) best = {std::move(halves), cost};
    }
    return best;
}

/// For each number of chosen cases the probabilities of the sums of their scores, from the smallest sum there is.
struct Rows {
    std::int64_t fewest = 0;
    std::vector<std::int64_t> smallest;  ///< sum, in units, by the number of chosen cases from 0
    std::vector<std::vector<double>> probabilities;
};

/// target = (1 - chance) * target + chance * source, the source moved up by `shift` places.
void AddCase(std::vector<double>& target, const std::vector<double>& source, std::size_t shift, double chance) {
    const std::size_t length = std::max(target.size(), source.size() + shift);
    target.resize(length);
    const std::size_t end = source.size() + shift;
    const double left = 1 - chance;
    for (std::size_t k = 0; k < shift; ++k) target[k] *= left;
    for (std::size_t k = end; k < length; ++k) target[k] *= left;
    double* __restrict const moved = target.data() + shift;
    const double* __restrict const from = source.data();
    const std::size_t count = source.size();
    for (std::size_t k = 0; k < count; ++k) moved[k] = left * moved[k] + chance * from[k];
}

/// The shift algorithm, each case chosen with probability `chance`, so that no term can overflow. As the cases come in
/// ascending order, the smallest sum of a row never changes.
Rows MakeRows(const Reduced& half, double chance) {
    Rows rows;
    rows.fewest = half.fewest;
    rows.smallest.assign(static_cast<std::size_t>(half.most) + 1, 0);
    for (std::size_t k = 1; k < rows.smallest.size(); ++k) {
        rows.smallest[k] = rows.smallest[k - 1] + half.scores[k - 1];
    }
    rows.probabilities.resize(rows.smallest.size());
    rows.probabilities[0] = {1.0};
    const auto cases = static_cast<std::int64_t>(half.Count());
    for (std::int64_t i = 1; i <= cases; ++i) {
        const std::int64_t fewest = std::max<std::int64_t>(0, half.fewest - (cases - i));
        for (std::int64_t chosen = std::min(i, half.most); chosen >= std::max<std::int64_t>(fewest, 1); --chosen) {
            AskNowAndThen();
            const auto row = static_cast<std::size_t>(chosen);
            const std::int64_t shift = half.scores[static_cast<std::size_t>(i) - 1] - half.scores[row - 1];
            AddCase(rows.probabilities[row], rows.probabilities[row - 1], static_cast<std::size_t>(shift), chance);
        }
        if (fewest == 0) rows.probabilities[0][0] *= 1 - chance;
    }
    return rows;
}

/// The sums of scores at which the tails end.
struct Limits {
    std::int64_t less = 0;
    std::int64_t greater = 0;
    std::int64_t farBelow = 0;
    std::int64_t farAbove = 0;
};

std::int64_t FloorOfRatio(std::int64_t numerator, std::int64_t denominator) {
    const std::int64_t quotient = numerator / denominator;
    return quotient - (numerator % denominator < 0 ? 1 : 0);
}

Limits LimitsOf(const Cases& cases) {
    const auto count = static_cast<std::int64_t>(cases.scores.size());
    // Doubled ranks of all cases add up to count * (count + 1), whatever is tied.
    const std::int64_t expectation = cases.chosen * (count + 1);
    const std::int64_t distance = cases.chosenSum > expectation ? cases.chosenSum - expectation  //
                                                                : expectation - cases.chosenSum;
    return {cases.chosenSum, cases.chosenSum, expectation - distance, expectation + distance};
}

struct Tables {
    Halves halves;
    bool areMirrored = false;  ///< The upper table is the lower one seen from the other end, and not kept.
    Rows lower;
    Rows upper;

    Tables(Halves both, double chance)
        : halves(std::move(both)), areMirrored(AreMirrored(halves)), lower(MakeRows(halves.lower, chance)) {
        if (!areMirrored) upper = MakeRows(halves.upper, chance);
    }

    std::vector<double> UpperRow(std::size_t chosen) const {
        if (!areMirrored) return upper.probabilities[chosen];
        return {lower.probabilities[chosen].rbegin(), lower.probabilities[chosen].rend()};
    }

    std::int64_t SmallestOfUpper(std::size_t chosen) const {
        const auto end = halves.upper.scores.begin() + static_cast<std::ptrdiff_t>(chosen);
        return std::accumulate(halves.upper.scores.begin(), end, std::int64_t{0});
    }
};

/// Sums of a row from its start up to each place, with 0 for no place at all.
std::vector<double> SumsFromStart(const std::vector<double>& row) {
    std::vector<double> sums(row.size() + 1, 0.0);
    std::partial_sum(row.begin(), row.end(), sums.begin() + 1);
    return sums;
}

/// A pair of rows, one of each half, whose chosen cases are together as many as asked for.
struct RowPair {
    const std::vector<double>& lower;
    std::int64_t smallest = 0;  ///< sum of scores of both
    std::int64_t lowerUnit = 1;
    std::int64_t upperUnit = 1;
    std::vector<double> upToPlace;  ///< of the upper row
    std::vector<double> fromPlace;  ///< of the upper row, counted from its end

    double AtMost(std::int64_t limit) const {
        const auto length = static_cast<std::int64_t>(upToPlace.size() - 1);
        double sum = 0;
        std::int64_t room = limit - smallest;
        for (std::size_t k = 0; k < lower.size() && room >= 0; ++k, room -= lowerUnit) {
            sum += lower[k] * upToPlace[static_cast<std::size_t>(std::min(length, room / upperUnit + 1))];
        }
        return sum;
    }

    double AtLeast(std::int64_t limit) const {
        const auto length = static_cast<std::int64_t>(fromPlace.size() - 1);
        double sum = 0;
        std::int64_t missing = limit - smallest;
        for (std::size_t k = 0; k < lower.size(); ++k, missing -= lowerUnit) {
            const std::int64_t skipped = missing <= 0 ? 0 : -FloorOfRatio(-missing, upperUnit);
            if (skipped < length) sum += lower[k] * fromPlace[static_cast<std::size_t>(length - skipped)];
        }
        return sum;
    }
};

RowPair PairOf(const Tables& tables, std::int64_t below, std::int64_t above) {
    const Halves& halves = tables.halves;
    const auto i = static_cast<std::size_t>(below);
    const auto j = static_cast<std::size_t>(above);
    std::vector<double> row = tables.UpperRow(j);
    std::vector<double> upToPlace = SumsFromStart(row);
    std::ranges::reverse(row);
    const std::int64_t smallest = halves.lower.base * below + halves.lower.unit * tables.lower.smallest[i] +
                                  halves.upper.base * above + halves.upper.unit * tables.SmallestOfUpper(j);
    return {tables.lower.probabilities[i], smallest,          halves.lower.unit, halves.upper.unit,
            std::move(upToPlace),          SumsFromStart(row)};
}

ExactTails TailsOf(const Cases& cases, const Tables& tables) {
    const Limits limits = LimitsOf(cases);
    ExactTails tails{0, 0, 0};
    double all = 0;
    for (std::int64_t below = tables.halves.lower.fewest; below <= tables.halves.lower.most; ++below) {
        AskWhetherToStop();
        const RowPair pair = PairOf(tables, below, cases.chosen - below);
        for (const double probability : pair.lower) all += probability * pair.upToPlace.back();
        tails.less += pair.AtMost(limits.less);
        tails.greater += pair.AtLeast(limits.greater);
        tails.twoSided += pair.AtMost(limits.farBelow) + pair.AtLeast(limits.farAbove);
    }
    const bool isAtExpectation = limits.farBelow == limits.farAbove;
    tails.twoSided = isAtExpectation ? 1 : std::min(1.0, tails.twoSided / all);
    tails.less = std::min(1.0, tails.less / all);
    tails.greater = std::min(1.0, tails.greater / all);
    return tails;
}

/// U of the smaller group, counted from the end that is nearer.
struct NearU {
    std::int64_t u = 0;
    std::int64_t pairs = 0;
    bool isLow = true;
};

NearU NearUOf(const Cases& cases) {
    const std::int64_t u = (cases.chosenSum - cases.chosen * (cases.chosen + 1)) / 2;
    const std::int64_t pairs = cases.chosen * (static_cast<std::int64_t>(cases.scores.size()) - cases.chosen);
    const bool isLow = 2 * u <= pairs;
    return {isLow ? u : pairs - u, pairs, isLow};
}

UntiedRankSum LowerTailAt(const Cases& cases, std::int64_t u) {
    return {cases.chosen, static_cast<std::int64_t>(cases.scores.size()) - cases.chosen, u};
}

ExactTails TailsByClosedForm(const Cases& cases) {
    const NearU near = NearUOf(cases);
    const double small = std::min(1.0, LowerTailAt(cases, near.u).LowerTail());
    // This one is one half or more, so that the difference loses nothing.
    const double large = near.u == 0 ? 1 : std::min(1.0, 1 - LowerTailAt(cases, near.u - 1).LowerTail());
    const double twoSided = 2 * near.u == near.pairs ? 1 : std::min(1.0, 2 * small);
    return {near.isLow ? small : large, near.isLow ? large : small, twoSided};
}

/// The closed form of U's distribution; infinite where there are ties or too few cases for it.
double ClosedFormCost(const Cases& cases) {
    const bool hasTies = cases.splits.size() < cases.scores.size();
    if (hasTies || cases.chosen < UntiedRankSum::kFewest) return std::numeric_limits<double>::infinity();
    return 2 * LowerTailAt(cases, NearUOf(cases).u).Cost();
}

}  // namespace

ExactTails RankSumExact(const TieBlocks& blocks) {
    if (HasEmptyGroup(blocks)) return {};
    const Cases cases = CasesOf(blocks);
    const double chance = static_cast<double>(cases.chosen) / static_cast<double>(cases.scores.size());
    Plan plan = CheapestPlan(cases);
    ExactTails tails = ClosedFormCost(cases) < plan.cost ? TailsByClosedForm(cases)
                                                         : TailsOf(cases, Tables(std::move(plan.halves), chance));
    if (!cases.isFirstChosen) std::swap(tails.less, tails.greater);
    return tails;
}

double RankSumExactCost(const TieBlocks& blocks) {
    if (HasEmptyGroup(blocks)) return 1;
    if (SizeOf(blocks, 0) + SizeOf(blocks, 1) > kMostCases) return std::numeric_limits<double>::infinity();
    const Cases cases = CasesOf(blocks);
    return std::min(ClosedFormCost(cases), CheapestPlan(cases).cost);
}

}  // namespace tarn
