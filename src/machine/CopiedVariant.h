#pragma once

#include <utility>
#include <variant>

/// A copy of a variant, or what copying throws. The copy constructor of GCC 12 destroys what it doesn't hold if the
/// copy of a text or of a vector fails for want of memory and all alternatives can be moved without failing. So the
/// value is copied by itself, and the variant is only ever moved.
///
/// This header includes nothing of the project and is open to all floors.
template <typename... Kinds>
std::variant<Kinds...> CopiedVariant(const std::variant<Kinds...>& variant) {
    return std::visit(
        [](const auto& value) {
            auto copy = value;
            return std::variant<Kinds...>(std::in_place_type<decltype(copy)>, std::move(copy));
        },
        variant);
}
