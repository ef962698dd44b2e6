#include "host/engine/InputNotes.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "host/InputError.h"
#include "host/TextList.h"
#include "host/table/CellValue.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

/// As many digits as a sum of decimal weights has without its rounding errors.
std::string Number(double number) {
    char text[32];
    std::snprintf(text, sizeof text, "%.12g", number);
    return text;
}

std::string Records(std::size_t count) {
    return Number(static_cast<double>(count)) + (count == 1 ? " record" : " records");
}

}  // namespace

std::string WeightNote(const Table& table, WeightRule rule) {
    const std::optional<WeightCounts> counts = CountWeights(table, rule);
    if (!counts) return "";
    const auto& [field, used, changed, vanished, zero, negative, missing, before, after] = *counts;
    if (changed + missing + negative + vanished + zero == 0) return "";
    const bool areDropped = used == WeightRule::kRounded;
    const std::string verb = areDropped ? " rounded" : " cut";
    std::vector<std::string> parts;
    if (changed > 0) parts.push_back(Records(changed) + verb + " to whole numbers");
    if (vanished > 0) parts.push_back(Records(vanished) + verb + " to 0");
    if (zero > 0) parts.push_back(Records(zero) + " of weight 0");
    if (negative > 0) {
        parts.push_back(Records(negative) + " with a negative weight" +
                        (areDropped ? " left out" : ", which is subtracted"));
    }
    if (missing > 0) {
        parts.push_back(
            Records(missing) + " without a weight" +
            (areDropped ? " left out" : ", which the engine takes for -2147483648, so that no count with it is right"));
    }
    return "weights of " + field + ": " + JoinList(parts, ", ") + ", of " +
           Number(static_cast<double>(table.RowCount())) + " in all; the weights add up to " + Number(before) +
           " and count as " + Number(after);
}

std::string RepeatedCasesNote(const Table& table, const std::string& caseIdField,
                              const std::vector<std::string>& fields) {
    const int index = table.FindColumn(caseIdField);
    if (index == Table::kNoColumn || fields.empty()) return "";
    const double missing =
        table.Columns()[static_cast<std::size_t>(index)].IsCategorical() ? kMissingCategory : kMissingNumber;
    std::unordered_map<double, std::size_t> recordsOf;
    for (const double id : table.Cells(static_cast<std::size_t>(index))) {
        if (id != missing) ++recordsOf[id];
    }
    std::size_t repeated = 0;
    std::size_t records = 0;
    for (const auto& [id, count] : recordsOf) {
        if (count < 2) continue;
        ++repeated;
        records += count;
    }
    if (repeated == 0) return "";
    return Number(static_cast<double>(repeated)) + " of " + Number(static_cast<double>(recordsOf.size())) +
           " values of " + caseIdField + " occur more than once (" + Records(records) + " in all), while " +
           JoinList(fields, ", ") + (fields.size() == 1 ? " is" : " are") +
           " tested as if every record were another case; for repeated measurements give each of them a field of its "
           "own, one row a case, and use --related";
}

std::vector<std::string> UnusedCategoryNotes(const Table& table, const std::vector<FieldOrder>& orders) {
    std::vector<std::string> notes;
    for (const FieldOrder& order : orders) {
        const int index = table.FindColumn(order.field);
        if (index == Table::kNoColumn) continue;
        const Column& column = table.Columns()[static_cast<std::size_t>(index)];
        std::vector<bool> occurs(column.categories.size());
        for (const double category : table.Cells(static_cast<std::size_t>(index))) {
            if (category != kMissingCategory) occurs[static_cast<std::size_t>(category)] = true;
        }
        std::vector<std::string> unused;
        for (std::size_t i = 0; i < occurs.size(); ++i) {
            if (!occurs[i]) unused.push_back(ShownCategory(column, column.categories[i]));
        }
        if (unused.empty()) continue;
        notes.push_back("no record has " + JoinList(unused, ", ") + " in " + column.name +
                        ", which the order of its categories names");
    }
    return notes;
}

namespace {

/// A form of a text that is the same for all texts that a reader takes for one.
std::string Folded(std::string_view text) {
    std::string folded(TrimBlanks(text));
    for (char& c : folded) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return folded;
}

/// The first few of many.
std::string Few(const std::vector<std::string>& texts) {
    constexpr std::size_t kMost = 6;
    if (texts.size() <= kMost) return JoinList(texts);
    const std::vector<std::string> first(texts.begin(), texts.begin() + kMost);
    return JoinList(first) + " and " + std::to_string(texts.size() - kMost) + " more";
}

}  // namespace

std::vector<std::string> WordsAmongNumbers(const Column& column) {
    std::vector<std::string> words;
    if (!column.IsText() || !column.isInferred) return words;
    for (const Category& category : column.categories) {
        if (!ParseDecimal(TrimBlanks(category.text))) words.push_back(Quoted(category.text));
    }
    constexpr std::size_t kHalf = 2;
    const bool areFew = words.size() * kHalf < column.categories.size();
    return areFew ? words : std::vector<std::string>();
}

std::vector<std::string> CategoryNotes(const Column& column) {
    std::vector<std::string> notes;
    const std::vector<std::string> words = WordsAmongNumbers(column);
    if (!words.empty()) {
        notes.push_back(column.name + " is read as words and not as numbers, since it has " + Few(words) +
                        "; if they stand for missing values, name them in the missingValues of --fields");
    }
    std::map<std::string, std::vector<std::string>> alike;
    for (const Category& category : column.categories) {
        if (column.IsText()) alike[Folded(category.text)].push_back(Quoted(category.text));
    }
    for (const auto& [folded, texts] : alike) {
        if (texts.size() < 2) continue;
        notes.push_back(Few(texts) + " of " + column.name +
                        " differ in nothing but case or blanks and count as different categories");
    }
    std::vector<std::string> unlisted;
    for (std::size_t i = column.listedCount; i < column.categories.size(); ++i) {
        unlisted.push_back(ShownCategory(column, column.categories[i]));
    }
    if (column.listedCount > 0 && !unlisted.empty()) {
        notes.push_back(column.name + " has " + Few(unlisted) +
                        ", which its description doesn't list; they count as categories behind the listed ones");
    }
    return notes;
}

std::string ShownMissingTexts(std::vector<MissingText> texts) {
    std::ranges::stable_sort(texts, std::ranges::greater(), &MissingText::count);
    std::vector<std::string> parts;
    for (const MissingText& missing : texts) {
        parts.push_back((missing.text.empty() ? "empty" : Quoted(missing.text)) + " " + std::to_string(missing.count));
    }
    return JoinList(parts);
}

std::string MissingTextsNote(const Table& table, const std::vector<std::string>& fields) {
    std::vector<MissingText> all;
    bool isUsual = true;
    for (const std::string& field : fields) {
        const int index = table.FindColumn(field);
        if (index == Table::kNoColumn) continue;
        for (const MissingText& missing : table.Columns()[static_cast<std::size_t>(index)].missingTexts) {
            isUsual = isUsual && (missing.text.empty() || missing.text == "NA");
            const auto known = std::ranges::find(all, missing.text, &MissingText::text);
            if (known == all.end()) {
                all.push_back(missing);
            } else {
                known->count += missing.count;
            }
        }
    }
    return isUsual ? "" : "missing: " + ShownMissingTexts(all);
}

std::string TiesNote(const Table& table, const std::string& field, const std::string& test) {
    const int index = table.FindColumn(field);
    if (index == Table::kNoColumn) return "";
    const bool isCategorical = table.Columns()[static_cast<std::size_t>(index)].IsCategorical();
    const bool isWeighted = table.WeightIndex() != Table::kNoColumn;
    const auto values = table.Cells(static_cast<std::size_t>(index));
    const auto weights = table.Cells(static_cast<std::size_t>(isWeighted ? table.WeightIndex() : index));
    std::unordered_map<double, double> casesOf;
    for (std::size_t row = 0; row < values.size(); ++row) {
        if (values[row] == (isCategorical ? kMissingCategory : kMissingNumber)) continue;
        // A record of weight 2 is two cases with one value. One that is dropped for its weight is none.
        casesOf[values[row]] += isWeighted ? std::max(0.0, std::round(weights[row])) : 1;
    }
    double tied = 0;
    for (const auto& [value, count] : casesOf) tied += count > 1 ? count : 0;
    if (tied == 0) return "";
    return Number(tied) + (isWeighted ? " cases" : " records") + " of " + field +
           " share their value with another one, while the significance of " + test +
           " holds for different values only; equal values can make it far too small";
}

}  // namespace tarn
