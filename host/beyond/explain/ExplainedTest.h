#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/beyond/TestView.h"
#include "host/beyond/explain/Explanations.h"
#include "host/beyond/explain/StepWriter.h"

namespace tarn {

/// A test whose explanation is in the making. All of it is borrowed.
struct ExplainedTest {
    const TestView& view;
    const ExplanationSource& source;
    StepWriter& steps;

    const TestReading& Reading() const { return *view.reading; }
    /// The set of statistics on which the decision rests; an empty one for an estimate.
    const StatisticSet& Set() const;
    /// A number that the document has beside the statistics; "" for none.
    Number FigureOf(std::string_view key) const;
    /// A parameter of the test's condition; "" for none.
    std::string Parameter(std::size_t place) const;
    bool IsExtended() const { return view.document->arithmetic != ArithmeticMode::kAsDefined; }
    /// The place of a cell's value among the categories of a column of the test.
    std::size_t CategoryOf(std::size_t column, double value) const;
    std::string ShownValue(std::size_t column, double value) const;
};

/// The values of both groups as they are, before any count as tied: some tests know equal values alone.
std::vector<AscendingSample> EqualOnly(const ExplainedTest& test);

}  // namespace tarn
