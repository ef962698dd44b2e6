#include "host/beyond/PlotView.h"

#include <algorithm>
#include <cmath>

#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/beyond/Dichotomies.h"
#include "host/beyond/NamePlaces.h"
#include "host/report/SupplementText.h"

namespace tarn {

namespace {

/// A field by its title and its name: "Hours of sleep (hours_after)".
std::string TitleOf(const Column& column) {
    return column.title.empty() || column.title == column.name ? column.name : column.title + " (" + column.name + ")";
}

}  // namespace

std::string PlotView::Text(const char* label, const std::vector<std::string>& parts) const {
    return FillIn(source.texts.Label(label), {&parts});
}

void PlotView::Note(const char* label, const std::vector<std::string>& parts) {
    std::string note = Text(label, parts);
    if (std::ranges::find(data.notes, note) == data.notes.end()) data.notes.push_back(std::move(note));
}

std::string PlotView::Digits(double number) const {
    return FewDigits(Number(ExactText(number)));
}

std::string PlotView::CountText(double n) const {
    return Text("plotN", {Digits(n)});
}

std::string PlotView::LevelText() const {
    constexpr double kPercent = 100;
    return Digits(view.confidence * kPercent) + " %";
}

std::string PlotView::ValueTitle() const {
    if (view.columns.size() == 1) return TitleOf(*view.columns.front());
    return "";
}

std::string PlotView::GroupTitle() const {
    return view.groupColumn == nullptr ? "" : TitleOf(*view.groupColumn);
}

std::string PlotView::FirstClassName() const {
    const FirstClass first = FirstClassOf(view);
    if (first.cut) return Text("plotUpTo", {Digits(*first.cut)});
    return first.categories.empty() ? Text("firstGroup") : JoinList(first.categories);
}

std::string PlotView::SecondClassName() const {
    const FirstClass first = FirstClassOf(view);
    if (first.cut) return Text("plotAbove", {Digits(*first.cut)});
    // The categories that occur and are not of the first class; many of them are the others.
    constexpr std::size_t kMostNames = 3;
    std::vector<std::string> names;
    const Column& column = *view.columns.front();
    for (const Category& category : column.categories) {
        std::string name = ShownCategory(column, category);
        if (std::ranges::find(first.categories, name) == first.categories.end()) names.push_back(std::move(name));
    }
    return names.empty() || names.size() > kMostNames ? Text("plotOtherClass") : JoinList(names);
}

std::string PlotView::SuccessName() const {
    if (!source.success.empty()) return JoinList(source.success);
    const Column& first = *view.columns.front();
    return first.categories.empty() ? "" : ShownCategory(first, first.categories.front());
}

std::string PlotView::ShownValue(std::size_t field, double value) const {
    const Column& column = *view.columns[field];
    if (!column.IsCategorical()) return Digits(value);
    if (column.IsText()) {
        const auto place = static_cast<std::size_t>(value);
        return place < column.categories.size() ? ShownCategory(column, column.categories[place]) : Digits(value);
    }
    const auto found = std::ranges::find(column.categories, value, &Category::number);
    return found == column.categories.end() ? Digits(value) : ShownCategory(column, *found);
}

std::vector<std::size_t> PlotView::Colours() const {
    std::vector<std::string> shown;
    if (view.groupColumn != nullptr) {
        for (const Category& category : view.groupColumn->categories) {
            shown.push_back(ShownCategory(*view.groupColumn, category));
        }
    }
    const NamePlaces places(view.groupColumn == nullptr ? view.names : shown);
    std::vector<std::size_t> colours;
    for (const std::string& name : view.names) colours.push_back(places.Of(name));
    return colours;
}

std::size_t PlotView::ColourCount() const {
    return view.groupColumn == nullptr ? view.names.size() : view.groupColumn->categories.size();
}

void PlotView::Describe() {
    data.title = reading.title + ": " + JoinList(reading.fields);
    if (!reading.group.empty()) data.title += Text("plotBy", {reading.group});
    constexpr std::size_t kMostDescribed = 12;
    std::vector<std::string> parts;
    for (const SampleSummary& sample : reading.supplement.samples) {
        if (parts.size() == kMostDescribed) {
            parts.push_back(Text("plotAndSoOn", {std::to_string(reading.supplement.samples.size())}));
            break;
        }
        parts.push_back(sample.median.empty()
                            ? Text("plotSampleOfWords", {sample.name, FewDigits(sample.n)})
                            : Text("plotSample", {sample.name, FewDigits(sample.n), FewDigits(sample.median),
                                                  FewDigits(sample.firstQuartile), FewDigits(sample.thirdQuartile)}));
    }
    if (!parts.empty()) data.description = JoinList(parts, "; ") + ".";
}

}  // namespace tarn
