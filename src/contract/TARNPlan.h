#pragma once

#include <memory>
#include <string>

#include "contract/TARNTest.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"

/// What a plan builder may ask of the planner, and no more.
class TARNPlan {
 public:
    static constexpr int kNoWeight = -1;
    static constexpr int kNoCaseId = -1;

    virtual ~TARNPlan() = default;

    virtual double GetSigLevel() const = 0;
    virtual double GetConfidenceLevel() const = 0;
    /// Index of the frequency-weight field; `kNoWeight` if there is none.
    virtual int GetWeightIndex() const = 0;
    /// Index of the field that names the cases; `kNoCaseId` if there is none.
    virtual int GetCaseIdIndex() const = 0;
    virtual const QKVarList& GetVarList() const = 0;
    /// Whether the statistics of the tests are all that is wanted: nothing is then asked for or made that a plot or a
    /// table of descriptives alone would show.
    virtual bool IsBrief() const = 0;
    /// Whether the run computes beyond the widths of its definition (see `Arithmetic`).
    virtual bool IsExtended() const = 0;

    /// 1, 2 or 3 for a field of that kind. 0 for any other, and then the whole run ends with 220004: the one
    /// failure of a plan builder that does not stay in its test.
    virtual int GetMeasureLevel(const std::string& fieldName) = 0;

    /// Asks the descriptive store for a statistic (a code of `Statistic`); false if it is refused.
    virtual bool Request(int field, int statistic) = 0;
    /// Asks for the records sorted by a field and for nothing else.
    virtual void RegisterSorted(int field) = 0;
    /// Asks for the records sorted by a field, and, unless the run is brief, for the statistics that go with a sorted
    /// field.
    virtual void RequestSorted(int field) = 0;

    /// Gives a test to the worker that reads the records in file order.
    virtual void AddToMainWorker(std::unique_ptr<TARNTest> test) = 0;
    /// Gives a test to the worker that reads the records sorted by `field`. If there is none, one is made, which under
    /// an error status reads them in file order and counts as sorted by -1: tests that failed without a field share
    /// one worker.
    virtual void AddSortedTest(std::unique_ptr<TARNTest> test, int field, const QKStatus& status) = 0;
};
