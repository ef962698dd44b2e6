#include "component/ExecutionRequirements.h"

#include <vector>

#include "platform/peer/HxCppConstants.h"
#include "vocabulary/RequestKeys.h"

using HxCppHelperV1::XMLElement;
namespace XMLAttributes = HxCppHelperV1::XMLAttributes;
namespace XMLElements = HxCppHelperV1::XMLElements;
namespace XMLEntities = HxCppHelperV1::XMLEntities;

namespace {

constexpr const char* kUserMissing = "userMissing";
constexpr const char* kExclude = "exclude";
constexpr const char* kListwise = "listwise";
constexpr const char* kCopyPrefix = "$_";

XMLElement AddOperation(XMLElement root, const char* id, const char* component, const char* module) {
    XMLElement operation = root.addChild(XMLElements::Operation);
    operation.addAttribute(XMLAttributes::Id, id);
    operation.addAttribute(XMLAttributes::ComponentId, component);
    operation.addAttribute(XMLAttributes::ModuleId, module);
    operation.addAttribute(XMLAttributes::InputIds, "");
    operation.addAttribute(XMLAttributes::DependencyIds, "");
    return operation;
}

XMLElement AddParameter(XMLElement parameters, const char* name) {
    XMLElement parameter = parameters.addChild(XMLElements::Parameter);
    parameter.addAttribute(XMLAttributes::Name, name);
    return parameter;
}

void AddList(XMLElement parameter, const std::vector<std::string>& values) {
    XMLElement list = parameter.addChild(XMLElements::ListValue);
    for (const std::string& value : values) {
        list.addChild(XMLElements::Value).addAttribute(XMLAttributes::Value, value);
    }
}

void AddNamedValue(XMLElement structure, const char* name, const std::string& value) {
    XMLElement attribute = structure.addChild(XMLElements::Attribute);
    attribute.addAttribute(XMLAttributes::Name, name);
    attribute.addAttribute(XMLAttributes::Value, value);
}

XMLElement AddEncodedField(XMLElement list, const std::string& name, const char* encoding) {
    XMLElement field = list.addChild(XMLElements::StructuredValue);
    AddNamedValue(field, XMLEntities::Field_Name, name);
    AddNamedValue(field, XMLEntities::CatEncode, encoding);
    return field;
}

void AppendUnlessEmpty(const std::string& name, std::vector<std::string>& names) {
    if (!name.empty()) names.push_back(name);
}

bool IsOrdinal(const IQKVariable& field) {
    const auto* categorical = dynamic_cast<const QKCatVar*>(&field);
    return categorical != nullptr && categorical->GetOrdinalFlag();
}

const char* EncodingOf(const IQKVariable& field) {
    if (!FieldKind::IsCategorical(field.GetKind())) return XMLEntities::None;
    return IsOrdinal(field) ? XMLEntities::Ordinal : XMLEntities::Nominal;
}

}  // namespace

QKStatus ExecutionRequirements::Write(XMLElement root, RenamedFields& renamed) const {
    WriteMissingValues(root);
    return WriteEncoding(root, renamed);
}

// ---- Which records, and how they are weighed ----

void ExecutionRequirements::WriteMissingValues(XMLElement root) const {
    XMLElement operation = AddOperation(root, "1", XMLEntities::MissingID, XMLEntities::MissingModuleID);
    XMLElement parameters = operation.addChild(XMLElements::Parameters);
    WriteUserMissing(parameters);
    WriteWeight(parameters);
    WriteListwiseDelete(parameters);
}

void ExecutionRequirements::WriteUserMissing(XMLElement parameters) const {
    if (!Requests(kUserMissing, kExclude)) return;
    std::vector<std::string> names = fields_.names;
    AppendUnlessEmpty(fields_.caseIdField, names);
    AddList(AddParameter(parameters, XMLEntities::ExcludeUMissField), names);
}

void ExecutionRequirements::WriteWeight(XMLElement parameters) const {
    if (WeightField().empty()) return;
    XMLElement structure = AddParameter(parameters, XMLEntities::WeightFeild).addChild(XMLElements::StructuredValue);
    AddNamedValue(structure, XMLEntities::Field_Name, WeightField());
    AddNamedValue(structure, XMLEntities::FreqWeightAdj, XMLEntities::Round);
}

void ExecutionRequirements::WriteListwiseDelete(XMLElement parameters) const {
    std::vector<std::string> names;
    if (Requests(RequestKey::kMissingTreatment, kListwise)) names = fields_.names;
    AppendUnlessEmpty(WeightField(), names);
    AppendUnlessEmpty(fields_.caseIdField, names);
    if (!names.empty()) AddList(AddParameter(parameters, XMLEntities::ListwiseDelete), names);
}

// ---- In which form each field is read ----

QKStatus ExecutionRequirements::WriteEncoding(XMLElement root, RenamedFields& renamed) const {
    XMLElement operation = AddOperation(root, "2", XMLEntities::EncodingID, XMLEntities::EncodingModuleID);
    XMLElement list = AddParameter(operation.addChild(XMLElements::Parameters), XMLEntities::RequiredFields)
                          .addChild(XMLElements::ListValue);
    renamed.clear();
    for (const std::string& name : fields_.names) {
        const QKStatus status = WriteField(name, list, renamed);
        if (status.IsError()) return status;
    }
    if (!WeightField().empty()) AddEncodedField(list, WeightField(), XMLEntities::None);
    if (!fields_.caseIdField.empty()) AddEncodedField(list, fields_.caseIdField, XMLEntities::None);
    return QKStatus();
}

QKStatus ExecutionRequirements::WriteField(const std::string& name, XMLElement list, RenamedFields& renamed) const {
    const IQKVariable* field = varList_.GetVariable(name);
    if (field == nullptr) return QKStatus(RequestCode::kUnknownField);
    AddEncodedField(list, name, EncodingOf(*field));

    // Some tests take an ordinal field by its categories and some by its numbers, so it comes in both forms. The
    // field that makes the groups is only ever taken by its categories.
    const bool bothForms = field->GetKind() == FieldKind::kNumericCategories && IsOrdinal(*field);
    if (!bothForms || name == fields_.groupField) return QKStatus();
    renamed[name] = CopyName(name);
    AddNamedValue(AddEncodedField(list, name, XMLEntities::None), XMLEntities::Rename, renamed[name]);
    return QKStatus();
}

std::string ExecutionRequirements::CopyName(const std::string& field) const {
    std::string copy = kCopyPrefix + field;
    // A name that stands first in the data counts as free; hosts know the copies by the names that come of it.
    while (varList_.FindVariable(copy) > 0) copy.insert(0, "$");
    return copy;
}

bool ExecutionRequirements::Requests(const char* key, const char* value) const {
    std::string requested;
    return request_.GetSettingValByName(key, requested) && requested == value;
}

/// Empty when there is none.
std::string ExecutionRequirements::WeightField() const {
    const IQKVariable* weight = varList_.GetFreqWeightVariable();
    return weight != nullptr ? weight->GetName() : std::string();
}
