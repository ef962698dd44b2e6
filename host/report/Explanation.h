#pragma once

#include <string>

#include "host/report/MessageCatalogue.h"

namespace tarn {

/// What a code of a message or a test means, for a reader; of a name that several tests have, all of them. Throws an
/// `InputError` for a topic that is neither.
std::string Explanation(const std::string& topic, const MessageCatalogue& texts);

}  // namespace tarn
