#include "host/report/Letters.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string_view>

namespace tarn {

namespace {

constexpr std::size_t kMostColumns = 512;

/// Which samples have one letter, by their places in the order.
using Column = std::vector<bool>;

/// For each pair of places whether it differs.
using Differences = std::vector<std::vector<bool>>;

/// The name of the n-th letter, from 0 on.
std::string LetterAt(std::size_t n) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    return n < kLetters.size() ? std::string(1, kLetters[n]) : "(" + std::to_string(n + 1) + ")";
}

/// The place of each position in the order.
std::vector<std::size_t> PlacesOf(const std::vector<std::size_t>& order) {
    std::vector<std::size_t> places(order.size());
    for (std::size_t place = 0; place < order.size(); ++place) places[order[place]] = place;
    return places;
}

bool IsWithin(const Column& inner, const Column& outer) {
    for (std::size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] && !outer[i]) return false;
    }
    return true;
}

/// Takes away the columns that are within others, and all but one of equal ones.
void Absorb(std::vector<Column>& columns) {
    std::vector<Column> kept;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        bool isAbsorbed = false;
        for (std::size_t j = 0; j < columns.size() && !isAbsorbed; ++j) {
            isAbsorbed = i != j && IsWithin(columns[i], columns[j]) && (j < i || columns[i] != columns[j]);
        }
        if (!isAbsorbed) kept.push_back(columns[i]);
    }
    columns = std::move(kept);
}

/// Makes two columns of each that holds both samples of a pair, one without either. What is left whole is within none
/// of the others before and after, so that only the new ones can be absorbed.
void InsertAndAbsorb(std::size_t first, std::size_t second, std::vector<Column>& columns) {
    std::vector<Column> whole;
    std::vector<Column> parts;
    for (Column& column : columns) {
        if (!column[first] || !column[second]) {
            whole.push_back(std::move(column));
            continue;
        }
        parts.push_back(column);
        parts.back()[first] = false;
        column[second] = false;
        parts.push_back(std::move(column));
    }
    Absorb(parts);
    std::erase_if(parts, [&](const Column& part) {
        return std::ranges::any_of(whole, [&](const Column& column) { return IsWithin(part, column); });
    });
    std::ranges::move(parts, std::back_inserter(whole));
    columns = std::move(whole);
}

/// Columns by insert and absorb; none where they become too many.
std::vector<Column> ColumnsByInsertion(const Differences& differs) {
    const std::size_t count = differs.size();
    std::vector<Column> columns{Column(count, true)};
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = i + 1; j < count; ++j) {
            if (!differs[i][j]) continue;
            InsertAndAbsorb(i, j, columns);
            if (columns.size() > kMostColumns) return {};
        }
    }
    return columns;
}

/// Adds all samples that differ from none in the column, and notes the pairs that have a letter now.
void Complete(const Differences& differs, Column& column, Differences& isCovered) {
    const std::size_t count = differs.size();
    for (std::size_t i = 0; i < count; ++i) {
        bool goesWithAll = true;
        for (std::size_t j = 0; j < count && goesWithAll; ++j) goesWithAll = !column[j] || !differs[i][j];
        if (goesWithAll) column[i] = true;
    }
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < count; ++j) isCovered[i][j] = isCovered[i][j] || (column[i] && column[j]);
    }
}

/// Columns one by one: at most as many as there are pairs. A sample is a pair with itself.
std::vector<Column> ColumnsByCover(const Differences& differs) {
    const std::size_t count = differs.size();
    Differences isCovered(count, std::vector<bool>(count, false));
    std::vector<Column> columns;
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < count; ++j) {
            if (differs[i][j] || isCovered[i][j]) continue;
            Column column(count, false);
            column[i] = true;
            column[j] = true;
            Complete(differs, column, isCovered);
            columns.push_back(std::move(column));
        }
    }
    return columns;
}

/// The letters of the samples by their positions. The column of the sample that stands first comes first.
std::vector<std::string> Lettered(std::vector<Column> columns, const std::vector<std::size_t>& order) {
    std::ranges::sort(columns, std::greater<>());
    std::vector<std::string> letters(order.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        for (std::size_t place = 0; place < order.size(); ++place) {
            if (columns[i][place]) letters[order[place]] += LetterAt(i);
        }
    }
    return letters;
}

}  // namespace

std::vector<std::string> LettersOfPairs(std::size_t sampleCount,
                                        const std::vector<std::pair<std::size_t, std::size_t>>& different,
                                        const std::vector<std::size_t>& order) {
    const std::vector<std::size_t> places = PlacesOf(order);
    Differences differs(sampleCount, std::vector<bool>(sampleCount, false));
    for (const auto& [first, second] : different) {
        differs[places[first]][places[second]] = true;
        differs[places[second]][places[first]] = true;
    }
    std::vector<Column> columns = ColumnsByInsertion(differs);
    if (columns.empty()) columns = ColumnsByCover(differs);
    return Lettered(std::move(columns), order);
}

std::vector<std::string> LettersOfSubsets(std::size_t sampleCount, const std::vector<std::vector<std::size_t>>& subsets,
                                          const std::vector<std::size_t>& order) {
    const std::vector<std::size_t> places = PlacesOf(order);
    std::vector<Column> columns;
    for (std::size_t place = 0; place < sampleCount; ++place) {
        columns.emplace_back(sampleCount, false);
        columns.back()[place] = true;
    }
    for (const std::vector<std::size_t>& subset : subsets) {
        columns.emplace_back(sampleCount, false);
        for (const std::size_t position : subset) columns.back()[places[position]] = true;
    }
    Absorb(columns);
    return Lettered(std::move(columns), order);
}

}  // namespace tarn
