#include "host/engine/OrderedScores.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "host/InputError.h"
#include "host/TextList.h"
#include "host/table/ColumnPlan.h"

namespace tarn {

namespace {

bool Ascend(const std::vector<Category>& categories) {
    return std::ranges::is_sorted(categories, {}, &Category::number);
}

bool NeedsScores(const Column& column) {
    const bool isNumber = column.type == FieldType::kNumber || column.type == FieldType::kInteger;
    return column.IsOrderTold() && (column.IsText() || (isNumber && !Ascend(column.categories)));
}

std::vector<std::string> ShownCategories(const Column& column) {
    std::vector<std::string> shown;
    for (const Category& category : column.categories) shown.push_back(ShownCategory(column, category));
    return shown;
}

// Scales as questionnaires and trials use them, from the lowest to the highest. A scale is recognised where all words
// of a field are among its own, whatever their case; it is only ever proposed.
constexpr std::size_t kLongestScale = 11;
using Scale = std::array<std::string_view, kLongestScale>;
constexpr std::array kScales{
    Scale{"none", "very low", "low", "l", "medium", "moderate", "middle", "m", "high", "h", "very high"},
    Scale{"control", "placebo", "low", "medium", "high"},
    Scale{"very poor", "very bad", "poor", "bad", "fair", "average", "ok", "good", "very good", "excellent"},
    Scale{"strongly disagree", "disagree", "rather disagree", "neutral", "neither", "undecided", "rather agree",
          "agree", "strongly agree"},
    Scale{"never", "rarely", "seldom", "sometimes", "often", "usually", "always"},
    Scale{"none", "absent", "mild", "slight", "moderate", "severe", "very severe"},
    Scale{"xs", "small", "s", "medium", "m", "large", "l", "xl", "xxl"},
    Scale{"much worse", "worse", "same", "unchanged", "better", "much better"},
};

std::string Lowered(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// The words in the order of the scale; nothing where one isn't of it, or two stand at one place.
std::optional<std::vector<std::string>> OrderBy(const Scale& scale, const std::vector<std::string>& words) {
    std::vector<std::pair<std::ptrdiff_t, std::string>> placed;
    for (const std::string& word : words) {
        const auto found = std::ranges::find(scale, Lowered(word));
        if (found == scale.end()) return std::nullopt;
        placed.emplace_back(found - scale.begin(), word);
    }
    std::ranges::sort(placed);
    std::vector<std::string> ordered;
    for (const auto& [place, word] : placed) ordered.push_back(word);
    return ordered;
}

}  // namespace

void ScoreOrderedFields(Table& table, const std::vector<std::string>& fields) {
    for (const std::string& field : fields) {
        const int index = table.FindColumn(field);
        if (index == Table::kNoColumn) continue;
        Column& column = table.ColumnAt(static_cast<std::size_t>(index));
        if (!NeedsScores(column)) continue;
        const std::vector<std::string> shown = ShownCategories(column);
        column.type = FieldType::kInteger;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            column.categories[i] = {static_cast<double>(i + 1), {}, shown[i]};
        }
    }
}

void LabelBooleans(Table& table) {
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
        Column& column = table.ColumnAt(i);
        if (column.type != FieldType::kBoolean) continue;
        for (Category& category : column.categories) {
            if (category.label.empty()) category.label = category.number == 0 ? "false" : "true";
        }
    }
}

void CheckOneOrder(const Table& table, const std::vector<std::string>& related) {
    std::vector<const Column*> ordered;
    bool areScored = false;
    for (const std::string& field : related) {
        const int index = table.FindColumn(field);
        if (index == Table::kNoColumn) continue;
        const Column& column = table.Columns()[static_cast<std::size_t>(index)];
        if (column.level == FieldLevel::kOrdinal) ordered.push_back(&column);
        areScored = areScored || NeedsScores(column);
    }
    if (!areScored) return;  // numbers that count by their values need no common list
    const std::vector<std::string> first = ShownCategories(*ordered.front());
    for (const Column* const column : ordered) {
        const std::vector<std::string> other = ShownCategories(*column);
        if (first == other) continue;
        throw InputError("--related: " + ordered.front()->name + " has the order " + JoinList(first, " < ") + ", " +
                         column->name + " " + JoinList(other, " < ") +
                         "; expected one order with all the words of both: " + kOrderOption + " " +
                         ordered.front()->name + "," + column->name + "=..,..");
    }
}

std::string OrderOptionFor(const Column& column) {
    const std::vector<std::string> words = ShownCategories(column);
    std::vector<std::string> ordered(std::min<std::size_t>(words.size(), 3), "..");
    for (const Scale& scale : kScales) {
        if (const auto known = OrderBy(scale, words)) {
            ordered = *known;
            break;
        }
    }
    std::string option = std::string(kOrderOption) + " " + column.name + "=" + JoinList(ordered, ",");
    if (option.find(' ', option.find('=')) == std::string::npos) return option;
    return std::string(kOrderOption) + " '" + column.name + "=" + JoinList(ordered, ",") + "'";
}

}  // namespace tarn
