// In what two results differ. The results are written by hand, and changed at one place at a time.

#include "host/report/ResultComparison.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "host/JsonDocument.h"

namespace tarn {

namespace {

using Document = nlohmann::ordered_json;
using Pointer = Document::json_pointer;

std::string Hash(char digit) {
    return std::string(64, digit);
}

Document Result() {
    return Document::parse(R"({
      "format": "tarn-result-2", "significance_level": 0.05, "arithmetic": "extended", "counts": {"totalCount": 12},
      "tests": [
        {"test": "RSign", "name": "sign", "fields": ["u", "v"], "group": null, "decision": "retain", "method": "words",
         "statistics": [{"statistic": 8, "p_values": [{"value": 0.25, "decides": true}, {"value": "nan", "decides": false}]}]},
        {"test": "IMoses", "name": "moses", "fields": ["u"], "group": "g", "decision": "reject",
         "statistics": [{"statistic": 3, "p_values": []}]}],
      "descriptives": [{"field": "u", "rows": {"Mean": 1.5}}],
      "record": {"version": "1.2.3", "commit": null, "libraries": {"zlib": "1.2"}, "data": {"sha256": ")" +
                           Hash('a') +
                           R"(", "records": 12, "fields": [
        {"name": "u", "values": "numbers", "level": "continuous", "is_weight": false, "missing": 0, "sha256": ")" +
                           Hash('b') + R"("},
        {"name": "v", "values": "numbers", "level": "continuous", "is_weight": false, "missing": 2, "sha256": ")" +
                           Hash('c') + R"("}]}}})");
}

/// With another value at a place.
Document With(const char* place, const Document& value) {
    Document result = Result();
    result[Pointer(place)] = value;
    return result;
}

ResultComparison CompareResults(const Document& before, const Document& after) {
    return CompareResults(ParseJson(before.dump(), "before"), ParseJson(after.dump(), "after"));
}

ResultComparison Compare(const Document& after) {
    return CompareResults(Result(), after);
}

Document ShownOf(const ResultComparison& comparison) {
    return Document::parse(ComparisonJson(comparison).dump());
}

}  // namespace

TEST(ResultComparison, FindsNothingInTheSame) {
    const ResultComparison found = Compare(Result());
    EXPECT_TRUE(found.IsSame());
    // Two tests with their decisions: 8, .25 and nan, two times whether it decides; 3; a count; a mean.
    EXPECT_EQ(found.numberCount, 10U);
    EXPECT_EQ(ComparisonText(found), "same to the last digit: 10 values\n");
    EXPECT_EQ(ShownOf(found).at("same"), true);
}

TEST(ResultComparison, FindsANumberInItsLastDigit) {
    const ResultComparison found =
        Compare(With("/tests/0/statistics/0/p_values/0/value", 0.25000000000000006));  // the next double
    EXPECT_FALSE(found.IsSame());
    ASSERT_EQ(found.numbers.size(), 1U);
    EXPECT_EQ(ComparisonText(found),
              "1 of 10 values changed\n"
              "sign of u, v\n"
              "                                    before                  now\n"
              "   statistics[0].p_values[0].value    0.25  0.25000000000000006\n");
}

TEST(ResultComparison, FindsWhatIsNoNumberAnyMore) {
    for (const Document& value : {Document(nullptr), Document("nan"), Document("inf")}) {
        EXPECT_EQ(Compare(With("/tests/1/statistics/0/statistic", value)).numbers.size(), 1U) << value;
    }
    EXPECT_EQ(Compare(With("/tests/0/statistics/0/p_values/1/value", 0.5)).numbers.size(), 1U);
    EXPECT_EQ(Compare(With("/tests/0/decision", "reject")).numbers.size(), 1U);
    EXPECT_EQ(Compare(With("/tests/0/statistics/0/p_values/0/decides", false)).numbers.size(), 1U);
    EXPECT_EQ(Compare(With("/tests/1/statistics/0/p_values", Document::parse(R"([{"value": 0.1}])"))).numbers.size(),
              1U);
}

TEST(ResultComparison, LeavesWordsAlone) {
    EXPECT_TRUE(Compare(With("/tests/0/method", "in other words")).IsSame());
}

TEST(ResultComparison, TellsOfAnotherProgramWithoutMindingIt) {
    Document after = With("/record/version", "1.3.0");
    after["record"]["libraries"]["zlib"] = "1.3";
    after["record"]["libraries"]["zstd"] = "1.5";
    const ResultComparison found = Compare(after);
    EXPECT_TRUE(found.IsSame());
    EXPECT_EQ(ComparisonText(found),
              "same to the last digit: 10 values\n"
              "by another program\n"
              "   version: 1.3.0, was 1.2.3\n"
              "   zlib: 1.3, was 1.2\n"
              "   zstd: 1.5, was not there\n");
}

TEST(ResultComparison, NamesTheFieldsThatAreOthers) {
    Document after = With("/record/data/sha256", Hash('d'));
    Document& fields = after["record"]["data"]["fields"];
    after["record"]["data"]["records"] = 13;
    fields[0]["sha256"] = Hash('e');
    fields[1]["sha256"] = Hash('f');
    fields[1]["missing"] = 3;
    fields.push_back(fields[0]);
    fields[2]["name"] = "w";
    const ResultComparison found = Compare(after);
    EXPECT_FALSE(found.IsSame()) << "though no number is another";
    EXPECT_EQ(ComparisonText(found),
              "other data\n"
              "   SHA-256: dddddddddddd..., was aaaaaaaaaaaa...\n"
              "   records: 13, was 12\n"
              "   u, values: eeeeeeeeeeee..., was bbbbbbbbbbbb...\n"
              "   v, missing: 3, was 2\n"
              "   w: there, was not there\n"
              "numbers the same to the last digit: 10 values\n");
    EXPECT_EQ(ShownOf(found).at("data").at(4), (Document{{"what", "w"}, {"before", nullptr}, {"after", "there"}}));
}

TEST(ResultComparison, FindsAnotherWayToCompute) {
    for (const auto& [place, value] :
         {std::pair("/arithmetic", Document("as-defined")), {"/significance_level", Document(0.01)}}) {
        const ResultComparison found = Compare(With(place, value));
        EXPECT_FALSE(found.IsSame());
        EXPECT_EQ(found.manner.size(), 1U);
        EXPECT_TRUE(found.numbers.empty());
    }
}

TEST(ResultComparison, MatchesTestsByWhatTheyAre) {
    Document turned = Result();
    std::swap(turned["tests"][0], turned["tests"][1]);
    EXPECT_TRUE(Compare(turned).IsSame());
    Document other = Result();
    other["tests"][1]["group"] = "h";
    const ResultComparison found = Compare(other);
    ASSERT_EQ(found.tests.size(), 2U);
    EXPECT_EQ(found.tests[0].what, "moses of u by g");
    EXPECT_EQ(found.tests[0].after, "");
    EXPECT_EQ(found.tests[1].what, "moses of u by h");
    EXPECT_EQ(found.tests[1].before, "");
}

TEST(ResultComparison, ComparesPartsByTheirCategories) {
    const auto parts = [](const Document& low, const Document& high) {
        return Document{{"format", "tarn-parts-1"},
                        {"parts", {{{"category", "low"}, {"result", low}}, {{"category", "high"}, {"result", high}}}},
                        {"record", Result()["record"]}};
    };
    EXPECT_TRUE(CompareResults(parts(Result(), nullptr), parts(Result(), nullptr)).IsSame());
    const ResultComparison number =
        CompareResults(parts(Result(), Result()), parts(Result(), With("/tests/0/statistics/0/statistic", 9)));
    ASSERT_EQ(number.numbers.size(), 1U);
    EXPECT_EQ(number.numbers[0].of, "high: sign of u, v");
    const ResultComparison lost = CompareResults(parts(Result(), Result()), parts(Result(), nullptr));
    ASSERT_EQ(lost.tests.size(), 1U);
    EXPECT_EQ(lost.tests[0].what + ": " + lost.tests[0].after + ", was " + lost.tests[0].before,
              "high: not tested, was tested");
    EXPECT_FALSE(CompareResults(parts(Result(), Result()), Result()).IsSame()) << "parts with a whole";
}

TEST(ResultComparison, TakesWhatIsNoResultForAnotherOne) {
    for (const char* const text :
         {"{}", "[]", "1", R"({"tests": 1, "record": []})", R"({"tests": [1, {"fields": 3}], "record": {"data": 1}})",
          R"({"parts": [1, {"category": 2}]})"}) {
        EXPECT_FALSE(CompareResults(Document::parse(text), Result()).IsSame()) << text;
        EXPECT_FALSE(CompareResults(Result(), Document::parse(text)).IsSame()) << text;
    }
}

TEST(ResultComparison, ShowsTheFirstOfManyNumbers) {
    Document before = Result();
    Document after = Result();
    for (int i = 0; i < 50; ++i) {
        before["counts"]["n" + std::to_string(i)] = i;
        after["counts"]["n" + std::to_string(i)] = i + 1;
    }
    const ResultComparison found = CompareResults(before, after);
    EXPECT_EQ(found.numbers.size(), 50U);
    EXPECT_TRUE(ComparisonText(found).ends_with("and 30 more\n"));
    EXPECT_EQ(ShownOf(found).at("changed").size(), 50U);
}

}  // namespace tarn
