#pragma once

#include <string>
#include <vector>

#include "host/words/WordScanner.h"

namespace tarn {

/// What a formula asks for.
enum class FormulaKind {
    kOneSample,  ///< score ~ 1
    kGroups,     ///< score ~ arm
    kRepeated    ///< score ~ cond | subject
};

/// A formula as an analyst writes it: what is measured on the left of "~", by what on the right.
struct Formula {
    std::string text;
    FormulaKind kind = FormulaKind::kOneSample;
    std::vector<Word> values;  ///< the fields on the left, or patterns of their names
    Word by;                   ///< the groups, or the condition under which a subject was measured
    Word subject;
};

/// Reads `score ~ arm`, `a + b ~ arm`, `score ~ cond | subject` and `score ~ 1`. Names with blanks or signs stand in
/// backticks or double quotes. Throws an `InputError` that says at which column something else stands, and for what
/// other languages of formulas mean by it the words to type here.
Formula ParseFormula(const std::string& text);

}  // namespace tarn
