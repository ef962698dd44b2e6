#include "host/report/Markup.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tarn {

namespace {

constexpr std::string_view kChiSquare = "chi2";
constexpr std::string_view kMinus = "\u2212";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// Whether the hyphen at a place is the sign of a number: "-.02", "[-1.2, 3]".
bool IsSign(std::string_view text, std::size_t place) {
    const bool isBefore = place == 0 || text[place - 1] == ' ' || text[place - 1] == '[' || text[place - 1] == '(';
    const bool isOfNumber =
        place + 1 < text.size() &&
        (IsDigit(text[place + 1]) || (text[place + 1] == '.' && place + 2 < text.size() && IsDigit(text[place + 2])));
    return text[place] == '-' && isBefore && isOfNumber;
}

/// A text of which each character that `replaced` knows stands otherwise.
template <typename Replaced>
std::string Replace(std::string_view text, Replaced replaced) {
    std::string written;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string_view other = replaced(i);
        if (other.empty()) {
            written += text[i];
        } else {
            written += other;
        }
    }
    return written;
}

/// What would begin a list or a heading at the begin of a line: "- ", "+ ", "= ", "1. ", "1) ".
std::size_t PlaceOfLineMark(std::string_view text) {
    if (!text.empty() && (text[0] == '-' || text[0] == '+' || text[0] == '=')) return 0;
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const bool isMarked = digits > 0 && digits < text.size() && (text[digits] == '.' || text[digits] == ')');
    const bool isNumbered = isMarked && (digits + 1 == text.size() || text[digits + 1] == ' ');
    return isNumbered ? digits : std::string_view::npos;
}

/// An escaped text as the begin of a line, which a backslash keeps from being a list.
std::string AtBeginOfLine(std::string text) {
    const std::size_t mark = PlaceOfLineMark(text);
    if (mark != std::string_view::npos) text.insert(mark, "\\");
    return text;
}

/// A text that is set upright behind its symbol: " = 7.99", ", df 2" and so on.
std::string ValueOf(const PageFigure& figure) {
    std::string text = figure.relation.empty() ? " " : " " + figure.relation + " ";
    text += figure.text;
    if (figure.symbol != kChiSquare && !figure.df.empty()) text += ", df " + figure.df;
    return text;
}

/// Whether a symbol is one letter of a formula; others are words.
bool IsLetter(const std::string& symbol) {
    return symbol.size() == 1;
}

std::string RowOf(const std::vector<std::string>& cells, const char* begin, const char* between, const char* end) {
    std::string row = begin;
    for (std::size_t i = 0; i < cells.size(); ++i) row += (i > 0 ? between : "") + cells[i];
    return row + end;
}

}  // namespace

// ---- Markdown ----

std::string MarkdownMarkup::Escaped(std::string_view text) const {
    // A backslash makes any of these a character; an ampersand and angles are safe in older readers as entities alone.
    constexpr std::string_view kSpecial = "\\`*_{}[]#|~^$@!";
    std::string written;
    for (const char c : text) {
        if (kSpecial.find(c) != std::string_view::npos) written += '\\';
        if (c == '&') {
            written += "&amp;";
        } else if (c == '<' || c == '>') {
            written += c == '<' ? "&lt;" : "&gt;";
        } else {
            written += c;
        }
    }
    return written;
}

std::string MarkdownMarkup::Heading(int level, const std::string& text) const {
    return std::string(static_cast<std::size_t>(level), '#') + " " + Escaped(text) + "\n\n";
}

std::string MarkdownMarkup::Paragraph(const std::string& text) const {
    return AtBeginOfLine(Escaped(text)) + "\n\n";
}

std::string MarkdownMarkup::List(const std::vector<std::string>& lines) const {
    std::string text;
    for (const std::string& line : lines) text += "- " + AtBeginOfLine(line) + "\n";
    return text + "\n";
}

std::string MarkdownMarkup::Table(const PageTable& table) const {
    std::string text = table.title.empty() ? "" : Paragraph(table.title);
    std::vector<std::string> cells;
    for (const PageColumn& column : table.columns) cells.push_back(Escaped(column.title));
    text += RowOf(cells, "| ", " | ", " |\n");
    cells.clear();
    for (const PageColumn& column : table.columns)
        cells.emplace_back(column.alignment == Alignment::kLeft ? ":--" : "--:");
    text += RowOf(cells, "| ", " | ", " |\n");
    for (const auto& row : table.rows) {
        cells.clear();
        for (const PageCell& cell : row) cells.push_back(Escaped(cell.text));
        text += RowOf(cells, "| ", " | ", " |\n");
    }
    return text + "\n";
}

std::string MarkdownMarkup::Figure(const PageFigure& figure) const {
    const bool isChiSquare = figure.symbol == kChiSquare;
    std::string symbol = IsLetter(figure.symbol) ? "*" + Escaped(figure.symbol) + "*" : Escaped(figure.symbol);
    if (isChiSquare) symbol = "\u03C7\u00B2(" + figure.df + ")";
    return symbol + Escaped(ValueOf(figure));
}

// ---- LaTeX ----

std::string LatexMarkup::Head() const {
    return "% Needs \\usepackage[T1]{fontenc} and \\usepackage{booktabs}; letters of other scripts need LuaLaTeX or "
           "XeLaTeX\n"
           "% with a font that has them.\n\n";
}

std::string LatexMarkup::Escaped(std::string_view text) const {
    // Braces keep a bracket or a star from being an argument of the line break before it, and two hyphens apart.
    constexpr std::array kReplaced{std::pair{'\\', "\\textbackslash{}"},
                                   std::pair{'{', "\\{"},
                                   std::pair{'}', "\\}"},
                                   std::pair{'$', "\\$"},
                                   std::pair{'&', "\\&"},
                                   std::pair{'#', "\\#"},
                                   std::pair{'%', "\\%"},
                                   std::pair{'_', "\\_"},
                                   std::pair{'~', "\\textasciitilde{}"},
                                   std::pair{'^', "\\textasciicircum{}"},
                                   std::pair{'<', "\\textless{}"},
                                   std::pair{'>', "\\textgreater{}"},
                                   std::pair{'|', "\\textbar{}"},
                                   std::pair{'"', "\\textquotedbl{}"},
                                   std::pair{'`', "\\textasciigrave{}"},
                                   std::pair{'[', "{[}"},
                                   std::pair{']', "{]}"},
                                   std::pair{'*', "{*}"},
                                   std::pair{'-', "-{}"}};
    return Replace(text, [&](std::size_t i) -> std::string_view {
        if (IsSign(text, i)) return "$-$";
        if (text[i] == '-' && (i + 1 == text.size() || text[i + 1] != '-')) return "";
        const auto found = std::ranges::find(kReplaced, text[i], [](const auto& pair) { return pair.first; });
        return found == kReplaced.end() ? "" : found->second;
    });
}

std::string LatexMarkup::Heading(int level, const std::string& text) const {
    return std::string(level < 2 ? "\\section*{" : "\\subsection*{") + Escaped(text) + "}\n\n";
}

std::string LatexMarkup::Paragraph(const std::string& text) const {
    return "\\noindent " + Escaped(text) + "\n\n";
}

std::string LatexMarkup::List(const std::vector<std::string>& lines) const {
    std::string text;
    for (const std::string& line : lines) text += "\\noindent " + line + "\n\n";
    return text;
}

std::string LatexMarkup::Table(const PageTable& table) const {
    std::string text = "\\begin{center}\n";
    if (!table.title.empty()) text += Escaped(table.title) + "\\\\[0.5ex]\n";
    text += "\\begin{tabular}{";
    std::vector<std::string> cells;
    for (const PageColumn& column : table.columns) {
        text += column.alignment == Alignment::kLeft ? 'l' : 'r';
        cells.push_back(Escaped(column.title));
    }
    text += "}\n\\toprule\n" + RowOf(cells, "", " & ", " \\\\\n") + "\\midrule\n";
    for (const auto& row : table.rows) {
        cells.clear();
        for (const PageCell& cell : row) cells.push_back(Escaped(cell.text));
        text += RowOf(cells, "", " & ", " \\\\\n");
    }
    return text + "\\bottomrule\n\\end{tabular}\n\\end{center}\n\n";
}

std::string LatexMarkup::Figure(const PageFigure& figure) const {
    if (figure.symbol == kChiSquare) return "$\\chi^2(" + figure.df + ")$" + Escaped(ValueOf(figure));
    const std::string symbol = Escaped(figure.symbol);
    return (IsLetter(figure.symbol) ? "\\textit{" + symbol + "}" : symbol) + Escaped(ValueOf(figure));
}

// ---- Typst ----

std::string TypstMarkup::Escaped(std::string_view text) const {
    constexpr std::string_view kSpecial = "\\*_`$#<>@[]~/\"'-";
    std::string written;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsSign(text, i)) {
            written += kMinus;
            continue;
        }
        if (kSpecial.find(text[i]) != std::string_view::npos) written += '\\';
        written += text[i];
    }
    // The begin of a cell is that of a line.
    const std::size_t mark = PlaceOfLineMark(written);
    if (mark != std::string_view::npos) written.insert(mark, "\\");
    return written;
}

std::string TypstMarkup::Heading(int level, const std::string& text) const {
    return std::string(static_cast<std::size_t>(level), '=') + " " + Escaped(text) + "\n\n";
}

std::string TypstMarkup::Paragraph(const std::string& text) const {
    return Escaped(text) + "\n\n";
}

std::string TypstMarkup::List(const std::vector<std::string>& lines) const {
    std::string text;
    for (const std::string& line : lines) text += "- " + line + "\n";
    return text + "\n";
}

std::string TypstMarkup::Table(const PageTable& table) const {
    std::string text = table.title.empty() ? "" : Paragraph(table.title);
    std::vector<std::string> alignments;
    std::vector<std::string> cells;
    for (const PageColumn& column : table.columns) {
        alignments.emplace_back(column.alignment == Alignment::kLeft ? "left" : "right");
        cells.push_back("[" + Escaped(column.title) + "]");
    }
    // A list of one is one with a comma.
    text += "#table(\n  columns: " + std::to_string(table.columns.size()) +
            ",\n  align: " + RowOf(alignments, "(", ", ", ",)") + ",\n  stroke: none,\n  table.hline(),\n  " +
            RowOf(cells, "table.header(", ", ", "),\n") + "  table.hline(stroke: 0.5pt),\n";
    for (const auto& row : table.rows) {
        cells.clear();
        for (const PageCell& cell : row) cells.push_back("[" + Escaped(cell.text) + "]");
        text += RowOf(cells, "  ", ", ", ",\n");
    }
    return text + "  table.hline(),\n)\n\n";
}

std::string TypstMarkup::Figure(const PageFigure& figure) const {
    if (figure.symbol == kChiSquare) return "$chi^2(" + figure.df + ")$" + Escaped(ValueOf(figure));
    const std::string symbol = Escaped(figure.symbol);
    return (IsLetter(figure.symbol) ? "#emph[" + symbol + "]" : symbol) + Escaped(ValueOf(figure));
}

}  // namespace tarn
