#include "host/report/Remarks.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;

/// A Moses test of m control and n other cases with h cases trimmed from each end.
TestReading Moses(const std::string& m, const std::string& n, const std::string& all, const std::string& trimmed) {
    const std::string total = std::to_string(std::stoi(m) + std::stoi(n));
    const auto group = [](int number, const std::string& size) {
        const std::string text = std::to_string(number);
        return Table("Group" + text, Row("GroupIndex", text) + Row("N", size));
    };
    const std::string test = TestElement(
        "IMoses", "Independent_Samples", "reject",
        Condition("DefaultAllDistinctValuesUsed_I_Moses_2", {"0", "2"}) + group(0, m) + group(1, n) +
            Table("StatisticsResult",
                  Row("TotalN", total) + Row("OutliersTrimmedFromEachEnd", "1") +
                      Table("ObservedControlGroup", Row("TestStatistic", all) + Row("ExactSig1Tailed", "0")) +
                      Table("TrimmedControlGroup", Row("TestStatistic", trimmed) + Row("ExactSig1Tailed", "0"))));
    const ResultDocument document = ReadResult(DocumentOf(test));
    return ReadTest(document.tests.at(0), document, MessageCatalogue::English());
}

// 5 control cases among 9 stand side by side in 5 of 126 arrangements (by enumeration): .0397. Without the outermost
// two the 3 that are left do in 35 of 126 (the 4 others in the 4 gaps at the ends, 7 over 4 ways): .278.
TEST(Remarks, SayWhereASignificanceOfMosesIsBelowTheSmallestPossible) {
    const TestReading reading = Moses("5", "4", "4", "3");
    ASSERT_EQ(reading.remarks.size(), 2u);
    EXPECT_NE(reading.remarks[0].find("(all cases) of 4"), std::string::npos) << reading.remarks[0];
    EXPECT_NE(reading.remarks[0].find("can't be below 0.0397"), std::string::npos) << reading.remarks[0];
    EXPECT_NE(reading.remarks[1].find("(trimmed) of 3"), std::string::npos) << reading.remarks[1];
    EXPECT_NE(reading.remarks[1].find("can't be below 0.278"), std::string::npos) << reading.remarks[1];
}

TEST(Remarks, SayNothingOfASpanWithAnotherCaseInIt) {
    EXPECT_TRUE(Moses("5", "4", "6", "4").remarks.empty());
}

}  // namespace
}  // namespace tarn
