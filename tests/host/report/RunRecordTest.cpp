// What the outputs say of how a result was made.

#include "host/report/RunRecord.h"

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/report/JsonReport.h"
#include "host/report/PartsReport.h"
#include "host/report/TextReport.h"
#include "tests/host/report/ResultTexts.h"
#include "tests/host/report/SchemaCheck.h"

namespace tarn {
namespace {

using nlohmann::json;
using report_test::DocumentOf;
using report_test::FitsTheSchema;
using report_test::SignTest;

const MessageCatalogue& Texts() {
    return MessageCatalogue::English();
}

ResultReading Reading() {
    return ReadAll(ReadResult(DocumentOf(SignTest())), Texts());
}

/// A record with something at every place.
RunRecord WholeRecord() {
    RunRecord record;
    record.version = "1.2.3";
    record.commit = "0123456789abcdef0123456789abcdef01234567+changes";
    record.libraries = {{"zlib", "1.2"}};
    record.request = {{"command", "analyze"}, {"words", "tarn analyze d.csv"}, {"options", Json::object()}};
    record.file = "d.csv";
    record.selection = {20, 3, 4, 1};
    record.records = 12;
    record.weights = WeightCounts{"w", WeightRule::kRounded, 5, 1, 2, 3, 4, 60.5, 58};
    const HashedField field{"u", HashedKind::kNumbers, FieldLevel::kContinuous, false, 2, std::string(64, 'a')};
    record.data = DataHash{std::string(64, 'b'), {field}};
    record.tests = {{"RSign", {"v", "u"}, "", 7, 2, 3}};
    return record;
}

TEST(RunRecord, StandsInJson) {
    ResultReading reading = Reading();
    EXPECT_TRUE(json::parse(JsonReport(reading, Texts())).at("record").is_null()) << "of a stored document";
    reading.record = std::make_shared<RunRecord>(WholeRecord());
    const json result = json::parse(JsonReport(reading, Texts()));
    EXPECT_TRUE(FitsTheSchema(result));
    const json& record = result.at("record");
    EXPECT_EQ(record.at("libraries"), (json{{"zlib", "1.2"}}));
    EXPECT_EQ(record.at("data").at("sha256"), std::string(64, 'b'));
    EXPECT_EQ(record.at("data").at("fields").at(0), (json{{"name", "u"},
                                                          {"values", "numbers"},
                                                          {"level", "continuous"},
                                                          {"is_weight", false},
                                                          {"missing", 2},
                                                          {"sha256", std::string(64, 'a')}}));
    EXPECT_EQ(record.at("left_out").at("weights"),
              (json{{"field", "w"}, {"rule", "rounded"}, {"missing", 4}, {"negative", 3}, {"zero", 3}, {"changed", 5}}))
        << "two are 0, one becomes 0";
    for (const char* const key :
         {"/record/data/sha256", "/record/left_out/tests/0/complete", "/record/request/command", "/record/version"}) {
        const json::json_pointer place(key);
        json worse = result;
        worse[place.parent_pointer()].erase(place.back());
        EXPECT_FALSE(FitsTheSchema(worse)) << key;
        worse = result;
        worse[place] = -1;
        EXPECT_FALSE(FitsTheSchema(worse)) << key;
    }
    // Without what nobody knows.
    RunRecord less = WholeRecord();
    less.commit.clear();
    less.data.reset();
    less.weights.reset();
    less.request = nullptr;
    reading.record = std::make_shared<RunRecord>(less);
    EXPECT_TRUE(FitsTheSchema(json::parse(JsonReport(reading, Texts()))));
}

TEST(RunRecord, EndsTheTextWithDetails) {
    ResultReading reading = Reading();
    RunRecord record = WholeRecord();
    record.requestWords = "tarn analyze d.csv";
    reading.record = std::make_shared<RunRecord>(record);
    const std::string text = TextReport(reading, Texts(), {}, {"a note"});
    EXPECT_TRUE(
        text.ends_with("Note: a note\n\nRecord\n"
                       "   Hash of the data as used: SHA-256 " +
                       std::string(64, 'b') +
                       "\n"
                       "   Left out: 3 records by the condition, 4 records of other parts, 1 record without a "
                       "subject or a condition, 6 records whose weight doesn't count, 4 records without a "
                       "weight, of 20\n"
                       "   Request: tarn analyze d.csv\n"
                       "   Program: tarn 1.2.3\n"
                       "   Commit: 0123456789abcdef0123456789abcdef01234567+changes\n"
                       "   Libraries: zlib 1.2\n"))
        << text;
}

TEST(RunRecord, SaysOnceWhatAllPartsHaveInCommon) {
    std::vector<ResultPart> parts(2);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        parts[i] = {"arm", i == 0 ? "low" : "high", {}, Reading(), ""};
        parts[i].result->record = std::make_shared<RunRecord>(WholeRecord());
    }
    const json result = json::parse(PartsJson(parts, Texts(), {}));
    EXPECT_TRUE(FitsTheSchema(result, "parts.schema.json"));
    EXPECT_EQ(result.at("record").at("version"), "1.2.3");
    EXPECT_EQ(result.at("parts").at(1).at("result").at("record").at("left_out").at("by_split"), 4);
    const std::string text = PartsText(parts, Texts(), {}, {});
    const auto countOf = [&](const std::string& word) {
        std::size_t count = 0;
        for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++count;
        return count;
    };
    EXPECT_EQ(countOf("   Hash of the data as used: "), 2U);
    EXPECT_EQ(countOf("   Program: "), 1U);
}

}  // namespace
}  // namespace tarn
