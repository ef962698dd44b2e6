// The comparisons after Cochran's Q test. Reference values: worked by hand as fractions, significances scipy 1.17,
// norm.sf and chi2.sf; whole searches are held against one that counts every subset anew.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/common/QKDistFun.h"
#include "related/TARNCochransQ.h"
#include "tests/harness/CollectorRig.h"
#include "tests/harness/PlainStepwise.h"
#include "tests/related/RankedRun.h"

namespace {

using harness::MessagesOf;
using harness::Texts;
using ranked::Fields;
using ranked::Names;
using ranked::Rows;
using ranked::RowsOf;
using ranked::Table;

constexpr const char* kTest = "RCochransQ";

/// Siegel's interviews, see the tests of the statistic: 13, 13 and 3 successes of 18.
Rows Interviews() {
    return {{1, 1, 0}, {0, 1, 0}, {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, 0}, {0, 0, 0},
            {1, 1, 1}, {1, 1, 1}, {1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {1, 1, 1}, {1, 1, 0}, {1, 1, 0}, {0, 0, 0}};
}

Table ResultOf(Fields& fields, const Rows& rows, const std::string& comparison, bool isExtended = false) {
    QKSettings entry = ranked::Entry(Names(rows.front().size()), comparison);
    entry.AddSetting("classFormation", "givenCategoryList");
    AddVecSetting(entry, "successCategoryList", Texts({"yes"}), false);
    return harness::ResultOf(kTest, entry, fields, rows, {{"extendedArithmetic", isExtended ? 1 : 0}});
}

/// Success is 1.
Table Result(const Rows& rows, const std::string& comparison, bool isExtended = false) {
    Fields fields;
    for (const std::string& name : Names(rows.front().size())) fields.Text(name, {"no", "yes"});
    return ResultOf(fields, rows, comparison, isExtended);
}

// ---- All pairs ----

TEST(CochransQPairs, ComparesAllPairs) {
    const Table test = Result(Interviews(), "pairWise");
    EXPECT_EQ(test.ChildNames().back(), "StructuredTable PairwiseResult");
    EXPECT_EQ(RowsOf(test, "PairwiseResult", "PairwiseInfo"), Texts({"0;1;2", "13;13;3"}));
    const auto info = test.Sub("PairwiseResult").Node().child("SimpleTable");
    EXPECT_EQ(std::string(info.child_value("RowNames")), "");
    EXPECT_EQ(std::string(info.child_value("ColumnNames")), "IndexOrder;Value");
    const auto pairs = RowsOf(test, "PairwiseResult", "Content");
    ASSERT_EQ(pairs.size(), 3U);
    const double error = 0.15713484026367724;  // sqrt(2 (3 * 29 - 63) / (18^2 * 3 * 2)) = sqrt(2) / 9
    ranked::ExpectNumbers(pairs[0], {0, 1, 0, error, 0, 1, 1});
    for (const int first : {0, 1}) {
        ranked::ExpectNumbers(pairs[static_cast<std::size_t>(first + 1)],
                              {static_cast<double>(first), 2, 10.0 / 18, error, 3.5355339059327378,
                               0.00040695201744495886, 0.0012208560523348766});
    }
}

TEST(CochransQPairs, RefusalsHaveTheirCodesAndStandBeforeTheTables) {
    const Rows alike{{1, 1, 1}, {0, 0, 0}, {1, 0, 1}, {0, 1, 1}};
    const Table test = Result(alike, "pairWise");
    EXPECT_EQ(MessagesOf(test), Texts({"221220 warning"}));
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable TwoClassComparison", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(MessagesOf(Result(alike, "stepWise")), Texts({"221218 warning"}));
    const Rows pair(9, {1, 0});
    EXPECT_EQ(MessagesOf(Result(pair, "pairWise")), Texts({"221219 warning"}));
    EXPECT_EQ(MessagesOf(Result(pair, "stepWise")), Texts({"221217 warning"}));
    EXPECT_EQ(Result(pair, "stepWise").Attribute("decision"), "reject");
}

// ---- Step by step ----

TEST(CochransQSteps, CountsOfASubsetAreThoseOfTheListAtItsPositions) {
    const Table test = Result(Interviews(), "stepWise");
    EXPECT_EQ(test.ChildNames().back(), "StructuredTable StepwiseResult");
    const auto samples = RowsOf(test, "StepwiseResult", "StepwiseInfo");
    EXPECT_EQ(samples[0], "2;0;1");
    ranked::ExpectNumbers(samples[1], {3.0 / 18, 13.0 / 18, 13.0 / 18});
    // Positions 0-1 are the fields 2 and 0, with a row term of 3 * 4 + 10 = 22, and take the counts of the fields 0 and
    // 1: (2 * 338 - 26^2) / (52 - 22) = 0. Positions 1-2 are the fields 0 and 1, row term 11 * 4 + 4 = 48, counts of
    // the fields 1 and 2: (2 * 178 - 16^2) / (32 - 48).
    EXPECT_EQ(RowsOf(test, "StepwiseResult", "Content"), Texts({"0;1;0;;;1;1", "1;2;-6.25;;;1;1"}));
    EXPECT_TRUE(MessagesOf(test).empty());
}

TEST(CochransQSteps, FindsSubsetsAndLoneSamplesOfFieldsInAscendingOrder) {
    // 0, 9 and 10 of 10 successes: (2 * 81 - 81) / (18 - 9) = 9 for 0-1, (2 * 181 - 361) / (38 - 37) = 1 for 1-2.
    Rows rows(10, {0, 1, 1});
    rows[4] = {0, 0, 1};
    const Table test = Result(rows, "stepWise");
    const auto subsets = RowsOf(test, "StepwiseResult", "Content");
    ASSERT_EQ(subsets.size(), 2U);
    ranked::ExpectNumbers(subsets[0], {1, 2, 1, 0, 0, 0.31731050786291115, 0.31731050786291115});
    EXPECT_EQ(subsets[1], "0;0;__MISSING__;;;__MISSING__;__MISSING__");  // behind it, in the order of finding
    EXPECT_EQ(MessagesOf(test), Texts({"220013 warning"}));
    EXPECT_EQ(test.Sub("WarningMessages").Sub("Message").Row("group"), "0;0");
    EXPECT_EQ(test.ChildNames()[1], "StructuredTable WarningMessages");  // recorded in the pass, not in the writing
}

TEST(CochransQSteps, FlagsOfAFieldAreThoseOfTheListAtItsPosition) {
    // "yes" is category 1 of x0 and x1 and category 0 of x2, which has the fewest successes and comes first.
    Fields fields;
    fields.Text("x0", {"no", "yes"}).Text("x1", {"no", "yes"}).Text("x2", {"yes", "no"});
    Rows rows = Interviews();
    for (auto& row : rows) row[2] = 1 - row[2];
    const Table test = ResultOf(fields, rows, "stepWise");
    EXPECT_EQ(RowsOf(test, "StepwiseResult", "StepwiseInfo")[0], "2;0;1");
    // Position 0 is x2 by the flags of x0: its category 1, "no", counts. Its successes at position 0 are then the 15
    // failures, with 10 records of two (13 of x0 less the 3 of both), 8 of one: 3 of x0 alone and 5 of x2 alone; row
    // term 10 * 4 + 8 = 48, over 52. Position 2 is x1 by the flags of x2: its 5 "no" count, beside x0: 2 records of
    // two, 11 + 3 of one; row term 8 + 14 = 22.
    EXPECT_EQ(RowsOf(test, "StepwiseResult", "Content")[0], "0;1;0;;;1;1");
    // (2 * 178 - 16^2) / (32 - 22) = 10, not homogeneous: x1 at position 2 stands alone.
    EXPECT_EQ(RowsOf(test, "StepwiseResult", "Content")[1], "2;2;__MISSING__;;;__MISSING__;__MISSING__");
}

TEST(CochransQSteps, ExtendedFlagsOfAFieldAreItsOwn) {
    Fields fields;
    fields.Text("x0", {"no", "yes"}).Text("x1", {"no", "yes"}).Text("x2", {"yes", "no"});
    Rows rows = Interviews();
    for (auto& row : rows) row[2] = 1 - row[2];
    const Table test = ResultOf(fields, rows, "stepWise", true);
    EXPECT_EQ(test.Attribute("arithmetic"), "textbook");
    // x0 and x1 have 13 successes each, so that their Q is 0; x2 with its 3 stands alone.
    EXPECT_EQ(RowsOf(test, "StepwiseResult", "Content"),
              Texts({"1;2;0;;;1;1", "0;0;__MISSING__;;;__MISSING__;__MISSING__"}));
}

/// The stepwise result by definition, with everything counted anew in every subset. `isTextbook`: with the successes of
/// the subset's own fields.
plain::Result SearchPlainly(const Rows& rows, double level, bool isTextbook) {
    const std::size_t k = rows.front().size();
    std::vector<long> successes(k, 0);
    for (const auto& row : rows) {
        for (std::size_t i = 0; i < k; ++i) successes[i] += row[i] == 1 ? 1 : 0;
    }
    std::vector<std::size_t> order(k);
    for (std::size_t i = 0; i < k; ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return successes[a] < successes[b]; });
    return plain::SearchOfDroppingTests(static_cast<int>(k), static_cast<int>(k), level, [&](int first, int last) {
        const long m = last - first + 1;
        long rowTerm = 0;
        for (const auto& row : rows) {
            long inRow = 0;
            for (int p = first; p <= last; ++p) inRow += row[order[static_cast<std::size_t>(p)]] == 1 ? 1 : 0;
            rowTerm += inRow * inRow;
        }
        long sum = 0;
        long squares = 0;
        for (auto p = static_cast<std::size_t>(first); p <= static_cast<std::size_t>(last); ++p) {
            const long ofField = successes[isTextbook ? order[p] : p];  // of the list, not of the order
            sum += ofField;
            squares += ofField * ofField;
        }
        const double statistic = m * sum == rowTerm
                                     ? 0.0
                                     : static_cast<double>(m * squares - sum * sum) * static_cast<double>(m - 1) /
                                           static_cast<double>(m * sum - rowTerm);
        return 1 - QKMath::QKDistFun::CdfChi(statistic, static_cast<double>(m - 1));
    });
}

void ExpectSearchesAgree(std::size_t k, bool ascending, bool isExtended) {
    std::mt19937 random(static_cast<unsigned>(3 * k) + (ascending ? 1 : 0));
    Rows rows(60, std::vector<double>(k));
    for (auto& row : rows) {
        for (std::size_t i = 0; i < k; ++i) {
            // Proportions in steps of three fields each.
            const std::size_t place = ascending ? i : i * 41 % k;
            row[i] = static_cast<double>(random() % (k + 2)) < 1 + static_cast<double>(place / 3 * 3) ? 1 : 0;
        }
    }
    const Table test = Result(rows, "stepWise", isExtended);
    if (test.Attribute("decision") != "reject") return;  // two or three proportions may be alike
    const plain::Result expected = SearchPlainly(rows, 0.05, isExtended);
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
    EXPECT_EQ(MessagesOf(test).size(), expected.warnedOf.size()) << k;
}

TEST(CochransQSteps, SearchAgreesWithOneThatCountsEverySubsetAnewFrom3To40Fields) {
    for (std::size_t k = 3; k <= 40; k += k < 12 ? 1 : 4) {
        ExpectSearchesAgree(k, true, false);
        ExpectSearchesAgree(k, false, false);
    }
}

TEST(CochransQSteps, ExtendedItAgreesWithOneThatCountsTheSubsetsOwnFields) {
    for (std::size_t k = 3; k <= 40; k += k < 12 ? 1 : 4) {
        ExpectSearchesAgree(k, true, true);
        ExpectSearchesAgree(k, false, true);
    }
}

// ---- Passes ----

/// The test over four fields, with the descriptives that it wants to be there.
struct Alone {
    Alone(double pairWise, double stepWise) : rig(YesNo(), {}), results(*rig.collector) {
        auto settings = std::make_unique<QKSettings>();
        AddVecSetting(*settings, "variableIndex", std::vector<int>{0, 1, 2, 3}, false);
        AddVecSetting(*settings, "successCategoryListStr", Texts({"yes"}), false);
        settings->AddSetting("userSpecifyGroupList", true);
        settings->AddSetting("pairWise", pairWise);
        settings->AddSetting("stepWise", stepWise);
        test = std::make_unique<TARNCochransQ>(std::move(settings), CategoryMatcher(fields.List()));
        test->SetUnivariateResults(&results);
    }

    Fields& YesNo() {
        for (const std::string& name : Names(4)) fields.Text(name, {"no", "yes"});
        return fields;
    }

    /// A pass over records of 0, 10, 20 and 30 successes of 30; the number of passes still expected.
    int Pass() {
        EXPECT_FALSE(test->BeginPass().IsError());
        for (int i = 0; i < 30; ++i) {
            Record record(4);
            for (int field = 0; field < 4; ++field) record[static_cast<std::size_t>(field)] = i < field * 10 ? 1 : 0;
            EXPECT_FALSE(test->ProcessRecord(record).IsError());
        }
        EXPECT_FALSE(test->EndPass().IsError());
        return test->GetPassKind();
    }

    Fields fields;
    CollectorRig rig;
    UnivariateResults results;
    std::unique_ptr<TARNCochransQ> test;
};

TEST(CochransQSteps, PassesCountDownBelow0) {
    Alone steps(0, 1);
    EXPECT_EQ(steps.Pass(), 2);  // of 3
    EXPECT_TRUE(steps.test->NeedsAnotherPass());
    EXPECT_EQ(steps.test->GetPassKind(), 0);
    EXPECT_EQ(steps.Pass(), -1);
    EXPECT_TRUE(steps.test->NeedsAnotherPass());
    EXPECT_EQ(steps.Pass(), 0);  // all four differ
    EXPECT_FALSE(steps.test->NeedsAnotherPass());
    std::vector<int> used{9};
    steps.test->GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{9, 0, 1, 2, 3}));
}

TEST(CochransQSteps, ComparisonIsAskedForByExactly1) {
    for (const double other : {0.0, 2.0, 0.999}) {
        Alone steps(other, other);
        EXPECT_EQ(steps.Pass(), 0);
        EXPECT_FALSE(steps.test->NeedsAnotherPass());
        const std::unique_ptr<QKXML::XMLElement> element(steps.test->MakeResultElement());
        EXPECT_EQ(element->GetChildren().size(), 3U);
    }
    Alone both(1, 1);
    both.Pass();
    EXPECT_TRUE(both.test->NeedsAnotherPass());
}

}  // namespace
