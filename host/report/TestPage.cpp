#include "host/report/TestPage.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/report/AdjustedPValues.h"
#include "host/report/PageNumbers.h"
#include "host/report/PageStatistics.h"
#include "host/report/PageTables.h"
#include "host/report/PageText.h"
#include "host/report/Scales.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

// A sample that makes a subset by itself, as the table of subsets shows.
constexpr long kSingleSubset = 220013;
// How many cells have an expected count below 5.
constexpr long kSmallExpectedCounts = 220211;

// ---- Cases ----

/// The cases of an estimate, which its document doesn't tell, from those of its groups or fields.
Number CasesOf(const TestReading& reading) {
    const std::vector<SampleSummary>& samples = reading.supplement.samples;
    if (!reading.n.empty() || samples.empty()) return reading.n;
    if (reading.group.empty()) return samples.front().n;
    double sum = 0;
    for (const SampleSummary& sample : samples) sum += sample.n.value;
    return Number(ExactText(sum));
}

/// "27 of 40 cases (13 missing)"
std::string CasesText(const TestReading& reading, const ResultReading& result, const Number& n) {
    if (n.empty()) return "";
    if (reading.n.empty()) {
        const auto total =
            std::ranges::find(result.document.counts, "totalFreq", [](const auto& each) { return each.first; });
        const Number all = total == result.document.counts.end() ? n : Number(total->second);
        if (!(all.value > n.value)) return ShortNumber(n) + " cases";
        return ShortNumber(n) + " of " + ShortNumber(all) + " cases (" + ShortNumber(ExactText(all.value - n.value)) +
               " missing or left out)";
    }
    const std::string beyond = reading.IsBeyondRange(Quantity::kN) ? ", beyond the engine's range" : "";
    const std::string all = reading.totalN.empty() ? "" : " of " + ShortNumber(reading.totalN);
    std::string text = ShortNumber(n) + all + (n == "1" && all.empty() ? " case" : " cases");
    if (!reading.leftOut.empty()) {
        text += " (" + ShortNumber(reading.leftOut) + (reading.isMissing ? " missing)" : " missing or left out)");
    }
    return text + beyond;
}

// ---- Classes ----

/// The two classes of the field of a binomial test by their categories; none where a cut point makes them.
std::vector<std::string> ClassesOf(const TestResult& test, const ResultDocument& document) {
    if (test.name != Tests::kBinomial.resultName || test.parameters.empty()) return {};
    const ResultField* const field = document.FieldAt(test.parameters.front());
    std::vector<std::string> classes;
    for (const auto& [place, title] : {std::pair{Tests::kBinomial.condition.firstClass, " (first class)"},
                                       std::pair{Tests::kBinomial.condition.secondClass, ""}}) {
        const auto index = static_cast<std::size_t>(place);
        if (field == nullptr || index >= test.parameters.size()) return {};
        for (const std::string& category : SplitList(test.parameters[index])) {
            if (field->CategoryAt(category) == nullptr) return {};
        }
        classes.push_back(CategoryNames(test.parameters[index], field) + title);
    }
    return classes;
}

// ---- Facts ----

std::vector<PageFact> OrdersOf(const TestReading& reading) {
    std::vector<PageFact> orders;
    for (const Scale& scale : reading.scales) {
        // Numbers that stand for themselves need no line.
        if (scale.categories.empty() || scale.categories == scale.scores) continue;
        orders.push_back({(scale.scores.empty() ? "Order of " : "Scores of ") + scale.field, OrderText(scale)});
    }
    return orders;
}

/// The intervals of the effects, each with its method: that of the pairs once.
std::string IntervalText(const TestReading& reading) {
    std::vector<std::string> parts;
    std::string pairMethod;
    for (const EffectSize& effect : reading.supplement.effects) {
        if (effect.method.empty()) continue;
        if (effect.first.empty()) parts.push_back(effect.label + ": " + effect.method);
        if (!effect.first.empty()) pairMethod = effect.method;
    }
    if (!pairMethod.empty()) parts.push_back("pairs: " + pairMethod);
    return JoinList(parts, "; ");
}

/// The convention of the pairs, which ends with the document's adjustment, with the one that the user chose.
std::string PairsMethod(const TestReading& reading) {
    constexpr std::string_view kOfDocument = "Bonferroni.";
    std::string method = reading.pairsMethod;
    if (reading.supplement.adjustedPairs.empty() || !method.ends_with(kOfDocument)) return method;
    const std::string& chosen = reading.supplement.adjustment;
    const bool isNone = chosen == TitleOf(Adjustment::kNone);
    return method.replace(method.size() - kOfDocument.size(), kOfDocument.size(),
                          isNone ? "not adjusted." : chosen + ".");
}

std::vector<PageFact> MethodsOf(const TestReading& reading, const ResultReading& result) {
    const std::string intervals = IntervalText(reading);
    std::vector<PageFact> methods{{"Method", reading.method},
                                  {"Pairs", PairsMethod(reading)},
                                  {"Subsets", reading.subsetsMethod},
                                  {"Intervals, " + PercentText(result.confidenceLevel.value), intervals},
                                  {"Call", reading.supplement.call}};
    // The level of an estimate stands beside it, too.
    if (intervals.empty() && !reading.intervals.empty()) {
        methods.push_back({"Interval", PercentText(result.confidenceLevel.value)});
    }
    std::erase_if(methods, [](const PageFact& fact) { return fact.text.empty(); });
    return methods;
}

/// Whether a message says nothing that a reader doesn't see, or would want to.
bool IsIdle(const ResultMessage& message, const TestReading& reading) {
    if (message.code == kSingleSubset) return !reading.subsets.empty();
    return message.code == kSmallExpectedCounts && !message.parameters.empty() && message.parameters.front() == "0";
}

std::vector<PageNote> NotesOf(const TestReading& reading, const TestResult& test, const MessageCatalogue& texts) {
    std::vector<PageNote> notes;
    for (std::size_t i = 0; i < reading.notes.size(); ++i) {
        const TestReading::Note& note = reading.notes[i];
        if (i < test.messages.size() && IsIdle(test.messages[i], reading)) continue;
        const PageNote::Kind kind = note.kind == "error"     ? PageNote::Kind::kMistake
                                    : note.kind == "warning" ? PageNote::Kind::kWarning
                                                             : PageNote::Kind::kNote;
        notes.push_back({kind, note.code, note.text});
    }
    for (const auto* remarks : {&reading.remarks, &reading.supplement.remarks}) {
        for (const std::string& remark : *remarks) notes.push_back({PageNote::Kind::kNote, 0, remark});
    }
    for (const EngineLimit* limit : reading.limits) {
        const std::string* const sentence = texts.Limit(limit->key);
        notes.push_back({PageNote::Kind::kWarning, 0,
                         "beyond the engine's range: " + (sentence == nullptr ? std::string(limit->key) : *sentence)});
    }
    return notes;
}

// ---- Conclusion ----

/// What a document says by itself, of which no sentence was made from the table.
std::string ConclusionText(const TestReading& reading, const ResultReading& result) {
    if (!reading.supplement.conclusion.empty()) return reading.supplement.conclusion;
    if (reading.isEstimate || reading.HasError()) return "";
    const std::string at = "At the " + PercentText(result.sigLevel.value) + " level this hypothesis ";
    const std::string hypothesis = ": " + reading.statement;
    if (reading.decision == "reject") return at + "is rejected" + hypothesis;
    if (reading.decision == "retain") return at + "was not rejected, which does not show that it holds" + hypothesis;
    if (reading.IsBeyondRange(Quantity::kPValue)) return "Nothing is decided, as p is beyond the engine's range.";
    return reading.statistics.empty() ? "" : "Nothing is decided, as p is undefined.";
}

/// Which pairs differ once they are adjusted; "" where none were compared, or nobody knows.
std::string PairsSentence(const TestReading& reading, const ResultReading& result) {
    constexpr std::size_t kMostNamed = 10;
    const std::vector<Number>& chosen = reading.supplement.adjustedPairs;
    std::vector<std::string> different;
    for (std::size_t i = 0; i < reading.pairs.size(); ++i) {
        const PairComparison& pair = reading.pairs[i];
        const Number& p = chosen.size() == reading.pairs.size() ? chosen[i] : pair.adjustedP;
        if (std::isnan(p.value) || reading.IsBeyondRange(Quantity::kPairs)) return "";
        if (p.value < result.sigLevel.value) different.push_back(pair.first + " and " + pair.second);
    }
    if (reading.pairs.empty()) return "";
    const bool isAdjusted = chosen.empty() || reading.supplement.adjustment != TitleOf(Adjustment::kNone);
    const std::string when = isAdjusted ? "After adjustment " : "Without adjustment ";
    if (different.empty()) return when + "no pair was shown to differ.";
    const std::string of = std::to_string(different.size()) + " of " + std::to_string(reading.pairs.size()) + " pairs ";
    const std::string sentence = when + of + (different.size() == 1 ? "differs" : "differ");
    return sentence + (different.size() > kMostNamed ? "." : ": " + JoinList(different, "; ") + ".");
}

bool IsRejected(const TestReading& reading, const ResultReading& result) {
    const Number& chosen = reading.supplement.chosenP;
    return chosen.empty() ? reading.decision == "reject" : chosen.value < result.sigLevel.value;
}

}  // namespace

std::string_view TitleOf(PageNote::Kind kind) {
    switch (kind) {
        case PageNote::Kind::kMistake:
            return "Not done";
        case PageNote::Kind::kWarning:
            return "Warning";
        case PageNote::Kind::kNote:
            break;
    }
    return "Note";
}

TestPage PageOf(const ResultReading& result, std::size_t place, const MessageCatalogue& texts) {
    const TestReading& reading = result.tests[place];
    TestPage page;
    page.name = reading.name;
    page.number = place + 1;
    page.title = reading.title;
    page.subject = JoinList(reading.fields) + (reading.group.empty() ? "" : " by " + reading.group);
    page.hypothesis = reading.statement;
    page.isEstimate = reading.isEstimate;
    page.n = CasesOf(reading);
    page.cases = CasesText(reading, result, page.n);
    page.samples = SampleTable(reading, result);
    const std::vector<std::string> classes = ClassesOf(result.document.tests[place], result.document);
    page.counts = CountsTable(reading, classes);
    page.statistics = StatisticLines(reading, classes);
    page.effects = EffectsOf(reading);
    page.pairs = PairTable(reading);
    for (const PairComparison& pair : reading.pairs) page.pairNames.emplace_back(pair.first, pair.second);
    page.subsets = SubsetTable(reading);
    page.orders = OrdersOf(reading);
    page.methods = MethodsOf(reading, result);
    page.conclusion = ConclusionText(reading, result);
    if (const std::string pairs = PairsSentence(reading, result); !pairs.empty()) page.conclusion += " " + pairs;
    page.notes = NotesOf(reading, result.document.tests[place], texts);
    page.hasFailed = reading.HasError();
    page.isRejected = IsRejected(reading, result);
    page.explanation = reading.explanation;
    MakeOneLine(page);
    return page;
}

}  // namespace tarn
