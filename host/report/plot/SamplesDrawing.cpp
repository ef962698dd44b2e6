#include "host/report/plot/SamplesDrawing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "host/report/plot/Swarm.h"

namespace tarn {

namespace {

constexpr double kDotRadius = 2.6;
constexpr double kDotOpacity = 0.75;
constexpr double kBoxOpacity = 0.16;
constexpr double kOutlineOpacity = 0.35;
constexpr double kBoxHalf = 0.55;   // of the half that is used
constexpr double kThinBoxHalf = 4;  // within an outline

}  // namespace

double HalfOf(double slot) {
    constexpr double kHalfUsed = 0.42;
    constexpr double kWidestHalf = 40;
    return std::min(slot * kHalfUsed, kWidestHalf);
}

SamplesDrawing::SamplesDrawing(const SamplesPanel& panel, const SamplesLayout& layout, Picture& picture)
    : panel_(panel), layout_(layout), picture_(picture) {
    for (const PlotSample& sample : panel.samples) {
        for (const PlotDensity& density : sample.outline) densest_ = std::max(densest_, density.density);
        for (const PlotMark& mark : sample.marks) heaviest_ = std::max(heaviest_, mark.weight);
    }
}

void SamplesDrawing::DrawRows() {
    const double opacity = panel_.rows.size() > 20 ? 0.35 : 0.55;
    for (const std::vector<double>& row : panel_.rows) {
        std::vector<PicturePoint> points;
        for (std::size_t i = 0; i < row.size(); ++i) points.push_back(layout_.Point(i, row[i]));
        picture_.Lines(points, {kFaint, 1, opacity});
    }
}

void SamplesDrawing::DrawSample(std::size_t place) {
    const PlotSample& sample = panel_.samples[place];
    const PlotColour& colour = GroupColour(sample.colour, panel_.colourCount);
    if (!sample.outline.empty()) DrawOutline(place, colour);
    if (panel_.hasBoxes) DrawBox(place, colour);
    DrawMarks(place, colour);
    if (panel_.hasBoxes) DrawMedian(place);
}

void SamplesDrawing::ConnectMedians() {
    std::vector<PicturePoint> points;
    for (std::size_t i = 0; i < panel_.samples.size(); ++i) {
        points.push_back(layout_.Point(i, panel_.samples[i].box.median));
    }
    picture_.Lines(points, {kInk, 1.5, 0.8});
}

double SamplesDrawing::BoxHalf(const PlotSample& sample) const {
    return sample.outline.empty() ? layout_.Half() * kBoxHalf : std::min(kThinBoxHalf, layout_.Half() / 2);
}

void SamplesDrawing::DrawOutline(std::size_t place, const PlotColour& colour) {
    const PlotSample& sample = panel_.samples[place];
    const double scale = densest_ > 0 ? layout_.Half() / densest_ : 0;
    if (sample.isOutlineOfBars) {
        for (const PlotDensity& bar : sample.outline) DrawBar(place, bar, scale, colour);
        return;
    }
    std::vector<PicturePoint> outline;
    for (const PlotDensity& point : sample.outline) {
        outline.push_back(layout_.Point(place, point.value, point.density * scale));
    }
    for (auto point = sample.outline.rbegin(); point != sample.outline.rend(); ++point) {
        outline.push_back(layout_.Point(place, point->value, -point->density * scale));
    }
    picture_.Area(outline, {colour, kOutlineOpacity, 1});
}

/// A bar is as thick as the nearest values leave room for.
void SamplesDrawing::DrawBar(std::size_t place, const PlotDensity& bar, double scale, const PlotColour& colour) {
    constexpr double kThickest = 6;
    constexpr double kShareOfRoom = 0.35;
    double nearest = std::numeric_limits<double>::infinity();
    for (const PlotDensity& other : panel_.samples[place].outline) {
        if (other.value != bar.value) nearest = std::min(nearest, std::abs(other.value - bar.value));
    }
    const double room = std::abs(layout_.At(bar.value + nearest) - layout_.At(bar.value));
    const double half = std::isfinite(room) ? std::min(kThickest, room * kShareOfRoom) : kThickest;
    PicturePoint corner = layout_.Point(place, bar.value, bar.density * scale);
    PicturePoint opposite = layout_.Point(place, bar.value, -bar.density * scale);
    (layout_.isUpright ? corner.y : corner.x) -= half;
    (layout_.isUpright ? opposite.y : opposite.x) += half;
    picture_.Box(corner, opposite, {colour, kOutlineOpacity, 1});
}

void SamplesDrawing::DrawBox(std::size_t place, const PlotColour& colour) {
    const PlotSample& sample = panel_.samples[place];
    const PlotBox& box = sample.box;
    const double half = BoxHalf(sample);
    const LineLook line{colour, 1.2};
    picture_.Line(layout_.Point(place, box.lowerWhisker), layout_.Point(place, box.firstQuartile), line);
    picture_.Line(layout_.Point(place, box.thirdQuartile), layout_.Point(place, box.upperWhisker), line);
    picture_.Box(layout_.Point(place, box.firstQuartile, -half), layout_.Point(place, box.thirdQuartile, half),
                 {colour, sample.outline.empty() ? kBoxOpacity : kOutlineOpacity, 1.2});
}

void SamplesDrawing::DrawMedian(std::size_t place) {
    const PlotSample& sample = panel_.samples[place];
    const double half = BoxHalf(sample) + (sample.outline.empty() ? 0 : 2);
    picture_.Line(layout_.Point(place, sample.box.median, -half), layout_.Point(place, sample.box.median, half),
                  {kInk, 2.4});
}

/// The area of a mark is its weight.
double SamplesDrawing::RadiusOf(const PlotMark& mark) const {
    constexpr double kLargest = 7;
    if (heaviest_ <= 1) return kDotRadius;
    const double scale = std::min(kDotRadius, kLargest / std::sqrt(heaviest_));
    return std::max(1.0, scale * std::sqrt(mark.weight));
}

void SamplesDrawing::DrawMarks(std::size_t place, const PlotColour& colour) {
    const PlotSample& sample = panel_.samples[place];
    const bool isSwarm = sample.hasAllMarks && panel_.rows.empty();
    std::vector<SwarmDot> dots;
    for (const PlotMark& mark : sample.marks) dots.push_back({layout_.At(mark.value), RadiusOf(mark)});
    const std::vector<double> offsets =
        isSwarm ? SwarmOffsets(dots, layout_.Half()) : std::vector<double>(dots.size(), 0);
    std::map<double, std::vector<PicturePoint>> bySize;
    for (std::size_t i = 0; i < dots.size(); ++i) {
        bySize[dots[i].radius].push_back(layout_.Point(place, sample.marks[i].value, offsets[i]));
    }
    for (const auto& [radius, centres] : bySize) picture_.Dots(centres, radius, {colour, kDotOpacity});
}

}  // namespace tarn
