#include "related/CommonSuccesses.h"

#include <algorithm>
#include <array>

#include "related/BlockWeights.h"

void CommonSuccesses::Add(const std::vector<const std::int32_t*>& columns,
                          const std::vector<const CategorySet*>& successes, const std::int32_t* weights,
                          std::size_t count, const WorkShare* work) {
    constexpr std::size_t kRows = BlockWeights::kRows;
    masks.resize(fieldCount * kRows);
    std::array<std::uint32_t, kRows> succeeds;
    std::array<std::int32_t, kRows> weighted;
    for (std::size_t begin = 0; begin < count && !(work != nullptr && work->IsStopped()); begin += kRows) {
        const std::size_t rows = std::min(kRows, count - begin);
        const bool areNarrow = BlockWeights::AreNarrow(weights + begin, rows, 1);
        for (std::size_t i = 0; i < fieldCount; ++i) {
            successes[i]->Mark(columns[i] + begin, rows, succeeds.data());
            std::int32_t* const ofField = masks.data() + i * kRows;
            for (std::size_t row = 0; row < rows; ++row) ofField[row] = -static_cast<std::int32_t>(succeeds[row]);
        }
        for (std::size_t i = 0; i < fieldCount; ++i) {
            const std::int32_t* const ofField = masks.data() + i * kRows;
            for (std::size_t row = 0; row < rows; ++row) weighted[row] = weights[begin + row] & ofField[row];
            for (std::size_t j = i; j < fieldCount; ++j) {
                const std::int64_t sum =
                    BlockWeights::Within(areNarrow, weighted.data(), masks.data() + j * kRows, rows);
                ofTwo[i * fieldCount + j] += sum;
                if (i != j) ofTwo[j * fieldCount + i] += sum;
            }
        }
    }
}

void CommonSuccesses::Close() {
    upTo.assign((fieldCount + 1) * (fieldCount + 1), 0);
    const std::size_t width = fieldCount + 1;
    for (std::size_t i = 0; i < fieldCount; ++i) {
        Whole ofRow = 0;
        for (std::size_t j = 0; j < fieldCount; ++j) {
            ofRow = ofRow + ofTwo[i * fieldCount + j];
            upTo[(i + 1) * width + j + 1] = upTo[i * width + j + 1] + ofRow;
        }
    }
}

Whole CommonSuccesses::RowTerm(std::size_t first, std::size_t last) const {
    const std::size_t width = fieldCount + 1;
    const std::size_t end = last + 1;
    return upTo[end * width + end] - upTo[first * width + end] - upTo[end * width + first] +
           upTo[first * width + first];
}
