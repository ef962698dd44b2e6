// What the Wilcoxon and the Hodges-Lehmann test of a pair have in common: their plan, each with its own codes.

#include "related/PairDifferences.h"

#include <gtest/gtest.h>

#include "related/TARNHodgesLehmannPairs.h"
#include "related/TARNWilcoxonPairs.h"
#include "tests/related/PairRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Table;
using pairs::Entry;
using pairs::Texts;

struct PairTest {
    const char* name;
    const char* namesMissing;
    const char* unknownField;
    const char* notTwoFields;
    const char* notContinuous;
};

class ContinuousPairs : public testing::TestWithParam<PairTest> {
 protected:
    ContinuousPairs() {
        fields_.Continuous("x")
            .Continuous("y")
            .Text("group", {"a", "b"})
            .Continuous("u")
            .Continuous("v")
            .Other("other");
    }

    harness::Outcome Run(const QKSettings& entry) {
        return pairs::RunEntry(GetParam().name, entry, fields_, {{1, 2, 0, 3, 5, 0}, {4, 3, 1, 3, 9, 0}});
    }
    Table Result(const std::vector<std::string>& names) { return Run(Entry(names)).document.Test(0); }

    std::string Error(const char* code, const std::string& parameter = "") const {
        return std::string(code) + " error" + (parameter.empty() ? "" : " " + parameter);
    }

    Fields fields_;
};

TEST_P(ContinuousPairs, AbsentVariableName) {
    const Table test = Run(QKSettings()).document.Test(0);
    EXPECT_EQ(MessagesOf(test), Texts({Error(GetParam().namesMissing)}));
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "-1");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "-1");
}

TEST_P(ContinuousPairs, UnknownNameEndsTheWalkWithTheNameAsParameter) {
    EXPECT_EQ(MessagesOf(Result({"nowhere", "x"})), Texts({Error(GetParam().unknownField, "nowhere")}));
    EXPECT_EQ(MessagesOf(Result({"x", "gone", "lost"})), Texts({Error(GetParam().unknownField, "gone")}));
    EXPECT_EQ(Result({"x", "gone"}).Sub("Condition").Row("%0"), "-1");  // a list of one index is no pair
}

TEST_P(ContinuousPairs, NotTwoNames) {
    for (const auto& names : {Texts({}), Texts({"x"}), Texts({"x", "y", "u"}), Texts({"group", "x", "y"})}) {
        EXPECT_EQ(MessagesOf(Result(names)), Texts({Error(GetParam().notTwoFields)}));
    }
}

TEST_P(ContinuousPairs, FieldThatIsNotContinuousEndsTheWalkWithItsIndexAsParameter) {
    EXPECT_EQ(MessagesOf(Result({"group", "group"})), Texts({Error(GetParam().notContinuous, "2")}));
    const Table test = Result({"x", "group"});
    EXPECT_EQ(MessagesOf(test), Texts({Error(GetParam().notContinuous, "2")}));
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "2");
}

TEST_P(ContinuousPairs, FieldOfTheFurtherKindFailsTheWholeRun) {
    EXPECT_EQ(Run(Entry({"x", "other"})).status.GetErrorCode(), 220004);
}

TEST_P(ContinuousPairs, RegisterTheFieldsThemselvesNotThePositionsInThePair) {
    const harness::Outcome outcome = Run(Entry({"u", "v"}));
    EXPECT_TRUE(outcome.document.FieldInfo(3).Exists());
    EXPECT_TRUE(outcome.document.FieldInfo(4).Exists());
    EXPECT_FALSE(outcome.document.FieldInfo(0).Exists());
    EXPECT_FALSE(outcome.document.FieldInfo(1).Exists());
}

TEST_P(ContinuousPairs, GoodFirstFieldStaysRegisteredWhereTheSecondFails) {
    EXPECT_TRUE(Run(Entry({"u", "group"})).document.FieldInfo(3).Exists());
    EXPECT_FALSE(Run(Entry({"u", "nowhere"})).document.FieldInfo(3).Exists());
}

TEST_P(ContinuousPairs, OriginFieldsShowTheirFrequenciesUnderAnErrorToo) {
    for (const auto& names : {Texts({"x", "y"}), Texts({"nowhere"})}) {
        QKSettings entry = Entry(names);
        AddVecSetting(entry, "originVariableName", Texts({"unknown", "group"}), false);
        const harness::Outcome outcome = Run(entry);
        EXPECT_TRUE(outcome.document.FieldInfo(2).Exists());
        EXPECT_EQ(MessagesOf(outcome.document.Test(0)).empty(), names.size() == 2);
    }
}

TEST_P(ContinuousPairs, NoRecordForTheTestGives220003) {
    Fields fields;
    fields.Continuous("x").Continuous("y").Weight("w");
    const Table test = pairs::ResultOf(GetParam().name, Entry({"x", "y"}), fields,
                                       {{1, harness::kNone, 5}, {harness::kNone, 2, 5}, {1, 3, 0.9}, {2, 2, 0.5}});
    EXPECT_EQ(MessagesOf(test), Texts({"220003 error"}));
    EXPECT_FALSE(test.Sub("StatisticsResult").Exists());
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
}

INSTANTIATE_TEST_SUITE_P(Tests, ContinuousPairs,
                         testing::Values(PairTest{"RWilcoxonSignedRanks", "221010", "221003", "221009", "221004"},
                                         PairTest{"RHodgesLehmannEstimatePairs", "222410", "222403", "222409",
                                                  "222404"}),
                         [](const auto& test) { return std::string(test.param.name); });

// ---- The tests' own settings ----

/// A test over "variableIndex" of that length.
template <typename Test>
std::unique_ptr<Test> OverIndices(const std::vector<int>& indices) {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", indices, false);
    return std::make_unique<Test>(std::move(settings));
}

template <typename Test>
void ExpectPairIsChecked(long code) {
    for (const std::vector<int>& indices : {std::vector<int>{}, {0}, {0, 1, 2}}) {
        const auto test = OverIndices<Test>(indices);
        EXPECT_EQ(test->BeginPass().GetErrorCode(), code);
        const auto failed = OverIndices<Test>(indices);
        failed->AddStatusMessage(QKStatus(220002), MessageKind::kError);
        EXPECT_EQ(failed->BeginPass().GetErrorCode(), 220002);
    }
    const auto good = OverIndices<Test>({4, 2});
    EXPECT_FALSE(good->BeginPass().IsError());
    std::vector<int> used{7, 8, 9};
    good->GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{4, 2}));  // what was in the list is gone
    EXPECT_FALSE(good->NeedsAnotherPass());
}

TEST(ContinuousPairSettings, OtherThanTwoIndicesFailUnlessAnErrorStands) {
    ExpectPairIsChecked<TARNWilcoxonPairs>(221009);
    ExpectPairIsChecked<TARNHodgesLehmannPairs>(222409);
}

}  // namespace
