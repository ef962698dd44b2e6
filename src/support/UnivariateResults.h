#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "support/UnivariateCollector.h"

/// The read-only view of the descriptive store, by field index. What is not there answers with the missing double,
/// -1, null or false, as said at each operation; so does a field of the other family. Readable once the store has been
/// computed; borrows the store. The order of the operations is fixed, from `GetCount` on: there is no virtual
/// destructor before them, so what is derived from this is never owned as this.
class UnivariateResults {
 public:
    explicit UnivariateResults(const UnivariateCollector& collector) : collector_(&collector) {}

    /// Sum of the weights of the records that are not missing in the field; -1 for a field that has no record.
    virtual std::int32_t GetCount(int field) const;
    virtual bool HasVariable(int field) const;
    virtual double GetMean(int field) const;
    virtual double GetMax(int field) const;
    virtual double GetMin(int field) const;
    virtual double GetMedian(int field) const;
    virtual double GetFirstQuartile(int field) const;
    virtual double GetThirdQuartile(int field) const;
    virtual double GetStdDev(int field) const;
    /// The histogram, owned by the store; null for a field that has no continuous record.
    virtual const std::vector<HistogramBin>* GetContinuous(int field) const;
    /// -1 for a field that has no categorical record, as in `GetModeFrequency` and `GetCategoryCount`.
    virtual int GetMedianCategory(int field) const;
    virtual std::int32_t GetModeFrequency(int field) const;
    /// Replaces the map by the frequency of every category; false, the map unchanged, for a field that has no
    /// categorical record.
    virtual bool GetFrequencies(int field, std::map<int, std::int32_t>& frequencies) const;
    virtual int GetCategoryCount(int field) const;

    // ---- Beyond 32 bits ----

    /// `GetCount` in all its digits where the run computes beyond 32 bits, and the same as that where it doesn't.
    std::int64_t GetWideCount(int field) const;
    /// `GetFrequencies` so.
    bool GetWideFrequencies(int field, std::map<int, std::int64_t>& frequencies) const;
    /// What came of the numbers of a field's record; nothing for a field that has none.
    Departure GetDeparture(int field) const;
    /// What came of the mean alone, and of the median.
    Departure GetMeanDeparture(int field) const;
    Departure GetMedianDeparture(int field) const;

 private:
    const UnivariateCollector* collector_;
};
