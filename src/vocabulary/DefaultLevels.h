#pragma once

/// The levels of a run that names none; a test has them until it reads its own.
inline constexpr double kDefaultSigLevel = 0.05;
inline constexpr double kDefaultConfidenceLevel = 0.95;
