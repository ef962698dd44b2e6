#include "platform/common/QKXML.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <pugixml.hpp>

namespace QKXML {

std::unique_ptr<XMLString> XMLString::Create(std::string_view text) {
    return std::unique_ptr<XMLString>(new XMLString(text));
}

std::unique_ptr<XMLElement> XMLElement::Create(std::string_view name) {
    return std::unique_ptr<XMLElement>(new XMLElement(name));
}

void XMLElement::AddAttribute(std::string_view name, std::string_view value) { attributes_.emplace_back(name, value); }

void XMLElement::AddChild(std::shared_ptr<const XMLNode> child) { children_.push_back(std::move(child)); }

XMLElement& XMLElement::AddChildElement(std::unique_ptr<XMLElement> child) {
    XMLElement& added = *child;
    AddChild(std::move(child));
    return added;
}

std::string ReplaceSep(double value, const char* format) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    char buffer[512];
    const int length = std::snprintf(buffer, sizeof buffer, format, value);
    std::string text(buffer, length > 0 ? static_cast<std::size_t>(length) : 0);
    // A locale may have put a comma of its own in the place of the point.
    for (char& character : text) {
        if (character == ',') character = '.';
    }
    return text;
}

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

bool IsXmlCharacter(std::uint32_t c) {
    return c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c <= 0xD7FF) || (c >= 0xE000 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0x10FFFF);
}

/// The length of the UTF-8 character at `position` if XML can hold it, else 0.
std::size_t XmlCharacterLength(std::string_view text, std::size_t position) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(position);
    if (lead < 0x80) return IsXmlCharacter(lead) ? 1 : 0;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || position + length > text.size()) return 0;
    std::uint32_t character = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(position + i) & 0xC0) != 0x80) return 0;
        character = character << 6 | (byteAt(position + i) & 0x3Fu);
    }
    constexpr std::uint32_t kSmallestOfLength[] = {0, 0, 0x80, 0x800, 0x10000};
    return character >= kSmallestOfLength[length] && IsXmlCharacter(character) ? length : 0;
}

/// The writer behind this file puts control characters and broken UTF-8 into the document as they are, and no
/// parser takes that back.
std::string WithXmlCharactersOnly(std::string_view text) {
    std::string clean;
    clean.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t length = XmlCharacterLength(text, position);
        clean += length > 0 ? text.substr(position, length) : kReplacement;
        position += length > 0 ? length : 1;
    }
    return clean;
}

void Copy(const XMLElement& element, pugi::xml_node target) {
    for (const auto& [name, value] : element.GetAttributes()) {
        target.append_attribute(name.c_str()) = WithXmlCharactersOnly(value).c_str();
    }
    for (const auto& child : element.GetChildren()) {
        if (const XMLElement* childElement = child->AsElement()) {
            Copy(*childElement, target.append_child(childElement->GetName().c_str()));
        } else {
            const auto& text = static_cast<const XMLString&>(*child).GetText();
            if (!text.empty()) {
                target.append_child(pugi::node_pcdata).set_value(WithXmlCharactersOnly(text).c_str());
            }
        }
    }
}

}  // namespace

void WriteTree(std::ostream& out, const char* docType, const XMLElement* root, int flag) {
    pugi::xml_document document;
    if (flag != 0) {
        pugi::xml_node declaration = document.append_child(pugi::node_declaration);
        declaration.append_attribute("version") = "1.0";
        declaration.append_attribute("encoding") = "UTF-8";
    }
    if (docType != nullptr) document.append_child(pugi::node_doctype).set_value(docType);
    Copy(*root, document.append_child(root->GetName().c_str()));
    document.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
}

}  // namespace QKXML
