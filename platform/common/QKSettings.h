#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/common/IQKSettingValue.h"

class QKSettings;

/// One named setting. Its value is never changed once it is made, so copies share it.
class QKSetting {
 public:
    /// Takes the value for good.
    QKSetting(std::string name, std::string type, std::unique_ptr<const IQKSettingValue> value);

    const std::string& GetName() const { return name_; }
    const IQKSettingValue& GetValue() const { return *value_; }
    const std::string& GetType() const { return type_; }
    void SetType(const std::string& type) { type_ = type; }

 private:
    std::string name_;
    std::string type_;
    std::shared_ptr<const IQKSettingValue> value_;
};

/// A tree of named settings, in their order of arrival. A name may stand more than once; reading takes the first.
///
/// Reading converts: a number or bool to double, int (truncated) and bool (not 0); a number to text by "%.15g", a
/// bool to "true" or "false"; a text to a number if all of it is one, and to a bool if it is "true", "1", "false" or
/// "0". Vectors convert element by element: what can't be a number becomes the missing value, what can't be a text
/// the empty text. A vector never reads as a scalar, nor a scalar as a vector. A read that fails returns false and
/// leaves its output as it was.
class QKSettings {
 public:
    std::size_t Size() const { return settings_.size(); }
    const QKSetting& GetSettingAt(std::size_t position) const { return settings_[position]; }
    std::vector<std::string> GetSettingNames() const;
    /// The first setting of that name, borrowed; null when there is none.
    const QKSetting* FindSetting(const std::string& name) const;

    bool GetSettingValByName(const std::string& name, std::string& out) const;
    bool GetSettingValByName(const std::string& name, double& out) const;
    bool GetSettingValByName(const std::string& name, int& out) const;
    bool GetSettingValByName(const std::string& name, bool& out) const;
    bool GetSettingValByName(const std::string& name, QKSettings& out) const;
    bool GetSettingValByName(const std::string& name, std::vector<std::string>& out) const;
    bool GetSettingValByName(const std::string& name, std::vector<double>& out) const;
    bool GetSettingValByName(const std::string& name, std::vector<int>& out) const;
    bool GetSettingValByName(const std::string& name, std::vector<QKSettings>& out) const;

    void AddSetting(const std::string& name, const std::string& value);
    void AddSetting(const std::string& name, const char* value);
    void AddSetting(const std::string& name, double value);
    void AddSetting(const std::string& name, int value);
    void AddSetting(const std::string& name, bool value);
    void AddSetting(const std::string& name, const QKSettings& value);
    /// Appends a setting as it stands, whatever its value.
    void AddSetting(QKSetting setting);
    /// An int setting with a type of its own.
    void AddNewSetting(const std::string& name, int value, const std::string& type);

    /// Removes the first setting of that name, or all of them; false when there is none.
    bool RemoveSetting(const std::string& name, bool all);

    friend bool operator==(const QKSettings& a, const QKSettings& b);
    /// By name and then by value, setting by setting; a tree that ends first is less.
    friend bool operator<(const QKSettings& a, const QKSettings& b);

 private:
    std::vector<QKSetting> settings_;
};

/// A nested list of settings as the value of a setting; `GetKind` is 3.
class QKSettingListValue : public IQKSettingValue {
 public:
    explicit QKSettingListValue(QKSettings list) : list_(std::move(list)) {}

    const QKSettings& GetListValue() const { return list_; }

    QKSettingListValue* Clone() const override;
    bool operator==(const IQKSettingValue& other) const override;
    bool operator<(const IQKSettingValue& other) const override;
    unsigned Size() const override;
    double GetNumber() const override;
    std::string ToString() const override;
    bool HasValues() const override;
    int Count() const override;
    int GetKind() const override;
    int GetElementKind() const override;
    void Display() const override;

 private:
    QKSettings list_;
};
