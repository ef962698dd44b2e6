#include "host/table/ColumnPlan.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/table/CellValue.h"
#include "host/table/CodeTable.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

// Finds columns by name, and knows what to say about a name that none has.
class ColumnFinder {
 public:
    ColumnFinder(const std::string& sourceName, const std::vector<std::string>& names)
        : sourceName_(sourceName), names_(names.begin(), names.end()) {
        for (std::size_t i = 0; i < names.size(); ++i) indexByName_.emplace(names[i], i);
    }

    // `where`: the option or key that names the column.
    std::size_t Find(const std::string& name, const std::string& where) const {
        const auto found = indexByName_.find(name);
        if (found != indexByName_.end()) return found->second;
        const std::string near = DidYouMean(NearestNames(name, names_));
        throw InputError(where + ": " + Quoted(name) + "; expected a field of " + sourceName_ +
                         (near.empty() ? ": " + Alternatives(names_) : near));
    }

    // A name that a user typed: without regard to case, too, where that leaves one column only.
    std::size_t FindTyped(const std::string& name, const std::string& where) {
        const std::optional<std::size_t> found = FindIfAny(name);
        if (!found) return Find(name, where);
        if (names_[*found] != name) notes_.push_back(TakenForNote(name, names_[*found]));
        return *found;
    }

    std::optional<std::size_t> FindIfAny(const std::string& name) const {
        const auto found = indexByName_.find(name);
        if (found != indexByName_.end()) return found->second;
        const auto isLike = [&](std::string_view other) { return AreLike(other, name); };
        const auto like = std::ranges::find_if(names_, isLike);
        if (like == names_.end() || std::any_of(like + 1, names_.end(), isLike)) return std::nullopt;
        return static_cast<std::size_t>(like - names_.begin());
    }

    const std::vector<std::string>& Notes() const { return notes_; }

 private:
    const std::string& sourceName_;
    std::vector<std::string_view> names_;
    std::unordered_map<std::string_view, std::size_t> indexByName_;
    std::vector<std::string> notes_;
};

bool HoldsTexts(const std::vector<DescribedValue>& values) {
    return std::any_of(values.begin(), values.end(),
                       [](const DescribedValue& value) { return !NumberOf(value, FieldType::kNumber); });
}

void Describe(ColumnPlan& column, const FieldDescriptor& field, bool excludeUserMissing) {
    column.title = field.title;
    column.type = field.type;
    column.categories = field.categories.value_or(std::vector<DescribedValue>{});
    if (!column.type && HoldsTexts(column.categories)) column.type = FieldType::kString;
    column.level = field.level;
    if (!column.level && field.categoriesOrdered) column.level = FieldLevel::kOrdinal;
    if (!column.level && field.categories) column.level = FieldLevel::kNominal;
    if (excludeUserMissing) column.userMissing = field.missingValues;
}

void OverrideLevels(std::vector<ColumnPlan>& columns, ColumnFinder& finder, const LoadOptions& options) {
    struct LevelList {
        std::string option;
        FieldLevel level;
        const std::vector<std::string>& names;
    };
    const LevelList lists[] = {{"--nominal", FieldLevel::kNominal, options.nominal},
                               {"--ordinal", FieldLevel::kOrdinal, options.ordinal},
                               {"--continuous", FieldLevel::kContinuous, options.continuous}};
    std::unordered_map<std::size_t, const LevelList*> listOf;
    for (const LevelList& list : lists) {
        for (const std::string& name : list.names) {
            const std::size_t column = finder.FindTyped(name, list.option);
            const LevelList& first = *listOf.emplace(column, &list).first->second;
            if (first.level != list.level) {
                throw InputError(list.option + ": " + Quoted(name) + " is in " + first.option +
                                 " too; expected one level for a field");
            }
            columns[column].level = list.level;
        }
    }
}

/// A word of an order: a category that the descriptor lists, which keeps its label, or a value of its own.
DescribedValue CategoryToldAs(const std::string& word, const std::vector<DescribedValue>& described) {
    const auto isMeant = [&](const DescribedValue& value) { return value.text == word || value.label == word; };
    const auto found = std::ranges::find_if(described, isMeant);
    return found == described.end() ? DescribedValue{word, ParseDecimal(TrimBlanks(word)), {}} : *found;
}

void TakeOrders(std::vector<ColumnPlan>& columns, ColumnFinder& finder, const LoadOptions& options) {
    for (const FieldOrder& order : options.orders) {
        const std::size_t index = finder.FindTyped(order.field, kOrderOption);
        ColumnPlan& column = columns[index];
        for (const auto& [option, names] :
             {std::pair<const char*, const std::vector<std::string>&>{"--nominal", options.nominal},
              {"--continuous", options.continuous}}) {
            const auto isColumn = [&](const std::string& name) { return finder.FindIfAny(name) == index; };
            if (std::ranges::none_of(names, isColumn)) continue;
            throw InputError(std::string(kOrderOption) + ": " + Quoted(order.field) + " is in " + option +
                             " too; expected one level for a field");
        }
        if (column.hasToldOrder) {
            throw InputError(std::string(kOrderOption) + ": " + Quoted(order.field) +
                             " a second time; expected one order");
        }
        std::vector<DescribedValue> told;
        for (const std::string& word : order.categories) told.push_back(CategoryToldAs(word, column.categories));
        column.categories = std::move(told);
        column.level = FieldLevel::kOrdinal;
        column.hasToldOrder = true;
        if (!column.type && HoldsTexts(column.categories)) column.type = FieldType::kString;
    }
}

int FindWeight(ColumnFinder& finder, const TableDescriptor& descriptor, const LoadOptions& options) {
    if (options.weightField) return static_cast<int>(finder.FindTyped(*options.weightField, "--weight"));
    if (!descriptor.weightField) return Table::kNoColumn;
    return static_cast<int>(finder.Find(*descriptor.weightField, descriptor.sourceName + ": weightField"));
}

}  // namespace

FieldLevel ColumnPlan::LevelAs(FieldType someType) const {
    if (level) return *level;
    const bool isNominal = someType == FieldType::kString || someType == FieldType::kBoolean;
    return isNominal ? FieldLevel::kNominal : FieldLevel::kContinuous;
}

TablePlan PlanTable(const std::string& sourceName, const std::vector<std::string>& names,
                    const TableDescriptor& descriptor, const LoadOptions& options) {
    ColumnFinder finder(sourceName, names);
    TablePlan plan;
    plan.descriptorName = descriptor.sourceName;
    for (const std::string& name : names) plan.columns.emplace_back().name = name;
    for (std::size_t i = 0; i < descriptor.fields.size(); ++i) {
        const FieldDescriptor& field = descriptor.fields[i];
        const std::string key = descriptor.sourceName + ": fields[" + std::to_string(i) + "].name";
        Describe(plan.columns[finder.Find(field.name, key)], field, options.excludeUserMissing);
    }
    OverrideLevels(plan.columns, finder, options);
    TakeOrders(plan.columns, finder, options);
    if (options.nominalByDefault) {
        const std::optional<std::size_t> column = finder.FindIfAny(*options.nominalByDefault);
        if (column && !plan.columns[*column].level) plan.columns[*column].level = FieldLevel::kNominal;
    }
    if (options.isRead) {
        for (std::size_t i = 0; i < names.size(); ++i) plan.columns[i].isRead = options.isRead(names[i], i);
    }
    plan.weightIndex = FindWeight(finder, descriptor, options);
    if (plan.weightIndex != Table::kNoColumn) {
        plan.columns[plan.weightIndex].level = FieldLevel::kContinuous;
        plan.columns[plan.weightIndex].isRead = true;
    }

    plan.notes = finder.Notes();

    for (const ColumnPlan& column : plan.columns) {
        if (!column.type) continue;
        if (column.type == FieldType::kString && column.level == FieldLevel::kContinuous) {
            const bool isWeight = &column - plan.columns.data() == plan.weightIndex;
            throw InputError(sourceName + ": column " + Quoted(column.name) + ": a string field as " +
                             (isWeight ? "weight" : "continuous") + "; expected a field with numbers");
        }
        ListedCategories(column, *column.type, plan.descriptorName);
    }
    return plan;
}

std::optional<double> NumberOf(const DescribedValue& value, FieldType type) {
    return value.number ? value.number : ParseCell(type, TrimBlanks(value.text));
}

std::vector<Category> ListedCategories(const ColumnPlan& plan, FieldType type, const std::string& descriptorName) {
    const bool isText = type == FieldType::kString;
    const auto fail = [&](const DescribedValue& value, const std::string& what) {
        throw InputError((plan.hasToldOrder ? kOrderOption : descriptorName) + ": field " + Quoted(plan.name) +
                         ": category " + Quoted(value.text) + what);
    };
    const auto toCategory = [&](const DescribedValue& value) -> std::optional<Category> {
        if (isText) return Category{0, value.text, value.label};
        const std::optional<double> number = NumberOf(value, type);
        // Adding 0 makes -0 the 0 that it equals.
        return number ? std::optional(Category{*number + 0.0, {}, value.label}) : std::nullopt;
    };

    std::vector<Category> listed;
    TextCodes texts;
    NumberCodes numbers;
    for (const DescribedValue& value : plan.categories) {
        const std::optional<Category> category = toCategory(value);
        if (!category) fail(value, "; expected " + std::string(ExpectedText(type)));
        const int code = isText ? texts.CodeOf(category->text) : numbers.CodeOf(category->number);
        if (code != std::ssize(listed)) fail(value, " stands twice; expected once");
        listed.push_back(*category);
    }
    for (const DescribedValue& value : plan.userMissing) {
        const std::optional<Category> missing = toCategory(value);
        std::erase_if(listed, [&](const Category& category) {
            return missing && category.number == missing->number && category.text == missing->text;
        });
    }
    return listed;
}

}  // namespace tarn
