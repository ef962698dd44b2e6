#pragma once

/// The keys of a test's entry in the execution settings that selection writes: some the plan builders read, the others
/// stand there for whoever reads the settings. Those that plan builders share with one another are setting keys, those
/// of one-sample tests have a list of their own. A key of one test stands in that test's source. Spelling is part of
/// the format.

namespace EntryKey {
inline constexpr const char* kAlgorithmName = "AlgorithmName";
/// A proposal of the automatic choice holds its test's name under this key, and stays that way as an entry.
inline constexpr const char* kProposedAlgorithmName = "algorithmName";
inline constexpr const char* kTestIndex = "testIndex";
inline constexpr const char* kGroupVariableName = "groupVariableName";
inline constexpr const char* kCaseIdVariableName = "caseIDVariableName";

// Related and independent samples.
inline constexpr const char* kCategoriesList = "categoriesList";
inline constexpr const char* kUserSpecifyMedian = "userSpecifyMedian";
inline constexpr const char* kMedian = "median";
inline constexpr const char* kUserSpecifyGroupRange = "userSpecifyGroupRange";
inline constexpr const char* kUserSpecifyNumberOfOutliers = "userSpecifyNumberOfOutliers";
inline constexpr const char* kNumberOfOutliers = "NumberOfOutliers";
inline constexpr const char* kOrderOfHypotheses = "orderOfHypotheses";
}  // namespace EntryKey

namespace EntryValue {
inline constexpr const char* kTrue = "true";
}  // namespace EntryValue
