#include "python/src/Report.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "host/InputError.h"
#include "host/analysis/Analysis.h"
#include "host/analysis/Record.h"
#include "host/analysis/Report.h"
#include "host/beyond/Supplements.h"
#include "host/report/ApaReport.h"
#include "host/report/CsvReport.h"
#include "host/report/ExplanationText.h"
#include "host/report/JsonReport.h"
#include "host/report/MarkupReport.h"
#include "host/report/ReadableReport.h"
#include "host/report/TextLayout.h"
#include "host/report/TextReport.h"

namespace tarn {

namespace {

const MessageCatalogue& Texts() {
    return MessageCatalogue::English();
}

std::optional<Report::Figures> DecidingOf(const TestReading& test) {
    for (const StatisticSet& set : test.statistics) {
        const auto decides = std::ranges::find_if(set.pValues, [](const PValue& p) { return p.decides; });
        if (decides == set.pValues.end()) continue;
        return Report::Figures{std::string(NameOf(decides->kind)), set.StatisticOf(*decides).text, decides->value.text};
    }
    return std::nullopt;
}

constexpr std::size_t kIndentOfExplanation = 3;
constexpr const char* kNothingToExplain = "It has no numbers that could be explained.";
constexpr const char* kTouched =
    "the data was written to since it was analysed; expected it as it was, or a rerun with what it is now";
constexpr const char* kNoPlotsOfTouched = "The data was written to since it was analysed, so that it can't be drawn.";

/// A result with what its plots are drawn from.
class Drawing {
 public:
    /// `kept`: null where the cases aren't there.
    Drawing(const ResultReading& result, const KeptTable* kept)
        : source_{result, kept == nullptr ? nullptr : &kept->Part().table,
                  kept == nullptr ? withoutTable_ : kept->Part().options, environment_} {
        if (kept != nullptr) environment_.threads = kept->Threads();
    }
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    const ReportSource& Source() const { return source_; }

 private:
    const AnalysisOptions withoutTable_{};
    AnalysisEnvironment environment_;
    ReportSource source_;
};

/// The cases as they were analysed, or null.
const KeptTable* Untouched(const KeptTable* kept) {
    return kept != nullptr && kept->IsUntouched() ? kept : nullptr;
}

}  // namespace

Report::Report(std::vector<std::string> remarks, long failureCode)
    : remarks_(std::move(remarks)), isDone_(false), failureCode_(failureCode) {}

Report::Report(ResultReading reading, std::string document, std::vector<std::string> notes,
               std::vector<std::string> remarks, Supply supply, Tables tables, tarn::Json request)
    : notes_(std::move(notes)), remarks_(std::move(remarks)) {
    std::vector<ResultPart> parts(1);
    parts.front().result = std::move(reading);
    shared_ = Share(std::move(parts), {std::move(document)}, std::move(supply), std::move(tables), std::move(request));
}

Report::Report(std::vector<ResultPart> parts, std::vector<std::string> documents, std::vector<std::string> notes,
               Tables tables, tarn::Json request)
    : shared_(Share(std::move(parts), std::move(documents), nullptr, std::move(tables), std::move(request))),
      notes_(std::move(notes)),
      isSplit_(true) {}

namespace {

/// A field that misses every value in one analysis has its categories in another.
void TakeCategories(std::vector<ResultField>& fields, const std::vector<ResultField>& others) {
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i >= others.size() || others[i].name != fields[i].name) {
            throw std::invalid_argument("analyses of other fields can't be joined");
        }
        if (others[i].categories.size() > fields[i].categories.size()) fields[i] = others[i];
    }
}

/// Takes over the tests of a field, and what is said of it beside them.
void TakeField(ResultReading& joined, const ResultReading& reading, const std::string& field) {
    TakeCategories(joined.document.fields, reading.document.fields);
    for (std::size_t i = 0; i < reading.tests.size(); ++i) {
        if (reading.tests[i].fields.front() != field) continue;
        joined.tests.push_back(reading.tests[i]);
        joined.document.tests.push_back(reading.document.tests[i]);
    }
    for (std::size_t i = 0; i < reading.fields.size(); ++i) {
        if (reading.fields[i].field != field) continue;
        joined.fields.push_back(reading.fields[i]);
        joined.document.descriptives.push_back(reading.document.descriptives[i]);
    }
}

}  // namespace

Report Report::Joined(const std::vector<std::pair<std::string, Report>>& reports,
                      std::optional<Adjustment> adjustment) {
    ResultReading joined = *reports.front().second.Supplied()[reports.front().second.first_].result;
    joined.tests.clear();
    joined.fields.clear();
    joined.document.tests.clear();
    joined.document.descriptives.clear();
    std::vector<std::string> notes;
    for (const auto& [field, report] : reports) {
        TakeField(joined, *report.Supplied()[report.first_].result, field);
        for (const std::string& note : report.notes_) {
            if (std::ranges::find(notes, note) == notes.end()) notes.push_back(note);
        }
    }
    joined.family = AdjustTogether(joined.tests);
    if (adjustment) AdjustTests(joined, *adjustment);
    return {std::move(joined), "", std::move(notes), {}, nullptr, {}};
}

std::shared_ptr<Report::Shared> Report::Share(std::vector<ResultPart> parts, std::vector<std::string> documents,
                                              Supply supply, Tables tables, tarn::Json request) {
    auto shared = std::make_shared<Shared>();
    shared->parts = std::move(parts);
    shared->documents = std::move(documents);
    shared->supply = std::move(supply);
    shared->tables = std::move(tables);
    shared->request = std::move(request);
    return shared;
}

void Report::Shared::AddRecords() {
    if (std::exchange(isRecorded, true)) return;
    for (std::size_t i = 0; i < std::min(parts.size(), tables.size()); ++i) {
        if (!parts[i].result || tables[i] == nullptr) continue;
        const AnalysisPart& part = tables[i]->Part();
        const CaseRule rule = CaseRuleOf(part.table, part.options);
        RecordSource source{part.table, rule, WeightRule::kRounded, part.selection, request};
        source.isUntouched = tables[i]->IsUntouched();
        AddRecord(*parts[i].result, source, WorkShare(tables[i]->Threads()));
    }
}

const std::vector<ResultPart>& Report::Supplied() const {
    const std::lock_guard lock(shared_->mutex);
    if (shared_->supply) {
        // Whoever interrupts it finds the reading as it was.
        ResultReading reading = *shared_->parts.front().result;
        shared_->supply(reading);
        shared_->parts.front().result = std::move(reading);
        shared_->supply = nullptr;
    }
    shared_->AddRecords();
    return shared_->parts;
}

std::vector<std::optional<Report::Figures>> Report::Deciding() const {
    std::vector<std::optional<Figures>> deciding;
    if (!isDone_) return deciding;
    const std::lock_guard lock(shared_->mutex);
    for (std::size_t i = 0; i < shared_->parts.size(); ++i) {
        const std::optional<ResultReading>& result = shared_->parts[i].result;
        if (!result || (!isSplit_ && i != first_)) continue;
        for (const TestReading& test : result->tests) deciding.push_back(DecidingOf(test));
    }
    return deciding;
}

std::vector<Report::Figures> Report::Chosen() const {
    std::vector<Figures> chosen;
    if (!isDone_ || isSplit_) return chosen;
    const ResultReading& reading = *Supplied()[first_].result;
    if (reading.tests.empty()) return chosen;
    for (const SuppliedPValue& p : reading.tests.front().supplement.pValues) {
        chosen.push_back({std::string(p.kind), p.statistic.text, p.value.text});
    }
    return chosen;
}

const std::string& Report::Document() const {
    static const std::string kNone;
    return isSplit_ || !isDone_ ? kNone : shared_->documents[first_];
}

const KeptTable* Report::TableOf(std::size_t part) const {
    return part < shared_->tables.size() ? shared_->tables[part].get() : nullptr;
}

const KeptTable& Report::CasesOf(std::size_t part) const {
    const KeptTable* const kept = TableOf(part);
    if (kept == nullptr) {
        throw InputError(
            "the result has no cases that could be drawn or explained; expected one of tarn.analyze, or of a test's "
            "own function, "
            "in the process that made it");
    }
    if (!kept->IsUntouched()) throw InputError(kTouched);
    return *kept;
}

std::pair<std::size_t, std::size_t> Report::PlaceOf(std::size_t test) const {
    const std::vector<ResultPart>& parts = Supplied();
    for (std::size_t i = isSplit_ ? 0 : first_; i < (isSplit_ ? parts.size() : first_ + 1); ++i) {
        const std::size_t count = parts[i].result ? parts[i].result->tests.size() : 0;
        if (test < count) return {i, test};
        test -= count;
    }
    throw std::out_of_range("the result has no such test");
}

template <typename Make>
std::string Report::FromPage(Make make) const {
    if (!isDone_) return "";
    if (isSplit_) return make(PageOf(Supplied(), Texts(), notes_));
    return make(PageOf(*Supplied()[first_].result, Texts(), notes_));
}

std::string Report::Text(bool isFull) const {
    if (!isDone_) return "";
    if (!isFull) return FromPage([](const auto& page) { return ReadableReport(page, TextStyle()); });
    if (isSplit_) return PartsText(Supplied(), Texts(), {}, notes_);
    return TextReport(*Supplied()[first_].result, Texts(), {}, notes_);
}

std::string Report::Json() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsJson(Supplied(), Texts(), notes_);
    return JsonReport(*Supplied()[first_].result, Texts(), notes_);
}

std::string Report::Csv() const {
    if (!isDone_) return "";
    if (isSplit_) return PartsCsv(Supplied(), Texts());
    return CsvReport(*Supplied()[first_].result, Texts());
}

std::string Report::InFormat(const std::string& format) const {
    return FromPage([&format](const auto& page) {
        if (format == "md") return MarkupReport(page, MarkdownMarkup());
        if (format == "latex") return MarkupReport(page, LatexMarkup());
        if (format == "typst") return MarkupReport(page, TypstMarkup());
        if (format == "apa") return ApaReport(page);
        throw std::invalid_argument("no such format: " + format);
    });
}

bool Report::HasCases() const {
    const std::size_t end = isSplit_ ? shared_->parts.size() : first_ + 1;
    for (std::size_t i = isSplit_ ? 0 : first_; i < end; ++i) {
        if (Untouched(TableOf(i)) == nullptr) return false;
    }
    return true;
}

std::vector<ResultPart> Report::Explained() const {
    std::vector<ResultPart> parts = Supplied();
    for (std::size_t i = isSplit_ ? 0 : first_; i < (isSplit_ ? parts.size() : first_ + 1); ++i) {
        if (!parts[i].result) continue;
        const KeptTable& kept = CasesOf(i);
        const Drawing from(*parts[i].result, &kept);
        ExplainTests(*parts[i].result, kept.Part().table, kept.Part().options, from.Source().environment);
    }
    return parts;
}

std::string Report::Html(const std::string& request, std::vector<std::string> notes, PageParts wanted) const {
    if (!isDone_) return "";
    ReportFacts facts;
    facts.request = request;
    facts.program = "tarn " TARN_VERSION;
    facts.notes = std::move(notes);
    const std::vector<ResultPart> explained = wanted.explanations ? Explained() : std::vector<ResultPart>();
    const std::vector<ResultPart>& parts = wanted.explanations ? explained : Supplied();
    std::vector<ReportPart> shown;
    const KeptTable* drawn = nullptr;
    bool isTouched = false;
    for (std::size_t i = isSplit_ ? 0 : first_; i < (isSplit_ ? parts.size() : first_ + 1); ++i) {
        const KeptTable* const kept = wanted.plots ? Untouched(TableOf(i)) : nullptr;
        isTouched |= wanted.plots && kept != TableOf(i);
        if (kept != nullptr) drawn = kept;
        shown.push_back({parts[i], kept == nullptr ? nullptr : &kept->Part().table});
    }
    if (isTouched) facts.notes.push_back(kNoPlotsOfTouched);
    if (!isSplit_) return HtmlOfResult(Drawing(*parts[first_].result, drawn).Source(), facts);
    AnalysisEnvironment environment;
    if (drawn != nullptr) environment.threads = drawn->Threads();
    return HtmlOfParts(shown, drawn == nullptr ? AnalysisOptions() : drawn->Part().options, environment, facts);
}

std::string Report::HtmlOf(std::size_t test, const std::string& id) const {
    const auto [part, place] = PlaceOf(test);
    const Drawing drawing(*Supplied()[part].result, Untouched(TableOf(part)));
    return HtmlOfTest(drawing.Source(), place, id);
}

std::string Report::Svg(std::size_t test) const {
    const auto [part, place] = PlaceOf(test);
    const ResultReading& result = *Supplied()[part].result;
    const Drawing drawing(result, &CasesOf(part));
    std::optional<std::string> svg = SvgOfTest(drawing.Source(), place);
    if (!svg) throw InputError(result.tests[place].title + " has nothing that could be drawn");
    return std::move(*svg);
}

std::string Report::Explanation(std::size_t test) const {
    const auto [part, place] = PlaceOf(test);
    ResultReading result = *Supplied()[part].result;
    const KeptTable& kept = CasesOf(part);
    const Drawing from(result, &kept);
    const ReportSource& source = from.Source();
    result.tests[place].explanation =
        ExplanationOfTest(result, place, kept.Part().table, source.options, source.environment);
    const TestPage page = tarn::PageOf(result, place, Texts());
    const TextStyle style;
    return page.Heading() + "\n" +
           (page.explanation ? ExplanationText(*page.explanation, style.width, kIndentOfExplanation)
                             : Wrapped(kNothingToExplain, style.width, kIndentOfExplanation));
}

Report Report::PartAt(std::size_t place) const {
    const ResultPart& part = shared_->parts.at(place);
    if (!part.result) return {std::vector<std::string>{part.mistake}, 0};
    Report report = *this;
    report.first_ = place;
    report.isSplit_ = false;
    report.notes_ = part.notes;
    report.remarks_.clear();
    return report;
}

}  // namespace tarn
