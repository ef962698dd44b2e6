#include "platform/common/QKVarList.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "platform/common/QKMV.h"

namespace {

std::shared_ptr<QKContVar> Continuous(const std::string& name) {
    return std::make_shared<QKContVar>(name, "");
}

QKCatVar Numbers() {
    return QKCatVar(
        "n", "label of n", true,
        std::vector<QKCatVar::NumericCategory>{{3, "three"}, {-0.1, ""}, {1e20, ""}, {3, "again"}, {0, ""}});
}

QKCatVar Texts() {
    return QKCatVar("s", "", false,
                    std::vector<QKCatVar::StringCategory>{{"b", "bee"}, {"", "empty"}, {"3", ""}, {"b", "again"}},
                    DateType::kTime);
}

}  // namespace

TEST(QKVarListTest, FieldsHaveTheirPositionsAndNames) {
    QKVarList list;
    EXPECT_EQ(list.Size(), 0);
    EXPECT_EQ(list.AddNewVar(Continuous("x")), 0);
    EXPECT_EQ(list.AddNewVar(Continuous("y")), 1);
    EXPECT_EQ(list.Size(), 2);
    EXPECT_EQ(list.FindVariable("y"), 1);
    EXPECT_EQ(list.GetVarAt(1)->GetName(), "y");
    EXPECT_EQ(list.GetVariable("y"), list.GetVarAt(1));
}

TEST(QKVarListTest, UnknownNamesAndPositionsAreNoField) {
    QKVarList list;
    list.AddNewVar(Continuous("x"));
    for (const std::string name : {"", "X", "x ", "nowhere"}) {
        EXPECT_EQ(list.FindVariable(name), -1) << name;
        EXPECT_EQ(list.GetVariable(name), nullptr) << name;
    }
    for (const int position : {-1, 1, 1000, std::numeric_limits<int>::min()}) {
        EXPECT_EQ(list.GetVarAt(position), nullptr) << position;
    }
}

TEST(QKVarListTest, OfARepeatedNameTheFirstIsFound) {
    QKVarList list;
    list.AddNewVar(Continuous("x"));
    list.AddNewVar(Continuous("y"));
    EXPECT_EQ(list.AddNewVar(Continuous("x")), 2);
    EXPECT_EQ(list.FindVariable("x"), 0);
    EXPECT_EQ(list.Size(), 3);
    EXPECT_EQ(list.GetVarAt(2)->GetName(), "x");
}

TEST(QKVarListTest, TheWeightFieldIsAllOnesWhenThereIsNone) {
    QKVarList list;
    list.AddNewVar(Continuous("x"));
    EXPECT_EQ(list.GetFreqWeightIndex(), -1);
    EXPECT_EQ(list.GetFreqWeightVariable(), nullptr);
    list.SetFreqWeightIndex(list.AddNewVar(Continuous("w")));
    EXPECT_EQ(list.GetFreqWeightIndex(), 1);
    EXPECT_EQ(list.GetFreqWeightVariable()->GetName(), "w");
}

TEST(QKVarListTest, KeepsTheCountsOfTheRecords) {
    QKVarList list;
    EXPECT_EQ(list.GetUnWeightedCount(), 0u);
    list.SetCounts({10.5, 4, 3, 2, 1.5});
    EXPECT_EQ(list.GetWeightedCount(), 10.5);
    EXPECT_EQ(list.GetUnWeightedCount(), 4u);
    EXPECT_EQ(list.GetDroppedCount(), 3u);
    EXPECT_EQ(list.GetBadWeightCount(), 2u);
    EXPECT_EQ(list.GetWeightedDroppedCount(), 1.5);
}

TEST(QKVarListTest, ACopySharesTheFields) {
    QKVarList list;
    list.AddNewVar(Continuous("x"));
    QKVarList copy = list;
    copy.AddNewVar(Continuous("y"));
    EXPECT_EQ(copy.GetVarAt(0), list.GetVarAt(0));
    EXPECT_EQ(list.Size(), 1);
    EXPECT_EQ(list.FindVariable("y"), -1);
}

TEST(QKContVarTest, HasNoCategories) {
    const QKContVar variable("x", "label", DateType::kDate);
    EXPECT_EQ(variable.GetKind(), 1);
    EXPECT_EQ(variable.GetName(), "x");
    EXPECT_EQ(variable.GetLabel(), "label");
    EXPECT_EQ(variable.GetDateType(), DateType::kDate);
    EXPECT_EQ(variable.GetCategoryCount(), 0);
    EXPECT_EQ(variable.GetCategoryText(0), "");
    EXPECT_EQ(variable.GetCategoryLabel(0), "");
    EXPECT_EQ(variable.GetCategoryValue(0), QKMV::Missing());
    EXPECT_EQ(variable.FindCategory(0.0), -1);
    EXPECT_EQ(variable.FindCategory(std::string("x")), -1);
    EXPECT_EQ(QKContVar("o", "", DateType::kNone, 4).GetKind(), 4);
}

TEST(QKCatVarTest, NumericCategoriesAreFoundByValueAndByText) {
    const QKCatVar variable = Numbers();
    EXPECT_EQ(variable.GetKind(), 2);
    EXPECT_TRUE(variable.GetOrdinalFlag());
    EXPECT_EQ(variable.GetCategoryCount(), 5);
    const std::vector<std::string> texts{"3", "-0.1", "1e+20", "3", "0"};
    const std::vector<double> values{3, -0.1, 1e20, 3, 0};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(variable.GetCategoryText(i), texts[static_cast<std::size_t>(i)]);
        EXPECT_EQ(variable.GetCategoryValue(i), values[static_cast<std::size_t>(i)]);
    }
    EXPECT_EQ(variable.FindCategory(3.0), 0) << "equal values keep the first index";
    EXPECT_EQ(variable.FindCategory(1e20), 2);
    EXPECT_EQ(variable.FindCategory(-0.0), 4) << "-0 is 0";
    EXPECT_EQ(variable.FindCategory(0.1), -1);
    EXPECT_EQ(variable.FindCategory(std::numeric_limits<double>::quiet_NaN()), -1);
    EXPECT_EQ(variable.FindCategory(std::string("-0.1")), 1);
    EXPECT_EQ(variable.FindCategory(std::string("3.0")), -1);
    EXPECT_EQ(variable.GetCategoryLabel(0), "three");
    EXPECT_EQ(variable.GetCategoryLabel(3), "again");
}

TEST(QKCatVarTest, TextCategoriesAreFoundByTextAlone) {
    const QKCatVar variable = Texts();
    EXPECT_EQ(variable.GetKind(), 3);
    EXPECT_FALSE(variable.GetOrdinalFlag());
    EXPECT_EQ(variable.GetDateType(), DateType::kTime);
    EXPECT_EQ(variable.GetCategoryCount(), 4);
    EXPECT_EQ(variable.FindCategory(std::string("b")), 0) << "equal texts keep the first index";
    EXPECT_EQ(variable.FindCategory(std::string()), 1);
    EXPECT_EQ(variable.FindCategory(std::string("B")), -1);
    EXPECT_EQ(variable.FindCategory(3.0), -1) << "a text that is a number is no value";
    EXPECT_EQ(variable.GetCategoryValue(2), QKMV::Missing());
    EXPECT_EQ(variable.GetCategoryLabel(1), "empty");
}

TEST(QKCatVarTest, AnUnknownCategoryHasNothing) {
    for (const QKCatVar& variable : {Numbers(), Texts()}) {
        for (const int category : {-1, 5, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
            EXPECT_EQ(variable.GetCategoryText(category), "");
            EXPECT_EQ(variable.GetCategoryLabel(category), "");
            EXPECT_EQ(variable.GetCategoryValue(category), QKMV::Missing());
        }
    }
}
