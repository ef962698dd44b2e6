#include "host/FileHash.h"

#include <gtest/gtest.h>

#include "host/InputError.h"
#include "tests/harness/Command.h"

namespace {

// FIPS 180-2, appendix B.1; and of nothing.
TEST(FileHash, IsTheOneOfTheStandard) {
    const harness::ScratchFolder scratch;
    EXPECT_EQ(tarn::HashOfFile(scratch.Write("abc", "abc")),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(tarn::HashOfFile(scratch.Write("empty", "")),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

// FIPS 180-2, appendix B.3: a million times the letter a, which takes more than one block.
TEST(FileHash, TakesTheWholeFile) {
    const harness::ScratchFolder scratch;
    EXPECT_EQ(tarn::HashOfFile(scratch.Write("million", std::string(1000000, 'a'))),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(FileHash, TellsAFileThatIsNotThere) {
    EXPECT_THROW(tarn::HashOfFile("/no/such/file"), tarn::InputError);
}

}  // namespace
