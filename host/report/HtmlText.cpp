#include "host/report/HtmlText.h"

#include "runtime/common/XmlCharacters.h"

namespace tarn {

namespace {

bool IsPlain(std::string_view text) {
    for (const char each : text) {
        if (static_cast<unsigned char>(each) >= 0x80) return false;
    }
    return true;
}

std::string CellContent(const PageCell& cell) {
    if (cell.number.empty()) return HtmlIsolated(cell.text);
    constexpr std::string_view kChiSquare = "chi2";
    if (!cell.text.starts_with(kChiSquare)) return HtmlNumber(cell.text, cell.number, cell.upper);
    return "<i>χ</i><sup>2</sup>" + HtmlNumber(cell.text.substr(kChiSquare.size()), cell.number, cell.upper);
}

/// A number is not broken where it stands alone, or as two of an interval.
bool IsShortNumber(const PageCell& cell) {
    constexpr std::size_t kLongest = 26;
    return !cell.number.empty() && cell.text.size() <= kLongest;
}

/// Numbers with the minus of print in place of the hyphen, and bounds in one piece.
std::string Printed(const std::string& text) {
    constexpr std::string_view kMinus = "\xE2\x88\x92";
    constexpr std::string_view kUnbrokenBlank = "\xC2\xA0";
    constexpr std::string_view kBeforeNumbers = " [(=";
    std::string printed;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isBegin = i == 0 || kBeforeNumbers.find(text[i - 1]) != std::string_view::npos;
        const char next = i + 1 < text.size() ? text[i + 1] : ' ';
        const bool isNumber = (next >= '0' && next <= '9') || next == '.';
        const bool isBound = text[i] == ' ' && i > 0 && (text[i - 1] == '<' || text[i - 1] == '>');
        if (isBound) {
            printed += kUnbrokenBlank;
        } else {
            printed += text[i] == '-' && isBegin && isNumber ? std::string(kMinus) : std::string(1, text[i]);
        }
    }
    return printed;
}

/// The class attribute of a cell: numbers on the right, numbers that aren't broken, what is left out on a small screen.
std::string ClassOf(const PageColumn& column, bool isUnbroken, bool isLongHead = false) {
    std::string classes;
    const auto add = [&](const char* name) { classes += (classes.empty() ? "" : " ") + std::string(name); };
    if (column.alignment == Alignment::kRight) add("r");
    if (isUnbroken && column.alignment != Alignment::kRight) add("n");
    if (isLongHead) add("h");
    if (column.isDetail) add("d");
    return classes.empty() ? "" : " class=\"" + classes + "\"";
}

void AppendHead(std::string& html, const PageTable& table) {
    html += "<thead><tr>";
    for (const PageColumn& column : table.columns) {
        // An empty heading would be read out as one.
        const char* const element = column.title.empty() ? "td" : "th";
        constexpr std::size_t kLongTitle = 14;
        html += std::string("<") + element + (column.title.empty() ? "" : " scope=\"col\"") +
                ClassOf(column, false, column.title.size() > kLongTitle) + ">" + HtmlIsolated(column.title) + "</" +
                element + ">";
    }
    html += "</tr></thead>";
}

}  // namespace

std::string HtmlEscaped(std::string_view text) {
    std::string escaped;
    AppendXmlText(escaped, text);
    return escaped;
}

std::string HtmlAttribute(std::string_view value) {
    std::string attribute = "\"";
    AppendXmlAttribute(attribute, value);
    return attribute + "\"";
}

std::string HtmlIsolated(std::string_view text) {
    return IsPlain(text) ? HtmlEscaped(text) : "<bdi>" + HtmlEscaped(text) + "</bdi>";
}

std::string HtmlNumber(const std::string& text, const Number& number, const Number& upper) {
    if (number.empty()) return HtmlIsolated(text);
    const std::string value = upper.empty() ? number.text : number.text + " " + upper.text;
    return "<data value=" + HtmlAttribute(value) + ">" + HtmlEscaped(Printed(text)) + "</data>";
}

std::string HtmlTable(const PageTable& table, const HtmlTableLook& look) {
    const std::string label = look.label.empty() ? table.title : look.label;
    std::string html =
        "<div class=\"wide\" role=\"group\" tabindex=\"0\" aria-label=" + HtmlAttribute(label) + "><table>";
    if (!table.title.empty()) html += "<caption>" + HtmlIsolated(table.title) + "</caption>";
    AppendHead(html, table);
    html += "<tbody>";
    for (std::size_t i = 0; i < table.rows.size(); ++i) {
        html += "<tr>";
        for (std::size_t k = 0; k < table.rows[i].size(); ++k) {
            const PageColumn& column = table.columns[k];
            std::string content = CellContent(table.rows[i][k]);
            const bool isLink = column.key == look.linkColumn && !look.linkColumn.empty() && i < look.targets.size();
            if (isLink) content = "<a href=" + HtmlAttribute("#" + look.targets[i]) + ">" + content + "</a>";
            const bool isRowHead = k == 0 && !table.rows[i][k].text.empty();
            html += isRowHead ? std::string("<th scope=\"row\"") : std::string("<td");
            html += ClassOf(column, IsShortNumber(table.rows[i][k]));
            html += ">" + content + (isRowHead ? "</th>" : "</td>");
        }
        html += "</tr>\n";
    }
    return html + "</tbody></table></div>\n";
}

}  // namespace tarn
