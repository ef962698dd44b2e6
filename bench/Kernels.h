#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The least work that makes each statistic from columns in memory: no missing values, no weights, no descriptives, no
/// document, one thread. What the engine is measured against, not a part of it.
///
/// The tests of groups sort one 64-bit key per record, the value with its group in the lowest bits. A group so takes
/// the place of the last bits of its value: one bit for two groups, three for five. Values that differ in those bits
/// alone count as tied.
namespace bench {

enum class Sorter { kStandard, kVectorised };

/// Whether Highway's VQSort was there when this was built; without it `kVectorised` sorts as `kStandard`.
bool HasVectorisedSort();

void Sort(std::vector<double>& values, Sorter sorter);

struct Moments {
    double mean = 0;
    double stdDev = 0;
    double min = 0;
    double max = 0;
};

/// Welford's recurrence, as descriptives have it.
Moments MomentsOf(const double* values, std::size_t records);

/// Equal intervals from `low` to `high`: how many values fell into each, and their sum.
struct Bins {
    std::vector<std::uint32_t> counts;
    std::vector<double> sums;
};
void FillBins(const double* values, std::size_t records, double low, double high, Bins& bins);

/// A group is an index, 0 and so on, in a column of numbers as the engine has it.
class Kernels {
 public:
    explicit Kernels(Sorter sorter) : sorter_(sorter) {}

    /// U of the second group with its normal deviate, the tie correction in it.
    struct RankSum {
        double statistic = 0;
        double z = 0;
    };
    RankSum MannWhitney(const double* values, const double* groups, std::size_t records);
    /// H with the tie correction.
    double KruskalWallis(const double* values, const double* groups, std::size_t records, unsigned groupCount);
    /// D, the largest difference of the two distributions.
    double KolmogorovSmirnov(const double* values, const double* groups, std::size_t records);
    /// The sum of the ranks of the positive differences, second less first.
    double Wilcoxon(const double* first, const double* second, std::size_t records);
    /// How many differences are positive.
    static double Sign(const double* first, const double* second, std::size_t records);
    /// Friedman's chi-square with the tie correction.
    static double Friedman(const double* const* fields, std::size_t fieldCount, std::size_t records);

 private:
    struct RankTotals;
    void MakeKeys(const double* values, const double* groups, std::size_t records, unsigned groupBits);
    void SortKeys();
    RankTotals RanksOfGroups(unsigned groupBits) const;

    Sorter sorter_;
    std::vector<std::uint64_t> keys_;  // stays there from call to call
};

}  // namespace bench
