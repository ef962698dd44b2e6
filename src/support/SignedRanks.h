#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "machine/LargeArray.h"
#include "machine/WorkShare.h"
#include "support/Arithmetic.h"

/// What the tests on differences share: the differences that a pass collects, and the ranks of their absolute values.

/// Values of one kind side by side, as many as come. What was written stays in place until the next `Extend`.
template <typename Value>
class GrowingArray {
 public:
    /// Room for `count` values behind those that are kept. May throw `std::bad_alloc`.
    Value* Extend(std::size_t count) {
        if (values_.size() - size_ < count) Grow(size_ + count);
        return values_.data() + size_;
    }
    /// How many of them were written.
    void Keep(std::size_t count) { size_ += count; }

    std::size_t Size() const { return size_; }
    std::span<const Value> Span() const { return {values_.data(), size_}; }
    std::span<Value> Span() { return {values_.data(), size_}; }

 private:
    void Grow(std::size_t least) {
        constexpr std::size_t kFirst = 1024;
        LargeArray<Value> larger(std::max({kFirst, least, values_.size() * 2}));
        std::copy_n(values_.data(), size_, larger.data());
        values_ = std::move(larger);
    }

    LargeArray<Value> values_;
    std::size_t size_ = 0;
};

/// Differences with the weights of their records, in the order of the records.
class SignedDifferences {
 public:
    /// Takes the differences of some records, zeros included or not. `weights`: those of the records, whose fractions
    /// may count; null: each is 1, and then it is so in every call.
    template <typename Weight>
    void Add(const double* differences, const Weight* weights, std::size_t count, bool withZeros);
    void Clear();

    bool AreWeighted() const { return weights_.Size() > 0; }
    std::span<double> Differences() { return differences_.Span(); }
    std::span<const double> Differences() const { return differences_.Span(); }
    /// Null where each is 1.
    const double* Weights() const { return AreWeighted() ? weights_.Span().data() : nullptr; }

 private:
    GrowingArray<double> differences_;
    GrowingArray<double> weights_;
};

/// Sums over the mid-ranks of absolute differences.
struct SignedRanks {
    double sumOfPositive = 0;     ///< each rank times its weight, over the differences without a negative sign
    double tieCorrectionSum = 0;  ///< of t cubed minus t over the runs of t equal ones
    double excessOfPositive = 0;  ///< that sum less the one over the others
};

/// Ranks the absolute values. Truncated weights move the ranks, those as they stand weigh them in the sum. The sign bit
/// says on which side a difference is, be it a number or not. `work` may be null; of no use once it was stopped. Throws
/// `std::bad_alloc`.
SignedRanks RankSignedDifferences(const SignedDifferences& sample, const WorkShare* work, const Arithmetic& arithmetic);

// ---- Implementation ----

template <typename Weight>
void SignedDifferences::Add(const double* differences, const Weight* weights, std::size_t count, bool withZeros) {
    double* const to = differences_.Extend(count);
    std::size_t kept = 0;
    if (weights == nullptr) {
        // Without a branch: a difference that is left out is written over by the next one.
        for (std::size_t i = 0; i < count; ++i) {
            to[kept] = differences[i];
            kept += static_cast<std::size_t>(withZeros || differences[i] != 0);
        }
    } else {
        double* const weightsTo = weights_.Extend(count);
        for (std::size_t i = 0; i < count; ++i) {
            to[kept] = differences[i];
            weightsTo[kept] = weights[i];
            kept += static_cast<std::size_t>(withZeros || differences[i] != 0);
        }
        weights_.Keep(kept);
    }
    differences_.Keep(kept);
}
