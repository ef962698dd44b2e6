#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "component/ExecutionRequirements.h"
#include "platform/common/QKVarList.h"

/// The fields of an execution as the host knows them, without the encoded copies of ordinal fields, and the way from
/// an index of the execution to an index among them.
class PublicFields {
 public:
    /// Borrows the execution's fields.
    PublicFields(const QKVarList& varList, const ExecutionRequirements::RenamedFields& renamed);

    const QKVarList& VarList() const { return publicVarList; }
    /// The indices in the execution of all fields that are no copies.
    std::vector<int> OriginalIndices() const;
    bool IsCopy(int index) const;

    /// A list of indices joined by ";" with each index replaced by the public one. An entry that is in no field's
    /// place stays as it is.
    std::string Renumber(const std::string& list) const;
    /// The entries of such a list that are copies, replaced and joined in the same way.
    std::string RenumberCopies(const std::string& list) const;

 private:
    const int* PublicIndex(const std::string& entry, int& index) const;

    QKVarList publicVarList;
    std::unordered_map<int, int> indexMap;
    std::unordered_set<int> ordinalCopies;
};
