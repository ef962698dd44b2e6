#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/common/Truncation.h"

/// Some categories of a field, asked for many records: the cost of a record doesn't grow with their number, and there
/// is no branch. An index below 0 stands for a category that the field doesn't know; no record has it.
class CategorySet {
 public:
    CategorySet() = default;
    explicit CategorySet(const std::vector<double>& indices) {
        for (const double index : indices) {
            const std::int32_t category = TruncateToInt32(index);
            if (category < 0) continue;
            const auto place = static_cast<std::size_t>(category);
            isIn_.resize(std::max(isIn_.size(), place + 2));
            isIn_[place] = 1;
        }
    }
    /// `isIn`: a bit per category, from the first one on.
    explicit CategorySet(const std::vector<bool>& isIn) : isIn_(isIn.begin(), isIn.end()) { isIn_.push_back(0); }

    /// 1 for a category of the set, else 0.
    std::uint32_t Contains(std::int32_t category) const {
        const auto last = static_cast<std::uint32_t>(isIn_.size() - 1);
        return isIn_[std::min(static_cast<std::uint32_t>(category), last)];
    }

    /// The same of many records.
    void Mark(const std::int32_t* categories, std::size_t count, std::uint32_t* areIn) const {
        const auto first = std::find(isIn_.begin(), isIn_.end(), 1);
        if (std::count(first, isIn_.end(), 1) == 1) {  // most sets, and many records are compared at a time
            const auto only = static_cast<std::int32_t>(first - isIn_.begin());
            for (std::size_t i = 0; i < count; ++i) areIn[i] = static_cast<std::uint32_t>(categories[i] == only);
            return;
        }
        for (std::size_t i = 0; i < count; ++i) areIn[i] = Contains(categories[i]);
    }

    /// Whether it has the same categories.
    bool IsSameAs(const CategorySet& other) const {
        const std::size_t most = std::max(isIn_.size(), other.isIn_.size());
        for (std::size_t category = 0; category < most; ++category) {
            if (Contains(static_cast<std::int32_t>(category)) != other.Contains(static_cast<std::int32_t>(category))) {
                return false;
            }
        }
        return true;
    }

    /// How many categories the set answers for: those behind them are not in it.
    std::size_t Size() const { return isIn_.size() - 1; }

 private:
    std::vector<std::uint8_t> isIn_{0};  // and at last what any other category is answered
};
