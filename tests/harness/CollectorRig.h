#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "records/TARNSortedDataSet.h"
#include "support/UnivariateCollector.h"
#include "tests/harness/TestRun.h"

/// A memory store filled with rows, with a descriptive store over it, put together as a run does it. Borrows the
/// fields.
class CollectorRig {
 public:
    CollectorRig(harness::Fields& fields, std::vector<std::vector<double>> rows)
        : stream(std::move(rows)), reader(&stream, false, &none, &fields.List()) {
        static_cast<void>(reader.ReadAll());  // an empty table is an error of the run, not of these tests
        sorted = std::make_unique<TARNSortedDataSet>(reader.Begin());
        collector = std::make_unique<UnivariateCollector>(reader.Begin(), fields.List());
    }

    /// Asks for the sorted view of a field, as a run does when a sorted test is planned.
    void Sort(int field) {
        sorted->Register(field);
        collector->SetSortedData(sorted.get());
    }
    bool Request(int field, int code) { return collector->Request(field, code); }
    QKStatus Compute() {
        const QKStatus built = sorted->Build();
        return built.IsError() ? built : collector->Compute();
    }

    harness::RowStream stream;
    std::vector<int> none;
    QKTarn::InitialDataReader reader;
    std::unique_ptr<TARNSortedDataSet> sorted;
    std::unique_ptr<UnivariateCollector> collector;
};
