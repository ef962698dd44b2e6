#include "support/UnivariateCollector.h"

#include <algorithm>
#include <cstdint>
#include <exception>

#include "records/TARNSortedDataSet.h"

UnivariateCollector::UnivariateCollector(const QKTarn::TarnMemoIterator& memoIterator, const QKVarList& fields)
    : memo(memoIterator), varList(&fields) {}

std::unique_ptr<QKUnivariateVariable> UnivariateCollector::MakeVariable(int field) {
    const IQKVariable* variable = varList->GetVarAt(field);
    if (variable == nullptr) return nullptr;
    const bool isContinuous = variable->GetKind() == FieldKind::kContinuous;
    if (!isContinuous && !FieldKind::IsCategorical(variable->GetKind())) return nullptr;
    Arithmetic& own = arithmetics[field];
    own.Extend(isExtended);
    if (isContinuous) return std::make_unique<QKContUnivariateVariable>(field, weightIndex, own);
    return std::make_unique<QKCateUnivariateVariable>(field, weightIndex, variable->GetCategoryCount(), own);
}

bool UnivariateCollector::Request(int field, int code) {
    std::unique_ptr<QKUnivariateVariable>& variable = variables[field];
    if (variable == nullptr) variable = MakeVariable(field);
    if (variable == nullptr) return false;

    const bool wantsQuantiles = code == Statistic::kMedian || code == Statistic::kQuantiles || code == Statistic::kAll;
    if (wantsQuantiles && !RequestQuantiles(field)) return false;
    variable->AddStatistic(code);
    return true;
}

bool UnivariateCollector::RequestQuantiles(int field) {
    auto* const variable = dynamic_cast<QKContUnivariateVariable*>(variables.at(field).get());
    if (variable == nullptr) return true;
    const bool isRefused = sortedData == nullptr;
    TARNSortedDataSet* const views = isRefused && arithmetics[field].WantsTextbook() ? offeredData : sortedData;
    if (views == nullptr) return false;
    if (isRefused) views->Register(field);  // whoever asks may do so afterwards, or never
    variable->NoteQuantileRequest(isRefused);
    variable->SetSortedData(views);
    views->ExpectReader(field);
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

/// No variable sees another one, so each job takes some of them through all their passes. Only where quantiles are
/// wanted may the end of a pass fail, which then has to stop the variables behind that one before their next pass.
QKStatus UnivariateCollector::Compute(const WorkShare& work, const std::vector<std::function<void()>>& beside) {
    QKStatus status;
    if (memo.Store()->Count() == 0) return status;
    const bool inTurn = WantsQuantiles();
    std::vector<std::vector<int>> jobs = MakeJobs(work.Threads());
    bool again = work.Run(beside.size() + jobs.size(), [&](std::size_t job) {
        if (job < beside.size()) return beside[job]();
        const std::vector<int>& fields = jobs[job - beside.size()];
        AddColumns(fields, work);
        if (inTurn) return;
        for (const int field : fields) {
            static_cast<void>(variables.at(field)->EndPass());  // it fails for want of a sorted view alone
        }
        AddColumns(fields, work);
    });
    if (again) again = EndPassOfAll(status) && inTurn;
    while (again) {
        jobs = MakeJobs(work.Threads());
        if (status.IsOK()) work.Run(jobs.size(), [&](std::size_t job) { AddColumns(jobs[job], work); });
        again = !work.IsStopped() && EndPassOfAll(status);
    }
    return status;
}

/// The fields that need a pass: continuous ones some together, though not so many that a thread would have nothing to
/// do, the others one by one.
std::vector<std::vector<int>> UnivariateCollector::MakeJobs(std::size_t threads) const {
    std::vector<int> continuous;
    std::vector<std::vector<int>> jobs;
    for (const auto& [field, variable] : variables) {
        if (variable == nullptr || !variable->NeedsPass()) continue;
        if (FindContinuous(field) != nullptr) {
            continuous.push_back(field);
        } else {
            jobs.push_back({field});
        }
    }
    const std::size_t share = (continuous.size() + threads - 1) / threads;
    const std::size_t together = std::clamp<std::size_t>(share, 1, QKContUnivariateVariable::kMostTogether);
    std::vector<std::vector<int>> ofContinuous;
    for (std::size_t i = 0; i < continuous.size(); ++i) {
        if (i % together == 0) ofContinuous.emplace_back();
        ofContinuous.back().push_back(continuous[i]);
    }
    jobs.insert(jobs.begin(), ofContinuous.begin(), ofContinuous.end());  // the longer ones first
    return jobs;
}

/// Takes fields through a pass, if they need one.
void UnivariateCollector::AddColumns(const std::vector<int>& fields, const WorkShare& work) const {
    constexpr std::size_t kRecordsBetweenQuestions = std::size_t{1} << 16;
    const QKTarn::ColumnStore& store = memo.Store()->Columns();
    const std::int32_t* const weights =
        weightIndex < 0 ? nullptr : store.WholeColumn(static_cast<std::size_t>(weightIndex));
    for (std::size_t begin = 0; begin < store.Count(); begin += kRecordsBetweenQuestions) {
        if (begin > 0 && work.IsStopped()) return;  // before the first ones the share has asked itself
        const std::size_t count = std::min(kRecordsBetweenQuestions, store.Count() - begin);
        const std::int32_t* const someWeights = weights == nullptr ? nullptr : weights + begin;
        std::vector<QKContUnivariateVariable::Column> continuous;
        for (const int field : fields) {
            QKUnivariateVariable* const variable = variables.at(field).get();
            if (!variable->NeedsPass()) continue;
            const double* const values = store.Column(static_cast<std::size_t>(field)) + begin;
            if (auto* const ofNumbers = dynamic_cast<QKContUnivariateVariable*>(variable)) {
                continuous.push_back({ofNumbers, values});
            } else {
                variable->AddColumn({values, count}, someWeights);
            }
        }
        QKContUnivariateVariable::AddColumns(continuous, someWeights, count);
    }
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
