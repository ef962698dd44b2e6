#include "host/beyond/Effects.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/beyond/Association.h"
#include "host/beyond/BlockRows.h"
#include "host/beyond/Dichotomies.h"
#include "host/beyond/HodgesLehmann.h"
#include "host/beyond/Jackknife.h"
#include "host/beyond/MatchedEffects.h"
#include "host/beyond/MedianInterval.h"
#include "host/beyond/NamePlaces.h"
#include "host/beyond/OrderedTrend.h"
#include "host/beyond/Proportions.h"
#include "host/beyond/SmirnovDistance.h"
#include "host/beyond/StopQuestion.h"
#include "host/beyond/Superiority.h"
#include "host/beyond/exact/RankSumExact.h"
#include "host/beyond/exact/SignedRankExact.h"
#include "host/report/SupplementText.h"

namespace tarn {

namespace {

Number NumberOf(double value) {
    return std::isnan(value) ? Number() : Number(ExactText(value));
}

/// The effects of one test, in the making.
class Effects {
 public:
    explicit Effects(const EffectSource& source) : source_(source), view_(source.view) {}

    const TestView& View() const { return view_; }
    std::string Text(const char* label, const std::vector<std::string>& parts) const {
        return FillIn(source_.texts.Label(label), {&parts});
    }
    const TestReading& Reading() const { return *view_.reading; }
    double Level() const { return view_.confidence; }
    const std::vector<std::string>& Success() const { return source_.success; }
    bool MayTake(double nanoseconds) const { return nanoseconds <= source_.longest; }

    /// `samples` fill the places of the label.
    void Add(const char* key, const Estimate& estimate, const std::vector<std::string>& samples = {}) {
        if (std::isnan(estimate.value)) return;
        EffectSize effect;
        effect.key = key;
        const std::string* const label = source_.texts.Effect(key);
        effect.label = label == nullptr ? key : FillIn(*label, {&samples});
        effect.value = NumberOf(estimate.value);
        if (!std::isnan(estimate.lower) && !std::isnan(estimate.upper)) {
            effect.lower = NumberOf(estimate.lower);
            effect.upper = NumberOf(estimate.upper);
            const std::string* const method = source_.texts.IntervalOf(key);
            effect.method = method == nullptr ? "" : *method;
        }
        effects_.push_back(std::move(effect));
    }
    void AddOfPair(const char* key, const Estimate& estimate, const std::string& first, const std::string& second) {
        const std::size_t before = effects_.size();
        Add(key, estimate, {first, second});
        if (effects_.size() == before) return;
        effects_.back().first = first;
        effects_.back().second = second;
    }
    std::vector<EffectSize> Take() { return std::move(effects_); }

 private:
    const EffectSource& source_;
    const TestView& view_;
    std::vector<EffectSize> effects_;
};

double StatisticOf(const TestReading& reading) {
    const StatisticSet* const set = reading.Leading();
    return set == nullptr ? std::nan("") : set->statistic.value;
}

/// "after minus before", or what else signed numbers of the test count.
std::string DirectionText(const Effects& effects) {
    return effects.Reading().direction.Text();
}

/// A share of squares of so many cases or fewer is found without each of them in turn. With more the limits are so near
/// that its standard error no longer matters.
constexpr double kMostLeftOut = 1e4;
constexpr double kNanosecondsLeftOut = 5;

// ---- Small samples ----

/// Limits that rest on a variance shut out the value of no effect too often in small samples: where 5 differences have
/// one sign, once in 8 times though nothing is there. They reach to it unless the exact test speaks against it.
Estimate ReachingTo(double noEffect, Estimate estimate, double exactP, double level) {
    if (exactP < 1 - level) return estimate;
    estimate.lower = std::min(estimate.lower, noEffect);
    estimate.upper = std::max(estimate.upper, noEffect);
    return estimate;
}

constexpr double kFewCases = 50;
/// Additions that the exact significances behind the limits of all pairs may take.
constexpr double kMostForLimits = 1e7;

Superiority SuperiorityOf(const Effects& effects, std::size_t first, std::size_t second, std::size_t pairs) {
    constexpr double kAsOften = 0.5;
    const AscendingSample& one = effects.View().samples[first];
    const AscendingSample& other = effects.View().samples[second];
    Superiority found = ProbabilityOfSuperiority(one, other, effects.Level());
    if (one.size + other.size > kFewCases) return found;
    const TieBlocks blocks = BlocksOf({one, other});
    if (RankSumExactCost(blocks) * static_cast<double>(pairs) > kMostForLimits) return found;
    const double p = RankSumExact(blocks).twoSided;
    found.probability = ReachingTo(kAsOften, found.probability, p, effects.Level());
    found.rankBiserial = ReachingTo(0, found.rankBiserial, p, effects.Level());
    return found;
}

Estimate MatchedRankBiserialOf(const AscendingSample& differences, double level) {
    const Estimate found = MatchedRankBiserial(differences, level);
    if (differences.size > kFewCases || std::isnan(found.value)) return found;
    return ReachingTo(0, found, SignedRankExact(MakeSignedRankScores(differences, ZeroMethod::kDrop)).twoSided, level);
}

// ---- Groups ----

void AddSuperiorityOfPairs(Effects& effects) {
    const TestView& view = effects.View();
    const NamePlaces places(view.names);
    for (const PairComparison& pair : effects.Reading().pairs) {
        AskNowAndThen();
        const std::size_t first = places.Of(pair.first);
        const std::size_t second = places.Of(pair.second);
        if (std::max(first, second) >= view.samples.size()) continue;
        const Superiority found = SuperiorityOf(effects, first, second, effects.Reading().pairs.size());
        effects.AddOfPair("probability-of-superiority", found.probability, pair.first, pair.second);
    }
}

void AddOfTwoGroups(Effects& effects) {
    const TestView& view = effects.View();
    if (!view.HasTwoGroups()) return;
    const Superiority found = SuperiorityOf(effects, 0, 1, 1);
    effects.Add("probability-of-superiority", found.probability, view.names);
    effects.Add("rank-biserial", found.rankBiserial, view.names);
    const double values = static_cast<double>(view.samples[0].values.size());
    if (effects.MayTake(ShiftCost(values, static_cast<double>(view.samples[1].values.size())))) {
        effects.Add("hodges-lehmann-shift", ShiftOfSamples(view.samples[0], view.samples[1], effects.Level()),
                    view.names);
    }
}

void AddDistance(Effects& effects) {
    const TestReading& reading = effects.Reading();
    const auto found = std::ranges::find(reading.figures, "Absolute", &Figure::key);
    if (found == reading.figures.end()) return;
    const TestView& view = effects.View();
    const double difference = std::fabs(found->value.value);
    if (view.HasTwoGroups()) {
        effects.Add("smirnov-distance",
                    SmirnovDistance(difference, view.samples[0].size, view.samples[1].size, effects.Level()));
    } else if (view.groupColumn == nullptr) {
        // The distribution has its parameters from the sample, for which no interval is known that holds.
        Estimate alone;
        alone.value = difference;
        effects.Add("smirnov-distance", alone);
    }
}

void AddOfSeveralGroups(Effects& effects) {
    const TestView& view = effects.View();
    const auto groups = static_cast<double>(view.samples.size());
    Estimate share = EpsilonSquared(StatisticOf(effects.Reading()), view.Size(), groups, effects.Level());
    if (view.Size() <= kMostLeftOut && effects.MayTake(view.Size() * groups * groups * kNanosecondsLeftOut)) {
        share = Widened(share, JackknifeErrorOfEpsilonSquared(BlocksOf(view.samples)), effects.Level());
    }
    effects.Add("epsilon-squared", share);
    AddSuperiorityOfPairs(effects);
}

void AddTrend(Effects& effects) {
    effects.Add("standardized-j", OrderedTrend(effects.View().samples, effects.Level()));
    AddSuperiorityOfPairs(effects);
}

// ---- Related samples ----

void AddOfSigns(Effects& effects) {
    if (!effects.View().differences) return;
    const AscendingSample& differences = *effects.View().differences;
    const SignCounts& signs = effects.View().signs;
    const std::vector<std::string> direction{DirectionText(effects)};
    effects.Add("sign-biserial", MatchedSignBiserial(signs.positive, signs.negative, effects.Level()), direction);
    effects.Add("median", MedianInterval(differences, effects.Level()).median, direction);
}

void AddOfSignedRanks(Effects& effects) {
    const TestView& view = effects.View();
    if (!view.differences) return;
    effects.Add("matched-rank-biserial", MatchedRankBiserialOf(*view.differences, effects.Level()),
                {DirectionText(effects)});
    const bool isOfField = view.Is(Tests::kWilcoxonOneSample);
    const AscendingSample& sample = isOfField ? view.samples[0] : *view.differences;
    if (!effects.MayTake(PseudoMedianCost(static_cast<double>(sample.values.size())))) return;
    effects.Add("pseudomedian", PseudoMedian(sample, effects.Level()),
                {isOfField ? view.names[0] : DirectionText(effects)});
}

void AddOfRankedRows(Effects& effects) {
    const CompleteCases& cases = effects.View().cases;
    const auto columns = static_cast<double>(cases.columns.size());
    Estimate share = KendallsW(StatisticOf(effects.Reading()), cases.size, columns, effects.Level());
    if (cases.size <= kMostLeftOut && effects.MayTake(cases.size * columns * columns * kNanosecondsLeftOut)) {
        share = Widened(share, JackknifeErrorOfKendallsW(RankedRowsOf(cases)), effects.Level());
    }
    effects.Add("kendalls-w", share);
}

void AddOfChanges(Effects& effects) {
    const std::optional<PairedAnswers> answers = AnswersOf(effects.Reading().counts);
    if (!answers) return;
    const std::vector<std::string>& names = effects.View().names;
    effects.Add("difference-of-proportions", PairedProportionDifference(*answers, effects.Level()), names);
    effects.Add("odds-ratio", OddsRatioOfPairs(answers->b, answers->c, effects.Level()), names);
    effects.Add("cohens-g", CohensG(answers->b, answers->c, effects.Level()), names);
}

void AddProportionsOfPairs(Effects& effects) {
    const TestView& view = effects.View();
    const std::vector<std::vector<double>> successes = SuccessesOf(view, effects.Success());
    if (successes.empty()) return;
    const NamePlaces places(view.names);
    for (const PairComparison& pair : effects.Reading().pairs) {
        AskNowAndThen();
        const std::size_t first = places.Of(pair.first);
        const std::size_t second = places.Of(pair.second);
        if (std::max(first, second) >= successes.size()) continue;
        PairedAnswers answers = AnswersOf(successes[first], successes[second], view.cases);
        Estimate difference = PairedProportionDifference(answers, effects.Level());
        // Which of two classes counts as the success, the document alone knows.
        if (difference.value * pair.statistic.value < 0) {
            answers = {answers.d, answers.c, answers.b, answers.a};
            difference = PairedProportionDifference(answers, effects.Level());
        }
        effects.AddOfPair("difference-of-proportions", difference, pair.first, pair.second);
    }
}

// ---- One sample ----

/// Against expected shares that are small enough w has no largest value.
constexpr double kNoBound = std::numeric_limits<double>::infinity();

void AddOfClasses(Effects& effects) {
    const TestReading& reading = effects.Reading();
    if (reading.Leading() == nullptr) return;
    const double degrees = reading.Leading()->df.value;
    effects.Add("cohens-w", CohensW(StatisticOf(reading), reading.n.value, degrees, effects.Level(), kNoBound));
}

/// "age up to 40", or the categories of the class.
std::string FirstClassText(const Effects& effects) {
    const FirstClass first = FirstClassOf(effects.View());
    if (!first.cut) return JoinList(first.categories);
    return effects.Text("upTo", {effects.Reading().fields.front(), FewDigits(NumberOf(*first.cut))});
}

void AddProportion(Effects& effects) {
    const TestReading& reading = effects.Reading();
    const double n = effects.View().cases.size;
    const bool isTest = !reading.statistics.empty();
    if (!isTest && reading.intervals.empty()) return;
    const double count =
        isTest ? reading.statistics.front().statistic.value : std::round(reading.intervals.front().estimate.value * n);
    effects.Add("proportion", WilsonInterval(count, n, effects.Level()), {FirstClassText(effects)});
}

struct EffectRow {
    const TestFacts* test;
    void (*add)(Effects&);
};
constexpr std::array kEffects{
    EffectRow{&Tests::kMannWhitney, AddOfTwoGroups},
    EffectRow{&Tests::kKolmogorovSmirnovTwoSample, AddDistance},
    EffectRow{&Tests::kKruskalWallis, AddOfSeveralGroups},
    EffectRow{&Tests::kJonckheereTerpstra, AddTrend},
    EffectRow{&Tests::kMedian, AddSuperiorityOfPairs},
    EffectRow{&Tests::kSign, AddOfSigns},
    EffectRow{&Tests::kWilcoxonPairs, AddOfSignedRanks},
    EffectRow{&Tests::kFriedman, AddOfRankedRows},
    EffectRow{&Tests::kKendall, AddOfRankedRows},
    EffectRow{&Tests::kMcNemar, AddOfChanges},
    EffectRow{&Tests::kCochran, AddProportionsOfPairs},
    EffectRow{&Tests::kWilcoxonOneSample, AddOfSignedRanks},
    EffectRow{&Tests::kChiSquare, AddOfClasses},
    EffectRow{&Tests::kBinomial, AddProportion},
    EffectRow{&Tests::kProportionIntervals, AddProportion},
    EffectRow{&Tests::kKolmogorovSmirnov, AddDistance},
};

}  // namespace

std::vector<EffectSize> EffectsOf(const EffectSource& source) {
    Effects effects(source);
    for (const auto& [test, add] : kEffects) {
        if (source.view.Is(*test)) add(effects);
    }
    return effects.Take();
}

bool LeavesOutAnEstimate(const EffectSource& source) {
    const TestView& view = source.view;
    const auto valuesOf = [](const AscendingSample& sample) { return static_cast<double>(sample.values.size()); };
    if (view.Is(Tests::kMannWhitney) && view.HasTwoGroups()) {
        return ShiftCost(valuesOf(view.samples[0]), valuesOf(view.samples[1])) > source.longest;
    }
    const bool isSigned = view.Is(Tests::kWilcoxonPairs) || view.Is(Tests::kWilcoxonOneSample);
    return isSigned && view.differences && PseudoMedianCost(valuesOf(*view.differences)) > source.longest;
}

}  // namespace tarn
