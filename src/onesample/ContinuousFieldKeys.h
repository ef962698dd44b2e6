#pragma once

/// The setting keys of the one-sample tests of continuous fields, in their entries and in their own settings.
namespace OneSampleKey {

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

}  // namespace OneSampleKey

/// Values of "distributionFunction".
namespace DistributionName {
inline constexpr const char* kNormal = "normal";
inline constexpr const char* kUniform = "uniform";
inline constexpr const char* kPoisson = "poisson";
inline constexpr const char* kExponential = "exponential";
}  // namespace DistributionName
