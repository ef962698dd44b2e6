#pragma once

#include <string>
#include <vector>

#include "apps/tarn/AnalyzeCommand.h"
#include "apps/tarn/Command.h"
#include "apps/tarn/CommandDescription.h"

namespace tarn {

/// Reads what was typed and does it. Wrong usage is reported in one line; throws an `InputError` for an input that
/// can't be read.
ExitStatus RunCommandLine(int argc, const char* const* argv);

/// What stands behind `tarn analyze DATA.csv`, read and not done. Throws an `InputError` for what can't be read.
AnalyzeOptions ReadAnalyzeWords(const std::vector<std::string>& words);

/// All that can be typed: the source of the man page and of the completions of the shells.
std::vector<CommandDescription> DescribeCommands();

}  // namespace tarn
