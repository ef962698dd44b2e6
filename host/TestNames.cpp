#include "host/TestNames.h"

#include <algorithm>
#include <array>

namespace tarn {

namespace {

using enum TestFamily;

constexpr bool HasName(const TestFacts* test) {
    return !test->userName.empty();
}

constexpr auto kNames = [] {
    std::array<TestName, std::ranges::count_if(Tests::kAll, HasName)> names{};
    auto name = names.begin();
    for (const TestFacts* const test : Tests::kAll) {
        if (HasName(test)) *name++ = {test->family, test->userName, test->requestName, test->resultName};
    }
    return names;
}();

}  // namespace

std::span<const TestName> TestNames() {
    return kNames;
}

std::string_view FamilyTitle(TestFamily family) {
    switch (family) {
        case kOneSample:
            return "One sample";
        case kRelated:
            return "Related samples";
        case kIndependent:
            return "Independent samples";
    }
    return "";
}

const TestName* FindTestName(TestFamily family, std::string_view name) {
    const auto found = std::find_if(kNames.begin(), kNames.end(),
                                    [&](const TestName& test) { return test.family == family && test.name == name; });
    return found == kNames.end() ? nullptr : &*found;
}

}  // namespace tarn
