#pragma once

#include <string>

namespace tarn {

/// One line for a run that failed: the code and what it means, and what a user can do about it.
std::string DescribeRunFailure(long code);

}  // namespace tarn
