#pragma once

/// Whole numbers of 128 bits: products of two sums of weights in every case, and their cubes up to 2^42.
__extension__ using WideNumber = __int128;
/// The same as a register that wraps around.
__extension__ using WideBits = unsigned __int128;
