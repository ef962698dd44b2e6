#pragma once

#include <string>
#include <vector>

/// The numbers that `IQKSettingValue::GetKind` answers.
enum class SettingKind { kScalar = 1, kVector = 2, kNestedList = 3 };

/// The numbers that `IQKSettingValue::GetElementKind` answers. The pairs have no value class of this system, but
/// keep their places in the numbering.
enum class SettingElementKind {
    kOther = 0,
    kInt = 1,
    kDouble = 2,
    kString = 3,
    kStringIntPair = 4,
    kStringDoublePair = 5,
    kStringStringPair = 6,
    kSettings = 7
};

/// The value of one setting: a scalar, a vector or a nested list. The order of the operations is fixed.
class IQKSettingValue {
 public:
    virtual ~IQKSettingValue() = default;
    /// A copy that the caller owns.
    virtual IQKSettingValue* Clone() const = 0;
    virtual bool operator==(const IQKSettingValue& other) const = 0;
    virtual bool operator<(const IQKSettingValue& other) const = 0;
    virtual unsigned Size() const = 0;
    /// The value as a number; the missing double where there is none.
    virtual double GetNumber() const = 0;
    virtual std::string ToString() const = 0;
    virtual bool HasValues() const = 0;
    virtual int Count() const = 0;
    virtual int GetKind() const = 0;
    virtual int GetElementKind() const = 0;
    /// Writes to the debug output.
    virtual void Display() const = 0;
};

/// How a vector-valued setting gives its elements to `QKSettings`, which reads vectors of several classes alike.
template <typename T>
class IQKVectorElements {
 public:
    virtual ~IQKVectorElements() = default;
    virtual const std::vector<T>& GetElements() const = 0;
};
