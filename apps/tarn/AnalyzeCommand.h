#pragma once

#include <string>
#include <vector>

#include "apps/tarn/Command.h"
#include "apps/tarn/Study.h"
#include "apps/tarn/TableOptions.h"
#include "host/beyond/SupplementOptions.h"
#include "host/engine/AnalysisRequest.h"
#include "host/words/AnalysisWords.h"

namespace tarn {

/// What the user typed behind `tarn analyze`.
struct AnalyzeOptions {
    TableOptions table;
    OutputOptions output;
    AnalysisOptions analysis;
    SupplementOptions supplement;
    AnalysisWords words;
    std::string savePath;  ///< for the study; empty: none
    Study study;           ///< what was typed
    Json studiedData;      ///< what a study says of its table; null for none
    Json compared;         ///< a result that this one is compared with instead of being shown; or null
};

/// The fields whose levels were typed.
std::vector<std::string> LevelsOf(const AnalyzeOptions& options);

/// `tarn analyze`: builds the request for the user, hands it to the engine as a host does, and shows the result as a
/// table, or in what it differs from another one, and ends with `kIsAnother` where it does. Fails, with the results
/// shown, where no test could be done. Throws an `InputError` for an input that can't be read or a wish that can't be
/// met.
ExitStatus Analyze(const AnalyzeOptions& options);

/// `tarn tests`: the names of the tests, a line each.
ExitStatus ListTests();

}  // namespace tarn
