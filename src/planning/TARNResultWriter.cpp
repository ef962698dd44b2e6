#include "planning/TARNResultWriter.h"

#include <string>
#include <string_view>
#include <utility>

#include "platform/common/FieldTypeText.h"
#include "support/FieldInfos.h"
#include "support/TextMakers.h"

using QKXML::XMLElement;

namespace {

constexpr const char* kNamespace = "urn:tarn:tabulon:1.0";
constexpr const char* kSchemaLocation = "urn:tarn:tabulon:1.0 tabulon-1.0.xsd";
constexpr const char* kSchemaInstance = "http://www.w3.org/2001/XMLSchema-instance";
constexpr const char* kExtender = "tarn";
constexpr const char* kCopyright = "TARN";
constexpr const char* kApplication = "NonparametricTests";

void AddUnlessEmpty(XMLElement& element, std::string_view name, std::string_view value) {
    if (!value.empty()) element.AddAttribute(name, value);
}

}  // namespace

TARNResultWriter::TARNResultWriter(const QKVarList& fields, const TARNVariableInfo& info, UnivariateResults results,
                                   Elements testElements, const TARNRunParameters& runParameters)
    : varList(&fields),
      univariateResults(std::move(results)),
      elements(std::move(testElements)),
      parameters(runParameters),
      variableInfo(info) {}

void TARNResultWriter::Write(std::ostream& out, const QKOutputParameters& output, const WorkShare& work) const {
    QKXML::WriteTree(out, nullptr, MakeDocument(output, work).get(), 1);
    out.flush();
}

std::unique_ptr<XMLElement> TARNResultWriter::MakeDocument(const QKOutputParameters& output,
                                                           const WorkShare& work) const {
    auto root = XMLElement::Create("Tabulon");
    root->AddAttribute("xmlns", kNamespace);
    root->AddAttribute("xmlns:xsi", kSchemaInstance);
    root->AddAttribute("version", "1.0");
    root->AddAttribute("xsi:schemaLocation", kSchemaLocation);
    root->AddChild(MakePmmlModel());
    root->AddChild(MakeDescriptiveModel());

    XMLElement& extension = root->AddChildElement(XMLElement::Create("Extension"));
    extension.AddAttribute("extender", kExtender);
    XMLElement& tarnOutput = extension.AddChildElement(XMLElement::Create("TARNOutput"));
    tarnOutput.AddChild(MakeHeader(output));
    tarnOutput.AddChild(MakeDataDictionary());
    tarnOutput.AddChild(MakeTests());
    auto infos = MakeFieldInfos(*varList, univariateResults, parameters.weightIndex, parameters.caseIdIndex, work);
    if (infos == nullptr) return nullptr;
    tarnOutput.AddChild(std::move(infos));
    return root;
}

TARNResultWriter::ElementPointer TARNResultWriter::MakePmmlModel() const {
    auto model = XMLElement::Create("PMMLModel");
    model->AddAttribute("modelID", IntToString(parameters.modelId));
    model->AddAttribute("modelType", "NonParametricTests");
    model->AddChild(XMLElement::Create("PredictiveSummary"));
    return model;
}

TARNResultWriter::ElementPointer TARNResultWriter::MakeDescriptiveModel() const {
    auto model = XMLElement::Create("DescriptiveModel");
    model->AddAttribute("modelID", IntToString(parameters.modelId));
    XMLElement& summary = model->AddChildElement(XMLElement::Create("DescriptiveSummary"));
    XMLElement& counts = summary.AddChildElement(XMLElement::Create("Counts"));
    counts.AddAttribute("totalFreq", DoubleToString(varList->GetWeightedCount()));
    counts.AddAttribute("totalCount", SizeToString(varList->GetUnWeightedCount()));
    counts.AddAttribute("droppedCount", SizeToString(varList->GetDroppedCount()));
    counts.AddAttribute("badWeightCount", SizeToString(varList->GetBadWeightCount()));
    counts.AddAttribute("droppedFreq", DoubleToString(varList->GetWeightedDroppedCount()));
    return model;
}

TARNResultWriter::ElementPointer TARNResultWriter::MakeHeader(const QKOutputParameters& output) const {
    auto header = XMLElement::Create("Header");
    header->AddAttribute("copyright", output.copyright.empty() ? kCopyright : output.copyright);
    XMLElement& application = header->AddChildElement(XMLElement::Create("Application"));
    application.AddAttribute("name", output.applicationName.empty() ? kApplication : output.applicationName);
    AddUnlessEmpty(application, "version", output.applicationVersion);
    return header;
}

TARNResultWriter::ElementPointer TARNResultWriter::MakeDataDictionary() const {
    auto dictionary = XMLElement::Create("DataDictionary");
    dictionary->AddAttribute("numberOfFields", IntToString(varList->Size()));
    for (int field = 0; field < varList->Size(); ++field) dictionary->AddChild(MakeDataField(field));
    return dictionary;
}

TARNResultWriter::ElementPointer TARNResultWriter::MakeDataField(int field) const {
    const IQKVariable& variable = *varList->GetVarAt(field);
    auto element = XMLElement::Create("DataField");
    element->AddAttribute("index", IntToString(field));
    element->AddAttribute("name", variableInfo.GetName(field));
    AddUnlessEmpty(*element, "displayName", variableInfo.GetLabel(field));
    element->AddAttribute("optype", FieldTypeText::OpType(variable));
    element->AddAttribute("dataType", FieldTypeText::DataType(variable));
    if (!FieldKind::IsCategorical(variable.GetKind())) return element;

    for (int category = 0; category < variable.GetCategoryCount(); ++category) {
        XMLElement& value = element->AddChildElement(XMLElement::Create("Value"));
        value.AddAttribute("index", IntToString(category));
        value.AddAttribute("value", variable.GetCategoryText(category));
        AddUnlessEmpty(value, "displayValue", variable.GetCategoryLabel(category));
        value.AddAttribute("property", "valid");
    }
    return element;
}

TARNResultWriter::ElementPointer TARNResultWriter::MakeTests() const {
    auto tests = XMLElement::Create("NonParametricTests");
    tests->AddAttribute("number", SizeToString(elements.size()));
    tests->AddAttribute("sigLevel", DoubleToString(parameters.sigLevel));
    tests->AddAttribute("confidenceLevel", DoubleToString(parameters.confidenceLevel));
    tests->AddAttribute("missingTreatment", parameters.analysisMissing ? "analysis" : "listwise");
    for (const auto& element : elements) tests->AddChild(element);
    return tests;
}
