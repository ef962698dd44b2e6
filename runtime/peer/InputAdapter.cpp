#include "platform/peer/InputAdapter.h"

#include <charconv>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/hx/HXDocuments.h"
#include "platform/hx/HXStatus.h"
#include "runtime/common/DecimalNumber.h"

using HxCppHelperV1::XMLElement;
using HxCppHelperV1::XMLElementIterator;

namespace {

/// What a "Field" of the data model says. Texts of closed lists are checked where the variable is made.
struct FieldDescription {
    explicit FieldDescription(const XMLElement& field)
        : name(field.getAttribute(HX_FIELD_NAME)),
          label(field.getAttribute(HX_FIELD_LABEL)),
          storage(field.getAttribute(HX_FIELD_STORAGE)),
          level(field.getAttribute(HX_FIELD_LEVEL)),
          dateType(field.getAttribute(HX_FIELD_DATE_TYPE)),
          role(field.getAttribute(HX_FIELD_ROLE)) {}

    bool IsText() const { return storage == HX_STORAGE_STRING; }
    bool IsNumber() const { return storage == HX_STORAGE_NUMBER; }
    bool IsOrdinal() const { return level == HX_LEVEL_ORDINAL; }
    bool IsCategorical() const { return IsOrdinal() || level == HX_LEVEL_NOMINAL; }
    bool IsOther() const { return level == HX_LEVEL_OTHER; }
    bool IsContinuous() const { return level == HX_LEVEL_CONTINUOUS; }
    bool IsWeight() const { return role == HX_ROLE_FREQUENCY_WEIGHT; }

    bool IsPossible() const {
        const bool hasStorage = IsText() || IsNumber();
        const bool hasLevel = IsCategorical() || IsOther() || (IsContinuous() && IsNumber());
        const bool hasRole = role.empty() || (IsWeight() && IsNumber());
        return !name.empty() && hasStorage && hasLevel && hasRole;
    }

    std::string name;
    std::string label;
    std::string storage;
    std::string level;
    std::string dateType;
    std::string role;
};

std::optional<DateType> ReadDateType(const std::string& text) {
    if (text.empty()) return DateType::kNone;
    if (text == HX_DATE_TYPE_DATE) return DateType::kDate;
    if (text == HX_DATE_TYPE_TIME) return DateType::kTime;
    if (text == HX_DATE_TYPE_DATE_TIME) return DateType::kDateTime;
    return std::nullopt;
}

using VariablePointer = std::shared_ptr<const IQKVariable>;

VariablePointer MakeTextVariable(const FieldDescription& description, DateType dateType, bool withLabels,
                                 const XMLElement& field) {
    std::vector<QKCatVar::StringCategory> categories;
    for (XMLElementIterator elements(field, HX_CATEGORY); elements.hasNext();) {
        const XMLElement element = elements.next();
        if (!element.hasAttribute(HX_CATEGORY_VALUE)) return nullptr;
        categories.push_back({element.getAttribute(HX_CATEGORY_VALUE),
                              withLabels ? element.getAttribute(HX_CATEGORY_LABEL) : std::string()});
    }
    return std::make_shared<QKCatVar>(description.name, description.label, description.IsOrdinal(),
                                      std::move(categories), dateType);
}

VariablePointer MakeNumericVariable(const FieldDescription& description, DateType dateType, bool withLabels,
                                    const XMLElement& field) {
    std::vector<QKCatVar::NumericCategory> categories;
    for (XMLElementIterator elements(field, HX_CATEGORY); elements.hasNext();) {
        const XMLElement element = elements.next();
        const std::optional<double> value = ParseDecimal(element.getAttribute(HX_CATEGORY_VALUE));
        if (!value) return nullptr;
        categories.push_back({*value, withLabels ? element.getAttribute(HX_CATEGORY_LABEL) : std::string()});
    }
    return std::make_shared<QKCatVar>(description.name, description.label, description.IsOrdinal(),
                                      std::move(categories), dateType);
}

/// Null for a field that can't exist.
VariablePointer MakeVariable(const FieldDescription& description, DateType dateType, bool withLabels,
                             const XMLElement& field) {
    if (description.IsOther() || description.IsContinuous()) {
        const int kind = description.IsOther() ? FieldKind::kOther : FieldKind::kContinuous;
        return std::make_shared<QKContVar>(description.name, description.label, dateType, kind);
    }
    return description.IsText() ? MakeTextVariable(description, dateType, withLabels, field)
                                : MakeNumericVariable(description, dateType, withLabels, field);
}

/// 0 where the model does not give it.
bool ReadCount(const XMLElement& root, const char* name, std::uint64_t& count) {
    const std::string text = root.getAttribute(name);
    if (text.empty()) return true;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), count);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

bool ReadWeightSum(const XMLElement& root, const char* name, double& sum) {
    const std::string text = root.getAttribute(name);
    return text.empty() || ParseDecimal(text, sum);
}

bool ReadCounts(const XMLElement& root, QKRecordCounts& counts) {
    return ReadCount(root, HX_TOTAL_COUNT, counts.unweightedCount) &&
           ReadCount(root, HX_DROPPED_COUNT, counts.droppedCount) &&
           ReadCount(root, HX_BAD_WEIGHT_COUNT, counts.badWeightCount) &&
           ReadWeightSum(root, HX_TOTAL_FREQ, counts.weightedCount) &&
           ReadWeightSum(root, HX_DROPPED_FREQ, counts.weightedDroppedCount);
}

}  // namespace

InputAdapter::InputAdapter(HxCppHelperV1::DataHelper* dataHelper, const DataModelParser& parser, bool withoutLabels,
                           bool withoutOrder, bool withoutDates, bool withWeight, bool withCounts)
    : dataHelper_(dataHelper),
      parser_(&parser),
      withoutLabels_(withoutLabels),
      withoutOrder_(withoutOrder),
      withoutDates_(withoutDates),
      withWeight_(withWeight),
      withCounts_(withCounts) {}

bool InputAdapter::BuildVarlist(int* errorCode) {
    *errorCode = HX_ERROR_FIELDS;
    QKVarList fields;
    for (XMLElementIterator elements(parser_->GetRoot(), HX_FIELD); elements.hasNext();) {
        if (!AddField(elements.next(), fields)) return false;
    }
    QKRecordCounts counts;
    if (withCounts_ && !ReadCounts(parser_->GetRoot(), counts)) return false;
    fields.SetCounts(counts);
    varList_ = std::move(fields);
    if (dataHelper_ != nullptr) dataHelper_->setFieldCount(static_cast<std::size_t>(varList_.Size()));
    *errorCode = 0;
    return true;
}

bool InputAdapter::AddField(const XMLElement& field, QKVarList& fields) const {
    FieldDescription description(field);
    if (!description.IsPossible() || fields.FindVariable(description.name) >= 0) return false;
    const std::optional<DateType> dateType = ReadDateType(description.dateType);
    if (!dateType) return false;
    if (withoutLabels_) description.label.clear();
    if (withoutOrder_ && description.IsOrdinal()) description.level = HX_LEVEL_NOMINAL;

    VariablePointer variable =
        MakeVariable(description, withoutDates_ ? DateType::kNone : *dateType, !withoutLabels_, field);
    if (variable == nullptr) return false;
    const int index = fields.AddNewVar(std::move(variable));
    if (!withWeight_ || !description.IsWeight()) return true;
    if (fields.GetFreqWeightIndex() != QKVarList::kNoWeight) return false;
    fields.SetFreqWeightIndex(index);
    return true;
}
