#include "host/engine/KnownKeys.h"

#include <algorithm>
#include <array>

namespace tarn {

namespace {

using enum KeyShape;
using enum KeyForm;

constexpr FamilyKeys kOneSample{TestFamily::kOneSample, "oneSampleVariables", "isAutomaticallyOneSample"};
constexpr FamilyKeys kRelated{TestFamily::kRelated, "relatedVariables", "isAutomaticallyRelated"};
constexpr FamilyKeys kIndependent{TestFamily::kIndependent, "independentVariables", "isAutomaticallyIndependent"};
constexpr std::array kFamilies{kOneSample, kRelated, kIndependent};

constexpr std::array kTopKeys{
    KnownKey{"missingTreatment", kText},
    KnownKey{"sigLevel", kNumber},
    KnownKey{"confidenceLevel", kNumber},
    KnownKey{kThreads, kNumber},
    KnownKey{kBrief, kFlag},
    KnownKey{kExtendedArithmetic, kFlag},
    KnownKey{kPlanCaseId, kText, kPlan},
    KnownKey{"TarnTabulonModelID", kNumber, kPlan},
    KnownKey{kPlanTests, kObjects, kPlan},
    KnownKey{"userMissing", kText, kRequest},
    KnownKey{kRequestCaseId, kText, kRequest},
    KnownKey{kOneSample.fields, kList, kRequest},
    KnownKey{kRelated.fields, kList, kRequest},
    KnownKey{kIndependent.fields, kList, kRequest},
    KnownKey{kGroupField, kList, kRequest},
    KnownKey{kOneSample.isAutomatic, kFlag, kRequest},
    KnownKey{kRelated.isAutomatic, kFlag, kRequest},
    KnownKey{kIndependent.isAutomatic, kFlag, kRequest},
    // Any key behind the tests of a family ends it; these two are for nothing else.
    KnownKey{kDone, kAny, kRequest},
    KnownKey{"end", kAny, kRequest},
};

// ---- Keys of tests ----

constexpr KnownKey kVariableName{kVariableKey, kText, kPlan};
constexpr KnownKey kVariableNames{kVariableKey, kList, kPlan};
constexpr KnownKey kGroupVariableName{kGroupVariableKey, kText, kPlan};
constexpr KnownKey kOrigin{"originVariableName", kText, kPlan};
constexpr KnownKey kOrigins{"originVariableName", kList, kPlan};

constexpr KnownKey kClassFormation{"classFormation", kText};
constexpr KnownKey kMultipleComparison{"typeOfMultipleComparison", kText};
constexpr KnownKey kUserSpecifyGroupList{"userSpecifyGroupList", kFlag};
constexpr KnownKey kGroup1List{"group1List", kList, kPlan};
constexpr KnownKey kGroup2List{"group2List", kList, kPlan};

constexpr std::array kEveryTest{
    KnownKey{kIsSelected, kFlag, kRequest},
    KnownKey{"AlgorithmName", kText, kWritten},
    KnownKey{"algorithmName", kText, kWritten},
    KnownKey{"testIndex", kNumber, kWritten},
};

constexpr std::array kOneField{kVariableName};
constexpr std::array kOneFieldOrCopy{kVariableName, kOrigin};
constexpr std::array kFields{kVariableNames};
constexpr std::array kFieldsOrCopies{kVariableNames, kOrigins};
constexpr std::array kFieldAndGroup{kVariableName, kGroupVariableName, kOrigin};

constexpr std::array kTwoClasses{
    KnownKey{"catVarClassFormation", kText},
    KnownKey{"givenCategoryList", kList},
    KnownKey{"contVarClassFormation", kText},
};
constexpr KnownKey kGivenCutPoint{"givenCutPoint", kNumber};

constexpr std::array<std::string_view, 3> kIntervals{"isDoClopperPearson", "isDoJeffreys", "isDoProfileLikelihood"};
constexpr std::array kBinomial{
    kGivenCutPoint,
    KnownKey{"testProbability", kNumber},
    KnownKey{kIntervals[0], kFlag, kRequest},
    KnownKey{kIntervals[1], kFlag, kRequest},
    KnownKey{kIntervals[2], kFlag, kRequest},
    KnownKey{kClassFormation.name, kText, kWritten},
};
constexpr std::array kConfidenceIntervals{
    kGivenCutPoint,
    KnownKey{kIntervals[0], kFlag, kPlan},
    KnownKey{kIntervals[1], kFlag, kPlan},
    KnownKey{kIntervals[2], kFlag, kPlan},
};
constexpr std::array kRuns{KnownKey{"cutPointValue", kNumber}};

constexpr std::array kExpectedCategory{KnownKey{"categoryValue", kText}, KnownKey{"expectedValue", kNumber}};
constexpr std::array kChiSquare{
    kClassFormation,
    KnownKey{"custom", kObjects, kBoth, kExpectedCategory},
};

// A plan may hold all parameters of any distribution; a request takes over those that the distribution has.
constexpr std::string_view kMean = "mean";
constexpr std::string_view kStdDev = "stdDev";
constexpr std::string_view kMin = "min";
constexpr std::string_view kMax = "max";
constexpr std::array kAnyDistribution{
    KnownKey{"isUseSample", kFlag},
    KnownKey{"distributionFunction", kText, kWritten},
};
constexpr std::array kNormal{
    KnownKey{kMean, kNumber},
    KnownKey{kStdDev, kNumber},
    KnownKey{kMin, kNumber, kPlan},
    KnownKey{kMax, kNumber, kPlan},
    KnownKey{kClassFormation.name, kText, kWritten},
};
constexpr std::array kUniform{KnownKey{kMin, kNumber}, KnownKey{kMax, kNumber}, KnownKey{kMean, kNumber, kPlan},
                              KnownKey{kStdDev, kNumber, kPlan}};
constexpr std::array kMeanAlone{KnownKey{kMean, kNumber}, KnownKey{kStdDev, kNumber, kPlan},
                                KnownKey{kMin, kNumber, kPlan}, KnownKey{kMax, kNumber, kPlan}};

constexpr std::array kWilcoxonOneSample{KnownKey{"userSpecifyTestValue", kFlag}, KnownKey{"testValue", kNumber}};

constexpr std::array kComparison{kMultipleComparison};
constexpr std::array kMcNemar{kClassFormation, KnownKey{"categoriesList", kList}};
constexpr std::array kCochran{kClassFormation, KnownKey{"successCategoryList", kList}, kMultipleComparison};

constexpr std::array kMannWhitney{kUserSpecifyGroupList, kGroup1List, kGroup2List};
constexpr std::array kMoses{kUserSpecifyGroupList, kGroup1List, kGroup2List,
                            KnownKey{"userSpecifyNumberOfOutliers", kFlag}, KnownKey{"NumberOfOutliers", kNumber}};
constexpr std::array kWaldWolfowitz{KnownKey{kClassFormation.name, kText, kPlan}};
constexpr std::array kJonckheere{kMultipleComparison, KnownKey{"orderOfHypotheses", kText}};
constexpr std::string_view kUserSpecifyGroupRange = "userSpecifyGroupRange";
constexpr std::array kMedian{
    kMultipleComparison,
    KnownKey{"userSpecifyMedian", kFlag},
    KnownKey{"median", kNumber},
    // A request hands it on; no test does anything with it.
    KnownKey{kUserSpecifyGroupRange, kFlag, kRequest},
    KnownKey{kUserSpecifyGroupRange, kFlag, kWritten},
};

// ---- Tests ----

using Keys = std::span<const KnownKey>;

/// The keys of a test that its family doesn't have. Where it compares samples the key of that is among them.
struct OwnKeys {
    std::string_view setting;
    Keys keys;
    Keys more = {};
};
constexpr std::array kOwnKeys{
    OwnKeys{Tests::kBinomial.Setting(), kTwoClasses, kBinomial},
    OwnKeys{Tests::kProportionIntervals.Setting(), kTwoClasses, kConfidenceIntervals},
    OwnKeys{Tests::kChiSquare.Setting(), kChiSquare},
    OwnKeys{Tests::kRuns.Setting(), kTwoClasses, kRuns},
    OwnKeys{KolmogorovSmirnovSetting::kNormal, kAnyDistribution, kNormal},
    OwnKeys{KolmogorovSmirnovSetting::kUniform, kAnyDistribution, kUniform},
    OwnKeys{KolmogorovSmirnovSetting::kPoisson, kAnyDistribution, kMeanAlone},
    OwnKeys{KolmogorovSmirnovSetting::kExponential, kAnyDistribution, kMeanAlone},
    OwnKeys{Tests::kWilcoxonOneSample.Setting(), kWilcoxonOneSample},
    OwnKeys{Tests::kMcNemar.Setting(), kMcNemar},
    OwnKeys{Tests::kCochran.Setting(), kCochran},
    OwnKeys{Tests::kMannWhitney.Setting(), kMannWhitney},
    OwnKeys{Tests::kWaldWolfowitz.Setting(), kWaldWolfowitz},
    OwnKeys{Tests::kMoses.Setting(), kMoses},
    OwnKeys{Tests::kJonckheereTerpstra.Setting(), kJonckheere},
    OwnKeys{Tests::kMedian.Setting(), kMedian},
};

/// The keys by which an entry of the family names its fields. A field of numbers may be the copy of another one.
Keys FieldKeysOf(const TestFacts& facts) {
    const bool mayBeCopy = facts.takes == FieldsTaken::kNumbers;
    switch (facts.family) {
        case TestFamily::kOneSample:
            return mayBeCopy ? Keys(kOneFieldOrCopy) : Keys(kOneField);
        case TestFamily::kRelated:
            return mayBeCopy ? Keys(kFieldsOrCopies) : Keys(kFields);
        case TestFamily::kIndependent:
            return kFieldAndGroup;
    }
    return {};
}

/// A test with several settings, one for each distribution, has the name of that behind its own in each of them.
KnownTest KnownTestOf(const TestFacts& facts, std::string_view setting) {
    const bool isOneOfSeveral = !facts.severalSettings.empty();
    KnownTest test{
        setting, isOneOfSeveral ? setting : facts.requestName, std::string(facts.userName), facts.family, {}};
    if (isOneOfSeveral) {
        test.userName += '-';
        for (const char c : setting.substr(facts.resultName.size())) {
            test.userName += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
        }
    }
    const auto add = [&](Keys keys) { test.keys.insert(test.keys.end(), keys.begin(), keys.end()); };
    add(FieldKeysOf(facts));
    const auto own = std::ranges::find(kOwnKeys, setting, &OwnKeys::setting);
    if (own != kOwnKeys.end()) {
        add(own->keys);
        add(own->more);
    } else if (facts.comparesSamples) {
        add(kComparison);
    }
    add(kEveryTest);
    return test;
}

}  // namespace

const KnownKey* KnownTest::Find(std::string_view key, KeyForm form) const {
    const auto found =
        std::ranges::find_if(keys, [&](const KnownKey& known) { return known.name == key && StandsIn(known, form); });
    return found == keys.end() ? nullptr : &*found;
}

std::span<const KnownKey> KnownTopKeys() {
    return kTopKeys;
}

std::span<const KnownTest> KnownTests() {
    static const std::vector<KnownTest> kTests = [] {
        std::vector<KnownTest> tests;
        for (const TestFacts* const facts : Tests::kAll) {
            for (const std::string_view setting : facts->Settings()) tests.push_back(KnownTestOf(*facts, setting));
        }
        return tests;
    }();
    return kTests;
}

std::span<const FamilyKeys> KeysOfFamilies() {
    return kFamilies;
}

bool StandsIn(const KnownKey& key, KeyForm form) {
    return key.form == kBoth || key.form == form || (key.form == kWritten && form == kPlan);
}

const KnownKey* FindTopKey(std::string_view name, KeyForm form) {
    const auto found =
        std::ranges::find_if(kTopKeys, [&](const KnownKey& key) { return key.name == name && StandsIn(key, form); });
    return found == kTopKeys.end() ? nullptr : &*found;
}

const KnownTest* FindKnownTest(std::string_view name, KeyForm form) {
    const auto tests = KnownTests();
    const auto found = std::ranges::find_if(tests, [&](const KnownTest& test) {
        return name == (form == kPlan ? test.planName : test.requestName) && !name.empty();
    });
    return found == tests.end() ? nullptr : &*found;
}

}  // namespace tarn
