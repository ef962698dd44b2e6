#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/common/QKMV.h"
#include "platform/common/QKStatus.h"
#include "platform/common/Record.h"
#include "platform/common/Truncation.h"
#include "support/Arithmetic.h"
#include "support/Histogram.h"
#include "support/Int32.h"

class TARNSortedDataSet;

/// The statistics that a descriptive record can be asked for.
namespace Statistic {
inline constexpr int kMean = 0;
inline constexpr int kMeanAndStdDev = 1;
inline constexpr int kMin = 2;
inline constexpr int kMax = 3;
/// The median category of a categorical field; quantiles of a continuous one.
inline constexpr int kMedian = 4;
inline constexpr int kQuantiles = 5;
inline constexpr int kHistogram = 6;
inline constexpr int kModeFrequency = 7;
inline constexpr int kFrequencies = 8;
inline constexpr int kAll = 9;
}  // namespace Statistic

/// The descriptive record of one field, filled in passes over the memory store.
class QKUnivariateVariable {
 public:
    virtual ~QKUnivariateVariable() = default;
    /// Asks for a statistic; false, with nothing stored, for one that this kind of field does not have.
    virtual bool AddStatistic(int code) = 0;
    /// Takes one record that is not missing in this field.
    virtual QKStatus AddRecord(const Record& record) = 0;
    virtual QKStatus EndPass() = 0;
    /// Keeps the fifth place of the table; nothing calls it.
    virtual int Reserved() { return 0; }
    /// Borrowed; only quantiles read it.
    virtual void SetSortedData(TARNSortedDataSet* views) { sortedData = views; }
    virtual bool NeedsPass() const = 0;
    virtual void SetWeightIndex(int index) = 0;
    /// Takes the values of the field of many records, of which it passes over those that are missing. `weights`: the
    /// truncated weights of the records; null: each is 1.
    virtual void AddColumn(std::span<const double> values, const std::int32_t* weights) = 0;

    /// Whether a value of the field means missing.
    bool IsMissing(double value) const { return value == missingMarker; }

    /// Sum of the weights seen.
    std::int64_t GetCount() const { return arithmetic->Count(count); }
    /// What came of all that was asked for.
    Departure GetDeparture() const { return arithmetic->GetDeparture(); }

 protected:
    QKUnivariateVariable(double marker, const Arithmetic& by) : arithmetic(&by), missingMarker(marker) {}

    bool Wants(int statistic) const { return (statistics >> statistic & 1u) != 0; }
    void Store(int statistic) { statistics |= 1u << statistic; }

    const Arithmetic* arithmetic;
    std::int64_t count = 0;  // whole
    TARNSortedDataSet* sortedData = nullptr;

 private:
    double missingMarker;
    unsigned statistics = 0;  // one bit per code
};

/// The descriptive record of a continuous field: mean, spread, range, hinges, histogram.
///
/// Moments by a weighted update (Welford, 1962, Technometrics 4, 419-420; West, 1979, Communications of the ACM 22,
/// 532-535); quartiles are hinges (Tukey, 1977, Exploratory Data Analysis). Made with -1 for field and weight it
/// serves a test as a free-standing histogram.
class QKContUnivariateVariable : public QKUnivariateVariable {
 public:
    /// Borrows `by`.
    QKContUnivariateVariable(int field, int weight, const Arithmetic& by = Arithmetic::AsDefined())
        : QKUnivariateVariable(QKMV::Missing(), by),
          fieldIndex(field),
          weightIndex(weight),
          moments{&by},
          histogram(by) {}

    bool AddStatistic(int code) override;
    QKStatus AddRecord(const Record& record) override;
    /// 220005: quantiles are wanted and the field has no sorted view.
    QKStatus EndPass() override;
    bool NeedsPass() const override { return needsPass; }
    void SetWeightIndex(int index) override { weightIndex = index; }
    void AddColumn(std::span<const double> values, const std::int32_t* weights) override;

    /// A record with the values of its field.
    struct Column {
        QKContUnivariateVariable* variable;
        const double* values;
    };
    /// `AddColumn` of several records side by side, which takes hardly longer than one alone: each step of a mean waits
    /// for the one before it. `count`: the values of each column.
    static void AddColumns(std::span<const Column> columns, const std::int32_t* weights, std::size_t count);
    /// How many records are worth being taken together.
    static constexpr std::size_t kMostTogether = 8;

    bool WantsQuantiles() const { return Wants(Statistic::kQuantiles) && sortedData != nullptr; }
    double GetMean() const { return moments.mean; }
    /// What came of the mean, and of the quantiles.
    Departure MeanDeparture() const { return {IsWider(), false}; }
    Departure MedianDeparture() const { return {IsWider(), areQuantilesRefused && !QKMV::IsMissing(median.result)}; }
    double GetStdDev() const { return stdDev; }
    double GetMin() const { return min; }
    double GetMax() const { return max; }
    double GetMedian() const { return median.result; }
    double GetFirstQuartile() const { return firstQuartile.result; }
    double GetThirdQuartile() const { return thirdQuartile.result; }
    const std::vector<HistogramBin>& GetBins() const { return histogram.Bins(); }

    /// Says of a request for quantiles whether it would have been refused as defined. Where each one would have been,
    /// they are the textbook's alone.
    void NoteQuantileRequest(bool isRefused) {
        areQuantilesRefused = isRefused && !areQuantilesDefined;
        areQuantilesDefined = areQuantilesDefined || !isRefused;
    }

    /// The histogram, for a test that fills it by itself.
    Histogram& GetHistogram() { return histogram; }

    /// The steps towards the hinges, for values in ascending order over all calls; none of them missing. `weights`:
    /// null: each is 1; `total`: the sum of all weights. Keeps the range up to date as well.
    void QuantileSteps(const double* values, const std::int32_t* weights, std::size_t size, std::int64_t total);
    /// One such step.
    void QuantileStep(double value, std::int32_t weight, std::int64_t total) {
        QuantileSteps(&value, &weight, 1, total);
    }
    /// After the last step: a hinge that was not reached takes the last value.
    void CloseQuantiles();

 private:
    enum class Phase { kMoments, kHistogram };

    /// The mean with the sum of the squares about it. A weight of 0 isn't guarded: it divides by 0, so that the
    /// deviation is no number, nor is the mean where it comes first. Documents depend on it.
    struct Moments {
        const Arithmetic* arithmetic;
        double mean = 0;
        double m2 = 0;
        std::int64_t weight = 0;
        std::int64_t weightSeen = 0;  // whatever the signs

        /// Several of them side by side.
        static void Add(std::span<Moments* const> together, const double* const* values, const std::int32_t* weights,
                        std::size_t count);

     private:
        template <typename Counter>
        static void AddAll(std::span<Moments* const> lanes, const double* const* values, const std::int32_t* weights,
                           std::size_t count);
        template <std::size_t kLanes, bool kIsWeighted, typename Counter>
        static void AddInLanes(std::span<Moments* const> together, const double* const* values,
                               const std::int32_t* weights, std::size_t count);
    };

    /// Walks up to the value at a position among the weighted values.
    struct QuantileTracker {
        double cumulative = 0;
        double previous = QKMV::Missing();
        double result = QKMV::Missing();

        void Step(double value, double weight, double position);
        void Steps(const double* values, const std::int32_t* weights, std::size_t count, double position);
        void Close();
    };

    bool IsWider() const { return GetCount() != Wrap32(count); }
    bool WantsMoments() const { return phase == Phase::kMoments && Wants(Statistic::kMeanAndStdDev); }
    void AddPresent(const double* values, const std::int32_t* weights, std::size_t count);
    void AddRangeAndCount(const double* values, const std::int32_t* weights, std::size_t count);
    void ExtendRange(double value);
    QKStatus ComputeQuantiles();

    int fieldIndex;
    int weightIndex;
    bool needsPass = true;
    Phase phase = Phase::kMoments;

    Moments moments;
    bool areQuantilesDefined = false;
    bool areQuantilesRefused = false;
    double stdDev = 0;
    double min = QKMV::Missing();
    double max = QKMV::Missing();
    QuantileTracker firstQuartile;
    QuantileTracker median;
    QuantileTracker thirdQuartile;
    Histogram histogram;
};

/// The descriptive record of a categorical field: its frequencies, the mode's and the median category.
class QKCateUnivariateVariable : public QKUnivariateVariable {
 public:
    /// Borrows `by`.
    QKCateUnivariateVariable(int field, int weight, int categories, const Arithmetic& by = Arithmetic::AsDefined());

    bool AddStatistic(int code) override;
    QKStatus AddRecord(const Record& record) override;
    QKStatus EndPass() override;
    bool NeedsPass() const override { return needsPass; }
    void SetWeightIndex(int index) override { weightIndex = index; }
    void AddColumn(std::span<const double> values, const std::int32_t* weights) override;

    int GetCategoryCount() const { return categoryCount; }
    /// The frequency of each category.
    std::vector<std::int64_t> GetFrequencies() const;
    std::int64_t GetModeFrequency() const { return modeFrequency; }
    int GetMedianCategory() const { return medianCategory; }

 private:
    /// The place of the frequency of a category; behind the last one for a value that is none.
    std::size_t PlaceOf(double value) const {
        const auto category = static_cast<std::uint32_t>(TruncateToInt32(value));
        return category < frequencies.size() ? category : frequencies.size();
    }

    int fieldIndex;
    int weightIndex;
    int categoryCount;
    bool needsPass = true;
    std::vector<std::int64_t> frequencies;  // whole
    std::int64_t modeFrequency = 0;
    int medianCategory = 0;
};
