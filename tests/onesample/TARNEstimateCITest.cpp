// The confidence intervals of a proportion. How the classes come about: BinaryClassesTest.cpp.
// Reference values: scipy 1.17, Clopper-Pearson by beta.ppf(a, x, y + 1) and beta.ppf(1 - a, x + 1, y), Jeffreys by
// beta.ppf(., x + 0.5, y + 0.5); profile likelihood by mpmath's findroot of the log likelihood at 30 digits.

#include "onesample/TARNEstimateCI.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "onesample/ProportionIntervals.h"
#include "tests/harness/EntryRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;

constexpr double kTolerance = 1e-12;
/// The solver stops at a step of 1e-7, behind which Newton's next one would have been far smaller.
constexpr double kSolverTolerance = 1e-9;

constexpr const char* kMethods[] = {"ClopperPearson", "Jeffreys", "ProfileLikelihood"};

QKSettings EntryFor(const std::vector<std::string>& methods) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    entry.AddSetting("contVarClassFormation", "givenCutPoint");
    entry.AddSetting("givenCutPoint", 1.0);
    for (const std::string& method : methods) entry.AddSetting("isDo" + method, true);
    return entry;
}

const QKSettings kAllMethods = EntryFor({"ClopperPearson", "Jeffreys", "ProfileLikelihood"});

/// The test of rows with a value and a weight.
Table ResultOfWeighted(Rows rows, const QKSettings& entry, double confidenceLevel = 0.95) {
    Fields fields;
    fields.Continuous("x").Weight("w");
    return harness::ResultOf("OEstimateConfidenceInterval", entry, fields, std::move(rows),
                             {{"confidenceLevel", confidenceLevel}});
}

/// The test of that many values at the cut and above it.
Table Result(int first, int second, double confidenceLevel = 0.95, const QKSettings& entry = kAllMethods) {
    Rows rows(static_cast<std::size_t>(first), {1.0, 1.0});
    rows.insert(rows.end(), static_cast<std::size_t>(second), {2.0, 1.0});
    return ResultOfWeighted(std::move(rows), entry, confidenceLevel);
}

void ExpectInterval(const Table& test, const std::string& method, double lower, double upper, double tolerance) {
    const Table asymptotic = test.Sub(method).Sub("Asymptotic");
    EXPECT_NEAR(Number(asymptotic, "Lower"), lower, tolerance) << method;
    EXPECT_NEAR(Number(asymptotic, "Upper"), upper, tolerance) << method;
}

TEST(EstimateCI, WritesATableForEachMethod) {
    const Table test = Result(3, 7);
    EXPECT_EQ(test.Attribute("name"), "OEstimateConfidenceInterval");
    EXPECT_EQ(test.Attribute("type"), "confidence_interval");
    EXPECT_EQ(test.Attribute("classification"), "One_Sample");
    EXPECT_FALSE(test.Node().attribute("decision"));
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable ClopperPearson",
                                        "StructuredTable Jeffreys", "StructuredTable ProfileLikelihood"}));
    for (const char* method : kMethods) {
        const Table table = test.Sub(method);
        EXPECT_EQ(table.ChildNames(),
                  Texts({"Attribute computeECIMethod", "Attribute Estimate", "StructuredTable Asymptotic"}));
        EXPECT_EQ(table.Row("computeECIMethod"), method);
        EXPECT_EQ(table.Row("Estimate"), "0.3");
        EXPECT_EQ(table.Sub("Asymptotic").ChildNames(), Texts({"Attribute Lower", "Attribute Upper"}));
    }
}

TEST(EstimateCI, ConditionTellsTheFieldAndTheCutPoint) {
    const Table condition = Result(3, 7).Sub("Condition");
    EXPECT_EQ(condition.ChildNames(), Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1"}));
    EXPECT_EQ(condition.Row("ConditionKey"), "ACutPointIsSpecified_O_Binomial_2");
    EXPECT_EQ(condition.Row("%0"), "0");
    EXPECT_EQ(condition.Row("%1"), "1");
}

TEST(EstimateCI, LimitsAgreeWithTheirDefinitions) {
    const Table few = Result(3, 7);
    ExpectInterval(few, "ClopperPearson", 0.0667395111777345, 0.6524528500599973, kTolerance);
    ExpectInterval(few, "Jeffreys", 0.09269459393815317, 0.6058183181486713, kTolerance);
    ExpectInterval(few, "ProfileLikelihood", 0.08455865498150986, 0.60653903090448522, kSolverTolerance);

    const Table many = Result(7, 3, 0.9);
    ExpectInterval(many, "ClopperPearson", 0.39337578389458766, 0.9127355660858496, kTolerance);
    ExpectInterval(many, "Jeffreys", 0.44187323351536595, 0.8826706233197897, kTolerance);
    ExpectInterval(many, "ProfileLikelihood", 0.44237235643784496, 0.89121916922750929, kSolverTolerance);

    const Table one = Result(1, 39, 0.99);
    ExpectInterval(one, "ClopperPearson", 0.00012530569417421947, 0.17151532886809395, kTolerance);
    ExpectInterval(one, "Jeffreys", 0.0009017839995498849, 0.14913792150852562, kTolerance);
    // One failed step halves all later ones, which then end 5e-8 before the root 0.00034211018791922: the values are
    // the iteration's own, worked out with mpmath at 40 digits.
    ExpectInterval(one, "ProfileLikelihood", 0.00034205558851396584, 0.1437893866847012, kTolerance);
}

TEST(EstimateCI, EmptyFirstClassHasLowerLimitsOfZero) {
    const Table test = Result(0, 10);
    for (const char* method : kMethods) EXPECT_EQ(test.Sub(method).Sub("Asymptotic").Row("Lower"), "0") << method;
    EXPECT_EQ(test.Sub("Jeffreys").Row("Estimate"), "0");
    EXPECT_NEAR(Number(test.Sub("ClopperPearson").Sub("Asymptotic"), "Upper"), 0.3084971078187607, kTolerance);
    EXPECT_NEAR(Number(test.Sub("Jeffreys").Sub("Asymptotic"), "Upper"), 0.21719626750921053, kTolerance);
    // 1 - exp(-chi2.ppf(0.95, 1) / 20)
    EXPECT_NEAR(Number(test.Sub("ProfileLikelihood").Sub("Asymptotic"), "Upper"), 0.17475332804982982, kTolerance);
}

TEST(EstimateCI, EmptySecondClassHasUpperLimitsOfOne) {
    const Table test = Result(10, 0);
    for (const char* method : kMethods) EXPECT_EQ(test.Sub(method).Sub("Asymptotic").Row("Upper"), "1") << method;
    EXPECT_EQ(test.Sub("Jeffreys").Row("Estimate"), "1");
    EXPECT_NEAR(Number(test.Sub("ClopperPearson").Sub("Asymptotic"), "Lower"), 0.6915028921812392, kTolerance);
    EXPECT_NEAR(Number(test.Sub("Jeffreys").Sub("Asymptotic"), "Lower"), 0.7828037324907895, kTolerance);
    EXPECT_NEAR(Number(test.Sub("ProfileLikelihood").Sub("Asymptotic"), "Lower"), 1 - 0.17475332804982982, kTolerance);
}

TEST(EstimateCI, OneRecordIsEnough) {
    const Table test = Result(1, 0);
    ExpectInterval(test, "ClopperPearson", 0.025, 1, kTolerance);  // beta.ppf(0.025, 1, 1)
    EXPECT_EQ(test.Sub("ProfileLikelihood").Sub("Asymptotic").Row("Upper"), "1");
}

TEST(EstimateCI, MethodsThatAreOffAreLeftOut) {
    EXPECT_EQ(Result(3, 7, 0.95, EntryFor({"Jeffreys"})).ChildNames(),
              Texts({"StructuredTable Condition", "StructuredTable Jeffreys"}));
    QKSettings entry = EntryFor({"ProfileLikelihood"});
    entry.AddSetting("isDoClopperPearson", false);
    EXPECT_EQ(Result(3, 7, 0.95, entry).ChildNames(),
              Texts({"StructuredTable Condition", "StructuredTable ProfileLikelihood"}));
}

TEST(EstimateCI, AllMethodsOffLeaveTheConditionAlone) {
    EXPECT_EQ(Result(3, 7, 0.95, EntryFor({})).ChildNames(), Texts({"StructuredTable Condition"}));
}

TEST(EstimateCI, WeightOfThreeCountsThreeTimesAndFractionsAreLost) {
    const Table weighted = ResultOfWeighted({{1, 3}, {2, 4.9}, {2, 3}, {1, 0.9}}, kAllMethods);
    EXPECT_EQ(weighted.Sub("Jeffreys").Row("Estimate"), "0.3");
    ExpectInterval(weighted, "ClopperPearson", 0.0667395111777345, 0.6524528500599973, kTolerance);
}

TEST(EstimateCI, CountsAreWiderThan32Bits) {
    const Table test = ResultOfWeighted({{1, 2147483647}, {2, 2147483647}}, EntryFor({"ClopperPearson"}));
    EXPECT_EQ(test.Sub("ClopperPearson").Row("Estimate"), "0.5");
    // 0.5 -+ 1.96 * 0.5 / sqrt(2^32), to the order of 1 / n
    ExpectInterval(test, "ClopperPearson", 0.5 - 1.4953e-5, 0.5 + 1.4953e-5, 1e-8);
}

TEST(EstimateCI, NoCaseLeftGives220003) {
    for (const Rows& rows : {Rows{{1, 0.5}}, Rows{{harness::kNone, 1}}}) {
        const Table test = ResultOfWeighted(rows, kAllMethods);
        EXPECT_EQ(MessagesOf(test), Texts({"220003 error"}));
        EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
    }
}

TEST(EstimateCI, ExponentialThatFailsGives220007) {
    // A confidence level beyond 1 has no chi-square quantile; the missing value in its place has no exponential.
    const Table test = Result(0, 10, 1.5);
    EXPECT_EQ(MessagesOf(test), Texts({"220007 error"}));
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
}

TEST(EstimateCI, ConfidenceOfOneTakesTheWholeScale) {
    const Table test = Result(0, 10, 1.0);  // exp(-infinity) underflows to 0, which is tolerated
    EXPECT_TRUE(MessagesOf(test).empty());
    ExpectInterval(test, "ProfileLikelihood", 0, 1, 0);
}

// ---- Solver ----

// The expected values were worked out from the definition of the iteration with mpmath at 40 digits. Rounding grows in
// the course of 20 steps, so that fewer digits agree.

TEST(ProfileLimit, EndsAtTwentyFailedStepsWithTheLastTrialValueEvenOutsideTheScale) {
    EXPECT_NEAR(SolveProfileLimit({1, 1}, 30, 0.25), 4.4495489400527391, 1e-9);
    EXPECT_NEAR(SolveProfileLimit({3, 7}, 2, 0.29), -2.9883190001772918, 1e-9);
    EXPECT_NEAR(SolveProfileLimit({3, 7}, 100, 0.25), 11.208809631163895, 1e-8);
}

TEST(ProfileLimit, SmallStepOutsideTheScaleEndsTheIterationToo) {
    EXPECT_NEAR(SolveProfileLimit({3, 7}, 50, 0.1), -0.0010220557687517245, 1e-12);
}

TEST(ProfileLimit, ConvergesFromAGoodStart) {
    const double limit = SolveProfileLimit({3, 7}, 2, 0.1);
    const double logLikelihood = 3 * std::log(limit) + 7 * std::log(1 - limit);
    EXPECT_NEAR(logLikelihood, 3 * std::log(0.3) + 7 * std::log(0.7) - 2, 1e-6);
    EXPECT_LT(limit, 0.3);
}

TEST(ProfileLimit, ReturnsWhatAFailedSearchLeavesForANaN) {
    EXPECT_TRUE(std::isnan(SolveProfileLimit({3, 7}, std::numeric_limits<double>::quiet_NaN(), 0.1)));
}

// ---- Protocol ----

/// The same limit by halving what it may be: the log likelihood falls from the share on, to either side.
long double LimitByHalving(const ProportionCounts& counts, double drop, int side) {
    const auto x = static_cast<long double>(counts.first);
    const auto y = static_cast<long double>(counts.second);
    const auto logLikelihood = [=](long double t) { return x * std::log(t) + y * std::log1p(-t); };
    const long double level = logLikelihood(x / (x + y)) - drop;
    long double inside = x / (x + y);
    long double outside = side < 0 ? 0 : 1;
    for (int i = 0; i < 200; ++i) {
        const long double middle = (inside + outside) / 2;
        (logLikelihood(middle) > level ? inside : outside) = middle;
    }
    return inside;
}

// Drops of 0.0079, a level of 10 %, to 12, one of 99.9999 %: of few cases the first steps lead out of the scale.
TEST(ProfileLimit, PreciseOneIsThatOfHalvingForAllSmallCounts) {
    for (std::int64_t first = 1; first <= 20; ++first) {
        for (std::int64_t second = 1; second <= 20; ++second) {
            for (const double drop : {0.0079, 0.5, 1.92, 3.32, 12.0}) {
                for (const int side : {-1, 1}) {
                    const long double found = PreciseProfileLimit({first, second}, drop, side);
                    const long double expected = LimitByHalving({first, second}, drop, side);
                    const long double distance = side < 0 ? expected : 1 - expected;
                    ASSERT_NEAR(static_cast<double>((found - expected) / distance), 0, 1e-12)
                        << first << " and " << second << ", " << drop << ", " << side;
                }
            }
        }
    }
}

TEST(EstimateCI, TakesOnePassAndNamesItsFieldAlone) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 1);
    settings->AddSetting("classFormation", "givenCutPoint");
    settings->AddSetting("givenCutPoint", 4.0);
    settings->AddSetting("measureLevel", 1);
    TARNEstimateCI test(std::move(settings));
    EXPECT_TRUE(test.BeginPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 1);
    std::vector<int> used{7, 8};
    test.GetUsedVariables(used);
    EXPECT_EQ(used, std::vector<int>{1});  // the list is emptied first
    Record record(2);
    record[1] = 4;
    EXPECT_TRUE(test.ProcessRecord(record).IsOK());
    EXPECT_TRUE(test.EndPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
}

}  // namespace
