#include "host/beyond/Conclusions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>
#include <vector>

#include "host/NumberText.h"
#include "host/TextList.h"
#include "host/report/SupplementText.h"

namespace tarn {

namespace {

/// The words for the sign of a test's standardized statistic, as keys of labels: where it is above 0, and below.
struct SignWords {
    const TestFacts* test;
    const char* above;
    const char* below;
};
constexpr std::array kSignWords{
    SignWords{&Tests::kMannWhitney, "tendLarger", "tendSmaller"},
    SignWords{&Tests::kSign, "tendLarger", "tendSmaller"},
    SignWords{&Tests::kWilcoxonPairs, "above", "below"},
    SignWords{&Tests::kWilcoxonOneSample, "above", "below"},
    SignWords{&Tests::kMarginalHomogeneity, "higher", "lower"},
    SignWords{&Tests::kJonckheereTerpstra, "rise", "fall"},
};

std::string WordOf(const TestView& view, const MessageCatalogue& texts) {
    const auto words = std::ranges::find(kSignWords, view.facts, &SignWords::test);
    const StatisticSet* const set = view.reading->Leading();
    if (words == kSignWords.end() || set == nullptr) return "";
    return texts.Label(set->standardized.value < 0 ? words->below : words->above);
}

/// "5 %"
std::string LevelText(double level) {
    constexpr double kPercent = 100;
    return FewDigits(Number(ExactText(std::round(level * kPercent * 1e6) / 1e6))) + " %";
}

/// Whether the hypothesis is rejected; nothing where that isn't decided.
std::optional<bool> IsRejected(const TestView& view, const SuppliedPValue* chosen, double level) {
    if (chosen != nullptr) {
        if (std::isnan(chosen->value.value)) return std::nullopt;
        return chosen->value.value < level;
    }
    if (view.reading->decision == "reject") return true;
    if (view.reading->decision == "retain") return false;
    return std::nullopt;
}

std::pair<std::string, std::string> SamplesOf(const TestView& view) {
    const Direction& direction = view.reading->direction;
    if (!direction.IsEmpty()) return {direction.first, direction.second};
    if (view.names.size() == 2) return {view.names[0], view.names[1]};
    return {};
}

}  // namespace

std::string ConclusionOf(const TestView& view, const SuppliedPValue* chosen, double level,
                         const MessageCatalogue& texts) {
    const TestTexts* const about = texts.Test(view.reading->name);
    const std::optional<bool> isRejected = IsRejected(view, chosen, level);
    if (about == nullptr || view.facts->IsEstimate() || !isRejected) return "";
    if (chosen != nullptr && !chosen->claim.empty()) {
        const std::vector<std::string> parameters{LevelText(level), chosen->claim};
        return FillIn(texts.Label(*isRejected ? "claimFound" : "claimNotFound"), {&parameters});
    }
    const auto [first, second] = SamplesOf(view);
    const std::vector<std::string> parameters{
        LevelText(level), first, second, WordOf(view, texts), JoinList(view.reading->fields), view.reading->group};
    return FillIn(*isRejected ? about->found : about->notFound, {&parameters});
}

}  // namespace tarn
