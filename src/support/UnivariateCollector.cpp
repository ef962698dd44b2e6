#include "support/UnivariateCollector.h"

#include <exception>
#include <future>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

#include "records/TARNSortedDataSet.h"

UnivariateCollector::UnivariateCollector(const QKTarn::TarnMemoIterator& memoIterator, const QKVarList& fields)
    : memo(memoIterator), varList(&fields) {}

std::unique_ptr<QKUnivariateVariable> UnivariateCollector::MakeVariable(int field) const {
    const IQKVariable* variable = varList->GetVarAt(field);
    if (variable == nullptr) return nullptr;
    if (variable->GetKind() == FieldKind::kContinuous) {
        return std::make_unique<QKContUnivariateVariable>(field, weightIndex);
    }
    if (FieldKind::IsCategorical(variable->GetKind())) {
        return std::make_unique<QKCateUnivariateVariable>(field, weightIndex, variable->GetCategoryCount());
    }
    return nullptr;
}

bool UnivariateCollector::Request(int field, int code) {
    std::unique_ptr<QKUnivariateVariable>* variable = nullptr;
    try {
        variable = &variables[field];
        if (*variable == nullptr) *variable = MakeVariable(field);
    } catch (const std::exception&) {
        return false;
    }
    if (*variable == nullptr) return false;

    const bool wantsQuantiles = code == Statistic::kMedian || code == Statistic::kQuantiles || code == Statistic::kAll;
    if (wantsQuantiles && FindContinuous(field) != nullptr) {
        if (sortedData == nullptr) return false;
        (*variable)->SetSortedData(sortedData);
        sortedData->ExpectReader(field);
    }
    (*variable)->AddStatistic(code);
    return true;
}

void UnivariateCollector::SetWeight(int index) {
    weightIndex = index;
    for (const auto& [field, variable] : variables) {
        if (variable != nullptr) variable->SetWeightIndex(index);
    }
}

QKStatus UnivariateCollector::Compute() {
    QKStatus status;
    if (memo.Store()->Count() == 0) return status;
    bool again = true;
    while (again) {
        memo.Rewind();
        if (status.IsOK()) status = RunPass();
        again = EndPassOfAll(status);
    }
    return status;
}

namespace {

using FieldVariable = std::pair<std::size_t, QKUnivariateVariable*>;

/// Adds the records from the iterator on to the variables. An error stops all of them.
QKStatus AddRecords(QKTarn::TarnMemoIterator records, std::span<const FieldVariable> variables) {
    while (records.HasMore()) {
        const Record& record = *records.Next();
        for (const auto& [field, variable] : variables) {
            if (variable->IsMissing(record[field])) continue;
            const QKStatus status = variable->AddRecord(record);
            if (!status.IsOK()) return status;
        }
    }
    return QKStatus();
}

}  // namespace

QKStatus UnivariateCollector::RunPass() {
    // Below this a thread costs more than it saves.
    constexpr std::size_t kSharedFromValues = 100'000;

    // Who needs the pass does not change within it, so it is not asked again for every record.
    std::vector<FieldVariable> needing;
    for (const auto& [field, variable] : variables) {
        if (variable != nullptr && variable->NeedsPass()) {
            needing.emplace_back(static_cast<std::size_t>(field), variable.get());
        }
    }
    std::span<const FieldVariable> mine = needing;
    std::future<QKStatus> others;
    const std::size_t values = needing.size() * static_cast<std::size_t>(memo.Store()->Count());
    if (threads > 1 && needing.size() > 1 && values >= kSharedFromValues) {
        // No variable sees another one, so a second thread may take half of them.
        const std::span<const FieldVariable> half = mine.subspan(mine.size() / 2);
        try {
            others = std::async(std::launch::async, [records = memo, half] { return AddRecords(records, half); });
            mine = mine.first(mine.size() / 2);
        } catch (const std::system_error&) {
            // There is no second thread to be had.
        }
    }
    const QKStatus status = AddRecords(memo, mine);
    const QKStatus statusOfOthers = others.valid() ? others.get() : QKStatus();
    return status.IsOK() ? statusOfOthers : status;
}

/// Whether another pass is wanted. The walk ends at the first field that needs no pass, and the fields behind it
/// then get no end of a second pass either, so that their zeros make no interval; documents depend on it.
bool UnivariateCollector::EndPassOfAll(QKStatus& status) {
    bool again = false;
    for (const auto& [field, variable] : variables) {
        if (!status.IsOK()) break;
        if (variable == nullptr) continue;
        if (!variable->NeedsPass()) break;
        status = variable->EndPass();
        again = again || variable->NeedsPass();
    }
    return again;
}

const QKUnivariateVariable* UnivariateCollector::Find(int field) const {
    const auto found = variables.find(field);
    return found == variables.end() ? nullptr : found->second.get();
}

const QKContUnivariateVariable* UnivariateCollector::FindContinuous(int field) const {
    return dynamic_cast<const QKContUnivariateVariable*>(Find(field));
}

const QKCateUnivariateVariable* UnivariateCollector::FindCategorical(int field) const {
    return dynamic_cast<const QKCateUnivariateVariable*>(Find(field));
}
