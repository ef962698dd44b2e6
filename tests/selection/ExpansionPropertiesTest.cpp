// What holds for every request, whatever stands in it and in which order.

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "catalogue/TARNTestCatalog.h"
#include "tests/selection/Selection.h"

namespace selection {

namespace {

harness::Fields SomeFields() {
    harness::Fields fields;
    fields.Continuous("x").Continuous("y").Numeric("n", {0, 1}).Numeric("o", {0, 1}, true).Continuous("$_o");
    fields.Text("s", {"a", "b", "c"}).Numeric("one", {1}).Text("none", {}).Other("other");
    return fields;
}

rc::Gen<Item> FieldList() {
    const auto names = rc::gen::container<Names>(
        rc::gen::element<std::string>("x", "y", "n", "o", "$_o", "s", "one", "none", "other", "nowhere", ""));
    const auto key = rc::gen::element<std::string>("oneSampleVariables", "relatedVariables", "independentVariables",
                                                   "groupVariable");
    return rc::gen::map(rc::gen::pair(key, names), [](const std::pair<std::string, Names>& list) {
        return Item{list.first, list.second};
    });
}

rc::Gen<Item> FamilyKey() {
    const auto key = rc::gen::element<std::string>("isAutomaticallyOneSample", "isAutomaticallyRelated",
                                                   "isAutomaticallyIndependent");
    return rc::gen::map(rc::gen::pair(key, rc::gen::arbitrary<bool>()), [](const std::pair<std::string, bool>& family) {
        return Item{family.first, family.second};
    });
}

rc::Gen<Item> TestEntry() {
    Names tests{"IHodgesLehmannEstimateIndependent", "IKMedian", "done"};
    for (const TARNTestRow& row : TestCatalog()) tests.emplace_back(row.settingName);
    return rc::gen::map(rc::gen::elementOf(tests), [](const std::string& test) { return Selected(test); });
}

rc::Gen<std::vector<Item>> Request() {
    return rc::gen::container<std::vector<Item>>(
        rc::gen::weightedOneOf<Item>({{3, FieldList()}, {2, FamilyKey()}, {6, TestEntry()}}));
}

RC_GTEST_PROP(ExpansionProperties, EntriesAreNumberedAndKnownToThePlan, ()) {
    harness::Fields fields = SomeFields();
    const Expanded result = Expand(Tree(*Request()), fields, {{"o", "$_o"}});
    int index = 0;
    for (const std::string& entry : result.entries) {
        const std::string number = "testIndex " + std::to_string(index++);
        const std::size_t at = entry.find(number);
        RC_ASSERT(at != std::string::npos);
        RC_ASSERT(at + number.size() == entry.size() || entry[at + number.size()] == ',');
        RC_ASSERT(FindTest(entry.substr(0, entry.find(':'))) != nullptr);
    }
    RC_ASSERT(result.status.IsError() == result.entries.empty());
}

}  // namespace

}  // namespace selection
