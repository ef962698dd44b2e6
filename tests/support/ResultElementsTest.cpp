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
    return {"RSign", ResultType::kHypothesisTest, TestFamily::kRelated, decision};
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
    ResultElement unknown("IMoses", ResultType::kHypothesisTest, TestFamily::kIndependent, Decision::kUnknown);
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

TEST(ResultElement, TypesClassificationsAndDecisionsHaveTheirTexts) {
    const auto attributes = [](ResultType type, TestFamily family, Decision decision) {
        ResultElement element("T", type, family, decision);
        return TextOf(element);
    };
    EXPECT_EQ(attributes(ResultType::kHypothesisTest, TestFamily::kOneSample, Decision::kRetain),
              R"(<Algorithm name="T" type="hypothesis_test" classification="One_Sample" decision="retain"/>)");
    EXPECT_EQ(attributes(ResultType::kConfidenceInterval, TestFamily::kRelated, Decision::kUnknown),
              R"(<Algorithm name="T" type="confidence_interval" classification="Related_Samples"/>)");
    EXPECT_EQ(attributes(ResultType::kConfidenceInterval, TestFamily::kIndependent, Decision::kReject),
              R"(<Algorithm name="T" type="confidence_interval" classification="Independent_Samples"/>)");
}

TEST(ResultElement, EndsAtTheMessagesAloneWhateverTheirKind) {
    struct Row {
        MessageKind kind;
        QKStatus status;
        bool ends;
    };
    for (const Row& row :
         {Row{MessageKind::kError, QKStatus(220003), true}, Row{MessageKind::kWarning, QKStatus(220003), true},
          Row{MessageKind::kHelpMessage, QKStatus(220003), true}, Row{MessageKind::kWarning, QKStatus(), false},
          Row{MessageKind::kHelpMessage, QKStatus(), false}, Row{MessageKind::kError, QKStatus(), false},
          Row{MessageKind::kWarning, QKStatus(220003, true), false}}) {
        ResultElement element = SignElement();
        EXPECT_EQ(element.EndsWithMessages({{QKStatus(220003), row.kind, {}, {}}}, row.status), row.ends);
        EXPECT_NE(TextOf(element).find("WarningMessages"), std::string::npos);
    }
}

// ---- Tables ----

TEST(StructuredTable, CategoryThatTheFieldDoesNotKnowShowsItsTextInValsNotInTheCategoreisAndTheTestGoesOn) {
    ResultElement element = SignElement();
    StructuredTable table = element.AddTable("T");
    table.AddUnknownCategories(TableName::kUnknownCategories, {2, -1, 0, -1}, {"b", "x;y", "a", ""});
    table.Row("further", "row");
    // A row is named by its position among the unknown ones.
    EXPECT_NE(TextOf(element).find(R"(<StructuredTable name="T"><StructuredTable name="ValsNotInTheCategoreis">)"
                                   R"(<Attribute name="0" value="x;y"/><Attribute name="1" value=""/>)"
                                   R"(</StructuredTable><Attribute name="further" value="row"/></StructuredTable>)"),
              std::string::npos);
}

TEST(StructuredTable, WithoutUnknownCategoriesThereIsNoTableOfThem) {
    ResultElement element = SignElement();
    StructuredTable table = element.AddTable("T");
    table.AddUnknownCategories(TableName::kUnknownCategories, {2, 0}, {"b", "a"});
    table.AddUnknownCategories(TableName::kUnknownCategories, {}, {});
    EXPECT_NE(TextOf(element).find(R"(<StructuredTable name="T"/>)"), std::string::npos);
}

TEST(Vocabulary, HasATableThatNoTestWrites) {
    EXPECT_STREQ(Element::kComplexTable, "ComplexTable");  // presenting programs know it beside the two others
}

TEST(SimpleTable, HoldsItsNamesThenItsRows) {
    const auto table = MakeSimpleTable("Content", "a;b", "");
    EXPECT_EQ(TextOf(*table), R"(<SimpleTable name="Content"><RowNames>a;b</RowNames><ColumnNames/></SimpleTable>)");
    table->AddChild(MakeRowElement("1;<2"));
    table->AddChild(MakeRowElement(""));
    EXPECT_EQ(TextOf(*table), R"(<SimpleTable name="Content"><RowNames>a;b</RowNames><ColumnNames/>)"
                              R"(<Row>1;&lt;2</Row><Row/></SimpleTable>)");
    EXPECT_EQ(TextOf(*MakeSimpleTable("C", "r", "c;d")),
              R"(<SimpleTable name="C"><RowNames>r</RowNames><ColumnNames>c;d</ColumnNames></SimpleTable>)");
}

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

struct FirstColumn {
    std::string counts, values;        // as handed in
    std::string endCounts, endValues;  // as they stand in the table, and come back
};

class IntervalTableBehindAFirstColumn : public testing::TestWithParam<FirstColumn> {};

TEST_P(IntervalTableBehindAFirstColumn, ExtendsWhatTheCallerHandsIn) {
    std::string counts = GetParam().counts;
    std::string values = GetParam().values;
    const auto table = MakeIntervalTable({{2, 1.5}, {0, 9}, {1, -0.25}}, counts, values);
    EXPECT_EQ(counts, GetParam().endCounts);
    EXPECT_EQ(values, GetParam().endValues);
    EXPECT_NE(TextOf(*table).find("<Row>" + counts + "</Row><Row>" + values + "</Row>"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(, IntervalTableBehindAFirstColumn,
                         testing::Values(FirstColumn{"", "", "2;1", "1.5;-0.25"},
                                         FirstColumn{"3", "0", "3;2;1", "0;1.5;-0.25"},
                                         // One leading separator goes, whoever put it there, and no more than one.
                                         FirstColumn{";3", ";0", "3;2;1", "0;1.5;-0.25"},
                                         FirstColumn{";;3", "0", ";3;2;1", "0;1.5;-0.25"},
                                         FirstColumn{"3", "", "3;2;1", "1.5;-0.25"}));

TEST(IntervalTable, ColumnsAreTheNonEmptyIntervalsInTheirOrderTheZerosLast) {
    std::vector<HistogramBin> bins(400);
    bins[7] = {5, -2.5};
    bins[399] = {1, 8};
    bins.push_back({3, 0});
    std::string counts;
    std::string values;
    MakeIntervalTable(bins, counts, values);
    EXPECT_EQ(counts, "5;1;3");
    EXPECT_EQ(values, "-2.5;8;0");
}

TEST(IntervalTable, MeanThatIsNoNumberShowsAsNan) {
    std::string counts;
    std::string values;
    MakeIntervalTable({{2, std::numeric_limits<double>::quiet_NaN()}}, counts, values);
    EXPECT_EQ(values, "nan");
}

TEST(IntervalTable, WithoutIntervalsHasTwoEmptyRows) {
    std::string counts;
    std::string values;
    EXPECT_EQ(
        TextOf(*MakeIntervalTable({}, counts, values)),
        R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/><Row/><Row/></SimpleTable>)");
}

}  // namespace
