#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/common/QKVarList.h"
#include "platform/common/Record.h"

/// Data for the benchmarks, the same in every run.
namespace bench {

/// Rows of values, side by side in memory, as a stream of views.
class Rows : public MultiPassRecordIter {
 public:
    Rows(std::size_t fields, std::vector<double> values)
        : rows_(values.size() / fields), fields_(fields), values_(std::move(values)) {}

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

/// Values of a distribution.
template <typename Distribution>
std::vector<double> RandomValues(std::size_t count, Distribution distribution) {
    std::mt19937_64 random(20261);
    std::vector<double> values(count);
    for (double& value : values) value = static_cast<double>(distribution(random));
    return values;
}

class NormalRows : public Rows {
 public:
    NormalRows(std::size_t rows, std::size_t fields)
        : Rows(fields, RandomValues(rows * fields, std::normal_distribution<double>(0.1, 1.0))) {}
};

/// Category indices from 0 to `categories` - 1, the same for all fields.
class CategoryRows : public Rows {
 public:
    CategoryRows(std::size_t rows, std::size_t fields, int categories)
        : Rows(fields, RandomValues(rows * fields, std::uniform_int_distribution<int>(0, categories - 1))) {}
};

inline QKVarList CategoryFields(std::size_t fields, int categories) {
    QKVarList list;
    for (std::size_t i = 0; i < fields; ++i) {
        std::vector<QKCatVar::NumericCategory> table;
        for (int category = 0; category < categories; ++category) {
            table.push_back({static_cast<double>(category), ""});
        }
        list.AddNewVar(std::make_shared<QKCatVar>("x" + std::to_string(i), "", true, std::move(table)));
    }
    return list;
}

inline QKVarList ContinuousFields(std::size_t fields) {
    QKVarList list;
    for (std::size_t i = 0; i < fields; ++i) {
        list.AddNewVar(std::make_shared<QKContVar>("x" + std::to_string(i), ""));
    }
    return list;
}

}  // namespace bench
