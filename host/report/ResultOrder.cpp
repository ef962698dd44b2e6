#include "host/report/ResultOrder.h"
#include "vocabulary/TestFacts.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace tarn {

namespace {

template <typename Range, typename Value, typename Projection = std::identity>
std::size_t PositionIn(const Range& range, const Value& value, Projection projection = {}) {
    return static_cast<std::size_t>(std::ranges::find(range, value, projection) - std::ranges::begin(range));
}

/// For each family the places of its fields, so that no test goes through them all.
using FieldPlaces = std::vector<std::unordered_map<std::string_view, std::size_t>>;

FieldPlaces PlacesOfFields(const AskedOrder& order) {
    FieldPlaces places;
    for (const AskedOrder::Family& family : order.families) {
        places.emplace_back();
        for (const std::string& field : family.fields) places.back().emplace(field, places.back().size());
    }
    return places;
}

/// The places of a test's family, of its field in it, and of the test itself.
std::tuple<std::size_t, std::size_t, std::size_t> PlaceOf(const TestResult& test, const ResultDocument& document,
                                                          const AskedOrder& order, const FieldPlaces& fieldPlaces) {
    const std::size_t family = PositionIn(order.families, test.classification, &AskedOrder::Family::classification);
    std::size_t field = 0;
    // A test of related fields takes all of them at once.
    if (family < order.families.size() && test.classification != "Related_Samples" && !test.parameters.empty()) {
        const ResultField* const tested = document.FieldAt(test.parameters.front());
        if (tested != nullptr) {
            const auto place = fieldPlaces[family].find(tested->name);
            field = place == fieldPlaces[family].end() ? fieldPlaces[family].size() : place->second;
        }
    }
    // The intervals of a proportion come with the binomial test and follow it.
    const bool isOfBinomial = test.name == Tests::kProportionIntervals.resultName;
    return {family, field, PositionIn(order.tests, isOfBinomial ? Tests::kBinomial.resultName : test.name)};
}

}  // namespace

void PutInOrder(ResultDocument& document, const AskedOrder& order) {
    std::vector<std::pair<std::tuple<std::size_t, std::size_t, std::size_t>, std::size_t>> places;
    const FieldPlaces fieldPlaces = PlacesOfFields(order);
    for (std::size_t i = 0; i < document.tests.size(); ++i) {
        places.emplace_back(PlaceOf(document.tests[i], document, order, fieldPlaces), i);
    }
    std::ranges::sort(places);
    std::vector<TestResult> sorted;
    sorted.reserve(places.size());
    for (const auto& [place, position] : places) sorted.push_back(std::move(document.tests[position]));
    document.tests = std::move(sorted);
}

}  // namespace tarn
