#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/report/ResultDocument.h"

namespace tarn {

struct TestReading;

/// What a test reports, by the kinds that an output has columns for.
enum class Quantity { kN, kStatistic, kStandardError, kStandardized, kPValue, kInterval, kPairs };

/// The name of a quantity in the outputs: "n", "statistic", "standard_error", "standardized", "p_value", "interval",
/// "pairs".
std::string_view NameOf(Quantity quantity);

/// A fixed width of the engine: where cases are so many that a counter or a product wraps around, the quantities behind
/// it are those of the wrapped number. The document doesn't say so; the outputs do. docs/limits.md has the bounds with
/// their reasons.
struct EngineLimit {
    std::string_view key;   ///< under which a catalogue of messages has its sentence
    std::string_view test;  ///< as in the document; "" for every test
    std::span<const Quantity> quantities;
    ArithmeticMode mode;  ///< in which it is one
    /// Whether a test passes the limit, or may pass it where the document says too little to be sure.
    bool (*isPassed)(const TestReading& test, const ResultDocument& document);

    bool Touches(Quantity quantity) const;
};

/// All of them.
std::span<const EngineLimit> EngineLimits();

/// Those that a test passes, whose other facts have to be read before; none for a test that was not done.
std::vector<const EngineLimit*> LimitsPassed(const TestReading& test, const ResultDocument& document);

}  // namespace tarn
