// The one-sample family of the settings expansion: each field by itself.

#include <algorithm>
#include <span>
#include <string_view>

#include "selection/TARNAutoSelect.h"
#include "selection/TARNSettingsExpansion.h"
#include "vocabulary/EntryKeys.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/RequestKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr long kContinuousInChiSquare = 220021_warning;
constexpr long kTestsWithoutFields = 220022_warning;
constexpr long kFieldsRejected = 220023_warning;

constexpr double kDefaultTestProbability = 0.5;
/// The four tests of this kind have one name in warnings.
constexpr const char* kKolmogorovSmirnovInWarnings = "KolmogorovSmirnov";

struct Distribution {
    std::string_view test;
    const char* name;
    std::span<const char* const> parameters;
};

constexpr const char* kNormalParameters[] = {OneSampleKey::kMean, OneSampleKey::kStdDev};
constexpr const char* kUniformParameters[] = {OneSampleKey::kMax, OneSampleKey::kMin};
constexpr const char* kMeanAlone[] = {OneSampleKey::kMean};

constexpr Distribution kDistributions[] = {
    {KolmogorovSmirnovSetting::kNormal, DistributionName::kNormal, kNormalParameters},
    {KolmogorovSmirnovSetting::kUniform, DistributionName::kUniform, kUniformParameters},
    {KolmogorovSmirnovSetting::kPoisson, DistributionName::kPoisson, kMeanAlone},
    {KolmogorovSmirnovSetting::kExponential, DistributionName::kExponential, kMeanAlone},
};

const Distribution& DistributionOf(const std::string& test) {
    return *std::find_if(std::begin(kDistributions), std::end(kDistributions),
                         [&](const Distribution& distribution) { return distribution.test == test; });
}

/// How a categorical field is divided into two classes.
void CopyClassesOfCategories(const RequestedTest& test, QKSettings& entry) {
    test.CopyText(OneSampleKey::kCategoricalFormation, entry);
    test.CopyTexts(OneSampleKey::kGivenCategoryList, entry);
}

}  // namespace

/// A field as a test of continuous fields takes it: by its own name, or by that of its encoded copy.
struct TARNSettingsExpansion::OneSampleField {
    std::string name;
    const std::string* origin = nullptr;  // the field, where the name is its copy's

    void AddOrigin(QKSettings& entry) const {
        if (origin != nullptr) entry.AddSetting(SettingKey::kOriginVariableName, *origin);
    }
};

// ---- Walk ----

void TARNSettingsExpansion::ExpandOneSample(std::size_t& position) {
    if (oneSampleFields.empty()) return;
    if (SelectsAutomatically(RequestKey::kIsAutomaticallyOneSample, isAutomaticallyOneSample, FamilyName::kOneSample,
                             oneSampleFields, "")) {
        return;
    }
    // There are warnings only where another key follows the last test: a request that ends with the tests gets none.
    // The independent family differs.
    if (WalkTests(position, [this](const std::string& name) { return ExpandOneSampleTest(name); })) WarnOfOneSample();
}

/// False for a name that is none of the family's tests.
bool TARNSettingsExpansion::ExpandOneSampleTest(const std::string& name) {
    struct Handler {
        const TestFacts* facts;
        void (TARNSettingsExpansion::*expand)(const RequestedTest&);
    };
    // All others take numbers.
    static constexpr Handler kHandlers[] = {
        {&Tests::kBinomial, &TARNSettingsExpansion::ExpandBinomial},
        {&Tests::kChiSquare, &TARNSettingsExpansion::ExpandChiSquare},
        {&Tests::kRuns, &TARNSettingsExpansion::ExpandRuns},
        {&Tests::kKolmogorovSmirnov, &TARNSettingsExpansion::ExpandKolmogorovSmirnov},
    };
    const TestFacts* const facts = Tests::OfRequest(name);
    if (facts == nullptr || facts->family != TestFamily::kOneSample) return false;
    const RequestedTest test(*modelSettings, name);
    if (!test.IsSelected()) return true;
    const auto* handler = std::find_if(std::begin(kHandlers), std::end(kHandlers),
                                       [&](const Handler& candidate) { return candidate.facts == facts; });
    (this->*(handler == std::end(kHandlers) ? &TARNSettingsExpansion::ExpandNumbers : handler->expand))(test);
    return true;
}

// ---- Tests of classes ----

void TARNSettingsExpansion::ExpandBinomial(const RequestedTest& test) {
    for (const std::string& field : oneSampleFields) {
        const int kind = KindOf(field);
        if (kind == kUnknownField) continue;
        const bool categorical = FieldKind::IsCategorical(kind);
        QKSettings entry = BeginEntry(test.Name(), field);
        test.CopyNumber(OneSampleKey::kTestProbability, entry, kDefaultTestProbability);
        if (categorical) {
            CopyClassesOfCategories(test, entry);
        } else {
            test.CopyText(OneSampleKey::kContinuousFormation, entry);
            test.CopyNumberIfHeld(OneSampleKey::kGivenCutPoint, entry);
        }
        executionSettings->AddSetting(test.Name(), entry);
        AddConfidenceInterval(test, field, categorical);
    }
}

/// The intervals have no entry of their own in a request: they are asked for within the binomial test's, by method.
void TARNSettingsExpansion::AddConfidenceInterval(const RequestedTest& test, const std::string& field,
                                                  bool categorical) {
    constexpr const char* kMethods[] = {OneSampleKey::kIsDoClopperPearson, OneSampleKey::kIsDoJeffreys,
                                        OneSampleKey::kIsDoProfileLikelihood};
    if (std::none_of(std::begin(kMethods), std::end(kMethods), [&](const char* key) { return test.Flag(key); })) return;

    const std::string setting(Tests::kProportionIntervals.Setting());
    QKSettings entry;
    entry.AddSetting(EntryKey::kAlgorithmName, setting);
    entry.AddSetting(SettingKey::kVariableName, field);
    for (const char* method : kMethods) test.CopyFlag(method, entry);
    entry.AddSetting(EntryKey::kTestIndex, NextTestIndex());
    if (categorical) {
        CopyClassesOfCategories(test, entry);
    } else {
        test.CopyText(OneSampleKey::kContinuousFormation, entry);
        // Unlike the binomial test's own entry, this one has a cut point even where the request has none.
        test.CopyNumber(OneSampleKey::kGivenCutPoint, entry);
    }
    executionSettings->AddSetting(setting, entry);
}

void TARNSettingsExpansion::ExpandChiSquare(const RequestedTest& test) {
    if (!oneSampleContinuous.empty()) chiSquareSawContinuous = true;
    for (const std::string& field : oneSampleCategorical) {
        QKSettings entry = BeginEntry(test.Name(), field);
        test.CopyText(SettingKey::kClassFormation, entry);
        test.CopyLists(OneSampleKey::kCustom, entry);
        executionSettings->AddSetting(test.Name(), entry);
    }
}

void TARNSettingsExpansion::ExpandRuns(const RequestedTest& test) {
    for (const std::string& field : oneSampleFields) {
        const int kind = KindOf(field);
        if (kind == kUnknownField) continue;
        QKSettings entry = BeginEntry(test.Name(), field);
        if (FieldKind::IsCategorical(kind)) {
            CopyClassesOfCategories(test, entry);
        } else if (test.CopyTextIfHeld(OneSampleKey::kContinuousFormation, entry)) {
            test.CopyNumberIfHeld(OneSampleKey::kCutPointValue, entry);
        }
        executionSettings->AddSetting(test.Name(), entry);
    }
}

// ---- Tests of continuous fields ----

void TARNSettingsExpansion::ExpandKolmogorovSmirnov(const RequestedTest& test) {
    const Distribution& distribution = DistributionOf(test.Name());
    bool anyEntry = false;
    for (const std::string& field : oneSampleFields) {
        const std::optional<OneSampleField> taken = AsContinuous(field);
        if (!taken) {
            RejectField(field);
            // Only a field with numeric categories names the test, and nothing keeps the name from being repeated
            // with each such field and each of the four tests. Messages depend on both.
            if (KindOf(field) == FieldKind::kNumericCategories) rejectingTests.push_back(kKolmogorovSmirnovInWarnings);
            continue;
        }
        anyEntry = true;
        QKSettings entry;
        entry.AddSetting(SettingKey::kVariableName, taken->name);
        entry.AddSetting(EntryKey::kTestIndex, NextTestIndex());
        taken->AddOrigin(entry);
        test.CopyFlag(OneSampleKey::kIsUseSample, entry);
        for (const char* parameter : distribution.parameters) test.CopyNumber(parameter, entry);
        entry.AddSetting(EntryKey::kAlgorithmName, test.Name());
        entry.AddSetting(OneSampleKey::kDistributionFunction, distribution.name);
        executionSettings->AddSetting(test.Name(), entry);
    }
    // Repeated in the same way by each of the four tests.
    if (!anyEntry) oneSampleTestsWithoutFields.push_back(kKolmogorovSmirnovInWarnings);
}

void TARNSettingsExpansion::ExpandNumbers(const RequestedTest& test) {
    bool anyEntry = false;
    for (const std::string& field : oneSampleFields) {
        const std::optional<OneSampleField> taken = AsContinuous(field);
        if (!taken) {
            RejectField(field);
            // Unlike the test above, such a one is named for every field that it rejects, whatever its kind.
            rejectingTests.push_back(test.NameInWarnings());
            continue;
        }
        anyEntry = true;
        QKSettings entry = BeginEntry(test.Name(), taken->name);
        taken->AddOrigin(entry);
        if (test.Name() == Tests::kWilcoxonOneSample.requestName) {
            test.CopyFlag(OneSampleKey::kUserSpecifyTestValue, entry);
            test.CopyNumber(OneSampleKey::kTestValue, entry);
        }
        executionSettings->AddSetting(test.Name(), entry);
    }
    if (!anyEntry) oneSampleTestsWithoutFields.push_back(test.NameInWarnings());
}

/// Nothing for a field that can't be taken as continuous, an unknown one among them.
std::optional<TARNSettingsExpansion::OneSampleField> TARNSettingsExpansion::AsContinuous(
    const std::string& field) const {
    const int kind = KindOf(field);
    if (kind == FieldKind::kContinuous) return OneSampleField{field};
    const std::string* encodedName = FindEncodedName(field);
    if (kind != FieldKind::kNumericCategories || !IsOrdinal(field) || encodedName == nullptr) return std::nullopt;
    return OneSampleField{*encodedName, &field};
}

void TARNSettingsExpansion::RejectField(const std::string& field) {
    if (std::find(rejectedFields.begin(), rejectedFields.end(), field) == rejectedFields.end()) {
        rejectedFields.push_back(field);
    }
}

// ---- Warnings ----

void TARNSettingsExpansion::WarnOfOneSample() {
    if (chiSquareSawContinuous) WarnOf(kContinuousInChiSquare, oneSampleContinuous);
    WarnOf(kTestsWithoutFields, oneSampleTestsWithoutFields);
    if (!rejectedFields.empty()) Warn(kFieldsRejected, {Join(rejectedFields), Join(rejectingTests)});
}
