// The tests of one sample beyond the widths of their definition, in the textbook's form, and below the limits, where
// both ways are one. Reference values: mpmath 1.3 at 60 digits, from the formulas and distribution functions as they
// stand (limits of intervals by `findroot` on the integral of the density); by hand where it is said.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "support/QKVecValue.h"
#include "tests/harness/BothArithmetics.h"
#include "vocabulary/TestFacts.h"

namespace {

using harness::BothArithmetics;
using harness::Fields;
using harness::IsNear;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::RunBoth;
using harness::Table;
using harness::Texts;
using harness::WayOf;

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
Table Extremes(const Table& test) {
    return Statistics(test).Sub("MostExtremeDifferences");
}

QKSettings EntryOf(const std::string& field, const std::vector<std::pair<std::string, double>>& numbers = {},
                   const std::vector<std::pair<std::string, std::string>>& texts = {}) {
    QKSettings entry;
    entry.AddSetting("variableName", field);
    for (const auto& [key, value] : numbers) entry.AddSetting(key, value);
    for (const auto& [key, value] : texts) entry.AddSetting(key, value);
    return entry;
}

/// A continuous field and its weights.
BothArithmetics RunContinuous(const std::string& test, const QKSettings& entry, const Rows& rows) {
    Fields fields;
    fields.Continuous("x");
    if (rows.front().size() > 1) fields.Weight("w");
    return RunBoth(test, entry, fields, rows);
}

/// A field of so many categories and its weights.
BothArithmetics RunCategorical(const std::string& test, const QKSettings& entry, std::size_t categories,
                               const Rows& rows) {
    Fields fields;
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < categories; ++i) texts.push_back("c" + std::to_string(i));
    fields.Text("x", texts);
    if (rows.front().size() > 1) fields.Weight("w");
    return RunBoth(test, entry, fields, rows);
}

/// As many records of equal weight as it takes for a sum.
void AddWeighted(Rows& rows, double value, double sum) {
    for (; sum > 0; sum -= 1e9) rows.push_back({value, std::min(sum, 1e9)});
}

void ExpectTheSame(const BothArithmetics& both) {
    EXPECT_EQ(both.extended.text, both.defined.text);
}

// ---- Below the limits ----

/// Fields x, y continuous, a and b of two categories, c of three; w the weight, of whole numbers from 1 on.
struct Scene {
    Scene(unsigned seed, bool isWeighted, bool isTied) : random(seed) {
        fields.Continuous("x").Continuous("y").Numeric("a", {1, 2}).Numeric("b", {3, 7}).Numeric("c", {1, 2, 3});
        fields.Numeric("g", {1, 2});
        if (isWeighted) fields.Weight("w");
        const std::size_t count = 5 + random() % 300;
        for (std::size_t i = 0; i < count; ++i) {
            std::vector<double> row;
            for (int field = 0; field < 2; ++field) {
                const double drawn = std::normal_distribution<>(3, 2)(random);
                row.push_back(random() % 9 == 0 ? harness::kNone : isTied ? std::round(std::fabs(drawn)) : drawn);
            }
            for (const unsigned categories : {2U, 2U, 3U, 2U}) row.push_back(random() % categories);
            if (isWeighted) row.push_back(static_cast<double>(1 + random() % 5));
            rows.push_back(std::move(row));
        }
    }
    std::mt19937 random;
    Fields fields;
    Rows rows;
};

QKSettings AllTests() {
    QKSettings settings;
    settings.AddSetting("missingTreatment", "analysis");
    // First, so that a sorted test is planned and a median can be had.
    settings.AddSetting("IMannWhitneyU", EntryOf("y", {}, {{"groupVariableName", "g"}}));
    for (const char* const field : {"a", "b"}) {
        settings.AddSetting("OBinomial",
                            EntryOf(field, {{"testProbability", 0.4}}, {{"catVarClassFormation", "getFromData"}}));
        settings.AddSetting("ORuns", EntryOf(field, {}, {{"catVarClassFormation", "getFromData"}}));
        QKSettings intervals = EntryOf(field, {}, {{"catVarClassFormation", "getFromData"}});
        for (const char* const method : {"ClopperPearson", "Jeffreys"}) {
            intervals.AddSetting(std::string("isDo") + method, true);
        }
        settings.AddSetting("OEstimateConfidenceInterval", intervals);
    }
    settings.AddSetting("OChiSquare", EntryOf("c", {}, {{"classFormation", "getFromData"}}));
    for (const char* const field : {"x", "y"}) {
        settings.AddSetting("OBinomial", EntryOf(field, {{"testProbability", 0.5}, {"givenCutPoint", 3}},
                                                 {{"contVarClassFormation", "givenCutPoint"}}));
        for (const char* const cut : {"cutPointMedian", "cutPointMean"}) {
            settings.AddSetting("ORuns", EntryOf(field, {}, {{"contVarClassFormation", cut}}));
        }
        settings.AddSetting("OWilcoxonSignedRanks", EntryOf(field));
        for (const std::string_view test : Tests::kKolmogorovSmirnov.Settings()) {
            QKSettings entry = EntryOf(field);
            entry.AddSetting("isUseSample", true);
            settings.AddSetting(std::string(test), entry);
        }
    }
    return settings;
}

/// Whether a difference is of Kolmogorov's limit, which as defined is 0 from 8.993e-9 (z = 3.1) down and 1 from
/// 1 - 4.151e-7 (z = 0.27) up.
bool IsBeyondTheSeries(const std::string& line) {
    const std::size_t value = line.find("AsymptoticSig2Tailed/@value: ");
    if (value == std::string::npos) return false;
    const double significance = std::stod(line.substr(line.find(": ", value) + 2));
    return (line.ends_with(", expected 0") && significance < 8.993e-9) ||
           (line.ends_with(", expected 1") && significance > 1 - 4.151e-7);
}

// But for digits of tails and of sums that cancel, which `DocumentDifferences` allows.
TEST(ExtendedOneSample, BelowTheLimitsBothWaysAreOne) {
    for (unsigned seed = 1; seed <= 60; ++seed) {
        Scene scene(seed, seed % 2 == 0, seed % 3 == 0);
        const BothArithmetics both = RunBoth(AllTests(), scene.fields, scene.rows);
        std::vector<std::string> differences = harness::DocumentDifferences(both.defined.text, both.extended.text);
        std::erase_if(differences, IsBeyondTheSeries);
        EXPECT_EQ(differences, Texts({})) << seed;
        EXPECT_EQ(both.extended.text.find("arithmetic="), std::string::npos) << seed;
        ASSERT_FALSE(HasFailure());
    }
}

// ---- Binomial ----

QKSettings OfData(double probability = 0.5) {
    return EntryOf("x", {{"testProbability", probability}}, {{"catVarClassFormation", "getFromData"}});
}

TEST(ExtendedBinomial, TotalAt32BitsIsOneAndAboveItWraps) {
    ExpectTheSame(RunCategorical("OBinomial", OfData(), 2, {{0, 1073741824}, {1, 1073741823}}));

    const BothArithmetics above = RunCategorical("OBinomial", OfData(), 2, {{0, 1073781824}, {1, 1073701824}});
    EXPECT_EQ(above.Defined().Attribute("decision"), "unknown") << "of -2147483648 cases";
    const Table statistics = Statistics(above.Extended());
    EXPECT_EQ(statistics.Row("TotalN"), "2147483648");
    EXPECT_EQ(statistics.Row("TestStatistic"), "1073781824");
    EXPECT_TRUE(IsNear(statistics, "StandardError", 23170.475005920789));
    EXPECT_TRUE(IsNear(statistics, "StandardTestStatistic", 1.7263133358197820));
    EXPECT_TRUE(IsNear(statistics, "AsymptoticSig2Tailed", 0.084291057470202473));
    EXPECT_FALSE(statistics.HasRow("ExactSig2Tailed"));
    EXPECT_EQ(above.Extended().Sub("TwoClassComparison").SimpleRows("Content")[1], "50;50");
    EXPECT_EQ(WayOf(above.Extended()), "extended");
    EXPECT_EQ(above.extended.document.FieldInfo(0).Attribute("arithmetic"), "extended");
}

TEST(ExtendedBinomial, ClassWithinTheLimitOfATotalBeyondItIsCountedByTheRecordsToo) {
    Rows rows;
    AddWeighted(rows, 1, 500e9);
    for (int i = 0; i < 500; ++i) rows.push_back({2, 999999000});
    const QKSettings cut = EntryOf("x", {{"givenCutPoint", 1.5}}, {{"contVarClassFormation", "givenCutPoint"}});
    const BothArithmetics both = RunContinuous("OBinomial", cut, rows);
    const Table statistics = Statistics(both.Extended());
    EXPECT_EQ(statistics.Row("TotalN"), "999999500000");
    EXPECT_EQ(statistics.Row("TestStatistic"), "500000000000");
    EXPECT_TRUE(IsNear(statistics, "StandardTestStatistic", 0.49999912499979687));
    EXPECT_TRUE(IsNear(statistics, "AsymptoticSig2Tailed", 0.61707569356657343));
    EXPECT_EQ(WayOf(both.Extended()), "extended");
}

TEST(ExtendedBinomial, ThousandThousandMillionCasesHaveTwelveDigits) {
    Rows rows;
    AddWeighted(rows, 0, 300000200000);
    AddWeighted(rows, 1, 699999800000);
    const Table statistics = Statistics(RunCategorical("OBinomial", OfData(0.3), 2, rows).Extended());
    EXPECT_TRUE(IsNear(statistics, "StandardError", 458257.56949558400));
    EXPECT_TRUE(IsNear(statistics, "StandardTestStatistic", 0.43643468938253357));
    EXPECT_TRUE(IsNear(statistics, "AsymptoticSig1Tailed", 0.33126068750929750));
}

TEST(ExtendedBinomial, TailsHaveTheirDigitsDownToTheSmallest) {
    const BothArithmetics both = RunCategorical("OBinomial", OfData(), 2, {{0, 55866}, {1, 44134}});
    EXPECT_EQ(Statistics(both.Defined()).Row("AsymptoticSig2Tailed"), "0");
    EXPECT_TRUE(IsNear(Statistics(both.Extended()), "AsymptoticSig2Tailed", 3.1780374085038079e-301));
    EXPECT_EQ(WayOf(both.Extended()), "") << "only digits differ";
    EXPECT_TRUE(IsNear(Statistics(RunCategorical("OBinomial", OfData(), 2, {{0, 1532150}, {1, 1467850}}).Extended()),
                       "AsymptoticSig2Tailed", 1.1937813682662176e-301));
}

TEST(ExtendedBinomial, ExactUpperTailHasItsDigits) {  // by hand: 25 of 25 at 1e-9 are 1e-225
    const BothArithmetics both = RunCategorical("OBinomial", OfData(1e-9), 2, {{0, 25}, {1, 0}});
    EXPECT_EQ(Statistics(both.Defined()).Row("ExactSig1Tailed"), "0");
    EXPECT_TRUE(IsNear(Statistics(both.Extended()), "ExactSig1Tailed", 1e-225));
}

// ---- Intervals of a proportion ----

QKSettings AllIntervals() {
    QKSettings entry = OfData();
    for (const char* const method : {"ClopperPearson", "Jeffreys", "ProfileLikelihood"}) {
        entry.AddSetting(std::string("isDo") + method, true);
    }
    return entry;
}

BothArithmetics RunIntervals(double first, double second) {
    Rows rows;
    AddWeighted(rows, 0, first);
    AddWeighted(rows, 1, second);
    return RunCategorical("OEstimateConfidenceInterval", AllIntervals(), 2, rows);
}

void ExpectInterval(const Table& test, const std::string& method, double lower, double upper) {
    const Table limits = test.Sub(method).Sub("Asymptotic");
    EXPECT_TRUE(IsNear(limits, "Lower", lower)) << method;
    EXPECT_TRUE(IsNear(limits, "Upper", upper)) << method;
}

TEST(ExtendedIntervals, LimitsHaveTwelveDigits) {
    const Table few = RunIntervals(16, 8).Extended();
    ExpectInterval(few, "ClopperPearson", 0.44678038434035191, 0.84369771429086472);
    ExpectInterval(few, "Jeffreys", 0.46773060400697109, 0.82803583369789525);
    ExpectInterval(few, "ProfileLikelihood", 0.46802175515051106, 0.83143373076815404);
    EXPECT_EQ(WayOf(few), "") << "only digits differ";
    const Table many = RunIntervals(30000, 70000).Extended();
    ExpectInterval(many, "ClopperPearson", 0.29716057540056486, 0.30285102868107401);
    ExpectInterval(many, "Jeffreys", 0.29716556173097038, 0.30284601530130760);
    ExpectInterval(many, "ProfileLikelihood", 0.29716488920098519, 0.30284535456781837);
}

TEST(ExtendedIntervals, ClassBeyond32BitsWrapsAsDefinedAndIsWhole) {
    QKSettings jeffreys = OfData();
    jeffreys.AddSetting("isDoJeffreys", true);
    ExpectTheSame(RunCategorical("OEstimateConfidenceInterval", jeffreys, 2, {{0, 1073741824}, {1, 1073741823}}));
    const BothArithmetics both = RunIntervals(300e9, 700e9);
    const Table test = both.Extended();
    EXPECT_EQ(test.Sub("Jeffreys").Row("Estimate"), "0.3");
    EXPECT_NE(both.Defined().Sub("Jeffreys").Row("Estimate"), "0.3");
    ExpectInterval(test, "ClopperPearson", 0.29999910183174701, 0.30000089816941071);
    ExpectInterval(test, "Jeffreys", 0.29999910183224701, 0.30000089816891071);
    ExpectInterval(test, "ProfileLikelihood", 0.29999910183218034, 0.30000089816884405);
    EXPECT_TRUE(WayOf(test).starts_with("extended"));
}

TEST(ExtendedIntervals, FewAmongManyHaveTheirDigits) {
    const Table test = RunIntervals(3, 1e12).Extended();
    ExpectInterval(test, "ClopperPearson", 6.1867212289417256e-13, 8.7672730696907426e-12);
    ExpectInterval(test, "Jeffreys", 8.4493459033684170e-13, 8.0063821372685999e-12);
    ExpectInterval(test, "ProfileLikelihood", 7.4606503617011908e-13, 7.7792863660988942e-12);
    const Table all = RunIntervals(0, 1e12).Extended().Sub("ProfileLikelihood").Sub("Asymptotic");
    EXPECT_TRUE(IsNear(all, "Lower", 1 - 1.9207294103452184e-12));  // the first record's class is the first one
    Rows rows;
    AddWeighted(rows, 2, 1e12);
    QKSettings cut = EntryOf("x", {{"givenCutPoint", 1}}, {{"contVarClassFormation", "givenCutPoint"}});
    cut.AddSetting("isDoProfileLikelihood", true);
    const Table none =
        RunContinuous("OEstimateConfidenceInterval", cut, rows).Extended().Sub("ProfileLikelihood").Sub("Asymptotic");
    EXPECT_EQ(none.Row("Lower"), "0");
    EXPECT_TRUE(IsNear(none, "Upper", 1.9207294103452184e-12));
}

// The iteration for 1 of 40 at 0.99 ends 5e-8 in front of its root, 1.6e-4 of it.
TEST(ExtendedIntervals, LimitThatTheIterationMissesIsTheTextbooks) {
    Fields fields;
    fields.Text("x", {"yes", "no"}).Weight("w");
    const BothArithmetics both =
        RunBoth("OEstimateConfidenceInterval", AllIntervals(), fields, {{0, 1}, {1, 39}}, {{"confidenceLevel", 0.99}});
    const auto lower = [](const Table& test) { return test.Sub("ProfileLikelihood").Sub("Asymptotic"); };
    EXPECT_TRUE(IsNear(lower(both.Defined()), "Lower", 0.00034205558851396584));
    EXPECT_TRUE(IsNear(lower(both.Extended()), "Lower", 0.00034211018791922));
    EXPECT_EQ(WayOf(both.Extended()), "textbook");
}

// ---- Chi-square ----

const QKSettings kEqual = EntryOf("x", {}, {{"classFormation", "getFromData"}});

QKSettings Expecting(const std::vector<double>& expected) {
    QKSettings entry = EntryOf("x", {}, {{"classFormation", "givenExpectedValue"}});
    std::vector<QKSettings> elements;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        QKSettings element;
        element.AddSetting("categoryValue", "c" + std::to_string(i));
        element.AddSetting("expectedValue", expected[i]);
        elements.push_back(element);
    }
    AddVecSetting(entry, "custom", elements, false);
    return entry;
}

TEST(ExtendedChiSquare, TotalAt32BitsIsOneAndAboveItWraps) {
    ExpectTheSame(RunCategorical("OChiSquare", kEqual, 3, {{0, 1073741824}, {1, 1073741822}, {2, 1}}));
    const BothArithmetics above =
        RunCategorical("OChiSquare", kEqual, 3, {{0, 1000000000}, {1, 1000100000}, {2, 999900000}});
    EXPECT_EQ(Statistics(above.Defined()).Row("TotalN"), "-1294967296");  // 3e9 - 2^32
    EXPECT_EQ(Statistics(above.Extended()).Row("TotalN"), "3000000000");
    EXPECT_TRUE(IsNear(Statistics(above.Extended()), "TestStatistic", 20));
    EXPECT_TRUE(IsNear(Statistics(above.Extended()), "AsymptoticSig2Tailed", 4.5399929762484852e-5));
    EXPECT_EQ(above.Extended().Sub("TwoClassComparison").SimpleRows("Content")[0], "1000000000;1000000000");
    EXPECT_EQ(WayOf(above.Extended()), "extended");
}

TEST(ExtendedChiSquare, CellBeyond32BitsIsWhole) {
    const BothArithmetics both = RunCategorical("OChiSquare", kEqual, 2, {{0, 2e9}, {0, 147483648}, {1, 2147400000}});
    EXPECT_EQ(both.Extended().Sub("TwoClassComparison").SimpleRows("Content")[0], "2147483648;2147441824");
    EXPECT_TRUE(IsNear(Statistics(both.Extended()), "TestStatistic", 1.6291449262562188));
    EXPECT_TRUE(IsNear(Statistics(both.Extended()), "AsymptoticSig2Tailed", 0.20182135805940499));
    const Table info = both.extended.document.FieldInfo(0);
    EXPECT_EQ(info.Sub("CategoricalDistribution").Row("TotalN"), "4294883648");
    EXPECT_EQ(info.Sub("CategoricalDistribution").SimpleRows("Interval"), Texts({"2147483648;2147400000", "0;1"}));
    EXPECT_EQ(both.defined.document.FieldInfo(0).Sub("CategoricalDistribution").SimpleRows("Interval"),
              Texts({"-2147483648;2147400000", "0;1"}));
}

TEST(ExtendedChiSquare, CountsNearToWhatIsExpectedKeepTheirDigits) {
    Rows rows;
    AddWeighted(rows, 0, 300000400000);
    AddWeighted(rows, 1, 699999600000);
    const Table statistics = Statistics(RunCategorical("OChiSquare", Expecting({3, 7}), 2, rows).Extended());
    EXPECT_TRUE(IsNear(statistics, "TestStatistic", 0.76190476190476190));
    EXPECT_TRUE(IsNear(statistics, "AsymptoticSig2Tailed", 0.38273308888522607));
}

TEST(ExtendedChiSquare, TailHasItsDigits) {
    const BothArithmetics both = RunCategorical("OChiSquare", kEqual, 3, {{0, 33333}, {1, 34333}, {2, 32334}});
    EXPECT_TRUE(IsNear(Statistics(both.Extended()), "TestStatistic", 59.940020000000000));
    EXPECT_TRUE(IsNear(Statistics(both.Extended()), "AsymptoticSig2Tailed", 9.6425085897009029e-14));
    EXPECT_FALSE(IsNear(Statistics(both.Defined()), "AsymptoticSig2Tailed", 9.6425085897009029e-14, 1e-6));
    EXPECT_EQ(WayOf(both.Extended()), "");
}

// What is exactly 0 as defined is no rest of digits.
TEST(ExtendedChiSquare, CountsAsExpectedAreTheSameToTheByte) {
    ExpectTheSame(RunCategorical("OChiSquare", kEqual, 3, {{0, 10}, {1, 10}, {2, 10}}));
    ExpectTheSame(RunCategorical("OChiSquare", Expecting({0.3, 0.7}), 2, {{0, 3}, {1, 7}}));
    ExpectTheSame(RunCategorical("OChiSquare", Expecting({3, 7}), 2, {{0, 3000}, {1, 7000}}));
    ExpectTheSame(RunCategorical("OBinomial", OfData(0.1), 2, {{0, 2}, {1, 28}}));
    ExpectTheSame(RunCategorical("OBinomial", OfData(), 2, {{0, 50}, {1, 50}}));
}

// ---- Runs ----

QKSettings CutAt(double cut) {
    return EntryOf("x", {{"cutPointValue", cut}}, {{"contVarClassFormation", "cutPointValue"}});
}

TEST(ExtendedRuns, CasesAt32BitsAreOneAndAboveItTheirNumberIsWhole) {
    ExpectTheSame(RunContinuous("ORuns", CutAt(2), {{1, 1e9}, {3, 1e9}, {1, 147483646}, {4, 1}}));
    const BothArithmetics above =
        RunContinuous("ORuns", CutAt(2), {{1, 536870912}, {3, 536870912}, {1, 536870912}, {3, 536870912}});
    EXPECT_EQ(Statistics(above.Defined()).Row("TotalN"), "-2147483648");
    const Table statistics = Statistics(above.Extended());
    EXPECT_EQ(statistics.Row("TotalN"), "2147483648");
    EXPECT_EQ(statistics.Row("TestStatistic"), "4");
    EXPECT_TRUE(IsNear(statistics, "StandardError", 23170.475000525993));
    EXPECT_TRUE(IsNear(statistics, "StandardTestStatistic", -46340.949893156053));
    EXPECT_EQ(WayOf(above.Extended()), "extended");
}

TEST(ExtendedRuns, ClassBeyond32BitsIsWhole) {
    Rows rows;
    for (int half = 0; half < 2; ++half) {
        AddWeighted(rows, 1, 300e9);
        AddWeighted(rows, 3, 200e9);
    }
    const Table test = RunContinuous("ORuns", CutAt(2), rows).Extended();
    EXPECT_EQ(Statistics(test).Row("TotalN"), "1000000000000");
    EXPECT_TRUE(IsNear(test.Sub("RunsParameters"), "Mean", 480000000001));
    EXPECT_TRUE(IsNear(test.Sub("RunsParameters"), "StdDev", 479999.99999974));
    EXPECT_TRUE(IsNear(Statistics(test), "StandardTestStatistic", -999999.99999429167));
}

// The same values, with the weight as the first field of the table: 3e9 and 2e9 of 5e9 cases, both sums beyond 32 bits.
TEST(ExtendedRuns, ClassesAreWholeWhereverTheWeightStands) {
    Fields fields;
    fields.Weight("w").Continuous("x");
    const Rows rows{{1e9, 1}, {1e9, 3}, {2e9, 1}, {1e9, 3}};
    const Table test = RunBoth("ORuns", CutAt(2), fields, rows).Extended();
    EXPECT_EQ(Statistics(test).Row("TotalN"), "5000000000");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "4");
    EXPECT_TRUE(IsNear(test.Sub("RunsParameters"), "Mean", 2400000001));  // 2 n0 n1 / n + 1
}

/// 50,000 of each class in so many runs.
Rows InRuns(int runs) {
    Rows rows;
    for (int i = 0; i < runs - 2; ++i) rows.push_back({i % 2 == 0 ? 1.0 : 3.0});
    const auto rest = static_cast<std::size_t>(50000 - (runs - 2) / 2);
    rows.insert(rows.end(), rest, {1});
    rows.insert(rows.end(), rest, {3});
    return rows;
}

TEST(ExtendedRuns, HundredThousandCasesHaveTwelveDigits) {
    const Table some = Statistics(RunContinuous("ORuns", CutAt(2), InRuns(49000)).Extended());
    EXPECT_TRUE(IsNear(some, "StandardTestStatistic", -6.3309115306104356));
    EXPECT_TRUE(IsNear(some, "AsymptoticSig2Tailed", 2.4371706389914785e-10));
    const Table few = Statistics(RunContinuous("ORuns", CutAt(2), InRuns(44200)).Extended());
    EXPECT_TRUE(IsNear(few, "AsymptoticSig2Tailed", 1.0966487785490052e-294));
}

// By hand: 1 1 . 3 3 1 3 with a record of no weight of the other class in the first gap is 4 runs.
TEST(ExtendedRuns, RecordWithoutWeightMakesNoRunInTheTextbooksForm) {
    const BothArithmetics both =
        RunContinuous("ORuns", CutAt(2), {{1, 2}, {3, 0}, {1, 0.5}, {1, 1}, {3, 2}, {1, 1}, {3, 1}, {1, 0}});
    EXPECT_EQ(Statistics(both.Defined()).Row("TestStatistic"), "7");
    EXPECT_EQ(Statistics(both.Extended()).Row("TestStatistic"), "4");
    EXPECT_EQ(both.Extended().Sub("RunsParameters").Row("ObservedRunNumber"), "4");
    EXPECT_EQ(WayOf(both.Extended()), "") << "the record isn't there";
}

TEST(ExtendedRuns, CutAtTheMedianNeedsNoSortedTest) {
    const Rows rows{{1}, {9}, {4}, {2}, {30}, {7}};  // the median is 5.5
    const BothArithmetics both =
        RunContinuous("ORuns", EntryOf("x", {}, {{"contVarClassFormation", "cutPointMedian"}}), rows);
    EXPECT_EQ(MessagesOf(both.Defined()), Texts({"220112 error"}));
    EXPECT_EQ(both.Extended().Sub("Condition").Row("%1"), "5.5");
    EXPECT_EQ(Statistics(both.Extended()).Row("TestStatistic"), "4");
    EXPECT_EQ(WayOf(both.Extended()), "textbook");
}

TEST(ExtendedRuns, CutAtTheMeanOfManyCasesIsTheirMean) {  // (2e9 * 1 + 1e9 * 4) / 3e9 = 2
    const BothArithmetics both = RunContinuous("ORuns", EntryOf("x", {}, {{"contVarClassFormation", "cutPointMean"}}),
                                               {{1, 1e9}, {4, 1e9}, {1, 1e9}});
    EXPECT_NE(both.Defined().Sub("Condition").Row("%1"), "2");
    EXPECT_EQ(both.Extended().Sub("Condition").Row("%1"), "2");
    EXPECT_EQ(WayOf(both.Extended()), "extended");
}

// ---- Wilcoxon ----

QKSettings Against(double median) {
    QKSettings entry = EntryOf("x", {{"testValue", median}});
    entry.AddSetting("userSpecifyTestValue", true);
    return entry;
}

/// With a sorted test before, so that both ways have a median.
BothArithmetics RunWilcoxon(const QKSettings& entry, const Rows& rows) {
    Fields fields;
    fields.Continuous("x");
    if (rows.front().size() > 1) fields.Weight("w");
    QKSettings normal = EntryOf("x");
    normal.AddSetting("isUseSample", true);
    QKSettings settings;
    settings.AddSetting("OKolmogorovSmirnovNormal", normal);
    settings.AddSetting("OWilcoxonSignedRanks", entry);
    return RunBoth(settings, fields, rows);
}

TEST(ExtendedWilcoxon, CasesAt32BitsAreOne) {
    const BothArithmetics below = RunWilcoxon(Against(0), {{1, 1073741824}, {-2, 1073741823}});
    const Table statistics = Statistics(below.Extended());
    EXPECT_TRUE(IsNear(statistics, "TestStatistic", 5.7646075284029440e+17));
    EXPECT_TRUE(IsNear(statistics, "StandardError", 27815688451824.440));
    EXPECT_TRUE(IsNear(statistics, "StandardTestStatistic", -20724.302841832822));
    EXPECT_EQ(WayOf(below.Extended()), "");
    EXPECT_EQ(Statistics(below.Defined()).Row("TestStatistic"), statistics.Row("TestStatistic"));
}

TEST(ExtendedWilcoxon, CasesAbove32BitsHaveTheirRanks) {
    const BothArithmetics above = RunWilcoxon(Against(0), {{1, 1073741824}, {2, 1073741824}, {0, 2e9}, {0, 1e9}});
    const Table test = above.Extended();
    EXPECT_TRUE(IsNear(Statistics(test), "TestStatistic", 2.3058430102874358e+18));
    EXPECT_TRUE(IsNear(Statistics(test), "StandardTestStatistic", 41448.605751219184));
    EXPECT_EQ(test.Sub("ContinuousDistribution").SimpleRows("Interval"),
              Texts({"0;1073741824;1073741824;3000000000", "3000000000;1;2;0"}));
    EXPECT_EQ(above.Defined().Sub("ContinuousDistribution").SimpleRows("Interval"),
              Texts({"1073741824;1073741824", "1;2"}));
    EXPECT_EQ(test.Sub("ContinuousDistribution").Row("ObservedMedian"), "0");
    EXPECT_EQ(WayOf(test), "extended");
}

TEST(ExtendedWilcoxon, ThousandThousandMillionCasesHaveTwelveDigits) {
    Rows rows;
    for (int k = 1; k <= 10; ++k) AddWeighted(rows, k % 2 == 0 ? -k : k, 1e11);
    const Table statistics = Statistics(RunWilcoxon(Against(0), rows).Extended());
    EXPECT_EQ(statistics.Row("TotalN"), "1000000000000");
    EXPECT_TRUE(IsNear(statistics, "TestStatistic", 2.2500000000025000e+23));
    EXPECT_TRUE(IsNear(statistics, "StandardError", 2.8831406486698667e+17));
    EXPECT_TRUE(IsNear(statistics, "StandardTestStatistic", -86710.996952346803));
}

TEST(ExtendedWilcoxon, ThreeMillionAndAHundredThousandCasesHaveTwelveDigits) {
    Rows rows;
    for (const double d : {1, -2, 3, -4, 5, -6, 7, 8, -9, -10}) rows.push_back({d, 300000});
    const Table weighted = Statistics(RunWilcoxon(Against(0), rows).Extended());
    EXPECT_TRUE(IsNear(weighted, "TestStatistic", 1935000750000));
    EXPECT_TRUE(IsNear(weighted, "StandardTestStatistic", -210.26294051765772));
    rows.clear();
    for (int k = 1; k <= 100000; ++k) rows.push_back({k % 8 < 4 ? k : -static_cast<double>(k)});
    const Table single = Statistics(RunWilcoxon(Against(0), rows).Extended());
    EXPECT_TRUE(IsNear(single, "StandardTestStatistic", -0.0054771844961850558));
    EXPECT_TRUE(IsNear(single, "AsymptoticSig2Tailed", 0.99562986090420377));
}

TEST(ExtendedWilcoxon, MedianNeedsNoSortedTest) {
    const Rows rows{{1}, {9}, {4}, {30}};
    const BothArithmetics own = RunContinuous("OWilcoxonSignedRanks", EntryOf("x"), rows);
    EXPECT_EQ(own.Defined().Sub("ContinuousDistribution").Row("ObservedMedian"), "-1.79769313486232e+308");
    const Table distribution = own.Extended().Sub("ContinuousDistribution");
    EXPECT_EQ(distribution.Row("ObservedMedian"), "6.5");
    EXPECT_EQ(distribution.Row("HypotheticalMedian"), "6.5");
    EXPECT_EQ(Statistics(own.Extended()).Row("TestStatistic"), "5.5");  // d = -5.5, 2.5, -2.5, 23.5: ranks 1.5 and 4
    EXPECT_EQ(WayOf(own.Extended()), "textbook");
    EXPECT_EQ(own.extended.document.FieldInfo(0).Attribute("arithmetic"), "") << "it shows no median";

    const BothArithmetics given = RunContinuous("OWilcoxonSignedRanks", Against(4), rows);
    EXPECT_EQ(given.Extended().Sub("ContinuousDistribution").Row("ObservedMedian"), "6.5");
    EXPECT_EQ(WayOf(given.Extended()), "textbook");
}

// Truncated as in all other tests: d = 1, -2, -2 with a value at the median; ranks 1 and 2.5, n = 3.
TEST(ExtendedWilcoxon, FractionsOfWeightsAreCutInTheTextbooksForm) {
    const Rows rows{{11, 1.5}, {8, 2.75}, {13, 0.5}, {10, 1.9}};
    const BothArithmetics both = RunWilcoxon(Against(10), rows);
    const Table statistics = Statistics(both.Extended());
    EXPECT_EQ(statistics.Row("TotalN"), "4");
    EXPECT_EQ(statistics.Row("TestStatistic"), "1");
    EXPECT_TRUE(IsNear(statistics, "StandardError", std::sqrt(7 * 12 / 24.0 - 6 / 48.0)));
    EXPECT_TRUE(IsNear(statistics, "StandardTestStatistic", -2 / std::sqrt(7 * 12 / 24.0 - 6 / 48.0)));
    EXPECT_EQ(Statistics(both.Defined()).Row("TotalN"), "6.65");
    EXPECT_EQ(WayOf(both.Extended()), "textbook");
    const Table whole = Statistics(RunWilcoxon(Against(10), {{11, 1}, {8, 2}, {10, 1}}).Extended());
    for (const char* const row : {"TotalN", "TestStatistic", "StandardError"}) {
        EXPECT_EQ(statistics.Row(row), whole.Row(row)) << row;
    }
}

// ---- Kolmogorov and Smirnov ----

QKSettings FromSample() {
    QKSettings entry = EntryOf("x");
    entry.AddSetting("isUseSample", true);
    return entry;
}

void ExpectDistances(const Table& test, double positive, double negative, double z) {
    EXPECT_TRUE(IsNear(Extremes(test), "Positive", positive));
    EXPECT_TRUE(IsNear(Extremes(test), "Negative", negative));
    EXPECT_TRUE(IsNear(Statistics(test), "TestStatistic", z));
}

TEST(ExtendedKolmogorovSmirnov, CasesAt32BitsAreOneAndAboveThemTheyWrap) {
    const QKSettings unit = EntryOf("x", {{"min", 0}, {"max", 1}});
    ExpectTheSame(RunContinuous("OKolmogorovSmirnovUniform", unit, {{0.25, 1073741824}, {0.5, 1073741823}}));
    const BothArithmetics above =
        RunContinuous("OKolmogorovSmirnovUniform", unit, {{0.25, 1073741824}, {0.5, 1073741824}, {7, 3}});
    EXPECT_EQ(MessagesOf(above.Defined()).front(), "220310 error") << "the total wraps below 0";
    ExpectDistances(above.Extended(), 0.5, -0.25, 23170.475005920789);
    EXPECT_EQ(Statistics(above.Extended()).Row("TotalN"), "2147483651");
    EXPECT_EQ(WayOf(above.Extended()), "extended");
}

TEST(ExtendedKolmogorovSmirnov, ThousandThousandMillionCasesHaveTwelveDigits) {
    Rows rows;
    for (int k = 1; k <= 10; ++k) AddWeighted(rows, 0.125 * k, 1e11);
    const QKSettings entry = EntryOf("x", {{"mean", 0.6875}, {"stdDev", 0.5}});
    const Table test = RunContinuous("OKolmogorovSmirnovNormal", entry, rows).Extended();
    ExpectDistances(test, 0.13029451713680885, -0.13029451713680885, 130294.51713680885);
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "0");  // 1e-14745740557
    // Fitted: the mean of 10 values with equal weights, by hand.
    const Table fitted = RunContinuous("OKolmogorovSmirnovNormal", FromSample(), rows).Extended();
    EXPECT_EQ(fitted.Sub("Condition").Row("%1"), "0.6875");
    EXPECT_TRUE(IsNear(fitted.Sub("Condition"), "%2", 0.125 * std::sqrt(8.25 * (1 + 1e-12))));
}

TEST(ExtendedKolmogorovSmirnov, HundredThousandCasesHaveTwelveDigits) {
    Rows rows;
    for (int i = 1; i <= 100000; ++i) rows.push_back({i / 25000.0});
    const BothArithmetics normal =
        RunContinuous("OKolmogorovSmirnovNormal", EntryOf("x", {{"mean", 2}, {"stdDev", 1.2}}), rows);
    ExpectDistances(normal.Extended(), 0.048375508981949732, -0.048385508981949732, 15.300841412949610);
    EXPECT_TRUE(IsNear(Statistics(normal.Extended()), "AsymptoticSig2Tailed", 8.9263739775154710e-204, 1e-11));
    EXPECT_EQ(Statistics(normal.Defined()).Row("AsymptoticSig2Tailed"), "0");
    EXPECT_EQ(WayOf(normal.Extended()), "");
    const Table exponential =
        RunContinuous("OKolmogorovSmirnovExponential", EntryOf("x", {{"mean", 2}}), rows).Extended();
    ExpectDistances(exponential, 0.13533528323661269, -0.15343640970713719, 48.520853067332261);
}

TEST(ExtendedKolmogorovSmirnov, PoissonOfALargeMeanHasTwelveDigits) {
    Rows rows;
    for (int k = 49500; k <= 50500; ++k) rows.push_back({static_cast<double>(k), 3000});
    const Table test = RunContinuous("OKolmogorovSmirnovPoisson", EntryOf("x", {{"mean", 49999.5}}), rows).Extended();
    ExpectDistances(test, 0.11820469247834290, -0.11914991698817538, 206.47687101228098);
}

// By hand: of 3 and 5 with a mean of 4, of a range from 0 on. As defined the function begins at 1/2 below 3.
TEST(ExtendedKolmogorovSmirnov, CountsBelowTheFirstValueAreNoneInTheTextbooksForm) {
    const BothArithmetics both =
        RunContinuous("OKolmogorovSmirnovPoisson", EntryOf("x", {{"mean", 4}, {"min", 0}, {"max", 100}}), {{3}, {5}});
    // Below 3: -P(X <= 2); at 5: 1 - P(X <= 5) = 0.2148...; at 4: 1/2 - 0.6288...
    const double below = -std::exp(-4.0) * (1 + 4 + 8);
    EXPECT_TRUE(IsNear(Extremes(both.Extended()), "Negative", below));
    EXPECT_TRUE(IsNear(Extremes(both.Defined()), "Positive", 0.5 + below));
    EXPECT_EQ(WayOf(both.Extended()), "textbook");
}

// By hand: of 1, 2, 3, 4 against a normal with mean 2.5; a range of 2 to 3 cuts the function as defined.
TEST(ExtendedKolmogorovSmirnov, GivenRangeCutsNothingInTheTextbooksForm) {
    const Rows rows{{1}, {2}, {3}, {4}};
    const std::vector<std::pair<std::string, double>> parameters{{"mean", 2.5}, {"stdDev", 1}};
    auto cut = parameters;
    cut.insert(cut.end(), {{"min", 2}, {"max", 3}});
    const BothArithmetics both = RunContinuous("OKolmogorovSmirnovNormal", EntryOf("x", cut), rows);
    const Table whole = RunContinuous("OKolmogorovSmirnovNormal", EntryOf("x", parameters), rows).Extended();
    EXPECT_EQ(Extremes(both.Extended()).Row("Absolute"), Extremes(whole).Row("Absolute"));
    EXPECT_NE(Extremes(both.Defined()).Row("Absolute"), Extremes(whole).Row("Absolute"));
    EXPECT_EQ(WayOf(both.Extended()), "textbook");
    EXPECT_EQ(WayOf(whole), "");
}

TEST(ExtendedKolmogorovSmirnov, RecordWithoutWeightLeavesTheParametersAndTheFunction) {
    const Rows all{{0.5, 0}, {1, 1}, {2, 2}, {3.5, 1}, {4, 2}, {4.5, 0}};
    const Rows weighty{{1, 1}, {2, 2}, {3.5, 1}, {4, 2}};
    const BothArithmetics both = RunContinuous("OKolmogorovSmirnovNormal", FromSample(), all);
    const BothArithmetics without = RunContinuous("OKolmogorovSmirnovNormal", FromSample(), weighty);
    EXPECT_EQ(both.Defined().Sub("Condition").Row("%1"), "nan");
    for (const char* const row : {"%1", "%2"}) {
        EXPECT_EQ(both.Extended().Sub("Condition").Row(row), without.Defined().Sub("Condition").Row(row));
    }
    EXPECT_EQ(Statistics(both.Extended()).Row("TestStatistic"), Statistics(without.Extended()).Row("TestStatistic"));
    EXPECT_EQ(both.extended.text, without.extended.text);
    EXPECT_EQ(both.extended.text.find("arithmetic="), std::string::npos) << "the records aren't there";
    const Table info = both.extended.document.FieldInfo(0).Sub("ContinuousDistribution");
    EXPECT_EQ(info.Row("StdDev"), without.defined.document.FieldInfo(0).Sub("ContinuousDistribution").Row("StdDev"));
}

TEST(ExtendedKolmogorovSmirnov, WithoutASignificanceNothingIsRejectedInTheTextbooksForm) {
    const BothArithmetics both = RunContinuous("OKolmogorovSmirnovNormal", FromSample(), {{1}, {2}, {4}, {8}});
    EXPECT_EQ(both.Defined().Attribute("decision"), "reject");
    EXPECT_EQ(both.Extended().Attribute("decision"), "retain");
    EXPECT_EQ(Statistics(both.Extended()).Row("AsymptoticSig2Tailed"), "__MISSING__");
    EXPECT_EQ(WayOf(both.Extended()), "textbook");
}

}  // namespace
