#include "host/beyond/Significances.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>

#include "host/beyond/BlockRows.h"
#include "host/beyond/Dichotomies.h"
#include "host/beyond/KolmogorovDistribution.h"
#include "host/beyond/exact/BinomialExact.h"
#include "host/beyond/exact/FriedmanExact.h"
#include "host/beyond/exact/JonckheereExact.h"
#include "host/beyond/exact/KruskalWallisExact.h"
#include "host/beyond/exact/MarginalHomogeneityExact.h"
#include "host/beyond/exact/MedianExact.h"
#include "host/beyond/exact/RankSumExact.h"
#include "host/beyond/exact/RunsExact.h"
#include "host/beyond/exact/SignedRankExact.h"
#include "host/beyond/exact/SmirnovExact.h"

namespace tarn {

namespace {

constexpr double kNever = std::numeric_limits<double>::infinity();
/// Steps of a walk over states take about ten times as long as additions.
constexpr double kAdditionsPerStep = 10;

/// A value that is made when it is asked for first.
template <typename Value>
class Lazy {
 public:
    explicit Lazy(std::function<Value()> make) : state_(std::make_shared<State>(State{std::move(make), {}})) {}
    const Value& Get() const {
        if (!state_->value) state_->value = state_->make();
        return *state_->value;
    }

 private:
    struct State {
        std::function<Value()> make;
        std::optional<Value> value;
    };
    std::shared_ptr<State> state_;
};

ExactTails OneTail(double p) {
    return {p, p, p};
}

std::optional<ExactTails> OneTail(const std::optional<double>& p) {
    return p ? std::optional(OneTail(*p)) : std::nullopt;
}

Alternative Turned(Alternative alternative) {
    if (alternative == Alternative::kTwoSided) return alternative;
    return alternative == Alternative::kLess ? Alternative::kGreater : Alternative::kLess;
}

/// A figure of the document; no number for none.
double FigureOf(const TestReading& reading, std::string_view key) {
    const auto found = std::ranges::find(reading.figures, key, &Figure::key);
    return found == reading.figures.end() ? std::nan("") : found->value.value;
}

// ---- Groups ----

Lazy<TieBlocks> BlocksOfView(const TestView& view, double shift = 0) {
    return Lazy<TieBlocks>([&view, shift] { return BlocksOf(ShiftedSamples(view, shift)); });
}

/// Blocks have a count for each group, so that many groups of many different values would take gigabytes.
bool AreBlocksTooLarge(const TestView& view) {
    constexpr double kMostCounts = 1e7;
    double values = 0;
    for (const AscendingSample& sample : view.samples) values += static_cast<double>(sample.values.size());
    return values * static_cast<double>(view.samples.size()) > kMostCounts && view.samples.size() > 2;
}

std::function<double()> CostOfBlocks(const TestView& view, const Choices& choices, const Lazy<TieBlocks>& blocks,
                                     double (*cost)(const TieBlocks&), double factor = 1) {
    const bool areTooMany = view.Size() > choices.mostCases || AreBlocksTooLarge(view);
    return [=] { return areTooMany ? kNever : factor * cost(blocks.Get()); };
}

SignificanceWays OfRankSum(const TestView& view, const Choices& choices) {
    const Lazy<TieBlocks> blocks = BlocksOfView(view, choices.shift);
    SignificanceWays ways;
    ways.cost = CostOfBlocks(view, choices, blocks, RankSumExactCost);
    ways.exact = [=] { return std::optional(RankSumExact(blocks.Get())); };
    ways.monteCarlo = [=](const MonteCarloPlan& plan, const WorkShare& work) {
        return RankSumMonteCarlo(blocks.Get(), plan, work);
    };
    ways.asymptotic = [&view, choices] {
        const std::vector<AscendingSample> samples = ShiftedSamples(view, choices.shift);
        return RankSumTest(samples[0], samples[1], choices.alternative, choices.continuity);
    };
    ways.hasAlternative = true;
    ways.hasShift = true;
    return ways;
}

/// A distribution function that lies above belongs to the smaller values.
SignificanceWays OfDistance(const TestView& view, const Choices& choices) {
    const Lazy<TieBlocks> blocks = BlocksOfView(view);
    SignificanceWays ways;
    ways.cost = CostOfBlocks(view, choices, blocks, SmirnovExactCost);
    ways.exact = [=] {
        const SmirnovTails tails =
            choices.ignoresTies ? SmirnovExactIgnoringTies(blocks.Get()) : SmirnovExact(blocks.Get());
        return std::optional(ExactTails{tails.greater, tails.less, tails.twoSided});
    };
    ways.monteCarlo = [=](const MonteCarloPlan& plan, const WorkShare& work) -> std::optional<MonteCarloTails> {
        const std::optional<MonteCarloSmirnov> found = SmirnovMonteCarlo(blocks.Get(), plan, work);
        if (!found) return std::nullopt;
        return MonteCarloTails{found->positive, found->negative, found->either, found->draws};
    };
    ways.asymptotic = [&view, choices] {
        return KolmogorovTest(view.samples[0], view.samples[1], Turned(choices.alternative), choices.kolmogorov);
    };
    ways.asymptoticBy = choices.kolmogorov == KolmogorovForm::kLimit ? "byLimit" : "byCorrectedLimit";
    if (choices.ignoresTies) ways.exactBy = "ignoringTies";
    ways.hasAlternative = true;
    return ways;
}

SignificanceWays OfSeveralGroups(const TestView& view, const Choices& choices) {
    const Lazy<TieBlocks> blocks = BlocksOfView(view);
    SignificanceWays ways;
    const bool areTooLarge = AreBlocksTooLarge(view);
    ways.cost = CostOfBlocks(view, choices, blocks, KruskalWallisExactSteps, kAdditionsPerStep);
    ways.exact = [=] { return OneTail(KruskalWallisExact(blocks.Get())); };
    ways.monteCarlo = [=](const MonteCarloPlan& plan, const WorkShare& work) {
        return areTooLarge ? std::nullopt : KruskalWallisMonteCarlo(blocks.Get(), plan, work);
    };
    return ways;
}

SignificanceWays OfTrend(const TestView& view, const Choices& choices) {
    const Lazy<TieBlocks> blocks = BlocksOfView(view);
    SignificanceWays ways;
    const bool areTooLarge = AreBlocksTooLarge(view);
    ways.cost = CostOfBlocks(view, choices, blocks, JonckheereExactCost);
    ways.exact = [=] { return std::optional(JonckheereExact(blocks.Get())); };
    ways.monteCarlo = [=](const MonteCarloPlan& plan, const WorkShare& work) {
        return areTooLarge ? std::nullopt : JonckheereMonteCarlo(blocks.Get(), plan, work);
    };
    ways.asymptotic = [=] { return JonckheereTest(blocks.Get(), choices.alternative); };
    ways.hasAlternative = true;
    ways.greater = "rising";
    ways.less = "falling";
    return ways;
}

/// How many cases of each group lie above the median that the test used, and how many don't.
struct MedianSplit {
    std::vector<std::int64_t> above;
    std::vector<std::int64_t> notAbove;
};

MedianSplit SplitAtMedian(const TestView& view) {
    const double median = FigureOf(*view.reading, "Median");
    MedianSplit split;
    for (const AscendingSample& sample : view.samples) {
        const auto first =
            static_cast<std::size_t>(std::ranges::upper_bound(sample.values, median) - sample.values.begin());
        double above = 0;
        for (std::size_t i = first; i < sample.values.size(); ++i) above += sample.WeightAt(i);
        split.above.push_back(static_cast<std::int64_t>(above));
        split.notAbove.push_back(static_cast<std::int64_t>(sample.size - above));
    }
    return split;
}

/// How many different values lie at the median or below.
std::size_t BlocksBelowMedian(const TestView& view) {
    const double median = FigureOf(*view.reading, "Median");
    std::vector<double> below;
    for (const AscendingSample& sample : view.samples) {
        const auto end = std::ranges::upper_bound(sample.values, median);
        below.insert(below.end(), sample.values.begin(), end);
    }
    std::ranges::sort(below);
    return static_cast<std::size_t>(std::unique(below.begin(), below.end()) - below.begin());
}

SignificanceWays OfMedian(const TestView& view, const Choices& choices) {
    if (std::isnan(FigureOf(*view.reading, "Median"))) return {};
    const Lazy<MedianSplit> split([&view] { return SplitAtMedian(view); });
    const Lazy<TieBlocks> blocks = BlocksOfView(view);
    SignificanceWays ways;
    const bool areTooLarge = AreBlocksTooLarge(view);
    ways.exactBy = "givenMargins";
    ways.cost = [=] { return MedianExactCost(split.Get().above, split.Get().notAbove); };
    ways.exact = [=]() -> std::optional<ExactTails> {
        const MedianSplit& counts = split.Get();
        if (counts.above.size() != 2) return OneTail(MedianExact(counts.above, counts.notAbove));
        return FisherExact({counts.above[0], counts.notAbove[0], counts.above[1], counts.notAbove[1]});
    };
    ways.monteCarlo = [=, &view](const MonteCarloPlan& plan, const WorkShare& work) {
        return areTooLarge ? std::nullopt : MedianMonteCarlo(blocks.Get(), BlocksBelowMedian(view), plan, work);
    };
    if (view.samples.size() != 2) return ways;
    ways.asymptotic = [=] {
        const MedianSplit& counts = split.Get();
        const auto ofGroup = [&](std::size_t group) {
            return MedianCounts{static_cast<double>(counts.above[group]), static_cast<double>(counts.notAbove[group])};
        };
        return MedianTest(ofGroup(0), ofGroup(1), choices.alternative, choices.continuity);
    };
    ways.hasAlternative = true;
    return ways;
}

// ---- Pairs and one sample ----

SignificanceWays OfSignedRanks(const TestView& view, const Choices& choices) {
    if (!view.differences) return {};
    const Lazy<AscendingSample> differences([&view, choices] { return ShiftedDifferences(view, choices.shift); });
    const Lazy<SignedRankScores> scores([=] { return MakeSignedRankScores(differences.Get(), choices.zeros); });
    SignificanceWays ways;
    ways.exactBy = "bySigns";
    const bool areTooMany = view.Size() > choices.mostCases;
    ways.cost = [=] { return areTooMany ? kNever : SignedRankExactCost(scores.Get()); };
    ways.exact = [=] { return std::optional(SignedRankExact(scores.Get())); };
    ways.monteCarlo = [=](const MonteCarloPlan& plan, const WorkShare& work) {
        std::vector<CountedRank> ranks;
        for (std::size_t i = 0; i < scores.Get().counts.size(); ++i) {
            ranks.push_back({scores.Get().doubledRanks[i], scores.Get().counts[i]});
        }
        return SignedRankMonteCarlo(ranks, scores.Get().doubledPositiveSum - scores.Get().doubledFixedSum, plan, work);
    };
    ways.asymptotic = [=] {
        return SignedRankTest(differences.Get(), choices.alternative, choices.continuity, choices.zeros);
    };
    ways.hasAlternative = true;
    ways.hasZeros = true;
    ways.hasShift = true;
    return ways;
}

SignificanceWays OfSigns(const TestView& view, const Choices& choices) {
    if (!view.differences) return {};
    const Lazy<SignCounts> counts([&view, choices] {
        if (choices.shift == 0) return view.signs;
        const AscendingSample differences = ShiftedDifferences(view, choices.shift);
        return CountSigns(differences.values, differences.weights);
    });
    SignificanceWays ways;
    ways.exactBy = "byBinomial";
    ways.cost = [] { return BinomialExactCost(); };
    ways.exact = [=] {
        return std::optional(SignExact(static_cast<std::int64_t>(counts.Get().positive),
                                       static_cast<std::int64_t>(counts.Get().negative)));
    };
    ways.asymptotic = [=] {
        return SignTest(counts.Get().positive, counts.Get().negative, choices.alternative, choices.continuity);
    };
    ways.hasAlternative = true;
    ways.hasShift = true;
    return ways;
}

/// Of one sample against a continuous distribution. Larger values have the lower distribution function. The document's
/// own significance allows for parameters from the sample where it can, and these don't.
SignificanceWays OfOneSampleDistance(const TestView& view, const Choices& choices) {
    if (!choices.takesParametersAsGiven) return {};
    const double size = view.Size();
    const double below = std::max(0.0, -FigureOf(*view.reading, "Negative"));
    const double above = std::max(0.0, FigureOf(*view.reading, "Positive"));
    const double either = std::fabs(FigureOf(*view.reading, "Absolute"));
    if (std::isnan(either)) return {};
    SignificanceWays ways;
    ways.cost = [] { return 1e6; };
    ways.exact = [=] {
        return std::optional(ExactTails{KolmogorovOneSidedUpperTail(size, above),
                                        KolmogorovOneSidedUpperTail(size, below), KolmogorovUpperTail(size, either)});
    };
    ways.asymptotic = [=] {
        const bool isEither = choices.alternative == Alternative::kTwoSided;
        ChosenTest test;
        test.statistic = isEither ? either : choices.alternative == Alternative::kLess ? above : below;
        test.z = std::sqrt(size) * test.statistic;
        test.p = isEither ? KolmogorovLimitUpperTail(test.z) : std::exp(-2 * test.z * test.z);
        test.hasContinuity = false;
        return test;
    };
    ways.exactBy = "byKolmogorov";
    ways.asymptoticBy = "byKolmogorovLimit";
    ways.hasAlternative = true;
    ways.greater = "aboveDistribution";
    ways.less = "belowDistribution";
    return ways;
}

SignificanceWays OfChanges(const TestView& view, const Choices& choices) {
    const std::optional<PairedAnswers> answers = AnswersOf(view.reading->counts);
    if (!answers) return {};
    SignificanceWays ways;
    ways.exactBy = "byBinomial";
    ways.cost = [] { return BinomialExactCost(); };
    ways.exact = [=] {
        return std::optional(
            McNemarExact(static_cast<std::int64_t>(answers->b), static_cast<std::int64_t>(answers->c)));
    };
    ways.asymptotic = [=] {
        if (choices.alternative == Alternative::kTwoSided) {
            return McNemarTest(answers->b, answers->c, choices.continuity);
        }
        return SignTest(answers->b, answers->c, choices.alternative, choices.continuity);
    };
    ways.hasAlternative = true;
    ways.greater = "moreOften";
    ways.less = "lessOften";
    return ways;
}

SignificanceWays OfProportion(const TestView& view, const Choices& choices) {
    const StatisticSet* const set = view.reading->Leading();
    if (set == nullptr) return {};
    const double count = set->statistic.value;
    const double size = view.reading->n.value;
    SignificanceWays ways;
    ways.exactBy = "byBinomial";
    ways.cost = [] { return BinomialExactCost(); };
    ways.exact = [=] {
        return std::optional(
            BinomialExact(static_cast<std::int64_t>(count), static_cast<std::int64_t>(size), choices.probability));
    };
    ways.asymptotic = [=] {
        return ProportionTest(count, size, choices.probability, choices.alternative, choices.continuity);
    };
    ways.hasAlternative = true;
    ways.greater = "moreThan";
    ways.less = "fewerThan";
    return ways;
}

/// The sizes of the two classes of a runs test, which its expected number of runs holds: 1 + 2 n1 n2 / n.
struct ClassSizes {
    std::int64_t first = 0;
    std::int64_t second = 0;
};

std::optional<ClassSizes> SizesOfClasses(const TestReading& reading) {
    const auto mean = std::ranges::find(reading.figures, "Mean", &Figure::key);
    if (mean == reading.figures.end()) return std::nullopt;
    const double n = reading.n.value;
    const double product = (mean->value.value - 1) * n / 2;
    const double root = std::sqrt(std::max(0.0, n * n - 4 * product));
    const double larger = std::round((n + root) / 2);
    if (!(larger <= n)) return std::nullopt;
    return ClassSizes{static_cast<std::int64_t>(larger), static_cast<std::int64_t>(n - larger)};
}

SignificanceWays OfRuns(const TestView& view, const Choices& choices) {
    const StatisticSet* const set = view.reading->Leading();
    const std::optional<ClassSizes> sizes = SizesOfClasses(*view.reading);
    if (set == nullptr || !sizes) return {};
    const auto runs = static_cast<std::int64_t>(set->statistic.value);
    SignificanceWays ways;
    ways.exactBy = "byOrders";
    ways.cost = [=] { return RunsExactCost(sizes->first, sizes->second); };
    ways.exact = [=] { return std::optional(RunsExact(runs, sizes->first, sizes->second)); };
    ways.monteCarlo = [=](const MonteCarloPlan& plan, const WorkShare& work) {
        return RunsMonteCarlo(sizes->first, sizes->second, runs, plan, work);
    };
    ways.asymptotic = [=] {
        return RunsTest(static_cast<double>(runs), static_cast<double>(sizes->first),
                        static_cast<double>(sizes->second), choices.alternative, choices.continuity);
    };
    ways.hasAlternative = true;
    ways.greater = "moreRuns";
    ways.less = "fewerRuns";
    return ways;
}

// ---- Several fields ----

template <typename Exact, typename Steps>
SignificanceWays OfRows(const TestView& view, const Lazy<ScoreRows>& rows, Exact exact, Steps steps) {
    constexpr double kMostRows = 1e5;
    SignificanceWays ways;
    ways.exactBy = "byRows";
    ways.cost = [=, &view] { return view.cases.size > kMostRows ? kNever : kAdditionsPerStep * steps(rows.Get()); };
    ways.exact = [=] { return OneTail(exact(rows.Get())); };
    ways.monteCarlo = [=, &view](const MonteCarloPlan& plan, const WorkShare& work) -> std::optional<MonteCarloTails> {
        if (view.cases.size > static_cast<double>(kMostMonteCarloCases)) return std::nullopt;
        return RowsMonteCarlo(rows.Get(), plan, work);
    };
    return ways;
}

SignificanceWays OfRankedRows(const TestView& view, const Choices&) {
    const Lazy<ScoreRows> rows([&view] { return RankedRowsOf(view.cases); });
    return OfRows(view, rows, FriedmanExact, FriedmanExactSteps);
}

struct SuccessSums {
    std::vector<std::int64_t> ofRows;
    std::vector<std::int64_t> ofColumns;
};

SuccessSums SumsOf(const ScoreRows& rows) {
    SuccessSums sums;
    sums.ofColumns.assign(rows.columns, 0);
    for (std::size_t row = 0; row < rows.RowCount(); ++row) {
        sums.ofRows.push_back(0);
        for (std::size_t column = 0; column < rows.columns; ++column) {
            sums.ofRows.back() += rows.At(row, column);
            sums.ofColumns[column] += rows.At(row, column);
        }
    }
    return sums;
}

/// The scores of the categories of both fields, which the test of marginal homogeneity requires to be the same; empty
/// where the reading doesn't hold them.
std::vector<double> ScoresOf(const TestReading& reading) {
    std::vector<double> scores;
    for (const std::string& title : reading.counts.rowTitles) {
        double score = std::nan("");
        for (const Scale& scale : reading.scales) {
            const auto place = std::ranges::find(scale.categories, title) - scale.categories.begin();
            const auto position = static_cast<std::size_t>(place);
            if (position < scale.scores.size()) score = Number(scale.scores[position]).value;
        }
        if (reading.scales.empty()) score = Number(title).value;
        if (std::isnan(score)) return {};
        scores.push_back(score);
    }
    return scores;
}

struct ScoreDifferences {
    std::vector<CountedDifference> counted;
    double sum = 0;
};

ScoreDifferences DifferencesOfScores(const CountTable& counts, const std::vector<double>& scores) {
    ScoreDifferences differences;
    for (std::size_t row = 0; row < scores.size(); ++row) {
        std::size_t next = 0;
        ForEachInList(counts.lines[row], [&](std::string_view cell) {
            const std::size_t column = next++;
            if (cell == "0" || column >= scores.size()) return;  // nearly all cells, where there are many
            const double difference = scores[row] - scores[column];
            const double count = Number(std::string(cell)).value;
            if (difference == 0 || !(count > 0)) return;
            differences.counted.push_back({std::fabs(difference), static_cast<std::int64_t>(count)});
            differences.sum += difference * count;
        });
    }
    return differences;
}

SignificanceWays OfDichotomies(const TestView& view, const Choices& choices) {
    const std::vector<std::vector<double>> successes = SuccessesOf(view, choices.success);
    if (successes.empty()) return {};
    const Lazy<ScoreRows> rows([&view, successes] { return SuccessRowsOf(successes, view.cases); });
    const Lazy<SuccessSums> sums([rows] { return SumsOf(rows.Get()); });
    SignificanceWays ways = OfRows(
        view, rows, [=](const ScoreRows&) { return CochranExact(sums.Get().ofRows, sums.Get().ofColumns); },
        [=](const ScoreRows&) { return CochranExactSteps(sums.Get().ofRows, sums.Get().ofColumns); });
    return ways;
}

/// A pair of scores that differ adds its difference with its sign; the first field less the second.
SignificanceWays OfScores(const TestView& view, const Choices&) {
    const CountTable& counts = view.reading->counts;
    const std::vector<double> scores = ScoresOf(*view.reading);
    if (scores.empty() || counts.RowCount() != scores.size()) return {};
    // Made at once: what is kept until then would be the whole table.
    const Lazy<ScoreDifferences> differences([made = DifferencesOfScores(counts, scores)] { return made; });
    SignificanceWays ways;
    ways.exactBy = "bySigns";
    ways.cost = [=] {
        return kAdditionsPerStep * MarginalHomogeneityExactSteps(differences.Get().counted, differences.Get().sum);
    };
    ways.exact = [=] { return MarginalHomogeneityExact(differences.Get().counted, differences.Get().sum); };
    ways.hasAlternative = true;
    return ways;
}

struct SignificanceRow {
    const TestFacts* test;
    SignificanceWays (*make)(const TestView&, const Choices&);
    bool ofTwoGroups = false;
};
constexpr std::array kSignificances{
    SignificanceRow{&Tests::kMannWhitney, OfRankSum, true},
    SignificanceRow{&Tests::kKolmogorovSmirnovTwoSample, OfDistance, true},
    SignificanceRow{&Tests::kKolmogorovSmirnov, OfOneSampleDistance},
    SignificanceRow{&Tests::kKruskalWallis, OfSeveralGroups},
    SignificanceRow{&Tests::kJonckheereTerpstra, OfTrend},
    SignificanceRow{&Tests::kMedian, OfMedian},
    SignificanceRow{&Tests::kWilcoxonOneSample, OfSignedRanks},
    SignificanceRow{&Tests::kWilcoxonPairs, OfSignedRanks},
    SignificanceRow{&Tests::kSign, OfSigns},
    SignificanceRow{&Tests::kMcNemar, OfChanges},
    SignificanceRow{&Tests::kBinomial, OfProportion},
    SignificanceRow{&Tests::kRuns, OfRuns},
    SignificanceRow{&Tests::kFriedman, OfRankedRows},
    SignificanceRow{&Tests::kKendall, OfRankedRows},
    SignificanceRow{&Tests::kCochran, OfDichotomies},
    SignificanceRow{&Tests::kMarginalHomogeneity, OfScores},
};

}  // namespace

std::vector<AscendingSample> ShiftedSamples(const TestView& view, double shift) {
    std::vector<AscendingSample> samples = view.samples;
    if (shift == 0) return samples;
    for (double& value : samples[0].values) value -= shift;
    TieTogether(samples);
    return samples;
}

AscendingSample ShiftedDifferences(const TestView& view, double shift) {
    if (shift == 0 || view.Is(Tests::kWilcoxonOneSample)) return *view.differences;
    std::vector<double> values = view.differences->values;
    for (double& value : values) value -= shift;
    return DifferencesOf(std::move(values), view.differences->weights);
}

bool CorrectsByItself(const TestView& view) {
    constexpr double kFirstRunsWithout = 50;
    if (view.Is(Tests::kRuns)) return view.reading->n.value < kFirstRunsWithout;
    return view.Is(Tests::kBinomial) || view.Is(Tests::kSign) || view.Is(Tests::kMcNemar);
}

SignificanceWays WaysOf(const TestView& view, const Choices& choices) {
    const auto row = std::ranges::find(kSignificances, view.facts, &SignificanceRow::test);
    if (row == kSignificances.end() || (row->ofTwoGroups && !view.HasTwoGroups()) || view.samples.empty()) return {};
    return row->make(view, choices);
}

double TailOf(const ExactTails& tails, Alternative alternative) {
    if (alternative == Alternative::kTwoSided) return tails.twoSided;
    return alternative == Alternative::kLess ? tails.less : tails.greater;
}

const Estimate& TailOf(const MonteCarloTails& tails, Alternative alternative) {
    if (alternative == Alternative::kTwoSided) return tails.twoSided;
    return alternative == Alternative::kLess ? tails.less : tails.greater;
}

}  // namespace tarn
