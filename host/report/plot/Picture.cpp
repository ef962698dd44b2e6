#include "host/report/plot/Picture.h"

#include <array>
#include <charconv>
#include <cmath>

#include "host/report/plot/TextWidth.h"
#include "runtime/common/XmlCharacters.h"

namespace tarn {

namespace {

/// A length in at most two digits behind the point, without zeros that say nothing.
void AppendLength(std::string& text, double value) {
    constexpr double kParts = 100;
    constexpr std::size_t kRoom = 32;
    const double rounded = std::round(value * kParts) / kParts;
    std::array<char, kRoom> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), rounded == 0 ? 0.0 : rounded);
    text.append(digits.data(), end.ptr);
}

void AppendPoint(std::string& text, PicturePoint point) {
    AppendLength(text, point.x);
    text += ' ';
    AppendLength(text, point.y);
}

std::string_view NameOf(TextAnchor anchor) {
    if (anchor == TextAnchor::kMiddle) return "middle";
    return anchor == TextAnchor::kEnd ? "end" : "start";
}

}  // namespace

void Picture::Number(std::string_view attribute, double value) {
    elements_.append(" ").append(attribute).append("=\"");
    AppendLength(elements_, value);
    elements_ += '"';
}

void Picture::OpenShape(std::string_view element) {
    elements_.append("<").append(element);
}

void Picture::Close(const AreaLook& look) {
    elements_.append(" class=\"")
        .append(look.colour.name)
        .append("\" fill=\"")
        .append(look.colour.onWhite)
        .append("\"");
    if (look.opacity < 1) Number("fill-opacity", look.opacity);
    if (look.edge > 0) {
        elements_.append(" stroke=\"").append(look.colour.onWhite).append("\"");
        Number("stroke-width", look.edge);
    }
    elements_ += "/>";
}

void Picture::Lines(const std::vector<PicturePoint>& points, const LineLook& look) {
    if (points.empty()) return;
    OpenShape("path d=\"M");
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (i > 0) elements_ += 'L';
        AppendPoint(elements_, points[i]);
    }
    elements_.append("\" class=\"").append(look.colour.name).append("-line\" fill=\"none\" stroke=\"");
    elements_.append(look.colour.onWhite).append("\"");
    Number("stroke-width", look.width);
    if (look.opacity < 1) Number("stroke-opacity", look.opacity);
    if (!look.dashes.empty()) elements_.append(" stroke-dasharray=\"").append(look.dashes).append("\"");
    elements_ += "/>";
}

void Picture::Line(PicturePoint from, PicturePoint to, const LineLook& look) {
    Lines({from, to}, look);
}

void Picture::Box(PicturePoint corner, PicturePoint opposite, const AreaLook& look) {
    OpenShape("rect");
    Number("x", std::min(corner.x, opposite.x));
    Number("y", std::min(corner.y, opposite.y));
    Number("width", std::abs(corner.x - opposite.x));
    Number("height", std::abs(corner.y - opposite.y));
    Close(look);
}

void Picture::Area(const std::vector<PicturePoint>& outline, const AreaLook& look) {
    if (outline.empty()) return;
    OpenShape("path d=\"M");
    for (std::size_t i = 0; i < outline.size(); ++i) {
        if (i > 0) elements_ += 'L';
        AppendPoint(elements_, outline[i]);
    }
    elements_ += "Z\"";
    Close(look);
}

void Picture::Dot(PicturePoint centre, double radius, const AreaLook& look) {
    OpenShape("circle");
    Number("cx", centre.x);
    Number("cy", centre.y);
    Number("r", radius);
    Close(look);
}

void Picture::Diamond(PicturePoint centre, double radius, const AreaLook& look) {
    Area({{centre.x - radius, centre.y},
          {centre.x, centre.y - radius},
          {centre.x + radius, centre.y},
          {centre.x, centre.y + radius}},
         look);
}

void Picture::Dots(const std::vector<PicturePoint>& centres, double radius, const AreaLook& look) {
    if (centres.empty()) return;
    OpenShape("path d=\"");
    for (const PicturePoint& centre : centres) {
        elements_ += 'M';
        AppendPoint(elements_, centre);
        elements_ += "h0";
    }
    elements_.append("\" class=\"").append(look.colour.name).append("-line\" fill=\"none\" stroke=\"");
    elements_.append(look.colour.onWhite).append("\" stroke-linecap=\"round\"");
    Number("stroke-width", 2 * radius);
    if (look.opacity < 1) Number("stroke-opacity", look.opacity);
    elements_ += "/>";
}

void Picture::Band(PicturePoint leftTop, PicturePoint rightTop, double height, const AreaLook& look) {
    const double middle = (leftTop.x + rightTop.x) / 2;
    OpenShape("path d=\"M");
    AppendPoint(elements_, leftTop);
    const auto bend = [&](PicturePoint one, PicturePoint other, PicturePoint end) {
        elements_ += 'C';
        AppendPoint(elements_, one);
        elements_ += ' ';
        AppendPoint(elements_, other);
        elements_ += ' ';
        AppendPoint(elements_, end);
    };
    bend({middle, leftTop.y}, {middle, rightTop.y}, rightTop);
    elements_ += 'L';
    AppendPoint(elements_, {rightTop.x, rightTop.y + height});
    bend({middle, rightTop.y + height}, {middle, leftTop.y + height}, {leftTop.x, leftTop.y + height});
    elements_ += "Z\"";
    Close(look);
}

void Picture::Text(PicturePoint place, std::string_view text, const TextLook& look) {
    CutText(place, look.room > 0 ? FittedText(text, look.room, look.size) : std::string(text), text, look);
}

void Picture::CutText(PicturePoint place, std::string_view shown, std::string_view whole, const TextLook& look) {
    if (shown.empty()) return;
    const PlotColour& colour = look.isFaint ? kFaint : kInk;
    OpenShape("text");
    Number("x", place.x);
    Number("y", place.y);
    elements_.append(" class=\"").append(colour.name).append("\" fill=\"").append(colour.onWhite).append("\"");
    Number("font-size", look.size);
    if (look.anchor != TextAnchor::kStart) elements_.append(" text-anchor=\"").append(NameOf(look.anchor)).append("\"");
    if (look.isBold) elements_ += " font-weight=\"bold\"";
    elements_ += '>';
    if (shown != whole) {
        elements_ += "<title>";
        AppendXmlText(elements_, whole);
        elements_ += "</title>";
    }
    AppendXmlText(elements_, shown);
    elements_ += "</text>";
}

void Picture::Append(const Picture& below, double gap) {
    const double top = height_ + (height_ > 0 ? gap : 0);
    elements_ += "<g transform=\"translate(0 ";
    AppendLength(elements_, top);
    elements_.append(")\">").append(below.Elements()).append("</g>");
    height_ = top + below.Height();
    width_ = std::max(width_, below.Width());
}

}  // namespace tarn
