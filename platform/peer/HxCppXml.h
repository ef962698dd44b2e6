#pragma once

#include <memory>
#include <string>

namespace HxCppHelperV1 {

struct XMLContent;
struct XMLNodeData;
class XMLDocument;

/// An element of an `XMLDocument`: a view, valid as long as the document and the element in it are. Reading from an
/// element that is not valid gives empty texts and further such elements; writing to it does nothing.
///
/// Values are UTF-8; what XML can't hold (control characters, broken UTF-8) is written as U+FFFD. Where no memory is
/// left, writing throws a `std::bad_alloc`, so that a document is whole or is none.
class XMLElement {
 public:
    XMLElement() = default;

    bool isValid() const { return node_ != nullptr; }
    std::string getName() const;
    bool hasAttribute(const std::string& name) const;
    /// Empty when there is none.
    std::string getAttribute(const std::string& name) const;
    /// The first child element of that name; not valid when there is none.
    XMLElement findChild(const std::string& name) const;

    /// Appends an attribute.
    void addAttribute(const std::string& name, const std::string& value);
    /// Appends an empty element.
    XMLElement addChild(const std::string& name);

    /// The document as a text in UTF-8 with an XML declaration, without any white space of its own.
    static std::string doc2string(const XMLDocument& document);

 private:
    friend class XMLDocument;
    friend class XMLElementIterator;
    explicit XMLElement(XMLNodeData* node) : node_(node) {}

    XMLNodeData* node_ = nullptr;
};

/// An XML document. Copies share the content.
class XMLDocument {
 public:
    /// A document without a root.
    XMLDocument() = default;

    /// A new document with an empty root; without a root where that can't be its name.
    static XMLDocument WithRoot(const std::string& name);
    /// The document of a text; without a root where the text is not well formed. Both throw a `std::bad_alloc` where no
    /// memory is left.
    static XMLDocument FromText(const std::string& text);

    XMLElement getRoot() const&;
    /// An element must not outlive its document.
    XMLElement getRoot() const&& = delete;

 private:
    friend class XMLElement;

    std::shared_ptr<XMLContent> content_;
};

/// Goes over the child elements of an element, or over those of one name. An element that has been handed out may be
/// changed.
class XMLElementIterator {
 public:
    explicit XMLElementIterator(const XMLElement& parent, std::string name = "");

    bool hasNext() const { return next_.isValid(); }
    XMLElement next();

 private:
    void SkipOthers();

    std::string name_;
    XMLElement next_;
};

}  // namespace HxCppHelperV1
