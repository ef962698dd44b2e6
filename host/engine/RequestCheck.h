#pragma once

#include "host/engine/RequestView.h"

namespace tarn {

/// Throws an `InputError` that says what to change
/// for a wish that can't be met, or that would be met with something else: fields, tests and categories that are not
/// there, parameters that no test takes, orders of words that nobody gave.
void CheckRequest(const RequestView& view);

}  // namespace tarn
