#pragma once

#include <cstddef>

#include "host/ByteSource.h"
#include "platform/common/QKSettings.h"

namespace tarn {

/// The execution settings of a plan document, with the number of tests that it asks for.
struct PlanSettings {
    QKSettings settings;
    std::size_t requestedTests = 0;
};

/// Reads a plan: a JSON object whose keys become settings in the order written. Its key "tests" holds an array of
/// objects with one key each, the tests in their order. Throws an `InputError` that names the key and what it should
/// hold.
PlanSettings ReadPlan(ByteSource& source);

}  // namespace tarn
