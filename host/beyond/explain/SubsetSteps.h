#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

/// Some of the samples tested among themselves.
struct WorkedSubset {
    std::vector<std::string> cells;  ///< what stands between the names and p
    double statistic = 0;
    double p = 0;
    bool isTestable = true;  ///< else there is no number
};

/// How the homogeneous subsets of a test are searched for: the runs of samples in the order of some value that the test
/// doesn't tell apart, from the longest ones downwards.
struct SubsetRule {
    std::string words;                              ///< how a subset is tested: "H of the ranks among its groups"
    std::vector<ExplanationTable::Column> columns;  ///< of the cells of a subset
    std::string orderedBy;            ///< "mean rank"; "" where the samples stand in an order of their own
    std::vector<double> orderValues;  ///< of the view's samples; empty then
    /// Of places among the view's samples, in the order of the search.
    std::function<WorkedSubset(const std::vector<std::size_t>&)> of;
    bool isByPlainP = false;       ///< whether p decides and not p adjusted
    bool keepsLastSample = false;  ///< whether a subset of which one sample is left is found
    bool endsStep = true;          ///< whether what is homogeneous, but for one from the first sample on, ends its step
    bool skipsInside = false;      ///< whether what lies inside a subset that was found is tested no more
};

/// A line for each subset that the search tests, in its order, and what was decided. Each number of the document's
/// subsets is held against it, and whether the search finds the same ones. Nothing where no subsets were asked for.
void AddSubsets(const ExplainedTest& test, const SubsetRule& rule);

/// "1; 2; 3"; of many texts the first ones and the last one.
std::string FewText(const std::vector<std::string>& texts);

/// p of one of m out of k samples, adjusted by Ryan (1960), Einot and Gabriel (1975) and Welsch (1977): 1 - (1 - p)^(k
/// / m), and p itself for m of k - 1 and more.
double AdjustedForSubset(double p, std::size_t size, std::size_t sampleCount);

}  // namespace tarn
