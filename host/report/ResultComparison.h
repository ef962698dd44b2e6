#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/Json.h"

namespace tarn {

/// Something that is another in the second of two results, as texts; "" where it isn't there.
struct ChangedFact {
    std::string what;
    std::string before;
    std::string after;
};

/// A number that is another, or is there in one of the results alone (null in the other).
struct ChangedNumber {
    std::string of;     ///< the test with its fields, behind its part where there are parts
    std::string place;  ///< within the test, like "statistics[0].p_values[0].value"
    Json before;
    Json after;
};

/// In what two results in JSON differ. Texts for a reader don't count, since another version may word them otherwise.
struct ResultComparison {
    std::vector<ChangedFact> program;  ///< version, commit, libraries: they may differ in results that are the same
    std::vector<ChangedFact> data;     ///< what the tests saw
    std::vector<ChangedFact> manner;   ///< arithmetic, levels, missing values
    std::vector<ChangedFact> tests;    ///< tests and parts that one of the results has alone
    std::size_t numberCount = 0;       ///< numbers that were compared
    std::vector<ChangedNumber> numbers;

    /// Whether everything but the program is the same, numbers to the last digit.
    bool IsSame() const { return data.empty() && manner.empty() && tests.empty() && numbers.empty(); }
};

/// Compares two results of the format "tarn-result-2", or "tarn-parts-1", that have records. Whatever isn't there as
/// the format has it counts as absent.
ResultComparison CompareResults(const Json& before, const Json& after);

/// A comparison for a reader: "same to the last digit", or what changed; of many numbers the first ones.
std::string ComparisonText(const ResultComparison& comparison);

/// The same in JSON, with all of them: the format "tarn-comparison-1".
Json ComparisonJson(const ResultComparison& comparison);

}  // namespace tarn
