#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/Json.h"
#include "host/TestNames.h"
#include "host/table/Table.h"
#include "host/table/TableLoader.h"

namespace tarn {

/// A category, by value or by label, and how frequent it is expected to be, in any scale.
struct ExpectedCategory {
    std::string category;
    double share = 0;
};

/// What a user asks of an analysis, in words of the command line.
struct AnalysisOptions {
    std::vector<std::string> oneSample;
    std::vector<std::string> related;
    std::vector<std::string> independent;
    std::string group;
    /// Names of tests; a family with none named is left to the automatic choice.
    std::vector<std::string> tests;
    std::string compare;  ///< "pairwise", "stepwise" or empty
    std::string against;  ///< a group or a field: of the pairs those with it alone; empty: all
    std::optional<double> testValue;
    std::optional<double> cutPoint;
    bool cutAtMean = false;  ///< in place of a cut point, for the runs test
    std::optional<double> probability;
    std::vector<std::string> success;        ///< categories of the first class, by value or by label
    std::vector<ExpectedCategory> expected;  ///< of the chi-square test; none: all alike
    std::vector<std::string> distributions;
    /// Parameters of the distributions; what isn't given is taken from the data.
    std::optional<double> mean;
    std::optional<double> standardDeviation;
    std::optional<double> minimum;
    std::optional<double> maximum;
    std::optional<double> outliers;
    bool descending = false;  ///< of the groups' order that the Jonckheere test expects
    double alpha = 0.05;      ///< a share up to 1, percent above it, as `confidence`
    double confidence = 95;
    bool listwise = false;
    bool includeUserMissing = false;
    std::string caseId;
    bool brief = false;      ///< statistics alone: no histograms, no boxes, no descriptives but those that a test needs
    bool asDefined = false;  ///< the engine's fixed widths, too; else it computes as wide as it needs to
    /// The orders that were given for categories; the table was read with them.
    std::vector<FieldOrder> orders;
    /// The families in the order in which their fields were named; those that are missing come last.
    std::vector<TestFamily> familyOrder;
};

/// The names that `distributions` may hold.
std::span<const std::string_view> DistributionNames();

/// Builds the request for the engine: every test of a family in order, and a last key behind them, so that no family
/// is passed over and every warning is issued. Where the engine's automatic choice would hand a field to a test that
/// can't take it, or a test would miss what only the table shows, the request names the test or the value itself.
/// Throws an `InputError` that says what to change, also for a category that no field has and for an order of words
/// that nobody gave.
Json BuildRequest(const AnalysisOptions& options, const Table& table);

}  // namespace tarn
