#pragma once

#include <string>
#include <vector>

#include "host/analysis/AnalysisEnvironment.h"
#include "host/verify/PublishedCheck.h"

namespace tarn {

// The distribution functions on which significances and intervals rest, beside tables that were worked out with 50
// digits or by enumeration. share/reference/README.md says what the files hold.

inline constexpr const char* kFunctionsFormat = "tarn-functions-1";

/// Arguments with what the function is there.
struct FunctionPoint {
    std::vector<std::string> arguments;
    std::string value;
};

/// Points of one function that are held to one bound, such as those of a tail.
struct FunctionRange {
    std::string name;
    std::string bound;  ///< of the relative error
    std::vector<FunctionPoint> points;
};

struct FunctionTable {
    std::string function;                ///< "SfChi"
    std::string title;                   ///< what it is
    std::vector<std::string> arguments;  ///< their names
    std::string made;                    ///< how the values were made
    std::vector<FunctionRange> ranges;
};

/// How far the function of a range is from its table. The table is borrowed.
struct CheckedRange {
    const FunctionTable* table;
    const FunctionRange* range;
    double worst = 0;     ///< largest relative error; not finite where there is no number
    std::string worstAt;  ///< "x = -37.5"
    std::string mistake;  ///< why it could not be worked out; mostly ""

    bool IsRight() const;
};

/// Reads all tables of a folder. Throws an `InputError` with file and key for what isn't as it should be.
std::vector<FunctionTable> ReadFunctionTables(const std::string& folder);

/// Works out all points. Those of Kolmogorov's distribution come from the library itself, by a test on a table that is
/// made for each.
std::vector<CheckedRange> CheckFunctions(const std::vector<FunctionTable>& tables, const WordReader& readWords,
                                         const AnalysisEnvironment& environment);

}  // namespace tarn
