#include "host/report/PageTables.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "host/NumberText.h"
#include "host/report/AdjustedPValues.h"
#include "host/report/PageNumbers.h"
#include "host/report/SupplementText.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

PageCell TextCell(std::string text) {
    return {std::move(text), {}, {}};
}
PageCell NumberCell(std::string text, const Number& number) {
    return {std::move(text), number, {}};
}

/// Quartiles and limits lie between values.
constexpr int kDigitsOfRanges = 3;

/// Adds a column with its cells to a table whose rows are there.
void AddColumn(PageTable& table, PageColumn column, const std::vector<PageCell>& cells) {
    table.columns.push_back(std::move(column));
    for (std::size_t i = 0; i < table.rows.size(); ++i) table.rows[i].push_back(cells[i]);
}

bool AreAllEmpty(const std::vector<PageCell>& cells) {
    return std::ranges::all_of(cells, [](const PageCell& cell) { return cell.text.empty(); });
}

std::vector<PageCell> CellsOf(const std::vector<Number>& numbers) {
    std::vector<double> values;
    for (const Number& number : numbers) values.push_back(number.value);
    const SameDecimals decimals(values);
    std::vector<PageCell> cells;
    for (const Number& number : numbers) cells.push_back(NumberCell(decimals.Text(number), number));
    return cells;
}

std::vector<PageCell> RangeCells(const std::vector<Number>& lower, const std::vector<Number>& upper) {
    std::vector<double> values;
    for (const auto* side : {&lower, &upper}) {
        for (const Number& number : *side) values.push_back(number.value);
    }
    const SameDecimals decimals(values, kDigitsOfRanges);
    std::vector<PageCell> cells;
    for (std::size_t i = 0; i < lower.size(); ++i) {
        cells.push_back({decimals.Range(lower[i], upper[i]), lower[i], upper[i]});
    }
    return cells;
}

template <typename Write>
std::vector<PageCell> WrittenCells(const std::vector<Number>& numbers, Write write) {
    std::vector<PageCell> cells;
    for (const Number& number : numbers) cells.push_back(NumberCell(number.empty() ? "" : write(number), number));
    return cells;
}

/// Mean ranks and their differences: two decimals of few, one of many.
std::vector<PageCell> RankCells(const std::vector<Number>& numbers) {
    constexpr double kMany = 10;
    const bool areFew =
        std::ranges::none_of(numbers, [](const Number& each) { return std::fabs(each.value) >= kMany; });
    return WrittenCells(numbers, [&](const Number& number) { return FixedText(number.value, areFew ? 2 : 1); });
}

/// Null for what there is none of, a null sample among it.
const Figure* FindFigure(const Sample* sample, std::string_view key) {
    if (sample == nullptr) return nullptr;
    const auto figure = std::ranges::find(sample->figures, key, &Figure::key);
    return figure == sample->figures.end() ? nullptr : &*figure;
}

/// What has a name, of which there may be tens of thousands. Borrows the list.
template <typename Named>
class ByName {
 public:
    explicit ByName(const std::vector<Named>& list) {
        for (const Named& each : list) places_.emplace(each.name, &each);
    }

    /// The first of that name; null for none.
    const Named* Find(std::string_view name) const {
        const auto found = places_.find(name);
        return found == places_.end() ? nullptr : found->second;
    }

 private:
    std::unordered_map<std::string_view, const Named*> places_;
};

/// What is known of each sample: from the columns of the table, or of a stored document what it says itself.
std::vector<SampleSummary> SummariesOf(const TestReading& reading) {
    if (!reading.supplement.samples.empty()) return reading.supplement.samples;
    std::vector<SampleSummary> summaries;
    for (const Sample& sample : reading.samples) {
        SampleSummary summary;
        summary.name = sample.name;
        const auto figureOf = [&](std::string_view key) {
            const Figure* const figure = FindFigure(&sample, key);
            return figure == nullptr ? Number() : figure->value;
        };
        summary.n = figureOf("N");
        summary.median = sample.box.median;
        summary.firstQuartile = sample.box.lowerHinge;
        summary.thirdQuartile = sample.box.upperHinge;
        summaries.push_back(std::move(summary));
    }
    return summaries;
}

std::vector<Number> NumbersOf(const std::vector<SampleSummary>& summaries, Number SampleSummary::*member) {
    std::vector<Number> numbers;
    for (const SampleSummary& summary : summaries) numbers.push_back(summary.*member);
    return numbers;
}

/// The columns of samples, in the making.
class SampleColumns {
 public:
    SampleColumns(const TestReading& reading, const ResultReading& result)
        : reading_(reading), result_(result), samples_(reading.samples), summaries_(SummariesOf(reading)) {}

    PageTable Table() {
        table_.columns.push_back({"sample", reading_.group.empty() ? "field" : reading_.group});
        for (const SampleSummary& summary : summaries_) {
            const Sample* const sample = samples_.Find(summary.name);
            const bool hasRole = sample != nullptr && !sample->role.empty();
            table_.rows.push_back({TextCell(summary.name + (hasRole ? " (" + sample->role + ")" : ""))});
        }
        AddNumbers("n", "n", NumbersOf(summaries_, &SampleSummary::n));
        if (std::ranges::any_of(summaries_, [](const auto& each) { return each.missing.value > 0; })) {
            AddNumbers("missing", "missing", NumbersOf(summaries_, &SampleSummary::missing));
        }
        AddQuartiles();
        for (const auto& [key, column] : {std::pair{"MeanOfRank", "mean-rank"}, std::pair{"GTMedian", "above-median"},
                                          std::pair{"STMedian", "not-above-median"}}) {
            AddFigures(key, column);
        }
        AddLetters();
        // What misses of a single field stands beside the cases.
        const bool hasMore = std::ranges::any_of(table_.columns, [](const PageColumn& column) {
            return column.key != "sample" && column.key != "n" && column.key != "missing";
        });
        const bool isCountAlone = !hasMore && table_.rows.size() < 2;
        return isCountAlone ? PageTable() : std::move(table_);
    }

 private:
    void AddNumbers(const char* key, const std::string& title, const std::vector<Number>& numbers) {
        const std::vector<PageCell> cells = CellsOf(numbers);
        if (!AreAllEmpty(cells)) AddColumn(table_, {key, title, Alignment::kRight}, cells);
    }
    void AddRanges(const PageColumn& column, Number SampleSummary::*lower, Number SampleSummary::*upper) {
        const std::vector<PageCell> cells = RangeCells(NumbersOf(summaries_, lower), NumbersOf(summaries_, upper));
        if (!AreAllEmpty(cells)) AddColumn(table_, column, cells);
    }

    void AddQuartiles() {
        // A stored document has the hinges of box plots.
        const bool areHinges = reading_.supplement.samples.empty();
        AddNumbers("median", "median", NumbersOf(summaries_, &SampleSummary::median));
        AddRanges({"quartiles", areHinges ? "hinges" : "quartiles", Alignment::kLeft}, &SampleSummary::firstQuartile,
                  &SampleSummary::thirdQuartile);
        AddRanges({"median-interval", PercentText(result_.confidenceLevel.value) + " interval of the median",
                   Alignment::kLeft, true},
                  &SampleSummary::medianLower, &SampleSummary::medianUpper);
    }

    void AddFigures(std::string_view key, const char* column) {
        std::vector<Number> numbers;
        std::string title;
        for (const SampleSummary& summary : summaries_) {
            const Figure* const figure = FindFigure(samples_.Find(summary.name), key);
            numbers.push_back(figure == nullptr ? Number() : figure->value);
            if (figure != nullptr) title = figure->label;
        }
        const std::vector<PageCell> cells = key == "MeanOfRank" ? RankCells(numbers) : CellsOf(numbers);
        if (!AreAllEmpty(cells)) AddColumn(table_, {column, title, Alignment::kRight}, cells);
    }

    void AddLetters() {
        if (reading_.supplement.letters.empty()) return;
        const ByName<SampleLetters> letters(reading_.supplement.letters);
        std::vector<PageCell> cells;
        for (const SampleSummary& summary : summaries_) {
            const SampleLetters* const found = letters.Find(summary.name);
            cells.push_back(TextCell(found == nullptr ? "" : found->letters));
        }
        AddColumn(table_, {"letters", "letters", Alignment::kLeft}, cells);
    }

    const TestReading& reading_;
    const ResultReading& result_;
    ByName<Sample> samples_;
    std::vector<SampleSummary> summaries_;
    PageTable table_;
};

// ---- Effects ----

/// Effects that have no bound at 1.
constexpr std::array<std::string_view, 2> kUnbounded{"odds-ratio", "cohens-w"};
constexpr std::array<std::string_view, 3> kInUnitOfField{"hodges-lehmann-shift", "pseudomedian", "median"};

bool IsAmong(std::string_view key, auto&& keys) {
    return std::ranges::find(keys, key) != keys.end();
}

std::string BoundText(const Number& number, bool isShare) {
    if (number.empty()) return "";
    constexpr int kDecimals = 2;
    return isShare ? ShareText(number.value) : FixedText(number.value, kDecimals);
}

void WriteInUnit(PageEffect& effect) {
    const SameDecimals decimals({effect.value.value, effect.lower.value, effect.upper.value});
    effect.text = decimals.Text(effect.value);
    effect.lowerText = decimals.Text(effect.lower);
    effect.upperText = decimals.Text(effect.upper);
}

PageEffect Written(const EffectSize& size) {
    PageEffect effect;
    effect.key = size.key;
    effect.label = size.label;
    effect.value = size.value;
    effect.lower = size.lower;
    effect.upper = size.upper;
    effect.method = size.method;
    if (IsAmong(size.key, kInUnitOfField)) {
        WriteInUnit(effect);
        return effect;
    }
    const bool isShare = !IsAmong(size.key, kUnbounded);
    effect.text = BoundText(size.value, isShare);
    effect.lowerText = BoundText(size.lower, isShare);
    effect.upperText = BoundText(size.upper, isShare);
    return effect;
}

/// "proportion of female", as the effect beside the estimate calls it.
std::string ProportionLabel(const TestReading& reading) {
    const auto found = std::ranges::find(reading.supplement.effects, "proportion", &EffectSize::key);
    return found == reading.supplement.effects.end() ? "proportion" : found->label;
}

PageEffect EstimateOf(const Interval& interval, const TestReading& reading) {
    PageEffect effect;
    effect.key = "estimate";
    effect.label = interval.method.empty() ? reading.direction.Text() : ProportionLabel(reading);
    effect.value = interval.estimate;
    effect.lower = interval.lower;
    effect.upper = interval.upper;
    effect.method = interval.method.empty() ? "Hodges-Lehmann" : interval.method;
    effect.isBeyondRange = reading.IsBeyondRange(Quantity::kInterval);
    if (effect.label.empty()) effect.label = "estimate";
    if (interval.method.empty()) {
        WriteInUnit(effect);
    } else {
        // The three methods differ in the third decimal.
        constexpr int kDecimals = 3;
        effect.text = effect.value.empty() ? "" : ShareText(effect.value.value, kDecimals);
        effect.lowerText = effect.lower.empty() ? "" : ShareText(effect.lower.value, kDecimals);
        effect.upperText = effect.upper.empty() ? "" : ShareText(effect.upper.value, kDecimals);
    }
    return effect;
}

// ---- Pairs ----

std::vector<PageCell> ShareCells(const std::vector<Number>& numbers) {
    return WrittenCells(numbers, [](const Number& number) { return ShareText(number.value); });
}
std::vector<PageCell> StatisticCells(const std::vector<Number>& numbers) {
    return WrittenCells(numbers, StatisticText);
}
std::vector<PageCell> CountCells(const std::vector<Number>& numbers) {
    return WrittenCells(numbers, CountText);
}

/// What the pairs of a test are compared by, and who described it.
struct PairForm {
    const TestFacts* test;
    const char* author;
    const char* statistic;
    std::vector<PageCell> (*cellsOf)(const std::vector<Number>& statistics);
};
constexpr std::array kPairForms{
    PairForm{&Tests::kKruskalWallis, "Dunn", "mean rank difference", RankCells},
    PairForm{&Tests::kFriedman, "Dunn", "mean rank difference", RankCells},
    PairForm{&Tests::kKendall, "Dunn", "mean rank difference", RankCells},
    PairForm{&Tests::kCochran, "Marascuilo-McSweeney", "difference of proportions", ShareCells},
    PairForm{&Tests::kJonckheereTerpstra, "Jonckheere, one-sided", "J", CountCells},
    PairForm{&Tests::kMedian, "median test", "chi2", StatisticCells},
};

std::vector<PageCell> PCells(const std::vector<Number>& numbers) {
    return WrittenCells(numbers, [](const Number& number) { return PCellText(number); });
}

void AddUnlessEmpty(PageTable& table, PageColumn column, const std::vector<PageCell>& cells) {
    if (!AreAllEmpty(cells)) AddColumn(table, std::move(column), cells);
}

std::vector<Number> NumbersOf(const std::vector<PairComparison>& pairs, Number PairComparison::*member) {
    std::vector<Number> numbers;
    for (const PairComparison& pair : pairs) numbers.push_back(pair.*member);
    return numbers;
}

void AddEffectsOfPairs(const TestReading& reading, PageTable& table) {
    std::map<std::pair<std::string_view, std::string_view>, const EffectSize*> effectOf;
    for (const EffectSize& effect : reading.supplement.effects) {
        effectOf.try_emplace({effect.first, effect.second}, &effect);
    }
    std::vector<PageCell> cells(reading.pairs.size());
    std::string title;
    for (std::size_t i = 0; i < reading.pairs.size(); ++i) {
        const auto found = effectOf.find({reading.pairs[i].first, reading.pairs[i].second});
        if (found == effectOf.end()) continue;
        const PageEffect effect = Written(*found->second);
        cells[i] = NumberCell(effect.WithInterval(), effect.value);
        title = effect.key == "probability-of-superiority" ? "P(first > second)" : "first minus second";
    }
    AddUnlessEmpty(table, {"effect", title, Alignment::kRight}, cells);
}

std::string PairsTitle(const TestReading& reading, const PairForm* form) {
    const std::string author = form == nullptr ? "" : std::string(form->author) + ", ";
    std::string adjustment = reading.supplement.adjustedPairs.empty() ? "Bonferroni" : reading.supplement.adjustment;
    if (adjustment == TitleOf(Adjustment::kNone)) adjustment = "not adjusted";
    return "Pairs (" + author + adjustment + ")" +
           (reading.IsBeyondRange(Quantity::kPairs) ? ", standard errors and p beyond the engine's range" : "");
}

}  // namespace

std::string PageEffect::WithInterval() const {
    return HasInterval() ? text + " [" + lowerText + ", " + upperText + "]" : text;
}

std::string PercentText(double share) {
    constexpr double kPercent = 100;
    constexpr double kRounding = 1e6;
    return FewDigits(Number(ExactText(std::round(share * kPercent * kRounding) / kRounding))) + " %";
}

PageTable SampleTable(const TestReading& reading, const ResultReading& result) {
    return SampleColumns(reading, result).Table();
}

PageTable CountsTable(const TestReading& reading, const std::vector<std::string>& classes) {
    const CountTable counts = reading.counts.IsWide() ? reading.counts.Listed() : reading.counts;
    PageTable table;
    table.columns.push_back({"class", counts.corner});
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < counts.RowCount(); ++i) {
        table.rows.push_back({TextCell(i < counts.rowTitles.size() ? counts.rowTitles[i] : "")});
        rows.push_back(counts.CellsOf(i));
    }
    for (std::size_t column = 0; column < counts.ColumnCount(); ++column) {
        std::vector<PageCell> cells;
        for (const auto& row : rows) {
            const Number number(column < row.size() ? row[column] : "");
            cells.push_back(NumberCell(number.empty() ? "" : FewDigits(number), number));
        }
        const std::vector<std::string>& titles = classes.empty() ? counts.columnTitles : classes;
        const std::string title = column < titles.size() ? titles[column] : "";
        AddColumn(table, {"count", title, Alignment::kRight}, cells);
    }
    return table;
}

PageTable PairTable(const TestReading& reading) {
    PageTable table;
    const std::vector<PairComparison>& pairs = reading.pairs;
    if (pairs.empty()) return table;
    const auto form =
        std::ranges::find_if(kPairForms, [&](const PairForm& each) { return each.test->resultName == reading.name; });
    const bool isKnown = form != kPairForms.end();
    table.title = PairsTitle(reading, isKnown ? &*form : nullptr);
    table.columns.push_back({"pair", ""});
    // The count of an ordered pair is of the cases in which the later group has the larger value.
    const char* const separator = reading.name == Tests::kJonckheereTerpstra.resultName ? " < " : " - ";
    for (const PairComparison& pair : pairs) table.rows.push_back({TextCell(pair.first + separator + pair.second)});
    const std::vector<Number> statistics = NumbersOf(pairs, &PairComparison::statistic);
    const std::vector<PageCell> statisticCells = isKnown ? form->cellsOf(statistics) : CellsOf(statistics);
    AddUnlessEmpty(table, {"difference", isKnown ? form->statistic : "statistic", Alignment::kRight}, statisticCells);
    AddUnlessEmpty(table, {"standard-error", "std. error", Alignment::kRight, true},
                   CellsOf(NumbersOf(pairs, &PairComparison::standardError)));
    AddUnlessEmpty(table, {"z", "z", Alignment::kRight},
                   StatisticCells(NumbersOf(pairs, &PairComparison::standardized)));
    AddUnlessEmpty(table, {"p", "p", Alignment::kRight, true}, PCells(NumbersOf(pairs, &PairComparison::p)));
    const bool isChosen = reading.supplement.adjustedPairs.size() == pairs.size();
    const bool isNone = reading.supplement.adjustment == TitleOf(Adjustment::kNone);
    AddUnlessEmpty(table, {"p-adjusted", isNone ? "p not adjusted" : "p adjusted", Alignment::kRight},
                   PCells(isChosen ? reading.supplement.adjustedPairs : NumbersOf(pairs, &PairComparison::adjustedP)));
    AddEffectsOfPairs(reading, table);
    return table;
}

PageTable SubsetTable(const TestReading& reading) {
    PageTable table;
    if (reading.subsets.empty()) return table;
    table.title = "Homogeneous subsets, from the lowest to the highest";
    table.columns.push_back({"sample", ""});
    for (const std::string& sample : reading.orderedSamples) table.rows.push_back({TextCell(sample)});
    for (const char* row : {"p", "p adjusted"}) table.rows.push_back({TextCell(row)});
    for (std::size_t i = 0; i < reading.subsets.size(); ++i) {
        const HomogeneousSubset& subset = reading.subsets[i];
        std::vector<PageCell> cells;
        for (const std::string& sample : reading.orderedSamples) {
            const bool isMember = std::ranges::find(subset.members, sample) != subset.members.end();
            cells.push_back(TextCell(isMember ? "x" : ""));
        }
        cells.push_back(NumberCell(PCellText(subset.p), subset.p));
        cells.push_back(NumberCell(PCellText(subset.adjustedP), subset.adjustedP));
        AddColumn(table, {"subset", std::to_string(i + 1), Alignment::kRight}, cells);
    }
    // A subset of one sample has no significance.
    std::erase_if(table.rows, [](const std::vector<PageCell>& row) {
        return AreAllEmpty({row.begin() + 1, row.end()});
    });
    return table;
}

std::vector<PageEffect> EffectsOf(const TestReading& reading) {
    std::vector<PageEffect> effects;
    for (const Interval& interval : reading.intervals) effects.push_back(EstimateOf(interval, reading));
    for (const EffectSize& size : reading.supplement.effects) {
        if (size.first.empty()) effects.push_back(Written(size));
    }
    return effects;
}

}  // namespace tarn
