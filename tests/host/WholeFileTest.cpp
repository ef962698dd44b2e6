#include "host/WholeFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "tests/harness/Command.h"
#include "tests/host/InputErrorOf.h"

namespace {

TEST(WholeFile, WritesAllBytesAndLeavesNothingBesideThem) {
    const harness::ScratchFolder folder;
    const std::string content("a\0b\n", 4);
    tarn::WriteWholeFile(folder.Path("f"), content);
    EXPECT_EQ(harness::ReadFile(folder.Path("f")), content);
    EXPECT_EQ(folder.Files(), std::vector<std::string>{"f"});
}

TEST(WholeFile, HasTheRightsThatTheUsersMaskLeaves) {
    const harness::ScratchFolder folder;
    const mode_t mask = umask(027);
    tarn::WriteWholeFile(folder.Path("f"), "x");
    umask(mask);
    struct stat info {};
    ASSERT_EQ(stat(folder.Path("f").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
}

TEST(WholeFile, FailureKeepsWhatWasThere) {
    // A folder under the file's name can't be replaced by a file, whoever the user is.
    const harness::ScratchFolder folder;
    std::filesystem::create_directory(folder.Path("f"));
    folder.Write("f/inside", "kept");
    EXPECT_THROW(tarn::WriteWholeFile(folder.Path("f"), "x"), tarn::InputError);
    EXPECT_EQ(harness::ReadFile(folder.Path("f/inside")), "kept");
    EXPECT_EQ(folder.Files(), std::vector<std::string>{"f"});
}

TEST(WholeFile, FailureNamesTheFileAndTheReason) {
    try {
        tarn::WriteWholeFile("/nowhere/at/all", "x");
        FAIL() << "written";
    } catch (const tarn::InputError& error) {
        EXPECT_STREQ(error.what(), "/nowhere/at/all: can't be written: No such file or directory");
    }
}

TEST(WholeFile, AnEmptyPathIsRefused) {
    EXPECT_EQ(tarn::InputErrorOf([] { tarn::WriteWholeFile("", "x"); }),
              "an empty path can't be written; expected a file");
}

TEST(WholeFile, ANewFileComesAsOneThatIsReplaced) {
    const harness::ScratchFolder folder;
    for (const char* content : {"first", "second", ""}) {
        tarn::WriteWholeFile(folder.Path("f"), content);
        EXPECT_EQ(harness::ReadFile(folder.Path("f")), content);
    }
    EXPECT_EQ(folder.Files(), std::vector<std::string>{"f"});
}

TEST(WholeFile, WithNamesItIsTheSame) {
    const harness::ScratchFolder folder;
    const mode_t mask = umask(027);
    for (const char* content : {"first", "second"}) tarn::WriteWholeFileByName(folder.Path("f"), content);
    umask(mask);
    EXPECT_EQ(harness::ReadFile(folder.Path("f")), "second");
    struct stat info {};
    ASSERT_EQ(stat(folder.Path("f").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640u);
    std::filesystem::create_directory(folder.Path("g"));
    EXPECT_EQ(tarn::InputErrorOf([&] { tarn::WriteWholeFileByName(folder.Path("g"), "x"); }),
              folder.Path("g") + ": can't be written: Is a directory");
    EXPECT_EQ(folder.Files(), (std::vector<std::string>{"f", "g"}));
}

TEST(WholeFile, TheNameMayBeAsLongAsNamesCanBe) {
    const harness::ScratchFolder folder;
    const std::string longest(255, 'n');
    for (int i = 0; i < 2; ++i) tarn::WriteWholeFile(folder.Path(longest), "x");
    tarn::WriteWholeFileByName(folder.Path(longest), "y");
    EXPECT_EQ(harness::ReadFile(folder.Path(longest)), "y");
}

TEST(WholeFile, LinksAreWrittenThrough) {
    const harness::ScratchFolder folder;
    std::filesystem::create_directory(folder.Path("there"));
    folder.Write("there/old", "x");
    std::filesystem::create_symlink("there/second", folder.Path("first"));
    std::filesystem::create_symlink("old", folder.Path("there/second"));
    std::filesystem::create_symlink("there/new", folder.Path("dangling"));
    std::filesystem::create_symlink("loop", folder.Path("loop"));
    tarn::WriteWholeFile(folder.Path("first"), "through two links");
    EXPECT_EQ(harness::ReadFile(folder.Path("there/old")), "through two links");
    tarn::WriteWholeFile(folder.Path("dangling"), "to what was not there");
    EXPECT_EQ(harness::ReadFile(folder.Path("there/new")), "to what was not there");
    for (const char* link : {"first", "there/second", "dangling"}) {
        EXPECT_TRUE(std::filesystem::is_symlink(folder.Path(link))) << link;
    }
    EXPECT_EQ(tarn::InputErrorOf([&] { tarn::WriteWholeFile(folder.Path("loop"), "x"); }),
              folder.Path("loop") + ": can't be written: Too many levels of symbolic links");
}

}  // namespace
