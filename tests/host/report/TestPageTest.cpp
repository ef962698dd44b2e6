// What a reader is shown of a test and of a run, before it has a medium. The numbers are those of documents that are
// written out by hand; how they have to look follows the rules of APA style (7th edition, 6.36 to 6.44).

#include "host/report/TestPage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "host/report/PageNumbers.h"
#include "host/report/PageText.h"
#include "host/report/ResultPage.h"
#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;

ResultPage PageOfTests(const std::string& tests) {
    return PageOf(ReadAll(ReadResult(DocumentOf(tests)), MessageCatalogue::English()), MessageCatalogue::English());
}

/// The cells of a table, joined by bars.
std::string Lines(const PageTable& table) {
    std::string text;
    for (const PageColumn& column : table.columns) text += column.title + "|";
    text += "\n";
    for (const auto& row : table.rows) {
        for (const PageCell& cell : row) text += cell.text + "|";
        text += "\n";
    }
    return text;
}

std::string Text(const PageLine& line) {
    std::string text = line.title;
    for (const PageFigure& figure : line.figures) text += "; " + FigureText(figure) + " " + figure.remark;
    return text;
}

TEST(PageNumbers, WritesASignificanceThatIsNever0) {
    EXPECT_EQ(PCellText(Number("0.0633")), ".063");
    EXPECT_EQ(PCellText(Number("0.0009999")), "< .001");
    EXPECT_EQ(PCellText(Number("0")), "< .001");
    EXPECT_EQ(PCellText(Number("0.9997")), "> .999");
    EXPECT_EQ(PCellText(Number("1")), "1.000");
    EXPECT_EQ(PCellText(Number("0.2"), true), "> .200");
    EXPECT_EQ(PCellText(Number("nan")), "undefined");
    EXPECT_EQ(PCellText(Number()), "");
    EXPECT_EQ(WriteP(Number()).text, "not computed");
}

TEST(PageNumbers, WritesSharesWithoutALeadingZero) {
    EXPECT_EQ(ShareText(0.6394), ".64");
    EXPECT_EQ(ShareText(-0.02117), "-.02");
    EXPECT_EQ(ShareText(0.0015), ".002");
    EXPECT_EQ(ShareText(-0.0004), "-.0004");
    EXPECT_EQ(ShareText(0.998), ".998");
    EXPECT_EQ(ShareText(1), "1.00");
    EXPECT_EQ(ShareText(0), ".00");
    EXPECT_EQ(ShareText(-1), "-1.00");
}

TEST(PageNumbers, KeepsWholeAndHalfStatistics) {
    EXPECT_EQ(CountText(Number("575.5")), "575.5");
    EXPECT_EQ(CountText(Number("16435")), "16435");
    EXPECT_EQ(CountText(Number("7.98823")), "7.99");
    EXPECT_EQ(StatisticText(Number("2.5")), "2.50");
    EXPECT_EQ(StatisticText(Number()), "not computed");
    EXPECT_EQ(FixedText(-0.001, 2), "0.00");
    EXPECT_EQ(FixedText(std::numeric_limits<double>::infinity(), 2), "inf");
}

TEST(PageNumbers, GivesAColumnTheSameDecimals) {
    const SameDecimals medians({5.155, 4.55, 5.435});
    EXPECT_EQ(medians.Text(Number("4.55")), "4.550");
    const SameDecimals whole({47, 46});
    EXPECT_EQ(whole.Range(Number("46"), Number("47")), "46 to 47");
    EXPECT_EQ(SameDecimals({4, -0.1, 8.5}).Text(Number("4")), "4.0");
    EXPECT_EQ(SameDecimals({1e-7}).Text(Number("1e-7")), "1e-07");
    EXPECT_EQ(whole.Text(Number()), "");
}

TEST(TestPage, TellsAPairInItsDirection) {
    const ResultPage page = PageOfTests(SignTest());
    ASSERT_EQ(page.tests.size(), 1u);
    const TestPage& test = page.tests[0];
    EXPECT_EQ(test.Heading(), "Sign test: v, u");
    ASSERT_EQ(test.statistics.size(), 3u);
    // The exact significance decides for few cases, and stands first.
    EXPECT_EQ(Text(test.statistics[0]), "; S = 8 ; z = 0.87 for u minus v; p = .388 (two-sided, exact)");
    EXPECT_EQ(Text(test.statistics[1]), "; p = .386 (two-sided, asymptotic)");
    EXPECT_EQ(Text(test.statistics[2]), "; u above v = 8 ; u below v = 4 ; ties = 0 ");
    EXPECT_FALSE(test.isRejected);
    EXPECT_EQ(test.conclusion.substr(0, 71), "At the 5 % level this hypothesis was not rejected, which does not show ");
}

TEST(TestPage, TellsSamplesPairsAndSubsets) {
    const TestPage test = PageOfTests(KruskalWallisTest()).tests.at(0);
    EXPECT_EQ(Text(test.statistics.at(0)), "; H = 9.27, df 2 ; p = .010 ");
    EXPECT_EQ(Lines(test.samples), "arm|median|hinges|mean rank|\nold|3|2 to 4|2.50|\n3|3|2 to 4|undefined|\n");
    EXPECT_EQ(test.pairs.title, "Pairs (Dunn, Bonferroni)");
    EXPECT_EQ(Lines(test.pairs),
              "|mean rank difference|std. error|z|p|p adjusted|\nold - 3|-5.50|2.54|-2.17|.030|.030|\n");
    EXPECT_EQ(test.pairNames.at(0).second, "3");
    EXPECT_EQ(Lines(test.subsets), "|1|2|\n3|x||\nold|x|x|\np|.260||\np adjusted|.261||\n");
    EXPECT_TRUE(test.notes.empty()) << "the table shows which sample makes a subset by itself";
}

TEST(TestPage, SaysWhyATestWasNotDone) {
    const std::string failed = TestElement(
        "RSign", "Related_Samples", "unknown",
        Condition("R_Sign_2", {"__MISSING__", "7"}) + Table("WarningMessages", Message("220903", "error", {"w"})));
    const ResultPage page = PageOfTests(failed);
    const TestPage& test = page.tests.at(0);
    EXPECT_TRUE(test.hasFailed);
    ASSERT_EQ(test.notes.size(), 1u);
    EXPECT_EQ(TitleOf(test.notes[0].kind), "Not done");
    EXPECT_EQ(test.notes[0].text, "the field w is not in the table; name one of its fields");
    EXPECT_EQ(test.conclusion, "");
    EXPECT_EQ(page.summary.rows.at(0).back().text, "not done");
}

TEST(ResultPage, SummarisesManyTests) {
    std::string tests;
    for (std::size_t i = 0; i < kFewestForSummary; ++i) tests += SignTest();
    const ResultPage page = PageOfTests(tests);
    EXPECT_TRUE(page.hasManyTests);
    EXPECT_EQ(page.title, "5 tests, Sign test");
    // Holm multiplies the smallest of five equal significances by five, Benjamini and Hochberg the largest by one.
    const std::string summary = Lines(page.summary);
    EXPECT_TRUE(summary.starts_with("fields|n|statistic|p|p Holm|p BH|\nv, u|12|S = 8|.388|1.000|.388|\n")) << summary;
    EXPECT_EQ(page.familyLine,
              "0 of 5 tests with p < .05 before adjustment (0.25 expected by chance if every null hypothesis holds), 0 "
              "after it (Holm), 0 after it (BH)");
    ASSERT_FALSE(page.record.empty());
    EXPECT_EQ(page.record[0].text, "12, weights add up to 9.5");
}

TEST(PageText, MakesControlCharactersBlanks) {
    std::string text =
        "a\nb\x1b[1m\xC2\x9B"
        "c\x7f";
    MakeOneLine(text);
    EXPECT_EQ(text, "a b [1m c ");
}

}  // namespace
}  // namespace tarn
