#include "host/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <utility>

#include "host/InputError.h"

namespace tarn {

namespace {

constexpr mode_t kAllRights = 0666;  // of which the user's own mask decides who may read a result
constexpr int kMostNames = 100;
constexpr std::size_t kPiece = std::size_t{1} << 20;  // bytes; some milliseconds of a disk

/// Held while the path of a temporary file comes or goes, and for good once such files are abandoned.
std::mutex& Gate() {
    static auto* const gate = new std::mutex;
    return *gate;
}

static_assert(std::atomic<const char*>::is_always_lock_free, "a signal handler can't wait for a lock");
/// Of the temporary file that is there now, or may be; null for none.
std::atomic<const char*> unfinishedPath = nullptr;

[[noreturn]] void Fail(const std::string& target, int reason) {
    throw InputError(target + ": can't be written: " + std::strerror(reason));
}

/// A name beside a file that is to be written, removed again unless it became the name of that file.
class TemporaryName {
 public:
    explicit TemporaryName(const std::string& target)
        : target_(target), folder_(std::filesystem::path(target).parent_path()) {}
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;
    ~TemporaryName() {
        const std::lock_guard lock(Gate());
        if (isTaken_) unlink(path_.c_str());
        unfinishedPath = nullptr;
    }

    /// Looks for a name that is free. `create(path)` makes the file of that name and returns whether it did; it leaves
    /// EEXIST for a name that isn't free, and any other reason ends the search.
    template <typename Create>
    bool Take(Create create) {
        static std::atomic<unsigned> count = 0;
        for (int i = 0; i < kMostNames && !isTaken_; ++i) {
            // Not the name of the target with something behind it, which may be as long as names can be.
            path_ = (folder_ / (".tarn-" + std::to_string(getpid()) + "-" + std::to_string(++count))).string();
            const std::lock_guard lock(Gate());
            unfinishedPath = path_.c_str();
            isTaken_ = create(path_.c_str());
            if (isTaken_) break;
            const int reason = errno;
            unfinishedPath = nullptr;
            errno = reason;
            if (reason != EEXIST) break;
        }
        return isTaken_;
    }

    /// The file takes the name of the target.
    void Rename() {
        const std::lock_guard lock(Gate());
        if (std::rename(path_.c_str(), target_.c_str()) != 0) Fail(target_, errno);
        isTaken_ = false;
        unfinishedPath = nullptr;
    }

 private:
    std::string target_;
    std::filesystem::path folder_;
    std::string path_;
    bool isTaken_ = false;
};

/// An open file.
class Descriptor {
 public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }

    int Number() const { return number_; }
    /// Writes the file down to the disk; `target` is what messages call it.
    void Write(std::string_view content, const std::string& target) const {
        off_t place = 0;
        while (!content.empty()) {
            const ssize_t written = write(number_, content.data(), std::min(content.size(), kPiece));
            if (written < 0 && errno == EINTR) continue;
            if (written < 0) Fail(target, errno);
            content.remove_prefix(static_cast<std::size_t>(written));
            SendToDisk(place, written);
            place += written;
        }
        if (fsync(number_) != 0) Fail(target, errno);
    }
    void Close(const std::string& target) {
        if (close(std::exchange(number_, -1)) != 0) Fail(target, errno);
    }

 private:
    /// The disk gets on with the piece at `place` and is done with those before it. Nothing ends a process that waits
    /// for a disk, so that each wait is short: that of `fsync` for all of a large file is not. A system that can't do
    /// that leaves it to `fsync`, which also says what went wrong.
    void SendToDisk(off_t place, off_t size) const {
#if defined(SYNC_FILE_RANGE_WRITE)
        constexpr unsigned kAwaited = SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
        sync_file_range(number_, place, size, SYNC_FILE_RANGE_WRITE);
        const off_t before = std::min<off_t>(place, kPiece);
        if (before > 0) sync_file_range(number_, place - before, before, kAwaited);
#endif
    }

    int number_;
};

/// False where the system can't do that; nothing was written then.
bool WriteUnnamedFile(const std::string& target, std::string_view content) {
#if defined(O_TMPFILE)
    std::string folder = std::filesystem::path(target).parent_path().string();
    if (folder.empty()) folder = ".";
    const Descriptor file(open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kAllRights));
    if (file.Number() < 0) return false;
    file.Write(content, target);
    const std::string self = "/proc/self/fd/" + std::to_string(file.Number());
    const auto link = [&self](const char* path) {
        return linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0;
    };
    if (link(target.c_str())) return true;
    if (errno != EEXIST) return false;
    // No call puts a file without a name in the place of another: for a moment it bears one of its own.
    TemporaryName name(target);
    if (!name.Take(link)) return false;
    name.Rename();
    return true;
#else
    return false;
#endif
}

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
    if (!written) Fail(path, reason);
}

/// Where symbolic links lead, whether or not there is something.
std::string Followed(const std::string& path) {
    constexpr int kMostLinks = 40;
    std::filesystem::path followed = path;
    for (int i = 0; i < kMostLinks; ++i) {
        std::error_code unreadable;
        if (!std::filesystem::is_symlink(std::filesystem::symlink_status(followed, unreadable))) {
            return followed.string();
        }
        const std::filesystem::path link = std::filesystem::read_symlink(followed, unreadable);
        if (unreadable) Fail(path, unreadable.value());
        followed = link.is_absolute() ? link : followed.parent_path() / link;
    }
    Fail(path, ELOOP);
}

}  // namespace

void WriteWholeFile(const std::string& path, std::string_view content) {
    if (path.empty()) throw InputError("an empty path can't be written; expected a file");
    if (IsSpecialFile(path)) {
        WriteSpecialFile(path, content);
        return;
    }
    const std::string target = Followed(path);
    if (!WriteUnnamedFile(target, content)) WriteWholeFileByName(target, content);
}

void WriteWholeFileByName(const std::string& path, std::string_view content) {
    const std::string target = Followed(path);
    TemporaryName name(target);
    int number = -1;
    const auto create = [&number](const char* free) {
        number = open(free, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kAllRights);
        return number >= 0;
    };
    if (!name.Take(create)) Fail(path, errno);
    Descriptor file(number);
    file.Write(content, path);
    file.Close(path);
    name.Rename();
}

void AbandonUnfinishedFile() {
    Gate().lock();
    RemoveUnfinishedFile();
}

void RemoveUnfinishedFile() {
    if (const char* const path = unfinishedPath.load()) unlink(path);
}

}  // namespace tarn
