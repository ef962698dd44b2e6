#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/report/plot/PlotColours.h"

namespace tarn {

/// Where a text stands in respect of its point.
enum class TextAnchor { kStart, kMiddle, kEnd };

struct PicturePoint {
    double x = 0;
    double y = 0;
};

/// How a line is drawn. A colour that is `kInk` follows the text of the page around it.
struct LineLook {
    PlotColour colour = kInk;
    double width = 1;
    double opacity = 1;
    std::string_view dashes = {};  ///< lengths of dashes and gaps: "4 3"; empty for a whole line
};

/// How an area is filled, and how its edge is drawn; an edge of width 0 isn't.
struct AreaLook {
    PlotColour colour = kInk;
    double opacity = 1;
    double edge = 0;
};

/// How a text is set.
struct TextLook {
    TextAnchor anchor = TextAnchor::kStart;
    double size = 12;
    bool isBold = false;
    bool isFaint = false;
    /// What it may be wide; what is wider is cut in the middle, and its whole text is shown on pointing at it. 0: as
    /// wide as it is.
    double room = 0;
};

/// A picture in the making: elements of SVG within a width and a height, in pixels of a screen. Coordinates keep two
/// digits behind the point.
///
/// A colour stands twice on an element: as an attribute, which every program that shows SVG understands, and as a
/// class, by which a page that holds the picture gives it the colours of its own light.
class Picture {
 public:
    explicit Picture(double width) : width_(width) {}

    double Width() const { return width_; }
    double Height() const { return height_; }
    void SetHeight(double height) { height_ = height; }
    const std::string& Elements() const { return elements_; }

    void Line(PicturePoint from, PicturePoint to, const LineLook& look);
    void Lines(const std::vector<PicturePoint>& points, const LineLook& look);
    /// Its corners may be given in any order.
    void Box(PicturePoint corner, PicturePoint opposite, const AreaLook& look);
    void Area(const std::vector<PicturePoint>& outline, const AreaLook& look);
    void Dot(PicturePoint centre, double radius, const AreaLook& look);
    void Diamond(PicturePoint centre, double radius, const AreaLook& look);
    /// A band from left to right between two vertical edges, bent like a river.
    void Band(PicturePoint leftTop, PicturePoint rightTop, double height, const AreaLook& look);
    void Text(PicturePoint place, std::string_view text, const TextLook& look);
    /// A text that was cut, with the whole one to be shown on pointing at it.
    void CutText(PicturePoint place, std::string_view shown, std::string_view whole, const TextLook& look);
    /// Dots of one size as one element, in which each takes a dozen characters: the round ends of lines without length.
    void Dots(const std::vector<PicturePoint>& centres, double radius, const AreaLook& look);

    /// Puts another picture below what is there.
    void Append(const Picture& below, double gap);

 private:
    void OpenShape(std::string_view element);
    void Number(std::string_view attribute, double value);
    void Close(const AreaLook& look);

    double width_;
    double height_ = 0;
    std::string elements_;
};

}  // namespace tarn
