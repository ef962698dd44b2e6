// Pairs and homogeneous subsets of the median test. Reference values: scipy 1.17, median_test(..., ties="below",
// correction=False) of the groups compared or, around a given median, chi2_contingency(..., correction=False) of their
// table; the adjustments and the walk by hand.

#include <gtest/gtest.h>

#include <sstream>

#include "tests/independent/GroupRun.h"

namespace {

using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using harness::Table;

constexpr const char* kTest = "IMedian";

QKSettings Comparing(const std::string& comparison) {
    QKSettings entry = groups::Entry();
    entry.AddSetting("typeOfMultipleComparison", comparison);
    return entry;
}
QKSettings Given(double median, const std::string& comparison) {
    QKSettings entry = Comparing(comparison);
    entry.AddSetting("userSpecifyMedian", true);
    entry.AddSetting("median", median);
    return entry;
}
Table Result(const QKSettings& entry, const std::vector<std::vector<double>>& samples,
             const groups::Common& common = {}) {
    harness::Fields fields;
    std::vector<double> categories;
    for (std::size_t i = 0; i < samples.size(); ++i) categories.push_back(static_cast<double>(i + 1));
    fields.Continuous("x").Numeric("g", categories);
    return groups::ResultOf(kTest, entry, fields, RowsOf(samples), common);
}

/// The rows of a table of comparisons, numbers rounded to 9 digits so that the last ones may differ.
std::vector<std::string> Rounded(const std::vector<std::string>& rows) {
    std::vector<std::string> rounded;
    for (const std::string& row : rows) {
        std::string text;
        std::stringstream cells(row);
        for (std::string cell; std::getline(cells, cell, ';');) {
            char number[40];
            char* end = nullptr;
            std::snprintf(number, sizeof number, "%.9g", std::strtod(cell.c_str(), &end));
            const bool isNumber = !cell.empty() && *end == '\0';
            text += (text.empty() ? "" : ";") + (isNumber ? std::string(number) : cell);
        }
        rounded.push_back(text);
    }
    return rounded;
}
std::vector<std::string> Pairs(const Table& test) {
    return Rounded(test.Sub("PairwiseResult").SimpleRows("Content"));
}
std::vector<std::string> Subsets(const Table& test) {
    return Rounded(test.Sub("StepwiseResult").SimpleRows("Content"));
}

const std::vector<double> kLow{1.1, 2.3, 2.9, 3.4, 4.1, 4.8, 5.2, 6.0};
const std::vector<double> kMiddle{3.1, 4.4, 5.5, 5.9, 6.3, 7.0, 7.7, 8.1, 9.2};
const std::vector<double> kHigh{6.6, 7.2, 8.4, 8.8, 9.5, 10.1, 10.9};

/// The messages with the group that each names.
std::vector<std::string> NamedMessages(const Table& test) {
    std::vector<std::string> messages = harness::MessagesOf(test);
    std::size_t i = 0;
    for (const pugi::xml_node& node : test.Sub("WarningMessages").Node().children("StructuredTable")) {
        const Table message(node);
        if (message.HasRow("group")) messages[i] += " group=" + message.Row("group");
        ++i;
    }
    return messages;
}

const char* const kAlone = ";__MISSING__;;;__MISSING__;__MISSING__";
std::string WithoutValues(const std::string& ends) {
    return ends + kAlone;
}

// ---- Pairs ----

TEST(KSMedianPairs, AreJudgedByPearsonsChiSquareAroundTheirOwnMedian) {
    // 17, 15 and 16 cases: Fisher's test, which decides between two groups alone, has no say in a pair (it would give
    // 0.0152, 0.0002 and 0.3147). Documents depend on it. Adjusted by 3.
    const Table test = Result(Comparing("pairWise"), {kLow, kMiddle, kHigh});
    EXPECT_EQ(Pairs(test),
              Texts({"0;1;7.24402006;;;0.00711375276;0.0213412583", "0;2;15;;;0.000107511177;0.00032253353",
                     "1;2;2.28571429;;;0.130570018;0.391710054"}));
    EXPECT_EQ(test.ChildNames().back(), "StructuredTable PairwiseResult");
    const Table pairs = test.Sub("PairwiseResult");
    EXPECT_EQ(pairs.ChildNames(), Texts({"Attribute fieldIndex", "SimpleTable PairwiseInfo", "SimpleTable Content"}));
    EXPECT_EQ(pairs.Row("fieldIndex"), "1");
    EXPECT_EQ(pairs.SimpleRows("PairwiseInfo"), Texts({"0;1;2", "3.75;6.3;8.8"}));
    EXPECT_FALSE(test.Sub("StepwiseResult").Exists());
}

TEST(KSMedianPairs, NeitherFishersTestNorTheCorrectionDecidesAPairOfMoreThanThirtyCases) {
    // 15 and 16 cases, chi2_contingency([[5, 11], [10, 5]], correction=False); corrected it were 0.1069.
    const std::vector<double> first{1, 2, 3, 4, 5, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26};
    const std::vector<double> second{6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 27, 28, 29, 30, 31};
    const Table test = Result(Comparing("pairWise"), {first, second, {101, 102, 103, 104, 105, 106, 107, 108, 109}});
    ASSERT_EQ(Pairs(test).size(), 3u);
    EXPECT_EQ(Pairs(test)[0], "0;1;3.88845486;;;0.0486191342;0.145857403");
}

TEST(KSMedianPairs, EmptyCategoryDoesNotCountInTheAdjustment) {
    // Three groups of four categories: the factor is 3 and not 6. Documents depend on it.
    const Table test = Result(Comparing("pairWise"), {kLow, {}, kMiddle, kHigh});
    EXPECT_EQ(Pairs(test),
              Texts({"0;2;7.24402006;;;0.00711375276;0.0213412583", "0;3;15;;;0.000107511177;0.00032253353",
                     "2;3;2.28571429;;;0.130570018;0.391710054"}));
    EXPECT_EQ(test.Sub("PairwiseResult").SimpleRows("PairwiseInfo"), Texts({"0;2;3", "3.75;6.3;8.8"}));
}

TEST(KSMedianPairs, AdjustedSignificanceIsAtMostOne) {
    const std::vector<double> other{1.2, 2.2, 2.8, 3.5, 4.0, 4.9, 5.1, 6.1};
    const Table test = Result(Comparing("pairWise"), {kLow, other, kHigh});
    ASSERT_EQ(Pairs(test).size(), 3u);
    EXPECT_EQ(Pairs(test)[0], "0;1;0;;;1;1");  // four of each above 3.75
}

TEST(KSMedianPairs, GivenMedianHoldsInEachPair) {
    const Table test = Result(Given(7.0, "pairWise"), {kLow, kMiddle, kHigh});
    EXPECT_EQ(Pairs(test),
              Texts({"0;1;3.23809524;;;0.0719442355;0.215832706", "0;2;11.4285714;;;0.000723232716;0.00216969815",
                     "1;2;4.39002268;;;0.0361498324;0.108449497"}));
}

TEST(KSMedianPairs, PairWithOneSidedDataIsDegenerateAndNamedInAWarning) {
    const std::vector<double> ones(8, 1);
    const std::vector<double> fives(8, 5);
    const Table test = Result(Comparing("pairWise"), {ones, ones, fives});
    // The other pairs lie apart: 16 cases in four cells of 4 expected.
    EXPECT_EQ(Pairs(test), (std::vector<std::string>{WithoutValues("0;1"), "0;2;16;;;6.33424837e-05;0.000190027451",
                                                     "1;2;16;;;6.33424837e-05;0.000190027451"}));
    EXPECT_EQ(NamedMessages(test), Texts({"222327 warning", "222329 warning group=0;1"}));
}

TEST(KSMedianPairs, PairWithAllValuesAboveAGivenMedianIsDegenerate) {
    const std::vector<double> fives(10, 5);
    const std::vector<double> ones(10, 1);
    const Table test = Result(Given(3, "pairWise"), {ones, fives, fives});
    ASSERT_EQ(Pairs(test).size(), 3u);
    EXPECT_EQ(Pairs(test)[2], WithoutValues("1;2"));
    EXPECT_EQ(NamedMessages(test), Texts({"222327 warning", "222328 warning group=1;2"}));
}

// ---- Steps ----

TEST(KSMedianSteps, LowerTheSubsetsAndTakeNewMediansBetweenTheCounts) {
    // Ordered by their medians: 4.5, 5.35, 13.5, 15.35.
    const Table test = Result(Comparing("stepWise"), {{10, 11, 12, 13, 14, 15, 16, 17},
                                                      {1, 2, 3, 4, 5, 6, 7, 8},
                                                      {1.5, 2.5, 3.5, 5.2, 5.5, 6.5, 9, 9.5},
                                                      {11.5, 14.7, 15.1, 15.2, 15.5, 16.5, 18, 19}});
    // First counts: 0 to 2, chi-square 12 of two degrees, and 1 to 3, 13 of two, differ and lose their last; 2 to 3 has
    // 4 of one degree, 0.0455, and is homogeneous by 1 - (1 - 0.0455)^(4/2) alone. Second counts: 0 to 1 has 1 around
    // 5.1 (around the 6.75 of the first median it had 0, two of each above) and is homogeneous; 1 to 2 differs.
    EXPECT_EQ(Subsets(test), Texts({"2;3;4;;;0.0455002639;0.0889302538", "0;1;1;;;0.317310508;0.533935057"}));
    EXPECT_EQ(test.ChildNames().back(), "StructuredTable StepwiseResult");
    const Table steps = test.Sub("StepwiseResult");
    EXPECT_EQ(steps.ChildNames(), Texts({"Attribute fieldIndex", "SimpleTable StepwiseInfo", "SimpleTable Content"}));
    EXPECT_EQ(steps.Row("fieldIndex"), "1");
    EXPECT_EQ(steps.SimpleRows("StepwiseInfo"), Texts({"1;2;0;3", "4.5;5.35;13.5;15.35"}));
    EXPECT_FALSE(test.Sub("PairwiseResult").Exists());
    EXPECT_EQ(NamedMessages(test), Texts({"222327 warning"}));
}

TEST(KSMedianSteps, GroupInNoSubsetStandsAloneWithAWarning) {
    // 0 to 1 differ and are dropped; 1 to 2 are homogeneous, with all groups but one unadjusted.
    const Table test = Result(Comparing("stepWise"), {kLow, kMiddle, kHigh});
    EXPECT_EQ(Subsets(test),
              (std::vector<std::string>{"1;2;2.28571429;;;0.130570018;0.130570018", WithoutValues("0;0")}));
    EXPECT_EQ(NamedMessages(test), Texts({"222327 warning", "220013 warning group=0;0"}));
}

TEST(KSMedianSteps, EmptyCategoryDoesNotCountInTheAdjustment) {
    // Of three groups a subset of two is unadjusted; of four categories it would have the power 4/2. The groups are
    // still counted where their categories say. Documents depend on both.
    const Table test = Result(Comparing("stepWise"), {kLow, {}, kMiddle, kHigh});
    EXPECT_EQ(Subsets(test),
              (std::vector<std::string>{"1;2;2.28571429;;;0.130570018;0.130570018", WithoutValues("0;0")}));
    EXPECT_EQ(test.Sub("StepwiseResult").SimpleRows("StepwiseInfo"), Texts({"0;2;3", "3.75;6.3;8.8"}));
}

TEST(KSMedianSteps, GivenMedianHoldsInEachStep) {
    // 0 to 1, [[8, 6], [0, 3]], is homogeneous around 7, and as it begins with the first group 1 to 2,
    // [[6, 1], [3, 6]], is tested as well: it differs.
    const Table test = Result(Given(7.0, "stepWise"), {kLow, kMiddle, kHigh});
    EXPECT_EQ(Subsets(test),
              (std::vector<std::string>{"0;1;3.23809524;;;0.0719442355;0.0719442355", WithoutValues("2;2")}));
    EXPECT_EQ(test.Sub("StepwiseResult").SimpleRows("StepwiseInfo")[1], "3.75;6.3;8.8");
}

TEST(KSMedianSteps, GivenMedianHoldsInTheSecondStep) {
    // Around 8: [[8, 0], [8, 0], [2, 6], [0, 8]]. 0 to 2 and 1 to 3 differ, 2 to 3 don't (2.2857 of one degree, power
    // 4/2). Second step: none of 0 to 1 is above 8, though they have medians of their own, and 1 to 2 differ (9.6).
    const Table test = Result(Given(8.0, "stepWise"), {{1, 2, 3, 4, 5, 6, 7, 8},
                                                       {1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8},
                                                       {7, 8, 10, 11, 12, 13, 14, 15},
                                                       {11, 12, 13, 14, 15, 16, 17, 18}});
    EXPECT_EQ(Subsets(test),
              (std::vector<std::string>{"2;3;2.28571429;;;0.130570018;0.244091507", WithoutValues("0;1")}));
    EXPECT_EQ(NamedMessages(test), Texts({"222327 warning", "222332 warning group=0;1"}));
}

TEST(KSMedianSteps, SubsetWithAllValuesTiedIsDegenerateAndStandsAsItIs) {
    const std::vector<double> ones(8, 1);
    const std::vector<double> fives(8, 5);
    // Equal medians keep the order of the groups.
    const Table test = Result(Comparing("stepWise"), {fives, ones, ones});
    EXPECT_EQ(test.Sub("StepwiseResult").SimpleRows("StepwiseInfo"), Texts({"1;2;0", "1;1;5"}));
    EXPECT_EQ(Subsets(test), (std::vector<std::string>{WithoutValues("0;1"), WithoutValues("2;2")}));
    // The warning names the positions in the order, not the groups.
    EXPECT_EQ(NamedMessages(test), Texts({"222327 warning", "222332 warning group=0;1", "220013 warning group=2;2"}));
}

TEST(KSMedianSteps, SubsetAboveAGivenMedianIsDegenerate) {
    const std::vector<double> fives(10, 5);
    const std::vector<double> ones(10, 1);
    const Table test = Result(Given(3, "stepWise"), {ones, fives, fives});
    EXPECT_EQ(Subsets(test), (std::vector<std::string>{WithoutValues("1;2"), WithoutValues("0;0")}));
    EXPECT_EQ(NamedMessages(test), Texts({"222327 warning", "222331 warning group=1;2", "220013 warning group=0;0"}));
}

TEST(KSMedianSteps, WeightsCountInTheStepsAsRepeatedRecords) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2, 3}).Weight("w");
    Rows rows;
    for (Rows::value_type row : RowsOf({kLow, kMiddle, kHigh})) {
        row.push_back(1.9);
        rows.push_back(row);
    }
    rows.push_back({5, 2, 0.9});  // counts in no cell
    const Table test = groups::ResultOf(kTest, Comparing("stepWise"), fields, rows);
    EXPECT_EQ(Subsets(test),
              (std::vector<std::string>{"1;2;2.28571429;;;0.130570018;0.130570018", WithoutValues("0;0")}));
}

// ---- Refusal ----

TEST(KSMedianComparisons, AreRefusedAtASignificanceThatEqualsTheLevel) {
    std::vector<double> ten;
    for (int i = 0; i < 10; ++i) ten.push_back(i);
    const Table test = Result(Comparing("pairWise"), {ten, ten, ten}, {{"sigLevel", 1.0}});  // chi-square 0
    EXPECT_EQ(NamedMessages(test), Texts({"222338 warning"}));
    EXPECT_FALSE(test.Sub("PairwiseResult").Exists());
}

}  // namespace
