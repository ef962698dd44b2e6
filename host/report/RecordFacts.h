#pragma once

#include <vector>

#include "host/report/RunRecord.h"
#include "host/report/TestPage.h"

namespace tarn {

// Facts that some media have a place of their own for.
inline constexpr const char* kRequestFact = "Request";
inline constexpr const char* kProgramFact = "Program";

/// By what a result was made, for a reader: the same for all parts of an analysis.
std::vector<PageFact> ProgramFacts(const RunRecord& record);

/// From what it was made: the hash of the data, and who was left out.
std::vector<PageFact> DataFacts(const RunRecord& record);

}  // namespace tarn
