#include "host/beyond/explain/StepWriter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include "host/NumberText.h"
#include "host/TextList.h"

namespace tarn {

std::string With(std::string_view formula, std::initializer_list<double> numbers) {
    std::string text;
    const double* next = numbers.begin();
    for (const char c : formula) {
        if (c == '#' && next != numbers.end()) {
            // "8 - -3" is no way to write a difference.
            const bool needsBrackets = *next < 0 && !text.empty();
            text += needsBrackets ? "(" + CalculatorText(*next) + ")" : CalculatorText(*next);
            ++next;
        } else {
            text += c;
        }
    }
    return text;
}

std::string ShortText(double number) {
    if (std::isnan(number)) return CalculatorText(number);
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.5g", number + 0.0);  // no -0
    return text.data();
}

std::string SumText(const std::vector<std::string>& terms) {
    constexpr std::size_t kMostTerms = 8;
    constexpr std::size_t kFirstTerms = 3;
    if (terms.size() <= kMostTerms) return JoinList(terms, " + ");
    const std::vector<std::string> first(terms.begin(), terms.begin() + kFirstTerms);
    return JoinList(first, " + ") + " + ... + " + terms.back();
}

namespace {

/// What is no number has no sign.
Number NumberOf(double value) {
    return std::isnan(value) ? Number("nan") : Number(ExactText(value));
}

}  // namespace

double StepWriter::Count(std::string name, std::string words, double value) {
    return Step(std::move(name), std::move(words), "", value);
}

double StepWriter::Step(std::string name, std::string formula, std::string numbers, double value) {
    // A sum of one term is that term.
    if (numbers == CalculatorText(value)) numbers.clear();
    explanation_.steps.push_back({std::move(name), std::move(formula), std::move(numbers), NumberOf(value), {}, true});
    return value;
}

double StepWriter::Told(std::string name, std::string formula, std::string numbers, double value,
                        const Number& document, double size) {
    Step(std::move(name), std::move(formula), std::move(numbers), value);
    ExplanationStep& step = explanation_.steps.back();
    step.document = document;
    step.agrees = document.empty() || Agree(value, document.value, size);
    if (!step.agrees) TellOther(step.name, value, document.value);
    return value;
}

ExplanationTable& StepWriter::Table(std::string title, std::vector<ExplanationTable::Column> columns) {
    return explanation_.tables.emplace_back(ExplanationTable{std::move(title), std::move(columns), {}});
}

ExplanationTable& StepWriter::Comparison(std::string title, std::vector<ExplanationTable::Column> columns) {
    return explanation_.comparisons.emplace_back(ExplanationTable{std::move(title), std::move(columns), {}});
}

bool StepWriter::Agree(double ours, double theirs, double size) const {
    constexpr double kRounding = 1e-12;
    // One minus a distribution function, and sums that cancel (docs/numerics.md).
    constexpr double kRoundingAsDefined = 1e-9;
    constexpr double kTailAsDefined = 1e-15;
    if (std::isnan(ours) || std::isnan(theirs)) return std::isnan(ours) && std::isnan(theirs);
    if (ours == theirs) return true;
    const double largest = std::max({std::fabs(ours), std::fabs(theirs), size});
    const double distance = std::fabs(ours - theirs);
    // Below the smallest normal number digits are lost.
    if (largest < std::numeric_limits<double>::min()) return true;
    if (mode_ == ArithmeticMode::kExtended) return distance <= kRounding * largest;
    return distance <= kRoundingAsDefined * largest || distance <= kTailAsDefined;
}

void StepWriter::TellOther(const std::string& name, double ours, double theirs) {
    TellOther(name + " is " + ExactText(ours) + " here and " + ExactText(theirs) + " there");
}

void StepWriter::TellOther(std::string words) {
    explanation_.agrees = false;
    others_.push_back(std::move(words));
}

TestExplanation StepWriter::Finish() {
    std::vector<std::string> names;
    for (const ExplanationStep& step : explanation_.steps) {
        if (!step.document.empty()) names.push_back(step.name);
    }
    names.insert(names.end(), compared_.begin(), compared_.end());
    if (!explanation_.agrees) {
        std::string sentence = "Warning: these steps don't give the numbers of the result: " + JoinList(others_, "; ");
        if (mode_ != ArithmeticMode::kExtended) {
            sentence += "; the run computed as defined, where some statistics have another form than the textbook's";
        }
        Note(sentence + ".");
    } else if (!names.empty()) {
        Note("The result has the same numbers: " + JoinList(names) + ".");
    }
    return std::move(explanation_);
}

}  // namespace tarn
