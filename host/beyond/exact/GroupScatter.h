#pragma once

#include <cstdint>
#include <vector>

namespace tarn {

/// Compares how far the groups' sums of scores are from their expectations in two arrangements of the same cases: the
/// squared distances, each divided by the size of its group, are added up. The Kruskal-Wallis H and the chi-square of
/// the median test rise and fall with it (Kruskal and Wallis, 1952, Journal of the American Statistical Association 47,
/// 583-621).
///
/// Whole numbers decide wherever they have room, so that equal ones are equal: the squares are multiplied by a common
/// multiple of the sizes over the size. Where that multiple is too large for it, sums are taken as equal within
/// 1e-12 of the larger one.
class GroupScatter {
 public:
    /// `observed`: distances of the arrangement to compare with. `sizes` of the groups are above 0. `largestScore`: no
    /// case is further from the mean.
    GroupScatter(const std::vector<std::int64_t>& sizes, const std::vector<std::int64_t>& observed,
                 std::int64_t largestScore);

    /// Below 0, 0 or above 0 as the groups' distances, one for each of the sizes, scatter less than the observed ones,
    /// as much or more.
    int CompareWithObserved(const std::int64_t* distances) const;

 private:
    __extension__ using Wide = __int128;
    enum class Width { kWord, kWide, kFloating };

    template <typename Number>
    Number Of(const std::int64_t* distances, const std::vector<Number>& weights) const;

    Width width_ = Width::kWord;
    std::vector<std::int64_t> wordWeights_;
    std::vector<Wide> wideWeights_;
    std::vector<long double> floatingWeights_;
    std::int64_t wordObserved_ = 0;
    Wide wideObserved_ = 0;
    long double floatingObserved_ = 0;
};

}  // namespace tarn
