// Box plots of groups. Quartiles are Tukey's hinges, worked by hand: of nine values the third, fifth and seventh.

#include "independent/GroupBoxPlot.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "tests/harness/Document.h"
#include "tests/independent/GroupRun.h"

namespace {

using groups::Texts;
using Records = std::vector<std::vector<double>>;

constexpr int kNone = -1;

/// "Box" and the two rows of "Outliers".
std::vector<std::string> TablesOf(const Records& records, std::int32_t count, int weightIndex, int caseIdIndex) {
    std::vector<double> values;
    std::vector<std::int32_t> weights;
    std::vector<double> caseIds;
    for (const std::vector<double>& record : records) {
        values.push_back(record[0]);
        if (weightIndex >= 0)
            weights.push_back(static_cast<std::int32_t>(record[static_cast<std::size_t>(weightIndex)]));
        if (caseIdIndex >= 0) caseIds.push_back(record[static_cast<std::size_t>(caseIdIndex)]);
    }
    GroupBoxPlot box(count);
    box.AddAscendingToQuantiles(values.data(), weightIndex < 0 ? nullptr : weights.data(), values.size());
    box.Finish();
    box.AddAscendingToOutliers(values.data(), caseIdIndex < 0 ? nullptr : caseIds.data(), values.size());

    const std::unique_ptr<QKXML::XMLElement> parent = QKXML::XMLElement::Create("Group0");
    StructuredTable table(*parent);
    box.AddTables(table);
    std::ostringstream text;
    QKXML::WriteTree(text, nullptr, parent.get(), 0);
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(text.str().c_str()));
    const harness::Table written(document.document_element());
    EXPECT_EQ(written.ChildNames(), Texts({"SimpleTable Box", "SimpleTable Outliers"}));
    std::vector<std::string> rowTexts = written.SimpleRows("Box");
    for (const std::string& row : written.SimpleRows("Outliers")) rowTexts.push_back(row);
    return rowTexts;
}

std::vector<std::string> TablesOf(const std::vector<double>& values) {
    Records records;
    for (const double value : values) records.push_back({value});
    return TablesOf(records, static_cast<std::int32_t>(values.size()), kNone, kNone);
}

TEST(GroupBoxPlot, BoxRunsFromTheSmallestToTheLargestValueInsideTheFences) {
    // Fences 3 - 6 and 7 + 6.
    EXPECT_EQ(TablesOf({1, 2, 3, 4, 5, 6, 7, 8, 20}), Texts({"1;3;5;7;8", "20", ""}));
    EXPECT_EQ(TablesOf({4}), Texts({"4;4;4;4;4", "", ""}));
}

TEST(GroupBoxPlot, CaseIdentifiersAreWholeNumbersWithAllTheirDigits) {
    Records records;
    for (const double value : {1, 2, 3, 4, 5, 6, 7, 8}) records.push_back({value, 0});
    records.push_back({20, 1234567890123408});
    records.push_back({21, 7.9});
    EXPECT_EQ(TablesOf(records, 10, kNone, 1)[2], "7;1234567890123408");
}

TEST(GroupBoxPlot, HighOutliersComeBeforeLowOnesEachFromTheLastToTheFirst) {
    // Hinges 1.5 and 6.5, fences -6 and 14.
    EXPECT_EQ(TablesOf({-50, -40, 1, 2, 3, 4, 5, 6, 7, 90, 100}), Texts({"1;1.5;4;6.5;7", "100;90;-40;-50", ""}));
}

TEST(GroupBoxPlot, ValueAtTheUpperFenceIsTheLargestButOneAtTheLowerFenceIsNotTheSmallest) {
    EXPECT_EQ(TablesOf({1, 2, 3, 4, 5, 6, 7, 8, 13}), Texts({"1;3;5;7;13", "", ""}));
    EXPECT_EQ(TablesOf({-3, 2, 3, 4, 5, 6, 7, 8, 9}), Texts({"2;3;5;7;9", "", ""}));
    // Equal quartiles are both fences: the smallest value may then lie on them.
    EXPECT_EQ(TablesOf({1, 5, 5, 5, 5, 5, 5, 5, 9}), Texts({"5;5;5;5;5", "9;1", ""}));
}

TEST(GroupBoxPlot, FencesHaveARelativeToleranceButNoneBesideZero) {
    EXPECT_EQ(TablesOf({1, 2, 3, 4, 5, 6, 7, 8, 13 * (1 + 2e-14)})[1], "");
    EXPECT_EQ(TablesOf({1, 2, 3, 4, 5, 6, 7, 8, 13 * (1 + 3e-14)})[1], "13.0000000000004");
    EXPECT_EQ(TablesOf({-1e-300, 2, 3, 3.5, 4, 4.5, 5, 5.5, 6})[1], "-1e-300");  // the lower fence is 0
    EXPECT_EQ(TablesOf({0, 2, 3, 3.5, 4, 4.5, 5, 5.5, 6})[1], "");
}

// Equal quartiles are both fences. The tolerance is 100 steps of numbers from 1 to 2, 2^-52 each, times the larger one
// of the two, which is 1 here; one step more is beyond it.
TEST(GroupBoxPlot, ToleranceIsThatOfTheLargerSizeWhateverTheSign) {
    constexpr double kStep = 0x1p-52;
    constexpr double kNear = 1 - 100 * kStep;
    constexpr double kFar = 1 - 100.5 * kStep;
    for (const double sign : {1.0, -1.0}) {
        const auto outliers = [sign](double fence, double value) {
            std::vector<double> values(9, sign * fence);
            (sign * value > sign * fence ? values.back() : values.front()) = sign * value;
            const std::vector<std::string> tables = TablesOf(values);
            return tables[1].empty() ? 0 : 1;
        };
        EXPECT_EQ(outliers(1, kNear), 0) << sign;
        EXPECT_EQ(outliers(kNear, 1), 0) << sign;
        EXPECT_EQ(outliers(1, kFar), 1) << sign;
        EXPECT_EQ(outliers(kFar, 1), 1) << sign;
    }
}

TEST(GroupBoxPlot, CaseIdentifiersAreWholeNumbers) {
    const Records records{{-9, 17.9}, {1, 1}, {1, 2}, {2, 3}, {2, 4}, {3, 5}, {3, 6}, {3, 7}, {9, 9876543210}};
    EXPECT_EQ(TablesOf(records, 9, kNone, 1), Texts({"1;1;2;3;3", "9;-9", "9876543210;17"}));
    EXPECT_EQ(TablesOf(records, 9, kNone, kNone)[2], "");
    const Records unnamed{{1, 0}, {1, 0}, {1, 0}, {1, 0}, {1, 0}, {1, 0}, {1, 0}, {9, harness::kNone}, {9, -0.5}};
    EXPECT_EQ(TablesOf(unnamed, 9, kNone, 1), Texts({"1;1;1;1;1", "9;9", "0;"}));
}

TEST(GroupBoxPlot, WeightsMoveTheQuartilesAndAnOutlierCountsOnceWhateverItsWeight) {
    // 2.9 counts as 2: 1 1 2 2 3 3 4 4 4, quartiles 2, 3, 4, fences -1 and 7.
    EXPECT_EQ(TablesOf({{-8, 0.5}, {1, 2.9}, {2, 2}, {3, 2}, {4, 3}, {9, 0}}, 9, 1, kNone),
              Texts({"1;2;3;4;4", "9;-8", ""}));
}

TEST(GroupBoxPlot, GroupWithoutACaseHasAnEmptyBox) {
    EXPECT_EQ(TablesOf(Records{}, 0, kNone, kNone), Texts({";;;;", "", ""}));
}

}  // namespace
