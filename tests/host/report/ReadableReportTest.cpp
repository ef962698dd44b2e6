// How a page becomes text: widths, breaks of lines, names that are too long, what a terminal can show. The layouts of
// all tests stand in tests/command/readable/. Expected lines were counted by hand.

#include "host/report/ReadableReport.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "host/TextTable.h"
#include "host/report/TextLayout.h"

namespace tarn {
namespace {

constexpr std::size_t kWidth = 30;

std::size_t Widest(const std::string& text) {
    std::size_t widest = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) widest = std::max(widest, DisplayWidth(line));
    return widest;
}

PageTable Named(const std::string& name) {
    PageTable table;
    table.columns = {{"sample", "arm"},
                     {"n", "n", Alignment::kRight},
                     {"difference", "mean rank difference", Alignment::kRight},
                     {"p", "p", Alignment::kRight, true}};
    table.rows = {{{name, {}, {}}, {"7", {}, {}}, {"1.5", {}, {}}, {".1", {}, {}}}};
    return table;
}

TEST(TextLayout, BreaksLinesAtBlanksButNotWithinAnInterval) {
    EXPECT_EQ(Wrapped("one two three four", 12, 2), "  one two\n     three\n     four\n");
    EXPECT_EQ(Wrapped("P(a > b) [.49, .77] end", 15, 0), "P(a > b)\n   [.49, .77]\n   end\n");
    EXPECT_EQ(Wrapped("caf\u00E9s caf\u00E9", 10, 0), "caf\u00E9s caf\u00E9\n") << "characters count, not bytes";
    EXPECT_EQ(Wrapped("", 10, 3), "");
}

TEST(TextLayout, KeepsPartsTogetherWhereTheyFit) {
    EXPECT_EQ(WrappedParts({"U = 5", "z = 1.86", "p = .063"}, ",", 16, 0), "U = 5, z = 1.86,\n   p = .063\n");
}

TEST(TextLayout, CutsNamesInTheMiddleAndTellsThem) {
    EXPECT_EQ(CutInTheMiddle("abcdefghij", 7), "ab...ij");
    EXPECT_EQ(CutInTheMiddle("abc", 7), "abc");
    EXPECT_EQ(CutInTheMiddle("\u05E9\u05DC\u05D5\u05DD\u05E9\u05DC\u05D5\u05DD", 7), "\u05E9\u05DC...\u05D5\u05DD");
    const std::string name(300, 'x');
    const std::string text = TableText(Named(name), kWidth, 3);
    // The heading takes two lines, and the name what is left of them.
    EXPECT_EQ(text,
              "                     mean rank\n"
              "   arm           n  difference\n"
              "   xxxxx...xxxx  7         1.5\n"
              "   xxxxx...xxxx = " +
                  name + "\n")
        << text;
}

TEST(TextLayout, ShowsDetailsInWideLinesAlone) {
    EXPECT_EQ(TableText(Named("a"), 80, 0), "arm  n  mean rank difference\na    7                   1.5\n");
    EXPECT_EQ(TableText(Named("a"), 100, 0), "arm  n  mean rank difference   p\na    7                   1.5  .1\n");
}

ResultPage PageOfOneTest() {
    ResultPage page;
    TestPage& test = page.tests.emplace_back();
    test.name = "RFriedmansTwoWayByRanks";
    test.title = "Friedman";
    test.subject = "a, b";
    test.cases = "9 cases";
    PageFigure chiSquare{"statistic", "chi2", "2", "=", "7.99", Number("7.98823"), ""};
    PageFigure p{"p", "p", "", "<", ".001", Number("1e-9"), "two-sided"};
    test.statistics = {{"", {chiSquare, p}}};
    test.notes = {{PageNote::Kind::kWarning, 5, "take care"}};
    return page;
}

TEST(ReadableReport, PutsTheCasesAtTheEndOfTheFirstLine) {
    TextStyle style;
    style.width = kWidth;
    EXPECT_EQ(ReadableReport(PageOfOneTest(), style),
              "Friedman: a, b         9 cases\n"
              "   chi2(2) = 7.99,\n"
              "      p < .001 two-sided\n"
              "   Warning: take care\n");
}

TEST(ReadableReport, UsesWhatTheTerminalCanShow) {
    const std::string text = ReadableReport(PageOfOneTest(), {true, true, 60});
    EXPECT_TRUE(text.starts_with("\033[1mFriedman: a, b\033[0m ")) << text;
    EXPECT_NE(text.find("\u03C7\u00B2(2) = 7.99"), std::string::npos) << text;
    EXPECT_EQ(Widest(ReadableReport(PageOfOneTest(), {true, false, 60})), 60u);
}

TEST(ReadableReport, TellsThatNoTestIsThere) {
    EXPECT_EQ(ReadableReport(ResultPage(), {}), "No test of the request is known.\n");
}

}  // namespace
}  // namespace tarn
