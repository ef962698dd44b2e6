#include "host/engine/InputNotes.h"

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <unordered_map>

#include "host/TextList.h"

namespace tarn {

namespace {

/// A run is refused for a larger one.
constexpr double kLargestWeight = 2147483647;

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
    if (table.WeightIndex() == Table::kNoColumn) return "";
    std::size_t changed = 0;
    std::size_t missing = 0;
    std::size_t negative = 0;
    std::size_t vanished = 0;
    std::size_t zero = 0;
    double before = 0;
    double after = 0;
    for (std::size_t row = 0; row < table.RowCount(); ++row) {
        const double weight = table.Row(row)[table.WeightIndex()];
        if (weight == kMissingNumber) {
            ++missing;
            continue;
        }
        before += weight;
        if (weight < 0) ++negative;
        if (weight < 0 && rule == WeightRule::kRounded) continue;
        const double used = rule == WeightRule::kRounded ? std::round(weight) : std::trunc(weight);
        after += used <= kLargestWeight ? used : 0;
        if (weight == 0) ++zero;
        if (used == weight) continue;
        ++(used == 0 ? vanished : changed);
    }
    if (changed + missing + negative + vanished + zero == 0) return "";
    const std::string verb = rule == WeightRule::kRounded ? " rounded" : " cut";
    std::vector<std::string> parts;
    if (changed > 0) parts.push_back(Records(changed) + verb + " to whole numbers");
    if (vanished > 0) parts.push_back(Records(vanished) + verb + " to 0");
    if (zero > 0) parts.push_back(Records(zero) + " of weight 0");
    const bool areDropped = rule == WeightRule::kRounded;
    if (negative > 0) {
        parts.push_back(Records(negative) + " with a negative weight" +
                        (areDropped ? " left out" : ", which is subtracted"));
    }
    if (missing > 0) {
        parts.push_back(
            Records(missing) + " without a weight" +
            (areDropped ? " left out" : ", which the engine takes for -2147483648, so that no count with it is right"));
    }
    const std::string& field = table.Columns()[static_cast<std::size_t>(table.WeightIndex())].name;
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
    for (std::size_t row = 0; row < table.RowCount(); ++row) {
        const double id = table.Row(row)[index];
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
        for (std::size_t row = 0; row < table.RowCount(); ++row) {
            const double category = table.Row(row)[index];
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

}  // namespace tarn
