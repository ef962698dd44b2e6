#include "platform/common/QKSettings.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "platform/common/QKMV.h"
#include "support/QKVecValue.h"
#include "tests/harness/AllocationFailure.h"

namespace {

const std::string kUntouchedText = "untouched";
constexpr double kUntouchedNumber = 4711;

/// What reading a key as each type gives; none where it fails, and then the output has to be as it was.
template <typename T>
std::optional<T> Read(const QKSettings& settings, T untouched) {
    T out = untouched;
    if (settings.GetSettingValByName("key", out)) return out;
    EXPECT_EQ(out, untouched) << "a failed read changed its output";
    return std::nullopt;
}

std::optional<std::string> ReadText(const QKSettings& settings) {
    return Read(settings, kUntouchedText);
}
std::optional<double> ReadDouble(const QKSettings& settings) {
    return Read(settings, kUntouchedNumber);
}
std::optional<int> ReadInt(const QKSettings& settings) {
    return Read(settings, 4711);
}

std::optional<bool> ReadBool(const QKSettings& settings) {
    const std::optional<bool> first = Read(settings, false);
    const std::optional<bool> second = Read(settings, true);
    EXPECT_EQ(first, second);
    return first;
}

template <typename T>
QKSettings With(const T& value) {
    QKSettings settings;
    settings.AddSetting("key", value);
    return settings;
}

template <typename T>
QKSettings WithVector(const std::vector<T>& values) {
    QKSettings settings;
    AddVecSetting(settings, "key", values, false);
    return settings;
}

constexpr std::nullopt_t kFails = std::nullopt;
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace

// ---- Reading a scalar ----

TEST(QKSettingsTest, ACopyForWhichThereIsNoMemoryThrows) {
    QKSettings settings;
    settings.AddSetting("name", std::string(100, 'x'));
    int failures = 0;
    for (int successes = 0;; ++successes) {
        const component_test::AllocationFailure failure(successes);
        try {
            const std::unique_ptr<IQKSettingValue> copy(settings.GetSettingAt(0).GetValue().Clone());
            break;
        } catch (const std::bad_alloc&) {
            ++failures;
        }
    }
    EXPECT_EQ(failures, 2);  // the value and its text
    std::string kept;
    EXPECT_TRUE(settings.GetSettingValByName("name", kept));
    EXPECT_EQ(kept, std::string(100, 'x'));
}

TEST(QKSettingsTest, ANumberConvertsToEveryType) {
    struct Row {
        double value;
        int whole;
        bool truth;
        const char* text;
    };
    const std::vector<Row> rows{
        {0, 0, false, "0"},
        {-0.0, 0, false, "-0"},
        {1, 1, true, "1"},
        {2.9, 2, true, "2.9"},
        {-2.9, -2, true, "-2.9"},
        {0.5, 0, true, "0.5"},
        {1e-300, 0, true, "1e-300"},
        {2147483647, 2147483647, true, "2147483647"},
        {-2147483648.0, std::numeric_limits<int>::min(), true, "-2147483648"},
        {1.0 / 3, 0, true, "0.333333333333333"},
        {123456789.123456789, 123456789, true, "123456789.123457"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        const QKSettings settings = With(row.value);
        EXPECT_EQ(ReadDouble(settings), row.value);
        EXPECT_EQ(ReadInt(settings), row.whole);
        EXPECT_EQ(ReadBool(settings), row.truth);
        EXPECT_EQ(ReadText(settings), row.text);
    }
    EXPECT_EQ(ReadText(With(kNaN)), "nan");
    EXPECT_EQ(ReadText(With(-kInfinity)), "-inf");
    EXPECT_EQ(ReadBool(With(kNaN)), true) << "NaN is not 0";
}

TEST(QKSettingsTest, AnIntConvertsToEveryType) {
    for (const int value : {0, 1, -7, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const QKSettings settings = With(value);
        EXPECT_EQ(ReadDouble(settings), value);
        EXPECT_EQ(ReadInt(settings), value);
        EXPECT_EQ(ReadBool(settings), value != 0);
    }
    EXPECT_EQ(ReadText(With(-7)), "-7");
    EXPECT_EQ(ReadText(With(2147483647)), "2147483647");
}

TEST(QKSettingsTest, ABoolConvertsToEveryType) {
    EXPECT_EQ(ReadDouble(With(true)), 1.0);
    EXPECT_EQ(ReadDouble(With(false)), 0.0);
    EXPECT_EQ(ReadInt(With(true)), 1);
    EXPECT_EQ(ReadInt(With(false)), 0);
    EXPECT_EQ(ReadBool(With(true)), true);
    EXPECT_EQ(ReadBool(With(false)), false);
    EXPECT_EQ(ReadText(With(true)), "true");
    EXPECT_EQ(ReadText(With(false)), "false");
}

TEST(QKSettingsTest, ATextIsANumberIfAllOfItIsOne) {
    struct Row {
        const char* text;
        std::optional<double> number;
        std::optional<int> whole;
    };
    const std::vector<Row> rows{
        {"5", 5, 5},
        {"-5.9", -5.9, -5},
        {"1e3", 1000, 1000},
        {"0", 0, 0},
        {".5", 0.5, 0},
        {"", kFails, kFails},
        {"x", kFails, kFails},
        {"5x", kFails, kFails},
        {"5 6", kFails, kFails},
        {"1,5", kFails, kFails},
        {"true", kFails, kFails},
        {"-", kFails, kFails},
        {"e5", kFails, kFails},
        {"1e", kFails, kFails},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ReadDouble(With(row.text)), row.number);
        EXPECT_EQ(ReadInt(With(row.text)), row.whole);
        EXPECT_EQ(ReadText(With(row.text)), row.text);
    }
}

TEST(QKSettingsTest, ATextIsABoolInFourSpellings) {
    EXPECT_EQ(ReadBool(With("true")), true);
    EXPECT_EQ(ReadBool(With("1")), true);
    EXPECT_EQ(ReadBool(With("false")), false);
    EXPECT_EQ(ReadBool(With("0")), false);
    for (const char* text : {"", "True", "TRUE", "yes", "2", "1.0", "00", " true", "true "}) {
        EXPECT_EQ(ReadBool(With(text)), std::nullopt) << text;
    }
}

TEST(QKSettingsTest, AVectorNeverReadsAsAScalar) {
    for (const QKSettings& settings : {WithVector<double>({5}), WithVector<int>({5}), WithVector<std::string>({"5"}),
                                       WithVector<double>({}), WithVector<QKSettings>({QKSettings()})}) {
        EXPECT_EQ(ReadText(settings), std::nullopt);
        EXPECT_EQ(ReadDouble(settings), std::nullopt);
        EXPECT_EQ(ReadInt(settings), std::nullopt);
        EXPECT_EQ(ReadBool(settings), std::nullopt);
        EXPECT_EQ(Read(settings, QKSettings()), std::nullopt);
    }
}

TEST(QKSettingsTest, ANestedListReadsAsNothingElse) {
    const QKSettings settings = With(With(5.0));
    EXPECT_EQ(Read(settings, QKSettings()), With(5.0));
    EXPECT_EQ(ReadText(settings), std::nullopt);
    EXPECT_EQ(ReadDouble(settings), std::nullopt);
    EXPECT_EQ(ReadInt(settings), std::nullopt);
    EXPECT_EQ(ReadBool(settings), std::nullopt);
    EXPECT_EQ(Read(settings, std::vector<double>{1}), std::nullopt);
    EXPECT_EQ(Read(settings, std::vector<QKSettings>{}), std::nullopt);
}

TEST(QKSettingsTest, AScalarReadsAsNoVectorAndNoList) {
    for (const QKSettings& settings : {With("5"), With(5.0), With(5), With(true)}) {
        EXPECT_EQ(Read(settings, std::vector<std::string>{"kept"}), std::nullopt);
        EXPECT_EQ(Read(settings, std::vector<double>{1, 2}), std::nullopt);
        EXPECT_EQ(Read(settings, std::vector<int>{1, 2}), std::nullopt);
        EXPECT_EQ(Read(settings, std::vector<QKSettings>{QKSettings()}), std::nullopt);
        EXPECT_EQ(Read(settings, With(1.0)), std::nullopt);
    }
}

TEST(QKSettingsTest, AnAbsentKeyReadsAsNothing) {
    const QKSettings settings;
    EXPECT_EQ(ReadText(settings), std::nullopt);
    EXPECT_EQ(ReadDouble(settings), std::nullopt);
    EXPECT_EQ(ReadBool(settings), std::nullopt);
    EXPECT_EQ(Read(settings, std::vector<double>{1}), std::nullopt);
}

// ---- Reading a vector ----

TEST(QKSettingsTest, VectorsConvertElementByElement) {
    const QKSettings texts = WithVector<std::string>({"5", "x", "", "-2.9"});
    EXPECT_EQ(Read(texts, std::vector<std::string>()), (std::vector<std::string>{"5", "x", "", "-2.9"}));
    EXPECT_EQ(Read(texts, std::vector<double>()), (std::vector<double>{5, QKMV::Missing(), QKMV::Missing(), -2.9}));
    const auto whole = Read(texts, std::vector<int>());
    ASSERT_TRUE(whole && whole->size() == 4);
    EXPECT_EQ(whole->front(), 5);
    EXPECT_EQ(whole->back(), -2);

    const QKSettings numbers = WithVector<double>({2.5, 1e20, -0.75});
    EXPECT_EQ(Read(numbers, std::vector<double>()), (std::vector<double>{2.5, 1e20, -0.75}));
    EXPECT_EQ(Read(numbers, std::vector<std::string>()), (std::vector<std::string>{"2.5", "1e+20", "-0.75"}));
    EXPECT_EQ(Read(WithVector<double>({2.5, -0.75}), std::vector<int>()), (std::vector<int>{2, 0}));

    const QKSettings ints = WithVector<int>({3, -4});
    EXPECT_EQ(Read(ints, std::vector<int>()), (std::vector<int>{3, -4}));
    EXPECT_EQ(Read(ints, std::vector<double>()), (std::vector<double>{3, -4}));
    EXPECT_EQ(Read(ints, std::vector<std::string>()), (std::vector<std::string>{"3", "-4"}));
}

TEST(QKSettingsTest, AnElementThatCannotBeReadIsMissingOrEmpty) {
    const QKSettings lists = WithVector<QKSettings>({With(1.0), QKSettings()});
    EXPECT_EQ(Read(lists, std::vector<double>()), (std::vector<double>{QKMV::Missing(), QKMV::Missing()}));
    EXPECT_EQ(Read(lists, std::vector<std::string>()), (std::vector<std::string>{"", ""}));
    EXPECT_EQ(Read(lists, std::vector<QKSettings>()), (std::vector<QKSettings>{With(1.0), QKSettings()}));
    EXPECT_EQ(Read(WithVector<double>({1}), std::vector<QKSettings>{QKSettings()}), std::nullopt);
}

TEST(QKSettingsTest, AnEmptyVectorIsReadAndReplacesTheOutput) {
    EXPECT_EQ(Read(WithVector<std::string>({}), std::vector<double>{1, 2}), std::vector<double>());
    EXPECT_EQ(Read(WithVector<double>({}), std::vector<std::string>{"x"}), std::vector<std::string>());
}

// ---- The tree ----

TEST(QKSettingsTest, KeepsTheOrderOfArrivalAndReadsTheFirstOfARepeatedName) {
    QKSettings settings;
    settings.AddSetting("b", 1.0);
    settings.AddSetting("a", "text");
    settings.AddSetting("b", 2.0);
    EXPECT_EQ(settings.Size(), 3u);
    EXPECT_EQ(settings.GetSettingNames(), (std::vector<std::string>{"b", "a", "b"}));
    double number = 0;
    EXPECT_TRUE(settings.GetSettingValByName("b", number));
    EXPECT_EQ(number, 1);
    EXPECT_EQ(settings.FindSetting("b"), &settings.GetSettingAt(0));
    EXPECT_EQ(settings.FindSetting("c"), nullptr);
}

TEST(QKSettingsTest, ARepeatedNameWhoseFirstValueCannotBeReadIsNotReadFromTheSecond) {
    QKSettings settings;
    settings.AddSetting("key", "no number");
    settings.AddSetting("key", 2.0);
    EXPECT_EQ(ReadDouble(settings), std::nullopt);
}

TEST(QKSettingsTest, RemovesTheFirstOrAllOfAName) {
    QKSettings settings;
    for (const double value : {1.0, 2.0, 3.0}) settings.AddSetting("key", value);
    settings.AddSetting("other", 4.0);
    EXPECT_TRUE(settings.RemoveSetting("key", false));
    EXPECT_EQ(ReadDouble(settings), 2.0);
    EXPECT_TRUE(settings.RemoveSetting("key", true));
    EXPECT_EQ(settings.GetSettingNames(), (std::vector<std::string>{"other"}));
    EXPECT_FALSE(settings.RemoveSetting("key", true));
    EXPECT_FALSE(settings.RemoveSetting("key", false));
}

TEST(QKSettingsTest, AVectorMayReplaceWhatHasItsName) {
    QKSettings settings = With(1.0);
    AddVecSetting(settings, "key", std::vector<double>{2}, false);
    EXPECT_EQ(ReadDouble(settings), 1.0) << "an existing one stays in front";
    AddVecSetting(settings, "key", std::vector<double>{3}, true);
    EXPECT_EQ(settings.Size(), 1u);
    EXPECT_EQ(Read(settings, std::vector<double>()), (std::vector<double>{3}));
}

TEST(QKSettingsTest, ANewSettingHasATypeOfItsOwn) {
    QKSettings settings;
    settings.AddNewSetting("key", 7, "special");
    EXPECT_EQ(settings.GetSettingAt(0).GetType(), "special");
    EXPECT_EQ(ReadInt(settings), 7);
}

TEST(QKSettingsTest, ValuesTellTheirKinds) {
    EXPECT_EQ(With(1.0).GetSettingAt(0).GetValue().GetKind(), 1);
    EXPECT_EQ(With("x").GetSettingAt(0).GetValue().GetKind(), 1);
    EXPECT_EQ(WithVector<int>({1}).GetSettingAt(0).GetValue().GetKind(), 2);
    EXPECT_EQ(With(QKSettings()).GetSettingAt(0).GetValue().GetKind(), 3);
    EXPECT_EQ(WithVector<QKSettings>({}).GetSettingAt(0).GetValue().GetKind(), 2);
}

TEST(QKSettingsTest, TreesAreComparedByNamesAndValues) {
    EXPECT_EQ(With(1.0), With(1.0));
    EXPECT_FALSE(With(1.0) == With(2.0));
    EXPECT_FALSE(With("1") == With(1.0));
    EXPECT_FALSE(With(1.0) == QKSettings());
    EXPECT_TRUE(QKSettings() < With(1.0));
    EXPECT_TRUE(With(1.0) < With(2.0));
    EXPECT_FALSE(With(2.0) < With(1.0));
    EXPECT_FALSE(With(1.0) < With(1.0));
    EXPECT_TRUE(With("a") < With("b"));
    EXPECT_EQ(With(With("x")), With(With("x")));
    EXPECT_FALSE(With(With("x")) == With(With("y")));
    EXPECT_EQ(WithVector<int>({1, 2}), WithVector<int>({1, 2}));
    EXPECT_FALSE(WithVector<int>({1, 2}) == WithVector<int>({1, 3}));
}
