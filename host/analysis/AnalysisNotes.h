#pragma once

#include <string>
#include <vector>

#include "host/engine/AnalysisRequest.h"
#include "host/report/ResultOrder.h"
#include "host/table/Table.h"

namespace tarn {

/// What a reader of an analysis should know of its data and of its options besides the results, as sentences. What
/// became of weights is no part of it: that is noted with every run.
std::vector<std::string> NotesOn(const Table& table, const AnalysisOptions& options);

/// The order in which an analysis asks for its tests, in the words of the document.
AskedOrder OrderOf(const AnalysisOptions& options);

}  // namespace tarn
