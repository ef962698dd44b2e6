#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

enum class Alignment { kLeft, kRight };

/// How many characters, not bytes, a text of UTF-8 has.
std::size_t DisplayWidth(std::string_view text);

/// A table of plain text: a header line, unless all titles are empty, and rows of as many cells, in columns two blanks
/// apart.
class TextTable {
 public:
    struct ColumnHead {
        std::string title;
        Alignment alignment = Alignment::kLeft;
    };

    explicit TextTable(std::vector<ColumnHead> columns) : columns_(std::move(columns)) {}

    /// Before the first row.
    void AddColumn(ColumnHead head) { columns_.push_back(std::move(head)); }
    void AddRow(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool IsEmpty() const { return rows_.empty(); }
    /// A line for the header and one for each row, without blanks at their ends.
    std::string ToText() const;

 private:
    std::vector<ColumnHead> columns_;
    std::vector<std::vector<std::string>> rows_;
};

}  // namespace tarn
