#include "platform/common/QKXML.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "runtime/common/DecimalText.h"
#include "runtime/common/XmlCharacters.h"
#include "runtime/common/XmlNodes.h"

namespace QKXML {

std::unique_ptr<XMLString> XMLString::Create(std::string_view text) {
    return Take(std::string(text));
}

std::unique_ptr<XMLString> XMLString::Take(std::string text) {
    return std::unique_ptr<XMLString>(new XMLString(std::move(text)));
}

std::unique_ptr<XMLWritten> XMLWritten::Take(std::string elements) {
    return std::unique_ptr<XMLWritten>(new XMLWritten(std::move(elements)));
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

const std::string* XMLElement::FindAttribute(std::string_view name) const {
    const auto found =
        std::ranges::find(attributes_, name, [](const auto& one) { return std::string_view(one.first); });
    return found == attributes_.end() ? nullptr : &found->second;
}

namespace {

/// Of every number of a result document, of which a run may have millions.
constexpr std::string_view kFormatOfResults = "%.15g";

}  // namespace

void AppendNumber(std::string& text, double value) {
    char buffer[kDecimalTextRoom];
    text.append(buffer, WriteDecimal(value, buffer));
}

std::string ReplaceSep(double value, const char* format) {
    char buffer[512];
    if (std::string_view(format) == kFormatOfResults || !std::isfinite(value)) {
        return std::string(buffer, WriteDecimal(value, buffer));
    }
    const int length = std::snprintf(buffer, sizeof buffer, format, value);
    std::string text(buffer, length > 0 ? static_cast<std::size_t>(length) : 0);
    // A locale may have put a comma of its own in the place of the point.
    for (char& character : text) {
        if (character == ',') character = '.';
    }
    return text;
}

// ---- The text of a tree ----

namespace {

/// What becomes of a text that grows: asked after each child of an element whether to go on.
using OnGrowth = std::function<bool(std::string& text)>;

bool IsEmptyText(const std::shared_ptr<const XMLNode>& node) {
    const XMLString* const text = node->AsText();
    return text != nullptr && text->GetText().empty();
}

bool Write(const XMLElement& element, std::string& text, const OnGrowth& goesOn) {
    text += '<';
    text += element.GetName();
    for (const auto& [name, value] : element.GetAttributes()) {
        text += ' ';
        text += name;
        text += "=\"";
        AppendXmlAttribute(text, value);
        text += '"';
    }
    const auto& children = element.GetChildren();
    if (std::all_of(children.begin(), children.end(), IsEmptyText)) {
        text += "/>";
        return true;
    }
    text += '>';
    for (const auto& child : children) {
        if (const XMLElement* const childElement = child->AsElement()) {
            if (!Write(*childElement, text, goesOn)) return false;
        } else {
            child->AppendTo(text);
        }
        if (goesOn && !goesOn(text)) return false;
    }
    text += "</";
    text += element.GetName();
    text += '>';
    return true;
}

void PassOn(std::string& text, std::ostream& out) {
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    text.clear();
}

}  // namespace

void XMLString::AppendTo(std::string& document) const {
    AppendXmlText(document, text_);
}

void XMLElement::AppendTo(std::string& document) const {
    Write(*this, document, {});
}

std::size_t XMLElement::TextSize() const {
    std::size_t size = 2 * name_.size() + std::string_view("<></>").size();
    for (const auto& [name, value] : attributes_)
        size += name.size() + value.size() + std::string_view(" =\"\"").size();
    for (const auto& child : children_) size += child->TextSize();
    return size;
}

void WriteTree(std::ostream& out, const char* docType, const XMLElement* root, int flag) {
    constexpr std::size_t kPiece = 1 << 16;
    std::string text;
    if (flag != 0) text += XmlNodes::kDeclaration;
    if (docType != nullptr) text.append("<!DOCTYPE ").append(docType).append(">");
    Write(*root, text, [&](std::string& grown) {
        if (grown.size() >= kPiece) PassOn(grown, out);
        return true;
    });
    PassOn(text, out);
}

std::string TextOfTree(const XMLElement& root, const std::function<bool()>& stop) {
    constexpr std::size_t kBytesBetweenQuestions = 1 << 20;
    std::string text(XmlNodes::kDeclaration);
    text.reserve(text.size() + root.TextSize());
    std::size_t nextQuestion = 0;
    const auto goesOn = [&](const std::string& grown) {
        if (!stop || grown.size() < nextQuestion) return true;
        nextQuestion = grown.size() + kBytesBetweenQuestions;
        return !stop();
    };
    return Write(root, text, goesOn) ? text : std::string();
}

}  // namespace QKXML
