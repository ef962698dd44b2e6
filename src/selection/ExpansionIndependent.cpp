// The independent family of the settings expansion: each field beside the one grouping field.

#include <algorithm>
#include <iterator>

#include "selection/TARNAutoSelect.h"
#include "selection/TARNSettingsExpansion.h"
#include "vocabulary/EntryKeys.h"
#include "vocabulary/RequestKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr long kGroupFieldUnusable = 220024_warning;
constexpr long kCategoricalFieldsLeftOut = 220025_warning;

void CopyMedianKeys(const RequestedTest& test, QKSettings& entry) {
    test.CopyFlag(EntryKey::kUserSpecifyMedian, entry);
    test.CopyNumber(EntryKey::kMedian, entry);
    test.CopyFlag(EntryKey::kUserSpecifyGroupRange, entry);
}

void CopyMosesKeys(const RequestedTest& test, QKSettings& entry) {
    test.CopyFlag(EntryKey::kUserSpecifyNumberOfOutliers, entry);
    test.CopyNumber(EntryKey::kNumberOfOutliers, entry);
    test.CopyFlag(SettingKey::kUserSpecifyGroupList, entry);
}

void CopyMannWhitneyKeys(const RequestedTest& test, QKSettings& entry) {
    test.CopyFlag(SettingKey::kUserSpecifyGroupList, entry);
}

void CopyJonckheereKeys(const RequestedTest& test, QKSettings& entry) {
    test.CopyText(EntryKey::kOrderOfHypotheses, entry);
}

/// The tests whose entries have keys of their own.
struct OwnKeys {
    const TestFacts* test;
    void (*copy)(const RequestedTest& test, QKSettings& entry);
};
constexpr OwnKeys kOwnKeys[] = {
    {&Tests::kMannWhitney, CopyMannWhitneyKeys},
    {&Tests::kMoses, CopyMosesKeys},
    {&Tests::kJonckheereTerpstra, CopyJonckheereKeys},
    {&Tests::kMedian, CopyMedianKeys},
};

void CopyKeys(const TestFacts& facts, const RequestedTest& test, QKSettings& entry) {
    if (facts.comparesSamples) test.CopyText(SettingKey::kTypeOfMultipleComparison, entry);
    for (const OwnKeys& own : kOwnKeys) {
        if (own.test == &facts) own.copy(test, entry);
    }
}

/// Null for a name that is none of the family's tests.
const TestFacts* FindIndependentTest(const std::string& nameInRequest) {
    const TestFacts* const test = Tests::OfRequest(nameInRequest);
    return test != nullptr && test->family == TestFamily::kIndependent ? test : nullptr;
}

std::size_t TestsOfTheFamily() {
    return static_cast<std::size_t>(std::count_if(
        std::begin(Tests::kAll), std::end(Tests::kAll),
        [](const TestFacts* test) { return test->family == TestFamily::kIndependent && !test->requestName.empty(); }));
}

}  // namespace

// ---- Walk ----

void TARNSettingsExpansion::ExpandIndependent(std::size_t& position) {
    if (independentFields.empty() || groupVariable.empty()) return;
    if (SelectsAutomatically(RequestKey::kIsAutomaticallyIndependent, isAutomaticallyIndependent,
                             FamilyName::kIndependentSamples, independentFields, groupVariable)) {
        return;
    }
    independentTests.clear();
    const bool endedByAnotherKey = WalkTests(position, [this](const std::string& name) {
        const TestFacts* const test = FindIndependentTest(name);
        if (test != nullptr) independentTests.push_back(test);
        return test != nullptr;
    });
    if (!endedByAnotherKey) {
        // The request ended with the tests of this family. They count only if they are as many as the family has;
        // fewer, or more by a repeated name, are lost without a word. Hosts rely on it, so it stays.
        if (independentTests.size() != TestsOfTheFamily()) return;
        --position;
    }
    ResolveIndependent();
    WarnOfIndependent();
}

// ---- Fields ----

void TARNSettingsExpansion::ResolveIndependent() {
    if (independentTests.empty()) return;
    if (FieldKind::IsCategorical(KindOf(groupVariable))) groupVariableUsable = true;
    if (!groupVariableUsable) return;
    SplitIndependentByEncoding();
    if (!independentCategorical.empty()) independentHasCategorical = true;
    for (const TestFacts* const test : independentTests) ExpandIndependentTest(*test);
}

/// Splits the fields once more, an ordinal field with an encoded copy now among the continuous ones by its name.
void TARNSettingsExpansion::SplitIndependentByEncoding() {
    independentContinuous.clear();
    independentCategorical.clear();
    for (const std::string& field : independentFields) {
        const int kind = KindOf(field);
        const bool ordinalNumbers = kind == FieldKind::kNumericCategories && IsOrdinal(field);
        const std::string* encodedName = ordinalNumbers ? FindEncodedName(field) : nullptr;
        if (kind == FieldKind::kContinuous) {
            independentContinuous.push_back(field);
        } else if (encodedName != nullptr) {
            independentContinuous.push_back(*encodedName);
        } else if (FieldKind::IsCategorical(kind)) {
            independentCategorical.push_back(field);
        }
    }
}

// ---- Tests ----

void TARNSettingsExpansion::ExpandIndependentTest(const TestFacts& facts) {
    const RequestedTest test(*modelSettings, std::string(facts.requestName));
    if (!test.IsSelected()) return;
    const std::string setting(facts.Setting());
    for (const std::string& field : independentContinuous) {
        QKSettings entry;
        entry.AddSetting(EntryKey::kAlgorithmName, setting);
        entry.AddSetting(SettingKey::kVariableName, field);
        entry.AddSetting(EntryKey::kGroupVariableName, groupVariable);
        entry.AddSetting(EntryKey::kTestIndex, NextTestIndex());
        if (const std::string* origin = FindOrigin(field)) entry.AddSetting(SettingKey::kOriginVariableName, *origin);
        CopyKeys(facts, test, entry);
        executionSettings->AddSetting(setting, entry);
    }
}

// ---- Warnings ----

void TARNSettingsExpansion::WarnOfIndependent() {
    // Also where no test is named at all: the grouping field has then not been looked at and counts as unusable.
    if (!groupVariableUsable) Warn(kGroupFieldUnusable, {groupVariable});
    if (independentHasCategorical) WarnOf(kCategoricalFieldsLeftOut, independentCategorical);
}
