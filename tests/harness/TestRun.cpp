#include "tests/harness/TestRun.h"

#include <gtest/gtest.h>

#include <algorithm>
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

namespace {

Outcome RunOnce(QKSettings settings, Fields& fields, std::vector<std::vector<double>> rows, ProgressListener* listener,
                QKQueryCancel* cancel) {
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(settings, fields.List()));
    algorithm->SetProgressListener(listener);
    algorithm->SetQueryCancel(cancel);
    RowStream stream(std::move(rows));
    Outcome outcome;
    outcome.status = algorithm->Run(stream);
    outcome.complete = algorithm->IsComplete();
    std::ostringstream out;
    outcome.writeStatus = algorithm->WriteResults(out, {});
    outcome.text = out.str();
    if (!outcome.text.empty()) outcome.document = Document(outcome.text);
    return outcome;
}

/// The same run with extended arithmetic gives the same document, but for the elements that say that they are another.
void ExpectTheSameExtended(const Outcome& defined, QKSettings settings, Fields& fields,
                           std::vector<std::vector<double>> rows) {
    constexpr double kMostCancelled = 1e-6;  // the data of some tests are made so that sums cancel
    settings.AddSetting("extendedArithmetic", true);
    const Outcome extended = RunOnce(settings, fields, std::move(rows), nullptr, nullptr);
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

}  // namespace

Outcome Run(const QKSettings& settings, Fields& fields, const std::vector<std::vector<double>>& rows,
            ProgressListener* listener, QKQueryCancel* cancel) {
    Outcome outcome = RunOnce(settings, fields, rows, listener, cancel);
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
