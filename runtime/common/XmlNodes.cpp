#include "runtime/common/XmlNodes.h"

#include <new>

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

/// The library's own ways to append something together with its name drop the answer to the name.
void AppendExactAttribute(pugi::xml_node element, const char* name, const char* value) {
    pugi::xml_attribute attribute = element.append_attribute("");
    Demand(!attribute.empty());
    Demand(attribute.set_name(name));
    Demand(attribute.set_value(value));
}

}  // namespace

pugi::xml_node AppendElement(pugi::xml_node parent, const char* name) {
    if (parent.empty()) return {};
    pugi::xml_node element = Append(parent, pugi::node_element);
    Demand(element.set_name(name));
    return element;
}

void AppendAttribute(pugi::xml_node element, const char* name, std::string_view value) {
    if (!element.empty()) AppendExactAttribute(element, name, WithXmlCharactersOnly(value).c_str());
}

}  // namespace XmlNodes
