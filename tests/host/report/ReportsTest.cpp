// The three ways in which a host tells a document: text, JSON, CSV.

#include <gtest/gtest.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "host/report/CsvReport.h"
#include "host/report/JsonReport.h"
#include "host/report/PartsReport.h"
#include "host/report/TextReport.h"
#include "tests/harness/Command.h"
#include "tests/host/report/ResultTexts.h"
#include "tests/host/report/SchemaCheck.h"

namespace tarn {
namespace {

using namespace report_test;
using nlohmann::json;

/// Texts of the tests' own, so that a better sentence changes no expected line here.
const MessageCatalogue& Sentences() {
    static const MessageCatalogue texts = [] {
        MessageCatalogue catalogue;
        catalogue.Add(
            R"({"status": {"220916": "few cases", "220013": "subset {named:group} is single", "220903": "no {0}"},
                          "condition": {"R_Sign_2": "Signs of {field:0} and {field:1} agree.",
                                        "DefaultAllDistinctValuesUsed_I_KruskalWallis_2": "Groups of {field:1} agree."},
                          "labels": {"PositiveDifferences": "positive differences",
                                     "NegativeDifferences": "negative differences", "Ties": "ties",
                                     "MeanOfRank": "mean rank", "smallestNonOutlier": "whisker low",
                                     "25perc": "lower hinge", "50perc": "median", "75perc": "upper hinge",
                                     "largestNonOutlier": "whisker high"},
                          "tests": {"RSign": {"title": "Sign test", "name": "sign", "method": "binomial"},
                                    "IKruskalWallis": {"title": "Kruskal-Wallis", "name": "kruskal-wallis",
                                                       "method": "ranks", "pairs": "two", "steps": "down"}}})",
            "the texts of the tests");
        return catalogue;
    }();
    return texts;
}

TEST(PText, IsWrittenAsAnalystsDo) {
    EXPECT_EQ(PText("0.0574"), ".057");
    EXPECT_EQ(PText("0.001"), ".001");
    EXPECT_EQ(PText("0.0009999"), "< .001");
    EXPECT_EQ(PText("1"), "1.000");
    EXPECT_EQ(PText("0.2", true), "> .200");
    EXPECT_EQ(PText("nan"), "undefined");
    EXPECT_EQ(PText(""), "not computed");
}

TEST(TextReport, TellsATestInABlock) {
    EXPECT_EQ(TextReport(ReadAll(ReadResult(DocumentOf(SignTest())), Sentences()), Sentences(), {}),
              "1. Sign test: v, u\n"
              "   H0: Signs of v and u agree.\n"
              "   N: 12\n"
              "   Statistic             8\n"
              "   Standard error        1.73205\n"
              "   Standardized          0.866025  u minus v\n"
              "   p                     .386      asymptotic\n"
              "   p                     .388      exact, decides\n"
              "   Positive differences  8         u above v\n"
              "   Negative differences  4         u below v\n"
              "   Ties                  0\n"
              "   Decision: retain the null hypothesis at the level 0.05\n"
              "   Method: binomial\n"
              "   Note: few cases (220916)\n");
}

TEST(TextReport, TellsSamplesPairsAndSubsets) {
    EXPECT_EQ(TextReport(ReadAll(ReadResult(DocumentOf(KruskalWallisTest())), Sentences()), Sentences(), {}),
              "1. Kruskal-Wallis: u by arm\n"
              "   H0: Groups of arm agree.\n"
              "   N: 12\n"
              "   Statistic           9.26923\n"
              "   Degrees of freedom  2\n"
              "   p                   .010     asymptotic, decides\n"
              "   Decision: reject the null hypothesis at the level 0.05\n"
              "   arm  mean rank  whisker low  lower hinge  median  upper hinge  whisker high\n"
              "   old        2.5            1            2       3            4             5\n"
              "   3    undefined            1            2       3            4             5\n"
              "   Pairs\n"
              "   samples  statistic  std. error  standardized     p  adjusted p\n"
              "   old - 3       -5.5        2.54      -2.16535  .030        .030\n"
              "   Homogeneous subsets\n"
              "                  1  2\n"
              "   3              x\n"
              "   old            x  x\n"
              "   statistic   1.25\n"
              "   p           .260\n"
              "   adjusted p  .261\n"
              "   Method: ranks\n"
              "   Pairs: two\n"
              "   Subsets: down\n"
              "   Warning: subset 0, 0 is single (220013)\n");
}

TEST(TextReport, UsesWhatTheTerminalCanShow) {
    const std::string text =
        TextReport(ReadAll(ReadResult(DocumentOf(SignTest())), Sentences()), Sentences(), {true, true});
    EXPECT_TRUE(text.starts_with("\033[1m1. Sign test: v, u\033[0m\n   H\u2080: ")) << text;
}

TEST(TextReport, TellsThatNoTestIsThere) {
    EXPECT_EQ(TextReport(ReadAll(ReadResult(DocumentOf("")), Sentences()), Sentences(), {}),
              "No test of the request is known.\n");
}

TEST(ShortReport, HasALineForEachTest) {
    const std::string failed = TestElement(
        "RSign", "Related_Samples", "unknown",
        Condition("R_Sign_2", {"__MISSING__", "7"}) + Table("WarningMessages", Message("220903", "error", {"w"})));
    EXPECT_EQ(ShortReport(ReadAll(ReadResult(DocumentOf(SignTest() + KruskalWallisTest() + failed)), Sentences()),
                          Sentences()),
              "Test              Fields     N  Statistic     p  kind        Decision\n"
              "1 Sign test       v, u      12          8  .388  exact       retain\n"
              "2 Kruskal-Wallis  u by arm  12    9.26923  .010  asymptotic  reject\n"
              "3 Sign test       ?, ?                                       not done\n"
              "1 Sign test: few cases (220916)\n"
              "2 Kruskal-Wallis: subset 0, 0 is single (220013)\n"
              "3 Sign test: no w (220903)\n");
}

TEST(CsvReport, HasARowForEachTestPairAndSubset) {
    EXPECT_EQ(
        CsvReport(ReadAll(ReadResult(DocumentOf(SignTest() + KruskalWallisTest())), Sentences()), Sentences()),
        "row,number,test,name,family,fields,group,part,sample1,sample2,n,statistic,std_error,z,df,p_value,p_kind,"
        "p_tails,adj_p_value,estimate,conf_low,conf_high,conf_level,decision,messages,beyond_range,"
        "n_total,direction,p_holm,p_bh,arithmetic,missing,q1,median,q3,alternative,letters,p_adjusted\n"
        "test,1,RSign,sign,related,v;u,,,,,12,8,1.73205080756888,0.866025403784439,,0.38769531250000,exact,2,,,,,,"
        "retain,220916,,,u minus v,0.3876953125,0.3876953125,,,,,,,,\n"
        "p,1,RSign,sign,related,v;u,,,,,,8,1.73205080756888,0.866025403784439,,0.38647623077123,asymptotic,2,,,,,,,,,,,"
        ",,,,,,,,,\n"
        "test,2,IKruskalWallis,kruskal-wallis,independent,u,arm,,,,12,9.26923076923077,,,2,0.0097,asymptotic,2,,,,,,"
        "reject,220013,,,,0.0194,0.0194,,,,,,,,\n"
        "pair,2,IKruskalWallis,kruskal-wallis,independent,u,arm,,old,3,,-5.5,2.54,-2.16535433070866,,0.0303,,,0.0303,"
        ",,,,,,,,,,,,,,,,,,\n"
        "subset,2,IKruskalWallis,kruskal-wallis,independent,u,arm,,3;old,,,1.25,,,,0.26,,,0.2612,,,,,,,,,,,,,,,,,,,\n"
        "subset,2,IKruskalWallis,kruskal-wallis,independent,u,arm,,old,,,,,,,,,,,,,,,,,,,,,,,,,,,,,\n");
}

TEST(CsvReport, QuotesWhatHoldsACommaOrAQuote) {
    std::string document = DocumentOf(SignTest());
    document.replace(document.find("name=\"u\""), 8, "name=\"a,&quot;b\"");
    EXPECT_NE(CsvReport(ReadAll(ReadResult(document), Sentences()), Sentences()).find(",\"v;a,\"\"b\","),
              std::string::npos);
}

TEST(JsonReport, HoldsNamesAndNumbers) {
    const json result =
        json::parse(JsonReport(ReadAll(ReadResult(DocumentOf(KruskalWallisTest())), Sentences()), Sentences()));
    EXPECT_EQ(result.at("format"), "tarn-result-2");
    EXPECT_EQ(result.at("significance_level"), 0.05);
    EXPECT_EQ(result.at("counts").at("totalFreq"), 9.5);
    EXPECT_EQ(result.at("fields").at(2).at("categories").at(0), (json{{"value", 1}, {"label", "old"}}));
    const json& test = result.at("tests").at(0);
    EXPECT_EQ(test.at("name"), "kruskal-wallis");
    EXPECT_EQ(test.at("condition").at("text"), "Groups of arm agree.");
    EXPECT_EQ(test.at("method"), "ranks");
    EXPECT_EQ(test.at("comparisons").at("pairs_method"), "two");
    EXPECT_EQ(test.at("comparisons").at("subsets_method"), "down");
    EXPECT_EQ(test.at("n"), 12);
    EXPECT_EQ(test.at("statistics").at(0).at("statistic"), 9.26923076923077);
    EXPECT_EQ(test.at("statistics").at(0).at("p_values").at(0).at("decides"), true);
    EXPECT_EQ(test.at("samples").at(1).at("figures").at("MeanOfRank"), "nan");
    EXPECT_EQ(test.at("comparisons").at("pairs").at(0).at("adjusted_p"), 0.0303);
    EXPECT_TRUE(test.at("comparisons").at("subsets").at(1).at("statistic").is_null());
    EXPECT_EQ(test.at("messages").at(0).at("text"), "subset 0, 0 is single");
}

TEST(JsonReport, FitsItsSchema) {
    const json result = json::parse(
        JsonReport(ReadAll(ReadResult(DocumentOf(SignTest() + KruskalWallisTest())), Sentences()), Sentences()));
    EXPECT_TRUE(FitsTheSchema(result));
    json worse = result;
    worse["tests"][0].erase("statistics");
    EXPECT_FALSE(FitsTheSchema(worse));
    worse = result;
    worse["tests"][0]["decision"] = "perhaps";
    EXPECT_FALSE(FitsTheSchema(worse));
    worse = result;
    worse["tests"][0]["statistics"][0]["df"] = json::array();
    EXPECT_FALSE(FitsTheSchema(worse));
}

TEST(JsonReport, FitsItsSchemaWithAnExplanation) {
    ResultReading reading = ReadAll(ReadResult(DocumentOf(SignTest())), Sentences());
    TestExplanation& explanation = reading.tests[0].explanation.emplace();
    explanation.tables = {{"Signs", {{"sign", true}, {"cases"}}, {{"above", "3"}}}};
    explanation.steps = {{"S", "cases above", "", "3", "3"}, {"z", "0 / 0", "0 / 0", "nan", ""}};
    explanation.notes = {"a note"};
    const json result = json::parse(JsonReport(reading, Sentences()));
    EXPECT_TRUE(FitsTheSchema(result));
    EXPECT_EQ(result["tests"][0]["explanation"][1]["in_result"], nullptr);
    json worse = result;
    worse["tests"][0]["explanation"][0].erase("formula");
    EXPECT_FALSE(FitsTheSchema(worse));
}

TEST(PartsJson, FitsItsSchema) {
    std::vector<ResultPart> parts(2);
    parts[0] = {"arm", "low", {"3 of 12 records"}, ReadAll(ReadResult(DocumentOf(SignTest())), Sentences()), ""};
    parts[1] = {"arm", "high", {}, std::nullopt, "no record has a value"};
    const json result = json::parse(PartsJson(parts, Sentences(), {"a note"}));
    const std::string schema = "parts.schema.json";
    EXPECT_TRUE(FitsTheSchema(result, schema));
    for (const char* const key : {"/parts/0/result/tests", "/parts/1/mistake", "/summary/0/p_holm", "/split"}) {
        const json::json_pointer place(key);
        json worse = result;
        worse[place.parent_pointer()].erase(place.back());
        EXPECT_FALSE(FitsTheSchema(worse, schema)) << key;
    }
}

// Every number of the document stands in the JSON again, digit by digit.
TEST(JsonReport, KeepsEveryDigit) {
    const json result = json::parse(JsonReport(ReadAll(ReadResult(DocumentOf(SignTest())), Sentences()), Sentences()));
    const json& rows = result.at("tests").at(0).at("tables").at(1).at("rows");
    for (const auto& [name, text] :
         {std::pair{"StandardError", "1.73205080756888"}, std::pair{"AsymptoticSig2Tailed", "0.38647623077123"}}) {
        EXPECT_EQ(rows.at(name).dump(), text);
    }
}

/// A run of all tests of the engine, more than one of some.
ResultDocument RunOfAllTests() {
    return ReadResult(harness::ReadFile(harness::SourcePath("tests/cases/named-cars-all/expected.xml")));
}

/// Compares every number of a table with the JSON that tells it; returns how many there were.
std::size_t CompareNumbers(const ResultTable& table, const json& told) {
    std::size_t count = 0;
    const auto compare = [&](const std::string& text, const json& value) {
        double number = 0;
        if (!ReadNumber(text, number) || !std::isfinite(number)) return;
        EXPECT_TRUE(value.is_number()) << table.name << ": " << text;
        EXPECT_EQ(value.get<double>(), number) << table.name << ": " << text;
        ++count;
    };
    for (const auto& [name, text] : table.rows) compare(text, told.at("rows").at(name));
    for (std::size_t line = 0; line < table.lines.size(); ++line) {
        const std::vector<std::string> values = SplitList(table.lines[line]);
        for (std::size_t i = 0; i < values.size(); ++i) compare(values[i], told.at("lines").at(line).at(i));
    }
    for (std::size_t i = 0; i < table.tables.size(); ++i) {
        count += CompareNumbers(table.tables[i], told.at("tables").at(i));
    }
    return count;
}

TEST(JsonReport, OfAllTestsFitsTheSchemaAndKeepsEveryNumber) {
    const ResultDocument document = RunOfAllTests();
    const json told =
        json::parse(JsonReport(ReadAll(document, MessageCatalogue::English()), MessageCatalogue::English()));
    EXPECT_TRUE(FitsTheSchema(told));
    ASSERT_EQ(told.at("tests").size(), document.tests.size());
    std::size_t count = 0;
    for (std::size_t i = 0; i < document.tests.size(); ++i) {
        const std::vector<ResultTable>& tables = document.tests[i].content.tables;
        for (std::size_t t = 0; t < tables.size(); ++t) {
            count += CompareNumbers(tables[t], told.at("tests").at(i).at("tables").at(t));
        }
    }
    EXPECT_GT(count, 500u);
}

// What the tidy table holds of a test stands in the document digit by digit.
TEST(CsvReport, OfAllTestsKeepsEveryNumber) {
    const ResultDocument document = RunOfAllTests();
    const std::string csv = CsvReport(ReadAll(document, MessageCatalogue::English()), MessageCatalogue::English());
    std::size_t count = 0;
    for (const TestResult& test : document.tests) {
        const ResultTable* const statistics = test.content.Table("StatisticsResult");
        if (statistics == nullptr) continue;
        for (const char* row : {"TotalN", "TestStatistic", "StandardError", "StandardTestStatistic",
                                "AsymptoticSig2Tailed", "ExactSig2Tailed", "AsymptoticSig1Tailed"}) {
            const std::string* const value = statistics->Find(row);
            if (value == nullptr || *value == kMissingText || value->starts_with("-1.797")) continue;
            EXPECT_NE(csv.find("," + *value + ","), std::string::npos) << test.name << " " << row;
            ++count;
        }
    }
    EXPECT_GT(count, 100u);
}

TEST(TextReport, OfAllTestsNamesEverything) {
    const std::string text =
        TextReport(ReadAll(RunOfAllTests(), MessageCatalogue::English()), MessageCatalogue::English(), {});
    for (const char* unresolved : {"?", "{", "}", "__MISSING__", "-1.797", "code 2", "_O_", "_R_", "_I_"}) {
        EXPECT_EQ(text.find(unresolved), std::string::npos) << unresolved;
    }
}

}  // namespace
}  // namespace tarn
