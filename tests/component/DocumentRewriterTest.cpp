// The second stage of the document, on documents made by hand. The execution has the fields
//   0 a, 1 b, 2 the copy of b, 3 c, 4 the copy of c, 5 g
// of which the host knows 0 a, 1 b, 2 c, 3 g.

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

#include "component/DocumentRewriter.h"
#include "component/FieldReferences.h"
#include "tests/harness/AllocationFailure.h"

namespace component_test {

namespace {

using QKXML::XMLElement;
using QKXML::XMLString;

/// The tree of a text, as another library reads it.
std::unique_ptr<XMLElement> TreeOf(const pugi::xml_node& node) {
    auto element = XMLElement::Create(node.name());
    for (const pugi::xml_attribute& attribute : node.attributes()) {
        element->AddAttribute(attribute.name(), attribute.value());
    }
    for (const pugi::xml_node& child : node.children()) {
        if (child.type() == pugi::node_element) {
            element->AddChild(TreeOf(child));
        } else {
            element->AddChild(XMLString::Create(child.value()));
        }
    }
    return element;
}

std::unique_ptr<XMLElement> TreeOf(const std::string& text) {
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(text.c_str(), pugi::parse_default | pugi::parse_ws_pcdata_single)) << text;
    return TreeOf(document.document_element());
}

std::string WrittenOf(const XMLElement& element) {
    std::string text;
    element.AppendTo(text);
    return text;
}

// ---- Texts of elements ----

std::string Row(const std::string& name, const std::string& value) {
    return "<Attribute name=\"" + name + "\" value=\"" + value + "\"/>";
}

std::string TableOf(const std::string& name, const std::string& content) {
    return "<StructuredTable name=\"" + name + "\">" + content + "</StructuredTable>";
}

std::string Text(const std::string& element, const std::string& text) {
    return text.empty() ? "<" + element + "/>" : "<" + element + ">" + text + "</" + element + ">";
}

std::string Simple(const std::string& name, const std::string& rowNames, const std::vector<std::string>& rows) {
    std::string content = Text("RowNames", rowNames) + Text("ColumnNames", "0;1");
    for (const std::string& row : rows) content += Text("Row", row);
    return "<SimpleTable name=\"" + name + "\">" + content + "</SimpleTable>";
}

std::string Algorithm(const std::string& name, const std::string& content) {
    return "<Algorithm name=\"" + name + "\">" + content + "</Algorithm>";
}

std::string Condition(const std::string& rows) {
    return TableOf("Condition", Row("ConditionKey", "2") + rows);
}

// ---- The fields ----

std::shared_ptr<const IQKVariable> Continuous(const std::string& name) {
    return std::make_shared<QKContVar>(name, "");
}

std::shared_ptr<const IQKVariable> Ordinal(const std::string& name) {
    return std::make_shared<QKCatVar>(name, "", true, std::vector<QKCatVar::NumericCategory>{{1, ""}, {2, ""}});
}

QKVarList MakeFields() {
    QKVarList fields;
    fields.AddNewVar(Continuous("a"));
    fields.AddNewVar(Ordinal("b"));
    fields.AddNewVar(Continuous("$_b"));
    fields.AddNewVar(Ordinal("c"));
    fields.AddNewVar(Continuous("$_c"));
    fields.AddNewVar(Ordinal("g"));
    return fields;
}

const ExecutionRequirements::RenamedFields kRenamed{{"b", "$_b"}, {"c", "$_c"}};

class Renumbering : public testing::Test {
 protected:
    std::string Renumbered(const std::string& algorithm) const {
        const std::shared_ptr<const XMLElement> first = TreeOf(algorithm);
        const std::string renumbered = WrittenOf(*RenumberReferences(first, PublicFields(fields, kRenamed)));
        EXPECT_EQ(WrittenOf(*first), algorithm) << "the first element stays";
        return renumbered;
    }

    QKVarList fields = MakeFields();
};

// ---- Where the references are ----

TEST_F(Renumbering, OneSampleTestsReferToOneField) {
    for (const char* name : {"OKolmogorovSmirnov", "OWilcoxonSignedRanks", "OBinomial", "OChiSquare", "ORuns"}) {
        // The second parameter is a value of the test, however it looks.
        EXPECT_EQ(Renumbered(Algorithm(name, Condition(Row("%0", "3") + Row("%1", "3")))),
                  Algorithm(name, Condition(Row("%0", "2") + Row("%1", "3"))));
        EXPECT_EQ(Renumbered(Algorithm(name, Condition(Row("%0", "4")))),
                  Algorithm(name, Condition(Row("%0", "2") + Row("OrdinalTreatedAsCont", "2"))));
    }
}

TEST_F(Renumbering, TwoGroupTestsReferToTheTestFieldAndTheGroupField) {
    for (const char* name :
         {"IMannWhitneyU", "IKolmogorovSmirnov", "IWaldWolfowitzRuns", "IMoses", "IHodgesLehmannEstimateGroups"}) {
        EXPECT_EQ(Renumbered(Algorithm(name, Condition(Row("%0", "2") + Row("%1", "5")))),
                  Algorithm(name, Condition(Row("%0", "1") + Row("%1", "3") + Row("OrdinalTreatedAsCont", "1"))));
    }
}

TEST_F(Renumbering, OfTheTwoGroupTestsMosesAloneHasBoxPlots) {
    const auto element = [](const char* name, const char* group) {
        return Algorithm(name, TableOf("BoxPlotInfo", Row("GroupFieldIndex", group) + Row("GroupCount", "5")));
    };
    EXPECT_EQ(Renumbered(element("IMoses", "5")), element("IMoses", "3"));
    EXPECT_EQ(Renumbered(element("IMannWhitneyU", "5")), element("IMannWhitneyU", "5"));
}

TEST_F(Renumbering, TestsOfGroupsReferToTheGroupFieldInEachTable) {
    const auto element = [](const char* name, const char* field, const char* group) {
        const std::string comparison = Row("fieldIndex", group) + Simple("PairwiseInfo", "", {"4;5", "1;2"});
        return Algorithm(name, Condition(Row("%0", field) + Row("%1", group)) +
                                   TableOf("BoxPlotInfo", Row("GroupFieldIndex", group)) +
                                   TableOf("Group4", Row("GroupIndex", "4")) + TableOf("PairwiseResult", comparison) +
                                   TableOf("StepwiseResult", comparison));
    };
    for (const char* name : {"IKruskalWallis", "IJonckheereTerpstra", "IMedian"}) {
        EXPECT_EQ(Renumbered(element(name, "3", "5")), element(name, "2", "3"));
    }
}

TEST_F(Renumbering, PairsReferToBothFieldsInTheComparison) {
    const auto element = [](const char* name, const char* first, const char* second) {
        return Algorithm(name, Condition(Row("%0", first) + Row("%1", second)) +
                                   TableOf("CategoryFieldsComparison",
                                           Row("RowNames", first) + Row("RowSuccessList", "4") +
                                               Row("ColumnNames", second) + Simple("Content", "5", {"4;5"})));
    };
    for (const char* name :
         {"RSign", "RWilcoxonSignedRanks", "RHodgesLehmannEstimatePairs", "RMcNemar", "RMarginalHomogeneity"}) {
        EXPECT_EQ(Renumbered(element(name, "3", "5")), element(name, "2", "3"));
    }
}

TEST_F(Renumbering, RelatedSamplesReferToListsOfFields) {
    const auto element = [](const char* name, const char* list, const char* first, const char* last,
                            const char* positions) {
        return Algorithm(name, Condition(Row("%0", list)) +
                                   TableOf("VariableInformation0", Row("GroupIndex", first) + Row("MeanOfRank", "5")) +
                                   TableOf("VariableInformation1", Row("GroupIndex", last)) +
                                   TableOf("PairwiseResult", Simple("PairwiseInfo", "4", {positions, "5;3;4"}) +
                                                                 Simple("Content", "", {"4;5"})) +
                                   TableOf("StepwiseResult", Simple("StepwiseInfo", "", {positions, "5;3;4"})));
    };
    for (const char* name : {"RFriedmansTwoWayByRanks", "RKendallsCoefficient", "RCochransQ"}) {
        EXPECT_EQ(Renumbered(element(name, "5;0;3", "5", "3", "3;5;0")), element(name, "3;0;2", "3", "2", "2;3;0"));
    }
}

TEST_F(Renumbering, OfTheRelatedSamplesCochranAloneNamesItsClasses) {
    const auto element = [](const char* name, const char* list) {
        return Algorithm(name, TableOf("TwoClassComparison", Simple("Content", list, {"4;5", "3;4"})));
    };
    EXPECT_EQ(Renumbered(element("RCochransQ", "3;5")), element("RCochransQ", "2;3"));
    EXPECT_EQ(Renumbered(element("RFriedmansTwoWayByRanks", "3;5")), element("RFriedmansTwoWayByRanks", "3;5"));
}

TEST_F(Renumbering, ProportionIntervalsKeepTheIndicesOfTheExecution) {
    const std::string element = Algorithm("OEstimateConfidenceInterval", Condition(Row("%0", "4")));
    EXPECT_EQ(Renumbered(element), element);
}

// ---- What is written in their place ----

TEST_F(Renumbering, TheCopiesAloneStandInOrdinalTreatedAsCont) {
    EXPECT_EQ(
        Renumbered(Algorithm("RFriedmansTwoWayByRanks", Condition(Row("%0", "4;0;2;3")))),
        Algorithm("RFriedmansTwoWayByRanks", Condition(Row("%0", "2;0;1;2") + Row("OrdinalTreatedAsCont", "2;1"))));
    EXPECT_EQ(Renumbered(Algorithm("RSign", Condition(Row("%0", "4") + Row("%1", "2")))),
              Algorithm("RSign", Condition(Row("%0", "2") + Row("%1", "1") + Row("OrdinalTreatedAsCont", "2;1"))));
}

TEST_F(Renumbering, AnEntryInNoFieldsPlaceStays) {
    for (const char* entry : {"-1", "__MISSING__", "", "6", "1.5"}) {
        const std::string element = Algorithm("RSign", Condition(Row("%0", entry) + Row("%1", "0")));
        EXPECT_EQ(Renumbered(element), element);
    }
    EXPECT_EQ(Renumbered(Algorithm("RCochransQ", Condition(Row("%0", "-1;3;__MISSING__")))),
              Algorithm("RCochransQ", Condition(Row("%0", "-1;2;__MISSING__"))));
}

TEST_F(Renumbering, MessagesKeepTheirParameters) {
    const std::string messages = TableOf("WarningMessages", TableOf("Message", Row("%0", "4") + Row("%1", "5")));
    EXPECT_EQ(Renumbered(Algorithm("RSign", Condition(Row("%0", "0")) + messages)),
              Algorithm("RSign", Condition(Row("%0", "0")) + messages));
}

// ---- The document ----

std::string DataField(const std::string& index, const std::string& name) {
    return "<DataField index=\"" + index + "\" name=\"" + name +
           "\" optype=\"continuous\"><Value index=\"0\"/></DataField>";
}

std::string FieldInfo(const std::string& index) {
    return "<FieldInfo varIndex=\"" + index + "\"><StructuredTable name=\"t\"/></FieldInfo>";
}

class Rewriting : public testing::Test {
 protected:
    std::string Rewritten(const std::string& text) const { return Rewritten(*TreeOf(text)); }
    std::string Rewritten(const XMLElement& first) const {
        const PublicFields publicFields(fields, kRenamed);
        return QKXML::TextOfTree(*DocumentRewriter(fields, publicFields).Rewrite(first), {});
    }

    QKVarList fields = MakeFields();
};

TEST_F(Rewriting, TheDocumentIsWrittenAnewInItsOrder) {
    const std::string models =
        "<PMMLModel modelID=\"7\"><PredictiveSummary/></PMMLModel><DescriptiveModel modelID=\"7\"/>";
    std::string dictionary;
    std::string infos;
    for (int index = 0; index < fields.Size(); ++index) {
        dictionary += DataField(std::to_string(index), fields.GetVarAt(index)->GetName());
        infos += FieldInfo(std::to_string(index));
    }
    // The references in the tests were renumbered before.
    const std::string tests = Algorithm("RSign", Condition(Row("%0", "2") + Row("%1", "3"))) +
                              Algorithm("OBinomial", Condition(Row("%0", "3")));
    const std::string root =
        "<Tabulon xmlns=\"urn:x\" xmlns:xsi=\"urn:y\" version=\"1.0\" xsi:schemaLocation=\"urn:x x.xsd\">";
    const std::string text =
        root + models +
        "<Extension extender=\"e\"><TARNOutput><Header copyright=\"c\"/><DataDictionary numberOfFields=\"6\">" +
        dictionary + "</DataDictionary><NonParametricTests number=\"2\">" + tests +
        "</NonParametricTests><FieldInfos>" + infos + "</FieldInfos></TARNOutput></Extension></Tabulon>";

    const std::string rewritten = Rewritten(text);
    const auto field = [](const char* index, const char* name) {
        return "<DataField name=\"" + std::string(name) + "\" optype=\"continuous\" index=\"" + index +
               "\"><Value index=\"0\"/></DataField>";
    };
    EXPECT_EQ(
        rewritten.find("<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + root + "<DataDictionary numberOfFields=\"4\">"),
        0u)
        << rewritten;
    const std::string behindTheExport = rewritten.substr(rewritten.find("<PMMLModel"));
    EXPECT_EQ(behindTheExport,
              models + "<Extension extender=\"e\"><TARNOutput><Header copyright=\"c\"/>" +
                  "<DataDictionary numberOfFields=\"4\">" + field("0", "a") + field("1", "b") + field("2", "c") +
                  field("3", "g") + "</DataDictionary><NonParametricTests number=\"2\">" + tests +
                  "</NonParametricTests><FieldInfos>" + FieldInfo("0") + FieldInfo("1") + FieldInfo("2") +
                  FieldInfo("3") + "</FieldInfos></TARNOutput></Extension></Tabulon>");
}

TEST_F(Rewriting, BlanksAndSignsInTextsSurvive) {
    const std::string value = "a &lt;b&gt; &amp; &quot;c&quot;&#10;&#9;d  e";
    const std::string rewritten =
        Rewritten("<Tabulon><Extension><TARNOutput><NonParametricTests>" +
                  Algorithm("OBinomial", TableOf("t", Row("n", value) + Simple("s", " ", {" x  y "}))) +
                  "</NonParametricTests></TARNOutput></Extension></Tabulon>");
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(rewritten.c_str(), pugi::parse_default | pugi::parse_ws_pcdata_single));
    const pugi::xml_node output = document.child("Tabulon").child("Extension").child("TARNOutput");
    const pugi::xml_node inner = output.child("NonParametricTests").child("Algorithm").child("StructuredTable");
    EXPECT_STREQ(inner.child("Attribute").attribute("value").value(), "a <b> & \"c\"\n\td  e");
    EXPECT_STREQ(inner.child("SimpleTable").child_value("RowNames"), " ");
    EXPECT_STREQ(inner.child("SimpleTable").child_value("Row"), " x  y ");
}

TEST_F(Rewriting, ADocumentThatFindsNoMemoryIsNone) {
    const std::string longText(9000, 'x');
    const std::shared_ptr<const XMLElement> test = TreeOf(
        Algorithm("RCochransQ", Condition(Row("%0", "1;2;3;4") + Row("n", longText)) +
                                    TableOf("PairwiseResult", Simple("PairwiseInfo", longText, {"0;1", longText}))));
    const PublicFields publicFields(fields, kRenamed);
    const auto first =
        TreeOf("<Tabulon><PMMLModel modelID=\"" + longText + "\"/><Extension><TARNOutput><DataDictionary>" +
               DataField("0", "a") + "</DataDictionary><FieldInfos>" + FieldInfo("0") +
               "</FieldInfos></TARNOutput></Extension></Tabulon>");
    const auto rewrite = [&] { return WrittenOf(*RenumberReferences(test, publicFields)) + Rewritten(*first); };
    const std::string whole = rewrite();
    int failures = 0;
    for (bool failed = true; failed; ++failures) {
        SCOPED_TRACE(failures);
        std::string rewritten;
        bool threw = false;
        {
            const AllocationFailure failure(failures);
            try {
                rewritten = rewrite();
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            failed = AllocationFailure::HasFailed();
        }
        EXPECT_EQ(threw, failed);
        EXPECT_EQ(rewritten, threw ? "" : whole);
    }
    EXPECT_GT(failures, 50);
}

TEST_F(Rewriting, ACancelLeavesNoText) {
    const auto first = TreeOf("<Tabulon><PMMLModel/></Tabulon>");
    EXPECT_EQ(QKXML::TextOfTree(*first, [] { return true; }), "");
    EXPECT_EQ(QKXML::TextOfTree(*first, [] { return false; }), QKXML::TextOfTree(*first, {}));
}

TEST_F(Rewriting, WhatTheFirstDocumentLacksTheSecondLacks) {
    const std::string rewritten = Rewritten("<Tabulon/>");
    EXPECT_NE(rewritten.find("<DataDictionary numberOfFields=\"4\"/>"), std::string::npos) << rewritten;
    EXPECT_NE(rewritten.find("<FieldInfos/>"), std::string::npos);
}

}  // namespace

}  // namespace component_test
