// Runs at the same time in one process: each has its own host, whatever becomes of the other.

#include "host/engine/EmbeddedHost.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <latch>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/harness/Command.h"
#include "tests/harness/Document.h"
#include "tests/host/engine/TableOfRows.h"

namespace tarn {
namespace {

/// The library stands beside the command.
std::vector<std::string> LibraryFolders() {
    return {std::filesystem::path(harness::CommandPath()).parent_path().string()};
}

// Keeps the library loaded to the end of the program, where leaks are looked at: what a destroyed component keeps by
// definition is known by the names of its functions.
[[maybe_unused]] const EngineLibrary& kept = *new EngineLibrary(LibraryFolders());

Table PairTable(const std::vector<std::vector<double>>& rows) {
    std::vector<Column> columns(2);
    columns[0].name = "before";
    columns[1].name = "after";
    return TableOfRows(std::move(columns), rows);
}

/// A sign test of the pair, and a chi-square test, of which a warning comes: it takes no continuous field.
EngineRun SignTest(const std::string& applicationName) {
    const auto selected = [](const std::string& test) {
        return "<Setting name='" + test +
               "' kind='list'><Setting name='isSelected' kind='bool' value='true'/></Setting>";
    };
    const std::string pair = "kind='stringVector'><Element value='before'/><Element value='after'/></Setting>";
    EngineRun run;
    run.settingsDocument =
        "<Settings><Setting name='oneSampleVariables' " + pair + "<Setting name='relatedVariables' " + pair +
        "<Setting name='isAutomaticallyOneSample' kind='bool' value='false'/>" + selected("OChiSquare") +
        "<Setting name='isAutomaticallyRelated' kind='bool' value='false'/>" + selected("RSign") +
        "<Setting name='done' kind='bool' value='true'/></Settings>";
    run.applicationName = applicationName;
    run.applicationVersion = "1";
    return run;
}

std::string ApplicationOf(const EngineOutcome& outcome) {
    return harness::Document(outcome.document).Output().child("Header").child("Application").attribute("name").value();
}

std::vector<long> CodesOf(const EngineOutcome& outcome) {
    std::vector<long> codes;
    for (const EngineMessage& message : outcome.messages) codes.push_back(message.code);
    return codes;
}

const std::vector<std::vector<double>> kSmallRows{{1, 2}, {2, 4}, {3, 2}, {4, 4}};
const std::vector<std::vector<double>> kOtherRows{{5, 1}, {6, 2}, {7, 3}};

TEST(EmbeddedHost, RunsAtTheSameTimeGiveTheDocumentsOfRunsAlone) {
    const EngineLibrary engine(LibraryFolders());
    const Table tables[] = {PairTable(kSmallRows), PairTable(kOtherRows)};
    EngineRun runs[] = {SignTest("first"), SignTest("second")};
    std::string alone[2];
    for (int i = 0; i < 2; ++i) alone[i] = RunInEngine(engine, tables[i], runs[i]).document;
    ASSERT_NE(alone[0], alone[1]);

    // Neither goes on from its first report before the other has come to its own.
    std::latch bothAreRunning(2);
    EngineOutcome outcomes[2];
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 2; ++i) {
            runs[i].onProgress = [&, isFirst = true](double) mutable {
                if (std::exchange(isFirst, false)) bothAreRunning.arrive_and_wait();
            };
            threads.emplace_back([&, i] { outcomes[i] = RunInEngine(engine, tables[i], runs[i]); });
        }
    }
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(outcomes[i].succeeded);
        EXPECT_EQ(outcomes[i].document, alone[i]);
        EXPECT_EQ(ApplicationOf(outcomes[i]), runs[i].applicationName);
        EXPECT_EQ(CodesOf(outcomes[i]), std::vector<long>{220021});
    }
}

decltype(&hx_create_component) createComponent = nullptr;
std::function<void()> beforeCreation;

unsigned CreateAfterwards(HXContext* context, void* unused, void** component, int* errorCode) {
    if (const auto action = std::exchange(beforeCreation, nullptr)) action();
    return createComponent(context, unused, component, errorCode);
}

TEST(EmbeddedHost, ARunThatBeginsAndEndsBeforeTheComponentIsMadeLeavesItsHost) {
    const Table table = PairTable(kSmallRows);
    EngineLibrary engine(LibraryFolders());
    createComponent = std::exchange(engine.createComponent, &CreateAfterwards);
    EngineOutcome first;
    beforeCreation = [&] {
        std::jthread([&] { first = RunInEngine(engine, PairTable(kOtherRows), SignTest("first")); });
    };
    const EngineOutcome second = RunInEngine(engine, table, SignTest("second"));
    EXPECT_EQ(ApplicationOf(first), "first");
    EXPECT_EQ(ApplicationOf(second), "second");
    EXPECT_EQ(second.document, RunInEngine(engine, table, SignTest("second")).document);
}

TEST(EmbeddedHost, TheLibraryHasAHostWhenAllRunsAreOver) {
    const EngineLibrary engine(LibraryFolders());
    std::jthread([&] { RunInEngine(engine, PairTable(kSmallRows), SignTest("first")); }).join();
    std::size_t needed = 0;
    int errorCode = 0;
    EXPECT_EQ(engine.getModuleInformation(nullptr, 0, &needed, &errorCode), HX_BUFFER_TOO_SMALL);
}

}  // namespace
}  // namespace tarn
