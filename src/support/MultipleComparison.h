#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/ResultElements.h"
#include "support/TestMessage.h"

/// What the tests of k samples share when, after a significant result, they compare the samples: all pairs, with
/// Bonferroni's factor (Dunn, 1961, Journal of the American Statistical Association 56, 52-64), or step by step, in
/// search of the homogeneous runs of samples in the order of some value (step-down procedure; the adjustment of a
/// subset's significance: Ryan, 1960, Psychological Bulletin 57, 318-328). A test supplies its statistic.

// ---- What each test does in its own way ----

/// Which significance says whether a subset is homogeneous. They differ at a significance that is not a number, too:
/// it makes a subset homogeneous by the first rule and not by the second.
enum class Decides {
    kAdjSig,  ///< not homogeneous if the level lies strictly above the adjusted one
    kSig      ///< homogeneous if the plain one is at or above the level
};
/// A candidate that has shrunk to one sample.
enum class LastSample {
    kIsFound,   ///< is taken like a homogeneous one
    kIsDropped  ///< leaves the list; its sample may end in no subset
};
/// The candidates behind a homogeneous one that does not begin with the first sample.
enum class Followers { kEndWithIt, kGoOn };
/// A candidate that lies inside a subset found before.
enum class Contained {
    kIsTested,  ///< and only not added
    kIsSkipped  ///< leaves the list untested
};
/// The samples that stand in no subset when the search is over. Each becomes a subset of one.
enum class LeftOver {
    kIsTidied,   ///< subsets inside others go, the rest is shown in the order of positions; writing a row warns
    kIsWarnedOf  ///< with a warning for each; nothing goes, and the order is that in which they were found
};
/// Where a table of samples and their order values names its two rows.
enum class Labels { kOnRows, kOnColumns };
/// Which tables of results have standard errors. Where they have none the two fields stay empty.
enum class Errors { kOfPairs, kOfBoth, kNone };

struct ComparisonRules {
    Decides decides;
    LastSample lastSample;
    Followers followers;
    Contained contained;
    LeftOver leftOver;
    Labels pairwiseLabels;
    Labels stepwiseLabels;
    Errors errors;
    const char* endOfLoneRow;  ///< behind the row of a single sample
};

/// The differences are part of the tests: documents depend on each, so none of them is to be evened out.
namespace ComparisonRulesOf {
using enum Decides;
using enum LastSample;
using enum Followers;
using enum Contained;
using enum LeftOver;
using enum Labels;
using enum Errors;
// clang-format off
inline constexpr ComparisonRules
    //                 decides  lastSample  followers   contained   leftOver     pairwise    stepwise    errors
    kFriedman       {kAdjSig, kIsFound,   kEndWithIt, kIsTested,  kIsTidied,   kOnRows,    kOnRows,    kOfPairs, ""},
    kKendallsW      {kAdjSig, kIsFound,   kEndWithIt, kIsTested,  kIsTidied,   kOnRows,    kOnRows,    kOfPairs, ""},
    kCochransQ      {kAdjSig, kIsDropped, kEndWithIt, kIsTested,  kIsWarnedOf, kOnColumns, kOnColumns, kOfPairs, ""},
    kJonckTer       {kAdjSig, kIsDropped, kEndWithIt, kIsTested,  kIsWarnedOf, kOnColumns, kOnColumns, kOfBoth,  ""},
    kKSMedian       {kAdjSig, kIsDropped, kEndWithIt, kIsTested,  kIsWarnedOf, kOnColumns, kOnColumns, kNone,    ""},
    kKruskalWOneWay {kSig,    kIsDropped, kGoOn,      kIsSkipped, kIsWarnedOf, kOnColumns, kOnRows,    kOfPairs, ";"};
// clang-format on
}  // namespace ComparisonRulesOf

// ---- Request ----

/// The codes of the warnings by which a comparison is refused.
struct RefusalCodes {
    long pairwise;
    long stepwise;
};

/// Which comparisons are asked for.
struct ComparisonRequest {
    bool pairwise = false;
    bool stepwise = false;

    /// Withdraws what is asked for; the warnings that say so, all pairs first.
    [[nodiscard]] std::vector<TestMessage> Refuse(const RefusalCodes& codes);
};

// ---- All pairs ----

/// A compared pair.
struct PairRecord {
    std::int32_t sample1 = 0;  ///< position in the test's list of samples, below `sample2`
    std::int32_t sample2 = 0;
    double testStatistic = 0;
    double standardError = 0;
    double standardTestStatistic = 0;
    double sig = 0;
    double adjSig = 0;
    bool untestable = false;  ///< the values are not there
};

/// A pair of `sampleCount` samples whose statistic is normal: the rest of its record.
PairRecord MakeNormalPair(std::int32_t sample1, std::int32_t sample2, double testStatistic, double standardError,
                          std::size_t sampleCount);

/// All pairs of `sampleCount` samples with one standard error; `difference` is the statistic of two samples.
std::vector<PairRecord> CompareNormalPairs(std::size_t sampleCount, double standardError,
                                           const std::function<double(std::size_t, std::size_t)>& difference);

/// Bonferroni's adjustment for all pairs of `sampleCount` samples, at most 1.
double AdjustForPairs(double sig, std::size_t sampleCount);
/// The same where the number of pairs is formed first, in 32 bits by definition: above 46341 samples it wraps around.
double AdjustByPairCount(double sig, std::int32_t sampleCount);

// ---- Step by step ----

/// A sample in the order of the stepwise search. The order value is what the test orders by.
struct OrderedSample {
    std::int32_t sample = 0;
    double orderValue = 0;
};

/// The samples 0, 1, ... in ascending order of their values; equal ones keep their order.
std::vector<OrderedSample> OrderSamples(const std::vector<double>& orderValues);

/// A run of samples in that order, both ends included.
struct SubsetRecord {
    std::uint32_t firstPosition = 0;
    std::uint32_t lastPosition = 0;
    std::vector<double> sums;  ///< what the test adds up in a pass, per position; zeros when a pass begins
    double tieTerm = 0;        ///< for a correction that no test makes
    double statistic = 0;
    double standardError = 0;
    double standardTestStatistic = 0;
    double sig = 0;
    double adjSig = 0;
    bool untestable = false;  ///< the values are not there

    std::size_t Size() const { return std::size_t{lastPosition} - firstPosition + 1; }
    bool Contains(const SubsetRecord& other) const {
        return firstPosition <= other.firstPosition && lastPosition >= other.lastPosition;
    }
    bool HasOneSample() const { return firstPosition == lastPosition; }
};

/// The adjusted significance of a subset of `size` out of `sampleCount` samples.
double AdjustForSubset(double sig, std::size_t size, std::size_t sampleCount);

/// Removes subsets that lie inside another one of the list, all but those that stand right behind a removed one: a step
/// is made after a removal, too, so that what moves into the empty place is not looked at. That is meant. A search
/// never leaves two such subsets side by side.
void RemoveContainedSubsets(std::vector<SubsetRecord>& subsets);

/// The search for homogeneous subsets, one pass over the data per step. Use: `Begin` once; then per pass the test
/// adds up what it needs for each of `Candidates`, and calls `EndPass`, until `IsDone`. Every candidate loses a sample
/// per pass or leaves the list, so that there are at most as many passes as samples less one.
///
/// No two candidates ever have the same first position: a test may keep what it adds up in a list by that position.
class StepwiseComparison {
 public:
    /// What came of computing a subset.
    enum class Outcome {
        kComputed,
        kUntestable,  ///< has no statistic: it is added as it stands
        kFailed       ///< the test is in error; the search ends
    };
    /// Fills the statistic and the significance of a subset, not the adjusted one.
    using Compute = std::function<Outcome(SubsetRecord&)>;

    explicit StepwiseComparison(const ComparisonRules& testRules) : rules(testRules) {}

    /// Sets up the candidates over `positionCount` ordered samples. All of them together are none, as the test has
    /// rejected them. `sampleCount`: of which the significances are adjusted; a test may count empty samples there.
    void Begin(std::size_t positionCount, std::size_t sampleCount);

    /// In ascending order of the first position.
    std::vector<SubsetRecord>& Candidates() { return candidates; }

    /// Judges the candidates. The messages are for the test to add.
    [[nodiscard]] std::vector<TestMessage> EndPass(double sigLevel, const Compute& compute);

    bool IsDone() const { return isDone; }
    const ComparisonRules& Rules() const { return rules; }
    /// The subsets found, and their indices in the order in which they are shown.
    const std::vector<SubsetRecord>& FinalSubsets() const { return finalSubsets; }
    const std::vector<std::size_t>& DisplayOrder() const { return displayOrder; }

 private:
    bool WalkCandidates(double sigLevel, const Compute& compute);
    bool IsHomogeneous(const SubsetRecord& subset, double sigLevel) const;
    bool IsCovered(const SubsetRecord& subset) const;
    std::vector<TestMessage> AddLeftOver();
    void Tidy();

    ComparisonRules rules;
    std::size_t positionCount_ = 0;
    std::size_t sampleCount_ = 0;
    std::vector<SubsetRecord> candidates;
    std::vector<SubsetRecord> finalSubsets;
    std::vector<std::size_t> displayOrder;
    bool isDone = false;
};

// ---- Result tables ----

/// The samples of a table of results, each list joined with ";".
struct ComparedSamples {
    std::optional<std::int32_t> groupField;  ///< of samples that are the groups of a field
    std::string indices;
    std::string orderValues;
};

/// Fields in the order of the stepwise search. `fields`: where each sample stands in a record.
ComparedSamples FieldsInOrder(const std::vector<int>& fields, const std::vector<OrderedSample>& samples);

/// Adds the table "PairwiseResult".
void AddPairwiseResult(ResultElement& element, const ComparisonRules& rules, const ComparedSamples& samples,
                       const std::vector<PairRecord>& pairs);

/// Adds the table "StepwiseResult". The messages are for the test to add: where the search itself didn't warn of
/// samples that stand alone, writing their rows does.
[[nodiscard]] std::vector<TestMessage> AddStepwiseResult(ResultElement& element, const StepwiseComparison& search,
                                                         const ComparedSamples& samples);
