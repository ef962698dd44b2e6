#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/report/CountTable.h"
#include "host/report/EngineLimits.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/Number.h"
#include "host/report/ResultDocument.h"
#include "host/report/Supplement.h"
#include "host/report/TestExplanation.h"

namespace tarn {

/// What an analyst reads from one test of a document: the same facts in the same places whatever the test. A number has
/// the text of the document; none is shown for a value that was never computed.

enum class PValueKind { kAsymptotic, kExact, kFisher, kContinuityCorrected };

/// The name of a kind in the outputs: "asymptotic", "exact", "fisher", "continuity-corrected".
std::string_view NameOf(PValueKind kind);

struct PValue {
    PValueKind kind = PValueKind::kAsymptotic;
    int tails = 2;  ///< 1 or 2; 0 where the test has no sides
    Number value;
    bool isBound = false;  ///< the value is the smallest that the significance can be; the document has a ">" there
    bool decides = false;  ///< whether the decision of the test rests on it
    /// The statistic that it belongs to, where that is not the one of its set; "" for a significance without one.
    std::optional<Number> ownStatistic;
};

/// The statistics of a test; some tests have two sets of them, and `name` says which one this is.
struct StatisticSet {
    std::string name;   ///< "minimum runs", "all cases"; mostly ""
    std::string label;  ///< what the statistic counts: "U of placebo"; mostly ""
    Number statistic;
    Number standardError;
    Number standardized;
    Number df;
    std::vector<PValue> pValues;

    /// The one that decides, or the first one; null for none.
    const PValue* Leading() const;
    /// The statistic that a significance of the set belongs to; "" for none.
    const Number& StatisticOf(const PValue& p) const { return p.ownStatistic ? *p.ownStatistic : statistic; }
};

struct Interval {
    std::string method;  ///< "" where there is one method only
    Number estimate;
    Number lower;
    Number upper;
};

/// Something else that a test reports: "Mann-Whitney U", "largest difference".
struct Figure {
    std::string key;    ///< stable, as in the document
    std::string label;  ///< for a reader
    Number value;
};

/// How often values occur: counts beside the values, or beside the means of the intervals into which many values are
/// put; those of categories are their indices. Both are of one length. The numbers are read when they are asked for,
/// from the document that the reading stays with: there are hundreds of them, and most readers want none.
class DataHistogram {
 public:
    DataHistogram() = default;
    /// The two lines of a table, borrowed; empty where they aren't of one length.
    DataHistogram(std::string_view counts, std::string_view values);

    bool IsEmpty() const { return counts_.empty(); }
    std::vector<double> Counts() const;
    std::vector<double> Values() const;

 private:
    std::string_view counts_;
    std::string_view values_;
};

/// The box plot of a sample. Empty numbers for a sample without.
struct BoxPlot {
    struct Outlier {
        double value;
        std::string caseId;  ///< the identifier of the case, or its position
    };

    Number lowerWhisker;
    Number lowerHinge;
    Number median;
    Number upperHinge;
    Number upperWhisker;
    std::vector<Outlier> outliers;

    bool IsEmpty() const { return median.empty(); }
};

/// One of the groups or fields that a test compares.
struct Sample {
    std::string name;
    std::string role = {};  ///< "control" in the test that has such a group
    std::vector<Figure> figures;
    BoxPlot box;
    DataHistogram histogram;
};

/// Two samples beside one another.
struct PairComparison {
    std::string first;
    std::string second;
    Number statistic;
    Number standardError;
    Number standardized;
    Number p;
    Number adjustedP;
};

/// Samples that don't differ among one another.
struct HomogeneousSubset {
    std::vector<std::string> members;
    Number statistic;
    Number p;
    Number adjustedP;
};

/// The two samples of a test's signed numbers: above 0 where `first` is the larger. All tests of a run count the groups
/// of a field in one direction, that of the field's categories, whatever the document does.
struct Direction {
    std::string first;
    std::string second;

    bool IsEmpty() const { return first.empty(); }
    /// "placebo minus drug", "" for none.
    std::string Text() const { return IsEmpty() ? "" : first + " minus " + second; }
};

/// The order of a field's categories, where a number of the test depends on it.
struct Scale {
    std::string field;
    std::vector<std::string> categories;  ///< from the lowest to the highest, as a reader is shown them
    std::vector<std::string> scores;      ///< the number that stands for each; none where the order alone counts
};

struct TestReading {
    std::string name;  ///< as in the document
    std::string title;
    std::string family;         ///< "one-sample", "related" or "independent"
    std::string statement;      ///< the null hypothesis, or what is estimated
    std::string method;         ///< the convention of the numbers; "" for a test that has none to show
    std::string pairsMethod;    ///< that of the pairs; "" where none are compared
    std::string subsetsMethod;  ///< that of the subsets; "" where there are none
    bool isEstimate = false;
    std::vector<std::string> fields;
    std::string group;  ///< the field of the groups; "" for none
    Number n;
    Number totalN;          ///< sum of the weights of all records; "" where `n` is
    Number leftOut;         ///< the difference of the two; "" where there is none
    bool isMissing = true;  ///< whether all that was left out misses a value of a field
    /// "reject", "retain", "unknown"; "" for an estimate, and where the significance is undefined or beyond the
    /// engine's range.
    std::string decision;
    Direction direction;
    std::vector<Scale> scales;
    std::string arithmetic;  ///< as of `TestResult`
    std::vector<StatisticSet> statistics;
    std::vector<Interval> intervals;
    std::vector<Figure> figures;
    std::vector<Sample> samples;
    DataHistogram histogram;  ///< of the differences of a pair, or of the field of one sample
    CountTable counts;
    std::vector<PairComparison> pairs;
    std::vector<std::string> orderedSamples;  ///< those of the subsets, from the lowest to the highest
    std::vector<HomogeneousSubset> subsets;
    /// What the test has to say, as sentences, with their kinds.
    struct Note {
        long code;
        std::string kind;  ///< "error", "warning" or "helpMessage"
        std::string text;
    };
    std::vector<Note> notes;
    std::vector<std::string> remarks;            ///< what the host has to say about the numbers, as sentences
    Supplement supplement;                       ///< what was made from the columns; empty for a stored document
    std::optional<TestExplanation> explanation;  ///< how the numbers came about, where that was asked for
    std::vector<const EngineLimit*> limits;      ///< that the test passes; they stay with the program

    /// The set whose significance decides, or the first one; null for none.
    const StatisticSet* Leading() const;
    bool HasError() const;
    /// Whether a statistic has the textbook's form in place of the document's usual one.
    bool IsTextbook() const;
    /// Whether what a test reports of a quantity is beyond the range of the engine.
    bool IsBeyondRange(Quantity quantity) const;
};

TestReading ReadTest(const TestResult& test, const ResultDocument& document, const MessageCatalogue& texts);

}  // namespace tarn
