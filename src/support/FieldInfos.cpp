#include "support/FieldInfos.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/ResultElements.h"

using QKXML::XMLElement;

namespace {

void AddContinuous(XMLElement& info, const UnivariateResults& results, int field) {
    StructuredTable distribution(info, TableName::kContinuousDistribution);
    distribution.Row(RowName::kTotalN, results.GetWideCount(field));
    distribution.Row(RowName::kMin, results.GetMin(field));
    distribution.Row(RowName::kMax, results.GetMax(field));
    distribution.Row(RowName::kMean, results.GetMean(field));
    distribution.Row(RowName::kStdDev, results.GetStdDev(field));

    std::string counts;
    std::string values;
    auto intervals = MakeIntervalTable(*results.GetContinuous(field), counts, values);
    if (!counts.empty() || !values.empty()) distribution.Add(std::move(intervals));
}

void AddCategorical(XMLElement& info, const UnivariateResults& results, int field) {
    StructuredTable distribution(info, TableName::kCategoricalDistribution);
    distribution.Row(RowName::kTotalN, results.GetWideCount(field));

    std::map<int, std::int64_t> frequencies;
    results.GetWideFrequencies(field, frequencies);
    std::string counts;
    std::string categories;
    for (const auto& [category, frequency] : frequencies) {
        if (!counts.empty()) {
            counts += ';';
            categories += ';';
        }
        AppendInt(counts, frequency);
        AppendInt(categories, category);
    }
    if (!counts.empty()) distribution.Add(MakeIntervalTable(counts, categories));
}

}  // namespace

std::unique_ptr<XMLElement> MakeFieldInfos(const QKVarList& varList, const UnivariateResults& results, int weightIndex,
                                           int caseIdIndex, const WorkShare& work) {
    std::vector<std::unique_ptr<XMLElement>> ofFields(static_cast<std::size_t>(varList.Size()));
    const bool isComplete = work.Run(ofFields.size(), [&](std::size_t position) {
        const int field = static_cast<int>(position);
        if (field == weightIndex || field == caseIdIndex || !results.HasVariable(field)) return;
        const int kind = varList.GetVarAt(field)->GetKind();
        if (kind != FieldKind::kContinuous && !FieldKind::IsCategorical(kind)) return;
        auto info = XMLElement::Create(Element::kFieldInfo);
        info->AddAttribute(ElementAttribute::kVarIndex, IntToString(field));
        if (kind == FieldKind::kContinuous) {
            AddContinuous(*info, results, field);
        } else {
            AddCategorical(*info, results, field);
        }
        NoteDeparture(results.GetDeparture(field), *info);
        ofFields[position] = std::move(info);
    });
    if (!isComplete) return nullptr;
    auto infos = XMLElement::Create(Element::kFieldInfos);
    for (std::unique_ptr<XMLElement>& info : ofFields) {
        if (info != nullptr) infos->AddChild(std::move(info));
    }
    return infos;
}
