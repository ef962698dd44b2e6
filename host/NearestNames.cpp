#include "host/NearestNames.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <optional>

#include "host/InputError.h"
#include "host/Synonyms.h"

namespace tarn {

namespace {

constexpr std::size_t kAtMost = 3;
/// A beginning or a part that is shorter says too little.
constexpr std::size_t kShortestPart = 3;

bool IsCapital(char c) {
    return c >= 'A' && c <= 'Z';
}
bool IsSmall(char c) {
    return c >= 'a' && c <= 'z';
}
/// Bytes of letters beyond ASCII are letters here.
bool IsLetterOrDigit(char c) {
    return IsCapital(c) || IsSmall(c) || (c >= '0' && c <= '9') || static_cast<unsigned char>(c) >= 0x80;
}

char Lowered(char c) {
    return IsCapital(c) ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string InSmallLetters(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(), Lowered);
    return small;
}

std::string_view WithoutHyphens(std::string_view name) {
    name.remove_prefix(std::min(name.find_first_not_of('-'), name.size()));
    return name;
}

/// "mann-whitney" and "median_test" in their words, "groupVariableName", too.
std::vector<std::string> PartsOf(std::string_view name) {
    std::vector<std::string> parts;
    std::string part;
    const auto end = [&] {
        if (part.size() >= kShortestPart) parts.push_back(InSmallLetters(part));
        part.clear();
    };
    for (const char c : name) {
        if (!IsLetterOrDigit(c) || (IsCapital(c) && !part.empty() && IsSmall(part.back()))) end();
        if (IsLetterOrDigit(c)) part += c;
    }
    end();
    return parts;
}

/// The number of letters to change, add, drop or exchange with their neighbour, each place once: the restricted
/// distance of Damerau (1964), Communications of the ACM 7, 171-176.
std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast.swap(last);
        last.swap(row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            row[j] = std::min({last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1), last[j] + 1, row[j - 1] + 1});
            const bool isExchanged = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
            if (isExchanged) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
        }
    }
    return row[b.size()];
}

/// The distance if it is small enough for the length. A name of which nothing is kept is near to nothing.
std::optional<std::size_t> NearDistance(std::string_view typed, std::string_view candidate) {
    const std::size_t limit = std::max<std::size_t>(1, typed.size() / 3);
    const auto [shorter, longer] = std::minmax({typed.size(), candidate.size()});
    if (longer - shorter > limit) return std::nullopt;
    const std::size_t distance = Distance(typed, candidate);
    if (distance > limit || distance >= shorter) return std::nullopt;
    return distance;
}

bool Holds(const std::vector<std::string>& parts, const std::string& name) {
    return std::ranges::find(parts, name) != parts.end();
}

/// The smaller the nearer; none for what is not near. A beginning or a part stands between one slip and two, a part
/// that is misspelt behind all.
std::optional<std::size_t> Farness(std::string_view typed, std::string_view candidate) {
    constexpr std::size_t kSlip = 2;
    const std::string small = InSmallLetters(typed);
    const std::string whole = InSmallLetters(candidate);
    const auto distance = NearDistance(small, whole);
    if (distance && *distance <= 1) return kSlip * *distance;
    if (small.size() < kShortestPart) return std::nullopt;
    const std::vector<std::string> parts = PartsOf(candidate);
    if (whole.starts_with(small) || Holds(parts, small) || Holds(PartsOf(typed), whole)) return kSlip + 1;
    if (distance) return kSlip * *distance;
    const bool isMisspelt =
        std::ranges::any_of(parts, [&](const std::string& part) { return NearDistance(small, part).has_value(); });
    return isMisspelt ? std::optional(kSlip * small.size()) : std::nullopt;
}

void AddOnce(std::string_view name, std::vector<std::string_view>& names) {
    if (names.size() < kAtMost && std::ranges::find(names, name) == names.end()) names.push_back(name);
}

}  // namespace

std::vector<std::string_view> NearestNames(std::string_view name, std::span<const std::string_view> known) {
    std::vector<std::string_view> nearest;
    for (const std::string_view meant : NamesMeantBy(name)) {
        const auto found = std::ranges::find(known, meant);
        if (found != known.end()) AddOnce(*found, nearest);
    }
    if (!nearest.empty()) return nearest;

    std::size_t smallest = std::numeric_limits<std::size_t>::max();
    for (const std::string_view candidate : known) {
        const auto farness = Farness(WithoutHyphens(name), WithoutHyphens(candidate));
        if (!farness || *farness > smallest) continue;
        if (*farness < smallest) nearest.clear();
        smallest = *farness;
        AddOnce(candidate, nearest);
    }
    return nearest;
}

bool AreLike(std::string_view first, std::string_view second) {
    return std::ranges::equal(first, second, {}, Lowered, Lowered);
}

std::string TakenForNote(std::string_view typed, std::string_view field) {
    return Quoted(typed) + " is taken for the field " + Quoted(field);
}

std::string DidYouMean(std::span<const std::string_view> nearest) {
    std::string names;
    for (const std::string_view name : nearest) names += (names.empty() ? "" : ", ") + std::string(name);
    return names.empty() ? "" : "; did you mean " + names + "?";
}

}  // namespace tarn
