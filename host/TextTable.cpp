#include "host/TextTable.h"

#include <algorithm>

namespace tarn {

// Every byte but those that continue a character.
std::size_t DisplayWidth(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string TextTable::ToText() const {
    std::vector<std::string> titles;
    for (const ColumnHead& column : columns_) titles.push_back(column.title);
    std::vector<const std::vector<std::string>*> lines;
    if (std::ranges::any_of(titles, [](const std::string& title) { return !title.empty(); })) lines.push_back(&titles);
    for (const auto& row : rows_) lines.push_back(&row);

    std::vector<std::size_t> widths(columns_.size());
    for (const auto* line : lines) {
        for (std::size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], DisplayWidth((*line)[i]));
    }
    std::string text;
    for (const auto* line : lines) {
        std::string written;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::string& cell = (*line)[i];
            const std::string padding(widths[i] - DisplayWidth(cell), ' ');
            if (i > 0) written += "  ";
            written += columns_[i].alignment == Alignment::kLeft ? cell + padding : padding + cell;
        }
        written.erase(written.find_last_not_of(' ') + 1);
        text += written + "\n";
    }
    return text;
}

}  // namespace tarn
