// The result tables of compared samples.

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "support/ComparisonTables.h"

namespace {

constexpr double kLevel = 0.05;

std::string TextOf(ResultElement& element) {
    const std::unique_ptr<QKXML::XMLElement> released(element.Release());
    std::ostringstream out;
    for (const auto& child : released->GetChildren()) QKXML::WriteTree(out, nullptr, child->AsElement(), 0);
    return out.str();
}

std::string PairwiseText(const ComparisonRules& rules, bool untestable) {
    ResultElement element("T", ResultType::kHypothesisTest, TestFamily::kRelated, Decision::kReject);
    AddPairwiseResult(element, rules, {untestable ? std::optional(4) : std::nullopt, "2;0", "1.5;2"},
                      {{0, 1, -0.5, 0.25, -2, 0.045, 0.135, untestable}});
    return TextOf(element);
}

constexpr const char* kPairColumns =
    "<RowNames/><ColumnNames>Sample1;Sample2;TestStatistic;StandardError;StandardTestStatistic;Sig;AdjSig</"
    "ColumnNames>";

TEST(PairwiseResult, NamesItsSamplesOnRowsInTestsOfRankedRows) {
    EXPECT_EQ(PairwiseText(ComparisonRulesOf::kFriedman, false),
              R"(<StructuredTable name="PairwiseResult"><SimpleTable name="PairwiseInfo">)"
              "<RowNames>IndexOrder;Value</RowNames><ColumnNames/><Row>2;0</Row><Row>1.5;2</Row></SimpleTable>"
              R"(<SimpleTable name="Content">)" +
                  std::string(kPairColumns) +
                  "<Row>0;1;-0.5;0.25;-2;0.045;0.135</Row></SimpleTable></StructuredTable>");
    EXPECT_EQ(PairwiseText(ComparisonRulesOf::kFriedman, false), PairwiseText(ComparisonRulesOf::kKendallsW, false));
}

TEST(PairwiseResult, NamesItsSamplesOnColumnsElsewhereAndShowsTheGroupField) {
    for (const ComparisonRules& rules :
         {ComparisonRulesOf::kCochransQ, ComparisonRulesOf::kKruskalWOneWay, ComparisonRulesOf::kJonckTer}) {
        EXPECT_EQ(PairwiseText(rules, true),
                  R"(<StructuredTable name="PairwiseResult"><Attribute name="fieldIndex" value="4"/>)"
                  R"(<SimpleTable name="PairwiseInfo">)"
                  "<RowNames/><ColumnNames>IndexOrder;Value</ColumnNames><Row>2;0</Row><Row>1.5;2</Row></SimpleTable>"
                  R"(<SimpleTable name="Content">)" +
                      std::string(kPairColumns) +
                      "<Row>0;1;__MISSING__;__MISSING__;__MISSING__;__MISSING__;__MISSING__</Row>"
                      "</SimpleTable></StructuredTable>");
    }
}

TEST(PairwiseResult, HasNoErrorsInTheMedianTest) {
    EXPECT_NE(PairwiseText(ComparisonRulesOf::kKSMedian, false).find("<Row>0;1;-0.5;;;0.045;0.135</Row>"),
              std::string::npos);
    EXPECT_NE(
        PairwiseText(ComparisonRulesOf::kKSMedian, true).find("<Row>0;1;__MISSING__;;;__MISSING__;__MISSING__</Row>"),
        std::string::npos);
}

struct StepwiseText {
    std::string text;
    std::vector<TestMessage> warnings;
};

/// Four samples of which 0-2 belong together and 1-2 has no statistic where a test can say so; 3 is alone.
StepwiseText WriteStepwise(const ComparisonRules& rules) {
    StepwiseComparison search(rules, Arithmetic::AsDefined());
    search.Begin(4, 4);
    while (!search.IsDone()) {
        (void)search.EndPass(kLevel, [&](SubsetRecord& subset) {
            subset.statistic = 2.5;
            subset.standardError = 0.5;
            subset.standardTestStatistic = 5;
            subset.sig = subset.firstPosition == 0 ? 0.25 : 0;
            return StepwiseComparison::Outcome::kComputed;
        });
    }
    ResultElement element("T", ResultType::kHypothesisTest, TestFamily::kRelated, Decision::kReject);
    StepwiseText written;
    written.warnings = AddStepwiseResult(element, search, {std::nullopt, "3;1;0;2", "1;2;2.5;4"});
    written.text = TextOf(element);
    return written;
}

constexpr const char* kSubsetColumns =
    R"(<SimpleTable name="Content"><RowNames/><ColumnNames>FirstPosition;LastPosition;TestStatistic;StandardError;)"
    "StandardTestStatistic;Sig;AdjSig</ColumnNames>";
constexpr const char* kTwoRows = "<Row>3;1;0;2</Row><Row>1;2;2.5;4</Row></SimpleTable>";

TEST(StepwiseResult, WritingALoneSampleWarnsInTestsOfRankedRows) {
    const StepwiseText written = WriteStepwise(ComparisonRulesOf::kFriedman);
    EXPECT_EQ(written.text, R"(<StructuredTable name="StepwiseResult"><SimpleTable name="StepwiseInfo">)"
                            "<RowNames>IndexOrder;Value</RowNames><ColumnNames/>" +
                                std::string(kTwoRows) + kSubsetColumns +
                                "<Row>0;2;2.5;;;0.25;0.25</Row><Row>3;3;__MISSING__;;;__MISSING__;__MISSING__</Row>"
                                "</SimpleTable></StructuredTable>");
    ASSERT_EQ(written.warnings.size(), 1U);
    EXPECT_EQ(written.warnings[0], (TestMessage{QKStatus(220013), MessageKind::kWarning, {}, {{"group", "3;3"}}}));
}

TEST(StepwiseResult, OtherTestsHaveWarnedBefore) {
    const StepwiseText cochran = WriteStepwise(ComparisonRulesOf::kCochransQ);
    EXPECT_TRUE(cochran.warnings.empty());
    EXPECT_NE(cochran.text.find("<RowNames/><ColumnNames>IndexOrder;Value</ColumnNames>" + std::string(kTwoRows)),
              std::string::npos);
    EXPECT_NE(cochran.text.find("<Row>0;2;2.5;;;0.25;0.25</Row><Row>3;3;__MISSING__;;;__MISSING__;__MISSING__</Row>"),
              std::string::npos);

    // Labels on columns over pairs and on rows over subsets, and ";" behind a lone group.
    const StepwiseText kruskal = WriteStepwise(ComparisonRulesOf::kKruskalWOneWay);
    EXPECT_NE(kruskal.text.find("<RowNames>IndexOrder;Value</RowNames><ColumnNames/>" + std::string(kTwoRows)),
              std::string::npos);
    EXPECT_NE(kruskal.text.find("<Row>0;2;2.5;;;0.25;0.25</Row><Row>3;3;__MISSING__;;;__MISSING__;__MISSING__;</Row>"),
              std::string::npos);
}

TEST(StepwiseResult, ShowsErrorsInTheTestOfAnOrderAlone) {
    EXPECT_NE(WriteStepwise(ComparisonRulesOf::kJonckTer)
                  .text.find("<Row>0;2;2.5;0.5;5;0.25;0.25</Row>"
                             "<Row>3;3;__MISSING__;__MISSING__;__MISSING__;__MISSING__;__MISSING__</Row>"),
              std::string::npos);
    EXPECT_NE(WriteStepwise(ComparisonRulesOf::kKSMedian)
                  .text.find("<Row>0;2;2.5;;;0.25;0.25</Row><Row>3;3;__MISSING__;;;__MISSING__;__MISSING__</Row>"),
              std::string::npos);
}

}  // namespace
