#pragma once

/// The setting keys that several places write and read. A key of one test stands in that test's source.
namespace SettingKey {

// Of a test's entry in the execution settings.
inline constexpr const char* kVariableName = "variableName";
inline constexpr const char* kOriginVariableName = "originVariableName";

// Written by plan builders into a test's own settings.
inline constexpr const char* kSigLevel = "sigLevel";
inline constexpr const char* kConfidenceLevel = "confidenceLevel";
inline constexpr const char* kWeightVariableIndex = "weightVariableIndex";
inline constexpr const char* kVariableIndex = "variableIndex";

}  // namespace SettingKey
