// The related family of the settings expansion: one entry of a test takes several fields at once.

#include <algorithm>

#include "selection/TARNAutoSelect.h"
#include "selection/TARNSettingsExpansion.h"
#include "support/QKVecValue.h"
#include "vocabulary/EntryKeys.h"
#include "vocabulary/RequestKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr long kContinuousNotUsed = 220014_warning;
constexpr long kOrdinalNotUsed = 220015_warning;
constexpr long kNominalNotUsed = 220016_warning;
constexpr long kContinuousMismatch = 220017_warning;
constexpr long kOrdinalMismatch = 220018_warning;
constexpr long kNominalMismatch = 220019_warning;
constexpr long kTestsWithoutFields = 220020_warning;

constexpr std::size_t kPairSize = 2;

bool Fits(const TestFacts& test, const std::vector<std::string>& fields) {
    return test.fieldCount == FieldCount::kPair ? fields.size() == kPairSize : fields.size() >= kPairSize;
}

/// Null for a name that is none of the family's tests.
const TestFacts* FindRelatedTest(const std::string& name) {
    const TestFacts* const test = Tests::OfRequest(name);
    return test != nullptr && test->family == TestFamily::kRelated ? test : nullptr;
}

/// The key of the categories that are successes.
const char* CategoriesKeyOf(const TestFacts& test) {
    return &test == &Tests::kMcNemar ? EntryKey::kCategoriesList : SettingKey::kSuccessCategoryList;
}

}  // namespace

// ---- Fields ----

void TARNSettingsExpansion::SplitRelatedFields() {
    relatedContinuous.clear();
    relatedOrdinal.clear();
    relatedNominal.clear();
    for (const std::string& field : relatedFields) {
        const int kind = KindOf(field);
        if (kind == FieldKind::kContinuous) relatedContinuous.push_back(field);
        if (FieldKind::IsCategorical(kind)) (IsOrdinal(field) ? relatedOrdinal : relatedNominal).push_back(field);
    }
}

/// The encoded names stand in front, whatever the order in the request. An ordinal field without one takes no part.
std::vector<std::string> TARNSettingsExpansion::ContinuousGroup() const {
    std::vector<std::string> fields;
    for (const std::string& field : relatedOrdinal) {
        if (const std::string* encodedName = FindEncodedName(field)) fields.push_back(*encodedName);
    }
    fields.insert(fields.end(), relatedContinuous.begin(), relatedContinuous.end());
    return fields;
}

// ---- Walk ----

void TARNSettingsExpansion::ExpandRelated(std::size_t& position) {
    if (relatedFields.empty()) return;
    if (SelectsAutomatically(RequestKey::kIsAutomaticallyRelated, isAutomaticallyRelated, FamilyName::kRelatedSamples,
                             relatedFields, "")) {
        return;
    }
    // As in the one-sample family, a request that ends with the tests gets no warning.
    if (WalkTests(position, [this](const std::string& name) { return ExpandRelatedTest(name); })) WarnOfRelated();
}

/// False for a name that is none of the family's tests.
bool TARNSettingsExpansion::ExpandRelatedTest(const std::string& name) {
    const TestFacts* const facts = FindRelatedTest(name);
    if (facts == nullptr) return false;
    const RequestedTest test(*modelSettings, name);
    if (!test.IsSelected()) return true;

    // Every test asks for the ordinal fields, in one form or the other.
    ordinalUsed = true;
    switch (facts->takes) {
        case FieldsTaken::kNumbers:
            // The continuous fields behind the encoded ordinal ones.
            continuousUsed = true;
            ExpandOver(ContinuousGroup(), *facts, test, relatedContinuousMismatch);
            break;
        case FieldsTaken::kCategories:
        case FieldsTaken::kNumbersOrCategories:
            nominalUsed = true;
            ExpandCategoricalGroup(*facts, test);
            break;
        case FieldsTaken::kOrderedCategories:
            ExpandOver(relatedOrdinal, *facts, test, relatedOrdinalMismatch);
            break;
    }
    return true;
}

// ---- Tests ----

/// One entry over all the fields.
void TARNSettingsExpansion::ExpandOver(const std::vector<std::string>& fields, const TestFacts& facts,
                                       const RequestedTest& test, std::vector<std::string>& mismatch) {
    if (fields.empty()) {
        relatedTestsWithoutFields.push_back(test.NameInWarnings());
        return;
    }
    if (!Fits(facts, fields)) {
        mismatch.push_back(test.NameInWarnings());
        return;
    }
    QKSettings entry = BeginEntry(test.Name(), fields);
    std::vector<std::string> origins;
    for (const std::string& field : fields) {
        if (const std::string* origin = FindOrigin(field)) origins.push_back(*origin);
    }
    if (!origins.empty()) AddVecSetting(entry, SettingKey::kOriginVariableName, origins, false);
    if (facts.comparesSamples) test.CopyText(SettingKey::kTypeOfMultipleComparison, entry);
    executionSettings->AddSetting(test.Name(), entry);
}

/// Runs a test up to twice: over the ordinal fields and over the nominal ones.
void TARNSettingsExpansion::ExpandCategoricalGroup(const TestFacts& facts, const RequestedTest& test) {
    if (relatedOrdinal.empty() && relatedNominal.empty()) {
        relatedTestsWithoutFields.push_back(test.NameInWarnings());
        return;
    }
    ExpandOverCategories(relatedOrdinal, facts, test, relatedOrdinalMismatch);
    ExpandOverCategories(relatedNominal, facts, test, relatedNominalMismatch);
}

void TARNSettingsExpansion::ExpandOverCategories(const std::vector<std::string>& fields, const TestFacts& facts,
                                                 const RequestedTest& test, std::vector<std::string>& mismatch) {
    if (fields.empty()) return;
    if (!Fits(facts, fields)) {
        mismatch.push_back(test.NameInWarnings());
        return;
    }
    QKSettings entry = BeginEntry(test.Name(), fields);
    test.CopyText(SettingKey::kClassFormation, entry);
    test.CopyTexts(CategoriesKeyOf(facts), entry);
    if (facts.comparesSamples) test.CopyText(SettingKey::kTypeOfMultipleComparison, entry);
    executionSettings->AddSetting(test.Name(), entry);
}

// ---- Warnings ----

void TARNSettingsExpansion::WarnOfRelated() {
    if (!relatedTestsWithoutFields.empty()) {
        WarnOf(kTestsWithoutFields, relatedTestsWithoutFields);
    } else {
        if (!continuousUsed) WarnOf(kContinuousNotUsed, relatedContinuous);
        if (!ordinalUsed) WarnOf(kOrdinalNotUsed, relatedOrdinal);
        if (!nominalUsed) WarnOf(kNominalNotUsed, relatedNominal);
    }
    WarnOf(kContinuousMismatch, relatedContinuousMismatch);
    WarnOf(kOrdinalMismatch, relatedOrdinalMismatch);
    WarnOf(kNominalMismatch, relatedNominalMismatch);
}
