#pragma once

#include <cstddef>
#include <cstdint>

#include "contract/TARNTest.h"

/// Records of a pass by columns: all of them ones that the test may see, in the order of the view. What it hands out
/// is valid until the test returns.
class ColumnBatch {
 public:
    virtual ~ColumnBatch() = default;

    /// How many records there are, 1 at least.
    std::size_t Size() const { return size_; }
    /// The values of a field, one for each record. `field`: an index of the run's fields.
    virtual const double* Values(int field) = 0;
    /// The same truncated towards zero to 32 bits: the categories of a categorical field.
    virtual const std::int32_t* WholeNumbers(int field) = 0;
    /// The truncated weights; each of them 1 where there is no weight field (a negative index).
    const std::int32_t* Weights(int weightIndex) { return weightIndex < 0 ? ones_ : WholeNumbers(weightIndex); }

    /// How many records there are at most.
    static constexpr std::size_t kMostRecords = std::size_t{1} << 16;

 protected:
    ColumnBatch();
    void SetSize(std::size_t size) { size_ = size; }

 private:
    std::size_t size_ = 0;
    const std::int32_t* ones_;
};

/// A test that takes many records at once, which is what makes a pass fast. Beside `TARNTest`, since the operations of
/// that one and their order are fixed. A test writes `ProcessColumns` alone: a record is a batch of one, so that both
/// ways are the same steps, however the records are divided into batches.
class ColumnTest : public TARNTest {
 public:
    /// The next records of the pass, with the same meaning of the status as in `ProcessRecord`.
    virtual QKStatus ProcessColumns(ColumnBatch& batch) = 0;
    QKStatus ProcessRecord(Record& record) final;

 protected:
    using TARNTest::TARNTest;
};
