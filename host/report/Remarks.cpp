#include "host/report/Remarks.h"
#include "vocabulary/TestFacts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

namespace tarn {

namespace {

constexpr const char* kMosesBelowSmallest = "moses-below-smallest";
constexpr const char* kMannWhitneyTies = "mann-whitney-ties";
constexpr const char* kCochranSubsets = "cochran-subsets";

std::optional<double> NumberOf(const std::vector<Figure>& figures, std::string_view key) {
    const auto found = std::ranges::find(figures, key, &Figure::key);
    double number = 0;
    if (found == figures.end() || !ReadNumber(found->value, number)) return std::nullopt;
    return number;
}

double NumberIn(const std::string& text) {
    double number = 0;
    return ReadNumber(text, number) ? number : 0;
}

/// The logarithm of n over k.
double LogBinomial(double n, double k) {
    return std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1);
}

/// The chance that no other case lies within the span of m control cases without h at each end: the n others fall into
/// the h + 1 gaps at either end (Moses, 1952, Psychometrika 17, 239-247).
double SmallestMosesSignificance(double m, double n, double h) {
    return std::exp(LogBinomial(n + 2 * h + 1, n) - LogBinomial(m + n, m));
}

/// The engine counts a span without any other case in it as impossible. Ties make spans that are shorter still.
void RemarkOnMoses(const TestReading& reading, const MessageCatalogue& texts, std::vector<std::string>& remarks) {
    constexpr std::size_t kTwo = 2;
    const std::string* const text = texts.Remark(kMosesBelowSmallest);
    double total = 0;
    if (text == nullptr || reading.samples.size() != kTwo || !ReadNumber(reading.n, total)) return;
    const double control = NumberOf(reading.samples.front().figures, "N").value_or(0);
    for (const StatisticSet& set : reading.statistics) {
        const bool isTrimmed = &set == &reading.statistics.back();
        const double trimmed = isTrimmed ? NumberOf(reading.figures, "OutliersTrimmedFromEachEnd").value_or(0) : 0;
        const double left = control - 2 * trimmed;
        double span = 0;
        if (left < kTwo || !ReadNumber(set.statistic, span) || span > left) continue;
        char smallest[32];
        std::snprintf(smallest, sizeof smallest, "%.3g", SmallestMosesSignificance(control, total - control, trimmed));
        const std::vector<std::string> parameters{set.name, set.statistic, ShortNumber(std::to_string(left)), smallest};
        remarks.push_back(FillIn(*text, {&parameters}));
    }
}

/// Ties make the standard error smaller than sqrt(n1 n2 (N + 1) / 12).
bool ExactDecidesOverTies(const TestReading& reading) {
    constexpr double kRounding = 1e-12;
    const StatisticSet* const set = reading.Leading();
    const PValue* const p = set == nullptr ? nullptr : set->Leading();
    double standardError = 0;
    if (p == nullptr || p->kind != PValueKind::kExact || reading.samples.size() != 2) return false;
    if (!ReadNumber(set->standardError, standardError)) return false;
    const double n1 = NumberOf(reading.samples[0].figures, "N").value_or(0);
    const double n2 = NumberOf(reading.samples[1].figures, "N").value_or(0);
    return standardError < std::sqrt(n1 * n2 * (n1 + n2 + 1) / 12) * (1 - kRounding);
}

}  // namespace

// The search goes through the fields in the order of their successes, while a statistic takes its two parts from the
// fields in the order of the request.
bool MixesFields(const TestResult& test, const ResultDocument& document) {
    if (test.name != Tests::kCochran.resultName || document.arithmetic == ArithmeticMode::kExtended) return false;
    const ResultTable* const subsets = test.content.Table("StepwiseResult");
    const ResultTable* const info = subsets == nullptr ? nullptr : subsets->Table("StepwiseInfo");
    if (info == nullptr || info->lines.empty()) return false;
    const std::vector<std::string> order = SplitList(info->lines.front());
    for (std::size_t i = 0; i < order.size(); ++i) {
        if (i > 0 && NumberIn(order[i]) < NumberIn(order[i - 1])) return true;
    }
    return false;
}

std::vector<std::string> RemarksOn(const TestResult& test, const ResultDocument& document, const TestReading& reading,
                                   const MessageCatalogue& texts) {
    std::vector<std::string> remarks;
    const auto add = [&](const char* key) {
        if (const std::string* const text = texts.Remark(key)) remarks.push_back(*text);
    };
    if (reading.name == Tests::kMannWhitney.resultName && ExactDecidesOverTies(reading)) add(kMannWhitneyTies);
    if (MixesFields(test, document)) add(kCochranSubsets);
    const bool isExtended = document.arithmetic == ArithmeticMode::kExtended;
    if (reading.name == Tests::kMoses.resultName && !reading.HasError() && !isExtended)
        RemarkOnMoses(reading, texts, remarks);
    return remarks;
}

}  // namespace tarn
