#include "support/QKUnivariateVariable.h"

#include <algorithm>
#include <cmath>

#include "platform/common/Truncation.h"
#include "records/TARNSortedDataSet.h"
#include "support/CaseWeight.h"
#include "support/Int32.h"
#include "vocabulary/StatusCodes.h"

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
    Add(record[static_cast<std::size_t>(fieldIndex)], CaseWeight(record, weightIndex));
    return QKStatus();
}

void QKContUnivariateVariable::AddColumn(std::span<const double> values, const std::int32_t* weights) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!IsMissing(values[i])) Add(values[i], weights == nullptr ? 1 : weights[i]);
    }
}

void QKContUnivariateVariable::Add(double value, std::int32_t weight) {
    if (phase == Phase::kHistogram) {
        histogram.Add(value, weight);
        return;
    }
    if (Wants(Statistic::kMeanAndStdDev)) AddMoments(value, weight);
    if (Wants(Statistic::kMin) && (QKMV::IsMissing(min) || min > value)) min = value;
    if (Wants(Statistic::kMax) && (QKMV::IsMissing(max) || max < value)) max = value;
    count = Add32(count, weight);
}

void QKContUnivariateVariable::AddMoments(double value, std::int32_t weight) {
    const double weightBefore = runningWeight;
    runningWeight = Add32(runningWeight, weight);
    const double w = weight;
    const double total = runningWeight;
    const double step = (value - mean) * w / total;
    mean += step;
    const double product = step * step * total * weightBefore;
    m2 += weight == 1 ? product : product / w;  // the same number; the division is what takes time
}

QKStatus QKContUnivariateVariable::EndPass() {
    if (phase == Phase::kHistogram) {
        histogram.Close();
        needsPass = false;
        return QKStatus();
    }
    if (Wants(Statistic::kMeanAndStdDev) && count > 1) stdDev = std::sqrt(m2 / (count - 1));
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
    const double* const exactWeights = weightIndex >= 0 ? view->Values(weightIndex) : nullptr;
    for (std::size_t i = 0; i < view->Count(); ++i) {
        const bool weightMissing = exactWeights != nullptr && QKMV::IsMissing(exactWeights[i]);
        if (QKMV::IsMissing(values[i]) || weightMissing) continue;
        QuantileStep(values[i], exactWeights == nullptr ? 1 : TruncateToInt32(exactWeights[i]), count);
    }
    CloseQuantiles();
    return QKStatus();
}

void QKContUnivariateVariable::QuantileStep(double value, double weight, std::int32_t total) {
    const double n = total;
    const double hinge = std::trunc((n + 3) * 0.5) * 0.5;
    if (QKMV::IsMissing(median.previous)) {
        for (QuantileTracker* tracker : {&firstQuartile, &median, &thirdQuartile}) {
            tracker->previous = value;
            tracker->cumulative += weight;
        }
    } else {
        firstQuartile.Step(value, weight, hinge);
        median.Step(value, weight, (n + 1) * 0.5);
        thirdQuartile.Step(value, weight, n + 1 - hinge);
    }
    ExtendRange(value);
}

void QKContUnivariateVariable::QuantileSteps(const double* values, const std::int32_t* weights, std::size_t size,
                                             std::int32_t total) {
    for (std::size_t i = 0; i < size; ++i) QuantileStep(values[i], weights == nullptr ? 1 : weights[i], total);
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

QKCateUnivariateVariable::QKCateUnivariateVariable(int field, int weight, int categories)
    : QKUnivariateVariable(kMissingCategory), fieldIndex(field), weightIndex(weight), categoryCount(categories) {
    for (int category = 0; category < categoryCount; ++category) frequencies[category] = 0;
}

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
    Add(TruncateToInt32(record[static_cast<std::size_t>(fieldIndex)]), CaseWeight(record, weightIndex));
    return QKStatus();
}

void QKCateUnivariateVariable::AddColumn(std::span<const double> values, const std::int32_t* weights) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!IsMissing(values[i])) Add(TruncateToInt32(values[i]), weights == nullptr ? 1 : weights[i]);
    }
}

void QKCateUnivariateVariable::Add(std::int32_t category, std::int32_t weight) {
    const auto frequency = frequencies.find(category);
    if (frequency != frequencies.end()) frequency->second = Add32(frequency->second, weight);
    count = Add32(count, weight);
}

QKStatus QKCateUnivariateVariable::EndPass() {
    if (Wants(Statistic::kModeFrequency) && !frequencies.empty()) {
        // The largest one as it stands: negative weights may have left it below 0.
        const auto byFrequency = [](const auto& a, const auto& b) { return a.second < b.second; };
        modeFrequency = std::max_element(frequencies.begin(), frequencies.end(), byFrequency)->second;
    }
    if (Wants(Statistic::kMedian)) {
        std::int32_t sum = 0;
        for (const auto& [category, frequency] : frequencies) {
            sum = Add32(sum, frequency);
            if (sum >= count / 2) {
                medianCategory = category;
                break;
            }
        }
    }
    needsPass = false;
    return QKStatus();
}
