// What a process that makes and runs components, one after the other, grows by: nothing with each run, and with each
// component what it was configured with, which destroying it doesn't release.

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstddef>
#include <utility>

#include "tests/component/HostedComponent.h"

namespace component_test {

namespace {

using ManyComponents = HostedComponent;

/// What the C library has handed out of its heaps, large blocks included.
std::size_t BytesInUse() {
    const struct mallinfo2 known = mallinfo2();
    return known.uordblks + known.hblkhd;
}

// What libraries keep for themselves comes with the first runs.
constexpr int kFirstRuns = 20;
constexpr int kCycles = 1000;
constexpr std::size_t kBytesOfRun = 100;
// Settings, data model, requirements and messages of a component of two fields.
constexpr std::size_t kBytesOfConfiguration = 48 * 1024;

TEST_F(ManyComponents, ThousandLivesLeaveTheirConfigurationsAndNoMore) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer has heaps of its own, and looks for leaks itself";
#endif
    GivePair();
    std::size_t before = 0;
    for (int cycle = 0; cycle < kFirstRuns + kCycles; ++cycle) {
        if (cycle == kFirstRuns) before = BytesInUse();
        ASSERT_EQ(RunAll(), HX_OK);
        ASSERT_EQ(End(), HX_OK);
        ASSERT_EQ(library.destroy(std::exchange(component, nullptr)), HX_OK);
        tiny_host_free(&host);
        host.calls[0] = host.messages[0] = '\0';
    }
    const std::size_t after = BytesInUse();
    EXPECT_LE(after, before + kCycles * kBytesOfConfiguration) << (after - before) / kCycles << " bytes a cycle";
}

TEST_F(ManyComponents, ThousandRunsOfAComponentLeaveNothing) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer has heaps of its own, and looks for leaks itself";
#endif
    GivePair();
    ASSERT_EQ(Create(), HX_OK);
    std::size_t before = 0;
    for (int cycle = 0; cycle < kFirstRuns + kCycles; ++cycle) {
        if (cycle == kFirstRuns) before = BytesInUse();
        ASSERT_EQ(Configure(), HX_OK);
        ASSERT_EQ(Begin(), HX_OK);
        ASSERT_EQ(End(), HX_OK);
        tiny_host_free(&host);
        host.calls[0] = host.messages[0] = '\0';
    }
    const std::size_t after = BytesInUse();
    EXPECT_LE(after, before + kCycles * kBytesOfRun) << (after - before) / kCycles << " bytes a cycle";
}

}  // namespace

}  // namespace component_test
