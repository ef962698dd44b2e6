#include "onesample/BinaryClasses.h"

#include <algorithm>
#include <array>
#include <utility>

#include "contract/TARNVariableInfo.h"
#include "onesample/GivenCategories.h"
#include "platform/common/QKVarList.h"
#include "support/QKUnivariateVariable.h"
#include "support/QKVecValue.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"

namespace {

/// Values of the formation keys that cut a continuous field.
constexpr const char* kFormedByCutPoint = "givenCutPoint";
constexpr const char* kFormedByMidPoint = "sampleMidPoint";

// Of a test's own settings.
constexpr const char* kNotUsedCategories = "notUsedCategoryList";
constexpr const char* kNotGivenOriginalCategories = "notGivenOriginalCategoryList";

bool IsCut(const std::string& formation) {
    return formation == kFormedByCutPoint || formation == kFormedByMidPoint;
}

}  // namespace

// ---- Plan ----

void BinaryClassesPlan::ResolveField() {
    std::string name;
    if (!builder.Read(SettingKey::kVariableName, name)) {
        builder.Fail(codes.nameMissing);
        return;
    }
    field = plan.GetVarList().FindVariable(name);
    if (field < 0) {
        builder.Fail(codes.unknownField, name);
        return;
    }
    measureLevel = plan.GetMeasureLevel(name);
    builder.TestSettings().AddSetting(SettingKey::kVariableIndex, field);
    builder.TestSettings().AddSetting(SettingKey::kMeasureLevel, measureLevel);
    if (FieldKind::IsCategorical(measureLevel)) plan.Request(field, Statistic::kFrequencies);
    if (measureLevel == FieldKind::kContinuous) plan.RequestSorted(field);
}

void BinaryClassesPlan::ReadFormation() {
    if (!builder.IsOK()) return;
    if (builder.Read(OneSampleKey::kCategoricalFormation, formation)) {
        builder.TestSettings().AddSetting(SettingKey::kClassFormation, formation);
        if (formation == ClassFormation::kGivenCategoryList) ReadCategoryList();
    } else if (builder.Read(OneSampleKey::kContinuousFormation, formation)) {
        // Under any text: the sample's midpoint is a cut point that arrives without a value.
        isCutPoint = true;
        builder.TestSettings().AddSetting(SettingKey::kClassFormation, kFormedByCutPoint);
        if (formation == kFormedByCutPoint) {
            ReadCutPoint();
        } else if (measureLevel == FieldKind::kContinuous) {
            for (const int end : {Statistic::kMin, Statistic::kMax}) plan.Request(field, end);
        }
    }
}

void BinaryClassesPlan::ReadCategoryList() {
    givenTexts = ReadGivenCategories(builder);
    if (givenTexts.empty()) {
        builder.Fail(codes.listMissing);
    } else {
        AddVecSetting(builder.TestSettings(), OneSampleKey::kOriginalGivenCategories, givenTexts, false);
    }
}

void BinaryClassesPlan::ReadCutPoint() {
    double cutPoint = 0;
    if (builder.Read(OneSampleKey::kGivenCutPoint, cutPoint)) {
        builder.TestSettings().AddSetting(OneSampleKey::kGivenCutPoint, cutPoint);
    } else {
        builder.Fail(codes.cutPointMissing);
    }
}

void BinaryClassesPlan::FinishClasses() {
    if (!builder.IsOK()) return;
    if (measureLevel == 0) {
        builder.Fail(codes.noMeasureLevel);
    } else if (measureLevel == FieldKind::kContinuous) {
        if (!IsCut(formation)) builder.Fail(codes.continuousWithoutCut);
    } else if (IsCut(formation) || isCutPoint) {
        builder.Fail(codes.categoricalWithCut);
    } else if (!givenTexts.empty()) {
        WriteCategories();
    }
}

void BinaryClassesPlan::WriteCategories() {
    const TARNVariableInfo info(plan.GetVarList());
    const std::vector<double> given = MapGivenCategories(builder, plan.GetVarList(), field);
    const std::vector<double> others = info.CategoriesNotIn(field, given);
    const IQKVariable* variable = plan.GetVarList().GetVarAt(field);
    std::vector<std::string> otherTexts;
    for (const double category : others) otherTexts.push_back(variable->GetCategoryText(static_cast<int>(category)));

    AddVecSetting(builder.TestSettings(), OneSampleKey::kGivenCategoryList, given, false);
    AddVecSetting(builder.TestSettings(), kNotUsedCategories, others, false);
    // Says what the indices mean; no test reads it.
    AddVecSetting(builder.TestSettings(), kNotGivenOriginalCategories, otherTexts, false);
}

// ---- Settings ----

void BinaryClasses::ReadFormation(const QKSettings& settings) {
    std::string formation;
    settings.GetSettingValByName(SettingKey::kClassFormation, formation);
    if (formation == ClassFormation::kGivenCategoryList) classFormation = Formation::kGivenCategoryList;
    if (formation == kFormedByCutPoint) classFormation = Formation::kCutPoint;
    settings.GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings.GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
}

void BinaryClasses::ReadMeasureLevel(const QKSettings& settings) {
    int level = 0;
    settings.GetSettingValByName(SettingKey::kMeasureLevel, level);
    if (level == FieldKind::kContinuous || FieldKind::IsCategorical(level)) measureLevel = level;
}

QKStatus BinaryClasses::Begin(const QKSettings& settings, const UnivariateResults* univariateResults,
                              const BinaryCodes& codes, const Arithmetic& arithmetic) {
    firstCount = 0;
    secondCount = 0;
    if (measureLevel == FieldKind::kContinuous) {
        firstRecord = false;
        ReadCutPoint(settings, univariateResults);
        return QKStatus();
    }
    std::map<int, std::int64_t> frequencies;
    if (univariateResults == nullptr || !univariateResults->GetWideFrequencies(variableIndex, frequencies)) {
        return QKStatus(codes.noFrequencies);
    }
    if (classFormation == Formation::kFromData) {
        return TakeClassesOfData(frequencies, codes, arithmetic);
    }
    ReadGivenClasses(settings);
    return QKStatus();
}

/// Without a value the cut is the middle of the field's range, over all its records and not only those of the test.
/// A field of which every record is missing has the missing value at both ends; these add up to minus infinity.
void BinaryClasses::ReadCutPoint(const QKSettings& settings, const UnivariateResults* univariateResults) {
    settings.GetSettingValByName(OneSampleKey::kGivenCutPoint, cutPoint);
    if (!QKMV::IsMissing(cutPoint) || univariateResults == nullptr) return;
    cutPoint = (univariateResults->GetMax(variableIndex) + univariateResults->GetMin(variableIndex)) * 0.5;
}

/// The classes are the field's categories, whether or not they occur, and their counts are there before the pass.
QKStatus BinaryClasses::TakeClassesOfData(const std::map<int, std::int64_t>& frequencies, const BinaryCodes& codes,
                                          const Arithmetic& arithmetic) {
    if (frequencies.size() > 2) return QKStatus(codes.tooManyCategories);
    if (frequencies.empty()) return QKStatus(codes.noCategory);

    const auto& [first, countOfFirst] = *frequencies.begin();
    firstCount = arithmetic.Count(countOfFirst);
    // A single category without a case is not taken, while of two without one both are.
    if (frequencies.size() == 1 && firstCount < 1) return QKStatus(codes.noCategory);
    givenCategories = {static_cast<double>(first)};
    if (frequencies.size() == 1) return QKStatus();

    const auto& [second, countOfSecond] = *frequencies.rbegin();
    notUsedCategories = {static_cast<double>(second)};
    secondCount = arithmetic.Count(countOfSecond);
    return firstCount == 0 && secondCount == 0 ? QKStatus(codes.noCategory) : QKStatus();
}

void BinaryClasses::ReadGivenClasses(const QKSettings& settings) {
    settings.GetSettingValByName(OneSampleKey::kGivenCategoryList, givenCategories);
    settings.GetSettingValByName(OneSampleKey::kOriginalGivenCategories, originalGivenCategories);
    settings.GetSettingValByName(kNotUsedCategories, notUsedCategories);
    firstClass = CategorySet(givenCategories);
}

// ---- Records ----

void BinaryClasses::Add(ColumnBatch& batch) {
    if (measureLevel != FieldKind::kContinuous && classFormation == Formation::kFromData) {
        if (firstRecord) OrderClassesByFirstRecord(batch.Values(variableIndex)[0]);
        return;
    }
    const std::int32_t* const weights = batch.Weights(weightVariableIndex);
    constexpr std::size_t kBlock = 1024;
    std::array<std::uint32_t, kBlock> areFirst;
    for (std::size_t begin = 0; begin < batch.Size(); begin += kBlock) {
        const std::size_t count = std::min(kBlock, batch.Size() - begin);
        if (measureLevel == FieldKind::kContinuous) {
            const double* const values = batch.Values(variableIndex) + begin;
            // The cut point itself belongs to the first class.
            for (std::size_t i = 0; i < count; ++i) areFirst[i] = static_cast<std::uint32_t>(!(values[i] > cutPoint));
        } else {
            firstClass.Mark(batch.WholeNumbers(variableIndex) + begin, count, areFirst.data());
        }
        AddClasses(areFirst.data(), weights + begin, count);
    }
}

/// Without a branch: which class comes next can't be foreseen.
void BinaryClasses::AddClasses(const std::uint32_t* areFirst, const std::int32_t* weights, std::size_t count) {
    std::int64_t total = 0;
    std::int64_t first = 0;
    for (std::size_t i = 0; i < count; ++i) {
        total += weights[i];
        first += weights[i] & -static_cast<std::int32_t>(areFirst[i]);
    }
    firstCount += first;
    secondCount += total - first;
}

/// The first class is the category of the first record that reaches the test, whatever its weight, and not the smaller
/// category: other records in front give another statistic. Documents depend on it.
void BinaryClasses::OrderClassesByFirstRecord(double value) {
    firstRecord = false;
    if (notUsedCategories.empty() || value == givenCategories[0]) return;
    std::swap(firstCount, secondCount);
    std::swap(givenCategories[0], notUsedCategories[0]);
}

// ---- Element ----

namespace {

std::string FirstOrMissing(const std::vector<double>& categories) {
    return categories.empty() ? Literal::kMissingParameter : DoubleToString(categories[0]);
}

}  // namespace

const char* BinaryClasses::ConditionKey(const BinaryConditionKeys& keys) const {
    switch (classFormation) {
        case Formation::kGivenCategoryList:
            return keys.givenList;
        case Formation::kCutPoint:
            return keys.cutPoint;
        case Formation::kFromData:
            break;
    }
    return keys.fromData;
}

std::string BinaryClasses::FieldParameter() const {
    return IntToString(variableIndex);
}

std::string BinaryClasses::FirstClassParameter() const {
    if (classFormation == Formation::kCutPoint) return NumberOrMissing(cutPoint);
    return classFormation == Formation::kFromData ? FirstOrMissing(givenCategories) : JoinValues(givenCategories);
}

std::string BinaryClasses::SecondClassParameter() const {
    return classFormation == Formation::kFromData ? FirstOrMissing(notUsedCategories) : JoinValues(notUsedCategories);
}

void BinaryClasses::AddUnknownCategories(ResultElement& element) const {
    if (classFormation == Formation::kGivenCategoryList) {
        element.AddUnknownCategories(givenCategories, originalGivenCategories);
    }
}
