// Simulates how often the intervals of host/beyond cover the true value. Prints a Markdown table; the seed is fixed.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "host/beyond/Association.h"
#include "host/beyond/HodgesLehmann.h"
#include "host/beyond/Jackknife.h"
#include "host/beyond/MatchedEffects.h"
#include "host/beyond/MedianInterval.h"
#include "host/beyond/OrderedTrend.h"
#include "host/beyond/Proportions.h"
#include "host/beyond/SmirnovDistance.h"
#include "host/beyond/Superiority.h"

namespace {

using namespace tarn;

constexpr int kRepetitions = 10000;
constexpr double kLevel = 0.95;
constexpr double kSame = 1e-9;  // a limit that is the true value but for rounding covers it

/// A distribution on some ascending values.
struct Discrete {
    std::vector<double> values;
    std::vector<double> chances;
};

struct Design {
    std::string name;
    Discrete first;
    Discrete second;
    int n1;
    int n2;
};

using Generator = std::mt19937_64;

Discrete OnWholeNumbers(const std::vector<double>& chances) {
    Discrete discrete;
    for (std::size_t i = 0; i < chances.size(); ++i) discrete.values.push_back(static_cast<double>(i + 1));
    discrete.chances = chances;
    return discrete;
}

/// A normal distribution of standard deviation 1, rounded to tenths.
Discrete RoundedNormal(double mean) {
    constexpr int kReach = 70;
    const auto below = [&](double x) { return std::erfc((mean - x) / std::sqrt(2.0)) / 2; };
    Discrete discrete;
    for (int tenths = -kReach; tenths <= kReach; ++tenths) {
        discrete.values.push_back(tenths / 10.0);
        discrete.chances.push_back(below((tenths + 0.5) / 10) - below((tenths - 0.5) / 10));
    }
    return discrete;
}

std::vector<Design> Designs() {
    const auto five = [](std::vector<double> c) { return OnWholeNumbers(c); };
    const Discrete even = five({.1, .2, .4, .2, .1});
    return {
        {"1 to 5, 15 and 25, none", even, even, 15, 25},
        {"1 to 5, 15 and 25, moderate", five({.05, .1, .3, .3, .25}), five({.25, .3, .3, .1, .05}), 15, 25},
        {"1 to 5, 15 and 25, large", five({.02, .03, .1, .25, .6}), five({.6, .25, .1, .03, .02}), 15, 25},
        {"1 to 3, 40 and 60, none", five({.3, .4, .3}), five({.3, .4, .3}), 40, 60},
        {"1 to 3, 40 and 60, moderate", five({.2, .3, .5}), five({.5, .3, .2}), 40, 60},
        {"1 to 3, 40 and 60, large", five({.03, .07, .9}), five({.9, .07, .03}), 40, 60},
        {"tenths, 12 and 12, none", RoundedNormal(0), RoundedNormal(0), 12, 12},
        {"tenths, 12 and 12, moderate", RoundedNormal(0.8), RoundedNormal(0), 12, 12},
        {"tenths, 12 and 12, large", RoundedNormal(2), RoundedNormal(0), 12, 12},
    };
}

class Drawing {
 public:
    explicit Drawing(const Discrete& discrete)
        : values_(discrete.values), places_(discrete.chances.begin(), discrete.chances.end()) {}
    double operator()(Generator& generator) { return values_[static_cast<std::size_t>(places_(generator))]; }

 private:
    std::vector<double> values_;
    std::discrete_distribution<int> places_;
};

AscendingSample SampleOf(std::vector<double> values) {
    std::ranges::sort(values);
    AscendingSample sample;
    sample.size = static_cast<double>(values.size());
    sample.values = std::move(values);
    return sample;
}

/// The distribution of a function of two independent draws.
Discrete OfPairs(const Discrete& a, const Discrete& b, const std::function<double(double, double)>& function) {
    std::vector<std::pair<double, double>> cells;
    for (std::size_t i = 0; i < a.values.size(); ++i) {
        for (std::size_t j = 0; j < b.values.size(); ++j) {
            // Tenths are rounded to one double again.
            const double value = std::round(function(a.values[i], b.values[j]) * 100) / 100;
            cells.emplace_back(value, a.chances[i] * b.chances[j]);
        }
    }
    std::ranges::sort(cells);
    Discrete result;
    for (const auto& [value, chance] : cells) {
        if (result.values.empty() || result.values.back() != value) {
            result.values.push_back(value);
            result.chances.push_back(0);
        }
        result.chances.back() += chance;
    }
    return result;
}

double Expectation(const Discrete& discrete, const std::function<double(double)>& function) {
    double sum = 0;
    double all = 0;
    for (std::size_t i = 0; i < discrete.values.size(); ++i) {
        sum += discrete.chances[i] * function(discrete.values[i]);
        all += discrete.chances[i];
    }
    return sum / all;
}

double MedianOf(const Discrete& discrete) {
    double below = 0;
    for (std::size_t i = 0; i < discrete.values.size(); ++i) {
        below += discrete.chances[i];
        if (below > 0.5 - kSame) {
            const bool isExact = std::fabs(below - 0.5) < kSame && i + 1 < discrete.values.size();
            return isExact ? (discrete.values[i] + discrete.values[i + 1]) / 2 : discrete.values[i];
        }
    }
    return discrete.values.back();
}

double Sign(double x) {
    return static_cast<double>(x > 0) - static_cast<double>(x < 0);
}

double Less(const Discrete& a, const Discrete& b) {
    return Expectation(OfPairs(a, b, std::minus<>()), Sign);
}

/// The share of pairs with different signs of their mean, among differences that are not 0.
double WalshSign(const Discrete& differences) {
    Discrete others;
    for (std::size_t i = 0; i < differences.values.size(); ++i) {
        if (differences.values[i] == 0) continue;
        others.values.push_back(differences.values[i]);
        others.chances.push_back(differences.chances[i]);
    }
    return Expectation(OfPairs(others, others, std::plus<>()), Sign);
}

/// The share of the groups in the squares of ranks, for groups of fixed shares of the cases.
double RankShare(const Design& design) {
    const double p = static_cast<double>(design.n1) / (design.n1 + design.n2);
    const double advantage = Less(design.first, design.second) / 2;
    // The mean ranks of the groups are 1/2 + (1 - p) advantage and 1/2 - p advantage.
    const double between = p * (1 - p) * advantage * advantage;
    double cubes = 0;
    for (std::size_t i = 0; i < design.first.values.size(); ++i) {
        cubes += std::pow(p * design.first.chances[i] + (1 - p) * design.second.chances[i], 3);
    }
    return between / ((1 - cubes) / 12);
}

double TrueW(const Design& design) {
    const double p = static_cast<double>(design.n1) / (design.n1 + design.n2);
    double square = 0;
    for (std::size_t i = 0; i < design.first.chances.size(); ++i) {
        const double mixed = p * design.first.chances[i] + (1 - p) * design.second.chances[i];
        if (mixed == 0) continue;
        square += p * std::pow(design.first.chances[i] - mixed, 2) / mixed;
        square += (1 - p) * std::pow(design.second.chances[i] - mixed, 2) / mixed;
    }
    return std::sqrt(square);
}

double LargestDistance(const Design& design) {
    double largest = 0;
    double difference = 0;
    for (std::size_t i = 0; i < design.first.chances.size(); ++i) {
        difference += design.first.chances[i] - design.second.chances[i];
        largest = std::max(largest, std::fabs(difference));
    }
    return largest;
}

/// The effect of three groups, of the second distribution, of a mixture of both, and of the first.
Discrete Mixture(const Design& design) {
    Discrete mixture = design.first;
    for (std::size_t i = 0; i < mixture.chances.size(); ++i) {
        mixture.chances[i] = (design.first.chances[i] + design.second.chances[i]) / 2;
    }
    return mixture;
}

double TrendOf(const Design& design) {
    const Discrete middle = Mixture(design);
    const double n1 = design.n2;
    const double n2 = design.n1;
    const double n3 = design.n1;
    const double sum = n1 * n2 * Less(middle, design.second) + n1 * n3 * Less(design.first, design.second) +
                       n2 * n3 * Less(design.first, middle);
    return sum / (n1 * n2 + n1 * n3 + n2 * n3);
}

/// Statistics of two samples that the intervals of shares of squares take.
struct TwoSampleStatistics {
    double epsilonSquared = 0;
    double chiSquare = 0;
    int categories = 0;
    double distance = 0;
    TieBlocks blocks = {.groupCount = 2, .counts = {}};
};

TwoSampleStatistics StatisticsOf(const AscendingSample& first, const AscendingSample& second) {
    std::vector<double> values = first.values;
    values.insert(values.end(), second.values.begin(), second.values.end());
    std::ranges::sort(values);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    const double n1 = first.size;
    const double n2 = second.size;
    const double n = n1 + n2;
    TwoSampleStatistics result;
    double seen1 = 0;
    double seen2 = 0;
    double won = 0;
    double cubes = 0;
    for (const double value : values) {
        const auto c1 = static_cast<double>(std::ranges::count(first.values, value));
        const auto c2 = static_cast<double>(std::ranges::count(second.values, value));
        won += c1 * (seen2 + c2 / 2);
        result.blocks.counts.push_back(static_cast<std::int64_t>(c1));
        result.blocks.counts.push_back(static_cast<std::int64_t>(c2));
        seen1 += c1;
        seen2 += c2;
        cubes += std::pow(c1 + c2, 3);
        const double expected1 = (c1 + c2) * n1 / n;
        const double expected2 = (c1 + c2) * n2 / n;
        result.chiSquare +=
            (c1 - expected1) * (c1 - expected1) / expected1 + (c2 - expected2) * (c2 - expected2) / expected2;
        result.distance = std::max(result.distance, std::fabs(seen1 / n1 - seen2 / n2));
    }
    result.categories = static_cast<int>(values.size());
    const double centred = won - n1 * n2 / 2;
    const double h = centred * centred / (n1 * n2 / 12 * (n + 1)) / (1 - (cubes - n) / (n * n * n - n));
    result.epsilonSquared = values.size() < 2 ? 0 : h / (n - 1);
    return result;
}

/// Rankings of three objects in each row: of the second distribution, the mixture and the first.
constexpr std::size_t kObjects = 3;

std::array<double, kObjects> RanksOf(const std::array<double, kObjects>& row) {
    std::array<double, kObjects> ranks{};
    for (std::size_t i = 0; i < kObjects; ++i) {
        ranks[i] = 1;
        for (std::size_t j = 0; j < kObjects; ++j) {
            if (j != i) ranks[i] += (Sign(row[i] - row[j]) + 1) / 2;
        }
    }
    return ranks;
}

double SquaresOf(const std::array<double, kObjects>& ranks) {
    double squares = 0;
    for (const double rank : ranks) squares += (rank - 2) * (rank - 2);
    return squares;
}

double TrueConcordance(const Design& design) {
    const Discrete middle = Mixture(design);
    std::array<double, kObjects> means{};
    double squares = 0;
    double all = 0;
    for (std::size_t a = 0; a < middle.values.size(); ++a) {
        for (std::size_t b = 0; b < middle.values.size(); ++b) {
            for (std::size_t c = 0; c < middle.values.size(); ++c) {
                const double chance = design.second.chances[a] * middle.chances[b] * design.first.chances[c];
                if (chance == 0) continue;
                const auto ranks = RanksOf({middle.values[a], middle.values[b], middle.values[c]});
                for (std::size_t i = 0; i < kObjects; ++i) means[i] += chance * ranks[i];
                squares += chance * SquaresOf(ranks);
                all += chance;
            }
        }
    }
    for (double& mean : means) mean /= all;
    return SquaresOf(means) / (squares / all);
}

Estimate SimulatedConcordance(Drawing& low, Drawing& middle, Drawing& high, int rows, Generator& generator) {
    std::array<double, kObjects> means{};
    double squares = 0;
    ScoreRows scores{.columns = kObjects, .scores = {}};
    for (int row = 0; row < rows; ++row) {
        const double a = low(generator);
        const double b = middle(generator);
        const double c = high(generator);
        const auto ranks = RanksOf({a, b, c});
        for (std::size_t i = 0; i < kObjects; ++i) means[i] += ranks[i] / rows;
        squares += SquaresOf(ranks) / rows;
        for (const double rank : ranks) scores.scores.push_back(static_cast<std::int64_t>(2 * rank));
    }
    const double w = squares == 0 ? 0 : SquaresOf(means) / squares;
    return Widened(KendallsW(w * rows * (kObjects - 1), rows, kObjects, kLevel), JackknifeErrorOfKendallsW(scores),
                   kLevel);
}

/// What came of one interval in one design.
class Tally {
 public:
    Tally(std::string interval, double truth)
        : interval_(std::move(interval)), truth_(std::fabs(truth) < kSame ? 0 : truth) {}
    void Add(const Estimate& estimate) {
        if (std::isnan(estimate.lower)) return;
        ++intervals_;
        covered_ += estimate.lower <= truth_ + kSame && truth_ <= estimate.upper + kSame ? 1 : 0;
        width_ += estimate.upper - estimate.lower;
    }
    const std::string& Interval() const { return interval_; }
    void Print(const Design& design) const {
        std::printf("| %s | %s | %.3f | %.1f | %.3f |\n", interval_.c_str(), design.name.c_str(), truth_ + 0.0,
                    100.0 * covered_ / intervals_, width_ / intervals_);
    }

 private:
    std::string interval_;
    double truth_;
    int intervals_ = 0;
    int covered_ = 0;
    double width_ = 0;
};

std::vector<Tally> TalliesOf(const Design& design) {
    const Discrete differences = OfPairs(design.first, design.second, std::minus<>());
    const double won = Less(design.first, design.second);
    double positive = 0;
    double negative = 0;
    for (std::size_t i = 0; i < differences.values.size(); ++i) {
        if (differences.values[i] > 0) positive += differences.chances[i];
        if (differences.values[i] < 0) negative += differences.chances[i];
    }
    const Discrete means = OfPairs(design.first, design.first, [](double a, double b) { return (a + b) / 2; });
    const double firstTop = design.first.chances.back() + design.first.chances[design.first.chances.size() - 2];
    const double secondTop = design.second.chances.back() + design.second.chances[design.second.chances.size() - 2];
    std::vector<Tally> tallies;
    tallies.emplace_back("probability of superiority", (won + 1) / 2);
    tallies.emplace_back("ordered trend, 3 groups", TrendOf(design));
    tallies.emplace_back("matched rank-biserial", WalshSign(differences));
    tallies.emplace_back("matched sign-biserial", (positive - negative) / (positive + negative));
    tallies.emplace_back("shift of samples", MedianOf(differences));
    tallies.emplace_back("pseudo-median", MedianOf(means));
    tallies.emplace_back("median", MedianOf(design.first));
    tallies.emplace_back("epsilon squared", RankShare(design));
    tallies.emplace_back("Kendall's W, 3 objects", TrueConcordance(design));
    if (design.first.values.size() < 10) {
        tallies.emplace_back("Cohen's w", TrueW(design));
        tallies.emplace_back("difference of paired shares", firstTop - secondTop);
    }
    tallies.emplace_back("distance of distributions", LargestDistance(design));
    return tallies;
}

std::vector<double> Draw(Drawing& drawing, int count, Generator& generator) {
    std::vector<double> values;
    for (int i = 0; i < count; ++i) values.push_back(drawing(generator));
    return values;
}

PairedAnswers AnswersOf(const std::vector<double>& first, const std::vector<double>& second, double threshold) {
    PairedAnswers answers;
    for (std::size_t i = 0; i < first.size(); ++i) {
        const bool isFirst = first[i] >= threshold;
        const bool isSecond = second[i] >= threshold;
        (isFirst ? (isSecond ? answers.a : answers.b) : (isSecond ? answers.c : answers.d)) += 1;
    }
    return answers;
}

/// Differences of tenths rounded to one double again, so that equal ones are equal.
std::vector<double> DifferencesOf(const std::vector<double>& first, const std::vector<double>& second) {
    std::vector<double> differences;
    for (std::size_t i = 0; i < first.size(); ++i) differences.push_back(std::round((first[i] - second[i]) * 10) / 10);
    return differences;
}

/// The intervals of one design.
std::vector<Tally> Study(const Design& design) {
    Generator generator(20240501);
    Drawing drawFirst(design.first);
    Drawing drawSecond(design.second);
    Drawing drawMiddle(Mixture(design));
    const bool isCoarse = design.first.values.size() < 10;
    std::vector<Tally> tallies = TalliesOf(design);
    for (int i = 0; i < kRepetitions; ++i) {
        std::size_t next = 0;
        const auto add = [&](const Estimate& estimate) { tallies[next++].Add(estimate); };
        const AscendingSample first = SampleOf(Draw(drawFirst, design.n1, generator));
        const AscendingSample second = SampleOf(Draw(drawSecond, design.n2, generator));
        const AscendingSample middle = SampleOf(Draw(drawMiddle, design.n1, generator));
        const std::vector<double> pairFirst = Draw(drawFirst, design.n1, generator);
        const std::vector<double> pairSecond = Draw(drawSecond, design.n1, generator);
        const AscendingSample differences = SampleOf(DifferencesOf(pairFirst, pairSecond));
        add(ProbabilityOfSuperiority(first, second, kLevel).probability);
        add(OrderedTrend({second, middle, first}, kLevel));
        add(MatchedRankBiserial(differences, kLevel));
        const auto positive =
            static_cast<double>(std::ranges::count_if(differences.values, [](double d) { return d > 0; }));
        const auto negative =
            static_cast<double>(std::ranges::count_if(differences.values, [](double d) { return d < 0; }));
        add(MatchedSignBiserial(positive, negative, kLevel));
        add(ShiftOfSamples(first, second, kLevel));
        add(PseudoMedian(first, kLevel));
        add(MedianInterval(first, kLevel).median);
        const TwoSampleStatistics statistics = StatisticsOf(first, second);
        const double n = first.size + second.size;
        add(Widened(EpsilonSquared(statistics.epsilonSquared * (n - 1), n, 2, kLevel),
                    JackknifeErrorOfEpsilonSquared(statistics.blocks), kLevel));
        add(SimulatedConcordance(drawSecond, drawMiddle, drawFirst, design.n1, generator));
        if (isCoarse) {
            add(CohensW(statistics.chiSquare, n, statistics.categories - 1, kLevel, 1));
            const double threshold = design.first.values[design.first.values.size() - 2];
            add(PairedProportionDifference(AnswersOf(pairFirst, pairSecond, threshold), kLevel));
        }
        add(SmirnovDistance(statistics.distance, first.size, second.size, kLevel));
    }
    return tallies;
}

}  // namespace

int main() {
    const std::vector<Design> designs = Designs();
    std::vector<std::vector<Tally>> tallies;
    for (const Design& design : designs) tallies.push_back(Study(design));
    std::printf("| Interval | Design and effect | True value | Coverage in %% | Mean width |\n|---|---|---|---|---|\n");
    for (const Tally& interval : tallies.front()) {
        for (std::size_t i = 0; i < designs.size(); ++i) {
            for (const Tally& tally : tallies[i]) {
                if (tally.Interval() == interval.Interval()) tally.Print(designs[i]);
            }
        }
    }
}
