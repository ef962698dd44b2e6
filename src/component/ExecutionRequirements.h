#pragma once

#include <map>
#include <string>

#include "component/RequiredFields.h"
#include "platform/common/QKSettings.h"
#include "platform/common/QKStatus.h"
#include "platform/common/QKVarList.h"
#include "platform/peer/HxCppXml.h"

/// Writes the document that tells a host how to prepare the data: which records to drop and how to weigh them, and in
/// which form each field is read.
class ExecutionRequirements {
 public:
    /// The name of an ordinal field's encoded copy, by the field's name.
    using RenamedFields = std::map<std::string, std::string>;

    /// Borrows all.
    ExecutionRequirements(const QKSettings& request, const QKVarList& varList, const RequiredFields& fields)
        : request_(request), varList_(varList), fields_(fields) {}

    /// Writes the two operations into the root, which is empty, and the copies into `renamed`. An error where a field
    /// is not in the data model.
    QKStatus Write(HxCppHelperV1::XMLElement root, RenamedFields& renamed) const;

 private:
    void WriteMissingValues(HxCppHelperV1::XMLElement root) const;
    void WriteUserMissing(HxCppHelperV1::XMLElement parameters) const;
    void WriteWeight(HxCppHelperV1::XMLElement parameters) const;
    void WriteListwiseDelete(HxCppHelperV1::XMLElement parameters) const;
    QKStatus WriteEncoding(HxCppHelperV1::XMLElement root, RenamedFields& renamed) const;
    QKStatus WriteField(const std::string& name, HxCppHelperV1::XMLElement list, RenamedFields& renamed) const;
    bool Requests(const char* key, const char* value) const;
    std::string WeightField() const;
    std::string CopyName(const std::string& field) const;

    const QKSettings& request_;
    const QKVarList& varList_;
    const RequiredFields& fields_;
};
