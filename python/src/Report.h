#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/Json.h"
#include "host/analysis/Report.h"
#include "host/report/AdjustedPValues.h"
#include "host/report/PartsReport.h"
#include "python/src/KeptTable.h"

namespace tarn {

/// What a run left: one result, or one for each category of the field that splits the records. Texts and figures are
/// made when they are asked for, by any thread, with the interpreter free.
class Report {
 public:
    /// Adds to a reading what stands beside its document. May throw, and is called again then.
    using Supply = std::function<void(ResultReading&)>;
    /// What was analysed, where it is kept, for each part.
    using Tables = std::vector<std::shared_ptr<const KeptTable>>;
    /// A significance with its statistic, as their digits.
    struct Figures {
        std::string kind;
        std::string statistic;
        std::string pvalue;
    };

    /// One that failed: there is no result.
    Report(std::vector<std::string> remarks, long failureCode);
    /// A whole analysis. `notes` are on its data, `remarks` what the engine says of the run. `supply` is called before
    /// the first text is made; empty where nothing is to be added. `tables`: none, or one.
    /// `request`: what was asked for, which the record of the result has; without tables the reading has it already.
    Report(ResultReading reading, std::string document, std::vector<std::string> notes,
           std::vector<std::string> remarks, Supply supply, Tables tables, tarn::Json request = {});
    /// One in parts, at least one, each with its table. `notes` are on all of them.
    Report(std::vector<ResultPart> parts, std::vector<std::string> documents, std::vector<std::string> notes,
           Tables tables, tarn::Json request);

    /// The tests of several whole analyses as those of one: of each those of the field that stands with it, from data
    /// in which the others miss every value. All were asked for the same, since a document names fields by their
    /// places. Significances are one family, adjusted by `adjustment`, too, where one is named. There is no document of
    /// it, and there are no cases. At least one, all of them done.
    static Report Joined(const std::vector<std::pair<std::string, Report>>& reports,
                         std::optional<Adjustment> adjustment);

    /// Adds a note on the data in front of the others.
    void AddNote(std::string note) { notes_.insert(notes_.begin(), std::move(note)); }

    bool IsDone() const { return isDone_; }
    long FailureCode() const { return failureCode_; }
    const std::vector<std::string>& Notes() const { return notes_; }
    const std::vector<std::string>& Remarks() const { return remarks_; }

    /// "" where there are several.
    const std::string& Document() const;
    /// The significance that decides each test, of all parts one after the other; nothing where none decides.
    std::vector<std::optional<Figures>> Deciding() const;
    /// Those of the first test that were chosen, beside its document.
    std::vector<Figures> Chosen() const;
    /// As a reader is shown it; in full, the text with every detail.
    std::string Text(bool isFull) const;
    std::string Json() const;
    std::string Csv() const;
    /// In a format of documents: "md", "latex", "typst" or "apa".
    std::string InFormat(const std::string& format) const;

    // Tests are counted from 0, through all parts.

    /// Whether the cases are there as they were analysed, of all parts. Without them nothing is drawn.
    bool HasCases() const;
    /// What a page has besides.
    struct PageParts {
        bool plots = true;          ///< where the cases are there as they were analysed
        bool explanations = false;  ///< how the numbers of each test came about
    };
    /// A page that stands by itself. `request` is the call that made the result, "" where nobody knows; `notes` are
    /// those on all of it, as sentences. Throws an `InputError` where explanations are wanted and can't be made.
    std::string Html(const std::string& request, std::vector<std::string> notes, PageParts wanted) const;
    /// A test as a block of such a page, for an element of the class "tarn". `id` begins all identifiers in it.
    std::string HtmlOf(std::size_t test, const std::string& id) const;
    /// Its plot. Throws an `InputError` where there is none.
    std::string Svg(std::size_t test) const;

    /// How its numbers came about, as text. Throws an `InputError` where that can't be shown.
    std::string Explanation(std::size_t test) const;

    /// How many parts there are; 0 of a whole analysis.
    std::size_t PartCount() const { return isSplit_ ? shared_->parts.size() : 0; }
    /// A part by itself, which shares what it is made of. One that couldn't be tested is not done, and says why.
    Report PartAt(std::size_t place) const;

 private:
    /// What a report and those of its parts share.
    struct Shared {
        std::vector<ResultPart> parts;  // of a whole analysis one without a field
        std::vector<std::string> documents;
        Tables tables;
        std::mutex mutex;
        Supply supply;  // until it was called
        tarn::Json request;
        bool isRecorded = false;

        /// Says with each part how it was made.
        void AddRecords();
    };

    static std::shared_ptr<Shared> Share(std::vector<ResultPart> parts, std::vector<std::string> documents,
                                         Supply supply, Tables tables, tarn::Json request);
    const std::vector<ResultPart>& Supplied() const;
    /// A copy of them in which each test of this report says how its numbers came about. Throws as `CasesOf`.
    std::vector<ResultPart> Explained() const;
    /// What it was made of, or null.
    const KeptTable* TableOf(std::size_t part) const;
    /// The same; throws an `InputError` where the cases aren't there as they were analysed.
    const KeptTable& CasesOf(std::size_t part) const;
    /// The part of a test, and its place there.
    std::pair<std::size_t, std::size_t> PlaceOf(std::size_t test) const;
    /// The pages of a report, of one result or of parts, made into something else.
    template <typename Make>
    std::string FromPage(Make make) const;

    std::shared_ptr<Shared> shared_;
    std::size_t first_ = 0;  // the part that this report is about, unless it is about all
    std::vector<std::string> notes_;
    std::vector<std::string> remarks_;
    bool isDone_ = true;
    bool isSplit_ = false;
    long failureCode_ = 0;
};

}  // namespace tarn
