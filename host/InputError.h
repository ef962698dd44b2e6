#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarn {

/// An input that can't be read as what it should be. `what()` is one line for the user: the file, the line, column or
/// key in it, what stands there and what was expected.
class InputError : public std::runtime_error {
 public:
    /// Control characters in `line`, which may stem from a file name or a key, are shown as "?", bytes that are no
    /// UTF-8 as "\xFF". A word of more than 1,000 bytes and a line of more than 8,000 are cut at the border of a
    /// character and end in "...".
    explicit InputError(const std::string& line);
};

/// `text` in double quotes for a message: line breaks and tabs as "\n", "\r" and "\t", cut after `maxLength` bytes at
/// the border of a character and marked by "..." then.
std::string Quoted(std::string_view text, std::size_t maxLength = 40);

/// The texts as alternatives for a message: "a", "b" or "c"; of many only the first ones, and how many more there are.
/// `last` stands before the last one.
std::string Alternatives(std::span<const std::string_view> texts, std::string_view last = " or ");

}  // namespace tarn
