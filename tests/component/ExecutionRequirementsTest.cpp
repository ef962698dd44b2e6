// Configuration: which fields a request needs, and the document that tells the host how to prepare them.

#include <gtest/gtest.h>

#include <pugixml.hpp>
#include <string>
#include <vector>

#include "tests/component/HostedComponent.h"

namespace component_test {

namespace {

/// A configured component whose requirements a test reads in a short form.
class Requirements : public HostedComponent {
 protected:
    Requirements() {
        GiveSource(ModelText()
                       .Continuous("x")
                       .Continuous("y")
                       .Categories("grade", "ordinal", {"1", "2", "3"})
                       .Categories("arm", "nominal", {"a", "b"}, "string")
                       .Categories("rank", "ordinal", {"low", "high"}, "string")
                       .Continuous("n")
                       .Continuous("id")
                       .Build());
    }

    unsigned ConfigureWith(const Request& request) {
        Give(request);
        if (component == nullptr && Create() != HX_OK) return HX_FAILED;
        return Configure();
    }

    void GiveWeight() {
        GiveSource(ModelText()
                       .Continuous("x")
                       .Continuous("y")
                       .Categories("grade", "ordinal", {"1", "2", "3"})
                       .Weight("n")
                       .Build());
    }

    pugi::xml_node Operation(const char* id) {
        document_.load_string(HostedComponent::Requirements().c_str());
        return document_.child("Execution").find_child_by_attribute("Operation", "id", id);
    }

    /// The parameters of the first operation, each as "Name: value value".
    std::vector<std::string> MissingValues() {
        std::vector<std::string> lines;
        for (const pugi::xml_node& parameter : Operation("1").child("Parameters").children("Parameter")) {
            std::string line = parameter.attribute("name").value() + std::string(":");
            for (const pugi::xml_node& value : parameter.child("ListValue").children("Value")) {
                line += std::string(" ") + value.attribute("value").value();
            }
            lines.push_back(line + Attributes(parameter.child("StructuredValue")));
        }
        return lines;
    }

    /// The fields of the second operation, each as " FieldName=x Encoding=none".
    std::vector<std::string> Encodings() {
        std::vector<std::string> lines;
        const pugi::xml_node parameter = Operation("2").child("Parameters").child("Parameter");
        EXPECT_STREQ(parameter.attribute("name").value(), "RequiredFields");
        for (const pugi::xml_node& field : parameter.child("ListValue").children("StructuredValue")) {
            lines.push_back(Attributes(field));
        }
        return lines;
    }

 private:
    static std::string Attributes(const pugi::xml_node& structure) {
        std::string line;
        for (const pugi::xml_node& attribute : structure.children("Attribute")) {
            line += std::string(" ") + attribute.attribute("name").value() + "=" + attribute.attribute("value").value();
        }
        return line;
    }

    pugi::xml_document document_;
};

using Lines = std::vector<std::string>;

// ---- Listing the fields ----

TEST_F(Requirements, IndependentVariablesWithoutGroupVariableIs220009) {
    EXPECT_EQ(ConfigureWith(Request().List("independentVariables", {"x"})), HX_CONFIGURATION_FAILED);
    EXPECT_STREQ(host.messages, "3 220009\n");
    EXPECT_EQ(ConfigureWith(Request().List("independentVariables", {"x"}).List("groupVariable", {})), 6u);
    EXPECT_STREQ(host.messages, "3 220009\n3 220009\n");
}

TEST_F(Requirements, NoFieldAtAllIs220010) {
    EXPECT_EQ(ConfigureWith(Request()), HX_CONFIGURATION_FAILED);
    EXPECT_EQ(ConfigureWith(Request().List("groupVariable", {"arm"}).Text("caseIDField", "id")), 6u);
    EXPECT_STREQ(host.messages, "3 220010\n3 220010\n");
}

TEST_F(Requirements, AFieldNotInTheDataModelIs220011) {
    EXPECT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x", "nowhere", "neither"})), 6u);
    EXPECT_STREQ(host.messages, "3 220011\n");
    EXPECT_EQ(ConfigureWith(Request().List("independentVariables", {"x"}).List("groupVariable", {"nowhere"})), 6u);
    EXPECT_STREQ(host.messages, "3 220011\n3 220011\n");
}

TEST_F(Requirements, TheWeightFieldAmongTheRequiredFieldsIs220008) {
    GiveWeight();
    EXPECT_EQ(ConfigureWith(Request().List("relatedVariables", {"x", "n"})), HX_CONFIGURATION_FAILED);
    EXPECT_STREQ(host.messages, "3 220008\n");
}

TEST_F(Requirements, TheHostsAnswerToTheMessageIsTheResult) {
    host.messageAnswer = 42;
    EXPECT_EQ(ConfigureWith(Request()), 42u);
}

TEST_F(Requirements, MessagesOfTheLastConfigurationAreKept) {
    EXPECT_EQ(ConfigureWith(Request()), 6u);
    EXPECT_EQ(
        Messages(),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Messages><Message type=\"error\" code=\"220010\"/></Messages>");
    EXPECT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x"})), HX_OK);
    EXPECT_EQ(Messages(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Messages/>");
}

TEST_F(Requirements, AHostWithoutMessagesGetsThemWhenItAsks) {
    host.context.TakeMessage = nullptr;
    EXPECT_EQ(ConfigureWith(Request()), HX_CONFIGURATION_FAILED);
    EXPECT_NE(Messages().find("220010"), std::string::npos);
}

TEST_F(Requirements, FieldsStandOnceInTheOrderOfTheFamilies) {
    ASSERT_EQ(ConfigureWith(Request()
                                .List("independentVariables", {"y", "x"})
                                .List("groupVariable", {"arm", "grade"})
                                .List("relatedVariables", {"x", "rank"})
                                .List("oneSampleVariables", {"x", "x"})),
              HX_OK);
    EXPECT_EQ(Encodings(), (Lines{" FieldName=x Encoding=none", " FieldName=rank Encoding=ordinal",
                                  " FieldName=y Encoding=none", " FieldName=arm Encoding=nominal"}));
}

// ---- The document ----

TEST_F(Requirements, BothOperationsNameTheirComponent) {
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x"})), HX_OK);
    for (const auto& [id, componentId] : {std::pair("1", "MissingValues"), std::pair("2", "FieldEncoding")}) {
        const pugi::xml_node operation = Operation(id);
        Lines attributes;
        for (const pugi::xml_attribute& attribute : operation.attributes()) {
            attributes.push_back(std::string(attribute.name()) + "=" + attribute.value());
        }
        EXPECT_EQ(attributes, (Lines{std::string("id=") + id, std::string("componentId=") + componentId,
                                     "moduleId=DataPreparation", "inputIds=", "dependencyIds="}));
    }
}

TEST_F(Requirements, WithNothingToDropTheFirstOperationHasNoParameter) {
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x"}).Text("missingTreatment", "analysis")), HX_OK);
    EXPECT_EQ(MissingValues(), Lines{});
    EXPECT_TRUE(Operation("1").child("Parameters"));
}

TEST_F(Requirements, WithACaseIdFieldAndNoWeightListwiseDeleteHasOnlyThatField) {
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x"}).Text("caseIDField", "id")), HX_OK);
    EXPECT_EQ(MissingValues(), (Lines{"ListwiseDelete: id"}));
    EXPECT_EQ(Encodings(), (Lines{" FieldName=x Encoding=none", " FieldName=id Encoding=none"}));
}

TEST_F(Requirements, ListwiseTreatmentDeletesByAllFields) {
    GiveWeight();
    ASSERT_EQ(ConfigureWith(Request()
                                .List("oneSampleVariables", {"x", "y"})
                                .Text("caseIDField", "id")
                                .Text("missingTreatment", "listwise")
                                .Text("userMissing", "exclude")),
              HX_OK);
    EXPECT_EQ(MissingValues(), (Lines{"ExcludeUserMissing: x y id", "WeightField: FieldName=n Adjustment=round",
                                      "ListwiseDelete: x y n id"}));
}

TEST_F(Requirements, AWeightIsRoundedAndDeletesWhatLacksIt) {
    GiveWeight();
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x"}).Text("userMissing", "include")), HX_OK);
    EXPECT_EQ(MissingValues(), (Lines{"WeightField: FieldName=n Adjustment=round", "ListwiseDelete: n"}));
    EXPECT_EQ(Encodings(), (Lines{" FieldName=x Encoding=none", " FieldName=n Encoding=none"}));
}

TEST_F(Requirements, AnOrdinalNumericFieldComesInBothForms) {
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"grade", "rank", "x"})), HX_OK);
    EXPECT_EQ(Encodings(), (Lines{" FieldName=grade Encoding=ordinal", " FieldName=grade Encoding=none Rename=$_grade",
                                  " FieldName=rank Encoding=ordinal", " FieldName=x Encoding=none"}));
}

TEST_F(Requirements, TheGroupFieldComesByItsCategoriesAlone) {
    ASSERT_EQ(ConfigureWith(Request().List("independentVariables", {"x"}).List("groupVariable", {"grade"})), HX_OK);
    EXPECT_EQ(Encodings(), (Lines{" FieldName=x Encoding=none", " FieldName=grade Encoding=ordinal"}));
}

TEST_F(Requirements, ACopyTakesAnotherDollarWhileItsNameIsTaken) {
    GiveSource(
        ModelText().Categories("grade", "ordinal", {"1", "2"}).Continuous("$_grade").Continuous("$$_grade").Build());
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"grade"})), HX_OK);
    EXPECT_EQ(Encodings(),
              (Lines{" FieldName=grade Encoding=ordinal", " FieldName=grade Encoding=none Rename=$$$_grade"}));
}

TEST_F(Requirements, TheFirstFieldsNameCountsAsFree) {
    GiveSource(ModelText().Continuous("$_grade").Categories("grade", "ordinal", {"1", "2"}).Build());
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"grade"})), HX_OK);
    EXPECT_EQ(Encodings(),
              (Lines{" FieldName=grade Encoding=ordinal", " FieldName=grade Encoding=none Rename=$_grade"}));
}

TEST_F(Requirements, ANewConfigurationForgetsTheGroupField) {
    ASSERT_EQ(ConfigureWith(Request().List("independentVariables", {"x"}).List("groupVariable", {"grade"})), HX_OK);
    ASSERT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"grade"})), HX_OK);
    EXPECT_EQ(Encodings().size(), 2u);
}

// ---- Documents that are none ----

TEST_F(Requirements, SettingsThatAreNotWellFormedFailTheConfiguration) {
    ASSERT_EQ(Create(), HX_OK);
    for (const char* settings :
         {"", "<Settings>", "<Settings/><Settings/>", "no document", "<Other/>", "<Settings><Other/></Settings>",
          "<Settings><Setting kind='int' value='1'/></Settings>",
          "<Settings><Setting name='a' kind='number' value='1'/></Settings>",
          "<Settings><Setting name='a' kind='int' value='1.5'/></Settings>",
          "<Settings><Setting name='a' kind='bool' value='yes'/></Settings>",
          "<Settings><Setting name='a' kind='double' value=''/></Settings>",
          "<Settings><Setting name='a' kind='string'/></Settings>",
          "<Settings><Setting name='a' kind='intVector'><Element/></Setting></Settings>",
          "<Settings><Setting name='a' kind='intVector'><Value value='1'/></Setting></Settings>",
          "<Settings><Setting name='a' kind='listVector'><Setting/></Setting></Settings>",
          "<Settings><Setting name='a' kind='list'><List/></Setting></Settings>"}) {
        SCOPED_TRACE(settings);
        Give(settings);
        host.messages[0] = '\0';
        EXPECT_EQ(Configure(), HX_CONFIGURATION_FAILED);
        EXPECT_EQ(errorCode, HX_ERROR_SETTINGS);
        EXPECT_STREQ(host.messages, "3 240002\n");
    }
}

TEST_F(Requirements, AReasonOfTheHostStands) {
    ASSERT_EQ(Create(), HX_OK);
    host.failure = TINY_GET_SETTINGS;
    EXPECT_EQ(Configure(), HX_CONFIGURATION_FAILED);
    EXPECT_EQ(errorCode, TINY_FAILURE_CODE);
    Give(Request().List("oneSampleVariables", {"x"}));
    host.failure = TINY_GET_MODEL;
    EXPECT_EQ(Configure(), HX_CONFIGURATION_FAILED);
    EXPECT_EQ(errorCode, TINY_FAILURE_CODE);
    EXPECT_STREQ(host.messages, "3 7777\n3 7777\n");
}

TEST_F(Requirements, ADataModelThatIsNotWellFormedFailsTheConfiguration) {
    for (const char* model : {"", "<DataModel>", "<Other/>"}) {
        SCOPED_TRACE(model);
        GiveSource(model);
        host.messages[0] = '\0';
        EXPECT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x"})), HX_CONFIGURATION_FAILED);
        EXPECT_EQ(errorCode, HX_ERROR_DATA_MODEL);
        EXPECT_STREQ(host.messages, "3 240003\n");
    }
}

TEST_F(Requirements, ADataModelOfFieldsThatCantBeIs240004) {
    for (const char* fields :
         {"<Field storage='number' level='continuous'/>", "<Field name='' storage='number' level='continuous'/>",
          "<Field name='x' level='continuous'/>", "<Field name='x' storage='number'/>",
          "<Field name='x' storage='text' level='nominal'/>", "<Field name='x' storage='number' level='scale'/>",
          "<Field name='x' storage='string' level='continuous'/>",
          "<Field name='x' storage='number' level='continuous' dateType='year'/>",
          "<Field name='x' storage='number' level='continuous' role='key'/>",
          "<Field name='x' storage='string' level='nominal' role='frequencyWeight'/>",
          "<Field name='x' storage='number' level='nominal'><Category value='a'/></Field>",
          "<Field name='x' storage='number' level='nominal'><Category/></Field>",
          "<Field name='x' storage='string' level='nominal'><Category/></Field>",
          "<Field name='x' storage='number' level='continuous'/><Field name='x' storage='number' level='continuous'/>",
          "<Field name='x' storage='number' level='continuous' role='frequencyWeight'/>"
          "<Field name='y' storage='number' level='continuous' role='frequencyWeight'/>"}) {
        SCOPED_TRACE(fields);
        GiveSource(ModelText().Raw(fields).Build());
        host.messages[0] = '\0';
        EXPECT_EQ(ConfigureWith(Request().List("oneSampleVariables", {"x"})), HX_FAILED);
        EXPECT_EQ(errorCode, 240004);
        EXPECT_STREQ(host.messages, "3 240004\n");
    }
}

}  // namespace

}  // namespace component_test
