#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "contract/ColumnPass.h"
#include "platform/common/Truncation.h"

namespace harness {

/// Records for a test, given by columns.
class BatchOf : public ColumnBatch {
 public:
    explicit BatchOf(std::vector<std::vector<double>> columns) : columns_(std::move(columns)) {
        SetSize(columns_.front().size());
    }
    const double* Values(int field) override { return columns_[static_cast<std::size_t>(field)].data(); }
    const std::int32_t* WholeNumbers(int field) override {
        std::vector<std::int32_t>& numbers = wholeNumbers_[field];
        if (!numbers.empty()) return numbers.data();
        for (const double value : columns_[static_cast<std::size_t>(field)]) numbers.push_back(TruncateToInt32(value));
        return numbers.data();
    }

 private:
    std::vector<std::vector<double>> columns_;
    std::map<int, std::vector<std::int32_t>> wholeNumbers_;
};

}  // namespace harness
