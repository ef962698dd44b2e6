#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

/// Writing of XML nodes, none of which gets lost. Where memory is exhausted, the library answers with a null node, or
/// with a node whose name or value stayed empty, and a document would go out with a part missing; these throw a
/// `std::bad_alloc`. A parent that is null takes nothing and gives a null node.
///
namespace XmlNodes {

/// What a document begins with.
inline constexpr const char* kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

pugi::xml_node AppendElement(pugi::xml_node parent, const char* name);
/// With U+FFFD in the place of what XML can't hold.
void AppendAttribute(pugi::xml_node element, const char* name, std::string_view value);
/// To the byte, for a reader that takes what XML can't hold: the two sides of the component boundary.
void AppendExactAttribute(pugi::xml_node element, const char* name, const char* value);
/// The document without line breaks between its elements, behind the library's own declaration.
std::string TextOf(const pugi::xml_document& document);
/// Whether the text that was parsed is well formed.
bool IsWellFormed(const pugi::xml_parse_result& parsed);

}  // namespace XmlNodes
