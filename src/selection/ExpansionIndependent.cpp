// The independent family of the settings expansion: each field beside the one grouping field.

#include <algorithm>
#include <iterator>

#include "selection/TARNAutoSelect.h"
#include "selection/TARNSettingsExpansion.h"
#include "vocabulary/EntryVocabulary.h"
#include "vocabulary/RequestKeys.h"
#include "vocabulary/SettingKeys.h"

namespace {

constexpr long kGroupFieldUnusable = 220024;
constexpr long kCategoricalFieldsLeftOut = 220025;

void CopyNothing(const RequestedTest&, QKSettings&) {}

void CopyMultipleComparison(const RequestedTest& test, QKSettings& entry) {
    test.CopyText(SettingKey::kTypeOfMultipleComparison, entry);
}

void CopyMedianKeys(const RequestedTest& test, QKSettings& entry) {
    test.CopyText(SettingKey::kTypeOfMultipleComparison, entry);
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
    test.CopyText(SettingKey::kTypeOfMultipleComparison, entry);
    test.CopyText(EntryKey::kOrderOfHypotheses, entry);
}

struct IndependentTest {
    const char* nameInRequest;
    const char* planName;
    void (*copyKeys)(const RequestedTest& test, QKSettings& entry);
};

constexpr IndependentTest kTests[] = {
    {TestName::kWaldWolfowitz, TestName::kWaldWolfowitz, CopyNothing},
    {TestName::kHodgesLehmannInRequest, TestName::kHodgesLehmannGroups, CopyNothing},
    {TestName::kMedianInRequest, TestName::kMedian, CopyMedianKeys},
    {TestName::kMoses, TestName::kMoses, CopyMosesKeys},
    {TestName::kMannWhitney, TestName::kMannWhitney, CopyMannWhitneyKeys},
    {TestName::kKolmogorovSmirnovTwoSample, TestName::kKolmogorovSmirnovTwoSample, CopyNothing},
    {TestName::kKruskalWallis, TestName::kKruskalWallis, CopyMultipleComparison},
    {TestName::kJonckheereTerpstra, TestName::kJonckheereTerpstra, CopyJonckheereKeys},
};

const IndependentTest* FindIndependentTest(const std::string& nameInRequest) {
    const auto* found = std::find_if(std::begin(kTests), std::end(kTests),
                                     [&](const IndependentTest& test) { return test.nameInRequest == nameInRequest; });
    return found == std::end(kTests) ? nullptr : found;
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
        if (FindIndependentTest(name) == nullptr) return false;
        independentTests.push_back(name);
        return true;
    });
    if (!endedByAnotherKey) {
        // The request ended with the tests of this family. They count only if they are as many as the family has;
        // fewer, or more by a repeated name, are lost without a word. Hosts rely on it, so it stays.
        if (independentTests.size() != std::size(kTests)) return;
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
    for (const std::string& name : independentTests) ExpandIndependentTest(name);
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

void TARNSettingsExpansion::ExpandIndependentTest(const std::string& name) {
    const RequestedTest test(*modelSettings, name);
    if (!test.IsSelected()) return;
    const IndependentTest& row = *FindIndependentTest(name);
    for (const std::string& field : independentContinuous) {
        QKSettings entry;
        entry.AddSetting(EntryKey::kAlgorithmName, row.planName);
        entry.AddSetting(SettingKey::kVariableName, field);
        entry.AddSetting(EntryKey::kGroupVariableName, groupVariable);
        entry.AddSetting(EntryKey::kTestIndex, NextTestIndex());
        if (const std::string* origin = FindOrigin(field)) entry.AddSetting(SettingKey::kOriginVariableName, *origin);
        row.copyKeys(test, entry);
        executionSettings->AddSetting(row.planName, entry);
    }
}

// ---- Warnings ----

void TARNSettingsExpansion::WarnOfIndependent() {
    // Also where no test is named at all: the grouping field has then not been looked at and counts as unusable.
    if (!groupVariableUsable) Warn(kGroupFieldUnusable, {groupVariable});
    if (independentHasCategorical) WarnOf(kCategoricalFieldsLeftOut, independentCategorical);
}
