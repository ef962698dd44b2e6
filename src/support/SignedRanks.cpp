#include "support/SignedRanks.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "platform/common/QKSort.h"
#include "records/SortOrder.h"
#include "support/TARNRank.h"

namespace {

enum RankKey { kNotNegative = 0, kNegative = 1 };

RankKey KeyOf(double difference) {
    return std::signbit(difference) ? kNegative : kNotNegative;
}

/// Below this sum of whole weights all sums of ranks are exact in doubles: ranks are multiples of 1/2.
constexpr double kMostWeight = 9.4e7;

/// The sum of the weights, whatever their signs. Infinite where the sequence shows in which equal absolute values are
/// taken, even if sums are exact: a weight has a fraction, or a difference is infinite, since equal infinities are no
/// ties, and each of them then has a rank of its own.
double WeightOfWhole(const SignedDifferences& sample) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kLeastTooLarge = 0x1p31;
    bool areFinite = true;
    for (const double difference : sample.Differences()) areFinite &= std::fabs(difference) < kInfinity;
    const std::size_t count = sample.Differences().size();
    if (!sample.AreWeighted()) return areFinite ? static_cast<double>(count) : kInfinity;
    bool areWhole = true;
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double weight = std::fabs(sample.Weights()[i]);
        const bool isSmall = weight < kLeastTooLarge;
        areWhole &= isSmall && static_cast<std::int32_t>(isSmall ? weight : 0) == weight;
        sum += weight;
    }
    return areFinite && areWhole ? sum : kInfinity;
}

/// The ranks of a sample without weights. An absolute value needs no sign bit, so that a difference sorts as one whole
/// number with its sign at the end, and nothing has to follow its order.
void RankByWords(const SignedDifferences& sample, const WorkShare& work, TARNRank& rank) {
    const std::span<const double> differences = sample.Differences();
    LargeArray<std::uint64_t> words(differences.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        words[i] = std::rotl(std::bit_cast<std::uint64_t>(differences[i]), 1);
    }
    QKSort::SortKeys(words.data(), words.size());
    constexpr std::size_t kPart = 4096;
    std::vector<double> values(kPart);
    std::vector<std::int32_t> keys(kPart);
    for (std::size_t begin = 0; begin < words.size() && !work.IsStopped(); begin += kPart) {
        const std::size_t count = std::min(kPart, words.size() - begin);
        for (std::size_t i = 0; i < count; ++i) {
            values[i] = std::bit_cast<double>(words[begin + i] >> 1);
            keys[i] = (words[begin + i] & 1) != 0 ? kNegative : kNotNegative;
        }
        rank.AddAscending(values.data(), nullptr, keys.data(), count);
    }
}

QKTarn::SortedColumn SortAbsolute(std::span<const double> differences, const WorkShare& work) {
    LargeArray<double> absolute(differences.size());
    for (std::size_t i = 0; i < differences.size(); ++i) absolute[i] = std::fabs(differences[i]);
    return QKTarn::SortColumn({absolute.data(), differences.size()}, work);
}

/// The ranks of a sample with weights.
void RankByColumns(const SignedDifferences& sample, const WorkShare& work, TARNRank& rank) {
    const std::span<const double> differences = sample.Differences();
    const std::size_t count = differences.size();
    const QKTarn::SortedColumn sorted = SortAbsolute(differences, work);
    if (work.IsStopped()) return;
    constexpr std::size_t kAhead = 16;
    LargeArray<std::int32_t> keys(count);
    for (std::size_t i = 0; i < count; ++i) {
        if (i + kAhead < count) __builtin_prefetch(&differences[sorted.order[i + kAhead]]);
        keys[i] = KeyOf(differences[sorted.order[i]]);
    }
    LargeArray<std::int32_t> weights(count);
    for (std::size_t i = 0; i < count; ++i) weights[i] = static_cast<std::int32_t>(sample.Weights()[sorted.order[i]]);
    rank.AddAscending(sorted.values.data(), weights.data(), keys.data(), count);
}

/// A difference with the weight of its record.
struct Entry {
    double difference;
    double weight;
};

/// "<" alone is no order: to it, what is no number equals everything. Here it stands last.
bool IsBelow(const Entry& a, const Entry& b) {
    const double first = std::fabs(a.difference);
    const double second = std::fabs(b.difference);
    return first < second || (std::isnan(second) && !std::isnan(first));
}

SignedRanks RanksOf(TARNRank& rank) {
    rank.CloseTieRun();
    const double ofPositive = rank.GroupRanks(kNotNegative).sumOfRanks;
    return {ofPositive, rank.TieCorrectionSum(), ofPositive - rank.GroupRanks(kNegative).sumOfRanks};
}

/// The ranks in the sequence that `std::sort` makes of the records, on which documents depend where sums are rounded.
SignedRanks RankInSequence(const SignedDifferences& sample, const Arithmetic& arithmetic) {
    TARNRank rank(arithmetic);
    std::vector<Entry> entries(sample.Differences().size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i] = {sample.Differences()[i], sample.AreWeighted() ? sample.Weights()[i] : 1.0};
    }
    std::sort(entries.begin(), entries.end(), IsBelow);
    for (const auto& [difference, weight] : entries) {
        static_cast<void>(rank.AddValue(std::fabs(difference), weight, KeyOf(difference)));  // it never fails
    }
    return RanksOf(rank);
}

/// Sums of ranks times weights, twice as large and so whole.
__extension__ using Sum = __int128;

/// The same of whole weights and finite differences with exact sums, for which the sequence is all one.
SignedRanks RankExactly(const SignedDifferences& sample, const WorkShare& work) {
    const std::span<const double> differences = sample.Differences();
    const QKTarn::SortedColumn sorted = SortAbsolute(differences, work);
    if (work.IsStopped()) return {};
    Sum positive = 0;
    Sum excess = 0;
    long double ties = 0;
    std::int64_t below = 0;
    for (std::size_t begin = 0; begin < differences.size();) {
        std::int64_t ofKey[] = {0, 0};
        std::size_t end = begin;
        for (; end < differences.size() && TARNRank::AreTied(sorted.values[end], sorted.values[begin]); ++end) {
            const std::size_t place = sorted.order[end];
            const double weight = sample.AreWeighted() ? sample.Weights()[place] : 1;
            ofKey[KeyOf(differences[place])] += static_cast<std::int64_t>(weight);
        }
        const std::int64_t size = ofKey[kNotNegative] + ofKey[kNegative];
        const Sum twiceRank = 2 * below + size + 1;
        positive += twiceRank * ofKey[kNotNegative];
        excess += twiceRank * (ofKey[kNotNegative] - ofKey[kNegative]);
        const auto t = static_cast<long double>(size);
        if (size >= 2) ties += t * t * t - t;
        below += size;
        begin = end;
    }
    return {static_cast<double>(positive) * 0.5, static_cast<double>(ties), static_cast<double>(excess) * 0.5};
}

}  // namespace

void SignedDifferences::Clear() {
    *this = SignedDifferences();
}

SignedRanks RankSignedDifferences(const SignedDifferences& sample, const WorkShare* share,
                                  const Arithmetic& arithmetic) {
    const WorkShare alone;
    const WorkShare& work = share == nullptr ? alone : *share;
    const double weight = WeightOfWhole(sample);
    if (weight < kMostWeight) {
        TARNRank rank(arithmetic);
        if (sample.AreWeighted()) {
            RankByColumns(sample, work, rank);
        } else {
            RankByWords(sample, work, rank);
        }
        return RanksOf(rank);
    }
    if (!std::isfinite(weight)) return RankInSequence(sample, arithmetic);
    SignedRanks ranks;
    ranks.sumOfPositive =
        arithmetic.Carefully([&] { return (ranks = RankInSequence(sample, arithmetic)).sumOfPositive; },
                             [&] { return (ranks = RankExactly(sample, work)).sumOfPositive; });
    return ranks;
}
