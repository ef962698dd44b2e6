#include "host/table/Recognition.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <map>
#include <set>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "host/InputError.h"
#include "host/table/CellValue.h"
#include "host/table/LocalNumber.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

constexpr std::array<char, 4> kDelimiters = {',', ';', '\t', '|'};

/// A row of the sample as it stands.
struct Row {
    std::size_t line = 0;  // above it
    std::vector<std::string> cells;
    bool isBlank = false;
    bool isFirstQuoted = false;

    std::size_t Width() const { return cells.size(); }
    std::size_t FilledCount() const {
        return static_cast<std::size_t>(
            std::ranges::count_if(cells, [](const std::string& cell) { return !TrimBlanks(cell).empty(); }));
    }
};

/// Cuts a text into rows; a quote that stands where it must not is a character. The last row counts if it ends.
std::vector<Row> RowsOf(std::string_view text, char delimiter, bool isWhole) {
    std::vector<Row> rows;
    std::size_t at = 0;
    std::size_t line = 0;
    while (at < text.size() && rows.size() < kSampleRows) {
        Row row;
        row.line = line;
        bool isEnded = false;
        row.isFirstQuoted = text[at] == '"';
        while (!isEnded) {
            std::string cell;
            if (at < text.size() && text[at] == '"') {
                for (++at; at < text.size(); ++at) {
                    if (text[at] == '"' && text.substr(at + 1).starts_with('"')) {
                        ++at;
                    } else if (text[at] == '"') {
                        ++at;
                        break;
                    }
                    if (text[at] == '\n') ++line;
                    cell += text[at];
                }
            }
            while (at < text.size() && text[at] != delimiter && text[at] != '\n') cell += text[at++];
            isEnded = at == text.size() || text[at] == '\n';
            if (at == text.size() && !isWhole) return rows;
            if (isEnded && cell.ends_with('\r')) cell.pop_back();
            row.cells.push_back(std::move(cell));
            ++at;
        }
        ++line;
        row.isBlank = row.Width() == 1 && row.cells.front().empty() && !row.isFirstQuoted;
        rows.push_back(std::move(row));
    }
    return rows;
}

enum class Reading { kMissing, kNumber, kOther };

/// Finds the shape step by step; each step sees what the ones before have settled.
class Recogniser {
 public:
    Recogniser(std::string_view sample, bool isWhole, const ToldShape& told)
        : sample_(sample),
          isWhole_(isWhole),
          told_(told),
          missing_(told.missingTexts.begin(), told.missingTexts.end()) {}

    Recognition Run() {
        TakeSeparatorLine();
        ChooseDelimiter();
        static_cast<void>(Candidates(shape_.delimiter));
        rows_ = std::move(candidates_[shape_.delimiter]);
        candidates_.clear();
        if (rows_.empty()) return std::move(*this).Result();
        FindHeader();
        hasSeveralNames_ = rows_.front().Width() > 1;
        JudgeEnds();
        if (!told_.keepsPlainTables) {
            JudgeBlanks();
            JudgeRowsBelow();
            shape_.skipsRepeatedHeaders = true;
        }
        JudgeNumbers();
        return std::move(*this).Result();
    }

    bool HasBlanksBetweenCells() {
        rows_ = Candidates('\t');
        rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(CommentCount(rows_)));
        if (rows_.size() < 2) return false;
        const std::size_t width = rows_[1].Width();
        const std::size_t names = rows_.front().Width();
        if (width < 2 || (names != width && names + 1 != width)) return false;
        if (HasNumber(rows_.front())) return false;
        for (std::size_t i = 1; i < rows_.size(); ++i) {
            if (rows_[i].Width() != width) return false;
        }
        std::vector<bool> areNumbers(width);
        for (std::size_t column = 0; column < width; ++column) {
            Evidence evidence;
            areNumbers[column] = Collect(column, width, evidence);
        }
        if (width == 2 && !areNumbers.front() && !rows_[1].isFirstQuoted) return false;
        return std::ranges::find(areNumbers, true) != areNumbers.end();
    }

 private:
    Recognition Result() && { return {std::move(shape_), std::move(remarks_), hasSeveralNames_}; }

    void Remark(std::string remark) { remarks_.push_back(std::move(remark)); }

    // ---- lines above ----

    /// "sep=;" is for spreadsheets: it says the delimiter.
    void TakeSeparatorLine() {
        std::string_view line = sample_.substr(0, sample_.find('\n'));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.size() >= 2 && line.starts_with('"') && line.ends_with('"')) line = line.substr(1, line.size() - 2);
        constexpr std::string_view kSign = "sep=";
        if (line.size() != kSign.size() + 1) return;
        for (std::size_t i = 0; i < kSign.size(); ++i) {
            if (std::tolower(static_cast<unsigned char>(line[i])) != kSign[i]) return;
        }
        if (std::ranges::find(kDelimiters, line.back()) == kDelimiters.end()) return;
        separator_ = line.back();
        firstLine_ = 1;
        Remark("the line \"sep=" + std::string(1, line.back()) + "\" above the header passed over");
    }

    /// The rows of the table, empty lines left out, behind the comments above it.
    const std::vector<Row>& Candidates(char delimiter) {
        const auto [known, isNew] = candidates_.try_emplace(delimiter);
        std::vector<Row>& rows = known->second;
        if (!isNew) return rows;
        rows = RowsOf(sample_, delimiter, isWhole_);
        std::erase_if(rows, [&](const Row& row) { return row.isBlank || row.line < firstLine_; });
        return rows;
    }

    static bool IsComment(const Row& row) { return row.cells.front().starts_with('#'); }

    /// How many rows in front are comments. The last one of them is a header if the row below has as many cells.
    std::size_t CommentCount(const std::vector<Row>& rows) const {
        std::size_t count = 0;
        while (count < rows.size() && IsComment(rows[count])) ++count;
        if (count == 0) return 0;
        if (count == rows.size()) return 0;
        const Row& last = rows[count - 1];
        const bool isHeader =
            last.Width() >= 2 && last.Width() == rows[count].Width() && HasNumber(rows[count]) && !HasNumber(last);
        return isHeader ? count - 1 : count;
    }

    // ---- delimiter ----

    /// The width that most rows have.
    static std::size_t UsualWidth(const std::vector<Row>& rows, std::size_t from) {
        std::map<std::size_t, std::size_t> counts;
        for (std::size_t i = from; i < rows.size(); ++i) ++counts[rows[i].Width()];
        std::size_t best = 0;
        for (const auto& [width, count] : counts) {
            if (best == 0 || count >= counts[best]) best = width;
        }
        return best;
    }

    /// How well a delimiter fits: whether the header has as many cells as the rows, how many of them agree, how many
    /// cells there are.
    struct Fit {
        bool hasHeader = false;
        double agreeing = 0;
        std::size_t width = 0;

        bool IsBetterThan(const Fit& other) const {
            return std::tie(hasHeader, agreeing, width) > std::tie(other.hasHeader, other.agreeing, other.width);
        }
    };

    Fit FitOf(char delimiter) {
        const std::vector<Row>& rows = Candidates(delimiter);
        const std::size_t first = CommentCount(rows);
        if (rows.size() <= first) return {};
        const std::size_t width = UsualWidth(rows, first + (rows.size() > first + 1 ? 1 : 0));
        std::size_t agreeing = 0;
        std::size_t firstOfWidth = rows.size();
        for (std::size_t i = first; i < rows.size(); ++i) {
            if (rows[i].Width() != width) continue;
            firstOfWidth = std::min(firstOfWidth, i);
            ++agreeing;
        }
        const double share = static_cast<double>(agreeing) / static_cast<double>(rows.size() - first);
        return {firstOfWidth == first, share, width};
    }

    /// Whether all rows below the header are numbers with decimal commas, so that the commas are no delimiters.
    bool IsOneColumnOfDecimalCommas() {
        const std::vector<Row>& rows = Candidates('\n');
        const NumberStyle style{',', '\0', false};
        bool hasComma = false;
        for (std::size_t i = 1; i < rows.size(); ++i) {
            const std::string_view cell = TrimBlanks(rows[i].cells.front());
            if (!missing_.contains(cell) && !ParseNumber(cell, style)) return false;
            hasComma = hasComma || cell.find(',') != std::string_view::npos;
        }
        return hasComma && rows.front().cells.front().find(',') == std::string::npos;
    }

    void ChooseDelimiter() {
        if (told_.delimiter || separator_) {
            shape_.delimiter = told_.delimiter ? *told_.delimiter : *separator_;
            return;
        }
        const Fit comma = FitOf(',');
        if (comma.hasHeader && comma.agreeing == 1 && comma.width >= 2 && told_.decimal != ',') return;
        Fit best;
        for (const char delimiter : kDelimiters) {
            const Fit fit = FitOf(delimiter);
            constexpr double kMostRows = 0.5;
            if (fit.width < 2 || fit.agreeing < kMostRows || !fit.IsBetterThan(best)) continue;
            best = fit;
            shape_.delimiter = delimiter;
        }
        if (!best.hasHeader && IsOneColumnOfDecimalCommas()) shape_.delimiter = ';';
        if (shape_.delimiter == ';') Remark("semicolons");
        if (shape_.delimiter == '\t') Remark("tabs");
        if (shape_.delimiter == '|') Remark("vertical bars");
    }

    // ---- the header and what stands around it ----

    bool IsMissing(std::string_view cell) const { return missing_.contains(TrimBlanks(cell)); }

    /// Whether a cell is a number in any style.
    static bool IsAnyNumber(std::string_view text) {
        const std::string_view cell = TrimBlanks(text);
        const std::string_view currency = CurrencySignOf(cell);
        constexpr std::string_view kBeginnings = "0123456789+-.,";
        const bool mayBe =
            !currency.empty() || (!cell.empty() && kBeginnings.find(cell.front()) != std::string_view::npos);
        if (!mayBe) return false;
        if (ParseDecimal(cell)) return true;
        for (const char decimal : {'.', ','}) {
            for (const char thousands : {decimal == '.' ? ',' : '.', ' ', '\''}) {
                if (ParseNumber(cell, {decimal, thousands, true, currency})) return true;
            }
        }
        return false;
    }
    static bool HasNumber(const Row& row) {
        return std::ranges::any_of(row.cells, [](const std::string& cell) { return IsAnyNumber(cell); });
    }

    /// Whether a row can be a header behind a title: two names at least, no number, no name twice.
    static bool CanBeHeader(const Row& row, std::size_t width) {
        std::unordered_set<std::string_view> names;
        for (const std::string& cell : row.cells) {
            if (!TrimBlanks(cell).empty() && !names.insert(TrimBlanks(cell)).second) return false;
        }
        return row.Width() == width && names.size() >= 2 && !HasNumber(row);
    }

    void FindHeader() {
        std::size_t above = CommentCount(rows_);
        const bool isPlainOneColumn = told_.keepsPlainTables && UsualWidth(rows_, above) < 2;
        if (isPlainOneColumn) above = 0;
        const std::size_t titles = TitleCount(above);
        const std::size_t count = above + titles;
        if (count == 0) {
            shape_.linesAbove = firstLine_;
            return;
        }
        shape_.linesAbove = rows_[count].line;
        if (above > 0)
            Remark(std::to_string(above) + (above == 1 ? " comment" : " comments") + " above it passed over");
        if (titles > 0) {
            Remark(std::to_string(titles) + (titles == 1 ? " line" : " lines") + " above the header passed over, " +
                   Quoted(rows_[above].cells.front(), 30));
        }
        rows_.erase(rows_.begin(), rows_.begin() + static_cast<std::ptrdiff_t>(count));
    }

    /// How many rows from `first` on are lines of a title: each has no filled cell but the first, and a header with
    /// several names stands below them.
    std::size_t TitleCount(std::size_t first) const {
        const std::size_t width = UsualWidth(rows_, first);
        if (width < 2) return 0;
        std::size_t header = first;
        while (header < rows_.size() && IsTitle(rows_[header])) ++header;
        if (header == first || header >= rows_.size()) return 0;
        // A header of one name above rows with an index has numbers below it, not names.
        return CanBeHeader(rows_[header], width) ? header - first : 0;
    }

    static bool IsTitle(const Row& row) {
        const std::string& first = row.cells.front();
        return row.FilledCount() == 0 || (row.FilledCount() == 1 && !first.empty() && !IsAnyNumber(first));
    }

    /// The rows below the header that are as wide as most.
    std::vector<const Row*> UsualRows(std::size_t width) const {
        std::vector<const Row*> rows;
        for (std::size_t i = 1; i < rows_.size(); ++i) {
            if (rows_[i].Width() == width) rows.push_back(&rows_[i]);
        }
        return rows;
    }

    /// How many of the columns at the end are empty.
    static std::size_t EmptyAtEnd(const std::vector<const Row*>& rows, std::size_t width) {
        std::size_t count = 0;
        const auto isEmptyAt = [&](std::size_t column) {
            return std::ranges::all_of(rows, [&](const Row* row) { return TrimBlanks(row->cells[column]).empty(); });
        };
        while (count < width && isEmptyAt(width - 1 - count)) ++count;
        return count;
    }

    void JudgeEnds() {
        std::vector<std::string>& names = rows_.front().cells;
        std::size_t nameless = 0;
        while (nameless < names.size() && TrimBlanks(names[names.size() - 1 - nameless]).empty()) ++nameless;
        const std::size_t width = rows_.size() == 1 ? names.size() : UsualWidth(rows_, 1);
        const std::vector<const Row*> rows = UsualRows(width);
        const std::size_t named = names.size() - nameless;
        if (named == 0) return;
        if (width > named && EmptyAtEnd(rows, width) >= width - named) {
            shape_.emptyAtEnd = width - named;
        } else if (nameless == 0 && width == names.size() + 1 && HaveNames(rows)) {
            shape_.lacksFirstName = true;
            names.insert(names.begin(), "");
        }
        if (shape_.emptyAtEnd > 0 || (names.size() > width && named <= width)) {
            shape_.width = width;
            names.resize(width);
        }
        if (names.size() > 1 && TrimBlanks(names.front()).empty()) NameFirst(names);
        if (shape_.emptyAtEnd > 0) {
            Remark(shape_.emptyAtEnd == 1 ? "an empty column at the end left out"
                                          : std::to_string(shape_.emptyAtEnd) + " empty columns at the end left out");
        }
    }

    /// Whether the rows begin with names of their own. A comma too many in each of them is more often one of a number
    /// or a text, so that the names have to be in quotes there, as R has them.
    bool HaveNames(const std::vector<const Row*>& rows) const {
        std::unordered_set<std::string_view> names;
        const auto isName = [&](const Row* row) {
            return names.insert(row->cells.front()).second && (shape_.delimiter != ',' || row->isFirstQuoted);
        };
        return rows.size() >= 2 && std::ranges::all_of(rows, isName);
    }

    void NameFirst(std::vector<std::string>& names) {
        std::string name = "row";
        while (std::ranges::find(names, name) != names.end()) name += '_';
        shape_.firstName = name;
        names.front() = name;
        Remark("the first column has no name and is called " + name);
    }

    /// Where every cell but the first of each row begins with a blank, blanks only line the cells up.
    void JudgeBlanks() {
        std::size_t seen = 0;
        for (const Row& row : rows_) {
            for (std::size_t i = 1; i < row.Width(); ++i) {
                if (row.cells[i].empty()) continue;
                if (row.cells[i].front() != ' ') return;
                ++seen;
            }
        }
        if (seen == 0) return;
        shape_.trimsBlanks = true;
        Remark("blanks around cells left out");
        for (Row& row : rows_) {
            for (std::string& cell : row.cells) cell = TrimBlanks(cell);
        }
    }

    static bool IsRule(const Row& row) {
        bool hasDash = false;
        for (const std::string& cell : row.cells) {
            if (cell.find_first_not_of("-=+|: ") != std::string::npos) return false;
            hasDash = hasDash || cell.find("--") != std::string::npos || cell.find("==") != std::string::npos;
        }
        return hasDash;
    }

    /// Whether the row at that place has texts, like units, where all rows below have numbers.
    bool HasNoValues(std::size_t place) const {
        const Row& row = rows_[place];
        constexpr std::size_t kLeastRows = 2;
        if (place + kLeastRows >= rows_.size() || HasNumber(row)) return false;
        std::size_t numberColumns = 0;
        std::size_t texts = 0;
        std::unordered_set<std::string_view> different;
        bool hasBracket = false;
        for (std::size_t column = 0; column < row.Width(); ++column) {
            std::size_t numbers = 0;
            bool isNumberColumn = true;
            for (std::size_t i = place + 1; i < rows_.size() && isNumberColumn; ++i) {
                if (column >= rows_[i].Width() || IsMissing(rows_[i].cells[column])) continue;
                isNumberColumn = IsAnyNumber(rows_[i].cells[column]);
                ++numbers;
            }
            if (!isNumberColumn || numbers < kLeastRows) continue;
            ++numberColumns;
            const std::string_view cell = TrimBlanks(row.cells[column]);
            if (cell.empty() || IsMissing(cell)) continue;
            ++texts;
            different.insert(cell);
            hasBracket = hasBracket || cell.starts_with('(') || cell.starts_with('[') || cell.starts_with('{');
        }
        // One word in all of them marks what is missing.
        return texts > 0 && (hasBracket || (different.size() >= 2 && texts == numberColumns));
    }

    void JudgeRowsBelow() {
        constexpr std::size_t kMost = 2;
        std::size_t count = 0;
        while (count + 1 < rows_.size() && IsRule(rows_[count + 1])) ++count;
        // The rows of a survey tool: the questions, then its own names for them.
        for (std::size_t next = kMost; next > 0 && count == 0; --next) {
            bool areAll = rows_.size() > next + 1;
            for (std::size_t i = 1; i <= next && areAll; ++i) areAll = HasNoValuesAbove(i, next);
            if (areAll) count = next;
        }
        if (count == 0) return;
        shape_.rowsBelow = count;
        const std::string rows = std::to_string(count) + (count == 1 ? " row" : " rows");
        if (IsRule(rows_[1])) {
            Remark(rows + " of lines below the header passed over");
        } else {
            const auto& cells = rows_[1].cells;
            const auto shown = std::ranges::find_if(cells, [](const std::string& cell) { return !cell.empty(); });
            Remark(rows + " without values below the header passed over, " +
                   Quoted(shown == cells.end() ? "" : *shown, 30));
        }
        rows_.erase(rows_.begin() + 1, rows_.begin() + 1 + static_cast<std::ptrdiff_t>(count));
    }

    /// Whether the row at `place` has no values as if it stood right above the rows behind `last`.
    bool HasNoValuesAbove(std::size_t place, std::size_t last) const {
        if (HasNumber(rows_[place])) return false;
        if (place == last) return HasNoValues(place);
        Recogniser without(*this);
        without.rows_.erase(without.rows_.begin() + static_cast<std::ptrdiff_t>(place) + 1,
                            without.rows_.begin() + static_cast<std::ptrdiff_t>(last) + 1);
        return without.HasNoValues(place);
    }

    // ---- numbers ----

    /// What the cells of a column that are numbers say of their style.
    struct Evidence {
        bool isPlain = true;    // all of them are plain numbers
        bool fitsPoint = true;  // with points in front of fractions, and marks between thousands
        bool fitsComma = true;
        bool hasFractionPoint = false;  // one that can be nothing else
        bool hasPercent = false;
        std::string_view currency;
        bool hasCurrencies = false;  // several
        char marks = '\0';           // an apostrophe or a blank between thousands
        std::size_t count = 0;
        std::string example;  // the first one that is no plain number
    };

    /// False where a cell is no number at all.
    bool Collect(std::size_t column, std::size_t width, Evidence& evidence) const {
        for (const Row* row : UsualRows(width)) {
            std::string_view cell = TrimBlanks(row->cells[column]);
            if (IsMissing(cell)) continue;
            if (!IsAnyNumber(cell)) return false;
            ++evidence.count;
            if (ParseDecimal(cell)) {
                const bool isFraction =
                    cell.find('.') != std::string_view::npos && !ParseNumber(cell, {',', '.', false});
                evidence.hasFractionPoint = evidence.hasFractionPoint || isFraction;
                evidence.fitsComma = evidence.fitsComma && !isFraction;
                continue;
            }
            evidence.isPlain = false;
            if (evidence.example.empty()) evidence.example = cell;
            if (cell.ends_with('%')) {
                evidence.hasPercent = true;
                cell = TrimBlanks(cell.substr(0, cell.size() - 1));
            }
            const std::string_view currency = CurrencySignOf(cell);
            if (!currency.empty()) {
                evidence.hasCurrencies =
                    evidence.hasCurrencies || (!evidence.currency.empty() && evidence.currency != currency);
                evidence.currency = currency;
            }
            for (std::size_t i = 0; i < cell.size() && currency.empty(); ++i) {
                const char mark = ThousandsMarkOf(cell.substr(i)).mark;
                if (mark == ' ' || mark == '\'') evidence.marks = mark;
            }
            const char marks = evidence.marks;
            const NumberStyle point{'.', marks == '\0' ? ',' : marks, false, currency};
            const NumberStyle comma{',', marks == '\0' ? '.' : marks, false, currency};
            evidence.fitsPoint = evidence.fitsPoint && ParseNumber(cell, point);
            evidence.fitsComma = evidence.fitsComma && ParseNumber(cell, comma);
        }
        return evidence.count > 0;
    }

    void JudgeNumbers() {
        const bool mayChange = !told_.keepsPlainTables || shape_.delimiter != ',' || told_.decimal;
        if (!mayChange) return;
        std::vector<std::pair<std::size_t, Evidence>> columns;
        const std::size_t width = rows_.front().Width() - shape_.emptyAtEnd;
        for (std::size_t column = 0; column < width; ++column) {
            Evidence evidence;
            // Amounts in several currencies are no numbers of one kind.
            if (Collect(column, rows_.front().Width(), evidence) && !evidence.hasCurrencies)
                columns.emplace_back(column, evidence);
        }
        const auto any = [&](auto has) {
            return std::ranges::any_of(columns, [&](const auto& column) { return has(column.second); });
        };
        const bool needsComma = any([](const Evidence& e) { return !e.isPlain && e.fitsComma && !e.fitsPoint; });
        const bool needsPoint =
            any([](const Evidence& e) { return e.fitsPoint && (e.hasFractionPoint || (!e.isPlain && !e.fitsComma)); });
        NumberStyle& style = shape_.numbers;
        if (told_.decimal) {
            style.decimal = *told_.decimal;
        } else if (needsComma && !needsPoint) {
            style.decimal = ',';
        }
        const bool isDecided = told_.decimal || needsComma != needsPoint;
        for (const auto& [column, evidence] : columns) {
            const bool fits = style.decimal == ',' ? evidence.fitsComma : evidence.fitsPoint;
            if (!fits) continue;
            const bool isEither = evidence.fitsComma && evidence.fitsPoint && !evidence.isPlain &&
                                  evidence.marks == '\0' && evidence.example.find(',') != std::string::npos;
            if (isEither && !isDecided) {
                shape_.ambiguous.push_back({column, evidence.example});
                continue;
            }
            if (!evidence.currency.empty() && !style.currency.empty() && evidence.currency != style.currency) continue;
            if (!evidence.currency.empty()) style.currency = evidence.currency;
            style.hasPercent = style.hasPercent || evidence.hasPercent;
            if (evidence.marks != '\0') style.thousands = evidence.marks;
            if (style.thousands == '\0' && HasGroups(column)) style.thousands = style.decimal == ',' ? '.' : ',';
        }
        if (style.decimal == ',' && !told_.decimal) Remark("decimal commas");
        if (style.thousands != '\0') Remark(NameOfMarks(style.thousands) + " between thousands");
        if (style.hasPercent) Remark("percent signs left out");
        if (!style.currency.empty()) Remark("signs of currency left out (" + std::string(style.currency) + ")");
    }

    /// Whether a column has cells that are numbers only with marks between thousands.
    bool HasGroups(std::size_t column) const {
        for (const Row* row : UsualRows(rows_.front().Width())) {
            const std::string_view cell = TrimBlanks(row->cells[column]);
            const NumberStyle withoutMarks{shape_.numbers.decimal, '\0', true, shape_.numbers.currency};
            if (!IsMissing(cell) && !ParseNumber(cell, withoutMarks)) return true;
        }
        return false;
    }

    static std::string NameOfMarks(char mark) {
        switch (mark) {
            case '.':
                return "points";
            case ',':
                return "commas";
            case '\'':
                return "apostrophes";
            default:
                return "blanks";
        }
    }

    std::string_view sample_;
    bool isWhole_;
    const ToldShape& told_;
    std::set<std::string, std::less<>> missing_;
    std::optional<char> separator_;
    std::size_t firstLine_ = 0;  // of the table, comments above it included
    std::map<char, std::vector<Row>> candidates_;
    std::vector<Row> rows_;  // the header first, once it is found
    TableShape shape_;
    std::vector<std::string> remarks_;
    bool hasSeveralNames_ = false;
};

}  // namespace

Recognition Recognise(std::string_view sample, bool isWhole, const ToldShape& told) {
    return Recogniser(sample, isWhole, told).Run();
}

bool HasBlanksBetweenCells(std::string_view sample, bool isWhole, const ToldShape& told) {
    return Recogniser(sample, isWhole, told).HasBlanksBetweenCells();
}

}  // namespace tarn
