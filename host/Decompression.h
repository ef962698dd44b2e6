#pragma once

#include <memory>
#include <string_view>

#include "host/ByteSource.h"

namespace tarn {

/// The filter that restores an input which begins with these bytes: of gzip or Zstandard, told by their first bytes;
/// null for any other. Several compressed parts in a row are one text, as both formats have it.
///
/// The filter throws an `InputError` for an input that is broken or ends too early.
std::unique_ptr<ByteFilter> DecompressionOf(std::string_view firstBytes);

}  // namespace tarn
