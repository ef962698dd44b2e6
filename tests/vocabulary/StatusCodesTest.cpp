#include "vocabulary/StatusCodes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <tuple>

#include "tests/harness/Command.h"
#include "vocabulary/TestFacts.h"

namespace {

using StatusCode::kTable;
using StatusCode::Row;

TEST(StatusCodes, HaveOneRowForEachKindAndReporter) {
    std::set<std::tuple<long, MessageKind, Reporter>> rows;
    for (const Row& row : kTable) EXPECT_TRUE(rows.insert({row.code, row.kind, row.reporter}).second) << row.code;
    EXPECT_TRUE(std::ranges::is_sorted(kTable, {}, &Row::code));
}

TEST(StatusCodes, OfATestAreOfItsGroup) {
    const auto groupOf = [](const Row& row) { return row.code / 100; };
    for (const Row& row : kTable) {
        const bool isOfATest =
            std::ranges::find(Tests::kAll, groupOf(row), &TestFacts::codeGroup) != std::end(Tests::kAll);
        EXPECT_EQ(isOfATest, row.reporter == Reporter::kTest) << row.code;
    }
    for (const TestFacts* const test : Tests::kAll) {
        EXPECT_NE(std::ranges::find(kTable, test->codeGroup, groupOf), std::end(kTable)) << test->resultName;
    }
}

const char* SuffixOf(MessageKind kind) {
    return kind == MessageKind::kError ? "_error" : kind == MessageKind::kWarning ? "_warning" : "_help";
}

// A code that a test's page has and the table doesn't have would not compile. The other way round: no row is left over.
TEST(StatusCodes, OfTestsStandInTheirSources) {
    std::string sources;
    for (const char* const folder : {"src/onesample", "src/related", "src/independent"}) {
        for (const auto& file : std::filesystem::directory_iterator(harness::SourcePath(folder))) {
            sources += harness::ReadFile(file.path().string());
        }
    }
    for (const Row& row : kTable) {
        if (row.reporter != Reporter::kTest) continue;
        // An error overall and a warning in a step; it stands in its source as an error.
        const bool isOfTwoKinds = row.code == 222210;
        const std::string code = std::to_string(row.code) + SuffixOf(isOfTwoKinds ? MessageKind::kError : row.kind);
        EXPECT_NE(sources.find(code), std::string::npos) << code;
    }
}

TEST(StatusCodes, AreKnownByTheirKinds) {
    EXPECT_EQ(220903_error, 220903);
    EXPECT_EQ(220916_help, 220916);
    EXPECT_EQ(221413_warning, 221413);
    EXPECT_FALSE(StatusCode::IsKnown(220903, MessageKind::kWarning));
    EXPECT_FALSE(StatusCode::IsKnown(999903, MessageKind::kError));
}

}  // namespace
