#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/common/Truncation.h"

/// A list of category indices that is asked for every record, so that the cost of a record doesn't grow with the list.
/// An index below 0 stands for a category that the field doesn't know; no record has it.
class CategorySet {
 public:
    CategorySet() = default;
    explicit CategorySet(const std::vector<double>& indices) {
        for (const double index : indices) {
            const std::int32_t category = TruncateToInt32(index);
            if (category < 0) continue;
            isIn_.resize(std::max(isIn_.size(), static_cast<std::size_t>(category) + 1));
            isIn_[static_cast<std::size_t>(category)] = true;
        }
    }

    bool Contains(double index) const {
        const std::int32_t category = TruncateToInt32(index);
        return category >= 0 && static_cast<std::size_t>(category) < isIn_.size() &&
               isIn_[static_cast<std::size_t>(category)];
    }

 private:
    std::vector<bool> isIn_;
};
