#include "support/QKUnivariateVariable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>

#include "records/TARNSortedDataSet.h"
#include "support/Ascending.h"
#include "support/CaseWeight.h"
#include "support/Int32.h"
#include "vocabulary/StatusCodes.h"

namespace {

/// So few values that what is found out of them first is at hand when they are taken.
constexpr std::size_t kBlock = 1024;

/// Whether any value is such a one. Without a way out before the end, and in lanes, so that several are asked at once.
template <typename Question>
bool HasAny(const double* values, std::size_t count, Question isSuch) {
    constexpr std::size_t kLanes = 4;
    double found[kLanes] = {};
    const std::size_t inLanes = count - count % kLanes;
    for (std::size_t i = 0; i < inLanes; i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) found[lane] = isSuch(values[i + lane]) ? 1.0 : found[lane];
    }
    for (std::size_t i = inLanes; i < count; ++i) found[0] = isSuch(values[i]) ? 1.0 : found[0];
    return std::any_of(std::begin(found), std::end(found), [](double one) { return one > 0; });
}

/// The sum of a total and of what is added, in 32 bits or in 64 that the arithmetic folds.
template <typename Counter>
Counter Sum(Counter total, std::int32_t added, const Arithmetic& arithmetic) {
    if constexpr (sizeof(Counter) == sizeof(std::int32_t)) {
        return Add32(total, added);
    } else {
        return arithmetic.Count(total + added);
    }
}

}  // namespace

// ---- Continuous fields ----

bool QKContUnivariateVariable::AddStatistic(int code) {
    switch (code) {
        case Statistic::kMean:
        case Statistic::kMeanAndStdDev:
            Store(Statistic::kMeanAndStdDev);
            return true;
        case Statistic::kMin:
        case Statistic::kMax:
            Store(code);
            return true;
        case Statistic::kMedian:
        case Statistic::kQuantiles:
            Store(Statistic::kQuantiles);
            return true;
        case Statistic::kHistogram:
            for (const int stored : {Statistic::kMax, Statistic::kMin, Statistic::kHistogram}) Store(stored);
            return true;
        case Statistic::kAll:
            for (const int part : {Statistic::kMeanAndStdDev, Statistic::kQuantiles, Statistic::kHistogram}) {
                AddStatistic(part);
            }
            return true;
        default:
            return false;
    }
}

QKStatus QKContUnivariateVariable::AddRecord(const Record& record) {
    const std::int32_t weight = CaseWeight(record, weightIndex);
    AddPresent(&record[static_cast<std::size_t>(fieldIndex)], &weight, 1);
    return QKStatus();
}

void QKContUnivariateVariable::AddColumn(std::span<const double> values, const std::int32_t* weights) {
    const Column column{this, values.data()};
    AddColumns({&column, 1}, weights, values.size());
}

void QKContUnivariateVariable::AddColumns(std::span<const Column> columns, const std::int32_t* weights,
                                          std::size_t count) {
    std::array<double, kBlock> presentValues;
    std::array<std::int32_t, kBlock> presentWeights;
    std::vector<Moments*> together;
    std::vector<const double*> valuesTogether;
    for (std::size_t begin = 0; begin < count; begin += kBlock) {
        const std::size_t size = std::min(kBlock, count - begin);
        const std::int32_t* const blockWeights = weights == nullptr ? nullptr : weights + begin;
        together.clear();
        valuesTogether.clear();
        for (const auto& [variable, columnValues] : columns) {
            const double* const values = columnValues + begin;
            if (HasAny(values, size, QKMV::IsMissing)) {
                std::size_t present = 0;
                for (std::size_t i = 0; i < size; ++i) {
                    presentValues[present] = values[i];
                    presentWeights[present] = blockWeights == nullptr ? 1 : blockWeights[i];
                    present += QKMV::IsMissing(values[i]) ? 0 : 1;
                }
                variable->AddPresent(presentValues.data(), presentWeights.data(), present);
            } else if (variable->WantsMoments()) {
                together.push_back(&variable->moments);
                valuesTogether.push_back(values);
                variable->AddRangeAndCount(values, blockWeights, size);
            } else {
                variable->AddPresent(values, blockWeights, size);
            }
        }
        Moments::Add(together, valuesTogether.data(), blockWeights, size);
    }
}

/// Takes values none of which is missing.
void QKContUnivariateVariable::AddPresent(const double* values, const std::int32_t* weights, std::size_t size) {
    if (phase == Phase::kHistogram) {
        histogram.AddColumn(values, weights, size);
        return;
    }
    if (WantsMoments()) {
        Moments* const own = &moments;
        Moments::Add({&own, 1}, &values, weights, size);
    }
    AddRangeAndCount(values, weights, size);
}

/// Most blocks have nothing outside the range that is known by then. A value that is no number is taken as the first
/// one of all alone, and then stays.
void QKContUnivariateVariable::AddRangeAndCount(const double* values, const std::int32_t* weights, std::size_t size) {
    count += SumOfWeights(weights, size);
    if (!Wants(Statistic::kMin) && !Wants(Statistic::kMax)) return;
    const bool hasNone =
        (Wants(Statistic::kMin) && QKMV::IsMissing(min)) || (Wants(Statistic::kMax) && QKMV::IsMissing(max));
    const double lowest = Wants(Statistic::kMin) ? min : -std::numeric_limits<double>::infinity();
    const double highest = Wants(Statistic::kMax) ? max : std::numeric_limits<double>::infinity();
    const auto isOutside = [=](double value) { return (value < lowest) | (value > highest); };
    if (!hasNone && !HasAny(values, size, isOutside)) return;
    for (std::size_t i = 0; i < size; ++i) {
        if (Wants(Statistic::kMin) && (QKMV::IsMissing(min) || min > values[i])) min = values[i];
        if (Wants(Statistic::kMax) && (QKMV::IsMissing(max) || max < values[i])) max = values[i];
    }
}

void QKContUnivariateVariable::Moments::Add(std::span<Moments* const> together, const double* const* values,
                                            const std::int32_t* weights, std::size_t count) {
    const std::int64_t added = SumOfMagnitudes(weights, count);
    while (!together.empty()) {
        const std::span<Moments* const> lanes = together.first(std::min(together.size(), kMostTogether));
        bool areNarrow = true;
        for (Moments* const lane : lanes) {
            lane->weightSeen += added;
            areNarrow &= lane->arithmetic->StaysNarrow(lane->weightSeen);
        }
        if (areNarrow) {
            AddAll<std::int32_t>(lanes, values, weights, count);
        } else {
            AddAll<std::int64_t>(lanes, values, weights, count);
        }
        together = together.subspan(lanes.size());
        values += lanes.size();
    }
}

template <typename Counter>
void QKContUnivariateVariable::Moments::AddAll(std::span<Moments* const> lanes, const double* const* values,
                                               const std::int32_t* weights, std::size_t count) {
    const bool isWeighted = weights != nullptr;
    if (lanes.size() > 4) {
        isWeighted ? AddInLanes<8, true, Counter>(lanes, values, weights, count)
                   : AddInLanes<8, false, Counter>(lanes, values, weights, count);
    } else if (lanes.size() > 2) {
        isWeighted ? AddInLanes<4, true, Counter>(lanes, values, weights, count)
                   : AddInLanes<4, false, Counter>(lanes, values, weights, count);
    } else if (lanes.size() > 1) {
        isWeighted ? AddInLanes<2, true, Counter>(lanes, values, weights, count)
                   : AddInLanes<2, false, Counter>(lanes, values, weights, count);
    } else {
        isWeighted ? AddInLanes<1, true, Counter>(lanes, values, weights, count)
                   : AddInLanes<1, false, Counter>(lanes, values, weights, count);
    }
}

/// Lanes that are left over do what the first one does, in vain.
template <std::size_t kLanes, bool kIsWeighted, typename Counter>
void QKContUnivariateVariable::Moments::AddInLanes(std::span<Moments* const> together, const double* const* values,
                                                   const std::int32_t* weights, std::size_t count) {
    const double* columns[kLanes];
    double means[kLanes];
    double m2s[kLanes];
    Counter totals[kLanes];
    const Arithmetic* by[kLanes];
    for (std::size_t lane = 0; lane < kLanes; ++lane) {
        const std::size_t place = lane < together.size() ? lane : 0;
        columns[lane] = values[place];
        means[lane] = together[place]->mean;
        m2s[lane] = together[place]->m2;
        totals[lane] = static_cast<Counter>(together[place]->weight);
        by[lane] = together[place]->arithmetic;
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t added = kIsWeighted ? weights[i] : 1;
        double before[kLanes];
        double total[kLanes];
        double step[kLanes];
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            before[lane] = static_cast<double>(totals[lane]);
        }
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            totals[lane] = Sum(totals[lane], added, *by[lane]);
        }
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            total[lane] = static_cast<double>(totals[lane]);
        }
        for (std::size_t lane = 0; lane < kLanes; ++lane) step[lane] = columns[lane][i] - means[lane];
        if constexpr (kIsWeighted) {
            const double w = added;
            for (std::size_t lane = 0; lane < kLanes; ++lane) step[lane] = step[lane] * w / total[lane];
            for (std::size_t lane = 0; lane < kLanes; ++lane) means[lane] += step[lane];
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                m2s[lane] += step[lane] * step[lane] * total[lane] * before[lane] / w;
            }
        } else {
            for (std::size_t lane = 0; lane < kLanes; ++lane) step[lane] /= total[lane];
            for (std::size_t lane = 0; lane < kLanes; ++lane) means[lane] += step[lane];
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                m2s[lane] += step[lane] * step[lane] * total[lane] * before[lane];
            }
        }
    }
    for (std::size_t lane = 0; lane < std::min(kLanes, together.size()); ++lane) {
        together[lane]->mean = means[lane];
        together[lane]->m2 = m2s[lane];
        together[lane]->weight = totals[lane];
    }
}

QKStatus QKContUnivariateVariable::EndPass() {
    if (phase == Phase::kHistogram) {
        histogram.Close();
        needsPass = false;
        return QKStatus();
    }
    const std::int64_t total = GetCount();
    if (Wants(Statistic::kMeanAndStdDev) && total > 1) {
        stdDev = std::sqrt(moments.m2 / static_cast<double>(total - 1));
    }
    QKStatus status;
    if (Wants(Statistic::kQuantiles) && sortedData != nullptr) status = ComputeQuantiles();
    if (Wants(Statistic::kHistogram)) {
        phase = Phase::kHistogram;
        histogram.SetUp(min, max, Histogram::kDefaultBins);
    } else {
        needsPass = false;
    }
    return status;
}

QKStatus QKContUnivariateVariable::ComputeQuantiles() {
    QKTarn::ColumnView* const view = sortedData->ViewBy(fieldIndex);
    if (view == nullptr) return QKStatus(StatusCode::kNoIterator);
    const double* const values = view->Values(fieldIndex);
    const std::size_t size = view->Count();
    const std::int32_t* const weights = weightIndex < 0 ? nullptr : view->WholeNumbers(weightIndex);
    // A missing weight is no number of 32 bits; what is none has no place among the ascending values.
    const bool mayMissWeights =
        weights != nullptr && std::find(weights, weights + size, TruncateToInt32(QKMV::Missing())) != weights + size;
    const bool hasNaN = size > 0 && (std::isnan(values[0]) || std::isnan(values[size - 1]));
    const auto stepsOf = [&](std::size_t begin, std::size_t end) {
        QuantileSteps(values + begin, weights == nullptr ? nullptr : weights + begin, end - begin, GetCount());
    };
    if (mayMissWeights || hasNaN) {
        const double* const exactWeights = mayMissWeights ? view->Values(weightIndex) : nullptr;
        for (std::size_t i = 0; i < size; ++i) {
            const bool weightMissing = exactWeights != nullptr && QKMV::IsMissing(exactWeights[i]);
            if (!QKMV::IsMissing(values[i]) && !weightMissing) stepsOf(i, i + 1);
        }
    } else {
        const auto [firstMissing, firstBehind] = std::equal_range(values, values + size, QKMV::Missing());
        stepsOf(0, static_cast<std::size_t>(firstMissing - values));
        stepsOf(static_cast<std::size_t>(firstBehind - values), size);
    }
    CloseQuantiles();
    return QKStatus();
}

void QKContUnivariateVariable::QuantileSteps(const double* values, const std::int32_t* weights, std::size_t size,
                                             std::int64_t total) {
    if (size == 0) return;
    const auto n = static_cast<double>(total);
    const double hinge = std::trunc((n + 3) * 0.5) * 0.5;
    const double first = values[0];
    const double highest = HighestOfAscending(values, size);
    if (QKMV::IsMissing(median.previous)) {
        for (QuantileTracker* tracker : {&firstQuartile, &median, &thirdQuartile}) {
            tracker->previous = first;
            tracker->cumulative += weights == nullptr ? 1 : weights[0];
        }
        ++values;
        if (weights != nullptr) ++weights;
        --size;
    }
    firstQuartile.Steps(values, weights, size, hinge);
    median.Steps(values, weights, size, (n + 1) * 0.5);
    thirdQuartile.Steps(values, weights, size, n + 1 - hinge);
    ExtendRange(first);
    ExtendRange(highest);
}

/// Passes over values whose weights don't reach beyond the position, some at a time.
void QKContUnivariateVariable::QuantileTracker::Steps(const double* values, const std::int32_t* weights,
                                                      std::size_t size, double position) {
    for (std::size_t begin = 0; begin < size && QKMV::IsMissing(result); begin += kBlock) {
        const std::size_t end = std::min(begin + kBlock, size);
        const std::int32_t* const blockWeights = weights == nullptr ? nullptr : weights + begin;
        std::int32_t signs = 0;
        for (std::size_t i = begin; weights != nullptr && i < end; ++i) signs |= weights[i];
        const double reached = cumulative + static_cast<double>(SumOfWeights(blockWeights, end - begin));
        if (signs >= 0 && reached <= position) {
            cumulative = reached;
            previous = values[end - 1];
        } else {
            for (std::size_t i = begin; i < end; ++i) Step(values[i], weights == nullptr ? 1 : weights[i], position);
        }
    }
}

void QKContUnivariateVariable::QuantileTracker::Step(double value, double weight, double position) {
    if (!QKMV::IsMissing(result)) return;
    if (position >= cumulative && cumulative + weight > position) {
        const double fraction = position - cumulative;
        result = fraction >= 1 ? value : (1 - fraction) * previous + fraction * value;
    } else if (cumulative > position) {
        result = previous;
    } else {
        cumulative += weight;
        previous = value;
    }
}

void QKContUnivariateVariable::QuantileTracker::Close() {
    if (QKMV::IsMissing(result)) result = previous;
}

void QKContUnivariateVariable::CloseQuantiles() {
    for (QuantileTracker* tracker : {&firstQuartile, &median, &thirdQuartile}) tracker->Close();
}

void QKContUnivariateVariable::ExtendRange(double value) {
    if (QKMV::IsMissing(min) || min > value) min = value;
    if (QKMV::IsMissing(max) || max < value) max = value;
}

// ---- Categorical fields ----

QKCateUnivariateVariable::QKCateUnivariateVariable(int field, int weight, int categories, const Arithmetic& by)
    : QKUnivariateVariable(kMissingCategory, by),
      fieldIndex(field),
      weightIndex(weight),
      categoryCount(categories),
      frequencies(static_cast<std::size_t>(std::max(categories, 0))) {}

bool QKCateUnivariateVariable::AddStatistic(int code) {
    switch (code) {
        case Statistic::kMedian:
        case Statistic::kModeFrequency:
        case Statistic::kFrequencies:
            Store(code);
            return true;
        case Statistic::kAll:
            for (const int part : {Statistic::kFrequencies, Statistic::kMedian, Statistic::kModeFrequency}) Store(part);
            return true;
        default:
            return false;
    }
}

QKStatus QKCateUnivariateVariable::AddRecord(const Record& record) {
    const std::int32_t weight = CaseWeight(record, weightIndex);
    const std::size_t place = PlaceOf(record[static_cast<std::size_t>(fieldIndex)]);
    if (place < frequencies.size()) frequencies[place] += weight;
    count += weight;
    return QKStatus();
}

/// Neighbours go to tables of their own, so that an addition needn't wait for the one before it. What is no category
/// goes to a place behind the last one.
void QKCateUnivariateVariable::AddColumn(std::span<const double> values, const std::int32_t* weights) {
    constexpr std::size_t kTables = 4;
    const std::size_t width = frequencies.size() + 1;
    std::vector<std::int64_t> tables(kTables * width);
    for (std::size_t i = 0; i < values.size(); ++i) {
        const std::int32_t weight = IsMissing(values[i]) ? 0 : weights == nullptr ? 1 : weights[i];
        tables[i % kTables * width + PlaceOf(values[i])] += weight;
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const std::size_t place = i % width;
        if (place < frequencies.size()) frequencies[place] += tables[i];
        count += tables[i];
    }
}

std::vector<std::int64_t> QKCateUnivariateVariable::GetFrequencies() const {
    std::vector<std::int64_t> counts;
    for (const std::int64_t frequency : frequencies) counts.push_back(arithmetic->Count(frequency));
    return counts;
}

QKStatus QKCateUnivariateVariable::EndPass() {
    const std::vector<std::int64_t> counts = GetFrequencies();
    if (Wants(Statistic::kModeFrequency) && !counts.empty()) {
        // The largest one as it stands: negative weights may have left it below 0.
        modeFrequency = *std::max_element(counts.begin(), counts.end());
    }
    if (Wants(Statistic::kMedian)) {
        std::int64_t sum = 0;
        for (std::size_t category = 0; category < counts.size(); ++category) {
            sum = arithmetic->Count(sum + counts[category]);
            if (sum >= GetCount() / 2) {
                medianCategory = static_cast<int>(category);
                break;
            }
        }
    }
    needsPass = false;
    return QKStatus();
}
