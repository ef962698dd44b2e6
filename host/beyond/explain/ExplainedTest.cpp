#include "host/beyond/explain/ExplainedTest.h"

#include <algorithm>

#include "host/NumberText.h"

namespace tarn {

const StatisticSet& ExplainedTest::Set() const {
    static const StatisticSet kNone;
    const StatisticSet* const set = Reading().Leading();
    return set == nullptr ? kNone : *set;
}

Number ExplainedTest::FigureOf(std::string_view key) const {
    const auto found = std::ranges::find(Reading().figures, key, &Figure::key);
    return found == Reading().figures.end() ? Number() : found->value;
}

std::string ExplainedTest::Parameter(std::size_t place) const {
    if (view.result == nullptr || place >= view.result->parameters.size()) return "";
    return view.result->parameters[place];
}

std::size_t ExplainedTest::CategoryOf(std::size_t column, double value) const {
    const Column& about = *view.columns[column];
    if (about.IsText()) return static_cast<std::size_t>(value);
    const auto found = std::ranges::find(about.categories, value, &Category::number);
    return static_cast<std::size_t>(found - about.categories.begin());
}

std::string ExplainedTest::ShownValue(std::size_t column, double value) const {
    const Column& about = *view.columns[column];
    const std::size_t place = about.IsCategorical() ? CategoryOf(column, value) : about.categories.size();
    return place < about.categories.size() ? ShownCategory(about, about.categories[place]) : ExactText(value);
}

std::vector<AscendingSample> EqualOnly(const ExplainedTest& test) {
    const Table& table = test.source.table;
    GroupedCases cases = CasesByGroup(table, table.FindColumn(test.Reading().fields.front()),
                                      table.FindColumn(test.Reading().group), test.source.rule, test.source.work);
    const bool isTurned = cases.names.size() == 2 && cases.names.front() != test.view.names.front();
    if (isTurned) std::ranges::reverse(cases.samples);
    return std::move(cases.samples);
}

}  // namespace tarn
