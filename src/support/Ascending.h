#pragma once

#include <algorithm>
#include <cstddef>

/// The largest of ascending values, of which there is one at least; of several equal ones the first, since zeros differ
/// in their signs.
inline double HighestOfAscending(const double* values, std::size_t count) {
    const double last = values[count - 1];
    return last == 0 ? *std::lower_bound(values, values + count, last) : last;
}
