#include "host/beyond/Supplements.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "host/NumberText.h"
#include "host/beyond/Conclusions.h"
#include "host/beyond/Effects.h"
#include "host/beyond/Likeness.h"
#include "host/beyond/MedianInterval.h"
#include "host/beyond/NamePlaces.h"
#include "host/beyond/Quartiles.h"
#include "host/beyond/Significances.h"
#include "host/beyond/StopQuestion.h"
#include "host/beyond/TestView.h"
#include "host/report/Letters.h"
#include "host/report/SupplementText.h"

namespace tarn {

namespace {

/// An exact significance that takes no longer is made without being asked for: a tenth of a second at 1e9 additions a
/// second, for all tests of a run together.
constexpr double kMostByItself = 1e8;
/// The same of those that are asked for, again of all tests together: some 20 seconds.
constexpr double kMostWhenAsked = 2e10;
constexpr double kMostCasesWhenAsked = 1e6;
/// How many nanoseconds the estimates of all tests of a run may take together.
constexpr double kLongestEstimates = 1.5e7;
/// From so many tests on nobody reads a remark on each.
constexpr std::size_t kFewestForSummary = 5;

Number NumberOf(double value) {
    return std::isnan(value) ? Number() : Number(ExactText(value));
}

// ---- Samples ----

std::vector<SampleSummary> SummariesOf(const TestView& view) {
    std::vector<SampleSummary> summaries;
    for (std::size_t i = 0; i < view.samples.size(); ++i) {
        SampleSummary summary;
        summary.name = view.names[i];
        summary.n = NumberOf(view.samples[i].size);
        summary.missing = NumberOf(view.missing[i]);
        if (view.areNumbers) {
            const Summary numbers = SummaryOf(view.samples[i]);
            const Estimate median = MedianInterval(view.samples[i], view.confidence).median;
            summary.firstQuartile = NumberOf(numbers.firstQuartile);
            summary.median = NumberOf(numbers.median);
            summary.thirdQuartile = NumberOf(numbers.thirdQuartile);
            summary.medianLower = NumberOf(median.lower);
            summary.medianUpper = NumberOf(median.upper);
        }
        summaries.push_back(std::move(summary));
    }
    return summaries;
}

// ---- Pairs ----

/// The samples from the one with the lowest mean rank up, or with the lowest median where a test has no ranks; in their
/// order where there is neither.
std::vector<std::size_t> AscendingByRank(const TestView& view) {
    std::vector<double> ranks(view.names.size(), 0);
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < view.names.size(); ++i) {
        order.push_back(i);
        if (view.areNumbers) ranks[i] = SummaryOf(view.samples[i]).median;
        for (const Sample& sample : view.reading->samples) {
            const auto figure = std::ranges::find(sample.figures, "MeanOfRank", &Figure::key);
            if (sample.name == view.names[i] && figure != sample.figures.end()) ranks[i] = figure->value.value;
        }
    }
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return ranks[i]; });
    return order;
}

std::vector<SampleLetters> Named(const std::vector<std::string>& letters, const TestView& view) {
    std::vector<SampleLetters> named;
    for (std::size_t i = 0; i < letters.size(); ++i) named.push_back({view.names[i], letters[i]});
    return named;
}

void AddComparisons(const TestView& view, const SupplementOptions& wanted, double level, Supplement& supplement) {
    const TestReading& reading = *view.reading;
    const NamePlaces samples(view.names);
    if (!reading.subsets.empty()) {
        std::vector<std::vector<std::size_t>> subsets;
        for (const HomogeneousSubset& subset : reading.subsets) {
            std::vector<std::size_t>& places = subsets.emplace_back();
            for (const std::string& member : subset.members) places.push_back(samples.Of(member));
            if (std::ranges::max(places) >= view.names.size()) return;
        }
        supplement.letters = Named(LettersOfSubsets(view.names.size(), subsets, AscendingByRank(view)), view);
    }
    if (reading.pairs.empty()) return;
    std::vector<double> pValues;
    std::vector<std::pair<std::size_t, std::size_t>> different;
    for (const PairComparison& pair : reading.pairs) pValues.push_back(pair.p.value);
    std::vector<double> adjusted;
    if (wanted.adjustment) {
        adjusted = Adjusted(pValues, *wanted.adjustment);
        for (const double p : adjusted) supplement.adjustedPairs.push_back(NumberOf(p));
        supplement.adjustment = TitleOf(*wanted.adjustment);
    }
    for (std::size_t i = 0; i < reading.pairs.size(); ++i) {
        const PairComparison& pair = reading.pairs[i];
        const double p = wanted.adjustment ? adjusted[i] : pair.adjustedP.empty() ? pair.p.value : pair.adjustedP.value;
        const std::size_t first = samples.Of(pair.first);
        const std::size_t second = samples.Of(pair.second);
        if (std::max(first, second) >= view.names.size()) return;
        if (p < level) different.emplace_back(first, second);
    }
    // Letters tell about all pairs.
    if (reading.pairs.size() < view.names.size() * (view.names.size() - 1) / 2) return;
    supplement.letters = Named(LettersOfPairs(view.names.size(), different, AscendingByRank(view)), view);
}

// ---- Significances ----

class Significances {
 public:
    Significances(const TestView& view, const SupplementSource& source, double share, Supplement& supplement)
        : view_(view), source_(source), wanted_(source.wanted), share_(share), supplement_(supplement) {}

    /// The significance by the user's choices; null for none.
    const SuppliedPValue* Add() {
        if (view_.facts->IsEstimate()) return nullptr;
        Choices choices = ChoicesOf();
        std::optional<LikeSetting> likeness;
        if (wanted_.like) {
            likeness = LikenessOf(view_, wanted_, source_.probability, source_.success);
            if (const std::string_view reason = ReasonAgainst(*likeness); !reason.empty()) {
                Remark(reason);
                likeness.reset();
            }
        }
        if (likeness) Follow(*likeness, choices);
        ways_ = WaysOf(view_, choices);
        RemarkOnWishes();
        if (!HasWays()) return nullptr;
        if (!ways_.hasAlternative) choices.alternative = Alternative::kTwoSided;
        const bool isExactLike = likeness && likeness->isExact;
        std::optional<std::size_t> chosen;
        if ((HasChoice() || likeness) && !isExactLike) chosen = AddAsymptotic(choices);
        if (const auto exact = AddExact(choices, isExactLike); exact && (isExactLike || wanted_.exact)) chosen = exact;
        if (const auto estimated = AddMonteCarlo(choices); estimated && !chosen) chosen = estimated;
        if (!chosen && wanted_.alternative != Alternative::kTwoSided && !supplement_.pValues.empty()) chosen = 0;
        return chosen ? &supplement_.pValues[*chosen] : nullptr;
    }

 private:
    /// Why the other system's significance isn't made here, as the key of a remark; "" where it is. That of values with
    /// ties as if there were none is made for Smirnov's test alone.
    std::string_view ReasonAgainst(const LikeSetting& likeness) const {
        if (!likeness.hasCall) return likeness.reason;
        if (likeness.takesOtherTail) return "likeOtherTail";
        const bool isSmirnov = view_.Is(Tests::kKolmogorovSmirnovTwoSample);
        return likeness.ignoresTies && !isSmirnov ? "likeIgnoresTies" : "";
    }

    void Follow(const LikeSetting& likeness, Choices& choices) {
        supplement_.call = likeness.call;
        choices.continuity = likeness.continuity;
        choices.zeros = likeness.zeros;
        choices.kolmogorov = likeness.kolmogorov;
        choices.ignoresTies = likeness.ignoresTies;
        choices.takesParametersAsGiven = true;
        if (likeness.isExact) choices.mostCases = kMostCasesWhenAsked;
        if (!source_.rule.listwise.empty()) Remark("likeListwise");
    }

    Choices ChoicesOf() const {
        Choices choices;
        choices.alternative = wanted_.alternative;
        choices.continuity = wanted_.continuity.value_or(CorrectsByItself(view_));
        choices.zeros = wanted_.zeros.value_or(ZeroMethod::kDrop);
        choices.shift = wanted_.shift.value_or(0);
        choices.probability = source_.probability;
        choices.success = source_.success;
        // No test whose cost grows with its cases takes fewer additions than their square.
        choices.mostCases = wanted_.exact ? kMostCasesWhenAsked : std::sqrt(kMostByItself * share_);
        return choices;
    }

    /// Whether a significance by choices of the user is wanted. A value to test against is a choice where the document
    /// has it otherwise.
    bool HasChoice() const {
        const bool hasShift = wanted_.shift && ways_.hasShift && !view_.Is(Tests::kWilcoxonOneSample);
        return wanted_.alternative != Alternative::kTwoSided || wanted_.continuity || wanted_.zeros || hasShift;
    }
    bool HasWays() const { return ways_.exact || ways_.asymptotic || ways_.monteCarlo; }

    void Remark(std::string_view key, const std::vector<std::string>& parameters = {}) {
        const std::string* const text = source_.texts.Remark(key);
        supplement_.remarks.push_back(text == nullptr ? std::string(key) : FillIn(*text, {&parameters}));
    }

    /// What was asked for and this test doesn't have.
    void RemarkOnWishes() {
        if (wanted_.alternative != Alternative::kTwoSided && !ways_.hasAlternative) Remark("no-alternative");
        if (wanted_.zeros && !ways_.hasZeros) Remark("no-zeros");
        if (wanted_.exact && !ways_.exact && !HasExact()) Remark("no-exact");
        if (wanted_.draws > 0 && !ways_.monteCarlo) Remark("no-monte-carlo");
        // Of one sample the value is for those tests of the request that take one.
        const bool takesValue =
            ways_.hasShift || view_.Is(Tests::kMedian) || view_.facts->family == TestFamily::kOneSample;
        if (wanted_.shift && !takesValue) Remark("no-shift");
        if (!wanted_.continuity) return;
        const bool has = ways_.asymptotic && ways_.asymptotic().hasContinuity;
        if (!has) Remark("no-continuity");
    }

    void RemarkOnCost(double cost, double most) {
        if (std::isfinite(cost)) {
            Remark("exact-too-large", {FewDigits(NumberOf(cost)), FewDigits(NumberOf(most))});
        } else {
            Remark("exact-too-many");
        }
    }

    /// "after minus before other than 2"
    std::string ShiftClaim(const Choices& choices) const {
        constexpr const char* kClaims[] = {"shiftOther", "shiftSmaller", "shiftLarger"};
        const std::vector<std::string> parts{view_.reading->direction.Text(), FewDigits(NumberOf(choices.shift))};
        return FillIn(source_.texts.Label(kClaims[static_cast<std::size_t>(choices.alternative)]), {&parts});
    }

    SuppliedPValue Begin(const char* kind, const char* method, const Choices& choices) const {
        SuppliedPValue p;
        p.kind = kind;
        p.alternative = NameOf(choices.alternative);
        p.method = source_.texts.Label(method);
        const bool isShifted = choices.shift != 0 && ways_.hasShift && !view_.Is(Tests::kWilcoxonOneSample);
        if (isShifted) p.claim = ShiftClaim(choices);
        if (isShifted || choices.alternative == Alternative::kTwoSided) return p;
        const bool isGreater = choices.alternative == Alternative::kGreater;
        const Direction& direction = view_.reading->direction;
        std::string first = direction.first;
        std::string second = direction.second;
        if (direction.IsEmpty() && view_.names.size() == 2) {
            first = view_.names[0];
            second = view_.names[1];
        } else if (direction.IsEmpty()) {
            first = JoinList(view_.reading->fields);
            second = view_.reading->group;
        }
        const std::vector<std::string> samples{first, second};
        p.claim = FillIn(source_.texts.Label(isGreater ? ways_.greater : ways_.less), {&samples});
        return p;
    }

    std::size_t Put(SuppliedPValue p) {
        supplement_.pValues.push_back(std::move(p));
        return supplement_.pValues.size() - 1;
    }

    std::optional<std::size_t> AddAsymptotic(const Choices& choices) {
        if (!ways_.asymptotic) return std::nullopt;
        const ChosenTest test = ways_.asymptotic();
        SuppliedPValue p = Begin("asymptotic", "byNormal", choices);
        p.method =
            source_.texts.Label(test.hasContinuity && choices.continuity ? "withContinuity" : "withoutContinuity");
        if (ways_.asymptoticBy != nullptr) p.method = source_.texts.Label(ways_.asymptoticBy);
        if (test.hasZeroMethod || ways_.hasZeros) {
            constexpr const char* kZeros[] = {"zerosDropped", "zerosPratt", "zerosSplit"};
            p.method += ", " + source_.texts.Label(kZeros[static_cast<std::size_t>(choices.zeros)]);
        }
        p.statistic = NumberOf(test.statistic);
        p.standardized = NumberOf(test.z);
        p.value = Number(ExactText(test.p));
        return Put(std::move(p));
    }

    /// An exact significance of the document, where ties don't change it.
    bool HasExact() const {
        const StatisticSet* const set = view_.reading->Leading();
        if (set == nullptr || view_.Is(Tests::kMannWhitney)) return false;
        return std::ranges::any_of(set->pValues, [](const PValue& p) {
            return p.kind == PValueKind::kExact || p.kind == PValueKind::kFisher;
        });
    }

    std::optional<std::size_t> AddExact(const Choices& choices, bool isAsked) {
        const bool wants = wanted_.exact || isAsked;
        if (!ways_.exact || (!wants && !HasChoice() && !wanted_.like && HasExact())) return std::nullopt;
        const double cost = ways_.cost();
        const double most = share_ * (wants ? kMostWhenAsked : kMostByItself);
        if (cost > most) {
            if (wants) RemarkOnCost(cost, most);
            return std::nullopt;
        }
        const std::optional<ExactTails> tails = ways_.exact();
        if (!tails) {
            if (wants) Remark("no-exact");
            return std::nullopt;
        }
        SuppliedPValue p = Begin("exact", ways_.exactBy, choices);
        p.value = NumberOf(TailOf(*tails, choices.alternative));
        return Put(std::move(p));
    }

    std::optional<std::size_t> AddMonteCarlo(const Choices& choices) {
        if (wanted_.draws == 0 || !ways_.monteCarlo) return std::nullopt;
        const std::optional<MonteCarloTails> tails = ways_.monteCarlo({wanted_.draws, wanted_.seed}, source_.work);
        if (!tails) {
            if (!source_.work.IsStopped()) Remark("monte-carlo-too-large");
            return std::nullopt;
        }
        SuppliedPValue p = Begin("monte-carlo", "byDraws", choices);
        const std::vector<std::string> parameters{std::to_string(wanted_.draws), std::to_string(wanted_.seed)};
        p.method = FillIn(p.method, {&parameters});
        const Estimate& estimate = TailOf(*tails, choices.alternative);
        p.value = NumberOf(estimate.value);
        p.lower = NumberOf(estimate.lower);
        p.upper = NumberOf(estimate.upper);
        return Put(std::move(p));
    }

    const TestView& view_;
    const SupplementSource& source_;
    const SupplementOptions& wanted_;
    double share_;
    Supplement& supplement_;
    SignificanceWays ways_;
};

/// Whether a choice of the user needs all values of large samples.
bool KeepsAll(const SupplementOptions& wanted) {
    return wanted.draws > 0 || wanted.like || wanted.shift;
}

void Fill(Supplement& supplement, const TestView& view, const ResultReading& result, const SupplementSource& source) {
    const double share = 1 / static_cast<double>(result.tests.size());
    supplement.samples = SummariesOf(view);
    const EffectSource effects{view, source.texts, kLongestEstimates * share, source.success};
    supplement.effects = EffectsOf(effects);
    if (LeavesOutAnEstimate(effects)) {
        const std::string* const text = source.texts.Remark("no-shift-estimate");
        if (text != nullptr && result.tests.size() < kFewestForSummary) supplement.remarks.push_back(*text);
    }
    AddComparisons(view, source.wanted, result.sigLevel.value, supplement);
    const SuppliedPValue* const chosen = Significances(view, source, share, supplement).Add();
    if (chosen != nullptr) supplement.chosenP = chosen->value;
    supplement.conclusion = ConclusionOf(view, chosen, result.sigLevel.value, source.texts);
}

Supplement SupplementOf(const TestReading& reading, const ResultReading& result, const SupplementSource& source) {
    Supplement supplement;
    const std::optional<TestView> view =
        ViewOf(reading, result, {source.table, source.rule, source.work, KeepsAll(source.wanted)});
    if (!view) return supplement;
    const StopQuestion question(source.work);
    try {
        Fill(supplement, *view, result, source);
    } catch (const FiguresStopped&) {
        // What there is of a run that was cancelled is passed over by whoever cancelled it.
    }
    return supplement;
}

}  // namespace

void AdjustTests(ResultReading& result, Adjustment adjustment) {
    const std::vector<double> adjusted = Adjusted(ConclusivePValues(result), adjustment);
    for (std::size_t i = 0; i < adjusted.size(); ++i) {
        result.tests[i].supplement.adjustedP = NumberOf(adjusted[i]);
        result.tests[i].supplement.adjustment = TitleOf(adjustment);
    }
}

void AddSupplements(ResultReading& result, const SupplementSource& source) {
    std::vector<Supplement> supplements(result.tests.size());
    // Few tests share the threads within each of them, and so does a Monte Carlo significance.
    if (source.wanted.draws > 0 || supplements.size() < source.work.Threads()) {
        for (std::size_t i = 0; i < supplements.size() && !source.work.IsStopped(); ++i) {
            supplements[i] = SupplementOf(result.tests[i], result, source);
        }
    } else {
        source.work.Run(supplements.size(),
                        [&](std::size_t i) { supplements[i] = SupplementOf(result.tests[i], result, source); });
    }
    for (std::size_t i = 0; i < supplements.size(); ++i) result.tests[i].supplement = std::move(supplements[i]);
    if (source.wanted.adjustment) AdjustTests(result, *source.wanted.adjustment);
}

}  // namespace tarn
