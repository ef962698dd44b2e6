#pragma once

/// The keys of the execution settings: of the run, of a test's entry, and of the settings that a test owns. Selection
/// or a host writes an entry, a plan builder reads it and writes the test's own settings, the test reads those. A key
/// of one test stands in that test's source.
namespace SettingKey {

// Of the execution settings, at the top level.
inline constexpr const char* kModelId = "TarnTabulonModelID";
/// How many threads may work at a time, the calling one among them. Absent: as many as the machine has. No result
/// depends on it.
inline constexpr const char* kThreads = "threads";
/// True for a run whose statistics are all that is wanted: no histograms, no boxes, no descriptives but those that a
/// test needs. Absent: false.
inline constexpr const char* kBrief = "brief";
/// True for a run whose numbers are as wide as they need to be, whose tails are worked out by themselves, and whose
/// statistics have the textbook's form. Absent: false.
inline constexpr const char* kExtendedArithmetic = "extendedArithmetic";

// Of a test's entry in the execution settings.
inline constexpr const char* kVariableName = "variableName";
inline constexpr const char* kGroupVariableName = "groupVariableName";
inline constexpr const char* kOriginVariableName = "originVariableName";
inline constexpr const char* kClassFormation = "classFormation";
inline constexpr const char* kSuccessCategoryList = "successCategoryList";
inline constexpr const char* kTypeOfMultipleComparison = "typeOfMultipleComparison";

// Written by plan builders into a test's own settings.
inline constexpr const char* kSigLevel = "sigLevel";
inline constexpr const char* kConfidenceLevel = "confidenceLevel";
inline constexpr const char* kWeightVariableIndex = "weightVariableIndex";
inline constexpr const char* kMeasureLevel = "measureLevel";
inline constexpr const char* kVariableIndex = "variableIndex";
inline constexpr const char* kGroupVariableIndex = "groupVariableIndex";
inline constexpr const char* kVariablePairFirstIndex = "variablePairFirstIndex";
inline constexpr const char* kVariablePairSecondIndex = "variablePairSecondIndex";
inline constexpr const char* kUserSpecifyGroupList = "userSpecifyGroupList";
inline constexpr const char* kGroup1List = "group1List";
inline constexpr const char* kGroup2List = "group2List";
inline constexpr const char* kSuccessCategoryListNum = "successCategoryListNum";
inline constexpr const char* kSuccessCategoryListStr = "successCategoryListStr";
// The two switches that a plan builder makes of "typeOfMultipleComparison".
inline constexpr const char* kPairWise = "pairWise";
inline constexpr const char* kStepWise = "stepWise";

}  // namespace SettingKey

/// Values of "typeOfMultipleComparison".
namespace MultipleComparisonType {
inline constexpr const char* kNone = "none";
inline constexpr const char* kPairWise = "pairWise";
inline constexpr const char* kStepWise = "stepWise";
}  // namespace MultipleComparisonType

/// Values of "classFormation" and of keys like it.
namespace ClassFormation {
inline constexpr const char* kGetFromData = "getFromData";
inline constexpr const char* kGivenCategoryList = "givenCategoryList";
}  // namespace ClassFormation
