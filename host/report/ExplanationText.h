#pragma once

#include <cstddef>
#include <string>

#include "host/report/TestPage.h"

namespace tarn {

inline constexpr const char* kExplanationTitle = "How the numbers came about";

/// An explanation in lines of at most `width` characters behind `indent` blanks: the tables, then each step with its
/// name at the left, "formula = numbers = value" beside it, then the notes.
std::string ExplanationText(const TestExplanation& explanation, std::size_t width, std::size_t indent);

/// The same as tables of a page. Numbers of steps are rounded to ten digits, as a pocket calculator shows them.
PageTable PageTableOf(const ExplanationTable& table);
PageTable StepTable(const TestExplanation& explanation);

}  // namespace tarn
