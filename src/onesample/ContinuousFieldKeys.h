#pragma once

/// The setting keys of the one-sample tests of continuous fields, in their entries and in their own settings.
namespace OneSampleKey {

// Of the Wilcoxon test.
inline constexpr const char* kUserSpecifyTestValue = "userSpecifyTestValue";
inline constexpr const char* kTestValue = "testValue";

}  // namespace OneSampleKey
