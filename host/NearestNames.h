#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

/// The names among `known` that someone who typed `name` is likely to mean, at most three, for a message. First those
/// that mean the same in the words of other tools; else those that are near by letters: the case of a letter and
/// leading hyphens don't count, two letters in each other's place are one slip, and a third of the letters may be
/// wrong. A beginning or a part of a name is near, too. None is better than one that misleads.
std::vector<std::string_view> NearestNames(std::string_view name, std::span<const std::string_view> known);

/// "; did you mean a, b?" for the end of a message, "" if nothing is near.
std::string DidYouMean(std::span<const std::string_view> nearest);

}  // namespace tarn
