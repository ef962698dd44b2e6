#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include "contract/ColumnPass.h"

/// The records of a batch by their groups. `Take` finds the group of each record; `Part` then puts the values of each
/// group side by side, in the order of the batch, so that what follows are loops over plain arrays. The cost of a
/// record does not depend on the number of groups, nor on the order in which they come.
class GroupSplit {
 public:
    /// The group of a record that takes no part.
    static constexpr std::int32_t kNoGroup = -1;

    /// `groupOfCategory`: per category index its group, 0 to `groupCount` - 1, or `kNoGroup`. A category beyond the
    /// list, or below 0, has none.
    void SetGroups(std::vector<std::int32_t> groupOfCategory, std::size_t groupCount) {
        groupOf_ = std::move(groupOfCategory);
        groupOf_.push_back(kNoGroup);
        parts_.assign(groupCount + 1, {});
    }
    std::size_t GroupCount() const { return parts_.empty() ? 0 : parts_.size() - 1; }

    /// By the truncated value of the group field.
    void Take(ColumnBatch& batch, int groupField) {
        const std::int32_t* const categories = batch.WholeNumbers(groupField);
        const auto outside = static_cast<std::uint32_t>(groupOf_.size() - 1);
        groups_.resize(batch.Size());
        for (std::size_t i = 0; i < groups_.size(); ++i) {
            groups_[i] = groupOf_[std::min(static_cast<std::uint32_t>(categories[i]), outside)];
        }
    }
    /// By the value of the group field as it is: one with a fraction is in no group.
    void TakeExactly(ColumnBatch& batch, int groupField) {
        Take(batch, groupField);
        const double* const values = batch.Values(groupField);
        const std::int32_t* const categories = batch.WholeNumbers(groupField);
        for (std::size_t i = 0; i < groups_.size(); ++i)
            groups_[i] = values[i] == categories[i] ? groups_[i] : kNoGroup;
    }
    std::size_t Size() const { return groups_.size(); }
    /// Of the records taken, one for each.
    const std::int32_t* Groups() const { return groups_.data(); }

    /// How many of the records taken are in a group, and the sum of their weights. `weights` null: each is 1.
    std::int32_t CountOf(std::int32_t group) const {
        std::int32_t count = 0;
        for (const std::int32_t other : groups_) count += static_cast<std::int32_t>(other == group);
        return count;
    }
    std::int64_t WeightOf(std::int32_t group, const std::int32_t* weights) const {
        if (weights == nullptr) return CountOf(group);
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < groups_.size(); ++i) sum += groups_[i] == group ? weights[i] : 0;
        return sum;
    }
    /// The lowest and the highest value of a group among ascending ones; false if it has none. Of the zeros of both
    /// signs the first one counts.
    bool FindRange(std::int32_t group, const double* values, double& lowest, double& highest) const {
        const auto first = std::find(groups_.begin(), groups_.end(), group);
        if (first == groups_.end()) return false;
        lowest = values[first - groups_.begin()];
        auto last = groups_.size() - 1;
        while (groups_[last] != group) --last;
        highest = values[last];
        for (std::size_t i = last; highest == 0 && i-- > 0 && values[i] == 0;) {
            if (groups_[i] == group) last = i;
        }
        highest = values[last];
        return true;
    }

    /// Parts a column of the records taken, and their weights unless they are null.
    void Part(const double* values, const std::int32_t* weights) {
        if (parts_.size() == 3) {
            PartInTwo(values, weights);
        } else {
            PartInMany(values, weights);
        }
    }
    /// The values of a group, and its weights, or null.
    std::span<const double> Values(std::size_t group) const {
        const Range& part = parts_[group + 1];
        return {values_.data() + part.begin, part.end - part.begin};
    }
    const std::int32_t* Weights(std::size_t group) const {
        return weights_.empty() ? nullptr : weights_.data() + parts_[group + 1].begin;
    }

    /// Gives up what was taken, since tests live as long as the document.
    void Release() {
        groups_ = {};
        values_ = {};
        weights_ = {};
    }

 private:
    struct Range {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    /// Those of no group come first.
    static std::size_t PartOf(std::int32_t group) { return static_cast<std::size_t>(std::int64_t{group} + 1); }

    /// Each group has room for all, so that no count of them has to come first.
    void PartInTwo(const double* values, const std::int32_t* weights) {
        const std::size_t size = groups_.size();
        values_.resize(2 * size);
        weights_.resize(weights == nullptr ? 0 : 2 * size);
        std::size_t first = 0;
        std::size_t second = size;
        // A record of no group is written over by the next one.
        for (std::size_t i = 0; i < size; ++i) {
            const std::int32_t group = groups_[i];
            const std::size_t place = group == 1 ? second : first;
            values_[place] = values[i];
            if (weights != nullptr) weights_[place] = weights[i];
            first += static_cast<std::size_t>(group == 0);
            second += static_cast<std::size_t>(group == 1);
        }
        parts_[PartOf(0)] = {0, first};
        parts_[PartOf(1)] = {size, second};
    }

    void PartInMany(const double* values, const std::int32_t* weights) {
        for (Range& part : parts_) part.end = 0;
        for (const std::int32_t group : groups_) ++parts_[PartOf(group)].end;
        std::size_t begin = 0;
        for (Range& part : parts_) {
            part.begin = begin;
            begin += std::exchange(part.end, begin);
        }
        values_.resize(groups_.size());
        weights_.resize(weights == nullptr ? 0 : groups_.size());
        for (std::size_t i = 0; i < groups_.size(); ++i) {
            const std::size_t place = parts_[PartOf(groups_[i])].end++;
            values_[place] = values[i];
            if (weights != nullptr) weights_[place] = weights[i];
        }
    }

    std::vector<std::int32_t> groupOf_;  // with `kNoGroup` as the last one
    std::vector<std::int32_t> groups_;
    std::vector<Range> parts_;
    std::vector<double> values_;
    std::vector<std::int32_t> weights_;
};
