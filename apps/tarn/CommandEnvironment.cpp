#include "apps/tarn/CommandEnvironment.h"

#include <filesystem>
#include <system_error>

#include "apps/tarn/Presentation.h"

namespace tarn {

std::string ProgramFolder() {
    std::error_code unreadable;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", unreadable);
    return unreadable ? "" : program.parent_path().string();
}

std::vector<std::string> LibraryFolders() {
    const std::string program = ProgramFolder();
    return {program, program + "/" + TARN_LIBRARIES_FROM_PROGRAM};
}

std::string ReferenceFolder() {
    const std::string beside = ProgramFolder() + "/reference";
    std::error_code unreadable;
    const bool isThere = std::filesystem::is_directory(beside, unreadable);
    return isThere ? beside : ProgramFolder() + "/" + TARN_REFERENCE_FROM_PROGRAM;
}

AnalysisEnvironment EnvironmentOf(Interrupt& interrupt, ProgressBar& progress, const TableOptions& options) {
    AnalysisEnvironment environment;
    environment.applicationVersion = TARN_VERSION;
    environment.libraryFolders = LibraryFolders();
    environment.texts = &Texts();
    environment.threads = options.threads;
    environment.memory = options.memory;
    environment.onProgress = [&progress](double percent) { progress.Show(static_cast<int>(percent)); };
    environment.isCancelled = [&interrupt] { return interrupt.IsAsked(); };
    return environment;
}

}  // namespace tarn
