#include "host/report/ExplanationText.h"

#include <algorithm>
#include <vector>

#include "host/NumberText.h"
#include "host/TextTable.h"
#include "host/report/TextLayout.h"

namespace tarn {

namespace {

constexpr std::size_t kDeeper = 3;
constexpr std::size_t kBetween = 2;
/// A longer name has a line for itself.
constexpr std::size_t kLongestName = 20;

/// "formula", "= numbers", "= value": each is broken only where it doesn't fit a line.
std::vector<std::string> PartsOf(const ExplanationStep& step) {
    std::vector<std::string> parts;
    if (!step.formula.empty()) parts.push_back(step.formula);
    if (!step.numbers.empty()) parts.push_back((parts.empty() ? "" : "= ") + step.numbers);
    parts.push_back((parts.empty() ? "" : "= ") + CalculatorText(step.value.value));
    return parts;
}

std::string StepLines(const ExplanationStep& step, std::size_t nameWidth, std::size_t width, std::size_t indent) {
    const std::size_t nameLength = DisplayWidth(step.name);
    const std::string name = std::string(indent, ' ') + step.name;
    std::string lines = WrappedParts(PartsOf(step), "", width, indent + nameWidth + kBetween);
    if (nameLength > nameWidth) return name + "\n" + lines;
    return name + lines.substr(indent + nameLength);
}

}  // namespace

std::string ExplanationText(const TestExplanation& explanation, std::size_t width, std::size_t indent) {
    std::string text = Wrapped(kExplanationTitle, width, indent);
    const std::size_t within = indent + kDeeper;
    for (const ExplanationTable& table : explanation.tables) text += TableText(PageTableOf(table), width, within);
    std::size_t nameWidth = 0;
    for (const ExplanationStep& step : explanation.steps) {
        const std::size_t length = DisplayWidth(step.name);
        if (length <= kLongestName) nameWidth = std::max(nameWidth, length);
    }
    for (const ExplanationStep& step : explanation.steps) text += StepLines(step, nameWidth, width, within);
    for (const ExplanationTable& table : explanation.comparisons) text += TableText(PageTableOf(table), width, within);
    for (const std::string& note : explanation.notes) text += Wrapped(note, width, within);
    return text;
}

PageTable PageTableOf(const ExplanationTable& table) {
    PageTable page;
    page.title = table.title;
    for (const ExplanationTable::Column& column : table.columns) {
        page.columns.push_back({"", column.title, column.isOfWords ? Alignment::kLeft : Alignment::kRight});
    }
    for (const std::vector<std::string>& row : table.rows) {
        std::vector<PageCell>& cells = page.rows.emplace_back();
        for (const std::string& cell : row) cells.push_back({cell, {}, {}});
    }
    return page;
}

PageTable StepTable(const TestExplanation& explanation) {
    PageTable page;
    page.columns = {
        {"step", "step"}, {"formula", "formula"}, {"numbers", "with numbers"}, {"value", "value", Alignment::kRight}};
    for (const ExplanationStep& step : explanation.steps) {
        page.rows.push_back({{step.name, {}, {}},
                             {step.formula, {}, {}},
                             {step.numbers, {}, {}},
                             {CalculatorText(step.value.value), step.value, {}}});
    }
    return page;
}

}  // namespace tarn
