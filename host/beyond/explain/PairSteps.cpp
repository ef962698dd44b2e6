#include "host/beyond/explain/PairSteps.h"

#include <algorithm>
#include <cmath>

#include "host/beyond/NamePlaces.h"
#include "host/beyond/NormalTail.h"
#include "host/beyond/explain/RankBlocks.h"

namespace tarn {

namespace {

void Compare(StepWriter& steps, const PairComparison& document, const WorkedPair& ours, double adjusted, double pairs) {
    const std::string name = document.first + " - " + document.second;
    if (ours.isTestable == document.p.empty()) {
        return steps.TellOther(
            name + (ours.isTestable ? " has numbers here and none" : " has no numbers here and some") + " there");
    }
    const auto compare = [&](const char* what, double value, const Number& theirs, double of) {
        if (!theirs.empty() && !steps.Agree(value, theirs.value, of)) {
            steps.TellOther(name + ", " + what, value, theirs.value);
        }
    };
    if (!ours.isTestable) return;
    compare("statistic", ours.statistic, document.statistic, ours.size);
    if (ours.standardError) {
        compare("SE", *ours.standardError, document.standardError, 0);
        compare("z", ours.z, document.standardized, ours.size / *ours.standardError);
    }
    compare("p", ours.p, document.p, 0);
    if (!document.adjustedP.empty() && !steps.AgreeAdjusted(adjusted, document.adjustedP.value, pairs)) {
        steps.TellOther(name + ", p adjusted", adjusted, document.adjustedP.value);
    }
}

}  // namespace

void AddPairs(const ExplainedTest& test, const PairRule& rule) {
    const std::vector<PairComparison>& pairs = test.Reading().pairs;
    if (pairs.empty()) return;
    const NamePlaces places(test.view.names);
    const auto count = static_cast<double>(pairs.size());
    std::vector<std::vector<std::string>> rows;
    for (const PairComparison& pair : pairs) {
        const std::size_t first = places.Of(pair.first);
        const std::size_t second = places.Of(pair.second);
        if (std::max(first, second) >= test.view.names.size()) continue;
        const WorkedPair ours = rule.of(first, second);
        const double adjusted = std::min(1.0, ours.p * count);
        Compare(test.steps, pair, ours, adjusted, count);
        std::vector<std::string>& row = rows.emplace_back(ours.cells);
        row.insert(row.begin(), pair.first + " - " + pair.second);
        row.push_back(ours.isTestable ? ShortText(ours.p) : "");
        row.push_back(ours.isTestable ? ShortText(adjusted) : "");
    }
    std::vector<ExplanationTable::Column> columns = rule.columns;
    columns.insert(columns.begin(), {"pair", true});
    columns.insert(columns.end(), {{"p"}, {"p adjusted"}});
    ExplanationTable& table = test.steps.Comparison(
        rule.words + ", adjusted: p times the number of pairs, " + CalculatorText(count) + ", at most 1", columns);
    AddRows(table, rows.size(), [&](std::size_t row) { return rows[row]; });
    test.steps.TellCompared("all those of the pairs");
}

void AddPairTable(const ExplainedTest& test, const PairValues& values) {
    const auto compare = [&](std::size_t first, std::size_t second) {
        WorkedPair pair;
        pair.statistic = values.ofSample[first] - values.ofSample[second];
        pair.size = std::max(std::fabs(values.ofSample[first]), std::fabs(values.ofSample[second]));
        pair.standardError = values.standardError(first, second);
        pair.z = pair.statistic / *pair.standardError;
        pair.p = NormalTail(pair.z, Alternative::kTwoSided);
        pair.cells = {ShortText(pair.statistic), ShortText(*pair.standardError), ShortText(pair.z)};
        return pair;
    };
    AddPairs(test, {"Pairs: the " + values.name +
                        " of the first less that of the second, z = difference / SE, p = 2 * P(N >= |z|)",
                    {{"difference"}, {"SE"}, {"z"}},
                    compare});
}

}  // namespace tarn
