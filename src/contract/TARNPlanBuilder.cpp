#include "contract/TARNPlanBuilder.h"

#include "support/ComparisonRequest.h"
#include "support/QKUnivariateVariable.h"

TARNPlanBuilder::TARNPlanBuilder(const QKSettings& entry, TARNPlan& plan, CommonSettings common)
    : entry_(entry), plan_(plan), settings(std::make_unique<QKSettings>()) {
    if (common != CommonSettings::kConfidenceLevel) settings->AddSetting(SettingKey::kSigLevel, plan.GetSigLevel());
    if (common != CommonSettings::kSigLevel) {
        settings->AddSetting(SettingKey::kConfidenceLevel, plan.GetConfidenceLevel());
    }
    if (plan.GetWeightIndex() != TARNPlan::kNoWeight) {
        settings->AddSetting(SettingKey::kWeightVariableIndex, static_cast<double>(plan.GetWeightIndex()));
    }
}

void TARNPlanBuilder::Fail(long code) {
    status = QKStatus(code);
    isMessageOpen = true;
}

void TARNPlanBuilder::Fail(long code, const std::string& parameter) {
    Fail(code);
    parameters.push_back(parameter);
}

std::vector<int> TARNPlanBuilder::ResolveFields(const std::vector<std::string>& names, long unknownField) {
    std::vector<int> indices;
    for (const std::string& name : names) {
        const int field = plan_.GetVarList().FindVariable(name);
        if (field < 0) {
            Fail(unknownField, name);
            break;
        }
        indices.push_back(field);
    }
    return indices;
}

void TARNPlanBuilder::EndMessage() {
    if (!isMessageOpen) return;
    messages.push_back({status, MessageKind::kError, std::move(parameters), {}});
    parameters.clear();
    isMessageOpen = false;
}

void TARNPlanBuilder::RequestOriginFrequencies(Origins origins) {
    if (plan_.IsBrief()) return;
    std::vector<std::string> names;
    if (origins == Origins::kSeveral) {
        Read(SettingKey::kOriginVariableName, names);
    } else if (std::string name; Read(SettingKey::kOriginVariableName, name)) {
        names = {name};
    }
    for (const std::string& name : names) {
        const int field = plan_.GetVarList().FindVariable(name);
        if (field >= 0) plan_.Request(field, Statistic::kFrequencies);
    }
}

void TARNPlanBuilder::ReadComparison(const ComparisonRules& rules, long unsaid) {
    if (const auto request = ComparisonRequest::OfEntry(entry_)) {
        request->AddTo(*settings, rules.wanted);
    } else if (rules.unsaid == Unsaid::kFailsToo) {
        Fail(unsaid);
        EndMessage();
    } else if (rules.unsaid == Unsaid::kFails && IsOK()) {
        Fail(unsaid);
    }
}
