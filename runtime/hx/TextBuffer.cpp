#include "runtime/hx/TextBuffer.h"

#include <cstring>

unsigned PutText(const std::string& text, char* buffer, std::size_t size, std::size_t* needed) {
    const std::size_t required = text.size() + 1;
    if (needed != nullptr) *needed = required;
    if (required > size || buffer == nullptr) return HX_BUFFER_TOO_SMALL;
    std::memcpy(buffer, text.c_str(), required);
    return HX_OK;
}
