#pragma once

#include <string>
#include <vector>

#include "host/beyond/PlotSources.h"
#include "host/beyond/TestView.h"

namespace tarn {

/// A test on its way to a plot: what is drawn, and the words for it.
class PlotView {
 public:
    PlotView(const TestView& testView, const PlotSource& plotSource)
        : view(testView), reading(*testView.reading), source(plotSource) {}

    /// A text of the catalogue with its parts.
    std::string Text(const char* label, const std::vector<std::string>& parts = {}) const;
    /// Adds what a reader has to know of the drawing; once, however often it is said.
    void Note(const char* label, const std::vector<std::string>& parts = {});
    /// Title and description, once the panels are there.
    void Describe();

    bool IsWeighted() const { return source.table.WeightIndex() != Table::kNoColumn; }
    std::string Digits(double number) const;
    std::string CountText(double n) const;  ///< "n = 30"
    std::string LevelText() const;          ///< "95 %"
    std::string ValueTitle() const;         ///< of the field, or of all fields
    std::string GroupTitle() const;         ///< of the groups; "" for fields
    std::string FirstClassName() const;     ///< of the two classes of one field
    std::string SecondClassName() const;
    std::string SuccessName() const;  ///< the categories that count as a success
    /// What a reader is shown for a value of a field as the cases have it.
    std::string ShownValue(std::size_t field, double value) const;
    /// For each sample the place of a group among all categories of its field, of a field among those of the test; and
    /// how many there are.
    std::vector<std::size_t> Colours() const;
    std::size_t ColourCount() const;

    const TestView& view;
    const TestReading& reading;
    const PlotSource& source;
    PlotData data;
};

}  // namespace tarn
