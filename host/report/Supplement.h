#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/report/Number.h"

namespace tarn {

/// What an analyst publishes of a test beside the numbers of its document. It is made from the columns of the run, so
/// that a stored document has none of it.

/// One of the groups or fields of a test.
struct SampleSummary {
    std::string name;
    Number n;        ///< cases that the test took
    Number missing;  ///< cases of the group, or of the table, that miss the value
    /// By linear interpolation between order statistics (type 7 of Hyndman and Fan 1996). None for a field of words.
    Number firstQuartile;
    Number median;
    Number thirdQuartile;
    Number medianLower;  ///< distribution-free interval of the median (Thompson 1936)
    Number medianUpper;
};

/// An effect size with its interval.
struct EffectSize {
    std::string key;    ///< stable: "probability-of-superiority"
    std::string label;  ///< for a reader, with the direction: "P(OJ > VC)"
    /// The two samples of a pair of several, in the direction of the effect; empty where it is that of the whole test.
    std::string first;
    std::string second;
    Number value;
    Number lower;  ///< none where the effect has no interval
    Number upper;
    std::string method;  ///< of the interval, by author and year; "" for none
};

/// A significance that the document doesn't have.
struct SuppliedPValue {
    std::string kind;         ///< "exact", "monte-carlo" or "asymptotic"
    std::string alternative;  ///< "two-sided", "less" or "greater"
    std::string claim;        ///< what is tested against, with the samples by their names: "OJ larger than VC"
    Number statistic;
    Number standardized;
    Number value;
    Number lower;  ///< of the interval of an estimated significance
    Number upper;
    std::string method;
};

/// Letters of a sample: two samples differ where they have none in common.
struct SampleLetters {
    std::string name;
    std::string letters;
};

struct Supplement {
    std::vector<SampleSummary> samples;
    std::vector<EffectSize> effects;
    std::vector<SuppliedPValue> pValues;
    /// The one by the user's choices, on which the conclusion rests; none where that is the document's.
    Number chosenP;
    /// Those of the pairs by the method that the user names, in the order of the pairs; empty where none is named.
    std::vector<Number> adjustedPairs;
    Number adjustedP;        ///< that of the test among all tests of the run, by the same method
    std::string adjustment;  ///< its title
    std::vector<SampleLetters> letters;
    std::string call;                  ///< of the other system whose numbers are asked for; "" for none
    std::vector<std::string> remarks;  ///< what was asked for and can't be had, as sentences
    std::string conclusion;            ///< one sentence that claims no more than the test does

    bool IsEmpty() const { return samples.empty() && effects.empty() && pValues.empty() && conclusion.empty(); }
};

}  // namespace tarn
