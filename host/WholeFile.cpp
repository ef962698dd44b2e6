#include "host/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "host/InputError.h"

namespace tarn {

namespace {

/// Held while the path of a temporary file comes or goes, and for good once such files are abandoned.
std::mutex& Gate() {
    static auto* const gate = new std::mutex;
    return *gate;
}
/// Of the temporary file that is there now; null for none.
const char* unfinishedPath = nullptr;

/// A temporary file that is removed again unless it was given its name.
class TemporaryFile {
 public:
    explicit TemporaryFile(const std::string& target) : target_(target), path_(target + ".XXXXXX") {
        const std::lock_guard lock(Gate());
        descriptor_ = mkstemp(path_.data());
        if (descriptor_ < 0) Fail();
        unfinishedPath = path_.c_str();
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        if (descriptor_ >= 0) close(descriptor_);
        const std::lock_guard lock(Gate());
        unfinishedPath = nullptr;
        if (!renamed_) unlink(path_.c_str());
    }

    void Write(std::string_view content) {
        while (!content.empty()) {
            const ssize_t written = write(descriptor_, content.data(), content.size());
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) Fail();
            content.remove_prefix(static_cast<std::size_t>(written));
        }
    }

    void Rename() {
        // mkstemp makes a private file; the user's own mask decides who may read a result.
        const mode_t mask = umask(0);
        umask(mask);
        if (fchmod(descriptor_, 0666 & ~mask) != 0 || fsync(descriptor_) != 0) Fail();
        const int descriptor = descriptor_;
        descriptor_ = -1;
        const std::lock_guard lock(Gate());
        if (close(descriptor) != 0 || std::rename(path_.c_str(), target_.c_str()) != 0) Fail();
        renamed_ = true;
        unfinishedPath = nullptr;
    }

 private:
    [[noreturn]] void Fail() const { throw InputError(target_ + ": can't be written: " + std::strerror(errno)); }

    std::string target_;
    std::string path_;
    int descriptor_ = -1;
    bool renamed_ = false;
};

/// A device or a pipe can't be replaced by a file of its name; it is written to as it is.
bool IsSpecialFile(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode);
}

void WriteSpecialFile(const std::string& path, std::string_view content) {
    std::FILE* file = std::fopen(path.c_str(), "w");
    const bool written = file != nullptr && std::fwrite(content.data(), 1, content.size(), file) == content.size() &&
                         std::fflush(file) == 0;
    const int reason = errno;
    if (file != nullptr) std::fclose(file);
    if (!written) throw InputError(path + ": can't be written: " + std::strerror(reason));
}

}  // namespace

void WriteWholeFile(const std::string& path, std::string_view content) {
    if (IsSpecialFile(path)) {
        WriteSpecialFile(path, content);
        return;
    }
    TemporaryFile file(path);
    file.Write(content);
    file.Rename();
}

void AbandonUnfinishedFile() {
    Gate().lock();
    if (unfinishedPath != nullptr) unlink(unfinishedPath);
}

}  // namespace tarn
