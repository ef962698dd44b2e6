#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tarn {

/// The compact letter display: letters for each sample, such that two samples share one exactly if they don't differ.
/// By insert and absorb (Piepho 2004, Journal of Computational and Graphical Statistics 13, 456-466), without letters
/// that could be swept away afterwards. Where that would take more than 512 letters they are found one by one: one for
/// a pair that has none yet, and for all that go with it.
///
/// `different`: the pairs that differ, as positions of the samples; `order`: all positions in the order in which
/// letters are given, `a` to the first one. The strings stand in the order of the positions. Letters are a to z, A to
/// Z, and then numbers in brackets: "(53)".
std::vector<std::string> LettersOfPairs(std::size_t sampleCount,
                                        const std::vector<std::pair<std::size_t, std::size_t>>& different,
                                        const std::vector<std::size_t>& order);

/// A letter for each homogeneous subset, and one for each sample that is in none. A subset within another has none.
/// `subsets`: the positions of their samples; otherwise as above.
std::vector<std::string> LettersOfSubsets(std::size_t sampleCount, const std::vector<std::vector<std::size_t>>& subsets,
                                          const std::vector<std::size_t>& order);

}  // namespace tarn
