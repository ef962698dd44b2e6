#include "host/words/FieldNames.h"

#include <algorithm>
#include <set>

#include "host/InputError.h"
#include "host/NearestNames.h"
#include "host/TextList.h"

namespace tarn {

namespace {

constexpr std::string_view kAll = "all";

}  // namespace

bool MatchesPattern(std::string_view name, std::string_view pattern) {
    // The last star is tried at later and later places; an earlier one never has to be tried again.
    std::size_t inName = 0;
    std::size_t inPattern = 0;
    std::size_t star = std::string_view::npos;
    std::size_t afterStar = 0;
    while (inName < name.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == '*') {
            star = inPattern++;
            afterStar = inName;
        } else if (inPattern < pattern.size() && (pattern[inPattern] == '?' || pattern[inPattern] == name[inName])) {
            ++inName;
            ++inPattern;
        } else if (star != std::string_view::npos) {
            inPattern = star + 1;
            inName = ++afterStar;
        } else {
            return false;
        }
    }
    while (inPattern < pattern.size() && pattern[inPattern] == '*') ++inPattern;
    return inPattern == pattern.size();
}

bool IsPattern(std::string_view typed) {
    return typed == kAll || typed.find_first_of("*?") != std::string_view::npos;
}

std::string FieldNames::Find(const std::string& typed) {
    if (table_.FindColumn(typed) != Table::kNoColumn) return typed;
    std::vector<std::string> like;
    for (const Column& column : table_.Columns()) {
        if (AreLike(column.name, typed)) like.push_back(column.name);
    }
    if (like.size() != 1) return "";
    std::string note = TakenForNote(typed, like.front());
    if (std::ranges::find(notes_, note) == notes_.end()) notes_.push_back(std::move(note));
    return like.front();
}

std::string FieldNames::Mistake(const std::string& typed) const {
    std::vector<std::string_view> names;
    for (const Column& column : table_.Columns()) names.push_back(column.name);
    const std::vector<std::string_view> nearest = NearestNames(typed, names);
    return "the table has no field " + Quoted(typed) +
           (nearest.empty() ? "; expected one of " + JoinList(names) : DidYouMean(nearest));
}

std::vector<std::string> FieldNames::Expand(const std::vector<std::string>& typed, const std::string& what,
                                            const std::function<bool(const std::string&)>& isTaken) {
    std::vector<std::string> fields;
    std::set<std::string> known;  // those in `fields`, of which there may be hundreds of thousands
    for (const std::string& name : typed) {
        const std::string found = Find(name);
        if (!found.empty() || !IsPattern(name)) {
            fields.push_back(found.empty() ? name : found);
            known.insert(fields.back());
            continue;
        }
        std::size_t count = 0;
        for (const Column& column : table_.Columns()) {
            if ((name != kAll && !MatchesPattern(column.name, name)) || isTaken(column.name)) continue;
            ++count;
            if (known.insert(column.name).second) fields.push_back(column.name);
        }
        if (count > 0) continue;
        std::vector<std::string_view> names;
        for (const Column& column : table_.Columns()) names.push_back(column.name);
        throw InputError(what + ": no field matches " + Quoted(name) + "; expected one of " + JoinList(names));
    }
    return fields;
}

}  // namespace tarn
