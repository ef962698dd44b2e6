#include "platform/peer/HxCppHelper.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "platform/peer/HostCall.h"
#include "runtime/hx/FetchText.h"

namespace HxCppHelperV1 {

unsigned putText(const std::string& text, char* buffer, std::size_t size, std::size_t* needed) {
    const std::size_t required = text.size() + 1;
    if (needed != nullptr) *needed = required;
    if (required > size || buffer == nullptr) return HX_BUFFER_TOO_SMALL;
    std::memcpy(buffer, text.c_str(), required);
    return HX_OK;
}

// ---- Host ----

std::unique_ptr<HostHelper> HostHelper::create(HXHost* host) {
    const bool isKnown = host != nullptr && host->interfaceVersion >= HX_FIRST_INTERFACE_VERSION &&
                         host->interfaceVersion <= HX_INTERFACE_VERSION;
    if (!isKnown) return nullptr;
    return std::unique_ptr<HostHelper>(new HostHelper(*host));
}

XMLDocument HostHelper::createNew(const std::string& rootName) const {
    return XMLDocument::WithRoot(rootName);
}

XMLDocument HostHelper::createFromContents(const std::string& text) const {
    return XMLDocument::FromText(text);
}

std::string HostHelper::getInformation(HXInformation item) const {
    int ignored = 0;
    const auto ask = [&](char* buffer, std::size_t size, std::size_t* needed) {
        return CallHost(&host_, &HXHost::GetInformation, static_cast<int>(item), buffer, size, needed, &ignored);
    };
    return FetchText(ask).value_or("");
}

// ---- Container ----

std::unique_ptr<ContainerHelper> ContainerHelper::create(HXContainer* container) {
    return container ? std::unique_ptr<ContainerHelper>(new ContainerHelper(container)) : nullptr;
}

unsigned ContainerHelper::constructMetadata(const std::string& mimeType, const std::string& fileName,
                                            int* errorCode) const {
    return CallHost(container_, &HXContainer::SetMetadata, mimeType.c_str(), fileName.c_str(), errorCode);
}

unsigned ContainerHelper::putString(const std::string& text, int* errorCode) const {
    return CallHost(container_, &HXContainer::PutString, text.c_str(), text.size(), errorCode);
}

// ---- Data ----

bool DataHelper::rewind(int* errorCode) const {
    return CallHost(iterator_, &HXIterator::Rewind, errorCode) == HX_OK;
}

bool DataHelper::nextBlock(Block& block, int* errorCode) const {
    Block next;
    std::size_t width = fieldCount_;
    if (CallHost(iterator_, &HXIterator::NextBlock, &next.values, &next.recordCount, &width, errorCode) != HX_OK) {
        block = Block();
        return false;
    }
    block = next;
    return next.recordCount == 0 || (next.values != nullptr && width == fieldCount_);
}

bool DataHelper::hasColumns() const {
    return iterator_ != nullptr && interfaceVersion_ >= kColumnsVersion && iterator_->Columns != nullptr;
}

bool DataHelper::columns(Columns& columns, int* errorCode) const {
    Columns all;
    std::size_t width = fieldCount_;
    if (CallHost(iterator_, &HXIterator::Columns, &all.values, &all.recordCount, &width, errorCode) != HX_OK) {
        columns = Columns();
        return false;
    }
    columns = all;
    if (all.recordCount == 0) return true;
    const auto isThere = [](const double* column) { return column != nullptr; };
    return all.values != nullptr && width == fieldCount_ && std::all_of(all.values, all.values + width, isThere);
}

}  // namespace HxCppHelperV1
