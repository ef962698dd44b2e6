#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "independent/MedianSubset.h"

/// The records of the groups of a median test in ascending order, from which the table of any of the groups comes
/// without a walk over all of them: at every so many records stands what each group has had so far.
class MedianRecords {
 public:
    void Begin(std::size_t groupCount);
    void Add(double value, std::int32_t weight, std::size_t group);
    void Close();
    bool IsClosed() const { return isClosed_; }

    /// The median of a subset whose places are these groups.
    void FindMedian(MedianSubset& subset, const std::vector<std::size_t>& groups) const;
    /// Its cases above its median, and those not above it.
    void Count(MedianSubset& subset, const std::vector<std::size_t>& groups) const;

 private:
    /// Records from one block's begin to the next one's.
    static constexpr std::size_t kBlock = 1024;
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};

    std::size_t BlockCount() const { return (values_.size() + kBlock - 1) / kBlock; }
    /// The weight of a group in front of a block, and the last of its records there, or `kNone`. Where the last block
    /// is full, there is an empty one behind it.
    std::int64_t WeightBefore(std::size_t block, std::size_t group) const {
        return weightBefore_[block * groupCount_ + group];
    }
    std::uint32_t LastBefore(std::size_t block, std::size_t group) const {
        return lastBefore_[block * groupCount_ + group];
    }
    double WeightBefore(std::size_t block, const std::vector<std::size_t>& groups) const;
    void NoteBlock();
    std::vector<std::int32_t> PlacesOf(const std::vector<std::size_t>& groups) const;

    std::size_t groupCount_ = 0;
    std::vector<double> values_;
    std::vector<std::int32_t> weights_;
    std::vector<std::uint32_t> groups_;
    std::vector<std::int64_t> weightBefore_;
    std::vector<std::uint32_t> lastBefore_;
    // What each group has had so far.
    std::vector<std::int64_t> weightOf_;
    std::vector<std::uint32_t> lastOf_;
    bool hasNegative_ = false;
    bool areNumbers_ = true;
    bool isClosed_ = false;
};
