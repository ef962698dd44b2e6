#include "host/engine/RequestCheck.h"

#include <algorithm>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/InputError.h"
#include "host/NumberText.h"
#include "host/TestNames.h"
#include "host/TextList.h"
#include "host/engine/InputNotes.h"
#include "host/engine/OrderedScores.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

/// "; did you mean ...?", or the names that there are.
std::string Hint(std::string_view name, std::span<const std::string_view> known) {
    const std::vector<std::string_view> nearest = NearestNames(name, known);
    return nearest.empty() ? "; expected one of " + JoinList(known) : "; did you mean " + JoinList(nearest) + "?";
}

/// "related samples"
std::string FamilyInWords(TestFamily family) {
    std::string words(FamilyTitle(family));
    if (!words.empty()) words[0] = static_cast<char>(words[0] - 'A' + 'a');
    return words;
}

class Check {
 public:
    explicit Check(const RequestView& view) : view_(view), options_(view.Options()), table_(view.Data()) {}

    void Run() const {
        CheckFields();
        CheckOrders();
        CheckCategories();
        CheckExpected();
        CheckDistributions();
        CheckAgainst();
    }

 private:
    void CheckFields() const {
        if (options_.oneSample.empty() && options_.related.empty() && options_.independent.empty()) {
            throw InputError(
                "no field to analyse; expected a formula like 'score ~ arm', or --one-sample, --related, or "
                "--independent "
                "with --group");
        }
        for (const auto* list : {&options_.oneSample, &options_.related, &options_.independent}) {
            for (const std::string& field : *list) CheckField(field);
        }
        if (options_.independent.empty() != options_.group.empty()) {
            throw InputError(
                options_.group.empty()
                    ? "--independent: no groups; expected --group with the field whose categories are the groups"
                    : "--group: no fields to compare; expected --independent with the test fields");
        }
        for (const auto& [option, list] :
             {std::pair<const char*, const std::vector<std::string>&>{"--one-sample", options_.oneSample},
              {"--related", options_.related},
              {"--independent", options_.independent}}) {
            std::set<std::string_view> seen;  // there may be hundreds of thousands
            for (const std::string& field : list) {
                if (seen.insert(field).second) continue;
                throw InputError(std::string(option) + ": " + Quoted(field) +
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
            if (std::ranges::find(DistributionNames(), name) == DistributionNames().end()) {
                throw InputError("--distribution: " + Quoted(name) + Hint(name, DistributionNames()));
            }
        }
    }

    void CheckField(const std::string& field) const {
        if (table_.FindColumn(field) != Table::kNoColumn) return;
        std::vector<std::string_view> names;
        for (const Column& column : table_.Columns()) names.push_back(column.name);
        throw InputError("the table has no field " + Quoted(field) + Hint(field, names));
    }

    /// A test has to belong to a family that has fields.
    void CheckTest(const std::string& name) const {
        std::vector<std::string_view> known;
        for (const TestName& test : TestNames()) {
            if (view_.IsAsked(test.family)) known.push_back(test.name);
            if (view_.IsAsked(test.family) && test.name == name) return;
        }
        for (const TestName& test : TestNames()) {
            if (test.name != name) continue;
            // In other words it may be one of theirs: Wilcoxon's test of two groups.
            if (const std::vector<std::string_view> nearest = NearestNames(name, known); !nearest.empty()) {
                throw InputError("--tests: " + Quoted(name) + " is a test of " + FamilyInWords(test.family) +
                                 DidYouMean(nearest));
            }
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
            if (!view_.IsAsked(family)) continue;
            for (const std::string& test : view_.TestsOf(family)) CheckOrdersFor(*FindTestName(family, test));
        }
    }

    void CheckOrdersFor(const TestName& test) const {
        if (test.requestKey == Tests::kJonckheereTerpstra.requestName) {
            const Column& group = view_.ColumnOf(options_.group);
            if (group.IsText() && !group.IsOrderTold()) FailWithoutOrder(test.name, " needs the order of ", group);
        }
        const bool scores = test.requestKey == Tests::kMarginalHomogeneity.requestName;
        if (!scores && !RanksValues(test)) return;
        const std::vector<std::string>& fields = view_.FieldsOf(test.family);
        const auto isWords = [&](const std::string& field) {
            return view_.ColumnOf(field).IsText() && !view_.ColumnOf(field).IsOrderTold();
        };
        // A test of related fields needs all of them. Of the others the engine leaves out a nominal field of words with
        // a warning, so that the rest is tested.
        const bool needsAll = test.family == TestFamily::kRelated || std::ranges::all_of(fields, isWords);
        for (const std::string& field : fields) {
            const bool isMeant = needsAll || view_.ColumnOf(field).level == FieldLevel::kOrdinal;
            if (isMeant && isWords(field)) {
                FailWithoutOrder(test.name, scores ? " scores the categories of " : " ranks ", view_.ColumnOf(field));
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
        std::vector<const Column*> columns = view_.ColumnsOfSuccess();
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
            const Column& column = view_.ColumnOf(field);
            if (!column.IsCategorical() || !view_.IsSelected(Tests::kBinomial.requestName, Tests::kRuns.requestName))
                continue;
            const auto isOfField = [&](const std::string& word) { return FindCategory(column, word) != nullptr; };
            if (std::ranges::none_of(options_.success, isOfField)) FailAtCategory(options_.success.front(), {&column});
        }
    }

    /// Every category of every field has to have its share, once.
    void CheckExpected() const {
        if (options_.expected.empty()) return;
        for (const std::string& field : options_.oneSample) {
            const Column& column = view_.ColumnOf(field);
            std::vector<const Category*> named;
            for (const ExpectedCategory& expected : options_.expected) {
                const Category* const category = FindCategory(column, expected.category);
                if (category == nullptr) FailAtCategory(expected.category, {&column}, "--expected");
                if (std::ranges::find(named, category) != named.end()) {
                    throw InputError("--expected: " + Quoted(expected.category) + " stands twice");
                }
                named.push_back(category);
                if (expected.share > 0) continue;
                throw InputError("--expected: " + Quoted(expected.category) + " has " + ExactText(expected.share) +
                                 "; expected a share or a count above 0");
            }
            for (const Category& category : column.categories) {
                if (std::ranges::find(named, &category) != named.end()) continue;
                throw InputError("--expected: nothing for the category " + Quoted(ShownCategory(column, category)) +
                                 " of " + column.name + "; expected all of its categories");
            }
        }
    }

    /// What a distribution has no use for would be lost without a word.
    void CheckDistributions() const {
        const auto isAsked = [&](const char* name) {
            const auto& asked = options_.distributions;
            return asked.empty() ? std::string_view(name) == "normal" : std::ranges::find(asked, name) != asked.end();
        };
        const auto require = [&](const char* option, bool isGiven, bool isTaken, const char* takers) {
            if (isGiven && !isTaken) {
                throw InputError(std::string(option) +
                                 ": no distribution of the request has it; expected --distribution " + takers);
            }
        };
        require("--mean", options_.mean.has_value(), isAsked("normal") || isAsked("poisson") || isAsked("exponential"),
                "normal, poisson or exponential");
        require("--sd", options_.standardDeviation.has_value(), isAsked("normal"), "normal");
        require("--min", options_.minimum.has_value(), isAsked("uniform"), "uniform");
        require("--max", options_.maximum.has_value(), isAsked("uniform"), "uniform");
        if (options_.minimum.has_value() != options_.maximum.has_value()) {
            throw InputError("--min and --max: a uniform distribution has both; expected the other one, too");
        }
        if (options_.minimum && !(*options_.minimum < *options_.maximum)) {
            throw InputError("--max: " + ExactText(*options_.maximum) + " is not above --min, " +
                             ExactText(*options_.minimum));
        }
        if (options_.standardDeviation && !(*options_.standardDeviation > 0)) {
            throw InputError("--sd: " + ExactText(*options_.standardDeviation) + "; expected a number above 0");
        }
    }

    /// The sample that others are compared with has to be one of the groups or of the related fields.
    void CheckAgainst() const {
        if (options_.against.empty()) return;
        if (options_.compare == "stepwise") {
            throw InputError("--against: has no meaning for --compare stepwise; expected pairwise");
        }
        if (options_.group.empty() && options_.related.empty()) {
            throw InputError("--against: no groups; expected --group or --related");
        }
        const std::vector<std::string>& related = options_.related;
        if (std::ranges::find(related, options_.against) != related.end()) return;
        if (!options_.group.empty()) {
            const Column& group = view_.ColumnOf(options_.group);
            if (FindCategory(group, options_.against) != nullptr) return;
            FailAtCategory(options_.against, {&group}, "--against");
        }
        const std::vector<std::string_view> known(related.begin(), related.end());
        throw InputError("--against: " + Quoted(options_.against) + " is none of the related fields" +
                         Hint(options_.against, known));
    }

    [[noreturn]] static void FailAtCategory(const std::string& word, const std::vector<const Column*>& columns,
                                            const char* option = "--success") {
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
        throw InputError(std::string(option) + ": no category " + Quoted(word) + " in " + JoinList(names) +
                         Hint(word, views));
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
             {Tests::kWilcoxonOneSample.requestName, Tests::kMedian.requestName, Tests::kMannWhitney.requestName,
              Tests::kWilcoxonPairs.requestName, Tests::kSign.requestName}},
            {"--cut-point", options_.cutPoint.has_value(), {Tests::kBinomial.requestName, Tests::kRuns.requestName}},
            {"--probability", options_.probability.has_value(), {Tests::kBinomial.requestName}},
            {"--success",
             !options_.success.empty(),
             {Tests::kBinomial.requestName, Tests::kRuns.requestName, Tests::kMcNemar.requestName,
              Tests::kCochran.requestName}},
            {"--cut-point mean", options_.cutAtMean, {Tests::kRuns.requestName}},
            {"--expected", !options_.expected.empty(), {Tests::kChiSquare.requestName}},
            {"--distribution", !options_.distributions.empty(), {Tests::kKolmogorovSmirnov.requestName}},
            {"--mean", options_.mean.has_value(), {Tests::kKolmogorovSmirnov.requestName}},
            {"--sd", options_.standardDeviation.has_value(), {Tests::kKolmogorovSmirnov.requestName}},
            {"--min", options_.minimum.has_value(), {Tests::kKolmogorovSmirnov.requestName}},
            {"--max", options_.maximum.has_value(), {Tests::kKolmogorovSmirnov.requestName}},
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
                isTaken = isTaken || (isNamed && view_.IsAsked(test.family));
            }
            if (isTaken) continue;
            throw InputError(std::string(parameter.option) +
                             ": no test of the request takes it; expected --tests with " +
                             (takers.size() > 1 ? "one of " : "") + JoinList(takers));
        }
    }

    const RequestView& view_;
    const AnalysisOptions& options_;
    const Table& table_;
};

}  // namespace

void CheckRequest(const RequestView& view) {
    Check(view).Run();
}

}  // namespace tarn
