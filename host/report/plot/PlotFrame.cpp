#include "host/report/plot/PlotFrame.h"

#include <algorithm>

#include "host/report/plot/TextWidth.h"

namespace tarn {

namespace {

constexpr double kAxisWidth = 1;
constexpr LineLook kGridLine{kGrid, 1};
constexpr LineLook kAxisLine{kFaint, kAxisWidth};

/// Numbers of a horizontal axis that would touch one another are left out, every other one of them.
std::size_t ShownEvery(const GroundAxis& ground) {
    constexpr double kGap = 8;
    const auto& ticks = ground.axis.ticks;
    for (std::size_t every = 1; every < ticks.size(); ++every) {
        bool fits = true;
        for (std::size_t i = every; i < ticks.size(); i += every) {
            const double widths =
                (TextWidth(ticks[i].text, kCaptionSize) + TextWidth(ticks[i - every].text, kCaptionSize)) / 2;
            fits &= ground.At(ticks[i].value) - ground.At(ticks[i - every].value) >= widths + kGap;
        }
        if (fits) return every;
    }
    return std::max<std::size_t>(ticks.size(), 1);
}

}  // namespace

void DrawGroundAxis(Picture& picture, const GroundAxis& ground, const std::string& title) {
    const std::size_t every = ShownEvery(ground);
    for (std::size_t i = 0; i < ground.axis.ticks.size(); ++i) {
        const AxisTick& tick = ground.axis.ticks[i];
        const double x = ground.At(tick.value);
        picture.Line({x, ground.top}, {x, ground.bottom}, kGridLine);
        picture.Line({x, ground.bottom}, {x, ground.bottom + kTickLength}, kAxisLine);
        if (i % every != 0) continue;
        // A number at the end stays within the picture.
        const double half = TextWidth(tick.text, kCaptionSize) / 2;
        const double centre = std::clamp(x, half + 1, picture.Width() - half - 1);
        picture.Text({centre, ground.bottom + kTickTextDepth}, tick.text,
                     {TextAnchor::kMiddle, kCaptionSize, false, true});
    }
    picture.Line({ground.left, ground.bottom}, {ground.right, ground.bottom}, kAxisLine);
    const double room = picture.Width() - 2 * kMargin;
    const double half = std::min(TextWidth(title, kLabelSize), room) / 2;
    const double middle =
        std::clamp((ground.left + ground.right) / 2, kMargin + half, picture.Width() - kMargin - half);
    picture.Text({middle, ground.bottom + kAxisTitleDepth}, title,
                 {TextAnchor::kMiddle, kLabelSize, false, false, room});
}

void DrawSideAxis(Picture& picture, const SideAxis& side, const std::string& title) {
    constexpr double kBaseline = 4;  // by which a number stands below its tick to be level with it
    for (const AxisTick& tick : side.axis.ticks) {
        const double y = side.At(tick.value);
        picture.Line({side.left, y}, {side.right, y}, kGridLine);
        picture.Text({side.left - kTickLength - 2, y + kBaseline}, tick.text,
                     {TextAnchor::kEnd, kCaptionSize, false, true});
    }
    constexpr double kTitleHeight = 10;
    picture.Text({kMargin, side.top - kTitleHeight}, title,
                 {TextAnchor::kStart, kLabelSize, false, false, picture.Width() - 2 * kMargin});
}

double TickRoom(const ValueAxis& axis) {
    double widest = 0;
    for (const AxisTick& tick : axis.ticks) widest = std::max(widest, TextWidth(tick.text, kCaptionSize));
    return widest + kTickLength + 2;
}

double DrawLegend(Picture& picture, const std::vector<LegendEntry>& entries, double left, double top) {
    constexpr double kSample = 22;
    constexpr double kGap = 5;
    constexpr double kBetween = 14;
    constexpr double kMiddle = 4;  // of the letters above their baseline
    constexpr double kBox = 10;
    double x = left;
    double baseline = top + kLineHeight - kMiddle;
    for (const LegendEntry& entry : entries) {
        const double room = picture.Width() - kMargin - left - kSample - kGap;
        const double width = std::min(TextWidth(entry.name, kCaptionSize), room);
        if (x > left && x + kSample + kGap + width > picture.Width() - kMargin) {
            x = left;
            baseline += kLineHeight;
        }
        if (entry.isLine) {
            picture.Line({x, baseline - kMiddle}, {x + kSample, baseline - kMiddle},
                         {entry.colour, 2, 1, entry.dashes});
        } else {
            picture.Box({x + kSample - kBox, baseline - kBox + 1}, {x + kSample, baseline + 1}, {entry.colour});
        }
        picture.Text({x + kSample + kGap, baseline}, entry.name,
                     {TextAnchor::kStart, kCaptionSize, false, false, room});
        x += kSample + kGap + width + kBetween;
    }
    return baseline + kMiddle;
}

double DrawKey(Picture& picture, const std::vector<LegendEntry>& entries) {
    constexpr double kBelow = 6;
    return entries.empty() ? 0 : DrawLegend(picture, entries, kMargin, 0) + kBelow;
}

}  // namespace tarn
