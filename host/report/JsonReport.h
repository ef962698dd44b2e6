#pragma once

#include <string>
#include <vector>

#include "host/Json.h"
#include "host/report/MessageCatalogue.h"
#include "host/report/ResultReading.h"

namespace tarn {

/// Everything of a document as JSON, numbers as numbers and fields and categories by their names. docs/result-json.md
/// lists its keys, docs/result.schema.json checks them. `notes` are sentences on the whole run.
std::string JsonReport(const ResultReading& result, const MessageCatalogue& texts,
                       const std::vector<std::string>& notes = {});

/// The same before it is written, for what holds several of them.
Json JsonOf(const ResultReading& result, const MessageCatalogue& texts, const std::vector<std::string>& notes = {});

/// JSON as it is written: indented, with what is no UTF-8 replaced.
std::string Written(const Json& json);

}  // namespace tarn
