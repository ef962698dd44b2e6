#include "host/report/TestReading.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/NumberText.h"
#include "host/report/ComparisonReading.h"
#include "host/report/Direction.h"
#include "host/report/Remarks.h"
#include "host/report/SampleReading.h"
#include "host/report/Scales.h"
#include "host/report/StatisticsReading.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

// ---- Fields ----

void ReadFields(const TestResult& test, const ResultDocument& document, TestReading& reading) {
    const auto nameAt = [&](const std::string& index) {
        const ResultField* const field = document.FieldAt(index);
        return field ? field->name : std::string("?");
    };
    const bool isPair = reading.family == "related" && test.parameters.size() > 1;
    if (!test.parameters.empty()) {
        for (const std::string& index : SplitList(test.parameters[0])) reading.fields.push_back(nameAt(index));
    }
    if (isPair) reading.fields.push_back(nameAt(test.parameters[1]));
    if (reading.family == "independent" && test.parameters.size() > 1) reading.group = nameAt(test.parameters[1]);
}

// ---- Cases ----

/// Whether a test sees all records but those that miss a value. The others take the cases of some categories or values
/// only, or count weights without their fractions.
bool TakesAllThatMissNothing(const TestResult& test, double total) {
    constexpr std::array kOutOfRange{220311L, 220314L};
    const bool hasRange = std::ranges::any_of(test.messages, [&](const ResultMessage& message) {
        return std::ranges::find(kOutOfRange, message.code) != kOutOfRange.end();
    });
    // Two groups of lists. The median test says by such a key that its median is given; it takes all groups.
    const bool hasGroupLists =
        test.conditionKey.starts_with("CategoryListsAreSpecified_I_") && test.name != Tests::kMedian.resultName;
    const bool hasLists = hasGroupLists || test.conditionKey.starts_with("UserSpecifiesProbabilities");
    return !hasRange && !hasLists && total == std::floor(total);
}

void ReadCases(const TestResult& test, const ResultDocument& document, TestReading& reading) {
    const auto found = std::ranges::find(document.counts, "totalFreq", [](const auto& count) { return count.first; });
    double n = 0;
    double total = 0;
    const bool areKnown =
        found != document.counts.end() && ReadNumber(reading.n, n) && ReadNumber(found->second, total);
    if (!areKnown || total < n) return;
    reading.totalN = found->second;
    if (total > n) reading.leftOut = ExactText(total - n);
    reading.isMissing = TakesAllThatMissNothing(test, total);
}

/// A convention is shown beside the numbers that follow it, and not where a test ended without them.
void ReadMethods(const TestTexts* about, TestReading& reading) {
    if (about == nullptr) return;
    if (!reading.statistics.empty() || !reading.intervals.empty()) reading.method = about->method;
    // What the textbook has in place of the document's usual form is said of each test in the conventions.
    if (reading.IsTextbook() && reading.method.ends_with('.')) {
        reading.method.replace(reading.method.size() - 1, 1, "; textbook.");
    }
    if (!reading.pairs.empty()) reading.pairsMethod = about->pairs;
    if (!reading.subsets.empty()) reading.subsetsMethod = about->steps;
}

/// Whether the significance that decides is no number, as for differences that are all zero. The document retains then.
bool IsUndefined(const TestReading& reading) {
    const StatisticSet* const set = reading.Leading();
    const PValue* const p = set == nullptr ? nullptr : set->Leading();
    return !reading.isEstimate && p != nullptr && p->value == "nan";
}

/// In the median test the row shows the median that was given, where one was.
void NameGivenMedian(const TestResult& test, const MessageCatalogue& texts, TestReading& reading) {
    if (test.conditionKey != "CategoryListsAreSpecified_I_Median_2") return;
    for (Figure& figure : reading.figures) {
        if (figure.key == "Median") figure.label = texts.Label("givenMedian");
    }
}

std::string FamilyOf(const std::string& classification) {
    if (classification == "One_Sample") return "one-sample";
    return classification == "Related_Samples" ? "related" : "independent";
}

}  // namespace

std::string_view NameOf(PValueKind kind) {
    switch (kind) {
        case PValueKind::kAsymptotic:
            return "asymptotic";
        case PValueKind::kExact:
            return "exact";
        case PValueKind::kFisher:
            return "fisher";
        case PValueKind::kContinuityCorrected:
            return "continuity-corrected";
    }
    return "";
}

const PValue* StatisticSet::Leading() const {
    const auto found = std::ranges::find_if(pValues, [](const PValue& p) { return p.decides; });
    if (found != pValues.end()) return &*found;
    return pValues.empty() ? nullptr : &pValues.front();
}

const StatisticSet* TestReading::Leading() const {
    return statistics.empty() ? nullptr : &statistics.back();
}

bool TestReading::IsTextbook() const {
    return arithmetic.find("textbook") != std::string::npos;
}

bool TestReading::HasError() const {
    return std::ranges::any_of(notes, [](const Note& note) { return note.kind == "error"; });
}

bool TestReading::IsBeyondRange(Quantity quantity) const {
    return std::ranges::any_of(limits, [&](const EngineLimit* limit) { return limit->Touches(quantity); });
}

TestReading ReadTest(const TestResult& test, const ResultDocument& document, const MessageCatalogue& texts) {
    TestReading reading;
    reading.name = test.name;
    const TestTexts* const about = texts.Test(test.name);
    reading.title = about == nullptr ? test.name : about->title;
    reading.family = FamilyOf(test.classification);
    reading.statement = texts.Sentence(test, document);
    reading.isEstimate = test.type == "confidence_interval";
    reading.decision = test.decision;
    ReadFields(test, document, reading);
    for (const ResultMessage& message : test.messages) {
        reading.notes.push_back({message.code, message.kind, texts.Sentence(message, document)});
    }

    const ResultField* const group =
        reading.group.empty() || test.parameters.size() < 2 ? nullptr : document.FieldAt(test.parameters[1]);
    ReadStatistics(test, texts, reading);
    ReadSamples(test, document, group, texts, reading);
    ReadComparisons(test, document, group, reading);
    ReadCases(test, document, reading);
    reading.counts = ReadCounts(test, document);
    reading.scales = ScalesOf(test, document);
    reading.arithmetic = test.arithmetic;
    ReadMethods(about, reading);
    reading.limits = LimitsPassed(reading, document);
    if (reading.IsBeyondRange(Quantity::kPValue) || IsUndefined(reading)) reading.decision.clear();
    NameGivenMedian(test, texts, reading);
    reading.remarks = RemarksOn(test, document, reading, texts);
    if (MixesFields(test, document)) reading.subsets.clear();
    TurnToOneDirection(test, document, texts, reading);
    return reading;
}

}  // namespace tarn
