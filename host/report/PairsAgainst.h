#pragma once

#include <string>

#include "host/report/MessageCatalogue.h"
#include "host/report/ResultReading.h"

namespace tarn {

/// Of the pairs that tests compare leaves those with one sample alone, adjusted for their number by Bonferroni's
/// method as the document does it for all pairs, and remarks on it. The document stays as it is.
void KeepPairsWith(ResultReading& result, const std::string& sample, const MessageCatalogue& texts);

}  // namespace tarn
