#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// An XML tree to be written: elements with attributes in their order of arrival, and texts.
///
/// A parent owns its children, or shares one with whoever made it. Texts and attribute values are UTF-8; what XML can't
/// hold (control characters, broken UTF-8) is written as U+FFFD.
namespace QKXML {

class XMLElement;
class XMLString;

/// A child of an element: another element, a text, or a part of the document that is written already.
class XMLNode {
 public:
    virtual ~XMLNode() = default;
    /// Null for what is no element.
    virtual const XMLElement* AsElement() const { return nullptr; }
    /// Null for what is no text.
    virtual const XMLString* AsText() const { return nullptr; }
    /// Appends the node to a document. Changes nothing else, so that several threads may write parts of one tree.
    virtual void AppendTo(std::string& document) const = 0;
    /// How long its text is at least.
    virtual std::size_t TextSize() const = 0;
};

/// A text node.
class XMLString : public XMLNode {
 public:
    static std::unique_ptr<XMLString> Create(std::string_view text);
    /// Of a text that nobody else needs.
    static std::unique_ptr<XMLString> Take(std::string text);
    const std::string& GetText() const { return text_; }
    const XMLString* AsText() const override { return this; }
    void AppendTo(std::string& document) const override;
    std::size_t TextSize() const override { return text_.size(); }

 private:
    explicit XMLString(std::string text) : text_(std::move(text)) {}
    std::string text_;
};

/// Elements that were written before the rest of their tree, as `AppendTo` wrote them.
class XMLWritten : public XMLNode {
 public:
    static std::unique_ptr<XMLWritten> Take(std::string elements);
    void AppendTo(std::string& document) const override { document += elements_; }
    std::size_t TextSize() const override { return elements_.size(); }

 private:
    explicit XMLWritten(std::string elements) : elements_(std::move(elements)) {}
    std::string elements_;
};

/// An element with a name, attributes and children.
class XMLElement : public XMLNode {
 public:
    using Attribute = std::pair<std::string, std::string>;

    static std::unique_ptr<XMLElement> Create(std::string_view name);

    void AddAttribute(std::string_view name, std::string_view value);
    void AddChild(std::shared_ptr<const XMLNode> child);
    /// Takes an element that is to be filled further, and gives it back as borrowed from this one.
    XMLElement& AddChildElement(std::unique_ptr<XMLElement> child);

    const std::string& GetName() const { return name_; }
    const std::vector<Attribute>& GetAttributes() const { return attributes_; }
    const std::vector<std::shared_ptr<const XMLNode>>& GetChildren() const { return children_; }
    const XMLElement* AsElement() const override { return this; }
    void AppendTo(std::string& document) const override;
    std::size_t TextSize() const override;
    /// The value of an attribute, null where there is none.
    const std::string* FindAttribute(std::string_view name) const;

 private:
    explicit XMLElement(std::string_view name) : name_(name) {}
    std::string name_;
    std::vector<Attribute> attributes_;
    std::vector<std::shared_ptr<const XMLNode>> children_;
};

/// Writes the tree under `root` as a document in UTF-8, without any white space of its own. Throws a `std::bad_alloc`
/// where no memory is left; a stream keeps one of its own to itself unless it is set to throw.
/// `docType`: name of a document type to declare, or null. `flag`: not 0 puts the XML declaration in front.
void WriteTree(std::ostream& out, const char* docType, const XMLElement* root, int flag);

/// The same document, with the XML declaration, as one text. `stop`, which may be empty, is asked now and then while it
/// is made: true ends it, and the text is then empty.
std::string TextOfTree(const XMLElement& root, const std::function<bool()>& stop);

/// Formats a number by a printf format for one double, always with a point as decimal separator.
/// A NaN is "nan" whatever its sign, the infinities are "inf" and "-inf".
std::string ReplaceSep(double value, const char* format);

/// Appends a number to a text, as "%.15g" formats it.
void AppendNumber(std::string& text, double value);

}  // namespace QKXML
