// Pages and pictures of a result for clients in C++.

#include "host/analysis/Report.h"

#include <gtest/gtest.h>

#include <string>

#include "host/report/HtmlReport.h"
#include "tests/analysis/AnalysisRun.h"

namespace {

/// A result with its figures, on a table that stays with it.
struct Done {
    tarn::AnalysisOptions options = analysis_test::GroupTests();
    tarn::Table table = analysis_test::TableOf(analysis_test::GroupsCsv(60, 3), analysis_test::NominalGroups());
    tarn::AnalysisEnvironment environment = analysis_test::Environment();
    tarn::ResultReading result;

    Done() {
        tarn::PrepareTable(table, options);
        result = tarn::ReadAnalysis(tarn::Analyze(table, options, environment).document, options, environment);
        tarn::SupplyFigures(result, table, options, tarn::SupplementOptions(), environment);
    }
    tarn::ReportSource Source() const { return {result, &table, options, environment}; }
};

TEST(ReportDoor, DrawsATest) {
    const Done done;
    const auto file = tarn::SvgOfTest(done.Source(), 0);
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->starts_with("<svg xmlns=\"http://www.w3.org/2000/svg\""));
    const auto element = tarn::SvgOfTest(done.Source(), 0, tarn::PictureUse::kPage);
    ASSERT_TRUE(element);
    EXPECT_EQ(element->find("xmlns"), std::string::npos);
}

TEST(ReportDoor, DrawsNothingWithoutTableOrTest) {
    const Done done;
    EXPECT_FALSE(tarn::SvgOfTest({done.result, nullptr, done.options, done.environment}, 0));
    EXPECT_FALSE(tarn::SvgOfTest(done.Source(), done.result.tests.size()));
}

TEST(ReportDoor, GivesATestAsABlockOfHtml) {
    const Done done;
    const std::string html = tarn::HtmlOfTest(done.Source(), 0, "mine");
    EXPECT_TRUE(html.starts_with("<article id=\"mine\""));
    EXPECT_NE(html.find("<svg class=\"plot\""), std::string::npos);
    EXPECT_NE(html.find("id=\"mine-plot-t\""), std::string::npos);
    EXPECT_EQ(html.find("<style"), std::string::npos);
    EXPECT_NE(tarn::HtmlStyleSheet().find("prefers-color-scheme"), std::string::npos);
}

TEST(ReportDoor, GivesTheWholeResult) {
    const Done done;
    const std::string html = tarn::HtmlOfResult(done.Source(), tarn::ReportFacts());
    EXPECT_TRUE(html.starts_with("<!DOCTYPE html>"));
    for (std::size_t i = 0; i < done.result.tests.size(); ++i) {
        EXPECT_NE(html.find("id=\"test-" + std::to_string(i + 1) + "\""), std::string::npos);
    }
}

TEST(ReportDoor, NamesAFileForEachTest) {
    const Done done;
    EXPECT_EQ(tarn::PlotFileName(done.result, 0), "01-mann-whitney-y-by-g.svg");
}

}  // namespace
