#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace tarn {

class ByteSource;

/// Makes other bytes of those of an input on their way to a reader: of compressed ones what was compressed, of one
/// encoding another.
class ByteFilter {
 public:
    virtual ~ByteFilter() = default;
    /// Puts up to `capacity` bytes of what `from` becomes into `buffer` and returns their number, which is 0 only at
    /// the end. Throws an `InputError` that names `from` for what can't become anything.
    virtual std::size_t Read(ByteSource& from, char* buffer, std::size_t capacity) = 0;
    /// Starts over, with an input that is at its first byte again.
    virtual void Restart() = 0;
};

/// The bytes of one input, read from front to back and, after `Rewind`, once more from the front.
///
/// A regular file is read again from the disk. Anything else (a pipe, a terminal) is kept in memory as it is read.
/// All operations throw an `InputError` that names the input and the reason when the system can't read it.
class ByteSource {
 public:
    /// Opens the file at `path`; "-" is standard input.
    explicit ByteSource(const std::string& path);
    /// An input that is already in memory; `name` stands for it in messages.
    static ByteSource FromMemory(std::string name, std::string bytes);
    /// What `filter` makes of an input, which is at its first byte. It bears the same name.
    static ByteSource Through(ByteSource from, std::unique_ptr<ByteFilter> filter);

    ByteSource(ByteSource&& other) noexcept;
    ByteSource& operator=(ByteSource&&) = delete;
    ~ByteSource();

    /// What messages call the input: its path, or "standard input".
    const std::string& Name() const { return name_; }

    /// How many bytes the whole input has, as far as that is known before it is read.
    std::optional<std::size_t> Size() const;
    /// Reads up to `capacity` bytes into `buffer` and returns their number, which is 0 only at the end.
    std::size_t Read(char* buffer, std::size_t capacity);
    /// All bytes from the position to the end.
    std::string ReadAll();
    /// The same of a text of at most `limit` bytes. Throws an `InputError` as soon as there are more of them, or a NUL
    /// byte, which no text has: a device or a pipe may have no end.
    std::string ReadText(std::size_t limit);
    /// Goes back to the first byte.
    void Rewind();

 private:
    ByteSource(std::string name, std::string bytes, int descriptor);
    std::size_t ReadDescriptor(char* buffer, std::size_t capacity);
    /// Appends the next bytes to `bytes` and returns their number, which is 0 only at the end.
    std::size_t ReadBlock(std::string& bytes);

    std::string name_;
    std::string kept_;          // the bytes so far of an input that can't be read again
    std::size_t position_ = 0;  // in kept_
    int descriptor_;            // owned unless it is standard input; kNoDescriptor for an input in memory
    bool seekable_ = false;
    long long start_ = 0;  // where a seekable input began; standard input may be handed over in its middle
    std::unique_ptr<ByteSource> unfiltered_;  // what the filter reads; null without one
    std::unique_ptr<ByteFilter> filter_;
};

}  // namespace tarn
