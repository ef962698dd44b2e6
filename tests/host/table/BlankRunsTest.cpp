#include "host/table/BlankRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>

namespace tarn {
namespace {

/// Hands on at most `size` bytes at a time.
class SmallBlocks : public ByteFilter {
 public:
    explicit SmallBlocks(std::size_t size) : size_(size) {}
    std::size_t Read(ByteSource& from, char* buffer, std::size_t capacity) override {
        return from.Read(buffer, std::min(size_, capacity));
    }
    void Restart() override {}

 private:
    std::size_t size_;
};

TEST(BlankRuns, BecomeOneTab) {
    EXPECT_EQ(WithTabsForBlanks("a b\n1  2\n"), "a\tb\n1\t2\n");
    EXPECT_EQ(WithTabsForBlanks("  a \t b  \r\n 1 2 \r\n"), "a\tb\r\n1\t2\r\n");
    EXPECT_EQ(WithTabsForBlanks("\n \na"), "\n\na");
}

TEST(BlankRuns, StayWithinQuotes) {
    EXPECT_EQ(WithTabsForBlanks("\"a  b\" \"c \"\"d  e\"\" f\" g\n"), "\"a  b\"\t\"c \"\"d  e\"\" f\"\tg\n");
    EXPECT_EQ(WithTabsForBlanks("\"a \n  b\" c"), "\"a \n  b\"\tc");
    EXPECT_EQ(WithTabsForBlanks("5\" 6\""), "5\"\t6\"") << "a quote within a cell is a character";
    EXPECT_EQ(WithTabsForBlanks("\xef\xbb\xbf\"a  b\" c"), "\xef\xbb\xbf\"a  b\"\tc");
}

// Wherever the blocks of the source are cut.
TEST(BlankRuns, GoOnFromBlockToBlock) {
    const std::string text = "  id   arm  \"a  note\"\r\n1    low   \"x \"\"y  z\"\"\"   \r\n\n 2 high \"\"\n";
    const std::string expected = WithTabsForBlanks(text);
    for (std::size_t size = 1; size <= text.size(); ++size) {
        ByteSource source = ByteSource::Through(
            ByteSource::Through(ByteSource::FromMemory("text", text), std::make_unique<SmallBlocks>(size)),
            TabsForBlanks());
        for (int round = 0; round < 2; ++round) {
            std::string made;
            char byte = 0;
            while (source.Read(&byte, 1) == 1) made += byte;
            EXPECT_EQ(made, expected) << size;
            source.Rewind();
        }
    }
}

}  // namespace
}  // namespace tarn
