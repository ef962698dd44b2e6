// Chi-square test of the frequencies of a categorical field.
//
// Question    Are the categories as frequent as expected, by default all alike?
// Data        The frequencies of the field, from its descriptives; with given categories those of these alone.
// Statistic   Sum of (observed - expected)^2 / expected over k categories: chi-square with k - 1 degrees of freedom.
// Source      Pearson (1900), Philosophical Magazine 50, 157-175; the bound of 5: Cochran (1954), Biometrics 10,
//             417-451.
// Degenerate  No case at all: an error. A category without a case is a cell like any other.

#include "onesample/TARNChiSquare.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>

#include "contract/TARNPlanBuilder.h"
#include "contract/TARNVariableInfo.h"
#include "platform/common/QKVarList.h"
#include "platform/common/Truncation.h"
#include "support/QKUnivariateVariable.h"
#include "support/QKVecValue.h"
#include "support/Significance.h"
#include "vocabulary/OneSampleKeys.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "DefaultEqualProbabilities_O_ChiSquare_1";
constexpr const char* kConditionOfList = "UserSpecifiesProbabilities_O_ChiSquare_1";

constexpr const char* kGivenExpectedValue = "givenExpectedValue";  // of "classFormation"
constexpr const char* kCategoryValue = "categoryValue";
constexpr const char* kExpectedValue = "expectedValue";
constexpr const char* kGivenValue = "givenValue";  // of a test's own settings: expected values as they were given

constexpr long kSettingMissing = 220201_error;
constexpr long kNameMissing = 220203_error;
constexpr long kNotCategorical = 220204_error;
constexpr long kTooFewCategories = 220209_error;
constexpr long kExpectedCountsBelowFive = 220211_help;
constexpr long kBadExpectedValues = 220212_error;

constexpr std::size_t kFewestCategories = 2;
constexpr double kSmallExpectedCount = 5.0;

}  // namespace

// ---- Plan ----

namespace {

/// The categories of the entry with their expected values.
struct ExpectedCategories {
    std::vector<double> numbers;  // of a field with numeric categories
    std::vector<std::string> texts;
    std::vector<double> expected;
};

/// An element that lacks something is passed over, and the walk goes on.
ExpectedCategories ReadElements(TARNPlanBuilder& builder, const std::vector<QKSettings>& elements, bool numeric) {
    ExpectedCategories given;
    for (const QKSettings& element : elements) {
        double number = 0;
        std::string text;
        double expected = 0;
        const bool hasCategory = (!numeric || element.GetSettingValByName(kCategoryValue, number)) &&
                                 element.GetSettingValByName(kCategoryValue, text);
        if (!hasCategory || !element.GetSettingValByName(kExpectedValue, expected) || !(expected > 0)) {
            builder.Fail(kBadExpectedValues);
            continue;
        }
        given.numbers.push_back(number);
        given.texts.push_back(text);
        given.expected.push_back(expected);
    }
    if (builder.IsOK() && given.expected.size() < kFewestCategories) builder.Fail(kTooFewCategories);
    return given;
}

void PlanExpectedValues(TARNPlanBuilder& builder, const QKVarList& varList, int field, int measureLevel) {
    std::vector<QKSettings> elements;
    if (!builder.Read(OneSampleKey::kCustom, elements)) {
        builder.Fail(kSettingMissing);
        return;
    }
    if (elements.empty()) {
        builder.Fail(kBadExpectedValues);
        return;
    }
    const bool numeric = measureLevel == FieldKind::kNumericCategories;
    ExpectedCategories given = ReadElements(builder, elements, numeric);
    if (!builder.IsOK()) return;

    AddVecSetting(builder.TestSettings(), kGivenValue, given.expected, false);
    double sum = 0;
    for (const double expected : given.expected) sum += expected;
    for (double& expected : given.expected) expected /= sum;
    const TARNVariableInfo info(varList);
    QKSettings& settings = builder.TestSettings();
    AddVecSetting(settings, kExpectedValue, given.expected, false);
    AddVecSetting(settings, OneSampleKey::kGivenCategoryList,
                  numeric ? info.MapCategories(field, given.numbers) : info.MapCategories(field, given.texts), false);
    AddVecSetting(settings, OneSampleKey::kOriginalGivenCategories, given.texts, false);
}

/// The level of the field, 0 if the test can't take it.
int ResolveField(TARNPlanBuilder& builder, TARNPlan& plan, const std::string& name, int field) {
    const int measureLevel = field < 0 ? 0 : plan.GetMeasureLevel(name);
    if (!FieldKind::IsCategorical(measureLevel)) {
        builder.Fail(kNotCategorical, name);
        return 0;
    }
    if (plan.GetVarList().GetVarAt(field)->GetCategoryCount() < static_cast<int>(kFewestCategories)) {
        builder.Fail(kTooFewCategories);
        return 0;
    }
    plan.Request(field, Statistic::kFrequencies);
    builder.TestSettings().AddSetting(SettingKey::kMeasureLevel, measureLevel);
    return measureLevel;
}

void PlanFrequencies(TARNPlanBuilder& builder, TARNPlan& plan) {
    std::string name;
    if (!builder.Read(SettingKey::kVariableName, name)) {
        builder.Fail(kNameMissing, name);  // the name that isn't there is a parameter, too
        return;
    }
    const int field = plan.GetVarList().FindVariable(name);
    builder.TestSettings().AddSetting(SettingKey::kVariableIndex, field);
    const int measureLevel = ResolveField(builder, plan, name, field);
    if (!builder.IsOK()) return;

    std::string formation;
    if (!builder.Read(SettingKey::kClassFormation, formation)) {
        builder.Fail(kSettingMissing, name);
        return;
    }
    builder.TestSettings().AddSetting(SettingKey::kClassFormation, formation);
    if (formation == kGivenExpectedValue) PlanExpectedValues(builder, plan.GetVarList(), field, measureLevel);
}

}  // namespace

void PlanChiSquare(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    PlanFrequencies(builder, plan);
    builder.AddToMainWorker<TARNChiSquare>();
}

// ---- Pass ----

/// A test that its plan builder failed comes through here as well; what the builder then didn't write shows as a second
/// error.
QKStatus TARNChiSquare::BeginPass() {
    ReadSettings();
    if (status.IsError()) return status;
    std::string formation = ClassFormation::kGetFromData;
    settings->GetSettingValByName(SettingKey::kClassFormation, formation);
    if (!FieldKind::IsCategorical(measureLevel)) {
        AddStatusMessage(QKStatus(kSettingMissing), MessageKind::kError);
    } else if (formation == ClassFormation::kGetFromData) {
        BuildCellsFromData();
    } else {
        BuildCellsFromList();
    }
    if (!status.IsError()) passesRemaining = 1;
    return status;
}

void TARNChiSquare::ReadSettings() {
    if (!settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex)) {
        AddStatusMessage(QKStatus(kSettingMissing), MessageKind::kError);
    }
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    if (!settings->GetSettingValByName(SettingKey::kMeasureLevel, measureLevel)) {
        AddStatusMessage(QKStatus(kSettingMissing), MessageKind::kError);
    }
}

void TARNChiSquare::BuildCellsFromData() {
    useDefaultCategories = false;
    const int count = univariateResults == nullptr ? 0 : univariateResults->GetCategoryCount(variableIndex);
    std::vector<double> categories;
    for (int category = 0; category < count; ++category) categories.push_back(category);
    BuildCells(categories);
}

void TARNChiSquare::BuildCellsFromList() {
    std::vector<double> categories;
    if (settings->GetSettingValByName(OneSampleKey::kOriginalGivenCategories, originalGivenCategories) &&
        settings->GetSettingValByName(OneSampleKey::kGivenCategoryList, categories)) {
        BuildCells(categories);
    }
}

void TARNChiSquare::BuildCells(const std::vector<double>& categories) {
    std::vector<double> proportions(categories.size(), 1.0 / static_cast<double>(categories.size()));
    settings->GetSettingValByName(kExpectedValue, proportions);
    if (proportions.size() != categories.size()) {
        AddStatusMessage(QKStatus(kBadExpectedValues), MessageKind::kError);
        return;
    }
    std::vector<double> given;
    settings->GetSettingValByName(kGivenValue, given);
    if (given.size() != proportions.size()) {
        const bool areEqual =
            std::adjacent_find(proportions.begin(), proportions.end(), std::not_equal_to<>()) == proportions.end();
        given = areEqual ? std::vector<double>(proportions.size(), 1) : proportions;
    }
    std::map<int, std::int64_t> frequencies;
    if (univariateResults != nullptr) univariateResults->GetWideFrequencies(variableIndex, frequencies);
    for (std::size_t i = 0; i < categories.size(); ++i) {
        const std::int32_t category = TruncateToInt32(categories[i]);
        const auto found = frequencies.find(category);  // a category that the field doesn't know has no entry
        const std::int64_t observed = found == frequencies.end() ? 0 : arithmetic.Count(found->second);
        cells.push_back({category, static_cast<std::uint64_t>(observed), proportions[i], given[i]});
    }
}

/// The observed count less the expected one, of expected values that are whole numbers: where counts are large and near
/// to what is expected most digits cancel.
double ChiSquareCell::AboveExpected(long double sumOfGiven, std::int64_t totalN) const {
    const long double product = static_cast<long double>(totalN) * given;
    return static_cast<double>((static_cast<long double>(observed) * sumOfGiven - product) / sumOfGiven);
}

QKStatus TARNChiSquare::EndPass() {
    double sumOfProportions = 0;
    long double sumOfGiven = 0;
    bool areWhole = true;
    std::uint64_t sumOfObserved = 0;
    for (const ChiSquareCell& cell : cells) {
        sumOfProportions += cell.proportion;
        sumOfGiven += cell.given;
        areWhole = areWhole && cell.given == std::trunc(cell.given);
        sumOfObserved += cell.observed;
    }
    totalN = arithmetic.Count(static_cast<std::int64_t>(sumOfObserved));
    if (totalN == 0) AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);

    std::size_t below = 0;
    double smallest = std::numeric_limits<double>::max();
    testStatistic = 0;
    if (!status.IsError()) {
        for (const ChiSquareCell& cell : cells) {
            const double expected = cell.proportion / sumOfProportions * static_cast<double>(totalN);
            smallest = std::min(smallest, expected);
            if (expected < kSmallExpectedCount) ++below;
            const double difference =
                arithmetic.Carefully([&] { return static_cast<double>(cell.observed) - expected; },
                                     [&] {
                                         return areWhole ? cell.AboveExpected(sumOfGiven, totalN)
                                                         : static_cast<double>(cell.observed) - expected;
                                     });
            testStatistic += difference * difference / expected;
        }
        asymptoticSig = ChiSquareSig(testStatistic, static_cast<double>(cells.size()) - 1, arithmetic);
    }
    AddExpectedCountsMessage(below, smallest);
    passesRemaining = 0;
    return status;
}

/// Given in all cases, also when no expected count is small and beside an error: it carries the smallest one.
void TARNChiSquare::AddExpectedCountsMessage(std::size_t below, double smallest) {
    const double percentage = static_cast<double>(below) / static_cast<double>(cells.size()) * 100;
    AddMessage({QKStatus(kExpectedCountsBelowFive),
                MessageKind::kHelpMessage,
                {IntToString(static_cast<std::int32_t>(below)), DoubleToString(percentage), DoubleToString(smallest)},
                {}});
}

// ---- Element ----

void TARNChiSquare::AddComparison(ResultElement& element) const {
    std::vector<std::int32_t> categories;
    std::vector<double> categoryIndices;
    for (const ChiSquareCell& cell : cells) {
        categories.push_back(cell.category);
        categoryIndices.push_back(cell.category);
    }
    auto content = MakeSimpleTable(TableName::kContent, JoinValues(categories), Literal::kTwoColumns);
    for (const ChiSquareCell& cell : cells) {
        content->AddChild(MakeRowElement(SizeToString(cell.observed) + ";" +
                                         DoubleToString(static_cast<double>(totalN) * cell.proportion)));
    }
    element.AddTable(TableName::kTwoClassComparison).Add(std::move(content));
    // Behind the comparison, where other tests have it in front of the messages.
    element.AddUnknownCategories(categoryIndices, originalGivenCategories);
}

QKXML::XMLElement* TARNChiSquare::MakeResultElement() {
    ResultElement element(Tests::kChiSquare, Decide(status, sigLevel, asymptoticSig));
    // Only classes from the data clear the flag: a list without expected values shows the key of given ones, and so
    // does a test that failed before.
    element.AddCondition(useDefaultCategories ? kConditionOfList : kConditionOfData, {IntToString(variableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    AddComparison(element);
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalN);
    statistics.Row(RowName::kTestStatistic, testStatistic);
    statistics.Row(RowName::kDegreeOfFreedom, SizeToString(cells.size() - 1));
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);
    return element.Release();
}
