#pragma once

/// The keys of the entries of one-sample tests, which a request and the plan builders share. Some of them go on into
/// a test's own settings under the same name.
namespace OneSampleKey {

// How a field is divided into two classes.
inline constexpr const char* kCategoricalFormation = "catVarClassFormation";
inline constexpr const char* kContinuousFormation = "contVarClassFormation";
inline constexpr const char* kGivenCategoryList = "givenCategoryList";
inline constexpr const char* kGivenCutPoint = "givenCutPoint";
inline constexpr const char* kCutPointValue = "cutPointValue";

inline constexpr const char* kTestProbability = "testProbability";

inline constexpr const char* kIsDoClopperPearson = "isDoClopperPearson";
inline constexpr const char* kIsDoJeffreys = "isDoJeffreys";
inline constexpr const char* kIsDoProfileLikelihood = "isDoProfileLikelihood";

/// The categories of the chi-square test with their expected values.
inline constexpr const char* kCustom = "custom";

// Written by plan builders into a test's own settings.
inline constexpr const char* kMeasureLevel = "measureLevel";
inline constexpr const char* kOriginalGivenCategories = "originalGivenCategoryList";

}  // namespace OneSampleKey
