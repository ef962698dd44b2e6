#include "host/Utf8.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn {
namespace {

std::size_t InvalidAt(std::string_view text) {
    return static_cast<std::size_t>(FindInvalidUtf8(text.data(), text.data() + text.size()) - text.data());
}

// The borders of the well-formed sequences: The Unicode Standard, table 3-7.
TEST(Utf8, AcceptsTheFirstAndLastCharacterOfEachLength) {
    for (const std::string text : {"\x01", "\x7f", "\xc2\x80", "\xdf\xbf", "\xe0\xa0\x80", "\xed\x9f\xbf",
                                   "\xee\x80\x80", "\xef\xbf\xbf", "\xf0\x90\x80\x80", "\xf4\x8f\xbf\xbf"}) {
        EXPECT_EQ(InvalidAt("a" + text + "b"), text.size() + 2) << testing::PrintToString(text);
        EXPECT_TRUE(IsUtf8(text)) << testing::PrintToString(text);
    }
    EXPECT_EQ(InvalidAt(""), 0u);
}

TEST(Utf8, RejectsWhatIsNoShortestFormOfACharacter) {
    using namespace std::string_literals;
    for (const std::string& text :
         {"\x00"s, "\x80"s, "\xbf"s, "\xc0\x80"s, "\xc1\xbf"s, "\xc3"s, "\xc3("s, "\xe0\x9f\xbf"s, "\xed\xa0\x80"s,
          "\xed\xbf\xbf"s, "\xe2\x82"s, "\xe2\x82("s, "\xf0\x8f\xbf\xbf"s, "\xf4\x90\x80\x80"s, "\xf5\x80\x80\x80"s,
          "\xf0\x9f\x98"s, "\xf0\x9f\x98("s, "\xff"s, "\xfe"s}) {
        EXPECT_EQ(InvalidAt("a\xc3\xa9" + text), 3u) << testing::PrintToString(text);
        EXPECT_FALSE(IsUtf8(text)) << testing::PrintToString(text);
        EXPECT_EQ(InvalidAt("a\xc3\xa9" + text + "bcd"), 3u) << testing::PrintToString(text);
    }
}

}  // namespace
}  // namespace tarn
