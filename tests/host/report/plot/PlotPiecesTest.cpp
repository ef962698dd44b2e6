// What plots are put together from: widths of texts, axes, swarms of dots. Expected values are worked by hand.

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <vector>

#include "host/Utf8.h"
#include "host/report/plot/Picture.h"
#include "host/report/plot/Swarm.h"
#include "host/report/plot/TextWidth.h"
#include "host/report/plot/ValueAxis.h"

namespace {

using tarn::AxisOf;
using tarn::AxisTick;
using tarn::FittedNames;
using tarn::FittedText;
using tarn::SwarmDot;
using tarn::SwarmOffsets;
using tarn::TextWidth;
using tarn::ValueAxis;

constexpr double kSize = 12;

bool IsUtf8(const std::string& text) {
    return tarn::FindInvalidUtf8(text.data(), text.data() + text.size()) == text.data() + text.size();
}

TEST(TextWidth, AddsTheWidthsOfTheCharacters) {
    EXPECT_EQ(TextWidth("", kSize), 0);
    // A is 684 thousandths wide in DejaVu Sans and 667 in Liberation Sans, i is 278 and 222.
    EXPECT_NEAR(TextWidth("A", 1000), 684, 1e-9);
    EXPECT_NEAR(TextWidth("Ai", 1000), 684 + 278, 1e-9);
    EXPECT_NEAR(TextWidth("Ai", kSize), 12 * (0.684 + 0.278), 1e-9);
}

TEST(TextWidth, CountsACharacterOfSeveralBytesOnce) {
    EXPECT_LT(TextWidth("\xC3\xA9", kSize), TextWidth("ee", kSize));
    EXPECT_EQ(TextWidth("e\xCC\x81", kSize), TextWidth("e", kSize)) << "the acute stands above the letter";
}

TEST(FittedText, LeavesATextThatFits) {
    EXPECT_EQ(FittedText("placebo", TextWidth("placebo", kSize), kSize), "placebo");
    EXPECT_EQ(FittedText("", 0, kSize), "");
}

TEST(FittedText, CutsInTheMiddle) {
    const std::string cut = FittedText("hours of sleep after the treatment", 100, kSize);
    EXPECT_TRUE(cut.starts_with("hours")) << cut;
    EXPECT_TRUE(cut.ends_with("ment")) << cut;
    EXPECT_NE(cut.find("\xE2\x80\xA6"), std::string::npos) << cut;
    EXPECT_LE(TextWidth(cut, kSize), 100);
}

TEST(FittedText, NeverTakesMoreThanItsRoomAndNeverPartsACharacter) {
    rc::check([] {
        const auto pieces = *rc::gen::container<std::vector<std::string>>(
            rc::gen::element<std::string>("a", "W", " ", "\xC3\xA9", "\xD8\xB9", "\xE6\x97\xA5", "\xF0\x9F\x98\x80"));
        const double room = *rc::gen::inRange(20, 200);
        std::string text;
        for (const std::string& piece : pieces) text += piece;
        const std::string cut = FittedText(text, room, kSize);
        RC_ASSERT(TextWidth(cut, kSize) <= room + 1e-6);
        RC_ASSERT(IsUtf8(cut));
    });
}

TEST(FittedNames, TellsApartWhatDiffersInTheMiddle) {
    std::vector<std::string> names;
    for (int i = 0; i < 30; ++i)
        names.push_back("Department of long names number " + std::to_string(i) + " of the hospital");
    const std::vector<std::string> fitted = FittedNames(names, 80, kSize);
    EXPECT_EQ(std::set<std::string>(fitted.begin(), fitted.end()).size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_NE(fitted[i].find(std::to_string(i)), std::string::npos) << fitted[i];
        EXPECT_LE(TextWidth(fitted[i], kSize), 80);
    }
}

TEST(FittedNames, LeavesWhatFits) {
    EXPECT_EQ(FittedNames({"low", "high"}, 100, kSize), (std::vector<std::string>{"low", "high"}));
    EXPECT_EQ(FittedNames({}, 100, kSize), std::vector<std::string>{});
}

// ---- Axes ----

std::vector<std::string> TextsOf(const ValueAxis& axis) {
    std::vector<std::string> texts;
    for (const AxisTick& tick : axis.ticks) texts.push_back(tick.text);
    return texts;
}

TEST(ValueAxis, HasTicksAtRoundNumbers) {
    EXPECT_EQ(TextsOf(AxisOf({18, 84, 6})), (std::vector<std::string>{"20", "40", "60", "80"}));
    EXPECT_EQ(TextsOf(AxisOf({0, 1, 5, true})), (std::vector<std::string>{"0.0", "0.2", "0.4", "0.6", "0.8", "1.0"}));
    EXPECT_EQ(TextsOf(AxisOf({-0.3, 0.3, 4, true})), (std::vector<std::string>{"\xE2\x88\x92"
                                                                               "0.4",
                                                                               "\xE2\x88\x92"
                                                                               "0.2",
                                                                               "0.0", "0.2", "0.4"}));
    EXPECT_EQ(TextsOf(AxisOf({2e9, 8e9, 4, true})), (std::vector<std::string>{"2e+09", "4e+09", "6e+09", "8e+09"}));
}

TEST(ValueAxis, HoldsASingleValue) {
    const ValueAxis axis = AxisOf({5, 5, 5});
    EXPECT_LT(axis.from, 5);
    EXPECT_GT(axis.to, 5);
    EXPECT_DOUBLE_EQ(axis.ShareOf(5), 0.5);
}

TEST(ValueAxis, HoldsAllValuesWithFewTicksInOrder) {
    rc::check([] {
        const double lowest = *rc::gen::inRange(-1000000, 1000000) / 997.0;
        const double range = *rc::gen::inRange(1, 1000000) / 991.0;
        const bool endsAtTicks = *rc::gen::arbitrary<bool>();
        const ValueAxis axis = AxisOf({lowest, lowest + range, 6, endsAtTicks});
        RC_ASSERT(axis.ShareOf(lowest) >= -1e-6);
        RC_ASSERT(axis.ShareOf(lowest + range) <= 1 + 1e-6);
        RC_ASSERT(!axis.ticks.empty() && axis.ticks.size() <= 9U);
        RC_ASSERT(std::ranges::is_sorted(axis.ticks, {}, &AxisTick::value));
        const std::vector<std::string> texts = TextsOf(axis);
        RC_ASSERT(std::set<std::string>(texts.begin(), texts.end()).size() == texts.size());
    });
}

// ---- Swarms ----

TEST(Swarm, PutsEqualDotsBesideOneAnother) {
    const std::vector<double> offsets = SwarmOffsets({{10, 2}, {10, 2}, {10, 2}}, 40);
    EXPECT_EQ(std::set<double>(offsets.begin(), offsets.end()), (std::set<double>{-4, 0, 4}));
}

TEST(Swarm, LeavesDotsThatAreFarApartInTheMiddle) {
    EXPECT_EQ(SwarmOffsets({{0, 2}, {10, 2}, {20, 2}}, 40), (std::vector<double>{0, 0, 0}));
}

TEST(Swarm, CoversNoDotAndFitsItsRoom) {
    rc::check([] {
        const auto places = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 200));
        std::vector<SwarmDot> dots;
        for (const int place : places) dots.push_back({static_cast<double>(place), 2.5});
        const std::vector<double> offsets = SwarmOffsets(dots, 1e6);
        for (std::size_t i = 0; i < dots.size(); ++i) {
            for (std::size_t k = 0; k < i; ++k) {
                RC_ASSERT(std::hypot(dots[i].at - dots[k].at, offsets[i] - offsets[k]) >= 5 - 1e-5);
            }
        }
        const auto isWithin = [](double offset) { return std::abs(offset) <= 20; };
        RC_ASSERT(std::ranges::all_of(SwarmOffsets(dots, 20), isWithin));
    });
}

// ---- Elements ----

TEST(Picture, WritesNamesAsText) {
    tarn::Picture picture(100);
    picture.Text({1, 2}, "</text><script>&\"'", {});
    EXPECT_EQ(picture.Elements().find("<script"), std::string::npos);
    EXPECT_NE(picture.Elements().find("&lt;/text&gt;&lt;script&gt;&amp;"), std::string::npos) << picture.Elements();
}

TEST(Picture, KeepsTwoDigitsOfALength) {
    tarn::Picture picture(100);
    picture.Line({1.0 / 3, 0}, {-0.001, 2.5}, {});
    EXPECT_NE(picture.Elements().find("d=\"M0.33 0L0 2.5\""), std::string::npos) << picture.Elements();
}

TEST(Picture, ShowsTheWholeOfATextThatWasCut) {
    tarn::Picture picture(100);
    tarn::TextLook look;
    look.room = 30;
    picture.Text({0, 0}, "hours_after", look);
    EXPECT_NE(picture.Elements().find("<title>hours_after</title>"), std::string::npos) << picture.Elements();
}

}  // namespace
