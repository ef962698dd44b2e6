#include "support/FieldInfos.h"

#include <map>
#include <string>

#include "support/ResultElements.h"

using QKXML::XMLElement;

namespace {

void AddContinuous(XMLElement& info, const UnivariateResults& results, int field) {
    StructuredTable distribution(info, TableName::kContinuousDistribution);
    distribution.Row(RowName::kTotalN, results.GetCount(field));
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
    distribution.Row(RowName::kTotalN, results.GetCount(field));

    std::map<int, std::int32_t> frequencies;
    results.GetFrequencies(field, frequencies);
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
                                           int caseIdIndex, const std::function<bool()>& stop) {
    auto infos = XMLElement::Create(Element::kFieldInfos);
    for (int field = 0; field < varList.Size(); ++field) {
        if (stop && stop()) return nullptr;
        if (field == weightIndex || field == caseIdIndex || !results.HasVariable(field)) continue;
        const int kind = varList.GetVarAt(field)->GetKind();
        if (kind != FieldKind::kContinuous && !FieldKind::IsCategorical(kind)) continue;
        XMLElement& info = infos->AddChildElement(XMLElement::Create(Element::kFieldInfo));
        info.AddAttribute(ElementAttribute::kVarIndex, IntToString(field));
        if (kind == FieldKind::kContinuous) {
            AddContinuous(info, results, field);
        } else {
            AddCategorical(info, results, field);
        }
    }
    return infos;
}
