#include <algorithm>
#include <charconv>
#include <numeric>

#include "host/report/plot/PanelPictures.h"
#include "host/report/plot/PlotFrame.h"
#include "host/report/plot/PlotPicture.h"
#include "host/report/plot/TextWidth.h"

namespace tarn {

namespace {

constexpr double kHeight = 220;
constexpr double kGap = 8;     // between categories
constexpr double kBlock = 12;  // width of the block of a category
constexpr double kNamesRoom = 105;
constexpr double kBandOpacity = 0.5;

std::string CountText(double count) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, count).ptr};
}

/// The colours of those who stay, who rise and who fall; without an order those who change have one colour for each
/// way.
const PlotColour& ColourOf(std::size_t from, std::size_t to) {
    if (from == to) return kFaint;
    return to > from ? kGroupColours[0] : kGroupColours[1];
}

/// Where the categories of one side lie.
struct FlowSide {
    std::vector<double> totals;
    std::vector<double> tops;
    double scale = 0;  ///< pixels of a case
};

FlowSide SideOf(std::vector<double> totals, double top, std::size_t mostCategories) {
    FlowSide side;
    const double all = std::accumulate(totals.begin(), totals.end(), 0.0);
    const double room = kHeight - kGap * static_cast<double>(mostCategories - 1);
    side.scale = all > 0 ? room / all : 0;
    double y = top + kGap * static_cast<double>(mostCategories - totals.size()) / 2;
    for (const double total : totals) {
        side.tops.push_back(y);
        y += total * side.scale + kGap;
    }
    side.totals = std::move(totals);
    return side;
}

/// Names beside blocks; where blocks are thin, names are moved apart so that none covers another.
void DrawNames(Picture& picture, const std::vector<std::string>& names, const FlowSide& side, double x, bool isLeft) {
    constexpr double kBaseline = 4;
    std::vector<double> lines(names.size());
    double below = -1e9;
    for (std::size_t i = 0; i < names.size(); ++i) {
        lines[i] = std::max(side.tops[i] + side.totals[i] * side.scale / 2 + kBaseline, below + kLineHeight);
        below = lines[i];
    }
    double widestCount = 0;
    for (const double total : side.totals)
        widestCount = std::max(widestCount, TextWidth(" " + CountText(total), kLabelSize));
    const std::vector<std::string> fitted = FittedNames(names, kNamesRoom - widestCount, kLabelSize);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string count = " " + CountText(side.totals[i]);
        picture.CutText({x, lines[i]}, fitted[i] + count, names[i] + count,
                        {isLeft ? TextAnchor::kEnd : TextAnchor::kStart, kLabelSize});
    }
}

void DrawTitles(Picture& picture, const FlowPanel& panel, double top) {
    constexpr double kHalf = kPlotWidth / 2 - kMargin - 8;
    picture.Text({kMargin, top}, panel.fromTitle, {TextAnchor::kStart, kLabelSize, true, false, kHalf});
    picture.Text({kPlotWidth - kMargin, top}, panel.toTitle, {TextAnchor::kEnd, kLabelSize, true, false, kHalf});
}

struct FlowLayout {
    FlowSide from;
    FlowSide to;
    double left = 0;
    double right = 0;
};

/// Bands with their counts, where they are thick enough to hold one.
void DrawBands(Picture& picture, const FlowPanel& panel, const FlowLayout& layout) {
    constexpr double kThickEnough = 13;
    constexpr double kBaseline = 4;
    constexpr double kWhere = 0.14;  // of the way, so that counts of crossing bands stay apart
    std::vector<double> fromNext = layout.from.tops;
    std::vector<double> toNext = layout.to.tops;
    struct Label {
        PicturePoint place;
        std::string text;
    };
    std::vector<Label> labels;
    for (std::size_t i = 0; i < panel.counts.size(); ++i) {
        for (std::size_t j = 0; j < panel.counts[i].size(); ++j) {
            const double height = panel.counts[i][j] * layout.from.scale;
            if (height <= 0) continue;
            picture.Band({layout.left, fromNext[i]}, {layout.right, toNext[j]}, height, {ColourOf(i, j), kBandOpacity});
            if (height >= kThickEnough) {
                const double x = layout.left + kWhere * (layout.right - layout.left);
                labels.push_back({{x, fromNext[i] + height / 2 + kBaseline}, CountText(panel.counts[i][j])});
            }
            fromNext[i] += height;
            toNext[j] += height;
        }
    }
    for (const Label& label : labels) picture.Text(label.place, label.text, {TextAnchor::kMiddle, kCaptionSize});
}

void DrawBlocks(Picture& picture, const FlowSide& side, double x) {
    for (std::size_t i = 0; i < side.totals.size(); ++i) {
        picture.Box({x, side.tops[i]}, {x + kBlock, side.tops[i] + side.totals[i] * side.scale}, {kFaint});
    }
}

std::vector<double> ColumnTotals(const FlowPanel& panel) {
    std::vector<double> totals(panel.to.size(), 0);
    for (const std::vector<double>& row : panel.counts) {
        for (std::size_t j = 0; j < row.size() && j < totals.size(); ++j) totals[j] += row[j];
    }
    return totals;
}

std::vector<double> RowTotals(const FlowPanel& panel) {
    std::vector<double> totals;
    for (const std::vector<double>& row : panel.counts) totals.push_back(std::accumulate(row.begin(), row.end(), 0.0));
    return totals;
}

}  // namespace

Picture PictureOf(const FlowPanel& panel) {
    Picture picture(kPlotWidth);
    std::vector<LegendEntry> entries;
    if (!panel.stayed.empty()) entries.push_back({panel.stayed, kFaint, false});
    if (!panel.rose.empty()) entries.push_back({panel.rose, kGroupColours[0], false});
    if (!panel.fell.empty()) entries.push_back({panel.fell, kGroupColours[1], false});
    constexpr double kTitleHeight = 14;
    constexpr double kBelowTitle = 10;
    const double title = DrawKey(picture, entries) + kTitleHeight;
    DrawTitles(picture, panel, title);
    const double top = title + kBelowTitle;
    const std::size_t most = std::max(panel.from.size(), panel.to.size());
    constexpr double kBesideName = 5;
    FlowLayout layout{SideOf(RowTotals(panel), top, most), SideOf(ColumnTotals(panel), top, most)};
    layout.left = kMargin + kNamesRoom + kBesideName + kBlock;
    layout.right = kPlotWidth - layout.left;
    DrawBands(picture, panel, layout);
    DrawBlocks(picture, layout.from, layout.left - kBlock);
    DrawBlocks(picture, layout.to, layout.right);
    DrawNames(picture, panel.from, layout.from, layout.left - kBlock - kBesideName, true);
    DrawNames(picture, panel.to, layout.to, layout.right + kBlock + kBesideName, false);
    // Names of many thin blocks may reach below the last one.
    const double names = top + kLineHeight * static_cast<double>(most);
    picture.SetHeight(std::max(top + kHeight, names) + kMargin);
    return picture;
}

}  // namespace tarn
