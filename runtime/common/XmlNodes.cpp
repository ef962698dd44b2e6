#include "runtime/common/XmlNodes.h"

#include <new>
#include <utility>

#include "runtime/common/XmlCharacters.h"

namespace XmlNodes {

namespace {

/// Takes the answer of the library to an operation that only exhausted memory can fail.
void Demand(bool isDone) {
    if (!isDone) throw std::bad_alloc();
}

pugi::xml_node Append(pugi::xml_node parent, pugi::xml_node_type type) {
    const pugi::xml_node node = parent.append_child(type);
    Demand(!node.empty());
    return node;
}

/// Collects what is written in a text.
struct TextWriter : pugi::xml_writer {
    void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
    std::string text;
};

}  // namespace

pugi::xml_node AppendElement(pugi::xml_node parent, const char* name) {
    if (parent.empty()) return {};
    pugi::xml_node element = Append(parent, pugi::node_element);
    Demand(element.set_name(name));
    return element;
}

// The library's own ways to append something together with its name drop the answer to the name.
void AppendExactAttribute(pugi::xml_node element, const char* name, const char* value) {
    pugi::xml_attribute attribute = element.append_attribute("");
    Demand(!attribute.empty());
    Demand(attribute.set_name(name));
    Demand(attribute.set_value(value));
}

void AppendAttribute(pugi::xml_node element, const char* name, std::string_view value) {
    if (!element.empty()) AppendExactAttribute(element, name, WithXmlCharactersOnly(value).c_str());
}

std::string TextOf(const pugi::xml_document& document) {
    TextWriter writer;
    document.save(writer, "", pugi::format_raw);
    return std::move(writer.text);
}

bool IsWellFormed(const pugi::xml_parse_result& parsed) {
    Demand(parsed.status != pugi::status_out_of_memory);
    return static_cast<bool>(parsed);
}

}  // namespace XmlNodes
