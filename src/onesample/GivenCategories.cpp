#include "onesample/GivenCategories.h"

#include "contract/TARNVariableInfo.h"
#include "vocabulary/OneSampleKeys.h"

std::vector<std::string> ReadGivenCategories(const TARNPlanBuilder& builder) {
    std::vector<std::string> texts;
    builder.Read(OneSampleKey::kGivenCategoryList, texts);
    return texts;
}

std::vector<double> MapGivenCategories(const TARNPlanBuilder& builder, const QKVarList& varList, int field) {
    const TARNVariableInfo info(varList);
    if (varList.GetVarAt(field)->GetKind() != FieldKind::kNumericCategories) {
        return info.MapCategories(field, ReadGivenCategories(builder));
    }
    std::vector<double> values;
    builder.Read(OneSampleKey::kGivenCategoryList, values);
    return info.MapCategories(field, values);
}

std::string JoinCategoryTexts(const QKVarList& varList, int field, const std::vector<double>& categories) {
    const TARNVariableInfo info(varList);
    std::string joined;
    for (const double category : categories) {
        if (!joined.empty()) joined += ';';
        joined += info.GetCategoryDisplayText(field, static_cast<int>(category));
    }
    return joined;
}
