#pragma once

namespace tarn {

/// For products of counts, which may have up to 2^53 cases each.
__extension__ using WideInteger = __int128;

}  // namespace tarn
