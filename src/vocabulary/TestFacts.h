#pragma once

#include <cstddef>
#include <iterator>
#include <span>
#include <string_view>

/// What there is to know of each test besides how it computes: its names, the fields that it takes, and how its result
/// is read. The engine plans and writes by it, the host asks and reads by it; neither has another list of the tests.

enum class TestFamily { kOneSample, kRelated, kIndependent };

/// The families as the document and the automatic choice name them.
namespace FamilyName {
inline constexpr const char* kOneSample = "One_Sample";
inline constexpr const char* kRelatedSamples = "Related_Samples";
inline constexpr const char* kIndependentSamples = "Independent_Samples";
}  // namespace FamilyName

constexpr const char* FamilyNameOf(TestFamily family) {
    if (family == TestFamily::kOneSample) return FamilyName::kOneSample;
    return family == TestFamily::kRelated ? FamilyName::kRelatedSamples : FamilyName::kIndependentSamples;
}

/// A test of a hypothesis ends in a decision; an estimate has limits and decides nothing.
enum class ResultType { kHypothesisTest, kConfidenceInterval };

/// What a test works on. One of numbers takes an ordinal field by its copy in numbers.
enum class FieldsTaken { kNumbers, kCategories, kOrderedCategories, kNumbersOrCategories };
/// How many fields one entry of a test holds, without that of the groups.
enum class FieldCount { kOne, kPair, kTwoOrMore };

/// The significance on which a decision rests.
enum class DecidingSignificance {
    kNone,                 ///< an estimate
    kAsymptotic,           ///< also where an exact one stands beside it
    kExactIfComputed,      ///< else the asymptotic one
    kFisherOrCorrected,    ///< Fisher's exact one, else the one corrected for continuity, else the asymptotic one
    kAsymptoticOfLastSet,  ///< of the second of two sets of statistics
    kExactOfLastSet        ///< likewise
};

/// The parameters of a test's condition that stand for fields and categories, by their positions. All others are
/// numbers of the hypothesis.
struct ConditionParameters {
    static constexpr int kNone = -1;

    int fields = 0;  ///< the test field, the first one of a pair, or a list of all
    int secondField = kNone;
    int groupField = kNone;
    /// The categories of the test field's two classes. Where a cut point makes the classes it stands in place of the
    /// first, and the second is no category.
    int firstClass = kNone;
    int secondClass = kNone;
};

/// One test. The engine names it in three places, mostly alike: as a setting of a plan, in its result, in a request.
struct TestFacts {
    std::string_view resultName;
    int codeGroup;  ///< of its status codes: 2209 of 220903
    /// The settings of a plan that ask for the test, where there are several; else `resultName` is the one.
    std::span<const std::string_view> severalSettings = {};
    /// Its key in a request. Where it has several settings each is a key, and this is how they begin. Empty if a
    /// request asks for it within another test.
    std::string_view requestName = resultName;
    /// As a user types it; empty for a test that can't be named. A name may stand in two families.
    std::string_view userName;
    TestFamily family;
    ResultType type = ResultType::kHypothesisTest;
    FieldsTaken takes = FieldsTaken::kNumbers;
    FieldCount fieldCount = FieldCount::kOne;
    DecidingSignificance deciding = DecidingSignificance::kAsymptotic;
    ConditionParameters condition = {};
    bool comparesSamples = false;  ///< all pairs of samples, or homogeneous subsets, on request
    bool hasBoxPlots = false;      ///< of its groups
    std::string_view method;       ///< its English name, as textbooks have it
    std::string_view source;       ///< authors and years

    constexpr std::span<const std::string_view> Settings() const {
        return severalSettings.empty() ? std::span(&resultName, 1) : severalSettings;
    }
    /// The one setting of a test that has no more.
    constexpr std::string_view Setting() const { return resultName; }
    constexpr bool IsEstimate() const { return type == ResultType::kConfidenceInterval; }
};

/// The settings of the Kolmogorov-Smirnov test of one sample: one for each distribution.
namespace KolmogorovSmirnovSetting {
inline constexpr std::string_view kNormal = "OKolmogorovSmirnovNormal";
inline constexpr std::string_view kUniform = "OKolmogorovSmirnovUniform";
inline constexpr std::string_view kPoisson = "OKolmogorovSmirnovPoisson";
inline constexpr std::string_view kExponential = "OKolmogorovSmirnovExponential";
inline constexpr std::string_view kAll[] = {kNormal, kUniform, kPoisson, kExponential};
}  // namespace KolmogorovSmirnovSetting

namespace Tests {

// ---- One sample ----

inline constexpr TestFacts kKolmogorovSmirnov{
    .resultName = "OKolmogorovSmirnov",
    .codeGroup = 2203,
    .severalSettings = KolmogorovSmirnovSetting::kAll,
    .userName = "kolmogorov-smirnov",
    .family = TestFamily::kOneSample,
    .method = "Kolmogorov-Smirnov test of one sample",
    .source = "Kolmogorov (1933); Smirnov (1948); Lilliefors (1967); Dallal and Wilkinson (1986)",
};
inline constexpr TestFacts kBinomial{
    .resultName = "OBinomial",
    .codeGroup = 2213,
    .userName = "binomial",
    .family = TestFamily::kOneSample,
    .takes = FieldsTaken::kNumbersOrCategories,
    .condition = {.firstClass = 1, .secondClass = 2},
    .method = "Binomial test",
    .source = "Bernoulli (1713); Yates (1934)",
};
inline constexpr TestFacts kProportionIntervals{
    .resultName = "OEstimateConfidenceInterval",
    .codeGroup = 2215,
    .requestName = "",
    .userName = "",
    .family = TestFamily::kOneSample,
    .type = ResultType::kConfidenceInterval,
    .takes = FieldsTaken::kNumbersOrCategories,
    .deciding = DecidingSignificance::kNone,
    .condition = {.firstClass = 1},
    .method = "Confidence intervals of a proportion",
    .source = "Clopper and Pearson (1934); Brown, Cai and DasGupta (2001); Venzon and Moolgavkar (1988)",
};
inline constexpr TestFacts kChiSquare{
    .resultName = "OChiSquare",
    .codeGroup = 2202,
    .userName = "chi-square",
    .family = TestFamily::kOneSample,
    .takes = FieldsTaken::kCategories,
    .method = "Chi-square test",
    .source = "Pearson (1900)",
};
inline constexpr TestFacts kRuns{
    .resultName = "ORuns",
    .codeGroup = 2201,
    .userName = "runs",
    .family = TestFamily::kOneSample,
    .takes = FieldsTaken::kNumbersOrCategories,
    .condition = {.firstClass = 1, .secondClass = 2},
    .method = "Runs test",
    .source = "Wald and Wolfowitz (1940)",
};
inline constexpr TestFacts kWilcoxonOneSample{
    .resultName = "OWilcoxonSignedRanks",
    .codeGroup = 2208,
    .userName = "wilcoxon",
    .family = TestFamily::kOneSample,
    .method = "Wilcoxon signed rank test",
    .source = "Wilcoxon (1945)",
};

// ---- Related samples ----

inline constexpr ConditionParameters kPairOfFields{.secondField = 1};

inline constexpr TestFacts kSign{
    .resultName = "RSign",
    .codeGroup = 2209,
    .userName = "sign",
    .family = TestFamily::kRelated,
    .fieldCount = FieldCount::kPair,
    .deciding = DecidingSignificance::kExactIfComputed,
    .condition = kPairOfFields,
    .method = "Sign test",
    .source = "Arbuthnott (1710); Dixon and Mood (1946)",
};
inline constexpr TestFacts kWilcoxonPairs{
    .resultName = "RWilcoxonSignedRanks",
    .codeGroup = 2210,
    .userName = "wilcoxon",
    .family = TestFamily::kRelated,
    .fieldCount = FieldCount::kPair,
    .condition = kPairOfFields,
    .method = "Wilcoxon signed rank test of matched pairs",
    .source = "Wilcoxon (1945)",
};
inline constexpr TestFacts kHodgesLehmannPairs{
    .resultName = "RHodgesLehmannEstimatePairs",
    .codeGroup = 2224,
    .userName = "hodges-lehmann",
    .family = TestFamily::kRelated,
    .type = ResultType::kConfidenceInterval,
    .fieldCount = FieldCount::kPair,
    .deciding = DecidingSignificance::kNone,
    .condition = kPairOfFields,
    .method = "Hodges-Lehmann estimate of matched pairs",
    .source = "Hodges and Lehmann (1963)",
};
inline constexpr TestFacts kFriedman{
    .resultName = "RFriedmansTwoWayByRanks",
    .codeGroup = 2218,
    .userName = "friedman",
    .family = TestFamily::kRelated,
    .fieldCount = FieldCount::kTwoOrMore,
    .comparesSamples = true,
    .method = "Friedman's two-way analysis of variance by ranks",
    .source = "Friedman (1937)",
};
inline constexpr TestFacts kKendall{
    .resultName = "RKendallsCoefficient",
    .codeGroup = 2219,
    .userName = "kendall",
    .family = TestFamily::kRelated,
    .fieldCount = FieldCount::kTwoOrMore,
    .comparesSamples = true,
    .method = "Kendall's coefficient of concordance",
    .source = "Kendall and Babington Smith (1939)",
};
inline constexpr TestFacts kMcNemar{
    .resultName = "RMcNemar",
    .codeGroup = 2216,
    .userName = "mcnemar",
    .family = TestFamily::kRelated,
    .takes = FieldsTaken::kCategories,
    .fieldCount = FieldCount::kPair,
    .condition = kPairOfFields,
    .method = "McNemar's test",
    .source = "McNemar (1947); Edwards (1948)",
};
inline constexpr TestFacts kCochran{
    .resultName = "RCochransQ",
    .codeGroup = 2212,
    .userName = "cochran",
    .family = TestFamily::kRelated,
    .takes = FieldsTaken::kCategories,
    .fieldCount = FieldCount::kTwoOrMore,
    .comparesSamples = true,
    .method = "Cochran's Q test",
    .source = "Cochran (1950)",
};
inline constexpr TestFacts kMarginalHomogeneity{
    .resultName = "RMarginalHomogeneity",
    .codeGroup = 2217,
    .userName = "marginal-homogeneity",
    .family = TestFamily::kRelated,
    .takes = FieldsTaken::kOrderedCategories,
    .fieldCount = FieldCount::kPair,
    .condition = kPairOfFields,
    .method = "Marginal homogeneity test",
    .source = "Stuart (1955); Agresti (1983)",
};

// ---- Independent samples ----

inline constexpr ConditionParameters kFieldAndGroups{.groupField = 1};

inline constexpr TestFacts kMannWhitney{
    .resultName = "IMannWhitneyU",
    .codeGroup = 2207,
    .userName = "mann-whitney",
    .family = TestFamily::kIndependent,
    .deciding = DecidingSignificance::kExactIfComputed,
    .condition = kFieldAndGroups,
    .method = "Mann-Whitney U test",
    .source = "Mann and Whitney (1947); Dinneen and Blakesley (1973)",
};
inline constexpr TestFacts kKolmogorovSmirnovTwoSample{
    .resultName = "IKolmogorovSmirnov",
    .codeGroup = 2220,
    .userName = "kolmogorov-smirnov",
    .family = TestFamily::kIndependent,
    .condition = kFieldAndGroups,
    .method = "Kolmogorov-Smirnov test of two samples",
    .source = "Smirnov (1939); Smirnov (1948)",
};
inline constexpr TestFacts kWaldWolfowitz{
    .resultName = "IWaldWolfowitzRuns",
    .codeGroup = 2214,
    .userName = "wald-wolfowitz",
    .family = TestFamily::kIndependent,
    .deciding = DecidingSignificance::kAsymptoticOfLastSet,
    .condition = kFieldAndGroups,
    .method = "Wald-Wolfowitz runs test",
    .source = "Wald and Wolfowitz (1940)",
};
inline constexpr TestFacts kMoses{
    .resultName = "IMoses",
    .codeGroup = 2211,
    .userName = "moses",
    .family = TestFamily::kIndependent,
    .deciding = DecidingSignificance::kExactOfLastSet,
    .condition = kFieldAndGroups,
    .hasBoxPlots = true,
    .method = "Moses test of extreme reactions",
    .source = "Moses (1952)",
};
inline constexpr TestFacts kHodgesLehmannGroups{
    .resultName = "IHodgesLehmannEstimateGroups",
    .codeGroup = 2225,
    .requestName = "IHodgesLehmannEstimateIndependent",
    .userName = "hodges-lehmann",
    .family = TestFamily::kIndependent,
    .type = ResultType::kConfidenceInterval,
    .deciding = DecidingSignificance::kNone,
    .condition = kFieldAndGroups,
    .method = "Hodges-Lehmann estimate of two groups",
    .source = "Hodges and Lehmann (1963); Lehmann (1963)",
};
inline constexpr TestFacts kKruskalWallis{
    .resultName = "IKruskalWallis",
    .codeGroup = 2221,
    .userName = "kruskal-wallis",
    .family = TestFamily::kIndependent,
    .condition = kFieldAndGroups,
    .comparesSamples = true,
    .hasBoxPlots = true,
    .method = "Kruskal-Wallis test",
    .source = "Kruskal and Wallis (1952); Dunn (1964); Campbell and Skillings (1985)",
};
inline constexpr TestFacts kJonckheereTerpstra{
    .resultName = "IJonckheereTerpstra",
    .codeGroup = 2222,
    .userName = "jonckheere",
    .family = TestFamily::kIndependent,
    .condition = kFieldAndGroups,
    .comparesSamples = true,
    .hasBoxPlots = true,
    .method = "Jonckheere-Terpstra test",
    .source = "Terpstra (1952); Jonckheere (1954)",
};
inline constexpr TestFacts kMedian{
    .resultName = "IMedian",
    .codeGroup = 2223,
    .requestName = "IKMedian",
    .userName = "median",
    .family = TestFamily::kIndependent,
    .deciding = DecidingSignificance::kFisherOrCorrected,
    .condition = kFieldAndGroups,
    .comparesSamples = true,
    .hasBoxPlots = true,
    .method = "Median test",
    .source = "Mood (1950); Brown and Mood (1951)",
};

/// All tests, family by family, in the order in which a request of the command lists them. Those that want their field
/// sorted come first in a family: the engine has a median only once one of them is planned.
inline constexpr const TestFacts* kAll[] = {
    &kKolmogorovSmirnov,
    &kBinomial,
    &kProportionIntervals,
    &kChiSquare,
    &kRuns,
    &kWilcoxonOneSample,
    &kSign,
    &kWilcoxonPairs,
    &kHodgesLehmannPairs,
    &kFriedman,
    &kKendall,
    &kMcNemar,
    &kCochran,
    &kMarginalHomogeneity,
    &kMannWhitney,
    &kKolmogorovSmirnovTwoSample,
    &kWaldWolfowitz,
    &kMoses,
    &kHodgesLehmannGroups,
    &kKruskalWallis,
    &kJonckheereTerpstra,
    &kMedian,
};

/// The test of that name in a result, in a plan, in a request; null for none.
constexpr const TestFacts* OfResult(std::string_view name) {
    for (const TestFacts* const test : kAll) {
        if (test->resultName == name) return test;
    }
    return nullptr;
}
constexpr const TestFacts* OfSetting(std::string_view name) {
    for (const TestFacts* const test : kAll) {
        for (const std::string_view setting : test->Settings()) {
            if (setting == name) return test;
        }
    }
    return nullptr;
}
constexpr const TestFacts* OfRequest(std::string_view name) {
    for (const TestFacts* const test : kAll) {
        if (test->requestName.empty()) continue;
        if (test->severalSettings.empty() ? test->requestName == name : OfSetting(name) == test) return test;
    }
    return nullptr;
}

}  // namespace Tests
