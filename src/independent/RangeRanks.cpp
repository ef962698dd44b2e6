#include "independent/RangeRanks.h"

namespace {

double TieTerm(std::int64_t weight) {
    const auto t = static_cast<double>(weight);
    return weight < 2 ? 0 : t * t * t - t;
}

WideNumber WideTieTerm(std::int64_t weight) {
    const WideNumber t = weight;
    return weight < 2 ? 0 : t * t * t - t;
}

}  // namespace

void RangeRanks::Begin(std::size_t groupCount, const WorkShare* work) {
    *this = RangeRanks();
    pairs_.Begin(groupCount, PairRankSums::Ties::kShared, Arithmetic::AsDefined());  // nothing wraps
    ties_.Begin(groupCount, work);
    opener_ = std::numeric_limits<double>::quiet_NaN();
}

void RangeRanks::Add(const double* values, const std::int32_t* weights, const std::int32_t* groups, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (groups[i] < 0) continue;
        const auto group = static_cast<std::size_t>(groups[i]);
        if (!TARNRank::AreTied(values[i], opener_)) {
            ties_.EndRun();
            opener_ = values[i];
        }
        ties_.Add(group, weights[i]);
        pairs_.Add(values[i], weights[i], group);
    }
}

double RangeRanks::Own(std::size_t group) const {
    const double n = pairs_.SizeOf(group);
    return n * (n + 1) / 2;
}

void RangeRanks::Close() {
    ties_.EndRun();
    pairs_.Close();
    const std::size_t groupCount = pairs_.GroupCount();
    below_.assign(groupCount * (groupCount + 1), 0.0);
    for (std::size_t group = 0; group < groupCount; ++group) {
        for (std::size_t other = 0; other < groupCount; ++other) {
            double raised = 0;
            if (other < group) {
                raised = pairs_.SumOfRanks(other, group) - Own(group);
            } else if (other > group) {
                // The ranks of both groups together are those of all their cases.
                const double n = pairs_.SizeOf(group) + pairs_.SizeOf(other);
                raised = n * (n + 1) / 2 - pairs_.SumOfRanks(group, other) - Own(group);
            }
            Below(group, other + 1) = Below(group, other) + raised;
        }
    }
    // Sums and differences of several such sums stay below 2^53.
    constexpr double kMostExact = 0x1p50;
    tieSumsAreExact_ = ties_.SumOf<double>(TieTerm, [](std::uint32_t) { return true; }) <= kMostExact;
}

double RangeRanks::TieCorrectionSum(std::size_t first, std::size_t last) {
    return tieSums_.Of(ties_, TieTerm, tieSumsAreExact_, first, last);
}

long double RangeRanks::SpreadOf(std::size_t first, std::size_t last, std::int64_t total) {
    const WideNumber n = total;
    return static_cast<long double>(n * n * n - n - wideTieSums_.Of(ties_, WideTieTerm, true, first, last));
}
