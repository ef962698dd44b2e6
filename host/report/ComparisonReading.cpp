#include "host/report/ComparisonReading.h"

#include <string>
#include <utility>
#include <vector>

#include "host/report/KnownValue.h"

namespace tarn {

namespace {

/// The names of the samples in the order of a table like "PairwiseInfo": fields or categories by their indices.
std::vector<std::string> SampleNames(const ResultTable* info, const ResultDocument& document,
                                     const ResultField* group) {
    if (info == nullptr || info->lines.empty()) return {};
    std::vector<std::string> names = SplitList(info->lines.front());
    for (std::string& name : names) {
        const ResultField* const field = group == nullptr ? document.FieldAt(name) : nullptr;
        name = field ? field->name : CategoryNames(name, group);
    }
    return names;
}

Number Cell(const std::vector<std::string>& line, std::size_t column) {
    return column < line.size() ? KnownValue(line[column]) : Number();
}

// Where the values of a comparison stand in its line.
enum Column : std::size_t { kFirst, kSecond, kStatistic, kStandardError, kStandardized, kP, kAdjustedP };

std::string NameAt(const std::vector<std::string>& names, const std::string& position) {
    double number = 0;
    const bool isKnown = ReadNumber(position, number) && number >= 0 && number < static_cast<double>(names.size());
    return isKnown ? names[static_cast<std::size_t>(number)] : position;
}

void ReadPairs(const ResultTable& table, const ResultDocument& document, const ResultField* group,
               TestReading& reading) {
    const ResultTable* const content = table.Table("Content");
    if (content == nullptr) return;
    // Fields are given by their place in the list, groups by the index of their category.
    const std::vector<std::string> names = SampleNames(table.Table("PairwiseInfo"), document, group);
    const auto nameOf = [&](const std::string& sample) {
        return group == nullptr ? NameAt(names, sample) : CategoryNames(sample, group);
    };
    for (const std::string& values : content->lines) {
        const std::vector<std::string> line = SplitList(values);
        if (line.size() <= kSecond) continue;
        reading.pairs.push_back({nameOf(line[kFirst]), nameOf(line[kSecond]), Cell(line, kStatistic),
                                 Cell(line, kStandardError), Cell(line, kStandardized), Cell(line, kP),
                                 Cell(line, kAdjustedP)});
    }
}

void ReadSubsets(const ResultTable& table, const ResultDocument& document, const ResultField* group,
                 TestReading& reading) {
    const ResultTable* const content = table.Table("Content");
    if (content == nullptr) return;
    const std::vector<std::string> names = SampleNames(table.Table("StepwiseInfo"), document, group);
    reading.orderedSamples = names;
    for (const std::string& values : content->lines) {
        const std::vector<std::string> line = SplitList(values);
        double first = 0;
        double last = 0;
        if (line.size() <= kSecond || !ReadNumber(line[kFirst], first) || !ReadNumber(line[kSecond], last)) continue;
        HomogeneousSubset subset{{}, Cell(line, kStatistic), Cell(line, kP), Cell(line, kAdjustedP)};
        for (auto position = static_cast<long>(first); position <= static_cast<long>(last); ++position) {
            subset.members.push_back(NameAt(names, std::to_string(position)));
        }
        reading.subsets.push_back(std::move(subset));
    }
}

}  // namespace

void ReadComparisons(const TestResult& test, const ResultDocument& document, const ResultField* group,
                     TestReading& reading) {
    for (const ResultTable& table : test.content.tables) {
        if (table.name == "PairwiseResult") ReadPairs(table, document, group, reading);
        if (table.name == "StepwiseResult") ReadSubsets(table, document, group, reading);
    }
}

}  // namespace tarn
