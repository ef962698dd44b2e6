#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

/// A pair of samples, worked out from their cases.
struct WorkedPair {
    std::vector<std::string> cells;  ///< what stands between the names and p
    double statistic = 0;
    double size = 0;                      ///< as of `StepWriter::Told`
    std::optional<double> standardError;  ///< none where p isn't that of a normal statistic
    double z = 0;                         ///< then
    double p = 0;
    bool isTestable = true;  ///< else there is no number
};

/// How the pairs of a test are compared.
struct PairRule {
    std::string words;                                       ///< the title of their table, up to how p is adjusted
    std::vector<ExplanationTable::Column> columns;           ///< of the cells of a pair
    std::function<WorkedPair(std::size_t, std::size_t)> of;  ///< of two places among the view's samples
};

/// A line for each pair that the document compares: its cells, p, and p times the number of pairs, each number held
/// against the document. Nothing where none is compared.
void AddPairs(const ExplainedTest& test, const PairRule& rule);

/// What the pairs of several samples are compared by where their difference is normal, in the order of the view's
/// samples: z = difference / SE, p = 2 P(N >= |z|).
struct PairValues {
    std::string name;  ///< "mean rank"
    std::vector<double> ofSample;
    std::function<double(std::size_t, std::size_t)> standardError;
};
void AddPairTable(const ExplainedTest& test, const PairValues& values);

}  // namespace tarn
