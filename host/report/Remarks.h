#pragma once

#include <string>
#include <vector>

#include "host/report/MessageCatalogue.h"
#include "host/report/TestReading.h"

namespace tarn {

/// What a reader has to know of a test's numbers and the engine doesn't say, as sentences of the catalogue. The rest of
/// the test has been read; its numbers are not yet turned to one direction.
std::vector<std::string> RemarksOn(const TestResult& test, const ResultDocument& document, const TestReading& reading,
                                   const MessageCatalogue& texts);

/// Whether the homogeneous subsets of a Cochran's Q test rest on statistics that are made of several fields at once.
bool MixesFields(const TestResult& test, const ResultDocument& document);

}  // namespace tarn
