#pragma once

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/common/IQKSettingValue.h"
#include "platform/common/QKDisplay.h"
#include "platform/common/QKMV.h"
#include "platform/common/QKSettings.h"

/// A vector as the value of a setting. Used with int, double, std::string and QKSettings.
///
/// Two vectors are compared element by element, whatever class holds the other's; the caller compares like with like.
template <typename T>
class QKVecValue : public IQKSettingValue, public IQKVectorElements<T> {
 public:
    explicit QKVecValue(std::vector<T> elements) : values(std::move(elements)), elementKind(KindOfElements()) {}

    /// Null if no memory was left.
    QKVecValue* Clone() const override { return new (std::nothrow) QKVecValue(values); }
    bool operator==(const IQKSettingValue& other) const override {
        const auto* vector = AsVector(other);
        return vector && Compare(vector->GetElements()) == 0;
    }
    bool operator<(const IQKSettingValue& other) const override {
        const auto* vector = AsVector(other);
        return vector && Compare(vector->GetElements()) < 0;
    }
    unsigned Size() const override { return static_cast<unsigned>(values.size()); }
    /// A vector has no number.
    double GetNumber() const override { return QKMV::Missing(); }
    std::string ToString() const override {
        return "Vector Value: Length of vector = " + std::to_string(values.size());
    }
    bool HasValues() const override { return !values.empty(); }
    int Count() const override { return static_cast<int>(values.size()); }
    int GetKind() const override { return static_cast<int>(SettingKind::kVector); }
    int GetElementKind() const override { return static_cast<int>(elementKind); }
    void Display() const override {
        QKDisplay::DisplayS("Setting Value Type", "Vector");
        QKDisplay::DisplayI("Total number of setting value", Count());
        QKDisplay::DisplayText("----");
    }

    const std::vector<T>& GetElements() const override { return values; }

 private:
    static SettingElementKind KindOfElements() {
        if constexpr (std::is_same_v<T, int>) return SettingElementKind::kInt;
        if constexpr (std::is_same_v<T, double>) return SettingElementKind::kDouble;
        if constexpr (std::is_same_v<T, std::string>) return SettingElementKind::kString;
        if constexpr (std::is_same_v<T, std::pair<std::string, int>>) return SettingElementKind::kStringIntPair;
        if constexpr (std::is_same_v<T, std::pair<std::string, double>>) return SettingElementKind::kStringDoublePair;
        if constexpr (std::is_same_v<T, std::pair<std::string, std::string>>) {
            return SettingElementKind::kStringStringPair;
        }
        if constexpr (std::is_same_v<T, QKSettings>) return SettingElementKind::kSettings;
        return SettingElementKind::kOther;
    }

    /// A vector that came with a settings document is of another class, but gives its elements in the same way.
    static const IQKVectorElements<T>* AsVector(const IQKSettingValue& other) {
        return dynamic_cast<const IQKVectorElements<T>*>(&other);
    }

    /// Negative, 0 or positive in lexicographic order.
    int Compare(const std::vector<T>& others) const {
        const std::size_t common = std::min(values.size(), others.size());
        for (std::size_t i = 0; i < common; ++i) {
            if (values[i] < others[i]) return -1;
            if (others[i] < values[i]) return 1;
        }
        if (values.size() == others.size()) return 0;
        return values.size() < others.size() ? -1 : 1;
    }

    std::vector<T> values;
    SettingElementKind elementKind;
};

/// Appends a vector to a tree of settings. `replace`: settings of that name are removed first; otherwise an existing
/// one stays in front. Always true.
template <typename T>
bool AddVecSetting(QKSettings& settings, const std::string& name, const std::vector<T>& values, bool replace) {
    if (replace) settings.RemoveSetting(name, true);
    settings.AddSetting(QKSetting(name, "", std::make_unique<QKVecValue<T>>(values)));
    return true;
}
