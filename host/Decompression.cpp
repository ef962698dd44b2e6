#include "host/Decompression.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <new>
#include <string>

#include "host/InputError.h"

namespace tarn {

namespace {

constexpr std::string_view kGzip = "\x1f\x8b";
constexpr std::string_view kZstandard = "\x28\xb5\x2f\xfd";
constexpr std::size_t kBlockSize = std::size_t{1} << 16;

[[noreturn]] void FailBroken(const ByteSource& from, const char* format) {
    throw InputError(from.Name() + ": broken " + format + " data; expected a whole compressed file");
}

[[noreturn]] void FailCut(const ByteSource& from, const char* format) {
    throw InputError(from.Name() + ": the " + format + " data ends too early; expected a whole compressed file");
}

/// The compressed bytes that are at hand.
class Block {
 public:
    /// Reads on where nothing is left; false at the end of the input.
    bool Fill(ByteSource& from) {
        if (next_ < size_) return true;
        next_ = 0;
        size_ = from.Read(bytes_.data(), bytes_.size());
        return size_ > 0;
    }
    void Clear() { next_ = size_ = 0; }
    char* Next() { return bytes_.data() + next_; }
    std::size_t Left() const { return size_ - next_; }
    void Take(std::size_t count) { next_ += count; }

 private:
    std::array<char, kBlockSize> bytes_;
    std::size_t next_ = 0;
    std::size_t size_ = 0;
};

/// What comes of compressed bytes. A small file can stand for any number of rows; no table of measurements does.
class Expansion {
 public:
    void Add(const ByteSource& from, std::size_t taken, std::size_t made) {
        constexpr std::size_t kSmallText = std::size_t{256} << 20;
        constexpr std::size_t kMostTimes = 200;
        taken_ += taken;
        made_ += made;
        if (made_ <= kSmallText || made_ / kMostTimes <= taken_) return;
        throw InputError(from.Name() + ": unpacks to more than " + std::to_string(kMostTimes) +
                         " times its size; expected less, or the unpacked file");
    }

 private:
    std::size_t taken_ = 0;
    std::size_t made_ = 0;
};

class GzipFilter : public ByteFilter {
 public:
    GzipFilter() {
        constexpr int kGzipAlone = 16 + MAX_WBITS;
        if (inflateInit2(&stream_, kGzipAlone) != Z_OK) throw std::bad_alloc();
    }
    ~GzipFilter() override { inflateEnd(&stream_); }
    GzipFilter(const GzipFilter&) = delete;
    GzipFilter& operator=(const GzipFilter&) = delete;

    std::size_t Read(ByteSource& from, char* buffer, std::size_t capacity) override {
        capacity = std::min<std::size_t>(capacity, std::numeric_limits<uInt>::max());
        std::size_t taken = 0;
        stream_.next_out = reinterpret_cast<Bytef*>(buffer);
        stream_.avail_out = static_cast<uInt>(capacity);
        while (stream_.avail_out == capacity) {
            if (!block_.Fill(from)) {
                if (isInPart_) FailCut(from, kName);
                return 0;
            }
            if (!isInPart_ && !BeginPart()) return 0;
            stream_.next_in = reinterpret_cast<Bytef*>(block_.Next());
            stream_.avail_in = static_cast<uInt>(block_.Left());
            const int outcome = inflate(&stream_, Z_NO_FLUSH);
            taken += block_.Left() - stream_.avail_in;
            block_.Take(block_.Left() - stream_.avail_in);
            if (outcome == Z_MEM_ERROR) throw std::bad_alloc();
            if (outcome != Z_OK && outcome != Z_STREAM_END && outcome != Z_BUF_ERROR) FailBroken(from, kName);
            isInPart_ = outcome != Z_STREAM_END;
        }
        expansion_.Add(from, taken, capacity - stream_.avail_out);
        return capacity - stream_.avail_out;
    }

    void Restart() override {
        inflateReset(&stream_);
        block_.Clear();
        isInPart_ = false;
        isFirst_ = true;
        expansion_ = {};
    }

 private:
    static constexpr const char* kName = "gzip";

    /// False where what follows the first part is padding, as tapes have it, which gzip itself leaves out, too.
    bool BeginPart() {
        if (!isFirst_ && *block_.Next() == '\0') return false;
        isFirst_ = false;
        isInPart_ = true;
        inflateReset(&stream_);
        return true;
    }

    z_stream stream_ = {};
    Block block_;
    Expansion expansion_;
    bool isInPart_ = false;
    bool isFirst_ = true;
};

class ZstandardFilter : public ByteFilter {
 public:
    ZstandardFilter() : stream_(ZSTD_createDStream()) {
        if (!stream_) throw std::bad_alloc();
    }

    std::size_t Read(ByteSource& from, char* buffer, std::size_t capacity) override {
        ZSTD_outBuffer out = {buffer, capacity, 0};
        while (out.pos == 0) {
            // What was taken in may still have to come out where no more is to be had.
            const bool hasMore = block_.Fill(from);
            if (!hasMore && !isInPart_) return 0;
            ZSTD_inBuffer in = {block_.Next(), block_.Left(), 0};
            const std::size_t outcome = ZSTD_decompressStream(stream_.get(), &out, &in);
            block_.Take(in.pos);
            expansion_.Add(from, in.pos, out.pos);
            if (ZSTD_isError(outcome) != 0) FailBroken(from, kName);
            if (!hasMore && out.pos == 0) FailCut(from, kName);
            isInPart_ = outcome != 0;
        }
        return out.pos;
    }

    void Restart() override {
        ZSTD_DCtx_reset(stream_.get(), ZSTD_reset_session_only);
        block_.Clear();
        isInPart_ = false;
        expansion_ = {};
    }

 private:
    static constexpr const char* kName = "Zstandard";

    struct Free {
        void operator()(ZSTD_DStream* stream) const { ZSTD_freeDStream(stream); }
    };

    std::unique_ptr<ZSTD_DStream, Free> stream_;
    Block block_;
    Expansion expansion_;
    bool isInPart_ = false;
};

}  // namespace

std::unique_ptr<ByteFilter> DecompressionOf(std::string_view firstBytes) {
    if (firstBytes.starts_with(kGzip)) return std::make_unique<GzipFilter>();
    if (firstBytes.starts_with(kZstandard)) return std::make_unique<ZstandardFilter>();
    return nullptr;
}

}  // namespace tarn
