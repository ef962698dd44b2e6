#pragma once

#include <memory>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

#include "platform/common/QKXML.h"

/// Reading of result documents in tests.
namespace harness {

/// A structured table, or "Algorithm" itself, with its rows and tables by name.
class Table {
 public:
    /// `document`: what the node lives in, kept as long as the table. Without it the caller keeps the document.
    explicit Table(pugi::xml_node node, std::shared_ptr<const void> document = nullptr)
        : node_(node), document_(std::move(document)) {}

    bool Exists() const { return static_cast<bool>(node_); }
    /// The value of a row; "(absent)" where there is none.
    std::string Row(const std::string& name) const;
    bool HasRow(const std::string& name) const;
    Table Sub(const std::string& name) const;
    /// The texts of the rows of a simple table.
    std::vector<std::string> SimpleRows(const std::string& name) const;
    /// Names of the children, in order: "Attribute TotalN", "StructuredTable Condition", ...
    std::vector<std::string> ChildNames() const;
    std::string Attribute(const std::string& name) const { return node_.attribute(name.c_str()).value(); }
    pugi::xml_node Node() const { return node_; }

 private:
    pugi::xml_node node_;
    std::shared_ptr<const void> document_;
};

/// An element that is in no document yet.
Table TableOf(const QKXML::XMLElement& element);

/// One message of a test as "code type" with its parameters behind it: "220903 error nowhere".
std::vector<std::string> MessagesOf(const Table& test);

/// A parsed result document.
class Document {
 public:
    Document() = default;
    /// Fails the running test if the text is not well formed.
    explicit Document(const std::string& text);

    int TestCount() const;
    /// The "Algorithm" element at a position from 0.
    Table Test(int position) const;
    /// The "FieldInfo" of a field index; not existing where there is none.
    Table FieldInfo(int field) const;
    /// "TARNOutput".
    pugi::xml_node Output() const;
    pugi::xml_node Root() const;

 private:
    std::shared_ptr<pugi::xml_document> document_ = std::make_shared<pugi::xml_document>();
};

/// The values of a list that is joined by semicolons.
std::vector<std::string> SplitValues(const std::string& text);

/// The differences of two documents, each as one line with its path; empty if they agree. Numbers may differ by 1e-9
/// relative or 1e-12 absolute; everything else, the order included, agrees to the letter. Left out are namespaces,
/// the root's attributes, "Header", the extender, and children of the root that are not the engine's.
std::vector<std::string> DocumentDifferences(const std::string& expected, const std::string& actual);

}  // namespace harness
