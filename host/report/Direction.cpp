#include "host/report/Direction.h"
#include "vocabulary/TestFacts.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace tarn {

namespace {

constexpr std::size_t kTwo = 2;

/// The number with the other sign; texts that are no numbers stay as they are.
std::string Negated(const std::string& text) {
    double number = 0;
    if (!ReadNumber(text, number) || number == 0 || text == "nan") return text;
    return text.starts_with('-') ? text.substr(1) : "-" + text;
}

double NumberOf(const std::string& text) {
    double number = 0;
    return ReadNumber(text, number) ? number : 0;
}

/// A label of the catalogue with the names of samples in it.
std::string LabelOf(std::string_view key, const std::vector<std::string>& samples, const MessageCatalogue& texts) {
    return FillIn(texts.Label(key), {&samples});
}

Figure* FindFigure(std::vector<Figure>& figures, std::string_view key) {
    const auto found = std::ranges::find(figures, key, &Figure::key);
    return found == figures.end() ? nullptr : &*found;
}

std::string SizeOf(Sample& sample) {
    const Figure* const size = FindFigure(sample.figures, "N");
    return size == nullptr ? "" : size->value;
}

/// The position of a group among the categories, by the index that the document has for it.
double PositionOf(const ResultTable& group) {
    return NumberOf(group.Value("GroupIndex"));
}

/// Whether the document has the groups of a test in another order than the categories of their field. Lists of a plan
/// are an order of their own.
bool AreSwapped(const TestResult& test) {
    const ResultTable* const first = test.content.Table("Group0");
    const ResultTable* const second = test.content.Table("Group1");
    if (first == nullptr || second == nullptr || test.conditionKey.starts_with("CategoryLists")) return false;
    return PositionOf(*first) > PositionOf(*second);
}

/// The document's U counts the pairs in which the second of its groups has the larger value, and its W is the sum of
/// that group's ranks.
void TurnMannWhitney(const MessageCatalogue& texts, TestReading& reading) {
    if (reading.statistics.empty()) return;
    StatisticSet& set = reading.statistics.front();
    const std::string counted = reading.samples[1].name;
    const bool isOfFirst = counted == reading.direction.first;
    const std::string pairs = set.statistic;
    char other[32];
    std::snprintf(other, sizeof other, "%.15g",
                  NumberOf(SizeOf(reading.samples[0])) * NumberOf(SizeOf(reading.samples[1])) - NumberOf(pairs));
    const std::string complement = pairs.empty() ? "" : other;
    set.label = LabelOf("uOf", {reading.direction.first}, texts);
    set.statistic = isOfFirst ? pairs : complement;
    if (!isOfFirst) set.standardized = Negated(set.standardized);
    if (Figure* const u = FindFigure(reading.figures, "MannWhitneyU")) {
        u->label = LabelOf("uOf", {reading.direction.second}, texts);
        u->value = isOfFirst ? complement : pairs;
    }
    if (Figure* const w = FindFigure(reading.figures, "WilcoxonW")) w->label = LabelOf("rankSumOf", {counted}, texts);
}

/// The document takes the distribution function of the smaller group from that of the larger one, of the second of two
/// equal groups from that of the first.
void TurnKolmogorovSmirnov(const MessageCatalogue& texts, TestReading& reading) {
    Figure* const positive = FindFigure(reading.figures, "Positive");
    Figure* const negative = FindFigure(reading.figures, "Negative");
    if (positive == nullptr || negative == nullptr) return;
    const bool secondIsLarger = NumberOf(SizeOf(reading.samples[1])) > NumberOf(SizeOf(reading.samples[0]));
    const bool isOfFirst = (reading.samples[secondIsLarger ? 1 : 0].name == reading.direction.first);
    if (!isOfFirst) {
        std::swap(positive->value, negative->value);
        positive->value = Negated(positive->value);
        negative->value = Negated(negative->value);
    }
    const std::vector<std::string> groups{reading.direction.first, reading.direction.second};
    positive->label = LabelOf("largestDifferenceOf", groups, texts);
    negative->label = LabelOf("smallestDifferenceOf", groups, texts);
}

/// The two categories of the group field that occur, in their order; the document of this estimate names no groups.
std::vector<std::string> OccurringGroups(const TestResult& test, const ResultDocument& document) {
    std::vector<std::string> groups;
    const ResultField* const field = test.parameters.size() < kTwo ? nullptr : document.FieldAt(test.parameters[1]);
    if (field == nullptr) return groups;
    for (const ResultTable& descriptive : document.descriptives) {
        if (descriptive.Value("varIndex") != test.parameters[1]) continue;
        const ResultTable* const counts = descriptive.Table("Interval");
        if (counts == nullptr || counts->lines.size() < kTwo) continue;
        for (const std::string& index : SplitList(counts->lines[1])) {
            if (const std::string* const shown = field->CategoryAt(index)) groups.push_back(*shown);
        }
    }
    if (groups.empty() && field->categories.size() == kTwo) {
        for (const ResultCategory& category : field->categories) groups.push_back(category.Shown());
    }
    return groups;
}

}  // namespace

void TurnToOneDirection(const TestResult& test, const ResultDocument& document, const MessageCatalogue& texts,
                        TestReading& reading) {
    if (reading.HasError()) return;
    if (test.name == Tests::kSign.resultName || test.name == Tests::kWilcoxonPairs.resultName ||
        test.name == Tests::kHodgesLehmannPairs.resultName) {
        if (reading.fields.size() == kTwo) reading.direction = {reading.fields[1], reading.fields[0]};
    } else if (test.name == Tests::kMarginalHomogeneity.resultName) {
        if (reading.fields.size() == kTwo) reading.direction = {reading.fields[0], reading.fields[1]};
    } else if (test.name == Tests::kWilcoxonOneSample.resultName) {
        const Figure* const median = FindFigure(reading.figures, "HypotheticalMedian");
        if (median != nullptr && !reading.fields.empty()) {
            reading.direction = {reading.fields[0], ShortNumber(median->value)};
        }
    } else if (test.name == Tests::kHodgesLehmannGroups.resultName) {
        const std::vector<std::string> groups = OccurringGroups(test, document);
        if (groups.size() == kTwo) reading.direction = {groups[0], groups[1]};
    } else if (test.name == Tests::kMannWhitney.resultName ||
               test.name == Tests::kKolmogorovSmirnovTwoSample.resultName) {
        if (reading.samples.size() != kTwo) return;
        const bool areSwapped = AreSwapped(test);
        reading.direction = {reading.samples[areSwapped ? 1 : 0].name, reading.samples[areSwapped ? 0 : 1].name};
        if (test.name == Tests::kMannWhitney.resultName) {
            TurnMannWhitney(texts, reading);
        } else {
            TurnKolmogorovSmirnov(texts, reading);
            reading.direction = {};  // its numbers are of distribution functions, which fall where values rise
        }
        if (areSwapped) std::swap(reading.samples[0], reading.samples[1]);
    } else if (test.name == Tests::kMoses.resultName && !reading.samples.empty()) {
        for (StatisticSet& set : reading.statistics)
            set.label = LabelOf("spanOf", {reading.samples.front().name}, texts);
        reading.samples.front().role = texts.Label("controlGroup");
    }
}

}  // namespace tarn
