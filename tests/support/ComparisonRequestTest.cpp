#include "support/ComparisonRequest.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

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
