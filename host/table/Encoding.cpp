#include "host/table/Encoding.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <string>

#include "host/BlockFilter.h"
#include "host/InputError.h"

namespace tarn {

namespace {

constexpr std::string_view kUtf8Mark = "\xef\xbb\xbf";
constexpr std::string_view kLittleEndianMark = "\xff\xfe";
constexpr std::string_view kBigEndianMark = "\xfe\xff";
constexpr char32_t kMark = 0xfeff;
constexpr char32_t kFirstHighSurrogate = 0xd800;
constexpr char32_t kFirstLowSurrogate = 0xdc00;
constexpr char32_t kBehindSurrogates = 0xe000;
constexpr char32_t kFirstOfPairs = 0x10000;

void AppendUtf8(char32_t character, std::string& text) {
    const auto append = [&](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xc0 | character >> 6);
        append(0x80 | (character & 0x3f));
    } else if (character < kFirstOfPairs) {
        append(0xe0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3f));
        append(0x80 | (character & 0x3f));
    } else {
        append(0xf0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3f));
        append(0x80 | (character >> 6 & 0x3f));
        append(0x80 | (character & 0x3f));
    }
}

class Utf16Filter : public BlockFilter {
 public:
    explicit Utf16Filter(bool isBigEndian) : isBigEndian_(isBigEndian) {}

    void Restart() override {
        BlockFilter::Restart();
        hasHalf_ = false;
        high_ = 0;
        isFirst_ = true;
        line_ = 1;
    }

 private:
    void Convert(std::string_view bytes, std::string& made, const ByteSource& from) override {
        for (const char byte : bytes) {
            const auto value = static_cast<unsigned char>(byte);
            if (!hasHalf_) {
                half_ = value;
            } else {
                TakeUnit(isBigEndian_ ? static_cast<char32_t>(half_ << 8 | value)
                                      : static_cast<char32_t>(value << 8 | half_),
                         made, from);
            }
            hasHalf_ = !hasHalf_;
        }
    }

    void TakeUnit(char32_t unit, std::string& made, const ByteSource& from) {
        const bool isMark = std::exchange(isFirst_, false) && unit == kMark;
        const bool isHigh = unit >= kFirstHighSurrogate && unit < kFirstLowSurrogate;
        const bool isLow = unit >= kFirstLowSurrogate && unit < kBehindSurrogates;
        if (isLow != (high_ != 0)) Fail(from);
        if (isMark) return;
        if (isLow) {
            unit = kFirstOfPairs + ((high_ - kFirstHighSurrogate) << 10) + (unit - kFirstLowSurrogate);
        }
        high_ = isHigh ? unit : 0;
        if (isHigh) return;
        if (unit == U'\n') ++line_;
        AppendUtf8(unit, made);
    }

    void Finish(const ByteSource& from) override {
        if (hasHalf_ || high_ != 0) Fail(from);
    }

    [[noreturn]] void Fail(const ByteSource& from) const {
        throw InputError(from.Name() + ":" + std::to_string(line_) + ": half a character; expected text in UTF-16");
    }

    bool isBigEndian_;
    bool hasHalf_ = false;
    unsigned half_ = 0;
    char32_t high_ = 0;  // the first unit of a pair
    bool isFirst_ = true;
    std::size_t line_ = 1;
};

/// What the bytes from 0x80 to 0x9f are in Windows-1252; 0 for those that are nothing.
constexpr std::array<char32_t, 32> kWindows1252 = {0x20ac, 0,      0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                                   0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017d, 0,
                                                   0,      0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                                   0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0,      0x017e, 0x0178};

/// Of an encoding that has a byte for each character.
class OneByteFilter : public BlockFilter {
 public:
    explicit OneByteFilter(bool isWindows) : isWindows_(isWindows) {}

    void Restart() override {
        BlockFilter::Restart();
        line_ = 1;
    }

 private:
    void Convert(std::string_view bytes, std::string& made, const ByteSource& from) override {
        for (const char byte : bytes) {
            const auto value = static_cast<unsigned char>(byte);
            if (value == '\n') ++line_;
            if (value < 0x80) {
                made += byte;
                continue;
            }
            const bool isOfWindows = isWindows_ && value < 0x80 + kWindows1252.size();
            const char32_t character = isOfWindows ? kWindows1252[value - 0x80] : value;
            if (character == 0) {
                char text[8];
                std::snprintf(text, sizeof text, "0x%02X", value);
                throw InputError(from.Name() + ":" + std::to_string(line_) + ": byte " + text +
                                 "; expected text in windows-1252, which has no such character");
            }
            AppendUtf8(character, made);
        }
    }

    bool isWindows_;
    std::size_t line_ = 1;
};

class ReturnFilter : public ByteFilter {
 public:
    std::size_t Read(ByteSource& from, char* buffer, std::size_t capacity) override {
        const std::size_t count = from.Read(buffer, capacity);
        std::replace(buffer, buffer + count, '\r', '\n');
        return count;
    }
    void Restart() override {}
};

}  // namespace

std::string_view NameOf(Encoding encoding) {
    return std::ranges::find(kEncodings, encoding, [](const auto& named) { return named.second; })->first;
}

std::optional<Encoding> EncodingOfMark(std::string_view firstBytes) {
    if (firstBytes.starts_with(kUtf8Mark)) return Encoding::kUtf8;
    if (firstBytes.starts_with(kLittleEndianMark)) return Encoding::kUtf16LittleEndian;
    if (firstBytes.starts_with(kBigEndianMark)) return Encoding::kUtf16BigEndian;
    return std::nullopt;
}

std::unique_ptr<ByteFilter> Utf8From(Encoding encoding) {
    switch (encoding) {
        case Encoding::kUtf8:
            break;
        case Encoding::kUtf16LittleEndian:
            return std::make_unique<Utf16Filter>(false);
        case Encoding::kUtf16BigEndian:
            return std::make_unique<Utf16Filter>(true);
        case Encoding::kWindows1252:
            return std::make_unique<OneByteFilter>(true);
        case Encoding::kIso88591:
            return std::make_unique<OneByteFilter>(false);
    }
    return nullptr;
}

std::unique_ptr<ByteFilter> LineFeedsForReturns() {
    return std::make_unique<ReturnFilter>();
}

}  // namespace tarn
