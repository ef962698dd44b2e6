#include "platform/common/QKXML.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <pugixml.hpp>

#include "runtime/common/XmlNodes.h"

namespace QKXML {

std::unique_ptr<XMLString> XMLString::Create(std::string_view text) {
    return std::unique_ptr<XMLString>(new XMLString(text));
}

std::unique_ptr<XMLElement> XMLElement::Create(std::string_view name) {
    return std::unique_ptr<XMLElement>(new XMLElement(name));
}

void XMLElement::AddAttribute(std::string_view name, std::string_view value) {
    attributes_.emplace_back(name, value);
}

void XMLElement::AddChild(std::shared_ptr<const XMLNode> child) {
    children_.push_back(std::move(child));
}

XMLElement& XMLElement::AddChildElement(std::unique_ptr<XMLElement> child) {
    XMLElement& added = *child;
    AddChild(std::move(child));
    return added;
}

namespace {

/// Of every number of a result document, of which a run may have millions.
constexpr std::string_view kFormatOfResults = "%.15g";

}  // namespace

std::string ReplaceSep(double value, const char* format) {
    if (std::isnan(value)) return "nan";
    if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
    char buffer[512];
    if (std::string_view(format) == kFormatOfResults) {
        // The same text, by definition of the function, several times as fast and in no locale.
        const char* end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 15).ptr;
        return std::string(buffer, static_cast<std::size_t>(end - buffer));
    }
    const int length = std::snprintf(buffer, sizeof buffer, format, value);
    std::string text(buffer, length > 0 ? static_cast<std::size_t>(length) : 0);
    // A locale may have put a comma of its own in the place of the point.
    for (char& character : text) {
        if (character == ',') character = '.';
    }
    return text;
}

namespace {

void Copy(const XMLElement& element, pugi::xml_node target) {
    for (const auto& [name, value] : element.GetAttributes()) {
        XmlNodes::AppendAttribute(target, name.c_str(), value);
    }
    for (const auto& child : element.GetChildren()) {
        if (const XMLElement* childElement = child->AsElement()) {
            Copy(*childElement, XmlNodes::AppendElement(target, childElement->GetName().c_str()));
        } else {
            XmlNodes::AppendText(target, static_cast<const XMLString&>(*child).GetText());
        }
    }
}

}  // namespace

void WriteTree(std::ostream& out, const char* docType, const XMLElement* root, int flag) {
    if (flag != 0) out << XmlNodes::kDeclaration;
    if (docType != nullptr) out << "<!DOCTYPE " << docType << ">";
    pugi::xml_document document;
    Copy(*root, XmlNodes::AppendElement(document, root->GetName().c_str()));
    document.save(out, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
}

}  // namespace QKXML
