#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/beyond/Proportions.h"
#include "host/beyond/TestView.h"

namespace tarn {

/// The first of the two classes of a test of one field, as its document names it.
struct FirstClass {
    std::optional<double> cut;            ///< values up to it; none for a field of categories
    std::vector<std::string> categories;  ///< as a reader is shown them
};

/// Neither a cut nor categories for a test without classes, and for one whose classes have no category.
FirstClass FirstClassOf(const TestView& view);

/// The four cells of a cross table of two classes; none for a table of another shape.
std::optional<PairedAnswers> AnswersOf(const CountTable& counts);

/// The same of two lists of 1 for a success and 0, row by row.
PairedAnswers AnswersOf(const std::vector<double>& first, const std::vector<double>& second,
                        const CompleteCases& cases);

/// For each field of a test of dichotomies 1 where its category is one of `success`, by value or by label, and else 0.
/// Without any word the first category of the first field counts as the success. Empty where the fields aren't
/// categorical.
std::vector<std::vector<double>> SuccessesOf(const TestView& view, const std::vector<std::string>& success);

}  // namespace tarn
