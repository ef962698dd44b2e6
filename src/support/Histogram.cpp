#include "support/Histogram.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "support/Int32.h"

void Histogram::SetUp(double lowest, double highest, std::size_t wishedBins) {
    low = lowest;
    binCount = wishedBins;
    zeroCount = 0;
    edges.clear();

    const double width = (highest - lowest) / static_cast<double>(wishedBins);
    double previous = lowest;
    for (std::size_t i = 1; edges.size() < binCount; ++i) {
        const double edge = lowest + static_cast<double>(i) * width;
        if (previous <= 0 && edge > 0) {
            edges.push_back(0);
            ++binCount;
        }
        edges.push_back(edge);
        previous = edge;
    }
    if (!edges.empty()) edges.back() = highest + 1.0;
    zeroEdges = binCount - wishedBins;
    bins.assign(binCount, HistogramBin{});

    const bool ascending =
        edges.size() > 1 && std::adjacent_find(edges.begin(), edges.end(), std::greater_equal<>()) == edges.end();
    binsPerUnit = ascending && width > 0 && std::isfinite(1 / width) ? 1 / width : 0;
}

void Histogram::Add(double value, std::int32_t weight) {
    if (value == 0.0) {
        zeroCount = Add32(zeroCount, weight);
        return;
    }
    const std::size_t index = FindBin(value);
    if (index >= binCount) return;
    HistogramBin& bin = bins[index];
    bin.count = Add32(bin.count, weight);
    bin.mean += (value - bin.mean) * weight / bin.count;
}

void Histogram::AddColumn(const double* values, const std::int32_t* weights, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) Add(values[i], weights == nullptr ? 1 : weights[i]);
}

void Histogram::AddAscending(const double* values, const std::int32_t* weights, std::size_t count) {
    AddColumn(values, weights, count);
}

void Histogram::Close() {
    if (zeroCount > 0) bins.push_back({zeroCount, 0.0});
}

std::size_t Histogram::FindBin(double value) const {
    // With ascending edges the search below is a lower bound from interval 2 on. Equal widths let that be guessed;
    // the neighbours then settle rounding and the boundary at zero.
    if (binsPerUnit > 0 && value > edges[1] && value <= edges.back()) {
        const double place = std::min((value - low) * binsPerUnit, static_cast<double>(edges.size() - 1));
        const std::size_t guess = static_cast<std::size_t>(place) + (value > 0 ? zeroEdges : 0);
        std::size_t index = std::clamp<std::size_t>(guess, 2, edges.size() - 1);
        while (edges[index - 1] >= value) --index;
        while (edges[index] < value) ++index;
        return index;
    }
    return SearchBin(value);
}

std::size_t Histogram::SearchBin(double value) const {
    if (edges.size() < 2) return 0;
    std::size_t lo = 0;
    std::size_t hi = edges.size() - 1;
    std::size_t remembered = 0;
    do {
        const std::size_t mid = lo + (hi - lo) / 2;
        if (mid == 0) return 0;
        if (value == edges[mid]) return mid;
        if (value > edges[mid]) {
            lo = mid + 1;  // at most the last edge: the middle of two different positions is below the upper one
            if (edges[lo] >= value) return lo;
        } else {
            hi = mid - 1;
            if (value > edges[hi]) return mid;
            remembered = hi;
        }
    } while (lo < hi);
    return remembered;
}
