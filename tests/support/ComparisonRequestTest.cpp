#include "support/ComparisonRequest.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

QKSettings Saying(const char* type) {
    QKSettings settings;
    settings.AddSetting("typeOfMultipleComparison", type);
    return settings;
}

TEST(ComparisonRequest, IsReadFromTheTypeThatAnEntryNames) {
    EXPECT_FALSE(ComparisonRequest::OfEntry(QKSettings()).has_value());
    const auto pairs = ComparisonRequest::OfEntry(Saying("pairWise"));
    ASSERT_TRUE(pairs.has_value());
    EXPECT_TRUE(pairs->pairwise && !pairs->stepwise);
    const auto steps = ComparisonRequest::OfEntry(Saying("stepWise"));
    ASSERT_TRUE(steps.has_value());
    EXPECT_TRUE(steps->stepwise && !steps->pairwise);
    for (const char* other : {"none", "", "pairwise", "1"}) {
        const auto neither = ComparisonRequest::OfEntry(Saying(other));
        ASSERT_TRUE(neither.has_value()) << other;
        EXPECT_FALSE(neither->pairwise || neither->stepwise) << other;
    }
}

TEST(ComparisonRequest, AnEntryWhoseTypeIsNoTextDoesNotSay) {
    QKSettings listed;
    listed.AddSetting("typeOfMultipleComparison", Saying("pairWise"));
    EXPECT_FALSE(ComparisonRequest::OfEntry(listed).has_value());
}

TEST(ComparisonRequest, PassesThroughTheSettingsOfATestInBothForms) {
    for (const Wanted wanted : {Wanted::kByType, Wanted::kBySwitches}) {
        for (const auto& [pairwise, stepwise] :
             {std::pair(false, false), std::pair(true, false), std::pair(false, true)}) {
            QKSettings settings;
            ComparisonRequest{pairwise, stepwise}.AddTo(settings, wanted);
            const ComparisonRequest read = ComparisonRequest::OfTest(settings, wanted);
            EXPECT_EQ(read.pairwise, pairwise);
            EXPECT_EQ(read.stepwise, stepwise);
        }
        const ComparisonRequest unsaid = ComparisonRequest::OfTest(QKSettings(), wanted);
        EXPECT_FALSE(unsaid.pairwise || unsaid.stepwise);
    }
}

TEST(ComparisonRequest, ASwitchIsOnAtExactly1) {
    for (const double value : {0.0, 0.999, 1.0, 2.0}) {
        QKSettings settings;
        settings.AddSetting("pairWise", value);
        settings.AddSetting("stepWise", value);
        const ComparisonRequest read = ComparisonRequest::OfTest(settings, Wanted::kBySwitches);
        EXPECT_EQ(read.pairwise, value == 1) << value;
        EXPECT_EQ(read.stepwise, value == 1) << value;
    }
}

TEST(ComparisonRequest, IsRefusedWithAWarningForEachThatIsAskedFor) {
    constexpr RefusalCodes kCodes{.pairwise = 221813, .stepwise = 221814};
    ComparisonRequest both{true, true};
    const std::vector<TestMessage> warnings = both.Refuse(kCodes);
    ASSERT_EQ(warnings.size(), 2U);
    EXPECT_EQ(warnings[0], (TestMessage{QKStatus(221813), MessageKind::kWarning, {}, {}}));
    EXPECT_EQ(warnings[1], (TestMessage{QKStatus(221814), MessageKind::kWarning, {}, {}}));
    EXPECT_FALSE(both.pairwise);
    EXPECT_FALSE(both.stepwise);
    EXPECT_TRUE(both.Refuse(kCodes).empty());
}

}  // namespace
