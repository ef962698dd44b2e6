#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/beyond/Alternative.h"
#include "host/beyond/RankTests.h"
#include "host/beyond/TestView.h"
#include "host/beyond/ZeroMethod.h"
#include "host/beyond/exact/ExactTails.h"
#include "host/beyond/exact/MonteCarlo.h"
#include "machine/WorkShare.h"

namespace tarn {

/// How a significance is to be made.
struct Choices {
    Alternative alternative = Alternative::kTwoSided;
    bool continuity = false;
    ZeroMethod zeros = ZeroMethod::kDrop;
    double shift = 0;  ///< by which the first sample is expected to lie above the second
    KolmogorovForm kolmogorov = KolmogorovForm::kLimit;
    double probability = 0.5;  ///< of the first class
    /// The significances that other systems show, even where a better one is at hand: as if there were no ties, and as
    /// if the parameters of a distribution weren't those of the sample.
    bool ignoresTies = false;
    bool takesParametersAsGiven = false;
    /// With more cases than that no exact significance is thought of whose cost grows with them.
    double mostCases = 1e4;
    std::vector<std::string> success = {};  ///< categories that count as successes; empty for those of the data
};

/// The ways in which significances of one test can be made from its cases; each is empty where the test has none. What
/// they need of the cases is made when the first of them is called.
struct SignificanceWays {
    /// Additions that the exact one takes, of which a machine makes about 1e9 a second.
    std::function<double()> cost;
    std::function<std::optional<ExactTails>()> exact;
    std::function<std::optional<MonteCarloTails>(const MonteCarloPlan&, const WorkShare&)> monteCarlo;
    std::function<ChosenTest()> asymptotic;
    bool hasAlternative = false;  ///< whether its significances have sides
    bool hasZeros = false;
    bool hasShift = false;
    const char* exactBy = "givenTies";   ///< what the exact one goes through, as the key of a label
    const char* asymptoticBy = nullptr;  ///< the key of the limit, where it isn't the normal approximation
    /// What the alternatives say, as keys of labels: "larger" and "smaller", of the first sample and the second.
    const char* greater = "larger";
    const char* less = "smaller";
};

/// The samples of two groups with a shift taken from the first one, and the differences of a pair less a shift: what a
/// test with that shift ranks. Differences from a hypothesized median stay as they are.
std::vector<AscendingSample> ShiftedSamples(const TestView& view, double shift);
AscendingSample ShiftedDifferences(const TestView& view, double shift);

/// Whether the document's normal approximation of the test has a correction for continuity.
bool CorrectsByItself(const TestView& view);

/// Those of the test of a view, which is borrowed.
SignificanceWays WaysOf(const TestView& view, const Choices& choices);

/// The significance of one alternative.
double TailOf(const ExactTails& tails, Alternative alternative);
const Estimate& TailOf(const MonteCarloTails& tails, Alternative alternative);

}  // namespace tarn
