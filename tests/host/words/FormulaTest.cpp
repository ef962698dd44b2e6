#include "host/words/Formula.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "tests/host/InputErrorOf.h"

namespace tarn {
namespace {

std::vector<std::string> ValuesOf(const Formula& formula) {
    std::vector<std::string> names;
    for (const Word& word : formula.values) names.push_back(word.text);
    return names;
}

using Names = std::vector<std::string>;

TEST(AFormula, NamesFieldsAndGroups) {
    const Formula formula = ParseFormula("score ~ arm");
    EXPECT_EQ(formula.kind, FormulaKind::kGroups);
    EXPECT_EQ(ValuesOf(formula), Names{"score"});
    EXPECT_EQ(formula.by.text, "arm");
    EXPECT_EQ(formula.by.column, 9U);
}

TEST(AFormula, NamesSeveralFieldsAndPatterns) {
    EXPECT_EQ(ValuesOf(ParseFormula("a+b ~ arm")), (Names{"a", "b"}));
    EXPECT_EQ(ValuesOf(ParseFormula("x* + all~arm")), (Names{"x*", "all"}));
}

TEST(AFormula, NamesRepeatedMeasures) {
    const Formula formula = ParseFormula("score ~ cond | subject");
    EXPECT_EQ(formula.kind, FormulaKind::kRepeated);
    EXPECT_EQ(formula.by.text, "cond");
    EXPECT_EQ(formula.subject.text, "subject");
}

TEST(AFormula, NamesOneSample) {
    EXPECT_EQ(ParseFormula("score ~ 1").kind, FormulaKind::kOneSample);
}

TEST(AFormula, TakesNamesInQuotes) {
    EXPECT_EQ(ValuesOf(ParseFormula("`hours after` + \"1st-try\" ~ arm")), (Names{"hours after", "1st-try"}));
    EXPECT_EQ(ParseFormula("a ~ `the ~ arm`").by.text, "the ~ arm");
    EXPECT_EQ(ValuesOf(ParseFormula("1st ~ arm")), Names{"1st"});
    EXPECT_EQ(ValuesOf(ParseFormula("größe ~ arm")), Names{"größe"});
}

RC_GTEST_PROP(AFormula, OfAnyWordsIsReadOrRefused, ()) {
    static const std::vector<std::string> kWords{"score", "arm",   "~", "|", "+",   "1",     "`a b`", "(",
                                                 ")",     "*",     ":", "/", "log", "Error", "x*",    "\"q\"",
                                                 "-",     "cbind", ",", ".", "=",   "'"};
    const auto places = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, static_cast<int>(kWords.size())));
    std::string text;
    for (const int place : places) text += kWords[static_cast<std::size_t>(place)] + " ";
    try {
        const Formula formula = ParseFormula(text);
        RC_ASSERT(!formula.values.empty());
        RC_ASSERT((formula.kind == FormulaKind::kOneSample) == formula.by.text.empty());
    } catch (const InputError& mistake) {
        RC_ASSERT(std::string(mistake.what()).find(": at column ") != std::string::npos);
    }
}

struct Refused {
    const char* formula;
    const char* mistake;
};

class RefusedFormula : public testing::TestWithParam<Refused> {};

TEST_P(RefusedFormula, SaysWhereAndWhatToType) {
    const std::string mistake = InputErrorOf([] { ParseFormula(GetParam().formula); });
    EXPECT_EQ(mistake, "formula \"" + std::string(GetParam().formula) + "\": " + GetParam().mistake);
}

INSTANTIATE_TEST_SUITE_P(
    Formulas, RefusedFormula,
    testing::Values(
        Refused{"score ~",
                "at column 8: nothing behind ~; expected 'score ~ arm' for groups, 'score ~ cond | subject' "
                "for repeated measures or 'score ~ 1'"},
        Refused{"", "at column 1: expected a field and not the end"},
        Refused{"score",
                "at column 6: no ~ behind the fields; for one sample type 'score ~ 1', for groups 'score ~ "
                "FIELD'"},
        Refused{"~ score", "at column 1: expected a field before ~; for one sample type 'score ~ 1'"},
        Refused{"score = arm", "at column 7: expected ~ and not \"=\""},
        Refused{"score ~ 0", "at column 9: expected a field or 1 and not \"0\"; for one sample type 'score ~ 1'"},
        Refused{"größe arm ~ x",
                "at column 7: expected + or ~ and not \"arm\"; a name with blanks or signs stands in "
                "backticks: `größearm..`"},
        Refused{"after - before ~ 1",
                "at column 7: a difference of two fields is tested by --related before,after; a "
                "name with signs stands in backticks: `after-before`"},
        Refused{"score ~ `arm", "at column 9: the quote ` is not closed"},
        Refused{"score ~ arm + sex",
                "at column 13: one field has the groups; for each sex by itself type 'score ~ arm' "
                "--split sex"},
        Refused{"score ~ arm * sex",
                "at column 13: one field has the groups; for each sex by itself type 'score ~ arm' "
                "--split sex"},
        Refused{"score ~ arm*sex",
                "at column 9: one field has the groups; for each sex by itself type 'score ~ arm' "
                "--split sex"},
        Refused{"score ~ arm:sex",
                "at column 12: one field has the groups; for each sex by itself type 'score ~ arm' "
                "--split sex"},
        Refused{"score ~ cond + (1 | subject)",
                "at column 14: the field of the subjects stands behind |: type 'score ~ "
                "cond | subject'"},
        Refused{"score ~ cond + Error(subject/cond)",
                "at column 14: the field of the subjects stands behind |: type "
                "'score ~ cond | subject'"},
        Refused{"a + b ~ cond | subject",
                "at column 5: repeated measures are of one field at a time: type 'a ~ cond | "
                "subject'"},
        Refused{"cbind(a, b) ~ arm", "at column 1: several fields stand with + between them: type 'a + b ~ arm'"},
        Refused{"Pair(pre, post) ~ 1", "at column 1: a pair of fields has no formula: type --related pre,post"},
        Refused{"log(score) ~ arm",
                "at column 1: there are no functions, and tests by ranks don't need log: type "
                "'score ~ arm'"},
        Refused{"score ~ factor(arm)",
                "at column 9: there are no functions, and the field on the right is taken for "
                "categories by itself: type 'score ~ arm'"},
        Refused{"f(x) ~ arm", "at column 1: there are no functions; expected a field"},
        Refused{"score ~ cond | subject | site", "at column 24: expected the end and not \"|\""},
        Refused{". ~ arm", "at column 1: expected fields; all of them are called all"}));

}  // namespace
}  // namespace tarn
