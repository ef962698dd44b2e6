#pragma once

#include <memory>

#include "component/PublicFields.h"
#include "platform/common/QKXML.h"

/// The second stage of a result document. The planner's document lists the fields as the execution has them, where an
/// ordinal field may come twice; this makes the one that lists them as the host knows them. The tests' elements, in
/// which fields are named, are `FieldReferences`' to renumber, each before it comes into the planner's document.
class DocumentRewriter {
 public:
    /// Borrows both.
    DocumentRewriter(const QKVarList& varList, const PublicFields& fields) : varList_(varList), fields_(fields) {}

    /// The second document, which shares with the planner's what stays. What that lacks, it lacks.
    std::unique_ptr<QKXML::XMLElement> Rewrite(const QKXML::XMLElement& first) const;

 private:
    using Element = QKXML::XMLElement;

    void ExportDataModel(Element& root) const;
    void WriteOutput(const Element* source, Element& root) const;
    void WriteDataDictionary(const Element* source, Element& output) const;
    void WriteFieldInfos(const Element* source, Element& output) const;

    const QKVarList& varList_;
    const PublicFields& fields_;
};
