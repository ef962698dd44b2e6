#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

/// What the pairs of several samples are compared by, in the order of the view's samples.
struct PairValues {
    std::string name;  ///< "mean rank"
    std::vector<double> ofSample;
    std::function<double(std::size_t, std::size_t)> standardError;
};

/// A line for each pair that the document compares: the difference, its standard error, z, p = 2 P(N >= |z|) and p
/// times the number of pairs, each held against the document.
void AddPairTable(const ExplainedTest& test, const PairValues& values);

/// Says of subsets, and of pairs of another kind, that they are not explained.
void NoteSubsets(const ExplainedTest& test);
void NotePairs(const ExplainedTest& test);

}  // namespace tarn
