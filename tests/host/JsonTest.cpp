#include "host/Json.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/JsonDocument.h"

namespace tarn {
namespace {

using Other = nlohmann::ordered_json;

Json Parsed(const std::string& text) {
    return ParseJson(text, "text");
}

TEST(Json, IsMadeWithinBraces) {
    const std::vector<std::string> names{"a", "b"};
    const Json json{{"whole", -3},
                    {"large", std::uint64_t{18446744073709551615U}},
                    {"real", 0.5},
                    {"flag", true},
                    {"none", nullptr},
                    {"names", names},
                    {"pair", {1, 2}},
                    {"inner", {{"x", 1}, {"y", "z"}}},
                    {"noPairs", Json::array({{"x", 1}})},
                    {"emptyList", Json::array()},
                    {"emptyObject", Json::object()}};
    EXPECT_EQ(json.dump(),
              R"({"whole":-3,"large":18446744073709551615,"real":0.5,"flag":true,"none":null,"names":["a","b"],)"
              R"("pair":[1,2],"inner":{"x":1,"y":"z"},"noPairs":[["x",1]],"emptyList":[],"emptyObject":{}})");
}

TEST(Json, IsWrittenWithBlanksForEachLevel) {
    const Json json{{"list", {1, Json::array(), {{"a", "b"}}}}};
    EXPECT_EQ(json.dump(2), "{\n  \"list\": [\n    1,\n    [],\n    {\n      \"a\": \"b\"\n    }\n  ]\n}");
}

TEST(Json, WritesNumbersSoThatTheyComeBack) {
    const std::vector<std::pair<double, const char*>> written{
        {0.0, "0.0"},    {-0.0, "-0.0"},        {1.0, "1.0"},       {-2.5, "-2.5"},
        {0.1, "0.1"},    {0.0001, "0.0001"},    {0.00001, "1e-05"}, {1e14, "100000000000000.0"},
        {1e15, "1e+15"}, {1.5e300, "1.5e+300"}, {5e-324, "5e-324"}, {123456.789, "123456.789"}};
    for (const auto& [number, text] : written) EXPECT_EQ(Json(number).dump(), text);
    EXPECT_EQ(Json(std::numeric_limits<double>::infinity()).dump(), "null");
}

// Expected texts are those of another writer. Numbers with few digits, since it doesn't always find the shortest ones.
RC_GTEST_PROP(Json, IsWrittenLikeByAnotherWriter, (const std::vector<std::pair<int, bool>>& numbers)) {
    constexpr char kEndOfAscii = 127;
    constexpr double kPart = 64;
    Other other = Other::object();
    Json ours = Json::object();
    for (const auto& [number, isWhole] : numbers) {
        const auto name = *rc::gen::container<std::string>(rc::gen::inRange<char>('\0', kEndOfAscii));
        Other& theirs = other[name];
        Json& own = ours[name];
        if (isWhole) {
            theirs = number;
            own = number;
        } else {
            theirs = {{name + "\u00E9", number / kPart}};
            own = {{name + "\u00E9", number / kPart}};
        }
    }
    RC_ASSERT(ours.dump() == other.dump());
    RC_ASSERT(ours.dump(2) == other.dump(2));
}

RC_GTEST_PROP(Json, WritesAnyNumberSoThatAnotherReaderFindsIt, (const std::vector<double>& numbers)) {
    RC_ASSERT(Other::parse(Json(numbers).dump()) == Other(numbers));
}

TEST(Json, EscapesWhatATextMustNotHold) {
    const std::string text("\"\\\b\f\n\r\t\x01\x1f\x7f\xC3\xA9\0x", 14);
    EXPECT_EQ(Json(text).dump(), Other(text).dump());
    EXPECT_EQ(Json("a\xFFz").dump(), "\"a\xEF\xBF\xBDz\"");
    EXPECT_EQ(Json("cut \xE2\x82").dump(), "\"cut \xEF\xBF\xBD\xEF\xBF\xBD\"");
}

TEST(Json, IsReadAsItWasWritten) {
    const std::string text =
        R"({"a":[1,-2,18446744073709551615,0.5,1e-05,true,false,null,"é\n\u0000"],"b":{"c":{}},"a b":[]})";
    EXPECT_EQ(Parsed(text).dump(), Other::parse(text).dump());
}

TEST(Json, TellsItsKind) {
    EXPECT_STREQ(Json().type_name(), "null");
    EXPECT_STREQ(Json(1).type_name(), "number");
    EXPECT_STREQ(Json(1.5).type_name(), "number");
    EXPECT_STREQ(Json(true).type_name(), "boolean");
    EXPECT_STREQ(Json("").type_name(), "string");
    EXPECT_STREQ(Json::array().type_name(), "array");
    EXPECT_STREQ(Json::object().type_name(), "object");
    EXPECT_TRUE(Parsed("7").is_number_unsigned());
    EXPECT_FALSE(Parsed("-7").is_number_unsigned());
    EXPECT_TRUE(Parsed("-7").is_number_integer());
    EXPECT_FALSE(Parsed("7.0").is_number_integer());
    EXPECT_TRUE(Parsed("7.0").is_number());
}

TEST(Json, GivesWhatItHolds) {
    const Json json = Parsed(R"({"n": 3, "x": 2.5, "yes": true, "text": "t", "list": ["a", "b"]})");
    EXPECT_EQ(json["n"].get<int>(), 3);
    EXPECT_EQ(json["n"].get<double>(), 3);
    EXPECT_EQ(json["x"].get<double>(), 2.5);
    EXPECT_TRUE(json["yes"].get<bool>());
    EXPECT_EQ(json["text"].get<std::string>(), "t");
    EXPECT_EQ(json["list"].get<std::vector<std::string>>(), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(json["list"][1], "b");
}

TEST(Json, RefusesToBeTakenForAnotherKind) {
    const Json json = Parsed(R"({"n": 3, "text": "t"})");
    EXPECT_THROW(json["n"].get<std::string>(), JsonError);
    EXPECT_THROW(json["n"].get<bool>(), JsonError);
    EXPECT_THROW(json["text"].get<int>(), JsonError);
    EXPECT_THROW(json["text"].get<std::vector<std::string>>(), JsonError);
    EXPECT_THROW((void)json["text"].items(), JsonError);
    EXPECT_THROW((void)json["other"], JsonError);
    try {
        (void)json["n"].get<std::string>();
    } catch (const JsonError& error) {
        EXPECT_STREQ(error.what(), "type must be string, but is number");
    }
}

TEST(Json, ComparesNumbersByTheirValue) {
    EXPECT_EQ(Json(3), Parsed("3"));
    EXPECT_EQ(Json(3), Json(3.0));
    EXPECT_EQ(Parsed("3"), Json(3.0));
    EXPECT_FALSE(Json(-1) == Json(std::uint64_t{18446744073709551615U}));
    EXPECT_FALSE(Json(1) == Json(true));
    EXPECT_FALSE(Json("1") == Json(1));
    EXPECT_EQ(Parsed(R"({"a": [1, {"b": null}]})"), Parsed(R"({"a": [1.0, {"b": null}]})"));
    EXPECT_FALSE(Parsed(R"({"a": 1, "b": 2})") == Parsed(R"({"b": 2, "a": 1})"));
}

TEST(Json, GrowsAndFinds) {
    Json json;
    json["b"] = 1;
    json["a"]["inner"] = "x";
    json["b"] = 2;
    json["list"].push_back(5);
    json["list"].push_back({{"k", "v"}});
    json["list"].back()["more"] = Json::array();
    EXPECT_EQ(json.dump(), R"({"b":2,"a":{"inner":"x"},"list":[5,{"k":"v","more":[]}]})");
    json.update({{"a", nullptr}, {"new", 0}});
    EXPECT_EQ(json.dump(), R"({"b":2,"a":null,"list":[5,{"k":"v","more":[]}],"new":0})");
    EXPECT_TRUE(json.contains("a"));
    EXPECT_FALSE(json.contains("c"));
    EXPECT_FALSE(Json(1).contains("c"));
    EXPECT_EQ(json.find("c"), json.end());
    EXPECT_EQ(json.begin().key(), "b");
    EXPECT_EQ(json.size(), 4U);
    EXPECT_TRUE(Json().empty());
    std::string keys;
    for (const auto& [key, value] : json.items()) keys += key + "=" + value.dump() + ";";
    EXPECT_EQ(keys, R"(b=2;a=null;list=[5,{"k":"v","more":[]}];new=0;)");
}

}  // namespace
}  // namespace tarn
