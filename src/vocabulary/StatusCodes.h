#pragma once

/// The status codes that several places share. A code is the whole message: a host resolves it to a text. The codes
/// of one test stand in that test's source; the code divided by 100 names the test.
///
/// This header includes nothing, so that every floor of the engine may include it.
namespace StatusCode {

inline constexpr long kCancelled = 1;
inline constexpr long kRunNotComplete = 6;

inline constexpr long kNoTestRequested = 220001;
inline constexpr long kAllocationFailed = 220002;
/// The stream was empty; for a test, no case was left for it.
inline constexpr long kNoRecords = 220003;
inline constexpr long kUnknownFieldKind = 220004;
/// No record stream was given, or the sorted view of a field is missing.
inline constexpr long kNoIterator = 220005;
/// A distribution function gave no value.
inline constexpr long kSignificanceFailed = 220007;
/// The only code of a test that stops the whole run.
inline constexpr long kOutOfMemory = 220012;
/// A warning: a stepwise comparison found a sample that it could put together with no other.
inline constexpr long kSampleInNoSubset = 220013;
inline constexpr long kWeightTooLarge = 220026;

}  // namespace StatusCode
