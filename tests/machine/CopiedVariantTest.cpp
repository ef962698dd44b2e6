#include "machine/CopiedVariant.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "tests/harness/AllocationFailure.h"

namespace {

using Variant = std::variant<std::monostate, double, std::string, std::vector<std::string>>;

const std::string kLongText(100, 'x');  // which no text keeps within itself

TEST(CopiedVariant, HoldsTheSameValueOfTheSameKind) {
    for (const Variant& variant : {Variant(), Variant(0.5), Variant(kLongText), Variant(std::vector{kLongText})}) {
        const Variant copy = CopiedVariant(variant);
        EXPECT_EQ(copy.index(), variant.index());
        EXPECT_TRUE(copy == variant);
    }
}

// Copied as a variant, it would free what it never took.
TEST(CopiedVariant, ThrowsWhereMemoryFails) {
    const Variant text(kLongText);
    const Variant texts(std::vector{kLongText, kLongText});
    for (const Variant* variant : {&text, &texts}) {
        const int allocations = variant == &text ? 1 : 3;
        for (int successes = 0; successes < allocations; ++successes) {
            const component_test::AllocationFailure failure(successes);
            EXPECT_THROW(static_cast<void>(CopiedVariant(*variant)), std::bad_alloc) << successes;
        }
    }
}

}  // namespace
