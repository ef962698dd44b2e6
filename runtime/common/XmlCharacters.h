#pragma once

#include <string>
#include <string_view>

/// The text with U+FFFD in the place of what XML can't hold: control characters and broken UTF-8. The XML writer that
/// the runtime uses puts them into a document as they are, and no parser takes that back.
std::string WithXmlCharactersOnly(std::string_view text);
