#include "support/QKVecValue.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Doubles = QKVecValue<double>;
using Strings = QKVecValue<std::string>;

const IQKSettingValue& ValueAt(const QKSettings& settings, std::size_t position) {
    return settings.GetSettingAt(position).GetValue();
}

/// As values of settings, which is how they are compared: each takes any other.
bool AreEqual(const IQKSettingValue& a, const IQKSettingValue& b) {
    return a == b;
}

TEST(QKVecValue, KnowsTheTypeOfItsElements) {
    EXPECT_EQ(QKVecValue<int>({}).GetElementKind(), 1);
    EXPECT_EQ(Doubles({}).GetElementKind(), 2);
    EXPECT_EQ(Strings({}).GetElementKind(), 3);
    EXPECT_EQ(QKVecValue<QKSettings>({}).GetElementKind(), 7);
    EXPECT_EQ(Doubles({}).GetKind(), 2);
}

TEST(QKVecValue, ComparedWithASingleNumberIsNeitherEqualNorLess) {
    QKSettings settings;
    settings.AddSetting("n", 1.0);
    const Doubles vector({1.0});
    EXPECT_FALSE(vector == ValueAt(settings, 0));
    EXPECT_FALSE(vector < ValueAt(settings, 0));
}

TEST(QKVecValue, EmptyIsLessThanAnyOtherAndEqualToEmpty) {
    EXPECT_TRUE(Doubles({}) < Doubles({-1e300}));
    EXPECT_FALSE(Doubles({-1e300}) < Doubles({}));
    EXPECT_TRUE(AreEqual(Doubles({}), Doubles({})));
    EXPECT_FALSE(Doubles({}) < Doubles({}));
}

TEST(QKVecValue, ComparesLexicographically) {
    EXPECT_TRUE(Doubles({1, 2}) < Doubles({1, 3}));
    EXPECT_TRUE(Doubles({1, 2}) < Doubles({1, 2, -9}));
    EXPECT_FALSE(Doubles({2}) < Doubles({1, 9}));
    EXPECT_TRUE(AreEqual(Doubles({1, 2}), Doubles({1, 2})));
    EXPECT_FALSE(AreEqual(Doubles({1, 2}), Doubles({1})));
    EXPECT_TRUE(Strings({"B"}) < Strings({"a"}));  // by bytes
    QKSettings less;
    less.AddSetting("k", 1);
    QKSettings more;
    more.AddSetting("k", 2);
    EXPECT_TRUE(QKVecValue<QKSettings>({less}) < QKVecValue<QKSettings>({more}));
}

TEST(QKVecValue, ToStringOfThreeElements) {
    EXPECT_EQ(Doubles({1, 2, 3}).ToString(), "Vector Value: Length of vector = 3");
    EXPECT_EQ(Doubles({}).ToString(), "Vector Value: Length of vector = 0");
}

TEST(QKVecValue, CountsItsElementsAndHasNoNumber) {
    const Strings vector({"a", "b"});
    EXPECT_EQ(vector.Size(), 2u);
    EXPECT_EQ(vector.Count(), 2);
    EXPECT_TRUE(vector.HasValues());
    EXPECT_FALSE(Strings({}).HasValues());
    EXPECT_EQ(vector.GetNumber(), -1.7976931348623157e308);
}

TEST(QKVecValue, CloneIsACopyOfItsOwn) {
    const Strings vector({"a", "b"});
    const std::unique_ptr<IQKSettingValue> clone(vector.Clone());
    EXPECT_TRUE(*clone == vector);
    EXPECT_NE(clone.get(), &vector);
}

std::vector<std::string> shown;

TEST(QKVecValue, DisplaysTypeAndCount) {
    shown.clear();
    QKDisplay::SetSink([](const std::string& line) { shown.push_back(line); });
    Doubles({1, 2}).Display();
    QKDisplay::SetSink(nullptr);
    ASSERT_EQ(shown.size(), 3u);
    EXPECT_EQ(shown[0], "Setting Value Type: Vector");
    EXPECT_EQ(shown[1], "Total number of setting value: 2");
}

TEST(AddVecSetting, WithoutReplaceLeavesTwoSettingsOfTheName) {
    QKSettings settings;
    EXPECT_TRUE(AddVecSetting(settings, "v", std::vector<int>{1}, false));
    EXPECT_TRUE(AddVecSetting(settings, "v", std::vector<int>{2}, false));
    EXPECT_EQ(settings.GetSettingNames(), (std::vector<std::string>{"v", "v"}));
    std::vector<int> read;
    EXPECT_TRUE(settings.GetSettingValByName("v", read));
    EXPECT_EQ(read, std::vector<int>{1});  // the first one is read
}

TEST(AddVecSetting, WithReplaceRemovesAllOfTheNameAndAppends) {
    QKSettings settings;
    AddVecSetting(settings, "v", std::vector<int>{1}, false);
    AddVecSetting(settings, "v", std::vector<int>{2}, false);
    settings.AddSetting("other", 1);
    EXPECT_TRUE(AddVecSetting(settings, "v", std::vector<double>{0.5}, true));
    EXPECT_EQ(settings.GetSettingNames(), (std::vector<std::string>{"other", "v"}));
    EXPECT_EQ(settings.GetSettingAt(1).GetType(), "");
    std::vector<double> read;
    EXPECT_TRUE(settings.GetSettingValByName("v", read));
    EXPECT_EQ(read, std::vector<double>{0.5});
}

}  // namespace
