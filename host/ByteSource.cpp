#include "host/ByteSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/InputError.h"

namespace tarn {

namespace {

constexpr int kNoDescriptor = -1;
constexpr std::size_t kReadAllBlock = 1 << 16;

[[noreturn]] void FailWithErrno(const std::string& name) {
    throw InputError(name + ": cannot be read: " + std::strerror(errno) + "; expected a readable file");
}

int OpenForReading(const std::string& path) {
    if (path.empty()) throw InputError("an empty path can't be read; expected a file");
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) FailWithErrno(path);
    return descriptor;
}

}  // namespace

ByteSource::ByteSource(const std::string& path)
    : ByteSource(path == "-" ? "standard input" : path, {}, path == "-" ? STDIN_FILENO : OpenForReading(path)) {
    struct stat status = {};
    if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) return;
    start_ = lseek(descriptor_, 0, SEEK_CUR);
    seekable_ = start_ >= 0;
}

ByteSource::ByteSource(std::string name, std::string bytes, int descriptor)
    : name_(std::move(name)), kept_(std::move(bytes)), descriptor_(descriptor) {}

ByteSource ByteSource::FromMemory(std::string name, std::string bytes) {
    return ByteSource(std::move(name), std::move(bytes), kNoDescriptor);
}

ByteSource ByteSource::Through(ByteSource from, std::unique_ptr<ByteFilter> filter) {
    ByteSource source(from.Name(), {}, kNoDescriptor);
    source.unfiltered_ = std::make_unique<ByteSource>(std::move(from));
    source.filter_ = std::move(filter);
    return source;
}

ByteSource::ByteSource(ByteSource&& other) noexcept
    : name_(std::move(other.name_)),
      kept_(std::move(other.kept_)),
      position_(other.position_),
      descriptor_(std::exchange(other.descriptor_, kNoDescriptor)),
      seekable_(other.seekable_),
      start_(other.start_),
      unfiltered_(std::move(other.unfiltered_)),
      filter_(std::move(other.filter_)) {}

ByteSource::~ByteSource() {
    if (descriptor_ != kNoDescriptor && descriptor_ != STDIN_FILENO) close(descriptor_);
}

std::optional<std::size_t> ByteSource::Size() const {
    if (filter_) return std::nullopt;
    if (descriptor_ == kNoDescriptor) return kept_.size();
    struct stat status = {};
    if (!seekable_ || fstat(descriptor_, &status) != 0 || status.st_size < start_) return std::nullopt;
    return static_cast<std::size_t>(status.st_size - start_);
}

std::size_t ByteSource::Read(char* buffer, std::size_t capacity) {
    if (filter_) return filter_->Read(*unfiltered_, buffer, capacity);
    if (position_ < kept_.size()) {
        const std::size_t count = kept_.copy(buffer, capacity, position_);
        position_ += count;
        return count;
    }
    if (descriptor_ == kNoDescriptor) return 0;
    const std::size_t count = ReadDescriptor(buffer, capacity);
    if (!seekable_) {
        kept_.append(buffer, count);
        position_ += count;
    }
    return count;
}

std::size_t ByteSource::ReadDescriptor(char* buffer, std::size_t capacity) {
    for (;;) {
        const ssize_t count = read(descriptor_, buffer, capacity);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) FailWithErrno(name_);
    }
}

std::size_t ByteSource::ReadBlock(std::string& bytes) {
    const std::size_t size = bytes.size();
    bytes.resize(size + kReadAllBlock);
    const std::size_t count = Read(bytes.data() + size, kReadAllBlock);
    bytes.resize(size + count);
    return count;
}

std::string ByteSource::ReadAll() {
    std::string bytes;
    while (ReadBlock(bytes) > 0) {
    }
    return bytes;
}

std::string ByteSource::ReadText(std::size_t limit) {
    constexpr std::size_t kMebibyte = std::size_t{1} << 20;
    std::string text;
    std::size_t checked = 0;
    while (ReadBlock(text) > 0) {
        const std::size_t nul = text.find('\0', checked);
        if (nul != std::string::npos) {
            throw InputError(name_ + ": byte " + std::to_string(nul + 1) + " is zero; expected a text");
        }
        if (text.size() > limit) {
            throw InputError(name_ + ": longer than " + std::to_string(limit / kMebibyte) + " MiB; expected less");
        }
        checked = text.size();
    }
    return text;
}

void ByteSource::Rewind() {
    if (filter_) {
        unfiltered_->Rewind();
        filter_->Restart();
    }
    position_ = 0;
    if (seekable_ && lseek(descriptor_, start_, SEEK_SET) < 0) FailWithErrno(name_);
}

}  // namespace tarn
