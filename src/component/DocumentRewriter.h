#pragma once

#include <string>

#include "component/PublicFields.h"
#include "platform/peer/HxCppHelper.h"

/// The second stage of a result document. The planner's text counts the fields as the execution has them, where an
/// ordinal field may come twice; this writes the document anew with the fields as the host knows them.
class DocumentRewriter {
 public:
    /// Borrows the first two.
    DocumentRewriter(const HxCppHelperV1::HostHelper& helper, const QKVarList& varList,
                     const ExecutionRequirements::RenamedFields& renamed)
        : helper_(helper), varList_(varList), fields_(varList, renamed) {}

    /// Writes the planner's text into a document whose root is empty. What the text lacks, the document lacks. Throws a
    /// `std::bad_alloc` where no memory is left for the whole of it.
    void Rewrite(const std::string& text, const HxCppHelperV1::XMLDocument& document) const;

 private:
    using Element = HxCppHelperV1::XMLElement;

    void ExportDataModel(Element root) const;
    void WriteOutput(const Element& source, Element root) const;
    void WriteDataDictionary(const Element& source, Element output) const;
    void WriteTests(const Element& source, Element output) const;
    void WriteFieldInfos(const Element& source, Element output) const;

    const HxCppHelperV1::HostHelper& helper_;
    const QKVarList& varList_;
    PublicFields fields_;
};
