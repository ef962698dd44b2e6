#include "host/report/Scales.h"

#include <string>

#include "host/TextList.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

Scale OrderOf(const ResultField& field) {
    Scale scale{field.name, {}, {}};
    for (const ResultCategory& category : field.categories) scale.categories.push_back(category.Shown());
    return scale;
}

/// Numbers stand for themselves, texts for their positions from 0.
Scale ScoresOf(const ResultField& field) {
    Scale scale = OrderOf(field);
    for (std::size_t i = 0; i < field.categories.size(); ++i) {
        scale.scores.push_back(field.dataType == "string" ? std::to_string(i) : field.categories[i].value);
    }
    return scale;
}

}  // namespace

std::vector<Scale> ScalesOf(const TestResult& test, const ResultDocument& document) {
    std::vector<Scale> scales;
    const auto fieldAt = [&](std::size_t position) {
        return position < test.parameters.size() ? document.FieldAt(test.parameters[position]) : nullptr;
    };
    for (const std::string& index : test.ordinalAsNumbers) {
        if (const ResultField* const field = document.FieldAt(index)) scales.push_back(ScoresOf(*field));
    }
    if (test.name == Tests::kJonckheereTerpstra.resultName) {
        if (const ResultField* const group = fieldAt(1)) scales.push_back(OrderOf(*group));
    }
    if (test.name == Tests::kMarginalHomogeneity.resultName) {
        // The categories of the second field are matched with those of the first, whose scores they take.
        if (const ResultField* const field = fieldAt(0)) scales.push_back(ScoresOf(*field));
    }
    return scales;
}

std::string OrderText(const Scale& scale) {
    constexpr std::size_t kMostShown = 12;
    constexpr std::size_t kShownOfMany = 5;
    const bool hasScores = !scale.scores.empty();
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < scale.categories.size(); ++i) {
        if (scale.categories.size() > kMostShown && i == kShownOfMany) {
            parts.emplace_back("...");
            i = scale.categories.size() - 1;
        }
        parts.push_back(scale.categories[i] + (hasScores ? " " + ShortNumber(scale.scores[i]) : ""));
    }
    return JoinList(parts, hasScores ? ", " : " < ");
}

}  // namespace tarn
