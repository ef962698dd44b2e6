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
    if (!cell.number.empty()) return HtmlNumber(cell.text, cell.number, cell.upper);
    return HtmlIsolated(cell.text);
}

const char* ClassOf(const PageColumn& column) {
    return column.alignment == Alignment::kRight ? " class=\"r\"" : "";
}

void AppendHead(std::string& html, const PageTable& table) {
    html += "<thead><tr>";
    for (const PageColumn& column : table.columns) {
        // An empty heading would be read out as one.
        const char* const element = column.title.empty() ? "td" : "th";
        html += std::string("<") + element + (column.title.empty() ? "" : " scope=\"col\"") + ClassOf(column) + ">" +
                HtmlIsolated(column.title) + "</" + element + ">";
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
    return "<data value=" + HtmlAttribute(value) + ">" + HtmlIsolated(text) + "</data>";
}

std::string HtmlTable(const PageTable& table, const HtmlTableLook& look) {
    const std::string label = look.label.empty() ? table.title : look.label;
    std::string html = "<div class=\"wide\" role=\"region\" tabindex=\"0\" aria-label=" + HtmlAttribute(label) + "><table>";
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
            html += ClassOf(column);
            html += ">" + content + (isRowHead ? "</th>" : "</td>");
        }
        html += "</tr>\n";
    }
    return html + "</tbody></table></div>\n";
}

}  // namespace tarn
