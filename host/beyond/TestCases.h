#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/beyond/AscendingSample.h"
#include "host/beyond/TieBlocks.h"
#include "host/table/Table.h"
#include "machine/WorkShare.h"

namespace tarn {

/// Which records a test sees, besides those that its own fields leave it.
struct CaseRule {
    std::vector<int> listwise =
        {};  ///< columns that a record has to have all of; empty where only the test's own count
    /// Of each record whether it misses any of them, worked out once for all of many tests; empty: each test asks.
    std::vector<char> isLeftOut = {};
};

/// The cases of a test by groups, in the order of the group's categories; groups without a case are left out. Values
/// stand as they are until `TieTogether`.
struct GroupedCases {
    std::vector<std::string> names;  ///< as a reader is shown them
    std::vector<AscendingSample> samples;
    std::vector<double> missing;  ///< cases of the group that miss the value

    double Size() const;
};

/// The cases of a test of one field or of several fields, row by row: those that have all of them. Moved, never copied.
struct CompleteCases {
    CompleteCases() = default;
    CompleteCases(CompleteCases&&) = default;
    CompleteCases& operator=(CompleteCases&&) = default;

    /// A field each: the table's own cells where all of them are cases, which have to outlive this, else `kept`.
    std::vector<std::span<const double>> columns;
    std::vector<std::vector<double>> kept;
    std::vector<double> weights;  ///< of the rows; empty where each is 1
    std::vector<double> missing;  ///< cases that miss the field
    double size = 0;

    double WeightAt(std::size_t row) const { return weights.empty() ? 1.0 : weights[row]; }
};

/// A categorical field counts by the numbers of its categories, or by their positions where they are words. Weights are
/// rounded to whole numbers, as on the way of a request to the engine; a record whose weight isn't above 0 is no case.
GroupedCases CasesByGroup(const Table& table, int field, int group, const CaseRule& rule, const WorkShare& work);
CompleteCases CasesOf(const Table& table, const std::vector<int>& fields, const CaseRule& rule);

/// Values in ascending order; `weights` may be empty.
AscendingSample Ascending(std::vector<double> values, const std::vector<double>& weights);
AscendingSample AscendingCopy(std::span<const double> values, const std::vector<double>& weights);
/// The differences of two columns of one length in ascending order.
AscendingSample AscendingDifferences(std::span<const double> first, std::span<const double> second,
                                     const std::vector<double>& weights);

/// Makes values equal that count as tied among all samples: those that differ by less than 1e-14 from the first one of
/// their run, as the tests rank them.
void TieTogether(std::vector<AscendingSample>& samples);

/// The same of the magnitudes of differences, which keep their signs.
void TieMagnitudes(AscendingSample& differences);

/// The same cases as blocks of ties.
TieBlocks BlocksOf(const std::vector<AscendingSample>& samples);

/// How many cases lie above 0 and below it.
struct SignCounts {
    double positive = 0;
    double negative = 0;
};
/// Of differences in any order, or of those of two columns of one length; `weights` may be empty.
SignCounts CountSigns(std::span<const double> differences, const std::vector<double>& weights);
SignCounts CountSigns(std::span<const double> first, std::span<const double> second,
                      const std::vector<double>& weights);

/// Whether any value is infinite or no number, for which nothing here is defined.
bool HasUnordered(const AscendingSample& sample);

}  // namespace tarn
