// Several analyses at once in one process, each with a table, a language and an end of its own; and a machine that has
// no second thread to give. Built and run under ThreadSanitizer, too.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include "tests/analysis/AnalysisRun.h"

namespace {

std::atomic<bool> refusesThreads = false;

}  // namespace

/// Stands in front of the system's own, for this program and all libraries that it loads.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                              void* argument) {
    if (refusesThreads) return EAGAIN;
    static const auto next = reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    return next(thread, attributes, start, argument);
}

namespace {

using namespace analysis_test;

/// Many small analyses, whose ends and beginnings meet in every way.
TEST(Concurrency, FourThreadsGiveTheDocumentsThatTheyGiveAlone) {
    constexpr int kThreads = 4;
    constexpr int kRuns = 250;  // each, so 1,000 in all
    std::array<std::string, kThreads> alone;
    for (int i = 0; i < kThreads; ++i) {
        const tarn::Table table = TableOf(GroupsCsv(30 + i, i), NominalGroups());
        alone[i] = tarn::Analyze(table, GroupTests(), Environment()).document;
        ASSERT_FALSE(alone[i].empty());
    }
    ASSERT_NE(alone[0], alone[1]);
    std::atomic<int> different = 0;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                for (int run = 0; run < kRuns; ++run) {
                    const tarn::Table table = TableOf(GroupsCsv(30 + i, i), NominalGroups());
                    const tarn::AnalysisOutcome outcome = tarn::Analyze(table, GroupTests(), Environment());
                    if (outcome.document != alone[i]) ++different;
                }
            });
        }
    }
    EXPECT_EQ(different, 0);
}

/// Large enough that each run shares its reading and its descriptives with a thread of its own.
TEST(Concurrency, RunsThatShareTheirWorkKeepItApart) {
    constexpr int kThreads = 3;
    std::array<std::string, kThreads> alone;
    std::array<std::string, kThreads> together;
    const auto run = [](int seed) {
        tarn::AnalysisOptions options = GroupTests();
        options.tests = {"mann-whitney", "wilcoxon"};
        return tarn::Analyze(TableOf(GroupsCsv(60'000, seed), NominalGroups()), options, Environment()).document;
    };
    for (int i = 0; i < kThreads; ++i) alone[i] = run(i);
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) threads.emplace_back([&, i] { together[i] = run(i); });
    }
    EXPECT_NE(alone[0], alone[1]);
    EXPECT_EQ(together, alone);
}

TEST(Concurrency, StoppingOneRunLeavesTheOther) {
    const tarn::Table table = TableOf(GroupsCsv(200, 1), NominalGroups());
    const std::string alone = tarn::Analyze(table, GroupTests(), Environment()).document;
    tarn::AnalysisOutcome stopped;
    tarn::AnalysisOutcome whole;
    {
        std::jthread first([&] {
            tarn::AnalysisEnvironment environment = Environment();
            environment.isCancelled = [] { return true; };
            stopped = tarn::Analyze(TableOf(GroupsCsv(60'000, 2), NominalGroups()), GroupTests(), environment);
        });
        std::jthread second([&] { whole = tarn::Analyze(table, GroupTests(), Environment()); });
    }
    EXPECT_FALSE(stopped.succeeded);
    EXPECT_EQ(whole.document, alone);
}

TEST(Concurrency, AMachineWithoutAnotherThreadGivesTheSame) {
    const std::string csv = GroupsCsv(60'000, 4);
    tarn::AnalysisOptions options = GroupTests();
    options.tests = {"mann-whitney", "wilcoxon"};
    tarn::AnalysisEnvironment environment = Environment();
    environment.isCancelled = [] { return false; };  // asks for a thread that watches
    const std::string usual = tarn::Analyze(TableOf(csv, NominalGroups()), options, environment).document;
    refusesThreads = true;
    const tarn::AnalysisOutcome outcome = tarn::Analyze(TableOf(csv, NominalGroups()), options, environment);
    refusesThreads = false;
    EXPECT_FALSE(usual.empty());
    EXPECT_EQ(outcome.document, usual);
}

}  // namespace
