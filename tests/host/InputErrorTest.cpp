#include "host/InputError.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn {
namespace {

TEST(InputError, IsOneLineWithoutControls) {
    EXPECT_STREQ(InputError("a\nb\x1b[31m\x7f").what(), "a?b?[31m?");
}

TEST(InputError, ShowsBytesThatAreNoTextByTheirNumber) {
    EXPECT_STREQ(InputError("a\xFFz \xC3\xA9").what(), "a\\xFFz \xC3\xA9");
    EXPECT_STREQ(InputError("\xED\xA0\x80").what(), "\\xED\\xA0\\x80") << "half of a pair";
    EXPECT_EQ(InputError(std::string("a\0b", 3)).what(), std::string("a?b"));
}

TEST(InputError, CutsAWordThatIsFarLongerThanANameAtACharacter) {
    const std::string longest(1000, 'x');
    EXPECT_EQ(InputError("a " + longest + "  z").what(), "a " + longest + "  z");
    EXPECT_EQ(InputError("a " + longest + "y  z").what(), "a " + longest + "...  z");
    const std::string before(999, 'x');
    EXPECT_EQ(InputError(before + "\xC3\xA9 z").what(), before + "... z");
}

TEST(InputError, CutsALineAsLongAsAFileAtACharacter) {
    std::string longest;
    while (longest.size() < 8000) longest += "x ";
    EXPECT_EQ(InputError(longest).what(), longest);
    EXPECT_EQ(InputError(longest + "y").what(), longest + "...");
    const std::string before = longest.substr(0, 7999);
    EXPECT_EQ(InputError(before + "\xC3\xA9 and more").what(), before + "...");
}

}  // namespace
}  // namespace tarn
