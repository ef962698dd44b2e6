#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "machine/LargeArray.h"
#include "machine/WorkShare.h"

/// A difference, or a value that differences are made of, with the truncated weight of its record.
struct WeightedDifference {
    double difference = 0;
    std::int32_t weight = 0;
};

/// Sorts in ascending order. What is no number stands last.
void SortByValue(std::vector<WeightedDifference>& values);

/// Order statistics of a list of weighted values that is too long to be made. It is defined as sorted in ascending
/// order, of equal values those without weight in front, with the running sum of its weights; but a derived class only
/// answers how much weight lies up to a bound. A value at a position is then found by some twenty questions, twice 64
/// at most, over the doubles, and is one of the list to the last bit.
///
/// Weights are not negative. Where they are (an impossible weight of a record), the value is one at which the running
/// sum reaches the position from below, though not always the first one.
class WeightedOrder {
 public:
    /// Products of two weights, summed over a square of records, don't fit into 64 bits in every case.
    __extension__ using Weight = __int128;

    virtual ~WeightedOrder() = default;

    /// Where the searches ask whether to stop; once they do, what they find is of no use. Borrowed; may be null.
    void SetWork(const WorkShare* share) { work = share; }

    /// The first value whose running weight reaches a whole-numbered position. A position from the total weight on
    /// gives the last value of the list, one from 0 down the first, and these two may be values without weight.
    double At(double position) const;

    /// The value in the middle of the weight; with an even total whose half is just reached by a value, the mean of
    /// it and of the next one in the list, which may be a value without weight. That holds for a total of 0, too: its
    /// half is just reached by the first value.
    double Median() const;

 protected:
    virtual double First() const = 0;
    virtual double Last() const = 0;
    /// The value behind the first one, an equal one as well; none if the list has one value alone.
    virtual std::optional<double> Second() const = 0;
    virtual Weight TotalWeight() const = 0;
    /// Whether any weight is below 0. The search then asks as it ever did, since what it finds depends on that.
    virtual bool HasNegativeWeights() const = 0;
    /// Sum of the weights of all values that are not above the bound.
    virtual Weight WeightUpTo(double bound) const = 0;
    /// The first value above the bound; the last of all if there is none.
    virtual double NextAbove(double bound) const = 0;

 private:
    double Reaching(Weight position) const;

    const WorkShare* work = nullptr;
};

/// The means (d_j + d_i) / 2 of all pairs i <= j of m values, the averages of Walsh. A pair has the product of its
/// weights; a value with itself has w (w + 1) / 2, so that a weight of w counts as w equal values.
///
/// In sorted order the averages ascend along each row and each column of their triangle, rounding included. The weight
/// up to a bound is therefore known after one walk along a staircase of at most 2 m steps.
///
/// Source: Walsh (1949), Annals of Mathematical Statistics 20, 64-81; the walk: Johnson and Mizoguchi (1978), SIAM
/// Journal on Computing 7, 147-153.
class WalshAverages : public WeightedOrder {
 public:
    /// At least one value, in any order. `weights`: whole numbers within 32 bits; null: each is 1. `work` may be null;
    /// once it is stopped, the averages are of no use.
    WalshAverages(std::span<const double> sample, const double* weights, const WorkShare* share = nullptr);

 protected:
    double First() const override { return Average(0, 0); }
    double Last() const override { return Average(values.size() - 1, values.size() - 1); }
    std::optional<double> Second() const override {
        return values.size() > 1 ? std::optional(Average(0, 1)) : std::nullopt;
    }
    Weight TotalWeight() const override { return totalWeight; }
    bool HasNegativeWeights() const override { return hasNegativeWeights; }
    Weight WeightUpTo(double bound) const override;
    double NextAbove(double bound) const override;

 private:
    double Average(std::size_t i, std::size_t j) const { return (values[j] + values[i]) * 0.5; }
    Weight RowWeight(std::size_t row, std::size_t end) const;

    LargeArray<double> values;              // ascending
    LargeArray<std::int64_t> weightBefore;  // of the values in front of a position, m + 1 entries
    Weight totalWeight = 0;
    bool hasNegativeWeights = false;
};

/// The differences a_i - b_j of all pairs of two samples. A pair has the product of its weights.
///
/// With both samples sorted the differences ascend with i and descend with j, rounding included, so the weight up to a
/// bound is known after one walk of at most m + n steps. Equal values of a sample are one entry here, so that heavily
/// tied samples are short.
///
/// Source: Lehmann (1963), Annals of Mathematical Statistics 34, 1507-1512; the walk as for the averages of Walsh.
class PairwiseDifferences : public WeightedOrder {
 public:
    /// At least one value in each sample; its order is free.
    PairwiseDifferences(std::vector<WeightedDifference> first, std::vector<WeightedDifference> second)
        : minuends(std::move(first)), subtrahends(std::move(second)) {}

 protected:
    double First() const override { return Difference(0, subtrahends.values.size() - 1); }
    double Last() const override { return Difference(minuends.values.size() - 1, 0); }
    std::optional<double> Second() const override;
    Weight TotalWeight() const override { return Weight{minuends.totalWeight} * subtrahends.totalWeight; }
    bool HasNegativeWeights() const override { return minuends.hasNegativeWeights || subtrahends.hasNegativeWeights; }
    Weight WeightUpTo(double bound) const override;
    double NextAbove(double bound) const override;

 private:
    /// The distinct values of a sample, ascending.
    struct Sample {
        explicit Sample(std::vector<WeightedDifference> entries);

        std::vector<double> values;
        std::vector<std::int64_t> weightBefore;  // of the values in front of a position, one more than values
        std::int64_t totalWeight = 0;
        bool hasNegativeWeights = false;
        std::optional<double> behindFirst;  // the second and the last but one entry, which may equal their neighbours
        std::optional<double> beforeLast;
    };

    double Difference(std::size_t i, std::size_t j) const { return minuends.values[i] - subtrahends.values[j]; }

    Sample minuends;
    Sample subtrahends;
};
