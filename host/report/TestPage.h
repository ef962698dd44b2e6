#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/TextTable.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/Number.h"
#include "host/report/ResultReading.h"

namespace tarn {

/// What a reader is shown of a test and of a run, before it has a medium: text, HTML, Markdown, LaTeX, a workbook and
/// sentences are all made from it. Texts are in their final wording and rounding, without any markup, escape or colour,
/// in one line each and without control characters; beside a rounded number stands the one with all its digits.

/// A number as it is read: "U = 575.5 for OJ (324.5 for VC)", "chi2(2) = 7.99", "p < .001 two-sided".
struct PageFigure {
    /// Stable: "statistic", "z", "p", "other" for what stands beside them.
    std::string key;
    /// The field's own: "U", "W", "H", "Q", "T", "J", "D", "R", "z", "p", "chi2", which a medium may set as it likes.
    std::string symbol;
    std::string df;        ///< degrees of freedom; "" for none
    std::string relation;  ///< "=", "<" or ">"; "" where the text is no number ("undefined")
    std::string text;      ///< rounded for a reader
    Number number;         ///< as the engine or the supplement has it
    std::string remark;    ///< what follows it: "for OJ (324.5 for VC)", "two-sided"; "" for none
};

/// Figures that belong together and stand in one line. `title` says of what they are and comes before them; it may be
/// "", and it may stand alone.
struct PageLine {
    std::string title;
    std::vector<PageFigure> figures;
};

/// An effect size, or an estimate. `label` names both sides in their direction: "P(OJ > VC)", "OJ minus VC".
struct PageEffect {
    std::string key;    ///< as `EffectSize` has it; "estimate" for one of the document
    std::string label;  ///< for a reader
    std::string text;   ///< the value, rounded
    std::string lowerText;
    std::string upperText;  ///< both "" where there is no interval
    Number value;
    Number lower;
    Number upper;
    std::string method;  ///< of the interval, or of the estimate where there are several; "" for none
    bool isBeyondRange = false;

    bool HasInterval() const { return !lowerText.empty(); }
    /// ".64 [.49, .77]"
    std::string WithInterval() const;
};

struct PageCell {
    std::string text;
    Number number;  ///< of which `text` is the rounded one; none for words, and for texts of two numbers
    Number upper;   ///< where the text is of two numbers, `number` is the lower one and this the upper
};

struct PageColumn {
    /// Stable: "sample", "n", "missing", "median", "median-interval", "quartiles", "mean-rank", "letters", "pair",
    /// "difference", "standard-error", "z", "p", "p-adjusted", "effect", "test", "fields", "statistic", "p-holm", ...
    std::string key;
    std::string title;
    Alignment alignment = Alignment::kLeft;
    bool isDetail = false;  ///< the first to be left out where there is little space
};

/// A table: `columns` of as many cells as each of the `rows` has. A cell may be empty.
struct PageTable {
    std::string title;  ///< "" for one that needs none
    std::vector<PageColumn> columns;
    std::vector<std::vector<PageCell>> rows;

    bool IsEmpty() const { return rows.empty(); }
};

/// A sentence or a fact with its name: "Method", "Pairs", "Order of dose".
struct PageFact {
    std::string title;
    std::string text;
};

/// What a test has to say beside its result. A mistake is the reason why it was not done.
struct PageNote {
    enum class Kind { kMistake, kWarning, kNote };
    Kind kind = Kind::kNote;
    long code = 0;  ///< of the engine; 0 for a remark of the host
    std::string text;
};
/// "Not done", "Warning", "Note"
std::string_view TitleOf(PageNote::Kind kind);

/// One test. Whatever it doesn't have is empty.
struct TestPage {
    std::string name;        ///< as in the document: "IMannWhitneyU"
    std::size_t number = 0;  ///< its place in the run, from 1
    std::string title;       ///< "Mann-Whitney U test"
    std::string subject;     ///< "len by supp", "before, after"
    std::string hypothesis;  ///< the null hypothesis, or what is estimated, as a sentence
    bool isEstimate = false;
    std::string cases;  ///< "60 of 60 cases (2 missing)"
    Number n;           ///< the cases that it took; none where nobody knows
    PageTable samples;  ///< its groups or fields, a row each: n, median, quartiles, mean rank, letters
    PageTable counts;   ///< of classes or categories
    /// The first line has the significance on which the conclusion rests; further ones have what stands beside it.
    std::vector<PageLine> statistics;
    std::vector<PageEffect> effects;  ///< of the whole test; those of an estimate are its result
    PageTable pairs;                  ///< a row for each pair that is compared
    /// The two samples of each row of `pairs`; differences are the first less the second.
    std::vector<std::pair<std::string, std::string>> pairNames;
    PageTable subsets;             ///< homogeneous subsets as columns
    std::vector<PageFact> orders;  ///< "Order of dose": "low < high"; "Scores of grade": "poor 1, good 2"
    std::vector<PageFact> methods;
    std::string conclusion;  ///< a sentence that claims no more than the test does, and one on its pairs
    std::vector<PageNote> notes;
    std::optional<TestExplanation> explanation;  ///< how the numbers came about, where that was asked for
    bool hasFailed = false;                      ///< it was not done; a note says why
    bool isRejected = false;                     ///< whether its first significance is below the level of the run

    /// "Mann-Whitney U test: len by supp"
    std::string Heading() const { return subject.empty() ? title : title + ": " + subject; }
};

/// The page of the test at a place of the run, counted from 0.
TestPage PageOf(const ResultReading& result, std::size_t place, const MessageCatalogue& texts);

}  // namespace tarn
