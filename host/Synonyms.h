#pragma once

#include <string_view>
#include <vector>

namespace tarn {

/// What a word of other tools is called here: options, with their hyphens, for a word that begins with one; else tests,
/// commands and keys. Letters and digits alone count, whatever their case, and "test" at the end may be missing. For
/// suggestions: what is meant may not exist where the word was typed.
std::vector<std::string_view> NamesMeantBy(std::string_view word);

}  // namespace tarn
