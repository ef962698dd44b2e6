#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

enum class TestFamily { kOneSample, kRelated, kIndependent };

/// One test as a user names it. A name may stand in two families ("wilcoxon"); the fields then tell which is meant.
struct TestName {
    TestFamily family;
    std::string_view name;
    /// The key of the test in a request.
    std::string_view requestKey;
    /// Its name in the result document, by which the texts know it.
    std::string_view resultName = requestKey;
};

/// All tests, family by family, in the order in which a request lists them.
std::span<const TestName> TestNames();

/// The name of a family as a heading.
std::string_view FamilyTitle(TestFamily family);

/// The test of that name in that family; null for none. Borrowed for the life of the process.
const TestName* FindTestName(TestFamily family, std::string_view name);

/// The names among `known` that are spelt most like `name`, at most three.
std::vector<std::string_view> NearestNames(std::string_view name, std::span<const std::string_view> known);

}  // namespace tarn
