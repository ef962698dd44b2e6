#include "host/report/ResultPage.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/report/AdjustedPValues.h"
#include "host/report/PageNumbers.h"
#include "host/report/PageTables.h"
#include "host/report/PageText.h"
#include "host/report/RecordFacts.h"

namespace tarn {

namespace {

Number NumberOf(double value) {
    return std::isnan(value) ? Number() : Number(ExactText(value));
}

/// Significances adjusted for their number, with the title of their column.
struct AdjustedColumn {
    std::string key;
    std::string title;
    std::vector<double> pValues;
};

/// A test of the summary; what it points to stays with the page.
struct SummaryRow {
    const TestReading* reading;
    const TestPage* page;
    std::string part;  ///< the category of a split analysis; "" for none
};

/// The method by which the user wants the tests adjusted; "" for none.
std::string AdjustmentOf(const std::vector<TestReading>& readings) {
    for (const TestReading& reading : readings) {
        if (!reading.supplement.adjustedP.empty()) return reading.supplement.adjustment;
    }
    return "";
}

std::vector<AdjustedColumn> AdjustedColumnsOf(const ResultReading& result, const std::vector<double>& pValues) {
    std::vector<AdjustedColumn> columns;
    const std::string named = AdjustmentOf(result.tests);
    if (!named.empty()) {
        AdjustedColumn column{"p-adjusted", "p " + named, {}};
        for (const TestReading& reading : result.tests) column.pValues.push_back(reading.supplement.adjustedP.value);
        if (named != TitleOf(Adjustment::kNone) && result.tests.size() > 1) columns.push_back(std::move(column));
    } else if (result.tests.size() >= kFewestForSummary) {
        columns.push_back({"p-holm", "p Holm", Adjusted(pValues, Adjustment::kHolm)});
        columns.push_back({"p-bh", "p BH", Adjusted(pValues, Adjustment::kBenjaminiHochberg)});
    }
    return columns;
}

/// The summary of tests, in the making.
class Summary {
 public:
    explicit Summary(const std::vector<SummaryRow>& rows) : rows_(rows) {
        const auto isAlike = [&](auto&& textOf) {
            return std::ranges::all_of(rows,
                                       [&](const SummaryRow& row) { return textOf(row) == textOf(rows.front()); });
        };
        hasOneTitle_ = isAlike([](const SummaryRow& row) { return row.page->title; });
        hasOneGroup_ = isAlike([](const SummaryRow& row) { return row.reading->group; });
        hasOneSubject_ =
            rows.size() > 1 && !hasOneTitle_ && isAlike([](const SummaryRow& row) { return row.page->subject; });
        hasOneEffect_ = isAlike([](const SummaryRow& row) {
            return row.page->effects.empty() ? std::string() : row.page->effects.front().label;
        });
    }

    PageTable Table(const std::vector<AdjustedColumn>& adjusted, const std::string& partTitle) const {
        PageTable table;
        table.rows.resize(rows_.size());
        if (!partTitle.empty()) {
            Add(table, {"part", partTitle}, [](const SummaryRow& row) { return PageCell{row.part, {}, {}}; });
        }
        if (!hasOneTitle_) Add(table, {"test", "test"}, NameCell);
        if (!hasOneSubject_)
            Add(table, {"fields", hasOneTitle_ && hasOneGroup_ ? FieldsTitle() : "fields"},
                [&](const SummaryRow& row) { return FieldsCell(row); });
        Add(table, {"n", "n", Alignment::kRight}, CasesCell);
        if (!HasEstimatesAlone()) {
            Add(table, {"statistic", "statistic", Alignment::kRight, EffectsTell()}, StatisticCell);
        }
        AddEffects(table);
        if (HasEstimatesAlone()) return table;
        Add(table, {"p", "p", Alignment::kRight}, PCell);
        for (const AdjustedColumn& column : adjusted) AddAdjusted(table, column);
        return table;
    }

    /// "24 outcomes by arm, Mann-Whitney U test"
    std::string Title() const {
        const std::string count = std::to_string(rows_.size());
        if (rows_.size() == 1) return rows_.front().page->Heading();
        if (hasOneSubject_) return count + " tests of " + rows_.front().page->subject;
        if (!hasOneGroup_) return count + " tests";
        const std::string group = rows_.front().reading->group;
        if (!hasOneTitle_) return count + " tests" + (group.empty() ? "" : " by " + group);
        return count + " " + (group.empty() ? "tests" : "outcomes by " + group) + ", " + rows_.front().page->title;
    }

 private:
    static const PageFigure* POf(const SummaryRow& row) {
        if (row.page->statistics.empty()) return nullptr;
        const std::vector<PageFigure>& figures = row.page->statistics.front().figures;
        const auto found = std::ranges::find(figures, "p", &PageFigure::key);
        return found == figures.end() ? nullptr : &*found;
    }

    bool HasEstimatesAlone() const {
        return std::ranges::all_of(rows_, [](const SummaryRow& row) { return row.page->isEstimate; });
    }
    /// Whether one effect of all tests tells more than the statistics.
    bool EffectsTell() const { return hasOneTitle_ && hasOneEffect_ && !rows_.front().page->effects.empty(); }

    std::string FieldsTitle() const {
        if (!rows_.front().reading->group.empty()) return "outcome";
        return rows_.front().reading->family == "one-sample" ? "field" : "fields";
    }

    template <typename MakeCell>
    void Add(PageTable& table, PageColumn column, MakeCell&& cellOf) const {
        table.columns.push_back(std::move(column));
        for (std::size_t i = 0; i < rows_.size(); ++i) table.rows[i].push_back(cellOf(rows_[i]));
    }

    /// The short name by which a user knows the test: titles of several tests are too long for a line with their
    /// numbers.
    static PageCell NameCell(const SummaryRow& row) {
        const TestTexts* const known = MessageCatalogue::English().Test(row.reading->name);
        return {known == nullptr ? row.page->title : known->name, {}, {}};
    }
    PageCell FieldsCell(const SummaryRow& row) const {
        return {!hasOneGroup_ ? row.page->subject : JoinList(row.reading->fields), {}, {}};
    }
    static PageCell CasesCell(const SummaryRow& row) {
        return {row.page->n.empty() ? "" : ShortNumber(row.page->n), row.page->n, {}};
    }

    static PageCell StatisticCell(const SummaryRow& row) {
        if (row.page->isEstimate && !row.page->effects.empty()) {
            const PageEffect& estimate = row.page->effects.front();
            return {estimate.WithInterval(), estimate.value, {}};
        }
        if (row.page->statistics.empty() || row.page->statistics.front().figures.empty()) return {};
        const PageFigure& figure = row.page->statistics.front().figures.front();
        return figure.key == "p" ? PageCell() : PageCell{FigureText(figure), figure.number, {}};
    }

    static PageCell PCell(const SummaryRow& row) {
        if (row.page->hasFailed) return {"not done", {}, {}};
        if (row.reading->IsBeyondRange(Quantity::kPValue)) return {"beyond range", {}, {}};
        const PageFigure* const p = POf(row);
        if (p == nullptr) return {};
        const bool isPlain = p->relation == "=" || p->relation.empty();
        return {isPlain ? p->text : p->relation + " " + p->text, p->number, {}};
    }

    void AddEffects(PageTable& table) const {
        if (EffectsTell()) {
            Add(table, {"effect", rows_.front().page->effects.front().label, Alignment::kRight},
                [](const SummaryRow& row) {
                    const PageEffect& effect = row.page->effects.front();
                    return PageCell{effect.WithInterval(), effect.value, {}};
                });
            return;
        }
        const auto hasEffect = [](const SummaryRow& row) { return !row.page->effects.empty(); };
        if (std::ranges::none_of(rows_, hasEffect)) return;
        Add(table, {"effect", "effect", Alignment::kLeft, !HasEstimatesAlone()}, [](const SummaryRow& row) {
            if (row.page->effects.empty()) return PageCell();
            const PageEffect& effect = row.page->effects.front();
            return PageCell{effect.label + " = " + effect.WithInterval(), effect.value, {}};
        });
    }

    void AddAdjusted(PageTable& table, const AdjustedColumn& column) const {
        table.columns.push_back({column.key, column.title, Alignment::kRight});
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            const Number p = NumberOf(column.pValues[i]);
            const PageFigure* const own = POf(rows_[i]);
            // A bound stays one, however often it is multiplied.
            const bool isBound = own != nullptr && own->relation == ">" && own->number == p;
            table.rows[i].push_back({PCellText(p, isBound), p, {}});
        }
    }

    const std::vector<SummaryRow>& rows_;
    bool hasOneTitle_ = false;
    bool hasOneGroup_ = false;
    bool hasOneSubject_ = false;  ///< several tests of the same fields
    bool hasOneEffect_ = false;
};

std::size_t CountBelow(const std::vector<double>& pValues, double level) {
    return static_cast<std::size_t>(std::ranges::count_if(pValues, [&](double p) { return p < level; }));
}

/// "3 of 24 tests with p < .05 before adjustment (1.2 expected by chance if every null hypothesis holds), 1 after Holm"
std::string FamilyLine(const std::vector<double>& pValues, const std::vector<AdjustedColumn>& adjusted, double level) {
    const auto count =
        static_cast<std::size_t>(std::ranges::count_if(pValues, [](double p) { return !std::isnan(p); }));
    if (count == 0 || std::isnan(level)) return "";
    std::string text = std::to_string(CountBelow(pValues, level)) + " of " + std::to_string(count) +
                       " tests with p < " + ShareText(level) + " before adjustment (" +
                       ShortNumber(ExactText(level * static_cast<double>(count))) +
                       " expected by chance if every null hypothesis holds)";
    for (const AdjustedColumn& column : adjusted) {
        const std::string method = column.title.substr(column.title.find(' ') + 1);
        text += ", " + std::to_string(CountBelow(column.pValues, level)) + " after it (" + method + ")";
    }
    return text;
}

std::string CountOf(const ResultDocument& document, std::string_view name) {
    const auto found = std::ranges::find(document.counts, name, [](const auto& count) { return count.first; });
    return found == document.counts.end() ? "" : found->second;
}

/// "88, weights add up to 775, 12 without a weight above 0"
std::string RecordsText(const ResultDocument& document) {
    const std::string records = CountOf(document, "totalCount");
    const std::string weights = CountOf(document, "totalFreq");
    const std::string without = CountOf(document, "badWeightCount");
    if (records.empty()) return "";
    std::string text = ShortNumber(records);
    if (!weights.empty() && weights != records) text += ", weights add up to " + ShortNumber(weights);
    if (!without.empty() && without != "0") text += ", " + ShortNumber(without) + " without a weight above 0";
    return text;
}

std::vector<PageFact> RecordOf(const ResultReading& result) {
    const ResultDocument& document = result.document;
    std::vector<PageFact> record{{"Records", RecordsText(document)}};
    const auto addLevel = [&](const char* title, const Number& level) {
        if (!std::isnan(level.value)) record.push_back({title, PercentText(level.value)});
    };
    addLevel("Significance level", result.sigLevel);
    addLevel("Confidence level", result.confidenceLevel);
    if (!document.missingTreatment.empty()) {
        record.push_back({"Missing values", document.missingTreatment == "listwise"
                                                ? "records that miss any field of the run are left out of all tests"
                                                : "each test leaves out the records that miss one of its fields"});
    }
    if (document.arithmetic != ArithmeticMode::kUnknown) {
        record.push_back({"Arithmetic", document.arithmetic == ArithmeticMode::kExtended ? "extended" : "as defined"});
    }
    if (result.record) {
        for (PageFact& fact : DataFacts(*result.record)) record.push_back(std::move(fact));
    }
    std::erase_if(record, [](const PageFact& fact) { return fact.text.empty(); });
    return record;
}

std::vector<PageFact> ProgramOf(const RunRecord& record) {
    std::vector<PageFact> facts = ProgramFacts(record);
    MakeOneLine(facts);
    return facts;
}

void MakeAllOneLine(std::vector<std::string>& texts) {
    for (std::string& text : texts) MakeOneLine(text);
}

}  // namespace

ResultPage PageOf(const ResultReading& result, const MessageCatalogue& texts, const std::vector<std::string>& notes) {
    ResultPage page;
    page.tests.reserve(result.tests.size());
    for (std::size_t i = 0; i < result.tests.size(); ++i) page.tests.push_back(PageOf(result, i, texts));
    page.notes = notes;
    MakeAllOneLine(page.notes);
    page.record = RecordOf(result);
    if (result.record) page.program = ProgramOf(*result.record);
    // Whoever asks how the numbers came about wants to see each test.
    const auto isExplained = [](const TestPage& test) { return test.explanation.has_value(); };
    page.hasManyTests = page.tests.size() >= kFewestForSummary && std::ranges::none_of(page.tests, isExplained);
    if (page.tests.empty()) return page;
    std::vector<SummaryRow> rows;
    for (std::size_t i = 0; i < page.tests.size(); ++i) rows.push_back({&result.tests[i], &page.tests[i], ""});
    const Summary summary(rows);
    const std::vector<double> pValues = ConclusivePValues(result);
    const std::vector<AdjustedColumn> adjusted = AdjustedColumnsOf(result, pValues);
    page.title = summary.Title();
    page.summary = summary.Table(adjusted, "");
    if (!adjusted.empty()) page.familyLine = FamilyLine(pValues, adjusted, result.sigLevel.value);
    MakeOneLine(page.title);
    MakeOneLine(page.summary);
    return page;
}

PartsPage PageOf(const std::vector<ResultPart>& parts, const MessageCatalogue& texts,
                 const std::vector<std::string>& notes) {
    PartsPage page;
    page.notes = notes;
    MakeAllOneLine(page.notes);
    std::vector<SummaryRow> rows;
    std::vector<double> pValues;
    page.parts.reserve(parts.size());
    for (const ResultPart& part : parts) {
        PartPage& own = page.parts.emplace_back(PartPage{part.Name(), part.mistake, {}});
        MakeOneLine(own.name);
        MakeOneLine(own.mistake);
        if (!part.result) continue;
        own.page = PageOf(*part.result, texts, part.notes);
        const std::vector<double> ofPart = ConclusivePValues(*part.result);
        pValues.insert(pValues.end(), ofPart.begin(), ofPart.end());
        for (std::size_t i = 0; i < own.page.tests.size(); ++i) {
            rows.push_back({&part.result->tests[i], &own.page.tests[i], part.category});
        }
    }
    if (rows.empty()) return page;
    if (const RunRecord* const record = RecordOfAny(parts)) page.program = ProgramOf(*record);
    const Summary summary(rows);
    const auto done = std::ranges::count_if(pValues, [](double p) { return !std::isnan(p); });
    std::vector<AdjustedColumn> adjusted;
    if (done > 1) adjusted.push_back({"p-holm", "p Holm", Adjusted(pValues, Adjustment::kHolm)});
    page.title = summary.Title() + ", by parts of " + parts.front().field;
    page.summary = summary.Table(adjusted, parts.front().field);
    MakeOneLine(page.title);
    MakeOneLine(page.summary);
    return page;
}

}  // namespace tarn
