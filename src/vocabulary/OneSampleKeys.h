#pragma once

/// The keys of the entries of one-sample tests. A request has them, selection hands them on, the plan builders read
/// them. Some of them go on into a test's own settings under the same name.
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

// Of the Kolmogorov-Smirnov test.
inline constexpr const char* kDistributionFunction = "distributionFunction";
inline constexpr const char* kIsUseSample = "isUseSample";
inline constexpr const char* kMean = "mean";
inline constexpr const char* kStdDev = "stdDev";
inline constexpr const char* kMax = "max";
inline constexpr const char* kMin = "min";

// Of the Wilcoxon test.
inline constexpr const char* kUserSpecifyTestValue = "userSpecifyTestValue";
inline constexpr const char* kTestValue = "testValue";

// Written by plan builders into a test's own settings.
inline constexpr const char* kOriginalGivenCategories = "originalGivenCategoryList";

}  // namespace OneSampleKey

/// Values of "distributionFunction".
namespace DistributionName {
inline constexpr const char* kNormal = "normal";
inline constexpr const char* kUniform = "uniform";
inline constexpr const char* kPoisson = "poisson";
inline constexpr const char* kExponential = "exponential";
}  // namespace DistributionName
