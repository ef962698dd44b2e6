#include "platform/peer/QKPMMLExporter.h"

#include <pugixml.hpp>
#include <string_view>

#include "platform/common/FieldTypeText.h"
#include "runtime/common/XmlNodes.h"

namespace {

constexpr const char* kPmmlVersion = "4.4";
constexpr const char* kPmmlNamespace = "http://www.dmg.org/PMML-4_4";

/// The reason of an export that did not come about; it stays inside.
constexpr long kNotExported = 1;

using XmlNodes::AppendAttribute;
using XmlNodes::AppendElement;

void AddUnlessEmpty(pugi::xml_node node, const char* name, std::string_view value) {
    if (!value.empty()) AppendAttribute(node, name, value);
}

void AddField(pugi::xml_node dictionary, const IQKVariable& field) {
    pugi::xml_node element = AppendElement(dictionary, "DataField");
    AppendAttribute(element, "name", field.GetName());
    AddUnlessEmpty(element, "displayName", field.GetLabel());
    AppendAttribute(element, "optype", FieldTypeText::OpType(field));
    AppendAttribute(element, "dataType", FieldTypeText::DataType(field));
    for (int category = 0; category < field.GetCategoryCount(); ++category) {
        pugi::xml_node value = AppendElement(element, "Value");
        AppendAttribute(value, "value", field.GetCategoryText(category));
        AddUnlessEmpty(value, "displayValue", field.GetCategoryLabel(category));
        AppendAttribute(value, "property", "valid");
    }
}

}  // namespace

std::ostream* QKPMMLExporter::ExportDataModel(const QKVarList& varList, const std::vector<int>& indices,
                                              ExportFormat format, std::ostream* stream) {
    status_ = QKStatus(kNotExported);
    pugi::xml_document document;
    pugi::xml_node root = AppendElement(document, "PMML");
    AppendAttribute(root, "version", kPmmlVersion);
    AppendAttribute(root, "xmlns", kPmmlNamespace);
    pugi::xml_node dictionary = AppendElement(root, "DataDictionary");
    AppendAttribute(dictionary, "numberOfFields", std::to_string(indices.size()));
    for (const int index : indices) {
        const IQKVariable* field = varList.GetVarAt(index);
        if (field == nullptr || (queryCancel_ != nullptr && queryCancel_->IsCancelled())) return nullptr;
        AddField(dictionary, *field);
    }
    const unsigned flags = format == ExportFormat::kCompact ? pugi::format_raw : pugi::format_default;
    document.save(*stream, "  ", flags | pugi::format_no_declaration, pugi::encoding_utf8);
    status_ = QKStatus();
    return stream;
}
