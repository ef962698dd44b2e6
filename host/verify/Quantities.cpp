#include "host/verify/Quantities.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/TextList.h"

namespace tarn {

namespace {

/// What is asked for, and of what: "p exact", "OJ - VC".
struct Wish {
    const TestReading& test;
    std::string_view quantity;
    const std::string& of;
};

constexpr std::string_view kBetweenSamples = " - ";

// ---- The document's statistics ----

const StatisticSet* SetOf(const Wish& wish) {
    if (wish.of.empty()) return wish.test.Leading();
    const auto found = std::ranges::find(wish.test.statistics, wish.of, &StatisticSet::name);
    return found == wish.test.statistics.end() ? nullptr : &*found;
}

template <Number StatisticSet::*kMember>
Number OfSet(const Wish& wish) {
    const StatisticSet* const set = SetOf(wish);
    return set == nullptr ? Number() : set->*kMember;
}

template <PValueKind kKind>
Number PValueOfSet(const Wish& wish) {
    const StatisticSet* const set = SetOf(wish);
    if (set == nullptr) return {};
    const auto found = std::ranges::find(set->pValues, kKind, &PValue::kind);
    return found == set->pValues.end() ? Number() : found->value;
}

Number LeadingPValue(const Wish& wish) {
    const StatisticSet* const set = SetOf(wish);
    const PValue* const p = set == nullptr ? nullptr : set->Leading();
    return p == nullptr ? Number() : p->value;
}

/// The statistic that belongs to a significance of its own, as that with a correction for continuity has one.
Number CorrectedStatistic(const Wish& wish) {
    const StatisticSet* const set = SetOf(wish);
    if (set == nullptr) return {};
    const auto found = std::ranges::find(set->pValues, PValueKind::kContinuityCorrected, &PValue::kind);
    return found == set->pValues.end() ? Number() : set->StatisticOf(*found);
}

// ---- What is made beside the document ----

template <Number SuppliedPValue::*kMember>
Number OfSupplied(const Wish& wish, std::string_view kind) {
    for (const SuppliedPValue& p : wish.test.supplement.pValues) {
        if (p.kind == kind && (wish.of.empty() || p.alternative == wish.of)) return p.*kMember;
    }
    return {};
}

constexpr std::string_view kExactKind = "exact";
constexpr std::string_view kAsymptoticKind = "asymptotic";

template <Number EffectSize::*kMember>
Number OfEffect(const Wish& wish) {
    for (const EffectSize& effect : wish.test.supplement.effects) {
        if (effect.first.empty() && effect.key == wish.of) return effect.*kMember;
    }
    return {};
}

template <Number SampleSummary::*kMember>
Number OfSummary(const Wish& wish) {
    const auto& samples = wish.test.supplement.samples;
    const auto found = std::ranges::find(samples, wish.of, &SampleSummary::name);
    return found == samples.end() ? Number() : (*found).*kMember;
}

// ---- Intervals, figures, samples, pairs ----

template <Number Interval::*kMember>
Number OfInterval(const Wish& wish) {
    for (const Interval& interval : wish.test.intervals) {
        if (wish.of.empty() || interval.method == wish.of) return interval.*kMember;
    }
    return {};
}

Number FigureOf(const std::vector<Figure>& figures, const std::string& key) {
    const auto found = std::ranges::find(figures, key, &Figure::key);
    return found == figures.end() ? Number() : found->value;
}

Number OfFigure(const Wish& wish) {
    return FigureOf(wish.test.figures, wish.of);
}

Number MeanRank(const Wish& wish) {
    const auto found = std::ranges::find(wish.test.samples, wish.of, &Sample::name);
    return found == wish.test.samples.end() ? Number() : FigureOf(found->figures, "MeanOfRank");
}

/// With the sign turned.
Number Negated(const Number& number) {
    if (number.empty() || number.value == 0) return number;
    return number.text.starts_with('-') ? Number(number.text.substr(1)) : Number("-" + number.text);
}

/// `isSigned`: whether the number turns its sign where the pair is named the other way round.
template <Number PairComparison::*kMember, bool kIsSigned = false>
Number OfPair(const Wish& wish) {
    for (const PairComparison& pair : wish.test.pairs) {
        const std::string between(kBetweenSamples);
        if (pair.first + between + pair.second == wish.of) return pair.*kMember;
        if (pair.second + between + pair.first == wish.of) return kIsSigned ? Negated(pair.*kMember) : pair.*kMember;
    }
    return {};
}

/// Of the samples that are homogeneous, named in their order.
template <Number HomogeneousSubset::*kMember>
Number OfSubset(const Wish& wish) {
    for (const HomogeneousSubset& subset : wish.test.subsets) {
        if (JoinList(subset.members) == wish.of) return subset.*kMember;
    }
    return {};
}

/// One name of a quantity, and how it is found.
struct NamedQuantity {
    std::string_view name;
    Number (*find)(const Wish& wish);
};

constexpr std::array kQuantities{
    NamedQuantity{"n", [](const Wish& wish) { return wish.test.n; }},
    NamedQuantity{"statistic", OfSet<&StatisticSet::statistic>},
    NamedQuantity{"standard error", OfSet<&StatisticSet::standardError>},
    NamedQuantity{"z", OfSet<&StatisticSet::standardized>},
    NamedQuantity{"df", OfSet<&StatisticSet::df>},
    NamedQuantity{"corrected statistic", CorrectedStatistic},
    NamedQuantity{"p", LeadingPValue},
    NamedQuantity{"p asymptotic", PValueOfSet<PValueKind::kAsymptotic>},
    NamedQuantity{"p exact", PValueOfSet<PValueKind::kExact>},
    NamedQuantity{"p fisher", PValueOfSet<PValueKind::kFisher>},
    NamedQuantity{"p continuity-corrected", PValueOfSet<PValueKind::kContinuityCorrected>},
    NamedQuantity{"further p exact",
                  [](const Wish& wish) { return OfSupplied<&SuppliedPValue::value>(wish, kExactKind); }},
    NamedQuantity{"further p asymptotic",
                  [](const Wish& wish) { return OfSupplied<&SuppliedPValue::value>(wish, kAsymptoticKind); }},
    NamedQuantity{"further statistic",
                  [](const Wish& wish) { return OfSupplied<&SuppliedPValue::statistic>(wish, kAsymptoticKind); }},
    NamedQuantity{"further z",
                  [](const Wish& wish) { return OfSupplied<&SuppliedPValue::standardized>(wish, kAsymptoticKind); }},
    NamedQuantity{"interval estimate", OfInterval<&Interval::estimate>},
    NamedQuantity{"interval lower", OfInterval<&Interval::lower>},
    NamedQuantity{"interval upper", OfInterval<&Interval::upper>},
    NamedQuantity{"effect", OfEffect<&EffectSize::value>},
    NamedQuantity{"effect lower", OfEffect<&EffectSize::lower>},
    NamedQuantity{"effect upper", OfEffect<&EffectSize::upper>},
    NamedQuantity{"figure", OfFigure},
    NamedQuantity{"mean rank", MeanRank},
    NamedQuantity{"median", OfSummary<&SampleSummary::median>},
    NamedQuantity{"first quartile", OfSummary<&SampleSummary::firstQuartile>},
    NamedQuantity{"third quartile", OfSummary<&SampleSummary::thirdQuartile>},
    NamedQuantity{"pair statistic", OfPair<&PairComparison::statistic, true>},
    NamedQuantity{"pair z", OfPair<&PairComparison::standardized, true>},
    NamedQuantity{"pair p", OfPair<&PairComparison::p>},
    NamedQuantity{"pair adjusted p", OfPair<&PairComparison::adjustedP>},
    NamedQuantity{"subset statistic", OfSubset<&HomogeneousSubset::statistic>},
    NamedQuantity{"subset p", OfSubset<&HomogeneousSubset::p>},
    NamedQuantity{"subset adjusted p", OfSubset<&HomogeneousSubset::adjustedP>},
};

}  // namespace

Number QuantityOf(const TestReading& test, const std::string& quantity, const std::string& of,
                  const std::string& place) {
    const auto found = std::ranges::find(kQuantities, quantity, &NamedQuantity::name);
    if (found != kQuantities.end()) return found->find({test, quantity, of});
    std::vector<std::string_view> names;
    for (const NamedQuantity& each : kQuantities) names.push_back(each.name);
    const std::vector<std::string_view> nearest = NearestNames(quantity, names);
    throw InputError(place + ": " + Quoted(quantity) + " is no quantity" +
                     (nearest.empty() ? "; expected " + Alternatives(names) : DidYouMean(nearest)));
}

}  // namespace tarn
