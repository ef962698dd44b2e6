// What the Kolmogorov-Smirnov test of one field says of settings and of data that don't fit.

#include <gtest/gtest.h>

#include <memory>
#include <new>

#include "onesample/TARNKSmirnowOneSample.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/onesample/KSmirnowRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Rows;
using harness::Table;
using harness::Texts;
using ksone::Entry;
using ksone::kExponential;
using ksone::kNormal;
using ksone::kPoisson;
using ksone::kUniform;
using ksone::Parameters;
using ksone::Result;
using ksone::ResultOf;
using ksone::Statistics;

std::vector<std::string> Messages(const char* test, const Parameters& parameters, const Rows& rows) {
    return MessagesOf(ResultOf(test, Entry(parameters), rows));
}

// ---- Plan ----

// The second check of the parameters goes over a test in error as well, so that its code follows the first one.
TEST(KolmogorovSmirnovOneSampleFailures, PlanWithoutAField) {
    struct Case {
        const char* test;
        const char* second;
    };
    for (const Case& one : {Case{kNormal, "220315 error"}, Case{kUniform, "220316 error"},
                            Case{kPoisson, "220312 error"}, Case{kExponential, "220313 error"}}) {
        const Table test = ResultOf(one.test, QKSettings(), {{1}, {2}});
        EXPECT_EQ(test.Attribute("decision"), "unknown") << one.test;
        EXPECT_EQ(MessagesOf(test), Texts({"220303 error", one.second})) << one.test;
        EXPECT_EQ(test.Sub("Condition").Row("%0"), "-1") << one.test;
        EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
    }
}

TEST(KolmogorovSmirnovOneSampleFailures, PlanWithAnotherField) {
    Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2}).Text("t", {"a", "b"});
    struct Case {
        const char* field;
        const char* message;
        const char* index;
    };
    for (const Case& one : {Case{"nowhere", "220304 error nowhere", "-1"}, Case{"g", "220304 error g", "1"},
                            Case{"t", "220304 error t", "2"}}) {
        const Table test =
            harness::ResultOf(kNormal, Entry({{"mean", 1}, {"stdDev", 1}}, one.field), fields, {{1, 0, 0}, {2, 1, 1}});
        EXPECT_EQ(MessagesOf(test), Texts({one.message}));
        EXPECT_EQ(test.Sub("Condition").Row("%0"), one.index);
        EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    }
}

// The kind of a field that no test takes is the one failure of a plan that ends the whole run.
TEST(KolmogorovSmirnovOneSampleFailures, PlanWithAFieldOfNoKnownKind) {
    Fields fields;
    fields.Other("x");
    EXPECT_EQ(harness::RunEntry(kNormal, Entry({}), fields, {{1}}).status.GetErrorCode(), 220004);
}

TEST(KolmogorovSmirnovOneSampleFailures, UniformConditionMarksAMissingRange) {
    const Table test = ResultOf(kUniform, QKSettings(), {{1}});
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "__MISSING__");
    EXPECT_EQ(test.Sub("Condition").Row("%2"), "__MISSING__");
}

// ---- Values out of range ----

TEST(KolmogorovSmirnovOneSampleFailures, UniformValuesOutsideAGivenRangeCountInTotalNAlone) {
    const Table test = ResultOf(kUniform, Entry({{"min", 0}, {"max", 4}}),
                                {{1, 1}, {2, 1}, {3, 1}, {-0.5, 2.9}, {4.5, 4}, {0, 1}, {4, 1}});
    EXPECT_EQ(MessagesOf(test), Texts({"220311 warning 6"}));
    EXPECT_EQ(Statistics(test).Row("TotalN"), "11");
    EXPECT_EQ(Statistics(test).Sub("MostExtremeDifferences").Row("Absolute"), "0.2");  // of 0, 1, 2, 3, 4
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable StatisticsResult"}));
}

TEST(KolmogorovSmirnovOneSampleFailures, ExponentialPassesNegativeValuesOver) {
    const Table with = Result(kExponential, {}, {1, -2, 3, -4, 5});
    const Table without = Result(kExponential, {}, {1, 3, 5});
    EXPECT_EQ(MessagesOf(with), Texts({"220314 warning 2"}));
    EXPECT_EQ(Statistics(with).Row("TotalN"), "5");
    EXPECT_EQ(with.Sub("Condition").Row("%1"), "3");  // the mean of those that take part
    EXPECT_EQ(Statistics(with).Row("TestStatistic"), Statistics(without).Row("TestStatistic"));
}

TEST(KolmogorovSmirnovOneSampleFailures, WithTheRangeFromTheSampleNoValueIsRefused) {
    EXPECT_TRUE(Messages(kUniform, {}, {{-5}, {100}, {3}}).empty());
    EXPECT_TRUE(Messages(kNormal, {}, {{-5}, {100}, {3}}).empty());
}

TEST(KolmogorovSmirnovOneSampleFailures, PoissonStopsAtTheFirstValueThatIsNoCount) {
    EXPECT_EQ(Messages(kPoisson, {}, {{1}, {2.5}, {2}, {3.5}}), Texts({"220312 error 2.5 1"}));
    EXPECT_EQ(Messages(kPoisson, {{"mean", 4}}, {{1, 2}, {-1, 3.7}}), Texts({"220312 error -1 3"}));
    // No value came before it, so the mean is 0 and fails by itself.
    EXPECT_EQ(Messages(kPoisson, {}, {{1}, {-1}}), Texts({"220312 error -1 1", "220312 error"}));
}

// ---- No values, no spread ----

TEST(KolmogorovSmirnovOneSampleFailures, NoValueIsLeft) {
    const Rows none{{harness::kNone}, {harness::kNone}};
    EXPECT_EQ(Messages(kNormal, {{"mean", 1}, {"stdDev", 1}}, none), Texts({"220003 error"}));
    EXPECT_EQ(Messages(kNormal, {}, none), Texts({"220003 error", "220315 error"}));
    EXPECT_EQ(Messages(kPoisson, {{"mean", 1}}, none), Texts({"220003 error"}));
    EXPECT_EQ(Messages(kExponential, {{"mean", 1}}, none), Texts({"220313 error"}));
    EXPECT_EQ(Messages(kUniform, {{"min", 1}, {"max", 2}}, none), Texts({"220310 error"}));
    // What was refused is not told where nothing is left.
    EXPECT_EQ(Messages(kUniform, {{"min", 1}, {"max", 2}}, {{5}, {6}}), Texts({"220310 error"}));
    EXPECT_EQ(Messages(kExponential, {{"mean", 1}}, {{-5}, {-6}}), Texts({"220313 error"}));
    EXPECT_EQ(Messages(kNormal, {{"mean", 1}, {"stdDev", 1}}, {{5, 0.9}, {6, 0}}), Texts({"220003 error"}));
}

TEST(KolmogorovSmirnovOneSampleFailures, ParametersThatAreNone) {
    const Rows rows{{1}, {2}, {3}};
    EXPECT_EQ(Messages(kNormal, {{"mean", 1}, {"stdDev", 0}}, rows), Texts({"220315 error"}));
    EXPECT_EQ(Messages(kNormal, {{"mean", 1}, {"stdDev", -1}}, rows), Texts({"220315 error"}));
    EXPECT_EQ(Messages(kExponential, {{"mean", 0}}, rows), Texts({"220313 error"}));
    EXPECT_EQ(Messages(kPoisson, {{"mean", 0}}, rows), Texts({"220312 error"}));
    EXPECT_EQ(Messages(kPoisson, {}, {{0}, {0}}), Texts({"220312 error"}));
    EXPECT_EQ(Messages(kUniform, {{"min", 2}, {"max", 2}}, rows), Texts({"220316 error", "220311 warning 2"}));
}

TEST(KolmogorovSmirnovOneSampleFailures, AllValuesEqualHaveNoSpread) {
    const Rows rows{{4}, {4}, {4}};
    EXPECT_EQ(Messages(kNormal, {}, rows), Texts({"220315 error"}));
    EXPECT_EQ(Messages(kUniform, {}, rows), Texts({"220316 error"}));
    EXPECT_EQ(Messages(kNormal, {}, {{4}}), Texts({"220315 error"}));  // nor has a single record
    EXPECT_TRUE(Messages(kExponential, {}, rows).empty());
}

TEST(KolmogorovSmirnovOneSampleFailures, RangesAlmostEqualAreNone) {
    EXPECT_EQ(Messages(kUniform, {}, {{1}, {1 + 2e-16}}), Texts({"220316 error"}));
    EXPECT_TRUE(Messages(kUniform, {}, {{1}, {1 + 1e-15}}).empty());
}

// ---- Memory ----

TEST(KolmogorovSmirnovOneSampleFailures, NoMemoryForTheEstimatesIsTheTestsOwnError) {
    bool wasTold = false;
    bool failed = true;
    for (long successes = 0; failed; ++successes) {
        TARNKSmirnowOneSample test(std::make_unique<QKSettings>());
        QKStatus begun;
        try {
            const component_test::AllocationFailure failure(successes);
            begun = test.BeginPass();
            failed = component_test::AllocationFailure::HasFailed();
        } catch (const std::bad_alloc&) {  // for the worker, which calls it 220012
        }
        if (begun.IsError()) {
            EXPECT_EQ(begun.GetErrorCode(), 220002);
            wasTold = true;
        }
    }
    EXPECT_TRUE(wasTold);
}

}  // namespace
