#include "host/report/StatisticsReading.h"

#include <algorithm>
#include <array>
#include <utility>

#include "host/report/KnownValue.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

// ---- Significance ----

struct PValueRow {
    std::string_view row;
    PValueKind kind;
    int tails;
};

// In the order in which a reader sees them.
constexpr std::array kPValueRows{
    PValueRow{"AsymptoticSig2Tailed", PValueKind::kAsymptotic, 2},
    PValueRow{"AsymptoticSig1Tailed", PValueKind::kAsymptotic, 1},
    PValueRow{"ExactSig2Tailed", PValueKind::kExact, 2},
    PValueRow{"ExactSig1Tailed", PValueKind::kExact, 1},
    PValueRow{"FisherExactSig", PValueKind::kFisher, 2},
};

/// Tests in which an exact significance decides wherever the test has one; in all others it stands beside.
bool ExactDecides(std::string_view test) {
    const TestFacts* const facts = Tests::OfResult(test);
    if (facts == nullptr) return false;
    return facts->deciding == DecidingSignificance::kExactIfComputed ||
           facts->deciding == DecidingSignificance::kFisherOrCorrected ||
           facts->deciding == DecidingSignificance::kExactOfLastSet;
}

void AddPValue(StatisticSet& set, PValueKind kind, int tails, const std::string& value) {
    const bool isBound = value.starts_with('>');
    set.pValues.push_back({kind, tails, KnownValue(isBound ? value.substr(1) : value), isBound, false, std::nullopt});
}

StatisticSet ReadSet(const ResultTable& table, std::string name) {
    StatisticSet set;
    set.name = std::move(name);
    set.statistic = KnownRow(table, "TestStatistic");
    set.standardError = KnownRow(table, "StandardError");
    set.standardized = KnownRow(table, "StandardTestStatistic");
    set.df = KnownRow(table, "DegreeOfFreedom");
    for (const PValueRow& row : kPValueRows) {
        if (const std::string* const value = table.Find(row.row)) AddPValue(set, row.kind, row.tails, *value);
    }
    if (const ResultTable* const corrected = table.Table("YatesContinuityCorrection")) {
        AddPValue(set, PValueKind::kContinuityCorrected, 2, corrected->Value("AsymptoticSig2Tailed"));
        set.pValues.back().ownStatistic = KnownRow(*corrected, "ChiSquare");
    }
    for (PValue& p : set.pValues) {
        if (p.kind == PValueKind::kFisher) p.ownStatistic = "";  // a probability of the table itself
    }
    return set;
}

/// The first of these that a test has decides: Fisher's takes the place of the corrected one, as both of the
/// asymptotic.
void MarkDeciding(StatisticSet& set, std::string_view test) {
    if (set.pValues.empty()) return;
    auto deciding = set.pValues.begin();
    if (ExactDecides(test)) {
        for (const PValueKind kind : {PValueKind::kContinuityCorrected, PValueKind::kExact, PValueKind::kFisher}) {
            const auto found = std::ranges::find(set.pValues, kind, &PValue::kind);
            if (found != set.pValues.end()) deciding = found;
        }
    }
    deciding->decides = true;
}

// Tables within the statistics that are sets of their own; the last one decides.
struct NamedSet {
    std::string_view table;
    std::string_view name;
};
constexpr std::array kNamedSets{
    NamedSet{"MinimumPossible", "fewest runs"},
    NamedSet{"MaximumPossible", "most runs"},
    NamedSet{"ObservedControlGroup", "all cases"},
    NamedSet{"TrimmedControlGroup", "trimmed"},
};

/// The rows of this test say two tails, and its significance is that of the lower one: few runs alone speak against the
/// hypothesis.
void CorrectTails(TestReading& reading) {
    if (reading.name != Tests::kWaldWolfowitz.resultName) return;
    for (StatisticSet& set : reading.statistics) {
        for (PValue& p : set.pValues) p.tails = 1;
    }
}

void ReadStatisticSets(const ResultTable& table, TestReading& reading) {
    for (const NamedSet& named : kNamedSets) {
        const ResultTable* const set = table.Table(named.table);
        if (set != nullptr) reading.statistics.push_back(ReadSet(*set, std::string(named.name)));
    }
    if (reading.statistics.empty() && table.Find("TestStatistic") != nullptr) {
        reading.statistics.push_back(ReadSet(table, ""));
    }
    CorrectTails(reading);
    if (!reading.statistics.empty() && !reading.isEstimate) MarkDeciding(reading.statistics.back(), reading.name);
}

// ---- Estimates ----

void ReadInterval(const ResultTable& table, std::string method, TestReading& reading) {
    const ResultTable* const bounds = table.Table("Asymptotic");
    if (bounds == nullptr) return;
    reading.intervals.push_back(
        {std::move(method), KnownRow(table, "Estimate"), KnownRow(*bounds, "Lower"), KnownRow(*bounds, "Upper")});
}

// ---- Figures ----

struct FigureRow {
    std::string_view table;  ///< where the row stands; "" for the statistics
    std::string_view row;
};

constexpr std::array kFigureRows{
    FigureRow{"", "MannWhitneyU"},
    FigureRow{"", "WilcoxonW"},
    FigureRow{"", "KendallsW"},
    FigureRow{"", "Median"},
    FigureRow{"", "OutliersTrimmedFromEachEnd"},
    FigureRow{"MostExtremeDifferences", "Absolute"},
    FigureRow{"MostExtremeDifferences", "Positive"},
    FigureRow{"MostExtremeDifferences", "Negative"},
    FigureRow{"ContinuousDistribution", "PositiveDifferences"},
    FigureRow{"ContinuousDistribution", "NegativeDifferences"},
    FigureRow{"ContinuousDistribution", "Ties"},
    FigureRow{"ContinuousDistribution", "HypotheticalMedian"},
    FigureRow{"ContinuousDistribution", "ObservedMedian"},
    FigureRow{"RunsParameters", "ObservedRunNumber"},
    FigureRow{"RunsParameters", "Mean"},
    FigureRow{"RunsParameters", "StdDev"},
};

void ReadFigures(const TestResult& test, const ResultTable& statistics, const MessageCatalogue& texts,
                 TestReading& reading) {
    for (const FigureRow& figure : kFigureRows) {
        const ResultTable* table = figure.table.empty() ? &statistics : test.content.Table(figure.table);
        if (table == nullptr) table = statistics.Table(figure.table);
        if (table == nullptr || table->Find(figure.row) == nullptr) continue;
        reading.figures.push_back({std::string(figure.row), texts.Label(figure.row), KnownRow(*table, figure.row)});
    }
}

}  // namespace

void ReadStatistics(const TestResult& test, const MessageCatalogue& texts, TestReading& reading) {
    for (const ResultTable& table : test.content.tables) {
        if (table.Find("computeECIMethod")) ReadInterval(table, texts.Label(table.name), reading);
        if (table.name != "StatisticsResult") continue;
        reading.n = table.Value("TotalN");
        ReadInterval(table, "", reading);
        ReadStatisticSets(table, reading);
        ReadFigures(test, table, texts, reading);
    }
}

}  // namespace tarn
