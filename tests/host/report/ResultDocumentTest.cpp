#include "host/report/ResultDocument.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/host/InputErrorOf.h"
#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;
using Texts = std::vector<std::string>;

TEST(ResultDocument, HoldsEverythingOfTheDocument) {
    const std::string info =
        "<FieldInfo varIndex=\"1\">" + Table("ContinuousDistribution", Row("Mean", "2.25")) + "</FieldInfo>";
    const ResultDocument result = ReadResult(DocumentOf(SignTest(), info));
    EXPECT_EQ(result.application + " " + result.applicationVersion, "tarn 0.1.0");
    EXPECT_EQ(result.sigLevel + " " + result.confidenceLevel + " " + result.missingTreatment, "0.05 0.95 analysis");
    ASSERT_EQ(result.counts.size(), 2u);
    EXPECT_EQ(result.counts[0].first + "=" + result.counts[0].second, "totalFreq=9.5");
    ASSERT_EQ(result.fields.size(), 3u);
    EXPECT_EQ(result.fields[1].label, "the second");
    EXPECT_EQ(result.fields[2].categories[0].Shown(), "old");
    EXPECT_EQ(result.fields[2].categories[2].Shown(), "3");
    ASSERT_EQ(result.tests.size(), 1u);
    const TestResult& test = result.tests[0];
    EXPECT_EQ(test.name + " " + test.type + " " + test.decision, "RSign hypothesis_test retain");
    EXPECT_EQ(test.conditionKey, "R_Sign_2");
    EXPECT_EQ(test.parameters, (Texts{"1", "0"}));
    ASSERT_EQ(test.messages.size(), 1u);
    EXPECT_EQ(test.messages[0].code, 220916);
    EXPECT_FALSE(test.HasError());
    ASSERT_NE(test.content.Table("StatisticsResult"), nullptr);
    EXPECT_EQ(test.content.Table("StatisticsResult")->Value("TestStatistic"), "8");
    EXPECT_EQ(test.content.Table("StatisticsResult")->Find("Median"), nullptr);
    ASSERT_EQ(result.descriptives.size(), 1u);
    EXPECT_EQ(result.descriptives[0].Value("varIndex") + " " + result.descriptives[0].Value("Mean"), "1 2.25");
}

TEST(ResultDocument, ReadsTheParametersOfAMessageByTheirKinds) {
    const ResultDocument result = ReadResult(
        DocumentOf(TestElement("RSign", "Related_Samples", "unknown",
                               Table("WarningMessages", Message("220903", "error", {"w", "x"}, Row("group", "0;1"))))));
    const ResultMessage& message = result.tests.at(0).messages.at(0);
    EXPECT_EQ(message.parameters, (Texts{"w", "x"}));
    ASSERT_EQ(message.named.size(), 1u);
    EXPECT_EQ(message.named[0].first + "=" + message.named[0].second, "group=0;1");
    EXPECT_TRUE(result.tests[0].HasError());
}

TEST(ResultDocument, FindsFieldsAndCategoriesByTheirIndices) {
    const ResultDocument result = ReadResult(DocumentOf(""));
    ASSERT_NE(result.FieldAt("2"), nullptr);
    EXPECT_EQ(result.FieldAt("2")->name, "arm");
    for (const char* index : {"3", "-1", "", "__MISSING__", "u"}) EXPECT_EQ(result.FieldAt(index), nullptr) << index;
    ASSERT_NE(result.fields[2].CategoryAt("1"), nullptr);
    EXPECT_EQ(*result.fields[2].CategoryAt("1"), "new");
    EXPECT_EQ(result.fields[2].CategoryAt("3"), nullptr);
}

// The intervals of a proportion count the copies of ordinal fields that other tests took as numbers: field 2 of the
// execution is field 1 of the document when field 0 has a copy.
TEST(ResultDocument, NamesTheFieldOfIntervalsAmongTheFieldsOfTheDocument) {
    const std::string interval = TestElement("OEstimateConfidenceInterval", "One_Sample", "",
                                             Condition("ACutPointIsSpecified_O_Binomial_2", {"2", "1"}));
    const std::string copied = TestElement("RSign", "Related_Samples", "retain",
                                           Table("Condition", Row("ConditionKey", "R_Sign_2") + Row("%0", "0") +
                                                                  Row("%1", "1") + Row("OrdinalTreatedAsCont", "0")));
    EXPECT_EQ(ReadResult(DocumentOf(interval)).tests[0].parameters[0], "2");
    EXPECT_EQ(ReadResult(DocumentOf(copied + interval)).tests[1].parameters[0], "1");
}

TEST(ResultDocument, TellsWhatIsNoDocument) {
    EXPECT_EQ(InputErrorOf([] { ReadResult("<html/>", "page.html"); }),
              "page.html: no \"TARNOutput\" with \"NonParametricTests\" in it; expected a result document");
    const std::string cut = InputErrorOf([] { ReadResult("<Tabulon", "cut.xml"); });
    EXPECT_TRUE(cut.starts_with("cut.xml: not well-formed XML at byte ")) << cut;
    EXPECT_TRUE(cut.ends_with("; expected a result document")) << cut;
}

TEST(ResultDocument, ReadsListsAndNumbers) {
    EXPECT_EQ(SplitList(""), Texts{});
    EXPECT_EQ(SplitList("a"), Texts{"a"});
    EXPECT_EQ(SplitList("a;;b;"), (Texts{"a", "", "b", ""}));
    EXPECT_EQ(JoinList(Texts{"a", "", "b"}, ";"), "a;;b");
    double number = 0;
    EXPECT_TRUE(ReadNumber("-1.5e-3", number));
    EXPECT_EQ(number, -1.5e-3);
    EXPECT_TRUE(ReadNumber("nan", number));
    EXPECT_TRUE(std::isnan(number));
    EXPECT_TRUE(ReadNumber("-inf", number));
    EXPECT_EQ(number, -HUGE_VAL);
    EXPECT_FALSE(ReadNumber(">0.2", number));
    EXPECT_EQ(ShortNumber("0.866025403784439"), "0.866025");
    EXPECT_EQ(ShortNumber("12"), "12");
    EXPECT_EQ(ShortNumber("abc"), "abc");
}

}  // namespace
}  // namespace tarn
