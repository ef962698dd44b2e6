#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/beyond/TestCases.h"
#include "host/report/ResultReading.h"
#include "host/table/Table.h"
#include "machine/WorkShare.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

/// A test as the figures beside it are made from: what its document says, and the cases that it had.
struct TestView {
    const TestReading* reading = nullptr;  ///< borrowed, as are the next two
    const TestResult* result = nullptr;
    const ResultDocument* document = nullptr;
    const TestFacts* facts = nullptr;
    std::vector<const Column*> columns;  ///< of its fields, borrowed from the table
    const Column* groupColumn = nullptr;
    /// The groups that have cases, in the order of their categories, or the fields in that of the request.
    std::vector<std::string> names;
    /// A field with many rows whose values no test needs in their order has those of its middle alone.
    std::vector<AscendingSample> samples;
    std::vector<double> missing;
    bool areNumbers = true;  ///< whether the values can be ordered, so that they have a median
    CompleteCases cases;     ///< of a test of fields, row by row; empty for one of groups
    /// Of a pair, in the direction of the test's signed numbers; of one sample with a hypothesized median, the values
    /// less that.
    /// Those of a sign test are as the samples.
    std::optional<AscendingSample> differences;
    SignCounts signs;          ///< of these differences, in a sign test
    double confidence = 0.95;  ///< as a share

    bool Is(const TestFacts& test) const { return facts == &test; }
    bool HasTwoGroups() const { return groupColumn != nullptr && samples.size() == 2; }
    double Size() const;
};

/// What a view is made from.
struct ViewSource {
    const Table& table;
    const CaseRule& rule;
    const WorkShare& work;
    bool keepsAll = false;  ///< whether all values of fields are wanted in their order however many they are
};

/// The view of a test of a document that was made from the table; none for a test that ended in an error, or whose
/// values aren't all finite.
std::optional<TestView> ViewOf(const TestReading& reading, const ResultReading& result, const ViewSource& source);

/// Differences in ascending order, tied where their magnitudes count as tied.
AscendingSample DifferencesOf(std::vector<double> differences, const std::vector<double>& weights);

}  // namespace tarn
