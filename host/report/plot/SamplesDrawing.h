#pragma once

#include <cstddef>

#include "host/report/plot/Picture.h"
#include "host/report/plot/PlotData.h"
#include "host/report/plot/ValueAxis.h"

namespace tarn {

/// How far a sample may reach to each side of its middle, in a room of that width.
double HalfOf(double slot);

/// Where values and samples lie. Samples stand side by side, or one below another where their names ask for it.
struct SamplesLayout {
    bool isUpright = true;
    ValueAxis axis;
    double valuesFrom = 0;  ///< pixels of the beginning and the end of the axis
    double valuesTo = 0;
    double placesFrom = 0;  ///< where the room of the first sample begins
    double slot = 0;

    double At(double value) const { return valuesFrom + axis.ShareOf(value) * (valuesTo - valuesFrom); }
    double Middle(std::size_t sample) const { return placesFrom + slot * (static_cast<double>(sample) + 0.5); }
    double Half() const { return HalfOf(slot); }
    /// The point of a value, so far from the middle of its sample.
    PicturePoint Point(std::size_t sample, double value, double offset = 0) const {
        return isUpright ? PicturePoint{Middle(sample) + offset, At(value)}
                         : PicturePoint{At(value), Middle(sample) + offset};
    }
};

/// Draws samples at their places: rows of cases behind, then each sample with its outline, box and marks.
class SamplesDrawing {
 public:
    /// All are borrowed.
    SamplesDrawing(const SamplesPanel& panel, const SamplesLayout& layout, Picture& picture);

    void DrawRows();
    void DrawSample(std::size_t place);
    void ConnectMedians();

 private:
    double BoxHalf(const PlotSample& sample) const;
    void DrawOutline(std::size_t place, const PlotColour& colour);
    void DrawBar(std::size_t place, const PlotDensity& bar, double scale, const PlotColour& colour);
    void DrawBox(std::size_t place, const PlotColour& colour);
    void DrawMedian(std::size_t place);
    double RadiusOf(const PlotMark& mark) const;
    void DrawMarks(std::size_t place, const PlotColour& colour);

    const SamplesPanel& panel_;
    const SamplesLayout& layout_;
    Picture& picture_;
    double densest_ = 0;
    double heaviest_ = 0;
};

}  // namespace tarn
