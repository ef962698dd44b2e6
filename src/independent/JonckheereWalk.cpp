#include "independent/JonckheereWalk.h"

#include <cmath>
#include <numeric>

namespace {

long double PairsTerm(std::int64_t weight) {
    const long double t = weight;
    return t * (t - 1);
}

long double TriplesTerm(std::int64_t weight) {
    const long double t = weight;
    return t * t * (t - 1);
}

/// Neither tied nor equal, as two infinite ones are that have no distance.
bool AreApart(double lower, double upper) {
    return lower != upper && !TARNRank::AreTied(upper, lower);
}

}  // namespace

void JonckheereWalk::Begin(std::size_t groupCount, PairRankSums::Ties ties, const Arithmetic& arithmetic,
                           const WorkShare* work) {
    *this = JonckheereWalk();
    ranks_.Begin(groupCount, ties, arithmetic);
    ties_.Begin(groupCount, work);
}

void JonckheereWalk::Add(const double* values, const std::int32_t* weights, const std::int32_t* groups,
                         std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto group = static_cast<std::uint32_t>(groups[i]);
        if (group >= ranks_.GroupCount()) continue;
        // Most values are tied with none: their neighbours say so, in whatever group these are.
        const bool isAlone = weights[i] == 1 && i > 0 && i + 1 < count && AreApart(values[i - 1], values[i]) &&
                             AreApart(values[i], values[i + 1]);
        if (isAlone) {
            ties_.EndRun();
            tieValue_ = values[i];
            ranks_.AddAlone(values[i], 1, group);
            continue;
        }
        // Ranks take values that differ by a little as tied, the variance doesn't.
        if (values[i] != tieValue_) {
            ties_.EndRun();
            tieValue_ = values[i];
        }
        ties_.Add(group, weights[i]);
        ranks_.Add(values[i], weights[i], group);
    }
}

void JonckheereWalk::Close() {
    ties_.EndRun();
    ranks_.Close();
    // Sums and differences of several such sums fit into a long double.
    constexpr long double kMostExact = 0x1p61L;
    const auto isMember = [](std::uint32_t) { return true; };
    tieSumsAreExact_ = !ties_.HasNegative() && ties_.SumOf<long double>(TriplesTerm, isMember) <= kMostExact;
}

/// How often a value of the first group lies below one of the second, ties by half.
double JonckheereWalk::CountOf(std::size_t first, std::size_t second) const {
    const double n = ranks_.SizeOf(second);
    return ranks_.SumOfRanks(first, second) - n * (n + 1) / 2;
}

WideNumber JonckheereWalk::TwiceCountOf(std::size_t first, std::size_t second) const {
    const WideNumber n = static_cast<std::int64_t>(ranks_.SizeOf(second));
    return ranks_.TwiceSumOfRanks(first, second) - n * (n + 1);
}

JonckheereCounts JonckheereWalk::RanksOf(const std::vector<std::size_t>& groups) const {
    JonckheereCounts counts;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        for (std::size_t j = i + 1; j < groups.size(); ++j) {
            counts.j += CountOf(groups[i], groups[j]);
            counts.twiceJ += TwiceCountOf(groups[i], groups[j]);
        }
    }
    if (groups.size() > 1) counts.tieCorrectionSum = ranks_.TieCorrectionSum(groups[0], groups[1]);
    return counts;
}

JonckheereCounts JonckheereWalk::Of(const std::vector<std::size_t>& groups) const {
    JonckheereCounts counts = RanksOf(groups);
    std::vector<char> isMember(ranks_.GroupCount(), false);
    for (const std::size_t group : groups) isMember[group] = true;
    const auto isOne = [&](std::uint32_t group) { return isMember[group]; };
    counts.pairsTied = ties_.SumOf<long double>(PairsTerm, isOne);
    counts.triplesTied = ties_.SumOf<long double>(TriplesTerm, isOne);
    return counts;
}

JonckheereCounts JonckheereWalk::OfPair(std::size_t first, std::size_t second) {
    if (pairsTiedOfPairs_.empty()) {
        pairsTiedOfPairs_ = ties_.SumsOfPairs<long double>(PairsTerm, tieSumsAreExact_);
        triplesTiedOfPairs_ = ties_.SumsOfPairs<long double>(TriplesTerm, tieSumsAreExact_);
    }
    JonckheereCounts counts = RanksOf({first, second});
    const std::size_t place = TieRuns::PairPlace(first, second);
    counts.pairsTied = pairsTiedOfPairs_[place];
    counts.triplesTied = triplesTiedOfPairs_[place];
    return counts;
}

JonckheereCounts JonckheereWalk::RanksOfRange(std::size_t first, std::size_t last) {
    if (!rangesAreAddedUp_) AddUpRanges();
    if (countsOfRanges_.empty()) {
        std::vector<std::size_t> groups(last - first + 1);
        std::iota(groups.begin(), groups.end(), first);
        return RanksOf(groups);
    }
    JonckheereCounts counts;
    const std::size_t place = first * ranks_.GroupCount() + last;
    counts.j = countsOfRanges_[place];
    counts.twiceJ = twiceCountsOfRanges_[place];
    if (last > first) counts.tieCorrectionSum = ranks_.TieCorrectionSum(first, first + 1);
    return counts;
}

/// Whether any sum of counts, and any difference of two, is the same in whatever order it is made.
bool JonckheereWalk::CountsAddUpExactly() const {
    constexpr double kMostExact = 0x1p50;
    double sum = 0;
    for (std::size_t second = 1; second < ranks_.GroupCount(); ++second) {
        for (std::size_t first = 0; first < second; ++first) {
            const double twice = 2 * CountOf(first, second);
            if (twice != std::floor(twice)) return false;  // no number, either
            sum += std::abs(twice);
        }
    }
    return sum <= kMostExact;
}

/// The J of a range is that of the same one without its first group, with the counts of that group and those behind it.
void JonckheereWalk::AddUpRanges() {
    rangesAreAddedUp_ = true;
    const std::size_t groups = ranks_.GroupCount();
    if (!CountsAddUpExactly()) return;
    countsOfRanges_.assign(groups * groups, 0.0);
    twiceCountsOfRanges_.assign(groups * groups, 0);
    for (std::size_t first = groups; first-- > 0;) {
        double ofFirst = 0;
        WideNumber twiceOfFirst = 0;
        for (std::size_t last = first + 1; last < groups; ++last) {
            ofFirst += CountOf(first, last);
            twiceOfFirst += TwiceCountOf(first, last);
            const std::size_t place = first * groups + last;
            countsOfRanges_[place] = countsOfRanges_[place + groups] + ofFirst;
            twiceCountsOfRanges_[place] = twiceCountsOfRanges_[place + groups] + twiceOfFirst;
        }
    }
}

JonckheereCounts JonckheereWalk::OfRange(std::size_t first, std::size_t last) {
    JonckheereCounts counts = RanksOfRange(first, last);
    counts.pairsTied = pairsTiedOfRanges_.Of(ties_, PairsTerm, tieSumsAreExact_, first, last);
    counts.triplesTied = triplesTiedOfRanges_.Of(ties_, TriplesTerm, tieSumsAreExact_, first, last);
    return counts;
}
