#include "host/beyond/DifferenceMatrix.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "host/beyond/DistinctValues.h"

namespace tarn {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A whole number that ascends with the double; that of -0 and 0 is 0.
std::int64_t OrderOf(double value) {
    const auto bits = std::bit_cast<std::int64_t>(value);
    return bits >= 0 ? bits : std::numeric_limits<std::int64_t>::min() - bits;
}

double OfOrder(std::int64_t order) {
    return std::bit_cast<double>(order >= 0 ? order : std::numeric_limits<std::int64_t>::min() - order);
}

/// The double in the middle between two, by how many lie between.
double Halfway(double low, double high) {
    const std::int64_t a = OrderOf(low);
    const std::int64_t b = OrderOf(high);
    return OfOrder((a & b) + ((a ^ b) >> 1));  // their mean, which would overflow as a sum
}

}  // namespace

/// The state of counting the elements up to `bound`. The elements of a row ascend as the second sample's values
/// descend; rows further on begin further up.
struct DifferenceMatrix::Walk {
    double bound = 0;
    std::size_t i = 0;
    std::size_t j = 0;        ///< the first value of the second sample that is large enough for row i
    std::uint64_t above = 0;  ///< cases of the second sample from j on
    PairCount pairs = 0;
    std::uint64_t cells = 0;
};

DifferenceMatrix::Side DifferenceMatrix::SideOf(const AscendingSample& sample) {
    const DistinctValues distinct(sample);
    Side side;
    side.values.assign(distinct.Values(), distinct.Values() + distinct.Size());
    if (distinct.Counts() != nullptr) {
        side.counts.reserve(distinct.Size());
        for (std::size_t i = 0; i < distinct.Size(); ++i) {
            side.counts.push_back(static_cast<std::uint64_t>(distinct.CountAt(i)));
        }
    }
    side.cases = static_cast<std::uint64_t>(distinct.Cases());
    return side;
}

DifferenceMatrix DifferenceMatrix::OfSamples(const AscendingSample& first, const AscendingSample& second) {
    DifferenceMatrix matrix;
    matrix.first_ = SideOf(first);
    matrix.second_ = SideOf(second);
    matrix.count_ = static_cast<PairCount>(matrix.first_.cases) * matrix.second_.cases;
    return matrix;
}

DifferenceMatrix DifferenceMatrix::OfWalshAverages(const AscendingSample& sample) {
    DifferenceMatrix matrix;
    matrix.isWalsh_ = true;
    matrix.first_ = SideOf(sample);
    // The mean of two is the half of the one less the negative half of the other.
    for (double& value : matrix.first_.values) value /= 2;
    matrix.second_ = matrix.first_;
    std::ranges::reverse(matrix.second_.values);
    std::ranges::reverse(matrix.second_.counts);
    for (double& value : matrix.second_.values) value = -value;
    PairCount doubles = 0;
    matrix.doubles_.push_back(doubles);
    for (std::size_t i = 0; i < matrix.first_.values.size(); ++i) {
        doubles += matrix.first_.CountAt(i);
        matrix.doubles_.push_back(doubles);
    }
    const PairCount cases = matrix.first_.cases;
    matrix.count_ = cases * (cases + 1) / 2;
    return matrix;
}

void DifferenceMatrix::CountAlone(Walk& walk) const {
    while (walk.i < first_.values.size() && walk.j < second_.values.size()) {
        if (first_.values[walk.i] - second_.values[walk.j] <= walk.bound) {
            walk.pairs += static_cast<PairCount>(first_.CountAt(walk.i)) * walk.above;
            walk.cells += second_.values.size() - walk.j;
            ++walk.i;
        } else {
            walk.above -= second_.CountAt(walk.j);
            ++walk.j;
        }
    }
}

/// Several walks in turns: the steps of one depend on each other, those of different ones do not, and which way a step
/// goes is a matter of chance, so that a jump would be foretold wrongly half of the time.
template <std::size_t Lanes, bool HasCounts>
void DifferenceMatrix::CountAbreast(Walk* walks) const {
    const double* const x = first_.values.data();
    const double* const y = second_.values.data();
    constexpr std::size_t kFewSteps = 64;
    for (;;) {
        // So many steps take no walk over an end.
        std::size_t steps = std::numeric_limits<std::size_t>::max();
        for (std::size_t lane = 0; lane < Lanes; ++lane) {
            const Walk& walk = walks[lane];
            steps = std::min({steps, first_.values.size() - walk.i, second_.values.size() - walk.j});
        }
        if (steps < kFewSteps) return;
        Walk own[Lanes];
        std::copy(walks, walks + Lanes, own);
        for (; steps > 0; --steps) {
            for (Walk& walk : own) {
                const bool isRow = x[walk.i] - y[walk.j] <= walk.bound;
                const std::uint64_t row = isRow ? ~std::uint64_t{0} : 0;
                walk.cells += (second_.values.size() - walk.j) & row;
                if constexpr (HasCounts) {
                    walk.pairs += static_cast<PairCount>(first_.CountAt(walk.i) & row) * walk.above;
                    walk.above -= second_.CountAt(walk.j) & ~row;
                }
                walk.i += static_cast<std::size_t>(isRow);
                walk.j += static_cast<std::size_t>(!isRow);
            }
        }
        std::copy(own, own + Lanes, walks);
    }
}

template <std::size_t Lanes>
void DifferenceMatrix::CountLanes(Walk* walks) const {
    if (first_.counts.empty() && second_.counts.empty()) {
        CountAbreast<Lanes, false>(walks);
        for (std::size_t lane = 0; lane < Lanes; ++lane) {
            walks[lane].pairs = walks[lane].cells;
            walks[lane].above = second_.cases - walks[lane].j;
        }
    } else {
        CountAbreast<Lanes, true>(walks);
    }
    for (std::size_t lane = 0; lane < Lanes; ++lane) CountAlone(walks[lane]);
}

DifferenceMatrix::Cut DifferenceMatrix::Finished(const Walk& walk) const {
    if (!isWalsh_) return {walk.bound, walk.pairs, walk.cells};
    // The matrix has each pair of two cases twice and that of a case with itself once.
    const auto end =
        std::ranges::partition_point(first_.values, [&](double half) { return half + half <= walk.bound; });
    const auto place = static_cast<std::size_t>(end - first_.values.begin());
    return {walk.bound, (walk.pairs + doubles_[place]) / 2, walk.cells};
}

std::vector<DifferenceMatrix::Cut> DifferenceMatrix::CutsAt(const std::vector<double>& values) const {
    std::vector<Walk> walks(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        walks[i].bound = values[i];
        walks[i].above = second_.cases;
    }
    constexpr std::size_t kSix = 6;
    constexpr std::size_t kFour = 4;
    constexpr std::size_t kTwo = 2;
    std::size_t done = 0;
    for (; done + kSix <= walks.size(); done += kSix) CountLanes<kSix>(&walks[done]);
    for (; done + kFour <= walks.size(); done += kFour) CountLanes<kFour>(&walks[done]);
    for (; done + kTwo <= walks.size(); done += kTwo) CountLanes<kTwo>(&walks[done]);
    for (; done < walks.size(); ++done) CountLanes<1>(&walks[done]);
    std::vector<Cut> cuts;
    cuts.reserve(walks.size());
    for (const Walk& walk : walks) cuts.push_back(Finished(walk));
    return cuts;
}

std::vector<DifferenceMatrix::Element> DifferenceMatrix::ElementsBetween(double above, double upTo) const {
    std::vector<Element> elements;
    std::size_t end = 0;
    const std::size_t size = second_.values.size();
    for (std::size_t i = 0; i < first_.values.size(); ++i) {
        const double x = first_.values[i];
        while (end < size && x - second_.values[end] > above) ++end;
        // Most rows have no element, which is foretold well when it is asked backwards from the end.
        for (std::size_t next = end; next > 0 && x - second_.values[next - 1] <= upTo; --next) {
            const std::size_t j = next - 1;
            const std::size_t partner = size - 1 - j;  // of Walsh averages: the place of the other case
            if (isWalsh_ && partner > i) continue;
            const PairCount ofFirst = first_.CountAt(i);
            const PairCount ofSecond = second_.CountAt(j);
            const bool isDouble = isWalsh_ && partner == i;
            elements.push_back({x - second_.values[j], isDouble ? ofFirst * (ofFirst + 1) / 2 : ofFirst * ofSecond});
        }
    }
    std::ranges::sort(elements, {}, &Element::value);
    return elements;
}

/// Narrows intervals about ranks. Its cuts ascend; neighbours among them are the intervals.
class DifferenceSearch {
 public:
    explicit DifferenceSearch(const DifferenceMatrix& matrix) : matrix_(matrix) {
        const double least = matrix.first_.values.front() - matrix.second_.values.back();
        const double largest = matrix.first_.values.back() - matrix.second_.values.front();
        const std::uint64_t cells =
            static_cast<std::uint64_t>(matrix.first_.values.size()) * matrix.second_.values.size();
        cuts_ = {{std::nextafter(least, -kInfinity), 0, 0}, {largest, matrix.count_, cells}};
        constexpr std::uint64_t kFewCells = 1 << 14;
        constexpr std::uint64_t kShareOfValues = 32;
        listable_ = std::max<std::uint64_t>(
            kFewCells, (matrix.first_.values.size() + matrix.second_.values.size()) / kShareOfValues);
    }

    std::vector<double> Select(const std::vector<PairCount>& ranks) {
        std::vector<Goal> goals;
        goals.reserve(ranks.size());
        for (const PairCount rank : ranks) goals.push_back({rank});
        if (IsAnyOpen(goals)) CountAt(FirstGuesses(goals));
        while (IsAnyOpen(goals)) CountAt(NextGuesses(goals));
        std::vector<double> found;
        found.reserve(ranks.size());
        for (const PairCount rank : ranks) found.push_back(ElementAt(rank));
        return found;
    }

 private:
    using Cut = DifferenceMatrix::Cut;
    using Element = DifferenceMatrix::Element;
    struct Goal {
        PairCount rank = 0;
        std::uint64_t cells =
            std::numeric_limits<std::uint64_t>::max();  ///< of the interval, when it was last narrowed
        int failures = 0;                               ///< how often it has not become much smaller
    };
    /// The values that may be the element of a rank: above the one cut and up to the other.
    struct Interval {
        const Cut* low;
        const Cut* high;
        std::uint64_t Cells() const { return high->cells - low->cells; }
        bool HasOneValue() const { return OrderOf(high->value) <= OrderOf(low->value) + 1; }
    };

    Interval IntervalOf(PairCount rank) const {
        const auto high = std::ranges::partition_point(cuts_, [&](const Cut& cut) { return cut.pairs < rank; });
        return {&*(high - 1), &*high};
    }
    bool IsOpen(const Interval& interval) const { return interval.Cells() > listable_ && !interval.HasOneValue(); }
    bool IsAnyOpen(const std::vector<Goal>& goals) const {
        return std::ranges::any_of(goals, [&](const Goal& goal) { return IsOpen(IntervalOf(goal.rank)); });
    }

    /// Counts up to those of the values that lie within an open interval.
    void CountAt(std::vector<double> values) {
        std::ranges::sort(values);
        values.erase(std::unique(values.begin(), values.end()), values.end());
        const std::vector<Cut> counted = matrix_.CutsAt(values);
        cuts_.insert(cuts_.end(), counted.begin(), counted.end());
        std::ranges::sort(cuts_, {}, &Cut::value);
        const auto isSame = [](const Cut& a, const Cut& b) { return a.value == b.value; };
        cuts_.erase(std::unique(cuts_.begin(), cuts_.end(), isSame), cuts_.end());
    }

    /// Adds a value if it narrows the interval.
    static void Guess(double value, const Interval& interval, std::vector<double>& guesses) {
        if (value > interval.low->value && value < interval.high->value) guesses.push_back(value);
    }

    /// The middle values of slices of equal size.
    static std::vector<double> Slices(const DifferenceMatrix::Side& side, std::size_t slices) {
        std::vector<double> middles;
        std::size_t i = 0;
        long double cases = static_cast<long double>(side.CountAt(0));
        for (std::size_t slice = 0; slice < slices; ++slice) {
            const long double place = static_cast<long double>(side.cases) * static_cast<long double>(2 * slice + 1) /
                                      static_cast<long double>(2 * slices);
            while (cases < place && i + 1 < side.values.size()) cases += static_cast<long double>(side.CountAt(++i));
            middles.push_back(side.values[i]);
        }
        return middles;
    }

    /// Values on both sides of each rank, by the differences of some places of both samples.
    std::vector<double> FirstGuesses(const std::vector<Goal>& goals) const {
        // Unequal numbers of slices: those of equal numbers in two samples of one shape all differ by the same.
        constexpr std::size_t kSlicesOfFirst = 128;
        constexpr std::size_t kSlicesOfSecond = 101;
        const std::vector<double> x = Slices(matrix_.first_, kSlicesOfFirst);
        const std::vector<double> y = Slices(matrix_.second_, kSlicesOfSecond);
        std::vector<double> differences;
        differences.reserve(x.size() * y.size());
        for (const double a : x) {
            for (const double b : y) differences.push_back(a - b);
        }
        std::ranges::sort(differences);
        std::vector<double> guesses;
        const auto count = static_cast<long double>(differences.size());
        constexpr long double kMarginShare = 1.0L / 512;
        const long double margin = count * kMarginShare;
        for (const Goal& goal : goals) {
            const long double place =
                static_cast<long double>(goal.rank) / static_cast<long double>(matrix_.count_) * count;
            for (const long double at : {place - margin, place + margin}) {
                const auto index = static_cast<std::size_t>(std::clamp(at, 0.0L, count - 1));
                Guess(differences[index], IntervalOf(goal.rank), guesses);
            }
        }
        if (guesses.empty()) return NextGuesses(goals);
        return guesses;
    }

    std::vector<double> NextGuesses(std::vector<Goal>& goals) const {
        std::vector<double> guesses;
        const Cut* guessed = nullptr;
        PairCount guessedRank = 0;
        for (Goal& goal : goals) {
            const Interval interval = IntervalOf(goal.rank);
            // What narrows the interval of a rank does so for the next one.
            const bool isGuessed = interval.low == guessed && goal.rank - guessedRank <= 1;
            if (!IsOpen(interval) || isGuessed) continue;
            GuessWithin(interval, goal, guesses);
            guessed = interval.low;
            guessedRank = goal.rank;
        }
        return guesses;
    }
    std::vector<double> NextGuesses(const std::vector<Goal>& goals) const {
        std::vector<Goal> copies = goals;
        return NextGuesses(copies);
    }

    /// Both sides of the rank on a straight line between the cuts; the middle of the doubles where lines have not
    /// helped.
    void GuessWithin(const Interval& interval, Goal& goal, std::vector<double>& guesses) const {
        constexpr std::uint64_t kMuchSmaller = 4;
        constexpr int kPatience = 2;
        if (interval.Cells() > goal.cells / kMuchSmaller) ++goal.failures;
        goal.cells = interval.Cells();
        if (goal.failures > 1) {
            Guess(Halfway(interval.low->value, interval.high->value), interval, guesses);
            GuessAboutCluster(interval, goal.rank, guesses);
        }
        if (goal.failures > kPatience) return;
        const double width = interval.high->value - interval.low->value;
        const auto pairs = static_cast<double>(interval.high->pairs - interval.low->pairs);
        const double share = static_cast<double>(goal.rank - interval.low->pairs) / pairs;
        constexpr double kMargins[] = {1.0 / 256, 1.0 / 64, 1.0 / 16};
        for (const double margin : {-kMargins[goal.failures], kMargins[goal.failures]}) {
            Guess(interval.low->value + width * (share + margin), interval, guesses);
        }
        if (guesses.empty()) Guess(Halfway(interval.low->value, interval.high->value), interval, guesses);
    }

    /// An element of the matrix and how much the differences that are meant to equal it may differ by rounding.
    struct Sampled {
        double value;
        double rounding;
    };

    /// Some elements of an interval, from rows that are spread over the matrix, in ascending order.
    std::vector<Sampled> SampledWithin(const Interval& interval) const {
        constexpr std::size_t kRows = 256;
        const std::vector<double>& x = matrix_.first_.values;
        const std::vector<double>& y = matrix_.second_.values;
        std::vector<Sampled> sampled;
        for (std::size_t row = 0; row < kRows; ++row) {
            const double ofRow = x[(x.size() - 1) * row / (kRows - 1)];
            const auto placeAbove = [&](double bound) {
                return std::ranges::partition_point(y, [&](double value) { return ofRow - value > bound; });
            };
            const auto begin = placeAbove(interval.high->value);
            const auto end = placeAbove(interval.low->value);
            if (begin == end) continue;
            const double ofSecond = begin[(end - begin) / 2];
            constexpr double kRoundings = 4 * std::numeric_limits<double>::epsilon();
            sampled.push_back({ofRow - ofSecond, kRoundings * (std::fabs(ofRow) + std::fabs(ofSecond))});
        }
        std::ranges::sort(sampled, {}, &Sampled::value);
        return sampled;
    }

    /// Where many differences are equal but for their rounding, both sides of such a cluster.
    void GuessAboutCluster(const Interval& interval, PairCount rank, std::vector<double>& guesses) const {
        const std::vector<Sampled> sampled = SampledWithin(interval);
        if (sampled.empty()) return;
        const double share = static_cast<double>(rank - interval.low->pairs) /
                             static_cast<double>(interval.high->pairs - interval.low->pairs);
        const auto place = static_cast<std::size_t>(share * static_cast<double>(sampled.size()));
        const Sampled& pivot = sampled[std::min(place, sampled.size() - 1)];
        Guess(pivot.value - pivot.rounding, interval, guesses);
        Guess(pivot.value + pivot.rounding, interval, guesses);
    }

    double ElementAt(PairCount rank) {
        const Interval interval = IntervalOf(rank);
        if (interval.HasOneValue()) return interval.high->value;
        if (!isListed_ || listedAbove_ != interval.low->value || listedUpTo_ != interval.high->value) {
            listed_ = matrix_.ElementsBetween(interval.low->value, interval.high->value);
            isListed_ = true;
            listedAbove_ = interval.low->value;
            listedUpTo_ = interval.high->value;
        }
        PairCount pairs = interval.low->pairs;
        for (const Element& element : listed_) {
            pairs += element.pairs;
            if (pairs >= rank) return element.value;
        }
        return interval.high->value;
    }

    const DifferenceMatrix& matrix_;
    std::vector<Cut> cuts_;
    std::uint64_t listable_ = 0;
    std::vector<Element> listed_;
    bool isListed_ = false;
    double listedAbove_ = 0;
    double listedUpTo_ = 0;
};

std::vector<double> DifferenceMatrix::Select(const std::vector<PairCount>& ranks) const {
    return DifferenceSearch(*this).Select(ranks);
}

}  // namespace tarn
