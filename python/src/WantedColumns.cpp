#include "python/src/WantedColumns.h"

#include <algorithm>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/words/FieldNames.h"

namespace tarn {

namespace {

constexpr std::string_view kAll = "all";
/// Of more columns a message names none.
constexpr std::size_t kMostNamed = 30;

std::string Lowered(std::string_view name) {
    std::string lowered(name);
    for (char& c : lowered) c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return lowered;
}

[[noreturn]] void Fail(const std::string& name, const std::vector<std::string_view>& columns, const char* otherwise) {
    const std::string near = DidYouMean(NearestNames(name, columns));
    const std::string all =
        columns.size() > kMostNamed ? std::to_string(columns.size()) + " others" : Alternatives(columns);
    throw InputError("the data has no column " + Quoted(name) + (near.empty() ? "; expected one of " + all : near) +
                     otherwise);
}

}  // namespace

WantedColumns::WantedColumns(std::vector<std::string> names, std::vector<std::string> words,
                             std::vector<std::string> exact)
    : names_(std::move(names)), words_(std::move(words)), exact_(std::move(exact)) {
    for (const auto* list : {&names_, &words_}) {
        for (const std::string& name : *list) {
            known_.insert(Lowered(name));
            if (IsPattern(name)) patterns_.push_back(name);
        }
    }
}

bool WantedColumns::Wants(std::string_view column) const {
    const auto matches = [column](const std::string& pattern) {
        return pattern == kAll || MatchesPattern(column, pattern);
    };
    return isAll_ || known_.contains(Lowered(column)) || std::ranges::find(exact_, column) != exact_.end() ||
           std::ranges::any_of(patterns_, matches);
}

void WantedColumns::Check(const std::vector<std::string_view>& columns) const {
    std::unordered_set<std::string> lowered;
    for (const std::string_view column : columns) lowered.insert(Lowered(column));
    const auto isThere = [&lowered](const std::string& name) { return lowered.contains(Lowered(name)); };
    for (const std::string& name : names_) {
        if (!isThere(name) && !IsPattern(name)) Fail(name, columns, "");
    }
    for (const std::string& name : words_) {
        if (!isThere(name)) Fail(name, columns, "; a text stands in quotes");
    }
    for (const std::string& name : exact_) {
        if (std::ranges::find(columns, name) == columns.end()) Fail(name, columns, "");
    }
}

}  // namespace tarn
