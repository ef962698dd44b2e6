#include "host/InputError.h"

#include <gtest/gtest.h>

#include <string>

namespace tarn {
namespace {

TEST(InputError, IsOneLineWithoutControls) {
    EXPECT_STREQ(InputError("a\nb\x1b[31m\x7f").what(), "a?b?[31m?");
}

TEST(InputError, CutsALineAsLongAsAFileAtACharacter) {
    const std::string longest(8000, 'x');
    EXPECT_EQ(InputError(longest).what(), longest);
    EXPECT_EQ(InputError(longest + "y").what(), longest + "...");
    const std::string before(7999, 'x');
    EXPECT_EQ(InputError(before + "\xC3\xA9 and more").what(), before + "...");
}

}  // namespace
}  // namespace tarn
