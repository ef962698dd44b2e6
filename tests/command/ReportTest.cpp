// Pages and plots that the command writes. The numbers in them are those of the JSON, which other tests hold to R,
// SciPy and enumeration; here it is checked that a page has no other ones, that each test is drawn, and that no label
// of a plot leaves it or covers another one.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "host/report/plot/TextWidth.h"
#include "tests/harness/Command.h"
#include "vocabulary/TestFacts.h"

namespace {

using Json = nlohmann::ordered_json;
using Words = std::vector<std::string>;
using harness::CommandResult;
using harness::RunTarn;
using harness::ScratchFolder;

Words Example(const std::string& name, const Words& more) {
    Words words{"analyze", harness::SourcePath("examples/" + name + ".csv"), "--fields",
                harness::SourcePath("examples/" + name + ".fields.json"), "--quiet"};
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

const std::vector<Words>& AllTests() {
    static const std::vector<Words> requests{
        Example("sleep_clinic",
                {"--one-sample", "age,sex,quality", "--tests", "kolmogorov-smirnov,binomial,chi-square,runs,wilcoxon",
                 "--test-value", "40", "--distribution", "normal,uniform,poisson,exponential"}),
        Example("sleep_clinic", {"--related", "hours_before,hours_after", "--tests", "sign,wilcoxon,hodges-lehmann"}),
        Example("tasting", {"--related", "first,second", "--tests", "sign,wilcoxon,hodges-lehmann"}),
        Example("tasting", {"--related", "first,second,third", "--tests", "friedman,kendall", "--compare", "pairwise"}),
        Example("headache", {"--related", "relief_a,relief_c", "--tests", "mcnemar", "--success", "yes"}),
        Example("headache", {"--related", "relief_a,relief_b,relief_c", "--tests", "cochran", "--compare", "pairwise"}),
        Example("headache", {"--related", "severity_before,severity_after", "--tests", "marginal-homogeneity"}),
        Example("sleep_clinic", {"--independent", "hours_after", "--group", "sex", "--tests",
                                 "mann-whitney,kolmogorov-smirnov,wald-wolfowitz,moses,hodges-lehmann,median"}),
        Example("tasting", {"--independent", "bitter", "--group", "panel", "--tests",
                            "mann-whitney,kolmogorov-smirnov,wald-wolfowitz,moses,hodges-lehmann,median"}),
        Example("tasting", {"--independent", "bitter", "--group", "roast", "--tests",
                            "kruskal-wallis,jonckheere,median", "--compare", "pairwise"}),
        Example("sleep_clinic", {"--independent", "hours_after", "--group", "arm", "--weight", "visits"}),
    };
    return requests;
}

Words With(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

/// What a page carries for machines.
Json JsonOf(const std::string& html) {
    const std::string begin = "<script type=\"application/json\" id=\"tarn-result\">";
    const std::size_t at = html.find(begin);
    if (at == std::string::npos) return {};
    const std::size_t from = at + begin.size();
    return Json::parse(html.substr(from, html.find("</script>", from) - from));
}

std::size_t CountOf(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

/// The page of a request, which is done.
std::string PageOf(const Words& request) {
    const CommandResult result = RunTarn(With(request, {"--format", "html"}));
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    return result.out;
}

// ---- Plots ----

/// A text of a plot with the box that it takes.
struct Label {
    std::string text;
    double left = 0;
    double right = 0;
    double top = 0;
    double bottom = 0;
};

void CollectLabels(const pugi::xml_node& node, double down, std::vector<Label>& labels) {
    for (const pugi::xml_node child : node.children()) {
        const std::string name = child.name();
        if (name == "g") {
            const std::string move = child.attribute("transform").value();
            CollectLabels(child, down + std::stod(move.substr(move.find(' ') + 1)), labels);
        }
        if (name != "text") continue;
        std::string text;
        for (const pugi::xml_node part : child.children()) {
            if (part.type() == pugi::node_pcdata) text += part.value();
        }
        const double size = child.attribute("font-size").as_double();
        const double width = tarn::TextWidth(text, size);
        const double x = child.attribute("x").as_double();
        const double y = child.attribute("y").as_double() + down;
        const std::string anchor = child.attribute("text-anchor").as_string("start");
        const double left = anchor == "start" ? x : anchor == "middle" ? x - width / 2 : x - width;
        labels.push_back({text, left, left + width, y - 0.75 * size, y + 0.2 * size});
    }
}

bool Covers(const Label& one, const Label& other) {
    constexpr double kSlack = 0.5;
    return one.left < other.right - kSlack && other.left < one.right - kSlack && one.top < other.bottom - kSlack &&
           other.top < one.bottom - kSlack;
}

/// Checks a file for what every plot keeps to.
void CheckPlot(const std::string& path) {
    pugi::xml_document document;
    ASSERT_TRUE(document.load_file(path.c_str(), pugi::parse_default | pugi::parse_ws_pcdata)) << path;
    const pugi::xml_node svg = document.child("svg");
    EXPECT_STREQ(svg.attribute("role").value(), "img") << path;
    EXPECT_STRNE(svg.child_value("title"), "") << path;
    EXPECT_STRNE(svg.child_value("desc"), "") << path;
    std::istringstream box(svg.attribute("viewBox").value());
    double left = 0, top = 0, width = 0, height = 0;
    box >> left >> top >> width >> height;
    std::vector<Label> labels;
    CollectLabels(svg, 0, labels);
    EXPECT_FALSE(labels.empty()) << path;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const Label& label = labels[i];
        const bool isInside =
            label.left >= left && label.right <= left + width && label.top >= top && label.bottom <= top + height;
        EXPECT_TRUE(isInside) << path << ": " << label.text;
        for (std::size_t k = 0; k < i; ++k) {
            EXPECT_FALSE(Covers(label, labels[k])) << path << ": " << label.text << " | " << labels[k].text;
        }
    }
}

TEST(Plots, ThereIsOneForEachTest) {
    std::set<std::string> drawn;
    for (const Words& request : AllTests()) {
        const ScratchFolder scratch;
        const CommandResult result = RunTarn(With(request, {"--plot-dir", scratch.Path("plots"), "--format", "json"}));
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        std::map<std::string, std::string> files;
        for (const auto& file : std::filesystem::directory_iterator(scratch.Path("plots"))) {
            CheckPlot(file.path().string());
            const std::string name = file.path().filename().string();
            files[name.substr(0, 2)] = name;
        }
        const Json tests = Json::parse(result.out)["tests"];
        for (std::size_t i = 0; i < tests.size(); ++i) {
            const std::string number = i < 9 ? "0" + std::to_string(i + 1) : std::to_string(i + 1);
            if (files.contains(number)) drawn.insert(tests[i]["test"].get<std::string>());
        }
    }
    std::set<std::string> known;
    for (const TestFacts* const test : Tests::kAll) known.insert(std::string(test->resultName));
    EXPECT_EQ(drawn, known);
}

/// 400 records with names as nobody should choose them.
std::string HostileTable(const std::vector<std::string>& groups) {
    std::string csv = "value,\"<img src=x onerror=alert(1)>\",group name,count\n";
    for (int i = 0; i < 400; ++i) {
        std::string name = groups[static_cast<std::size_t>(i * 11) % groups.size()];
        for (std::size_t at = name.find('"'); at != std::string::npos; at = name.find('"', at + 2))
            name.insert(at, "\"");
        csv += std::to_string((i * 7919) % 1009 / 10.0) + "," + std::to_string((i * 104729) % 997) + ",\"" + name +
               "\"," + std::to_string(1 + i % 9) + "\n";
    }
    return csv;
}

const std::vector<std::string>& HostileNames() {
    static const std::vector<std::string> names{
        "</script><script>alert(1)</script>",
        "A & B \"quoted\" 'single'",
        "\xD9\x82\xD9\x8A\xD8\xA7\xD8\xB3 \xD8\xA7\xD9\x84\xD9\x86\xD9\x88\xD9\x85",
        std::string(300, 'x'),
        "\xF0\x9F\x98\x80 emoji",
        "<!-- no comment",
        "| pipe _ under $ # %"};
    return names;
}

TEST(Plots, KeepTheirLabelsApartWhateverTheNames) {
    std::vector<std::string> many;
    for (int i = 0; i < 30; ++i)
        many.push_back("Department of long names number " + std::to_string(i) + " of the hospital");
    for (const std::vector<std::string>& names : {HostileNames(), many, std::vector<std::string>{"a", "b"}}) {
        const ScratchFolder scratch;
        const std::string table = scratch.Write("table.csv", HostileTable(names));
        const CommandResult result =
            RunTarn({"analyze", table, "--independent", "value,<img src=x onerror=alert(1)>", "--group", "group name",
                     "--weight", "count", "--quiet", "--plot-dir", scratch.Path("plots")});
        EXPECT_EQ(result.exitStatus, 0) << result.err;
        std::size_t count = 0;
        for (const auto& file : std::filesystem::directory_iterator(scratch.Path("plots"))) {
            CheckPlot(file.path().string());
            ++count;
        }
        EXPECT_EQ(count, 2U);
    }
}

TEST(Plots, AreTheSameEachTime) {
    const ScratchFolder scratch;
    for (const char* name : {"one.svg", "other.svg"}) {
        EXPECT_EQ(RunTarn(With(AllTests()[10], {"--plot", scratch.Path(name)})).exitStatus, 0);
    }
    EXPECT_EQ(harness::ReadFile(scratch.Path("one.svg")), harness::ReadFile(scratch.Path("other.svg")));
}

TEST(Plots, OneTestIsDrawnAloneAndAnEstimateThatComesWithItIsNotMeant) {
    const ScratchFolder scratch;
    const CommandResult result = RunTarn(
        Example("sleep_clinic", {"--one-sample", "sex", "--tests", "binomial", "--plot", scratch.Path("sex.svg")}));
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    const std::string svg = harness::ReadFile(scratch.Path("sex.svg"));
    EXPECT_NE(svg.find("Binomial test: sex"), std::string::npos);
    // 160 of 311 are counted in the table.
    EXPECT_NE(svg.find(">160 of 311<"), std::string::npos);
}

TEST(Plots, SeveralTestsAreNoPlotAndNothingIsWritten) {
    const ScratchFolder scratch;
    const CommandResult result =
        RunTarn(Example("sleep_clinic", {"--independent", "age,latency", "--group", "arm", "--plot",
                                         scratch.Path("two.svg"), "--report", scratch.Path("two.html")}));
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err,
              "tarn: --plot: draws one test, and the analysis has 2: Kruskal-Wallis test of age; "
              "Kruskal-Wallis test of latency; expected one of them by its field and --tests, or --plot-dir "
              "FOLDER for all\n");
    EXPECT_EQ(scratch.Files(), std::vector<std::string>{});
}

TEST(Plots, CategoriesHaveTheirNamesAtTheAxis) {
    const ScratchFolder scratch;
    const CommandResult result = RunTarn(
        Example("sleep_clinic", {"--independent", "quality", "--group", "arm", "--plot", scratch.Path("quality.svg")}));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    const std::string svg = harness::ReadFile(scratch.Path("quality.svg"));
    for (const char* name : {">poor<", ">fair<", ">good<", ">very good<"}) {
        EXPECT_NE(svg.find(name), std::string::npos) << name;
    }
}

TEST(Plots, AFileIsNotWrittenTwice) {
    const ScratchFolder scratch;
    const std::string path = scratch.Path("same");
    const CommandResult result = RunTarn(With(AllTests()[6], {"--report", path, "--plot", path}));
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_EQ(result.err, "tarn: --plot: " + path + " is --report as well; expected another file\n");
    EXPECT_EQ(scratch.Files(), std::vector<std::string>{});
}

TEST(Plots, OfPartsGoIntoTheReport) {
    const CommandResult result = RunTarn(
        Example("sleep_clinic", {"--independent", "age", "--group", "arm", "--split", "sex", "--plot", "no.svg"}));
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.err.find("--plot: takes no parts; expected --report FILE"), std::string::npos) << result.err;
}

TEST(Plots, AFolderThatIsAFileIsTold) {
    const ScratchFolder scratch;
    const std::string file = scratch.Write("file", "");
    const CommandResult result = RunTarn(With(AllTests()[6], {"--plot-dir", file + "/plots"}));
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.err.find("--plot-dir: "), std::string::npos) << result.err;
}

// ---- Numbers ----

void CollectNumbers(const Json& json, std::set<double>& numbers) {
    if (json.is_number()) numbers.insert(json.get<double>());
    if (!json.is_structured()) return;
    for (const Json& part : json) CollectNumbers(part, numbers);
}

/// How far a rounded number may lie from the one that it stands for.
double HalfOfLastDigit(const std::string& text) {
    const std::size_t point = text.find('.');
    const std::size_t decimals = point == std::string::npos ? 0 : text.size() - point - 1;
    return 0.5 * std::pow(10, -static_cast<double>(decimals));
}

/// The numbers of a page: all digits, and as they are shown.
struct ShownNumber {
    std::vector<double> exact;
    std::string text;
};

std::vector<ShownNumber> NumbersOf(const std::string& html) {
    const std::string begin = "<data value=\"";
    std::vector<ShownNumber> numbers;
    for (std::size_t at = html.find(begin); at != std::string::npos; at = html.find(begin, at + 1)) {
        const std::size_t value = at + begin.size();
        const std::size_t valueEnd = html.find('"', value);
        const std::size_t text = valueEnd + 2;
        ShownNumber& number = numbers.emplace_back();
        std::istringstream words(html.substr(value, valueEnd - value));
        for (std::string word; words >> word;) number.exact.push_back(std::strtod(word.c_str(), nullptr));
        number.text = html.substr(text, html.find('<', text) - text);
        if (number.text.starts_with("\xE2\x88\x92")) number.text.replace(0, 3, "-");
    }
    return numbers;
}

TEST(Report, ItsNumbersAreThoseOfTheJson) {
    std::size_t checked = 0;
    for (const Words& request : AllTests()) {
        std::set<double> known;
        CollectNumbers(Json::parse(RunTarn(With(request, {"--format", "json"})).out), known);
        for (const ShownNumber& number : NumbersOf(PageOf(request))) {
            for (const double exact : number.exact) {
                EXPECT_TRUE(!std::isfinite(exact) || known.contains(exact)) << exact << " shown as " << number.text;
                ++checked;
            }
            // The text is the number, rounded.
            const bool isPlain = number.text.find_first_not_of("-.0123456789") == std::string::npos;
            if (number.exact.size() != 1 || !isPlain) continue;
            EXPECT_NEAR(std::stod(number.text), number.exact.front(), HalfOfLastDigit(number.text) + 1e-9)
                << number.text;
        }
    }
    EXPECT_GT(checked, 500U);
}

TEST(Report, CarriesTheJsonOfTheResult) {
    const std::string html = PageOf(AllTests()[9]);
    const CommandResult asked = RunTarn(With(AllTests()[9], {"--format", "json"}));
    EXPECT_EQ(JsonOf(html), Json::parse(asked.out));
}

// ---- The page ----

TEST(Report, IsOnePageThatFetchesNothing) {
    for (const Words& request : AllTests()) {
        const std::string html = PageOf(request);
        EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
        EXPECT_NE(html.find("content=\"default-src 'none'; style-src 'unsafe-inline'; img-src data:\""),
                  std::string::npos);
        EXPECT_EQ(CountOf(html, "<script"), 1U);
        EXPECT_EQ(CountOf(html, "<link"), 0U);
        EXPECT_EQ(CountOf(html, "src=\""), 0U);
        EXPECT_EQ(CountOf(html, "url("), 0U);
        EXPECT_EQ(CountOf(html, "http://"), 0U) << "a page needs no namespace";
        EXPECT_GE(CountOf(html, "<svg "), 1U);
    }
}

TEST(Report, ShowsNamesAsTextWhateverTheyAre) {
    const ScratchFolder scratch;
    const std::string table = scratch.Write("table.csv", HostileTable(HostileNames()));
    const CommandResult result =
        RunTarn({"analyze", table, "--independent", "value,<img src=x onerror=alert(1)>", "--group", "group name",
                 "--compare", "pairwise", "--quiet", "--format", "html"});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(CountOf(result.out, "<script"), 1U);
    EXPECT_EQ(CountOf(result.out, "</script"), 1U);
    EXPECT_EQ(CountOf(result.out, "<img"), 0U);
    EXPECT_EQ(CountOf(result.out, "<!--"), 0U);
    EXPECT_NE(result.out.find("&lt;/script&gt;&lt;script&gt;alert(1)&lt;/script&gt;"), std::string::npos);
    EXPECT_NE(result.out.find("<bdi>" + HostileNames()[2] + "</bdi>"), std::string::npos) << "right to left by itself";
    EXPECT_NE(result.out.find(std::string(300, 'x')), std::string::npos);
    std::set<std::string> names;
    const Json json = JsonOf(result.out);
    for (const Json& sample : json["tests"][0]["supplement"]["samples"])
        names.insert(sample["name"].get<std::string>());
    EXPECT_EQ(names, std::set<std::string>(HostileNames().begin(), HostileNames().end()));
}

TEST(Report, LinksTheSummaryToTheTests) {
    // Several fields by several tests, several tests of one field, one test of several fields, and parts.
    const std::vector<Words> requests{
        AllTests()[0], AllTests()[8], Example("sleep_clinic", {"--independent", "age,latency", "--group", "arm"}),
        Example("sleep_clinic", {"--independent", "age", "--group", "arm", "--split", "sex"})};
    for (const Words& request : requests) {
        const std::string html = PageOf(request);
        const std::size_t articles = CountOf(html, "<article id=\"");
        EXPECT_GE(articles, 2U);
        const std::string begin = "<article id=\"";
        for (std::size_t at = html.find(begin); at != std::string::npos; at = html.find(begin, at + 1)) {
            const std::size_t id = at + begin.size();
            const std::string name = html.substr(id, html.find('"', id) - id);
            EXPECT_EQ(CountOf(html, "href=\"#" + name + "\""), 1U) << name << " of " << request.back();
        }
    }
}

TEST(Report, SaysHowToMakeItAgain) {
    const std::string html = PageOf(AllTests()[6]);
    EXPECT_NE(html.find("tarn analyze "), std::string::npos);
    EXPECT_NE(html.find("--related severity_before,severity_after --tests marginal-homogeneity"), std::string::npos);
    // sha256sum examples/headache.csv is asked at the time of the test.
    const ScratchFolder scratch;
    const std::string command =
        "sha256sum " + harness::SourcePath("examples/headache.csv") + " > " + scratch.Path("sum");
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_NE(html.find("SHA-256 " + harness::ReadFile(scratch.Path("sum")).substr(0, 64)), std::string::npos);
}

TEST(Report, IsTheSameForTheSameTime) {
    setenv("SOURCE_DATE_EPOCH", "86400", 1);
    const std::string one = PageOf(AllTests()[3]);
    const std::string other = PageOf(AllTests()[3]);
    unsetenv("SOURCE_DATE_EPOCH");
    EXPECT_EQ(one, other);
    EXPECT_NE(one.find("1970-01-02 00:00 UTC"), std::string::npos);
}

TEST(Report, IsWrittenBesideWhatIsShown) {
    const ScratchFolder scratch;
    const Words request = Example("tasting", {"--independent", "bitter", "--group", "panel"});
    const CommandResult plain = RunTarn(With(request, {"--format", "csv"}));
    const CommandResult result = RunTarn(With(request, {"--format", "csv", "--report", scratch.Path("report.html")}));
    EXPECT_EQ(result.out, plain.out);
    EXPECT_NE(harness::ReadFile(scratch.Path("report.html")).find("<svg "), std::string::npos);
}

TEST(Report, HasAllPartsOfASplitAnalysis) {
    const std::string html =
        PageOf(Example("sleep_clinic", {"--independent", "hours_after", "--group", "arm", "--split", "sex"}));
    EXPECT_EQ(CountOf(html, "<svg "), 2U);
    EXPECT_EQ(CountOf(html, "<article id=\"part-1-test-1\""), 1U);
    EXPECT_EQ(CountOf(html, "<article id=\"part-2-test-1\""), 1U);
    EXPECT_EQ(JsonOf(html)["format"], "tarn-parts-1");
}

TEST(Report, OfAStoredResultHasNoPlotsAndSaysSo) {
    const ScratchFolder scratch;
    ASSERT_EQ(RunTarn(With(AllTests()[9], {"--out", scratch.Path("result.xml")})).exitStatus, 0);
    const CommandResult result = RunTarn({"show", scratch.Path("result.xml"), "--format", "html"});
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(CountOf(result.out, "<svg "), 0U);
    EXPECT_NE(result.out.find("There are no plots: a result without its table has no cases to draw."),
              std::string::npos);
}

TEST(Report, OfVeryManyTestsDrawsThoseThatMatter) {
    std::string csv = "g";
    for (int field = 0; field < 600; ++field) csv += ",v" + std::to_string(field);
    for (int row = 0; row < 12; ++row) {
        csv += row % 2 == 0 ? "\na" : "\nb";
        for (int field = 0; field < 600; ++field)
            csv += "," + std::to_string((row * 7919 + field * (row + 3) * 31) % 101);
    }
    const ScratchFolder scratch;
    Words request{"analyze", scratch.Write("wide.csv", csv + "\n"), "--group", "g", "--quiet", "--format", "html"};
    std::string fields = "v0";
    for (int field = 1; field < 600; ++field) fields += ",v" + std::to_string(field);
    const CommandResult result = RunTarn(With(request, {"--independent", fields}));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(CountOf(result.out, "<svg "), 50U);
    EXPECT_NE(result.out.find("Of 600 tests the 50 with the smallest significances have plots."), std::string::npos);
}

TEST(Report, AFileThatCannotBeWrittenIsTold) {
    const CommandResult result = RunTarn(With(AllTests()[6], {"--report", "/no/such/folder/report.html"}));
    EXPECT_EQ(result.exitStatus, 2);
    EXPECT_NE(result.err.find("/no/such/folder/report.html"), std::string::npos) << result.err;
}

}  // namespace
