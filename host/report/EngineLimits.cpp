#include "host/report/EngineLimits.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/report/TestReading.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr double kLargestInt32 = 2147483647;
constexpr double kTwoTo32 = 4294967296;

constexpr std::array kAll{Quantity::kN,      Quantity::kStatistic, Quantity::kStandardError, Quantity::kStandardized,
                          Quantity::kPValue, Quantity::kInterval,  Quantity::kPairs};
constexpr std::array kNormalApproximation{Quantity::kStandardError, Quantity::kStandardized, Quantity::kPValue};
constexpr std::array kChiSquare{Quantity::kStatistic, Quantity::kPValue};
constexpr std::array kIntervalOnly{Quantity::kInterval};
constexpr std::array kPairsOnly{Quantity::kPairs};

double Number(const std::string& text) {
    double number = 0;
    return ReadNumber(text, number) ? number : 0;
}

/// The sum of the weights of all records.
double WeightOf(const ResultDocument& document) {
    const auto found = std::ranges::find(document.counts, "totalFreq", [](const auto& count) { return count.first; });
    return found == document.counts.end() ? 0 : Number(found->second);
}

/// The most cases that a test can have had, by its own count, or by those of its fields where it gives none.
double MostCases(const TestReading& test, const ResultDocument& document) {
    if (!test.n.empty()) return Number(test.n);
    double most = WeightOf(document);
    for (const ResultTable& descriptive : document.descriptives) {
        const ResultField* const field = document.FieldAt(descriptive.Value("varIndex"));
        if (field == nullptr || std::ranges::find(test.fields, field->name) == test.fields.end()) continue;
        if (const std::string* const n = descriptive.Find("TotalN")) most = std::min(most, Number(*n));
    }
    return most;
}

double FigureOf(const std::vector<Figure>& figures, std::string_view key) {
    const auto found = std::ranges::find(figures, key, &Figure::key);
    return found == figures.end() ? 0 : Number(found->value);
}

// ---- One function per limit ----

/// Too many cases, or a count that a negative or missing weight has turned round.
bool CountsWrap(const TestReading& test, const ResultDocument& document) {
    return WeightOf(document) > kLargestInt32 || Number(test.n) < 0;
}

/// Sums of weights are made of doubles in places.
bool CountsAreRounded(const TestReading&, const ResultDocument& document) {
    constexpr double kMostExact = 9007199254740992;  // 2^53
    return WeightOf(document) > kMostExact;
}

/// n (n + 1) in 32 bits.
bool SquareWraps(double n) {
    return n * (n + 1) > kLargestInt32;
}

bool WilcoxonPairsWraps(const TestReading& test, const ResultDocument&) {
    return SquareWraps(FigureOf(test.figures, "PositiveDifferences") + FigureOf(test.figures, "NegativeDifferences"));
}

bool HodgesLehmannPairsWraps(const TestReading& test, const ResultDocument& document) {
    return SquareWraps(MostCases(test, document));
}

/// N^3 - N in 64 bits, the product that wraps first.
bool HodgesLehmannGroupsWraps(const TestReading& test, const ResultDocument& document) {
    constexpr double kMostCases = 2097152;
    return MostCases(test, document) > kMostCases;
}

/// (k - 1) k (k + 1) n in 32 bits, by which ties are corrected: it wraps before the product that scales the rank sums.
bool RankedRowsWrap(const TestReading& test, const ResultDocument&) {
    const auto k = static_cast<double>(test.fields.size());
    return (k - 1) * k * (k + 1) * Number(test.n) > kLargestInt32;
}

/// k times the successes, and the squared differences of the successes of all pairs of fields, in 32 bits. The document
/// has the successes as percentages without their fractions, so this is the most that they can be.
bool CochransQWraps(const TestReading& test, const ResultDocument&) {
    const double percent = Number(test.n) / 100;
    double successes = 0;
    double squares = 0;
    std::vector<std::vector<std::string>> rows;
    for (std::size_t i = 0; i < test.counts.RowCount(); ++i) rows.push_back(test.counts.CellsOf(i));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].empty()) continue;
        // Either column may be that of the successes.
        const double share = std::max(Number(rows[i][0]), 100 - Number(rows[i][0]));
        successes += std::min((share + 1) * percent, Number(test.n));
        for (std::size_t j = 0; j < i; ++j) {
            if (rows[j].empty()) continue;
            const double difference = (std::abs(Number(rows[i][0]) - Number(rows[j][0])) + 1) * percent;
            squares += difference * difference;
        }
    }
    return static_cast<double>(test.fields.size()) * successes > kLargestInt32 || squares >= kTwoTo32;
}

/// n^2 in 32 bits.
bool CochransQPairsWrap(const TestReading& test, const ResultDocument&) {
    return !test.pairs.empty() && Number(test.n) * Number(test.n) >= kTwoTo32;
}

/// n1 n2 in 32 bits.
bool KolmogorovSmirnovGroupsWraps(const TestReading& test, const ResultDocument&) {
    if (test.samples.size() < 2) return false;
    return FigureOf(test.samples[0].figures, "N") * FigureOf(test.samples[1].figures, "N") >= kTwoTo32;
}

/// 3 N + 3 in 32 bits.
bool KruskalWallisWraps(const TestReading& test, const ResultDocument&) {
    return 3 * Number(test.n) + 3 > kLargestInt32;
}

constexpr ArithmeticMode kFixed = ArithmeticMode::kAsDefined;

constexpr std::array kLimits{
    EngineLimit{"case-counts", "", kAll, kFixed, CountsWrap},
    EngineLimit{"wilcoxon-pairs", Tests::kWilcoxonPairs.resultName, kNormalApproximation, kFixed, WilcoxonPairsWraps},
    EngineLimit{"hodges-lehmann-pairs", Tests::kHodgesLehmannPairs.resultName, kIntervalOnly, kFixed,
                HodgesLehmannPairsWraps},
    EngineLimit{"hodges-lehmann-groups", Tests::kHodgesLehmannGroups.resultName, kIntervalOnly, kFixed,
                HodgesLehmannGroupsWraps},
    EngineLimit{"ranked-rows", Tests::kFriedman.resultName, kChiSquare, kFixed, RankedRowsWrap},
    EngineLimit{"ranked-rows", Tests::kKendall.resultName, kChiSquare, kFixed, RankedRowsWrap},
    EngineLimit{"cochran", Tests::kCochran.resultName, kChiSquare, kFixed, CochransQWraps},
    EngineLimit{"cochran-pairs", Tests::kCochran.resultName, kPairsOnly, kFixed, CochransQPairsWrap},
    EngineLimit{"kolmogorov-smirnov-groups", Tests::kKolmogorovSmirnovTwoSample.resultName, kChiSquare, kFixed,
                KolmogorovSmirnovGroupsWraps},
    EngineLimit{"kruskal-wallis", Tests::kKruskalWallis.resultName, kChiSquare, kFixed, KruskalWallisWraps},
    EngineLimit{"case-counts-of-doubles", "", kAll, ArithmeticMode::kExtended, CountsAreRounded},
};

}  // namespace

std::string_view NameOf(Quantity quantity) {
    switch (quantity) {
        case Quantity::kN:
            return "n";
        case Quantity::kStatistic:
            return "statistic";
        case Quantity::kStandardError:
            return "standard_error";
        case Quantity::kStandardized:
            return "standardized";
        case Quantity::kPValue:
            return "p_value";
        case Quantity::kInterval:
            return "interval";
        case Quantity::kPairs:
            return "pairs";
    }
    return "";
}

bool EngineLimit::Touches(Quantity quantity) const {
    return std::ranges::find(quantities, quantity) != quantities.end();
}

std::span<const EngineLimit> EngineLimits() {
    return kLimits;
}

std::vector<const EngineLimit*> LimitsPassed(const TestReading& test, const ResultDocument& document) {
    std::vector<const EngineLimit*> passed;
    if (test.HasError()) return passed;
    // A document that doesn't say how it was made came out as defined.
    const bool isExtended = document.arithmetic == ArithmeticMode::kExtended;
    for (const EngineLimit& limit : kLimits) {
        const bool concerns = limit.test.empty() || limit.test == test.name;
        if ((limit.mode == ArithmeticMode::kExtended) != isExtended) continue;
        if (concerns && limit.isPassed(test, document)) passed.push_back(&limit);
    }
    return passed;
}

}  // namespace tarn
