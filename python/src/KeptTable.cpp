#include "python/src/KeptTable.h"

#include <functional>
#include <span>
#include <string_view>
#include <utility>

namespace tarn {

namespace {

std::vector<std::size_t> SumsOf(const Table& table) {
    std::vector<std::size_t> sums;
    for (std::size_t i = 0; i < table.ColumnCount(); ++i) {
        if (!table.AreLent(i)) continue;
        const std::span<const double> cells = table.Cells(i);
        const std::string_view bytes(reinterpret_cast<const char*>(cells.data()), cells.size_bytes());
        sums.push_back(std::hash<std::string_view>()(bytes));
    }
    return sums;
}

}  // namespace

KeptTable::KeptTable(AnalysisPart part, unsigned threads)
    : part_(std::move(part)), threads_(threads), sums_(SumsOf(part_.table)) {}

bool KeptTable::IsUntouched() const {
    return SumsOf(part_.table) == sums_;
}

}  // namespace tarn
