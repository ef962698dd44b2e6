#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "host/report/plot/PanelPictures.h"
#include "host/report/plot/PlotFrame.h"
#include "host/report/plot/PlotPicture.h"
#include "host/report/plot/TextWidth.h"

namespace tarn {

namespace {

constexpr double kRow = 22;
constexpr double kNamesRoom = 220;
constexpr double kGap = 8;
constexpr double kRadius = 4;

std::pair<double, double> RangeOf(const IntervalsPanel& panel) {
    double lowest = panel.noEffect.value_or(std::numeric_limits<double>::infinity());
    double highest = panel.noEffect.value_or(-std::numeric_limits<double>::infinity());
    for (const PlotEstimate& row : panel.rows) {
        lowest = std::min({lowest, row.value, row.limits ? row.limits->first : row.value});
        highest = std::max({highest, row.value, row.limits ? row.limits->second : row.value});
    }
    return {lowest, highest};
}

constexpr std::string_view kBetweenPair = " \xE2\x80\x93 ";

/// What stands beside the rows: whole, and as there is room for it. Of a pair each name has its own room.
class RowNames {
 public:
    explicit RowNames(const std::vector<PlotEstimate>& rows) {
        std::vector<std::string> names;
        bool arePairs = false;
        for (const PlotEstimate& row : rows) {
            names.push_back(row.label);
            if (!row.second.empty()) names.push_back(row.second);
            arePairs |= !row.second.empty();
        }
        const double between = TextWidth(kBetweenPair, kLabelSize);
        const std::vector<std::string> fitted =
            FittedNames(names, arePairs ? (kNamesRoom - between) / 2 : kNamesRoom, kLabelSize);
        std::size_t next = 0;
        for (const PlotEstimate& row : rows) {
            std::string shown = fitted[next++];
            std::string whole = row.label;
            if (!row.second.empty()) {
                shown.append(kBetweenPair).append(fitted[next++]);
                whole.append(kBetweenPair).append(row.second);
            }
            width_ = std::max(width_, TextWidth(shown, kLabelSize));
            shown_.push_back(std::move(shown));
            whole_.push_back(std::move(whole));
        }
    }

    double Width() const { return width_; }
    void Draw(Picture& picture, std::size_t row, PicturePoint end) const {
        picture.CutText(end, shown_[row], whole_[row], {TextAnchor::kEnd, kLabelSize});
    }

 private:
    std::vector<std::string> shown_;
    std::vector<std::string> whole_;
    double width_ = 0;
};

void DrawRow(Picture& picture, const PlotEstimate& row, const GroundAxis& ground, double middle) {
    if (row.limits) {
        picture.Line({ground.At(row.limits->first), middle}, {ground.At(row.limits->second), middle}, {kInk, 1.8});
    }
    picture.Dot({ground.At(row.value), middle}, kRadius, {kGroupColours.front()});
}

}  // namespace

Picture PictureOf(const IntervalsPanel& panel) {
    Picture picture(kPlotWidth);
    constexpr double kTitleHeight = 20;
    double top = 2;
    if (!panel.title.empty()) {
        picture.Text({kMargin, kLabelSize}, panel.title,
                     {TextAnchor::kStart, kLabelSize, true, false, kPlotWidth - 2 * kMargin});
        top += kTitleHeight;
    }
    constexpr std::string_view kDashes = "5 3";
    if (!panel.noEffectLabel.empty()) {
        constexpr double kBelow = 6;
        top = DrawLegend(picture, {{panel.noEffectLabel, kInk, true, kDashes}}, kMargin, top) + kBelow;
    }
    const double bottom = top + kRow * static_cast<double>(panel.rows.size());
    const RowNames names(panel.rows);
    const auto [lowest, highest] = RangeOf(panel);
    constexpr double kEndOfTicks = 12;
    const GroundAxis ground{AxisOf({lowest, highest, 6}), kMargin + names.Width() + kGap, kPlotWidth - kEndOfTicks, top,
                            bottom};
    DrawGroundAxis(picture, ground, panel.valueTitle);
    if (panel.noEffect) {
        const double x = ground.At(*panel.noEffect);
        picture.Line({x, top}, {x, bottom}, {kInk, 1.2, 1, kDashes});
    }
    for (std::size_t i = 0; i < panel.rows.size(); ++i) {
        constexpr double kBaseline = 4;
        const double middle = top + kRow * (static_cast<double>(i) + 0.5);
        names.Draw(picture, i, {ground.left - kGap, middle + kBaseline});
        DrawRow(picture, panel.rows[i], ground, middle);
    }
    picture.SetHeight(bottom + kAxisHeight);
    return picture;
}

}  // namespace tarn
