#pragma once

#include <array>
#include <cstdint>

/// What is known of D of a normal distribution whose mean and deviation are those of the sample: the engine computes by
/// it, and the host shows how.
///
/// Source: Lilliefors (1967), Journal of the American Statistical Association 62, 399-402, for the critical values;
/// Dallal and Wilkinson (1986), The American Statistician 40, 294-296, for the formula of the upper tail.
namespace Lilliefors {

struct CriticalValues {
    std::int64_t n;
    double at20;  ///< of the significance 0.2
    double at15;  ///< of the significance 0.15
};

inline constexpr std::array<CriticalValues, 22> kTable{
    {{5, 0.289, 0.303},   {6, 0.269, 0.281},  {7, 0.252, 0.264},  {8, 0.239, 0.25},   {9, 0.227, 0.238},
     {10, 0.217, 0.228},  {11, 0.208, 0.218}, {12, 0.2, 0.21},    {13, 0.193, 0.202}, {14, 0.187, 0.196},
     {15, 0.181, 0.19},   {16, 0.176, 0.184}, {17, 0.171, 0.179}, {18, 0.167, 0.175}, {19, 0.163, 0.17},
     {20, 0.159, 0.166},  {25, 0.143, 0.15},  {30, 0.131, 0.138}, {40, 0.115, 0.12},  {100, 0.074, 0.077},
     {400, 0.037, 0.039}, {900, 0.025, 0.026}}};

/// Past the last row both are these numbers over the root of n.
inline constexpr double kPastTableAt20 = 0.736;
inline constexpr double kPastTableAt15 = 0.768;

/// The upper tail is exp(a D^2 + b D + c - ln 10). For n up to 100 a = -7.01256 m, b = 2.99587 sqrt(m) with
/// m = n + 2.78019, and c = 2.1804661 + 0.974598 / sqrt(n) + 1.67997 / n; beyond, both go by powers of n.
namespace UpperTail {
inline constexpr double kMostOfFirst = 100;
inline constexpr double kShift = 2.78019;
inline constexpr double kSquare = -7.01256;
inline constexpr double kLinear = 2.99587;
inline constexpr double kConstant = 2.1804661;
inline constexpr double kOverRoot = 0.974598;
inline constexpr double kOverSize = 1.67997;
inline constexpr double kLargeSquare = -7.90289126054;
inline constexpr double kLargeSquarePower = 0.98;
inline constexpr double kLargeLinear = 3.180370175721;
inline constexpr double kLargeLinearPower = 0.49;
inline constexpr double kLargeConstant = 2.2947256;
inline constexpr double kLogOfTen = 2.3025851;  // in the digits of the publication
}  // namespace UpperTail

}  // namespace Lilliefors
