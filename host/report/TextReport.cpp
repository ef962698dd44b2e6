#include "host/report/TextReport.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "host/TextTable.h"

namespace tarn {

namespace {

constexpr const char* kIndent = "   ";

constexpr const char* kBeyondRange = "beyond the engine's range";

std::string LimitLine(const EngineLimit& limit, const MessageCatalogue& texts) {
    const std::string* const sentence = texts.Limit(limit.key);
    return "Beyond the engine's range: " + (sentence == nullptr ? std::string(limit.key) : *sentence);
}

/// A number for a reader; words for one that is none.
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
    Block(const TestReading& reading, const ResultDocument& document, const MessageCatalogue& texts,
          const TextStyle& style)
        : reading_(reading), document_(document), texts_(texts), style_(style) {}

    std::string Text(std::size_t number) const {
        std::string text =
            Heading(number) + kIndent + (reading_.isEstimate ? "" : NullHypothesis()) + reading_.statement + "\n";
        text += Indented(Results().ToText());
        if (!reading_.isEstimate) text += std::string(kIndent) + "Decision: " + Decision() + "\n";
        text += Section("", Counts());
        text += Section("", Samples());
        text += Section(PairsTitle(), Pairs());
        text += Section("Homogeneous subsets", Subsets());
        for (const TestReading::Note& note : reading_.notes) text += kIndent + NoteLine(note) + "\n";
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
        const std::string at = " at the level " + ShortNumber(document_.sigLevel);
        if (reading_.decision == "reject") return "reject the null hypothesis" + at;
        if (reading_.decision == "retain") return "retain the null hypothesis" + at;
        return "none";
    }

    TextTable Results() const {
        TextTable table({{""}, {""}, {""}});
        if (!reading_.n.empty()) table.AddRow({"N", reading_.n, Remark(Quantity::kN)});
        for (const StatisticSet& set : reading_.statistics) AddSet(set, table);
        for (const Interval& interval : reading_.intervals) {
            const double percent = 100 * std::strtod(document_.confidenceLevel.c_str(), nullptr);
            table.AddRow({"Estimate", NumberText(interval.estimate), interval.method});
            table.AddRow({ShortNumber(std::to_string(percent)) + "% interval",
                          NumberText(interval.lower) + " to " + NumberText(interval.upper),
                          Remark(Quantity::kInterval, interval.method)});
        }
        for (const Figure& figure : reading_.figures) {
            std::string label = figure.label;
            label[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(label[0])));
            table.AddRow({label, NumberText(figure.value), ""});
        }
        return table;
    }

    void AddSet(const StatisticSet& set, TextTable& table) const {
        const auto add = [&](const char* title, const std::string& value, Quantity quantity) {
            table.AddRow({title, NumberText(value), Remark(quantity, set.name)});
        };
        add("Statistic", set.statistic, Quantity::kStatistic);
        if (!set.standardError.empty()) add("Standard error", set.standardError, Quantity::kStandardError);
        if (!set.standardized.empty()) add("Standardized", set.standardized, Quantity::kStandardized);
        if (!set.df.empty()) table.AddRow({"Degrees of freedom", set.df, set.name});
        for (const PValue& p : set.pValues) {
            std::string remark = KindText(p);
            if (!set.name.empty()) remark += ", " + set.name;
            if (p.decides) remark += ", decides";
            table.AddRow({"p", PText(p.value, p.isBound), Remark(Quantity::kPValue, remark)});
        }
    }

    /// What stands beside a number: what it is, and whether it is to be trusted.
    std::string Remark(Quantity quantity, const std::string& kind = "") const {
        if (!reading_.IsBeyondRange(quantity)) return kind;
        return kind + (kind.empty() ? "" : ", ") + kBeyondRange;
    }

    static std::string Section(const std::string& title, const TextTable& table) {
        if (table.IsEmpty()) return "";
        return (title.empty() ? "" : kIndent + title + "\n") + Indented(table.ToText());
    }

    TextTable Counts() const {
        const CountTable& counts = reading_.counts;
        std::vector<TextTable::ColumnHead> heads{{counts.corner}};
        std::size_t columns = 0;
        for (const auto& row : counts.rows) columns = std::max(columns, row.size());
        for (std::size_t i = 0; i < columns; ++i) {
            heads.push_back({i < counts.columnTitles.size() ? counts.columnTitles[i] : "", Alignment::kRight});
        }
        TextTable table(heads);
        for (std::size_t i = 0; i < counts.rows.size(); ++i) {
            std::vector<std::string> cells{i < counts.rowTitles.size() ? counts.rowTitles[i] : ""};
            for (const std::string& value : counts.rows[i]) cells.push_back(ShortNumber(value));
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
            std::vector<std::string> cells{sample.name};
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

    /// An empty cell is one that this comparison has not.
    static std::string CellText(const std::string& value) { return value.empty() ? "" : NumberText(value); }
    static std::string CellP(const std::string& value) { return value.empty() ? "" : PText(value); }

    TextTable Pairs() const {
        TextTable table({{"samples"},
                         {"statistic", Alignment::kRight},
                         {"std. error", Alignment::kRight},
                         {"standardized", Alignment::kRight},
                         {"p", Alignment::kRight},
                         {"adjusted p", Alignment::kRight}});
        for (const PairComparison& pair : reading_.pairs) {
            table.AddRow({pair.first + " - " + pair.second, CellText(pair.statistic), CellText(pair.standardError),
                          CellText(pair.standardized), CellP(pair.p), CellP(pair.adjustedP)});
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

    static std::string NoteLine(const TestReading::Note& note) {
        const std::string kind = note.kind == "helpMessage" ? "Note" : note.kind == "error" ? "Not done" : "Warning";
        return kind + ": " + note.text + " (" + std::to_string(note.code) + ")";
    }

    const TestReading& reading_;
    const ResultDocument& document_;
    const MessageCatalogue& texts_;
    const TextStyle& style_;
};

constexpr const char* kNoTest = "No test of the request is known.\n";

}  // namespace

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

std::string TextReport(const ResultDocument& document, const MessageCatalogue& texts, const TextStyle& style) {
    std::string text;
    std::size_t number = 0;
    for (const TestResult& test : document.tests) {
        const TestReading reading = ReadTest(test, document, texts);
        text += (text.empty() ? "" : "\n") + Block(reading, document, texts, style).Text(++number);
    }
    return text.empty() ? kNoTest : text;
}

std::string ShortReport(const ResultDocument& document, const MessageCatalogue& texts) {
    TextTable table({{"Test"},
                     {"Fields"},
                     {"N", Alignment::kRight},
                     {"Statistic", Alignment::kRight},
                     {"p", Alignment::kRight},
                     {"kind"},
                     {"Decision"}});
    std::string notes;
    std::size_t number = 0;
    for (const TestResult& test : document.tests) {
        const TestReading reading = ReadTest(test, document, texts);
        const std::string name = std::to_string(++number) + " " + reading.title;
        const StatisticSet* const set = reading.Leading();
        const PValue* const p = set == nullptr ? nullptr : set->Leading();
        std::string statistic = set == nullptr ? "" : NumberText(set->statistic);
        if (!reading.intervals.empty()) statistic = NumberText(reading.intervals.front().estimate);
        std::string fields = JoinList(reading.fields);
        if (!reading.group.empty()) fields += " by " + reading.group;
        table.AddRow({name, fields, reading.n, statistic, p ? PText(p->value, p->isBound) : "",
                      p ? std::string(NameOf(p->kind)) : "", reading.decision});
        for (const TestReading::Note& note : reading.notes) {
            notes += name + ": " + note.text + " (" + std::to_string(note.code) + ")\n";
        }
        for (const EngineLimit* limit : reading.limits) notes += name + ": " + LimitLine(*limit, texts) + "\n";
    }
    return number == 0 ? kNoTest : table.ToText() + notes;
}

}  // namespace tarn
