#include "host/analysis/Record.h"

#include <algorithm>
#include <memory>
#include <set>
#include <span>
#include <utility>

#include "host/analysis/BuildFacts.h"
#include "host/report/RunRecord.h"
#include "host/table/DataHash.h"

namespace tarn {

namespace {

/// The columns of a test's own fields. The engine names fields that the table has not, such as copies of others.
std::set<int> ColumnsOf(const TestReading& test, const Table& table) {
    std::set<int> columns;
    for (const std::string& field : test.fields) columns.insert(table.FindColumn(field));
    if (!test.group.empty()) columns.insert(table.FindColumn(test.group));
    columns.erase(Table::kNoColumn);
    return columns;
}

/// The columns whose values count, and those of which it only counts what they miss.
std::vector<HashedColumn> ColumnsUsed(const ResultReading& result, const RecordSource& source) {
    std::set<int> read;
    for (const TestReading& test : result.tests) read.merge(ColumnsOf(test, source.table));
    if (source.table.WeightIndex() != Table::kNoColumn) read.insert(source.table.WeightIndex());
    std::vector<HashedColumn> columns;
    for (const int column : read) columns.push_back({static_cast<std::size_t>(column), true});
    const std::set<int> listwise(source.rule.listwise.begin(), source.rule.listwise.end());
    for (const int column : listwise) {
        if (column != Table::kNoColumn && !read.contains(column)) {
            columns.push_back({static_cast<std::size_t>(column), false});
        }
    }
    return columns;
}

/// Counts who was left out of the tests.
class LeftOut {
 public:
    LeftOut(const RecordSource& source, const DataHash& data) : source_(source), data_(data) {
        for (const int column : source.rule.listwise) {
            if (!HasGaps(column)) continue;
            missesListwise_.resize(source.table.RowCount());
            for (std::size_t row = 0; row < missesListwise_.size(); ++row) {
                if (IsMissing(column, row)) missesListwise_[row] = true;
            }
        }
        if (source.table.WeightIndex() == Table::kNoColumn) return;
        for (const double weight : source.table.Cells(static_cast<std::size_t>(source.table.WeightIndex()))) {
            hasWeight_.push_back(Counts(weight, source.weights));
        }
    }

    RecordedTest Of(const TestReading& test) const {
        RecordedTest recorded{test.name, test.fields, test.group};
        std::set<int> columns = ColumnsOf(test, source_.table);
        std::erase_if(columns, [&](int column) { return !HasGaps(column); });
        const auto misses = [&](std::size_t row) {
            return (!missesListwise_.empty() && missesListwise_[row]) ||
                   std::ranges::any_of(columns, [&](int column) { return IsMissing(column, row); });
        };
        const std::size_t records = source_.table.RowCount();
        const bool areAllThere = columns.empty() && missesListwise_.empty() && hasWeight_.empty();
        for (std::size_t row = 0; row < records && !areAllThere; ++row) {
            if (!hasWeight_.empty() && !hasWeight_[row]) {
                ++recorded.withoutWeight;
            } else if (misses(row)) {
                ++recorded.missing;
            }
        }
        recorded.complete = records - recorded.withoutWeight - recorded.missing;
        return recorded;
    }

 private:
    /// Most fields miss nothing, and need not be looked at again for each of many tests.
    bool HasGaps(int column) const {
        if (column == Table::kNoColumn) return false;
        const std::string& name = source_.table.Columns()[static_cast<std::size_t>(column)].name;
        const auto field = std::ranges::lower_bound(data_.fields, name, {}, &HashedField::name);
        return field == data_.fields.end() || field->name != name || field->missing > 0;
    }
    bool IsMissing(int index, std::size_t row) const {
        const auto column = static_cast<std::size_t>(index);
        const double missing = source_.table.Columns()[column].IsCategorical() ? kMissingCategory : kMissingNumber;
        return source_.table.Cells(column)[row] == missing;
    }

    const RecordSource& source_;
    const DataHash& data_;
    std::vector<bool> hasWeight_;       // of each record; empty without a field of weights
    std::vector<bool> missesListwise_;  // of each record, any field of a listwise analysis; empty where none is missed
};

}  // namespace

CaseRule ListwiseRuleOf(const ResultReading& result, const Table& table, WeightRule way) {
    CaseRule rule;
    if (result.document.missingTreatment != "listwise") return rule;
    if (way == WeightRule::kCut) {
        for (std::size_t i = 0; i < table.ColumnCount(); ++i) rule.listwise.push_back(static_cast<int>(i));
        return rule;
    }
    for (const ResultField& field : result.document.fields) {
        const int column = table.FindColumn(field.name);
        if (column != Table::kNoColumn) rule.listwise.push_back(column);
    }
    return rule;
}

void AddRecord(ResultReading& result, const RecordSource& source, const WorkShare& work) {
    RunRecord record;
    record.version = BuiltVersion();
    record.commit = BuiltCommit();
    record.libraries = LinkedLibraries();
    record.request = source.request;
    record.requestWords = source.requestWords;
    record.file = source.file;
    record.selection = source.selection;
    record.records = source.table.RowCount();
    if (source.isUntouched) {
        record.weights = CountWeights(source.table, source.weights);
        record.data = HashOf(source.table, ColumnsUsed(result, source), work);
        const LeftOut leftOut(source, *record.data);
        record.tests.resize(result.tests.size());
        work.Run(result.tests.size(), [&](std::size_t i) { record.tests[i] = leftOut.Of(result.tests[i]); });
    }
    result.record = std::make_shared<const RunRecord>(std::move(record));
}

}  // namespace tarn
