#include "host/engine/NamedFields.h"

#include <gtest/gtest.h>

#include "host/JsonDocument.h"

namespace tarn {
namespace {

constexpr std::size_t kThird = 2;  // behind those that are read for their place

TEST(NamedFields, AreTheTextsOfADocumentWhereverTheyStand) {
    const NamedFields fields(ParseJson(
        R"({"caseIDVariableName": "id", "tests": [{"RSign": {"variableName": ["x", "y"], "deeper": [[{"k": "z"}]]}}]})",
        "plan"));
    for (const char* field : {"id", "x", "y", "z"}) EXPECT_TRUE(fields.MayMean(field, kThird)) << field;
    for (const char* field : {"RSign", "X", "x ", "w", ""}) EXPECT_FALSE(fields.MayMean(field, kThird)) << field;
}

TEST(NamedFields, AreAddedByName) {
    NamedFields fields;
    EXPECT_FALSE(fields.MayMean("x", kThird));
    fields.Add("x");
    EXPECT_TRUE(fields.MayMean("x", kThird));
}

// The engine takes the number 2 for the text "2" where it asks for a name.
TEST(NamedFields, MayBeThoseThatAreCalledAsNumbersAndTruthValuesAreWritten) {
    const NamedFields none;
    for (const char* field : {"2", "-1.5", "1e+20", "true", "false"}) EXPECT_TRUE(none.MayMean(field, kThird)) << field;
    for (const char* field : {"x2", "2x", "True"}) EXPECT_FALSE(none.MayMean(field, kThird)) << field;
}

// A plan's sign test describes the first two fields of the table whatever its pair.
TEST(NamedFields, MayBeTheFirstTwoOfTheTable) {
    EXPECT_TRUE(NamedFields().MayMean("x", 0));
    EXPECT_TRUE(NamedFields().MayMean("x", 1));
    EXPECT_FALSE(NamedFields().MayMean("x", 2));
}

}  // namespace
}  // namespace tarn
