#include "component/PublicFields.h"

#include <charconv>
#include <memory>

#include "support/TextMakers.h"

namespace {

constexpr char kSeparator = ';';

/// Calls `visit` with each entry of a list, of which an empty text holds one.
template <typename Visit>
void ForEachEntry(const std::string& list, Visit visit) {
    std::size_t start = 0;
    for (std::size_t end; (end = list.find(kSeparator, start)) != std::string::npos; start = end + 1) {
        visit(list.substr(start, end - start));
    }
    visit(list.substr(start));
}

void Append(const std::string& entry, bool isFirst, std::string& list) {
    if (!isFirst) list += kSeparator;
    list += entry;
}

}  // namespace

PublicFields::PublicFields(const QKVarList& varList, const ExecutionRequirements::RenamedFields& renamed) {
    std::map<std::string, std::string> originals;
    for (const auto& [field, copy] : renamed) originals.emplace(copy, field);

    for (int index = 0; index < varList.Size(); ++index) {
        const IQKVariable* field = varList.GetVarAt(index);
        if (originals.count(field->GetName()) > 0) continue;
        publicVarList.AddNewVar(std::shared_ptr<const IQKVariable>(std::shared_ptr<void>(), field));
    }
    for (int index = 0; index < varList.Size(); ++index) {
        const std::string name = varList.GetVarAt(index)->GetName();
        const auto original = originals.find(name);
        if (original != originals.end()) ordinalCopies.insert(index);
        indexMap[index] = publicVarList.FindVariable(original != originals.end() ? original->second : name);
    }
}

std::vector<int> PublicFields::OriginalIndices() const {
    std::vector<int> indices;
    for (int index = 0; index < static_cast<int>(indexMap.size()); ++index) {
        if (!IsCopy(index)) indices.push_back(index);
    }
    return indices;
}

bool PublicFields::IsCopy(int index) const {
    return ordinalCopies.contains(index);
}

std::string PublicFields::Renumber(const std::string& list) const {
    std::string renumbered;
    bool isFirst = true;
    ForEachEntry(list, [&](const std::string& entry) {
        int index = 0;
        const int* mapped = PublicIndex(entry, index);
        Append(mapped ? IntToString(*mapped) : entry, isFirst, renumbered);
        isFirst = false;
    });
    return renumbered;
}

std::string PublicFields::RenumberCopies(const std::string& list) const {
    std::string copies;
    ForEachEntry(list, [&](const std::string& entry) {
        int index = 0;
        const int* mapped = PublicIndex(entry, index);
        if (mapped && IsCopy(index)) Append(IntToString(*mapped), copies.empty(), copies);
    });
    return copies;
}

/// Null for an entry that is no field's index, like the mark of a missing parameter.
const int* PublicFields::PublicIndex(const std::string& entry, int& index) const {
    const auto read = std::from_chars(entry.data(), entry.data() + entry.size(), index);
    if (read.ec != std::errc() || read.ptr != entry.data() + entry.size()) return nullptr;
    const auto found = indexMap.find(index);
    return found == indexMap.end() ? nullptr : &found->second;
}
