#include "independent/MedianSubset.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "independent/TextbookForm.h"
#include "platform/common/QKDistFun.h"
#include "support/Significance.h"
#include "support/WideNumber.h"

namespace {

/// Of two counts.
WideNumber Product(double a, double b) {
    return WideNumber{static_cast<std::int64_t>(a)} * static_cast<std::int64_t>(b);
}

}  // namespace

void MedianSubset::SetGroups(const std::vector<std::int32_t>& categories, std::vector<double> groupSizes,
                             std::int32_t categoryCount) {
    positionOf.assign(static_cast<std::size_t>(categoryCount), kNotInside);
    for (std::size_t place = 0; place < categories.size(); ++place) {
        positionOf[static_cast<std::size_t>(categories[place])] = static_cast<std::int32_t>(place);
    }
    sizes = std::move(groupSizes);
    totalN = std::accumulate(sizes.begin(), sizes.end(), 0.0);
    for (std::vector<double>& row : counts) row.assign(sizes.size(), 0.0);
}

/// A weight that is wider than a step takes comes in several: the value is the same.
void MedianSubset::AddToMedian(double value, double weight) {
    constexpr std::int64_t kMostOfStep = std::numeric_limits<std::int32_t>::max();
    const std::int64_t total = arithmetic->Truncated(totalN);
    std::int64_t left = arithmetic->Truncated(weight);
    do {
        const auto step = static_cast<std::int32_t>(std::min(left, kMostOfStep));
        quantiles.QuantileStep(value, step, total);
        left -= step;
    } while (left > 0);
}

void MedianSubset::AddToMedian(const double* values, const std::int32_t* weights, std::size_t count) {
    quantiles.QuantileSteps(values, weights, count, arithmetic->Truncated(totalN));
}

void MedianSubset::Count(const double* values, const std::int32_t* weights, const std::int32_t* places,
                         std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (places[i] >= 0) Count(values[i], weights[i], places[i]);
    }
}

void MedianSubset::FinishMedian() {
    quantiles.CloseQuantiles();
    median = QKMV::IsMissing(quantiles.GetMedian()) ? 0.0 : quantiles.GetMedian();
}

double MedianSubset::RowTotal(std::size_t row) const {
    return std::accumulate(counts[row].begin(), counts[row].end(), 0.0);
}

std::size_t MedianSubset::GroupsWithCases() const {
    return static_cast<std::size_t>(std::count_if(sizes.begin(), sizes.end(), [](double size) { return size > 0; }));
}

MedianSubset::ExpectedCells MedianSubset::ComputeChiSquare() {
    ExpectedCells cells;
    std::size_t belowFive = 0;
    chiSquare = 0;
    for (const std::size_t row : {kNotAbove, kAbove}) {
        const double rowTotal = RowTotal(row);
        for (std::size_t place = 0; place < sizes.size(); ++place) {
            const double expected = sizes[place] * rowTotal / totalN;
            const double difference = arithmetic->Carefully(
                [&] { return counts[row][place] - expected; },
                [&] {
                    const WideNumber aboveProduct =
                        Product(counts[row][place], totalN) - Product(sizes[place], rowTotal);
                    return static_cast<long double>(aboveProduct) / static_cast<long double>(totalN);
                });
            if (expected != 0) chiSquare += difference * difference / expected;
            if (expected < 5) ++belowFive;
            if (expected < 1) cells.anyBelowOne = true;
        }
    }
    cells.manyBelowFive = 4 * belowFive > 2 * sizes.size();
    sig = ChiSquareSig(chiSquare, static_cast<double>(sizes.size()) - 1, *arithmetic);
    return cells;
}

FourfoldSignificance MedianSubset::CompareTwoGroups() const {
    constexpr double kMostCasesOfExactTest = 30;
    const FourfoldTable table{counts[kNotAbove][0], counts[kNotAbove][1], counts[kAbove][0], counts[kAbove][1]};
    if (totalN <= kMostCasesOfExactTest) return {true, 0, FisherExactSignificance(table, *arithmetic)};
    const double corrected = YatesChiSquare(table, *arithmetic);
    return {false, corrected, ChiSquareSig(corrected, 1, *arithmetic)};
}

double FisherExactSignificance(const FourfoldTable& table, const Arithmetic& arithmetic) {
    constexpr double kTolerance = 1e-14;
    const auto [a, b, c, d] = table;
    const double total = a + b + c + d;
    if (total == 0) return 1.0;
    // The cell of the smaller diagonal that is the smaller one: its table ends the shorter tail. The other diagonal
    // makes up its margins.
    const bool takesOther = d * a > c * b;
    const double x = takesOther ? std::min(b, c) : std::min(a, d);
    const double margin1 = (takesOther ? (c > b ? a : d) : (a > d ? c : b)) + x;
    const double margin2 = (takesOther ? (c > b ? d : a) : (a > d ? b : c)) + x;
    int ignored = 0;  // the margins come from a table and lie in the domain
    const auto cdf = [&](double t) { return QKMath::QKDistFun::CDFHyper(t, total, margin1, margin2, ignored); };
    const double lower = cdf(x);
    const double observed = x == 0 ? lower : lower - cdf(x - 1);
    for (double t = std::min(margin1, margin2); t >= x + 1; --t) {
        const double upper = cdf(t);
        if (upper - cdf(t - 1) - observed < kTolerance) continue;
        return arithmetic.Carefully(
            [&] { return lower + 1 - upper; },
            [&] { return lower + QKMath::QKDistFun::SfHyper(t, total, margin1, margin2, ignored); });
    }
    return 1.0;
}

double YatesChiSquare(const FourfoldTable& table, const Arithmetic& arithmetic) {
    const double n1 = table.notAbove1 + table.above1;
    const double n2 = table.notAbove2 + table.above2;
    const double above = table.above1 + table.above2;
    const double total = n1 + n2;
    const double difference = arithmetic.Carefully(
        [&] { return table.notAbove2 * table.above1 - table.notAbove1 * table.above2; },
        [&] {
            const WideNumber wide = Product(table.notAbove2, table.above1) - Product(table.notAbove1, table.above2);
            return static_cast<long double>(wide);
        });
    const double corrected = std::fabs(difference) - total / 2;
    const auto chiSquareOf = [&](double deviation) {
        return total * (deviation * deviation) / ((n2 + n1 - above) * above * n1 * n2);
    };
    return FormOf(chiSquareOf(corrected), chiSquareOf(std::max(corrected, 0.0)), arithmetic);
}
