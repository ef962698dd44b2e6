#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/beyond/AscendingSample.h"

namespace tarn {

/// A count of pairs of cases, up to 2^104.
__extension__ typedef unsigned __int128 PairCount;

/// The differences of all pairs of cases of two samples, or the means of all pairs of one (Walsh averages), in their
/// order, without a list of them. A difference is rounded to a double; a weight counts as that many cases.
class DifferenceMatrix {
 public:
    /// The differences of `first` less `second`, n1 n2 of them.
    static DifferenceMatrix OfSamples(const AscendingSample& first, const AscendingSample& second);
    /// The means of each case with itself and with each other one, n (n + 1) / 2 of them (Walsh, 1949, Annals of
    /// Mathematical Statistics 20, 64-81).
    static DifferenceMatrix OfWalshAverages(const AscendingSample& sample);

    PairCount Count() const { return count_; }

    /// The elements at `ranks`, from 1 (the smallest) to `Count`, in the order of `ranks`. They are exact: counting the
    /// elements up to a value is a walk through both samples, O(values); such walks narrow an interval about each rank
    /// until few elements are left, which are listed, or one double is. Where to count is guessed from some places of
    /// the samples and by straight lines, so that a handful of walks does, and 64 and some more do in any case (on
    /// counting in a matrix of sorted rows and columns: Johnson and Mizoguchi, 1978, SIAM Journal on Computing 7,
    /// 147-153; Monahan, 1984, ACM Transactions on Mathematical Software 10, 265-270).
    std::vector<double> Select(const std::vector<PairCount>& ranks) const;

 private:
    friend class DifferenceSearch;

    /// One side of the matrix: different values in ascending order, with how many cases each has.
    struct Side {
        std::vector<double> values;
        std::vector<std::uint64_t> counts;  ///< empty where each is 1
        std::uint64_t cases = 0;

        std::uint64_t CountAt(std::size_t i) const { return counts.empty() ? 1 : counts[i]; }
    };
    /// The elements up to a value.
    struct Cut {
        double value = 0;
        PairCount pairs = 0;
        std::uint64_t cells = 0;  ///< pairs of different values among them
    };
    struct Element {
        double value = 0;
        PairCount pairs = 0;
    };
    struct Walk;

    static Side SideOf(const AscendingSample& sample);

    std::vector<Cut> CutsAt(const std::vector<double>& values) const;
    std::vector<Element> ElementsBetween(double above, double upTo) const;
    void CountAlone(Walk& walk) const;
    template <std::size_t Lanes, bool HasCounts>
    void CountAbreast(Walk* walks) const;
    template <std::size_t Lanes>
    void CountLanes(Walk* walks) const;
    Cut Finished(const Walk& walk) const;

    Side first_;
    Side second_;
    bool isWalsh_ = false;
    std::vector<PairCount> doubles_;  ///< of Walsh averages: pairs of equal cases up to each value
    PairCount count_ = 0;
};

}  // namespace tarn
