#include "host/report/Letters.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace tarn {

namespace {

constexpr std::size_t kMostColumns = 512;

/// A set of samples by their places in the order, such as those that have one letter. Sets are compared word by word:
/// of a thousand samples there may be half a million pairs, and at each the columns are held against one another.
class Column {
 public:
    explicit Column(std::size_t count) : words_((count + kBits - 1) / kBits, 0) {}

    bool Has(std::size_t place) const { return (words_[place / kBits] & BitOf(place)) != 0; }
    void Put(std::size_t place) { words_[place / kBits] |= BitOf(place); }
    void Remove(std::size_t place) { words_[place / kBits] &= ~BitOf(place); }
    void PutAll(const Column& other) {
        for (std::size_t i = 0; i < words_.size(); ++i) words_[i] |= other.words_[i];
    }
    bool IsWithin(const Column& outer) const {
        for (std::size_t i = 0; i < words_.size(); ++i) {
            if ((words_[i] & ~outer.words_[i]) != 0) return false;
        }
        return true;
    }
    bool Meets(const Column& other) const {
        for (std::size_t i = 0; i < words_.size(); ++i) {
            if ((words_[i] & other.words_[i]) != 0) return true;
        }
        return false;
    }
    bool operator==(const Column&) const = default;
    /// Of two sets the one that has the first place in which they differ comes before the other.
    bool ComesBefore(const Column& other) const { return words_ > other.words_; }

 private:
    static constexpr std::size_t kBits = 64;
    /// The first place is the highest bit, so that words compare as the places do.
    static constexpr std::uint64_t BitOf(std::size_t place) { return std::uint64_t{1} << (kBits - 1 - place % kBits); }

    std::vector<std::uint64_t> words_;
};

/// For each place those that differ from it.
using Differences = std::vector<Column>;

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

/// Takes away the columns that are within others, and all but one of equal ones.
void Absorb(std::vector<Column>& columns) {
    std::vector<Column> kept;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        bool isAbsorbed = false;
        for (std::size_t j = 0; j < columns.size() && !isAbsorbed; ++j) {
            isAbsorbed = i != j && columns[i].IsWithin(columns[j]) && (j < i || columns[i] != columns[j]);
        }
        if (!isAbsorbed) kept.push_back(columns[i]);
    }
    columns = std::move(kept);
}

/// Makes two columns of each that holds both samples of a pair, one without either. What is left whole is within none
/// of the others before and after, so that only the new ones can be absorbed.
void InsertAndAbsorb(std::size_t first, std::size_t second, std::vector<Column>& columns) {
    const auto split = std::partition(columns.begin(), columns.end(),
                                      [&](const Column& column) { return !column.Has(first) || !column.Has(second); });
    std::vector<Column> parts;
    for (auto column = split; column != columns.end(); ++column) {
        parts.push_back(*column);
        parts.back().Remove(first);
        column->Remove(second);
        parts.push_back(std::move(*column));
    }
    columns.erase(split, columns.end());
    Absorb(parts);
    std::erase_if(parts, [&](const Column& part) {
        return std::ranges::any_of(columns, [&](const Column& column) { return part.IsWithin(column); });
    });
    std::ranges::move(parts, std::back_inserter(columns));
}

/// Columns by insert and absorb; none where they become too many.
std::vector<Column> ColumnsByInsertion(const Differences& differs) {
    const std::size_t count = differs.size();
    std::vector<Column> columns{Column(count)};
    for (std::size_t i = 0; i < count; ++i) columns.front().Put(i);
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = i + 1; j < count; ++j) {
            if (!differs[i].Has(j)) continue;
            InsertAndAbsorb(i, j, columns);
            if (columns.size() > kMostColumns) return {};
        }
    }
    return columns;
}

/// Adds all samples that differ from none in the column, and notes the pairs that have a letter now.
void Complete(const Differences& differs, Column& column, std::vector<Column>& isCovered) {
    const std::size_t count = differs.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (!column.Meets(differs[i])) column.Put(i);
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (column.Has(i)) isCovered[i].PutAll(column);
    }
}

/// Columns one by one: at most as many as there are pairs. A sample is a pair with itself.
std::vector<Column> ColumnsByCover(const Differences& differs) {
    const std::size_t count = differs.size();
    std::vector<Column> isCovered(count, Column(count));
    std::vector<Column> columns;
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t j = 0; j < count; ++j) {
            if (differs[i].Has(j) || isCovered[i].Has(j)) continue;
            Column column(count);
            column.Put(i);
            column.Put(j);
            Complete(differs, column, isCovered);
            columns.push_back(std::move(column));
        }
    }
    return columns;
}

/// The letters of the samples by their positions. The column of the sample that stands first comes first.
std::vector<std::string> Lettered(std::vector<Column> columns, const std::vector<std::size_t>& order) {
    std::ranges::sort(columns, [](const Column& a, const Column& b) { return a.ComesBefore(b); });
    std::vector<std::string> letters(order.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        for (std::size_t place = 0; place < order.size(); ++place) {
            if (columns[i].Has(place)) letters[order[place]] += LetterAt(i);
        }
    }
    return letters;
}

}  // namespace

std::vector<std::string> LettersOfPairs(std::size_t sampleCount,
                                        const std::vector<std::pair<std::size_t, std::size_t>>& different,
                                        const std::vector<std::size_t>& order) {
    const std::vector<std::size_t> places = PlacesOf(order);
    Differences differs(sampleCount, Column(sampleCount));
    for (const auto& [first, second] : different) {
        differs[places[first]].Put(places[second]);
        differs[places[second]].Put(places[first]);
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
        columns.emplace_back(sampleCount);
        columns.back().Put(place);
    }
    for (const std::vector<std::size_t>& subset : subsets) {
        columns.emplace_back(sampleCount);
        for (const std::size_t position : subset) columns.back().Put(places[position]);
    }
    Absorb(columns);
    return Lettered(std::move(columns), order);
}

}  // namespace tarn
