#include "host/engine/KnownValues.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "runtime/common/DecimalNumber.h"

namespace tarn {

namespace {

using Words = std::span<const std::string_view>;

constexpr std::array<std::string_view, 2> kMissingTreatments{"analysis", "listwise"};
constexpr std::array<std::string_view, 2> kUserMissing{"exclude", "include"};
constexpr std::array<std::string_view, 3> kComparisons{"none", "pairWise", "stepWise"};
constexpr std::array<std::string_view, 2> kCategoricalClasses{"getFromData", "givenCategoryList"};
constexpr std::array<std::string_view, 5> kContinuousClasses{"sampleMidPoint", "givenCutPoint", "cutPointMedian",
                                                             "cutPointMean", "cutPointValue"};
constexpr std::array<std::string_view, 4> kClasses{"getFromData", "givenCategoryList", "givenExpectedValue",
                                                   "twoCategoryLists"};
constexpr std::array<std::string_view, 2> kHypotheses{"orderSmallestToLargest", "orderLargestToSmallest"};

struct WordKey {
    std::string_view key;
    Words words;
};
const std::array kWordKeys{
    WordKey{"missingTreatment", kMissingTreatments},
    WordKey{"userMissing", kUserMissing},
    WordKey{"typeOfMultipleComparison", kComparisons},
    WordKey{"catVarClassFormation", kCategoricalClasses},
    WordKey{"contVarClassFormation", kContinuousClasses},
    WordKey{"classFormation", kClasses},
    WordKey{"orderOfHypotheses", kHypotheses},
};

/// A number that lies between two others, both excluded.
struct RangeKey {
    std::string_view key;
    KeyForm form;
    double above;
    double below;
    const char* expected;
};
constexpr std::array kRangeKeys{
    RangeKey{"sigLevel", KeyForm::kBoth, 0, 1, "a share between 0 and 1, like 0.05"},
    RangeKey{"confidenceLevel", KeyForm::kPlan, 0, 1, "a share between 0 and 1, like 0.95"},
    RangeKey{"confidenceLevel", KeyForm::kRequest, 1, 100, "percent between 1 and 100, like 95"},
    RangeKey{"testProbability", KeyForm::kBoth, 0, 1, "a share between 0 and 1"},
};

std::optional<double> NumberOf(const Json& value) {
    if (value.is_number()) return value.get<double>();
    return value.is_string() ? ParseDecimal(value.Text()) : std::nullopt;
}

std::string WhyNotOneOf(const std::string& word, Words words) {
    if (std::ranges::find(words, word) != words.end()) return "";
    const std::string near = DidYouMean(NearestNames(word, words));
    return Quoted(word) + (near.empty() ? "; expected " + Alternatives(words) : near);
}

}  // namespace

std::string WhyNotMeant(std::string_view key, const Json& value, KeyForm form) {
    for (const WordKey& words : kWordKeys) {
        if (words.key == key && value.is_string()) return WhyNotOneOf(value.Text(), words.words);
    }
    for (const RangeKey& range : kRangeKeys) {
        if (range.key != key || (range.form != KeyForm::kBoth && range.form != form)) continue;
        const std::optional<double> number = NumberOf(value);
        if (number && !(*number > range.above && *number < range.below)) {
            return value.dump() + "; expected " + range.expected;
        }
    }
    return "";
}

}  // namespace tarn
