#include "platform/peer/HxCppXml.h"

#include <algorithm>
#include <cstddef>
#include <pugixml.hpp>
#include <utility>

#include "runtime/common/XmlNodes.h"

namespace HxCppHelperV1 {

struct XMLContent {
    pugi::xml_document document;
};

namespace {

pugi::xml_node NodeOf(XMLNodeData* data) {
    return pugi::xml_node(reinterpret_cast<pugi::xml_node_struct*>(data));
}

/// Collects what is written in a text.
struct StringWriter : pugi::xml_writer {
    void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
    std::string text;
};

XMLNodeData* DataOf(const pugi::xml_node& node) {
    return reinterpret_cast<XMLNodeData*>(node.internal_object());
}

}  // namespace

// ---- Elements ----

std::string XMLElement::getName() const {
    return NodeOf(node_).name();
}

bool XMLElement::hasAttribute(const std::string& name) const {
    return !NodeOf(node_).attribute(name.c_str()).empty();
}

std::string XMLElement::getAttribute(const std::string& name) const {
    return NodeOf(node_).attribute(name.c_str()).value();
}

XMLElement XMLElement::findChild(const std::string& name) const {
    return XMLElement(DataOf(NodeOf(node_).child(name.c_str())));
}

void XMLElement::addAttribute(const std::string& name, const std::string& value) {
    XmlNodes::AppendAttribute(NodeOf(node_), name.c_str(), value);
}

XMLElement XMLElement::addChild(const std::string& name) {
    return XMLElement(DataOf(XmlNodes::AppendElement(NodeOf(node_), name.c_str())));
}

std::string XMLElement::doc2string(const XMLDocument& document) {
    StringWriter writer;
    writer.text = XmlNodes::kDeclaration;
    NodeOf(document.getRoot().node_).print(writer, "", pugi::format_raw, pugi::encoding_utf8);
    return std::string(writer.text);  // a component keeps it: no more room than it needs
}

// ---- Documents ----

XMLDocument XMLDocument::WithRoot(const std::string& name) {
    XMLDocument document;
    if (name.empty()) return document;
    document.content_ = std::make_shared<XMLContent>();
    XmlNodes::AppendElement(document.content_->document, name.c_str());
    return document;
}

XMLDocument XMLDocument::FromText(const std::string& text) {
    XMLDocument document;
    auto content = std::make_shared<XMLContent>();
    // A text of blanks alone is a text where it is all that an element holds.
    constexpr unsigned kFlags = pugi::parse_default | pugi::parse_ws_pcdata_single;
    const auto parsed = content->document.load_buffer(text.data(), text.size(), kFlags, pugi::encoding_utf8);
    // The parser takes several roots; XML does not.
    const auto isElement = [](const pugi::xml_node& node) { return node.type() == pugi::node_element; };
    if (XmlNodes::IsWellFormed(parsed) &&
        std::count_if(content->document.begin(), content->document.end(), isElement) == 1) {
        document.content_ = std::move(content);
    }
    return document;
}

XMLElement XMLDocument::getRoot() const& {
    return content_ ? XMLElement(DataOf(content_->document.document_element())) : XMLElement();
}

// ---- Iterators ----

XMLElementIterator::XMLElementIterator(const XMLElement& parent, std::string name)
    : name_(std::move(name)), next_(DataOf(NodeOf(parent.node_).first_child())) {
    SkipOthers();
}

XMLElement XMLElementIterator::next() {
    const XMLElement current = next_;
    next_ = XMLElement(DataOf(NodeOf(next_.node_).next_sibling()));
    SkipOthers();
    return current;
}

void XMLElementIterator::SkipOthers() {
    const auto isOther = [&](const pugi::xml_node& node) {
        return node.type() != pugi::node_element || (!name_.empty() && name_ != node.name());
    };
    while (next_.isValid() && isOther(NodeOf(next_.node_))) {
        next_ = XMLElement(DataOf(NodeOf(next_.node_).next_sibling()));
    }
}

}  // namespace HxCppHelperV1
