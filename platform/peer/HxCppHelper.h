#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/hx/HXContainer.h"
#include "platform/hx/HXHost.h"
#include "platform/hx/HXIterator.h"
#include "platform/peer/HxCppXml.h"

namespace HxCppHelperV1 {

/// Puts a text into a buffer of the host by the rule that stands at `HXHost`. `needed` may be null.
unsigned putText(const std::string& text, char* buffer, std::size_t size, std::size_t* needed);

/// The services of a host. Keeps the host's functions and handle for itself: a component stays with the host for which
/// it was made, whatever host the library is given later.
class HostHelper {
 public:
    /// Null for no host and for one whose structures are of a version that is not known here.
    static std::unique_ptr<HostHelper> create(HXHost* host);

    /// A new document with an empty root.
    XMLDocument createNew(const std::string& rootName) const;
    /// The document of a text; without a root where the text is not well formed.
    XMLDocument createFromContents(const std::string& text) const;
    /// What the host says of itself; empty where it says nothing.
    std::string getInformation(HXInformation item) const;
    /// The version of the host's structures.
    int interfaceVersion() const { return host_.interfaceVersion; }

 private:
    explicit HostHelper(const HXHost& host) : host_(host) {}

    HXHost host_;
};

/// One output container. Borrows it.
class ContainerHelper {
 public:
    /// Null for no container.
    static std::unique_ptr<ContainerHelper> create(HXContainer* container);

    unsigned constructMetadata(const std::string& mimeType, const std::string& fileName, int* errorCode) const;
    unsigned putString(const std::string& text, int* errorCode) const;

 private:
    explicit ContainerHelper(HXContainer* container) : container_(container) {}

    HXContainer* container_;
};

/// The records of one input, in blocks or in columns. Borrows the iterator.
class DataHelper {
 public:
    /// The version of the interface that brought columns.
    static constexpr int kColumnsVersion = 2;

    struct Block {
        const double* values = nullptr;  ///< record by record; the host's, valid until the next block is asked for
        std::size_t recordCount = 0;
    };

    struct Columns {
        const double* const* values = nullptr;  ///< for each field; the host's, valid until the end of the execution
        std::size_t recordCount = 0;
    };

    /// `inputCount` is 1: the component has one input. `interfaceVersion` is that of the host's structures.
    DataHelper(HXIterator* iterator, int inputCount, int interfaceVersion)
        : iterator_(iterator), inputCount_(inputCount), interfaceVersion_(interfaceVersion) {}

    int inputCount() const { return inputCount_; }
    /// The number of values that a record has to have.
    void setFieldCount(std::size_t fieldCount) { fieldCount_ = fieldCount; }
    std::size_t fieldCount() const { return fieldCount_; }

    /// Whether the iterator went back to the first record.
    bool rewind(int* errorCode) const;
    /// Gives the next block, without records at the end. False where the iterator fails, and `block` is then empty, or
    /// where a record has another number of values, and `block` then holds the records that came.
    bool nextBlock(Block& block, int* errorCode) const;
    /// Whether the host hands over columns.
    bool hasColumns() const;
    /// Gets all records as columns. False as for `nextBlock`.
    bool columns(Columns& columns, int* errorCode) const;

 private:
    HXIterator* iterator_;
    int inputCount_;
    int interfaceVersion_;
    std::size_t fieldCount_ = 0;
};

}  // namespace HxCppHelperV1
