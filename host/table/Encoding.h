#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "host/ByteSource.h"

namespace tarn {

/// How the characters of a text are written as bytes.
enum class Encoding { kUtf8, kUtf16LittleEndian, kUtf16BigEndian, kWindows1252, kIso88591 };

/// The encodings by their names.
inline constexpr std::array<std::pair<std::string_view, Encoding>, 5> kEncodings{
    {{"utf-8", Encoding::kUtf8},
     {"utf-16le", Encoding::kUtf16LittleEndian},
     {"utf-16be", Encoding::kUtf16BigEndian},
     {"windows-1252", Encoding::kWindows1252},
     {"iso-8859-1", Encoding::kIso88591}}};

std::string_view NameOf(Encoding encoding);

/// The encoding that the mark at the front of a text tells; none where there is no mark.
std::optional<Encoding> EncodingOfMark(std::string_view firstBytes);

/// The filter that makes UTF-8 of a text, without its mark; null for UTF-8 itself, which a reader checks. The filter
/// throws an `InputError` for what is no character.
std::unique_ptr<ByteFilter> Utf8From(Encoding encoding);

/// The filter that ends lines with a line feed where they end with a carriage return alone, as they did on old
/// machines.
std::unique_ptr<ByteFilter> LineFeedsForReturns();

}  // namespace tarn
