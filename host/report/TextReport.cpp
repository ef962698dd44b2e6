#include "host/report/TextReport.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "host/NumberText.h"
#include "host/TextTable.h"
#include "host/report/AdjustedPValues.h"
#include "host/report/PageText.h"
#include "host/report/RecordFacts.h"
#include "host/report/ResultPage.h"
#include "host/report/Scales.h"
#include "host/report/SupplementText.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr const char* kIndent = "   ";

constexpr const char* kBeyondRange = "beyond the engine's range";

std::string LimitLine(const EngineLimit& limit, const MessageCatalogue& texts) {
    const std::string* const sentence = texts.Limit(limit.key);
    return "Beyond the engine's range: " + (sentence == nullptr ? std::string(limit.key) : *sentence);
}

/// A number for a reader; words for a value that is no number.
std::string NumberText(const std::string& value) {
    if (value.empty()) return "not computed";
    return value == "nan" ? "undefined" : ShortNumber(value);
}

std::string Indented(const std::string& lines) {
    std::string text;
    for (std::size_t start = 0; start < lines.size();) {
        const std::size_t end = lines.find('\n', start);
        text += kIndent + lines.substr(start, end - start) + "\n";
        start = end + 1;
    }
    return text;
}

std::string KindText(const PValue& p) {
    std::string text(p.kind == PValueKind::kFisher ? "Fisher's exact test" : NameOf(p.kind));
    if (p.tails == 1) text += ", one-tailed";
    return text;
}

/// A block, in the making.
class Block {
 public:
    Block(const TestReading& reading, const ResultReading& result, const MessageCatalogue& texts,
          const TextStyle& style)
        : reading_(reading), result_(result), texts_(texts), style_(style) {}

    std::string Text(std::size_t number) const {
        std::string text =
            Heading(number) + kIndent + (reading_.isEstimate ? "" : NullHypothesis()) + reading_.statement + "\n";
        if (!reading_.n.empty()) text += kIndent + ("N: " + Joined(Cases(), Remark(Quantity::kN))) + "\n";
        text += Indented(Results().ToText());
        if (!reading_.isEstimate) text += std::string(kIndent) + "Decision: " + Decision() + "\n";
        text += Section("", Counts());
        text += Section("", reading_.supplement.samples.empty() ? Samples() : SummaryTable(reading_, result_));
        text += Section("", EffectTable(reading_, false));
        text += Section(PairsTitle(), Pairs());
        text += Section("", EffectTable(reading_, true));
        text += Section("Homogeneous subsets", Subsets());
        for (const Scale& scale : reading_.scales) text += ScaleLine(scale);
        text += MethodLine("Method", reading_.method) + MethodLine("Pairs", reading_.pairsMethod) +
                MethodLine("Subsets", reading_.subsetsMethod);
        text += MethodLine("Call", reading_.supplement.call);
        for (const TestReading::Note& note : reading_.notes) text += kIndent + NoteLine(note) + "\n";
        for (const auto* remarks : {&reading_.remarks, &reading_.supplement.remarks}) {
            for (const std::string& remark : *remarks) text += kIndent + ("Note: " + remark) + "\n";
        }
        if (!reading_.supplement.conclusion.empty()) text += kIndent + reading_.supplement.conclusion + "\n";
        for (const EngineLimit* limit : reading_.limits) text += kIndent + LimitLine(*limit, texts_) + "\n";
        return text;
    }

 private:
    std::string Heading(std::size_t number) const {
        std::string text = std::to_string(number) + ". " + reading_.title + ": " + JoinList(reading_.fields);
        if (!reading_.group.empty()) text += " by " + reading_.group;
        return style_.hasColour ? "\033[1m" + text + "\033[0m\n" : text + "\n";
    }

    std::string NullHypothesis() const { return style_.hasUnicode ? "H\u2080: " : "H0: "; }

    std::string Decision() const {
        const std::string at = " at the level " + ShortNumber(result_.sigLevel);
        if (reading_.decision == "reject") return "reject the null hypothesis" + at;
        if (reading_.decision == "retain") return "retain the null hypothesis" + at;
        if (reading_.IsBeyondRange(Quantity::kPValue)) return "none, as p is " + std::string(kBeyondRange);
        return reading_.decision.empty() ? "none, as p is undefined" : "none";
    }

    /// "27 of 40 cases (13 missing)"
    std::string Cases() const {
        if (reading_.totalN.empty()) return NumberText(reading_.n);
        std::string text = ShortNumber(reading_.n) + " of " + ShortNumber(reading_.totalN) + " cases";
        if (reading_.leftOut.empty()) return text;
        return text + " (" + ShortNumber(reading_.leftOut) +
               (reading_.isMissing ? " missing)" : " missing or left out)");
    }

    /// "Order of dose: low < high", or "Scores of quality: poor 1, good 2".
    static std::string ScaleLine(const Scale& scale) {
        // Numbers that stand for themselves need no line.
        if (scale.categories.empty() || scale.categories == scale.scores) return "";
        return kIndent + ((scale.scores.empty() ? "Order of " : "Scores of ") + scale.field) + ": " + OrderText(scale) +
               "\n";
    }

    TextTable Results() const {
        TextTable table({{""}, {""}, {""}});
        for (const StatisticSet& set : reading_.statistics) AddSet(set, table);
        AddPValueRows(reading_, table);
        for (const Interval& interval : reading_.intervals) {
            const double percent = 100 * result_.confidenceLevel.value;
            const bool hasDirection = interval.method.empty() && !reading_.direction.IsEmpty();
            table.AddRow({"Estimate", NumberText(interval.estimate),
                          hasDirection ? reading_.direction.Text() : interval.method});
            table.AddRow({ShortNumber(std::to_string(percent)) + "% interval",
                          NumberText(interval.lower) + " to " + NumberText(interval.upper),
                          Remark(Quantity::kInterval, interval.method)});
        }
        for (const Figure& figure : reading_.figures) {
            if (figure.value.empty()) continue;
            std::string label = figure.label;
            label[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(label[0])));
            table.AddRow({label, NumberText(figure.value), WhichDifferences(figure.key)});
        }
        return table;
    }

    /// "after above before" beside the number of positive differences.
    std::string WhichDifferences(std::string_view key) const {
        const Direction& direction = reading_.direction;
        const char* const relation = key == "PositiveDifferences"   ? " above "
                                     : key == "NegativeDifferences" ? " below "
                                                                    : nullptr;
        return relation == nullptr || direction.IsEmpty() ? "" : direction.first + relation + direction.second;
    }

    void AddSet(const StatisticSet& set, TextTable& table) const {
        const auto add = [&](const char* title, const std::string& value, Quantity quantity, const std::string& what) {
            table.AddRow({title, NumberText(value), Remark(quantity, Joined(what, set.name))});
        };
        // Where a test has two statistics, each says which it is.
        const bool hasOwn =
            std::ranges::any_of(set.pValues, [](const PValue& p) { return p.ownStatistic.has_value(); });
        add("Statistic", set.statistic, Quantity::kStatistic, hasOwn ? "Pearson's chi-square" : set.label);
        if (!set.standardError.empty()) add("Standard error", set.standardError, Quantity::kStandardError, "");
        if (!set.standardized.empty()) {
            add("Standardized", set.standardized, Quantity::kStandardized, reading_.direction.Text());
        }
        if (!set.df.empty()) table.AddRow({"Degrees of freedom", set.df, set.name});
        for (const PValue& p : set.pValues) {
            if (p.ownStatistic && !p.ownStatistic->empty()) {
                add("Statistic", *p.ownStatistic, Quantity::kStatistic, KindText(p) + " chi-square");
            }
            std::string remark = Joined(KindText(p), set.name);
            if (hasOwn && !p.ownStatistic) remark += ", of Pearson's chi-square";
            if (p.decides) remark += ", decides";
            table.AddRow({"p", PText(p.value, p.isBound), Remark(Quantity::kPValue, remark)});
        }
    }

    static std::string Joined(const std::string& first, const std::string& second) {
        return first + (first.empty() || second.empty() ? "" : ", ") + second;
    }

    /// What stands beside a number: what it is, and whether it is to be trusted.
    std::string Remark(Quantity quantity, const std::string& kind = "") const {
        if (!reading_.IsBeyondRange(quantity)) return kind;
        return Joined(kind, kBeyondRange);
    }

    static std::string Section(const std::string& title, const TextTable& table) {
        if (table.IsEmpty()) return "";
        return (title.empty() ? "" : kIndent + title + "\n") + Indented(table.ToText());
    }

    TextTable Counts() const {
        const CountTable counts = reading_.counts.IsWide() ? reading_.counts.Listed() : reading_.counts;
        std::vector<TextTable::ColumnHead> heads{{counts.corner}};
        const std::size_t columns = counts.ColumnCount();
        for (std::size_t i = 0; i < columns; ++i) {
            heads.push_back({i < counts.columnTitles.size() ? counts.columnTitles[i] : "", Alignment::kRight});
        }
        TextTable table(heads);
        for (std::size_t i = 0; i < counts.RowCount(); ++i) {
            std::vector<std::string> cells{i < counts.rowTitles.size() ? counts.rowTitles[i] : ""};
            for (const std::string& value : counts.CellsOf(i)) cells.push_back(ShortNumber(value));
            cells.resize(columns + 1);
            table.AddRow(std::move(cells));
        }
        return table;
    }

    TextTable Samples() const {
        std::vector<TextTable::ColumnHead> heads{{reading_.group.empty() ? "field" : reading_.group}};
        if (reading_.samples.empty()) return TextTable(heads);
        for (const Figure& figure : reading_.samples.front().figures) {
            heads.push_back({figure.label, Alignment::kRight});
        }
        TextTable table(heads);
        for (const Sample& sample : reading_.samples) {
            std::vector<std::string> cells{sample.name + (sample.role.empty() ? "" : " (" + sample.role + ")")};
            for (const Figure& figure : sample.figures) cells.push_back(NumberText(figure.value));
            cells.resize(heads.size());
            table.AddRow(std::move(cells));
        }
        return table;
    }

    std::string PairsTitle() const {
        const std::string remark = Remark(Quantity::kPairs);
        return remark.empty() ? "Pairs" : "Pairs, standard errors and p " + remark;
    }

    /// An empty cell is one that this comparison doesn't have.
    static std::string CellText(const std::string& value) { return value.empty() ? "" : NumberText(value); }
    static std::string CellP(const std::string& value) { return value.empty() ? "" : PText(value); }

    TextTable Pairs() const {
        TextTable table({{"samples"},
                         {"statistic", Alignment::kRight},
                         {"std. error", Alignment::kRight},
                         {"standardized", Alignment::kRight},
                         {"p", Alignment::kRight},
                         {"adjusted p", Alignment::kRight}});
        const Supplement& supplement = reading_.supplement;
        const bool isAdjusted = supplement.adjustedPairs.size() == reading_.pairs.size() && !reading_.pairs.empty();
        if (isAdjusted) table.AddColumn({"p " + supplement.adjustment, Alignment::kRight});
        // The count of an ordered pair is of the cases in which the later group has the larger value.
        const char* const separator = reading_.name == Tests::kJonckheereTerpstra.resultName ? " < " : " - ";
        for (std::size_t i = 0; i < reading_.pairs.size(); ++i) {
            const PairComparison& pair = reading_.pairs[i];
            std::vector<std::string> cells{pair.first + separator + pair.second,
                                           CellText(pair.statistic),
                                           CellText(pair.standardError),
                                           CellText(pair.standardized),
                                           CellP(pair.p),
                                           CellP(pair.adjustedP)};
            if (isAdjusted) cells.push_back(CellP(supplement.adjustedPairs[i]));
            table.AddRow(std::move(cells));
        }
        return table;
    }

    /// The subsets as columns, in the rows the samples from the lowest to the highest.
    TextTable Subsets() const {
        std::vector<TextTable::ColumnHead> heads{{""}};
        for (std::size_t i = 0; i < reading_.subsets.size(); ++i) {
            heads.push_back({std::to_string(i + 1), Alignment::kRight});
        }
        TextTable table(heads);
        if (reading_.subsets.empty()) return table;
        for (const std::string& sample : reading_.orderedSamples) {
            AddSubsetRow(table, sample, [&](const HomogeneousSubset& subset) {
                const auto& members = subset.members;
                return std::string(std::ranges::find(members, sample) == members.end() ? "" : "x");
            });
        }
        AddSubsetRow(table, "statistic", [](const auto& subset) { return CellText(subset.statistic); });
        AddSubsetRow(table, "p", [](const auto& subset) { return CellP(subset.p); });
        AddSubsetRow(table, "adjusted p", [](const auto& subset) { return CellP(subset.adjustedP); });
        return table;
    }

    template <typename CellOf>
    void AddSubsetRow(TextTable& table, const std::string& title, CellOf cellOf) const {
        std::vector<std::string> cells{title};
        for (const HomogeneousSubset& subset : reading_.subsets) cells.push_back(cellOf(subset));
        table.AddRow(std::move(cells));
    }

    static std::string MethodLine(const char* title, const std::string& method) {
        return method.empty() ? "" : kIndent + std::string(title) + ": " + method + "\n";
    }

    static std::string NoteLine(const TestReading::Note& note) {
        const std::string kind = note.kind == "helpMessage" ? "Note" : note.kind == "error" ? "Not done" : "Warning";
        return kind + ": " + note.text + " (" + std::to_string(note.code) + ")";
    }

    const TestReading& reading_;
    const ResultReading& result_;
    const MessageCatalogue& texts_;
    const TextStyle& style_;
};

constexpr const char* kNoTest = "No test of the request is known.\n";

std::string NumberedTitle(std::size_t number, const TestReading& reading) {
    return std::to_string(number) + " " + reading.title;
}

std::string DecisionText(const TestReading& reading) {
    if (reading.HasError()) return "not done";
    return reading.IsBeyondRange(Quantity::kPValue) ? kBeyondRange : reading.decision;
}

/// How many of a family have a significance below the level, before and after adjustment, and how many would have by
/// chance.
std::string FamilyLine(const TestFamilyPValues& family, const Number& level) {
    const double alpha = level.value;
    if (family.count == 0 || std::isnan(alpha)) return "";
    std::size_t before = 0;
    std::size_t afterHolm = 0;
    std::size_t afterBenjaminiHochberg = 0;
    for (const auto& test : family.tests) {
        if (!test) continue;
        before += test->p < alpha ? 1 : 0;
        afterHolm += test->holm < alpha ? 1 : 0;
        afterBenjaminiHochberg += test->benjaminiHochberg < alpha ? 1 : 0;
    }
    const std::string shown = ShortNumber(level);
    return std::to_string(before) + " of " + std::to_string(family.count) + " tests with p below " + shown +
           " before adjustment (" + ShortNumber(ExactText(alpha * static_cast<double>(family.count))) +
           " expected by chance if every null hypothesis holds); " + std::to_string(afterHolm) +
           " after Holm's adjustment, " + std::to_string(afterBenjaminiHochberg) + " after Benjamini and Hochberg's\n";
}

/// How the run computed, if that is known.
std::string ArithmeticLine(ArithmeticMode mode) {
    if (mode == ArithmeticMode::kUnknown) return "";
    return std::string("\nArithmetic: ") + (mode == ArithmeticMode::kExtended ? "extended" : "as defined") + "\n";
}

/// The method by which the tests of a run are adjusted for their number.
std::string AdjustmentOf(const std::vector<TestReading>& readings) {
    for (const TestReading& reading : readings) {
        if (!reading.supplement.adjustedP.empty()) return reading.supplement.adjustment;
    }
    return "";
}

/// A line for each test, and from five tests on the significances adjusted for their number.
std::string Summary(const ResultReading& result) {
    const std::vector<TestReading>& readings = result.tests;
    const bool isFamily = readings.size() >= kFewestForSummary;
    std::vector<TextTable::ColumnHead> heads{
        {"Test"}, {"Fields"}, {"N", Alignment::kRight}, {"Statistic", Alignment::kRight}, {"p", Alignment::kRight}};
    if (isFamily) heads.insert(heads.end(), {{"p Holm", Alignment::kRight}, {"p BH", Alignment::kRight}});
    const bool isAdjusted =
        std::ranges::any_of(readings, [](const TestReading& each) { return !each.supplement.adjustedP.empty(); });
    if (isAdjusted) heads.push_back({"p " + AdjustmentOf(readings), Alignment::kRight});
    heads.insert(heads.end(), {{"kind"}, {"Decision"}});
    TextTable table(heads);
    for (std::size_t i = 0; i < readings.size(); ++i) {
        const TestReading& reading = readings[i];
        const SummaryCells common = SummaryOf(reading, i + 1);
        std::vector<std::string> cells{common.title, common.fields, common.n, common.statistic, common.p};
        if (isFamily) {
            const auto& adjusted = result.family.tests[i];
            cells.push_back(adjusted ? PText(ExactText(adjusted->holm), common.isBound) : "");
            cells.push_back(adjusted ? PText(ExactText(adjusted->benjaminiHochberg), common.isBound) : "");
        }
        if (isAdjusted) {
            const Number& adjusted = reading.supplement.adjustedP;
            cells.push_back(adjusted.empty() ? "" : PText(adjusted));
        }
        cells.push_back(common.kind);
        cells.push_back(common.decision);
        table.AddRow(std::move(cells));
    }
    return table.ToText() + (isFamily ? FamilyLine(result.family, result.sigLevel) : "");
}

}  // namespace

SummaryCells SummaryOf(const TestReading& reading, std::size_t number) {
    const StatisticSet* const set = reading.Leading();
    const PValue* const p = set == nullptr ? nullptr : set->Leading();
    SummaryCells cells;
    cells.title = NumberedTitle(number, reading);
    cells.fields = JoinList(reading.fields) + (reading.group.empty() ? "" : " by " + reading.group);
    cells.n = reading.n;
    cells.statistic = set == nullptr ? "" : NumberText(p ? set->StatisticOf(*p) : set->statistic);
    if (p != nullptr && set->StatisticOf(*p).empty() && p->ownStatistic) cells.statistic.clear();
    if (!reading.intervals.empty()) cells.statistic = NumberText(reading.intervals.front().estimate);
    cells.isBound = p != nullptr && p->isBound;
    cells.p = p == nullptr ? "" : PText(p->value, p->isBound);
    cells.kind = p == nullptr ? "" : NameOf(p->kind);
    cells.decision = DecisionText(reading);
    return cells;
}

std::string PText(const std::string& value, bool isBound) {
    constexpr double kSmallestShown = 0.001;
    double p = 0;
    if (!ReadNumber(value, p)) return value.empty() ? "not computed" : value;
    if (std::isnan(p)) return "undefined";
    if (p < kSmallestShown) return "< .001";
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.3f", p);
    std::string text = buffer;
    if (text.starts_with("0.")) text.erase(0, 1);
    return isBound ? "> " + text : text;
}

std::string TextOfTests(const ResultReading& result, const MessageCatalogue& texts, const TextStyle& style,
                        const std::vector<std::string>& notes) {
    const std::vector<TestReading>& readings = result.tests;
    if (readings.empty()) return kNoTest;
    std::string text;
    const bool isAdjusted = readings.size() > 1 && !AdjustmentOf(readings).empty();
    if (readings.size() >= kFewestForSummary || isAdjusted) text = Summary(result) + "\n";
    std::size_t number = 0;
    for (const TestReading& reading : readings) {
        text += (number == 0 ? "" : "\n") + Block(reading, result, texts, style).Text(number + 1);
        ++number;
    }
    text += ArithmeticLine(result.document.arithmetic);
    for (const std::string& note : notes) text += (&note == &notes.front() ? "\nNote: " : "Note: ") + note + "\n";
    return text;
}

std::string RecordText(const std::vector<PageFact>& facts) {
    std::string text;
    for (const PageFact& fact : facts) {
        std::string line = fact.title + ": " + fact.text;
        MakeOneLine(line);
        text += kIndent + line + "\n";
    }
    return text.empty() ? "" : "\nRecord\n" + text;
}

std::string TextReport(const ResultReading& result, const MessageCatalogue& texts, const TextStyle& style,
                       const std::vector<std::string>& notes) {
    std::string text = TextOfTests(result, texts, style, notes);
    if (!result.record) return text;
    std::vector<PageFact> facts = DataFacts(*result.record);
    for (PageFact& fact : ProgramFacts(*result.record)) facts.push_back(std::move(fact));
    return text + RecordText(facts);
}

std::string ShortReport(const ResultReading& result, const MessageCatalogue& texts) {
    const std::vector<TestReading>& readings = result.tests;
    if (readings.empty()) return kNoTest;
    std::string notes;
    std::size_t number = 0;
    for (const TestReading& reading : readings) {
        const std::string name = NumberedTitle(++number, reading) + ": ";
        for (const TestReading::Note& note : reading.notes) {
            notes += name + note.text + " (" + std::to_string(note.code) + ")\n";
        }
        for (const std::string& remark : reading.remarks) notes += name + remark + "\n";
        for (const EngineLimit* limit : reading.limits) notes += name + LimitLine(*limit, texts) + "\n";
    }
    return Summary(result) + notes;
}

}  // namespace tarn
