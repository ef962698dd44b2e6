#include "independent/MedianRecords.h"

#include <algorithm>

void MedianRecords::Begin(std::size_t groupCount) {
    *this = MedianRecords();
    groupCount_ = groupCount;
    weightOf_.assign(groupCount, 0);
    lastOf_.assign(groupCount, kNone);
}

void MedianRecords::NoteBlock() {
    weightBefore_.insert(weightBefore_.end(), weightOf_.begin(), weightOf_.end());
    lastBefore_.insert(lastBefore_.end(), lastOf_.begin(), lastOf_.end());
}

void MedianRecords::Add(double value, std::int32_t weight, std::size_t group) {
    if (values_.size() % kBlock == 0) NoteBlock();
    weightOf_[group] += weight;
    lastOf_[group] = static_cast<std::uint32_t>(values_.size());
    hasNegative_ = hasNegative_ || weight < 0;
    areNumbers_ = areNumbers_ && value == value;
    values_.push_back(value);
    weights_.push_back(weight);
    groups_.push_back(static_cast<std::uint32_t>(group));
}

void MedianRecords::Close() {
    if (isClosed_) return;
    if (values_.size() % kBlock == 0) NoteBlock();  // a record might begin there
    isClosed_ = true;
}

double MedianRecords::WeightBefore(std::size_t block, const std::vector<std::size_t>& groups) const {
    std::int64_t weight = 0;
    for (const std::size_t group : groups) weight += WeightBefore(block, group);
    return static_cast<double>(weight);
}

std::vector<std::int32_t> MedianRecords::PlacesOf(const std::vector<std::size_t>& groups) const {
    std::vector<std::int32_t> places(groupCount_, MedianSubset::kNotInside);
    for (std::size_t place = 0; place < groups.size(); ++place)
        places[groups[place]] = static_cast<std::int32_t>(place);
    return places;
}

void MedianRecords::FindMedian(MedianSubset& subset, const std::vector<std::size_t>& groups) const {
    // The last block in front of which the weight does not exceed the position of the median: the search for it ends
    // there, unless the weights don't ascend.
    std::size_t block = 0;
    if (!hasNegative_) {
        const double position = subset.MedianPosition();
        std::size_t above = BlockCount();
        while (above - block > 1) {
            const std::size_t middle = block + (above - block) / 2;
            (WeightBefore(middle, groups) <= position ? block : above) = middle;
        }
    }
    // All in front of it counts as one record with the value of the last of them.
    std::uint32_t last = kNone;
    for (const std::size_t group : groups) {
        const std::uint32_t before = values_.empty() ? kNone : LastBefore(block, group);
        if (before != kNone && (last == kNone || before > last)) last = before;
    }
    if (last != kNone) subset.AddToMedian(values_[last], WeightBefore(block, groups));
    const std::vector<std::int32_t> places = PlacesOf(groups);
    for (std::size_t i = block * kBlock; i < values_.size() && !subset.HasMedian(); ++i) {
        if (places[groups_[i]] != MedianSubset::kNotInside) subset.AddToMedian(values_[i], weights_[i]);
    }
    subset.FinishMedian();
}

void MedianRecords::Count(MedianSubset& subset, const std::vector<std::size_t>& groups) const {
    const double median = subset.Median();
    // Without an order the records are counted one by one.
    const std::size_t end =
        areNumbers_
            ? static_cast<std::size_t>(std::upper_bound(values_.begin(), values_.end(), median) - values_.begin())
            : 0;
    const std::size_t block = end / kBlock;
    const std::vector<std::int32_t> places = PlacesOf(groups);
    std::vector<std::int64_t> notAbove(groups.size());
    std::vector<std::int64_t> above(groups.size());
    const auto count = [&](std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i) {
            const std::int32_t place = places[groups_[i]];
            if (place == MedianSubset::kNotInside) continue;
            (values_[i] > median ? above : notAbove)[static_cast<std::size_t>(place)] += weights_[i];
        }
    };
    if (areNumbers_) {
        for (std::size_t place = 0; place < groups.size(); ++place) {
            notAbove[place] = values_.empty() ? 0 : WeightBefore(block, groups[place]);
        }
        count(block * kBlock, end);
        for (std::size_t place = 0; place < groups.size(); ++place) {
            above[place] = weightOf_[groups[place]] - notAbove[place];
        }
    } else {
        count(0, values_.size());
    }
    for (std::size_t place = 0; place < groups.size(); ++place) {
        subset.AddCounts(place, static_cast<double>(notAbove[place]), static_cast<double>(above[place]));
    }
}
