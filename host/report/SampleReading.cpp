#include "host/report/SampleReading.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>
#include <utility>

#include "host/report/KnownValue.h"

namespace tarn {

namespace {

constexpr std::array<std::string_view, 4> kSampleRows{"N", "MeanOfRank", "GTMedian", "STMedian"};

// The five numbers of a box in the order of the document.
constexpr std::array<Number BoxPlot::*, 5> kBoxMembers{&BoxPlot::lowerWhisker, &BoxPlot::lowerHinge, &BoxPlot::median,
                                                       &BoxPlot::upperHinge, &BoxPlot::upperWhisker};

std::vector<double> NumbersOf(std::string_view list) {
    std::vector<double> numbers;
    numbers.reserve(static_cast<std::size_t>(std::ranges::count(list, ';')) + 1);
    ForEachInList(list, [&](std::string_view text) {
        double number = 0;
        numbers.push_back(ReadNumber(text, number) ? number : std::numeric_limits<double>::quiet_NaN());
    });
    return numbers;
}

/// Sets the box of a sample, and its numbers among the figures.
void ReadBox(const ResultTable& table, const MessageCatalogue& texts, Sample& sample) {
    const ResultTable* const box = table.Table("Box");
    if (box != nullptr && !box->lines.empty()) {
        const std::vector<std::string> values = SplitList(box->lines.front());
        for (std::size_t i = 0; i < std::min({kBoxMembers.size(), values.size(), box->columnNames.size()}); ++i) {
            sample.box.*kBoxMembers[i] = KnownValue(values[i]);
            sample.figures.push_back({box->columnNames[i], texts.Label(box->columnNames[i]), KnownValue(values[i])});
        }
    }
    const ResultTable* const outliers = table.Table("Outliers");
    constexpr std::size_t kValuesAndCases = 2;
    if (outliers == nullptr || outliers->lines.size() < kValuesAndCases) return;
    const std::vector<std::string> values = SplitList(outliers->lines[0]);
    const std::vector<std::string> cases = SplitList(outliers->lines[1]);
    for (std::size_t i = 0; i < values.size(); ++i) {
        sample.box.outliers.push_back({Number(values[i]).value, i < cases.size() ? cases[i] : ""});
    }
}

Sample ReadSample(const ResultTable& table, std::string name, const MessageCatalogue& texts) {
    Sample sample;
    sample.name = std::move(name);
    for (const std::string_view row : kSampleRows) {
        if (table.Find(row) == nullptr) continue;
        sample.figures.push_back({std::string(row), texts.Label(row), KnownRow(table, row)});
    }
    ReadBox(table, texts, sample);
    sample.histogram = ReadHistogram(table);
    return sample;
}

/// With listed groups these two tests number their groups and don't name the categories in them.
bool NumbersItsGroups(const TestResult& test) {
    return test.conditionKey == "CategoryListsAreSpecified_I_KolmogorovSmirnov_2" ||
           test.conditionKey == "CategoryListsAreSpecified_I_WaldWolfowitzRuns_2";
}

void ReadSamplesOf(const TestResult& test, const ResultTable& parent, const ResultDocument& document,
                   const ResultField* group, const MessageCatalogue& texts, TestReading& reading) {
    for (const ResultTable& table : parent.tables) {
        const std::string* const index = table.Find("GroupIndex");
        if (index == nullptr) continue;
        std::string name = CategoryNames(*index, group);
        if (NumbersItsGroups(test)) name = texts.Label(*index == "0" ? "firstGroup" : "secondGroup");
        const ResultField* const field =
            table.name.starts_with("VariableInformation") ? document.FieldAt(*index) : nullptr;
        reading.samples.push_back(ReadSample(table, field ? field->name : name, texts));
    }
}

}  // namespace

DataHistogram ReadHistogram(const ResultTable& table) {
    const ResultTable* const interval = table.Table("Interval");
    constexpr std::size_t kCountsAndValues = 2;
    if (interval == nullptr || interval->lines.size() < kCountsAndValues) return {};
    return {interval->lines[0], interval->lines[1]};
}

DataHistogram::DataHistogram(std::string_view counts, std::string_view values) {
    if (std::ranges::count(counts, ';') != std::ranges::count(values, ';') || counts.empty() || values.empty()) return;
    counts_ = counts;
    values_ = values;
}

std::vector<double> DataHistogram::Counts() const {
    return NumbersOf(counts_);
}

std::vector<double> DataHistogram::Values() const {
    return NumbersOf(values_);
}

void ReadSamples(const TestResult& test, const ResultDocument& document, const ResultField* group,
                 const MessageCatalogue& texts, TestReading& reading) {
    for (const ResultTable& table : test.content.tables) {
        if (table.name == "BoxPlotInfo") ReadSamplesOf(test, table, document, group, texts, reading);
        if (table.name == "ContinuousDistribution") reading.histogram = ReadHistogram(table);
    }
    ReadSamplesOf(test, test.content, document, group, texts, reading);
}

}  // namespace tarn
