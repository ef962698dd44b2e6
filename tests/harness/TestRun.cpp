#include "tests/harness/TestRun.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "catalogue/TARNFactory.h"
#include "support/QKVecValue.h"

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

Outcome Run(QKSettings settings, Fields& fields, std::vector<std::vector<double>> rows, ProgressListener* listener,
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

void AddListTest(QKSettings& settings, const std::string& test, const std::vector<std::string>& names) {
    QKSettings entry;
    AddVecSetting(entry, "variableName", names, false);
    settings.AddSetting(test, entry);
}

}  // namespace harness
