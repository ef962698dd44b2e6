#pragma once

/// What each test of k samples does in its own way when, after a significant result, it compares its samples. Around
/// this table: which comparison is asked for (`ComparisonRequest`), all pairs (`PairwiseComparison`), the search for
/// homogeneous subsets (`StepwiseComparison`), and the tables of results (`ComparisonTables`).

/// An entry without "typeOfMultipleComparison", or with something in its place that is no text.
enum class Unsaid {
    kMeansNone,
    kFails,    ///< unless something has failed before
    kFailsToo  ///< with a message of its own, beside those of other failures
};
/// How a test's own settings say which comparison is wanted.
enum class Wanted {
    kByType,     ///< as entries do
    kBySwitches  ///< "pairWise" and "stepWise", each of which is on at exactly 1
};
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
    Unsaid unsaid;
    Wanted wanted;
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

/// The differences are part of the tests: documents depend on each, so none of them is to be evened out. Whoever makes
/// a test without its plan builder depends on `wanted`.
namespace ComparisonRulesOf {
using enum Unsaid;
using enum Wanted;
using enum Decides;
using enum LastSample;
using enum Followers;
using enum Contained;
using enum LeftOver;
using enum Labels;
using enum Errors;
// clang-format off
inline constexpr ComparisonRules
    //  unsaid      wanted       decides   lastSample   followers    contained    leftOver
    //                           pairwise     stepwise     errors
    kFriedman{
        kFails,     kByType,     kAdjSig,  kIsFound,    kEndWithIt,  kIsTested,   kIsTidied,
                                 kOnRows,     kOnRows,     kOfPairs,  ""},
    kKendallsW{
        kFails,     kByType,     kAdjSig,  kIsFound,    kEndWithIt,  kIsTested,   kIsTidied,
                                 kOnRows,     kOnRows,     kOfPairs,  ""},
    kCochransQ{
        kMeansNone, kBySwitches, kAdjSig,  kIsDropped,  kEndWithIt,  kIsTested,   kIsWarnedOf,
                                 kOnColumns,  kOnColumns,  kOfPairs,  ""},
    kJonckTer{
        kMeansNone, kBySwitches, kAdjSig,  kIsDropped,  kEndWithIt,  kIsTested,   kIsWarnedOf,
                                 kOnColumns,  kOnColumns,  kOfBoth,   ""},
    kKSMedian{
        kMeansNone, kBySwitches, kAdjSig,  kIsDropped,  kEndWithIt,  kIsTested,   kIsWarnedOf,
                                 kOnColumns,  kOnColumns,  kNone,     ""},
    kKruskalWOneWay{
        kFailsToo,  kByType,     kSig,     kIsDropped,  kGoOn,       kIsSkipped,  kIsWarnedOf,
                                 kOnColumns,  kOnRows,     kOfPairs,  ";"};
// clang-format on
}  // namespace ComparisonRulesOf
