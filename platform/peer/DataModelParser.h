#pragma once

#include <string>
#include <utility>

#include "platform/peer/HxCppXml.h"

/// The data model of an input as the host gave it: a document, whose fields `InputAdapter` reads.
class DataModelParser {
 public:
    explicit DataModelParser(HxCppHelperV1::XMLDocument document) : document_(std::move(document)) {}

    /// Whether the document is a data model.
    bool IsDataModel() const;
    HxCppHelperV1::XMLElement GetRoot() const { return document_.getRoot(); }

 private:
    HxCppHelperV1::XMLDocument document_;
};
