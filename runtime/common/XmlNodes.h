#pragma once

#include <pugixml.hpp>
#include <string_view>

/// Writing of XML nodes, none of which gets lost. Where memory is exhausted, the library answers with a null node, or
/// with a node whose name or value stayed empty, and a document would go out with a part missing; these throw a
/// `std::bad_alloc`. A parent that is null takes nothing and gives a null node.
///
/// Attribute values and texts are written with U+FFFD in the place of what XML can't hold; a copy is a copy.
namespace XmlNodes {

/// What a document begins with.
inline constexpr const char* kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

pugi::xml_node AppendElement(pugi::xml_node parent, const char* name);
void AppendAttribute(pugi::xml_node element, const char* name, std::string_view value);
/// Nothing for an empty text.
void AppendText(pugi::xml_node element, std::string_view text);
/// The whole tree under `source`, which does not lie under `parent`.
pugi::xml_node AppendCopy(pugi::xml_node parent, pugi::xml_node source);

}  // namespace XmlNodes
