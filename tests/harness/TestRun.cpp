#include "tests/harness/TestRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>
#include <utility>

#include "catalogue/TARNFactory.h"
#include "support/QKVecValue.h"
#include "tests/harness/ArithmeticComparison.h"

namespace harness {

RowStream::RowStream(std::vector<std::vector<double>> rows) {
    for (const std::vector<double>& row : rows) {
        Record record(row.size());
        std::copy(row.begin(), row.end(), record.begin());
        records_.push_back(std::move(record));
    }
}

Record* RowStream::Next() {
    ++nextCount_;
    return &records_[next_++];
}

int RowStream::Rewind() {
    ++rewindCount_;
    next_ = 0;
    return 0;
}

ColumnStream::ColumnStream(const std::vector<std::vector<double>>& rows)
    : RowStream(rows), recordCount_(rows.size()), columns_(rows.empty() ? 0 : rows.front().size()) {
    for (std::size_t field = 0; field < columns_.size(); ++field) {
        for (const std::vector<double>& row : rows) columns_[field].push_back(row[field]);
    }
}

Fields& Fields::Continuous(const std::string& name, const std::string& label) {
    list_.AddNewVar(std::make_shared<QKContVar>(name, label));
    return *this;
}

Fields& Fields::Numeric(const std::string& name, std::vector<double> categories, bool ordinal) {
    std::vector<QKCatVar::NumericCategory> table;
    for (const double value : categories) table.push_back({value, ""});
    list_.AddNewVar(std::make_shared<QKCatVar>(name, "", ordinal, std::move(table)));
    return *this;
}

Fields& Fields::Text(const std::string& name, std::vector<std::string> categories, bool ordinal) {
    std::vector<QKCatVar::StringCategory> table;
    for (std::string& value : categories) table.push_back({std::move(value), ""});
    list_.AddNewVar(std::make_shared<QKCatVar>(name, "", ordinal, std::move(table)));
    return *this;
}

Fields& Fields::Other(const std::string& name) {
    list_.AddNewVar(std::make_shared<QKContVar>(name, "", DateType::kNone, FieldKind::kOther));
    return *this;
}

Fields& Fields::Weight(const std::string& name) {
    list_.SetFreqWeightIndex(list_.AddNewVar(std::make_shared<QKContVar>(name, "")));
    return *this;
}

Outcome RunStream(const QKSettings& settings, Fields& fields, MultiPassRecordIter& stream, ProgressListener* listener,
                  QKQueryCancel* cancel) {
    TARNFactory factory;
    QKSettings own = settings;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(own, fields.List()));
    algorithm->SetProgressListener(listener);
    algorithm->SetQueryCancel(cancel);
    Outcome outcome;
    outcome.status = algorithm->Run(stream);
    outcome.complete = algorithm->IsComplete();
    std::ostringstream out;
    outcome.writeStatus = algorithm->WriteResults(out, {});
    outcome.text = out.str();
    if (!outcome.text.empty()) outcome.document = Document(outcome.text);
    return outcome;
}

std::vector<std::vector<double>> WeightyRows(Fields& fields, const std::vector<std::vector<double>>& rows) {
    const int weight = fields.List().GetFreqWeightIndex();
    if (weight == QKVarList::kNoWeight) return rows;
    std::vector<std::vector<double>> weighty;
    std::ranges::copy_if(rows, std::back_inserter(weighty), [&](const std::vector<double>& row) {
        return std::trunc(row[static_cast<std::size_t>(weight)]) != 0;
    });
    return weighty;
}

namespace {

Outcome RunRows(const QKSettings& settings, Fields& fields, const std::vector<std::vector<double>>& rows) {
    RowStream stream(rows);
    return RunStream(settings, fields, stream);
}

/// The same run with extended arithmetic gives the same document, but for the elements that say that they are another.
void ExpectTheSameElements(const Outcome& defined, const Outcome& extended) {
    constexpr double kMostCancelled = 1e-6;  // the data of some tests are made so that sums cancel
    EXPECT_EQ(extended.status.GetErrorCode(), defined.status.GetErrorCode());
    EXPECT_EQ(extended.complete, defined.complete);
    EXPECT_EQ(extended.document.TestCount(), defined.document.TestCount());
    if (extended.document.TestCount() != defined.document.TestCount()) return;
    for (int i = 0; i < defined.document.TestCount(); ++i) {
        const Table test = extended.document.Test(i);
        const std::vector<std::string> found =
            DifferencesByArithmetic(defined.document.Test(i).Node(), test.Node(), kMostCancelled);
        if (test.Attribute("arithmetic").empty()) {
            EXPECT_TRUE(found.empty()) << "element " << i << "\n" << (found.empty() ? "" : found.front());
        }
    }
}

/// Extended, a record of weight 0 isn't there.
void ExpectTheSameExtended(const Outcome& defined, const QKSettings& settings, Fields& fields,
                           const std::vector<std::vector<double>>& rows) {
    QKSettings asked = settings;
    asked.AddSetting("extendedArithmetic", true);
    const Outcome extended = RunRows(asked, fields, rows);
    const std::vector<std::vector<double>> weighty = WeightyRows(fields, rows);
    if (weighty.size() == rows.size()) return ExpectTheSameElements(defined, extended);
    const Outcome without = RunRows(asked, fields, weighty);
    EXPECT_EQ(extended.status.GetErrorCode(), without.status.GetErrorCode());
    EXPECT_EQ(extended.text, without.text);
    ExpectTheSameElements(RunRows(settings, fields, weighty), without);
}

}  // namespace

Outcome Run(const QKSettings& settings, Fields& fields, const std::vector<std::vector<double>>& rows,
            ProgressListener* listener, QKQueryCancel* cancel) {
    RowStream stream(rows);
    Outcome outcome = RunStream(settings, fields, stream, listener, cancel);
    const bool isWatched = listener != nullptr || cancel != nullptr;
    if (!isWatched && settings.FindSetting("extendedArithmetic") == nullptr) {
        ExpectTheSameExtended(outcome, settings, fields, rows);
    }
    return outcome;
}

void AddListTest(QKSettings& settings, const std::string& test, const std::vector<std::string>& names) {
    QKSettings entry;
    AddVecSetting(entry, "variableName", names, false);
    settings.AddSetting(test, entry);
}

}  // namespace harness
