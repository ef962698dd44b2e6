#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "machine/WorkShare.h"
#include "support/Arithmetic.h"
#include "support/CategorySet.h"

/// For each two of some fields the weight of the records in which both succeed. A square of a sum of successes is the
/// sum of the products of any two, so that these serve all runs of neighbouring fields.
class CommonSuccesses {
 public:
    explicit CommonSuccesses(std::size_t fields = 0) : fieldCount(fields), ofTwo(fields * fields, 0) {}

    /// Takes the next records: the categories of each field, what is a success of it, and the weights. `work` may be
    /// null; once it is stopped, the sums are of no use.
    void Add(const std::vector<const std::int32_t*>& columns, const std::vector<const CategorySet*>& successes,
             const std::int32_t* weights, std::size_t count, const WorkShare* work);
    /// To be called once, behind all records.
    void Close();

    /// The sum of the squared successes of the records over the fields first .. last.
    Whole RowTerm(std::size_t first, std::size_t last) const;

 private:
    std::size_t fieldCount;
    std::vector<std::int64_t> ofTwo;
    std::vector<Whole> upTo;  // the sums of it over all places up to these two
    std::vector<std::int32_t> masks;
};
