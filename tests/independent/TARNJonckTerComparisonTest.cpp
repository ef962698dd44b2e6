// The comparisons of the Jonckheere-Terpstra test, and its passes. Reference values: J counted and its variance formed
// in Python's fractions, the walks of the subsets by hand; groups of three apart have J = 9, mean 4.5, variance 21/4.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "independent/TARNJonckTer.h"
#include "tests/independent/SeveralGroupsRun.h"

namespace {

using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using harness::Table;
using several::Above;
using several::Categories;
using several::Comparing;
using several::ExpectRow;
using several::MessagesIn;
using several::Pairs;
using several::Samples;
using several::Subsets;
using several::TextOf;

constexpr const char* kTest = "IJonckheereTerpstra";
constexpr const char* kLargerTail = "orderLargestToSmallest";

const Samples kApart{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};
/// Neighbours overlap by two values.
const Samples kRising{{1, 2, 3, 4}, {3, 4, 5, 6}, {5, 6, 7, 8}, {7, 8, 9, 10}};
const Samples kAlike{{1, 4, 7, 10}, {2, 5, 8, 11}, {3, 6, 9, 12}};
/// Two and two alike, and one above them.
const Samples kTwoTwoOne{{1, 3, 5, 7}, {2, 4, 6, 8}, {21, 23, 25, 27}, {22, 24, 26, 28}, {41, 42, 43, 44}};

/// Groups of three apart, and of four: of J = 10 (alike) and J = 16 (apart) with the variance 12.
const double kErrorOf3 = std::sqrt(21.0 / 4);
const double kZOf3 = 4.5 / kErrorOf3;
const double kErrorOf4 = std::sqrt(12.0);

Table Result(const Samples& samples, const std::string& comparison, const std::string& order = "",
             const groups::Common& common = {}) {
    QKSettings entry = Comparing(comparison);
    if (!order.empty()) entry.AddSetting("orderOfHypotheses", order);
    return groups::ResultOf(kTest, entry, Categories(samples.size()), RowsOf(samples), common);
}

double Power(double sig, double exponent) {
    return 1 - std::pow(1 - sig, exponent);
}

// ---- All pairs ----

TEST(JonckheereTerpstraPairs, AreOneSidedTestsOfTwoGroups) {
    const Table test = Result(kRising, "pairWise");
    const double error = std::sqrt(82.0 / 7);  // of neighbours: two pairs of tied values
    const double near = 6 / error;
    const double far = 8 / kErrorOf4;
    const std::vector<std::string> pairs = Pairs(test);
    ASSERT_EQ(pairs.size(), 6U);
    ExpectRow(pairs[0], "0", "1", {14, error, near, Above(near), 6 * Above(near)});
    ExpectRow(pairs[1], "0", "2", {16, kErrorOf4, far, Above(far), 6 * Above(far)});
    ExpectRow(pairs[2], "0", "3", {16, kErrorOf4, far, Above(far), 6 * Above(far)});
    ExpectRow(pairs[3], "1", "2", {14, error, near, Above(near), 6 * Above(near)});
    ExpectRow(pairs[5], "2", "3", {14, error, near, Above(near), 6 * Above(near)});
    EXPECT_TRUE(MessagesIn(test).empty());
    const Table pairwise = test.Sub("PairwiseResult");
    EXPECT_EQ(pairwise.ChildNames(),
              Texts({"Attribute fieldIndex", "SimpleTable PairwiseInfo", "SimpleTable Content"}));
    EXPECT_EQ(pairwise.Row("fieldIndex"), "1");
    // 1 2 3.5 5.5 | 3.5 5.5 7.5 9.5 | ...
    EXPECT_EQ(pairwise.SimpleRows("PairwiseInfo"), Texts({"0;1;2;3", "3;6.5;10.5;14"}));
}

// The smaller tail, whichever it is: a pair against the direction of the overall test is as significant as one in it.
TEST(JonckheereTerpstraPairs, TakeTheSmallerTailWhateverTheirSign) {
    const std::vector<std::string> pairs = Pairs(Result({{1, 2, 3}, {7, 8, 9}, {4, 5, 6}, {10, 11, 12}}, "pairWise"));
    ASSERT_EQ(pairs.size(), 6U);
    ExpectRow(pairs[0], "0", "1", {9, kErrorOf3, kZOf3, Above(kZOf3), 6 * Above(kZOf3)});
    ExpectRow(pairs[3], "1", "2", {0, kErrorOf3, -kZOf3, Above(kZOf3), 6 * Above(kZOf3)});
}

TEST(JonckheereTerpstraPairs, TakeTheLargerTailUnderAnyOtherOrder) {
    for (const char* order : {kLargerTail, "none"}) {
        const Samples samples{{1, 2, 3}, {7, 8, 9}, {4, 5, 6}, {10, 11, 12}};
        const std::vector<std::string> pairs = Pairs(Result(samples, "pairWise", order));
        ASSERT_EQ(pairs.size(), 6U);
        ExpectRow(pairs[0], "0", "1", {9, kErrorOf3, kZOf3, Above(-kZOf3), 1});
        ExpectRow(pairs[3], "1", "2", {0, kErrorOf3, -kZOf3, Above(-kZOf3), 1});
    }
}

// The factor counts categories without data, as all that the field has.
TEST(JonckheereTerpstraPairs, AdjustmentUsesEveryCategory) {
    const Table test = Result({kApart[0], {}, kApart[1], kApart[2]}, "pairWise");
    ASSERT_EQ(Pairs(test).size(), 3U);
    ExpectRow(Pairs(test)[0], "0", "2", {9, kErrorOf3, kZOf3, Above(kZOf3), 6 * Above(kZOf3)});
    ExpectRow(Pairs(test)[2], "2", "3", {9, kErrorOf3, kZOf3, Above(kZOf3), 6 * Above(kZOf3)});
    EXPECT_EQ(test.Sub("PairwiseResult").SimpleRows("PairwiseInfo"), Texts({"0;2;3", "2;5;8"}));
}

TEST(JonckheereTerpstraPairs, OfOneCaseEach) {
    // Of two cases the variance is 1/4. The overall J = 1.5 lies on its mean, so the level has to be above 1.
    const Table test = Result({{2}, {1}, {2}}, "pairWise", "", {{"sigLevel", 1.5}});
    ASSERT_EQ(Pairs(test).size(), 3U);
    ExpectRow(Pairs(test)[0], "0", "1", {0, 0.5, -1, Above(1), 3 * Above(1)});
    ExpectRow(Pairs(test)[1], "0", "2", {0.5, 0, 0, 0.5, 1});
    ExpectRow(Pairs(test)[2], "1", "2", {1, 0.5, 1, Above(1), 3 * Above(1)});
}

// ---- Refused ----

TEST(JonckheereTerpstraComparisons, NeedThreeGroupsWithCases) {
    const Samples two{{1, 2, 3, 4}, {}, {5, 6, 7, 8}};
    EXPECT_EQ(Result(two, "pairWise").Attribute("decision"), "reject");
    EXPECT_EQ(MessagesIn(Result(two, "pairWise")), Texts({"222223 warning"}));
    EXPECT_EQ(MessagesIn(Result(two, "stepWise")), Texts({"222221 warning"}));
    EXPECT_FALSE(Result(two, "pairWise").Sub("PairwiseResult").Exists());
    EXPECT_FALSE(Result(two, "stepWise").Sub("StepwiseResult").Exists());
    EXPECT_TRUE(MessagesIn(Result(two, "none")).empty());
}

TEST(JonckheereTerpstraComparisons, NeedASignificantStatistic) {
    EXPECT_EQ(Result(kAlike, "pairWise").Attribute("decision"), "retain");
    EXPECT_EQ(MessagesIn(Result(kAlike, "pairWise")), Texts({"222224 warning"}));
    EXPECT_EQ(MessagesIn(Result(kAlike, "stepWise")), Texts({"222222 warning"}));
    EXPECT_FALSE(Result(kAlike, "pairWise").Sub("PairwiseResult").Exists());
    EXPECT_FALSE(Result(kAlike, "stepWise").Sub("StepwiseResult").Exists());
    EXPECT_TRUE(Result(kAlike, "stepWise").Sub("BoxPlotInfo").Exists());
    // With two groups the lack of significance is told; so it is where the significance is just the level.
    EXPECT_EQ(MessagesIn(Result({{1, 3}, {2, 4}}, "pairWise")), Texts({"222224 warning"}));
    EXPECT_EQ(MessagesIn(Result({{4, 4}, {4}, {4}}, "stepWise", "", {{"sigLevel", 1.0}})), Texts({"222222 warning"}));
}

// ---- Step by step ----

TEST(JonckheereTerpstraSteps, FindTwoRunsAndOneAlone) {
    const Table test = Result(kTwoTwoOne, "stepWise");
    const double z = 2 / kErrorOf4;
    ASSERT_EQ(Subsets(test).size(), 3U);
    ExpectRow(Subsets(test)[0], "2", "3", {10, kErrorOf4, z, Above(z), Power(Above(z), 2.5)});
    ExpectRow(Subsets(test)[1], "0", "1", {10, kErrorOf4, z, Above(z), Power(Above(z), 2.5)});
    EXPECT_EQ(Subsets(test)[2], "4;4;__MISSING__;__MISSING__;__MISSING__;__MISSING__;__MISSING__");
    EXPECT_EQ(MessagesIn(test), Texts({"220013 warning 4;4"}));
    const Table stepwise = test.Sub("StepwiseResult");
    EXPECT_EQ(stepwise.ChildNames(),
              Texts({"Attribute fieldIndex", "SimpleTable StepwiseInfo", "SimpleTable Content"}));
    EXPECT_EQ(stepwise.Row("fieldIndex"), "1");
    EXPECT_EQ(stepwise.SimpleRows("StepwiseInfo"), Texts({"0;1;2;3;4", "4;5;12;13;18.5"}));
}

// Two neighbours have a significance of 0.040, adjusted 0.078 among four groups: they are alike.
TEST(JonckheereTerpstraSteps, AreDecidedByTheAdjustedSignificance) {
    const Table test = Result(kRising, "stepWise");
    const double error = std::sqrt(82.0 / 7);
    const double sig = Above(6 / error);
    EXPECT_NEAR(sig, 0.03979704463963811, 1e-14);
    ASSERT_EQ(Subsets(test).size(), 3U);
    ExpectRow(Subsets(test)[0], "2", "3", {14, error, 6 / error, sig, Power(sig, 2)});
    ExpectRow(Subsets(test)[1], "0", "1", {14, error, 6 / error, sig, Power(sig, 2)});
    ExpectRow(Subsets(test)[2], "1", "2", {14, error, 6 / error, sig, Power(sig, 2)});
    EXPECT_TRUE(MessagesIn(test).empty());
}

TEST(JonckheereTerpstraSteps, ThreeGroupsApartAreAlone) {
    const Table test = Result(kApart, "stepWise");
    EXPECT_EQ(Subsets(test), Texts({"0;0;__MISSING__;__MISSING__;__MISSING__;__MISSING__;__MISSING__",
                                    "1;1;__MISSING__;__MISSING__;__MISSING__;__MISSING__;__MISSING__",
                                    "2;2;__MISSING__;__MISSING__;__MISSING__;__MISSING__;__MISSING__"}));
    EXPECT_EQ(MessagesIn(test), Texts({"220013 warning 0;0", "220013 warning 1;1", "220013 warning 2;2"}));
}

// The groups stay in the order of their categories, whatever their ranks.
TEST(JonckheereTerpstraSteps, AlongTheOrderOfTheCategories) {
    const Table test = Result({{11, 12, 13, 14}, {2, 3, 4, 5}, {1, 2, 3, 4}}, "stepWise");
    EXPECT_EQ(test.Sub("StepwiseResult").SimpleRows("StepwiseInfo")[0], "0;1;2");
    ASSERT_EQ(Subsets(test).size(), 2U);
    // Of the pairs of the last two, 1 + 1 + 1 and a half of 3 tied ones count: 4.5; two of three take no power.
    const double error = std::sqrt(81.0 / 7);
    ExpectRow(Subsets(test)[0], "1", "2", {4.5, error, -3.5 / error, Above(3.5 / error), Above(3.5 / error)});
    EXPECT_EQ(Subsets(test)[1].substr(0, 4), "0;0;");
}

// The larger tail is never below one half: every run is homogeneous at once.
TEST(JonckheereTerpstraSteps, UnderTheOtherOrderEverythingIsHomogeneous) {
    const Table test = Result(kApart, "stepWise", kLargerTail);
    ASSERT_EQ(Subsets(test).size(), 2U);
    ExpectRow(Subsets(test)[0], "0", "1", {9, kErrorOf3, kZOf3, Above(-kZOf3), Above(-kZOf3)});
    ExpectRow(Subsets(test)[1], "1", "2", {9, kErrorOf3, kZOf3, Above(-kZOf3), Above(-kZOf3)});
    EXPECT_TRUE(MessagesIn(test).empty());
}

// Places among the groups with cases are looked up by category. With the second category empty, 0 to 1 has the records
// of the first alone, and 1 to 2 those of the third: no pair of values, J = 0 each. Meant so: documents depend on it.
TEST(JonckheereTerpstraSteps, PlacesDoNotFollowTheGroupsBehindAnEmptyMiddleCategory) {
    const Samples gap{kTwoTwoOne[0], {}, kTwoTwoOne[1], kTwoTwoOne[2]};
    const double z = 8 / kErrorOf4;
    const double adjusted = Power(Above(z), 2);
    EXPECT_NEAR(adjusted, 0.020811909769714809, 1e-14);
    // At a level below that both are homogeneous, so that they show.
    const Table test = Result(gap, "stepWise", "", {{"sigLevel", 0.02}});
    ASSERT_EQ(Subsets(test).size(), 2U);
    ExpectRow(Subsets(test)[0], "0", "1", {0, kErrorOf4, -z, Above(z), adjusted});
    ExpectRow(Subsets(test)[1], "1", "2", {0, kErrorOf4, -z, Above(z), adjusted});
    EXPECT_EQ(test.Sub("StepwiseResult").SimpleRows("StepwiseInfo"), Texts({"0;2;3", "4;5;10.5"}));
    // At 0.05 all are alone, although the first two are alike.
    EXPECT_EQ(MessagesIn(Result(gap, "stepWise")),
              Texts({"220013 warning 0;0", "220013 warning 1;1", "220013 warning 2;2"}));
}

// Behind the others an empty category shifts nothing; it only counts in the adjustment.
TEST(JonckheereTerpstraSteps, EmptyLastCategoryCountsInTheAdjustment) {
    const Samples samples{kTwoTwoOne[0], kTwoTwoOne[1], kTwoTwoOne[2], {}};
    const double z = 2 / kErrorOf4;
    ExpectRow(Subsets(Result(samples, "stepWise"))[0], "0", "1", {10, kErrorOf4, z, Above(z), Power(Above(z), 2)});
    const Samples full{samples[0], samples[1], samples[2]};
    ExpectRow(Subsets(Result(full, "stepWise"))[0], "0", "1", {10, kErrorOf4, z, Above(z), Above(z)});
}

TEST(JonckheereTerpstraComparisons, NameTheirTablesAcross) {
    const std::string pairs = TextOf(Result(kApart, "pairWise").Sub("PairwiseResult"), "PairwiseInfo");
    EXPECT_NE(pairs.find("<ColumnNames>IndexOrder;Value</ColumnNames>"), std::string::npos) << pairs;
    const std::string steps = TextOf(Result(kApart, "stepWise").Sub("StepwiseResult"), "StepwiseInfo");
    EXPECT_NE(steps.find("<ColumnNames>IndexOrder;Value</ColumnNames>"), std::string::npos) << steps;
}

// ---- Passes ----

/// Descriptives that know how many categories the group field has.
class Descriptives : public UnivariateResults {
 public:
    explicit Descriptives(int count) : UnivariateResults(collector), categoryCount(count) {}
    int GetCategoryCount(int) const override { return categoryCount; }

 private:
    int categoryCount;
    QKVarList fields;
    UnivariateCollector collector{QKTarn::TarnMemoIterator(), fields};
};

/// What progress is told behind each pass, and once more behind the question for another one.
std::vector<int> PassKinds(const Samples& samples, bool pairwise, bool stepwise) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    settings->AddSetting("pairWise", pairwise ? 1.0 : 0.0);
    settings->AddSetting("stepWise", stepwise ? 1.0 : 0.0);
    TARNJonckTer test(std::move(settings));
    Descriptives descriptives(static_cast<int>(samples.size()));
    test.SetUnivariateResults(&descriptives);
    Rows rows = RowsOf(samples);
    std::sort(rows.begin(), rows.end());
    std::vector<int> kinds;
    bool isNeeded = true;
    while (isNeeded && kinds.size() < 100) {
        EXPECT_TRUE(test.BeginPass().IsOK());
        if (kinds.empty()) kinds.push_back(test.GetPassKind());
        for (std::vector<double>& row : rows) {
            Record record = Record::View(row.data(), row.size());
            EXPECT_TRUE(test.ProcessRecord(record).IsOK());
        }
        EXPECT_TRUE(test.EndPass().IsOK());
        kinds.push_back(test.GetPassKind());
        isNeeded = test.NeedsAnotherPass();
        if (isNeeded) {
            EXPECT_EQ(test.GetPassKind(), 0);
        }
    }
    return kinds;
}

// The number of passes to come is good for the first one only: it is dropped to 0 whenever another pass is needed.
TEST(JonckheereTerpstraPasses, ThreeOneForThePairsAndOneForEachStep) {
    EXPECT_EQ(PassKinds(kApart, false, false), (std::vector<int>{3, 2, -1, -1}));
    EXPECT_EQ(PassKinds(kApart, true, false), (std::vector<int>{4, 3, -1, -1, -1}));
    EXPECT_EQ(PassKinds(kTwoTwoOne, false, true), (std::vector<int>{6, 5, -1, -1, -1, -1, -1}));
    EXPECT_EQ(PassKinds(kApart, true, true), (std::vector<int>{5, 4, -1, -1, -1, -1}));
}

TEST(JonckheereTerpstraPasses, NoneForARefusedComparison) {
    EXPECT_EQ(PassKinds(kAlike, true, false), (std::vector<int>{4, 3, -1, 0}));
    EXPECT_EQ(PassKinds({{1, 2, 3, 4}, {}, {5, 6, 7, 8}}, false, true), (std::vector<int>{4, 3, -1, 0}));
}

TEST(JonckheereTerpstraPasses, WithoutDescriptivesThereIsNone) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    TARNJonckTer test(std::move(settings));
    test.SetUnivariateResults(nullptr);
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 222206);
    EXPECT_FALSE(test.NeedsAnotherPass());
    EXPECT_EQ(test.GetPassKind(), 0);
    std::vector<int> used;
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{0, 1}));
}

}  // namespace
