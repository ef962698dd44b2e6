#include "independent/RunCounter.h"

#include <cstdlib>
#include <limits>

// ---- A walk ----

template <typename Width>
RunCounter::Walk<Width> RunCounter::Walk<Width>::GoingOn(const Walk<Narrow>& from) {
    Walk walk;
    walk.groupCount = {from.groupCount[0], from.groupCount[1]};
    walk.minRuns = from.minRuns;
    walk.maxRuns = from.maxRuns;
    walk.minSign = from.minSign;
    walk.maxSign = from.maxSign;
    walk.tieBlocks = from.tieBlocks;
    walk.tieCases = from.tieCases;
    walk.isFirstRecord = from.isFirstRecord;
    walk.blockValue = from.blockValue;
    walk.blockCount = {from.blockCount[0], from.blockCount[1]};
    return walk;
}

template <typename Width>
void RunCounter::Walk<Width>::Add(const double* values, const std::int32_t* groups, const std::int32_t* weights,
                                  std::size_t count) {
    Walk walk = *this;  // in registers
    for (std::size_t i = 0; i < count; ++i) {
        if (groups[i] >= 0) walk.AddOne(values[i], static_cast<std::size_t>(groups[i]), weights[i]);
    }
    *this = walk;
}

template <typename Width>
inline void RunCounter::Walk<Width>::AddOne(double value, std::size_t group, std::int32_t weight) {
    const bool isFirstOfGroup = groupCount[group] == kNoRecord;
    groupCount[group] = isFirstOfGroup ? weight : Width::Sum(groupCount[group], weight);
    if (isFirstRecord) {
        isFirstRecord = false;
        blockValue = value;
    }
    if (value == blockValue) {
        blockCount[group] = isFirstOfGroup ? weight : Width::Sum(blockCount[group], weight);
        return;
    }
    CloseBlock();
    if (!isFirstOfGroup) CountTies();
    blockValue = value;
    blockCount = {};
    blockCount[group] = weight;
}

template <typename Width>
void RunCounter::Walk<Width>::Close() {
    CloseBlock();
    CountTies();
}

template <typename Width>
inline void RunCounter::Walk<Width>::CloseBlock() {
    const Number bits = blockCount[0] | blockCount[1];
    bitsOfBlocks |= bits;
    hasWeightless |= bits == 0;
    const Number difference = Width::Difference(blockCount[0], blockCount[1]);
    const Number smaller = std::min(blockCount[0], blockCount[1]);
    if (smaller == 0) {
        if (passesOverWeightless && bits == 0) return;
        CloseOfOneGroup(difference);
    } else {
        CloseOfBothGroups(smaller, difference);
    }
}

/// Without branches, since nobody can foretell which group comes next.
template <typename Width>
inline void RunCounter::Walk<Width>::CloseOfOneGroup(Number difference) {
    minRuns = Width::Sum(minRuns, static_cast<Number>(Width::Product(minSign, difference) < 0));
    maxRuns = Width::Sum(maxRuns, static_cast<Number>(Width::Product(difference, maxSign) < 1));
    maxSign = difference;
    minSign = difference;
}

template <typename Width>
void RunCounter::Walk<Width>::CloseOfBothGroups(Number smaller, Number difference) {
    maxRuns = Width::Sum(maxRuns, Width::Sum(smaller, smaller));
    minRuns = std::max<Number>(Width::Sum(minRuns, 1), 2);
    if (difference != 0) {
        if (Width::Product(difference, maxSign) < 1) maxRuns = Width::Sum(maxRuns, 1);
        maxSign = difference;
    }
    minSign = Width::Difference(0, minSign);  // the block begins with the group before it and ends with the other one
}

template <typename Width>
void RunCounter::Walk<Width>::CountTies() {
    if (blockCount[0] < 1 || blockCount[1] < 1) return;
    tieBlocks = Width::Sum(tieBlocks, 1);
    tieCases = Width::Sum(tieCases, Width::Sum(blockCount[0], blockCount[1]));
}

// ---- As defined and otherwise ----

/// One walk does for all as long as there is neither a block so large that a product of two could wrap around, nor a
/// sum that could, nor a block without weight.
void RunCounter::Add(const double* values, const std::int32_t* groups, const std::int32_t* weights, std::size_t count) {
    const Walk<Narrow> before = asDefined_;
    asDefined_.Add(values, groups, weights, count);
    std::int64_t weight = 0;
    for (std::size_t i = 0; i < count; ++i) weight += std::abs(std::int64_t{weights[i]});
    weightSeen_ += static_cast<double>(weight);
    if (!areApart_) GoApart(before);
    if (!areApart_) return;
    wide_.Add(values, groups, weights, count);
    byTextbook_.Add(values, groups, weights, count);
}

void RunCounter::Close() {
    const Walk<Narrow> before = asDefined_;
    asDefined_.Close();
    if (!areApart_) GoApart(before);
    if (!areApart_) return;
    wide_.Close();
    byTextbook_.Close();
}

/// Begins the other walks, where anybody asks for them, at the place where the first one was, if what it has seen since
/// may matter.
void RunCounter::GoApart(const Walk<Narrow>& before) {
    constexpr std::int32_t kBitsOfSmall = (1 << 15) - 1;
    const bool mayDiffer = asDefined_.hasWeightless || (asDefined_.bitsOfBlocks & ~kBitsOfSmall) != 0 ||
                           weightSeen_ > std::numeric_limits<std::int32_t>::max();
    areApart_ = mayDiffer && arithmetic_->WantsTextbook();
    if (!areApart_) return;
    wide_ = Walk<Wide>::GoingOn(before);
    byTextbook_ = Walk<Wide>::GoingOn(before);
    byTextbook_.passesOverWeightless = true;
}

template <typename Member>
std::int64_t RunCounter::Of(Member member) const {
    if (!areApart_) return member(asDefined_);
    const auto width = arithmetic_->Either<std::int64_t>(member(asDefined_), member(wide_));
    const std::int64_t textbook = member(byTextbook_);
    return arithmetic_->TakesTextbook(textbook != member(wide_)) ? textbook : width;
}

RunCounter::GroupCounts RunCounter::Counts() const {
    return {Of([](const auto& walk) { return walk.groupCount[0]; }),
            Of([](const auto& walk) { return walk.groupCount[1]; })};
}

std::int64_t RunCounter::MinRuns() const {
    return Of([](const auto& walk) { return walk.minRuns; });
}

std::int64_t RunCounter::MaxRuns() const {
    return Of([](const auto& walk) { return walk.maxRuns; });
}

std::int64_t RunCounter::TieBlocks() const {
    return Of([](const auto& walk) { return walk.tieBlocks; });
}

std::int64_t RunCounter::TieCases() const {
    return Of([](const auto& walk) { return walk.tieCases; });
}
