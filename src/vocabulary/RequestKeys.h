#pragma once

/// The keys of a user's request: the host writes them, the component and selection read them. Beside them stands an
/// entry for each test, under its `TestFacts::requestName`.
namespace RequestKey {

// Of the run.
inline constexpr const char* kMissingTreatment = "missingTreatment";
inline constexpr const char* kOneSampleVariables = "oneSampleVariables";
inline constexpr const char* kRelatedVariables = "relatedVariables";
inline constexpr const char* kIndependentVariables = "independentVariables";
inline constexpr const char* kGroupVariable = "groupVariable";
inline constexpr const char* kCaseIdField = "caseIDField";

// Each starts a family: the tests that are named behind it, or where it is true those that the engine chooses.
inline constexpr const char* kIsAutomaticallyOneSample = "isAutomaticallyOneSample";
inline constexpr const char* kIsAutomaticallyRelated = "isAutomaticallyRelated";
inline constexpr const char* kIsAutomaticallyIndependent = "isAutomaticallyIndependent";

// Of a test's entry. Its other keys have the names under which they come into the execution settings.
inline constexpr const char* kIsSelected = "isSelected";

}  // namespace RequestKey
