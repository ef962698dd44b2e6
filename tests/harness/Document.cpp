#include "tests/harness/Document.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace harness {

namespace {

pugi::xml_node ChildNamed(const pugi::xml_node& node, const char* element, const std::string& name) {
    return node.find_child_by_attribute(element, "name", name.c_str());
}

}  // namespace

std::string Table::Row(const std::string& name) const {
    const pugi::xml_node row = ChildNamed(node_, "Attribute", name);
    return row ? row.attribute("value").value() : "(absent)";
}

bool Table::HasRow(const std::string& name) const {
    return !ChildNamed(node_, "Attribute", name).empty();
}

Table Table::Sub(const std::string& name) const {
    return Table(ChildNamed(node_, "StructuredTable", name), document_);
}

std::vector<std::string> Table::SimpleRows(const std::string& name) const {
    std::vector<std::string> rows;
    for (const pugi::xml_node& row : ChildNamed(node_, "SimpleTable", name).children("Row")) {
        rows.emplace_back(row.child_value());
    }
    return rows;
}

std::vector<std::string> Table::ChildNames() const {
    std::vector<std::string> names;
    for (const pugi::xml_node& child : node_.children()) {
        names.push_back(std::string(child.name()) + " " + child.attribute("name").value());
    }
    return names;
}

Table TableOf(const QKXML::XMLElement& element) {
    std::ostringstream text;
    QKXML::WriteTree(text, nullptr, &element, 0);
    auto document = std::make_shared<pugi::xml_document>();
    EXPECT_TRUE(document->load_string(text.str().c_str()));
    return Table(document->first_child(), document);
}

std::vector<std::string> MessagesOf(const Table& test) {
    std::vector<std::string> messages;
    for (const pugi::xml_node& message : test.Sub("WarningMessages").Node().children("StructuredTable")) {
        const Table table(message);
        std::string line = table.Row("code") + " " + table.Row("type");
        for (int i = 0; i < std::atoi(table.Row("paramNum").c_str()); ++i) {
            line += " " + table.Row("%" + std::to_string(i));
        }
        messages.push_back(line);
    }
    return messages;
}

Document::Document(const std::string& text) {
    const pugi::xml_parse_result parsed = document_->load_buffer(text.data(), text.size());
    EXPECT_TRUE(parsed) << parsed.description() << " at " << parsed.offset;
}

pugi::xml_node Document::Root() const {
    return document_->child("Tabulon");
}
pugi::xml_node Document::Output() const {
    return Root().child("Extension").child("TARNOutput");
}

int Document::TestCount() const {
    const auto tests = Output().child("NonParametricTests").children("Algorithm");
    return static_cast<int>(std::distance(tests.begin(), tests.end()));
}

Table Document::Test(int position) const {
    pugi::xml_node test = Output().child("NonParametricTests").child("Algorithm");
    for (int i = 0; i < position; ++i) test = test.next_sibling("Algorithm");
    return Table(test, document_);
}

Table Document::FieldInfo(int field) const {
    const std::string index = std::to_string(field);
    return Table(Output().child("FieldInfos").find_child_by_attribute("FieldInfo", "varIndex", index.c_str()),
                 document_);
}

// ---- Comparison ----

std::vector<std::string> SplitValues(const std::string& text) {
    std::vector<std::string> tokens(1);
    for (const char c : text) {
        if (c == ';') {
            tokens.emplace_back();
        } else {
            tokens.back() += c;
        }
    }
    return tokens;
}

namespace {

constexpr double kRelative = 1e-9;
constexpr double kAbsolute = 1e-12;

std::string LocalName(const char* name) {
    const char* colon = std::char_traits<char>::find(name, std::char_traits<char>::length(name), ':');
    return colon ? colon + 1 : name;
}

bool SameNumber(const std::string& expected, const std::string& actual) {
    char* endExpected = nullptr;
    char* endActual = nullptr;
    const double a = std::strtod(expected.c_str(), &endExpected);
    const double b = std::strtod(actual.c_str(), &endActual);
    if (expected.empty() || actual.empty() || *endExpected != '\0' || *endActual != '\0') return false;
    if (!std::isfinite(a) || !std::isfinite(b)) return false;
    char spelled[64];
    std::snprintf(spelled, sizeof spelled, "%.15g", b);
    if (actual != spelled) return false;  // a number of the engine has one spelling
    return std::fabs(a - b) <= std::max(kRelative * std::max(std::fabs(a), std::fabs(b)), kAbsolute);
}

/// Equal, or numbers that are close; a bound in front of a number (">") has to agree.
bool SameValue(const std::string& expected, const std::string& actual) {
    if (expected == actual) return true;
    const std::size_t sign = expected.find_first_not_of("<>=");
    if (sign == std::string::npos || expected.compare(0, sign, actual, 0, sign) != 0) return false;
    return SameNumber(expected.substr(sign), actual.substr(std::min(sign, actual.size())));
}

bool SameText(const std::string& expected, const std::string& actual) {
    const std::vector<std::string> a = SplitValues(expected);
    const std::vector<std::string> b = SplitValues(actual);
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), SameValue);
}

class Comparison {
 public:
    void Compare(const pugi::xml_node& expected, const pugi::xml_node& actual, const std::string& path) {
        if (path != "/Tabulon") CompareAttributes(expected, actual, path);
        if (!SameText(TextOf(expected), TextOf(actual))) {
            differences.push_back(path + ": text " + TextOf(actual) + ", expected " + TextOf(expected));
        }
        const std::vector<pugi::xml_node> a = ChildrenOf(expected);
        const std::vector<pugi::xml_node> b = ChildrenOf(actual);
        for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
            const std::string step = path + "/" + std::to_string(i);
            const std::string nameA = i < a.size() ? NameOf(a[i]) : "nothing";
            const std::string nameB = i < b.size() ? NameOf(b[i]) : "nothing";
            if (nameA != nameB) {
                differences.push_back(step + ": " + nameB + ", expected " + nameA);
                return;
            }
            Compare(a[i], b[i], step + " " + nameA);
        }
    }

    std::vector<std::string> differences;

 private:
    void CompareAttributes(const pugi::xml_node& expected, const pugi::xml_node& actual, const std::string& path) {
        for (const pugi::xml_attribute& attribute : expected.attributes()) {
            const pugi::xml_attribute other = actual.attribute(attribute.name());
            if (std::string_view(attribute.name()) == "extender") continue;
            if (!other || !SameText(attribute.value(), other.value())) {
                differences.push_back(path + "/@" + attribute.name() + ": " + (other ? other.value() : "(absent)") +
                                      ", expected " + attribute.value());
            }
        }
        for (const pugi::xml_attribute& attribute : actual.attributes()) {
            if (!expected.attribute(attribute.name())) {
                differences.push_back(path + "/@" + attribute.name() + " is not expected");
            }
        }
    }

    static std::string TextOf(const pugi::xml_node& node) { return node.child_value(); }

    static std::string NameOf(const pugi::xml_node& node) {
        return LocalName(node.name()) + " " + node.attribute("name").value();
    }

    static std::vector<pugi::xml_node> ChildrenOf(const pugi::xml_node& node) {
        const bool isRoot = LocalName(node.name()) == "Tabulon";
        std::vector<pugi::xml_node> children;
        for (const pugi::xml_node& child : node.children()) {
            const std::string name = LocalName(child.name());
            const bool isOfEngine = name == "PMMLModel" || name == "DescriptiveModel" || name == "Extension";
            if (child.type() != pugi::node_element || name == "Header" || (isRoot && !isOfEngine)) continue;
            children.push_back(child);
        }
        return children;
    }
};

}  // namespace

std::vector<std::string> DocumentDifferences(const std::string& expected, const std::string& actual) {
    pugi::xml_document a;
    pugi::xml_document b;
    if (!a.load_buffer(expected.data(), expected.size())) return {"the expected document is not well formed"};
    if (!b.load_buffer(actual.data(), actual.size())) return {"the actual document is not well formed"};
    const std::string rootA = LocalName(a.document_element().name());
    const std::string rootB = LocalName(b.document_element().name());
    if (rootA != rootB) return {"root " + rootB + ", expected " + rootA};
    Comparison comparison;
    comparison.Compare(a.document_element(), b.document_element(), "/" + rootA);
    return comparison.differences;
}

}  // namespace harness
