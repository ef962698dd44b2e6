// The one-sample family of the settings expansion. Expected entries are written out by hand, each with all its keys.

#include <gtest/gtest.h>

#include "tests/selection/Selection.h"

namespace selection {

namespace {

/// A table with a field of each sort. "ord" is ordinal and has a copy; "plain" is ordinal and has none.
harness::Fields EverySort() {
    harness::Fields fields;
    fields.Continuous("x").Numeric("nom", {0, 1}).Numeric("ord", {1, 2, 3}, true).Continuous("$_ord");
    fields.Numeric("plain", {1, 2}, true).Text("s", {"a", "b"}).Text("so", {"a", "b"}, true).Other("other");
    return fields;
}

const Renamed kRenamed{{"ord", "$_ord"}};

/// One test over these fields, with a key behind it, so that warnings are issued.
Expanded ExpandTest(const Names& names, const Item& test) {
    harness::Fields fields = EverySort();
    return Expand(Tree({{"oneSampleVariables", names}, {"isAutomaticallyOneSample", false}, test, {"done", true}}),
                  fields, kRenamed);
}

// ---- Binomial test and intervals ----

TEST(ExpansionBinomial, CategoricalAndOtherFields) {
    const Expanded result = ExpandTest({"nom", "nowhere", "x", "s", "other"},
                                       Selected("OBinomial", {{"contVarClassFormation", "givenCutPoint"},
                                                              {"givenCutPoint", 7.5},
                                                              {"testProbability", 0.25},
                                                              {"givenCategoryList", Names{"1", "2"}},
                                                              {"catVarClassFormation", "givenCategoryList"}}));
    const std::string categorical =
        ", testProbability 0.25, catVarClassFormation 'givenCategoryList', givenCategoryList ['1', '2']";
    const std::string other = ", testProbability 0.25, contVarClassFormation 'givenCutPoint', givenCutPoint 7.5";
    EXPECT_EQ(result.entries,
              (Lines{"OBinomial: AlgorithmName 'OBinomial', variableName 'nom', testIndex 0" + categorical,
                     "OBinomial: AlgorithmName 'OBinomial', variableName 'x', testIndex 1" + other,
                     "OBinomial: AlgorithmName 'OBinomial', variableName 's', testIndex 2" + categorical,
                     "OBinomial: AlgorithmName 'OBinomial', variableName 'other', testIndex 3" + other}));
    EXPECT_EQ(result.warnings, Lines{});
}

TEST(ExpansionBinomial, Defaults) {
    EXPECT_EQ(ExpandTest({"nom", "x"}, Selected("OBinomial")).entries,
              (Lines{"OBinomial: AlgorithmName 'OBinomial', variableName 'nom', testIndex 0, testProbability 0.5, "
                     "catVarClassFormation '', givenCategoryList []",
                     "OBinomial: AlgorithmName 'OBinomial', variableName 'x', testIndex 1, testProbability 0.5, "
                     "contVarClassFormation ''"}));
}

TEST(ExpansionIntervals, FollowTheBinomialEntryOfTheSameField) {
    const Expanded result = ExpandTest({"nom", "x"}, Selected("OBinomial", {{"isDoJeffreys", true},
                                                                            {"catVarClassFormation", "getFromData"},
                                                                            {"contVarClassFormation", "sampleMidPoint"},
                                                                            {"givenCategoryList", Names{"1"}}}));
    ASSERT_EQ(result.entries.size(), 4u);
    EXPECT_EQ(result.Plan(), (Lines{"OBinomial nom", "OEstimateConfidenceInterval nom", "OBinomial x",
                                    "OEstimateConfidenceInterval x"}));
    EXPECT_EQ(result.entries[1],
              "OEstimateConfidenceInterval: AlgorithmName 'OEstimateConfidenceInterval', variableName 'nom', "
              "isDoClopperPearson 0, isDoJeffreys 1, isDoProfileLikelihood 0, testIndex 1, "
              "catVarClassFormation 'getFromData', givenCategoryList ['1']");
    // Unlike that of the binomial test, this entry always has a cut point.
    EXPECT_EQ(result.entries[3],
              "OEstimateConfidenceInterval: AlgorithmName 'OEstimateConfidenceInterval', variableName 'x', "
              "isDoClopperPearson 0, isDoJeffreys 1, isDoProfileLikelihood 0, testIndex 3, "
              "contVarClassFormation 'sampleMidPoint', givenCutPoint missing");
}

TEST(ExpansionIntervals, OneMethodIsEnough) {
    for (const char* method : {"isDoClopperPearson", "isDoJeffreys", "isDoProfileLikelihood"}) {
        const Expanded result = ExpandTest({"x"}, Selected("OBinomial", {{method, true}, {"givenCutPoint", 2}}));
        ASSERT_EQ(result.entries.size(), 2u) << method;
        EXPECT_NE(result.entries[1].find(std::string(method) + " 1"), std::string::npos) << result.entries[1];
        EXPECT_NE(result.entries[1].find("givenCutPoint 2"), std::string::npos) << result.entries[1];
    }
    EXPECT_EQ(ExpandTest({"x"}, Selected("OBinomial", {{"isDoJeffreys", false}})).entries.size(), 1u);
}

// ---- Chi-square ----

TEST(ExpansionChiSquare, TakesTheCategoricalFields) {
    const Lists custom{Tree({{"category", "0"}, {"frequency", 2.0}}), Tree({{"category", "1"}})};
    const Expanded result = ExpandTest({"s", "other", "ord", "nowhere"},
                                       Selected("OChiSquare", {{"custom", custom}, {"classFormation", "given"}}));
    const std::string keys = ", classFormation 'given', custom [{category '0', frequency 2}, {category '1'}]";
    EXPECT_EQ(result.entries,
              (Lines{"OChiSquare: AlgorithmName 'OChiSquare', variableName 's', testIndex 0" + keys,
                     "OChiSquare: AlgorithmName 'OChiSquare', variableName 'ord', testIndex 1" + keys}));
    EXPECT_EQ(result.warnings, Lines{});
}

TEST(ExpansionChiSquare, DefaultsAndContinuousFields) {
    const Expanded result = ExpandTest({"x", "nom", "$_ord"}, Selected("OChiSquare"));
    EXPECT_EQ(result.entries, (Lines{"OChiSquare: AlgorithmName 'OChiSquare', variableName 'nom', testIndex 0, "
                                     "classFormation '', custom []"}));
    EXPECT_EQ(result.warnings, (Lines{"220021 [x ,$_ord]"}));
}

// ---- Runs ----

TEST(ExpansionRuns, CategoricalAndOtherFields) {
    const Expanded result =
        ExpandTest({"nom", "x", "nowhere", "other"}, Selected("ORuns", {{"catVarClassFormation", "givenCategoryList"},
                                                                        {"givenCategoryList", Names{"1"}},
                                                                        {"contVarClassFormation", "cutPointValue"},
                                                                        {"cutPointValue", 3.0}}));
    const std::string other = ", contVarClassFormation 'cutPointValue', cutPointValue 3";
    EXPECT_EQ(result.entries, (Lines{"ORuns: AlgorithmName 'ORuns', variableName 'nom', testIndex 0, "
                                     "catVarClassFormation 'givenCategoryList', givenCategoryList ['1']",
                                     "ORuns: AlgorithmName 'ORuns', variableName 'x', testIndex 1" + other,
                                     "ORuns: AlgorithmName 'ORuns', variableName 'other', testIndex 2" + other}));
}

TEST(ExpansionRuns, KeysThatTheRequestLacks) {
    EXPECT_EQ(ExpandTest({"nom", "x"}, Selected("ORuns", {{"cutPointValue", 3.0}})).entries,
              (Lines{"ORuns: AlgorithmName 'ORuns', variableName 'nom', testIndex 0, catVarClassFormation '', "
                     "givenCategoryList []",
                     "ORuns: AlgorithmName 'ORuns', variableName 'x', testIndex 1"}))
        << "a cut point counts only beside the formation";
    EXPECT_EQ(ExpandTest({"x"}, Selected("ORuns", {{"contVarClassFormation", "cutPointMean"}})).entries,
              (Lines{"ORuns: AlgorithmName 'ORuns', variableName 'x', testIndex 0, "
                     "contVarClassFormation 'cutPointMean'"}));
}

// ---- Kolmogorov-Smirnov ----

struct DistributionCase {
    const char* test;
    const char* keysWithoutAny;
    const char* keys;
};

void PrintTo(const DistributionCase& distribution, std::ostream* out) {
    *out << distribution.test;
}

class ExpansionKolmogorovSmirnov : public testing::TestWithParam<DistributionCase> {};

TEST_P(ExpansionKolmogorovSmirnov, EntryOfAContinuousField) {
    const std::string test = GetParam().test;
    const std::string begin = test + ": variableName 'x', testIndex 0, isUseSample ";
    EXPECT_EQ(ExpandTest({"x"}, Selected(test)).entries, (Lines{begin + "0, " + GetParam().keysWithoutAny}));
    const std::vector<Item> keys{{"isUseSample", true}, {"mean", 1.5}, {"stdDev", 2}, {"max", 9.0}, {"min", -1.0}};
    EXPECT_EQ(ExpandTest({"x"}, Selected(test, keys)).entries, (Lines{begin + "1, " + GetParam().keys}));
}

TEST_P(ExpansionKolmogorovSmirnov, AnOrdinalNumericFieldUnderItsEncodedName) {
    const std::string test = GetParam().test;
    const Expanded result = ExpandTest({"ord"}, Selected(test));
    EXPECT_EQ(result.entries, (Lines{test +
                                     ": variableName '$_ord', testIndex 0, originVariableName 'ord', "
                                     "isUseSample 0, " +
                                     GetParam().keysWithoutAny}));
    EXPECT_EQ(result.warnings, Lines{});
}

TEST_P(ExpansionKolmogorovSmirnov, AStringFieldIsRejectedAndNoTestIsNamed) {
    const Expanded result = ExpandTest({"x", "s"}, Selected(GetParam().test));
    EXPECT_EQ(result.entries.size(), 1u);
    EXPECT_EQ(result.warnings, (Lines{"220023 [s] []"}));
}

INSTANTIATE_TEST_SUITE_P(
    FourDistributions, ExpansionKolmogorovSmirnov,
    testing::Values(
        DistributionCase{"OKolmogorovSmirnovNormal",
                         "mean missing, stdDev missing, AlgorithmName 'OKolmogorovSmirnovNormal', "
                         "distributionFunction 'normal'",
                         "mean 1.5, stdDev 2, AlgorithmName 'OKolmogorovSmirnovNormal', distributionFunction 'normal'"},
        DistributionCase{"OKolmogorovSmirnovUniform",
                         "max missing, min missing, AlgorithmName 'OKolmogorovSmirnovUniform', "
                         "distributionFunction 'uniform'",
                         "max 9, min -1, AlgorithmName 'OKolmogorovSmirnovUniform', distributionFunction 'uniform'"},
        DistributionCase{"OKolmogorovSmirnovPoisson",
                         "mean missing, AlgorithmName 'OKolmogorovSmirnovPoisson', distributionFunction 'poisson'",
                         "mean 1.5, AlgorithmName 'OKolmogorovSmirnovPoisson', distributionFunction 'poisson'"},
        DistributionCase{"OKolmogorovSmirnovExponential",
                         "mean missing, AlgorithmName 'OKolmogorovSmirnovExponential', "
                         "distributionFunction 'exponential'",
                         "mean 1.5, AlgorithmName 'OKolmogorovSmirnovExponential', "
                         "distributionFunction 'exponential'"}),
    [](const auto& distribution) { return std::string(distribution.param.test); });

// ---- Wilcoxon ----

TEST(ExpansionWilcoxonOneSample, Entries) {
    EXPECT_EQ(ExpandTest({"ord", "x"}, Selected("OWilcoxonSignedRanks")).entries,
              (Lines{"OWilcoxonSignedRanks: AlgorithmName 'OWilcoxonSignedRanks', variableName '$_ord', testIndex 0, "
                     "originVariableName 'ord', userSpecifyTestValue 0, testValue missing",
                     "OWilcoxonSignedRanks: AlgorithmName 'OWilcoxonSignedRanks', variableName 'x', testIndex 1, "
                     "userSpecifyTestValue 0, testValue missing"}));
    EXPECT_EQ(
        ExpandTest({"x"}, Selected("OWilcoxonSignedRanks", {{"testValue", 3}, {"userSpecifyTestValue", true}})).entries,
        (Lines{"OWilcoxonSignedRanks: AlgorithmName 'OWilcoxonSignedRanks', variableName 'x', testIndex 0, "
               "userSpecifyTestValue 1, testValue 3"}));
}

// ---- Rejected fields ----

const Names kRejected{"nom", "plain", "s", "so", "other", "nowhere"};
const std::string kRejectedText = "nom ,plain ,s ,so ,other ,nowhere";

TEST(ExpansionRejection, KolmogorovSmirnovNamesItselfForEachFieldOfNumericCategories) {
    EXPECT_EQ(
        ExpandTest(kRejected, Selected("OKolmogorovSmirnovNormal")).warnings,
        (Lines{"220022 [KolmogorovSmirnov]", "220023 [" + kRejectedText + "] [KolmogorovSmirnov ,KolmogorovSmirnov]"}));
}

TEST(ExpansionRejection, WilcoxonNamesItselfForEachRejectedField) {
    Names names = kRejected;
    names.push_back("x");
    const std::string w = "WilcoxonSignedRanks";
    EXPECT_EQ(
        ExpandTest(names, Selected("OWilcoxonSignedRanks")).warnings,
        (Lines{"220023 [" + kRejectedText + "] [" + w + " ," + w + " ," + w + " ," + w + " ," + w + " ," + w + "]"}));
}

TEST(ExpansionRejection, AFieldIsListedOnceButTheTestsRepeatedly) {
    harness::Fields fields = EverySort();
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"nom", "s"}},
                                         {"isAutomaticallyOneSample", false},
                                         Selected("OKolmogorovSmirnovPoisson"),
                                         Selected("OWilcoxonSignedRanks"),
                                         Selected("OKolmogorovSmirnovUniform"),
                                         {"done", true}}),
                                   fields);
    EXPECT_EQ(result.warnings, (Lines{"220022 [KolmogorovSmirnov ,WilcoxonSignedRanks ,KolmogorovSmirnov]",
                                      "220023 [nom ,s] [KolmogorovSmirnov ,WilcoxonSignedRanks ,WilcoxonSignedRanks ,"
                                      "KolmogorovSmirnov]"}));
}

TEST(ExpansionRejection, AnEncodedNameServesAnOrdinalNumericFieldAlone) {
    harness::Fields fields = EverySort();
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"nom", "so"}},
                                         {"isAutomaticallyOneSample", false},
                                         Selected("OKolmogorovSmirnovNormal"),
                                         {"done", true}}),
                                   fields, {{"nom", "x"}, {"so", "x"}});
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, (Lines{"220022 [KolmogorovSmirnov]", "220023 [nom ,so] [KolmogorovSmirnov]"}));
}

// ---- Warnings ----

const std::vector<Item> kThreeWarnings{{"oneSampleVariables", Names{"s", "x", "other"}},
                                       {"isAutomaticallyOneSample", false},
                                       Selected("OWilcoxonSignedRanks"),
                                       Selected("OChiSquare")};

TEST(ExpansionOneSampleWarnings, ComeInTheirOrder) {
    harness::Fields fields = EverySort();
    std::vector<Item> request = kThreeWarnings;
    request.push_back({"done", true});
    EXPECT_EQ(Expand(Tree(request), fields).warnings,
              (Lines{"220021 [x]", "220023 [s ,other] [WilcoxonSignedRanks ,WilcoxonSignedRanks]"}));
}

TEST(ExpansionOneSampleWarnings, NoneWhereTheRequestEndsWithTheTests) {
    harness::Fields fields = EverySort();
    const Expanded result = Expand(Tree(kThreeWarnings), fields);
    EXPECT_EQ(result.Plan(), (Lines{"OWilcoxonSignedRanks x", "OChiSquare s"}));
    EXPECT_EQ(result.warnings, Lines{});
}

TEST(ExpansionOneSampleWarnings, NoneOfChiSquareWhereItIsNotSelected) {
    EXPECT_EQ(ExpandTest({"x"}, NotSelected("OChiSquare")).warnings, Lines{});
}

}  // namespace

}  // namespace selection
