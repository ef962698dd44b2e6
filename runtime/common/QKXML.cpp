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

/// A text that is handed on to a stream piece by piece, or grows as a whole where there is none.
class Sink {
 public:
    Sink(std::string& text, std::ostream* out) : text_(text), out_(out) {}

    std::string& Text() { return text_; }
    void PassOn() {
        constexpr std::size_t kPiece = 1 << 16;
        if (out_ != nullptr && text_.size() >= kPiece) PassAllOn();
    }
    void PassAllOn() {
        out_->write(text_.data(), static_cast<std::streamsize>(text_.size()));
        text_.clear();
    }

 private:
    std::string& text_;
    std::ostream* out_;
};

bool IsEmptyText(const std::shared_ptr<const XMLNode>& node) {
    const XMLString* const text = node->AsText();
    return text != nullptr && text->GetText().empty();
}

void Write(const XMLElement& element, Sink& sink) {
    std::string& text = sink.Text();
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
        return;
    }
    text += '>';
    for (const auto& child : children) {
        if (const XMLElement* const childElement = child->AsElement()) {
            Write(*childElement, sink);
        } else {
            child->AppendTo(text);
        }
        sink.PassOn();
    }
    text += "</";
    text += element.GetName();
    text += '>';
}

}  // namespace

void XMLString::AppendTo(std::string& document) const {
    AppendXmlText(document, text_);
}

void XMLElement::AppendTo(std::string& document) const {
    Sink sink(document, nullptr);
    Write(*this, sink);
}

void WriteTree(std::ostream& out, const char* docType, const XMLElement* root, int flag) {
    std::string text;
    Sink sink(text, &out);
    if (flag != 0) text += XmlNodes::kDeclaration;
    if (docType != nullptr) text.append("<!DOCTYPE ").append(docType).append(">");
    Write(*root, sink);
    sink.PassAllOn();
}

}  // namespace QKXML
