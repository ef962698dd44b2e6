#pragma once

#include <cstdint>

/// The chance that a control group of m cases, with h of them trimmed from each end, spans at most s ranks among its
/// own and n other cases, all arrangements being alike: the sum over i from 0 to s - m + 2 h of
///
///     C(i + m - 2 h - 2, i) C(n + 2 h + 1 - i, n - i) / C(m + n, m).
///
/// A span that leaves no other case inside, s = m - 2 h, has the chance 0 by definition, and so has a group of which
/// fewer than two cases would be left. Not a number where a size is below 1.
///
/// Source: Moses (1952), Psychometrika 17, 239-247.
double MosesSignificance(std::int32_t s, std::int32_t m, std::int32_t n, std::int32_t h);
