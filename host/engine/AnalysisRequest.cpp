#include "host/engine/AnalysisRequest.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "host/InputError.h"
#include "host/NumberText.h"
#include "host/TestNames.h"
#include "host/engine/KnownKeys.h"
#include "host/engine/RequestCheck.h"
#include "host/engine/RequestView.h"
#include "host/table/TableMedian.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr std::array<std::string_view, 4> kDistributionNames{"normal", "uniform", "poisson", "exponential"};
constexpr std::string_view kOneSampleKs = Tests::kKolmogorovSmirnov.requestName;

constexpr double kPercent = 100;

/// A level is written as a share up to 1, or in percent above it. One on the wrong side of a half is the other one.
struct LevelOption {
    const char* name;
    const char* like;
    bool isAboveHalf;
    const char* other;
};
constexpr LevelOption kAlpha{"--alpha", "a share below 1, like 0.05, or percent above 1, like 5", false,
                             "--confidence"};
constexpr LevelOption kConfidence{"--confidence", "a share below 1, like 0.95, or percent above 1, like 95", true,
                                  "--alpha"};

double ShareOf(const LevelOption& option, double level) {
    constexpr double kHalf = 0.5;
    const double share = level > 1 ? level / kPercent : level;
    const std::string text = std::string(option.name) + ": " + ExactText(level);
    if (!(share > 0 && share < 1)) {
        throw InputError(text + (level == 1 ? ", which is a share of 100 percent" : "") + "; expected " + option.like);
    }
    if (share != kHalf && (share > kHalf) != option.isAboveHalf) {
        throw InputError(text + "; did you mean " + option.other + "? Expected " + option.like);
    }
    return share;
}

/// The same in percent, without the rounding of a division where it is written so.
double PercentOf(const LevelOption& option, double level) {
    const double share = ShareOf(option, level);
    return level > 1 ? level : share * kPercent;
}

class Builder {
 public:
    Builder(const AnalysisOptions& options, const Table& table)
        : view_(options, table), options_(options), table_(table) {}

    Json Build() {
        CheckRequest(view_);
        AddCommonKeys();
        AddFamily(TestFamily::kOneSample, options_.oneSample, "isAutomaticallyOneSample");
        AddFamily(TestFamily::kRelated, options_.related, "isAutomaticallyRelated");
        AddFamily(TestFamily::kIndependent, options_.independent, "isAutomaticallyIndependent");
        // A family that ends with the tree issues no warnings.
        request_["end"] = true;
        return std::move(request_);
    }

 private:
    /// The values of the categories that the user named, as the engine compares them.
    std::vector<std::string> SuccessValues() const {
        std::vector<std::string> values;
        for (const Column* const column : view_.ColumnsOfSuccess()) {
            for (const std::string& word : options_.success) {
                const Category* const category = FindCategory(*column, word);
                if (category == nullptr) continue;
                std::string value = column->IsText() ? category->text : ExactText(category->number);
                if (std::ranges::find(values, value) == values.end()) values.push_back(std::move(value));
            }
        }
        return values;
    }

    void AddCommonKeys() {
        if (options_.brief) request_[kBrief] = true;
        if (!options_.asDefined) request_[kExtendedArithmetic] = true;
        request_["missingTreatment"] = options_.listwise ? "listwise" : "analysis";
        request_["sigLevel"] = ShareOf(kAlpha, options_.alpha);
        request_["confidenceLevel"] = PercentOf(kConfidence, options_.confidence);
        request_["userMissing"] = options_.includeUserMissing ? "include" : "exclude";
        if (!options_.caseId.empty()) request_["caseIDField"] = options_.caseId;
        request_["oneSampleVariables"] = options_.oneSample;
        request_["relatedVariables"] = options_.related;
        request_["independentVariables"] = options_.independent;
        if (!options_.group.empty()) request_["groupVariable"] = Json::array({options_.group});
    }

    void AddFamily(TestFamily family, const std::vector<std::string>& fields, const char* automaticKey) {
        if (fields.empty()) return;
        const std::vector<std::string> named = view_.TestsOf(family);
        request_[automaticKey] = named.empty();
        for (const TestName& test : TestNames()) {
            if (test.family == family) AddTest(test, std::ranges::find(named, test.name) != named.end());
        }
    }

    void AddTest(const TestName& test, bool isSelected) {
        if (test.requestKey == kOneSampleKs) {
            AddKolmogorovSmirnov(isSelected);
            return;
        }
        Json entry{{"isSelected", isSelected}};
        if (isSelected) AddParameters(test, entry);
        request_[std::string(test.requestKey)] = std::move(entry);
    }

    void AddKolmogorovSmirnov(bool isSelected) {
        for (const std::string_view name : kDistributionNames) {
            const bool isAsked = options_.distributions.empty()
                                     ? name == "normal"
                                     : std::ranges::find(options_.distributions, name) != options_.distributions.end();
            std::string key(name);
            key[0] = static_cast<char>(key[0] - 'a' + 'A');
            Json entry{{"isSelected", isSelected && isAsked}};
            AddDistributionParameters(name, entry);
            request_[std::string(kOneSampleKs) + key] = std::move(entry);
        }
        hasSortedTest_ = isSelected;
    }

    /// The parameters that were given, or the wish to take all from the data.
    void AddDistributionParameters(std::string_view name, Json& entry) const {
        const auto add = [&](const char* key, const std::optional<double>& value) {
            if (value) entry[key] = *value;
        };
        if (name == "uniform") {
            add("min", options_.minimum);
            add("max", options_.maximum);
        } else {
            add("mean", options_.mean);
            if (name == "normal") add("stdDev", options_.standardDeviation);
        }
        entry["isUseSample"] = entry.size() == 1;
    }

    void AddChiSquare(Json& entry) const {
        entry["classFormation"] = options_.expected.empty() ? "getFromData" : "givenExpectedValue";
        if (options_.expected.empty()) return;
        Json custom = Json::array();
        const Column& column = view_.ColumnOf(options_.oneSample.front());
        for (const ExpectedCategory& expected : options_.expected) {
            const Category& category = *FindCategory(column, expected.category);
            custom.push_back({{"categoryValue", column.IsText() ? category.text : ExactText(category.number)},
                              {"expectedValue", expected.share}});
        }
        entry["custom"] = std::move(custom);
    }

    void AddParameters(const TestName& test, Json& entry) {
        const std::string_view key = test.requestKey;
        if (key == Tests::kBinomial.requestName) AddBinomial(entry);
        if (key == Tests::kChiSquare.requestName) AddChiSquare(entry);
        if (key == Tests::kRuns.requestName) AddRuns(entry);
        if (key == Tests::kWilcoxonOneSample.requestName) AddTestValue(entry);
        if (key == Tests::kMcNemar.requestName) AddSuccess(entry, "classFormation", "categoriesList");
        if (key == Tests::kCochran.requestName) AddSuccess(entry, "classFormation", "successCategoryList");
        if (key == Tests::kMoses.requestName && options_.outliers) {
            entry["userSpecifyNumberOfOutliers"] = true;
            entry["NumberOfOutliers"] = *options_.outliers;
        }
        if (key == Tests::kJonckheereTerpstra.requestName) {
            entry["orderOfHypotheses"] = options_.descending ? "orderLargestToSmallest" : "orderSmallestToLargest";
        }
        if (key == Tests::kMedian.requestName && options_.testValue) {
            entry["userSpecifyMedian"] = true;
            entry["median"] = *options_.testValue;
        }
        // As the automatic choice does it.
        const bool isChosen = key == Tests::kFriedman.requestName && options_.compare.empty() && options_.tests.empty();
        if (options_.compare == "pairwise" || isChosen) entry["typeOfMultipleComparison"] = "pairWise";
        if (options_.compare == "stepwise") entry["typeOfMultipleComparison"] = "stepWise";
    }

    void AddBinomial(Json& entry) const {
        entry["testProbability"] = options_.probability.value_or(0.5);
        AddSuccess(entry, "catVarClassFormation", "givenCategoryList");
        entry["contVarClassFormation"] = options_.cutPoint ? "givenCutPoint" : "sampleMidPoint";
        if (options_.cutPoint) entry["givenCutPoint"] = *options_.cutPoint;
        for (const char* interval : {"isDoClopperPearson", "isDoJeffreys", "isDoProfileLikelihood"}) {
            entry[interval] = true;
        }
    }

    void AddSuccess(Json& entry, const char* formationKey, const char* listKey) const {
        entry[formationKey] = options_.success.empty() ? "getFromData" : "givenCategoryList";
        if (!options_.success.empty()) entry[listKey] = SuccessValues();
    }

    void AddTestValue(Json& entry) const {
        if (!options_.testValue) {
            throw InputError("--tests wilcoxon of one sample: no value to test against; expected --test-value");
        }
        entry["userSpecifyTestValue"] = true;
        entry["testValue"] = *options_.testValue;
    }

    void AddRuns(Json& entry) const {
        AddSuccess(entry, "catVarClassFormation", "givenCategoryList");
        if (options_.cutAtMean) {
            entry["contVarClassFormation"] = "cutPointMean";
            return;
        }
        // The engine has the median of a field only if it was asked for a sorted test before.
        if (!options_.cutPoint && hasSortedTest_) {
            entry["contVarClassFormation"] = "cutPointMedian";
            return;
        }
        const std::optional<double> cut = options_.cutPoint ? options_.cutPoint : MedianOfOneField();
        if (!cut) return;
        entry["contVarClassFormation"] = "cutPointValue";
        entry["cutPointValue"] = *cut;
    }

    /// None if there is no continuous field, or no value in it.
    std::optional<double> MedianOfOneField() const {
        std::vector<std::string> continuous;
        for (const std::string& field : options_.oneSample) {
            if (!view_.ColumnOf(field).IsCategorical()) continuous.push_back(field);
        }
        if (continuous.empty()) return std::nullopt;
        if (continuous.size() > 1) {
            throw InputError("--tests runs: one request cuts all fields at one value, and each of " +
                             std::to_string(continuous.size()) +
                             " continuous fields has a median of its own; expected one of them, or --cut-point");
        }
        return MedianOf(table_, table_.FindColumn(continuous.front()), RequestedColumns(), options_.listwise);
    }

    std::vector<int> RequestedColumns() const {
        std::vector<int> columns;
        for (const auto* list : {&options_.oneSample, &options_.related, &options_.independent}) {
            for (const std::string& field : *list) columns.push_back(table_.FindColumn(field));
        }
        if (!options_.group.empty()) columns.push_back(table_.FindColumn(options_.group));
        return columns;
    }

    RequestView view_;
    const AnalysisOptions& options_;
    const Table& table_;
    Json request_ = Json::object();
    bool hasSortedTest_ = false;
};

}  // namespace

std::span<const std::string_view> DistributionNames() {
    return kDistributionNames;
}

Json BuildRequest(const AnalysisOptions& options, const Table& table) {
    return Builder(options, table).Build();
}

}  // namespace tarn
