#include "support/ResultElements.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// The text of an element, without the declaration of a document.
std::string TextOf(const QKXML::XMLElement& element) {
    std::ostringstream out;
    QKXML::WriteTree(out, nullptr, &element, 0);
    return out.str();
}

std::string TextOf(ResultElement& element) {
    const std::unique_ptr<QKXML::XMLElement> released(element.Release());
    return TextOf(*released);
}

ResultElement SignElement(Decision decision = Decision::kRetain) {
    return {"RSign", ResultType::kHypothesisTest, TestFamily::kRelatedSamples, decision};
}

// ---- The decision ----

TEST(Decision, SigLevelEqualToTheDecidingSignificanceRetains) {
    EXPECT_EQ(Decide(QKStatus(), 0.05, 0.05), Decision::kRetain);
    EXPECT_EQ(Decide(QKStatus(), 0.05, std::nextafter(0.05, 0)), Decision::kReject);
    EXPECT_EQ(Decide(QKStatus(), 0.05, 0.06), Decision::kRetain);
}

TEST(Decision, ErrorIsUnknownAndAWarningIsNot) {
    EXPECT_EQ(Decide(QKStatus(220003), 0.05, 0.01), Decision::kUnknown);
    EXPECT_EQ(Decide(QKStatus(222011, true), 0.05, 0.01), Decision::kReject);
}

TEST(Decision, SignificanceThatIsNotANumberRetains) {
    EXPECT_EQ(Decide(QKStatus(), 0.05, std::numeric_limits<double>::quiet_NaN()), Decision::kRetain);
}

// ---- "Algorithm" ----

TEST(ResultElement, AttributesStandInTheirOrder) {
    ResultElement test = SignElement(Decision::kReject);
    EXPECT_EQ(TextOf(test),
              R"(<Algorithm name="RSign" type="hypothesis_test" classification="Related_Samples" decision="reject"/>)");
    ResultElement unknown("IMoses", ResultType::kHypothesisTest, TestFamily::kIndependentSamples, Decision::kUnknown);
    EXPECT_EQ(
        TextOf(unknown),
        R"(<Algorithm name="IMoses" type="hypothesis_test" classification="Independent_Samples" decision="unknown"/>)");
}

TEST(ResultElement, ConfidenceIntervalHasNoDecision) {
    ResultElement element("OEstimateConfidenceInterval", ResultType::kConfidenceInterval, TestFamily::kOneSample,
                          Decision::kRetain);
    EXPECT_EQ(
        TextOf(element),
        R"(<Algorithm name="OEstimateConfidenceInterval" type="confidence_interval" classification="One_Sample"/>)");
}

TEST(ResultElement, ConditionHasItsKeyThenItsParametersThenFurtherRows) {
    ResultElement element = SignElement();
    element.AddCondition("Key_2", {"3", "4;5"}).Row("isUseSample", "true");
    EXPECT_EQ(TextOf(element),
              R"(<Algorithm name="RSign" type="hypothesis_test" classification="Related_Samples" decision="retain">)"
              R"(<StructuredTable name="Condition"><Attribute name="ConditionKey" value="Key_2"/>)"
              R"(<Attribute name="%0" value="3"/><Attribute name="%1" value="4;5"/>)"
              R"(<Attribute name="isUseSample" value="true"/></StructuredTable></Algorithm>)");
}

TEST(ResultElement, NegativeFieldIsMissingWhereTheTestMarksIt) {
    EXPECT_EQ(FieldOrMissing(-1), "__MISSING__");
    EXPECT_EQ(FieldOrMissing(0), "0");
    EXPECT_EQ(FieldOrMissing(12), "12");
}

// ---- Messages ----

TEST(ResultElement, ErrorWithAMessageEndsTheElement) {
    ResultElement element = SignElement();
    EXPECT_TRUE(element.EndsWithMessages({{QKStatus(220003), MessageKind::kError, {}, {}}}, QKStatus(220003)));
}

TEST(ResultElement, ErrorWithoutAMessageDoesNotEndTheElement) {
    ResultElement element = SignElement();
    EXPECT_FALSE(element.EndsWithMessages({}, QKStatus(220003)));
    EXPECT_EQ(TextOf(element).find("WarningMessages"), std::string::npos);
}

TEST(ResultElement, HelpMessageDoesNotEndTheElement) {
    ResultElement element = SignElement();
    EXPECT_FALSE(element.EndsWithMessages({{QKStatus(220916), MessageKind::kHelpMessage, {}, {}}}, QKStatus()));
    EXPECT_NE(TextOf(element).find(R"(<Attribute name="type" value="helpMessage"/>)"), std::string::npos);
}

TEST(WarningElement, ShowsCodeTypeAndParametersOfEachMessageInOrder) {
    const auto element = MakeWarningElement({{QKStatus(220903), MessageKind::kError, {"a", "b"}, {{"group", "g"}}},
                                             {QKStatus(220013), MessageKind::kWarning, {}, {}}});
    EXPECT_EQ(TextOf(*element),
              R"(<StructuredTable name="WarningMessages">)"
              R"(<StructuredTable name="Message"><Attribute name="code" value="220903"/>)"
              R"(<Attribute name="type" value="error"/><Attribute name="paramNum" value="2"/>)"
              R"(<Attribute name="%0" value="a"/><Attribute name="%1" value="b"/>)"
              R"(<Attribute name="group" value="g"/></StructuredTable>)"
              R"(<StructuredTable name="Message"><Attribute name="code" value="220013"/>)"
              R"(<Attribute name="type" value="warning"/><Attribute name="paramNum" value="0"/></StructuredTable>)"
              R"(</StructuredTable>)");
}

TEST(WarningElement, MessageWithoutParametersShowsParamNum0AndNoPercent0) {
    const std::string text = TextOf(*MakeWarningElement({{QKStatus(220003), MessageKind::kError, {}, {}}}));
    EXPECT_NE(text.find(R"(name="paramNum" value="0")"), std::string::npos);
    EXPECT_EQ(text.find("%0"), std::string::npos);
}

TEST(WarningElement, WithoutMessagesIsEmpty) {
    EXPECT_EQ(TextOf(*MakeWarningElement({})), R"(<StructuredTable name="WarningMessages"/>)");
}

TEST(WarningElement, KindOutsideTheListIsAnError) {
    const std::string text = TextOf(*MakeWarningElement({{QKStatus(1), static_cast<MessageKind>(7), {}, {}}}));
    EXPECT_NE(text.find(R"(name="type" value="error")"), std::string::npos);
}

// ---- Tables ----

TEST(StructuredTable, RowsAreFormattedByTheirType) {
    ResultElement element = SignElement();
    StructuredTable table = element.AddTable("T");
    table.Row("count", std::int32_t{-7});
    table.Row("whole", 3.0);
    table.Row("double", 1.0 / 3);
    table.Row("text", "a<b");
    table.Table("Inner").Row("x", 0.5);
    EXPECT_NE(
        TextOf(element).find(R"(<StructuredTable name="T"><Attribute name="count" value="-7"/>)"
                             R"(<Attribute name="whole" value="3"/>)"
                             R"(<Attribute name="double" value="0.333333333333333"/>)"
                             R"(<Attribute name="text" value="a&lt;b"/>)"
                             R"(<StructuredTable name="Inner"><Attribute name="x" value="0.5"/></StructuredTable>)"
                             R"(</StructuredTable>)"),
        std::string::npos);
}

TEST(IntervalTable, IntervalWithACountOf0HasNoColumn) {
    std::string counts;
    std::string values;
    const auto table = MakeIntervalTable({{2, 1.5}, {0, 99}, {-1, 98}, {1, 2.25}}, counts, values);
    EXPECT_EQ(TextOf(*table), R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/>)"
                              R"(<Row>2;1</Row><Row>1.5;2.25</Row></SimpleTable>)");
    EXPECT_EQ(counts, "2;1");
    EXPECT_EQ(values, "1.5;2.25");
}

TEST(IntervalTable, ExtendsAFirstColumnThatTheCallerHandsIn) {
    std::string counts = "count";
    std::string values = ";0";  // a leading separator goes, whoever put it there
    MakeIntervalTable({{2, 1.5}}, counts, values);
    EXPECT_EQ(counts, "count;2");
    EXPECT_EQ(values, "0;1.5");
}

TEST(IntervalTable, WithoutIntervalsHasTwoEmptyRows) {
    std::string counts;
    std::string values;
    EXPECT_EQ(
        TextOf(*MakeIntervalTable({}, counts, values)),
        R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/><Row/><Row/></SimpleTable>)");
}

// ---- Text makers ----

TEST(TextMakers, SpellNumbersAndTruthValues) {
    EXPECT_EQ(IntToString(-2147483647 - 1), "-2147483648");
    EXPECT_EQ(IntToString(1234567), "1234567");
    EXPECT_EQ(SizeToString(18446744073709551615u), "18446744073709551615");
    EXPECT_EQ(BoolToString(true), "true");
    EXPECT_EQ(BoolToString(false), "false");
}

struct Spelling {
    double value;
    const char* text;
};

class Spellings : public testing::TestWithParam<Spelling> {};

TEST_P(Spellings, OfDoubles) {
    EXPECT_EQ(DoubleToString(GetParam().value), GetParam().text);
}

// By the rules of "%.15g"; NaN and infinities as they are defined for documents.
INSTANTIATE_TEST_SUITE_P(, Spellings,
                         testing::Values(Spelling{0.0, "0"}, Spelling{5.0, "5"}, Spelling{0.1, "0.1"},
                                         Spelling{2.0 / 3, "0.666666666666667"}, Spelling{1e15, "1e+15"},
                                         Spelling{123456789012345.0, "123456789012345"}, Spelling{1e-5, "1e-05"},
                                         Spelling{-1.7976931348623157e308, "-1.79769313486232e+308"},
                                         Spelling{std::numeric_limits<double>::quiet_NaN(), "nan"},
                                         Spelling{-std::numeric_limits<double>::quiet_NaN(), "nan"},
                                         Spelling{std::numeric_limits<double>::infinity(), "inf"},
                                         Spelling{-std::numeric_limits<double>::infinity(), "-inf"}));

}  // namespace
