// How the command computes: extended by itself, as defined where it is asked to, and how that shows. Reference values:
// z of 100,000 weighted pairs from the definition in fractions, and SciPy 1.17's wilcoxon(correction=False,
// method="asymptotic") on the same pairs one by one; tails from mpmath with 60 digits.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using Json = nlohmann::json;

class ArithmeticOfTheCommand : public testing::Test {
 protected:
    const harness::ScratchFolder folder;
    /// 100,000 pairs, of their differences 50,000 are positive.
    const std::string data = folder.Write("pairs.csv",
                                          "before,after,w\n0,1,30000\n0,2,10000\n0,-1,29500\n0,3,10000\n0,-2,10400\n"
                                          "0,-5,10100\n");
    std::vector<std::string> Analysis(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{"analyze",      data,           "--weight",     "w",       "--related",
                                           "before,after", "--continuous", "before,after", "--tests", "wilcoxon"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
    static Json TestOf(const CommandResult& result) {
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        return Json::parse(result.out).at("tests").at(0);
    }
    std::string PlanFile(const std::string& more = "") const {
        return folder.Write(
            "plan.json", "{" + more + R"("tests": [{"RWilcoxonSignedRanks": {"variableName": ["before", "after"]}}]})");
    }
    std::vector<std::string> PlanRun(const std::string& plan, const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{"run",          "--data",       data,      "--weight", "w",
                                           "--continuous", "before,after", "--quiet", "--plan",   plan};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }
};

void ExpectRight(const Json& test) {
    const Json& statistics = test.at("statistics").at(0);
    EXPECT_EQ(statistics.at("statistic"), 2438525000.0);
    EXPECT_NEAR(statistics.at("standardized").get<double>(), -6.9312779192865374, 7e-12);
    EXPECT_NEAR(statistics.at("p_values").at(0).at("value").get<double>(), 4.1705578317020221e-12, 4e-24);
    EXPECT_EQ(test.at("decision"), "reject");
    EXPECT_TRUE(test.at("limits").empty());
    EXPECT_EQ(test.at("arithmetic"), "extended");
}

TEST_F(ArithmeticOfTheCommand, AnalyzesBeyondTheWidthsOfTheDefinition) {
    ExpectRight(TestOf(RunTarn(Analysis({"--format", "json"}))));
    const std::string text = RunTarn(Analysis({"--details"})).out;
    EXPECT_NE(text.find("\nArithmetic: extended\n\nRecord\n"), std::string::npos) << text;
    EXPECT_EQ(text.find("beyond"), std::string::npos) << text;
}

// The square of 100,000 wraps: 32 bits hold 1,410,165,408 of 10,000,100,000.
TEST_F(ArithmeticOfTheCommand, AnalyzesAsDefinedWhereItIsAskedTo) {
    const Json test = TestOf(RunTarn(Analysis({"--as-defined", "--format", "json"})));
    EXPECT_EQ(test.at("statistics").at(0).at("statistic"), 2438525000.0);
    EXPECT_GT(test.at("statistics").at(0).at("standardized").get<double>(), 100);
    EXPECT_EQ(test.at("limits").at(0).at("key"), "wilcoxon-pairs");
    EXPECT_EQ(test.at("arithmetic"), nullptr);
    const std::string text = RunTarn(Analysis({"--as-defined", "--details"})).out;
    EXPECT_NE(text.find("\nArithmetic: as defined\n\nRecord\n"), std::string::npos) << text;
}

TEST_F(ArithmeticOfTheCommand, RunsAsDefinedUnlessTheFileOrTheUserAsksForMore) {
    const auto keyOf = [&](const std::string& plan, const std::vector<std::string>& more) {
        std::vector<std::string> arguments = PlanRun(plan, more);
        arguments.insert(arguments.end(), {"--format", "json"});
        return TestOf(RunTarn(arguments));
    };
    EXPECT_EQ(keyOf(PlanFile(), {}).at("limits").at(0).at("key"), "wilcoxon-pairs");
    ExpectRight(keyOf(PlanFile(), {"--extended"}));
    ExpectRight(keyOf(PlanFile(R"("extendedArithmetic": true, )"), {}));
    ExpectRight(keyOf(PlanFile(R"("extendedArithmetic": false, )"), {"--extended"}));
}

// Whatever converts to true asks for it, and what is shown has to know that, too.
TEST_F(ArithmeticOfTheCommand, ARequestMaySayTrueInAnyWayThatTheEngineTakes) {
    const auto run = [&](const std::string& value) {
        const std::string settings = folder.Write(
            "settings.json", R"({"relatedVariables": ["before", "after"], "isAutomaticallyRelated": false, )"
                             R"("RWilcoxonSignedRanks": {"isSelected": true}, "extendedArithmetic": )" +
                                 value + "}");
        return TestOf(RunTarn({"run", "--data", data, "--weight", "w", "--continuous", "before,after", "--quiet",
                               "--settings", settings, "--format", "json"}));
    };
    for (const char* const value : {"true", R"("true")", "1"}) ExpectRight(run(value));
    for (const char* const value : {"false", R"("false")", "0"}) {
        EXPECT_EQ(run(value).at("limits").at(0).at("key"), "wilcoxon-pairs") << value;
    }
}

TEST_F(ArithmeticOfTheCommand, AStoredDocumentSaysHowItWasMadeWhereThatMatters) {
    const std::string stored = folder.Path("result.xml");
    ASSERT_EQ(RunTarn(PlanRun(PlanFile(), {"--extended", "--out", stored})).exitStatus, 0);
    const Json shown = Json::parse(RunTarn({"show", stored, "--format", "json"}).out);
    EXPECT_EQ(shown.at("arithmetic"), "extended");
    ExpectRight(shown.at("tests").at(0));
    // Ten pairs are the same in both ways, so that the documents are.
    const std::string few =
        folder.Write("few.csv", "before,after\n1,2\n2,4\n3,3\n4,1\n5,9\n6,7\n7,5\n8,8\n9,14\n0,3\n");
    const auto documentOf = [&](const std::vector<std::string>& more) {
        std::vector<std::string> arguments{"run",          "--data",  few,      "--continuous",
                                           "before,after", "--quiet", "--plan", PlanFile()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunTarn(arguments).out;
    };
    EXPECT_FALSE(documentOf({}).empty());
    EXPECT_EQ(documentOf({}).find("arithmetic"), std::string::npos);
    EXPECT_EQ(documentOf({"--extended"}).find("arithmetic"), std::string::npos);
}

}  // namespace
