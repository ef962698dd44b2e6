#pragma once

#include <cstdint>

#include "support/Arithmetic.h"

/// The chance that a control group of m cases, with h of them trimmed from each end, spans at most s ranks among its
/// own and n other cases, all arrangements being alike: the sum over i from 0 to s - m + 2 h of
///
///     C(i + m - 2 h - 2, i) C(n + 2 h + 1 - i, n - i) / C(m + n, m).
///
/// As defined, a span that leaves no other case inside, s <= m - 2 h, has the chance 0, and so has a group of which
/// fewer than two cases are left. By the textbook the first is the chance of the narrowest span, which ties can make
/// look narrower still, and the second is 1, since such a group has no span that could be narrow. Not a number where a
/// size is below 1.
///
/// Source: Moses (1952), Psychometrika 17, 239-247.
double MosesSignificance(std::int64_t s, std::int64_t m, std::int64_t n, std::int64_t h, const Arithmetic& arithmetic);
