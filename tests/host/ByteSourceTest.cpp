#include "host/ByteSource.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/host/InputErrorOf.h"
#include "tests/host/StandardInput.h"

namespace tarn {
namespace {

std::string FileWith(const std::string& name, const std::string& bytes) {
    std::string path = testing::TempDir() + name;
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

TEST(ByteSource, ReadsAFileTwice) {
    ByteSource source(FileWith("twice.txt", "first and second"));
    EXPECT_EQ(source.ReadAll(), "first and second");
    EXPECT_EQ(source.ReadAll(), "");
    source.Rewind();
    EXPECT_EQ(source.ReadAll(), "first and second");
}

TEST(ByteSource, GoesBackFromTheMiddle) {
    ByteSource memory = ByteSource::FromMemory("memory", "abcdef");
    ByteSource file(FileWith("middle.txt", "abcdef"));
    for (ByteSource* source : {&memory, &file}) {
        char bytes[4] = {};
        EXPECT_EQ(source->Read(bytes, 4), 4u);
        EXPECT_EQ(std::string(bytes, 4), "abcd");
        source->Rewind();
        EXPECT_EQ(source->ReadAll(), "abcdef");
    }
}

TEST(ByteSource, KeepsAPipeForTheSecondPass) {
    const std::string bytes(300000, 'x');
    const StandardInput pipe(bytes + "end");
    ByteSource source("-");
    EXPECT_EQ(source.Name(), "standard input");
    char first[10] = {};
    ASSERT_GT(source.Read(first, sizeof first), 0u);
    source.Rewind();
    EXPECT_EQ(source.ReadAll(), bytes + "end");
    EXPECT_EQ(source.ReadAll(), "");
    source.Rewind();
    EXPECT_EQ(source.ReadAll(), bytes + "end");
}

TEST(ByteSource, ATextHasABoundAndNoZeroBytes) {
    const std::string text(std::size_t{1} << 20, 'x');
    EXPECT_EQ(ByteSource::FromMemory("t", text).ReadText(text.size()), text);
    EXPECT_EQ(InputErrorOf([&] { ByteSource::FromMemory("t", text + "x").ReadText(text.size()); }),
              "t: longer than 1 MiB; expected less");
    EXPECT_EQ(InputErrorOf([&] { ByteSource::FromMemory("t", text + '\0').ReadText(2 * text.size()); }),
              "t: byte 1048577 is zero; expected a text");
    EXPECT_EQ(InputErrorOf([] { ByteSource("/dev/zero").ReadText(100); }),
              "/dev/zero: byte 1 is zero; expected a text");
}

TEST(ByteSource, TellsWhatCannotBeRead) {
    EXPECT_EQ(InputErrorOf([] { ByteSource("/no/such/file.csv"); }),
              "/no/such/file.csv: cannot be read: No such file or directory; expected a readable file");
    const std::string directory = testing::TempDir();
    EXPECT_EQ(InputErrorOf([&] { ByteSource(directory).ReadAll(); }),
              directory + ": cannot be read: Is a directory; expected a readable file");
}

TEST(InputErrorText, IsOneLine) {
    EXPECT_STREQ(InputError("a\nb\x7f\x1b[0m").what(), "a?b??[0m");
    EXPECT_EQ(Quoted("a\tb\r\nc"), "\"a\\tb\\r\\nc\"");
}

TEST(InputErrorText, CutsLongTextsBetweenCharacters) {
    EXPECT_EQ(Quoted("abcdef", 6), "\"abcdef\"");
    EXPECT_EQ(Quoted("abcdefg", 6), "\"abcdef...\"");
    EXPECT_EQ(Quoted("abcde\xc3\xa9", 6), "\"abcde...\"");
    EXPECT_EQ(Quoted("\xc3\xa9\xc3\xa9", 3), "\"\xc3\xa9...\"");
}

}  // namespace
}  // namespace tarn
