#include "host/plan/PlanSettings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/InputError.h"
#include "support/QKVecValue.h"

namespace {

QKSettings Read(const std::string& json) {
    tarn::ByteSource source = tarn::ByteSource::FromMemory("plan.json", json);
    return tarn::ReadPlan(source).settings;
}

/// The setting under "k" of {"k": VALUE}.
const IQKSettingValue& ValueOf(const QKSettings& settings) {
    return settings.FindSetting("k")->GetValue();
}

struct Scalar {
    const char* json;
    SettingElementKind kind;
    const char* text;
};

class Scalars : public testing::TestWithParam<Scalar> {};

TEST_P(Scalars, KeepTheirType) {
    const QKSettings settings = Read(std::string("{\"k\": ") + GetParam().json + "}");
    EXPECT_EQ(ValueOf(settings).GetKind(), static_cast<int>(SettingKind::kScalar));
    EXPECT_EQ(ValueOf(settings).GetElementKind(), static_cast<int>(GetParam().kind));
    EXPECT_EQ(ValueOf(settings).ToString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(, Scalars,
                         testing::Values(Scalar{"\"a;b\"", SettingElementKind::kString, "a;b"},
                                         Scalar{"true", SettingElementKind::kOther, "true"},
                                         Scalar{"-7", SettingElementKind::kInt, "-7"},
                                         Scalar{"2147483647", SettingElementKind::kInt, "2147483647"},
                                         Scalar{"2147483648", SettingElementKind::kDouble, "2147483648"},
                                         Scalar{"-2147483649", SettingElementKind::kDouble, "-2147483649"},
                                         Scalar{"0.05", SettingElementKind::kDouble, "0.05"},
                                         Scalar{"3.0", SettingElementKind::kDouble, "3"},
                                         Scalar{"1e300", SettingElementKind::kDouble, "1e+300"}));

struct Array {
    const char* json;
    SettingElementKind kind;
    std::vector<std::string> texts;
};

class Arrays : public testing::TestWithParam<Array> {};

TEST_P(Arrays, BecomeVectorsOfOneType) {
    const QKSettings settings = Read(std::string("{\"k\": ") + GetParam().json + "}");
    EXPECT_EQ(ValueOf(settings).GetKind(), static_cast<int>(SettingKind::kVector));
    EXPECT_EQ(ValueOf(settings).GetElementKind(), static_cast<int>(GetParam().kind));
    std::vector<std::string> texts;
    EXPECT_TRUE(settings.GetSettingValByName("k", texts));
    EXPECT_EQ(texts, GetParam().texts);
}

INSTANTIATE_TEST_SUITE_P(, Arrays,
                         testing::Values(Array{"[]", SettingElementKind::kString, {}},
                                         Array{R"(["b", "a"])", SettingElementKind::kString, {"b", "a"}},
                                         Array{"[1, 0, -2]", SettingElementKind::kInt, {"1", "0", "-2"}},
                                         Array{"[1, 0.5]", SettingElementKind::kDouble, {"1", "0.5"}},
                                         Array{R"(["x", 1, 0.25])", SettingElementKind::kString, {"x", "1", "0.25"}}));

TEST(PlanSettings, ObjectsNestAndArraysOfObjectsBecomeVectorsOfSettings) {
    const QKSettings settings = Read(R"({"outer": {"inner": {"k": 1}}, "list": [{"k": 2}, {"k": 3}]})");
    QKSettings outer;
    QKSettings inner;
    int value = 0;
    ASSERT_TRUE(settings.GetSettingValByName("outer", outer));
    ASSERT_TRUE(outer.GetSettingValByName("inner", inner));
    EXPECT_TRUE(inner.GetSettingValByName("k", value));
    EXPECT_EQ(value, 1);
    std::vector<QKSettings> list;
    ASSERT_TRUE(settings.GetSettingValByName("list", list));
    ASSERT_EQ(list.size(), 2u);
    EXPECT_TRUE(list[1].GetSettingValByName("k", value));
    EXPECT_EQ(value, 3);
}

TEST(PlanSettings, AnEmptyArrayIsAnEmptyVectorOfWhateverIsAskedFor) {
    const QKSettings settings = Read(R"({"k": []})");
    std::vector<QKSettings> lists(1);
    EXPECT_TRUE(settings.GetSettingValByName("k", lists));
    EXPECT_TRUE(lists.empty());
    std::vector<double> numbers(1);
    EXPECT_TRUE(settings.GetSettingValByName("k", numbers));
    EXPECT_TRUE(numbers.empty());
}

TEST(PlanSettings, NullIsAbsent) {
    EXPECT_EQ(Read(R"({"k": null})").FindSetting("k"), nullptr);
    EXPECT_EQ(Read(R"({"tests": null})").Size(), 0u);
}

TEST(PlanSettings, KeysAndTestsKeepTheirOrder) {
    tarn::ByteSource source = tarn::ByteSource::FromMemory(
        "plan.json", R"({"sigLevel": 0.1, "tests": [{"RSign": {"b": 1, "a": 2}}, {"OBinomial": {}}, {"RSign": {}}],
                         "missingTreatment": "listwise"})");
    const tarn::PlanSettings plan = tarn::ReadPlan(source);
    EXPECT_EQ(plan.settings.GetSettingNames(),
              (std::vector<std::string>{"sigLevel", "RSign", "OBinomial", "RSign", "missingTreatment"}));
    const auto& entry = static_cast<const QKSettingListValue&>(plan.settings.GetSettingAt(1).GetValue());
    EXPECT_EQ(entry.GetKind(), static_cast<int>(SettingKind::kNestedList));
    EXPECT_EQ(entry.GetListValue().GetSettingNames(), (std::vector<std::string>{"b", "a"}));
}

TEST(PlanSettings, TestsOfTheListedNamesGoToTheEngineUnderItsOwn) {
    const QKSettings settings =
        Read(R"({"tests": [{"sign": {}}, {"wilcoxon": {"variableName": ["a", "b"]}}, {"RSign": {}},
                                                   {"kolmogorov-smirnov-uniform": {}}, {"nonsense": {}}]})");
    EXPECT_EQ(settings.GetSettingNames(), (std::vector<std::string>{"RSign", "RWilcoxonSignedRanks", "RSign",
                                                                    "OKolmogorovSmirnovUniform", "nonsense"}));
}

TEST(PlanSettings, TellWhatTheEnginePassesOver) {
    tarn::ByteSource source =
        tarn::ByteSource::FromMemory("plan.json", R"({"siglevel": 0.1, "tests": [{"RSing": {}}]})");
    EXPECT_EQ(tarn::ReadPlan(source).passedOver,
              (std::vector<std::string>{"plan.json: siglevel: unknown key, passed over; did you mean sigLevel?",
                                        "plan.json: tests[0].RSing: unknown test, passed over; did you mean RSign?"}));
}

TEST(PlanSettings, TruthValuesInAnArrayAreRefused) {
    EXPECT_THROW(Read(R"({"k": [true, false]})"), tarn::InputError);
    EXPECT_THROW(Read(R"({"k": [[1]]})"), tarn::InputError);
    EXPECT_THROW(Read(R"({"k": [null]})"), tarn::InputError);
}

}  // namespace
