#include "host/report/WorkbookReport.h"

#include <unistd.h>
#include <xlsxwriter.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/TextTable.h"
#include "host/report/MarkupReport.h"
#include "host/report/PageText.h"

namespace tarn {

namespace {

constexpr const char* kCannot = "--format xlsx: the workbook can't be made: ";

/// A sheet in the making: rows of cells under columns that come as they are needed.
class Sheet {
 public:
    explicit Sheet(std::string name) : name_(std::move(name)) {}

    void BeginRow() { rows_.emplace_back(); }
    void Put(const std::string& title, PageCell cell) {
        auto found = std::ranges::find(titles_, title);
        if (found == titles_.end()) found = titles_.insert(titles_.end(), title);
        const auto place = static_cast<std::size_t>(found - titles_.begin());
        if (rows_.back().size() <= place) rows_.back().resize(place + 1);
        rows_.back()[place] = std::move(cell);
    }
    void Put(const std::string& title, const std::string& text) { Put(title, PageCell{text, {}, {}}); }
    void Put(const std::string& title, const Number& number) { Put(title, PageCell{number.text, number, {}}); }
    bool IsEmpty() const { return rows_.empty(); }

    void WriteTo(lxw_workbook* workbook, lxw_format* bold) const {
        CheckSize();
        lxw_worksheet* const sheet = workbook_add_worksheet(workbook, name_.c_str());
        if (sheet == nullptr) throw InputError(std::string(kCannot) + "no sheet " + name_);
        for (std::size_t column = 0; column < titles_.size(); ++column) {
            Check(worksheet_write_string(sheet, 0, Column(column), titles_[column].c_str(), bold));
            Check(worksheet_set_column(sheet, Column(column), Column(column), WidthOf(column), nullptr));
        }
        worksheet_freeze_panes(sheet, 1, 0);
        for (std::size_t row = 0; row < rows_.size(); ++row) {
            for (std::size_t column = 0; column < rows_[row].size(); ++column) {
                WriteCell(sheet, row + 1, column, rows_[row][column]);
            }
        }
    }

 private:
    static lxw_col_t Column(std::size_t column) { return static_cast<lxw_col_t>(column); }

    static void Check(lxw_error error) {
        if (error != LXW_NO_ERROR) throw InputError(kCannot + std::string(lxw_strerror(error)));
    }

    /// What a spreadsheet can't hold is told before the library does it in words of its own.
    void CheckSize() const {
        constexpr std::size_t kMostRows = 1048576;
        constexpr std::size_t kLongestText = 32767;
        const std::string instead = "; --format json holds it";
        if (rows_.size() >= kMostRows) {
            throw InputError(kCannot + std::to_string(rows_.size()) + " rows of " + name_ + ", and a sheet has " +
                             std::to_string(kMostRows) + instead);
        }
        const auto check = [&](const std::string& text) {
            if (text.size() <= kLongestText) return;
            throw InputError(kCannot + ("a text of " + std::to_string(text.size())) + " bytes, " + Quoted(text) +
                             ", and a cell holds " + std::to_string(kLongestText) + instead);
        };
        std::ranges::for_each(titles_, check);
        for (const auto& row : rows_) {
            for (const PageCell& cell : row) check(cell.text);
        }
    }

    static void WriteCell(lxw_worksheet* sheet, std::size_t row, std::size_t column, const PageCell& cell) {
        const auto place = static_cast<lxw_row_t>(row);
        // No cell can hold what is no number.
        if (std::isfinite(cell.number.value)) {
            Check(worksheet_write_number(sheet, place, Column(column), cell.number.value, nullptr));
        } else if (!cell.text.empty()) {
            Check(worksheet_write_string(sheet, place, Column(column), cell.text.c_str(), nullptr));
        }
    }

    double WidthOf(std::size_t column) const {
        constexpr std::size_t kWidest = 60;
        constexpr std::size_t kMargin = 2;
        std::size_t width = DisplayWidth(titles_[column]);
        for (const auto& row : rows_) {
            if (column < row.size()) width = std::max(width, DisplayWidth(row[column].text));
        }
        return static_cast<double>(std::min(width, kWidest) + kMargin);
    }

    std::string name_;
    std::vector<std::string> titles_;
    std::vector<std::vector<PageCell>> rows_;
};

/// All sheets of a workbook.
class Sheets {
 public:
    void AddSummary(const PageTable& table) {
        for (const auto& row : table.rows) {
            summary_.BeginRow();
            PutCells(summary_, table, row);
        }
    }

    /// `part` names the part of a split analysis; "" for none.
    void Add(const ResultPage& page, const std::string& part) {
        for (const TestPage& test : page.tests) AddTest(test, part);
        if (!page.familyLine.empty()) AddNote(nullptr, part, "Family", page.title + ": " + page.familyLine);
        AddRecord(page.record, part);
        for (const std::string& note : page.notes) AddNote(nullptr, part, "Note", note);
    }

    void AddNote(const TestPage* test, const std::string& part, const std::string& what, const std::string& text) {
        Begin(notes_, test, part);
        notes_.Put("what", what);
        notes_.Put("text", text);
    }

    void AddRecord(const std::vector<PageFact>& facts, const std::string& part) {
        for (const PageFact& fact : facts) {
            Begin(record_, nullptr, part);
            record_.Put("what", fact.title);
            record_.Put("text", fact.text);
        }
    }

    void WriteTo(lxw_workbook* workbook) const {
        lxw_format* const bold = workbook_add_format(workbook);
        if (bold == nullptr) throw InputError(std::string(kCannot) + "not enough memory");
        format_set_bold(bold);
        for (const Sheet* sheet :
             {&summary_, &groups_, &counts_, &statistics_, &effects_, &comparisons_, &notes_, &record_}) {
            if (!sheet->IsEmpty() || sheet == &summary_) sheet->WriteTo(workbook, bold);
        }
    }

 private:
    static void Begin(Sheet& sheet, const TestPage* test, const std::string& part) {
        sheet.BeginRow();
        if (!part.empty()) sheet.Put("part", part);
        if (test == nullptr) return;
        sheet.Put("number", Number(std::to_string(test->number)));
        sheet.Put("test", test->title);
        sheet.Put("fields", test->subject);
    }

    /// A range takes two columns.
    static void PutCells(Sheet& sheet, const PageTable& table, const std::vector<PageCell>& row) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            const PageColumn& column = table.columns[i];
            const std::string title = column.key == "sample" ? "group or field" : column.title;
            if (row[i].upper.empty()) {
                sheet.Put(title.empty() ? column.key : title, row[i]);
            } else {
                sheet.Put(title + " from", row[i].number);
                sheet.Put(title + " to", row[i].upper);
            }
        }
    }

    void AddTest(const TestPage& test, const std::string& part) {
        for (const auto& row : test.samples.rows) {
            Begin(groups_, &test, part);
            PutCells(groups_, test.samples, row);
        }
        AddCounts(test, part);
        for (const PageLine& line : test.statistics) {
            for (const PageFigure& figure : line.figures) AddFigure(test, part, line.title, figure);
        }
        for (const auto& row : EffectsTable(test).rows) AddEffect(test, part, row);
        AddPairs(test, part);
        AddTexts(test, part);
    }

    /// The cells of a table, one in a row.
    void AddCounts(const TestPage& test, const std::string& part) {
        for (const auto& row : test.counts.rows) {
            for (std::size_t i = 1; i < row.size(); ++i) {
                Begin(counts_, &test, part);
                counts_.Put("row", row[0].text);
                counts_.Put("column", test.counts.columns[i].title);
                counts_.Put("value", row[i]);
            }
        }
    }

    void AddFigure(const TestPage& test, const std::string& part, const std::string& of, const PageFigure& figure) {
        Begin(statistics_, &test, part);
        statistics_.Put("of", of);
        statistics_.Put("symbol", figure.symbol);
        statistics_.Put("df", Number(figure.df));
        statistics_.Put("value", PageCell{figure.text, figure.number, {}});
        // A bound and a small p are shown with it.
        statistics_.Put("as shown", FigureText(figure));
        statistics_.Put("remark", figure.remark);
    }

    void AddEffect(const TestPage& test, const std::string& part, const std::vector<PageCell>& row) {
        Begin(effects_, &test, part);
        effects_.Put("effect", row[0].text);
        effects_.Put("value", row[1]);
        effects_.Put("lower", row[2].number);
        effects_.Put("upper", row[2].upper);
        effects_.Put("interval by", row[3].text);
    }

    void AddPairs(const TestPage& test, const std::string& part) {
        for (std::size_t i = 0; i < test.pairs.rows.size(); ++i) {
            Begin(comparisons_, &test, part);
            comparisons_.Put("kind", test.pairs.title);
            comparisons_.Put("first", test.pairNames[i].first);
            comparisons_.Put("second", test.pairNames[i].second);
            PutCells(comparisons_, test.pairs, test.pairs.rows[i]);
        }
        for (const auto& row : test.subsets.rows) {
            for (std::size_t i = 1; i < row.size(); ++i) {
                if (row[i].text.empty()) continue;
                Begin(comparisons_, &test, part);
                comparisons_.Put("kind", "homogeneous subset " + test.subsets.columns[i].title);
                comparisons_.Put("first", row[0].text);
                comparisons_.Put("in the subset", row[i]);
            }
        }
    }

    void AddTexts(const TestPage& test, const std::string& part) {
        const std::vector<std::pair<std::string, std::string>> texts{
            {"Cases", test.cases}, {"Hypothesis", test.hypothesis}, {"Conclusion", test.conclusion}};
        for (const auto& [what, text] : texts) {
            if (!text.empty()) AddNote(&test, part, what, text);
        }
        for (const auto* facts : {&test.orders, &test.methods}) {
            for (const PageFact& fact : *facts) AddNote(&test, part, fact.title, fact.text);
        }
        for (const PageNote& note : test.notes) AddNote(&test, part, std::string(TitleOf(note.kind)), note.text);
    }

    Sheet summary_{"Summary"};
    Sheet groups_{"Groups"};
    Sheet counts_{"Counts"};
    Sheet statistics_{"Statistics"};
    Sheet effects_{"Effects"};
    Sheet comparisons_{"Comparisons"};
    Sheet notes_{"Notes"};
    Sheet record_{"Record"};
};

/// A file that is there for as long as this; the library can write to files alone.
class TemporaryFile {
 public:
    TemporaryFile() {
        const char* const folder = std::getenv("TMPDIR");
        path_ = std::string(folder == nullptr || *folder == '\0' ? "/tmp" : folder) + "/tarn-XXXXXX";
        const int file = mkstemp(path_.data());
        if (file < 0) throw InputError(kCannot + path_ + ": no temporary file");
        close(file);
    }
    ~TemporaryFile() { unlink(path_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& Path() const { return path_; }

 private:
    std::string path_;
};

std::string Written(const Sheets& sheets) {
    const TemporaryFile file;
    // A workbook that is not closed is not freed; closing one that went wrong frees it all the same.
    const auto close = [](lxw_workbook* workbook) { workbook_close(workbook); };
    std::unique_ptr<lxw_workbook, decltype(close)> workbook(workbook_new(file.Path().c_str()), close);
    if (!workbook) throw InputError(std::string(kCannot) + "not enough memory");
    sheets.WriteTo(workbook.get());
    if (const lxw_error error = workbook_close(workbook.release()); error != LXW_NO_ERROR) {
        throw InputError(kCannot + std::string(lxw_strerror(error)));
    }
    return ByteSource(file.Path()).ReadAll();
}

}  // namespace

std::string WorkbookReport(const ResultPage& page) {
    Sheets sheets;
    sheets.AddSummary(page.summary);
    sheets.Add(page, "");
    sheets.AddRecord(page.program, "");
    return Written(sheets);
}

std::string WorkbookReport(const PartsPage& page) {
    Sheets sheets;
    sheets.AddSummary(page.summary);
    for (const PartPage& part : page.parts) {
        if (part.mistake.empty()) {
            sheets.Add(part.page, part.name);
        } else {
            sheets.AddNote(nullptr, part.name, "Not done", part.mistake);
        }
    }
    for (const std::string& note : page.notes) sheets.AddNote(nullptr, "", "Note", note);
    sheets.AddRecord(page.program, "");
    return Written(sheets);
}

}  // namespace tarn
