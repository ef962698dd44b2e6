#include "host/beyond/SampleShapes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/beyond/Quartiles.h"

namespace tarn {

namespace {

constexpr std::size_t kMostBars = 15;

/// Values with how often they occur.
std::vector<PlotMark> DistinctValues(const AscendingSample& sample, std::size_t most) {
    std::vector<PlotMark> distinct;
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        if (!distinct.empty() && distinct.back().value == sample.values[i]) {
            distinct.back().weight += sample.WeightAt(i);
            continue;
        }
        if (distinct.size() == most) return {};
        distinct.push_back({sample.values[i], sample.WeightAt(i)});
    }
    return distinct;
}

/// How often the most frequent value stands in the list of values; once where equal ones stand as their weight.
double MostEqual(const AscendingSample& sample) {
    double most = 0;
    double equal = 0;
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        equal = i > 0 && sample.values[i] == sample.values[i - 1] ? equal + 1 : 1;
        most = std::max(most, equal);
    }
    return most;
}

PlotBox BoxOf(const AscendingSample& sample) {
    constexpr double kReach = 1.5;
    const Summary summary = SummaryOf(sample);
    const double reach = kReach * (summary.thirdQuartile - summary.firstQuartile);
    const auto first = std::ranges::lower_bound(sample.values, summary.firstQuartile - reach);
    const auto past = std::ranges::upper_bound(sample.values, summary.thirdQuartile + reach);
    PlotBox box{summary.firstQuartile, summary.firstQuartile, summary.median, summary.thirdQuartile,
                summary.thirdQuartile};
    // A quartile between two values may lie beyond every value on its side that is near enough.
    if (first != sample.values.end()) box.lowerWhisker = std::min(*first, summary.firstQuartile);
    if (past != sample.values.begin()) box.upperWhisker = std::max(*std::prev(past), summary.thirdQuartile);
    return box;
}

std::vector<PlotMark> AllMarks(const AscendingSample& sample) {
    std::vector<PlotMark> marks;
    for (std::size_t i = 0; i < sample.values.size(); ++i) marks.push_back({sample.values[i], sample.WeightAt(i)});
    return marks;
}

std::vector<PlotMark> MarksBeyond(const AscendingSample& sample, const PlotBox& box) {
    constexpr std::size_t kMostOnASide = 25;
    std::vector<PlotMark> marks;
    for (std::size_t i = 0; i < sample.values.size() && i < kMostOnASide; ++i) {
        if (sample.values[i] >= box.lowerWhisker) break;
        marks.push_back({sample.values[i], sample.WeightAt(i)});
    }
    for (std::size_t i = 0; i < sample.values.size() && i < kMostOnASide; ++i) {
        const std::size_t place = sample.values.size() - 1 - i;
        if (sample.values[place] <= box.upperWhisker) break;
        marks.push_back({sample.values[place], sample.WeightAt(place)});
    }
    return marks;
}

double StandardDeviation(const AscendingSample& sample) {
    double mean = 0;
    for (std::size_t i = 0; i < sample.values.size(); ++i) mean += sample.values[i] * sample.WeightAt(i);
    mean /= sample.size;
    double squares = 0;
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        const double distance = sample.values[i] - mean;
        squares += distance * distance * sample.WeightAt(i);
    }
    return std::sqrt(squares / std::max(1.0, sample.size - 1));
}

double KernelWidth(const AscendingSample& sample, const PlotBox& box) {
    constexpr double kQuartilesOfNormal = 1.34;  // their distance in standard deviations
    constexpr double kRule = 0.9;
    const double deviation = StandardDeviation(sample);
    const double quartiles = (box.thirdQuartile - box.firstQuartile) / kQuartilesOfNormal;
    const double spread = quartiles > 0 ? std::min(deviation, quartiles) : deviation;
    return kRule * spread * std::pow(sample.size, -0.2);
}

/// How many cases lie in each of the classes of one width.
std::vector<double> ClassCounts(const AscendingSample& sample, std::size_t classes) {
    const double lowest = sample.values.front();
    const double range = sample.values.back() - lowest;
    std::vector<double> counts(classes, 0);
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        const double share = (sample.values[i] - lowest) / range;
        const auto place = static_cast<std::size_t>(share * static_cast<double>(classes));
        counts[std::min(place, classes - 1)] += sample.WeightAt(i);
    }
    return counts;
}

std::vector<PlotDensity> SmoothOutline(const AscendingSample& sample, double width) {
    constexpr std::size_t kClasses = 512;
    constexpr std::size_t kPoints = 65;
    constexpr double kReach = 4;  // in kernel widths, beyond which nothing is seen
    const std::vector<double> counts = ClassCounts(sample, kClasses);
    const double lowest = sample.values.front();
    const double range = sample.values.back() - lowest;
    std::vector<PlotDensity> outline;
    for (std::size_t i = 0; i < kPoints; ++i) {
        const double value = lowest + range * static_cast<double>(i) / static_cast<double>(kPoints - 1);
        double density = 0;
        for (std::size_t k = 0; k < kClasses; ++k) {
            const double middle = lowest + range * (static_cast<double>(k) + 0.5) / static_cast<double>(kClasses);
            const double distance = (value - middle) / width;
            if (counts[k] > 0 && std::abs(distance) < kReach) density += counts[k] * std::exp(-distance * distance / 2);
        }
        outline.push_back({value, density / (sample.size * width)});
    }
    return outline;
}

}  // namespace

void SetOutline(PlotSample& shape, const AscendingSample& sample) {
    const std::vector<PlotMark> few = DistinctValues(sample, kMostBars);
    const double width = KernelWidth(sample, shape.box);
    shape.isOutlineOfBars = !few.empty() || !(width > 0);
    if (!few.empty()) {
        for (const PlotMark& mark : few) shape.outline.push_back({mark.value, mark.weight / sample.size});
    } else if (width > 0) {
        shape.outline = SmoothOutline(sample, width);
    }
}

std::vector<PlotSample> ShapesOf(const std::vector<AscendingSample>& samples) {
    constexpr std::size_t kFewestForOutline = 10;
    bool areFew = true;
    std::size_t together = 0;
    for (const AscendingSample& sample : samples) {
        areFew &= sample.values.size() <= kMostMarks;
        areFew &= MostEqual(sample) <= kMostEqualMarks;
        together += sample.values.size();
    }
    areFew &= together <= kMostMarksTogether;
    std::vector<PlotSample> shapes;
    for (const AscendingSample& sample : samples) {
        PlotSample shape;
        shape.box = BoxOf(sample);
        shape.hasAllMarks = areFew || sample.values.size() < kFewestForOutline;
        if (!shape.hasAllMarks) SetOutline(shape, sample);
        // Bars show every value there is.
        if (shape.hasAllMarks) shape.marks = AllMarks(sample);
        if (!shape.hasAllMarks && !shape.isOutlineOfBars) shape.marks = MarksBeyond(sample, shape.box);
        shapes.push_back(std::move(shape));
    }
    return shapes;
}

}  // namespace tarn
