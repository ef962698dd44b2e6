#pragma once

#include <string>
#include <vector>

namespace tarn {

/// One line for a message of the engine: its code, what it means where that is known, and its parameters.
std::string DescribeMessage(bool isError, long code, const std::vector<std::string>& parameters);

/// One line for a run that failed: the code and what it means, and what a user can do about it.
std::string DescribeRunFailure(long code);

}  // namespace tarn
