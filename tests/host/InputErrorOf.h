#pragma once

#include <string>

#include "host/InputError.h"

namespace tarn {

/// The text of the `InputError` that `action` ends in; "no error" if it ends well.
template <typename Action>
std::string InputErrorOf(Action&& action) {
    try {
        action();
    } catch (const InputError& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace tarn
