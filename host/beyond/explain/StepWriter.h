#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/NumberText.h"
#include "host/report/ResultDocument.h"
#include "host/report/TestExplanation.h"

namespace tarn {

/// A formula with numbers in the places of its "#": With("# - # / 2", {8, 3}) is "8 - 3 / 2".
std::string With(std::string_view formula, std::initializer_list<double> numbers);

/// A number of five digits, of which six fit a line.
std::string ShortText(double number);

/// "1 + 2 + 3"; of many terms the first ones and the last one.
std::string SumText(const std::vector<std::string>& terms);

/// The steps of one test, in the making. Each function that adds a step returns its value.
class StepWriter {
 public:
    /// `mode`: how the run computed, by which the digits differ that a document has right.
    explicit StepWriter(ArithmeticMode mode) : mode_(mode) {}

    /// Whether the run computed in the engine's fixed widths, with its short series.
    bool IsAsDefined() const { return mode_ == ArithmeticMode::kAsDefined; }

    /// What the cases show; `words` say what was counted.
    double Count(std::string name, std::string words, double value);
    double Step(std::string name, std::string formula, std::string numbers, double value);
    /// A step whose value the document has, too; "" there leaves it a step on the way. `size`: of the numbers that the
    /// value is a difference of, by which its rounding goes; 0 for a value that keeps its own digits.
    double Told(std::string name, std::string formula, std::string numbers, double value, const Number& document,
                double size = 0);
    void Note(std::string sentence) { explanation_.notes.push_back(std::move(sentence)); }
    /// A table to be filled before the next one is added.
    ExplanationTable& Table(std::string title, std::vector<ExplanationTable::Column> columns);

    /// A table behind the steps, of samples that were compared.
    ExplanationTable& Comparison(std::string title, std::vector<ExplanationTable::Column> columns);

    /// Whether a number of the cases and one of the document are the same but for rounding.
    bool Agree(double ours, double theirs, double size = 0) const;
    /// The same of two significances that were made `factor` times as large, and their rounding with them.
    bool AgreeAdjusted(double ours, double theirs, double factor) const {
        return Agree(ours / factor, theirs / factor);
    }
    /// Says that a number beside the steps is another one in the document.
    void TellOther(const std::string& name, double ours, double theirs);
    /// The same in other words, part of a sentence: "a - b has no number here".
    void TellOther(std::string words);
    /// Says that numbers beside the steps were compared, too: "all those of the pairs".
    void TellCompared(std::string words) { compared_.push_back(std::move(words)); }

    /// What was written, with a last note on whether the document agrees.
    TestExplanation Finish();

 private:
    ArithmeticMode mode_;
    TestExplanation explanation_;
    std::vector<std::string> others_;
    std::vector<std::string> compared_;
};

}  // namespace tarn
