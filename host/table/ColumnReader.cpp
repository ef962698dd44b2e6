#include "host/table/ColumnReader.h"

#include <algorithm>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>

#include "host/InputError.h"
#include "host/TestNames.h"

namespace tarn {

namespace {

// Appends those of `values`, in ascending order, that `categories` doesn't hold yet, and returns for each value the
// index of its category. `valueOf` is the member of a category that holds a value.
template <typename Value>
std::vector<double> AppendUnlisted(const std::vector<Value>& values, Value Category::*valueOf,
                                   std::vector<Category>& categories) {
    std::unordered_map<Value, std::size_t> indexByValue;
    for (const Category& category : categories) indexByValue.emplace(category.*valueOf, indexByValue.size());

    std::vector<const Value*> ascending;
    for (const Value& value : values) {
        if (!indexByValue.contains(value)) ascending.push_back(&value);
    }
    std::ranges::sort(ascending, [](const Value* a, const Value* b) { return *a < *b; });
    for (const Value* value : ascending) {
        indexByValue.emplace(*value, categories.size());
        categories.emplace_back().*valueOf = *value;
    }

    std::vector<double> indexByCode;
    indexByCode.reserve(values.size());
    for (const Value& value : values) indexByCode.push_back(static_cast<double>(indexByValue.at(value)));
    return indexByCode;
}

}  // namespace

void MapCodes(std::span<double> cells, const std::vector<double>& byCode, double missing) {
    std::ranges::transform(cells, cells.begin(), [&](double code) {
        return code == kMissingNumber ? missing : byCode[static_cast<std::size_t>(code)];
    });
}

ColumnReader::ColumnReader(const ColumnPlan& plan, const MissingTexts& missingTexts, const TableShape& shape)
    : plan_(plan),
      missingTexts_(missingTexts),
      shape_(shape),
      type_(plan.type.value_or(FieldType::kNumber)),
      isDecimal_(type_ == FieldType::kNumber || type_ == FieldType::kInteger),
      takesDecimals_(isDecimal_ && !missingTexts.HasNumbers() && !plan.isUnnamed &&
                     shape.numbers.decimal != shape.delimiter),
      trimsBlanks_(shape.trimsBlanks),
      hasUserMissing_(!plan.userMissing.empty()),
      isText_(type_ == FieldType::kString),
      isCategorical_(plan.LevelAs(type_) != FieldLevel::kContinuous) {
    if (isText_) return;
    for (const DescribedValue& value : plan.userMissing) {
        if (const std::optional<double> number = NumberOf(value, type_)) userMissingNumbers_.push_back(*number);
    }
}

bool ColumnReader::IsUserMissing(std::string_view text) const {
    return std::ranges::any_of(plan_.userMissing, [&](const DescribedValue& value) { return value.text == text; });
}

// A column of numbers may still have a text as its user-missing value, like "refused".
bool ColumnReader::ReadUnusual(std::string_view cell, CellCodes& codes, double& value) const {
    const auto missing = std::ranges::find(plan_.userMissing, cell, &DescribedValue::text);
    if (missing == plan_.userMissing.end()) return false;
    codes.missing.Count(missingTexts_.Size() + static_cast<std::size_t>(missing - plan_.userMissing.begin()));
    codes.hasNumbers = true;
    value = kMissingNumber;
    return true;
}

std::string_view ColumnReader::ExpectedText() const {
    if (plan_.isUnnamed) return "an empty cell, as the header has no name there";
    if (isDecimal_ && shape_.numbers.decimal == ',') return "a number with a decimal comma";
    return tarn::ExpectedText(type_);
}

std::vector<double> ColumnReader::Join(const CellCodes& codes) {
    missing_.Add(codes.missing);
    hasNumbers_ = hasNumbers_ || codes.hasNumbers;
    std::vector<double> own;
    if (isText_) {
        own.reserve(codes.texts.Values().size());
        for (const std::string_view text : codes.texts.Values()) own.push_back(textCodes_.CodeOf(text));
    } else {
        own.reserve(codes.numbers.Values().size());
        for (const double number : codes.numbers.Values()) own.push_back(numberCodes_.CodeOf(number));
    }
    return own;
}

void ColumnReader::BecomeText() {
    type_ = FieldType::kString;
    isText_ = true;
    isCategorical_ = true;
    if (HasVoidValues()) missing_.Clear();
}

/// Refuses an order that leaves out a category of the data.
void ColumnReader::CheckToldOrder(const Column& column) const {
    if (!plan_.hasToldOrder || column.listedCount == column.categories.size()) return;
    const std::span<const Category> listed(column.categories.data(), column.listedCount);
    std::vector<std::string> left;
    for (std::size_t i = column.listedCount; i < column.categories.size(); ++i) {
        left.push_back(ShownCategory(column, column.categories[i]));
    }
    const std::vector<std::string_view> leftNames(left.begin(), left.end());
    const std::string where = std::string(kOrderOption) + ": ";
    for (const Category& category : listed) {
        const std::string word = ShownCategory(column, category);
        if (Occurs(category)) continue;
        const std::vector<std::string_view> nearest = NearestNames(word, leftNames);
        if (nearest.empty()) continue;
        throw InputError(where + "no category " + Quoted(word) + " in " + column.name + "; did you mean " +
                         std::string(nearest.front()) + "?");
    }
    throw InputError(where + column.name + " has " + Alternatives(leftNames, " and ") +
                     " too; expected all of its categories, from the lowest to the highest");
}

bool ColumnReader::Occurs(const Category& category) const {
    if (isText_) return std::ranges::find(textCodes_.Values(), category.text) != textCodes_.Values().end();
    return std::ranges::find(numberCodes_.Values(), category.number) != numberCodes_.Values().end();
}

std::vector<double> ColumnReader::Finish(const std::string& descriptorName, Column& column) const {
    column.title = plan_.title;
    column.type = type_;
    column.isInferred = !plan_.type;
    column.level = plan_.LevelAs(type_);
    for (std::size_t i = 0; i < missing_.Size(); ++i) {
        if (missing_.Of(i) == 0) continue;
        const std::size_t own = missingTexts_.Size();
        const std::string& text = i < own ? missingTexts_.Text(i) : plan_.userMissing[i - own].text;
        column.missingTexts.push_back({text, missing_.Of(i)});
    }
    if (!isCategorical_) return {};
    column.categories = ListedCategories(plan_, type_, descriptorName);
    column.listedCount = column.categories.size();
    std::vector<double> indexByCode = isText_
                                          ? AppendUnlisted(textCodes_.Values(), &Category::text, column.categories)
                                          : AppendUnlisted(numberCodes_.Values(), &Category::number, column.categories);
    CheckToldOrder(column);
    return indexByCode;
}

}  // namespace tarn
