#include "host/beyond/explain/ClassesOfField.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "host/TextList.h"

namespace tarn {

namespace {

/// The places of categories in a list of the document; others, which the field doesn't have, are left out.
std::vector<std::size_t> PlacesIn(const std::string& list) {
    std::vector<std::size_t> places;
    for (const std::string& index : SplitList(list)) {
        const Number place(index);
        if (place.value >= 0) places.push_back(static_cast<std::size_t>(place.value));
    }
    return places;
}

/// Whether two numbers differ by no more than the digits that a document leaves out.
bool AreAlike(double one, double other) {
    constexpr double kLeftOut = 4e-15;
    return std::fabs(one - other) <= kLeftOut * std::max(std::fabs(one), std::fabs(other));
}

std::string NameOf(const ExplainedTest& test, const std::vector<std::size_t>& places) {
    const Column& column = *test.view.columns.front();
    std::vector<std::string> names;
    for (const std::size_t place : places) {
        if (place < column.categories.size()) names.push_back(ShownCategory(column, column.categories[place]));
    }
    return names.empty() ? "the others" : JoinList(names, " or ");
}

}  // namespace

double InAllDigits(const std::string& written, std::initializer_list<double> candidates) {
    for (const double candidate : candidates) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "%.15g", candidate);
        if (written == text.data()) return candidate;
    }
    return Number(written).value;
}

ClassesOfField ClassesOf(const ExplainedTest& test, CutItself cutItself) {
    constexpr std::size_t kFirstClass = 1;
    constexpr std::size_t kSecondClass = 2;
    ClassesOfField classes;
    const bool hasCut = test.view.result->conditionKey.find("CutPoint") != std::string::npos;
    const double cut = hasCut ? Number(test.Parameter(kFirstClass)).value : 0;
    const std::vector<std::size_t> places = PlacesIn(test.Parameter(kFirstClass));
    const CompleteCases& cases = test.view.cases;
    for (std::size_t row = 0; row < cases.columns.front().size(); ++row) {
        const double value = cases.columns.front()[row];
        const bool isCut = hasCut && AreAlike(value, cut);
        const bool isFirst = !hasCut ? std::ranges::find(places, test.CategoryOf(0, value)) != places.end()
                             : isCut ? cutItself == CutItself::kIsFirst
                                     : value < cut;
        classes.areFirst.push_back(isFirst);
        (isFirst ? classes.first : classes.second) += cases.WeightAt(row);
    }
    if (hasCut) {
        const bool isUpTo = cutItself == CutItself::kIsFirst;
        classes.firstName = (isUpTo ? "up to " : "below ") + test.Parameter(kFirstClass);
        classes.secondName = (isUpTo ? "above " : "from ") + test.Parameter(kFirstClass);
    } else {
        classes.firstName = NameOf(test, places);
        classes.secondName = NameOf(test, PlacesIn(test.Parameter(kSecondClass)));
    }
    return classes;
}

}  // namespace tarn
