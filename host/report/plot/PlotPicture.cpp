#include "host/report/plot/PlotPicture.h"

#include <cmath>
#include <string_view>

#include "host/report/plot/PanelPictures.h"
#include "runtime/common/XmlCharacters.h"

namespace tarn {

namespace {

constexpr double kBetweenPanels = 14;
constexpr double kFileMargin = 8;
constexpr std::string_view kFonts = "Arial, Helvetica, 'Liberation Sans', 'Nimbus Sans', 'DejaVu Sans', sans-serif";

Picture AllPanels(const PlotData& plot) {
    Picture picture(kPlotWidth);
    for (const PlotPanel& panel : plot.panels) {
        picture.Append(std::visit([](const auto& one) { return PictureOf(one); }, panel), kBetweenPanels);
    }
    return picture;
}

void AppendElement(std::string& svg, std::string_view element, const std::string& id, std::string_view text) {
    svg.append("<").append(element).append(" id=\"").append(id).append("\">");
    AppendXmlText(svg, text);
    svg.append("</").append(element).append(">");
}

std::string WholeDescription(const PlotData& plot) {
    std::string text = plot.description;
    for (const std::string& note : plot.notes) text += " " + note;
    return text;
}

std::string PixelText(double pixels) {
    return std::to_string(static_cast<long>(std::ceil(pixels)));
}

/// The element with its size; a file has a margin of white paper.
void OpenSvg(std::string& svg, const Picture& picture, PictureUse use, const std::string& id) {
    const double margin = use == PictureUse::kFile ? kFileMargin : 0;
    const std::string width = PixelText(picture.Width() + 2 * margin);
    const std::string height = PixelText(picture.Height() + 2 * margin);
    const std::string origin = margin > 0 ? "-" + PixelText(margin) : "0";
    svg += "<svg";
    if (use == PictureUse::kFile) svg += " xmlns=\"http://www.w3.org/2000/svg\"";
    svg += " class=\"plot\" role=\"img\" aria-labelledby=\"" + id + "-t " + id + "-d\" width=\"" + width +
           "\" height=\"" + height + "\" viewBox=\"" + origin + " " + origin + " " + width + " " + height +
           "\" font-family=\"";
    svg.append(kFonts).append("\">");
}

}  // namespace

std::string SvgOf(const PlotData& plot, PictureUse use, const std::string& id) {
    const Picture picture = AllPanels(plot);
    std::string svg;
    OpenSvg(svg, picture, use, id);
    AppendElement(svg, "title", id + "-t", plot.title);
    AppendElement(svg, "desc", id + "-d", WholeDescription(plot));
    if (use == PictureUse::kFile) {
        svg += "<rect x=\"-" + PixelText(kFileMargin) + "\" y=\"-" + PixelText(kFileMargin) +
               "\" width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>";
    }
    svg += picture.Elements();
    svg += "</svg>";
    if (use == PictureUse::kFile) svg += "\n";
    return svg;
}

}  // namespace tarn
