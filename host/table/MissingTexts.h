#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/common/DecimalNumber.h"

namespace tarn {

/// A few texts that mark a cell as missing. Every cell of a table is looked up here, and nearly none is found.
class MissingTexts {
 public:
    explicit MissingTexts(std::vector<std::string> texts) : texts_(std::move(texts)) {
        for (const std::string& text : texts_) {
            lengths_ |= LengthBit(text);
            hasNumbers_ = hasNumbers_ || ParseDecimal(text);
        }
    }

    bool Contains(std::string_view text) const {
        return (lengths_ & LengthBit(text)) != 0 && std::find(texts_.begin(), texts_.end(), text) != texts_.end();
    }

    /// Whether one of them is a number, so that no cell is one at first sight.
    bool HasNumbers() const { return hasNumbers_; }

 private:
    static std::uint64_t LengthBit(std::string_view text) {
        return std::uint64_t{1} << std::min<std::size_t>(text.size(), 63);
    }

    std::vector<std::string> texts_;
    std::uint64_t lengths_ = 0;  // a bit for each length among the texts; the last one for all that are longer
    bool hasNumbers_ = false;
};

}  // namespace tarn
