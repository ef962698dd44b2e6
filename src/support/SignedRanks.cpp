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

/// Whether the sequence in which equal absolute values are taken can't show: ranks are multiples of 1/2, so that their
/// sums are exact as long as the weights are whole and not too large. Equal infinities are no ties, and each of them
/// then has a rank of its own.
bool IsSequenceFree(const SignedDifferences& sample) {
    constexpr double kMostWeight = 9.4e7;
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    bool areFinite = true;
    for (const double difference : sample.Differences()) areFinite &= std::fabs(difference) < kInfinity;
    const std::size_t count = sample.Differences().size();
    if (!sample.AreWeighted()) return areFinite && static_cast<double>(count) < kMostWeight;
    bool areWhole = true;
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const double weight = std::fabs(sample.Weights()[i]);
        const bool isSmall = weight < kMostWeight;
        areWhole &= isSmall && static_cast<std::int32_t>(isSmall ? weight : 0) == weight;
        sum += weight;
    }
    return areFinite && areWhole && sum < kMostWeight;
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

/// The ranks of a sample with weights.
void RankByColumns(const SignedDifferences& sample, const WorkShare& work, TARNRank& rank) {
    const std::span<const double> differences = sample.Differences();
    const std::size_t count = differences.size();
    LargeArray<double> absolute(count);
    for (std::size_t i = 0; i < count; ++i) absolute[i] = std::fabs(differences[i]);
    const QKTarn::SortedColumn sorted = QKTarn::SortColumn({absolute.data(), count}, work);
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

/// The ranks in the sequence that `std::sort` makes of the records, on which documents depend where sums are rounded.
void RankInSequence(const SignedDifferences& sample, TARNRank& rank) {
    std::vector<Entry> entries(sample.Differences().size());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        entries[i] = {sample.Differences()[i], sample.AreWeighted() ? sample.Weights()[i] : 1.0};
    }
    std::sort(entries.begin(), entries.end(), IsBelow);
    for (const auto& [difference, weight] : entries) {
        static_cast<void>(rank.AddValue(std::fabs(difference), weight, KeyOf(difference)));  // it never fails
    }
}

}  // namespace

void SignedDifferences::Clear() {
    *this = SignedDifferences();
}

SignedRanks RankSignedDifferences(const SignedDifferences& sample, const WorkShare* share,
                                  const Arithmetic& arithmetic) {
    const WorkShare alone;
    const WorkShare& work = share == nullptr ? alone : *share;
    TARNRank rank(arithmetic);
    if (!IsSequenceFree(sample)) {
        RankInSequence(sample, rank);
    } else if (sample.AreWeighted()) {
        RankByColumns(sample, work, rank);
    } else {
        RankByWords(sample, work, rank);
    }
    rank.CloseTieRun();
    return {rank.GroupRanks(kNotNegative).sumOfRanks, rank.TieCorrectionSum()};
}
