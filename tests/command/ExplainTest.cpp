// Where explanations are shown and where they are refused. What they say is the matter of
// tests/analysis/ExplanationTest.

#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/harness/Command.h"

namespace {

using Words = std::vector<std::string>;

const std::string kTitle = "How the numbers came about";

/// Analyses six cases of two groups, one of which misses its value; `more` stands behind the request.
harness::CommandResult Analyze(const harness::ScratchFolder& folder, const Words& more) {
    Words words{"analyze", folder.Write("data.csv", "x,y,g,s\n1,2,a,m\n2,2,a,f\n2,4,b,m\n3,1,b,f\n4,5,b,m\n,3,b,f\n")};
    words.insert(words.end(), more.begin(), more.end());
    return harness::RunTarn(words);
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

TEST(ExplainOption, IsRefusedWhereItHasNoPlace) {
    const harness::ScratchFolder folder;
    const auto refusal = [&](const Words& more) {
        Words words{"x ~ g", "--explain"};
        words.insert(words.end(), more.begin(), more.end());
        const harness::CommandResult result = Analyze(folder, words);
        EXPECT_EQ(result.exitStatus, 2);
        EXPECT_EQ(result.out, "");
        return result.err;
    };
    for (const std::string format : {"csv", "xml", "apa", "xlsx"}) {
        EXPECT_EQ(refusal({"--format", format}), "tarn: --explain: " + format +
                                                     " has no place for it; expected --format text, json, md, latex, "
                                                     "typst or html, or --report\n");
    }
    EXPECT_EQ(refusal({"--details"}),
              "tarn: --explain: stands below the short text; expected it without --details, or --report\n");
    EXPECT_EQ(refusal({"--quiet"}), "tarn: --explain: --quiet shows no text; expected one of the two, or --report\n");
    EXPECT_EQ(refusal({"--quiet", "--plot", folder.Path("x.svg")}).substr(0, 15), "tarn: --explain");
    EXPECT_EQ(refusal({"--format", "csv", "--out", folder.Path("result.xml")}).substr(0, 15), "tarn: --explain");
    EXPECT_EQ(folder.Files(), Words{"data.csv"});  // nothing was begun
}

TEST(ExplainOption, ShowsEachTestOfARun) {
    const harness::ScratchFolder folder;
    const std::string text = Analyze(folder, {"x + y ~ g", "--tests", "mann-whitney,median,moses", "--explain"}).out;
    EXPECT_EQ(CountOf(text, kTitle), 6U) << text;
    EXPECT_EQ(CountOf(text, "--details shows each test"), 0U);
    EXPECT_TRUE(text.starts_with("6 tests by g;")) << text;  // the summary stands first, as without it
    const std::string without = Analyze(folder, {"x ~ g", "--tests", "mann-whitney"}).out;
    const std::string with = Analyze(folder, {"x ~ g", "--tests", "mann-whitney", "--explain"}).out;
    EXPECT_EQ(CountOf(without, kTitle), 0U);
    EXPECT_EQ(with.substr(0, with.find("   " + kTitle)), without);
}

TEST(ExplainOption, ShowsPartsAndStudies) {
    const harness::ScratchFolder folder;
    const std::string study = folder.Path("study.json");
    const harness::CommandResult split =
        Analyze(folder, {"y ~ g", "--tests", "mann-whitney", "--split", "s", "--explain", "--save", study});
    EXPECT_EQ(CountOf(split.out, kTitle), 2U) << split.out << split.err;
    EXPECT_EQ(CountOf(split.out, "The result has the same numbers"), 2U);
    EXPECT_EQ(harness::RunTarn({"rerun", study, "--explain"}).out, split.out);
    EXPECT_EQ(CountOf(harness::RunTarn({"rerun", study}).out, kTitle), 0U);
}

TEST(ExplainOption, GivesStepsInJsonAndInDocuments) {
    const harness::ScratchFolder folder;
    const Words request{"x ~ g", "--tests", "mann-whitney", "--explain", "--format"};
    const auto inFormat = [&](const std::string& format) {
        Words words = request;
        words.push_back(format);
        return Analyze(folder, words).out;
    };
    const nlohmann::json test = nlohmann::json::parse(inFormat("json"))["tests"][0];
    // By hand: ranks 1 and 2.5 of a, of which 3 are its own.
    const nlohmann::json u{{"name", "U"},
                           {"formula", "R1 - n1 (n1 + 1) / 2"},
                           {"numbers", "3.5 - 2 * 3 / 2"},
                           {"value", 0.5},
                           {"in_result", 0.5}};
    EXPECT_EQ(test["explanation"][4], u);
    EXPECT_EQ(test["explanation_tables"][0]["rows"][1], nlohmann::json({"2", "1", "1", "2.5"}));
    EXPECT_EQ(test["explanation_agrees"], true);
    EXPECT_NE(inFormat("md").find("| U | R1 - n1 (n1 + 1) / 2 | 3.5 - 2 \\* 3 / 2 | 0.5 |"), std::string::npos);
    EXPECT_NE(inFormat("latex").find(kTitle), std::string::npos);
    EXPECT_NE(inFormat("typst").find(kTitle), std::string::npos);
}

// ---- Pages ----

/// A page without what --explain adds to it: the elements, their style, and what stands in the JSON for programs.
std::string WithoutExplanations(std::string page) {
    const auto cut = [&page](const std::string& begin, const std::string& end) {
        for (std::size_t from = page.find(begin); from != std::string::npos; from = page.find(begin, from)) {
            page.erase(from, page.find(end, from) + end.size() - from);
        }
    };
    cut("<details", "</details>\n");
    cut("\n.tarn .why{", "font-size:8.5pt}}\n");
    cut("<script type=\"application/json\"", "</script>\n");
    return page;
}

TEST(ExplainOption, FoldsTheStepsBelowEachTestOfAPage) {
    const harness::ScratchFolder folder;
    const Words request{"x + y ~ g", "--tests", "mann-whitney,median", "--format", "html"};
    Words explained = request;
    explained.push_back("--explain");
    setenv("SOURCE_DATE_EPOCH", "86400", 1);
    const std::string without = Analyze(folder, request).out;
    const std::string page = Analyze(folder, explained).out;
    unsetenv("SOURCE_DATE_EPOCH");
    EXPECT_EQ(CountOf(page, "<details class=\"why\"><summary>" + kTitle + "</summary>"), 4U);
    EXPECT_EQ(CountOf(without, kTitle), 0U);
    EXPECT_EQ(CountOf(without, ".why"), 0U);
    EXPECT_EQ(WithoutExplanations(page), WithoutExplanations(without));
    // By hand, as in the test of the formats.
    EXPECT_NE(page.find("<dt>U</dt><dd><code>R1 - n1 (n1 + 1) / 2</code> <code>= 3.5 - 2 * 3 / 2</code> <code "
                        "class=\"result\">= <data value=\"0.5\">0.5</data></code></dd>"),
              std::string::npos)
        << page;
    EXPECT_EQ(CountOf(page, "<script src"), 0U);
    EXPECT_EQ(CountOf(page, "<details open"), 0U);
}

TEST(ExplainOption, WritesAReportWhateverElseIsShown) {
    const harness::ScratchFolder folder;
    const std::string path = folder.Path("page.html");
    const auto pageOf = [&](const Words& more) {
        Words words{"y ~ g", "--tests", "mann-whitney", "--explain", "--report", path};
        words.insert(words.end(), more.begin(), more.end());
        const harness::CommandResult result = Analyze(folder, words);
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        return harness::ReadFile(path);
    };
    EXPECT_EQ(CountOf(pageOf({"--quiet"}), "<details"), 1U);
    EXPECT_EQ(CountOf(pageOf({"--details"}), "<details"), 1U);
    EXPECT_EQ(CountOf(pageOf({"--format", "csv"}), "<details"), 1U);
    EXPECT_EQ(CountOf(pageOf({"--quiet", "--split", "s"}), "<details"), 2U);
}

TEST(ExplainOption, TakesNamesInAPageAsText) {
    const harness::ScratchFolder folder;
    const std::string data =
        folder.Write("names.csv", "<b>,g\n1,<i>x</i>\n2,<i>x</i>\n2,\"a & \"\"b\"\"\"\n3,\"a & \"\"b\"\"\"\n");
    const std::string page = harness::RunTarn({"analyze", data, "--independent", "<b>", "--group", "g", "--tests",
                                               "mann-whitney", "--explain", "--format", "html"})
                                 .out;
    const std::size_t from = page.find("<details");
    const std::string steps = page.substr(from, page.find("</details>") - from);
    EXPECT_NE(steps.find("&lt;b&gt;"), std::string::npos) << steps;
    EXPECT_NE(steps.find("cases of &lt;i&gt;x&lt;/i&gt;"), std::string::npos) << steps;
    EXPECT_EQ(CountOf(steps, "<i>"), 0U);
    EXPECT_EQ(CountOf(steps, "<b>"), 1U);  // the title of the table of ranks
}

}  // namespace
