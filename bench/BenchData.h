#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"

/// Data for the benchmarks, the same in every run.
namespace bench {

/// Rows of normal values, side by side in memory, as a stream of views.
class NormalRows : public MultiPassRecordIter {
 public:
    NormalRows(std::size_t rows, std::size_t fields) : rows_(rows), fields_(fields), values_(rows * fields) {
        std::mt19937_64 random(20261);
        std::normal_distribution<double> normal(0.1, 1.0);
        for (double& value : values_) value = normal(random);
    }

    bool HasMore() override { return next_ < rows_; }
    Record* Next() override {
        current_ = Record::View(values_.data() + next_++ * fields_, fields_);
        return &current_;
    }
    int GetState() override { return 0; }
    int Rewind() override {
        next_ = 0;
        return 0;
    }

    std::size_t ValueBytes() const { return values_.size() * sizeof(double); }

 private:
    std::size_t rows_;
    std::size_t fields_;
    std::vector<double> values_;
    std::size_t next_ = 0;
    Record current_;
};

inline QKVarList ContinuousFields(std::size_t fields) {
    QKVarList list;
    for (std::size_t i = 0; i < fields; ++i) {
        list.AddNewVar(std::make_shared<QKContVar>("x" + std::to_string(i), ""));
    }
    return list;
}

}  // namespace bench
