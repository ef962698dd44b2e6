#include "selection/TARNSettingsExpansion.h"

#include <algorithm>
#include <utility>

#include "contract/TARNVariableInfo.h"
#include "selection/TARNAutoSelect.h"
#include "support/QKVecValue.h"
#include "vocabulary/DefaultLevels.h"
#include "vocabulary/EntryKeys.h"
#include "vocabulary/RequestKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"

namespace {

constexpr double kPercent = 100;

/// The one chooser of the component's life; it keeps nothing between calls.
const TARNAutoSelect autoSelect;

/// Proposals with their owner.
struct OwnedProposals {
    OwnedProposals() = default;
    OwnedProposals(const OwnedProposals&) = delete;
    OwnedProposals& operator=(const OwnedProposals&) = delete;
    ~OwnedProposals() {
        for (const QKSettings* proposal : list) delete proposal;
    }

    std::vector<QKSettings*> list;
};

}  // namespace

TARNSettingsExpansion::TARNSettingsExpansion(const QKSettings* request, const QKVarList* fields, QKSettings* execution,
                                             const RenamedFields* renamed)
    : modelSettings(request), executionSettings(execution), varList(fields), renamedFields(renamed) {}

QKStatus TARNSettingsExpansion::Expand() {
    for (const std::string& name : modelSettings->GetSettingNames()) ReadGlobalKey(name);

    // A family moves the position over the tests that it took.
    for (std::size_t position = 0; position < modelSettings->Size(); ++position) {
        const std::string& name = modelSettings->GetSettingAt(position).GetName();
        if (name == RequestKey::kIsAutomaticallyOneSample) {
            ExpandOneSample(position);
        } else if (name == RequestKey::kIsAutomaticallyRelated) {
            ExpandRelated(position);
        } else if (name == RequestKey::kIsAutomaticallyIndependent) {
            ExpandIndependent(position);
        }
    }
    status = testIndex < 0 ? QKStatus(StatusCode::kNoTestRequested) : QKStatus();
    return status;
}

// ---- Keys of the run ----

void TARNSettingsExpansion::ReadGlobalKey(const std::string& key) {
    if (key == RequestKey::kMissingTreatment || key == RequestKey::kCaseIdField) {
        std::string text;
        if (!modelSettings->GetSettingValByName(key, text)) return;
        executionSettings->AddSetting(key == RequestKey::kCaseIdField ? EntryKey::kCaseIdVariableName : key, text);
    } else if (key == SettingKey::kThreads) {
        int threads = 0;
        if (modelSettings->GetSettingValByName(key, threads)) executionSettings->AddSetting(key, threads);
    } else if (key == SettingKey::kBrief || key == SettingKey::kExtendedArithmetic) {
        bool isWanted = false;
        if (modelSettings->GetSettingValByName(key, isWanted)) executionSettings->AddSetting(key, isWanted);
    } else if (key == SettingKey::kSigLevel) {
        double level = kDefaultSigLevel;
        modelSettings->GetSettingValByName(key, level);
        executionSettings->AddSetting(key, level);
    } else if (key == SettingKey::kConfidenceLevel) {
        // The default is divided like a percentage, so a level that is no number becomes 0.0095. Requests without the
        // key never come here: the planner takes the default as it is.
        double percentage = kDefaultConfidenceLevel;
        modelSettings->GetSettingValByName(key, percentage);
        executionSettings->AddSetting(key, percentage / kPercent);
    } else if (key == RequestKey::kOneSampleVariables) {
        modelSettings->GetSettingValByName(key, oneSampleFields);
        SplitByKind(oneSampleFields, oneSampleContinuous, oneSampleCategorical);
    } else if (key == RequestKey::kRelatedVariables) {
        modelSettings->GetSettingValByName(key, relatedFields);
        SplitRelatedFields();
    } else if (key == RequestKey::kIndependentVariables) {
        modelSettings->GetSettingValByName(key, independentFields);
        SplitByKind(independentFields, independentContinuous, independentCategorical);
    } else if (key == RequestKey::kGroupVariable) {
        std::vector<std::string> groups;
        modelSettings->GetSettingValByName(key, groups);
        if (!groups.empty()) groupVariable = groups.front();
    }
}

void TARNSettingsExpansion::SplitByKind(const std::vector<std::string>& fields, std::vector<std::string>& continuous,
                                        std::vector<std::string>& categorical) const {
    continuous.clear();
    categorical.clear();
    for (const std::string& field : fields) {
        const int kind = KindOf(field);
        if (kind == FieldKind::kContinuous) continuous.push_back(field);
        if (FieldKind::IsCategorical(kind)) categorical.push_back(field);
    }
}

// ---- What the families have in common ----

/// Whether a family is left to the engine. Its tests are then chosen and added here; fields for which there is no test
/// are left out without a word.
bool TARNSettingsExpansion::SelectsAutomatically(const char* key, bool& isAutomatically, const char* family,
                                                 const std::vector<std::string>& fields, const std::string& group) {
    modelSettings->GetSettingValByName(key, isAutomatically);
    if (!isAutomatically) return false;

    OwnedProposals proposals;
    autoSelect.SelectTests(proposals.list, family, *varList, fields, group);
    for (QKSettings* proposal : proposals.list) {
        std::string test;
        proposal->GetSettingValByName(EntryKey::kProposedAlgorithmName, test);
        proposal->AddSetting(EntryKey::kTestIndex, NextTestIndex());
        executionSettings->AddSetting(test, *proposal);
    }
    return true;
}

/// Goes through the settings behind the position as long as `take` takes their names. True if another key ended the
/// walk: the position is then before it, so that the walk of the whole request meets it next. False if the request
/// ended.
bool TARNSettingsExpansion::WalkTests(std::size_t& position,
                                      const std::function<bool(const std::string& name)>& take) const {
    for (++position; position < modelSettings->Size(); ++position) {
        if (take(modelSettings->GetSettingAt(position).GetName())) continue;
        --position;
        return true;
    }
    return false;
}

QKSettings TARNSettingsExpansion::BeginEntry(const std::string& test, const std::string& field) {
    QKSettings entry;
    entry.AddSetting(EntryKey::kAlgorithmName, test);
    entry.AddSetting(SettingKey::kVariableName, field);
    entry.AddSetting(EntryKey::kTestIndex, NextTestIndex());
    return entry;
}

QKSettings TARNSettingsExpansion::BeginEntry(const std::string& test, const std::vector<std::string>& fields) {
    QKSettings entry;
    entry.AddSetting(EntryKey::kAlgorithmName, test);
    AddVecSetting(entry, SettingKey::kVariableName, fields, false);
    entry.AddSetting(EntryKey::kTestIndex, NextTestIndex());
    return entry;
}

void TARNSettingsExpansion::Warn(long code, std::vector<std::string> arguments) {
    warningCodes.push_back(QKStatus(code, true));
    warningArguments.push_back(std::move(arguments));
}

/// A list of names as the one argument of a warning; a blank stands before each comma.
std::string TARNSettingsExpansion::Join(const std::vector<std::string>& names) {
    constexpr const char* kSeparator = " ,";
    std::string joined;
    for (const std::string& name : names) {
        if (&name != &names.front()) joined += kSeparator;
        joined += name;
    }
    return joined;
}

/// Warns if there is any name to warn about.
void TARNSettingsExpansion::WarnOf(long code, const std::vector<std::string>& names) {
    if (!names.empty()) Warn(code, {Join(names)});
}

// ---- What is known of a field ----

int TARNSettingsExpansion::KindOf(const std::string& field) const {
    const IQKVariable* variable = varList->GetVariable(field);
    return variable == nullptr ? kUnknownField : variable->GetKind();
}

bool TARNSettingsExpansion::IsOrdinal(const std::string& field) const {
    return TARNVariableInfo(*varList).IsOrdinal(varList->FindVariable(field));
}

/// The name of an ordinal field's copy as a continuous field; null when it has none.
const std::string* TARNSettingsExpansion::FindEncodedName(const std::string& field) const {
    const auto found = renamedFields->find(field);
    return found == renamedFields->end() ? nullptr : &found->second;
}

/// The field of which a field is the encoded copy; null when it is no copy.
const std::string* TARNSettingsExpansion::FindOrigin(const std::string& encodedName) const {
    const auto found = std::find_if(renamedFields->begin(), renamedFields->end(),
                                    [&](const auto& renamed) { return renamed.second == encodedName; });
    return found == renamedFields->end() ? nullptr : &found->first;
}
