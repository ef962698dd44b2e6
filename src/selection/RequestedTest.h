#pragma once

#include <string>

#include "platform/common/QKMV.h"
#include "platform/common/QKSettings.h"

/// What a request says of one test: whether it is selected, and the keys that go into the entries made for it.
class RequestedTest {
 public:
    /// Takes the nested settings under the name; without any the test isn't selected.
    RequestedTest(const QKSettings& request, const std::string& name);

    const std::string& Name() const { return name_; }
    /// The name without the letter of its family.
    std::string NameInWarnings() const { return name_.substr(1); }

    bool IsSelected() const;
    /// A truth value, false by default.
    bool Flag(const char* key) const;

    // Each copies one key into an entry. What the request doesn't hold is written by its default; a text and a list
    // are then empty.
    void CopyText(const char* key, QKSettings& entry) const;
    void CopyTexts(const char* key, QKSettings& entry) const;
    void CopyLists(const char* key, QKSettings& entry) const;
    void CopyNumber(const char* key, QKSettings& entry, double otherwise = QKMV::Missing()) const;
    /// A truth value becomes the number 1 or 0.
    void CopyFlag(const char* key, QKSettings& entry) const;

    // Each leaves the entry as it is, and answers false, if the request doesn't hold the key.
    bool CopyTextIfHeld(const char* key, QKSettings& entry) const;
    bool CopyNumberIfHeld(const char* key, QKSettings& entry) const;

 private:
    std::string name_;
    QKSettings settings_;
};
