// tarn verify: the whole pack holds, and a pack with a wrong number is found out.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/harness/Command.h"

namespace {

using harness::CommandResult;
using harness::RunTarn;
using harness::ScratchFolder;
using nlohmann::json;

/// A copy of the pack in which each test may change something.
class DoctoredPack {
 public:
    DoctoredPack() {
        std::filesystem::copy(harness::SourcePath("share/reference"), Folder(),
                              std::filesystem::copy_options::recursive);
    }

    std::string Folder() const { return scratch_.Path("reference"); }
    /// Puts a text in another one's place, which has to be there.
    void Replace(const std::string& file, const std::string& from, const std::string& to) {
        const std::string path = Folder() + "/" + file;
        std::string text = harness::ReadFile(path);
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        std::ofstream(path) << text.replace(place, from.size(), to);
    }

 private:
    ScratchFolder scratch_;
};

std::string LastLine(const std::string& text) {
    const std::size_t end = text.find_last_not_of('\n');
    return text.substr(text.rfind('\n', end) + 1, end - text.rfind('\n', end));
}

TEST(Verify, AgreesWithAllPublishedResults) {
    const CommandResult result = RunTarn({"verify", "--quiet"});
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find(", 22 tests: "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(" agree to the printed digits, "), std::string::npos) << result.out;
}

TEST(Verify, AgreesAsDefinedToo) {
    const CommandResult result = RunTarn({"verify", "--as-defined", "--quiet"});
    EXPECT_EQ(result.exitStatus, 0) << result.out;
}

TEST(Verify, ShowsWhatIsAnotherNumberAsDefined) {
    // A span without another case inside has a significance of 0 by definition (docs/conventions.md).
    const CommandResult result = RunTarn({"verify", "moses-closest", "--as-defined"});
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    EXPECT_NE(result.out.find("as defined 0\n"), std::string::npos) << result.out;
}

TEST(Verify, KeepsAllFunctionsWithinTheirBounds) {
    const CommandResult result = RunTarn({"verify", "--functions", "--quiet"});
    EXPECT_EQ(result.exitStatus, 0) << result.out;
    EXPECT_NE(result.out.find(": all within their bounds"), std::string::npos) << result.out;
}

TEST(Verify, FindsAWrongNumber) {
    DoctoredPack pack;
    pack.Replace("published/related-friedman.json", "\"11.143\"", "\"11.144\"");
    const CommandResult result = RunTarn({"verify", "--quiet", "--pack", pack.Folder()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("friedman-rounding  statistic  11.144   11.1428"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("4 of 5  DIFFERS\n"), std::string::npos) << result.out;
    EXPECT_TRUE(LastLine(result.out).ends_with(": 1 differs")) << result.out;
}

TEST(Verify, FindsAnExcuseThatIsNotNeeded) {
    DoctoredPack pack;
    pack.Replace("published/related-friedman.json", R"({"quantity": "statistic", "printed": "11.143"})",
                 R"({"quantity": "statistic", "printed": "11.143", "differs": "ties", "right": "11.143"})");
    const CommandResult result = RunTarn({"verify", "friedman-rounding", "--pack", pack.Folder()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("AGREES with what is said to be printed wrongly"), std::string::npos) << result.out;
}

TEST(Verify, FindsACaseThatCannotBeRun) {
    DoctoredPack pack;
    pack.Replace("published/related-friedman.json", "\"round,narrow,wide\"", "\"round,narow,wide\"");
    const CommandResult result = RunTarn({"verify", "friedman-rounding", "--pack", pack.Folder()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("NOT DONE: "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("did you mean narrow?"), std::string::npos) << result.out;
}

TEST(Verify, RefusesAnOptionThatAnalyzeHasNot) {
    DoctoredPack pack;
    pack.Replace("published/related-friedman.json", "\"--tests\"", "\"--test\"");
    const CommandResult result = RunTarn({"verify", "friedman-rounding", "--pack", pack.Folder()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("--test"), std::string::npos) << result.out;
}

TEST(Verify, FindsAFunctionBeyondItsBound) {
    DoctoredPack pack;
    pack.Replace("functions/SfChi.json", "\"bound\": \"1e-13\"", "\"bound\": \"1e-19\"");
    const CommandResult result = RunTarn({"verify", "--functions", "--pack", pack.Folder()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("BEYOND ITS BOUND"), std::string::npos) << result.out;
    EXPECT_TRUE(LastLine(result.out).ends_with("1 range beyond its bound")) << result.out;
}

TEST(Verify, FindsAWrongValueOfAFunctionOfTheLibrary) {
    DoctoredPack pack;
    pack.Replace("functions/Kolmogorov.json", "\"bound\": \"1e-13\",\n      \"points\": [\n        [\"10\", \"1\", \"",
                 "\"bound\": \"1e-13\",\n      \"points\": [\n        [\"10\", \"2\", \"");
    const CommandResult result = RunTarn({"verify", "--functions", "--quiet", "--pack", pack.Folder()});
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_NE(result.out.find("cells = 10, weight = 2"), std::string::npos) << result.out;
}

TEST(Verify, ShowsACaseWithItsSourceItsRequestAndItsData) {
    const CommandResult result = RunTarn({"verify", "chi-square-three-alike"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(
        result.out.starts_with("chi-square-three-alike: Counts of three categories, alike expected\n"
                               "  Source (package): example of R 4.2.2's help page of chisq.test\n"
                               "  Request: tarn analyze DATA.csv --one-sample x --weight n --tests chi-square\n"
                               "  x: A B C\n"
                               "  n: 20 15 25\n"))
        << result.out;
}

TEST(Verify, SaysWhyANumberIsPrintedOtherwise) {
    const CommandResult result = RunTarn({"verify", "mann-whitney-table-4-6-12"});
    EXPECT_EQ(result.exitStatus, 0);
    // 114 of C(10, 4) = 210 arrangements: Mann and Whitney's table has 0.545 there.
    EXPECT_NE(result.out.find("printed 0.545, here 0.543: a slip of the table"), std::string::npos) << result.out;
}

TEST(Verify, RefusesANameThatNoneHas) {
    const CommandResult result = RunTarn({"verify", "mann-whitny"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_TRUE(result.err.starts_with("tarn: \"mann-whitny\" is neither a case nor a test of the pack; did you mean "))
        << result.err;
}

TEST(Verify, RefusesAFolderWithoutAPack) {
    const CommandResult result = RunTarn({"verify", "--pack", "/nowhere"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err,
              "tarn: /nowhere/published: no reference data; expected a folder with files *.json as tarn is installed "
              "with\n");
}

TEST(Verify, RefusesNamesBesideFunctions) {
    const CommandResult result = RunTarn({"verify", "sign", "--functions"});
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err, "tarn: --functions: checks all distribution functions; expected no names beside it\n");
    const CommandResult asDefined = RunTarn({"verify", "--as-defined", "--functions"});
    EXPECT_EQ(asDefined.exitStatus, 2);
    EXPECT_EQ(asDefined.err,
              "tarn: --functions: the functions are the same in both ways to compute; expected no --as-defined\n");
}

TEST(Verify, WritesJson) {
    const CommandResult result = RunTarn({"verify", "mann-whitney-table-4-6-12", "--format", "json"});
    const json read = json::parse(result.out);
    EXPECT_EQ(read["format"], "tarn-verify-1");
    EXPECT_EQ(read["agrees"], true);
    ASSERT_EQ(read["cases"].size(), 1u);
    const json& number = read["cases"][0]["numbers"][1];
    EXPECT_EQ(number["printed"], "0.545");
    EXPECT_EQ(number["right"], "0.543");
    EXPECT_NEAR(number["ours"].get<double>(), 114.0 / 210, 1e-15);
    EXPECT_EQ(number["agrees"], true);
}

TEST(Verify, WritesJsonOfFunctionsWithTheBoundsOfThePage) {
    const std::string page = harness::ReadFile(harness::SourcePath("docs/numerics.md"));
    const json read = json::parse(RunTarn({"verify", "--functions", "--format", "json"}).out);
    EXPECT_EQ(read["agrees"], true);
    for (const json& range : read["functions"]) {
        const std::string row =
            "| `" + range["function"].get<std::string>() + "` | " + range["range"].get<std::string>() + " | ";
        const std::size_t place = page.find(row);
        ASSERT_NE(place, std::string::npos) << row;
        const std::string line = page.substr(place, page.find('\n', place) - place);
        EXPECT_TRUE(line.ends_with(" | " + range["bound"].get<std::string>() + " |")) << line;
        EXPECT_LE(range["worst_error"].get<double>(), std::stod(range["bound"].get<std::string>())) << range;
    }
}

TEST(Verify, WritesAPageThatLoadsNothing) {
    const CommandResult result = RunTarn({"verify", "--format", "html"});
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_TRUE(result.out.starts_with("<!DOCTYPE html>"));
    EXPECT_NE(result.out.find("content=\"default-src 'none'"), std::string::npos);
    EXPECT_NE(result.out.find("<td>&lt; 2.2e-16</td>"), std::string::npos);
    for (const char* const loaded : {"<script", "src=", "href=", "url("}) {
        EXPECT_EQ(result.out.find(loaded), std::string::npos) << loaded;
    }
}

}  // namespace
