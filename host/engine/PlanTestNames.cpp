#include "host/engine/PlanTestNames.h"

#include <algorithm>
#include <optional>

#include "host/InputError.h"
#include "host/TestNames.h"

namespace tarn {

namespace {

std::optional<TestFamily> FamilyMeantBy(const Json& entry) {
    const auto has = [&](const char* key) { return entry.contains(key) && !entry[key].is_null(); };
    if (has(kGroupVariableKey)) return TestFamily::kIndependent;
    if (!has(kVariableKey)) return std::nullopt;
    return entry[kVariableKey].is_array() ? TestFamily::kRelated : TestFamily::kOneSample;
}

/// A name that stands for this test alone, or the engine's with the keys by which its other name would do.
std::string Described(const KnownTest& test) {
    if (TestsNamed(test.userName).size() == 1) return test.userName;
    std::string described(test.planName);
    switch (test.family) {
        case TestFamily::kOneSample:
            described += std::string(" with one field as ") + kVariableKey;
            break;
        case TestFamily::kRelated:
            described += std::string(" with a list as ") + kVariableKey;
            break;
        case TestFamily::kIndependent:
            described += std::string(" with ") + kGroupVariableKey;
            break;
    }
    return described;
}

}  // namespace

std::vector<const KnownTest*> TestsNamed(std::string_view name) {
    std::vector<const KnownTest*> tests;
    if (name.empty()) return tests;
    for (const KnownTest& test : KnownTests()) {
        const std::string_view own = test.userName;
        const bool hasEnding = own.starts_with(name) && own.substr(name.size()).starts_with('-');
        const bool isListed = FindTestName(test.family, name) != nullptr;
        if (own == name || (hasEnding && isListed)) tests.push_back(&test);
    }
    return tests;
}

std::string PlanTestName(const std::string& name, const Json& entry, const std::string& source,
                         const std::string& path) {
    if (FindKnownTest(name, KeyForm::kPlan) != nullptr) return name;
    std::vector<const KnownTest*> tests = TestsNamed(name);
    if (tests.empty()) return name;
    std::string expected;
    for (const KnownTest* const test : tests) {
        expected += (expected.empty() ? "" : test == tests.back() ? " or " : ", ") + Described(*test);
    }
    if (tests.size() > 1) {
        const std::optional<TestFamily> family = FamilyMeantBy(entry);
        std::erase_if(tests, [&](const KnownTest* test) { return test->family != family; });
    }
    if (tests.size() == 1) return std::string(tests.front()->planName);
    throw InputError(source + ": " + path + ": several tests have this name, and its keys don't say which is meant; " +
                     "expected " + expected);
}

std::vector<std::string_view> NamesOfPlanTests() {
    std::vector<std::string_view> names;
    for (const KnownTest& test : KnownTests()) names.push_back(test.planName);
    for (const TestName& test : TestNames()) names.push_back(test.name);
    for (const KnownTest& test : KnownTests()) names.emplace_back(test.userName);
    std::erase(names, "");
    return names;
}

}  // namespace tarn
