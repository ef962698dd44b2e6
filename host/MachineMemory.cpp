#include "host/MachineMemory.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>

namespace tarn {

std::size_t HalfOfMachine() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) return 0;
    std::size_t bytes = static_cast<std::size_t>(pages) * static_cast<std::size_t>(pageSize);
    // Within a container the machine's memory isn't all for this process.
    std::size_t limit = 0;
    if (std::ifstream("/sys/fs/cgroup/memory.max") >> limit) bytes = std::min(bytes, limit);
    return bytes / 2;
}

}  // namespace tarn
