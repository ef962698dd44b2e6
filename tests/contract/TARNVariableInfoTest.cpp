#include "contract/TARNVariableInfo.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/harness/TestRun.h"

namespace {

constexpr int kContinuous = 0;
constexpr int kLabelled = 1;
constexpr int kNumeric = 2;
constexpr int kText = 3;
constexpr int kOther = 4;
constexpr int kOrdinalText = 5;
const std::vector<int> kOutside{-1, 6, 1000};

class TARNVariableInfoTest : public testing::Test {
 protected:
    harness::Fields fields_ = harness::Fields()
                                  .Continuous("x")
                                  .Continuous("y", "the second; field")
                                  .Numeric("n", {3, -1.5, 0.1, 1e20}, true)
                                  .Text("s", {"a;b", "c\\d", "", "\\;", "plain", "a;b"})
                                  .Other("o")
                                  .Text("t", {"low", "high"}, true);
    TARNVariableInfo info_{fields_.List()};
};

}  // namespace

TEST_F(TARNVariableInfoTest, TellsNameAndLabel) {
    EXPECT_EQ(info_.GetName(kContinuous), "x");
    EXPECT_EQ(info_.GetLabel(kContinuous), "");
    EXPECT_EQ(info_.GetName(kLabelled), "y");
    EXPECT_EQ(info_.GetLabel(kLabelled), "the second; field");
}

TEST_F(TARNVariableInfoTest, IsOrdinalForMarkedCategoricalFieldsAlone) {
    EXPECT_TRUE(info_.IsOrdinal(kNumeric));
    EXPECT_TRUE(info_.IsOrdinal(kOrdinalText));
    for (const int field : {kContinuous, kText, kOther}) EXPECT_FALSE(info_.IsOrdinal(field)) << field;
}

TEST_F(TARNVariableInfoTest, ComparesKinds) {
    EXPECT_TRUE(info_.HaveSameKind(kContinuous, kLabelled));
    EXPECT_TRUE(info_.HaveSameKind(kText, kOrdinalText)) << "the order mark is no matter of the kind";
    EXPECT_TRUE(info_.HaveSameKind(kOther, kOther));
    EXPECT_FALSE(info_.HaveSameKind(kNumeric, kText));
    EXPECT_FALSE(info_.HaveSameKind(kContinuous, kOther));
    EXPECT_FALSE(info_.HaveSameKind(kContinuous, -1));
    EXPECT_FALSE(info_.HaveSameKind(-1, -1));
}

TEST_F(TARNVariableInfoTest, ACategoryTextIsEscapedInAStringFieldAndANumberTakenAsItIs) {
    const std::vector<std::string> escaped{"a\\;b", "c\\\\d", "", "\\\\\\;", "plain", "a\\;b"};
    for (int category = 0; category < static_cast<int>(escaped.size()); ++category) {
        EXPECT_EQ(info_.GetCategoryDisplayText(kText, category), escaped[static_cast<std::size_t>(category)]);
    }
    const std::vector<std::string> numbers{"3", "-1.5", "0.1", "1e+20"};
    for (int category = 0; category < static_cast<int>(numbers.size()); ++category) {
        EXPECT_EQ(info_.GetCategoryDisplayText(kNumeric, category), numbers[static_cast<std::size_t>(category)]);
    }
    for (const int category : {-1, 6, 100}) EXPECT_EQ(info_.GetCategoryDisplayText(kText, category), "");
    EXPECT_EQ(info_.GetCategoryDisplayText(kContinuous, 0), "");
}

TEST_F(TARNVariableInfoTest, MapsTextsToIndicesAndUnknownOnesToMinusOne) {
    const std::vector<std::string> texts{"plain", "nowhere", "", "a;b", "plain", "a\\;b"};
    EXPECT_EQ(info_.MapCategories(kText, texts), (std::vector<double>{4, -1, 2, 0, 4, -1}));
    EXPECT_EQ(info_.MapCategories(kText, std::vector<std::string>()), std::vector<double>());
    EXPECT_EQ(info_.MapCategories(kContinuous, std::vector<std::string>{"x"}), (std::vector<double>{-1}));
}

TEST_F(TARNVariableInfoTest, MapsValuesToIndicesAndUnknownOnesToMinusOne) {
    const std::vector<double> values{1e20, 3, 0.1, 0.1000000000000001, -1.5, harness::kNone};
    EXPECT_EQ(info_.MapCategories(kNumeric, values), (std::vector<double>{3, 0, 2, -1, 1, -1}));
    EXPECT_EQ(info_.MapCategories(kText, std::vector<double>{0}), (std::vector<double>{-1}));
}

TEST_F(TARNVariableInfoTest, ListsTheCategoriesThatAreNotInAList) {
    EXPECT_EQ(info_.CategoriesNotIn(kNumeric, {2, 0}), (std::vector<double>{1, 3}));
    EXPECT_EQ(info_.CategoriesNotIn(kNumeric, {}), (std::vector<double>{0, 1, 2, 3}));
    EXPECT_EQ(info_.CategoriesNotIn(kNumeric, {-1, 7}), (std::vector<double>{0, 1, 2, 3}));
    EXPECT_EQ(info_.CategoriesNotIn(kNumeric, {3, 2, 1, 0}), std::vector<double>());
    EXPECT_EQ(info_.CategoriesNotIn(kContinuous, {}), std::vector<double>());
}

TEST_F(TARNVariableInfoTest, AFieldOutsideTheListHasNoNameAndNoCategories) {
    for (const int field : kOutside) {
        SCOPED_TRACE(field);
        EXPECT_EQ(info_.GetName(field), "");
        EXPECT_EQ(info_.GetLabel(field), "");
        EXPECT_FALSE(info_.IsOrdinal(field));
        EXPECT_EQ(info_.GetCategoryDisplayText(field, 0), "");
        EXPECT_EQ(info_.MapCategories(field, std::vector<double>{1, 2}), (std::vector<double>{-1, -1}));
        EXPECT_EQ(info_.CategoriesNotIn(field, {}), std::vector<double>());
    }
}

TEST_F(TARNVariableInfoTest, IsASmallValueThatMayBeCopied) {
    const TARNVariableInfo copy = info_;
    EXPECT_EQ(copy.GetName(kLabelled), "y");
}
