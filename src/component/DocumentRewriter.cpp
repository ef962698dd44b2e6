#include "component/DocumentRewriter.h"

#include <cstdlib>
#include <ostream>
#include <sstream>

#include "component/FieldReferences.h"
#include "platform/peer/QKPMMLExporter.h"
#include "support/TextMakers.h"
#include "vocabulary/ResultKeys.h"

using HxCppHelperV1::XMLDocument;
using HxCppHelperV1::XMLElement;
using HxCppHelperV1::XMLElementIterator;

namespace {

constexpr const char* kExtender = "extender";
constexpr const char* kIndex = "index";

void CopyChildren(const XMLElement& source, const char* name, XMLElement target) {
    for (XMLElementIterator children(source, name); children.hasNext();) target.addCopy(children.next());
}

void ReplaceAttribute(XMLElement element, const char* name, const std::string& value) {
    element.removeAttribute(name);
    element.addAttribute(name, value);
}

}  // namespace

void DocumentRewriter::Rewrite(const std::string& text, const XMLDocument& document) const {
    const XMLDocument first = helper_.createFromContents(text);
    const XMLElement source = first.getRoot();
    XMLElement root = document.getRoot();
    for (const char* attribute : {"xmlns", "xmlns:xsi", "version", "xsi:schemaLocation"}) {
        root.addAttribute(attribute, source.getAttribute(attribute));
    }
    ExportDataModel(root);
    CopyChildren(source, "PMMLModel", root);
    CopyChildren(source, "DescriptiveModel", root);
    WriteOutput(source.findChild("Extension"), root);
}

/// A failure, but for exhausted memory, leaves the document without this part.
void DocumentRewriter::ExportDataModel(XMLElement root) const {
    QKPMMLExporter exporter(nullptr);
    std::ostringstream stream;
    stream.exceptions(std::ios::badbit);  // or a stream that runs out of memory would keep it for itself
    const std::ostream* exported =
        exporter.ExportDataModel(varList_, fields_.OriginalIndices(), ExportFormat::kCompact, &stream);
    if (exporter.GetStatus().IsError() || exported == nullptr) return;
    const XMLDocument model = helper_.createFromContents(std::move(stream).str());
    for (XMLElementIterator children(model.getRoot()); children.hasNext();) root.addCopy(children.next());
}

void DocumentRewriter::WriteOutput(const XMLElement& source, XMLElement root) const {
    const XMLElement sourceOutput = source.findChild("TARNOutput");
    XMLElement extension = root.addChild("Extension");
    extension.addAttribute(kExtender, source.getAttribute(kExtender));
    const XMLElement output = extension.addChild("TARNOutput");
    CopyChildren(sourceOutput, "Header", output);
    WriteDataDictionary(sourceOutput.findChild("DataDictionary"), output);
    WriteTests(sourceOutput, output);
    WriteFieldInfos(sourceOutput.findChild(::Element::kFieldInfos), output);
}

void DocumentRewriter::WriteDataDictionary(const XMLElement& source, XMLElement output) const {
    XMLElement dictionary = output.addChild("DataDictionary");
    dictionary.addAttribute("numberOfFields", IntToString(fields_.VarList().Size()));
    for (XMLElementIterator dataFields(source, "DataField"); dataFields.hasNext();) {
        const XMLElement field = dataFields.next();
        const int position = fields_.VarList().FindVariable(field.getAttribute(ElementAttribute::kName));
        if (position >= 0) ReplaceAttribute(dictionary.addCopy(field), kIndex, IntToString(position));
    }
}

void DocumentRewriter::WriteTests(const XMLElement& source, XMLElement output) const {
    CopyChildren(source, "NonParametricTests", output);
    for (XMLElementIterator algorithms(output.findChild("NonParametricTests"), ::Element::kAlgorithm);
         algorithms.hasNext();) {
        RenumberReferences(algorithms.next(), fields_);
    }
}

void DocumentRewriter::WriteFieldInfos(const XMLElement& source, XMLElement output) const {
    XMLElement infos = output.addChild(::Element::kFieldInfos);
    for (XMLElementIterator fieldInfos(source, ::Element::kFieldInfo); fieldInfos.hasNext();) {
        const XMLElement info = fieldInfos.next();
        const std::string index = info.getAttribute(ElementAttribute::kVarIndex);
        if (fields_.IsCopy(std::atoi(index.c_str()))) continue;
        ReplaceAttribute(infos.addCopy(info), ElementAttribute::kVarIndex, fields_.Renumber(index));
    }
}
