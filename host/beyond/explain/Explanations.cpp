#include "host/beyond/explain/Explanations.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "host/beyond/TestView.h"
#include "host/beyond/explain/ExplainedTest.h"
#include "host/beyond/explain/IndependentExplanations.h"
#include "host/beyond/explain/OneSampleExplanations.h"
#include "host/beyond/explain/RelatedExplanations.h"

namespace tarn {

namespace {

struct ExplanationRow {
    const TestFacts* test;
    void (*explain)(const ExplainedTest&);
};
constexpr std::array kExplanations{
    ExplanationRow{&Tests::kKolmogorovSmirnov, ExplainKolmogorovSmirnov},
    ExplanationRow{&Tests::kBinomial, ExplainBinomial},
    ExplanationRow{&Tests::kProportionIntervals, ExplainProportionIntervals},
    ExplanationRow{&Tests::kChiSquare, ExplainChiSquare},
    ExplanationRow{&Tests::kRuns, ExplainRuns},
    ExplanationRow{&Tests::kWilcoxonOneSample, ExplainWilcoxonOneSample},
    ExplanationRow{&Tests::kSign, ExplainSign},
    ExplanationRow{&Tests::kWilcoxonPairs, ExplainWilcoxonPairs},
    ExplanationRow{&Tests::kHodgesLehmannPairs, ExplainHodgesLehmannPairs},
    ExplanationRow{&Tests::kFriedman, ExplainFriedman},
    ExplanationRow{&Tests::kKendall, ExplainKendall},
    ExplanationRow{&Tests::kMcNemar, ExplainMcNemar},
    ExplanationRow{&Tests::kCochran, ExplainCochran},
    ExplanationRow{&Tests::kMarginalHomogeneity, ExplainMarginalHomogeneity},
    ExplanationRow{&Tests::kMannWhitney, ExplainMannWhitney},
    ExplanationRow{&Tests::kKolmogorovSmirnovTwoSample, ExplainKolmogorovSmirnovTwoSample},
    ExplanationRow{&Tests::kWaldWolfowitz, ExplainWaldWolfowitz},
    ExplanationRow{&Tests::kMoses, ExplainMoses},
    ExplanationRow{&Tests::kHodgesLehmannGroups, ExplainHodgesLehmannGroups},
    ExplanationRow{&Tests::kKruskalWallis, ExplainKruskalWallis},
    ExplanationRow{&Tests::kJonckheereTerpstra, ExplainJonckheereTerpstra},
    ExplanationRow{&Tests::kMedian, ExplainMedian},
};
static_assert(kExplanations.size() == std::size(Tests::kAll), "each test has an explanation");

/// Whether there is what a test of its kind begins with: numbers of a result and cases, of both groups where there are
/// two.
bool CanBeExplained(const TestView& view) {
    const bool hasNumbers = !view.reading->statistics.empty() || !view.reading->intervals.empty();
    const auto isEmpty = [](const AscendingSample& sample) { return sample.values.empty(); };
    return view.result != nullptr && hasNumbers && !view.samples.empty() && std::ranges::none_of(view.samples, isEmpty);
}

}  // namespace

std::optional<TestExplanation> ExplanationOf(const TestReading& reading, const ResultReading& result,
                                             const ExplanationSource& source) {
    constexpr bool kKeepsRows = true;
    const std::optional<TestView> view = ViewOf(reading, result, {source.table, source.rule, source.work, kKeepsRows});
    if (!view || !CanBeExplained(*view)) return std::nullopt;
    StepWriter steps(result.document.arithmetic);
    const ExplainedTest test{*view, source, steps};
    for (const auto& [facts, explain] : kExplanations) {
        if (view->Is(*facts)) explain(test);
    }
    return steps.Finish();
}

}  // namespace tarn
