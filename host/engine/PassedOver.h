#pragma once

#include <string>
#include <vector>

#include "host/Json.h"

namespace tarn {

// What a plan or a request says and the engine passes over without a word: unknown keys and tests, values of a shape
// that isn't read, words that a key doesn't have and levels out of their range, tests of a request that stand where
// none are looked for. A line each with `source`, the place, what is wrong and what was expected, in the order of the
// document, which is a JSON object: the first hundred, and one that says how many more there are.

/// For a plan. Throws an `InputError` for a test whose name stands for several.
std::vector<std::string> PassedOverInPlan(const Json& plan, const std::string& source);

/// For a request.
std::vector<std::string> PassedOverInRequest(const Json& request, const std::string& source);

}  // namespace tarn
