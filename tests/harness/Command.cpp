#include "tests/harness/Command.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace harness {

namespace {

/// As a word of the shell that nothing in it can leave.
std::string ShellWord(const std::string& text) {
    std::string word = "'";
    for (const char c : text) word += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return word + "'";
}

/// Runs the command with its streams in files; `behind` is what the shell does with it.
CommandResult RunInShell(const std::vector<std::string>& arguments, const std::string& input,
                         const std::string& behind) {
    const ScratchFolder scratch;
    std::string line = ShellWord(CommandPath());
    for (const std::string& argument : arguments) line += " " + ShellWord(argument);
    line += " <" + ShellWord(scratch.Write("in", input)) + " >" + ShellWord(scratch.Path("out")) + " 2>" +
            ShellWord(scratch.Path("err")) + behind;
    const int status = std::system(line.c_str());
    CommandResult result;
    result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = ReadFile(scratch.Path("out"));
    result.err = ReadFile(scratch.Path("err"));
    return result;
}

}  // namespace

CommandResult RunTarn(const std::vector<std::string>& arguments, const std::string& input) {
    return RunInShell(arguments, input, "");
}

CommandResult RunTarnInterrupted(const std::vector<std::string>& arguments, double seconds) {
    // Until it is `tarn`, the process is still the shell. SIGINT is the second bit of the mask of caught signals. A
    // command that never catches it is not waited for beyond 20 seconds.
    return RunInShell(arguments, "",
                      " & p=$!; n=0; until grep -qx tarn /proc/$p/comm && grep -q 'SigCgt:.*[2367abef]$' "
                      "/proc/$p/status || [ $((n+=1)) -gt 1000 ]; do sleep 0.02; done; sleep " +
                          std::to_string(seconds) + "; kill -INT $p; wait $p");
}

ScratchFolder::ScratchFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tarn-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) ADD_FAILURE() << "no scratch folder " << pattern;
    folder_ = pattern;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string ScratchFolder::Write(const std::string& name, const std::string& content) const {
    std::ofstream(Path(name), std::ios::binary) << content;
    return Path(name);
}

std::vector<std::string> ScratchFolder::Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string SourcePath(const std::string& relative) {
    return std::string(TARN_SOURCE_PATH) + "/" + relative;
}
std::string CommandPath() {
    return TARN_COMMAND_PATH;
}

}  // namespace harness
