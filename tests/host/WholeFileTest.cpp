#include "host/WholeFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "tests/harness/Command.h"

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

}  // namespace
