// The homogeneous subsets of the Friedman test. Statistics are worked by hand, their significances scipy's chi2.sf;
// whole searches are held against one that ranks every subset anew.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "platform/common/QKDistFun.h"
#include "tests/harness/PlainStepwise.h"
#include "tests/related/RankedRun.h"

namespace {

using harness::MessagesOf;
using harness::Texts;
using ranked::FirstBase;
using ranked::Rows;
using ranked::RowsOf;
using ranked::Table;

Table StepwiseResult(const Rows& rows) {
    return ranked::ResultOf("RFriedmansTwoWayByRanks", rows, "stepWise");
}

TEST(FriedmanStepwise, FindsTheHomogeneousSubsetsOfTheFirstBaseTimes) {
    const Table test = StepwiseResult(FirstBase());
    EXPECT_EQ(test.ChildNames()[4], "StructuredTable StepwiseResult");
    const auto samples = RowsOf(test, "StepwiseResult", "StepwiseInfo");
    ASSERT_EQ(samples.size(), 2U);
    EXPECT_EQ(samples[0], "2;1;0");
    ranked::ExpectNumbers(samples[1], {32.0 / 22, 47.0 / 22, 53.0 / 22});
    const auto subsets = RowsOf(test, "StepwiseResult", "Content");
    ASSERT_EQ(subsets.size(), 2U);
    EXPECT_EQ(subsets[0], "0;0;__MISSING__;;;__MISSING__;__MISSING__");
    // Rank sums 30 and 36 of the two fields alone, without a correction for their four ties: 18 / 11.
    ranked::ExpectNumbers(subsets[1], {1, 2, 18.0 / 11, 0, 0, 0.20082512269514308, 0.20082512269514308});
    EXPECT_NE(subsets[1].find(";;;"), std::string::npos);
    EXPECT_EQ(MessagesOf(test), Texts({"220013 warning"}));
    EXPECT_EQ(test.Sub("WarningMessages").Sub("Message").Row("group"), "0;0");
    EXPECT_EQ(test.Sub("WarningMessages").Sub("Message").Row("paramNum"), "0");
    EXPECT_EQ(test.ChildNames().back(), "StructuredTable WarningMessages");
}

TEST(FriedmanStepwise, ThreeFieldsAllDifferentAreThreeLoneSamplesWithThreeWarnings) {
    const Table test = StepwiseResult(Rows(9, {3, 1, 2}));
    const std::string missing = ";__MISSING__;;;__MISSING__;__MISSING__";
    EXPECT_EQ(RowsOf(test, "StepwiseResult", "Content"), Texts({"0;0" + missing, "1;1" + missing, "2;2" + missing}));
    EXPECT_EQ(RowsOf(test, "StepwiseResult", "StepwiseInfo"), Texts({"1;2;0", "1;2;3"}));
    EXPECT_EQ(MessagesOf(test).size(), 3U);
}

/// The sum of t cubed minus t over the ties of a row: of each value the equal ones, squared, less 1.
double TieSumOf(const std::vector<double>& row, const std::vector<std::size_t>& fields) {
    double sum = 0;
    for (const std::size_t field : fields) {
        const auto equals =
            std::count_if(fields.begin(), fields.end(), [&](std::size_t i) { return row[i] == row[field]; });
        sum += static_cast<double>(equals * equals - 1);
    }
    return sum;
}

/// The stepwise result by definition: every rank counted anew in every subset. `areTiesCorrected`: as in the textbook.
plain::Result SearchPlainly(const Rows& rows, double level, std::vector<std::size_t>& order,
                            bool areTiesCorrected = false) {
    const std::size_t k = rows.front().size();
    const auto sumsOf = [&](const std::vector<std::size_t>& fields) {
        std::vector<double> sums(fields.size(), 0.0);
        for (const auto& row : rows) {
            for (std::size_t i = 0; i < fields.size(); ++i) {
                double rank = 0.5;
                for (const std::size_t other : fields) {
                    rank += row[other] < row[fields[i]] ? 1 : row[other] == row[fields[i]] ? 0.5 : 0;
                }
                sums[i] += rank;
            }
        }
        return sums;
    };
    order.clear();
    for (std::size_t i = 0; i < k; ++i) order.push_back(i);
    const std::vector<double> overall = sumsOf(order);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return overall[a] < overall[b]; });
    return plain::SearchOfRankedRows(static_cast<int>(k), level, [&](int first, int last) {
        const std::vector<double> sums = sumsOf({order.begin() + first, order.begin() + last + 1});
        const auto m = static_cast<double>(sums.size());
        const auto n = static_cast<double>(rows.size());
        double squares = 0;
        for (const double sum : sums) squares += sum * sum;
        double ties = 0;
        for (const auto& row : rows) ties += TieSumOf(row, {order.begin() + first, order.begin() + last + 1});
        const double untied = areTiesCorrected ? 1 - ties / ((m - 1) * m * (m + 1) * n) : 1;
        return 1 - QKMath::QKDistFun::CdfChi((12 * squares / (m * (m + 1) * n) - 3 * n * (m + 1)) / untied, m - 1);
    });
}

void ExpectSearchesAgree(bool isExtended) {
    std::mt19937 random(11);
    for (std::size_t k = 3; k <= 40; k += k < 12 ? 1 : 4) {
        Rows rows(24, std::vector<double>(k));
        for (auto& row : rows) {
            for (std::size_t i = 0; i < k; ++i) {
                // Some fields lie apart, some close together, some rows have ties.
                row[i] = (k > 12 ? 0.5 : 1) * static_cast<double>(i * 41 % k) + static_cast<double>(random() % 8) / 2;
            }
        }
        std::vector<std::size_t> order;
        const plain::Result expected = SearchPlainly(rows, 0.05, order, isExtended);
        const Table test =
            ranked::ResultOf("RFriedmansTwoWayByRanks", rows, "stepWise", {{"extendedArithmetic", isExtended ? 1 : 0}});
        const bool hasSubset = std::any_of(expected.shown.begin(), expected.shown.end(),
                                           [](const plain::Found& found) { return found.first < found.last; });
        EXPECT_EQ(test.Attribute("arithmetic"), isExtended && hasSubset ? "textbook" : "") << k;
        ASSERT_EQ(test.Attribute("decision"), "reject") << k;
        const auto positions = ranked::NumbersOf(RowsOf(test, "StepwiseResult", "StepwiseInfo")[0]);
        if (k <= 32) {
            EXPECT_TRUE(std::equal(order.begin(), order.end(), positions.begin(), positions.end())) << k;
        }
        const auto subsets = RowsOf(test, "StepwiseResult", "Content");
        ASSERT_EQ(subsets.size(), expected.shown.size()) << k;
        for (std::size_t i = 0; i < subsets.size(); ++i) {
            const std::vector<double> numbers = ranked::NumbersOf(subsets[i]);
            EXPECT_EQ(numbers[0], expected.shown[i].first) << k;
            EXPECT_EQ(numbers[1], expected.shown[i].last) << k;
            if (numbers[0] == numbers[1]) continue;
            EXPECT_NEAR(numbers[5], expected.shown[i].sig, 1e-11) << k;
            EXPECT_NEAR(numbers[6], expected.shown[i].adjSig, 1e-11) << k;
        }
    }
}

TEST(FriedmanStepwise, StepwiseSearchAgreesWithOneThatRanksEverySubsetAnewFrom3To40Fields) {
    ExpectSearchesAgree(false);
}

TEST(FriedmanStepwise, ExtendedItAgreesWithOneThatCorrectsEverySubsetForItsTies) {
    ExpectSearchesAgree(true);
}

TEST(FriedmanStepwise, SubsetOfOneFieldLessThanAllIsNotAdjustedOneOfTwoLessIs) {
    // Fields 0 to 3 alike, 4 above all.
    Rows rows;
    for (int i = 0; i < 12; ++i) {
        std::vector<double> row(5);
        for (int j = 0; j < 4; ++j) row[static_cast<std::size_t>(j)] = (i + j) % 4;
        row[4] = 9;
        rows.push_back(row);
    }
    const Table alike = StepwiseResult(rows);
    EXPECT_EQ(RowsOf(alike, "StepwiseResult", "Content"),
              Texts({"0;3;0;;;1;1", "4;4;__MISSING__;;;__MISSING__;__MISSING__"}));
    for (auto& row : rows) row[0] = -1;  // below all
    const auto subsets = RowsOf(StepwiseResult(rows), "StepwiseResult", "Content");
    ASSERT_EQ(subsets.size(), 3U);
    const std::vector<double> numbers = ranked::NumbersOf(subsets[1]);
    EXPECT_EQ(numbers[0], 1);
    EXPECT_EQ(numbers[1], 3);
    EXPECT_NEAR(numbers[6], 1 - std::pow(1 - numbers[5], 5.0 / 3), 1e-12);
    EXPECT_GT(numbers[6], numbers[5]);
}

}  // namespace
