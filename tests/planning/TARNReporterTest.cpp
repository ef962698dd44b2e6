#include "planning/TARNReporter.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/common/QKMV.h"

TEST(TARNReporterTest, TheStepNumberStartsAtZeroAndIsKept) {
    TARNReporter report;
    EXPECT_EQ(report.GetCurrentStepNum(), 0);
    for (const int step : {57, 0, 100, -3}) {
        report.SetCurrentStepNum(step);
        EXPECT_EQ(report.GetCurrentStepNum(), step);
    }
}

TEST(TARNReporterTest, DiscreteMeasureOfAnyTextIs1AndScaleMeasureOfAnyTextIsMissing) {
    TARNReporter report;
    report.SetCurrentStepNum(42);
    ProgressReport& base = report;
    for (const std::string text : {"", "step", "anything at all", "\xC3\xA9"}) {
        EXPECT_EQ(base.DiscreteMeasure(text), 1) << text;
        EXPECT_EQ(base.ScaleMeasure(text), QKMV::Missing()) << text;
    }
}
