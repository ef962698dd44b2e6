#include "component/DocumentRewriter.h"

#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

#include "platform/peer/QKPMMLExporter.h"
#include "support/TextMakers.h"
#include "vocabulary/ResultKeys.h"

using QKXML::XMLElement;

namespace {

constexpr const char* kRootName = "Tabulon";
constexpr const char* kExtender = "extender";
constexpr const char* kIndex = "index";

std::string AttributeOf(const XMLElement* element, std::string_view name) {
    const std::string* const value = element == nullptr ? nullptr : element->FindAttribute(name);
    return value == nullptr ? std::string() : *value;
}

/// Calls `visit` with each child element of that name. `parent` may be null.
template <typename Visit>
void ForEachChild(const XMLElement* parent, std::string_view name, Visit visit) {
    if (parent == nullptr) return;
    for (const auto& child : parent->GetChildren()) {
        const XMLElement* const element = child->AsElement();
        if (element != nullptr && element->GetName() == name) visit(child, *element);
    }
}

/// The first child element of that name, null where there is none.
const XMLElement* FindChild(const XMLElement* parent, std::string_view name) {
    const XMLElement* found = nullptr;
    ForEachChild(parent, name, [&](const auto&, const XMLElement& child) {
        if (found == nullptr) found = &child;
    });
    return found;
}

void ShareChildren(const XMLElement* source, std::string_view name, XMLElement& target) {
    ForEachChild(source, name, [&](const auto& shared, const XMLElement&) { target.AddChild(shared); });
}

/// The element with an attribute of another value, which comes last.
std::unique_ptr<XMLElement> WithAttribute(const XMLElement& source, std::string_view name, std::string_view value) {
    auto copy = XMLElement::Create(source.GetName());
    for (const auto& [sourceName, sourceValue] : source.GetAttributes()) {
        if (sourceName != name) copy->AddAttribute(sourceName, sourceValue);
    }
    copy->AddAttribute(name, value);
    for (const auto& child : source.GetChildren()) copy->AddChild(child);
    return copy;
}

/// What stands in the root of a document.
std::string ContentOf(const std::string& document) {
    const std::size_t begin = document.find('>') + 1;
    return document.substr(begin, document.rfind("</") - begin);
}

}  // namespace

std::unique_ptr<XMLElement> DocumentRewriter::Rewrite(const XMLElement& first) const {
    auto root = XMLElement::Create(kRootName);
    for (const char* attribute : {"xmlns", "xmlns:xsi", "version", "xsi:schemaLocation"}) {
        root->AddAttribute(attribute, AttributeOf(&first, attribute));
    }
    ExportDataModel(*root);
    ShareChildren(&first, "PMMLModel", *root);
    ShareChildren(&first, "DescriptiveModel", *root);
    WriteOutput(FindChild(&first, "Extension"), *root);
    return root;
}

/// A failure, but for exhausted memory, leaves the document without this part.
void DocumentRewriter::ExportDataModel(XMLElement& root) const {
    QKPMMLExporter exporter(nullptr);
    std::ostringstream stream;
    stream.exceptions(std::ios::badbit);  // or a stream that runs out of memory would keep it for itself
    const std::ostream* exported =
        exporter.ExportDataModel(varList_, fields_.OriginalIndices(), ExportFormat::kCompact, &stream);
    if (exporter.GetStatus().IsError() || exported == nullptr) return;
    root.AddChild(QKXML::XMLWritten::Take(ContentOf(std::move(stream).str())));
}

void DocumentRewriter::WriteOutput(const XMLElement* source, XMLElement& root) const {
    const XMLElement* const sourceOutput = FindChild(source, "TARNOutput");
    XMLElement& extension = root.AddChildElement(XMLElement::Create("Extension"));
    extension.AddAttribute(kExtender, AttributeOf(source, kExtender));
    XMLElement& output = extension.AddChildElement(XMLElement::Create("TARNOutput"));
    ShareChildren(sourceOutput, "Header", output);
    WriteDataDictionary(FindChild(sourceOutput, "DataDictionary"), output);
    ShareChildren(sourceOutput, "NonParametricTests", output);
    WriteFieldInfos(FindChild(sourceOutput, ::Element::kFieldInfos), output);
}

void DocumentRewriter::WriteDataDictionary(const XMLElement* source, XMLElement& output) const {
    XMLElement& dictionary = output.AddChildElement(XMLElement::Create("DataDictionary"));
    dictionary.AddAttribute("numberOfFields", IntToString(fields_.VarList().Size()));
    ForEachChild(source, "DataField", [&](const auto&, const XMLElement& field) {
        const int position = fields_.VarList().FindVariable(AttributeOf(&field, ElementAttribute::kName));
        if (position >= 0) dictionary.AddChild(WithAttribute(field, kIndex, IntToString(position)));
    });
}

void DocumentRewriter::WriteFieldInfos(const XMLElement* source, XMLElement& output) const {
    XMLElement& infos = output.AddChildElement(XMLElement::Create(::Element::kFieldInfos));
    ForEachChild(source, ::Element::kFieldInfo, [&](const auto&, const XMLElement& info) {
        const std::string index = AttributeOf(&info, ElementAttribute::kVarIndex);
        if (fields_.IsCopy(std::atoi(index.c_str()))) return;
        infos.AddChild(WithAttribute(info, ElementAttribute::kVarIndex, fields_.Renumber(index)));
    });
}
