#pragma once

#include <cstddef>

namespace tarn {

/// Half of the memory that the machine, or the group of processes, gives; 0 if the system doesn't say.
std::size_t HalfOfMachine();

}  // namespace tarn
