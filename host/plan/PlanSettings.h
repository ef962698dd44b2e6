#pragma once

#include <string>
#include <vector>

#include "host/ByteSource.h"
#include "host/Json.h"
#include "host/engine/NamedFields.h"
#include "platform/common/QKSettings.h"

namespace tarn {

/// The execution settings of a plan document.
struct PlanSettings {
    QKSettings settings;
    NamedFields fields;
    /// What the document says and the engine passes over, a line each.
    std::vector<std::string> passedOver;
    Json document;  ///< the plan as it was read
};

/// Reads a plan: a JSON object whose keys become settings in the order written. Its key "tests" holds an array of
/// objects with one key each, the tests in their order, by their names in the engine or by those of `tarn tests`.
/// Throws an `InputError` that names the key and what it should hold.
PlanSettings ReadPlan(ByteSource& source);

/// Whether the engine takes a key of a plan, or of a request, for true; "true" and 1 say so, too. Throws an
/// `InputError` for a value of a shape that no setting has.
bool IsTrue(const QKSettings& settings, const char* key);
bool IsTrue(const Json& request, const char* key);

}  // namespace tarn
