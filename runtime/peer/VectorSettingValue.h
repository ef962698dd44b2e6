#pragma once

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/common/IQKSettingValue.h"
#include "platform/common/QKDisplay.h"
#include "platform/common/QKMV.h"
#include "platform/common/QKSettings.h"

/// A vector that came with a settings document, as the value of a setting.
template <typename T>
class VectorSettingValue : public IQKSettingValue, public IQKVectorElements<T> {
 public:
    explicit VectorSettingValue(std::vector<T> elements) : elements_(std::move(elements)) {}

    const std::vector<T>& GetElements() const override { return elements_; }

    VectorSettingValue* Clone() const override { return new VectorSettingValue(elements_); }
    bool operator==(const IQKSettingValue& other) const override {
        const auto* vector = dynamic_cast<const IQKVectorElements<T>*>(&other);
        return vector && elements_ == vector->GetElements();
    }
    bool operator<(const IQKSettingValue& other) const override {
        const auto* vector = dynamic_cast<const IQKVectorElements<T>*>(&other);
        return vector && std::lexicographical_compare(elements_.begin(), elements_.end(), vector->GetElements().begin(),
                                                      vector->GetElements().end());
    }
    unsigned Size() const override { return static_cast<unsigned>(elements_.size()); }
    /// A vector has no number.
    double GetNumber() const override { return QKMV::Missing(); }
    std::string ToString() const override {
        return "Vector Value: Length of vector = " + std::to_string(elements_.size());
    }
    bool HasValues() const override { return !elements_.empty(); }
    int Count() const override { return static_cast<int>(elements_.size()); }
    int GetKind() const override { return static_cast<int>(SettingKind::kVector); }
    int GetElementKind() const override {
        if constexpr (std::is_same_v<T, int>) return static_cast<int>(SettingElementKind::kInt);
        if constexpr (std::is_same_v<T, double>) return static_cast<int>(SettingElementKind::kDouble);
        if constexpr (std::is_same_v<T, std::string>) return static_cast<int>(SettingElementKind::kString);
        if constexpr (std::is_same_v<T, QKSettings>) return static_cast<int>(SettingElementKind::kSettings);
    }
    void Display() const override {
        QKDisplay::DisplayS("Setting Value Type", "Vector");
        QKDisplay::DisplayI("Total number of setting value", Count());
    }

 private:
    std::vector<T> elements_;
};
