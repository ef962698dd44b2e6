// Options that set a parameter of a test or say what stands first. Numbers are those of R 4.2 on the same records.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using nlohmann::json;
using Arguments = std::vector<std::string>;

const std::string kSleep = harness::SourcePath("examples/sleep_clinic.csv");

CommandResult Analyze(Arguments words) {
    words.insert(words.begin(), {"analyze", kSleep});
    return RunTarn(words);
}

json TestOf(Arguments words) {
    words.insert(words.end(), {"--format", "json"});
    const CommandResult result = Analyze(words);
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return json::parse(result.out).at("tests").at(0);
}

// chisq.test(table(d$arm)[c("placebo", "low", "high")], p = c(1, 1, 2) / 4): 35.119, p-value = 2.366e-08. By hand:
// 26^2 / 80 + 27^2 / 80 + 53^2 / 160.
TEST(TheSharesOfChiSquare, AreThoseExpected) {
    const json test = TestOf({"--one-sample", "arm", "--tests", "chi-square", "--expected", "placebo=1,low=1,high=2"});
    EXPECT_NEAR(test.at("statistics").at(0).at("statistic").get<double>(), 35.11875, 1e-10);
    EXPECT_NEAR(test.at("statistics").at(0).at("p_values").at(0).at("value").get<double>(), std::exp(-35.11875 / 2),
                1e-20);
}

TEST(TheSharesOfChiSquare, HaveToBeComplete) {
    EXPECT_EQ(Analyze({"--one-sample", "arm", "--tests", "chi-square", "--expected", "placebo=1,low=1"}).err,
              "tarn: --expected: nothing for the category \"high\" of arm; expected all of its categories\n");
    EXPECT_EQ(Analyze({"--one-sample", "arm", "--tests", "chi-square", "--expected", "placebo=1,low=0,high=1"}).err,
              "tarn: --expected: \"low\" has 0; expected a share or a count above 0\n");
    EXPECT_EQ(Analyze({"--one-sample", "arm", "--tests", "chi-square", "--expected", "placbo=1"}).err,
              "tarn: --expected: no category \"placbo\" in arm; did you mean placebo?\n");
    EXPECT_EQ(Analyze({"--one-sample", "arm", "--tests", "runs", "--expected", "placebo=1"}).err,
              "tarn: --expected: no test of the request takes it; expected --tests with chi-square\n");
}

// ks.test(x, "pnorm", 6, 1.5, exact = FALSE): D = 0.050981291; its p-value ends Kolmogorov's series early, which is
// 2 (exp(-2 l^2) - exp(-8 l^2) + exp(-18 l^2) - ..) = 0.4103240 for l^2 = 303 D^2.
TEST(ADistribution, TakesTheParametersGiven) {
    const json test =
        TestOf({"--one-sample", "hours_after", "--tests", "kolmogorov-smirnov", "--mean", "6", "--sd", "1.5"});
    EXPECT_NE(test.at("condition").at("text").get<std::string>().find("normal with mean 6 and standard deviation 1.5"),
              std::string::npos);
    EXPECT_NEAR(test.at("statistics").at(0).at("statistic").get<double>(), 0.050981291 * std::sqrt(303), 1e-7);
    EXPECT_NEAR(test.at("statistics").at(0).at("p_values").at(0).at("value").get<double>(), 0.4103240, 1e-7);
}

// ks.test(x, "punif", 0, 12, exact = FALSE): D = 0.27079208
TEST(ADistribution, TakesBothEnds) {
    const Arguments uniform{"--one-sample",       "hours_after",    "--tests",
                            "kolmogorov-smirnov", "--distribution", "uniform"};
    Arguments words = uniform;
    words.insert(words.end(), {"--min", "0", "--max", "12"});
    EXPECT_NEAR(TestOf(words).at("statistics").at(0).at("statistic").get<double>(), 0.27079208 * std::sqrt(303), 1e-6);
    words = uniform;
    words.insert(words.end(), {"--min", "0"});
    EXPECT_EQ(Analyze(words).err,
              "tarn: --min and --max: a uniform distribution has both; expected the other one, too\n");
    words = uniform;
    words.insert(words.end(), {"--sd", "1"});
    EXPECT_EQ(Analyze(words).err,
              "tarn: --sd: no distribution of the request has it; expected --distribution normal\n");
}

// y <- x >= mean(x); 151 runs of 158 and 145
TEST(TheRunsTest, CutsAtTheMean) {
    const json test = TestOf({"--one-sample", "hours_after", "--tests", "runs", "--cut-point", "mean"});
    EXPECT_EQ(test.at("statistics").at(0).at("statistic"), 151);
    EXPECT_EQ(Analyze({"--one-sample", "hours_after", "--tests", "binomial", "--cut-point", "mean"}).err,
              "tarn: --cut-point mean: no test of the request takes it; expected --tests with runs\n");
    EXPECT_EQ(Analyze({"--one-sample", "hours_after", "--tests", "runs", "--cut-point", "middle"}).exitStatus, 2);
}

// k: the records with both fields; r <- rank(k$hours_after); z of Dunn (1964) from the mean ranks, with the correction
// for ties: 3.564469 and 1.40736, p 0.0003645938 and 0.1593206, twice that for two pairs.
TEST(Pairs, AreThoseWithOneGroupAndAdjustedForTheirNumber) {
    const json test = TestOf({"hours_after ~ arm", "--against", "placebo"});
    const json& pairs = test.at("comparisons").at("pairs");
    ASSERT_EQ(pairs.size(), 2U);
    for (const json& pair : pairs) {
        const bool isHigh = pair.at("first") == "high" || pair.at("second") == "high";
        EXPECT_TRUE(pair.at("first") == "placebo" || pair.at("second") == "placebo");
        EXPECT_NEAR(pair.at("p").get<double>(), isHigh ? 0.0003645938 : 0.1593206, 1e-7);
        EXPECT_NEAR(pair.at("adjusted_p").get<double>(), isHigh ? 0.0007291876 : 0.3186412, 1e-7);
    }
    EXPECT_EQ(test.at("supplement").at("letters").size(), 0U) << "letters tell about all pairs";
    EXPECT_EQ(test.at("remarks").back(),
              "of the pairs those with placebo alone, adjusted for their number, 2; the document has all");
    EXPECT_EQ(Analyze({"hours_after ~ arm", "--against", "placbo"}).err,
              "tarn: --against: no category \"placbo\" in arm; did you mean placebo?\n");
}

TEST(AReference, StandsFirst) {
    const json usual = TestOf({"hours_after ~ sex", "--tests", "mann-whitney"});
    const json turned = TestOf({"hours_after ~ sex", "--tests", "mann-whitney", "--reference", "sex=m"});
    EXPECT_EQ(usual.at("direction"), "f minus m");
    EXPECT_EQ(turned.at("direction"), "m minus f");
    EXPECT_EQ(turned.at("statistics").at(0).at("standardized").get<double>(),
              -usual.at("statistics").at(0).at("standardized").get<double>());
    EXPECT_EQ(Analyze({"hours_after ~ sex", "--reference", "sex=x"}).err,
              "tarn: --reference: sex has no category \"x\"; it has \"f\" and \"m\"\n");
    EXPECT_EQ(Analyze({"hours_after ~ sex", "--reference", "age=30"}).err,
              "tarn: --reference: age has no categories; expected --nominal age\n");
}

TEST(ALabel, IsATitleOfItsField) {
    const CommandResult result =
        Analyze({"hours_after ~ sex", "--label", "hours_after=Hours of sleep", "--format", "json"});
    bool isFound = false;
    const json fields = json::parse(result.out).at("fields");
    for (const json& field : fields) {
        isFound = isFound || (field.at("name") == "hours_after" && field.at("label") == "Hours of sleep");
    }
    EXPECT_TRUE(isFound) << fields;
}

}  // namespace
