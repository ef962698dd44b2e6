#pragma once

#include <string>
#include <vector>

#include "apps/tarn/CommandDescription.h"

namespace tarn {

/// The shells that are known: "bash" and "zsh".
const std::vector<std::string>& ShellNames();

/// The script by which a shell completes commands, options, their words, files, and the fields of the table that was
/// typed. `shell` is one of `ShellNames`.
std::string ShellCompletion(const std::string& shell, const std::vector<CommandDescription>& commands);

}  // namespace tarn
