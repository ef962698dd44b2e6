#pragma once

#include <cstddef>
#include <string>

namespace tarn {

/// The number of test elements in a result document. Throws an `InputError` if it is none.
std::size_t CountTests(const std::string& document);

/// A short readable table of a result document: a line for each test with its fields, its count of cases, its
/// statistic, the significance that decides and the decision, then the messages of each test. Throws an `InputError`
/// if `document` is not such a document.
std::string SummarizeDocument(const std::string& document);

}  // namespace tarn
