#include "host/beyond/Dichotomies.h"

#include <algorithm>

namespace tarn {

namespace {

/// Whether each category of a field is a success, by its index.
std::vector<bool> AreSuccesses(const Column& column, const Column& first, const std::vector<std::string>& success) {
    std::vector<bool> are;
    for (const Category& category : column.categories) {
        const bool isFirst = success.empty() && !first.categories.empty() &&
                             category.number == first.categories.front().number &&
                             category.text == first.categories.front().text;
        const bool isNamed = std::ranges::any_of(success, [&](const std::string& word) {
            const Category* const found = FindCategory(column, word);
            return found != nullptr && *found == category;
        });
        are.push_back(isFirst || isNamed);
    }
    return are;
}

}  // namespace

FirstClass FirstClassOf(const TestView& view) {
    FirstClass first;
    const int position = view.facts->condition.firstClass;
    if (view.result == nullptr || position == ConditionParameters::kNone) return first;
    const std::vector<std::string>& parameters = view.result->parameters;
    const auto place = static_cast<std::size_t>(position);
    if (place >= parameters.size()) return first;
    if (view.result->conditionKey.find("CutPoint") != std::string::npos) {
        first.cut = Number(parameters[place]).value;
        return first;
    }
    const ResultField* const field = view.document->FieldAt(parameters.front());
    for (const std::string& index : SplitList(parameters[place])) {
        const std::string* const shown = field == nullptr ? nullptr : field->CategoryAt(index);
        if (shown != nullptr) first.categories.push_back(*shown);
    }
    return first;
}

std::optional<PairedAnswers> AnswersOf(const CountTable& counts) {
    if (counts.RowCount() != 2) return std::nullopt;
    const std::vector<std::string> rows[] = {counts.CellsOf(0), counts.CellsOf(1)};
    if (rows[0].size() != 2 || rows[1].size() != 2) return std::nullopt;
    const auto count = [&](std::size_t row, std::size_t column) { return Number(rows[row][column]).value; };
    return PairedAnswers{count(0, 0), count(0, 1), count(1, 0), count(1, 1)};
}

PairedAnswers AnswersOf(const std::vector<double>& first, const std::vector<double>& second,
                        const CompleteCases& cases) {
    PairedAnswers answers;
    for (std::size_t row = 0; row < first.size(); ++row) {
        double& cell =
            first[row] > 0 ? (second[row] > 0 ? answers.a : answers.b) : (second[row] > 0 ? answers.c : answers.d);
        cell += cases.WeightAt(row);
    }
    return answers;
}

std::vector<std::vector<double>> SuccessesOf(const TestView& view, const std::vector<std::string>& success) {
    std::vector<std::vector<double>> successes;
    for (std::size_t i = 0; i < view.columns.size(); ++i) {
        const Column& column = *view.columns[i];
        if (!column.IsCategorical()) return {};
        const std::vector<bool> are = AreSuccesses(column, *view.columns.front(), success);
        std::vector<double>& ofField = successes.emplace_back();
        for (const double cell : view.cases.columns[i]) {
            const auto isThis = [&](const Category& category) {
                return column.IsText() ? false : category.number == cell;
            };
            const auto place = column.IsText()
                                   ? static_cast<std::size_t>(cell)
                                   : static_cast<std::size_t>(std::ranges::find_if(column.categories, isThis) -
                                                              column.categories.begin());
            ofField.push_back(place < are.size() && are[place] ? 1 : 0);
        }
    }
    return successes;
}

}  // namespace tarn
