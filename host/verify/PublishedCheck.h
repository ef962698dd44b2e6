#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/analysis/Analysis.h"
#include "host/table/TableLoader.h"
#include "host/verify/ReferencePack.h"
#include "host/words/AnalysisWords.h"

namespace tarn {

/// The words of `tarn analyze` as the host takes them.
struct WordsRead {
    AnalysisWords words;
    AnalysisOptions analysis;
    SupplementOptions supplement;
    /// What was said of the columns: levels, the field of the weights.
    LoadOptions load;
    /// The fields whose levels were given.
    std::vector<std::string> levels;
};

/// Reads what is typed behind the table of `tarn analyze`; throws an `InputError`. Given by whoever has a command line.
using WordReader = std::function<WordsRead(const std::vector<std::string>& words)>;

/// A printed number beside ours.
struct ComparedNumber {
    const Expectation* expected;  ///< of the case
    const PrintedNumber* wanted;  ///< what ours has to agree with
    Number ours;
    Agreement agreement;
    /// Whether a number that is told to be printed wrongly agrees nevertheless, so that the pack is wrong.
    bool isNeedlesslyExcused = false;

    bool IsRight() const { return agreement.agrees && !isNeedlesslyExcused; }
};

struct CheckedCase {
    const ReferenceCase* reference;
    std::vector<ComparedNumber> numbers;
    std::string mistake;  ///< why the case could not be run; mostly ""

    bool IsRight() const;
};

/// Runs a case as a user would, and compares its numbers. What can't be run is told in the result. `reference` is
/// borrowed. In the engine's fixed widths a significance may be off by the 2e-16 that it has as one minus a
/// distribution function.
CheckedCase CheckCase(const ReferenceCase& reference, ArithmeticMode arithmetic, const WordReader& readWords,
                      const AnalysisEnvironment& environment);

/// The whole way of `tarn analyze` from the text of a table to what is shown. Throws an `InputError` for a request that
/// can't be met or a run that failed.
ResultReading RunWords(const std::string& csv, const WordsRead& words, const AnalysisEnvironment& environment);

/// The first test of that name; null for none.
const TestReading* FindTest(const ResultReading& result, const std::string& name);

}  // namespace tarn
