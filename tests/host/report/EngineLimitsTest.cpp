// Where the engine's fixed widths end, as the outputs tell it. Each bound is worked out from the width by hand: the
// last number of cases that a limit lets pass, and the first one that it doesn't.

#include "host/report/EngineLimits.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/report/CsvReport.h"
#include "host/report/JsonReport.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/TestReading.h"
#include "host/report/TextReport.h"
#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;
using Strings = std::vector<std::string>;

/// A document of records whose weights add up to `weight`.
ResultDocument WeightedDocument(const std::string& test, const std::string& weight = "100",
                                const std::string& descriptives = "") {
    std::string document = DocumentOf(test, descriptives);
    document.replace(document.find("9.5"), 3, weight);
    return ReadResult(document);
}

Strings KeysOf(const ResultDocument& document) {
    Strings keys;
    const TestReading reading = ReadTest(document.tests.front(), document, MessageCatalogue::English());
    for (const EngineLimit* limit : reading.limits) keys.emplace_back(limit->key);
    return keys;
}

std::string WilcoxonPairs(const std::string& positive, const std::string& negative) {
    return TestElement(
        "RWilcoxonSignedRanks", "Related_Samples", "retain",
        Condition("R_WilcoxonSignedRanks_2", {"0", "1"}) +
            Table("ContinuousDistribution",
                  Row("NegativeDifferences", negative) + Row("Ties", "90000") + Row("PositiveDifferences", positive)) +
            Table("StatisticsResult", Row("TotalN", "100000") + Row("TestStatistic", "536865735") +
                                          Row("StandardError", "nan") + Row("StandardTestStatistic", "nan") +
                                          Row("AsymptoticSig2Tailed", "nan")));
}

// 46,340 * 46,341 = 2,147,441,940 is the last product of its kind below 2^31.
TEST(EngineLimits, WilcoxonPairsByTheDifferencesThatAreNotZero) {
    EXPECT_EQ(KeysOf(WeightedDocument(WilcoxonPairs("40000", "6340"))), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(WilcoxonPairs("40000", "6341"))), Strings{"wilcoxon-pairs"});
}

std::string FieldInfo(const std::string& index, const std::string& n) {
    return "<FieldInfo varIndex=\"" + index + "\">" + Table("ContinuousDistribution", Row("TotalN", n)) +
           "</FieldInfo>";
}

// An estimate tells no number of cases: the smallest of those of the run and of its fields bounds it.
TEST(EngineLimits, HodgesLehmannPairsByTheCasesOfTheFields) {
    const std::string test =
        TestElement("RHodgesLehmannEstimatePairs", "Related_Samples", "",
                    Condition("R_HodgesLehman_2", {"0", "1"}) +
                        Table("StatisticsResult",
                              Row("Estimate", "1") + Table("Asymptotic", Row("Lower", "-5") + Row("Upper", "-4"))));
    const Strings passed{"hodges-lehmann-pairs"};
    EXPECT_EQ(KeysOf(WeightedDocument(test, "46340")), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(test, "46341")), passed);
    EXPECT_EQ(KeysOf(WeightedDocument(test, "90000", FieldInfo("0", "80000") + FieldInfo("1", "46340"))), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(test, "90000", FieldInfo("0", "80000") + FieldInfo("1", "46341"))), passed);
}

// 2,097,152^3 is 2^63, from which the same number is taken away.
TEST(EngineLimits, HodgesLehmannGroupsByTheCasesOfTheField) {
    const std::string test =
        TestElement("IHodgesLehmannEstimateGroups", "Independent_Samples", "",
                    Condition("AllDistinctValuesUsed_I_HodgesLehman_2", {"0", "2"}) +
                        Table("StatisticsResult",
                              Row("Estimate", "1") + Table("Asymptotic", Row("Lower", "0") + Row("Upper", "2"))));
    EXPECT_EQ(KeysOf(WeightedDocument(test, "2097152")), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(test, "2097153")), Strings{"hodges-lehmann-groups"});
}

// For 3 fields the product is 24 n: 24 * 89,478,485 = 2,147,483,640.
TEST(EngineLimits, RankedRowsByTheProductOfFieldsAndCases) {
    for (const char* name : {"RFriedmansTwoWayByRanks", "RKendallsCoefficient"}) {
        const auto test = [&](const std::string& n) {
            return TestElement(name, "Related_Samples", "retain",
                               Condition("R_Friedman_1", {"0;1;2"}) +
                                   Table("StatisticsResult", Row("TotalN", n) + Row("TestStatistic", "1")));
        };
        EXPECT_EQ(KeysOf(WeightedDocument(test("89478485"))), Strings{}) << name;
        EXPECT_EQ(KeysOf(WeightedDocument(test("89478486"))), Strings{"ranked-rows"}) << name;
    }
}

std::string Cochran(const std::string& n, const Strings& lines, const std::string& pairs = "") {
    return TestElement(
        "RCochransQ", "Related_Samples", "retain",
        Condition("CategoryListsAreSpecified_R_CochransQ_1", {"0;1;2"}) +
            Table("TwoClassComparison", SimpleTable("Content", "0;1;2", "0;1", lines)) +
            Table("StatisticsResult", Row("TotalN", n) + Row("TestStatistic", "1") + Row("AsymptoticSig2Tailed", "1")) +
            pairs);
}

// With shares of 50 % that are up to 51 %, k times the successes are up to 3 * 3 * 0.51 n = 4.59 n: 2^31 from
// n = 467,861,358 on; the squares, up to 3 * (0.01 n)^2, reach 2^32 at n = 3,783,722.7.
// With shares of 0, 50 and 100 % the squares are up to (0.51^2 + 0.51^2 + 1.01^2) n^2 = 1.5403 n^2: n = 52,805.3.
TEST(EngineLimits, CochransQByTheMostThatTheSharesCanBe) {
    const Strings alike{"50;50", "50;50", "50;50"};
    EXPECT_EQ(KeysOf(WeightedDocument(Cochran("3783722", alike))), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(Cochran("3783723", alike))), Strings{"cochran"});
    const Strings apart{"0;100", "50;50", "100;0"};
    EXPECT_EQ(KeysOf(WeightedDocument(Cochran("52805", apart))), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(Cochran("52806", apart))), Strings{"cochran"});
}

// 65,536^2 = 2^32.
TEST(EngineLimits, CochransPairsByTheSquareOfTheCases) {
    const std::string pairs =
        Table("PairwiseResult", SimpleTable("PairwiseInfo", "", "IndexOrder;Value", {"0;1;2", "1;2;3"}) +
                                    SimpleTable("Content", "", "", {"0;1;0.5;inf;0;1;1"}));
    const Strings alike{"50;50", "50;50", "50;50"};
    EXPECT_EQ(KeysOf(WeightedDocument(Cochran("65535", alike, pairs))), Strings{});
    const ResultDocument document = WeightedDocument(Cochran("65536", alike, pairs));
    EXPECT_EQ(KeysOf(document), Strings{"cochran-pairs"});
    EXPECT_EQ(KeysOf(WeightedDocument(Cochran("65536", alike))), Strings{}) << "there are no pairs";
    EXPECT_NE(TextReport(ReadAll(document, MessageCatalogue::English()), MessageCatalogue::English(), {})
                  .find("   Pairs, standard errors and p beyond the engine's range\n"),
              std::string::npos);
    EXPECT_NE(CsvReport(ReadAll(document, MessageCatalogue::English()), MessageCatalogue::English())
                  .find(",std_error;z;p_value;adj_p_value,"),
              std::string::npos);
}

std::string KolmogorovSmirnov(const std::string& n1, const std::string& n2) {
    return TestElement("IKolmogorovSmirnov", "Independent_Samples", "retain",
                       Condition("DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2", {"0", "2"}) +
                           Table("StatisticsResult", Row("TotalN", "131072") + Row("TestStatistic", "1")) +
                           Table("Group0", Row("GroupIndex", "0") + Row("N", n1)) +
                           Table("Group1", Row("GroupIndex", "1") + Row("N", n2)));
}

TEST(EngineLimits, KolmogorovSmirnovByTheProductOfTheGroups) {
    EXPECT_EQ(KeysOf(WeightedDocument(KolmogorovSmirnov("65536", "65535"))), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(KolmogorovSmirnov("65536", "65536"))), Strings{"kolmogorov-smirnov-groups"});
}

// 3 * 715,827,881 + 3 = 2,147,483,646.
TEST(EngineLimits, KruskalWallisByThreeTimesTheCases) {
    const auto test = [](const std::string& n) {
        return TestElement("IKruskalWallis", "Independent_Samples", "retain",
                           Condition("DefaultAllDistinctValuesUsed_I_KruskalWallis_2", {"0", "2"}) +
                               Table("StatisticsResult", Row("TotalN", n) + Row("TestStatistic", "1")));
    };
    EXPECT_EQ(KeysOf(WeightedDocument(test("715827881"))), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(test("715827882"))), Strings{"kruskal-wallis"});
}

TEST(EngineLimits, EveryTestByTheSumOfTheWeights) {
    EXPECT_EQ(KeysOf(WeightedDocument(SignTest(), "2147483647")), Strings{});
    EXPECT_EQ(KeysOf(WeightedDocument(SignTest(), "2147483648")), Strings{"case-counts"});
}

// A negative weight is subtracted from the counts of a plan's run.
TEST(EngineLimits, CountsBelowZeroAreNone) {
    std::string test = SignTest();
    const std::string n = Row("TotalN", "12");
    test.replace(test.find(n), n.size(), Row("TotalN", "-3"));
    EXPECT_EQ(KeysOf(WeightedDocument(test)), Strings{"case-counts"});
}

TEST(EngineLimits, ATestThatWasNotDoneHasNoNumberToDoubt) {
    const std::string failed =
        TestElement("RSign", "Related_Samples", "unknown",
                    Condition("R_Sign_2", {"0", "7"}) + Table("WarningMessages", Message("220903", "error", {"w"})));
    EXPECT_EQ(KeysOf(WeightedDocument(failed, "2147483648")), Strings{});
}

TEST(EngineLimits, EachHasASentence) {
    for (const EngineLimit& limit : EngineLimits()) {
        EXPECT_NE(MessageCatalogue::English().Limit(limit.key), nullptr) << limit.key;
        EXPECT_FALSE(limit.quantities.empty()) << limit.key;
    }
}

// ---- In the outputs ----

TEST(EngineLimits, StandBesideTheNumberInTheText) {
    MessageCatalogue texts;
    texts.Add(R"({"limits": {"wilcoxon-pairs": "it wraps"},
                  "labels": {"PositiveDifferences": "positive differences",
                             "NegativeDifferences": "negative differences", "Ties": "ties"}})",
              "the texts of the tests");
    const ResultDocument document = WeightedDocument(WilcoxonPairs("9000", "90000"));
    EXPECT_EQ(TextReport(ReadAll(document, texts), texts, {}),
              "1. RWilcoxonSignedRanks: u, v\n"
              "   H0: R_WilcoxonSignedRanks_2\n"
              "   N: 100000\n"
              "   Statistic             536865735\n"
              "   Standard error        undefined  beyond the engine's range\n"
              "   Standardized          undefined  v minus u, beyond the engine's range\n"
              "   p                     undefined  asymptotic, decides, beyond the engine's range\n"
              "   Positive differences  9000       v above u\n"
              "   Negative differences  90000      v below u\n"
              "   Ties                  90000\n"
              "   Decision: none, as p is beyond the engine's range\n"
              "   Beyond the engine's range: it wraps\n");
    EXPECT_TRUE(ShortReport(ReadAll(document, texts), texts)
                    .ends_with("1 RWilcoxonSignedRanks: Beyond the engine's range: it wraps\n"))
        << ShortReport(ReadAll(document, texts), texts);
}

TEST(EngineLimits, AreToldInJsonAndCsv) {
    const ResultDocument document = WeightedDocument(WilcoxonPairs("9000", "90000"));
    const nlohmann::json told =
        nlohmann::json::parse(JsonReport(ReadAll(document, MessageCatalogue::English()), MessageCatalogue::English()));
    const nlohmann::json& limit = told.at("tests").at(0).at("limits").at(0);
    EXPECT_EQ(limit.at("key"), "wilcoxon-pairs");
    EXPECT_EQ(limit.at("touches"), (nlohmann::json{"standard_error", "standardized", "p_value"}));
    EXPECT_EQ(limit.at("text"), *MessageCatalogue::English().Limit("wilcoxon-pairs"));
    EXPECT_EQ(told.at("tests").at(0).at("decision"), nullptr);
    EXPECT_EQ(told.at("tests").at(0).at("adjusted_p"), nullptr);
    // Neither a decision in front of the messages nor an adjusted significance behind the direction.
    const std::string csv = CsvReport(ReadAll(document, MessageCatalogue::English()), MessageCatalogue::English());
    EXPECT_TRUE(csv.ends_with(",,,,,,,,std_error;z;p_value,,v minus u,,,,,,,,,,\n")) << csv;
}

// ---- Extended arithmetic ----

ResultDocument Extended(ResultDocument document) {
    document.arithmetic = ArithmeticMode::kExtended;
    return document;
}

TEST(EngineLimits, OfExtendedArithmeticAreThoseOfDoubles) {
    EXPECT_EQ(KeysOf(Extended(WeightedDocument(WilcoxonPairs("9000", "90000")))), Strings{});
    EXPECT_EQ(KeysOf(Extended(WeightedDocument(WilcoxonPairs("9000", "90000"), "9007199254740992"))), Strings{});
    EXPECT_EQ(KeysOf(Extended(WeightedDocument(WilcoxonPairs("9000", "90000"), "9007199254740994"))),
              Strings{"case-counts-of-doubles"});
}

// A stored document says how it was made where that makes a difference.
TEST(EngineLimits, AreNoneOfADocumentThatSaysItIsExtended) {
    std::string document = DocumentOf(WilcoxonPairs("9000", "90000"), "");
    const std::string name = "name=\"RWilcoxonSignedRanks\"";
    document.insert(document.find(name) + name.size(), " arithmetic=\"extended textbook\"");
    const ResultReading reading = ReadAll(ReadResult(document), MessageCatalogue::English());
    EXPECT_EQ(reading.document.arithmetic, ArithmeticMode::kExtended);
    EXPECT_TRUE(reading.tests.front().limits.empty());
    EXPECT_TRUE(reading.tests.front().IsTextbook());
    EXPECT_TRUE(reading.tests.front().method.ends_with("; textbook.")) << reading.tests.front().method;
    const std::string text = TextReport(reading, MessageCatalogue::English(), {});
    EXPECT_TRUE(text.ends_with("\nArithmetic: extended\n")) << text;
    const std::string csv = CsvReport(reading, MessageCatalogue::English());
    EXPECT_TRUE(csv.ends_with(",extended textbook,,,,,,,\n")) << csv;
    const nlohmann::json told = nlohmann::json::parse(JsonReport(reading, MessageCatalogue::English()));
    EXPECT_EQ(told.at("arithmetic"), "extended");
    EXPECT_EQ(told.at("tests").at(0).at("arithmetic"), "extended textbook");
}

}  // namespace
}  // namespace tarn
