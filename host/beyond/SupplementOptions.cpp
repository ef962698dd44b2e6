#include "host/beyond/SupplementOptions.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarn {

namespace {

constexpr std::array kAlternatives{
    std::pair<Alternative, std::string_view>{Alternative::kTwoSided, "two-sided"},
    std::pair<Alternative, std::string_view>{Alternative::kLess, "less"},
    std::pair<Alternative, std::string_view>{Alternative::kGreater, "greater"},
};
constexpr std::array kZeroMethods{
    std::pair<ZeroMethod, std::string_view>{ZeroMethod::kDrop, "drop"},
    std::pair<ZeroMethod, std::string_view>{ZeroMethod::kPratt, "pratt"},
    std::pair<ZeroMethod, std::string_view>{ZeroMethod::kSplit, "split"},
};

template <typename Names>
auto ValueOf(const Names& names, std::string_view name) {
    const auto found = std::ranges::find(names, name, [](const auto& pair) { return pair.second; });
    return found == names.end() ? std::nullopt : std::optional(found->first);
}

}  // namespace

std::string_view NameOf(Alternative alternative) {
    return std::ranges::find(kAlternatives, alternative, [](const auto& pair) { return pair.first; })->second;
}

std::optional<Alternative> AlternativeOf(std::string_view name) {
    return ValueOf(kAlternatives, name);
}

std::optional<ZeroMethod> ZeroMethodOf(std::string_view name) {
    return ValueOf(kZeroMethods, name);
}

}  // namespace tarn
