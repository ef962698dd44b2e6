#include "vocabulary/TestFacts.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <string>
#include <utility>

#include "tests/harness/Command.h"

namespace {

TEST(TestFacts, HaveEachNameOnce) {
    std::set<std::string_view> results;
    std::set<std::string_view> settings;
    std::set<std::string_view> requests;
    std::set<std::pair<TestFamily, std::string_view>> users;
    std::set<int> groups;
    for (const TestFacts* const test : Tests::kAll) {
        EXPECT_TRUE(results.insert(test->resultName).second) << test->resultName;
        EXPECT_TRUE(requests.insert(test->requestName).second) << test->resultName;
        EXPECT_TRUE(users.insert({test->family, test->userName}).second) << test->resultName;
        EXPECT_TRUE(groups.insert(test->codeGroup).second) << test->resultName;
        for (const std::string_view setting : test->Settings()) {
            EXPECT_TRUE(settings.insert(setting).second) << setting;
            EXPECT_TRUE(setting.starts_with(test->resultName)) << setting;
        }
    }
}

TEST(TestFacts, AreFoundByTheirNames) {
    EXPECT_EQ(Tests::OfResult("RSign"), &Tests::kSign);
    EXPECT_EQ(Tests::OfResult("OKolmogorovSmirnov"), &Tests::kKolmogorovSmirnov);
    EXPECT_EQ(Tests::OfResult("OKolmogorovSmirnovPoisson"), nullptr);
    EXPECT_EQ(Tests::OfSetting("OKolmogorovSmirnovPoisson"), &Tests::kKolmogorovSmirnov);
    EXPECT_EQ(Tests::OfSetting("OKolmogorovSmirnov"), nullptr);
    EXPECT_EQ(Tests::OfSetting("IMedian"), &Tests::kMedian);
    EXPECT_EQ(Tests::OfRequest("IMedian"), nullptr);
    EXPECT_EQ(Tests::OfRequest("IKMedian"), &Tests::kMedian);
    EXPECT_EQ(Tests::OfRequest("IHodgesLehmannEstimateIndependent"), &Tests::kHodgesLehmannGroups);
    EXPECT_EQ(Tests::OfRequest("OKolmogorovSmirnovPoisson"), &Tests::kKolmogorovSmirnov);
    EXPECT_EQ(Tests::OfRequest("OKolmogorovSmirnov"), nullptr);
    EXPECT_EQ(Tests::OfRequest("OEstimateConfidenceInterval"), nullptr) << "asked for within the binomial test";
    for (const auto find : {Tests::OfResult, Tests::OfSetting, Tests::OfRequest}) {
        EXPECT_EQ(find(""), nullptr);
        EXPECT_EQ(find("rsign"), nullptr);
    }
}

TEST(TestFacts, HaveALetterPerFamily) {
    for (const TestFacts* const test : Tests::kAll) {
        EXPECT_EQ(test->resultName.front(), "ORI"[static_cast<int>(test->family)]) << test->resultName;
    }
    EXPECT_STREQ(FamilyNameOf(TestFamily::kOneSample), "One_Sample");
    EXPECT_STREQ(FamilyNameOf(TestFamily::kRelated), "Related_Samples");
    EXPECT_STREQ(FamilyNameOf(TestFamily::kIndependent), "Independent_Samples");
}

TEST(TestFacts, LetTestsAloneDecide) {
    for (const TestFacts* const test : Tests::kAll) {
        EXPECT_EQ(test->deciding == DecidingSignificance::kNone, test->IsEstimate()) << test->resultName;
    }
}

/// The test of a condition's key, "DefaultAllDistinctValuesUsed_I_Moses_2".
const TestFacts* OfCondition(const std::string& key) {
    std::smatch parts;
    if (!std::regex_match(key, parts, std::regex("(?:[A-Za-z]+_)?([ORI])_([A-Za-z]+)_[0-9] ?"))) return nullptr;
    const std::string name = parts[1].str() + parts[2].str();
    for (const TestFacts* const test : Tests::kAll) {
        if (test->resultName.starts_with(name)) return test;
    }
    return nullptr;
}

// The sentences say which parameters are fields and categories; so do the facts.
TEST(TestFacts, HaveTheParametersOfTheirConditions) {
    const auto texts = nlohmann::json::parse(harness::ReadFile(harness::SourcePath("host/messages/en.json")));
    const std::regex placeholder(R"(\{([a-z]+):([0-9])(?::([0-9]))?\})");
    for (const auto& [key, value] : texts.at("condition").items()) {
        const TestFacts* const test = OfCondition(key);
        ASSERT_NE(test, nullptr) << key;
        const ConditionParameters& condition = test->condition;
        const std::set<int> fields{condition.fields, condition.secondField, condition.groupField};
        const std::set<int> classes{condition.firstClass, condition.secondClass};
        const auto text = value.get<std::string>();
        for (std::sregex_iterator it(text.begin(), text.end(), placeholder), end; it != end; ++it) {
            const std::string kind = (*it)[1];
            const int position = std::stoi((*it)[2]);
            const bool isCutPoint = key.starts_with("ACutPoint");
            EXPECT_EQ(kind.starts_with("field"), fields.contains(position)) << key;
            EXPECT_EQ(kind == "fields", kind.starts_with("field") && test->fieldCount == FieldCount::kTwoOrMore) << key;
            EXPECT_TRUE(isCutPoint || (kind == "category") == classes.contains(position)) << key;
            EXPECT_TRUE(kind != "category" || (*it)[3] == std::to_string(condition.fields)) << key;
        }
    }
}

}  // namespace
