// Names of fields and categories as documents of other languages hold them: whatever they are, they come out as text.
// The escapes are those that the languages define: CommonMark 0.31 section 2.4, the LaTeX companion's table of symbols,
// Typst's reference of escapes.

#include "host/report/Markup.h"

#include <gtest/gtest.h>

#include <string>

#include "host/report/ApaReport.h"
#include "host/report/MarkupReport.h"

namespace tarn {
namespace {

PageTable TableOf(const std::string& name) {
    PageTable table;
    table.columns = {{"sample", "arm"}, {"n", "n", Alignment::kRight}};
    table.rows = {{{name, {}, {}}, {"-1.5", Number("-1.5"), {}}}};
    return table;
}

const PageFigure kChiSquare{"statistic", "chi2", "2", "=", "7.99", Number("7.98823"), ""};
const PageFigure kP{"p", "p", "", "<", ".001", Number("1e-9"), "two-sided"};

TEST(Markdown, EscapesWhatWouldMeanSomething) {
    const MarkdownMarkup markup;
    EXPECT_EQ(markup.Escaped("</script> & a|b"), "&lt;/script&gt; &amp; a\\|b");
    EXPECT_EQ(markup.Escaped("a_b *c* `d` [e](f) $x^2$ ~g~ #1 \\ {h} @i ![j]"),
              "a\\_b \\*c\\* \\`d\\` \\[e\\](f) \\$x\\^2\\$ \\~g\\~ \\#1 \\\\ \\{h\\} \\@i \\!\\[j\\]");
    EXPECT_EQ(markup.Escaped("\u05E9\u05DC\u05D5\u05DD \U0001F600 \"q\" 'r' 100%"),
              "\u05E9\u05DC\u05D5\u05DD \U0001F600 \"q\" 'r' 100%");
    EXPECT_EQ(markup.Paragraph("- no list"), "\\- no list\n\n");
    EXPECT_EQ(markup.Paragraph("12. no list"), "12\\. no list\n\n");
    EXPECT_EQ(markup.Paragraph("1.5 is a number"), "1.5 is a number\n\n");
}

TEST(Markdown, HasAsManyCellsInEachRow) {
    const std::string table = MarkdownMarkup().Table(TableOf("a|b||c"));
    EXPECT_EQ(table, "| arm | n |\n| :-- | --: |\n| a\\|b\\|\\|c | -1.5 |\n\n");
}

TEST(Markdown, SetsSymbols) {
    EXPECT_EQ(MarkdownMarkup().Figure(kChiSquare), "\u03C7\u00B2(2) = 7.99");
    EXPECT_EQ(MarkdownMarkup().Figure(kP), "*p* &lt; .001");
}

TEST(Latex, EscapesWhatWouldMeanSomething) {
    const LatexMarkup markup;
    EXPECT_EQ(markup.Escaped("a & b_c $x^2$ #1 50% {d} ~e~ \\f"),
              "a \\& b\\_c \\$x\\textasciicircum{}2\\$ \\#1 50\\% \\{d\\} \\textasciitilde{}e\\textasciitilde{} "
              "\\textbackslash{}f");
    EXPECT_EQ(markup.Escaped("</script> | \"q\" `r'"),
              "\\textless{}/script\\textgreater{} \\textbar{} \\textquotedbl{}q\\textquotedbl{} \\textasciigrave{}r'");
    EXPECT_EQ(markup.Escaped("-.02 --x a-b"), "$-$.02 -{}-x a-b") << "a sign, no dash, a hyphen";
    // Behind a line break of a table these two would be arguments of it.
    EXPECT_EQ(markup.Escaped("[2pt] *"), "{[}2pt{]} {*}");
}

TEST(Latex, SetsTablesWithRules) {
    EXPECT_EQ(LatexMarkup().Table(TableOf("a & b")),
              "\\begin{center}\n\\begin{tabular}{lr}\n\\toprule\narm & n \\\\\n\\midrule\na \\& b & $-$1.5 \\\\\n"
              "\\bottomrule\n\\end{tabular}\n\\end{center}\n\n");
    EXPECT_EQ(LatexMarkup().Figure(kChiSquare), "$\\chi^2(2)$ = 7.99");
    EXPECT_EQ(LatexMarkup().Figure(kP), "\\textit{p} \\textless{} .001");
    EXPECT_NE(LatexMarkup().Head().find("\\usepackage{booktabs}"), std::string::npos);
}

TEST(Typst, EscapesWhatWouldMeanSomething) {
    const TypstMarkup markup;
    EXPECT_EQ(markup.Escaped("#a $b$ *c* _d_ `e` <f> @g [h] ~i \\j \"k\" //l"),
              "\\#a \\$b\\$ \\*c\\* \\_d\\_ \\`e\\` \\<f\\> \\@g \\[h\\] \\~i \\\\j \\\"k\\\" \\/\\/l");
    EXPECT_EQ(markup.Escaped("-.02 a-b"), "\u2212.02 a\\-b");
    EXPECT_EQ(markup.Escaped("= no heading"), "\\= no heading");
    EXPECT_EQ(markup.Escaped("1. no list"), "1\\. no list");
}

TEST(Typst, SetsTables) {
    EXPECT_EQ(TypstMarkup().Table(TableOf("a]b")),
              "#table(\n  columns: 2,\n  align: (left, right,),\n  stroke: none,\n  table.hline(),\n"
              "  table.header([arm], [n]),\n  table.hline(stroke: 0.5pt),\n  [a\\]b], [\u22121.5],\n"
              "  table.hline(),\n)\n\n");
    EXPECT_EQ(TypstMarkup().Figure(kChiSquare), "$chi^2(2)$ = 7.99");
}

TEST(MarkupReport, TellsEffectsInATable) {
    TestPage page;
    PageEffect effect;
    effect.label = "P(a > b)";
    effect.text = ".64";
    effect.lowerText = ".49";
    effect.upperText = ".77";
    effect.method = "Wilson (1927)";
    page.effects = {effect};
    page.methods = {{"Intervals, 95 %", "P(a > b): Wilson (1927)"}};
    const PageTable table = EffectsTable(page);
    EXPECT_EQ(table.columns[2].title, "95 % interval");
    EXPECT_EQ(table.rows.at(0)[2].text, "[.49, .77]");
}

// The rules are those of the Publication Manual of the American Psychological Association, 7th edition, 6.36 to 6.44.
TEST(ApaReport, WritesSentences) {
    ResultPage run;
    TestPage& page = run.tests.emplace_back();
    page.name = "IKruskalWallis";
    page.title = "Kruskal-Wallis test";
    page.subject = "weight by group";
    page.cases = "27 of 30 cases (3 missing)";
    page.samples.columns = {{"sample", "group"}, {"n", "n"}, {"median", "median"}};
    for (const char* name : {"ctrl", "trt1", "trt2"}) {
        page.samples.rows.push_back({{name, {}, {}}, {"9", {}, {}}, {"5.1", {}, {}}});
    }
    PageFigure h{"statistic", "H", "2", "=", "7.99", Number("7.98823"), ""};
    PageFigure p{"p", "p", "", "=", ".018", Number("0.018"), "(exact)"};
    page.statistics = {{"", {h, p}}};
    PageEffect effect;
    effect.label = "epsilon squared";
    effect.text = ".28";
    effect.lowerText = ".00";
    effect.upperText = ".62";
    page.effects = {effect};
    page.methods = {{"Intervals, 95 %", "epsilon squared: x"}};
    page.conclusion =
        "At the 5 % level the distributions differ; which of them differ is a question for the pairs. After adjustment "
        "1 of 3 pairs differs: a and b.";
    page.pairs.title = "Pairs (Dunn, Bonferroni)";
    page.pairs.columns = {{"pair", ""}, {"z", "z"}, {"p-adjusted", "p adjusted"}};
    page.pairs.rows = {{{"ctrl - trt1", {}, {}}, {"1.12", {}, {}}, {".791", {}, {}}},
                       {{"trt1 - trt2", {}, {}}, {"-4.81", {}, {}}, {"< .001", {}, {}}}};
    EXPECT_EQ(
        ApaReport(run),
        "A Kruskal-Wallis test compared weight between ctrl (n = 9, Mdn = 5.1), trt1 (n = 9, Mdn = 5.1) and trt2 "
        "(n = 9, Mdn = 5.1); 27 of 30 cases (3 missing). At the 5 % level the distributions differ, H(2) = 7.99, p "
        "= .018 (exact), epsilon squared = .28, 95% CI [.00, .62]. Pairs (Dunn, Bonferroni): ctrl - trt1, z = "
        "1.12, p = .791; trt1 - trt2, z = -4.81, p < .001.\n");
}

}  // namespace
}  // namespace tarn
