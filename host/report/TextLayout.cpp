#include "host/report/TextLayout.h"

#include <algorithm>
#include <numeric>

#include "host/TextTable.h"

namespace tarn {

namespace {

constexpr std::size_t kHanging = 3;
constexpr std::size_t kBetweenColumns = 2;
constexpr std::string_view kLeftOut = "...";
constexpr std::size_t kShortestName = 12;
/// A title that is so much wider than its cells is worth a second line.
constexpr std::size_t kLeastGain = 3;
/// Up to this width a table has no details, so that the same one looks alike wherever it is pasted.
constexpr std::size_t kWidestWithoutDetails = 80;

/// The blank behind a word; that of an interval, "[.49, .77]", is no end of one.
std::size_t EndOfWord(std::string_view text, std::size_t begin) {
    constexpr std::size_t kLongestInterval = 30;
    std::size_t end = std::min(text.find(' ', begin), text.size());
    const std::size_t closing = text.find(']', begin);
    if (begin < text.size() && text[begin] == '[' && closing < begin + kLongestInterval) {
        end = std::min(text.find(' ', closing), text.size());
    }
    return end;
}

std::vector<std::string_view> WordsOf(std::string_view text) {
    std::vector<std::string_view> words;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = EndOfWord(text, begin);
        if (end > begin) words.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

/// Lines in the making: words or parts with what stands between them.
class LineFiller {
 public:
    LineFiller(std::size_t width, std::size_t indent) : width_(width), indent_(indent), line_(indent, ' ') {}

    bool Fits(std::string_view text) const { return DisplayWidth(line_) + DisplayWidth(text) <= width_; }
    bool IsAtStart() const { return isAtStart_; }
    void Put(std::string_view text) {
        line_ += text;
        isAtStart_ = false;
    }
    void Break() {
        line_.erase(line_.find_last_not_of(' ') + 1);
        text_ += line_ + "\n";
        line_.assign(indent_ + kHanging, ' ');
        isAtStart_ = true;
    }
    void PutWords(std::string_view text) {
        for (const std::string_view word : WordsOf(text)) {
            if (!IsAtStart() && !Fits(" " + std::string(word))) Break();
            if (!IsAtStart()) Put(" ");
            Put(word);
        }
    }
    std::string Text() {
        if (!isAtStart_) Break();
        return text_;
    }

 private:
    std::size_t width_;
    std::size_t indent_;
    std::string text_;
    std::string line_;
    bool isAtStart_ = true;
};

std::size_t NextCharacter(std::string_view text, std::size_t place) {
    ++place;
    while (place < text.size() && (static_cast<unsigned char>(text[place]) & 0xC0) == 0x80) ++place;
    return place;
}

/// The place behind so many characters.
std::size_t PlaceBehind(std::string_view text, std::size_t characters) {
    std::size_t place = 0;
    while (characters > 0 && place < text.size()) {
        place = NextCharacter(text, place);
        --characters;
    }
    return place;
}

/// A table on its way to fit a width.
class FittedTable {
 public:
    FittedTable(const PageTable& table, std::size_t width, bool hasDetails) : table_(table), width_(width) {
        for (const PageColumn& column : table_.columns) titles_.emplace_back(1, column.title);
        LeaveOutDetails(hasDetails);
        if (!Fits()) SplitTitles();
        if (!Fits()) CutNames();
    }

    std::string Text() const {
        std::vector<TextTable::ColumnHead> heads;
        for (const PageColumn& column : table_.columns) heads.push_back({"", column.alignment});
        TextTable text(heads);
        for (std::size_t line = 0; line < TitleLines(); ++line) {
            std::vector<std::string> cells;
            for (const auto& title : titles_) {
                // Titles stand on the line above the cells.
                const std::size_t first = TitleLines() - title.size();
                cells.push_back(line < first ? "" : title[line - first]);
            }
            text.AddRow(std::move(cells));
        }
        for (const auto& row : table_.rows) {
            std::vector<std::string> cells;
            for (const PageCell& cell : row) cells.push_back(cell.text);
            text.AddRow(std::move(cells));
        }
        return text.ToText();
    }
    /// The names that were cut, in full.
    const std::vector<std::string>& Legend() const { return legend_; }

 private:
    std::size_t TitleLines() const {
        std::size_t lines = 0;
        for (const auto& title : titles_) {
            if (title.size() > 1 || !title[0].empty()) lines = std::max(lines, title.size());
        }
        return lines;
    }

    std::size_t CellWidth(std::size_t column) const {
        std::size_t width = 0;
        for (const auto& row : table_.rows) width = std::max(width, DisplayWidth(row[column].text));
        return width;
    }
    std::size_t WidthOf(std::size_t column) const {
        std::size_t width = CellWidth(column);
        for (const std::string& line : titles_[column]) width = std::max(width, DisplayWidth(line));
        return width;
    }
    std::size_t Width() const {
        std::size_t width = 0;
        for (std::size_t i = 0; i < table_.columns.size(); ++i) width += WidthOf(i) + (i > 0 ? kBetweenColumns : 0);
        return width;
    }
    bool Fits() const { return Width() <= width_; }

    void LeaveOutDetails(bool hasDetails) {
        for (std::size_t i = table_.columns.size(); i-- > 0 && !(hasDetails && Fits());) {
            if (!table_.columns[i].isDetail) continue;
            const auto place = static_cast<std::ptrdiff_t>(i);
            table_.columns.erase(table_.columns.begin() + place);
            titles_.erase(titles_.begin() + place);
            for (auto& row : table_.rows) row.erase(row.begin() + place);
        }
    }

    /// Titles that are wider than their cells take two lines, broken at the blank nearest to their middle.
    void SplitTitles() {
        for (std::size_t i = 0; i < titles_.size(); ++i) {
            const std::string title = titles_[i][0];
            if (DisplayWidth(title) < CellWidth(i) + kLeastGain) continue;
            std::size_t best = std::string::npos;
            const auto distance = [&](std::size_t place) {
                return place > title.size() / 2 ? place - title.size() / 2 : title.size() / 2 - place;
            };
            for (std::size_t place = title.find(' '); place != std::string::npos; place = title.find(' ', place + 1)) {
                if (best == std::string::npos || distance(place) < distance(best)) best = place;
            }
            if (best != std::string::npos) titles_[i] = {title.substr(0, best), title.substr(best + 1)};
        }
    }

    /// Cuts the widest column of words until the table fits, or nothing readable would be left.
    void CutNames() {
        while (!Fits()) {
            std::size_t widest = table_.columns.size();
            for (std::size_t i = 0; i < table_.columns.size(); ++i) {
                if (table_.columns[i].alignment == Alignment::kRight || WidthOf(i) <= kShortestName) continue;
                if (widest == table_.columns.size() || WidthOf(i) > WidthOf(widest)) widest = i;
            }
            if (widest == table_.columns.size()) return;
            const std::size_t excess = Width() - width_;
            const std::size_t kept = WidthOf(widest) > excess ? WidthOf(widest) - excess : 0;
            Cut(widest, std::max(kShortestName, kept));
        }
    }
    void Cut(std::size_t column, std::size_t width) {
        const auto cut = [&](std::string& text) {
            if (DisplayWidth(text) <= width) return;
            const std::string shortened = CutInTheMiddle(text, width);
            const std::string line = shortened + " = " + text;
            if (std::ranges::find(legend_, line) == legend_.end()) legend_.push_back(line);
            text = shortened;
        };
        for (std::string& line : titles_[column]) cut(line);
        for (auto& row : table_.rows) cut(row[column].text);
    }

    PageTable table_;
    std::size_t width_;
    std::vector<std::vector<std::string>> titles_;  ///< of each column, in one line or two
    std::vector<std::string> legend_;
};

}  // namespace

std::string Wrapped(std::string_view text, std::size_t width, std::size_t indent) {
    LineFiller filler(width, indent);
    filler.PutWords(text);
    return filler.Text();
}

std::string WrappedParts(const std::vector<std::string>& parts, std::string_view separator, std::size_t width,
                         std::size_t indent) {
    LineFiller filler(width, indent);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::string part = parts[i] + (i + 1 < parts.size() ? std::string(separator) : "");
        if (!filler.IsAtStart() && !filler.Fits(" " + part)) filler.Break();
        if (filler.Fits(" " + part)) {
            filler.Put((filler.IsAtStart() ? "" : " ") + part);
        } else {
            filler.PutWords(part);
        }
    }
    return filler.Text();
}

std::string CutInTheMiddle(const std::string& text, std::size_t width) {
    const std::size_t length = DisplayWidth(text);
    if (length <= width || width <= kLeftOut.size()) return text;
    const std::size_t kept = width - kLeftOut.size();
    const std::size_t tail = kept / 2;
    const std::size_t head = kept - tail;
    return text.substr(0, PlaceBehind(text, head)) + std::string(kLeftOut) +
           text.substr(PlaceBehind(text, length - tail));
}

std::string TableText(const PageTable& table, std::size_t width, std::size_t indent) {
    if (table.IsEmpty()) return "";
    const FittedTable fitted(table, width - indent, width > kWidestWithoutDetails);
    const std::string margin(indent, ' ');
    std::string text = table.title.empty() ? "" : Wrapped(table.title, width, indent);
    const std::string lines = fitted.Text();
    for (std::size_t begin = 0; begin < lines.size();) {
        const std::size_t end = lines.find('\n', begin);
        text += margin + lines.substr(begin, end - begin) + "\n";
        begin = end + 1;
    }
    for (const std::string& line : fitted.Legend()) text += margin + line + "\n";
    return text;
}

}  // namespace tarn
