#include "host/report/TestReading.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "host/NumberText.h"
#include "host/report/Direction.h"
#include "host/report/Remarks.h"
#include "host/report/Scales.h"

namespace tarn {

namespace {

/// What the engine shows for a number that was never computed: the lowest one, rounded beyond what can be read back.
constexpr std::string_view kNeverComputed = "-1.79769313486232e+308";

/// The value of a row as a reader may have it: "" for what is missing or was never computed.
std::string Known(const std::string& value) {
    return value == kMissingText || value == kNeverComputed ? "" : value;
}

std::string KnownRow(const ResultTable& table, std::string_view row) {
    return Known(table.Value(row));
}

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
    constexpr std::array<std::string_view, 4> kTests{"RSign", "IMannWhitneyU", "IMoses", "IMedian"};
    return std::ranges::find(kTests, test) != kTests.end();
}

void AddPValue(StatisticSet& set, PValueKind kind, int tails, const std::string& value) {
    const bool isBound = value.starts_with('>');
    set.pValues.push_back({kind, tails, Known(isBound ? value.substr(1) : value), isBound, false, std::nullopt});
}

StatisticSet ReadStatistics(const ResultTable& table, std::string name) {
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
    if (reading.name != "IWaldWolfowitzRuns") return;
    for (StatisticSet& set : reading.statistics) {
        for (PValue& p : set.pValues) p.tails = 1;
    }
}

void ReadStatisticSets(const ResultTable& table, TestReading& reading) {
    for (const NamedSet& named : kNamedSets) {
        const ResultTable* const set = table.Table(named.table);
        if (set != nullptr) reading.statistics.push_back(ReadStatistics(*set, std::string(named.name)));
    }
    if (reading.statistics.empty() && table.Find("TestStatistic") != nullptr) {
        reading.statistics.push_back(ReadStatistics(table, ""));
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

std::string_view MethodTitle(std::string_view method) {
    if (method == "ClopperPearson") return "Clopper-Pearson";
    if (method == "ProfileLikelihood") return "profile likelihood";
    return method;
}

// ---- Figures ----

struct FigureRow {
    std::string_view table;  ///< where the row stands; "" for the statistics
    std::string_view row;
    std::string_view label;
};

constexpr std::array kFigureRows{
    FigureRow{"", "MannWhitneyU", "Mann-Whitney U"},
    FigureRow{"", "WilcoxonW", "Wilcoxon W"},
    FigureRow{"", "KendallsW", "Kendall's W"},
    FigureRow{"", "Median", "median of all"},
    FigureRow{"", "OutliersTrimmedFromEachEnd", "trimmed from each end"},
    FigureRow{"MostExtremeDifferences", "Absolute", "largest difference"},
    FigureRow{"MostExtremeDifferences", "Positive", "largest positive difference"},
    FigureRow{"MostExtremeDifferences", "Negative", "largest negative difference"},
    FigureRow{"ContinuousDistribution", "PositiveDifferences", "positive differences"},
    FigureRow{"ContinuousDistribution", "NegativeDifferences", "negative differences"},
    FigureRow{"ContinuousDistribution", "Ties", "ties"},
    FigureRow{"ContinuousDistribution", "HypotheticalMedian", "hypothesized median"},
    FigureRow{"ContinuousDistribution", "ObservedMedian", "observed median"},
    FigureRow{"RunsParameters", "ObservedRunNumber", "runs"},
    FigureRow{"RunsParameters", "Mean", "expected runs"},
    FigureRow{"RunsParameters", "StdDev", "standard deviation of runs"},
};

void ReadFigures(const TestResult& test, const ResultTable& statistics, TestReading& reading) {
    for (const FigureRow& figure : kFigureRows) {
        const ResultTable* table = figure.table.empty() ? &statistics : test.content.Table(figure.table);
        if (table == nullptr) table = statistics.Table(figure.table);
        if (table == nullptr || table->Find(figure.row) == nullptr) continue;
        reading.figures.push_back({std::string(figure.row), std::string(figure.label), KnownRow(*table, figure.row)});
    }
}

// ---- Samples ----

struct SampleRow {
    std::string_view row;
    std::string_view label;
};
constexpr std::array kSampleRows{SampleRow{"N", "N"}, SampleRow{"MeanOfRank", "mean rank"},
                                 SampleRow{"GTMedian", "above the median"},
                                 SampleRow{"STMedian", "not above the median"}};
constexpr std::array<std::string_view, 5> kBoxLabels{"whisker low", "lower hinge", "median", "upper hinge",
                                                     "whisker high"};

Sample ReadSample(const ResultTable& table, std::string name) {
    Sample sample{std::move(name), {}, {}};
    for (const SampleRow& row : kSampleRows) {
        if (table.Find(row.row) == nullptr) continue;
        sample.figures.push_back({std::string(row.row), std::string(row.label), KnownRow(table, row.row)});
    }
    const ResultTable* const box = table.Table("Box");
    if (box == nullptr || box->lines.empty()) return sample;
    const std::vector<std::string>& values = box->lines.front();
    for (std::size_t i = 0; i < std::min({kBoxLabels.size(), values.size(), box->columnNames.size()}); ++i) {
        sample.figures.push_back({box->columnNames[i], std::string(kBoxLabels[i]), Known(values[i])});
    }
    return sample;
}

/// With listed groups these two tests number their groups and don't tell the categories in them.
bool NumbersItsGroups(const TestResult& test) {
    return test.conditionKey == "CategoryListsAreSpecified_I_KolmogorovSmirnov_2" ||
           test.conditionKey == "CategoryListsAreSpecified_I_WaldWolfowitzRuns_2";
}

void ReadSamples(const TestResult& test, const ResultTable& parent, const ResultDocument& document,
                 const ResultField* group, TestReading& reading) {
    for (const ResultTable& table : parent.tables) {
        const std::string* const index = table.Find("GroupIndex");
        if (index == nullptr) continue;
        std::string name = CategoryNames(*index, group);
        if (NumbersItsGroups(test)) name = *index == "0" ? "first group" : "second group";
        const ResultField* const field =
            table.name.starts_with("VariableInformation") ? document.FieldAt(*index) : nullptr;
        reading.samples.push_back(ReadSample(table, field ? field->name : name));
    }
}

// ---- Comparisons ----

/// The names of the samples in the order of a table like "PairwiseInfo": fields or categories by their indices.
std::vector<std::string> SampleNames(const ResultTable* info, const ResultDocument& document,
                                     const ResultField* group) {
    if (info == nullptr || info->lines.empty()) return {};
    std::vector<std::string> names = info->lines.front();
    for (std::string& name : names) {
        const ResultField* const field = group == nullptr ? document.FieldAt(name) : nullptr;
        name = field ? field->name : CategoryNames(name, group);
    }
    return names;
}

std::string Cell(const std::vector<std::string>& line, std::size_t column) {
    return column < line.size() ? Known(line[column]) : "";
}

// Where the values of a comparison stand in its line.
enum Column : std::size_t { kFirst, kSecond, kStatistic, kStandardError, kStandardized, kP, kAdjustedP };

std::string NameAt(const std::vector<std::string>& names, const std::string& position) {
    double number = 0;
    const bool isKnown = ReadNumber(position, number) && number >= 0 && number < static_cast<double>(names.size());
    return isKnown ? names[static_cast<std::size_t>(number)] : position;
}

void ReadPairs(const ResultTable& table, const ResultDocument& document, const ResultField* group,
               TestReading& reading) {
    const ResultTable* const content = table.Table("Content");
    if (content == nullptr) return;
    // Fields are told by their place in the list, groups by the index of their category.
    const std::vector<std::string> names = SampleNames(table.Table("PairwiseInfo"), document, group);
    const auto nameOf = [&](const std::string& sample) {
        return group == nullptr ? NameAt(names, sample) : CategoryNames(sample, group);
    };
    for (const auto& line : content->lines) {
        if (line.size() <= kSecond) continue;
        reading.pairs.push_back({nameOf(line[kFirst]), nameOf(line[kSecond]), Cell(line, kStatistic),
                                 Cell(line, kStandardError), Cell(line, kStandardized), Cell(line, kP),
                                 Cell(line, kAdjustedP)});
    }
}

void ReadSubsets(const ResultTable& table, const ResultDocument& document, const ResultField* group,
                 TestReading& reading) {
    const ResultTable* const content = table.Table("Content");
    if (content == nullptr) return;
    const std::vector<std::string> names = SampleNames(table.Table("StepwiseInfo"), document, group);
    reading.orderedSamples = names;
    for (const auto& line : content->lines) {
        double first = 0;
        double last = 0;
        if (line.size() <= kSecond || !ReadNumber(line[kFirst], first) || !ReadNumber(line[kSecond], last)) continue;
        HomogeneousSubset subset{{}, Cell(line, kStatistic), Cell(line, kP), Cell(line, kAdjustedP)};
        for (auto position = static_cast<long>(first); position <= static_cast<long>(last); ++position) {
            subset.members.push_back(NameAt(names, std::to_string(position)));
        }
        reading.subsets.push_back(std::move(subset));
    }
}

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
    const bool hasGroupLists = test.conditionKey.starts_with("CategoryListsAreSpecified_I_") && test.name != "IMedian";
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

/// A convention is told beside the numbers that follow it, and not where a test ended without them.
void ReadMethods(const TestTexts* about, TestReading& reading) {
    if (about == nullptr) return;
    if (!reading.statistics.empty() || !reading.intervals.empty()) reading.method = about->method;
    if (!reading.pairs.empty()) reading.pairsMethod = about->pairs;
    if (!reading.subsets.empty()) reading.subsetsMethod = about->steps;
}

/// Whether the significance that decides is no number, as for differences that are all zero. The document retains then.
bool IsUndefined(const TestReading& reading) {
    const StatisticSet* const set = reading.Leading();
    const PValue* const p = set == nullptr ? nullptr : set->Leading();
    return !reading.isEstimate && p != nullptr && p->value == "nan";
}

/// In the median test the row tells the one that was given, where one was.
void NameGivenMedian(const TestResult& test, TestReading& reading) {
    if (test.conditionKey != "CategoryListsAreSpecified_I_Median_2") return;
    for (Figure& figure : reading.figures) {
        if (figure.key == "Median") figure.label = "median that was given";
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

bool TestReading::HasError() const {
    return std::ranges::any_of(notes, [](const Note& note) { return note.kind == "error"; });
}

bool TestReading::IsBeyondRange(Quantity quantity) const {
    return std::ranges::any_of(limits, [&](const EngineLimit* limit) { return limit->Touches(quantity); });
}

std::vector<TestReading> ReadTests(const ResultDocument& document, const MessageCatalogue& texts) {
    std::vector<TestReading> readings;
    readings.reserve(document.tests.size());
    for (const TestResult& test : document.tests) readings.push_back(ReadTest(test, document, texts));
    return readings;
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
    for (const ResultTable& table : test.content.tables) {
        if (table.Find("computeECIMethod")) ReadInterval(table, std::string(MethodTitle(table.name)), reading);
        if (table.name == "PairwiseResult") ReadPairs(table, document, group, reading);
        if (table.name == "StepwiseResult") ReadSubsets(table, document, group, reading);
        if (table.name == "BoxPlotInfo") ReadSamples(test, table, document, group, reading);
        if (table.name == "StatisticsResult") {
            reading.n = table.Value("TotalN");
            ReadInterval(table, "", reading);
            ReadStatisticSets(table, reading);
            ReadFigures(test, table, reading);
        }
    }
    ReadSamples(test, test.content, document, group, reading);
    ReadCases(test, document, reading);
    reading.counts = ReadCounts(test, document);
    reading.scales = ScalesOf(test, document);
    ReadMethods(about, reading);
    reading.limits = LimitsPassed(reading, document);
    if (reading.IsBeyondRange(Quantity::kPValue) || IsUndefined(reading)) reading.decision.clear();
    NameGivenMedian(test, reading);
    reading.remarks = RemarksOn(test, reading, texts);
    if (MixesFields(test)) reading.subsets.clear();
    TurnToOneDirection(test, document, reading);
    return reading;
}

}  // namespace tarn
