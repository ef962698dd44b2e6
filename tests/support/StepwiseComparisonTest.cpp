// The search for homogeneous subsets. Its walks are held against the plain ones of PlainStepwise.h over random
// significances, and against walks worked by hand.

#include "support/StepwiseComparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/harness/PlainStepwise.h"
#include "tests/harness/WithinUlp.h"

namespace {

using Outcome = StepwiseComparison::Outcome;
using Texts = std::vector<std::string>;

constexpr double kLevel = 0.05;

struct Walk {
    plain::Result result;
    StepwiseComparison search;
};

/// Searches to the end. `sigOf`: below 0 for a subset without a statistic.
Walk Search(const ComparisonRules& rules, int positions, int samples, const plain::SigOf& sigOf) {
    Walk walk{{}, StepwiseComparison(rules, Arithmetic::AsDefined())};
    walk.search.Begin(static_cast<std::size_t>(positions), static_cast<std::size_t>(samples));
    while (!walk.search.IsDone()) {
        ++walk.result.passes;
        for (const SubsetRecord& candidate : walk.search.Candidates()) {
            EXPECT_EQ(candidate.sums, std::vector<double>(candidate.Size(), 0.0));
        }
        const std::vector<TestMessage> warnings = walk.search.EndPass(kLevel, [&](SubsetRecord& subset) {
            const double sig = sigOf(static_cast<int>(subset.firstPosition), static_cast<int>(subset.lastPosition));
            if (sig < 0) return Outcome::kUntestable;
            subset.sig = sig;
            return Outcome::kComputed;
        });
        for (const TestMessage& warning : warnings) {
            EXPECT_EQ(warning.status.GetErrorCode(), 220013);
            EXPECT_EQ(warning.kind, MessageKind::kWarning);
            EXPECT_TRUE(warning.params.empty());  // "group" is a named value: it doesn't count as a parameter
            EXPECT_EQ(warning.namedParams.size(), 1U);
            EXPECT_EQ(warning.namedParams[0].first, "group");
            walk.result.warnedOf.push_back(warning.namedParams[0].second);
        }
        EXPECT_LE(walk.result.passes, positions - 1);
        if (walk.result.passes > positions) break;
    }
    for (const std::size_t index : walk.search.DisplayOrder()) {
        const SubsetRecord& subset = walk.search.FinalSubsets()[index];
        const bool hasValues = !subset.HasOneSample() && !subset.untestable;
        walk.result.shown.push_back({static_cast<int>(subset.firstPosition), static_cast<int>(subset.lastPosition),
                                     hasValues ? subset.sig : 0, hasValues ? subset.adjSig : 0, subset.untestable});
    }
    return walk;
}

std::vector<std::pair<int, int>> Shown(const plain::Result& result) {
    std::vector<std::pair<int, int>> ends;
    for (const plain::Found& found : result.shown) ends.emplace_back(found.first, found.last);
    return ends;
}

using Ends = std::vector<std::pair<int, int>>;

/// A significance that is the same whenever a subset is asked for; `homogeneous` is the share of large ones.
class RandomSigs {
 public:
    RandomSigs(unsigned seed, double homogeneous, double untestable)
        : random_(seed), homogeneous_(homogeneous), untestable_(untestable) {}

    double operator()(int first, int last) {
        const auto [entry, isNew] = sigs_.try_emplace({first, last}, 0.0);
        if (!isNew) return entry->second;
        std::uniform_real_distribution<double> unit(0, 1);
        const double kind = unit(random_);
        entry->second = kind < untestable_                  ? -1
                        : kind < untestable_ + homogeneous_ ? kLevel + (1 - kLevel) * unit(random_)
                                                            : kLevel * unit(random_);
        return entry->second;
    }

 private:
    std::mt19937 random_;
    double homogeneous_;
    double untestable_;
    std::map<std::pair<int, int>, double> sigs_;
};

/// What is shown of a single sample is its positions alone.
plain::Result WithoutValuesOfLoneSamples(plain::Result result) {
    for (plain::Found& found : result.shown) {
        if (found.first == found.last) found.sig = found.adjSig = 0;
    }
    return result;
}

void ExpectSame(const plain::Result& actual, const plain::Result& expected, int k, unsigned seed) {
    EXPECT_EQ(actual.shown, WithoutValuesOfLoneSamples(expected).shown) << k << " samples, seed " << seed;
    EXPECT_EQ(actual.passes, expected.passes) << k << " samples, seed " << seed;
}

constexpr double kShares[] = {0.0, 0.02, 0.1, 0.3, 0.6, 1.0};
constexpr int kMostSamples = 40;

template <typename Check>
void ForRandomSearches(double untestable, Check check) {
    for (int k = 3; k <= kMostSamples; ++k) {
        for (unsigned seed = 0; seed < 24; ++seed) {
            RandomSigs sigs(seed * 1000 + static_cast<unsigned>(k), kShares[seed % 6], untestable);
            check(k, seed, std::ref(sigs));
        }
    }
}

TEST(StepwiseComparison, TestsOfRankedRowsWalkAsWrittenDown) {
    for (const ComparisonRules* rules : {&ComparisonRulesOf::kFriedman, &ComparisonRulesOf::kKendallsW}) {
        ForRandomSearches(0, [&](int k, unsigned seed, const plain::SigOf& sigOf) {
            const Walk walk = Search(*rules, k, k, sigOf);
            ExpectSame(walk.result, plain::SearchOfRankedRows(k, kLevel, sigOf), k, seed);
            EXPECT_TRUE(walk.result.warnedOf.empty());  // that comes with the writing
        });
    }
}

TEST(StepwiseComparison, TestsThatDropALoneSampleWalkAsWrittenDown) {
    for (const ComparisonRules* rules :
         {&ComparisonRulesOf::kCochransQ, &ComparisonRulesOf::kJonckTer, &ComparisonRulesOf::kKSMedian}) {
        for (const double untestable : {0.0, 0.2}) {
            ForRandomSearches(untestable, [&](int k, unsigned seed, const plain::SigOf& sigOf) {
                const Walk walk = Search(*rules, k, k + 1, sigOf);
                const plain::Result expected = plain::SearchOfDroppingTests(k, k + 1, kLevel, sigOf);
                ExpectSame(walk.result, expected, k, seed);
                EXPECT_EQ(walk.result.warnedOf, expected.warnedOf) << k << " samples, seed " << seed;
            });
        }
    }
}

TEST(StepwiseComparison, TestOfGroupListsWalksAsWrittenDown) {
    ForRandomSearches(0, [&](int k, unsigned seed, const plain::SigOf& sigOf) {
        const Walk walk = Search(ComparisonRulesOf::kKruskalWOneWay, k, k + 2, sigOf);
        const plain::Result expected = plain::SearchOfGroupLists(k, k + 2, kLevel, sigOf);
        ExpectSame(walk.result, expected, k, seed);
        EXPECT_EQ(walk.result.warnedOf, expected.warnedOf) << k << " samples, seed " << seed;
    });
}

// ---- Walks by hand ----

/// Significances by hand; a subset that is not named is far from homogeneous.
plain::SigOf Sigs(std::map<std::pair<int, int>, double> sigs) {
    return [sigs = std::move(sigs)](int first, int last) {
        const auto found = sigs.find({first, last});
        return found == sigs.end() ? 0.0 : found->second;
    };
}

TEST(StepwiseComparison, AllSamplesTogetherAreNoCandidate) {
    StepwiseComparison search(ComparisonRulesOf::kFriedman, Arithmetic::AsDefined());
    search.Begin(5, 5);
    Ends ends;
    for (const SubsetRecord& candidate : search.Candidates()) {
        ends.emplace_back(candidate.firstPosition, candidate.lastPosition);
    }
    EXPECT_EQ(ends, (Ends{{0, 3}, {1, 4}, {2, 4}, {3, 4}}));
    EXPECT_FALSE(search.IsDone());
}

TEST(StepwiseComparison, ThreeSamplesAllDifferentAreThreeLoneSamples) {
    for (const ComparisonRules& rules : {ComparisonRulesOf::kFriedman, ComparisonRulesOf::kCochransQ}) {
        const plain::Result result = Search(rules, 3, 3, Sigs({})).result;
        EXPECT_EQ(Shown(result), (Ends{{0, 0}, {1, 1}, {2, 2}}));
        EXPECT_EQ(result.passes, 1);
    }
    EXPECT_EQ(Search(ComparisonRulesOf::kCochransQ, 3, 3, Sigs({})).result.warnedOf, (Texts{"0;0", "1;1", "2;2"}));
}

TEST(StepwiseComparison, HomogeneousFirstCandidateLeavesTheOthersToBeTested) {
    const plain::Result result =
        Search(ComparisonRulesOf::kFriedman, 3, 3, Sigs({{{0, 1}, 0.5}, {{1, 2}, 0.4}})).result;
    EXPECT_EQ(Shown(result), (Ends{{0, 1}, {1, 2}}));
    EXPECT_EQ(result.passes, 1);
}

TEST(StepwiseComparison, HomogeneousLaterCandidateEndsTheOnesBehindIt) {
    // 1-3 is homogeneous, so 2-3 is never tested; a test of groups goes on to it and finds it inside.
    const auto sigs = Sigs({{{1, 3}, 0.5}, {{2, 3}, 0.9}, {{0, 1}, 0.5}});
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kFriedman, 4, 4, sigs).result), (Ends{{0, 1}, {1, 3}}));
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kCochransQ, 4, 4, sigs).result), (Ends{{1, 3}, {0, 1}}));
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kKruskalWOneWay, 4, 4, sigs).result), (Ends{{1, 3}, {0, 1}}));
}

TEST(StepwiseComparison, LoneSamplesAreFoundOnTheWayOrLeftForTheEnd) {
    // 3-4 shrinks to 3 in pass 1, 2-3 to 2 in pass 2, 1-2 to 1 and 0-1 to 0 in pass 3.
    const auto found = [](const ComparisonRules& rules) {
        const Walk walk = Search(rules, 5, 5, Sigs({}));
        EXPECT_EQ(walk.result.passes, 3);
        EXPECT_EQ(Shown(walk.result), (Ends{{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}}));
        std::vector<std::uint32_t> positions;
        for (const SubsetRecord& subset : walk.search.FinalSubsets()) positions.push_back(subset.firstPosition);
        return positions;
    };
    EXPECT_EQ(found(ComparisonRulesOf::kFriedman), (std::vector<std::uint32_t>{3, 2, 0, 1, 4}));
    EXPECT_EQ(found(ComparisonRulesOf::kCochransQ), (std::vector<std::uint32_t>{0, 1, 2, 3, 4}));
}

TEST(StepwiseComparison, LoneSampleInsideALaterSubsetIsNotShown) {
    // 3 is found in pass 1, 1-3 in pass 2.
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kFriedman, 5, 5, Sigs({{{1, 3}, 0.5}})).result),
              (Ends{{0, 0}, {1, 3}, {4, 4}}));
}

SubsetRecord Subset(std::uint32_t first, std::uint32_t last) {
    SubsetRecord subset;
    subset.firstPosition = first;
    subset.lastPosition = last;
    return subset;
}

Ends EndsWithoutContained(std::vector<SubsetRecord> subsets) {
    RemoveContainedSubsets(subsets);
    Ends ends;
    for (const SubsetRecord& subset : subsets) ends.emplace_back(subset.firstPosition, subset.lastPosition);
    return ends;
}

TEST(RemoveContainedSubsets, StepsOverTheSubsetBehindAnErasedOne) {
    EXPECT_EQ(EndsWithoutContained({Subset(3, 3), Subset(1, 4)}), (Ends{{1, 4}}));
    EXPECT_EQ(EndsWithoutContained({Subset(3, 3), Subset(2, 2), Subset(1, 4)}), (Ends{{2, 2}, {1, 4}}));
    EXPECT_EQ(EndsWithoutContained({Subset(3, 3), Subset(2, 2), Subset(2, 3), Subset(1, 4)}), (Ends{{2, 2}, {1, 4}}));
    EXPECT_EQ(EndsWithoutContained({Subset(1, 4), Subset(2, 2)}), (Ends{{1, 4}}));
    EXPECT_EQ(EndsWithoutContained({}), Ends{});
}

TEST(RemoveContainedSubsets, CountsAgainstTheListAsItWas) {
    // Each of two equal ones holds the other; the second one moves into the place that is stepped over.
    EXPECT_EQ(EndsWithoutContained({Subset(1, 2), Subset(1, 2), Subset(3, 4)}), (Ends{{1, 2}, {3, 4}}));
    EXPECT_EQ(EndsWithoutContained({Subset(1, 2), Subset(3, 4), Subset(1, 2)}), (Ends{{3, 4}}));
}

TEST(StepwiseComparison, SubsetWithoutAStatisticIsAddedThoughItLiesInsideAnother) {
    const auto sigs = Sigs({{{0, 2}, 0.5}, {{1, 3}, 0.0}, {{1, 2}, -1}, {{2, 3}, 0.0}});
    const plain::Result result = Search(ComparisonRulesOf::kJonckTer, 4, 4, sigs).result;
    EXPECT_EQ(Shown(result), (Ends{{0, 2}, {1, 2}, {3, 3}}));
    EXPECT_TRUE(result.shown[1].untestable);
    EXPECT_EQ(result.warnedOf, (Texts{"3;3"}));
}

TEST(StepwiseComparison, ErrorInAPassEndsTheSearch) {
    StepwiseComparison search(ComparisonRulesOf::kKSMedian, Arithmetic::AsDefined());
    search.Begin(4, 4);
    int asked = 0;
    const auto fails = [&](SubsetRecord&) { return ++asked == 2 ? Outcome::kFailed : Outcome::kComputed; };
    EXPECT_TRUE(search.EndPass(kLevel, fails).empty());
    EXPECT_EQ(asked, 2);
    EXPECT_FALSE(search.IsDone());
}

TEST(StepwiseComparison, SignificanceAtTheLevelIsHomogeneous) {
    for (const ComparisonRules& rules : {ComparisonRulesOf::kFriedman, ComparisonRulesOf::kKruskalWOneWay}) {
        EXPECT_EQ(Shown(Search(rules, 3, 3, Sigs({{{0, 1}, kLevel}})).result), (Ends{{0, 1}, {2, 2}}));
        EXPECT_EQ(Shown(Search(rules, 3, 3, Sigs({{{0, 1}, std::nextafter(kLevel, 0)}})).result),
                  (Ends{{0, 0}, {1, 1}, {2, 2}}));
    }
}

TEST(StepwiseComparison, NoNumberIsHomogeneousWhereTheAdjustedSignificanceDecidesOnly) {
    const auto sigs = Sigs({{{0, 1}, std::numeric_limits<double>::quiet_NaN()}});
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kCochransQ, 3, 3, sigs).result), (Ends{{0, 1}, {2, 2}}));
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kKruskalWOneWay, 3, 3, sigs).result), (Ends{{0, 0}, {1, 1}, {2, 2}}));
}

TEST(StepwiseComparison, PlainSignificanceDecidesForGroupListsAndTheAdjustedOneElsewhere) {
    // A plain 0.03 of 2 out of 5 samples is an adjusted 1 - 0.97^2.5 = 0.0733...
    const auto sigs = Sigs({{{0, 1}, 0.03}});
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kFriedman, 5, 5, sigs).result).front(), std::make_pair(0, 1));
    EXPECT_EQ(Shown(Search(ComparisonRulesOf::kKruskalWOneWay, 5, 5, sigs).result).front(), std::make_pair(0, 0));
}

// ---- Adjustment and order ----

TEST(StepwiseComparison, TwoStatisticsLeaveOtherTracesWhereOneOfThemIsHomogeneous) {
    StepwiseComparison search(ComparisonRulesOf::kCochransQ, Arithmetic::AsDefined());
    search.Begin(6, 6);
    SubsetRecord subset;
    subset.firstPosition = 1;
    subset.lastPosition = 3;
    const auto leaveTraces = [&](double statistic, double other) {  // the statistic is its own significance
        return search.LeaveOtherTraces(subset, statistic, other, kLevel, [](double value) { return value; });
    };
    // Adjusted by the power 6 / 3: 1 - 0.97^2 is above 0.05, 1 - 0.98^2 below.
    EXPECT_TRUE(leaveTraces(0.03, 0.04));
    EXPECT_TRUE(leaveTraces(0.02, 0.03));
    EXPECT_TRUE(leaveTraces(0.03, 0.02));
    EXPECT_FALSE(leaveTraces(0.02, 0.01));
    EXPECT_FALSE(leaveTraces(0.03, 0.03));
}

TEST(AdjustForSubset, IsThePowerBelowOneSampleLessThanAll) {
    EXPECT_EQ(AdjustForSubset(0.03, 5, 5, Arithmetic::AsDefined()), 0.03);
    EXPECT_EQ(AdjustForSubset(0.03, 4, 5, Arithmetic::AsDefined()), 0.03);
    EXPECT_TRUE(harness::WithinUlp(AdjustForSubset(0.03, 3, 5, Arithmetic::AsDefined()), 0.04949831642937075,
                                   16));  // mpmath: 1 - 0.97^(5/3)
    EXPECT_TRUE(harness::WithinUlp(AdjustForSubset(0.03, 2, 5, Arithmetic::AsDefined()), 0.07332096942900453,
                                   16));  // mpmath: 1 - 0.97^2.5
    EXPECT_EQ(AdjustForSubset(1, 2, 9, Arithmetic::AsDefined()), 1);
}

TEST(OrderSamples, EqualValuesKeepTheirOrder) {
    std::vector<double> values;
    for (int i = 0; i < 32; ++i) values.push_back(i % 3);
    const std::vector<OrderedSample> samples = OrderSamples(values);
    ASSERT_EQ(samples.size(), 32U);
    EXPECT_TRUE(std::is_sorted(samples.begin(), samples.end(), [](const OrderedSample& a, const OrderedSample& b) {
        return a.orderValue != b.orderValue ? a.orderValue < b.orderValue : a.sample < b.sample;
    }));
    EXPECT_EQ(samples[11].sample, 1);
}

}  // namespace
