#include "selection/TARNAutoSelect.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "contract/TARNVariableInfo.h"
#include "support/QKVecValue.h"
#include "vocabulary/EntryKeys.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"

namespace {

using Names = std::vector<std::string>;
using Proposals = std::vector<QKSettings*>;

constexpr std::size_t kPairSize = 2;
constexpr int kDichotomousCount = 2;

QKSettings Propose(std::string_view setting) {
    QKSettings proposal;
    proposal.AddSetting(EntryKey::kProposedAlgorithmName, std::string(setting));
    return proposal;
}

QKSettings Propose(const TestFacts& test) {
    return Propose(test.Setting());
}

/// Hands a proposal over to the caller.
void Append(QKSettings proposal, Proposals& proposals) {
    auto owned = std::make_unique<QKSettings>(std::move(proposal));
    proposals.push_back(owned.get());
    static_cast<void>(owned.release());
}

}  // namespace

// ---- One sample ----

namespace {

std::optional<QKSettings> ProposeOneSampleTest(const IQKVariable& field) {
    if (FieldKind::IsCategorical(field.GetKind())) {
        const int categories = field.GetCategoryCount();
        if (categories < kDichotomousCount) return std::nullopt;
        QKSettings proposal = Propose(categories == kDichotomousCount ? Tests::kBinomial : Tests::kChiSquare);
        proposal.AddSetting(SettingKey::kClassFormation, ClassFormation::kGetFromData);
        return proposal;
    }
    if (field.GetKind() != FieldKind::kContinuous) return std::nullopt;
    QKSettings proposal = Propose(KolmogorovSmirnovSetting::kNormal);
    proposal.AddSetting(SettingKey::kClassFormation, ClassFormation::kGetFromData);
    proposal.AddSetting(OneSampleKey::kDistributionFunction, DistributionName::kNormal);
    proposal.AddSetting(OneSampleKey::kIsUseSample, EntryValue::kTrue);
    return proposal;
}

Names SelectOneSample(const Names& fields, const QKVarList& varList, Proposals& proposals) {
    Names unselected;
    for (const std::string& name : fields) {
        const IQKVariable* field = varList.GetVariable(name);
        std::optional<QKSettings> proposal;
        if (field != nullptr) proposal = ProposeOneSampleTest(*field);
        if (!proposal) {
            unselected.push_back(name);
            continue;
        }
        proposal->AddSetting(SettingKey::kVariableName, name);
        Append(*std::move(proposal), proposals);
    }
    return unselected;
}

}  // namespace

// ---- Independent samples ----

namespace {

/// The number of groups alone decides; the test fields are not looked at, so one that no test can take, or that is
/// unknown, has its proposal too and fails in the plan.
Names SelectIndependent(const Names& fields, const std::string& groupField, const QKVarList& varList,
                        Proposals& proposals) {
    // A grouping field that is unknown is no failure here: it makes no groups.
    const IQKVariable* group = varList.GetVariable(groupField);
    const int groups = group == nullptr ? 0 : group->GetCategoryCount();
    if (groups < kDichotomousCount) return fields;

    for (const std::string& name : fields) {
        const bool twoGroups = groups == kDichotomousCount;
        QKSettings proposal = Propose(twoGroups ? Tests::kMannWhitney : Tests::kKruskalWallis);
        if (!twoGroups) proposal.AddSetting(SettingKey::kTypeOfMultipleComparison, MultipleComparisonType::kPairWise);
        proposal.AddSetting(SettingKey::kVariableName, name);
        proposal.AddSetting(EntryKey::kGroupVariableName, groupField);
        Append(std::move(proposal), proposals);
    }
    return {};
}

}  // namespace

// ---- Related samples ----

namespace {

/// Numbers are never equal to texts, so a numeric and a string field share no category.
using CategoryValue = std::variant<double, std::string>;

CategoryValue CategoryValueAt(const IQKVariable& field, int category) {
    if (field.GetKind() == FieldKind::kStringCategories) return field.GetCategoryText(category);
    return field.GetCategoryValue(category);
}

/// The values of the first two categories. The first is taken even of a field that has none, where it is what an
/// unknown category has: the empty text, or the missing value.
std::vector<CategoryValue> FirstTwoCategories(const IQKVariable& field) {
    std::vector<CategoryValue> values;
    values.push_back(CategoryValueAt(field, 0));
    if (field.GetCategoryCount() > 1) values.push_back(CategoryValueAt(field, 1));
    return values;
}

/// Whether the fields, all of them categorical, have two category values among them and no field has a third. A field
/// with one category is taken, too. The values of a first field that lists the same one twice count as two.
bool ShareTwoCategories(const Names& fields, const QKVarList& varList) {
    const IQKVariable& first = *varList.GetVariable(fields.front());
    if (first.GetCategoryCount() > kDichotomousCount) return false;
    std::vector<CategoryValue> shared = FirstTwoCategories(first);
    for (std::size_t i = 1; i < fields.size(); ++i) {
        const IQKVariable& field = *varList.GetVariable(fields[i]);
        // The kind stands for the type of the values: kind 2 has numbers, kind 3 has texts.
        if (field.GetCategoryCount() > kDichotomousCount || field.GetKind() != first.GetKind()) return false;
        for (CategoryValue& value : FirstTwoCategories(field)) {
            if (std::find(shared.begin(), shared.end(), value) == shared.end()) shared.push_back(std::move(value));
        }
        if (shared.size() > kPairSize) return false;
    }
    return shared.size() == kPairSize;
}

std::optional<QKSettings> ProposeContinuousTest(const Names& fields) {
    if (fields.size() < kPairSize) return std::nullopt;
    if (fields.size() == kPairSize) return Propose(Tests::kWilcoxonPairs);
    QKSettings proposal = Propose(Tests::kFriedman);
    proposal.AddSetting(SettingKey::kTypeOfMultipleComparison, MultipleComparisonType::kPairWise);
    return proposal;
}

std::optional<QKSettings> ProposeCategoricalTest(const Names& fields, const QKVarList& varList) {
    if (fields.size() < kPairSize || !ShareTwoCategories(fields, varList)) return std::nullopt;
    const bool pair = fields.size() == kPairSize;
    QKSettings proposal = Propose(pair ? Tests::kMcNemar : Tests::kCochran);
    proposal.AddSetting(SettingKey::kClassFormation, ClassFormation::kGetFromData);
    if (!pair) proposal.AddSetting(SettingKey::kTypeOfMultipleComparison, MultipleComparisonType::kPairWise);
    return proposal;
}

void AppendOver(const Names& fields, std::optional<QKSettings> proposal, Proposals& proposals) {
    if (!proposal) return;
    AddVecSetting(*proposal, SettingKey::kVariableName, fields, false);
    Append(*std::move(proposal), proposals);
}

void SelectRelated(const Names& fields, const QKVarList& varList, Proposals& proposals) {
    Names continuous;
    Names nominal;
    Names ordinal;
    const TARNVariableInfo info(varList);
    for (const std::string& name : fields) {
        const int field = varList.FindVariable(name);
        if (field < 0) continue;
        const bool categorical = FieldKind::IsCategorical(varList.GetVarAt(field)->GetKind());
        // A field of kind 4 is among the continuous ones here, though the expansion of named tests leaves it out.
        (!categorical ? continuous : info.IsOrdinal(field) ? ordinal : nominal).push_back(name);
    }
    AppendOver(continuous, ProposeContinuousTest(continuous), proposals);
    AppendOver(nominal, ProposeCategoricalTest(nominal, varList), proposals);
    AppendOver(ordinal, ProposeCategoricalTest(ordinal, varList), proposals);
}

}  // namespace

// Callers of the library know the fields by value.
// NOLINTBEGIN(performance-unnecessary-value-param)
std::vector<std::string> TARNAutoSelect::SelectTests(std::vector<QKSettings*>& proposals, const std::string& family,
                                                     const QKVarList& varList, std::vector<std::string> fields,
                                                     const std::string& groupField) const {
    // NOLINTEND(performance-unnecessary-value-param)
    if (family == FamilyName::kOneSample) return SelectOneSample(fields, varList, proposals);
    if (family == FamilyName::kIndependentSamples) return SelectIndependent(fields, groupField, varList, proposals);
    if (family == FamilyName::kRelatedSamples) SelectRelated(fields, varList, proposals);
    return {};
}
