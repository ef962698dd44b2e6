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

/// Whether two names are the same but for the case of their ASCII letters.
bool AreLike(std::string_view first, std::string_view second);

/// The note that a name which a user typed means a field that is spelt otherwise.
std::string TakenForNote(std::string_view typed, std::string_view field);

/// "; did you mean a, b?" for the end of a message, "" if nothing is near.
std::string DidYouMean(std::span<const std::string_view> nearest);

}  // namespace tarn
