#include "host/engine/OrderedScores.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/table/TableLoader.h"
#include "tests/host/InputErrorOf.h"

namespace tarn {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kAnswers = "a,b,n\ngood,bad,2\nbad,good,3\nfair,fair,1\n";

Table Load(const std::vector<FieldOrder>& orders, const std::string& fields = "{}", const Texts& ordinal = {}) {
    ByteSource descriptor = ByteSource::FromMemory("fields.json", fields);
    ByteSource data = ByteSource::FromMemory("data.csv", kAnswers);
    LoadOptions options;
    options.orders = orders;
    options.ordinal = ordinal;
    return LoadTable(data, ReadTableDescriptor(descriptor), options);
}

/// "1 bad, 2 fair" of a column.
std::string Scores(const Table& table, const std::string& name) {
    const Column& column = table.Columns()[static_cast<std::size_t>(table.FindColumn(name))];
    std::string text = column.IsText() ? "text:" : "";
    for (const Category& category : column.categories) {
        text += (text.empty() ? "" : " ") + std::to_string(static_cast<int>(category.number)) + " " + category.label +
                category.text;
    }
    return text;
}

TEST(OrderedScores, AreThePositionsOfWordsInTheirToldOrder) {
    Table table = Load({{"a", {"bad", "fair", "good"}}});
    ScoreOrderedFields(table, {"a", "b", "n"});
    EXPECT_EQ(Scores(table, "a"), "1 bad 2 fair 3 good");
    EXPECT_EQ(table.Columns()[0].level, FieldLevel::kOrdinal);
    // What the cells say stays: good, bad, fair.
    EXPECT_EQ(table.Cells(0)[0], 2);
    EXPECT_EQ(table.Cells(0)[1], 0);
    EXPECT_EQ(table.Cells(0)[2], 1);
    // No order was told of b.
    EXPECT_EQ(Scores(table, "b"), "text: 0 bad 0 fair 0 good");
}

TEST(OrderedScores, TakeTheOrderOfADescriptor) {
    const std::string fields = R"({"fields": [{"name": "a", "categories": ["bad", {"value": "fair", "label": "so so"},
                                   "good", "superb"], "categoriesOrdered": true}]})";
    Table table = Load({}, fields);
    ScoreOrderedFields(table, {"a"});
    EXPECT_EQ(Scores(table, "a"), "1 bad 2 so so 3 good 4 superb");
}

TEST(OrderedScores, NeedAnOrderOfAllCategories) {
    // "good" is not listed and would stand last by chance.
    Table table = Load({}, R"({"fields": [{"name": "a", "categories": ["bad", "fair"], "categoriesOrdered": true}]})");
    ScoreOrderedFields(table, {"a"});
    EXPECT_TRUE(table.Columns()[0].IsText());
    // A level alone is no order: the words stand in that of the alphabet.
    Table ordinal = Load({}, "{}", {"a"});
    ScoreOrderedFields(ordinal, {"a"});
    EXPECT_TRUE(ordinal.Columns()[0].IsText());
}

TEST(OrderedScores, LeaveAscendingNumbersAndScoreOthers) {
    Table ascending = Load({{"n", {"1", "2", "3"}}});
    ScoreOrderedFields(ascending, {"n"});
    EXPECT_EQ(Scores(ascending, "n"), "1  2  3 ");
    Table other = Load({{"n", {"3", "1", "2"}}});
    ScoreOrderedFields(other, {"n"});
    EXPECT_EQ(Scores(other, "n"), "1 3 2 1 3 2");
}

TEST(OrderedScores, OfComparedFieldsAreOfOneOrder) {
    const Table same = Load({{"a", {"bad", "fair", "good"}}, {"b", {"bad", "fair", "good"}}});
    EXPECT_NO_THROW(CheckOneOrder(same, {"a", "b", "n"}));
    const Table other = Load({{"a", {"bad", "fair", "good"}}, {"b", {"good", "fair", "bad"}}});
    EXPECT_EQ(
        InputErrorOf([&] {
            CheckOneOrder(other, {"a", "b"});
        }),
        "--related: a has the order bad < fair < good, b good < fair < bad; expected one order with all the words of "
        "both: --order a,b=..,..");
}

TEST(ToldOrder, HasToNameEveryCategory) {
    EXPECT_EQ(InputErrorOf([] {
                  Load({{"a", {"bad", "good"}}});
              }),
              "--order: a has \"fair\" too; expected all of its categories, from the lowest to the highest");
    EXPECT_EQ(InputErrorOf([] {
                  Load({{"a", {"bad", "fiar", "good"}}});
              }),
              "--order: no category \"fiar\" in a; did you mean fair?");
    EXPECT_EQ(InputErrorOf([] {
                  Load({{"c", {"bad"}}});
              }),
              "--order: \"c\"; expected a field of data.csv: \"a\", \"b\" or \"n\"");
    EXPECT_EQ(InputErrorOf([] {
                  Load({{"a", {"bad", "fair", "good", "bad"}}});
              }),
              "--order: field \"a\": category \"bad\" stands twice; expected once");
    EXPECT_EQ(InputErrorOf([] {
                  Load({{"a", {"bad"}}, {"a", {"good"}}});
              }),
              "--order: \"a\" a second time; expected one order");
}

TEST(ToldOrder, TakesLabelsOfTheDescriptorAndCategoriesThatNeverOccur) {
    const std::string fields =
        R"({"fields": [{"name": "n", "categories": [{"value": 1, "label": "low"}, {"value": 3, "label": "high"}]}]})";
    const Table table = Load({{"n", {"high", "2", "low", "9"}}}, fields);
    EXPECT_EQ(Scores(table, "n"), "3 high 2  1 low 9 ");
    EXPECT_TRUE(table.Columns()[2].IsOrderTold());
}

TEST(ToldOrder, IsProposedForWordsOfAKnownScale) {
    const auto proposed = [](const Texts& words) {
        Column column;
        column.name = "x";
        column.type = FieldType::kString;
        for (const std::string& word : words) column.categories.push_back({0, word, {}});
        return OrderOptionFor(column);
    };
    EXPECT_EQ(proposed({"H", "L", "M"}), "--order x=L,M,H");
    EXPECT_EQ(proposed({"good", "poor", "very good"}), "--order 'x=poor,good,very good'");
    EXPECT_EQ(proposed({"Agree", "Neutral", "Strongly disagree"}), "--order 'x=Strongly disagree,Neutral,Agree'");
    // No order is made up for other words.
    EXPECT_EQ(proposed({"apple", "fig", "pear", "plum"}), "--order x=..,..,..");
}

}  // namespace
}  // namespace tarn
