#include "independent/GroupBoxPlot.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string>

#include "platform/common/QKMV.h"
#include "platform/common/QKXML.h"

namespace {

constexpr double kFenceFactor = 1.5;

/// 0 for values that differ by rounding only; else 1 or -1 as `a` is above `b` or not. Beside a zero nothing is
/// rounding.
int CompareTolerantly(double a, double b) {
    constexpr double kTolerance = 2.220446049250313e-14;
    if (a == b) return 0;
    if (a != 0 && b != 0 && std::fabs(a - b) <= kTolerance * std::max(std::fabs(a), std::fabs(b))) return 0;
    return a > b ? 1 : -1;
}

std::string ValueText(double value) {
    return QKMV::IsMissing(value) ? std::string() : DoubleToString(value);
}

/// A case identifier is shown as a whole number, with all its digits.
std::string IdText(double id) {
    return QKMV::IsMissing(id) ? std::string() : QKXML::ReplaceSep(std::trunc(id) + 0.0, "%.0f");
}

/// The high ones and then the low ones, each from the last to the first.
std::string JoinBackwards(const std::vector<double>& high, const std::vector<double>& low,
                          std::string (*text)(double)) {
    std::string joined;
    for (const std::vector<double>* values : {&high, &low}) {
        for (auto value = values->rbegin(); value != values->rend(); ++value) joined += text(*value) + ";";
    }
    if (!joined.empty()) joined.pop_back();
    return joined;
}

}  // namespace

void GroupBoxPlot::AddAscendingToQuantiles(const double* values, const std::int32_t* weights, std::size_t size) {
    quantiles.QuantileSteps(values, weights, size, count);
}

void GroupBoxPlot::Finish() {
    quantiles.CloseQuantiles();
    const double reach = kFenceFactor * (quantiles.GetThirdQuartile() - quantiles.GetFirstQuartile());
    lowerFence = quantiles.GetFirstQuartile() - reach;
    upperFence = quantiles.GetThirdQuartile() + reach;
    // From the far ends, so that they can only move inward.
    smallestNonOutlier = quantiles.GetMax();
    largestNonOutlier = quantiles.GetMin();
}

/// Ascending values are compared with a finite number in ascending order, too, so that each kind of them stands
/// together and is found by search. Beside an infinite one everything but a zero is rounding.
void GroupBoxPlot::AddAscendingToOutliers(const double* values, const double* caseIds, std::size_t size) {
    if (size == 0) return;
    const auto isFinite = [](double number) { return std::isfinite(number); };
    const double bounds[] = {values[0],  values[size - 1],   lowerFence,
                             upperFence, smallestNonOutlier, largestNonOutlier};
    if (!std::all_of(std::begin(bounds), std::end(bounds), isFinite)) {
        for (std::size_t i = 0; i < size; ++i) AddToOutliers(values[i], caseIds == nullptr ? nullptr : caseIds + i);
        return;
    }
    const auto firstNotBelow = [&](double bound, int comparison) {
        const double* const found = std::partition_point(
            values, values + size, [=](double value) { return CompareTolerantly(value, bound) < comparison; });
        return static_cast<std::size_t>(found - values);
    };
    const std::size_t highBegin = firstNotBelow(upperFence, 1);
    const std::size_t lowEnd = std::min(firstNotBelow(lowerFence, 0), highBegin);
    const auto addOutliers = [&](std::size_t begin, std::size_t end, std::vector<double>& outliers,
                                 std::vector<double>& ids) {
        outliers.insert(outliers.end(), values + begin, values + end);
        if (caseIds != nullptr) ids.insert(ids.end(), caseIds + begin, caseIds + end);
    };
    addOutliers(0, lowEnd, lowOutliers, lowOutlierIds);
    addOutliers(highBegin, size, highOutliers, highOutlierIds);

    std::size_t smallest = firstNotBelow(lowerFence, 1);
    if (const std::size_t atUpper = firstNotBelow(upperFence, 0); atUpper < highBegin) {
        smallest = std::min(smallest, atUpper);
    }
    if (smallest < size) TakeSmallest(values[smallest]);
    // A value that differs from its neighbour below by more than rounding is taken whatever came before it.
    std::size_t largest = highBegin;
    while (largest > 0) {
        --largest;
        if (largest > 0 && CompareTolerantly(values[largest], values[largest - 1]) > 0) break;
    }
    for (; largest < highBegin; ++largest) TakeLargest(values[largest]);
}

void GroupBoxPlot::AddToOutliers(double value, const double* caseId) {
    const int beside = CompareTolerantly(value, upperFence);
    const bool isAboveLower = CompareTolerantly(value, lowerFence) > 0;
    const bool isHigh = beside > 0;
    const bool isLow = !isHigh && CompareTolerantly(value, lowerFence) < 0;
    if (isHigh || isLow) {
        (isHigh ? highOutliers : lowOutliers).push_back(value);
        if (caseId != nullptr) (isHigh ? highOutlierIds : lowOutlierIds).push_back(*caseId);
    }
    if (!isHigh) TakeLargest(value);
    // Not the mirror image of the line above, and intended: a value at the lower fence is no outlier, but it can't be
    // the smallest of the others either. Documents depend on it.
    if (isAboveLower || beside == 0) TakeSmallest(value);
}

void GroupBoxPlot::TakeSmallest(double value) {
    if (CompareTolerantly(value, smallestNonOutlier) < 0) smallestNonOutlier = value;
}

void GroupBoxPlot::TakeLargest(double value) {
    if (CompareTolerantly(value, largestNonOutlier) > 0) largestNonOutlier = value;
}

void GroupBoxPlot::AddTables(StructuredTable& group) const {
    std::string box;
    if (count >= 1) {
        for (const double value :
             {smallestNonOutlier, quantiles.GetFirstQuartile(), quantiles.GetMedian(), quantiles.GetThirdQuartile()}) {
            box += ValueText(value) + ";";
        }
        box += ValueText(largestNonOutlier);
    } else {
        box = ";;;;";
    }
    auto boxTable = MakeSimpleTable(TableName::kBox, "", Literal::kBoxColumns);
    boxTable->AddChild(MakeRowElement(box));
    group.Add(std::move(boxTable));

    auto outliers = MakeSimpleTable(TableName::kOutliers, Literal::kOutlierRows, "");
    outliers->AddChild(MakeRowElement(JoinBackwards(highOutliers, lowOutliers, ValueText)));
    outliers->AddChild(MakeRowElement(JoinBackwards(highOutlierIds, lowOutlierIds, IdText)));
    group.Add(std::move(outliers));
}
