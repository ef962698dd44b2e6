#include "support/UnivariateResults.h"

#include "support/Int32.h"

namespace {

/// A value of a field's continuous record, the missing double where there is none.
double ContinuousValue(const UnivariateCollector& collector, int field,
                       double (QKContUnivariateVariable::*value)() const) {
    const QKContUnivariateVariable* variable = collector.FindContinuous(field);
    return variable ? (variable->*value)() : QKMV::Missing();
}

/// A value of a field's categorical record, -1 where there is none.
template <typename Value>
Value CategoricalValue(const UnivariateCollector& collector, int field,
                       Value (QKCateUnivariateVariable::*value)() const) {
    const QKCateUnivariateVariable* variable = collector.FindCategorical(field);
    return variable ? (variable->*value)() : -1;
}

/// What came of a value of a field's continuous record.
Departure ContinuousDeparture(const UnivariateCollector& collector, int field,
                              Departure (QKContUnivariateVariable::*departure)() const) {
    const QKContUnivariateVariable* variable = collector.FindContinuous(field);
    return variable ? (variable->*departure)() : Departure();
}

}  // namespace

std::int32_t UnivariateResults::GetCount(int field) const {
    return Wrap32(GetWideCount(field));
}

bool UnivariateResults::HasVariable(int field) const {
    return collector_->Find(field) != nullptr;
}

double UnivariateResults::GetMean(int field) const {
    return ContinuousValue(*collector_, field, &QKContUnivariateVariable::GetMean);
}
double UnivariateResults::GetMax(int field) const {
    return ContinuousValue(*collector_, field, &QKContUnivariateVariable::GetMax);
}
double UnivariateResults::GetMin(int field) const {
    return ContinuousValue(*collector_, field, &QKContUnivariateVariable::GetMin);
}
double UnivariateResults::GetMedian(int field) const {
    return ContinuousValue(*collector_, field, &QKContUnivariateVariable::GetMedian);
}
double UnivariateResults::GetFirstQuartile(int field) const {
    return ContinuousValue(*collector_, field, &QKContUnivariateVariable::GetFirstQuartile);
}
double UnivariateResults::GetThirdQuartile(int field) const {
    return ContinuousValue(*collector_, field, &QKContUnivariateVariable::GetThirdQuartile);
}
double UnivariateResults::GetStdDev(int field) const {
    return ContinuousValue(*collector_, field, &QKContUnivariateVariable::GetStdDev);
}

const std::vector<HistogramBin>* UnivariateResults::GetContinuous(int field) const {
    const QKContUnivariateVariable* variable = collector_->FindContinuous(field);
    return variable ? &variable->GetBins() : nullptr;
}

int UnivariateResults::GetMedianCategory(int field) const {
    return CategoricalValue(*collector_, field, &QKCateUnivariateVariable::GetMedianCategory);
}
std::int32_t UnivariateResults::GetModeFrequency(int field) const {
    return Wrap32(CategoricalValue(*collector_, field, &QKCateUnivariateVariable::GetModeFrequency));
}

bool UnivariateResults::GetFrequencies(int field, std::map<int, std::int32_t>& frequencies) const {
    std::map<int, std::int64_t> wide;
    if (!GetWideFrequencies(field, wide)) return false;
    frequencies.clear();
    for (const auto& [category, frequency] : wide) {
        frequencies.emplace_hint(frequencies.end(), category, Wrap32(frequency));
    }
    return true;
}

int UnivariateResults::GetCategoryCount(int field) const {
    return CategoricalValue(*collector_, field, &QKCateUnivariateVariable::GetCategoryCount);
}

std::int64_t UnivariateResults::GetWideCount(int field) const {
    const QKUnivariateVariable* variable = collector_->Find(field);
    return variable ? variable->GetCount() : -1;
}

bool UnivariateResults::GetWideFrequencies(int field, std::map<int, std::int64_t>& frequencies) const {
    const QKCateUnivariateVariable* variable = collector_->FindCategorical(field);
    if (variable == nullptr) return false;
    frequencies.clear();
    for (const std::int64_t frequency : variable->GetFrequencies()) {
        frequencies.emplace_hint(frequencies.end(), static_cast<int>(frequencies.size()), frequency);
    }
    return true;
}

Departure UnivariateResults::GetDeparture(int field) const {
    const QKUnivariateVariable* variable = collector_->Find(field);
    return variable ? variable->GetDeparture() : Departure();
}
Departure UnivariateResults::GetMeanDeparture(int field) const {
    return ContinuousDeparture(*collector_, field, &QKContUnivariateVariable::MeanDeparture);
}
Departure UnivariateResults::GetMedianDeparture(int field) const {
    return ContinuousDeparture(*collector_, field, &QKContUnivariateVariable::MedianDeparture);
}
