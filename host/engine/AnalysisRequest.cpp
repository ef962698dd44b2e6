#include "host/engine/AnalysisRequest.h"

#include <algorithm>
#include <array>
#include <span>
#include <string_view>
#include <utility>

#include "host/InputError.h"
#include "host/NumberText.h"
#include "host/TestNames.h"
#include "host/TextList.h"
#include "host/engine/InputNotes.h"
#include "host/engine/OrderedScores.h"
#include "host/table/CellValue.h"
#include "host/table/TableMedian.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::string_view, 4> kDistributionNames{"normal", "uniform", "poisson", "exponential"};
constexpr std::string_view kOneSampleKs = Tests::kKolmogorovSmirnov.requestName;

/// "; did you mean ...?", or the names that there are.
std::string Hint(std::string_view name, std::span<const std::string_view> known) {
    const std::vector<std::string_view> nearest = NearestNames(name, known);
    return nearest.empty() ? "; expected one of " + JoinList(known) : "; did you mean " + JoinList(nearest) + "?";
}

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
    Builder(const AnalysisOptions& options, const Table& table) : options_(options), table_(table) {}

    Json Build() {
        CheckFields();
        CheckOrders();
        CheckCategories();
        AddCommonKeys();
        AddFamily(TestFamily::kOneSample, options_.oneSample, "isAutomaticallyOneSample");
        AddFamily(TestFamily::kRelated, options_.related, "isAutomaticallyRelated");
        AddFamily(TestFamily::kIndependent, options_.independent, "isAutomaticallyIndependent");
        // A family that ends with the tree issues no warnings.
        request_["end"] = true;
        return std::move(request_);
    }

 private:
    void CheckFields() const {
        if (options_.oneSample.empty() && options_.related.empty() && options_.independent.empty()) {
            throw InputError("no field to analyse; expected --one-sample, --related or --independent with --group");
        }
        for (const auto* list : {&options_.oneSample, &options_.related, &options_.independent}) {
            for (const std::string& field : *list) CheckField(field);
        }
        if (options_.independent.empty() != options_.group.empty()) {
            throw InputError(options_.group.empty()
                                 ? "--independent: no groups; expected --group with the field whose categories are the groups"
                                 : "--group: no fields to compare; expected --independent with the test fields");
        }
        for (const auto& [option, list] :
             {std::pair<const char*, const std::vector<std::string>&>{"--one-sample", options_.oneSample},
              {"--related", options_.related},
              {"--independent", options_.independent}}) {
            for (auto field = list.begin(); field != list.end(); ++field) {
                if (std::find(list.begin(), field, *field) == field) continue;
                throw InputError(std::string(option) + ": " + Quoted(*field) +
                                 " stands twice; expected every field once");
            }
        }
        if (!options_.group.empty()) CheckField(options_.group);
        if (std::ranges::find(options_.independent, options_.group) != options_.independent.end() &&
            !options_.group.empty()) {
            throw InputError("--group: " + Quoted(options_.group) +
                             " is among the fields of --independent; expected another field");
        }
        for (const std::string& test : options_.tests) CheckTest(test);
        CheckParameters();
        for (const std::string& name : options_.distributions) {
            if (std::ranges::find(kDistributionNames, name) == std::end(kDistributionNames)) {
                throw InputError("--distribution: " + Quoted(name) + Hint(name, kDistributionNames));
            }
        }
    }

    void CheckField(const std::string& field) const {
        if (table_.FindColumn(field) != Table::kNoColumn) return;
        std::vector<std::string_view> names;
        for (const Column& column : table_.Columns()) names.push_back(column.name);
        throw InputError("the table has no field " + Quoted(field) + Hint(field, names));
    }

    bool IsAsked(TestFamily family) const { return !FieldsOf(family).empty(); }

    /// A test has to belong to a family that has fields.
    void CheckTest(const std::string& name) const {
        std::vector<std::string_view> known;
        for (const TestName& test : TestNames()) {
            if (IsAsked(test.family)) known.push_back(test.name);
            if (IsAsked(test.family) && test.name == name) return;
        }
        for (const TestName& test : TestNames()) {
            if (test.name != name) continue;
            throw InputError("--tests: " + Quoted(name) + " is a test of " + std::string(FamilyTitle(test.family)) +
                             ", which no fields are named for; expected one of " + JoinList(known));
        }
        throw InputError("--tests: there is no test " + Quoted(name) + Hint(name, known));
    }

    // ---- Orders ----

    /// Texts stand in the order of the alphabet unless another one is given. A test whose numbers rest on the order of
    /// texts is not done in that order.
    void CheckOrders() const {
        for (const TestFamily family : {TestFamily::kOneSample, TestFamily::kRelated, TestFamily::kIndependent}) {
            if (!IsAsked(family)) continue;
            for (const std::string& test : TestsOf(family)) CheckOrdersFor(*FindTestName(family, test));
        }
    }

    void CheckOrdersFor(const TestName& test) const {
        if (test.requestKey == Tests::kJonckheereTerpstra.requestName) {
            const Column& group = ColumnOf(options_.group);
            if (group.IsText() && !group.IsOrderTold()) FailWithoutOrder(test.name, " needs the order of ", group);
        }
        const bool scores = test.requestKey == Tests::kMarginalHomogeneity.requestName;
        if (!scores && !RanksValues(test)) return;
        const std::vector<std::string>& fields = FieldsOf(test.family);
        const auto isWords = [&](const std::string& field) {
            return ColumnOf(field).IsText() && !ColumnOf(field).IsOrderTold();
        };
        // A test of related fields needs all of them. Of the others the engine leaves out a nominal field of words with
        // a warning, so that the rest is tested.
        const bool needsAll = test.family == TestFamily::kRelated || std::ranges::all_of(fields, isWords);
        for (const std::string& field : fields) {
            const bool isMeant = needsAll || ColumnOf(field).level == FieldLevel::kOrdinal;
            if (isMeant && isWords(field)) {
                FailWithoutOrder(test.name, scores ? " scores the categories of " : " ranks ", ColumnOf(field));
            }
        }
    }

    /// Whether a test takes an ordinal field by the numbers of its categories.
    static bool RanksValues(const TestName& test) {
        return Tests::OfResult(test.resultName)->takes == FieldsTaken::kNumbers;
    }

    [[noreturn]] static void FailWithoutOrder(std::string_view test, const char* does, const Column& column) {
        if (const std::vector<std::string> among = WordsAmongNumbers(column); !among.empty()) {
            const std::vector<std::string> first(among.begin(),
                                                 among.begin() + std::min<std::ptrdiff_t>(3, std::ssize(among)));
            throw InputError(std::string(test) + does + column.name +
                             ", which is read as words and not as numbers, since it has " + JoinList(first) +
                             (first.size() < among.size() ? ", .." : "") +
                             "; if they stand for missing values, name them in the missingValues of --fields");
        }
        std::vector<std::string_view> words;
        for (const Category& category : column.categories) words.emplace_back(category.text);
        throw InputError(std::string(test) + does + column.name + ", and " + Alternatives(words, " and ") +
                         " are words: tell their order from the lowest to the highest, " + OrderOptionFor(column));
    }

    // ---- Categories ----

    /// Every category that the user names has to be one of the fields that take it.
    void CheckCategories() const {
        if (options_.probability && !(*options_.probability > 0 && *options_.probability < 1)) {
            throw InputError("--probability: " + ExactText(*options_.probability) +
                             "; expected a share between 0 and 1");
        }
        if (options_.success.empty()) return;
        std::vector<const Column*> columns = ColumnsOfSuccess();
        if (columns.empty())
            throw InputError("--success: no field of the request has categories; expected a nominal or ordinal one");
        for (const std::string& word : options_.success) {
            if (std::ranges::any_of(columns, [&](const Column* column) { return FindCategory(*column, word); }))
                continue;
            FailAtCategory(word, columns);
        }
        const auto isNamed = [&](const Column& column, const Category& category) {
            return std::ranges::any_of(
                options_.success, [&](const std::string& word) { return FindCategory(column, word) == &category; });
        };
        for (const Column* const column : columns) {
            const auto isOfColumn = [&](const Category& category) { return isNamed(*column, category); };
            if (!std::ranges::all_of(column->categories, isOfColumn) || column->categories.size() < 2) continue;
            throw InputError("--success: names all categories of " + column->name + "; expected some of them");
        }
        // Each field of one sample is tested by itself and has to have a first class.
        for (const std::string& field : options_.oneSample) {
            const Column& column = ColumnOf(field);
            if (!column.IsCategorical() || !IsSelected(Tests::kBinomial.requestName, Tests::kRuns.requestName))
                continue;
            const auto isOfField = [&](const std::string& word) { return FindCategory(column, word) != nullptr; };
            if (std::ranges::none_of(options_.success, isOfField)) FailAtCategory(options_.success.front(), {&column});
        }
    }

    bool IsSelected(std::string_view first, std::string_view second) const {
        return std::ranges::any_of(TestNames(), [&](const TestName& test) {
            const bool isMeant = test.requestKey == first || test.requestKey == second;
            return isMeant && std::ranges::find(options_.tests, test.name) != options_.tests.end();
        });
    }

    /// The categorical fields of the tests that take a first class.
    std::vector<const Column*> ColumnsOfSuccess() const {
        std::vector<const Column*> columns;
        const auto add = [&](const std::vector<std::string>& fields) {
            for (const std::string& field : fields) {
                if (ColumnOf(field).IsCategorical()) columns.push_back(&ColumnOf(field));
            }
        };
        if (IsSelected(Tests::kBinomial.requestName, Tests::kRuns.requestName)) add(options_.oneSample);
        if (IsSelected(Tests::kMcNemar.requestName, Tests::kCochran.requestName)) add(options_.related);
        return columns;
    }

    [[noreturn]] static void FailAtCategory(const std::string& word, const std::vector<const Column*>& columns) {
        std::vector<std::string> known;
        std::vector<std::string> names;
        for (const Column* const column : columns) {
            names.push_back(column->name);
            for (const Category& category : column->categories) {
                std::string shown = ShownCategory(*column, category);
                if (std::ranges::find(known, shown) == known.end()) known.push_back(std::move(shown));
            }
        }
        const std::vector<std::string_view> views(known.begin(), known.end());
        throw InputError("--success: no category " + Quoted(word) + " in " + JoinList(names) + Hint(word, views));
    }

    /// The values of the categories that the user named, as the engine compares them.
    std::vector<std::string> SuccessValues() const {
        std::vector<std::string> values;
        for (const Column* const column : ColumnsOfSuccess()) {
            for (const std::string& word : options_.success) {
                const Category* const category = FindCategory(*column, word);
                if (category == nullptr) continue;
                std::string value = column->IsText() ? category->text : ExactText(category->number);
                if (std::ranges::find(values, value) == values.end()) values.push_back(std::move(value));
            }
        }
        return values;
    }

    const std::vector<std::string>& FieldsOf(TestFamily family) const {
        return family == TestFamily::kOneSample ? options_.oneSample
               : family == TestFamily::kRelated ? options_.related
                                                : options_.independent;
    }

    /// A parameter that no test of the request takes would be lost without a word: only named tests take any.
    void CheckParameters() const {
        struct Parameter {
            const char* option;
            bool isGiven;
            std::vector<std::string_view> requestKeys;  ///< of the tests that take it
        };
        const Parameter parameters[] = {
            {"--test-value",
             options_.testValue.has_value(),
             {Tests::kWilcoxonOneSample.requestName, Tests::kMedian.requestName}},
            {"--cut-point", options_.cutPoint.has_value(), {Tests::kBinomial.requestName, Tests::kRuns.requestName}},
            {"--probability", options_.probability.has_value(), {Tests::kBinomial.requestName}},
            {"--success",
             !options_.success.empty(),
             {Tests::kBinomial.requestName, Tests::kRuns.requestName, Tests::kMcNemar.requestName,
              Tests::kCochran.requestName}},
            {"--distribution", !options_.distributions.empty(), {kOneSampleKs}},
            {"--outliers", options_.outliers.has_value(), {Tests::kMoses.requestName}},
            {"--descending", options_.descending, {Tests::kJonckheereTerpstra.requestName}},
        };
        for (const Parameter& parameter : parameters) {
            std::vector<std::string_view> takers;
            bool isTaken = !parameter.isGiven;
            for (const TestName& test : TestNames()) {
                if (std::ranges::find(parameter.requestKeys, test.requestKey) == parameter.requestKeys.end()) continue;
                takers.push_back(test.name);
                const bool isNamed = std::ranges::find(options_.tests, test.name) != options_.tests.end();
                isTaken = isTaken || (isNamed && IsAsked(test.family));
            }
            if (isTaken) continue;
            throw InputError(std::string(parameter.option) +
                             ": no test of the request takes it; expected --tests with " +
                             (takers.size() > 1 ? "one of " : "") + JoinList(takers));
        }
    }

    void AddCommonKeys() {
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
        const std::vector<std::string> named = TestsOf(family);
        request_[automaticKey] = named.empty();
        for (const TestName& test : TestNames()) {
            if (test.family == family) AddTest(test, std::ranges::find(named, test.name) != named.end());
        }
    }

    /// The tests of a family by their names; none where the engine chooses.
    std::vector<std::string> TestsOf(TestFamily family) const {
        std::vector<std::string> named;
        for (const std::string& name : options_.tests) {
            if (FindTestName(family, name) != nullptr) named.push_back(name);
        }
        if (named.empty() && options_.compare == "stepwise") named = ChooseForSteps(family);
        if (named.empty() && family == TestFamily::kRelated) named = ChooseForOrdered();
        if (named.empty() && family == TestFamily::kIndependent) named = ChooseForGroups();
        return named;
    }

    /// The automatic choice has no test for ordinal fields of more than two categories, whose ranks can be compared.
    std::vector<std::string> ChooseForOrdered() const {
        constexpr std::size_t kClasses = 2;
        const auto isOrdered = [&](const std::string& field) {
            return ColumnOf(field).level == FieldLevel::kOrdinal && ColumnOf(field).categories.size() > kClasses;
        };
        if (options_.related.size() < 2 || !std::ranges::all_of(options_.related, isOrdered)) return {};
        return {std::string((options_.related.size() == 2 ? Tests::kWilcoxonPairs : Tests::kFriedman).userName)};
    }

    /// The automatic choice looks at the groups alone and hands fields that are no numbers to tests of numbers. Where
    /// there is such a field the test is named here, by the same rule, and the engine then finds the fitting form.
    std::vector<std::string> ChooseForGroups() const {
        const bool allContinuous = std::ranges::all_of(
            options_.independent, [&](const std::string& field) { return !ColumnOf(field).IsCategorical(); });
        const std::size_t groups = ColumnOf(options_.group).categories.size();
        if (allContinuous || groups < 2) return {};
        return {std::string((groups == 2 ? Tests::kMannWhitney : Tests::kKruskalWallis).userName)};
    }

    /// The automatic choice compares all pairs of samples. Where steps are asked for, the test that it would choose for
    /// three samples and more is named here; none if there is no such test.
    std::vector<std::string> ChooseForSteps(TestFamily family) const {
        constexpr std::size_t kFewestSamples = 3;
        constexpr std::size_t kClasses = 2;
        if (family == TestFamily::kIndependent && ColumnOf(options_.group).categories.size() >= kFewestSamples) {
            return {std::string(Tests::kKruskalWallis.userName)};
        }
        if (family != TestFamily::kRelated || options_.related.size() < kFewestSamples) return {};
        const FieldLevel level = ColumnOf(options_.related.front()).level;
        const bool areOfOneKind = std::ranges::all_of(options_.related, [&](const std::string& field) {
            return ColumnOf(field).level == level && ColumnOf(field).categories.size() <= kClasses;
        });
        if (!areOfOneKind) return {};
        return {std::string((level == FieldLevel::kContinuous ? Tests::kFriedman : Tests::kCochran).userName)};
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
            request_[std::string(kOneSampleKs) + key] = {{"isSelected", isSelected && isAsked}, {"isUseSample", true}};
        }
        hasSortedTest_ = isSelected;
    }

    void AddParameters(const TestName& test, Json& entry) {
        const std::string_view key = test.requestKey;
        if (key == Tests::kBinomial.requestName) AddBinomial(entry);
        if (key == Tests::kChiSquare.requestName) entry["classFormation"] = "getFromData";
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
            if (!ColumnOf(field).IsCategorical()) continuous.push_back(field);
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

    const Column& ColumnOf(const std::string& field) const {
        return table_.Columns()[static_cast<std::size_t>(table_.FindColumn(field))];
    }

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
