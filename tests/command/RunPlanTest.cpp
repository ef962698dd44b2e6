// `tarn run --plan` as a user meets it: what goes where, how it ends, and what a mistake is answered with.

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/harness/Command.h"
#include "tests/harness/Document.h"

namespace {

using harness::CommandResult;
using harness::Document;
using harness::RunTarn;
using harness::ScratchFolder;

constexpr const char* kData = "before,after,arm,n\n1,2,a,1\n2,1,b,2\n3,5,a,1\n4,7,b,3\n";
constexpr const char* kPlan = R"({"tests": [{"RSign": {"variableName": ["before", "after"]}}]})";

class RunPlan : public testing::Test {
 protected:
    CommandResult Run(const std::vector<std::string>& more, const std::string& data = kData,
                      const std::string& plan = kPlan, const std::string& input = "") {
        std::vector<std::string> arguments{"run", "--data", folder.Write("data.csv", data), "--plan",
                                           folder.Write("plan.json", plan)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunTarn(arguments, input);
    }

    /// The one line that a refused input gets; nothing else happens.
    std::string Refusal(const std::vector<std::string>& more, const std::string& data = kData,
                        const std::string& plan = kPlan) {
        const CommandResult result = Run(more, data, plan);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
        return result.err;
    }

    std::string Out() const { return folder.Path("result.xml"); }

    ScratchFolder folder;
};

// ---- What goes where ----

TEST_F(RunPlan, WritesTheDocumentToStandardOutputAndTheTableToStandardError) {
    const CommandResult result = Run({});
    EXPECT_EQ(result.exitStatus, 0);
    const Document document(result.out);
    EXPECT_EQ(document.Test(0).Sub("StatisticsResult").Row("TestStatistic"), "3");
    EXPECT_TRUE(
        result.err.starts_with("Test         Fields         N  Statistic     p  kind   Decision\n"
                               "1 Sign test  before, after  4          3  .625  exact  retain\n"
                               "1 Sign test: "))
        << result.err;
}

TEST_F(RunPlan, WithOutTheDocumentGoesToTheFileAndTheTableToStandardOutput) {
    const CommandResult result = Run({"--out", Out()});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("1 Sign test  before, after  4          3  .625  exact  retain\n"), std::string::npos);
    EXPECT_EQ(Document(harness::ReadFile(Out())).TestCount(), 1);
}

TEST_F(RunPlan, QuietShowsNoTable) {
    const CommandResult result = Run({"--quiet", "--out", Out()});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out + result.err, "");
}

TEST_F(RunPlan, ReadsTheTableFromStandardInput) {
    const CommandResult result =
        RunTarn({"run", "--data", "-", "--plan", folder.Write("plan.json", kPlan), "--quiet"}, kData);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(Document(result.out).Test(0).Sub("StatisticsResult").Row("TotalN"), "4");
}

TEST_F(RunPlan, ReplacesAnExistingFileAndLeavesNothingBesideIt) {
    folder.Write("result.xml", "old");
    EXPECT_EQ(Run({"--quiet", "--out", Out()}).exitStatus, 0);
    EXPECT_EQ(harness::ReadFile(Out()).substr(0, 5), "<?xml");
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv", "plan.json", "result.xml"}));
}

// ---- What the options do ----

TEST_F(RunPlan, WeightFieldCountsRecordsAsOftenAsItSays) {
    const CommandResult result = Run({"--weight", "n", "--quiet"});
    const Document document(result.out);
    EXPECT_EQ(document.Test(0).Sub("StatisticsResult").Row("TotalN"), "7");  // 1 + 2 + 1 + 3
    EXPECT_EQ(document.Test(0).Sub("ContinuousDistribution").Row("NegativeDifferences"), "2");
    EXPECT_STREQ(document.Root().select_node("//Counts").node().attribute("totalFreq").value(), "7");
    EXPECT_FALSE(document.FieldInfo(3).Exists());
}

TEST_F(RunPlan, CountsTellBadWeights) {
    // Weights go in as they stand: 0.5 is one that adds nothing to a test, but no bad one.
    const CommandResult result =
        Run({"--weight", "n", "--quiet"}, "before,after,n\n1,2,0.5\n1,2,0\n1,2,-3\n1,2,\n5,9,2\n");
    const Document document(result.out);
    const pugi::xml_node counts = document.Root().select_node("//Counts").node();
    EXPECT_STREQ(counts.attribute("totalFreq").value(), "2.5");
    EXPECT_STREQ(counts.attribute("totalCount").value(), "5");
    EXPECT_STREQ(counts.attribute("badWeightCount").value(), "3");
    EXPECT_STREQ(counts.attribute("droppedCount").value(), "0");
    EXPECT_STREQ(counts.attribute("droppedFreq").value(), "0");
}

TEST_F(RunPlan, CaseIdFieldIsLeftOutOfTheFieldInformation) {
    EXPECT_TRUE(Document(Run({"--quiet"}).out).FieldInfo(0).Exists());
    EXPECT_FALSE(Document(Run({"--quiet", "--case-id", "before"}).out).FieldInfo(0).Exists());
}

TEST_F(RunPlan, LevelsOfTheCommandLineBeatTheDescriptor) {
    const std::string fields = folder.Write("fields.json", R"({"fields": [{"name": "before", "level": "nominal"}]})");
    const CommandResult nominal = Run({"--quiet", "--fields", fields});
    EXPECT_EQ(harness::MessagesOf(Document(nominal.out).Test(0)), (std::vector<std::string>{"220915 error 0"}));
    const CommandResult continuous = Run({"--quiet", "--fields", fields, "--continuous", "before"});
    EXPECT_EQ(Document(continuous.out).Test(0).Attribute("decision"), "retain");
}

TEST_F(RunPlan, UserMissingValuesAreMissing) {
    const std::string fields = folder.Write("fields.json", R"({"fields": [{"name": "before", "missingValues": [4]}]})");
    const CommandResult result = Run({"--quiet", "--fields", fields});
    EXPECT_EQ(Document(result.out).Test(0).Sub("StatisticsResult").Row("TotalN"), "3");
}

TEST_F(RunPlan, CategoriesGoIntoTheDataDictionary) {
    const std::string fields = folder.Write("fields.json",
                                            R"({"fields": [{"name": "arm", "title": "Arm", "categoriesOrdered": true,
                                                "categories": ["b", {"value": "z", "label": "none"}]}]})");
    const Document document(Run({"--quiet", "--fields", fields}).out);
    const pugi::xml_node arm = document.Output().child("DataDictionary").find_child_by_attribute("name", "arm");
    EXPECT_STREQ(arm.attribute("displayName").value(), "Arm");
    EXPECT_STREQ(arm.attribute("optype").value(), "ordinal");
    std::vector<std::string> values;
    for (const pugi::xml_node& value : arm.children("Value")) {
        values.push_back(std::string(value.attribute("value").value()) + "/" + value.attribute("displayValue").value());
    }
    EXPECT_EQ(values, (std::vector<std::string>{"b/", "z/none", "a/"}));
}

// ---- A run that fails ----

TEST_F(RunPlan, NoTestRequestedFailsWith220001) {
    const CommandResult result = Run({"--out", Out()}, kData, R"({"sigLevel": 0.1})");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("220001"), std::string::npos) << result.err;
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv", "plan.json"}));
}

TEST_F(RunPlan, EmptyTableFailsWith220003) {
    const CommandResult result = Run({}, "before,after\n");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("220003"), std::string::npos) << result.err;
}

TEST_F(RunPlan, ListwiseTreatmentThatLeavesNoRecordFailsWith220003) {
    const CommandResult result = Run({}, "before,after,other\n1,2,NA\n2,3,NA\n",
                                     R"({"missingTreatment": "listwise",
                                         "tests": [{"RSign": {"variableName": ["before", "after"]}}]})");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("220003"), std::string::npos) << result.err;
}

TEST_F(RunPlan, WeightAbove2147483647FailsWith220026) {
    EXPECT_EQ(Run({"--weight", "n"}, "before,after,n\n1,2,2147483647\n").exitStatus, 0);
    const CommandResult result = Run({"--weight", "n"}, "before,after,n\n1,2,2147483648\n");
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("220026"), std::string::npos) << result.err;
}

TEST_F(RunPlan, ErrorOfATestIsAResult) {
    const CommandResult unknown =
        Run({"--quiet"}, kData, R"({"tests": [{"RSign": {"variableName": ["before", "x"]}}]})");
    EXPECT_EQ(unknown.exitStatus, 0);
    EXPECT_EQ(harness::MessagesOf(Document(unknown.out).Test(0)),
              (std::vector<std::string>{"220903 error x", "220918 error"}));
    const CommandResult wrongKind =
        Run({"--quiet"}, kData, R"({"tests": [{"RSign": {"variableName": ["before", "arm"]}}]})");
    EXPECT_EQ(wrongKind.exitStatus, 0);
    EXPECT_EQ(harness::MessagesOf(Document(wrongKind.out).Test(0)), (std::vector<std::string>{"220915 error 2"}));
}

TEST_F(RunPlan, UnknownTestAloneGivesADocumentWithoutTests) {
    const CommandResult result = Run({}, kData, R"({"tests": [{"RSing": {"variableName": ["before", "after"]}}]})");
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(Document(result.out).TestCount(), 0);
    EXPECT_NE(result.err.find("plan.json: tests[0].RSing: unknown test, passed over; did you mean RSign?\n"),
              std::string::npos)
        << result.err;
}

// ---- What the engine passes over ----

constexpr const char* kMisspelt =
    R"({"siglevel": 0.1, "tests": [{"RSign": {"variableName": ["before", "after"], "originVariableName": "arm"}}]})";

TEST_F(RunPlan, WhatIsPassedOverIsToldAndTheRunGoesOn) {
    const CommandResult plain = Run({"--quiet"});
    const CommandResult result = Run({"--quiet"}, kData, kMisspelt);
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out, plain.out);
    const std::string plan = "tarn: " + folder.Path("plan.json") + ": ";
    EXPECT_EQ(result.err, plan + "siglevel: unknown key, passed over; did you mean sigLevel?\n" + plan +
                              "tests[0].RSign.originVariableName: \"arm\", passed over; "
                              "expected a list of texts or numbers\n");
    EXPECT_EQ(plain.err, "");
}

TEST_F(RunPlan, StrictRunsNothingIfAnythingWouldBePassedOver) {
    const CommandResult result = Run({"--strict", "--out", Out()}, kData, kMisspelt);
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 2) << result.err;
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv", "plan.json"}));
    EXPECT_EQ(Run({"--strict", "--quiet"}).exitStatus, 0);
}

TEST_F(RunPlan, RequestsAreHeldToTheSame) {
    const auto run = [&](const std::string& request, const std::vector<std::string>& more) {
        std::vector<std::string> arguments{
            "run",    "--data", folder.Write("data.csv", kData), "--settings", folder.Write("settings.json", request),
            "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunTarn(arguments);
    };
    const std::string tests = R"("relatedVariables": ["before", "after"], "isAutomaticallyRelated": false,
                                 "RSign": {"isSelected": true}})";
    const CommandResult plain = run("{" + tests, {"--strict"});
    EXPECT_EQ(plain.exitStatus, 0) << plain.err;
    const CommandResult result = run(R"({"siglevel": 0.1, )" + tests, {});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.out, plain.out);
    EXPECT_NE(result.err.find("settings.json: siglevel: unknown key, passed over; did you mean sigLevel?\n"),
              std::string::npos)
        << result.err;
    const CommandResult strict = run(R"({"siglevel": 0.1, )" + tests, {"--strict"});
    EXPECT_EQ(strict.exitStatus, 2);
    EXPECT_EQ(strict.out, "");
}

// ---- The names of tarn tests ----

TEST_F(RunPlan, TheListedNamesGiveTheSameDocument) {
    const CommandResult listed = Run({"--strict", "--quiet"}, kData,
                                     R"({"tests": [{"sign": {"variableName": ["before", "after"]}},
                          {"kolmogorov-smirnov": {"variableName": "before", "groupVariableName": "arm"}}]})");
    const CommandResult named = Run({"--strict", "--quiet"}, kData,
                                    R"({"tests": [{"RSign": {"variableName": ["before", "after"]}},
                          {"IKolmogorovSmirnov": {"variableName": "before", "groupVariableName": "arm"}}]})");
    EXPECT_EQ(listed.exitStatus, 0) << listed.err;
    EXPECT_EQ(Document(listed.out).TestCount(), 2);
    EXPECT_EQ(listed.out, named.out);
}

TEST_F(RunPlan, AListedNameThatStandsForSeveralTestsIsRefused) {
    EXPECT_EQ(Refusal({}, kData, R"({"tests": [{"wilcoxon": {}}]})"),
              "tarn: " + folder.Path("plan.json") +
                  ": tests[0].wilcoxon: several tests have this name, and its keys don't say which is meant; "
                  "expected OWilcoxonSignedRanks with one field as variableName or "
                  "RWilcoxonSignedRanks with a list as variableName\n");
}

TEST_F(RunPlan, InterruptEndsWithStatus1AndNoFile) {
    // Enough work for many times the time after which the signal comes.
    std::string rows = "x0,x1\n";
    for (int i = 0; i < 400000; ++i) rows += std::to_string(i % 977) + "," + std::to_string(i % 1009) + "\n";
    std::string tests;
    for (int i = 0; i < 2000; ++i) tests += std::string(i ? "," : "") + R"({"RSign": {"variableName": ["x0", "x1"]}})";
    const std::string data = folder.Write("data.csv", rows);
    const std::string plan = folder.Write("plan.json", "{\"tests\": [" + tests + "]}");
    const CommandResult result =
        harness::RunTarnInterrupted({"run", "--data", data, "--plan", plan, "--quiet", "--out", Out()}, 0.5);
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.err.find("the run was cancelled"), std::string::npos) << result.err;
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv", "plan.json"}));
}

// ---- Inputs that are refused ----

TEST_F(RunPlan, BadRowIsRefusedWithItsLine) {
    EXPECT_EQ(Refusal({}, "before,after\n1,2\n1,2,3\n").substr(0, 6), "tarn: ");
    EXPECT_NE(Refusal({}, "before,after\n1,2\n1,2,3\n").find("data.csv:3: "), std::string::npos);
}

TEST_F(RunPlan, UnknownWeightFieldIsRefused) {
    EXPECT_NE(Refusal({"--weight", "m"}).find("\"m\""), std::string::npos);
}

TEST_F(RunPlan, MissingFilesAreRefused) {
    EXPECT_NE(Refusal({"--fields", folder.Path("none.json")}).find("none.json"), std::string::npos);
    const CommandResult result =
        RunTarn({"run", "--data", folder.Path("none.csv"), "--plan", folder.Path("plan.json")});
    EXPECT_EQ(result.exitStatus, 2);
}

TEST_F(RunPlan, FileThatCantBeWrittenIsRefusedAndNothingIsLeft) {
    const CommandResult result = Run({"--quiet", "--out", folder.Path("no/such/result.xml")});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.err.find("no/such/result.xml: can't be written: No such file or directory"), std::string::npos)
        << result.err;
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"data.csv", "plan.json"}));
}

TEST_F(RunPlan, FullDiskIsTold) {
    const CommandResult result = Run({"--quiet", "--out", "/dev/full"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.err.find("/dev/full: can't be written: No space left on device"), std::string::npos) << result.err;
}

struct BadPlan {
    const char* name;
    const char* plan;
    const char* told;  ///< what the line says behind the file's name
};

class BadPlans : public RunPlan, public testing::WithParamInterface<BadPlan> {};

TEST_P(BadPlans, AreRefusedWithTheKey) {
    EXPECT_NE(Refusal({}, kData, GetParam().plan).find(GetParam().told), std::string::npos)
        << Refusal({}, kData, GetParam().plan);
}

INSTANTIATE_TEST_SUITE_P(
    , BadPlans,
    testing::Values(BadPlan{"Malformed", "{\"tests\": [}", "plan.json:1:12"},
                    BadPlan{"NoObject", "[]", "expected a JSON object with the key \"tests\""},
                    BadPlan{"TestsNoArray", R"({"tests": {"RSign": {}}})", "key \"tests\": expected an array of tests"},
                    BadPlan{"TestNoObject", R"({"tests": ["RSign"]})", "key \"tests[0]\": expected an object"},
                    BadPlan{"TwoNames", R"({"tests": [{"RSign": {}, "RMcNemar": {}}]})", "key \"tests[0]\""},
                    BadPlan{"NoName", R"({"tests": [{"RSign": {}}, {}]})", "key \"tests[1]\""},
                    BadPlan{"EntryNoObject", R"({"tests": [{"RSign": ["a"]}]})", "key \"tests[0].RSign\""},
                    BadPlan{"MixedArray", R"({"tests": [{"RSign": {"variableName": ["a", {}]}}]})",
                            "key \"tests[0].RSign.variableName\": expected an array of strings and numbers"},
                    BadPlan{"TwiceTheSameKey", R"({"sigLevel": 1, "sigLevel": 2})", "sigLevel"}),
    [](const testing::TestParamInfo<BadPlan>& test) { return std::string(test.param.name); });

// ---- Wrong usage ----

struct BadUsage {
    const char* name;
    std::vector<std::string> arguments;
    const char* told;
};

class WrongUsage : public testing::TestWithParam<BadUsage> {};

TEST_P(WrongUsage, IsToldInOneLine) {
    const CommandResult result = RunTarn(GetParam().arguments);
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find(GetParam().told), std::string::npos) << result.err;
}

INSTANTIATE_TEST_SUITE_P(
    , WrongUsage,
    testing::Values(BadUsage{"Nothing", {}, "expected one like tarn analyze DATA.csv --one-sample FIELD"},
                    BadUsage{"UnknownCommand", {"ruin"}, "did you mean run?"},
                    BadUsage{"CommandOfAnotherSpelling", {"analyse"}, "did you mean analyze?"},
                    BadUsage{"OptionBeforeTheCommand", {"--verson"}, "did you mean --version?"},
                    BadUsage{"NothingNear",
                             {"analyze", "d", "--frobnicate"},
                             "unknown argument \"--frobnicate\"; tarn analyze --help shows what can be typed\n"},
                    BadUsage{"NoCommandNear", {"frobnicate"}, "; tarn --help shows what can be typed\n"},
                    BadUsage{"WordOfAnotherTool", {"analyze", "d", "--g", "arm"}, "\"--g\"; did you mean --group?\n"},
                    BadUsage{"WithItsValue", {"analyze", "d", "--mu=3"}, "\"--mu=3\"; did you mean --test-value?\n"},
                    BadUsage{"OptionOfAGroup", {"run", "--data", "d", "--plna", "p"}, "did you mean --plan?\n"},
                    BadUsage{"UnknownTopic", {"explain", "ks"}, "did you mean kolmogorov-smirnov?\n"},
                    BadUsage{"TopicWithNothingNear", {"explain", "qwx"}, "; tarn tests lists the tests\n"},
                    BadUsage{"NoData", {"run", "--plan", "p"}, "--data is required"},
                    BadUsage{"NoPlan", {"run", "--data", "d"}, "--plan"},
                    BadUsage{"LineBreakInAnArgument", {"analyze", "d", "--alpha", "a\nb"}, "--alpha"},
                    BadUsage{"UnknownOption", {"run", "--data", "d", "--plan", "p", "--quite"}, "--quite"}),
    [](const testing::TestParamInfo<BadUsage>& test) { return std::string(test.param.name); });

TEST(Command, HelpAndVersionAreAnswers) {
    const CommandResult help = RunTarn({"run", "--help"});
    EXPECT_EQ(help.exitStatus, 0);
    EXPECT_NE(help.out.find("--plan"), std::string::npos);
    const CommandResult version = RunTarn({"--version"});
    EXPECT_EQ(version.exitStatus, 0);
    EXPECT_EQ(version.out.substr(0, 5), "tarn ");
}

}  // namespace
