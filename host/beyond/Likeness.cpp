#include "host/beyond/Likeness.h"

#include <algorithm>
#include <cmath>

#include "host/NumberText.h"
#include "host/beyond/Dichotomies.h"
#include "host/beyond/Significances.h"

namespace tarn {

namespace {

bool HasTies(const AscendingSample& sample) {
    const bool hasWeights = std::ranges::any_of(sample.weights, [](double weight) { return weight > 1; });
    return hasWeights || std::ranges::adjacent_find(sample.values) != sample.values.end();
}

/// Whether any value stands twice among all groups.
bool HasTies(const std::vector<AscendingSample>& samples) {
    std::vector<double> all;
    for (const AscendingSample& sample : samples) {
        if (HasTies(sample)) return true;
        all.insert(all.end(), sample.values.begin(), sample.values.end());
    }
    return HasTies(Ascending(std::move(all), {}));
}

/// Magnitudes of differences that are not zero.
AscendingSample MagnitudesOf(const AscendingSample& differences) {
    std::vector<double> values;
    std::vector<double> weights;
    for (std::size_t i = 0; i < differences.values.size(); ++i) {
        if (differences.values[i] == 0) continue;
        values.push_back(std::fabs(differences.values[i]));
        if (!differences.weights.empty()) weights.push_back(differences.weights[i]);
    }
    return Ascending(std::move(values), weights);
}

std::string ValueText(const Column& column, const Category& category) {
    return column.IsText() ? category.text : ExactText(category.number);
}

void SetGroups(const TestView& view, LikeQuestion& question) {
    const Column& column = *view.groupColumn;
    question.groupField = column.name;
    question.groupsAreTexts = column.IsText();
    for (const std::string& name : view.names) {
        const auto category = std::ranges::find(column.categories, name,
                                                [&](const Category& each) { return ShownCategory(column, each); });
        question.groups.push_back(category == column.categories.end() ? name : ValueText(column, *category));
    }
    question.groupsAreAll = view.names.size() == column.categories.size();
    for (const AscendingSample& sample : view.samples) {
        question.sizes.push_back(sample.size);
        question.hasWeights |= !sample.weights.empty();
    }
    const bool isShifted = view.Is(Tests::kMannWhitney) && question.testValue;
    question.hasTies = HasTies(isShifted ? ShiftedSamples(view, *question.testValue) : view.samples);
}

void SetFields(const TestView& view, LikeQuestion& question) {
    question.sizes = {view.cases.size};
    question.hasWeights = !view.cases.weights.empty();
    if (view.differences) {
        const AscendingSample differences = ShiftedDifferences(view, question.testValue.value_or(0));
        question.hasTies = HasTies(MagnitudesOf(differences));
        question.hasZeros = std::ranges::binary_search(differences.values, 0.0);
    } else if (view.areNumbers && view.samples.size() == 1) {
        question.hasTies = HasTies(view.samples.front());
    }
}

/// The categories of the first class or of a success.
void SetSuccesses(const TestView& view, const std::vector<std::string>& success, LikeQuestion& question) {
    const Column& column = *view.columns.front();
    question.successesAreTexts = column.IsText();
    for (const std::string& word : success) {
        const Category* const category = FindCategory(column, word);
        if (category != nullptr) question.successes.push_back(ValueText(column, *category));
    }
    const FirstClass first = FirstClassOf(view);
    question.cutPoint = first.cut;
    const bool areNamed = !question.successes.empty();
    for (const std::string& shown : first.categories) {
        const Category* const category = areNamed ? nullptr : FindCategory(column, shown);
        if (category != nullptr) question.successes.push_back(ValueText(column, *category));
    }
    if (question.successes.empty() && !column.categories.empty()) {
        question.successes.push_back(ValueText(column, column.categories.front()));
    }
}

bool AreSameTwoClasses(const TestView& view) {
    constexpr std::size_t kTwo = 2;
    return view.columns.size() == kTwo && view.columns[0]->categories.size() == kTwo &&
           view.columns[0]->categories == view.columns[1]->categories;
}

double FigureOf(const TestReading& reading, std::string_view key) {
    const auto found = std::ranges::find(reading.figures, key, &Figure::key);
    return found == reading.figures.end() ? std::nan("") : found->value.value;
}

/// The setting of a plan that asks for the test.
std::string_view SettingOf(const TestView& view) {
    if (!view.Is(Tests::kKolmogorovSmirnov) || view.result == nullptr) return view.facts->Settings().front();
    const std::string& condition = view.result->conditionKey;
    if (condition.starts_with("Uniform")) return KolmogorovSmirnovSetting::kUniform;
    if (condition.starts_with("Poisson")) return KolmogorovSmirnovSetting::kPoisson;
    if (condition.starts_with("Exponential")) return KolmogorovSmirnovSetting::kExponential;
    return KolmogorovSmirnovSetting::kNormal;
}

bool ComparesDistributions(const TestView& view) {
    return view.Is(Tests::kKolmogorovSmirnovTwoSample) || view.Is(Tests::kKolmogorovSmirnov);
}

}  // namespace

LikeSetting LikenessOf(const TestView& view, const SupplementOptions& wanted, double probability,
                       const std::vector<std::string>& success) {
    LikeQuestion question;
    question.test = SettingOf(view);
    question.alternative = wanted.alternative;
    // A distribution function that lies above belongs to the smaller values.
    if (ComparesDistributions(view) && wanted.alternative != Alternative::kTwoSided) {
        question.alternative = wanted.alternative == Alternative::kLess ? Alternative::kGreater : Alternative::kLess;
    }
    question.testValue = wanted.shift;
    if (view.Is(Tests::kBinomial)) question.testValue = probability;
    if (view.Is(Tests::kWilcoxonOneSample)) question.testValue = FigureOf(*view.reading, "HypotheticalMedian");
    question.fields = view.reading->fields;
    question.hasMissing = std::ranges::any_of(view.missing, [](double count) { return count > 0; });
    question.confidenceLevel = view.confidence;
    question.continuity = wanted.continuity;
    question.zeros = wanted.zeros;
    if (wanted.exact) question.exact = true;
    SetSuccesses(view, success, question);
    question.areSameTwoClasses = AreSameTwoClasses(view);
    if (view.groupColumn != nullptr) {
        SetGroups(view, question);
    } else {
        SetFields(view, question);
    }
    return SettingLike(*wanted.like, question);
}

}  // namespace tarn
