// The two classes of a field, as the binomial test and the intervals of a proportion make them.

#include "onesample/BinaryClasses.h"

#include <gtest/gtest.h>

#include <memory>

#include "onesample/TARNBinomial.h"
#include "onesample/TARNEstimateCI.h"
#include "support/QKVecValue.h"
#include "tests/harness/EntryRun.h"

namespace {

using harness::Fields;
using harness::kNoCategory;
using harness::kNone;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;

/// What a user of the classes calls things.
struct User {
    const char* test;
    long nameMissing, unknownField, listMissing, cutPointMissing, continuousWithoutCut, categoricalWithCut;
    long tooManyCategories, noCategory;
    const char* conditionSuffix;  // of the formations from the data and from a list
    bool showsSecondClass;
};

constexpr User kUsers[] = {
    {"OBinomial", 221314, 221303, 221312, 221313, 221315, 221316, 221309, 221310, "_O_Binomial_5", true},
    {"OEstimateConfidenceInterval", 221513, 221503, 221511, 221512, 221514, 221515, 221509, 221510, "_O_Binomial_2",
     false},
};

std::string Error(long code) {
    return std::to_string(code) + " error";
}

class BinaryClassesOf : public testing::TestWithParam<User> {
 protected:
    /// An entry for the field "x"; the method is for the intervals alone.
    static QKSettings Entry() {
        QKSettings entry;
        entry.AddSetting("variableName", "x");
        entry.AddSetting("isDoJeffreys", true);
        return entry;
    }
    static QKSettings EntryWith(const std::string& key, const std::string& value) {
        QKSettings entry = Entry();
        entry.AddSetting(key, value);
        return entry;
    }
    static QKSettings CutEntry(double cutPoint) {
        QKSettings entry = EntryWith("contVarClassFormation", "givenCutPoint");
        entry.AddSetting("givenCutPoint", cutPoint);
        return entry;
    }
    template <typename Value>
    static QKSettings ListEntry(const std::vector<Value>& list) {
        QKSettings entry = EntryWith("catVarClassFormation", "givenCategoryList");
        AddVecSetting(entry, "givenCategoryList", list, false);
        return entry;
    }

    static Table Result(const QKSettings& entry, Fields fields, Rows rows) {
        return harness::ResultOf(GetParam().test, entry, fields, std::move(rows));
    }
    static Table ResultOfContinuous(const QKSettings& entry, const std::vector<double>& values) {
        return Result(entry, Fields().Continuous("x"), harness::Columns({values}));
    }
    static Table ResultOfText(const QKSettings& entry, const std::vector<std::string>& categories,
                              const std::vector<double>& values) {
        return Result(entry, Fields().Text("x", categories), harness::Columns({values}));
    }

    /// The share of the first class, from what the test shows of it.
    static double Share(const Table& test) {
        if (std::string(GetParam().test) != "OBinomial") return Number(test.Sub("Jeffreys"), "Estimate");
        const Table statistics = test.Sub("StatisticsResult");
        return Number(statistics, "TestStatistic") / Number(statistics, "TotalN");
    }
    static std::string First(const Table& test) { return test.Sub("Condition").Row("%1"); }
    static std::string Key(const Table& test) { return test.Sub("Condition").Row("ConditionKey"); }
    static void ExpectSecond(const Table& test, const std::string& second) {
        if (GetParam().showsSecondClass) {
            EXPECT_EQ(test.Sub("Condition").Row("%2"), second);
        } else {
            EXPECT_FALSE(test.Sub("Condition").HasRow("%2"));
        }
    }
    static void ExpectError(const Table& test, const std::vector<std::string>& messages) {
        EXPECT_EQ(MessagesOf(test), messages);
        EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
    }
    static std::string KeyOf(const std::string& formation) { return formation + GetParam().conditionSuffix; }
};

INSTANTIATE_TEST_SUITE_P(Users, BinaryClassesOf, testing::ValuesIn(kUsers),
                         [](const testing::TestParamInfo<User>& user) { return std::string(user.param.test); });

// ---- Cut point ----

TEST_P(BinaryClassesOf, CutPointEqualToAValuePutsItInTheFirstClass) {
    const Table test = ResultOfContinuous(CutEntry(3), {1, 3, 3, 3.5, 7});
    EXPECT_DOUBLE_EQ(Share(test), 3.0 / 5);
    EXPECT_EQ(First(test), "3");
}

TEST_P(BinaryClassesOf, SampleMidPointShowsAsComputedFromTheWholeField) {
    const Table test = ResultOfContinuous(EntryWith("contVarClassFormation", "sampleMidPoint"), {1, 2, 3, 4, 10});
    EXPECT_EQ(First(test), "5.5");
    EXPECT_DOUBLE_EQ(Share(test), 4.0 / 5);
    EXPECT_EQ(Key(test).substr(0, 31), "ACutPointIsSpecified_O_Binomial");
}

TEST_P(BinaryClassesOf, SampleMidPointIgnoresAGivenCutPoint) {
    QKSettings entry = EntryWith("contVarClassFormation", "sampleMidPoint");
    entry.AddSetting("givenCutPoint", 1.5);
    EXPECT_EQ(First(ResultOfContinuous(entry, {1, 2, 3, 4, 10})), "5.5");
}

TEST_P(BinaryClassesOf, MidPointCountsRecordsWithoutWeight) {
    Fields fields;
    fields.Continuous("x").Weight("w");
    const QKSettings entry = EntryWith("contVarClassFormation", "sampleMidPoint");
    EXPECT_EQ(First(Result(entry, fields, {{1, 1}, {3, 2}, {9, 0}})), "5");
}

TEST_P(BinaryClassesOf, GivenMissingValueAsCutPointMeansTheMidPoint) {
    EXPECT_EQ(First(ResultOfContinuous(CutEntry(kNone), {1, 2, 5})), "3");
}

TEST_P(BinaryClassesOf, MidPointOfAFieldWithoutAValueIsMinusInfinity) {
    const Table test = ResultOfContinuous(EntryWith("contVarClassFormation", "sampleMidPoint"), {kNone, kNone});
    EXPECT_EQ(First(test), "-inf");
    ExpectError(test, Texts({"220003 error"}));
}

TEST_P(BinaryClassesOf, CutPointThatIsRequestedAndAbsentIsAnError) {
    const Table test = ResultOfContinuous(EntryWith("contVarClassFormation", "givenCutPoint"), {1, 2});
    ExpectError(test, Texts({Error(GetParam().cutPointMissing)}));
    EXPECT_EQ(First(test), "__MISSING__");
}

TEST_P(BinaryClassesOf, ContinuousFieldWantsACut) {
    const std::vector<std::string> error{Error(GetParam().continuousWithoutCut)};
    ExpectError(ResultOfContinuous(Entry(), {1, 2}), error);
    ExpectError(ResultOfContinuous(EntryWith("catVarClassFormation", "getFromData"), {1, 2}), error);
    ExpectError(ResultOfContinuous(EntryWith("contVarClassFormation", "median"), {1, 2}), error);
    ExpectError(ResultOfContinuous(ListEntry(Texts({"1"})), {1, 2}), error);
}

TEST_P(BinaryClassesOf, CategoricalFormationHidesTheContinuousOne) {
    QKSettings entry = CutEntry(1);
    entry.AddSetting("catVarClassFormation", "getFromData");
    ExpectError(ResultOfContinuous(entry, {1, 2}), Texts({Error(GetParam().continuousWithoutCut)}));
}

TEST_P(BinaryClassesOf, CategoricalFieldTakesNoCut) {
    const std::vector<std::string> error{Error(GetParam().categoricalWithCut)};
    ExpectError(ResultOfText(CutEntry(1), {"a", "b"}, {0, 1}), error);
    ExpectError(ResultOfText(EntryWith("contVarClassFormation", "sampleMidPoint"), {"a", "b"}, {0, 1}), error);
    ExpectError(ResultOfText(EntryWith("catVarClassFormation", "givenCutPoint"), {"a", "b"}, {0, 1}), error);
    ExpectError(ResultOfText(EntryWith("contVarClassFormation", "median"), {"a", "b"}, {0, 1}), error);
}

// ---- Classes from the data ----

TEST_P(BinaryClassesOf, FirstRecordDecidesWhichCategoryIsTheFirstClass) {
    const Table ofB = ResultOfText(Entry(), {"a", "b"}, {1, 0, 1, 1});
    EXPECT_DOUBLE_EQ(Share(ofB), 3.0 / 4);
    EXPECT_EQ(Key(ofB), KeyOf("ABinaryTestVariableIsSpecified"));
    EXPECT_EQ(First(ofB), "1");
    ExpectSecond(ofB, "0");
    const Table ofA = ResultOfText(Entry(), {"a", "b"}, {0, 1, 1, 1});  // the same data in another order
    EXPECT_DOUBLE_EQ(Share(ofA), 1.0 / 4);
    EXPECT_EQ(First(ofA), "0");
    ExpectSecond(ofA, "1");
}

TEST_P(BinaryClassesOf, FirstRecordIsThatWhichReachesTheTestWhateverItsWeight) {
    Fields fields;
    fields.Numeric("x", {5, 7}).Weight("w");
    const Table test = Result(Entry(), fields, {{kNoCategory, 1}, {1, 0.9}, {0, 2.9}, {1, 3}});
    EXPECT_EQ(First(test), "1");
    EXPECT_DOUBLE_EQ(Share(test), 3.0 / 5);
}

TEST_P(BinaryClassesOf, OneValuedFieldHasNoSecondClassAndGoesOn) {
    const Table test = ResultOfText(Entry(), {"only"}, {0, 0, 0});
    EXPECT_EQ(First(test), "0");
    ExpectSecond(test, "__MISSING__");
    EXPECT_DOUBLE_EQ(Share(test), 1.0);
    EXPECT_TRUE(MessagesOf(test).empty());
}

TEST_P(BinaryClassesOf, CategoryThatDoesNotOccurIsAClassOfItsOwn) {
    const Table test = ResultOfText(Entry(), {"a", "b"}, {1, 1});
    EXPECT_EQ(First(test), "1");
    ExpectSecond(test, "0");
    EXPECT_DOUBLE_EQ(Share(test), 1.0);
}

TEST_P(BinaryClassesOf, ThreeCategoriesAreTooManyEvenIfOneDoesNotOccur) {
    const Table test = ResultOfText(EntryWith("catVarClassFormation", "getFromData"), {"a", "b", "c"}, {0, 1});
    ExpectError(test, Texts({Error(GetParam().tooManyCategories)}));
    EXPECT_EQ(First(test), "__MISSING__");
    ExpectSecond(test, "__MISSING__");
}

TEST_P(BinaryClassesOf, NoCategoryWithAPositiveCountIsAnError) {
    const std::vector<std::string> error{Error(GetParam().noCategory)};
    ExpectError(ResultOfText(Entry(), {}, {kNoCategory}), error);
    const Table one = ResultOfText(Entry(), {"a"}, {kNoCategory});
    ExpectError(one, error);
    EXPECT_EQ(First(one), "__MISSING__") << "a single category without a case is not taken";
    const Table two = ResultOfText(Entry(), {"a", "b"}, {kNoCategory});
    ExpectError(two, error);
    EXPECT_EQ(First(two), "0");
    ExpectSecond(two, "1");
}

// ---- Given categories ----

TEST_P(BinaryClassesOf, ValueOutsideTheListCountsInTheSecondClass) {
    const Table test = ResultOfText(ListEntry(Texts({"c", "a"})), {"a", "b", "c", "d"}, {0, 1, 2, 3, 3, 1, 0, 3});
    EXPECT_DOUBLE_EQ(Share(test), 3.0 / 8);  // no record is left out
    EXPECT_EQ(Key(test), KeyOf("CategoryListsAreSpecified"));
    EXPECT_EQ(First(test), "2;0");
    ExpectSecond(test, "1;3");
}

TEST_P(BinaryClassesOf, UnknownGivenCategoryShowsInATableAndAsMinusOne) {
    const Table test = ResultOfText(ListEntry(Texts({"x", "b", "y"})), {"a", "b"}, {0, 1, 1});
    EXPECT_EQ(First(test), "-1;1;-1");
    ExpectSecond(test, "0");
    EXPECT_DOUBLE_EQ(Share(test), 2.0 / 3);
    EXPECT_EQ(test.ChildNames()[1], "StructuredTable ValsNotInTheCategoreis");
    const Table unknown = test.Sub("ValsNotInTheCategoreis");
    EXPECT_EQ(unknown.ChildNames(), Texts({"Attribute 0", "Attribute 1"}));
    EXPECT_EQ(unknown.Row("0"), "x");
    EXPECT_EQ(unknown.Row("1"), "y");
}

TEST_P(BinaryClassesOf, ListOfUnknownCategoriesAloneLeavesTheFirstClassEmpty) {
    const Table test = ResultOfText(ListEntry(Texts({"x"})), {"a", "b"}, {0, 1, 1});
    EXPECT_DOUBLE_EQ(Share(test), 0.0);
    ExpectSecond(test, "0;1");
}

TEST_P(BinaryClassesOf, NumericCategoriesMeetByValueAndMayComeAsTexts) {
    const Fields fields = Fields().Numeric("x", {10, 20, 30});
    const Rows rows{{0}, {1}, {2}, {2}};
    EXPECT_DOUBLE_EQ(Share(Result(ListEntry(Texts({"30.0"})), fields, rows)), 0.5);
    const Table test = Result(ListEntry(std::vector<double>{30, 7.5}), fields, rows);
    EXPECT_DOUBLE_EQ(Share(test), 0.5);
    EXPECT_EQ(First(test), "2;-1");
    EXPECT_EQ(test.Sub("ValsNotInTheCategoreis").Row("0"), "7.5");
    EXPECT_EQ(First(Result(ListEntry(Texts({"ten"})), fields, rows)), "-1");
}

TEST_P(BinaryClassesOf, EmptyOrAbsentListIsAnError) {
    const std::vector<std::string> error{Error(GetParam().listMissing)};
    const Table empty = ResultOfText(ListEntry(std::vector<std::string>{}), {"a", "b"}, {0, 1});
    ExpectError(empty, error);
    EXPECT_EQ(Key(empty), KeyOf("CategoryListsAreSpecified"));
    EXPECT_EQ(First(empty), "");
    ExpectSecond(empty, "");
    const Table absent = ResultOfText(EntryWith("catVarClassFormation", "givenCategoryList"), {"a", "b"}, {0, 1});
    ExpectError(absent, error);
}

TEST_P(BinaryClassesOf, ListWithoutItsFormationIsNotRead) {
    QKSettings entry = EntryWith("catVarClassFormation", "getFromData");
    AddVecSetting(entry, "givenCategoryList", Texts({"b"}), false);
    EXPECT_EQ(First(ResultOfText(entry, {"a", "b"}, {0, 1})), "0");
}

TEST_P(BinaryClassesOf, WeightOfARecordCountsAsManyTimes) {
    Fields fields;
    fields.Text("x", {"a", "b", "c"}).Weight("w");
    EXPECT_DOUBLE_EQ(Share(Result(ListEntry(Texts({"a"})), fields, {{0, 3}, {1, 1}, {2, 1.9}})), 3.0 / 5);
}

// ---- Field ----

TEST_P(BinaryClassesOf, FieldIsRequiredAndKnown) {
    QKSettings nameless;
    nameless.AddSetting("contVarClassFormation", "sampleMidPoint");
    const Table absent = ResultOfContinuous(nameless, {1});
    ExpectError(absent, Texts({Error(GetParam().nameMissing)}));
    EXPECT_EQ(absent.Sub("Condition").Row("%0"), "-1");
    // Nothing behind the failure is read: the formation is the default one.
    EXPECT_EQ(Key(absent), KeyOf("ABinaryTestVariableIsSpecified"));

    QKSettings unknown;
    unknown.AddSetting("variableName", "nowhere");
    const Table test = ResultOfContinuous(unknown, {1});
    ExpectError(test, Texts({Error(GetParam().unknownField) + " nowhere"}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "-1");
}

TEST_P(BinaryClassesOf, FieldOfNoUsableLevelEndsTheRun) {
    Fields fields;
    fields.Other("x");
    const harness::Outcome outcome = harness::RunEntry(GetParam().test, Entry(), fields, {{1}});
    EXPECT_EQ(outcome.status.GetErrorCode(), 220004);
}

TEST_P(BinaryClassesOf, DescriptivesOfTheFieldAreRequested) {
    Fields fields;
    fields.Continuous("x").Text("y", {"a", "b"});
    const harness::Outcome outcome = harness::RunEntry(GetParam().test, CutEntry(1), fields, {{1, 0}, {4, 0}});
    EXPECT_EQ(outcome.document.FieldInfo(0).Sub("ContinuousDistribution").Row("Mean"), "2.5");
    EXPECT_EQ(outcome.document.FieldInfo(0).Sub("ContinuousDistribution").Row("Max"), "4");
    EXPECT_FALSE(outcome.document.FieldInfo(1).Exists());
}

// ---- Classes alone ----

template <typename Test>
long CodeOfBeginWithoutResults(const char* formation) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("measureLevel", 3);
    settings->AddSetting("classFormation", formation);
    Test test(std::move(settings));
    test.SetUnivariateResults(nullptr);
    return test.BeginPass().GetErrorCode();
}

TEST(BinaryClasses, WithoutAFrequencyTableTheCodeForItIsRaised) {
    for (const char* formation : {"getFromData", "givenCategoryList"}) {
        EXPECT_EQ(CodeOfBeginWithoutResults<TARNBinomial>(formation), 221306);
        EXPECT_EQ(CodeOfBeginWithoutResults<TARNEstimateCI>(formation), 221506);
    }
}

}  // namespace
