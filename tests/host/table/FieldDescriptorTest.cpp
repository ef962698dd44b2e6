#include "host/table/FieldDescriptor.h"

#include <gtest/gtest.h>

#include <string>

#include "host/JsonDocument.h"
#include "tests/host/InputErrorOf.h"

namespace tarn {
namespace {

TableDescriptor Read(const std::string& json) {
    ByteSource source = ByteSource::FromMemory("fields.json", json);
    return ReadTableDescriptor(source);
}

std::string ErrorOf(const std::string& json) {
    return InputErrorOf([&] { Read(json); });
}

TEST(FieldDescriptor, IsAllOptional) {
    const TableDescriptor table = Read("{}");
    EXPECT_EQ(table.sourceName, "fields.json");
    EXPECT_TRUE(table.fields.empty());
    EXPECT_EQ(table.missingTexts, (std::vector<std::string>{"", "NA"}));
    EXPECT_EQ(table.weightField, std::nullopt);

    const TableDescriptor oneField = Read(R"({"fields": [{"name": "a"}]})");
    ASSERT_EQ(oneField.fields.size(), 1u);
    const FieldDescriptor& field = oneField.fields[0];
    EXPECT_EQ(field.name, "a");
    EXPECT_EQ(field.title, "");
    EXPECT_EQ(field.type, std::nullopt);
    EXPECT_EQ(field.level, std::nullopt);
    EXPECT_EQ(field.categories, std::nullopt);
    EXPECT_FALSE(field.categoriesOrdered);
    EXPECT_TRUE(field.missingValues.empty());
}

TEST(FieldDescriptor, ReadsEveryKey) {
    const TableDescriptor table = Read(R"({
        "missingValues": ["", " NA ", -99, {"value": "?", "label": "unknown"}],
        "weightField": "n",
        "fields": [
            {"name": "age", "title": "Age in years", "type": "number"},
            {"name": "grade", "type": "integer", "level": "ordinal", "categoriesOrdered": true,
             "categories": [{"value": 1, "label": "low"}, {"value": 2}, 2.5, "3", {"value": "4", "label": "top"}],
             "missingValues": [9, "refused"]}
        ]})");
    EXPECT_EQ(table.missingTexts, (std::vector<std::string>{"", "NA", "-99", "?"}));
    EXPECT_EQ(table.weightField, "n");
    ASSERT_EQ(table.fields.size(), 2u);
    EXPECT_EQ(table.fields[0].title, "Age in years");
    EXPECT_EQ(table.fields[0].type, FieldType::kNumber);
    const FieldDescriptor& grade = table.fields[1];
    EXPECT_EQ(grade.type, FieldType::kInteger);
    EXPECT_EQ(grade.level, FieldLevel::kOrdinal);
    EXPECT_TRUE(grade.categoriesOrdered);
    const std::vector<DescribedValue> categories = {
        {"1", 1, "low"}, {"2", 2, ""}, {"2.5", 2.5, ""}, {"3", std::nullopt, ""}, {"4", std::nullopt, "top"}};
    EXPECT_EQ(grade.categories, categories);
    EXPECT_EQ(grade.missingValues, (std::vector<DescribedValue>{{"9", 9, ""}, {"refused", std::nullopt, ""}}));
}

TEST(FieldDescriptor, KnowsAllTypesAndLevels) {
    const TableDescriptor table = Read(R"({"fields": [
        {"name": "a", "type": "number", "level": "continuous"}, {"name": "b", "type": "integer", "level": "nominal"},
        {"name": "c", "type": "string", "level": "ordinal"}, {"name": "d", "type": "boolean"},
        {"name": "e", "type": "date"}, {"name": "f", "type": "time"}, {"name": "g", "type": "datetime"}]})");
    const FieldType types[] = {FieldType::kNumber, FieldType::kInteger, FieldType::kString,  FieldType::kBoolean,
                               FieldType::kDate,   FieldType::kTime,    FieldType::kDateTime};
    ASSERT_EQ(table.fields.size(), std::size(types));
    for (std::size_t i = 0; i < std::size(types); ++i) EXPECT_EQ(table.fields[i].type, types[i]) << i;
    EXPECT_EQ(table.fields[0].level, FieldLevel::kContinuous);
    EXPECT_EQ(table.fields[1].level, FieldLevel::kNominal);
    EXPECT_EQ(table.fields[2].level, FieldLevel::kOrdinal);
}

TEST(FieldDescriptor, KeepsTheDigitsOfWholeNumbers) {
    const TableDescriptor table = Read(
        R"({"fields": [{"name": "a", "missingValues": [123456789012345678, 18446744073709551615, 0.1, 2.0, 1e3, 1e30]}]})");
    const std::vector<DescribedValue>& values = table.fields[0].missingValues;
    const char* texts[] = {"123456789012345678", "18446744073709551615", "0.1", "2", "1000", "1e+30"};
    ASSERT_EQ(values.size(), std::size(texts));
    for (std::size_t i = 0; i < std::size(texts); ++i) EXPECT_EQ(values[i].text, texts[i]);
    EXPECT_EQ(values[1].number, 18446744073709551615.0);
    EXPECT_EQ(Read(R"({"missingValues": [123456789012345678901234567890]})").missingTexts[0], "1.23456789012346e+29");
}

TEST(FieldDescriptor, PassesOverTheOtherKeysOfATableSchema) {
    const TableDescriptor table = Read(R"({"$schema": "x", "description": "d", "primaryKey": ["a"], "foreignKeys": [],
        "fields": [{"name": "a", "description": "d", "format": "default", "constraints": {"minimum": 0},
                    "rdfType": "r", "example": 1}]})");
    EXPECT_EQ(table.fields.size(), 1u);
}

TEST(FieldDescriptor, TellsTheKeyOfWhatItCannotUse) {
    const std::pair<const char*, const char*> cases[] = {
        {"[]", "fields.json: an array; expected an object"},
        {"3", "fields.json: 3; expected an object"},
        {R"({"feilds": []})",
         R"(fields.json: feilds: an unknown key; expected "fields", "weightField" or "missingValues")"},
        {R"({"fields": {}})", "fields.json: fields: an object; expected an array"},
        {R"({"fields": ["a"]})", R"(fields.json: fields[0]: "a"; expected an object)"},
        {R"({"fields": [{}]})", R"(fields.json: fields[0]: no key "name"; expected the name of a field)"},
        {R"({"fields": [{"name": 1}]})", "fields.json: fields[0].name: 1; expected a text"},
        {R"({"fields": [{"name": "a"}, {"name": "a"}]})",
         R"(fields.json: fields[1].name: "a" a second time; expected unique names)"},
        {R"({"fields": [{"name": "a", "title": null}]})", "fields.json: fields[0].title: null; expected a text"},
        {R"({"fields": [{"name": "a", "type": "text"}]})",
         "fields.json: fields[0].type: \"text\"; expected \"number\", \"integer\", \"string\", \"boolean\", \"date\", "
         "\"time\" or \"datetime\""},
        {R"({"fields": [{"name": "a", "level": "scale"}]})",
         R"(fields.json: fields[0].level: "scale"; expected "continuous", "nominal" or "ordinal")"},
        {R"({"fields": [{"name": "a", "level": 1}]})",
         R"(fields.json: fields[0].level: 1; expected "continuous", "nominal" or "ordinal")"},
        {R"({"fields": [{"name": "a", "Level": "nominal"}]})",
         "fields.json: fields[0].Level: an unknown key; expected \"name\", \"title\", \"type\", \"level\", "
         "\"categories\", \"categoriesOrdered\" or \"missingValues\""},
        {R"({"fields": [{"name": "a", "categoriesOrdered": "yes"}]})",
         R"(fields.json: fields[0].categoriesOrdered: "yes"; expected true or false)"},
        {R"({"fields": [{"name": "a", "categories": "x"}]})",
         R"(fields.json: fields[0].categories: "x"; expected an array)"},
        {R"({"fields": [{"name": "a", "categories": [1, true]}]})",
         R"(fields.json: fields[0].categories[1]: true; expected a text, a number or an object with "value")"},
        {R"({"fields": [{"name": "a", "categories": [{"label": "x"}]}]})",
         R"(fields.json: fields[0].categories[0]: an object; expected a text, a number or an object with "value")"},
        {R"({"fields": [{"name": "a", "categories": [{"value": {"value": 1}}]}]})",
         "fields.json: fields[0].categories[0].value: an object; expected a text or a number"},
        {R"({"fields": [{"name": "a", "categories": [{"value": [1]}]}]})",
         "fields.json: fields[0].categories[0].value: an array; expected a text or a number"},
        {R"({"fields": [{"name": "a", "categories": [{"value": 1, "label": 2}]}]})",
         "fields.json: fields[0].categories[0].label: 2; expected a text"},
        {R"({"fields": [{"name": "a", "categories": [{"value": 1, "lable": "x"}]}]})",
         R"(fields.json: fields[0].categories[0].lable: an unknown key; expected "value" or "label")"},
        {R"({"missingValues": "NA"})", R"(fields.json: missingValues: "NA"; expected an array)"},
        {R"({"missingValues": [null]})",
         R"(fields.json: missingValues[0]: null; expected a text, a number or an object with "value")"},
        {R"({"weightField": ["n"]})", "fields.json: weightField: an array; expected a text"},
    };
    for (const auto& [json, error] : cases) EXPECT_EQ(ErrorOf(json), error) << json;
}

TEST(JsonDocument, TellsTheLineAndColumnOfWhatIsMalformed) {
    const std::pair<std::string, const char*> cases[] = {
        {"",
         "fields.json:1:1: syntax error while parsing value - unexpected end of input; expected '[', '{', or a "
         "literal"},
        {"{\n  \"a\": 1,\n}",
         "fields.json:3:1: syntax error while parsing object key - unexpected '}'; expected string literal"},
        {"{\"fields\": [\n  {\"name\" \"a\"}]}",
         "fields.json:2:13: syntax error while parsing object separator - unexpected string literal; expected ':'"},
        {"{} x", "fields.json:1:4: syntax error while parsing value - invalid literal; expected end of input"},
        {"{\"\xc3\xa9\xc3\xa9\": tru}",
         "fields.json:1:11: syntax error while parsing value - invalid literal; expected JSON"},
        {"{\"a\": \n 1e999}",
         "fields.json:2:6: number overflow parsing '1e999'; expected a number in the range of a double"},
        {"{\"a\": {\"b\": 1, \"c\": 2, \"b\": 3}}",
         R"(fields.json: key "b" stands twice in one object; expected once)"},
        {"{\"a\": \"\xff\"}",
         "fields.json:1:8: syntax error while parsing value - invalid string: ill-formed UTF-8 byte; expected JSON"},
    };
    for (const auto& [json, error] : cases) EXPECT_EQ(ErrorOf(json), error) << json;
}

TEST(JsonDocument, KeepsTheOrderOfKeys) {
    ByteSource source = ByteSource::FromMemory("x.json",
                                               "\xef\xbb\xbf"
                                               R"({"z": [1, {"y": null, "x": true}], "a": -1.5})");
    EXPECT_EQ(ReadJson(source).dump(), R"({"z":[1,{"y":null,"x":true}],"a":-1.5})");
}

std::string JsonErrorOf(const std::string& text) {
    return InputErrorOf([&] {
        ByteSource source = ByteSource::FromMemory("x.json", text);
        static_cast<void>(ReadJson(source));
    });
}

std::string Nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JsonDocument, NestsSixtyFourDeepAndNoDeeper) {
    EXPECT_EQ(JsonErrorOf(Nested(64)), "no error");
    EXPECT_EQ(JsonErrorOf(Nested(65)),
              "x.json:1:65: arrays and objects nest deeper than 64; expected fewer in one another");
    EXPECT_EQ(JsonErrorOf("{\n \"a\":" + Nested(60000) + "}"),
              "x.json:2:69: arrays and objects nest deeper than 64; expected fewer in one another");
    std::string objects;
    for (int i = 0; i < 20000; ++i) objects += "{\"a\":";
    EXPECT_EQ(JsonErrorOf(objects),
              "x.json:1:321: arrays and objects nest deeper than 64; expected fewer in one another");
}

TEST(JsonDocument, BracketsInTextsDontNest) {
    EXPECT_EQ(JsonErrorOf("[\"" + std::string(100, '[') + "\\\"" + std::string(100, '{') + "\"]"), "no error");
    std::string beside = "[";
    for (int i = 0; i < 100; ++i) beside += "[{}],";
    EXPECT_EQ(JsonErrorOf(beside + "0]"), "no error");
}

TEST(JsonDocument, FindsARepeatedKeyAmongMany) {
    std::string object = "{";
    for (int i = 0; i < 100; ++i) object += "\"k" + std::to_string(i) + "\":" + std::to_string(i) + ",";
    ByteSource source = ByteSource::FromMemory("x.json", object + "\"last\":1}");
    const auto json = ReadJson(source);
    EXPECT_EQ(json.size(), 101u);
    EXPECT_EQ(json.begin().key(), "k0");
    EXPECT_EQ(json["k57"], 57);
    for (const char* key : {"k0", "k16", "k17", "k99"}) {
        EXPECT_EQ(JsonErrorOf(object + "\"" + key + "\":1}"),
                  std::string("x.json: key \"") + key + "\" stands twice in one object; expected once");
    }
}

TEST(JsonDocument, ZeroBytesAreRefusedBeforeTheyTakeAllMemory) {
    ByteSource source("/dev/zero");
    EXPECT_EQ(InputErrorOf([&] { static_cast<void>(ReadJson(source)); }), "/dev/zero: byte 1 is zero; expected a text");
}

}  // namespace
}  // namespace tarn
