#include "host/words/Condition.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "tests/host/InputErrorOf.h"
#include "tests/host/words/TableOfText.h"

namespace tarn {
namespace {

// Records from 0; what is expected of them is read off by hand.
constexpr const char* kData =
    "age,arm,dose,ok,day,two words,code,later\n"
    "30,low,1,true,2024-01-05,1,9,31\n"   // 0
    "41,low,,false,2024-02-05,2,1,40\n"   // 1
    ",high,2,true,2023-12-31,3,2,5\n"     // 2: no age
    "50,,3,false,2024-03-01,4,1,50\n"     // 3: no arm
    "40,placebo,2,,2025-01-01,5,2,41\n";  // 4: no ok
constexpr const char* kFields =
    R"({"fields": [{"name": "ok", "type": "boolean"}, {"name": "day", "type": "date"},
       {"name": "code", "type": "integer", "missingValues": [9], "categories": [1, {"value": 2, "label": "two"}]}]})";

using Records = std::vector<std::size_t>;

Records RecordsFor(const std::string& condition, const std::string& fields = kFields) {
    const Table table = TableOfText(kData, fields);
    FieldNames names(table);
    return Condition(condition).RecordsOf(table, names);
}

struct Case {
    const char* condition;
    Records records;
};

class TrueCondition : public testing::TestWithParam<Case> {};

TEST_P(TrueCondition, TakesItsRecords) {
    EXPECT_EQ(RecordsFor(GetParam().condition), GetParam().records);
}

INSTANTIATE_TEST_SUITE_P(Numbers, TrueCondition,
                         testing::Values(Case{"age > 40", {1, 3}}, Case{"age >= 40", {1, 3, 4}}, Case{"age<41", {0, 4}},
                                         Case{"age <= -1", {}}, Case{"age = 40", {4}}, Case{"age == 4e1", {4}},
                                         Case{"age != 40", {0, 1, 3}}, Case{"40 < age", {1, 3}}, Case{"40 = age", {4}},
                                         Case{"age > -.5", {0, 1, 3, 4}}, Case{"later > age", {0, 4}},
                                         Case{"AGE > 40", {1, 3}}, Case{"`two words` >= 4", {3, 4}},
                                         Case{"age in (30, 50)", {0, 3}}, Case{"age not in (30, 50)", {1, 4}}));

INSTANTIATE_TEST_SUITE_P(Words, TrueCondition,
                         testing::Values(Case{"arm = \"low\"", {0, 1}}, Case{"arm != 'low'", {2, 4}},
                                         Case{"\"low\" == arm", {0, 1}}, Case{"arm in (\"low\", \"high\")", {0, 1, 2}},
                                         Case{"arm not in ('low')", {2, 4}}, Case{"ok = true", {0, 2}},
                                         Case{"ok = \"false\"", {1, 3}}, Case{"ok != false", {0, 2}},
                                         Case{"day >= \"2024-02-05\"", {1, 3, 4}}, Case{"day < '2024-01-01'", {2}},
                                         Case{"code = 2", {2, 4}}, Case{"code = \"two\"", {2, 4}},
                                         Case{"code > 1", {2, 4}}));

// What is missing is neither equal nor unequal to anything; "and" and "or" are those of three values (Kleene), as in R:
// NA & FALSE is FALSE, NA | TRUE is TRUE, !NA is NA.
INSTANTIATE_TEST_SUITE_P(Missing, TrueCondition,
                         testing::Values(Case{"age is missing", {2}}, Case{"age is not missing", {0, 1, 3, 4}},
                                         Case{"arm is missing", {3}}, Case{"code is missing", {0}},
                                         Case{"ok is missing", {4}}, Case{"!(age > 40)", {0, 4}},
                                         Case{"not age > 40", {0, 4}}, Case{"age > 40 | arm = \"high\"", {1, 2, 3}},
                                         Case{"age > 40 & arm = \"low\"", {1}},
                                         Case{"!(age > 40 & arm = \"low\")", {0, 2, 4}},
                                         Case{"arm not in (\"placebo\")", {0, 1, 2}}));

INSTANTIATE_TEST_SUITE_P(
    Rank, TrueCondition,
    testing::Values(Case{"age = 30 | age = 41 & arm = \"high\"", {0}},  // "and" binds more closely than "or"
                    Case{"(age = 30 | age = 41) & arm = \"low\"", {0, 1}},
                    Case{"age = 30 or age = 41 and not arm = \"high\"", {0, 1}},
                    Case{"age > 30 && dose > 1 || age = 30", {0, 3, 4}},
                    Case{"!age > 40 & arm = \"low\"", {0}}));  // "not" is of the comparison behind it

TEST(ACondition, ComparesWordsByTheOrderThatWasTold) {
    const char* ordered = R"({"fields": [{"name": "arm", "type": "string", "categories": ["placebo", "low", "high"],
        "categoriesOrdered": true}]})";
    EXPECT_EQ(RecordsFor("arm >= \"low\"", ordered), (Records{0, 1, 2}));
    EXPECT_EQ(RecordsFor("arm < \"low\"", ordered), (Records{4}));
}

TEST(ACondition, ComparesWordsThatAreDatesAsDates) {
    EXPECT_EQ(RecordsFor("day >= \"2024-02-05\"", "{}"), (Records{1, 3, 4}));
}

TEST(ACondition, NamesItsFields) {
    EXPECT_EQ(Condition("a > b & (c in (1, 2) | d is missing)").Names().size(), 4U);
}

// Whatever is typed is read or refused in one line, and what is read names records of the table.
RC_GTEST_PROP(ACondition, OfAnyWordsIsReadOrRefused, ()) {
    static const std::vector<std::string> kWords{
        "age", "arm", "ok", "40", "\"low\"", "'x'",     "=", "!=", "<",    ">=", "&",   "|",  "!", "not", "in",
        "(",   ")",   ",",  "is", "-",       "missing", "`", "~",  "true", "or", "and", ".5", "é", "%"};
    const auto places = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, static_cast<int>(kWords.size())));
    std::string condition;
    for (const int place : places) condition += kWords[static_cast<std::size_t>(place)] + " ";
    const Table table = TableOfText(kData, kFields);
    FieldNames names(table);
    try {
        for (const std::size_t record : Condition(condition).RecordsOf(table, names))
            RC_ASSERT(record < table.RowCount());
    } catch (const InputError& mistake) {
        RC_ASSERT(std::string(mistake.what()).find(": at column ") != std::string::npos);
    }
}

struct Refused {
    const char* condition;
    const char* mistake;
};

class RefusedCondition : public testing::TestWithParam<Refused> {};

TEST_P(RefusedCondition, SaysWhereAndWhatToType) {
    EXPECT_EQ(InputErrorOf([] { RecordsFor(GetParam().condition); }),
              "--where \"" + std::string(GetParam().condition) + "\": " + GetParam().mistake);
}

INSTANTIATE_TEST_SUITE_P(
    Conditions, RefusedCondition,
    testing::Values(
        Refused{"", "at column 1: nothing to compare; expected a comparison like age > 40"},
        Refused{"age >", "at column 6: expected a value and not the end"},
        Refused{"age > 40 &", "at column 11: expected a field and not the end"},
        Refused{"age > 40 arm", "at column 10: expected &, | or the end and not \"arm\""},
        Refused{"age > 40, ok = true", "at column 9: expected & for both or | for either and not \",\""},
        Refused{"(age > 40", "at column 10: expected ) for the ( at column 1 and not the end"},
        Refused{"age > 40)", "at column 9: a parenthesis is closed that none opens"},
        Refused{"40 < age < 50", "at column 10: a comparison has two sides; type both parts with & between them"},
        Refused{"1 = 1", "at column 3: compares two values; expected a field on one side"},
        Refused{"ok", "at column 3: expected a comparison behind ok, like ok = true or ok > 40, and not the end"},
        Refused{"age <> 40", "at column 5: expected != and not \"<>\""},
        Refused{"age + 1 > 40",
                "at column 5: there is no arithmetic; a name with blanks or signs stands in backticks: "
                "`age+..`"},
        Refused{"two words > 1",
                "at column 5: expected a comparison behind two and not \"words\"; a name with blanks "
                "stands in backticks"},
        Refused{"agee > 40", "at column 1: the table has no field \"agee\"; did you mean age?"},
        Refused{"arm != low",
                "at column 8: the table has no field \"low\"; a category stands in quotes: arm != "
                "\"low\""},
        Refused{"arm in (low)",
                "at column 9: the table has no field \"low\"; a category stands in quotes: arm in "
                "(\"low\", ..)"},
        Refused{"arm = \"lwo\"", "at column 7: arm has no category \"lwo\"; did you mean low?"},
        Refused{"arm = \"zzz\"", "at column 7: arm has no category \"zzz\"; it has \"high\", \"low\" and \"placebo\""},
        Refused{"arm > \"low\"",
                "at column 7: arm has words without an order; tell it by --order arm=LOWEST,..,HIGHEST"},
        Refused{"age > \"old\"", "at column 7: age is compared with a decimal number and not with \"old\""},
        Refused{"day > \"5.1.2024\"", "at column 7: day is compared with a date YYYY-MM-DD and not with \"5.1.2024\""},
        Refused{"arm = \"low", "at column 7: the quote \" is not closed"},
        Refused{"age = NA", "at column 5: nothing is equal to a missing value; type age is missing"},
        Refused{"age != NA", "at column 5: nothing is equal to a missing value; type age is not missing"},
        Refused{"is.na(age)", "at column 1: there are no functions; type age is missing"},
        Refused{"!is.na(age)", "at column 2: there are no functions; type age is missing"},
        Refused{"age is empty", "at column 8: expected missing or not missing behind is, and not \"empty\""},
        Refused{"arm %in% c('low')", "at column 5: expected in: arm in (\"a\", \"b\")"},
        Refused{"age > 4.0.1", "at column 7: \"4.0.1\" is no number; a text stands in quotes"},
        Refused{"arm = age",
                "at column 7: two fields are compared by their numbers, and arm has words; a text stands "
                "in quotes"}));

}  // namespace
}  // namespace tarn
