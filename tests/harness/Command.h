#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// Running the built command as a user would.
namespace harness {

struct CommandResult {
    int exitStatus = -1;
    std::string out;
    std::string err;
};

/// Runs `tarn` with the arguments and, where told, with a text as its standard input.
CommandResult RunTarn(const std::vector<std::string>& arguments, const std::string& input = "");

/// Runs `tarn` and sends it SIGINT so many seconds after it has begun to listen for it.
CommandResult RunTarnInterrupted(const std::vector<std::string>& arguments, double seconds);

/// A folder of its own for one test, removed with it.
class ScratchFolder {
 public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    /// The path of a file of that name in the folder.
    std::string Path(const std::string& name) const { return (folder_ / name).string(); }
    /// Writes a file and returns its path.
    std::string Write(const std::string& name, const std::string& content) const;
    /// The names of the files in the folder, sorted.
    std::vector<std::string> Files() const;

 private:
    std::filesystem::path folder_;
};

std::string ReadFile(const std::string& path);

/// A path within the project's sources.
std::string SourcePath(const std::string& relative);
/// The path of the built command.
std::string CommandPath();

}  // namespace harness
