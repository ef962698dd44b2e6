#pragma once

#include <string>
#include <vector>

#include "host/report/Number.h"

namespace tarn {

/// One step on the way to a number of a test.
struct ExplanationStep {
    std::string name;     ///< what comes out: "U", "standard error"
    std::string formula;  ///< "R1 - n1 (n1 + 1) / 2", or in words what was counted: "cases of female"
    std::string numbers;  ///< the formula with its numbers put in; "" where there is nothing to put in
    Number value;
    Number document;     ///< what the document has in this place; none for a step on the way
    bool agrees = true;  ///< whether both are one number but for rounding
};

/// The data that the steps begin with: values in their order with their ranks, counts, differences.
struct ExplanationTable {
    struct Column {
        std::string title;
        bool isOfWords = false;  ///< else of numbers, which stand at the right
    };

    std::string title;
    std::vector<Column> columns;
    std::vector<std::vector<std::string>> rows;  ///< of as many cells as there are columns
};

/// How the numbers of one test came about, in steps that a pocket calculator can follow. It is made from the cases of
/// the run, not from the document, with which its last steps are compared.
struct TestExplanation {
    std::vector<ExplanationTable> tables;
    std::vector<ExplanationStep> steps;
    std::vector<ExplanationTable>
        comparisons;                 ///< of the samples that were compared, pairs or subsets; behind the steps
    std::vector<std::string> notes;  ///< which significance decides, and what is not explained, as sentences
    bool agrees = true;              ///< whether all steps agree with the document
};

}  // namespace tarn
