#include "host/beyond/TestView.h"

#include <algorithm>
#include <span>
#include <utility>

#include "host/beyond/MiddlePlaces.h"
#include "machine/LargeArray.h"

namespace tarn {

namespace {

/// A field of words has an order only where somebody gave it; `analyze` then ranks it by numbers.
bool HasNumbers(const Column& column) {
    return !column.IsText() && column.level != FieldLevel::kNominal;
}

double HypothesizedMedian(const TestReading& reading) {
    const auto found = std::ranges::find(reading.figures, "HypotheticalMedian", &Figure::key);
    return found == reading.figures.end() ? 0 : found->value.value;
}

/// Whether any figure of the test depends on which values of two groups are equal. In a large test of several groups
/// whose pairs aren't compared none does.
bool ComparesValues(const TestView& view) {
    constexpr double kFewCases = 1e5;
    const bool isOfSeveral = view.Is(Tests::kKruskalWallis) || view.Is(Tests::kMedian) || view.facts->IsEstimate();
    return !isOfSeveral || !view.reading->pairs.empty() || view.Size() <= kFewCases;
}

void SetGroups(TestView& view, const ViewSource& source, int field, int group) {
    GroupedCases cases = CasesByGroup(source.table, field, group, source.rule, source.work);
    view.names = std::move(cases.names);
    view.samples = std::move(cases.samples);
    view.missing = std::move(cases.missing);
    if (ComparesValues(view)) TieTogether(view.samples);
    const Direction& direction = view.reading->direction;
    const bool isTurned = view.samples.size() == 2 && view.names[0] == direction.second;
    if (!isTurned) return;
    std::swap(view.names[0], view.names[1]);
    std::swap(view.samples[0], view.samples[1]);
    std::swap(view.missing[0], view.missing[1]);
}

bool HasDifferences(const TestView& view) {
    const bool isPair = view.facts->family == TestFamily::kRelated && view.facts->fieldCount == FieldCount::kPair;
    return isPair && view.cases.columns.size() == 2 && view.areNumbers;
}

/// From the hypothesized median: a sample in order less that stays in order.
AscendingSample DifferencesFrom(double median, const AscendingSample& sample) {
    AscendingSample differences{RoomInLargePages<double>(sample.values.size()), sample.weights, sample.size};
    differences.values.assign(sample.values.begin(), sample.values.end());
    for (double& value : differences.values) value -= median;
    TieMagnitudes(differences);
    return differences;
}

/// Of a pair. For the sign test it doesn't matter which of them are tied, and of many their median and their signs are
/// enough.
void SetDifferences(TestView& view, bool keepsAll) {
    const std::vector<double>& weights = view.cases.weights;
    const bool isFirstLess = view.reading->direction.first == view.reading->fields[0];
    const std::span<const double> first = view.cases.columns[isFirstLess ? 0 : 1];
    const std::span<const double> second = view.cases.columns[isFirstLess ? 1 : 0];
    if (view.Is(Tests::kSign)) {
        view.signs = CountSigns(first, second, weights);
        if (!keepsAll && weights.empty()) view.differences = MiddleOfDifferences(first, second);
        if (!view.differences) view.differences = AscendingDifferences(first, second, weights);
    } else {
        view.differences = AscendingDifferences(first, second, weights);
        TieMagnitudes(*view.differences);
    }
}

AscendingSample FieldOf(const TestView& view, std::size_t place, bool keepsAll) {
    const std::span<const double> values = view.cases.columns[place];
    const bool needsOrder = keepsAll || !view.cases.weights.empty() || view.Is(Tests::kWilcoxonOneSample);
    std::optional<AscendingSample> sample;
    if (!needsOrder) sample = MiddleOf(values);
    return sample ? std::move(*sample) : AscendingCopy(values, view.cases.weights);
}

void SetFields(TestView& view, const ViewSource& source, const std::vector<int>& fields) {
    constexpr double kMostKept = 1e5;
    view.cases = CasesOf(source.table, fields, source.rule);
    view.names = view.reading->fields;
    view.missing = view.cases.missing;
    view.samples.resize(fields.size());
    const bool keepsAll = source.keepsAll || view.cases.size <= kMostKept || !view.areNumbers;
    // The differences are the last job, and the fields the others.
    source.work.Run(fields.size() + (HasDifferences(view) ? 1 : 0), [&](std::size_t i) {
        if (i == fields.size()) {
            SetDifferences(view, keepsAll);
        } else {
            view.samples[i] = FieldOf(view, i, keepsAll);
        }
    });
    if (view.Is(Tests::kWilcoxonOneSample)) {
        view.differences = DifferencesFrom(HypothesizedMedian(*view.reading), view.samples[0]);
    }
}

/// What the document has of a test; both stand at the same place.
const TestResult* ResultOf(const TestReading& reading, const ResultReading& result) {
    const auto place = static_cast<std::size_t>(&reading - result.tests.data());
    return place < result.document.tests.size() ? &result.document.tests[place] : nullptr;
}

}  // namespace

double TestView::Size() const {
    if (groupColumn == nullptr) return cases.size;
    double size = 0;
    for (const AscendingSample& sample : samples) size += sample.size;
    return size;
}

AscendingSample DifferencesOf(std::vector<double> differences, const std::vector<double>& weights) {
    AscendingSample sample = Ascending(std::move(differences), weights);
    TieMagnitudes(sample);
    return sample;
}

std::optional<TestView> ViewOf(const TestReading& reading, const ResultReading& result, const ViewSource& source) {
    const Table& table = source.table;
    TestView view;
    view.reading = &reading;
    view.result = ResultOf(reading, result);
    view.document = &result.document;
    view.facts = Tests::OfResult(reading.name);
    if (view.facts == nullptr || reading.HasError() || reading.fields.empty()) return std::nullopt;
    view.confidence = result.confidenceLevel.value;
    std::vector<int> fields;
    for (const std::string& name : reading.fields) {
        fields.push_back(table.FindColumn(name));
        if (fields.back() == Table::kNoColumn) return std::nullopt;
        view.columns.push_back(&table.Columns()[static_cast<std::size_t>(fields.back())]);
    }
    view.areNumbers = std::ranges::all_of(view.columns, [](const Column* column) { return HasNumbers(*column); });
    if (reading.group.empty()) {
        SetFields(view, source, fields);
    } else {
        const int group = table.FindColumn(reading.group);
        if (group == Table::kNoColumn) return std::nullopt;
        view.groupColumn = &table.Columns()[static_cast<std::size_t>(group)];
        SetGroups(view, source, fields.front(), group);
    }
    if (std::ranges::any_of(view.samples, HasUnordered)) return std::nullopt;
    return view;
}

}  // namespace tarn
