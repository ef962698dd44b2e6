#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "host/ByteSource.h"

namespace tarn {

/// Reads blocks, and hands out what its heirs make of them.
class BlockFilter : public ByteFilter {
 public:
    std::size_t Read(ByteSource& from, char* buffer, std::size_t capacity) override {
        while (next_ == made_.size()) {
            made_.clear();
            next_ = 0;
            const std::size_t count = from.Read(block_.data(), block_.size());
            if (count == 0) {
                Finish(from);
                return 0;
            }
            Convert({block_.data(), count}, made_, from);
        }
        const std::size_t count = made_.copy(buffer, capacity, next_);
        next_ += count;
        return count;
    }

    void Restart() override {
        made_.clear();
        next_ = 0;
    }

 private:
    /// Appends to `made` what becomes of the next bytes.
    virtual void Convert(std::string_view bytes, std::string& made, const ByteSource& from) = 0;
    /// Called at the end of the input.
    virtual void Finish(const ByteSource&) {}

    static constexpr std::size_t kBlockSize = std::size_t{1} << 16;
    std::array<char, kBlockSize> block_;
    std::string made_;
    std::size_t next_ = 0;
};

}  // namespace tarn
