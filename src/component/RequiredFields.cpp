#include "component/RequiredFields.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "vocabulary/RequestKeys.h"

namespace {

bool Holds(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// Names in the order in which they came first.
class NamesOnce {
 public:
    void Add(const std::string& name) {
        if (known_.insert(name).second) names_.push_back(name);
    }
    bool IsEmpty() const { return names_.empty(); }
    std::vector<std::string> Take() { return std::move(names_); }

 private:
    std::vector<std::string> names_;
    std::unordered_set<std::string> known_;
};

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
    NamesOnce listed;
    for (const char* key : {RequestKey::kOneSampleVariables, RequestKey::kRelatedVariables}) {
        for (const std::string& name : ReadNames(request, key)) listed.Add(name);
    }
    groupField.clear();
    const std::vector<std::string> independent = ReadNames(request, RequestKey::kIndependentVariables);
    if (!independent.empty()) {
        for (const std::string& name : independent) listed.Add(name);
        const std::vector<std::string> groups = ReadNames(request, RequestKey::kGroupVariable);
        if (groups.empty()) return QKStatus(RequestCode::kNoGroupField);
        groupField = groups.front();
        listed.Add(groupField);
    }
    if (listed.IsEmpty()) return QKStatus(RequestCode::kNoField);

    names = listed.Take();
    const auto isUnknown = [&](const std::string& name) { return varList.FindVariable(name) < 0; };
    if (std::any_of(names.begin(), names.end(), isUnknown)) return QKStatus(RequestCode::kUnknownField);
    return QKStatus();
}
