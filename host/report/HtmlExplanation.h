#pragma once

#include <string>

#include "host/report/TestExplanation.h"

namespace tarn {

/// How the numbers of a test came about, as a `details` element that is folded until a reader opens it, and open on
/// paper: its tables, a step each with its formula and the same with the numbers put in, the pairs and the subsets, the
/// notes. `heading` is that of the test, for readers of the screen. It stands in an element of the class `tarn` on a
/// page that has `HtmlExplanationStyle()` behind `HtmlStyleSheet()`.
std::string HtmlExplanation(const TestExplanation& explanation, const std::string& heading);

/// What the style sheet of a page with explanations has besides; those without stay as they are.
const std::string& HtmlExplanationStyle();

}  // namespace tarn
