#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "support/Arithmetic.h"

/// One interval of a histogram: the sum of the weights and the mean of the values that fell into it.
struct HistogramBin {
    std::int64_t count = 0;
    double mean = 0;
};

/// A fine histogram of equal intervals between the smallest and the largest value, with zero as a boundary and the
/// zeros themselves apart, so that a plot of differences shows three sides: below, at and above zero.
///
/// Used in this order: `SetUp`, `Add` for every value, `Close`, `Bins`.
class Histogram {
 public:
    /// How many intervals descriptives and tests ask for.
    static constexpr std::size_t kDefaultBins = 400;

    /// Borrows `by`.
    explicit Histogram(const Arithmetic& by = Arithmetic::AsDefined()) : arithmetic(&by) {}

    /// Makes `wishedBins` empty intervals between `low` and `high`, one more where zero lies on or above the lower
    /// end of an interval and strictly below its upper end. The last edge is `high` + 1.
    void SetUp(double low, double high, std::size_t wishedBins);

    /// Takes a value with its weight; an exact zero goes to a counter of its own. A weight of 0 is not guarded: in
    /// an interval that is still empty it makes the mean a NaN. Documents depend on it.
    void Add(double value, std::int32_t weight);
    /// The same for many values in any order. `weights`: null: each is 1.
    void AddColumn(const double* values, const std::int32_t* weights, std::size_t count);
    /// The same for values in ascending order, where those of earlier calls are not above them.
    void AddAscending(const double* values, const std::int32_t* weights, std::size_t count);

    /// Appends the zeros as one further interval of mean 0, if there were any.
    void Close();

    const std::vector<HistogramBin>& Bins() const { return bins; }
    const std::vector<double>& Edges() const { return edges; }

    /// The interval of a value: for the most part the first one whose upper edge is not below it, but the search
    /// ends at interval 0 as soon as it asks for that one, so that interval 1 stays empty where the edges are many.
    /// Documents depend on it. A value beyond the last edge has no interval, and the answer is then of no use.
    std::size_t FindBin(double value) const;

 private:
    std::size_t SearchBin(double value) const;
    void FindSlots(const double* values, std::size_t count, std::int32_t* slots) const;
    template <typename Counter>
    void AddToBins(const double* values, const std::int32_t* weights, std::size_t count);
    void AddAscendingOfOneSign(const double* begin, const double* end, const std::int32_t* weights);

    const Arithmetic* arithmetic;
    std::vector<HistogramBin> bins;
    std::vector<double> edges;
    std::size_t binCount = 0;
    std::int64_t zeroCount = 0;
    std::int64_t weightSeen = 0;  // whatever the signs

    double low = 0;
    std::size_t zeroEdges = 0;  // that were added: 1 where zero became an edge of its own
    double binsPerUnit = 0;     // 0 where the edges don't ascend strictly, and the place of a value can't be guessed
    bool isGuessClose = false;  // whether a guess can't be off by a whole interval
};
