#pragma once

#include <string>
#include <variant>

#include "machine/CopiedVariant.h"
#include "platform/common/IQKSettingValue.h"

/// A single value of a setting: text, number, whole number or truth value.
class ScalarSettingValue : public IQKSettingValue {
 public:
    using Scalar = std::variant<std::string, double, int, bool>;

    explicit ScalarSettingValue(Scalar scalar) : scalar_(std::move(scalar)) {}

    const Scalar& GetScalar() const { return scalar_; }

    ScalarSettingValue* Clone() const override { return new ScalarSettingValue(CopiedVariant(scalar_)); }
    bool operator==(const IQKSettingValue& other) const override;
    /// Values of different types are ordered by their type.
    bool operator<(const IQKSettingValue& other) const override;
    unsigned Size() const override { return 1; }
    double GetNumber() const override;
    std::string ToString() const override;
    bool HasValues() const override { return true; }
    int Count() const override { return 1; }
    int GetKind() const override { return static_cast<int>(SettingKind::kScalar); }
    int GetElementKind() const override;
    void Display() const override;

 private:
    Scalar scalar_;
};
