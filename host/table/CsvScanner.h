#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarn {

/// Finds the bytes that structure delimited values (delimiter, double quote, LF), a chunk of bytes at a time.
class CsvScanner {
 public:
    explicit CsvScanner(char delimiter) : delimiter_(delimiter) {}

    static constexpr std::ptrdiff_t kChunkSize = 64;
    /// How many bytes after the end of the text are looked at; they must be readable, and blanks.
    static constexpr std::size_t kPadding = kChunkSize;

    /// Starts over at `first`. The text is borrowed until the next call.
    void Seek(const char* first, const char* last) {
        chunk_ = first;
        last_ = last;
        isOdd_ = false;
        LoadChunk();
    }

    /// The next structuring byte; null if there is none before the end.
    const char* Next() {
        while (structure_ == 0) {
            if (last_ - chunk_ <= kChunkSize) return nullptr;
            chunk_ += kChunkSize;
            LoadChunk();
        }
        const char* const position = chunk_ + std::countr_zero(structure_);
        structure_ &= structure_ - 1;
        return position;
    }

    /// Whether the chunks since `ForgetOddBytes` hold a NUL or a byte that is not ASCII.
    bool HasOddBytes() const { return isOdd_; }
    /// To be called at the end of a row: the last chunk, which the next row shares, still counts.
    void ForgetOddBytes() { isOdd_ = isChunkOdd_; }

 private:
    void LoadChunk();

    char delimiter_;
    const char* chunk_ = nullptr;
    const char* last_ = nullptr;
    std::uint64_t structure_ = 0;  // a bit for each structuring byte of the chunk that was not delivered yet
    bool isChunkOdd_ = false;
    bool isOdd_ = false;
};

#if defined(__SSE2__)

inline void CsvScanner::LoadChunk() {
    constexpr int kLaneSize = sizeof(__m128i);
    const __m128i delimiter = _mm_set1_epi8(delimiter_);
    const __m128i quote = _mm_set1_epi8('"');
    const __m128i lineFeed = _mm_set1_epi8('\n');
    __m128i odd = _mm_setzero_si128();
    structure_ = 0;
    for (int offset = 0; offset < kChunkSize; offset += kLaneSize) {
        const __m128i lane = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chunk_ + offset));
        const __m128i found = _mm_or_si128(
            _mm_or_si128(_mm_cmpeq_epi8(lane, delimiter), _mm_cmpeq_epi8(lane, lineFeed)), _mm_cmpeq_epi8(lane, quote));
        structure_ |= static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(found))) << offset;
        odd = _mm_or_si128(odd, _mm_or_si128(lane, _mm_cmpeq_epi8(lane, _mm_setzero_si128())));
    }
    isChunkOdd_ = _mm_movemask_epi8(odd) != 0;
    isOdd_ |= isChunkOdd_;
}

#else

inline void CsvScanner::LoadChunk() {
    structure_ = 0;
    isChunkOdd_ = false;
    for (int offset = 0; offset < kChunkSize; ++offset) {
        const char c = chunk_[offset];
        const bool isStructure = c == delimiter_ || c == '"' || c == '\n';
        structure_ |= static_cast<std::uint64_t>(isStructure) << offset;
        isChunkOdd_ |= c == '\0' || static_cast<unsigned char>(c) >= 0x80;
    }
    isOdd_ |= isChunkOdd_;
}

#endif

}  // namespace tarn
