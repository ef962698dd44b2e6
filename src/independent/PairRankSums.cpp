#include "independent/PairRankSums.h"

void PairRankSums::Begin(std::size_t groupCount, Ties ties, const Arithmetic& arithmetic) {
    *this = PairRankSums();
    ties_ = ties;
    sizes_.assign(groupCount, 0.0);
    if (ties == Ties::kOfEachPair) {
        pairs_.assign(groupCount < 2 ? 0 : PairPlace(0, groupCount), PairRankSum(arithmetic));
        return;
    }
    std::size_t end = 0;
    for (std::size_t second = 0; second < groupCount; ++second) {
        rowBegins_.push_back(end);
        end += RowLength(second);
    }
    sums_.assign(end, 0.0);
    casesBelow_.assign(RowLength(groupCount), 0);
    runWeight32_.assign(RowLength(groupCount), 0);
    runWeight_.assign(groupCount, 0);
}

void PairRankSums::Add(double value, std::int32_t weight, std::size_t group) {
    sizes_[group] += weight;
    if (ties_ == Ties::kOfEachPair) {
        AddToPairs(value, weight, group);
        return;
    }
    if (!TARNRank::AreTied(value, opener_)) {
        EndRun();
        opener_ = value;
    }
    if (weight == 0) return;
    if (runWeight_[group] == 0) present_.push_back(static_cast<std::uint32_t>(group));
    runWeight_[group] += weight;
}

void PairRankSums::AddAlone(double value, std::int32_t weight, std::size_t group) {
    if (ties_ == Ties::kOfEachPair) {
        Add(value, weight, group);
        return;
    }
    EndRun();
    opener_ = value;
    sizes_[group] += weight;
    TakeRunOfOne(group, weight);
}

void PairRankSums::AddToPairs(double value, std::int32_t weight, std::size_t group) {
    for (std::size_t first = 0; first < group; ++first) {
        pairs_[PairPlace(first, group)].Add(value, weight, PairRankSum::Side::kSecond);
    }
    for (std::size_t second = group + 1; second < sizes_.size(); ++second) {
        pairs_[PairPlace(group, second)].Add(value, weight, PairRankSum::Side::kFirst);
    }
}

void PairRankSums::Close() {
    EndRun();
    for (PairRankSum& pair : pairs_) pair.Close();
}

void PairRankSums::EndRun() {
    if (present_.empty()) return;
    if (present_.size() == 1) {
        const std::size_t group = present_.front();
        TakeRunOfOne(group, runWeight_[group]);
        runWeight_[group] = 0;
        present_.clear();
        return;
    }
    for (const std::uint32_t group : present_) runWeight32_[group] = Wrap32(runWeight_[group]);
    for (const std::uint32_t second : present_) {
        const auto weight = static_cast<double>(runWeight_[second]);
        const std::int32_t weight32 = Add32(runWeight32_[second], 1);
        const std::int32_t below = casesBelow_[second];
        double* const sums = sums_.data() + rowBegins_[second];
        for (std::size_t first = 0; first < RowLength(second); ++first) {
            sums[first] += (Add32(runWeight32_[first], weight32) * 0.5 + Add32(casesBelow_[first], below)) * weight;
        }
    }
    for (const std::uint32_t group : present_) {
        casesBelow_[group] = Add32(casesBelow_[group], runWeight32_[group]);
        runWeight_[group] = 0;
        runWeight32_[group] = 0;
    }
    present_.clear();
}

/// A run of one group alone has the same rank within it in all pairs.
void PairRankSums::TakeRunOfOne(std::size_t second, std::int64_t weight) {
    const auto weightOfSecond = static_cast<double>(weight);
    const double within = Add32(Wrap32(weight), 1) * 0.5;
    const std::int32_t below = casesBelow_[second];
    double* sums = sums_.data() + rowBegins_[second];
    const std::int32_t* casesBelow = casesBelow_.data();
    for (std::size_t block = 0; block <= second / kBlock; ++block, sums += kBlock, casesBelow += kBlock) {
        for (std::size_t first = 0; first < kBlock; ++first) {
            sums[first] += (within + Add32(casesBelow[first], below)) * weightOfSecond;
        }
    }
    casesBelow_[second] = Add32(below, Wrap32(weight));
}

double PairRankSums::SumOfRanks(std::size_t first, std::size_t second) const {
    if (ties_ == Ties::kOfEachPair) return pairs_[PairPlace(first, second)].SumOfRanks();
    return sums_[rowBegins_[second] + first];
}

WideNumber PairRankSums::TwiceSumOfRanks(std::size_t first, std::size_t second) const {
    if (ties_ == Ties::kOfEachPair) return pairs_[PairPlace(first, second)].TwiceSumOfRanks();
    return static_cast<WideNumber>(2 * SumOfRanks(first, second));
}

double PairRankSums::TieCorrectionSum(std::size_t first, std::size_t second) const {
    constexpr double kRankOfTwoTied = 1.5;
    constexpr double kTermOfTwo = 2 * 2 * 2 - 2;
    if (ties_ == Ties::kOfEachPair) return pairs_[PairPlace(first, second)].TieCorrectionSum();
    return SumOfRanks(first, second) == kRankOfTwoTied ? kTermOfTwo : 0;
}
