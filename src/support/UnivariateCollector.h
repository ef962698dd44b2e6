#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "machine/WorkShare.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"
#include "records/InitialDataReader.h"
#include "support/Arithmetic.h"
#include "support/QKUnivariateVariable.h"

class TARNSortedDataSet;

/// The descriptive store of a run: filled with requests while the tests are planned, computed once in passes over
/// the memory store, read by the tests and by the document through `UnivariateResults`.
class UnivariateCollector {
 public:
    static constexpr int kNoWeight = -1;

    /// Borrows the fields; the store of `memo` is read in `Compute` only.
    UnivariateCollector(const QKTarn::TarnMemoIterator& memo, const QKVarList& varList);

    /// Says in which of the two ways of `Arithmetic` the records count. Called before the first request.
    void Extend(bool extended) { isExtended = extended; }

    /// Asks for a statistic (a code of `Statistic`) of a field. False if the field got no record of its own, or if
    /// quantiles of a continuous field are asked for before there is a sorted view of anything; true otherwise,
    /// even where the field has no such statistic. The textbook's way refuses no quantiles for which there are views.
    bool Request(int field, int code);

    /// The weight field from now on, for the records that exist as well.
    void SetWeight(int index);
    /// Where quantiles find sorted views; borrowed, needed until `Compute` is over.
    void SetSortedData(TARNSortedDataSet* views) { sortedData = views; }
    /// The same for those that are asked for before, where none is refused.
    void OfferSortedData(TARNSortedDataSet* views) { offeredData = views; }

    /// Whether any continuous field wants quantiles, for which its view has to be sorted before `Compute`.
    bool WantsQuantiles() const;

    /// Fills all records, and does the jobs that are given in `beside`, on all threads. A field whose record ends in an
    /// error stops the others. Of no use once the work was stopped. What a job throws comes out here.
    QKStatus Compute(const WorkShare& work, const std::vector<std::function<void()>>& beside = {});
    /// The same on the calling thread alone.
    QKStatus Compute() { return Compute(WorkShare()); }

    /// The record of a field, owned by the store; null if there is none.
    const QKUnivariateVariable* Find(int field) const;
    /// The same for a field of that family alone.
    const QKContUnivariateVariable* FindContinuous(int field) const;
    const QKCateUnivariateVariable* FindCategorical(int field) const;

 private:
    std::unique_ptr<QKUnivariateVariable> MakeVariable(int field);
    bool RequestQuantiles(int field);
    std::vector<std::vector<int>> MakeJobs(std::size_t threads) const;
    void AddColumns(const std::vector<int>& fields, const WorkShare& work) const;
    bool EndPassOfAll(QKStatus& status);

    QKTarn::TarnMemoIterator memo;
    bool isExtended = false;
    std::map<int, Arithmetic> arithmetics;  // of the records, so that each says for itself what came of it
    int weightIndex = kNoWeight;
    const QKVarList* varList;
    std::map<int, std::unique_ptr<QKUnivariateVariable>> variables;
    TARNSortedDataSet* sortedData = nullptr;
    TARNSortedDataSet* offeredData = nullptr;
};
