#include "platform/common/QKXML.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <pugixml.hpp>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "runtime/common/XmlCharacters.h"
#include "tests/harness/Command.h"

using QKXML::ReplaceSep;
using QKXML::XMLElement;
using QKXML::XMLString;

namespace {

/// The document as text; an element without children ends by "/>", with or without a blank before it.
std::string Write(const XMLElement& root, int flag = 0, const char* docType = nullptr) {
    std::ostringstream out;
    QKXML::WriteTree(out, docType, &root, flag);
    std::string text = out.str();
    for (std::size_t at = text.find(" />"); at != std::string::npos; at = text.find(" />")) text.erase(at, 1);
    return text;
}

/// The attribute value as it stands in the document, between its quotes.
std::string WrittenAttribute(const std::string& value) {
    const auto element = XMLElement::Create("e");
    element->AddAttribute("a", value);
    const std::string text = Write(*element);
    const std::size_t first = text.find('"');
    const std::size_t last = text.rfind('"');
    return first == last ? text : text.substr(first + 1, last - first - 1);
}

const std::string kReplacement = "\xEF\xBF\xBD";

}  // namespace

// ---- Numbers ----

TEST(QKXMLTest, ReplaceSepNamesWhatIsNoFiniteNumber) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (const char* format : {"%.15g", "%f", "%e", "%10.3f"}) {
        EXPECT_EQ(ReplaceSep(nan, format), "nan");
        EXPECT_EQ(ReplaceSep(-nan, format), "nan") << "whatever its sign";
        EXPECT_EQ(ReplaceSep(infinity, format), "inf");
        EXPECT_EQ(ReplaceSep(-infinity, format), "-inf");
    }
}

TEST(QKXMLTest, ReplaceSepFormatsNumbers) {
    struct Row {
        double value;
        const char* format;
        const char* text;
    };
    const std::vector<Row> rows{
        {0.1, "%.15g", "0.1"},
        {1.0 / 3, "%.15g", "0.333333333333333"},
        {-0.0, "%.15g", "-0"},
        {1e20, "%.15g", "1e+20"},
        {123456789012345680.0, "%.15g", "1.23456789012346e+17"},
        {5, "%.15g", "5"},
        {2.5, "%.3f", "2.500"},
        {-std::numeric_limits<double>::max(), "%.15g", "-1.79769313486232e+308"},
        {std::numeric_limits<double>::denorm_min(), "%.15g", "4.94065645841247e-324"},
    };
    for (const Row& row : rows) EXPECT_EQ(ReplaceSep(row.value, row.format), row.text);
}

TEST(QKXMLTest, ReplaceSepWritesTheNumbersOfResultsAsPrintfDoes) {
    std::mt19937_64 random(151);
    std::vector<double> values{0.0, -0.0, 1e15, 999999999999999.5, 1e-4, 9.99999999999999999e-5, 0.1, 5e-324, 123456};
    for (int i = 0; i < 100000; ++i) {
        values.push_back(std::bit_cast<double>(random()));
        values.push_back(static_cast<double>(random() % 2000001) / 1000 - 1000);
        values.push_back(static_cast<double>(random() >> 20));
    }
    for (const double value : values) {
        if (!std::isfinite(value)) continue;
        char expected[64];
        std::snprintf(expected, sizeof expected, "%.15g", value);
        ASSERT_EQ(ReplaceSep(value, "%.15g"), expected);
    }
}

TEST(QKXMLTest, ReplaceSepWritesTheLongestNumber) {
    const std::string text = ReplaceSep(-std::numeric_limits<double>::max(), "%f");
    EXPECT_EQ(text.size(), 1u + 309 + 1 + 6);
    EXPECT_EQ(text.substr(0, 10), "-179769313");
    EXPECT_EQ(text.substr(text.size() - 7), ".000000");
}

namespace {

/// While it lives, the numbers of the process have a decimal comma. A machine need not have such a locale, so one is
/// made in the layout that the C library reads: a magic number with the category in it, the number of items, their
/// places in the file, and the items.
class DecimalComma {
 public:
    DecimalComma() : before_(std::setlocale(LC_NUMERIC, nullptr)) {
        const std::uint32_t head[] = {0x20031115u ^ LC_NUMERIC, 6, 32, 34, 35, 40, 44, 48};
        const char texts[] = ",\0\0\0\0\0\0";  // decimal point, no separator of thousands, no groups, filled to 8
        const std::uint32_t wideCharacters[] = {',', 0};
        const char codeset[] = "UTF-8";
        std::string file(reinterpret_cast<const char*>(head), sizeof head);
        file.append(texts, sizeof texts);
        file.append(reinterpret_cast<const char*>(wideCharacters), sizeof wideCharacters);
        file.append(codeset, sizeof codeset);
        std::filesystem::create_directory(folder_.Path("comma"));
        folder_.Write("comma/LC_NUMERIC", file);
        setenv("LOCPATH", folder_.Path("").c_str(), 1);
        std::setlocale(LC_NUMERIC, "comma");
    }
    ~DecimalComma() {
        std::setlocale(LC_NUMERIC, before_.c_str());
        unsetenv("LOCPATH");
    }
    DecimalComma(const DecimalComma&) = delete;
    DecimalComma& operator=(const DecimalComma&) = delete;

 private:
    std::string before_;
    harness::ScratchFolder folder_;
};

}  // namespace

TEST(QKXMLTest, ReplaceSepHasAPointInALocaleWithAComma) {
    std::string text;
    {
        const DecimalComma comma;
        ASSERT_STREQ(std::localeconv()->decimal_point, ",");
        text = ReplaceSep(-1234.5, "%.15g");
    }
    EXPECT_EQ(text, "-1234.5");
    EXPECT_STREQ(std::localeconv()->decimal_point, ".");
}

// ---- Trees ----

TEST(QKXMLTest, AttributesStandInTheirOrderOfArrival) {
    const auto element = XMLElement::Create("e");
    element->AddAttribute("z", "1");
    element->AddAttribute("a", "2");
    element->AddAttribute("m", "");
    EXPECT_EQ(Write(*element), "<e z=\"1\" a=\"2\" m=\"\"/>");
    const std::vector<XMLElement::Attribute> expected{{"z", "1"}, {"a", "2"}, {"m", ""}};
    EXPECT_EQ(element->GetAttributes(), expected);
    EXPECT_EQ(element->GetName(), "e");
}

TEST(QKXMLTest, ChildrenStandInTheirOrderWithoutWhiteSpaceBetween) {
    const auto root = XMLElement::Create("r");
    root->AddChild(XMLString::Create("before"));
    XMLElement& child = root->AddChildElement(XMLElement::Create("c"));
    child.AddChild(XMLString::Create("in"));
    child.AddAttribute("late", "x");
    root->AddChild(XMLElement::Create("d"));
    root->AddChild(XMLString::Create(" after "));
    EXPECT_EQ(Write(*root), "<r>before<c late=\"x\">in</c><d/> after </r>");
    EXPECT_EQ(root->GetChildren().size(), 4u);
    EXPECT_EQ(root->GetChildren()[0]->AsElement(), nullptr);
    EXPECT_EQ(root->GetChildren()[1]->AsElement(), &child);
}

TEST(QKXMLTest, AnEmptyTextLeavesNothing) {
    const auto root = XMLElement::Create("r");
    root->AddChild(XMLString::Create(""));
    EXPECT_EQ(Write(*root), "<r/>");
}

TEST(QKXMLTest, AnElementMayBeSharedByTwoTrees) {
    const std::shared_ptr<XMLElement> shared = XMLElement::Create("s");
    const auto second = XMLElement::Create("b");
    {
        const auto first = XMLElement::Create("a");
        first->AddChild(shared);
        second->AddChild(shared);
        EXPECT_EQ(Write(*first), "<a><s/></a>");
    }
    EXPECT_EQ(Write(*second), "<b><s/></b>");
}

TEST(QKXMLTest, TheFlagPutsTheDeclarationInFrontAndADocTypeIsDeclaredBehindIt) {
    const auto root = XMLElement::Create("r");
    EXPECT_TRUE(Write(*root, 0).starts_with("<r"));
    const std::string declared = Write(*root, 1);
    EXPECT_TRUE(declared.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
    EXPECT_TRUE(declared.ends_with("<r/>"));
    const std::string typed = Write(*root, 1, "r");
    const std::size_t declaration = typed.find("<?xml");
    const std::size_t docType = typed.find("<!DOCTYPE r>");
    EXPECT_EQ(declaration, 0u);
    EXPECT_NE(docType, std::string::npos);
    EXPECT_LT(docType, typed.find("<r/>"));
}

// ---- What stands in a document ----

TEST(QKXMLTest, MarkupIsEscapedAndReadBackAsItWas) {
    const std::vector<std::string> texts{
        "a<b & \"c\" > 'd'", "&amp;", "]]>", "<!-- no comment -->", "<?no?>", "\"", "&#65;"};
    for (const std::string& text : texts) {
        SCOPED_TRACE(text);
        const auto root = XMLElement::Create("r");
        root->AddAttribute("a", text);
        root->AddChild(XMLString::Create(text));
        const std::string written = Write(*root);
        pugi::xml_document document;
        ASSERT_TRUE(document.load_string(written.c_str())) << written;
        EXPECT_EQ(document.child("r").attribute("a").value(), text);
        EXPECT_EQ(document.child("r").child_value(), text);
        const std::size_t behindStartTag = written.find("\">");
        EXPECT_EQ(written.find("]]>", behindStartTag), std::string::npos) << "not allowed in a text";
    }
}

TEST(QKXMLTest, ControlCharactersBecomeTheReplacementCharacter) {
    for (char character = 1; character < 0x20; ++character) {
        if (character == '\t' || character == '\n' || character == '\r') continue;
        EXPECT_EQ(WrittenAttribute(std::string("a") + character + "b"), "a" + kReplacement + "b")
            << static_cast<int>(character);
    }
    EXPECT_EQ(WrittenAttribute(std::string("a\0b", 3)), "a" + kReplacement + "b");
    const auto root = XMLElement::Create("r");
    root->AddChild(XMLString::Create("x\x01y\x1Fz"));
    EXPECT_EQ(Write(*root), "<r>x" + kReplacement + "y" + kReplacement + "z</r>");
}

TEST(QKXMLTest, BrokenUtf8BecomesTheReplacementCharacterAndTheRestStays) {
    const std::string& r = kReplacement;
    struct Row {
        const char* what;
        std::string text;
        std::string written;
    };
    const std::vector<Row> rows{
        {"two bytes", "\xC3\xA9", "\xC3\xA9"},
        {"three bytes", "\xE2\x82\xAC", "\xE2\x82\xAC"},
        {"four bytes", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {"the last code point", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
        {"a continuation alone", "a\x80z", "a" + r + "z"},
        {"a lead alone", "a\xC3z", "a" + r + "z"},
        {"a lead at the end", "a\xC3", "a" + r},
        {"cut after two of three bytes", "\xE2\x82", r + r},
        {"overlong two bytes", "\xC0\xAF", r + r},
        {"overlong three bytes", "\xE0\x80\xAF", r + r + r},
        {"overlong four bytes", "\xF0\x80\x80\xAF", r + r + r + r},
        {"a surrogate", "\xED\xA0\x80", r + r + r},
        {"beyond the last code point", "\xF4\x90\x80\x80", r + r + r + r},
        {"a byte that UTF-8 never has", "\xFFx\xFE", r + "x" + r},
        {"U+FFFE is no XML character", "\xEF\xBF\xBE", r + r + r},
        {"U+FFFD itself", r, r},
        {"good behind broken", "\xC3\xC3\xA9", r + "\xC3\xA9"},
    };
    for (const Row& row : rows) EXPECT_EQ(WrittenAttribute(row.text), row.written) << row.what;
}

TEST(QKXMLTest, LineEndsAndTabsOfAnAttributeSurviveAReader) {
    // As plain characters a reader would turn them into blanks.
    const std::string value = "a\tb\nc\rd";
    const auto root = XMLElement::Create("r");
    root->AddAttribute("a", value);
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(Write(*root).c_str()));
    EXPECT_EQ(document.child("r").attribute("a").value(), value);
}

// ---- Whole trees ----

namespace {

/// Pieces of which texts are made: markup, signs that are written differently in texts and attributes, UTF-8 whole and
/// broken, and runs that are long enough to be taken eight at a time.
std::string RandomText(std::mt19937& random) {
    static const std::vector<std::string> pieces{"&",
                                                 "<",
                                                 ">",
                                                 "\"",
                                                 "'",
                                                 "\t",
                                                 "\n",
                                                 "\r",
                                                 "\x01",
                                                 "\x7F",
                                                 "\xC3\xA9",
                                                 "\xE2\x82",
                                                 "\xFF",
                                                 " ",
                                                 "a",
                                                 "12345678",
                                                 "0.333333333333333;17;",
                                                 std::string(1, '\0')};
    std::string text;
    for (std::size_t length = random() % 12; length > 0; --length) text += pieces[random() % pieces.size()];
    return text;
}

std::unique_ptr<XMLElement> RandomTree(std::mt19937& random, int depth) {
    auto element = XMLElement::Create(depth % 2 == 0 ? "even" : "o");
    for (std::size_t i = random() % 3; i > 0; --i) element->AddAttribute("a" + std::to_string(i), RandomText(random));
    for (std::size_t i = random() % 4; i > 0; --i) {
        if (depth > 0 && random() % 2 == 0) {
            element->AddChild(RandomTree(random, depth - 1));
        } else {
            element->AddChild(XMLString::Create(RandomText(random)));
        }
    }
    return element;
}

/// The same tree as another library writes it, which puts what XML can't hold into it as it is.
void CopyTo(pugi::xml_node parent, const XMLElement& element) {
    pugi::xml_node copy = parent.append_child(element.GetName().c_str());
    for (const auto& [name, value] : element.GetAttributes()) {
        copy.append_attribute(name.c_str()).set_value(WithXmlCharactersOnly(value).c_str());
    }
    for (const auto& child : element.GetChildren()) {
        if (const XMLString* const text = child->AsText()) {
            if (text->GetText().empty()) continue;
            copy.append_child(pugi::node_pcdata).set_value(WithXmlCharactersOnly(text->GetText()).c_str());
        } else {
            CopyTo(copy, *child->AsElement());
        }
    }
}

}  // namespace

TEST(QKXMLTest, ATreeIsWrittenAsAnotherLibraryWritesIt) {
    std::mt19937 random(7);
    for (int i = 0; i < 3000; ++i) {
        const auto root = RandomTree(random, 4);
        pugi::xml_document document;
        CopyTo(document, *root);
        std::ostringstream expected;
        document.save(expected, "", pugi::format_raw | pugi::format_no_declaration, pugi::encoding_utf8);
        std::ostringstream written;
        QKXML::WriteTree(written, nullptr, root.get(), 0);
        ASSERT_EQ(written.str(), expected.str());
        std::string appended = "before";
        root->AppendTo(appended);
        ASSERT_EQ(appended, "before" + expected.str());
    }
}

TEST(QKXMLTest, ALongTreeGoesIntoTheStreamWhole) {
    const auto root = XMLElement::Create("r");
    std::string expected = "<r>";
    for (int i = 0; i < 40000; ++i) {
        root->AddChildElement(XMLElement::Create("c")).AddChild(XMLString::Create(std::to_string(i)));
        expected += "<c>" + std::to_string(i) + "</c>";
    }
    root->AddChild(XMLString::Create(std::string(200000, 'x')));
    EXPECT_EQ(Write(*root), expected + std::string(200000, 'x') + "</r>");
}

TEST(QKXMLTest, WhatWasWrittenBeforeStandsAsItIs) {
    const auto child = XMLElement::Create("c");
    child->AddAttribute("a", "<&>");
    std::string text;
    child->AppendTo(text);
    const auto root = XMLElement::Create("r");
    root->AddChild(QKXML::XMLWritten::Take(text + text));
    root->AddChild(XMLString::Take("&"));
    EXPECT_EQ(Write(*root), "<r><c a=\"&lt;&amp;>\"/><c a=\"&lt;&amp;>\"/>&amp;</r>");
    EXPECT_EQ(root->GetChildren()[0]->AsElement(), nullptr);
    EXPECT_EQ(root->GetChildren()[0]->AsText(), nullptr);
}

TEST(QKXMLTest, SeveralThreadsWritePartsOfOneTree) {
    const std::shared_ptr<XMLElement> shared = XMLElement::Create("s");
    for (int i = 0; i < 500; ++i) shared->AddChild(XMLString::Create("0.5;"));
    std::vector<std::string> texts(4);
    {
        std::vector<std::jthread> threads;
        for (std::string& text : texts) threads.emplace_back([&shared, &text] { shared->AppendTo(text); });
    }
    for (const std::string& text : texts) EXPECT_EQ(text, texts[0]);
    EXPECT_EQ(texts[0].size(), 500u * 4 + 7);
}

TEST(QKXMLTest, AnAttributeIsFoundByItsName) {
    const auto element = XMLElement::Create("e");
    element->AddAttribute("a", "1");
    element->AddAttribute("b", "");
    ASSERT_NE(element->FindAttribute("a"), nullptr);
    EXPECT_EQ(*element->FindAttribute("a"), "1");
    ASSERT_NE(element->FindAttribute("b"), nullptr);
    EXPECT_EQ(*element->FindAttribute("b"), "");
    EXPECT_EQ(element->FindAttribute("c"), nullptr);
}
