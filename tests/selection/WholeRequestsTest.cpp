// Requests as users make them, over public tables that statistics courses know. The expected orders are those in which
// a result document shows the tests: first those that read the records in file order, then field by field those that
// read them sorted.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/selection/Selection.h"

namespace selection {

namespace {

bool ReadsSorted(const std::string& planned) {
    return planned[0] == 'I' || planned.rfind("OKolmogorovSmirnov", 0) == 0;
}

std::string FieldOf(const std::string& planned) {
    return planned.substr(planned.find(' ') + 1);
}

/// The plan in the order of a document, in which the four one-sample Kolmogorov-Smirnov tests have one name.
Lines AsInADocument(const Lines& plan) {
    Lines shown;
    std::copy_if(plan.begin(), plan.end(), std::back_inserter(shown),
                 [](const auto& test) { return !ReadsSorted(test); });
    Names done;
    for (const std::string& test : plan) {
        const std::string field = FieldOf(test);
        if (!ReadsSorted(test) || std::find(done.begin(), done.end(), field) != done.end()) continue;
        done.push_back(field);
        std::copy_if(plan.begin(), plan.end(), std::back_inserter(shown),
                     [&](const auto& other) { return ReadsSorted(other) && FieldOf(other) == field; });
    }
    for (std::string& test : shown) {
        if (test.rfind("OKolmogorovSmirnov", 0) == 0) test = "OKolmogorovSmirnov " + FieldOf(test);
    }
    return shown;
}

Lines Over(const Names& tests, const std::string& field) {
    Lines lines;
    for (const std::string& test : tests) lines.push_back(test + " " + field);
    return lines;
}

Lines Joined(const std::vector<Lines>& parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

/// All tests of the three families selected, with the keys that a user interface sends, and a key behind them.
void AddEveryTest(std::vector<Item>& request) {
    const std::vector<Item> tests{
        {"isAutomaticallyOneSample", false},
        Selected("OBinomial", {{"testProbability", 0.4},
                               {"catVarClassFormation", "getFromData"},
                               {"contVarClassFormation", "sampleMidPoint"},
                               {"isDoClopperPearson", true},
                               {"isDoJeffreys", true},
                               {"isDoProfileLikelihood", true}}),
        Selected("OChiSquare", {{"classFormation", "getFromData"}}),
        Selected("OKolmogorovSmirnovNormal", {{"isUseSample", true}}),
        Selected("OKolmogorovSmirnovUniform", {{"isUseSample", true}}),
        Selected("OKolmogorovSmirnovPoisson", {{"isUseSample", true}}),
        Selected("OKolmogorovSmirnovExponential", {{"isUseSample", true}}),
        Selected("OWilcoxonSignedRanks", {{"userSpecifyTestValue", true}, {"testValue", 3}}),
        Selected("ORuns", {{"catVarClassFormation", "getFromData"}, {"contVarClassFormation", "cutPointMedian"}}),
        {"isAutomaticallyRelated", false},
        Selected("RSign"),
        Selected("RWilcoxonSignedRanks"),
        Selected("RHodgesLehmannEstimatePairs"),
        Selected("RFriedmansTwoWayByRanks", {{"typeOfMultipleComparison", "stepWise"}}),
        Selected("RKendallsCoefficient", {{"typeOfMultipleComparison", "pairWise"}}),
        Selected("RMcNemar", {{"classFormation", "getFromData"}}),
        Selected("RCochransQ", {{"classFormation", "givenCategoryList"},
                                {"successCategoryList", Names{"1"}},
                                {"typeOfMultipleComparison", "pairWise"}}),
        Selected("RMarginalHomogeneity"),
        {"isAutomaticallyIndependent", false},
        Selected("IMannWhitneyU"),
        Selected("IKolmogorovSmirnov"),
        Selected("IWaldWolfowitzRuns"),
        Selected("IMoses", {{"userSpecifyNumberOfOutliers", true}, {"NumberOfOutliers", 1}}),
        Selected("IHodgesLehmannEstimateIndependent"),
        Selected("IKruskalWallis", {{"typeOfMultipleComparison", "pairWise"}}),
        Selected("IJonckheereTerpstra",
                 {{"typeOfMultipleComparison", "stepWise"}, {"orderOfHypotheses", "orderSmallestToLargest"}}),
        Selected("IKMedian", {{"typeOfMultipleComparison", "pairWise"}}),
        {"done", true}};
    request.insert(request.end(), tests.begin(), tests.end());
}

const Names kDistributions(4, "OKolmogorovSmirnov");
const Names kGroupTests{"IMannWhitneyU",
                        "IKolmogorovSmirnov",
                        "IWaldWolfowitzRuns",
                        "IMoses",
                        "IHodgesLehmannEstimateGroups",
                        "IKruskalWallis",
                        "IJonckheereTerpstra",
                        "IMedian"};

// ---- Cars ----

harness::Fields CarFields() {
    harness::Fields fields;
    fields.Continuous("mpg").Numeric("am", {0, 1}).Numeric("vs", {0, 1}).Continuous("hp").Continuous("drat");
    fields.Continuous("wt").Text("model", {"Fiat 128", "Honda Civic", "Mazda RX4"});
    fields.Numeric("gear", {3, 4, 5}, true).Continuous("$_gear").Numeric("cyl", {4, 6, 8}, true).Continuous("$_cyl");
    fields.Numeric("carb", {1, 2, 3, 4, 6}, true).Continuous("$_carb");
    return fields;
}

TEST(WholeRequests, CarsWithTheChoiceLeftToTheEngine) {
    harness::Fields fields = CarFields();
    const Expanded result = Expand(Tree({{"missingTreatment", "analysis"},
                                         {"sigLevel", 0.05},
                                         {"confidenceLevel", 95},
                                         {"oneSampleVariables", Names{"mpg", "am", "gear", "model", "cyl"}},
                                         {"relatedVariables", Names{"am", "vs", "drat", "wt", "gear", "cyl"}},
                                         {"independentVariables", Names{"mpg", "hp"}},
                                         {"groupVariable", Names{"am"}},
                                         {"isAutomaticallyOneSample", true},
                                         {"isAutomaticallyRelated", true},
                                         {"isAutomaticallyIndependent", true}}),
                                   fields, {{"gear", "$_gear"}, {"cyl", "$_cyl"}});
    EXPECT_EQ(AsInADocument(result.Plan()), (Lines{"OBinomial am", "OChiSquare gear", "OChiSquare model",
                                                   "OChiSquare cyl", "RWilcoxonSignedRanks drat, wt", "RMcNemar am, vs",
                                                   "OKolmogorovSmirnov mpg", "IMannWhitneyU mpg", "IMannWhitneyU hp"}));
    EXPECT_EQ(result.warnings, Lines{});
    EXPECT_EQ(result.globals, "missingTreatment 'analysis', sigLevel 0.05, confidenceLevel 0.95");
}

TEST(WholeRequests, CarsWithEveryTest) {
    std::vector<Item> request{{"caseIDField", "disp"},
                              {"oneSampleVariables", Names{"mpg", "am", "gear", "carb"}},
                              {"relatedVariables", Names{"gear", "carb"}},
                              {"independentVariables", Names{"mpg", "carb", "model"}},
                              {"groupVariable", Names{"cyl"}}};
    AddEveryTest(request);
    harness::Fields fields = CarFields();
    const Expanded result = Expand(Tree(request), fields, {{"gear", "$_gear"}, {"carb", "$_carb"}});

    Lines related;
    for (const char* test : {"RSign", "RWilcoxonSignedRanks", "RHodgesLehmannEstimatePairs", "RFriedmansTwoWayByRanks",
                             "RKendallsCoefficient"}) {
        related.push_back(std::string(test) + " $_gear, $_carb");
    }
    for (const char* test : {"RMcNemar", "RCochransQ", "RMarginalHomogeneity"}) {
        related.push_back(std::string(test) + " gear, carb");
    }
    const Names classes{"OBinomial", "OEstimateConfidenceInterval"};
    EXPECT_EQ(AsInADocument(result.Plan()),
              Joined({Over(classes, "mpg"),
                      Over(classes, "am"),
                      Over(classes, "gear"),
                      Over(classes, "carb"),
                      {"OChiSquare am", "OChiSquare gear", "OChiSquare carb"},
                      {"OWilcoxonSignedRanks mpg", "OWilcoxonSignedRanks $_gear", "OWilcoxonSignedRanks $_carb"},
                      {"ORuns mpg", "ORuns am", "ORuns gear", "ORuns carb"},
                      related,
                      Over(kDistributions, "mpg"),
                      Over(kGroupTests, "mpg"),
                      Over(kDistributions, "$_gear"),
                      Over(kDistributions, "$_carb"),
                      Over(kGroupTests, "$_carb")}));
    EXPECT_EQ(result.warnings, (Lines{"220021 [mpg]",
                                      "220023 [am] [KolmogorovSmirnov ,KolmogorovSmirnov ,KolmogorovSmirnov ,"
                                      "KolmogorovSmirnov ,WilcoxonSignedRanks]",
                                      "220025 [model]"}));
    EXPECT_EQ(result.globals, "caseIDVariableName 'disp'");
}

// ---- Sprays ----

TEST(WholeRequests, SpraysWithTheChoiceLeftToTheEngine) {
    harness::Fields fields;
    fields.Continuous("count").Text("spray", {"A", "B", "C", "D", "E", "F"});
    const Expanded result = Expand(Tree({{"oneSampleVariables", Names{"count", "spray"}},
                                         {"independentVariables", Names{"count"}},
                                         {"groupVariable", Names{"spray"}},
                                         {"isAutomaticallyOneSample", true},
                                         {"isAutomaticallyIndependent", true}}),
                                   fields);
    EXPECT_EQ(AsInADocument(result.Plan()),
              (Lines{"OChiSquare spray", "OKolmogorovSmirnov count", "IKruskalWallis count"}));
}

// ---- Drinking ----

TEST(WholeRequests, DrinkingWithEveryTestAndNoRelatedFields) {
    std::vector<Item> request{{"oneSampleVariables", Names{"ncases", "agegp"}},
                              {"independentVariables", Names{"ncases"}},
                              {"groupVariable", Names{"alcgp"}}};
    AddEveryTest(request);
    harness::Fields fields;
    fields.Continuous("ncases").Text("agegp", {"25-34", "35-44", "45-54"}, true);
    fields.Text("alcgp", {"0-39g/day", "40-79", "80-119", "120+"}, true).Weight("ncontrols");
    const Expanded result = Expand(Tree(request), fields);
    const Names classes{"OBinomial", "OEstimateConfidenceInterval"};
    EXPECT_EQ(AsInADocument(result.Plan()),
              Joined({Over(classes, "ncases"),
                      Over(classes, "agegp"),
                      {"OChiSquare agegp", "OWilcoxonSignedRanks ncases", "ORuns ncases", "ORuns agegp"},
                      Over(kDistributions, "ncases"),
                      Over(kGroupTests, "ncases")}));
    EXPECT_EQ(result.warnings, (Lines{"220021 [ncases]", "220023 [agegp] [WilcoxonSignedRanks]"}));
}

// ---- Sleep ----

TEST(WholeRequests, SleepWithEveryTestAndNoGroups) {
    std::vector<Item> request{{"oneSampleVariables", Names{"drug1"}}, {"relatedVariables", Names{"drug1", "drug2"}}};
    AddEveryTest(request);
    harness::Fields fields;
    fields.Continuous("drug1").Continuous("drug2");
    const Expanded result = Expand(Tree(request), fields);
    EXPECT_EQ(
        AsInADocument(result.Plan()),
        Joined({{"OBinomial drug1", "OEstimateConfidenceInterval drug1", "OWilcoxonSignedRanks drug1", "ORuns drug1",
                 "RSign drug1, drug2", "RWilcoxonSignedRanks drug1, drug2", "RHodgesLehmannEstimatePairs drug1, drug2",
                 "RFriedmansTwoWayByRanks drug1, drug2", "RKendallsCoefficient drug1, drug2"},
                Over(kDistributions, "drug1")}));
    EXPECT_EQ(result.warnings, (Lines{"220021 [drug1]", "220020 [McNemar ,CochransQ ,MarginalHomogeneity]"}));
}

}  // namespace

}  // namespace selection
