#include "host/engine/PassedOver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/JsonDocument.h"
#include "host/TestNames.h"
#include "host/engine/AnalysisRequest.h"
#include "host/engine/PlanTestNames.h"
#include "host/table/TableLoader.h"
#include "tests/host/InputErrorOf.h"

namespace {

using Lines = std::vector<std::string>;

Lines InPlan(const char* plan) {
    return tarn::PassedOverInPlan(tarn::ParseJson(plan, "p"), "p");
}
Lines InRequest(const char* request) {
    return tarn::PassedOverInRequest(tarn::ParseJson(request, "r"), "r");
}
Lines InTest(const std::string& name, const std::string& keys) {
    return InPlan((R"({"tests": [{")" + name + R"(": {)" + keys + "}}]}").c_str());
}

// ---- A plan ----

TEST(PassedOverInPlan, IsNothingWhereTheEngineReadsEverything) {
    EXPECT_EQ(InPlan(R"({"missingTreatment": "listwise", "sigLevel": 0.1, "confidenceLevel": "0.9",
                         "caseIDVariableName": 7, "TarnTabulonModelID": 3, "tests": [
                         {"RSign": {"variableName": ["a", "b"], "originVariableName": []}},
                         {"OBinomial": {"variableName": "a", "catVarClassFormation": "givenCategoryList",
                                        "givenCategoryList": [1, "x"], "testProbability": 0.5}},
                         {"OChiSquare": {"variableName": "a", "classFormation": "givenExpectedValue",
                                         "custom": [{"categoryValue": 1, "expectedValue": 2}]}},
                         {"wilcoxon": {"variableName": "a", "userSpecifyTestValue": 1, "testValue": "1e3"}}]})"),
              Lines{});
    EXPECT_EQ(InPlan("{}"), Lines{});
    EXPECT_EQ(InPlan(R"({"tests": null, "sigLevel": null})"), Lines{}) << "what is absent";
}

TEST(PassedOverInPlan, IsNothingOfWhatARequestWritesIntoIt) {
    EXPECT_EQ(InTest("OKolmogorovSmirnovNormal", R"("AlgorithmName": "OKolmogorovSmirnovNormal", "variableName": "x",
                      "testIndex": 0, "distributionFunction": "normal")"),
              Lines{});
}

TEST(PassedOverInPlan, AreUnknownKeysWithTheNearOneOrThoseThereAre) {
    EXPECT_EQ(
        InPlan(R"({"siglevel": 1, "group": "a"})"),
        (Lines{
            "p: siglevel: unknown key, passed over; did you mean sigLevel?",
            R"(p: group: unknown key, passed over; expected "missingTreatment", "sigLevel", )"
            R"("confidenceLevel", "threads", "brief", "extendedArithmetic", "caseIDVariableName", "TarnTabulonModelID" or "tests")"}));
    EXPECT_EQ(InTest("RSign", R"("variableNames": ["a", "b"], "exact": true)"),
              (Lines{"p: tests[0].RSign.variableNames: unknown key, passed over; did you mean variableName?",
                     R"(p: tests[0].RSign.exact: unknown key, passed over; expected "variableName" or )"
                     R"("originVariableName")"}));
    EXPECT_EQ(
        InTest("OChiSquare", R"("custom": [{"categoryValue": 1, "expected": 2}])"),
        Lines{"p: tests[0].OChiSquare.custom[0].expected: unknown key, passed over; did you mean expectedValue?"});
}

TEST(PassedOverInPlan, OfManyAreTheFirstHundredAndTheirNumber) {
    std::string keys;
    for (int i = 0; i < 101; ++i) keys += (i > 0 ? ", " : "") + ("\"zz" + std::to_string(i) + "\": [") + "]";
    Lines lines = InPlan(("{" + keys + "}").c_str());
    ASSERT_EQ(lines.size(), 101);
    EXPECT_EQ(lines[99].substr(0, 28), "p: zz99: unknown key, passed");
    EXPECT_EQ(lines.back(), "p: 1 more, passed over");
    const std::string tests = R"({"tests": [{"sign": {"variableName": {}}})";
    std::string many = tests;
    for (int i = 0; i < 101; ++i) many += R"(, {"sign": {"variableName": {}}})";
    lines = InPlan((many + "]}").c_str());
    ASSERT_EQ(lines.size(), 101) << "values of another shape count, too";
    EXPECT_EQ(lines.back(), "p: 2 more, passed over");
}

TEST(PassedOverInPlan, AreKeysOfAnotherTestAndOfARequest) {
    EXPECT_EQ(InTest("RSign", R"("variableName": ["a", "b"], "testValue": 0)").size(), 1u);
    EXPECT_EQ(InTest("OBinomial", R"("isSelected": true)").size(), 1u);
    EXPECT_EQ(InPlan(R"({"caseIDField": "a"})"),
              Lines{"p: caseIDField: unknown key, passed over; did you mean caseIDVariableName?"});
}

TEST(PassedOverInPlan, AreUnknownTests) {
    EXPECT_EQ(InTest("RSing", ""), Lines{"p: tests[0].RSing: unknown test, passed over; did you mean RSign?"});
    EXPECT_EQ(InTest("sing", ""), Lines{"p: tests[0].sing: unknown test, passed over; did you mean sign?"});
    EXPECT_EQ(InTest("IKMedian", ""), Lines{"p: tests[0].IKMedian: unknown test, passed over; did you mean IMedian?"});
    EXPECT_EQ(InTest("OKolmogorovSmirnov", ""),
              Lines{"p: tests[0].OKolmogorovSmirnov: unknown test, passed over; did you mean OKolmogorovSmirnovNormal, "
                    "OKolmogorovSmirnovUniform, OKolmogorovSmirnovPoisson?"});
    EXPECT_EQ(InTest("", ""), InTest("", R"("variableName": 1)"));
    EXPECT_EQ(InTest("", "").size(), 1u);
}

TEST(PassedOverInPlan, ATestBesideTheOthersIsOneToo) {
    EXPECT_EQ(InPlan(R"({"RSign": {"variableName": "a"}})"),
              Lines{R"(p: RSign.variableName: "a", passed over; expected a list of texts or numbers)"});
    EXPECT_EQ(InPlan(R"({"RSign": 1})"), Lines{"p: RSign: 1, passed over; expected an object"});
    EXPECT_EQ(InPlan(R"({"RSing": {}})"), Lines{"p: RSing: unknown key, passed over; did you mean RSign?"});
    EXPECT_EQ(InPlan(R"({"sign": {}})"), Lines{R"(p: sign: unknown key, passed over; expected within "tests")"});
}

struct Shape {
    const char* name;
    const char* test;
    const char* keys;
    const char* told;
};

class Shapes : public testing::TestWithParam<Shape> {};

TEST_P(Shapes, ThatAreNotReadAreTold) {
    const std::string test = GetParam().test;
    EXPECT_EQ(InTest(test, GetParam().keys), Lines{"p: tests[0]." + test + "." + GetParam().told});
}

INSTANTIATE_TEST_SUITE_P(
    , Shapes,
    testing::Values(Shape{"ListForAText", "OBinomial", R"("variableName": ["a"])",
                          "variableName: a list, passed over; expected one text"},
                    Shape{"TextForAList", "RSign", R"("variableName": "a")",
                          R"(variableName: "a", passed over; expected a list of texts or numbers)"},
                    Shape{"NumberForAList", "RMcNemar", R"("categoriesList": 1)",
                          "categoriesList: 1, passed over; expected a list of texts or numbers"},
                    Shape{"ListForANumber", "OBinomial", R"("testProbability": [0.5])",
                          "testProbability: a list, passed over; expected one number"},
                    Shape{"TextThatIsNoNumber", "OBinomial", R"("testProbability": "0,5")",
                          R"(testProbability: "0,5", passed over; expected one number)"},
                    Shape{"TextThatIsNoFlag", "IMoses", R"("userSpecifyGroupList": "yes")",
                          R"(userSpecifyGroupList: "yes", passed over; expected true or false)"},
                    Shape{"ObjectForAText", "OBinomial", R"("variableName": {})",
                          "variableName: an object, passed over; expected one text"},
                    Shape{"TextsForObjects", "OChiSquare", R"("custom": ["a"])",
                          "custom: a list, passed over; expected a list of objects"},
                    Shape{"ObjectsForTexts", "RMcNemar", R"("categoriesList": [{}])",
                          "categoriesList: a list, passed over; expected a list of texts or numbers"},
                    Shape{"NumberWithinAnObject", "OChiSquare", R"("custom": [{"expectedValue": "x"}])",
                          R"(custom[0].expectedValue: "x", passed over; expected one number)"}),
    [](const testing::TestParamInfo<Shape>& test) { return std::string(test.param.name); });

// ---- A request ----

constexpr const char* kTests = R"("isAutomaticallyRelated": false, "RSign": {"isSelected": true})";

std::string Request(const std::string& more) {
    return R"({"relatedVariables": ["a", "b"], )" + more + "}";
}

TEST(PassedOverInRequest, IsNothingWhereTheEngineReadsEverything) {
    EXPECT_EQ(InRequest(Request(std::string(kTests) + R"(, "done": true)").c_str()), Lines{});
    EXPECT_EQ(InRequest(R"({"missingTreatment": "analysis", "userMissing": "exclude", "sigLevel": 0.05,
                            "confidenceLevel": 95, "caseIDField": "id", "oneSampleVariables": ["a"],
                            "groupVariable": ["g"], "isAutomaticallyOneSample": true, "end": true})"),
              Lines{});
}

TEST(PassedOverInRequest, AreUnknownKeysAndTests) {
    EXPECT_EQ(InRequest(R"({"siglevel": 1, "caseIDVariableName": "a", "IMedian": {}, "mann-whitney": {}})"),
              (Lines{"r: siglevel: unknown key, passed over; did you mean sigLevel?",
                     "r: caseIDVariableName: unknown key, passed over; did you mean caseIDField?",
                     "r: IMedian: unknown key, passed over; did you mean IKMedian?",
                     "r: mann-whitney: unknown key, passed over; did you mean IMannWhitneyU?"}));
    EXPECT_EQ(InRequest(R"({"IMoses": {"isSelected": false, "numberOfOutlier": 1}})"),
              Lines{"r: IMoses.numberOfOutlier: unknown key, passed over; did you mean NumberOfOutliers?"});
    EXPECT_EQ(InRequest(R"({"IMannWhitneyU": {"group1List": ["a"]}})").size(), 1u)
        << "a plan alone has lists of groups";
}

TEST(PassedOverInRequest, AreShapesThatAreNotRead) {
    EXPECT_EQ(InRequest(R"({"groupVariable": "g", "sigLevel": [1], "RSign": true})"),
              (Lines{R"(r: groupVariable: "g", passed over; expected a list of texts or numbers)",
                     "r: sigLevel: a list, passed over; expected one number",
                     "r: RSign: true, passed over; expected an object"}));
}

TEST(PassedOverInRequest, IsASelectedTestToWhichTheEngineDoesNotCome) {
    const Lines behind{
        "r: RSign: selected test, passed over; expected behind isAutomaticallyRelated with no other key "
        "between"};
    EXPECT_EQ(InRequest(Request(R"("RSign": {"isSelected": true}, "isAutomaticallyRelated": false)").c_str()), behind);
    EXPECT_EQ(InRequest(Request(R"("RSign": {"isSelected": "1"})").c_str()), behind);
    EXPECT_EQ(
        InRequest(Request(R"("isAutomaticallyRelated": 0, "sigLevel": 0.1, "RSign": {"isSelected": true})").c_str()),
        behind);
    EXPECT_EQ(InRequest(Request(R"("RSign": {"isSelected": false})").c_str()), Lines{});
    // A host may select every test and leave it to the fields which of them have any.
    EXPECT_EQ(InRequest(R"({"relatedVariables": [], "RSign": {"isSelected": true}})"), Lines{});
    EXPECT_EQ(InRequest(Request(R"("isAutomaticallyRelated": true, "RSign": {"isSelected": true})").c_str()), Lines{});
}

TEST(PassedOverInRequest, AreTestsOfIndependentSamplesThatEndTheRequest) {
    const std::string request = R"({"independentVariables": ["a"], "groupVariable": ["g"],
                                    "isAutomaticallyIndependent": false, "IMannWhitneyU": {"isSelected": true})";
    EXPECT_EQ(InRequest((request + "}").c_str()),
              Lines{"r: IMannWhitneyU: selected test, passed over; expected a key behind the last test, such as done"});
    EXPECT_EQ(InRequest((request + R"(, "done": true})").c_str()), Lines{});
    EXPECT_EQ(InRequest((request + R"(, "IKolmogorovSmirnov": {}, "IWaldWolfowitzRuns": {}, "IMoses": {},
                          "IHodgesLehmannEstimateIndependent": {}, "IKruskalWallis": {}, "IJonckheereTerpstra": {},
                          "IKMedian": {}})")
                            .c_str()),
              Lines{})
        << "all of them count";
}

TEST(PassedOverInRequest, IsNothingOfWhatTheAnalysisAsksFor) {
    tarn::ByteSource data = tarn::ByteSource::FromMemory("data.csv", "x,y,arm\n1,2,a\n2,1,b\n");
    tarn::LoadOptions load;
    load.orders = {{"arm", {"a", "b"}}};  // the Jonckheere test needs it
    const tarn::Table table = tarn::LoadTable(data, tarn::TableDescriptor(), load);
    tarn::AnalysisOptions options;
    options.oneSample = {"x", "arm"};
    options.related = {"x", "y"};
    options.independent = {"x"};
    options.group = "arm";
    EXPECT_EQ(tarn::PassedOverInRequest(tarn::BuildRequest(options, table), "r"), Lines{}) << "the automatic choice";

    for (const tarn::TestName& test : tarn::TestNames()) options.tests.emplace_back(test.name);
    options.testValue = options.cutPoint = options.outliers = 1;
    options.probability = 0.4;
    options.success = {"a"};
    options.caseId = "y";
    EXPECT_EQ(tarn::PassedOverInRequest(tarn::BuildRequest(options, table), "r"), Lines{});
}

// ---- Values ----

TEST(PassedOver, NamesWordsThatAKeyDoesNotHave) {
    EXPECT_EQ(
        InPlan(R"({"missingTreatment": "listwse", "tests": [{"RFriedmansTwoWayByRanks":
                         {"variableName": ["a", "b"], "typeOfMultipleComparison": "pairwise"}}]})"),
        (Lines{"p: missingTreatment: \"listwse\"; did you mean listwise?",
               "p: tests[0].RFriedmansTwoWayByRanks.typeOfMultipleComparison: \"pairwise\"; did you mean pairWise?"}));
    EXPECT_EQ(InRequest(R"({"userMissing": "drop"})"),
              Lines{"r: userMissing: \"drop\"; expected \"exclude\" or \"include\""});
}

// A plan has both levels as shares, a request the confidence level in percent.
TEST(PassedOver, NamesLevelsOutOfTheirRange) {
    EXPECT_EQ(InPlan(R"({"sigLevel": 5, "confidenceLevel": 95})"),
              (Lines{"p: sigLevel: 5; expected a share between 0 and 1, like 0.05",
                     "p: confidenceLevel: 95; expected a share between 0 and 1, like 0.95"}));
    EXPECT_EQ(InRequest(R"({"sigLevel": 5, "confidenceLevel": 0.95})"),
              (Lines{"r: sigLevel: 5; expected a share between 0 and 1, like 0.05",
                     "r: confidenceLevel: 0.95; expected percent between 1 and 100, like 95"}));
    EXPECT_EQ(InPlan(R"({"sigLevel": 0.05, "confidenceLevel": "0.99"})"), Lines{});
}

// ---- Names of tests in a plan ----

std::string Named(const std::string& name, const char* keys) {
    return tarn::PlanTestName(name, tarn::ParseJson(keys, "p"), "p", "tests[0]." + name);
}

TEST(PlanTestName, IsTheEnginesForTheOneOfTheList) {
    EXPECT_EQ(Named("sign", "{}"), "RSign");
    EXPECT_EQ(Named("median", "{}"), "IMedian");
    EXPECT_EQ(Named("kolmogorov-smirnov-poisson", "{}"), "OKolmogorovSmirnovPoisson");
    EXPECT_EQ(Named("RSign", "{}"), "RSign");
    EXPECT_EQ(Named("sing", "{}"), "sing");
    EXPECT_EQ(Named("", "{}"), "");
}

TEST(PlanTestName, OfSeveralTestsIsToldByTheKeys) {
    constexpr const char* kOne = R"({"variableName": "a"})";
    constexpr const char* kPair = R"({"variableName": ["a", "b"]})";
    constexpr const char* kGroups = R"({"variableName": "a", "groupVariableName": "g"})";
    EXPECT_EQ(Named("wilcoxon", kOne), "OWilcoxonSignedRanks");
    EXPECT_EQ(Named("wilcoxon", kPair), "RWilcoxonSignedRanks");
    EXPECT_EQ(Named("hodges-lehmann", kPair), "RHodgesLehmannEstimatePairs");
    EXPECT_EQ(Named("hodges-lehmann", kGroups), "IHodgesLehmannEstimateGroups");
    EXPECT_EQ(Named("kolmogorov-smirnov", kGroups), "IKolmogorovSmirnov");
}

TEST(PlanTestName, ThatTheKeysDontTellIsRefusedWithTheNamesThatDo) {
    const auto error = [](const char* name, const char* keys) {
        return tarn::InputErrorOf([&] { Named(name, keys); });
    };
    EXPECT_EQ(error("kolmogorov-smirnov", R"({"variableName": "a"})"),
              "p: tests[0].kolmogorov-smirnov: several tests have this name, and its keys don't say which is meant; "
              "expected kolmogorov-smirnov-normal, kolmogorov-smirnov-uniform, kolmogorov-smirnov-poisson, "
              "kolmogorov-smirnov-exponential or IKolmogorovSmirnov with groupVariableName");
    EXPECT_EQ(error("wilcoxon", R"({"variableName": "a", "groupVariableName": "g"})"), error("wilcoxon", "{}"));
    EXPECT_NE(error("wilcoxon", "{}")
                  .find("expected OWilcoxonSignedRanks with one field as variableName or "
                        "RWilcoxonSignedRanks with a list as variableName"),
              std::string::npos);
    EXPECT_NE(error("hodges-lehmann", R"({"variableName": "a"})").find("expected RHodgesLehmannEstimatePairs with a "),
              std::string::npos);
}

}  // namespace
