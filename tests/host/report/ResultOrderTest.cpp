#include "host/report/ResultOrder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;

std::string Named(const std::string& name, const std::string& classification, const std::string& field) {
    return TestElement(name, classification, "retain", Condition("key", {field, "2"}));
}

std::string InOrder(const std::string& tests, const AskedOrder& order) {
    ResultDocument document = ReadResult(DocumentOf(tests));
    PutInOrder(document, order);
    std::string names;
    for (const TestResult& test : document.tests) {
        names += (names.empty() ? "" : " ") + test.name + ":" + test.parameters.front();
    }
    return names;
}

TEST(ResultOrder, IsThatOfFamiliesThenFieldsThenTests) {
    const std::string tests = Named("ORuns", "One_Sample", "0") + Named("IMedian", "Independent_Samples", "0") +
                              Named("IMedian", "Independent_Samples", "1") +
                              Named("IMannWhitneyU", "Independent_Samples", "0") +
                              Named("IMannWhitneyU", "Independent_Samples", "1");
    const AskedOrder order{{{"Independent_Samples", {"v", "u"}}, {"One_Sample", {"u"}}}, {"IMannWhitneyU", "IMedian"}};
    EXPECT_EQ(InOrder(tests, order), "IMannWhitneyU:1 IMedian:1 IMannWhitneyU:0 IMedian:0 ORuns:0");
}

TEST(ResultOrder, LeavesTheIntervalsBehindTheirBinomialTest) {
    const std::string tests = Named("OBinomial", "One_Sample", "2") + Named("OChiSquare", "One_Sample", "2") +
                              Named("OEstimateConfidenceInterval", "One_Sample", "2");
    EXPECT_EQ(InOrder(tests, {{{"One_Sample", {"arm"}}}, {"OBinomial", "OChiSquare"}}),
              "OBinomial:2 OEstimateConfidenceInterval:2 OChiSquare:2");
}

TEST(ResultOrder, KeepsThatOfTheDocumentWhereNothingIsAsked) {
    const std::string tests = Named("OChiSquare", "One_Sample", "2") + Named("ORuns", "One_Sample", "0");
    EXPECT_EQ(InOrder(tests, {}), "OChiSquare:2 ORuns:0");
}

}  // namespace
}  // namespace tarn
