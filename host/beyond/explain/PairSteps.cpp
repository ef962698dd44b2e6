#include "host/beyond/explain/PairSteps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "host/beyond/NamePlaces.h"
#include "host/beyond/NormalTail.h"
#include "host/beyond/explain/RankBlocks.h"

namespace tarn {

namespace {

/// Six numbers are to fit a line.
std::string ShortText(double number) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.5g", number);
    return text.data();
}

/// A pair worked out from the cases.
struct ComparedPair {
    double first = 0;
    double second = 0;
    double standardError = 0;
    double p = 0;
    double adjusted = 0;

    double Difference() const { return first - second; }
    double Z() const { return Difference() / standardError; }
};

void Compare(StepWriter& steps, const PairComparison& document, const ComparedPair& ours) {
    const std::string name = document.first + " - " + document.second;
    const double size = std::max(std::fabs(ours.first), std::fabs(ours.second));
    const auto compare = [&](const char* what, double value, const Number& theirs, double of) {
        if (!theirs.empty() && !steps.Agree(value, theirs.value, of)) {
            steps.TellOther(name + ", " + what, value, theirs.value);
        }
    };
    compare("difference", ours.Difference(), document.statistic, size);
    compare("SE", ours.standardError, document.standardError, 0);
    compare("z", ours.Z(), document.standardized, size / ours.standardError);
    compare("p", ours.p, document.p, 0);
    compare("p adjusted", ours.adjusted, document.adjustedP, 0);
}

}  // namespace

void AddPairTable(const ExplainedTest& test, const PairValues& values) {
    const std::vector<PairComparison>& pairs = test.Reading().pairs;
    const NamePlaces places(test.view.names);
    const auto count = static_cast<double>(pairs.size());
    std::vector<std::vector<std::string>> rows;
    for (const PairComparison& pair : pairs) {
        const std::size_t first = places.Of(pair.first);
        const std::size_t second = places.Of(pair.second);
        if (std::max(first, second) >= values.ofSample.size()) continue;
        ComparedPair ours{values.ofSample[first], values.ofSample[second], values.standardError(first, second)};
        ours.p = NormalTail(ours.Z(), Alternative::kTwoSided);
        ours.adjusted = std::min(1.0, ours.p * count);
        Compare(test.steps, pair, ours);
        std::vector<std::string>& row = rows.emplace_back();
        row.push_back(pair.first + " - " + pair.second);
        for (const double number : {ours.Difference(), ours.standardError, ours.Z(), ours.p, ours.adjusted}) {
            row.push_back(ShortText(number));
        }
    }
    ExplanationTable& table =
        test.steps.Pairs("Pairs: the " + values.name +
                             " of the first less that of the second, z = difference / SE, p = 2 * P(N >= |z|), " +
                             "adjusted: p times the number of pairs, " + CalculatorText(count) + ", at most 1",
                         {{"pair", true}, {"difference"}, {"SE"}, {"z"}, {"p"}, {"p adjusted"}});
    AddRows(table, rows.size(), [&](std::size_t row) { return rows[row]; });
}

void NoteSubsets(const ExplainedTest& test) {
    if (!test.Reading().subsets.empty()) test.steps.Note("The homogeneous subsets are not explained.");
}

void NotePairs(const ExplainedTest& test) {
    if (!test.Reading().pairs.empty()) test.steps.Note("The pairs are not explained.");
}

}  // namespace tarn
