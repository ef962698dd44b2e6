#include "selection/RequestedTest.h"

#include <vector>

#include "support/QKVecValue.h"
#include "vocabulary/RequestKeys.h"

namespace {

/// The value under a key, or what a value of that type is by default.
template <typename T>
T Read(const QKSettings& settings, const char* key, T otherwise = T()) {
    settings.GetSettingValByName(key, otherwise);
    return otherwise;
}

template <typename T>
bool CopyIfHeld(const QKSettings& settings, const char* key, QKSettings& entry) {
    T value{};
    if (!settings.GetSettingValByName(key, value)) return false;
    entry.AddSetting(key, value);
    return true;
}

}  // namespace

RequestedTest::RequestedTest(const QKSettings& request, const std::string& name) : name_(name) {
    request.GetSettingValByName(name, settings_);
}

bool RequestedTest::IsSelected() const {
    return Flag(RequestKey::kIsSelected);
}
bool RequestedTest::Flag(const char* key) const {
    return Read<bool>(settings_, key);
}

void RequestedTest::CopyText(const char* key, QKSettings& entry) const {
    entry.AddSetting(key, Read<std::string>(settings_, key));
}

void RequestedTest::CopyTexts(const char* key, QKSettings& entry) const {
    AddVecSetting(entry, key, Read<std::vector<std::string>>(settings_, key), false);
}

void RequestedTest::CopyLists(const char* key, QKSettings& entry) const {
    AddVecSetting(entry, key, Read<std::vector<QKSettings>>(settings_, key), false);
}

void RequestedTest::CopyNumber(const char* key, QKSettings& entry, double otherwise) const {
    entry.AddSetting(key, Read<double>(settings_, key, otherwise));
}

void RequestedTest::CopyFlag(const char* key, QKSettings& entry) const {
    entry.AddSetting(key, Flag(key) ? 1.0 : 0.0);
}

bool RequestedTest::CopyTextIfHeld(const char* key, QKSettings& entry) const {
    return CopyIfHeld<std::string>(settings_, key, entry);
}

bool RequestedTest::CopyNumberIfHeld(const char* key, QKSettings& entry) const {
    return CopyIfHeld<double>(settings_, key, entry);
}
