#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

/// How the numbers of a table are written.
struct NumberStyle {
    /// What stands in front of a fraction: '.' or ','.
    char decimal = '.';
    /// What stands between groups of three digits: '.', ',', '\'' or ' ', which is any kind of blank; 0 for nothing.
    char thousands = '\0';
    /// Whether a percent sign may stand behind a number, which is left out.
    bool hasPercent = false;
    /// The sign that may stand in front of a number or behind it, as amounts of money have it, and is left out.
    std::string_view currency = {};

    bool IsPlain() const { return decimal == '.' && thousands == '\0' && !hasPercent && currency.empty(); }
    friend bool operator==(const NumberStyle&, const NumberStyle&) = default;
};

/// A column whose numbers can be read in two ways, with one of them.
struct AmbiguousColumn {
    std::size_t column;
    std::string example;
};

/// What has to be known of a text to read it as a table. By default that of RFC 4180, with a header and rows as long.
struct TableShape {
    char delimiter = ',';
    NumberStyle numbers;
    /// Whether blanks around cells only line them up.
    bool trimsBlanks = false;
    /// Lines above the header, which belong to no row.
    std::size_t linesAbove = 0;
    /// Rows below the header without values, like one with units.
    std::size_t rowsBelow = 0;
    /// Whether the rows begin with a cell for which the header has none at all.
    bool lacksFirstName = false;
    /// What the first column is called, whose name is missing or empty; empty: it has a name.
    std::string firstName;
    /// How many cells a row has, where the header has fewer or more; 0: as many as the header.
    std::size_t width = 0;
    /// Cells at the end of each row that have no name and are empty, because of a delimiter behind the last value.
    std::size_t emptyAtEnd = 0;
    /// Whether a row with the names of the fields again is none.
    bool skipsRepeatedHeaders = false;
    /// Columns that can't be read as numbers before somebody says how.
    std::vector<AmbiguousColumn> ambiguous;
};

/// What a message calls a delimiter: "a comma".
constexpr std::string_view DelimiterName(char delimiter) {
    switch (delimiter) {
        case ',':
            return "a comma";
        case ';':
            return "a semicolon";
        case '\t':
            return "a tab";
        case '|':
            return "a vertical bar";
        default:
            return "the delimiter";
    }
}

}  // namespace tarn
