// The expansion of a request: the keys of the run, the walk over the families, the automatic branch.

#include <gtest/gtest.h>

#include "tests/selection/Selection.h"

namespace selection {

namespace {

// ---- Keys of the run ----

TEST(Expansion, AConfidenceLevelOf95Is095) {
    harness::Fields fields;
    EXPECT_EQ(Expand(Tree({{"confidenceLevel", 95.0}}), fields).globals, "confidenceLevel 0.95");
    EXPECT_EQ(Expand(Tree({{"confidenceLevel", 90}}), fields).globals, "confidenceLevel 0.9");
}

TEST(Expansion, KeysOfTheRunComeInTheOrderOfTheRequest) {
    harness::Fields fields;
    const Expanded result = Expand(Tree({{"caseIDField", "id"},
                                         {"sigLevel", 0.01},
                                         {"userMissing", "exclude"},
                                         {"confidenceLevel", 99},
                                         {"missingTreatment", "listwise"}}),
                                   fields);
    EXPECT_EQ(result.globals,
              "caseIDVariableName 'id', sigLevel 0.01, confidenceLevel 0.99, missingTreatment 'listwise'");
}

TEST(Expansion, KeysThatTheRequestLacksAreNotWritten) {
    harness::Fields fields;
    EXPECT_EQ(Expand(Tree({{"oneSampleVariables", Names{"x"}}}), fields).globals, "");
}

TEST(Expansion, LevelsThatAreNoNumbersTakeTheirDefaults) {
    harness::Fields fields;
    // The confidence level's default is divided like the percentage that it stands for.
    const Expanded result = Expand(Tree({{"sigLevel", "small"}, {"confidenceLevel", "high"}}), fields);
    EXPECT_EQ(result.globals, "sigLevel 0.05, confidenceLevel 0.0095");
}

TEST(Expansion, KeysOfTheRunAreReadWhereverTheyStand) {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y").Numeric("g", {0, 1});
    const Expanded result = Expand(Tree({{"isAutomaticallyIndependent", true},
                                         {"isAutomaticallyRelated", true},
                                         {"isAutomaticallyOneSample", true},
                                         {"groupVariable", Names{"g", "x"}},
                                         {"oneSampleVariables", Names{"x"}},
                                         {"relatedVariables", Names{"x", "y"}},
                                         {"independentVariables", Names{"y"}},
                                         {"sigLevel", 0.1}}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"IMannWhitneyU y", "RWilcoxonSignedRanks x, y", "OKolmogorovSmirnovNormal x"}));
    EXPECT_EQ(result.globals, "sigLevel 0.1");
    EXPECT_TRUE(result.status.IsOK());
}

// ---- The outcome ----

TEST(Expansion, FieldListsEmptyInAllThreeFamilies) {
    harness::Fields fields;
    fields.Continuous("x");
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{}},
                                         {"relatedVariables", Names{}},
                                         {"independentVariables", Names{}},
                                         {"groupVariable", Names{"x"}},
                                         {"isAutomaticallyOneSample", true},
                                         {"isAutomaticallyRelated", false},
                                         Selected("RSign"),
                                         {"isAutomaticallyIndependent", true},
                                         {"done", true}}),
                                   fields);
    EXPECT_TRUE(result.status.IsError());
    EXPECT_EQ(result.status.GetErrorCode(), 220001);
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, Lines{});
}

TEST(Expansion, WithoutAnEntryTheWarningsStand) {
    harness::Fields fields;
    fields.Text("s", {"a", "b"});
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"s"}},
                                         {"isAutomaticallyOneSample", false},
                                         Selected("OWilcoxonSignedRanks"),
                                         {"done", true}}),
                                   fields);
    EXPECT_EQ(result.status.GetErrorCode(), 220001);
    EXPECT_EQ(result.warnings, (Lines{"220022 [WilcoxonSignedRanks]", "220023 [s] [WilcoxonSignedRanks]"}));
}

TEST(Expansion, AFamilyWithoutItsKeyDoesNotRun) {
    harness::Fields fields;
    fields.Continuous("x");
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"x"}}, Selected("OBinomial")}), fields);
    EXPECT_EQ(result.status.GetErrorCode(), 220001);
}

// ---- The walk ----

TEST(ExpansionWalk, TheOrderOfTheFamiliesIsThatOfTheirKeys) {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y").Numeric("g", {0, 1});
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"x"}},
                                         {"relatedVariables", Names{"x", "y"}},
                                         {"independentVariables", Names{"y"}},
                                         {"groupVariable", Names{"g"}},
                                         {"isAutomaticallyIndependent", false},
                                         Selected("IKruskalWallis"),
                                         {"isAutomaticallyRelated", false},
                                         Selected("RSign"),
                                         {"isAutomaticallyOneSample", false},
                                         Selected("OBinomial")}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"IKruskalWallis y", "RSign x, y", "OBinomial x"}));
}

TEST(ExpansionWalk, AnotherKeyAmongTheTestsEndsTheFamily) {
    harness::Fields fields;
    fields.Continuous("x");
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"x"}},
                                         {"isAutomaticallyOneSample", false},
                                         Selected("OBinomial"),
                                         {"between", 1},
                                         Selected("ORuns")}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"OBinomial x"}));
}

TEST(ExpansionWalk, ATestOfAnotherFamilyEndsTheFamily) {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y");
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"x"}},
                                         {"relatedVariables", Names{"x", "y"}},
                                         {"isAutomaticallyOneSample", false},
                                         Selected("RSign"),
                                         {"isAutomaticallyRelated", false},
                                         Selected("RSign")}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"RSign x, y"}));
}

TEST(ExpansionWalk, TheTestsOfAFamilyWithoutFieldsArePassedOver) {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y");
    const Expanded result = Expand(Tree({{"relatedVariables", Names{"x", "y"}},
                                         {"isAutomaticallyOneSample", false},
                                         Selected("OBinomial"),
                                         {"isAutomaticallyRelated", false},
                                         Selected("RSign")}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"RSign x, y"}));
}

TEST(ExpansionWalk, TestsStandBehindTheirFamilysKey) {
    harness::Fields fields;
    fields.Continuous("x");
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"x"}},
                                         Selected("OBinomial"),
                                         {"isAutomaticallyOneSample", false},
                                         Selected("ORuns")}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"ORuns x"}));
}

TEST(ExpansionWalk, TwoSelectedTestsAndTwoFieldsMakeFourEntriesInTheOrderOfTestsThenFields) {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y");
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"y", "x"}},
                                         {"isAutomaticallyOneSample", false},
                                         Selected("ORuns"),
                                         NotSelected("OChiSquare"),
                                         Selected("OBinomial")}),
                                   fields);
    EXPECT_EQ(result.Plan(), (Lines{"ORuns y", "ORuns x", "OBinomial y", "OBinomial x"}));
    ASSERT_EQ(result.entries.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NE(result.entries[i].find("testIndex " + std::to_string(i)), std::string::npos) << result.entries[i];
    }
}

TEST(ExpansionWalk, ATestWithoutSettingsOrFlagIsNotSelected) {
    harness::Fields fields;
    fields.Continuous("x");
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"x"}},
                                         {"isAutomaticallyOneSample", false},
                                         {"OBinomial", true},
                                         {"ORuns", Tree({{"contVarClassFormation", "cutPointMean"}})},
                                         {"done", true}}),
                                   fields);
    EXPECT_EQ(result.entries, Lines{});
    EXPECT_EQ(result.warnings, Lines{});
}

// ---- The automatic branch ----

TEST(ExpansionAutomatic, TheSelectedFlagsAreIgnored) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("two", {0, 1}).Text("one", {"a"});
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"two", "one", "nowhere", "x"}},
                                         {"isAutomaticallyOneSample", true},
                                         Selected("ORuns"),
                                         Selected("OChiSquare"),
                                         {"done", true}}),
                                   fields);
    EXPECT_EQ(
        result.entries,
        (Lines{"OBinomial: algorithmName 'OBinomial', classFormation 'getFromData', variableName 'two', testIndex 0",
               "OKolmogorovSmirnovNormal: algorithmName 'OKolmogorovSmirnovNormal', classFormation 'getFromData', "
               "distributionFunction 'normal', isUseSample 'true', variableName 'x', testIndex 1"}));
    EXPECT_EQ(result.warnings, Lines{}) << "of the unselected fields no word is said";
}

TEST(ExpansionAutomatic, TheFlagIsTrueWhereItCannotBeRead) {
    harness::Fields fields;
    fields.Continuous("x");
    const Expanded result = Expand(
        Tree({{"oneSampleVariables", Names{"x"}}, {"isAutomaticallyOneSample", "perhaps"}, Selected("ORuns")}), fields);
    EXPECT_EQ(result.Plan(), (Lines{"OKolmogorovSmirnovNormal x"}));
}

TEST(ExpansionAutomatic, EveryFamilyTakesItsOwnFields) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("a", {0, 1}).Numeric("b", {0, 1}).Numeric("g", {1, 2, 3}, true);
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"g"}},
                                         {"relatedVariables", Names{"a", "b"}},
                                         {"independentVariables", Names{"x", "a"}},
                                         {"groupVariable", Names{"g"}},
                                         {"isAutomaticallyOneSample", true},
                                         {"isAutomaticallyRelated", true},
                                         {"isAutomaticallyIndependent", true}}),
                                   fields, {{"g", "$_g"}});
    EXPECT_EQ(
        result.entries,
        (Lines{"OChiSquare: algorithmName 'OChiSquare', classFormation 'getFromData', variableName 'g', testIndex 0",
               "RMcNemar: algorithmName 'RMcNemar', classFormation 'getFromData', variableName ['a', 'b'], "
               "testIndex 1",
               "IKruskalWallis: algorithmName 'IKruskalWallis', typeOfMultipleComparison 'pairWise', "
               "variableName 'x', groupVariableName 'g', testIndex 2",
               "IKruskalWallis: algorithmName 'IKruskalWallis', typeOfMultipleComparison 'pairWise', "
               "variableName 'a', groupVariableName 'g', testIndex 3"}));
    EXPECT_TRUE(result.status.IsOK());
}

TEST(ExpansionAutomatic, WithoutAGroupTheIndependentFamilyEndsAtOnce) {
    harness::Fields fields;
    fields.Continuous("x");
    for (const Names& group : {Names{}, Names{""}}) {
        const Expanded result = Expand(Tree({{"independentVariables", Names{"x"}},
                                             {"groupVariable", group},
                                             {"isAutomaticallyIndependent", false},
                                             Selected("IMoses"),
                                             {"done", true}}),
                                       fields);
        EXPECT_EQ(result.entries, Lines{});
        EXPECT_EQ(result.warnings, Lines{});
    }
}

}  // namespace

}  // namespace selection
