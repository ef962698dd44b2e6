#pragma once

#include <span>
#include <string_view>

#include "host/NearestNames.h"  // for those who look for a test and find none of the name
#include "vocabulary/TestFacts.h"

namespace tarn {

using ::TestFamily;

/// One test as a user names it. A name may stand in two families ("wilcoxon"); the fields then say which is meant.
struct TestName {
    TestFamily family;
    std::string_view name;
    /// The key of the test in a request; of a test with several how they begin.
    std::string_view requestKey;
    /// Its name in the result document, by which the texts know it.
    std::string_view resultName;
};

/// All tests that a user can name, family by family, in the order in which a request lists them.
std::span<const TestName> TestNames();

/// The name of a family as a heading.
std::string_view FamilyTitle(TestFamily family);

/// The test of that name in that family; null for none. Borrowed for the life of the process.
const TestName* FindTestName(TestFamily family, std::string_view name);

}  // namespace tarn
