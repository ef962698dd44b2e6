#pragma once

#include <pugixml.hpp>
#include <string>
#include <vector>

namespace harness {

/// Where the element of a test that was worked out with extended arithmetic is another one than as defined, with both
/// texts. Digits of tails that are worked out by themselves, and of sums that cancel, are no difference, up to a share
/// of the number.
std::vector<std::string> DifferencesByArithmetic(const pugi::xml_node& defined, const pugi::xml_node& extended,
                                                 double share = 1e-9);

}  // namespace harness
