#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "support/Arithmetic.h"
#include "support/ComparisonRules.h"
#include "support/TestMessage.h"

/// Homogeneous subsets of k samples: the runs of samples, in the order of some value, that a test does not tell apart
/// (step-down procedure; the adjustment of a subset's significance: Ryan, 1960, Psychological Bulletin 57, 318-328). A
/// test supplies its statistic; `ComparisonTables` shows the subsets.

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
    double tieTerm = 0;        ///< of t cubed minus t over the ties in it
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

/// Says that a subset is a single sample.
TestMessage LoneSampleWarning(const SubsetRecord& subset);

/// The adjusted significance of a subset of `size` out of `sampleCount` samples.
double AdjustForSubset(double sig, std::size_t size, std::size_t sampleCount, const Arithmetic& arithmetic);

/// Removes subsets that lie inside another one of the list, all but those that stand right behind a removed one: a step
/// is made after a removal, too, so that what moves into the empty place is not looked at. That is intended. A search
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

    /// Borrows `arithmetic`.
    StepwiseComparison(const ComparisonRules& testRules, const Arithmetic& arithmetic)
        : rules(testRules), arithmetic_(&arithmetic) {}

    /// Sets up the candidates over `positionCount` ordered samples. All of them together are no candidate, as the test
    /// has rejected them. `sampleCount`: how many samples the significances are adjusted for; a test may count empty
    /// samples there.
    void Begin(std::size_t positionCount, std::size_t sampleCount);

    /// In ascending order of the first position.
    std::vector<SubsetRecord>& Candidates() { return candidates; }

    /// Judges the candidates. The messages are for the test to add.
    [[nodiscard]] std::vector<TestMessage> EndPass(double sigLevel, const Compute& compute);

    /// Whether it shows which of two statistics a candidate has: they differ, and by one of them at least the candidate
    /// is homogeneous, so that it is found or loses a sample. `sigOf`: the significance of a statistic.
    bool LeaveOtherTraces(const SubsetRecord& candidate, double statistic, double other, double sigLevel,
                          const std::function<double(double)>& sigOf) const;

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
    const Arithmetic* arithmetic_;
    std::size_t positionCount_ = 0;
    std::size_t sampleCount_ = 0;
    std::vector<SubsetRecord> candidates;
    std::vector<SubsetRecord> finalSubsets;
    std::vector<std::size_t> displayOrder;
    bool isDone = false;
};
