#pragma once

#include <pugixml.hpp>
#include <string_view>

/// Writing of XML nodes, none of which gets lost. Where memory is exhausted, the library answers with a null node, or
/// with a node whose name or value stayed empty, and a document would go out with a part missing; these throw a
/// `std::bad_alloc`. A parent that is null takes nothing and gives a null node.
///
/// Attribute values are written with U+FFFD in the place of what XML can't hold.
namespace XmlNodes {

/// What a document begins with.
inline constexpr const char* kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";

pugi::xml_node AppendElement(pugi::xml_node parent, const char* name);
void AppendAttribute(pugi::xml_node element, const char* name, std::string_view value);

}  // namespace XmlNodes
