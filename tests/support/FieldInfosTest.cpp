// The field information of a document, element by element.

#include "support/FieldInfos.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tests/harness/CollectorRig.h"

namespace {

using harness::Fields;
using harness::kNoCategory;
using harness::kNone;

constexpr int kNoField = -1;

std::string FieldInfosOf(const CollectorRig& rig, Fields& fields, int weightIndex = kNoField,
                         int caseIdIndex = kNoField) {
    std::ostringstream out;
    const auto element =
        MakeFieldInfos(fields.List(), UnivariateResults(*rig.collector), weightIndex, caseIdIndex, WorkShare(2));
    QKXML::WriteTree(out, nullptr, element.get(), 0);
    return out.str();
}

/// The "varIndex" of each "FieldInfo", in order.
std::vector<std::string> IndicesIn(const std::string& infos) {
    pugi::xml_document document;
    EXPECT_TRUE(document.load_string(infos.c_str()));
    std::vector<std::string> indices;
    for (const pugi::xml_node& info : document.child("FieldInfos").children("FieldInfo")) {
        indices.emplace_back(info.attribute("varIndex").value());
    }
    return indices;
}

TEST(FieldInfos, ContinuousFieldShowsItsMomentsRangeAndNonEmptyIntervals) {
    Fields fields;
    fields.Continuous("x");
    CollectorRig rig(fields, {{-2}, {0}, {kNone}, {6}, {0}, {6}});
    rig.Request(0, Statistic::kHistogram);
    rig.Request(0, Statistic::kMean);
    EXPECT_TRUE(rig.Compute().IsOK());
    // Mean 10 / 5; squares 76 - 100 / 5 = 56, over 4, under the root 3.7416573867739413855 (mpmath). The zeros come
    // last.
    EXPECT_EQ(FieldInfosOf(rig, fields),
              R"(<FieldInfos><FieldInfo varIndex="0"><StructuredTable name="ContinuousDistribution">)"
              R"(<Attribute name="TotalN" value="5"/><Attribute name="Min" value="-2"/>)"
              R"(<Attribute name="Max" value="6"/><Attribute name="Mean" value="2"/>)"
              R"(<Attribute name="StdDev" value="3.74165738677394"/>)"
              R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/>)"
              R"(<Row>1;2;2</Row><Row>-2;6;0</Row></SimpleTable></StructuredTable></FieldInfo></FieldInfos>)");
}

TEST(FieldInfos, CategoricalFieldShowsTheFrequenciesOfAllItsCategories) {
    Fields fields;
    fields.Text("g", {"b", "a", "never"});
    CollectorRig rig(fields, {{1}, {0}, {1}, {kNoCategory}});
    rig.Request(0, Statistic::kFrequencies);
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_EQ(FieldInfosOf(rig, fields),
              R"(<FieldInfos><FieldInfo varIndex="0"><StructuredTable name="CategoricalDistribution">)"
              R"(<Attribute name="TotalN" value="3"/>)"
              R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/>)"
              R"(<Row>1;2;0</Row><Row>0;1;2</Row></SimpleTable></StructuredTable></FieldInfo></FieldInfos>)");
}

TEST(FieldInfos, WithoutIntervalsThereIsNoIntervalTable) {
    Fields fields;
    fields.Continuous("all missing").Continuous("no histogram").Text("no category", {});
    CollectorRig rig(fields, {{kNone, 3, kNoCategory}});
    rig.Request(0, Statistic::kHistogram);
    rig.Request(1, Statistic::kMin);
    rig.Request(2, Statistic::kAll);
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_EQ(FieldInfosOf(rig, fields),
              R"(<FieldInfos><FieldInfo varIndex="0"><StructuredTable name="ContinuousDistribution">)"
              R"(<Attribute name="TotalN" value="0"/><Attribute name="Min" value="-1.79769313486232e+308"/>)"
              R"(<Attribute name="Max" value="-1.79769313486232e+308"/><Attribute name="Mean" value="0"/>)"
              R"(<Attribute name="StdDev" value="0"/></StructuredTable></FieldInfo>)"
              R"(<FieldInfo varIndex="1"><StructuredTable name="ContinuousDistribution">)"
              R"(<Attribute name="TotalN" value="1"/><Attribute name="Min" value="3"/>)"
              R"(<Attribute name="Max" value="-1.79769313486232e+308"/><Attribute name="Mean" value="0"/>)"
              R"(<Attribute name="StdDev" value="0"/></StructuredTable></FieldInfo>)"
              R"(<FieldInfo varIndex="2"><StructuredTable name="CategoricalDistribution">)"
              R"(<Attribute name="TotalN" value="0"/></StructuredTable></FieldInfo></FieldInfos>)");
}

TEST(FieldInfos, WeightFieldCaseIdFieldOtherKindsAndUnrequestedFieldsAreLeftOut) {
    Fields fields;
    fields.Continuous("a").Continuous("w").Other("o").Numeric("g", {1}).Continuous("unrequested").Text("id", {"x"});
    CollectorRig rig(fields, {{1, 1, 1, 0, 1, 0}});
    for (const int field : {5, 3, 2, 1, 0}) rig.Request(field, Statistic::kMin);
    EXPECT_TRUE(rig.Compute().IsOK());
    EXPECT_EQ(IndicesIn(FieldInfosOf(rig, fields)), (std::vector<std::string>{"0", "1", "3", "5"}));
    EXPECT_EQ(IndicesIn(FieldInfosOf(rig, fields, 1)), (std::vector<std::string>{"0", "3", "5"}));
    EXPECT_EQ(IndicesIn(FieldInfosOf(rig, fields, kNoField, 5)), (std::vector<std::string>{"0", "1", "3"}));
    EXPECT_EQ(IndicesIn(FieldInfosOf(rig, fields, 1, 5)), (std::vector<std::string>{"0", "3"}));
    EXPECT_EQ(IndicesIn(FieldInfosOf(rig, fields, 0, 0)), (std::vector<std::string>{"1", "3", "5"}));
}

TEST(FieldInfos, WithoutRequestsTheElementIsEmpty) {
    Fields fields;
    fields.Continuous("a");
    const CollectorRig rig(fields, {{1}});
    EXPECT_EQ(FieldInfosOf(rig, fields), "<FieldInfos/>");
}

}  // namespace
