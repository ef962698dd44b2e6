#include "host/ResultSummary.h"

#include <gtest/gtest.h>

#include <string>

#include "host/InputError.h"

namespace {

/// A document over the fields "u" and "v" with these test elements.
std::string DocumentOf(const std::string& tests) {
    return "<Tabulon><Extension><TARNOutput><DataDictionary><DataField name=\"u\"/><DataField name=\"v\"/>"
           "</DataDictionary><NonParametricTests>" +
           tests + "</NonParametricTests></TARNOutput></Extension></Tabulon>";
}

std::string Condition(const std::string& first, const std::string& second) {
    return "<StructuredTable name=\"Condition\"><Attribute name=\"%0\" value=\"" + first +
           "\"/><Attribute name=\"%1\" value=\"" + second + "\"/></StructuredTable>";
}

std::string Statistics(const std::string& rows) {
    return "<StructuredTable name=\"StatisticsResult\">" + rows + "</StructuredTable>";
}

std::string Row(const std::string& name, const std::string& value) {
    return "<Attribute name=\"" + name + "\" value=\"" + value + "\"/>";
}

std::string TestElement(const std::string& decision, const std::string& content) {
    return "<Algorithm name=\"RSign\" decision=\"" + decision + "\">" + content + "</Algorithm>";
}

TEST(ResultSummary, ShowsTheExactSignificanceWhereThereIsOne) {
    const std::string document = DocumentOf(TestElement(
        "retain",
        Condition("1", "0") + Statistics(Row("TotalN", "12") + Row("TestStatistic", "8") +
                                         Row("AsymptoticSig2Tailed", "0.043") + Row("ExactSig2Tailed", "0.0574"))));
    EXPECT_EQ(tarn::SummarizeDocument(document),
              "Test     Fields   N  Statistic      p  kind   Decision\n"
              "1 RSign  v, u    12          8  0.057  exact  retain\n");
    EXPECT_EQ(tarn::CountTests(document), 1u);
}

TEST(ResultSummary, TinySignificanceIsABoundAndAnErrorHasItsMessages) {
    const std::string messages = "<StructuredTable name=\"WarningMessages\"><StructuredTable name=\"Message\">" +
                                 Row("code", "220903") + Row("type", "error") + Row("paramNum", "1") + Row("%0", "w") +
                                 "</StructuredTable></StructuredTable>";
    const std::string document = DocumentOf(
        TestElement("reject", Condition("0", "1") + Statistics(Row("TotalN", "9") + Row("TestStatistic", "2.5") +
                                                               Row("AsymptoticSig2Tailed", "0.0009999"))) +
        TestElement("unknown", Condition("__MISSING__", "7") + messages));
    EXPECT_EQ(tarn::SummarizeDocument(document),
              "Test     Fields  N  Statistic       p  kind        Decision\n"
              "1 RSign  u, v    9        2.5  < .001  asymptotic  reject\n"
              "2 RSign  ?, ?                                      unknown\n"
              "2 RSign: 220903 error: w\n");
}

TEST(ResultSummary, WithoutTestsSaysSo) {
    EXPECT_EQ(tarn::SummarizeDocument(DocumentOf("")), "No test of the request is known.\n");
    EXPECT_EQ(tarn::CountTests(DocumentOf("")), 0u);
}

TEST(ResultSummary, RefusesWhatIsNoResultDocument) {
    EXPECT_THROW(tarn::SummarizeDocument("<Tabulon"), tarn::InputError);
    EXPECT_THROW(tarn::SummarizeDocument("<html/>"), tarn::InputError);
}

}  // namespace
