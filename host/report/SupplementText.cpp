#include "host/report/SupplementText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string_view>

#include "host/report/TextReport.h"

namespace tarn {

namespace {

/// Figures that the groups have in one test alone.
constexpr std::array<std::string_view, 2> kOwnFigures{"GTMedian", "STMedian"};

/// "4.25 to 5.5"; "" without a lower end.
std::string RangeText(const Number& lower, const Number& upper) {
    return lower.empty() ? "" : FewDigits(lower) + " to " + FewDigits(upper);
}

/// "95%"
std::string LevelText(const ResultReading& result) {
    return FewDigits(Number(std::to_string(100 * result.confidenceLevel.value))) + "%";
}

/// The figure of a sample of the document under that key; null for none.
const Figure* FindFigure(const TestReading& reading, const std::string& sample, std::string_view key) {
    for (const Sample& each : reading.samples) {
        if (each.name != sample) continue;
        const auto found = std::ranges::find(each.figures, key, &Figure::key);
        if (found != each.figures.end()) return &*found;
    }
    return nullptr;
}

std::string FigureOf(const TestReading& reading, const std::string& sample, std::string_view key) {
    const Figure* const figure = FindFigure(reading, sample, key);
    return figure == nullptr ? "" : figure->value.text;
}

std::string LettersOf(const Supplement& supplement, const std::string& sample) {
    const auto found = std::ranges::find(supplement.letters, sample, &SampleLetters::name);
    return found == supplement.letters.end() ? "" : found->letters;
}

std::string RoleOf(const TestReading& reading, const std::string& sample) {
    const auto found = std::ranges::find(reading.samples, sample, &Sample::name);
    return found == reading.samples.end() || found->role.empty() ? "" : " (" + found->role + ")";
}

/// Whether the document's significance is of one side.
bool IsOneTailed(const TestReading& reading) {
    const StatisticSet* const set = reading.Leading();
    const PValue* const p = set == nullptr ? nullptr : set->Leading();
    return p != nullptr && p->tails == 1;
}

struct SummaryColumns {
    bool hasMissing = false;
    bool hasMedian = false;
    bool hasInterval = false;
    bool hasRank = false;
    bool hasLetters = false;
    std::vector<std::string_view> ownKeys = {};
    std::vector<std::string> ownLabels = {};
};

SummaryColumns ColumnsOf(const TestReading& reading) {
    SummaryColumns columns;
    for (const SampleSummary& sample : reading.supplement.samples) {
        columns.hasMissing |= sample.missing.value > 0;
        columns.hasMedian |= !sample.median.empty();
        columns.hasInterval |= !sample.medianLower.empty();
        columns.hasRank |= !FigureOf(reading, sample.name, "MeanOfRank").empty();
    }
    const std::string first = reading.supplement.samples.empty() ? "" : reading.supplement.samples.front().name;
    for (const std::string_view key : kOwnFigures) {
        const Figure* const figure = FindFigure(reading, first, key);
        if (figure == nullptr) continue;
        columns.ownKeys.push_back(key);
        columns.ownLabels.push_back(figure->label);
    }
    columns.hasLetters = !reading.supplement.letters.empty();
    return columns;
}

std::vector<TextTable::ColumnHead> HeadsOf(const TestReading& reading, const SummaryColumns& columns,
                                           const std::string& level) {
    std::vector<TextTable::ColumnHead> heads{{reading.group.empty() ? "field" : reading.group},
                                             {"n", Alignment::kRight}};
    if (columns.hasMissing) heads.push_back({"missing", Alignment::kRight});
    if (columns.hasMedian) heads.push_back({"median", Alignment::kRight});
    if (columns.hasInterval) heads.push_back({level + " interval"});
    if (columns.hasMedian) heads.push_back({"quartiles"});
    if (columns.hasRank) heads.push_back({"mean rank", Alignment::kRight});
    for (const std::string& label : columns.ownLabels) heads.push_back({label, Alignment::kRight});
    if (columns.hasLetters) heads.push_back({"letters"});
    return heads;
}

}  // namespace

std::string FewDigits(const Number& number) {
    if (number.empty()) return "";
    if (std::isnan(number.value)) return "undefined";
    constexpr double kFirstWithoutFraction = 10000;
    constexpr double kMostInDigits = 1e15;
    std::array<char, 64> text{};
    const double size = std::fabs(number.value);
    const bool isWhole = number.value == std::floor(number.value);
    const char* const format = size < kMostInDigits && (isWhole || size >= kFirstWithoutFraction) ? "%.0f" : "%.4g";
    std::snprintf(text.data(), text.size(), format, number.value);
    return text.data();
}

TextTable SummaryTable(const TestReading& reading, const ResultReading& result) {
    const SummaryColumns columns = ColumnsOf(reading);
    TextTable table(HeadsOf(reading, columns, LevelText(result)));
    // The number of cases of one field is that of the test.
    const bool isCountAlone = !columns.hasMissing && !columns.hasMedian && !columns.hasLetters;
    if (isCountAlone && reading.supplement.samples.size() < 2) return table;
    for (const SampleSummary& sample : reading.supplement.samples) {
        std::vector<std::string> cells{sample.name + RoleOf(reading, sample.name), FewDigits(sample.n)};
        if (columns.hasMissing) cells.push_back(FewDigits(sample.missing));
        if (columns.hasMedian) cells.push_back(FewDigits(sample.median));
        if (columns.hasInterval) cells.push_back(RangeText(sample.medianLower, sample.medianUpper));
        if (columns.hasMedian) cells.push_back(RangeText(sample.firstQuartile, sample.thirdQuartile));
        if (columns.hasRank) cells.push_back(FewDigits(Number(FigureOf(reading, sample.name, "MeanOfRank"))));
        for (const std::string_view key : columns.ownKeys) {
            cells.push_back(FewDigits(Number(FigureOf(reading, sample.name, key))));
        }
        if (columns.hasLetters) cells.push_back(LettersOf(reading.supplement, sample.name));
        table.AddRow(std::move(cells));
    }
    return table;
}

TextTable EffectTable(const TestReading& reading, bool ofPairs) {
    const auto hasInterval = [&](const EffectSize& effect) {
        return effect.first.empty() != ofPairs && !effect.lower.empty();
    };
    const bool haveIntervals = std::ranges::any_of(reading.supplement.effects, hasInterval);
    TextTable table({{ofPairs ? "pair" : "effect"},
                     {"", Alignment::kRight},
                     {haveIntervals ? "interval" : ""},
                     {haveIntervals ? "by" : ""}});
    std::string shownMethod;
    for (const EffectSize& effect : reading.supplement.effects) {
        if (effect.first.empty() == ofPairs) continue;
        // Pairs have one method, which stands in the first line.
        const std::string method = effect.method == shownMethod ? "" : effect.method;
        table.AddRow({effect.label, FewDigits(effect.value), RangeText(effect.lower, effect.upper), method});
        shownMethod = effect.method;
    }
    return table;
}

void AddPValueRows(const TestReading& reading, TextTable& table) {
    for (const SuppliedPValue& p : reading.supplement.pValues) {
        if (!p.standardized.empty()) table.AddRow({"Standardized", FewDigits(p.standardized), p.claim});
        std::string remark = p.kind + ", " + p.method;
        if (!p.claim.empty()) remark += "; " + p.claim;
        if (p.alternative == "two-sided" && IsOneTailed(reading)) remark += ", two-sided";
        std::string value = PText(p.value);
        if (!p.lower.empty()) value += " (" + PText(p.lower) + " to " + PText(p.upper) + ")";
        table.AddRow({"p", value, remark});
    }
}

}  // namespace tarn
