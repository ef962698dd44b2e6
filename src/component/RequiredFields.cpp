#include "component/RequiredFields.h"

#include <algorithm>
#include <utility>

#include "vocabulary/RequestKeys.h"

namespace {

bool Holds(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

void AddOnce(const std::string& name, std::vector<std::string>& names) {
    if (!Holds(names, name)) names.push_back(name);
}

std::vector<std::string> ReadNames(const QKSettings& request, const char* key) {
    std::vector<std::string> names;
    request.GetSettingValByName(key, names);
    return names;
}

}  // namespace

QKStatus RequiredFields::List(const QKSettings& request, const QKVarList& varList) {
    const QKStatus status = ListTestFields(request, varList);
    caseIdField.clear();
    request.GetSettingValByName(RequestKey::kCaseIdField, caseIdField);
    if (status.IsError()) return status;

    const IQKVariable* weight = varList.GetFreqWeightVariable();
    if (weight != nullptr && Holds(names, weight->GetName())) return QKStatus(RequestCode::kWeightAnalysed);
    return QKStatus();
}

QKStatus RequiredFields::ListTestFields(const QKSettings& request, const QKVarList& varList) {
    std::vector<std::string> listed;
    for (const char* key : {RequestKey::kOneSampleVariables, RequestKey::kRelatedVariables}) {
        for (const std::string& name : ReadNames(request, key)) AddOnce(name, listed);
    }
    groupField.clear();
    const std::vector<std::string> independent = ReadNames(request, RequestKey::kIndependentVariables);
    if (!independent.empty()) {
        for (const std::string& name : independent) AddOnce(name, listed);
        const std::vector<std::string> groups = ReadNames(request, RequestKey::kGroupVariable);
        if (groups.empty()) return QKStatus(RequestCode::kNoGroupField);
        groupField = groups.front();
        AddOnce(groupField, listed);
    }
    if (listed.empty()) return QKStatus(RequestCode::kNoField);

    names = std::move(listed);
    const auto isUnknown = [&](const std::string& name) { return varList.FindVariable(name) < 0; };
    if (std::any_of(names.begin(), names.end(), isUnknown)) return QKStatus(RequestCode::kUnknownField);
    return QKStatus();
}
