#include "host/engine/RequestView.h"

#include <algorithm>

#include "vocabulary/TestFacts.h"

namespace tarn {

const std::vector<std::string>& RequestView::FieldsOf(TestFamily family) const {
    return family == TestFamily::kOneSample ? options_.oneSample
           : family == TestFamily::kRelated ? options_.related
                                            : options_.independent;
}

const Column& RequestView::ColumnOf(const std::string& field) const {
    return table_.Columns()[static_cast<std::size_t>(table_.FindColumn(field))];
}

std::vector<std::string> RequestView::TestsOf(TestFamily family) const {
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
std::vector<std::string> RequestView::ChooseForOrdered() const {
    constexpr std::size_t kClasses = 2;
    const auto isOrdered = [&](const std::string& field) {
        return ColumnOf(field).level == FieldLevel::kOrdinal && ColumnOf(field).categories.size() > kClasses;
    };
    if (options_.related.size() < 2 || !std::ranges::all_of(options_.related, isOrdered)) return {};
    return {std::string((options_.related.size() == 2 ? Tests::kWilcoxonPairs : Tests::kFriedman).userName)};
}

/// The automatic choice looks at the groups alone and hands fields that are no numbers to tests of numbers. Where
/// there is such a field the test is named here, by the same rule, and the engine then finds the fitting form.
std::vector<std::string> RequestView::ChooseForGroups() const {
    const bool allContinuous = std::ranges::all_of(
        options_.independent, [&](const std::string& field) { return !ColumnOf(field).IsCategorical(); });
    const std::size_t groups = ColumnOf(options_.group).categories.size();
    if (allContinuous || groups < 2) return {};
    return {std::string((groups == 2 ? Tests::kMannWhitney : Tests::kKruskalWallis).userName)};
}

/// The automatic choice compares all pairs of samples. Where steps are asked for, the test that it would choose for
/// three samples and more is named here; none if there is no such test.
std::vector<std::string> RequestView::ChooseForSteps(TestFamily family) const {
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

bool RequestView::IsSelected(std::string_view first, std::string_view second) const {
    return std::ranges::any_of(TestNames(), [&](const TestName& test) {
        const bool isMeant = test.requestKey == first || test.requestKey == second;
        return isMeant && std::ranges::find(options_.tests, test.name) != options_.tests.end();
    });
}

std::vector<const Column*> RequestView::ColumnsOfSuccess() const {
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

}  // namespace tarn
