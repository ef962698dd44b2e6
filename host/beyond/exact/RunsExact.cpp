#include "host/beyond/exact/RunsExact.h"

#include <algorithm>

#include "host/beyond/exact/WalkFromMode.h"
#include "host/beyond/exact/WideInteger.h"

namespace tarn {

namespace {

/// The distance of a number of runs from its expectation 1 + 2 * first * second / cases, times the cases.
class DistanceOfRuns {
 public:
    DistanceOfRuns(std::int64_t first, std::int64_t second)
        : cases_(static_cast<WideInteger>(first) + second),
          expectation_(cases_ + 2 * static_cast<WideInteger>(first) * second) {}

    WideInteger operator()(std::int64_t runs) const {
        const WideInteger difference = runs * cases_ - expectation_;
        return difference < 0 ? -difference : difference;
    }

 private:
    WideInteger cases_;
    WideInteger expectation_;
};

class Tails {
 public:
    Tails(std::int64_t observed, const DistanceOfRuns& distance)
        : observed_(observed), distance_(distance), observedDistance_(distance(observed)) {}

    void Add(std::int64_t runs, long double weight) {
        all_ += weight;
        if (runs <= observed_) less_ += weight;
        if (runs >= observed_) greater_ += weight;
        if (distance_(runs) >= observedDistance_) twoSided_ += weight;
    }

    ExactTails Shares() const {
        const auto share = [&](long double sum) { return std::min(1.0, static_cast<double>(sum / all_)); };
        return {share(less_), share(greater_), share(twoSided_)};
    }

 private:
    std::int64_t observed_;
    const DistanceOfRuns& distance_;
    WideInteger observedDistance_;
    long double all_ = 0;
    long double less_ = 0;
    long double greater_ = 0;
    long double twoSided_ = 0;
};

}  // namespace

ExactTails RunsExact(std::int64_t runs, std::int64_t firstCount, std::int64_t secondCount) {
    const std::int64_t fewer = std::min(firstCount, secondCount);
    if (fewer == 0) return {};
    const auto first = static_cast<long double>(firstCount);
    const auto second = static_cast<long double>(secondCount);
    const long double cases = first + second;
    // 2k runs are k of each kind, in 2 * C(first-1, k-1) * C(second-1, k-1) orders; of 2k+1 runs either kind may have
    // one more, which is (cases-2k) / (2k) times as many.
    const auto ratio = [&](std::int64_t place) {
        const auto k = static_cast<long double>(place);
        return (first - k) * (second - k) / (k * k);
    };
    const DistanceOfRuns distance(firstCount, secondCount);
    Tails tails(runs, distance);
    const auto visit = [&](std::int64_t pairs, long double weight) {
        const auto k = static_cast<long double>(pairs);
        tails.Add(2 * pairs, weight);
        if (cases > 2 * k) tails.Add(2 * pairs + 1, weight * (cases - 2 * k) / (2 * k));
    };
    const auto mode = static_cast<std::int64_t>(first * second / cases);
    WalkFromMode(1, mode, fewer, ratio, visit);
    return tails.Shares();
}

double RunsExactCost(std::int64_t firstCount, std::int64_t secondCount) {
    constexpr double kAdditionsForEach = 60;
    return kAdditionsForEach * static_cast<double>(std::min(firstCount, secondCount));
}

}  // namespace tarn
