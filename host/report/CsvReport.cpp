#include "host/report/CsvReport.h"

#include <array>
#include <map>
#include <optional>
#include <span>
#include <string_view>

#include "host/InputError.h"
#include "host/NumberText.h"

namespace tarn {

namespace {

constexpr std::array<std::string_view, 38> kColumns{
    "row",      "number",       "test",        "name",        "family",    "fields",     "group",      "part",
    "sample1",  "sample2",      "n",           "statistic",   "std_error", "z",          "df",         "p_value",
    "p_kind",   "p_tails",      "adj_p_value", "estimate",    "conf_low",  "conf_high",  "conf_level", "decision",
    "messages", "beyond_range", "n_total",     "direction",   "p_holm",    "p_bh",       "arithmetic", "missing",
    "q1",       "median",       "q3",          "alternative", "letters",   "p_adjusted",
};

using Row = std::map<std::string_view, std::string>;

/// Of the interval of a significance by random arrangements.
constexpr const char* kLevelOfEstimates = "0.99";

void Append(std::string& text, const Row& row) {
    for (const std::string_view column : kColumns) {
        const auto found = row.find(column);
        if (column != kColumns.front()) text += ',';
        if (found != row.end()) text += CsvCell(found->second);
    }
    text += '\n';
}

/// What all rows of one test have in common.
Row CommonCells(const TestReading& reading, std::size_t number, const TestTexts* about,
                const ResultDocument& document) {
    Row row;
    row["number"] = std::to_string(number);
    row["test"] = reading.name;
    row["name"] = about == nullptr ? "" : about->name;
    row["family"] = reading.family;
    row["fields"] = JoinList(reading.fields, ";");
    row["group"] = reading.group;
    // "extended" of a test where that makes a difference is what the run says of itself.
    row["arithmetic"] = NameOf(document.arithmetic);
    if (reading.IsTextbook()) row["arithmetic"] += " textbook";
    return row;
}

void SetStatistics(Row& row, const StatisticSet& set, const PValue* p) {
    row["part"] = set.name;
    row["statistic"] = p == nullptr ? set.statistic : set.StatisticOf(*p);
    row["std_error"] = set.standardError;
    row["z"] = set.standardized;
    row["df"] = set.df;
    if (p == nullptr) return;
    row["p_value"] = (p->isBound ? ">" : "") + p->value.text;
    row["p_kind"] = NameOf(p->kind);
    row["p_tails"] = std::to_string(p->tails);
}

void SetInterval(Row& row, const Interval& interval, const ResultDocument& document) {
    row["part"] = interval.method;
    row["estimate"] = interval.estimate;
    row["conf_low"] = interval.lower;
    row["conf_high"] = interval.upper;
    row["conf_level"] = document.confidenceLevel;
}

struct TouchedColumn {
    std::string_view column;
    Quantity quantity;
};
constexpr std::array kTouchedColumns{
    TouchedColumn{"n", Quantity::kN},
    TouchedColumn{"statistic", Quantity::kStatistic},
    TouchedColumn{"std_error", Quantity::kStandardError},
    TouchedColumn{"z", Quantity::kStandardized},
    TouchedColumn{"p_value", Quantity::kPValue},
    TouchedColumn{"conf_low", Quantity::kInterval},
    TouchedColumn{"conf_high", Quantity::kInterval},
};
// Of a pair all these are touched at once.
constexpr std::array kTouchedPairColumns{
    TouchedColumn{"std_error", Quantity::kPairs},
    TouchedColumn{"z", Quantity::kPairs},
    TouchedColumn{"p_value", Quantity::kPairs},
    TouchedColumn{"adj_p_value", Quantity::kPairs},
};

/// Names the columns of a row that are beyond the range of the engine.
void MarkBeyondRange(Row& row, const TestReading& reading, std::span<const TouchedColumn> columns) {
    std::vector<std::string> touched;
    for (const auto& [column, quantity] : columns) {
        if (reading.IsBeyondRange(quantity) && !row[column].empty()) touched.emplace_back(column);
    }
    row["beyond_range"] = JoinList(touched, ";");
}

void AppendTest(std::string& text, const Row& common, const TestReading& reading,
                const std::optional<TestFamilyPValues::Adjusted>& adjusted, const ResultDocument& document) {
    Row row = common;
    row["row"] = "test";
    row["n"] = reading.n;
    row["n_total"] = reading.totalN;
    row["direction"] = reading.direction.Text();
    if (adjusted) {
        row["p_holm"] = ExactText(adjusted->holm);
        row["p_bh"] = ExactText(adjusted->benjaminiHochberg);
    }
    row["p_adjusted"] = reading.supplement.adjustedP;
    row["decision"] = reading.decision;
    std::vector<std::string> codes;
    for (const TestReading::Note& note : reading.notes) codes.push_back(std::to_string(note.code));
    row["messages"] = JoinList(codes, ";");
    const StatisticSet* const leading = reading.Leading();
    const PValue* const decisive = leading == nullptr ? nullptr : leading->Leading();
    if (leading != nullptr) SetStatistics(row, *leading, decisive);
    if (reading.intervals.size() == 1) SetInterval(row, reading.intervals.front(), document);
    MarkBeyondRange(row, reading, kTouchedColumns);
    Append(text, row);

    for (const StatisticSet& set : reading.statistics) {
        for (const PValue& p : set.pValues) {
            if (&p == decisive) continue;
            Row other = common;
            other["row"] = "p";
            SetStatistics(other, set, &p);
            MarkBeyondRange(other, reading, kTouchedColumns);
            Append(text, other);
        }
    }
    if (reading.intervals.size() < 2) return;
    for (const Interval& interval : reading.intervals) {
        Row other = common;
        other["row"] = "interval";
        SetInterval(other, interval, document);
        MarkBeyondRange(other, reading, kTouchedColumns);
        Append(text, other);
    }
}

void AppendComparisons(std::string& text, const Row& common, const TestReading& reading) {
    const std::vector<Number>& adjusted = reading.supplement.adjustedPairs;
    for (std::size_t i = 0; i < reading.pairs.size(); ++i) {
        const PairComparison& pair = reading.pairs[i];
        Row row = common;
        if (i < adjusted.size()) row["p_adjusted"] = adjusted[i];
        row["row"] = "pair";
        row["sample1"] = pair.first;
        row["sample2"] = pair.second;
        row["statistic"] = pair.statistic;
        row["std_error"] = pair.standardError;
        row["z"] = pair.standardized;
        row["p_value"] = pair.p;
        row["adj_p_value"] = pair.adjustedP;
        MarkBeyondRange(row, reading, kTouchedPairColumns);
        Append(text, row);
    }
    for (const HomogeneousSubset& subset : reading.subsets) {
        Row row = common;
        row["row"] = "subset";
        row["sample1"] = JoinList(subset.members, ";");
        row["statistic"] = subset.statistic;
        row["p_value"] = subset.p;
        row["adj_p_value"] = subset.adjustedP;
        Append(text, row);
    }
}

/// What the document doesn't have: a row for each group or field, for each effect and for each further significance.
void AppendSupplement(std::string& text, const Row& common, const Supplement& supplement, const std::string& level) {
    for (const SampleSummary& sample : supplement.samples) {
        Row row = common;
        row["row"] = "sample";
        row["sample1"] = sample.name;
        row["n"] = sample.n;
        row["missing"] = sample.missing;
        row["q1"] = sample.firstQuartile;
        row["median"] = sample.median;
        row["q3"] = sample.thirdQuartile;
        row["conf_low"] = sample.medianLower;
        row["conf_high"] = sample.medianUpper;
        if (!sample.medianLower.empty()) row["conf_level"] = level;
        for (const SampleLetters& letters : supplement.letters) {
            if (letters.name == sample.name) row["letters"] = letters.letters;
        }
        Append(text, row);
    }
    for (const EffectSize& effect : supplement.effects) {
        Row row = common;
        row["row"] = "effect";
        row["part"] = effect.key;
        row["sample1"] = effect.first;
        row["sample2"] = effect.second;
        row["estimate"] = effect.value;
        row["conf_low"] = effect.lower;
        row["conf_high"] = effect.upper;
        if (!effect.lower.empty()) row["conf_level"] = level;
        Append(text, row);
    }
    for (const SuppliedPValue& p : supplement.pValues) {
        Row row = common;
        row["row"] = "p";
        row["statistic"] = p.statistic;
        row["z"] = p.standardized;
        row["p_value"] = p.value;
        row["p_kind"] = p.kind;
        row["p_tails"] = p.alternative == "two-sided" ? "2" : "1";
        row["alternative"] = p.alternative;
        row["conf_low"] = p.lower;
        row["conf_high"] = p.upper;
        if (!p.lower.empty()) row["conf_level"] = kLevelOfEstimates;
        Append(text, row);
    }
}

/// Each row names all fields of its test, so that the text grows with the square of their number. Throws an
/// `InputError` for more than anybody would read.
void CheckSize(const ResultReading& result) {
    constexpr std::size_t kMebibyte = std::size_t{1} << 20;
    constexpr std::size_t kMostBytesOfNames = 512 * kMebibyte;
    std::size_t bytes = 0;
    for (const TestReading& reading : result.tests) {
        std::size_t ofRow = 0;
        for (const std::string& field : reading.fields) ofRow += field.size() + 1;
        bytes += ofRow * (reading.samples.size() + reading.pairs.size());
        if (bytes <= kMostBytesOfNames) continue;
        throw InputError("CSV: each row of " + reading.name + " names its " + std::to_string(reading.fields.size()) +
                         " fields, more than " + std::to_string(kMostBytesOfNames / kMebibyte) +
                         " MiB in all; expected fewer fields, or another format");
    }
}

}  // namespace

std::string CsvCell(const std::string& cell) {
    if (cell.find_first_of(",\"\r\n") == std::string::npos) return cell;
    std::string quoted = "\"";
    for (const char c : cell) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    return quoted + '"';
}

std::string CsvReport(const ResultReading& result, const MessageCatalogue& texts) {
    CheckSize(result);
    std::string text;
    for (const std::string_view column : kColumns) text += (text.empty() ? "" : ",") + std::string(column);
    text += '\n';
    const std::vector<TestReading>& readings = result.tests;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        const Row common = CommonCells(readings[i], i + 1, texts.Test(readings[i].name), result.document);
        AppendTest(text, common, readings[i], result.family.tests[i], result.document);
        AppendComparisons(text, common, readings[i]);
        AppendSupplement(text, common, readings[i].supplement, result.document.confidenceLevel);
    }
    return text;
}

}  // namespace tarn
