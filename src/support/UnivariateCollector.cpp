#include "support/UnivariateCollector.h"

#include <algorithm>
#include <cstdint>
#include <exception>

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

bool UnivariateCollector::WantsQuantiles() const {
    return std::any_of(variables.begin(), variables.end(), [](const auto& entry) {
        const auto* const variable = dynamic_cast<const QKContUnivariateVariable*>(entry.second.get());
        return variable != nullptr && variable->WantsQuantiles();
    });
}

/// No variable sees another one, so each job takes one of them through all its passes. Only where quantiles are wanted
/// may the end of a pass fail, which then has to stop the variables behind that one before their next pass.
QKStatus UnivariateCollector::Compute(const WorkShare& work, const std::vector<std::function<void()>>& beside) {
    QKStatus status;
    if (memo.Store()->Count() == 0) return status;
    const bool inTurn = WantsQuantiles();
    std::vector<int> fields = FieldsThatNeedAPass();
    bool again = work.Run(beside.size() + fields.size(), [&](std::size_t job) {
        if (job < beside.size()) return beside[job]();
        const int field = fields[job - beside.size()];
        AddColumn(field);
        if (inTurn) return;
        QKUnivariateVariable& variable = *variables.at(field);
        static_cast<void>(variable.EndPass());  // it fails for want of a sorted view alone
        if (variable.NeedsPass()) AddColumn(field);
    });
    if (again) again = EndPassOfAll(status) && inTurn;
    while (again) {
        fields = FieldsThatNeedAPass();
        if (status.IsOK()) work.Run(fields.size(), [&](std::size_t job) { AddColumn(fields[job]); });
        again = !work.IsStopped() && EndPassOfAll(status);
    }
    return status;
}

std::vector<int> UnivariateCollector::FieldsThatNeedAPass() const {
    std::vector<int> fields;
    for (const auto& [field, variable] : variables) {
        if (variable != nullptr && variable->NeedsPass()) fields.push_back(field);
    }
    return fields;
}

void UnivariateCollector::AddColumn(int field) const {
    const QKTarn::ColumnStore& store = memo.Store()->Columns();
    const std::int32_t* const weights =
        weightIndex < 0 ? nullptr : store.WholeColumn(static_cast<std::size_t>(weightIndex));
    variables.at(field)->AddColumn(store.ColumnSpan(static_cast<std::size_t>(field)), weights);
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
