#pragma once

#include <string>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/TableOptions.h"
#include "host/analysis/AnalysisEnvironment.h"

namespace tarn {

/// The folder of the running program; empty where the system doesn't say.
std::string ProgramFolder();

/// Where the engine's library is looked for: beside the program, where it is built, and in the folder of libraries of
/// the tree in which the program is installed.
std::vector<std::string> LibraryFolders();

/// The folder of the published results and of the tables of distribution functions that `tarn verify` runs: beside the
/// program, where it is built, or where it is installed.
std::string ReferenceFolder();

/// What an analysis of the command needs: the language of the user, Ctrl-C and the progress bar, both borrowed, and how
/// many threads and how much memory there may be.
AnalysisEnvironment EnvironmentOf(Interrupt& interrupt, ProgressBar& progress, const TableOptions& options);

}  // namespace tarn
