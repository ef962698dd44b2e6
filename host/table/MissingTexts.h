#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/common/DecimalNumber.h"

namespace tarn {

/// How many cells of a column hold each of the texts that mark them as missing, by the place of the text. Shorter than
/// there are texts where the last of them don't occur.
class MissingCounts {
 public:
    void Count(std::size_t text) {
        if (text >= counts_.size()) counts_.resize(text + 1);
        ++counts_[text];
    }
    void Add(const MissingCounts& others) {
        if (others.counts_.size() > counts_.size()) counts_.resize(others.counts_.size());
        for (std::size_t i = 0; i < others.counts_.size(); ++i) counts_[i] += others.counts_[i];
    }
    void Clear() { counts_.clear(); }
    std::size_t Size() const { return counts_.size(); }
    std::size_t Of(std::size_t text) const { return counts_[text]; }

 private:
    std::vector<std::size_t> counts_;
};

/// A few texts that mark a cell as missing. Every cell of a table is looked up here, and nearly none is found.
class MissingTexts {
 public:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    /// `amongNumbers`: those that may be a word like any other, and mark a cell of a column without words alone.
    explicit MissingTexts(std::vector<std::string> texts, const std::vector<std::string>& amongNumbers = {})
        : texts_(std::move(texts)), wordCount_(texts_.size()) {
        texts_.insert(texts_.end(), amongNumbers.begin(), amongNumbers.end());
        for (const std::string& text : texts_) {
            lengths_ |= LengthBit(text);
            firsts_ |= FirstBit(text);
            hasNumbers_ = hasNumbers_ || ParseDecimal(text);
        }
    }

    /// The place of the text; `kNone` if it marks nothing.
    std::size_t Find(std::string_view text) const { return MayBe(text) ? FindAmong(text, texts_.size()) : kNone; }
    /// The same for a cell of a column with words.
    std::size_t FindAmongWords(std::string_view text) const {
        return MayBe(text) ? FindAmong(text, wordCount_) : kNone;
    }
    /// Whether the text at that place can be a word.
    bool MayBeWord(std::size_t place) const { return place >= wordCount_; }
    const std::string& Text(std::size_t place) const { return texts_[place]; }
    std::size_t Size() const { return texts_.size(); }

    /// Whether one of them is a number, so that no cell is one at first sight.
    bool HasNumbers() const { return hasNumbers_; }

 private:
    /// Whether a text is as long as one of them and one begins alike, which is so of few others.
    bool MayBe(std::string_view text) const {
        return (lengths_ & LengthBit(text)) != 0 && (firsts_ & FirstBit(text)) != 0;
    }

    [[gnu::noinline]] std::size_t FindAmong(std::string_view text, std::size_t count) const {
        for (std::size_t i = 0; i < count; ++i) {
            if (texts_[i] == text) return i;
        }
        return kNone;
    }

    static std::uint64_t LengthBit(std::string_view text) {
        return std::uint64_t{1} << std::min<std::size_t>(text.size(), 63);
    }

    static std::uint64_t FirstBit(std::string_view text) {
        return text.empty() ? 1 : std::uint64_t{1} << (static_cast<unsigned char>(text.front()) % 64);
    }

    std::vector<std::string> texts_;
    std::size_t wordCount_;      // so many of them, the first ones, mark a cell of any column
    std::uint64_t lengths_ = 0;  // a bit for each length among the texts; the last one for all that are longer
    std::uint64_t firsts_ = 0;   // a bit for each first character
    bool hasNumbers_ = false;
};

}  // namespace tarn
