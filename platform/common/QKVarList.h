#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// The numbers that `IQKVariable::GetKind` answers.
namespace FieldKind {
inline constexpr int kContinuous = 1;
inline constexpr int kNumericCategories = 2;
inline constexpr int kStringCategories = 3;
/// Not categorical and nothing that a test takes; handled like a continuous field for missing values.
inline constexpr int kOther = 4;

inline constexpr bool IsCategorical(int kind) {
    return kind == kNumericCategories || kind == kStringCategories;
}
}  // namespace FieldKind

enum class DateType { kNone, kDate, kTime, kDateTime };

/// One field. The order of the operations is fixed.
class IQKVariable {
 public:
    virtual ~IQKVariable() = default;
    /// A value of `FieldKind`.
    virtual int GetKind() const = 0;
    virtual std::string GetID() const = 0;
    virtual std::string GetName() const = 0;
    /// What a reader is shown in place of the name; may be empty.
    virtual std::string GetLabel() const = 0;
    /// Number of categories; 0 for a field that has none.
    virtual int GetCategoryCount() const = 0;
    virtual DateType GetDateType() const = 0;
    /// The text of a category's value; a number is written by "%.15g". Empty for an unknown index.
    virtual std::string GetCategoryText(int category) const = 0;
    /// The value of a category of a kind 2 field, else the missing double.
    virtual double GetCategoryValue(int category) const = 0;
    /// What a reader is shown in place of the category's value; may be empty.
    virtual std::string GetCategoryLabel(int category) const = 0;
    /// The index of the category with that value, -1 for none.
    virtual int FindCategory(double value) const = 0;
    /// The index of the category with that text, -1 for none.
    virtual int FindCategory(const std::string& text) const = 0;
};

/// A continuous field (kind 1) or a field of kind 4.
class QKContVar : public IQKVariable {
 public:
    QKContVar(std::string name, std::string label, DateType dateType = DateType::kNone,
              int kind = FieldKind::kContinuous);

    int GetKind() const override { return kind_; }
    std::string GetID() const override { return name_; }
    std::string GetName() const override { return name_; }
    std::string GetLabel() const override { return label_; }
    int GetCategoryCount() const override { return 0; }
    DateType GetDateType() const override { return dateType_; }
    std::string GetCategoryText(int) const override { return {}; }
    double GetCategoryValue(int category) const override;
    std::string GetCategoryLabel(int) const override { return {}; }
    int FindCategory(double) const override { return -1; }
    int FindCategory(const std::string&) const override { return -1; }

 private:
    std::string name_;
    std::string label_;
    DateType dateType_;
    int kind_;
};

/// A categorical field with its table of categories, whose positions are the category indices of the records.
class QKCatVar : public IQKVariable {
 public:
    struct NumericCategory {
        double value;
        std::string label;
    };
    struct StringCategory {
        std::string value;
        std::string label;
    };

    /// A field of kind 2. Equal values keep the first index.
    QKCatVar(std::string name, std::string label, bool ordinal, std::vector<NumericCategory> categories,
             DateType dateType = DateType::kNone);
    /// A field of kind 3. Equal texts keep the first index.
    QKCatVar(std::string name, std::string label, bool ordinal, std::vector<StringCategory> categories,
             DateType dateType = DateType::kNone);

    /// Whether the order of the categories has a meaning.
    bool GetOrdinalFlag() const { return ordinal_; }

    int GetKind() const override { return kind_; }
    std::string GetID() const override { return name_; }
    std::string GetName() const override { return name_; }
    std::string GetLabel() const override { return label_; }
    int GetCategoryCount() const override { return static_cast<int>(texts_.size()); }
    DateType GetDateType() const override { return dateType_; }
    std::string GetCategoryText(int category) const override;
    double GetCategoryValue(int category) const override;
    std::string GetCategoryLabel(int category) const override;
    int FindCategory(double value) const override;
    int FindCategory(const std::string& text) const override;

 private:
    bool HasCategory(int category) const { return category >= 0 && category < GetCategoryCount(); }

    std::string name_;
    std::string label_;
    DateType dateType_;
    int kind_;
    bool ordinal_;
    std::vector<double> values_;  // empty for kind 3
    std::vector<std::string> texts_;
    std::vector<std::string> labels_;
    std::unordered_map<double, int> indexByValue_;  // empty for kind 3
    std::unordered_map<std::string, int> indexByText_;
};

/// What is known of the records before the engine sees them; shown in the result document.
struct QKRecordCounts {
    double weightedCount = 0;           ///< sum of the weights of the table's records
    std::uint64_t unweightedCount = 0;  ///< records of the table
    std::uint64_t droppedCount = 0;     ///< records that the host dropped
    std::uint64_t badWeightCount = 0;   ///< records whose weight is missing, negative or 0
    double weightedDroppedCount = 0;    ///< sum of the weights of the dropped records
};

/// The fields of a run, in the order of a record's values, with the counts of the records.
class QKVarList {
 public:
    static constexpr int kNoWeight = -1;

    int Size() const { return static_cast<int>(variables_.size()); }
    /// Borrowed; null for a position that is not in the list.
    const IQKVariable* GetVarAt(int index) const;
    /// Borrowed; null for an unknown name.
    const IQKVariable* GetVariable(const std::string& name) const;
    /// The position of the field with that name, -1 for none.
    int FindVariable(const std::string& name) const;
    /// Appends a field, which lists may share, and returns its position. Of a repeated name the first is found.
    int AddNewVar(std::shared_ptr<const IQKVariable> variable);

    /// The frequency-weight field, borrowed; null when there is none.
    const IQKVariable* GetFreqWeightVariable() const { return GetVarAt(weightIndex_); }
    /// Its position, `kNoWeight` when there is none.
    int GetFreqWeightIndex() const { return weightIndex_; }
    void SetFreqWeightIndex(int index) { weightIndex_ = index; }

    double GetWeightedCount() const { return counts_.weightedCount; }
    std::uint64_t GetUnWeightedCount() const { return counts_.unweightedCount; }
    std::uint64_t GetDroppedCount() const { return counts_.droppedCount; }
    std::uint64_t GetBadWeightCount() const { return counts_.badWeightCount; }
    double GetWeightedDroppedCount() const { return counts_.weightedDroppedCount; }
    void SetCounts(const QKRecordCounts& counts) { counts_ = counts; }

 private:
    std::vector<std::shared_ptr<const IQKVariable>> variables_;
    std::unordered_map<std::string, int> indexByName_;
    int weightIndex_ = kNoWeight;
    QKRecordCounts counts_;
};
