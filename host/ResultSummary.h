#pragma once

#include <string>

namespace tarn {

/// A short readable table of a result document: a line for each test with its fields, its count of cases, its
/// statistic, the significance that decides and the decision, then the messages of each test. Throws an `InputError`
/// if `document` is not such a document.
std::string SummarizeDocument(const std::string& document);

}  // namespace tarn
