#pragma once

#include <optional>
#include <string>

#include "host/report/TestReading.h"

namespace tarn {

/// The number of a test that a pack names, such as "p exact" or "effect lower" of "rank-biserial"; share/reference/
/// README.md lists the names. An empty number where the test has none of the kind. Throws an `InputError` that names
/// `place` for a quantity that there isn't.
Number QuantityOf(const TestReading& test, const std::string& quantity, const std::string& of,
                  const std::string& place);

}  // namespace tarn
