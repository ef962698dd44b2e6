#pragma once

#include <string>
#include <string_view>

// XML holds no control characters and no broken UTF-8, and no parser takes back a document in which they stand. Here
// U+FFFD takes the place of each such byte.

/// The text with what XML can hold alone.
std::string WithXmlCharactersOnly(std::string_view text);

/// Append the text as it stands in a document: between the tags of an element, and as the value of an attribute.
void AppendXmlText(std::string& document, std::string_view text);
void AppendXmlAttribute(std::string& document, std::string_view value);
