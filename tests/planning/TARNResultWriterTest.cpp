// The document of a run: everything around the elements of the tests.

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "catalogue/TARNFactory.h"
#include "planning/TARNResultWriter.h"
#include "support/QKVecValue.h"
#include "tests/harness/CollectorRig.h"
#include "tests/harness/TestRun.h"

namespace {

using harness::Document;
using harness::Fields;
using harness::kNoCategory;
using harness::kNone;

/// "name=value" of each attribute, in order.
std::vector<std::string> AttributesOf(const pugi::xml_node& node) {
    std::vector<std::string> attributes;
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        attributes.push_back(std::string(attribute.name()) + "=" + attribute.value());
    }
    return attributes;
}

std::vector<std::string> ChildrenOf(const pugi::xml_node& node) {
    std::vector<std::string> names;
    for (const pugi::xml_node& child : node.children()) names.emplace_back(child.name());
    return names;
}

using Texts = std::vector<std::string>;

/// The text with a ">" as it is, which an attribute may hold either way.
std::string Plain(std::string text) {
    for (std::size_t at; (at = text.find("&gt;")) != std::string::npos;) text.replace(at, 4, ">");
    return text;
}

QKSettings OneSignTest() {
    QKSettings settings;
    harness::AddListTest(settings, "RSign", {"a", "b"});
    return settings;
}

Fields TwoFields() {
    Fields fields;
    fields.Continuous("a", "First").Continuous("b");
    return fields;
}

TEST(ResultDocument, HasItsElementsInOrder) {
    Fields fields = TwoFields();
    const Document document = harness::Run(OneSignTest(), fields, {{1, 2}}).document;
    const pugi::xml_node root = document.Root();
    EXPECT_EQ(AttributesOf(root),
              (Texts{"xmlns=urn:tarn:tabulon:1.0", "xmlns:xsi=http://www.w3.org/2001/XMLSchema-instance", "version=1.0",
                     "xsi:schemaLocation=urn:tarn:tabulon:1.0 tabulon-1.0.xsd"}));
    EXPECT_EQ(ChildrenOf(root), (Texts{"PMMLModel", "DescriptiveModel", "Extension"}));
    EXPECT_EQ(AttributesOf(root.child("PMMLModel")), (Texts{"modelID=0", "modelType=NonParametricTests"}));
    EXPECT_EQ(ChildrenOf(root.child("PMMLModel")), Texts{"PredictiveSummary"});
    EXPECT_EQ(AttributesOf(root.child("DescriptiveModel")), Texts{"modelID=0"});
    EXPECT_EQ(AttributesOf(root.child("Extension")), Texts{"extender=tarn"});
    const pugi::xml_node output = root.child("Extension").child("TARNOutput");
    EXPECT_EQ(ChildrenOf(output), (Texts{"Header", "DataDictionary", "NonParametricTests", "FieldInfos"}));
}

TEST(ResultDocument, CountsAreThoseOfTheFieldsWithWeightSumsAsDoubles) {
    Fields fields = TwoFields();
    fields.List().SetCounts({12.5, 7, 2, 1, 0.25});
    const Document document = harness::Run(OneSignTest(), fields, {{1, 2}}).document;
    const pugi::xml_node model = document.Root().child("DescriptiveModel");
    EXPECT_EQ(AttributesOf(model.child("DescriptiveSummary").child("Counts")),
              (Texts{"totalFreq=12.5", "totalCount=7", "droppedCount=2", "badWeightCount=1", "droppedFreq=0.25"}));
}

TEST(ResultDocument, ModelIdComesFromTheSettings) {
    Fields fields = TwoFields();
    QKSettings settings = OneSignTest();
    settings.AddNewSetting("TarnTabulonModelID", 42, "");
    const Document document = harness::Run(settings, fields, {{1, 2}}).document;
    const pugi::xml_node root = document.Root();
    EXPECT_STREQ(root.child("PMMLModel").attribute("modelID").value(), "42");
    EXPECT_STREQ(root.child("DescriptiveModel").attribute("modelID").value(), "42");
}

TEST(ResultDocument, TestsTellTheirNumberAndTheLevelsOfTheRun) {
    Fields fields = TwoFields();
    QKSettings settings = OneSignTest();
    settings.AddSetting("sigLevel", 0.1);
    settings.AddSetting("confidenceLevel", 0.9);
    settings.AddSetting("missingTreatment", "anything else");
    harness::AddListTest(settings, "RSign", {"b", "a"});
    const Document document = harness::Run(settings, fields, {{1, 2}}).document;
    EXPECT_EQ(AttributesOf(document.Output().child("NonParametricTests")),
              (Texts{"number=2", "sigLevel=0.1", "confidenceLevel=0.9", "missingTreatment=listwise"}));
    Fields again = TwoFields();
    const Document usual = harness::Run(OneSignTest(), again, {{1, 2}}).document;
    EXPECT_EQ(AttributesOf(usual.Output().child("NonParametricTests")),
              (Texts{"number=1", "sigLevel=0.05", "confidenceLevel=0.95", "missingTreatment=analysis"}));
}

// ---- The writer by itself ----

std::shared_ptr<QKXML::XMLElement> Algorithm(const char* name) {
    std::shared_ptr<QKXML::XMLElement> element = QKXML::XMLElement::Create("Algorithm");
    element->AddAttribute("name", name);
    return element;
}

std::string Written(const QKVarList& fields, const UnivariateCollector& univariates,
                    const TARNResultWriter::Elements& elements, const TARNRunParameters& parameters) {
    const TARNResultWriter writer(fields, TARNVariableInfo(fields), UnivariateResults(univariates), elements,
                                  parameters);
    std::ostringstream out;
    writer.Write(out, {"Studio", "", "\"us\" & <them>"}, WorkShare());
    return out.str();
}

TEST(TARNResultWriter, WritesTheWholeDocumentOfAnExample) {
    Fields table;
    table.Weight("n");
    table.List().AddNewVar(std::make_shared<QKCatVar>(
        "g", "Group & co", true, std::vector<QKCatVar::StringCategory>{{"a\"b", "label"}, {"\xC3\xA9", ""}}));
    table.List().SetCounts({2.5, 3, 1, 0, 0.5});
    CollectorRig rig(table, {{2, 1}, {1.9, 0}});
    rig.collector->SetWeight(0);
    rig.Request(0, Statistic::kMin);
    rig.Request(1, Statistic::kFrequencies);
    ASSERT_TRUE(rig.Compute().IsOK());

    TARNRunParameters parameters;
    parameters.modelId = -7;
    parameters.analysisMissing = false;
    parameters.sigLevel = 1.0 / 3;
    parameters.confidenceLevel = 0.99;
    parameters.weightIndex = 0;
    const TARNResultWriter::Elements elements{Algorithm("second"), Algorithm("first")};
    const std::string expected =
        R"(<?xml version="1.0" encoding="UTF-8"?>)"
        R"(<Tabulon xmlns="urn:tarn:tabulon:1.0" xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" version="1.0")"
        R"( xsi:schemaLocation="urn:tarn:tabulon:1.0 tabulon-1.0.xsd">)"
        R"(<PMMLModel modelID="-7" modelType="NonParametricTests"><PredictiveSummary/></PMMLModel>)"
        R"(<DescriptiveModel modelID="-7"><DescriptiveSummary><Counts totalFreq="2.5" totalCount="3" droppedCount="1")"
        R"( badWeightCount="0" droppedFreq="0.5"/></DescriptiveSummary></DescriptiveModel>)"
        R"(<Extension extender="tarn"><TARNOutput>)"
        R"(<Header copyright="&quot;us&quot; &amp; &lt;them&gt;"><Application name="Studio"/></Header>)"
        R"(<DataDictionary numberOfFields="2">)"
        R"(<DataField index="0" name="n" optype="continuous" dataType="double"/>)"
        R"(<DataField index="1" name="g" displayName="Group &amp; co" optype="ordinal" dataType="string">)"
        R"(<Value index="0" value="a&quot;b" displayValue="label" property="valid"/>)"
        "<Value index=\"1\" value=\"\xC3\xA9\" property=\"valid\"/></DataField></DataDictionary>"
        R"(<NonParametricTests number="2" sigLevel="0.333333333333333" confidenceLevel="0.99")"
        R"( missingTreatment="listwise"><Algorithm name="second"/><Algorithm name="first"/></NonParametricTests>)"
        R"(<FieldInfos><FieldInfo varIndex="1"><StructuredTable name="CategoricalDistribution">)"
        R"(<Attribute name="TotalN" value="3"/><SimpleTable name="Interval"><RowNames>count;value</RowNames>)"
        R"(<ColumnNames/><Row>1;2</Row><Row>0;1</Row></SimpleTable></StructuredTable></FieldInfo></FieldInfos>)"
        R"(</TARNOutput></Extension></Tabulon>)";
    const std::string written = Written(table.List(), *rig.collector, elements, parameters);
    EXPECT_EQ(Plain(written), Plain(expected));
    EXPECT_EQ(Written(table.List(), *rig.collector, elements, parameters), written);  // the elements are still there
}

TEST(TARNResultWriter, WithoutFieldsAndTestsKeepsItsElements) {
    const QKVarList fields;
    Fields one;
    one.Continuous("x");
    const CollectorRig rig(one, {{1}});
    const Document document(Written(fields, *rig.collector, {}, {}));
    EXPECT_EQ(AttributesOf(document.Output().child("DataDictionary")), Texts{"numberOfFields=0"});
    EXPECT_EQ(AttributesOf(document.Output().child("NonParametricTests")),
              (Texts{"number=0", "sigLevel=0", "confidenceLevel=0", "missingTreatment=analysis"}));
    EXPECT_EQ(ChildrenOf(document.Output()), (Texts{"Header", "DataDictionary", "NonParametricTests", "FieldInfos"}));
    EXPECT_TRUE(ChildrenOf(document.Output().child("FieldInfos")).empty());
}

// ---- The header ----

std::string DocumentWith(const QKOutputParameters& parameters) {
    Fields fields = TwoFields();
    QKSettings settings = OneSignTest();
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(settings, fields.List()));
    harness::RowStream rows({{1, 2}});
    EXPECT_TRUE(algorithm->Run(rows).IsOK());
    std::ostringstream out;
    EXPECT_TRUE(algorithm->WriteResults(out, parameters).IsOK());
    std::ostringstream again;
    EXPECT_TRUE(algorithm->WriteResults(again, parameters).IsOK());
    EXPECT_EQ(out.str(), again.str());  // a document can be written more than once
    return out.str();
}

TEST(ResultDocument, HeaderTellsOfTheHostWhatItGave) {
    const Document document(DocumentWith({"Studio", "7.1", "(c) them"}));
    const pugi::xml_node header = document.Output().child("Header");
    EXPECT_EQ(AttributesOf(header), Texts{"copyright=(c) them"});
    EXPECT_EQ(AttributesOf(header.child("Application")), (Texts{"name=Studio", "version=7.1"}));
}

TEST(ResultDocument, HeaderOfASilentHostHasTheFixedTextsAndNoVersion) {
    const Document document(DocumentWith({}));
    const pugi::xml_node header = document.Output().child("Header");
    EXPECT_EQ(AttributesOf(header), Texts{"copyright=TARN"});
    EXPECT_EQ(AttributesOf(header.child("Application")), Texts{"name=NonparametricTests"});
}

// ---- The data dictionary ----

TEST(ResultDocument, DataDictionaryDescribesEachKindOfField) {
    Fields fields = TwoFields();
    fields.Numeric("n", {1.5, -2}, true).Text("t", {"x;y", "<z>"}).Other("o");
    QKVarList& list = fields.List();
    list.AddNewVar(std::make_shared<QKContVar>("day", "", DateType::kDate));
    list.AddNewVar(std::make_shared<QKContVar>("time", "", DateType::kTime));
    list.AddNewVar(std::make_shared<QKContVar>("moment", "", DateType::kDateTime));
    list.AddNewVar(std::make_shared<QKCatVar>(
        "c", "Class", false, std::vector<QKCatVar::NumericCategory>{{7, "seven"}, {8, ""}}, DateType::kDate));
    const Document document = harness::Run(OneSignTest(), fields, {{1, 2, 0, 0, 1, 0, 0, 0, 1}}).document;
    const pugi::xml_node dictionary = document.Output().child("DataDictionary");
    EXPECT_EQ(AttributesOf(dictionary), Texts{"numberOfFields=9"});
    std::vector<Texts> fieldsSeen;
    for (const pugi::xml_node& field : dictionary.children()) fieldsSeen.push_back(AttributesOf(field));
    const std::vector<Texts> expected{
        {"index=0", "name=a", "displayName=First", "optype=continuous", "dataType=double"},
        {"index=1", "name=b", "optype=continuous", "dataType=double"},
        {"index=2", "name=n", "optype=ordinal", "dataType=double"},
        {"index=3", "name=t", "optype=categorical", "dataType=string"},
        {"index=4", "name=o", "optype=continuous", "dataType=double"},
        {"index=5", "name=day", "optype=continuous", "dataType=dateDaysSince[1970]"},
        {"index=6", "name=time", "optype=continuous", "dataType=timeSeconds"},
        {"index=7", "name=moment", "optype=continuous", "dataType=dateTimeSecondsSince[1970]"},
        {"index=8", "name=c", "displayName=Class", "optype=categorical", "dataType=dateDaysSince[1970]"}};
    EXPECT_EQ(fieldsSeen, expected);

    const auto valuesOf = [&](const char* name) {
        std::vector<Texts> values;
        for (const pugi::xml_node& value : dictionary.find_child_by_attribute("name", name).children()) {
            EXPECT_STREQ(value.name(), "Value");
            values.push_back(AttributesOf(value));
        }
        return values;
    };
    EXPECT_EQ(valuesOf("n"), (std::vector<Texts>{{"index=0", "value=1.5", "property=valid"},
                                                 {"index=1", "value=-2", "property=valid"}}));
    EXPECT_EQ(valuesOf("t"), (std::vector<Texts>{{"index=0", "value=x;y", "property=valid"},
                                                 {"index=1", "value=<z>", "property=valid"}}));
    EXPECT_EQ(valuesOf("c"), (std::vector<Texts>{{"index=0", "value=7", "displayValue=seven", "property=valid"},
                                                 {"index=1", "value=8", "property=valid"}}));
    EXPECT_EQ(valuesOf("a"), std::vector<Texts>{});
}

// ---- The field information ----

TEST(FieldInfos, ContinuousFieldHasItsRangeMomentsAndIntervals) {
    Fields fields = TwoFields();
    const Document document = harness::Run(OneSignTest(), fields, {{1, 9}, {4, 9}, {kNone, 9}, {1, 9}}).document;
    const harness::Table distribution = document.FieldInfo(0).Sub("ContinuousDistribution");
    EXPECT_EQ(distribution.ChildNames(), (Texts{"Attribute TotalN", "Attribute Min", "Attribute Max", "Attribute Mean",
                                                "Attribute StdDev", "SimpleTable Interval"}));
    EXPECT_EQ(distribution.Row("TotalN"), "3");
    EXPECT_EQ(distribution.Row("Min"), "1");
    EXPECT_EQ(distribution.Row("Max"), "4");
    EXPECT_EQ(distribution.Row("Mean"), "2");
    EXPECT_EQ(distribution.Row("StdDev"), "1.73205080756888");  // the root of 6 / 2
    EXPECT_EQ(distribution.SimpleRows("Interval"), (Texts{"2;1", "1;4"}));
}

TEST(FieldInfos, FieldWithoutAValueHasNoIntervalTable) {
    Fields fields = TwoFields();
    const Document document = harness::Run(OneSignTest(), fields, {{kNone, 2}, {kNone, 3}}).document;
    const harness::Table distribution = document.FieldInfo(0).Sub("ContinuousDistribution");
    EXPECT_EQ(distribution.Row("TotalN"), "0");
    EXPECT_EQ(distribution.Row("Min"), "-1.79769313486232e+308");  // never computed
    EXPECT_EQ(distribution.ChildNames().size(), 5u);
}

TEST(FieldInfos, CategoricalFieldHasTheFrequenciesOfAllItsCategories) {
    Fields fields;
    fields.Numeric("g", {5, 6, 7}).Continuous("a").Continuous("b");
    const Document document =
        harness::Run(OneSignTest(), fields, {{2, 1, 2}, {0, 3, 4}, {kNoCategory, 1, 1}, {2, 5, 5}}).document;
    const harness::Table distribution = document.FieldInfo(0).Sub("CategoricalDistribution");
    EXPECT_EQ(distribution.ChildNames(), (Texts{"Attribute TotalN", "SimpleTable Interval"}));
    EXPECT_EQ(distribution.Row("TotalN"), "3");
    EXPECT_EQ(distribution.SimpleRows("Interval"), (Texts{"1;0;2", "0;1;2"}));
}

TEST(FieldInfos, WeightFieldAndCaseIdFieldAreLeftOut) {
    Fields weighted;
    weighted.Weight("w").Continuous("a").Continuous("b");
    const Document withWeight = harness::Run(OneSignTest(), weighted, {{2, 1, 2}}).document;
    EXPECT_FALSE(withWeight.FieldInfo(0).Exists());
    EXPECT_TRUE(withWeight.FieldInfo(1).Exists());

    Fields fields = TwoFields();
    QKSettings settings = OneSignTest();
    settings.AddSetting("caseIDVariableName", "b");
    const Document withCaseId = harness::Run(settings, fields, {{1, 2}}).document;
    EXPECT_TRUE(withCaseId.FieldInfo(0).Exists());
    EXPECT_FALSE(withCaseId.FieldInfo(1).Exists());
}

}  // namespace
