#include "host/report/PageText.h"

#include <initializer_list>

namespace tarn {

namespace {

void MakeLineOneLine(PageLine& line) {
    MakeOneLine(line.title);
    for (PageFigure& figure : line.figures) {
        MakeOneLine(figure.symbol);
        MakeOneLine(figure.remark);
    }
}

void MakeTableOneLine(ExplanationTable& table) {
    MakeOneLine(table.title);
    for (ExplanationTable::Column& column : table.columns) MakeOneLine(column.title);
    for (std::vector<std::string>& row : table.rows) {
        for (std::string& cell : row) MakeOneLine(cell);
    }
}

void MakeExplanationOneLine(TestExplanation& explanation) {
    for (auto* const tables : {&explanation.tables, &explanation.comparisons}) {
        for (ExplanationTable& table : *tables) MakeTableOneLine(table);
    }
    for (ExplanationStep& step : explanation.steps) {
        for (std::string* const text : {&step.name, &step.formula, &step.numbers}) MakeOneLine(*text);
    }
    for (std::string& note : explanation.notes) MakeOneLine(note);
}

}  // namespace

std::string FigureText(const PageFigure& figure) {
    const bool isChiSquare = figure.symbol == "chi2";
    std::string text = figure.symbol;
    if (isChiSquare && !figure.df.empty()) text += "(" + figure.df + ")";
    text += (figure.relation.empty() ? " " : " " + figure.relation + " ") + figure.text;
    if (!isChiSquare && !figure.df.empty()) text += ", df " + figure.df;
    return text;
}

void MakeOneLine(std::string& text) {
    constexpr unsigned char kFirstPrintable = 0x20;
    constexpr unsigned char kDelete = 0x7f;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < kFirstPrintable || byte == kDelete) text[i] = ' ';
        // U+0080 to U+009F, of two bytes, are controls of terminals, too.
        const bool isControl = byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (isControl) text.replace(i, 2, " ");
    }
}

void MakeOneLine(std::vector<PageFact>& facts) {
    for (PageFact& fact : facts) {
        MakeOneLine(fact.title);
        MakeOneLine(fact.text);
    }
}

void MakeOneLine(PageTable& table) {
    MakeOneLine(table.title);
    for (PageColumn& column : table.columns) MakeOneLine(column.title);
    for (auto& row : table.rows) {
        for (PageCell& cell : row) MakeOneLine(cell.text);
    }
}

void MakeOneLine(TestPage& page) {
    for (std::string* const text : {&page.title, &page.subject, &page.hypothesis, &page.cases, &page.conclusion}) {
        MakeOneLine(*text);
    }
    for (PageTable* const table : {&page.samples, &page.counts, &page.pairs, &page.subsets}) MakeOneLine(*table);
    for (PageLine& line : page.statistics) MakeLineOneLine(line);
    for (PageEffect& effect : page.effects) MakeOneLine(effect.label);
    for (auto& [first, second] : page.pairNames) {
        MakeOneLine(first);
        MakeOneLine(second);
    }
    MakeOneLine(page.orders);
    MakeOneLine(page.methods);
    for (PageNote& note : page.notes) MakeOneLine(note.text);
    if (page.explanation) MakeExplanationOneLine(*page.explanation);
}

}  // namespace tarn
